"""scripts/bench: reads callgrind's dumps, and tells a slower provider from one that is as fast as before."""
import contextlib
import importlib.machinery
import importlib.util
import io
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "scripts"))
loader = importlib.machinery.SourceFileLoader("bench", str(ROOT / "scripts/bench"))
bench = importlib.util.module_from_spec(importlib.util.spec_from_loader("bench", loader))
loader.exec_module(bench)
callgrind_dumps = bench.callgrind_dumps

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
        bench.build_provider = lambda commit: Path("other.so")
        bench.callgrind_dumps = type("Counted", (), {"count": staticmethod(lambda program: counts.pop(0))})
        said = io.StringIO()
        with contextlib.redirect_stdout(said):
            return bench.compare("HEAD"), said.getvalue()

    def test_up_to_five_per_cent_more_instructions_pass(self):
        self.assertTrue(self.compare({"page": 1000, "press a": 100}, {"page": 1050, "press a": 90})[0])

    def test_more_of_any_kind_of_question_fail_and_are_named(self):
        good, said = self.compare({"page": 1000, "policy of 1": 100}, {"page": 900, "policy of 1": 106})
        self.assertFalse(good)
        self.assertIn("remark: the provider takes over 5 % more instructions than HEAD: policy of 1 +6.0 %", said)

    def test_presses_are_judged_together(self):
        self.assertTrue(self.compare({"press a": 10, "press b": 1000}, {"press a": 20, "press b": 1000})[0])
        self.assertFalse(self.compare({"press a": 10, "press b": 1000}, {"press a": 10, "press b": 1100})[0])

    def test_a_question_that_is_new_is_compared_with_nothing(self):
        self.assertTrue(self.compare({"page": 10}, {"page": 10, "policy of 5": 1000})[0])


class NoCommit(unittest.TestCase):
    def test_a_commit_that_is_not_there_is_said_to_be_so_and_nothing_is_compared(self):
        fresh = importlib.util.module_from_spec(importlib.util.spec_from_loader("bench", loader))
        loader.exec_module(fresh)
        said = io.StringIO()
        with tempfile.TemporaryDirectory() as folder, contextlib.redirect_stdout(said):
            fresh.BUILD = Path(folder)
            self.assertTrue(fresh.compare("no-such-commit"))
        self.assertIn("nothing to compare with: there is no commit no-such-commit", said.getvalue())


if __name__ == "__main__":
    unittest.main()
