"""scripts/bench: reads callgrind's dumps, and tells a slower provider from one that is as fast as before."""
import contextlib
import importlib.machinery
import importlib.util
import io
import os
import re
import sys
import tempfile
import unittest
from pathlib import Path
from unittest import mock

from checkout import ENVIRONMENT, ROOT, CheckoutTest

sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "scripts"))
loader = importlib.machinery.SourceFileLoader("bench", str(ROOT / "scripts/bench"))
bench = importlib.util.module_from_spec(importlib.util.spec_from_loader("bench", loader))
loader.exec_module(bench)
callgrind_dumps = bench.callgrind_dumps
import bench_table  # noqa: E402

FIRST = """\
desc: Trigger: Client Request: page/provider
events: Ir
ob=(1) /lib/libsi-ready.so
fl=(1) a.cpp
fn=(1) Rule
10 100
cob=(2) /lib/libc.so.6
cfn=(2) strcmp
calls=3 0
10 3000

ob=(2)
fn=(2)
+5 40
"""
SECOND = """\
desc: Trigger: Client Request: page/bare
events: Ir
ob=(2)
fn=(2)
0 7
"""


def dump(instructions):
    made = callgrind_dumps.Dump("")
    made.functions[("libsi-ready.so", "Rule")] = instructions
    return made


class Dumps(unittest.TestCase):
    def test_a_function_has_its_own_instructions_and_not_those_of_what_it_calls(self):
        with tempfile.TemporaryDirectory() as folder:
            (Path(folder) / "out.1").write_text(FIRST)
            (Path(folder) / "out.2").write_text(SECOND)
            dumps = callgrind_dumps.read_dumps(Path(folder))
        self.assertEqual(dumps["page/provider"].total(), 140)
        self.assertEqual(dumps["page/provider"].of(library="si-ready"), 100)
        self.assertEqual(dumps["page/bare"].of(library="libc", function="strcmp"), 7)


class Against(unittest.TestCase):
    def compare(self, before, now):
        counts = [{f"{name}/provider": dump(count) for name, count in side.items()} for side in (before, now)]
        counted = type("Counted", (), {"count": staticmethod(lambda program: counts.pop(0))})
        with (mock.patch.object(bench, "build_provider", lambda commit: Path("other.so")),
              mock.patch.object(bench, "callgrind_dumps", counted), contextlib.redirect_stdout(io.StringIO())):
            return bench.compare("HEAD")

    def test_up_to_five_per_cent_more_instructions_pass(self):
        self.assertTrue(self.compare({"page": 10000, "press a": 1000}, {"page": 10500, "press a": 900})[0])

    def test_more_of_any_kind_of_question_fail_and_are_named(self):
        good, remark = self.compare({"page": 10000, "policy of 1": 1000}, {"page": 9000, "policy of 1": 1090})
        self.assertFalse(good)
        self.assertEqual("the provider takes over 5 % more instructions than HEAD: policy of 1 +9.0 %", remark)

    def test_one_press_that_becomes_dear_fails_among_many_that_do_not(self):
        good, remark = self.compare({"press a": 200, "press b": 100000}, {"press a": 3000, "press b": 100000})
        self.assertFalse(good)
        self.assertIn("press a +1400.0 %", remark)

    def test_a_press_that_takes_next_to_nothing_may_take_a_few_instructions_more(self):
        self.assertTrue(self.compare({"press a": 100}, {"press a": 120})[0])

    def test_a_question_that_is_new_is_compared_with_nothing(self):
        self.assertTrue(self.compare({"page": 10}, {"page": 10, "policy of 5": 1000})[0])


class NothingToCompareWith(CheckoutTest):
    """In a repository of its own, whose second commit has changed nothing."""

    def setUp(self):
        super().setUp()
        for name, value in (("ROOT", self.root), ("BUILD", self.root / "build")):
            patch = mock.patch.object(bench, name, value)
            patch.start()
            self.addCleanup(patch.stop)

    def commits(self, count):
        self.git("init", "-q")
        for _ in range(count):
            self.git("commit", "-q", "--allow-empty", "-m", "Begin")

    def compare(self, commit, ci):
        with mock.patch.dict(os.environ, ENVIRONMENT | {"CI": ci}, clear=True), contextlib.redirect_stdout(io.StringIO()):
            return bench.compare(commit)

    def test_a_commit_that_is_not_there_is_a_remark_and_in_ci_a_failure(self):
        self.commits(2)
        said = "nothing to compare with: there is no commit no-such-commit here"
        self.assertEqual((True, said), self.compare("no-such-commit", ""))
        self.assertEqual((False, said), self.compare("no-such-commit", "true"))

    def test_a_commit_that_does_not_build_is_a_remark_and_in_ci_a_failure(self):
        self.commits(2)
        said = "nothing to compare with: commit HEAD^ does not build"
        self.assertEqual((True, said), self.compare("HEAD^", ""))
        self.assertEqual((False, said), self.compare("HEAD^", "true"))

    def test_before_the_first_commit_there_is_none_in_ci_either(self):
        self.commits(1)
        self.assertTrue(self.compare("HEAD^", "true")[0])

    def test_a_clone_that_lacks_the_commit_before_fails_in_ci(self):
        self.commits(2)
        shallow = self.root / "shallow"
        self.git("clone", "-q", "--depth", "1", f"file://{self.root}", str(shallow))
        with mock.patch.object(bench, "ROOT", shallow):
            self.assertFalse(self.compare("HEAD^", "true")[0])


