#!/usr/bin/env python3
"""Mutants can be interrupted, resumed and shared, and one that is the same program is none."""

import collections
import json
import os
import pathlib
import signal
import subprocess
import sys
import tempfile
import time
import unittest

import mutants

BUILD = os.environ["SI_BUILD"]
PROGRAM = [sys.executable, "-B", mutants.__file__]


class MutantsTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.file = str(self.folder / "results")
        self.program = self.folder / "program"
        self.program.write_text("one")
        self.chosen = [{"name": str(number)} for number in range(20)]
        self.tried = []

    def results(self):
        return mutants.Results(self.file, [self.program])

    def attempt(self, mutant):
        self.tried.append(mutant["name"])
        return "told"

    def try_all(self, attempt, results):
        told = []
        is_whole = mutants.try_all(self.chosen, results, 2, attempt, lambda mutant: told.append(mutant["name"]))
        return is_whole, told

    def test_what_was_found_is_not_tried_again_and_is_told_all_the_same(self):
        self.assertEqual((True, 20), (lambda whole, told: (whole, len(told)))(*self.try_all(self.attempt, self.results())))
        self.assertEqual(20, len(self.tried))
        is_whole, told = self.try_all(self.attempt, self.results())
        self.assertEqual((True, 20, 20), (is_whole, len(set(told)), len(self.tried)))

    def test_what_another_program_has_found_is_tried_again(self):
        self.try_all(self.attempt, self.results())
        self.program.write_text("two")
        self.try_all(self.attempt, self.results())
        self.assertEqual(40, len(self.tried))

    def test_a_line_that_was_cut_off_is_tried_again_and_costs_no_other(self):
        self.try_all(self.attempt, self.results())
        whole = pathlib.Path(self.file).read_text()
        pathlib.Path(self.file).write_text(whole[:-5])
        lost = json.loads(whole.splitlines()[-1])["mutant"]
        self.tried.clear()
        self.try_all(self.attempt, self.results())
        self.assertEqual([lost], self.tried)
        self.assertEqual(20, len(self.results().verdicts))

    def test_an_interrupted_run_says_so_keeps_what_it_found_and_goes_on_there(self):
        def attempt(mutant):
            if mutant["name"] == "5":
                os.kill(os.getpid(), signal.SIGINT)
            time.sleep(0.05)
            return self.attempt(mutant)

        is_whole, told = self.try_all(attempt, self.results())
        self.assertFalse(is_whole)
        self.assertLess(len(self.tried), 20)
        self.assertEqual(set(told) | set(self.tried), set(self.results().verdicts))
        is_whole, told = self.try_all(self.attempt, self.results())
        self.assertEqual((True, 20), (is_whole, len(set(told))))
        self.assertEqual({1}, set(collections.Counter(self.tried).values()))

    def test_the_parts_are_the_whole_and_none_is_in_two(self):
        everything = [mutant["name"] for mutant in mutants.all_mutants()]
        self.assertEqual(len(everything), len(set(everything)))
        parts = [name for part in (1, 2, 3) for name in mutants.part_of(everything, f"{part}/3")]
        self.assertEqual(sorted(everything), sorted(parts))

    def test_each_explanation_is_of_a_mutant_that_can_be_made(self):
        names = {mutant["name"] for mutant in mutants.all_mutants() + mutants.chosen_faults()}
        self.assertGreater(len(mutants.explained()), 20)
        self.assertEqual([], [name for name in mutants.explained() if name not in names])

    def test_the_sample_has_one_of_each_kind_in_each_source(self):
        everything = mutants.all_mutants()
        sample = collections.Counter((mutant["kind"], mutant["source"]) for mutant in mutants.sample_of(everything))
        groups = {(mutant["kind"], mutant["source"]) for mutant in everything}
        # Two arguments of those sources that change places have types that do not fit.
        groups -= {("argument", source) for source in mutants.SOURCES[1:4]}
        self.assertEqual({group: 1 for group in groups}, sample)

    def test_comparisons_and_null_checks_are_edited_and_templates_are_not(self):
        text = ("void f(std::vector<int>* list, int size) {\n    if (list != nullptr && size >= 3) {\n"
                "        g(size < 2);\n    }\n}\n")
        edits = [(kind, old.strip(), new.strip()) for kind, _, old, new in mutants.edits_of("x", text)
                 if kind in ("relation", "null check")]
        self.assertEqual([("relation", ">=", ">"), ("relation", "<", "<="),
                          ("null check", "if (list != nullptr && size >= 3) {", "if (true && size >= 3) {")], edits)

    def test_a_part_that_there_is_not_is_refused(self):
        for shard in ("0/3", "4/3", "1", "a/b", "1/0"):
            done = subprocess.run([*PROGRAM, "--build", BUILD, "--shard", shard], capture_output=True, text=True,
                                  check=False)
            self.assertEqual(2, done.returncode)
            self.assertIn(f"--shard is I/N, as 2/8, and not {shard}", done.stderr)

    def test_another_way_to_write_the_same_is_the_same_code_and_no_mutant(self):
        builder = mutants.Builder(BUILD)
        text = builder.source_of("general_voice_enablechecker")
        offset = text.index("return true;") + len("return ")
        for new, why in (("(true)", "the same code"), ("no_such_name", "does not build"), ("false", "")):
            mutant = {"source": "general_voice_enablechecker", "offset": offset, "old": "true", "new": new}
            self.assertEqual(why, builder.make(mutant, self.folder)[1], new)


if __name__ == "__main__":
    unittest.main()
