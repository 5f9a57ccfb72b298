"""run_blocks.py says no where a page is wrong."""

import pathlib
import tempfile
import unittest
from unittest import mock

import run_blocks


class RunBlocks(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="si-ready-docs-test-")
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        self.here = self.root / "tests/docs"
        self.here.mkdir(parents=True)
        (self.here / "at-hand.sh").write_text("")
        (self.here / "not-run.txt").write_text("")
        for name, value in (("ROOT", self.root), ("HERE", self.here)):
            patch = mock.patch.object(run_blocks, name, value)
            patch.start()
            self.addCleanup(patch.stop)
        run_blocks.adopt_descendants()

    def faults(self, text):
        (self.root / "page.md").write_text(text)
        return "\n".join(run_blocks.check("page.md", self.root))

    def block(self, *lines):
        return self.faults("\n".join(["```sh", *lines, "```", ""]))

    def test_a_page_that_is_right_has_no_faults(self):
        self.assertEqual("", self.block(
            "cd /usr  # stays for the next command", "pwd", "#> /usr", "", "false   # ends with 1",
            "for word in one two; do", "    echo $word", "done", "#> two", "echo a \\", "    b", "#> a b",
            "sleep 60   # until Ctrl+C"))

    def test_a_command_that_fails_is_a_fault(self):
        self.assertIn("page.md:3: false\n    ended with 1, and the page says 0", self.block("true", "false"))

    def test_a_command_that_should_fail_and_does_not_is_a_fault(self):
        self.assertIn("ended with 0, and the page says 3", self.block("true   # ends with 3"))

    def test_a_command_that_is_not_found_is_a_fault(self):
        self.assertIn("ended with 127", self.block("no-such-command"))

    def test_a_command_that_prints_something_else_is_a_fault(self):
        self.assertIn('did not print "on"', self.block("echo off", "#> on"))

    def test_a_command_that_ends_by_itself_does_not_run_until_it_is_interrupted(self):
        self.assertIn("ended with 0", self.block("true   # until Ctrl+C"))

    def test_commands_behind_one_that_leaves_the_shell_are_not_reached(self):
        self.assertIn("page.md:3: true\n    was not reached", self.block("exit 0", "true"))

    def test_a_picture_is_what_the_command_prints_with_lines_left_out(self):
        self.assertEqual("", self.faults("```text seq 5\n1\n4\n```\n"))

    def test_a_picture_with_lines_in_another_order_is_a_fault(self):
        self.assertIn('did not print the line "1"', self.faults("```text seq 5\n4\n1\n```\n"))

    def test_a_command_in_the_list_is_left_out(self):
        (self.here / "not-run.txt").write_text("page.md | false -x | why\n")
        self.assertEqual("", self.block("false \\", "    -x   # a comment"))

    def test_a_command_in_the_list_that_the_page_has_not_is_a_fault(self):
        (self.here / "not-run.txt").write_text("page.md | gone | why\n")
        self.assertIn("page.md has no such command: gone", self.block("true"))

    def test_a_block_without_a_mark_is_refused(self):
        with self.assertRaisesRegex(run_blocks.Wrong, "page.md:2: .*run or not"):
            self.faults("```\ntrue\n```\n")

    def test_commands_of_ours_that_are_marked_as_text_are_refused(self):
        for command in ("vtv show", "vtv-explore merge a b", "scripts/fuzz --keep provider", "./test --all", "./run",
                        "tests/torture/torture.py --all"):
            with self.assertRaisesRegex(run_blocks.Wrong, "page.md:2: these are commands"):
                self.faults(f"```text\nsome words\n{command}\n```\n")

    def test_text_that_only_speaks_of_a_command_is_none(self):
        self.assertEqual("", self.faults("```text\nsee vtv show\nvtv: no\n./testing\n```\n"))

    def test_a_command_with_a_pipe_is_left_out(self):
        (self.here / "not-run.txt").write_text("page.md | false | false | why\n")
        self.assertEqual("", self.block("false | false"))

    def test_an_indented_block_is_refused(self):
        with self.assertRaisesRegex(run_blocks.Wrong, "page.md:3: fence this block"):
            self.faults("Text:\n\n    true\n")

    def test_a_block_without_an_end_is_refused(self):
        with self.assertRaisesRegex(run_blocks.Wrong, "no end"):
            self.faults("```sh\ntrue\n")

    def test_what_a_command_leaves_running_is_ended(self):
        self.assertEqual("", self.block("setsid sleep 1000 &"))
        children = pathlib.Path("/proc/self/task").glob("*/children")
        self.assertEqual("", "".join(file.read_text() for file in children))


if __name__ == "__main__":
    unittest.main()
