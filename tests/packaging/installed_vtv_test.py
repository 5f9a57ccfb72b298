"""The commands as they are installed: moved to another place, and with nothing of the build in reach."""

import json
import os

from installed import CONSUMER, InstalledCase, from_cache


class InstalledVtvTest(InstalledCase):
    def setUp(self):
        super().setUp()
        self.place = self.install()
        self.lib = self.place / from_cache("CMAKE_INSTALL_LIBDIR")
        self.vtv = self.place / "bin/vtv"

    def test_a_page_is_shown_in_the_language_of_the_tv(self):
        self.done(self.vtv, "new", "kitchen", "--model", "farfield-eu")
        self.done(self.vtv, "set", "db/menu_widget/language", "string", "de_DE.utf8", "--tv", "kitchen")
        self.assertIn("Sprachassistent", self.done(self.vtv, "show", "--tv", "kitchen"))

    def test_the_provider_is_the_one_that_was_installed(self):
        (self.lib / "si-ready/libsi-ready.so").unlink()
        result = self.run_command(self.vtv, "show")
        self.assertEqual(3, result.returncode, result)
        self.assertIn(f"{self.lib}/si-ready/libsi-ready.so: there is no such provider", result.stderr)

    def test_an_application_is_played_by_the_program_that_was_installed(self):
        self.done(self.vtv, "press", "voice-assistant", "--choose", "2", "--ok")
        running = json.loads(self.done(self.vtv, "app", "list", "--json"))
        programs = [os.readlink(f"/proc/{application['pid']}/exe") for application in running]
        self.done(self.vtv, "app", "cancel")
        self.assertEqual([str(self.place / "bin/vtv-app")], programs)

    def test_the_explorer_has_all_that_it_needs(self):
        explore = self.place / "bin/vtv-explore"
        self.done(explore, "depends", "-q", "voice")
        self.done(explore, "sequences", "-q", "--depth", "1", "--tv", "farfield-eu")
        inputs = self.place / "share/vtv/explorer/inputs.toml"
        inputs.rename(self.folder / "inputs.toml")
        self.assertEqual(4, self.run_command(explore, "depends", "-q", "voice").returncode)
        (self.lib / "si-ready/libsi-ready.so").unlink()
        result = self.run_command(explore, "depends", "-q", "voice", VTV_EXPLORER_DATA=self.folder)
        self.assertEqual(3, result.returncode, result)

    def test_a_provider_of_another_project_answers_for_the_page(self):
        self.done(from_cache("CMAKE_C_COMPILER"), "-shared", "-fPIC", f"-I{self.place}/include/si-ready",
                  CONSUMER / "provider.c", "-o", "own.so")
        self.assertIn("general-voice-onboarding", self.done(self.vtv, "show", "--provider", "own.so"))

    def test_a_page_of_the_manual_tells_of_each_program_and_exploration(self):
        for page, tells in (("vtv", "vtv show"), ("vtv-show", "--all"), ("vtv-app", "THE PROGRAM VTV"),
                            ("vtv-app-list", "vtv app list"), ("vtv-explore", "vtv explore"),
                            ("vtv-explore-check", "vtv explore check"), ("vtv-impact", "OLD")):
            text = (self.place / f"share/man/man1/{page}.1").read_text(encoding="utf-8").replace("\\-", "-")
            self.assertIn(tells, text, page)
            self.assertNotIn(str(self.folder), text, page)
