"""torture.py says no where vtv does not keep its promises: each test plants a fault in front of the real one."""

import contextlib
import io
import os
import pathlib
import shlex
import tempfile
import unittest
from unittest import mock

import torture

BUILD = pathlib.Path(os.environ["SI_BUILD"])
WRITING = ["--sample", "40", "set"]


class Torture(unittest.TestCase):
    def complaints(self, script, points):
        """What is found with this in place of vtv; "$VTV" is the real one."""
        with tempfile.TemporaryDirectory(prefix="si-ready-torture-test-") as folder:
            build = pathlib.Path(folder)
            (build / "bin").mkdir()
            (build / "lib").symlink_to(BUILD / "lib")
            (build / "bin/failing-calls").symlink_to(BUILD / "bin/failing-calls")
            vtv = build / "bin/vtv"
            vtv.write_text(f"#!/bin/sh\nVTV={shlex.quote(str(BUILD / 'bin/vtv'))}\n{script}\n")
            vtv.chmod(0o755)
            printed = io.StringIO()
            with contextlib.redirect_stdout(printed), \
                    mock.patch("sys.argv", ["torture.py", "--build", folder, *points]):
                code = torture.main()
        self.assertEqual(1, code, printed.getvalue())
        return printed.getvalue()

    def test_a_failure_that_is_not_told_is_found(self):
        self.assertIn("it said 0:", self.complaints('"$VTV" "$@" || exit 0', WRITING))

    def test_a_failure_without_a_word_is_found(self):
        self.assertIn("it ended with 4, and said ''", self.complaints('"$VTV" "$@" 2>/dev/null', WRITING))

    def test_a_code_outside_the_table_is_found(self):
        self.assertIn("it ended with 7", self.complaints('"$VTV" "$@" || exit 7', WRITING))

    def test_a_write_in_two_steps_is_found(self):
        found = self.complaints('[ "$1" = set ] && "$VTV" unset "$2" --tv tv; "$VTV" "$@"', WRITING)
        self.assertIn("neither as it was nor as it shall be", found)

    def test_a_file_that_is_left_is_found(self):
        found = self.complaints('mktemp "$TMPDIR/left.XXXXXX" >&2; "$VTV" "$@"', WRITING)
        self.assertIn("there is left behind: tmp/left.", found)

    def test_a_process_that_is_left_is_found(self):
        found = self.complaints('"$VTV" "$@" || { sleep 60 >/dev/null 2>&1 & exit 4; }', ["--sample", "2", "get"])
        self.assertIn("processes are left", found)

    def test_a_lack_of_memory_that_is_not_told_is_found(self):
        found = self.complaints('"$VTV" "$@" || exit 0', ["--memory", "10", "load"])
        self.assertIn("allocation", found)
        self.assertIn("it said 0:", found)

    def test_what_is_lost_when_a_file_is_closed_is_found(self):
        careless = """[ "$1" = dump ] || exec "$VTV" "$@"
text=$("$VTV" dump - --tv tv)
exec 3>out.json
printf %s "$text" >&3
exec 3>&-"""
        self.assertIn("it said 0:", self.complaints(careless, ["--all", "--call", " close.*out.json", "dump"]))

    def test_what_cannot_be_said_again_is_found(self):
        found = self.complaints('[ -e spoilt ] && exit 4; "$VTV" "$@" || { echo x >spoilt; exit 4; }', WRITING)
        self.assertIn("said again it ends with 4", found)


if __name__ == "__main__":
    unittest.main()
