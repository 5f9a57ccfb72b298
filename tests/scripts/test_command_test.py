"""./test with legs of its own and a registry that says what a test wants: what passes, fails and may be skipped."""

import json
import unittest

from checkout import ROOT, CheckoutTest

LEGS = """
LEGS=(fresh gcc asan good bad nowhere needy long kinds)
declare -A LEG_TITLE=([fresh]=f [gcc]=g [asan]=a [good]="a good leg" [bad]=b [nowhere]=n [needy]=n [long]=l [kinds]=k)
declare -A LEG_SAMPLE=([long]=none [kinds]=none [good]="a sample")
declare -A LEG_PACKAGES=([needy]=rare-package [asan]=rare-package)
declare -A LEG_DEEP_PACKAGES=([good]=rare-package)
NEVER_SKIPPED=(fresh gcc asan)
is_leg() { [[ -n ${1:-} && -n ${LEG_TITLE[$1]:-} ]]; }
is_deep_only() { [[ ${LEG_SAMPLE[$1]:-} == none ]]; }
leg_fresh() { leg_nowhere; }
leg_gcc() {
    say '<testsuite><testcase/><testcase/><testcase/></testsuite>' >$LOGS/gcc.a.xml
    say "remark: short is ${SI_SHORT:-false}, good has passed: $(has_passed good && say yes || say no)"
}
leg_kinds() { say "$REPORT" >$LOGS/kinds.a.xml; }
leg_asan() { say asan; }
leg_good() { say "remark: deep is ${SI_DEEP:-false}"; }
leg_bad() { say "the reason"; false; say "not reached"; }
leg_nowhere() { say "skip: there is no chroot"; exit "$CANNOT_RUN"; }
leg_needy() { say needy; }
leg_long() { say long; }
"""

PAGE = """
## The last deep run

Of old.

| leg | --all | --deep | commit and date of --deep | outcome |
|---|---|---|---|---|
| good | 1.5 | 12.5 | | |
| long | - | 40 | `abc1234` 2001-02-03 | ok, of old |
| together | 40 | 80 | | |

## Behind it
"""

DPKG_QUERY = """
for name; do :; done
grep -qx "$name" "$REGISTRY/missing" || echo amd64 installed
"""

APT_GET = """
cat "$REGISTRY/says"
exit 100
"""

LACKING = "E: Unable to locate package rare-package\n"
UNREACHABLE = "Err:1 http://deb.example bookworm\n  Could not resolve 'deb.example'\n" + LACKING


