"""soak.py says no where something grows, ends or is left: each test plants a fault in front of the real vtv."""

import contextlib
import io
import os
import pathlib
import shlex
import tempfile
import unittest

import soak

BUILD = pathlib.Path(os.environ["SI_BUILD"])


class Soak(unittest.TestCase):
    def complaints(self, script, seconds=1.5):
        """What is found with this in place of vtv; "$VTV" is the real one."""
        with tempfile.TemporaryDirectory(prefix="si-ready-soak-test-") as folder:
            vtv = pathlib.Path(folder, "bin/vtv")
            vtv.parent.mkdir()
            vtv.write_text(f"#!/bin/bash\nVTV={shlex.quote(str(BUILD / 'bin/vtv'))}\n{script}\n")
            vtv.chmod(0o755)
            printed = io.StringIO()
            with contextlib.redirect_stderr(printed), contextlib.redirect_stdout(io.StringIO()):
                code = soak.soak(folder, seconds, 20)
        self.assertEqual(1 if printed.getvalue() else 0, code)
        return printed.getvalue()

    def test_a_tv_in_use_stays_as_it_is(self):
        self.assertEqual("", self.complaints('exec "$VTV" "$@"'))

    def test_what_is_left_in_the_temporary_folder_is_found(self):
        self.assertIn("was left behind", self.complaints('touch "$TMPDIR/left"; exec "$VTV" "$@"'))

    def test_a_watcher_that_ends_is_found(self):
        self.assertIn("vtv log --follow ended by itself", self.complaints('[ "$1" = log ] || exec "$VTV" "$@"'))

    def test_descriptors_that_grow_are_found(self):
        many = 'if [ "$1" = log ]; then for n in {30..60}; do eval "exec $n</dev/null"; done; fi; exec "$VTV" "$@"'
        self.assertIn("log --follow: descriptors", self.complaints(many))

    def test_memory_that_grows_is_found(self):
        grows = '[ "$1" != log ] || { sleep 1; text=$(head -c 20000000 /dev/zero | tr "\\0" x); sleep 9; }; exec "$VTV" "$@"'
        self.assertIn("log --follow: bytes grew", self.complaints(grows, 4))

    def test_files_that_grow_are_found(self):
        self.assertIn("files", self.complaints('touch "$VTV_HOME"/tv/apps/{1..300}; exec "$VTV" "$@"'))

    def test_a_trace_that_grows_is_found(self):
        grows = 'truncate -s 30000000 "$VTV_HOME/tv/trace/events.9"; exec "$VTV" "$@"'
        self.assertIn("trace/events has 3", self.complaints(grows))

    def test_a_verb_that_fails_is_found(self):
        self.assertIn("ended with 7", self.complaints('[ "$1" != restore ] || exit 7; exec "$VTV" "$@"', 6))


if __name__ == "__main__":
    unittest.main()
