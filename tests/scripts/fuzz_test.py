"""scripts/fuzz: what is said wrongly ends at once, before anything is built or searched."""

import unittest

from checkout import CheckoutTest


class Fuzz(CheckoutTest):
    def test_a_number_that_is_missing_or_none_is_refused(self):
        for option in ("--seconds", "--runs", "--total"):
            for number in ((), ("0",), ("-1",), ("ten",), ("--keep",)):
                with self.subTest(option=option, number=number):
                    self.refused("a whole number above 0 is missing", option, *number)

    def test_what_has_no_use_for_it_is_refused_with_a_total(self):
        for more in (("replace",), ("--keep",)):
            with self.subTest(more=more):
                self.refused("--total is for the provider alone", "--total", "5", *more)

    def test_a_target_that_there_is_not_is_refused_with_those_that_there_are(self):
        self.refused("there is no target \"models\", but provider replace model", "models")

    def refused(self, reason, *arguments):
        self.program("cmake", "echo builds >&2; exit 1")
        self.program("clang++-19", "")
        ended = self.start("scripts/fuzz", *arguments)
        self.assertEqual(ended.returncode, 2, ended)
        self.assertIn(reason, ended.stderr)
        self.assertNotIn("builds", ended.stdout + ended.stderr)


if __name__ == "__main__":
    unittest.main()
