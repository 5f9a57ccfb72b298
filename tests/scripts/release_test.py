"""What a release rests on: one version wherever it is told, packages built with what is named, and a clean tree."""

import re
import unittest

from checkout import ROOT, CheckoutTest

TELLS = ("CMakeLists.txt", "CHANGELOG.md", "debian/changelog")


class Version(CheckoutTest):
    def setUp(self):
        super().setUp()
        self.copy(*TELLS)

    def ask(self):
        return self.start("scripts/version")

    def test_the_build_the_changes_and_the_packages_have_one(self):
        result = self.ask()
        self.assertEqual(0, result.returncode, result)
        self.assertRegex(result.stdout, r"^\d+\.\d+\.\d+\n$")

    def test_another_one_in_any_place_is_named(self):
        version = self.ask().stdout.strip()
        for name in TELLS:
            file = self.root / name
            text = file.read_text()
            file.write_text(text.replace(version, "77.0.1", 1))
            result = self.ask()
            self.assertEqual(1, result.returncode, name)
            self.assertIn("77.0.1", result.stderr, name)
            file.write_text(text)


class Packages(unittest.TestCase):
    def test_they_are_built_with_what_run_installs(self):
        control = (ROOT / "debian/control").read_text()
        needs = re.search(r"^Build-Depends:\n((?: .*\n)+)", control, re.MULTILINE).group(1)
        needs = {line.strip().split(" ")[0].rstrip(",") for line in needs.splitlines()}
        lists = (ROOT / "scripts/packages.sh").read_text()
        installs = set()
        for name in ("PACKAGES", "WINDOW_PACKAGES"):
            installs |= set(re.search(rf"^{name}=\((.*?)\)", lists, re.MULTILINE | re.DOTALL).group(1).split())
        # Every package is built with g++; fonts are read.
        installs -= {"g++", "fonts-dejavu-core", "fonts-wqy-microhei"}
        self.assertEqual(installs, needs - {"debhelper-compat"})


class Release(CheckoutTest):
    def test_what_is_not_committed_is_refused_by_name(self):
        self.git("init", "-q")
        self.git("add", ".")
        self.git("commit", "-q", "-m", "All")
        self.write("forgotten", "")
        result = self.start("scripts/release")
        self.assertEqual(1, result.returncode, result)
        self.assertRegex(result.stderr, r"(?s)this is not; commit it.*\?\? forgotten")
        self.assertFalse((self.root / "build").exists())
