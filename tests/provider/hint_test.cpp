// Situational hints of the current assistant.
#include "page.h"

using namespace recording;

namespace {

class SituationalHint : public Provider {
  protected:
    void SetUp() override {
        Provider::SetUp();
        Offer(WholePolicy(), "app.google");
    }
    static void Entry(const std::string& entry) {
        Set(setting::HINT, (R"({"app.google":")" + entry + "\"}").c_str());
    }
    static int Read() {
        ClearCalls();
        return checknode_int_voice_situational_hint();
    }
    static void Write(int value) {
        ClearCalls();
        setnode_int_voice_situational_hint(value);
    }
    static std::string EntryNow() {
        return CSIMenuUtil::getValueOfJsonVconf(setting::HINT, "app.google");
    }
};

std::string Because(int value, const std::string& entry) {
    return E(source::PROVIDER, "checknode_int_voice_situational_hint",
             std::string("[general voice] ") + setting::HINT + " value = " + std::to_string(value) +
                 " because of " + entry);
}

Lines Reading(int value, const std::string& entry) {
    return Walk(1) + Member(setting::HINT, "app.google", entry) + Lines{Because(value, entry)};
}

Lines Writing(int before, const std::string& entry, const std::string& after) {
    const std::string text = "{\n   \"app.google\" : \"" + after + "\"\n}\n";
    return Reading(before, entry) + Walk(1) +
           Lines{GetStr(setting::HINT),
                 E(source::UTIL, "setVAsValueOfJsonVconf", 345,
                   std::string("[general voice] ") + setting::HINT + " value = " + text),
                 std::string("vconf_set_str ") + setting::HINT + " " + text,
                 E(source::PROVIDER, "setnode_int_voice_situational_hint",
                   "nOriginValue = " + std::to_string(before) + ", changed value = " + after)};
}

}  // namespace

TEST_F(SituationalHint, EachEntryHasItsValue) {
    const std::pair<const char*, int> entries[] = {
        {"on_user", 1}, {"on_default", 1}, {"off_user", 0},   {"off_default", 0},
        {"null", -1},   {"NULL", 0},       {"On_user", 0},    {"on_user ", 0},
        {"", 0},        {"on", 0},         {"ON_DEFAULT", 0}, {"Null", 0}};
    for (const auto& [entry, value] : entries) {
        Entry(entry);
        EXPECT_EQ(Read(), value) << entry;
        EXPECT_CALLS(Reading(value, entry));
    }
}

TEST_F(SituationalHint, WithoutAnEntryItReads0BecauseOfNothing) {
    Set(setting::HINT, R"({"app.alexa":"on_user"})");
    EXPECT_EQ(Read(), 0);
    EXPECT_CALLS(Walk(1) + Lines{GetStr(setting::HINT), Because(0, "")});
}

TEST_F(SituationalHint, AnEntryThatIsJsonNullReads0) {
    Set(setting::HINT, R"({"app.google":null})");
    EXPECT_EQ(Read(), 0);
}

TEST_F(SituationalHint, TurningADefaultOnMakesItTheViewersChoice) {
    Entry("on_default");
    Write(1);
    EXPECT_CALLS(Writing(1, "on_default", "on_user"));
    EXPECT_EQ(EntryNow(), "on_user");
}

TEST_F(SituationalHint, TurningItOffWritesTheViewersOff) {
    Entry("on_user");
    Write(0);
    EXPECT_CALLS(Writing(1, "on_user", "off_user"));
}

TEST_F(SituationalHint, AnyOtherNumberIsOff) {
    for (const int value : {2, -1, 100}) {
        Entry("off_default");
        Write(value);
        EXPECT_CALLS(Writing(0, "off_default", "off_user"));
    }
}

TEST_F(SituationalHint, TheValueInForceIsWrittenAgain) {
    Entry("on_user");
    Write(1);
    EXPECT_CALLS(Writing(1, "on_user", "on_user"));
}

TEST_F(SituationalHint, AnAssistantWithoutHintsRefusesEveryValue) {
    for (const int value : {0, 1}) {
        Entry("null");
        Write(value);
        EXPECT_CALLS(Reading(-1, "null") + Walk(1) +
                     Lines{E(source::PROVIDER, "setnode_int_voice_situational_hint",
                             std::string("[general voice] Failed to set ") + setting::HINT +
                                 ". Vconf Value is NULL(fuction not supported)")});
        EXPECT_EQ(EntryNow(), "null");
    }
}

TEST_F(SituationalHint, AnEntryOfNullInAnotherCaseDoesNotRefuse) {
    Entry("NULL");
    Write(1);
    EXPECT_EQ(EntryNow(), "on_user");
}

TEST_F(SituationalHint, AMissingEntryIsAdded) {
    Set(setting::HINT, R"({"app.alexa":"on_default"})");
    Write(1);
    EXPECT_EQ(Stored(setting::HINT),
              "{\n   \"app.alexa\" : \"on_default\",\n   \"app.google\" : \"on_user\"\n}\n");
}

TEST_F(SituationalHint, WithoutTheSettingNothingIsWrittenButTheChangeIsLogged) {
    Write(1);
    EXPECT_EQ(CallsOf("vconf_set"), Lines{});
    EXPECT_LOGGED(E(source::PROVIDER, "setnode_int_voice_situational_hint",
                    "nOriginValue = 0, changed value = on_user"));
    Set(setting::HINT, "broken");
    Write(0);
    EXPECT_EQ(Stored(setting::HINT), "broken");
}
