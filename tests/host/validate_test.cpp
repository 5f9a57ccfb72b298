// vtv validate: the real provider passes, and each broken one fails where it is broken.
#include "vtv_process.h"

#include <algorithm>

using testing::HasSubstr;

namespace {

struct Broken {
    const char* fake;
    const char* check;  // the check that must find it
    const char* why;
};

class BrokenProviderTest : public VtvTest, public testing::WithParamInterface<Broken> {};

}  // namespace

TEST_P(BrokenProviderTest, FailsTheCheckThatIsMeantForIt) {
    const std::string file = std::string(FAKES) + "/libfake-" + GetParam().fake + ".so";
    const Output output = Vtv({"validate", file, "--filter", GetParam().check, "--timeout", "5"});
    EXPECT_EQ(output.code, 1);
    EXPECT_THAT(output.out, HasSubstr(std::string("FAILED  ") + GetParam().check));
    EXPECT_THAT(output.out, HasSubstr(GetParam().why));
}

INSTANTIATE_TEST_SUITE_P(
    Validate, BrokenProviderTest,
    testing::Values(
        Broken{"missing_entry_point", "exports-entry-points", "check_enable_bool"},
        Broken{"unserved_call", "exports-entry-points", "vconf_get_weather"},
        Broken{"no_table", "creates-a-table", "hands out no table"},
        Broken{"create_fails", "creates-a-table", "does not return 0"},
        Broken{"missing_slot", "fills-its-slots", "slot 14 (get_help_text) is null"},
        Broken{"extra_slot", "leaves-other-slots-null", "slot 40"},
        Broken{"deletes_null", "deletes-nothing", "does not return 1"},
        Broken{"crashes_on_null", "null-keys-match-nothing", "crashed: Segmentation fault"},
        Broken{"shows_unknown", "unknown-keys-are-hidden", "visible: "},
        Broken{"writes_unknown_value", "unknown-keys-write-nothing", "get_int() writes the value"},
        Broken{"writes_unknown_value", "null-out-pointers-are-spared",
               "crashed: Segmentation fault"},
        Broken{"typed_no", "typed-checks-say-yes", "is not 1"},
        Broken{"static_text", "texts-are-fresh", "handed out twice"},
        Broken{"static_text", "texts-are-not-leaked", "crashed: Aborted"},
        Broken{"leaks_text", "texts-are-not-leaked", "grow the heap"},
        Broken{"hangs", "lists-are-whole", "did not come to an end"},
        Broken{"hole_in_list", "lists-are-whole", "entry 1 is null"},
        Broken{"wrong_kind", "lists-are-whole", "its kind"},
        Broken{"leaks_list_text", "lists-are-freed-whole", "bytes behind"},
        Broken{"frees_twice", "lists-are-freed-whole", "crashed: Aborted"},
        Broken{"wrong_action", "popups-act", "the action is \"999\""}),
    [](const testing::TestParamInfo<Broken>& tested) {
        std::string name = std::string(tested.param.fake) + "_" + tested.param.check;
        std::replace(name.begin(), name.end(), '-', '_');
        return name;
    });

TEST_F(VtvTest, TheProviderThatShipsPassesEveryCheck) {
    const Json::Value json = OkJson({"validate", PROVIDER, "--json"});
    EXPECT_GE(json.size(), 20U);
    for (const Json::Value& check : json) {
        EXPECT_TRUE(check["passed"].asBool()) << check["name"] << check["why"];
    }
}

TEST_F(VtvTest, ASoundProviderThatIsNotOursPassesEveryCheck) {
    Ok({"validate", std::string(FAKES) + "/libfake-sound.so"});
}

TEST_F(VtvTest, TheChecksAreNamedAndDescribed) {
    for (const Json::Value& check : OkJson({"validate", "--list", "--json"})) {
        const std::string name = check["name"].asString();
        EXPECT_EQ(name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-"),
                  std::string::npos)
            << name;
        EXPECT_EQ(check["description"].asString().back(), '.') << name;
    }
}
