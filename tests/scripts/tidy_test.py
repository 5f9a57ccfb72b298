"""scripts/tidy: which sources it checks, with a clang-tidy that only tells what it was asked for."""

import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SOURCES = {
    "room/deep.h": "int Deep();\n",
    "room/middle.h": '#include "room/deep.h"\n',
    "room/far.cpp": '#include "middle.h"\n',
    "room/near.cpp": '#include "deep.h"\n',
    "room/other.cpp": "#include <deep>\n",
    "tests/host/fakes/fake.cpp": "",
    "fuzz/replay.cpp": "",
}


class Tidy(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="si-ready-tidy-")
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        shutil.copytree(ROOT / "scripts", self.root / "scripts")
        for name, text in SOURCES.items():
            self.write(name, text)
        self.write("docs/testing.md", "")
        self.compile("room/far.cpp", "room/near.cpp", "room/other.cpp")
        for name, text in (("clang++-19", ""), ("cmake", ""), ("run-clang-tidy-19", 'echo "by the preset: $*"'),
                           ("clang-tidy-19", 'echo "by its flags: $*"; exit "${STATUS:-0}"')):
            self.write(f"bin/{name}", f"#!/bin/sh\n{text}\n")
            (self.root / "bin" / name).chmod(0o755)
        self.git("init", "-q")
        for message in ("One", "Two"):
            self.git("add", ".")
            self.git("-c", "user.name=A", "-c", "user.email=a@b", "commit", "-q", "--allow-empty", "-m", message)

    def write(self, name, text):
        (self.root / name).parent.mkdir(parents=True, exist_ok=True)
        (self.root / name).write_text(text)

    def compile(self, *names):
        commands = [{"directory": "/", "command": "c++", "file": f"{self.root}/{name}"} for name in names]
        self.write("build/tidy/compile_commands.json", json.dumps(commands, indent=2).replace("    ", "  "))

    def git(self, *arguments):
        subprocess.run(["git", *arguments], cwd=self.root, check=True)

    def tidy(self, *arguments, **variables):
        environment = dict(os.environ, PATH=f"{self.root}/bin:{os.environ['PATH']}", SI_DEEP="", **variables)
        return subprocess.run([self.root / "scripts/tidy", *arguments], cwd=self.root, env=environment,
                              capture_output=True, text=True, check=False)

    def test_who_includes_a_changed_header_through_others_is_checked(self):
        self.write("room/deep.h", "int Deeper();\n")
        result = self.tidy()
        self.assertIn("remark: 2 of 4 sources", result.stdout, result)
        self.assertRegex(result.stdout, "by the preset: .*room/far.cpp .*room/near.cpp")

    def test_what_the_preset_does_not_compile_is_checked_with_flags_of_its_own(self):
        self.write("fuzz/replay.cpp", "int i;\n")
        result = self.tidy()
        self.assertEqual(0, result.returncode, result)
        self.assertIn("by its flags: -quiet fuzz/replay.cpp -- -std=c++20\n", result.stdout)
        self.assertNotIn("by the preset", result.stdout)
        self.assertEqual(1, self.tidy(STATUS="1").returncode)

    def test_a_source_that_nobody_compiles_is_refused_by_name(self):
        self.compile("room/far.cpp", "room/near.cpp")
        result = self.tidy()
        self.assertEqual(1, result.returncode, result)
        self.assertIn("nothing tells how these are compiled", result.stderr)
        self.assertTrue(result.stderr.endswith("\nroom/other.cpp\n"), result)

    def test_nothing_has_changed(self):
        self.assertRegex(self.tidy().stdout, "remark: no source has changed since")


if __name__ == "__main__":
    unittest.main()
