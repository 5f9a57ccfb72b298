"""scripts/check-words: what a reader cannot open is found wherever it stands."""

import unittest

from checkout import CheckoutTest

# In two pieces, so that this file is not found itself.
FORBIDDEN = "see tick" + "et #12\n"


class CheckWords(CheckoutTest):
    def check(self):
        return self.start("scripts/check-words")

    def expect_found(self, name):
        result = self.check()
        self.assertNotEqual(0, result.returncode)
        self.assertIn(f"{name}:1:", result.stdout)

    def test_plain_words_pass(self):
        (self.root / "page.md").write_text("A page.\n")
        self.assertEqual(0, self.check().returncode)

    def test_what_nobody_can_open_is_told_with_its_place(self):
        (self.root / "page.md").write_text(FORBIDDEN)
        self.expect_found("page.md")

    def test_one_file_among_thousands_is_enough(self):
        (self.root / "a").write_text(FORBIDDEN)
        for number in range(8000):
            (self.root / f"a-file-with-a-name-that-is-rather-long-{number}").write_text("plain\n")
        self.expect_found("a")

    def test_a_message_of_a_commit_counts(self):
        self.git("init", "-q")
        self.git("commit", "-q", "--allow-empty", "-m", FORBIDDEN)
        result = self.check()
        self.assertNotEqual(0, result.returncode)
        self.assertIn("(in a commit message)", result.stdout)


if __name__ == "__main__":
    unittest.main()