PROVIDER = {
    "questions": [{
        "name": "page", "calls": 1, "instructions": 110, "bare_instructions": 100, "ns": 1, "bare_ns": 1, "ratio": 1,
        "ratio_low": 1, "ratio_high": 1, "allocations": 0, "bare_allocations": 0, "bytes": 0, "bare_bytes": 0,
        "own_instructions": 1, "key_instructions": 1}],
    "stack": 2000, "library_size": 80000,
    "trace": {"off_instructions": 3, "on_instructions": 100, "bare_instructions": 100}}
STORE = {name: [1000.0] for name in (
    "StoreRead/1", "StoreRead/1000", "StoreRead/100", "BareRead", "StoreWrite/durable", "StoreWrite/volatile",
    "BareWrite/file_and_folder", "DconfRead", "DconfWrite", "DconfChangeSeen", "ChangeSeen/durable/1",
    "ChangeSeen/volatile/1")}
EXPLORER = {name: {"questions": 12, "rate": 1234567.0} for name in (
    *(name for _, name in bench_table.EXPLORER_ROWS), "BM_Assistants/10", "BM_Assistants/2", "BM_Inputs/0", "BM_Values/1")}


def figures(**changed):
    command = {"clock": {"vtv show": [0.02]}, "processor": {"vtv show": [0.001]}, "seen": {"vtv watch": [0.01]},
               "scenarios": 36}
    window = {"first": [1.0], "key": [0.01], "other": [0.01], "memory": {"Rss": 1, "Pss": 1}}
    return {"machine": "M", "commit": "abc", "date": "2001-02-03", "provider": PROVIDER | changed, "store": STORE,
            "commands": command, "window": window, "explorer": EXPLORER}


class Goals(unittest.TestCase):
    def test_a_limit_that_is_broken_is_named(self):
        self.assertEqual([], bench_table.broken_limits(figures()))
        for change, name in (({"library_size": 131073}, "the stripped library"), ({"stack": 8192}, "stack of a page"),
                             ({"trace": PROVIDER["trace"] | {"off_instructions": 5}}, "a trace event that is off")):
            broken = bench_table.broken_limits(figures(**change))
            self.assertEqual(1, len(broken), broken)
            self.assertIn(name, broken[0])

    def test_a_broken_limit_fails_the_measurement(self):
        for stack, status in ((2000, 0), (8192, 1)):
            with (mock.patch.object(bench, "measure", lambda sample: figures(stack=stack)),
                  mock.patch.object(bench, "need_tools", lambda sample: None), mock.patch.object(sys, "argv", ["bench"]),
                  contextlib.redirect_stdout(io.StringIO())):
                self.assertEqual(status, bench.main())

    def test_what_was_not_measured_is_no_yes(self):
        self.assertIn("| not measured | at most 128 KiB |  |", bench_table.table(figures(library_size=None)))

    def test_a_command_is_judged_by_the_clock(self):
        text = bench_table.table(figures())
        self.assertIn("| `vtv show` | 20.0 ms (20.0 ms - 20.0 ms) | 1.0 ms | below 10 ms | **no** |", text)
        self.assertIn("- `vtv show`: 20.0 ms, not below 10 ms\n", text)

    def test_every_question_is_judged_and_told_where_it_misses(self):
        row = PROVIDER["questions"][0]
        text = bench_table.table(figures(questions=[row, row | {"name": "press a", "instructions": 121}]))
        self.assertIn("| page | 1 | 110 | 100 | 1.10 | yes |", text)
        self.assertIn("| press a | 1 | 121 | 100 | 1.21 | **no** |", text)
        self.assertIn("- the provider's instructions by those of its calls, at most 1.20: press a 1.21\n", text)

    def test_what_grows_stands_in_the_order_of_its_numbers(self):
        text = bench_table.table(figures())
        self.assertIn("| 1: 1.0 us, 100: 1.0 us, 1000: 1.0 us |", text)
        self.assertIn("| 2: 12, 10: 12 |", text)


class Page(unittest.TestCase):
    @staticmethod
    def without_figures(text):
        """Headings, sentences, and the heads of tables; without numbers, commits and what stands in the rows."""
        lines = text.splitlines()
        heads = {index for index, line in enumerate(lines) if index + 1 < len(lines) and lines[index + 1].startswith("|---")}
        kept = [line for index, line in enumerate(lines)
                if not line.startswith(("|", "- ")) or index in heads]
        return [re.sub(r"^.*; commit `\w+`, [-\d]+\.", "MACHINE.", re.sub(r"\d+ scenarios", "N scenarios", line))
                for line in kept]

    def test_one_run_writes_all_of_the_section(self):
        section = bench.PAGE.read_text().partition(bench.HEADING + "\n\n")[2].partition("\n## ")[0]
        self.assertEqual(self.without_figures(bench_table.table(figures())), self.without_figures(section))

    def test_a_run_of_the_provider_alone_is_no_page(self):
        with self.assertRaisesRegex(SystemExit, "provider only"):
            bench.write_section({"provider": PROVIDER})


if __name__ == "__main__":
    unittest.main()
