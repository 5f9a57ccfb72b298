#!/usr/bin/env python3
"""scripts/abi: whatever is added to the contract, taken from it or changed in it is told, and what a provider exports."""

import unittest

from checkout import CheckoutTest

HEADER = "abi/si_provider.h"
# Instead of the provider: a library whose one function takes what $PARAMETER says.
CMAKE = """
mkdir -p build/abi/lib
echo "int answer($PARAMETER question) { return question != 0; }" >build/abi/answer.c
cc -g -shared -fPIC build/abi/answer.c -o build/abi/lib/libsi-ready.so
"""


class Abi(CheckoutTest):
    def setUp(self):
        super().setUp()
        self.copy("abi")
        (self.root / "si-ready").mkdir()
        self.program("cmake", CMAKE)
        kept = (self.root / "abi/si_provider.abi").read_text()
        self.assertEqual(0, self.compare("--write").returncode)
        self.assertEqual(kept, (self.root / "abi/si_provider.abi").read_text())

    def compare(self, *arguments, parameter="int"):
        return self.start("scripts/abi", *arguments, PARAMETER=parameter)

    def expect_told(self, result, where, what):
        self.assertEqual(1, result.returncode, result)
        self.assertIn(f"Changed since {where} was written", result.stdout)
        self.assertIn(what, result.stdout)

    def expect_change_told(self, old, new, what):
        header = self.root / HEADER
        before = header.read_text()
        self.assertEqual(1, before.count(old), old)
        header.write_text(before.replace(old, new))
        self.expect_told(self.compare(), "abi/si_provider.abi", what)
        header.write_text(before)

    def expect_addition_told(self, line, what):
        last = "\n#ifdef __cplusplus\n}\n"
        self.expect_change_told(last, f"\n{line}\n{last}", what)

    def test_what_is_as_before_passes(self):
        result = self.compare()
        self.assertEqual((0, ""), (result.returncode, result.stdout))

    def test_a_new_constant_is_told_whatever_it_is_made_of(self):
        self.expect_addition_told("#define SI_V2 3", "contract_SI_V2_3")
        self.expect_addition_told("#define SI_MORE (1 << 3)", "contract_SI_MORE_8")
        self.expect_addition_told('#define SI_NAME "a-name"', "contract_SI_NAME_a_name")

    def test_a_new_type_is_told(self):
        self.expect_addition_told("enum SINew { SI_ONE = 1, SI_TWO };", "contract_SI_TWO_2")
        self.expect_addition_told("enum { /* first */ SI_FIRST };", "contract_SI_FIRST_0")
        self.expect_addition_told("typedef struct {\n    int a;\n} SINew;", "contract_SINew")

    def test_a_new_function_is_told_whatever_it_returns(self):
        self.expect_addition_told("const char* provider_name(void);", "provider_name")
        self.expect_addition_told("int new_question(const char* key,\n                 int value);", "new_question")

    def test_what_is_changed_or_gone_is_told(self):
        self.expect_change_told("#define SI_PROPERTY_SIZE 255", "#define SI_PROPERTY_SIZE 256", "SI_PROPERTY_SIZE_256")
        self.expect_change_told("    void* slot_15;\n", "", "SIProviderTable")
        self.expect_change_told("int check_enable_bool(const char* key, bool value);\n", "", "check_enable_bool")
        self.expect_change_told("int create_provider(void*** table);", "int create_provider(void** table);", "create_provider")

    def test_what_the_provider_exports_is_compared_too(self):
        self.expect_told(self.compare(parameter="long"), "si-ready/si-ready.abi", "answer")


if __name__ == "__main__":
    unittest.main()
