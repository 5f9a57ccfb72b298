"""./run on a machine that lacks everything: what it says before the first silence, and what it builds for its user."""

import json
import unittest

from checkout import ROOT, CheckoutTest

PROGRAMS = {
    "dpkg": "echo amd64",
    "dpkg-query": '[ ! -e "$MACHINE/installed" ] || echo amd64 installed',
    "apt-get": 'touch "$MACHINE/installed"',
    "sudo": 'exec "$@"',
    "cmake": """[ "$1" != --build ] || {
    mkdir -p "build/$3/bin"
    printf '#!/bin/sh\\necho the page\\n' | tee "build/$3/bin/vtv" >"build/$3/bin/vtv-window"
    chmod +x "build/$3/bin/vtv" "build/$3/bin/vtv-window"
}""",
}


class RunCommand(CheckoutTest):
    def setUp(self):
        super().setUp()
        self.copy("run")
        for name, text in PROGRAMS.items():
            self.program(name, text)

    def run_lines(self, *arguments, **variables):
        result = self.start("./run", *arguments, MACHINE=str(self.root), TMPDIR=str(self.root), **variables)
        self.assertEqual(0, result.returncode, result)
        return result.stdout.splitlines()

    def test_how_long_it_takes_is_said_before_anything_is_installed(self):
        for arguments in ([], ["window"]):
            (self.root / "installed").unlink(missing_ok=True)
            first, second, *_ = self.run_lines(*arguments)
            self.assertRegex(first, "^The first time, installing and building take ")
            self.assertRegex(second, "^Installing from Debian: ")

    def test_nothing_is_promised_the_second_time(self):
        for arguments in ([], ["window"]):
            self.run_lines(*arguments)
            self.assertNotIn("first time", "\n".join(self.run_lines(*arguments)))

    def test_nothing_is_promised_twice_when_another_user_goes_on(self):
        self.assertNotIn("first time", "\n".join(self.run_lines(SI_HANDED_OVER="true")))

    def test_minutes_are_promised_only_of_what_is_measured(self):
        self.assertIn("about 3 minutes", self.run_lines()[0])
        self.assertNotRegex(self.run_lines("window")[0], r"\d")

    def test_the_text_needs_no_toolkit(self):
        self.assertNotRegex("\n".join(self.run_lines()), "efl|elementary")
        (self.root / "installed").unlink()
        self.assertRegex("\n".join(self.run_lines("window")), "libefl-all-dev")

    def test_a_warning_stops_no_user(self):
        presets = {preset["name"]: preset for preset in
                   json.loads((ROOT / "CMakePresets.json").read_text())["configurePresets"]}

        def is_strict(name):
            parents = presets[name].get("inherits", [])
            return name == "strict" or any(map(is_strict, [parents] if isinstance(parents, str) else parents))

        self.assertEqual({"release": False, "window": False, "gcc": True, "window-tests": True},
                         {name: is_strict(name) for name in ("release", "window", "gcc", "window-tests")})


if __name__ == "__main__":
    unittest.main()
