"""The scripts on a machine that lacks their tool: each names the package that has it, and none says that all is well."""

import pathlib
import unittest

from checkout import CheckoutTest

# What some look for first, and this machine need not have.
OTHERS = {"clang++-19", "dh", "llvm-cov-19"}


class MissingTools(CheckoutTest):
    def setUp(self):
        super().setUp()
        (self.root / "build/profiles").mkdir(parents=True)
        self.write("build/lib/libsi-ready.so", "")
        self.copy("si-ready/exports.txt")
        self.bin = self.root / "bin"
        for program in pathlib.Path("/usr/bin").iterdir():
            (self.bin / program.name).symlink_to(program)
        for name in OTHERS:
            self.provide(name)

    def provide(self, name):
        if not (self.bin / name).exists():
            (self.bin / name).symlink_to("/usr/bin/false")

    def start_without(self, lacking, *command):
        """Where all programs of this machine are but that one."""
        (self.bin / lacking).unlink(missing_ok=True)
        return self.start(*command, PATH=str(self.bin))

    def test_the_package_is_named(self):
        for command, tool, package in (
                ("scripts/abi", "abidw", "abigail-tools"), ("scripts/bench --sample", "valgrind", "valgrind"),
                ("scripts/build-packages build/packages", "lintian", "lintian"),
                ("scripts/check-library build", "readelf", "binutils"), ("scripts/coverage build", "llvm-cov-19", "llvm-19"),
                ("scripts/fuzz replace", "clang++-19", "clang-19"), ("scripts/fuzz --coverage", "jq", "jq"),
                ("scripts/tidy", "run-clang-tidy-19", "clang-tidy-19")):
            with self.subTest(command):
                result = self.start_without(tool, *command.split())
                self.provide(tool)
                self.assertEqual(1, result.returncode, result)
                self.assertIn(f"the program {tool} is missing: apt-get install {package}\n", result.stderr)

    def test_a_library_that_cannot_be_read_is_not_said_to_lack_anything(self):
        result = self.start("scripts/check-library", "build")
        self.assertEqual(1, result.returncode, result)
        self.assertNotIn("ok: ", result.stdout)


if __name__ == "__main__":
    unittest.main()