class TestCommand(CheckoutTest):
    report = ""

    def setUp(self):
        super().setUp()
        self.copy("test", ".ci")
        self.write("scripts/legs.sh", LEGS)
        self.write("docs/testing.md", PAGE)
        self.write("missing", "")
        self.program("dpkg-query", DPKG_QUERY)
        self.program("dpkg", "echo amd64")
        self.program("apt-get", APT_GET)
        self.program("sudo", 'exec "$@"')
        self.program("sleep", "")

    def registry_says(self, text):
        self.write("missing", "rare-package\n")
        self.write("says", text)

    def start(self, *command, ci="", **variables):
        return super().start(*command, CI=ci, REGISTRY=str(self.root), REPORT=self.report, TMPDIR=str(self.root), **variables)

    def expect(self, status, last, result):
        self.assertEqual((status, last), (result.returncode, result.stdout.splitlines()[-1]), result)

    def test_cases_are_summed_and_a_leg_without_any_is_one(self):
        self.expect(0, "4 passed, 0 failed", self.start("./test", "gcc", "good"))

    def test_only_what_is_asked_for_without_a_word_leaves_the_longest_tests_to_all(self):
        for command, short in ((["./test"], "true"), (["./test", "gcc"], "false"),
                               (["env", "SI_SHORT=true", "./test", "gcc"], "false")):
            result = self.start(*command)
            self.expect(0, "3 passed, 0 failed", result)
            self.assertIn(f"short is {short}", result.stdout, command)

    def test_a_leg_knows_which_have_passed_before_it_in_this_run(self):
        for command, passed in ((["good", "gcc"], "yes"), (["gcc", "good"], "no"), (["bad", "gcc"], "no")):
            for before in ([], ["env", "SI_PASSED_LEGS=good"]):
                self.assertIn(f"good has passed: {passed}", self.start(*before, "./test", *command).stdout, command)

    def test_what_the_short_tests_leave_out_is_the_rest(self):
        presets = json.loads((ROOT / "CMakePresets.json").read_text())["testPresets"]
        filters = {preset["name"]: preset["filter"] for preset in presets if "filter" in preset}
        self.assertEqual(filters["short"]["exclude"]["name"] + r"|^provider\.Model\.", filters["rest"]["include"]["name"])

    def test_cases_that_failed_or_did_not_run_are_told_apart(self):
        for failed, skipped in (("<failure/>", 'result="skipped"'), ("<error/>", 'status="notrun"'),
                                ("<failure/>", 'status="disabled"')):
            self.report = f'<a><testcase/><testcase>{failed}</testcase><testcase {skipped}/></a>'
            self.expect(1, "1 passed, 1 failed, 1 skipped", self.start("./test", "kinds"))
        self.report = "<a><testcase/><testcase><skipped/></testcase></a>"
        self.expect(0, "1 passed, 0 failed, 1 skipped", self.start("./test", "kinds"))

    def test_a_report_that_was_not_written_to_its_end_is_a_failure(self):
        self.report = "<a><testcase/>"
        self.expect(1, "0 passed, 1 failed", self.start("./test", "kinds"))

    def test_a_leg_that_fails_shows_what_it_printed(self):
        result = self.start("./test", "good", "bad")
        self.expect(1, "1 passed, 1 failed", result)
        self.assertIn("the reason", result.stdout)
        self.assertNotIn("not reached", result.stdout)

    def test_a_leg_that_cannot_run_here_is_named_as_skipped(self):
        result = self.start("./test", "good", "nowhere")
        self.expect(0, "1 passed, 0 failed, 1 skipped", result)
        self.assertRegex(result.stdout, "skip +nowhere .*there is no chroot")

    def test_nothing_but_skipped_legs_is_no_success(self):
        self.expect(1, "0 passed, 0 failed, 1 skipped", self.start("./test", "nowhere"))

    def test_a_leg_that_cannot_run_here_fails_in_ci(self):
        for leg in ("nowhere", "fresh"):
            result = self.start("./test", "good", leg, ci="true")
            self.expect(1, "1 passed, 1 failed", result)
            self.assertRegex(result.stdout, f"FAILED +{leg} .*may not be skipped here: there is no chroot")

    def test_a_leg_whose_packages_the_registry_lacks_is_skipped_in_ci(self):
        self.registry_says(LACKING)
        result = self.start("./test", "good", "needy", ci="true")
        self.expect(0, "1 passed, 0 failed, 1 skipped", result)
        self.assertRegex(result.stdout, "skip +needy .*Unable to locate package rare-package")

    def test_a_leg_whose_packages_cannot_be_fetched_fails_in_ci(self):
        self.registry_says(UNREACHABLE)
        self.expect(1, "1 passed, 1 failed", self.start("./test", "good", "needy", ci="true"))

    def test_a_leg_whose_packages_cannot_be_fetched_is_skipped_by_hand(self):
        self.registry_says(UNREACHABLE)
        self.expect(0, "1 passed, 0 failed, 1 skipped", self.start("./test", "good", "needy"))

    def test_what_only_the_whole_leg_needs_is_installed_for_that_alone(self):
        self.registry_says(LACKING)
        self.expect(0, "1 passed, 0 failed", self.start("./test", "good"))
        self.expect(0, "3 passed, 0 failed, 1 skipped", self.start("./test", "--deep", "gcc", "good"))

    def test_some_legs_are_never_skipped_in_ci(self):
        self.registry_says(LACKING)
        self.expect(1, "1 passed, 1 failed", self.start("./test", "good", "asan", ci="true"))
        self.expect(0, "1 passed, 0 failed, 1 skipped", self.start("./test", "good", "asan"))

    def test_all_leaves_to_deep_what_only_a_release_needs(self):
        for option, ran, sample in (("--all", False, "false"), ("--deep", True, "true")):
            result = self.start("./test", option)
            self.assertEqual(ran, " long " in result.stdout, result)
            self.assertRegex(result.stdout, f"ok +good .*deep is {sample}")

    def test_a_leg_named_behind_deep_runs_whole_and_alone(self):
        result = self.start("./test", "--deep", "good")
        self.expect(0, "1 passed, 0 failed", result)
        self.assertIn("deep is true", result.stdout)

    def test_ci_runs_all_and_skips_nothing_that_it_could_run(self):
        result = self.start(".ci/run")
        self.assertRegex(result.stdout, "FAILED +nowhere .*may not be skipped here")
        self.assertNotIn(" long ", result.stdout)

    def test_the_help_tells_each_leg_with_its_minutes(self):
        help_text = self.start("./test", "--help").stdout
        self.assertRegex(help_text, r"good +1\.5 +12\.5  a good leg \(a sample\)")
        self.assertRegex(help_text, r"together +40 +80")

    def test_the_figures_of_a_deep_run_replace_those_on_the_page(self):
        self.start("./test", "--deep", "good", "bad")
        result = self.start("scripts/figures", "--write")
        page = (self.root / "docs/testing.md").read_text()
        self.assertEqual(0, result.returncode, result)
        self.assertRegex(page, r"\| good \| 1\.5 \| 0\.0 \| `\w+` 20\d\d-\d\d-\d\d \| ok deep is true \|")
        self.assertRegex(page, r"\| bad \| 0\.0 \| 0\.0 \| `\w+` [-\d]+ \| FAILED")
        self.assertIn("| long | - | 40 | `abc1234` 2001-02-03 | ok, of old |", page)
        self.assertIn("\n## Behind it\n", page)
        self.assertEqual(1, page.count("## The last deep run"))

    def test_a_leg_that_does_the_same_in_both_is_measured_by_either_and_a_sample_is_no_deep_run(self):
        self.start("./test", "good")
        self.test_figures_that_nobody_measured_are_refused()
        self.start("./test", "good", "bad")
        page = self.start("scripts/figures").stdout
        self.assertRegex(page, r"\| good \| 0\.0 \| 12\.5 \|")
        self.assertRegex(page, r"\| bad \| 0\.0 \| 0\.0 \| `\w+` [-\d]+ \| FAILED")

    def test_figures_that_nobody_measured_are_refused(self):
        self.assertIn("run ./test --deep first", self.start("scripts/figures").stderr)

    def test_a_fresh_machine_that_cannot_be_made_is_skipped_with_the_reason(self):
        for name in ("mmdebstrap", "unshare"):
            self.program(name, "exit 1")
        (self.root / ".git").mkdir()
        for script in ("scripts/fresh", "scripts/deb"):
            result = self.start(script)
            self.assertEqual(77, result.returncode, result)
            self.assertRegex(result.stdout, "skip: (making a machine needs root|this machine lets nobody mount)")


if __name__ == "__main__":
    unittest.main()
