// vtv validate: the real provider passes, and each broken one fails where it is broken.
#include "vtv_process.h"

#include <algorithm>
#include <set>

using testing::HasSubstr;

namespace {

std::string Fake(const std::string& name) {
    return std::string(FAKES) + "/libfake-" + name + ".so";
}

struct Broken {
    const char* fake;
    const char* check;  // the check that must find it
    const char* why;
};

void PrintTo(const Broken& broken, std::ostream* out) {
    *out << broken.fake << ", found by " << broken.check;
}

// At least one for each check.
constexpr Broken kBroken[] = {
    {"exits_at_its_end", "loads-and-unloads", "stays in the process"},
    {"no_table", "creates-a-table", "hands out no table"},
    {"create_fails", "creates-a-table", "does not return 0"},
    {"short_table", "table-is-whole", "52 slots need"},
    {"missing_slot", "fills-its-slots", "slot 14 (get_help_text) is null"},
    {"extra_slot", "leaves-other-slots-null", "slot 40"},
    {"delete_fails", "deletes-its-table", "does not return 0"},
    {"clears_pointer", "delete-leaves-the-pointer", "writes the host's pointer"},
    {"deletes_null", "deletes-nothing", "does not return 1"},
    {"creates_once", "creates-again", "create_provider() fails the 2. time"},
    {"one_table", "creates-twice", "the first table again"},
    {"lives_once", "lives-again", "does not return 0"},
    {"leaks_life", "lives-are-not-leaked", "grow the heap"},
    {"needs_its_table", "answers-outside-its-life",
     "crashed: Segmentation fault (before create_provider())"},
    {"keeps_watch", "forgets-the-tv", "crashed: Segmentation fault (the policy changes after"},
    {"prints", "prints-nothing", "7 bytes are printed"},
    {"takes_signal", "leaves-signals-alone", "Terminated"},
    {"clears_alarm", "leaves-timers-alone", "the host's alarm()"},
    {"changes_folder", "leaves-the-folder-alone", "working folder is now /"},
    {"sets_environment", "leaves-the-environment-alone", "FAKE=was here"},
    {"sets_locale", "leaves-the-locale-alone", "is now C.UTF-8"},
    {"leaves_file_open", "leaves-descriptors-alone", "is left open: /dev/null"},
    {"starts_thread", "starts-no-thread", "2 threads"},
    {"starts_process", "starts-no-process", "a process is started"},
    {"crashes_on_null", "null-keys-match-nothing",
     "crashed: Segmentation fault (the texts of a null key)"},
    {"shows_unknown", "unknown-keys-are-hidden", "visible: "},
    {"writes_unknown_value", "unknown-keys-write-nothing", "get_int() writes the value"},
    {"sets_unknown", "unknown-keys-set-nothing", "writes db/fake/value"},
    {"matches_beginnings", "keys-are-compared-whole", "visible: \"menu/system/general-voicex\""},
    {"ignores_case", "keys-have-case", "visible: \"MENU/SYSTEM"},
    {"known_by_address", "keys-are-read-each-time", "another key at its address"},
    {"writes_unknown_value", "null-out-pointers-are-spared",
     "crashed: Segmentation fault (get_int() with a null out-pointer)"},
    {"typed_no", "typed-checks-say-yes", "is not 1"},
    {"yes_is_2", "answers-are-0-or-1", "visibility 2"},
    {"swayed_by_value", "values-do-not-sway-rules", "answered otherwise with the value 1"},
    {"values_return_1", "value-slots-return-0", "set_int() of "},
    {"adds_to_value", "values-are-written-or-left", "makes -6 of -7 and 4712 of 4711"},
    {"wide_value", "integers-take-four-bytes", "get_int() of voice-wake-up writes more"},
    {"stores_action", "actions-are-no-values", "with 9999 changes the value"},
    {"indexes_by_value", "extreme-values-are-survived",
     "crashed: Segmentation fault (set_int() of voice-assistant with -2147483648)"},
    {"forgets_value", "switches-hold-their-value", "was set to 1 and reads 0"},
    {"stores_any_value", "switches-are-on-or-off", "was set to 2 and reads 2"},
    {"takes_wrong_choice", "choices-can-be-taken", "the choice 1 was taken, and the value is 2"},
    {"takes_any_choice", "unknown-choices-are-refused", "is no choice and was taken"},
    {"leaks_value", "values-are-not-leaked", "voice-wake-up: get_int() and set_int() grow"},
    {"leaks_bundle", "launches-are-not-leaked", "grow the heap"},
    {"texts_return_1", "text-slots-return-0", "get_display_name() of "},
    {"static_text", "texts-are-fresh", "handed out twice"},
    {"changing_title", "texts-are-steady", "the title changes"},
    {"empty_title", "texts-are-not-empty", "the title is empty"},
    {"latin1_title", "texts-are-utf8", "the title of voice in "},
    {"leaves_title", "absent-texts-are-null", "leaves the pointer as it was"},
    {"static_text", "texts-are-not-leaked", "crashed: Aborted"},
    {"leaks_text", "texts-are-not-leaked", "grow the heap"},
    {"short_property", "properties-are-buffers", "no buffer of 255 bytes"},
    {"static_property", "properties-are-fresh", "handed out twice"},
    {"clears_property", "unknown-properties-are-left", "is unknown and was written"},
    {"leaks_property", "properties-are-not-leaked", "grow the heap"},
    {"static_disable_text", "disable-texts-are-fresh", "handed out twice"},
    {"clears_disable_text", "disable-texts-are-written-or-left", "does not leave the pointer"},
    {"clears_disable_flag", "disable-texts-are-written-or-left", "sets the flag to false"},
    {"wide_flag", "disable-flags-take-one-byte", "a byte beside the flag"},
    {"leaks_disable_text", "disable-texts-are-not-leaked", "grow the heap"},
    {"lists_return_1", "list-slots-return-0", "list_item_text() does not return 0"},
    {"counts_too_many", "lists-have-room", "200 entries in an array for"},
    {"hangs", "lists-are-whole",
     "did not come to an end in 5 seconds (the list of voice-assistant)"},
    {"hole_in_list", "lists-are-whole", "entry 1 is null"},
    {"wrong_kind", "lists-are-whole", "its kind"},
    {"same_values", "list-values-differ", "its value is there already"},
    {"kind_of_item", "list-kinds-need-no-item", "(list_item_kind() without an item)"},
    {"one_list", "lists-are-fresh", "the same list is handed out twice"},
    {"reads_into_null", "list-readers-spare-null", "(list_item_text() with a null out-pointer)"},
    {"leaks_list_text", "lists-are-freed-whole", "grow the heap"},
    {"frees_twice", "lists-are-freed-whole", "crashed: Aborted"},
    {"needs_entries", "empty-lists-are-freed", "(freeing a list with null entries)"},
    {"borrowed_texts", "lists-outlive-a-policy", "changes when a policy is published"},
    {"boxes_return_1", "box-slots-return-0", "get_messagebox_info() of "},
    {"unending_box", "boxes-are-terminated", "a text of the box has no end"},
    {"three_buttons", "boxes-have-buttons", "the confirmation has 3 buttons"},
    {"appends_to_box", "boxes-replace-what-was-there", "becomes \"beforeChange it?\""},
    {"pads_box", "boxes-end-with-their-text", "writes byte 11 of a buffer for a text of 11 bytes"},
    {"title_without_box", "box-titles-have-boxes", "a title and a text, or neither"},
    {"leaks_box", "boxes-are-not-leaked", "grow the heap"},
    {"wrong_action", "popups-act", "the action is \"999\""},
    {"popup_without_button", "popups-are-whole", "no first button"},
    {"appends_to_popup", "popups-replace-what-was-there", "becomes \"beforeSet it up?\""},
    {"pads_popup", "popups-end-with-their-text", "writes byte 11"},
    {"long_action", "actions-take-five-bytes", "more than five bytes"},
    {"writes_when_asked", "questions-write-nothing", "asking about voice writes db/fake/asked"},
    {"flickers", "page-is-steady", "voice looks otherwise"},
    {"leaks_rule", "rules-are-not-leaked", "grow the heap"},
    {"trusts_the_platform", "survives-a-failing-platform", "crashed: Segmentation fault"},
    {"trusts_the_platform", "survives-each-failing-call",
     "crashed: Segmentation fault (while vconf_get_str() fails)"},
    {"remembers_failure", "recovers-from-a-failing-platform", "voice stays otherwise"},
    {"throws", "exceptions-stay-inside", "an exception leaves set_int() with 9999: std::bad_alloc"},
    {"trusts_the_policy", "survives-strange-policies",
     "crashed: Segmentation fault (with the policy \"\")"},
    {"trusts_settings", "survives-strange-settings", "(with db/"},
    {"needs_a_feature", "answers-on-every-model", "crashed: Aborted (on the model "},
};

std::string TestName(const std::string& fake, const std::string& check) {
    std::string name = fake + "_" + check;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

class BrokenProviderTest : public VtvTest, public testing::WithParamInterface<Broken> {};

}  // namespace

TEST_P(BrokenProviderTest, FailsTheCheckThatIsMeantForIt) {
    const Output output = Vtv({"validate", Fake(GetParam().fake), "--filter", GetParam().check,
                               "--timeout", GetParam().fake == std::string("hangs") ? "5" : "60"});
    EXPECT_EQ(output.code, 1);
    EXPECT_THAT(output.out, HasSubstr(std::string("FAILED  ") + GetParam().check));
    EXPECT_THAT(output.out, HasSubstr(GetParam().why));
}

INSTANTIATE_TEST_SUITE_P(Validate, BrokenProviderTest, testing::ValuesIn(kBroken),
                         [](const testing::TestParamInfo<Broken>& tested) {
                             return TestName(tested.param.fake, tested.param.check);
                         });

TEST_F(VtvTest, EachCheckHasAProviderThatFailsIt) {
    std::set<std::string> failed;
    for (const Broken& broken : kBroken) {
        failed.insert(broken.check);
    }
    std::set<std::string> listed;
    const Json::Value checks = OkJson({"validate", "--list", "--json"});
    for (const Json::Value& check : checks) {
        listed.insert(check["name"].asString());
    }
    EXPECT_EQ(failed, listed);
    EXPECT_GT(listed.size(), 44U);
}

TEST_F(VtvTest, TheProviderThatShipsPassesEveryCheck) {
    const Json::Value json = OkJson({"validate", PROVIDER, "--timeout", "100", "--json"});
    EXPECT_EQ(json.size(), OkJson({"validate", "--list", "--json"}).size());
    for (const Json::Value& check : json) {
        EXPECT_TRUE(check["passed"].asBool()) << check["name"] << check["why"];
    }
}

TEST_F(VtvTest, ASoundProviderThatIsNotOursPassesEveryCheck) {
    Ok({"validate", Fake("sound")});
}

TEST_F(VtvTest, TheChecksAreNamedAndDescribed) {
    const Json::Value checks = OkJson({"validate", "--list", "--json"});
    for (const Json::Value& check : checks) {
        const std::string name = check["name"].asString();
        EXPECT_EQ(name.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-"),
                  std::string::npos)
            << name;
        EXPECT_EQ(check["description"].asString().back(), '.') << name;
    }
}
