"""scripts/tidy: which sources it checks, with a clang-tidy that only tells what it was asked for."""

import json
import unittest

from checkout import CheckoutTest

SOURCES = {
    "room/deep.h": "int Deep();\n",
    "room/middle.h": '#include "room/deep.h"\n',
    "room/far.cpp": '#include "middle.h"\n',
    "room/near.cpp": '#include "deep.h"\n',
    "room/other.cpp": "#include <deep>\n",
    "tests/host/fakes/fake.cpp": "",
    "fuzz/replay.cpp": "",
}


class Tidy(CheckoutTest):
    def setUp(self):
        super().setUp()
        for name, text in SOURCES.items():
            self.write(name, text)
        self.write("docs/testing.md", "")
        self.write(".gitignore", "/build/\n/bin/\n")
        self.compile("room/far.cpp", "room/near.cpp", "room/other.cpp")
        for name, text in (("clang++-19", ""), ("cmake", ""), ("run-clang-tidy-19", 'echo "by the preset: $*"'),
                           ("clang-tidy-19", 'echo "by its flags: $*"; exit "${STATUS:-0}"')):
            self.program(name, text)
        self.git("init", "-q")
        for message in ("One", "Two"):
            self.git("add", ".")
            self.git("commit", "-q", "--allow-empty", "-m", message)

    def compile(self, *names):
        commands = [{"directory": "/", "command": "c++", "file": f"{self.root}/{name}"} for name in names]
        self.write("build/tidy/compile_commands.json", json.dumps(commands, indent=2).replace("    ", "  "))

    def tidy(self, **variables):
        return self.start("scripts/tidy", **variables)

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

    def test_a_source_that_was_not_added_yet_is_checked_and_so_is_who_includes_it(self):
        self.write("room/new.cpp", "int i;\n")
        self.write("room/new.h", "int New();\n")
        self.write("room/other.cpp", '#include "new.h"\n')
        self.git("add", "room/other.cpp")
        self.git("commit", "-q", "-m", "Three")
        self.git("commit", "-q", "--allow-empty", "-m", "Four")
        self.compile("room/far.cpp", "room/near.cpp", "room/other.cpp", "room/new.cpp")
        result = self.tidy()
        self.assertIn("remark: 2 of 5 sources", result.stdout, result)
        self.assertRegex(result.stdout, "by the preset: .*room/new.cpp .*room/other.cpp")

    def test_what_a_developer_does_not_keep_is_left_alone(self):
        self.write(".git/info/exclude", "/cmake-build-debug/\n")
        self.write("cmake-build-debug/CompilerId.c", "")
        (self.root / "room/other.cpp").unlink()
        self.assertEqual(0, self.tidy().returncode, self.tidy())

    def test_nothing_has_changed(self):
        self.assertRegex(self.tidy().stdout, "remark: no source has changed since")


if __name__ == "__main__":
    unittest.main()
