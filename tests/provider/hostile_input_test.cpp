// Whatever a host or the TV may hand over: nothing crashes, nothing is thrown, the answer is
// neutral.
#include <climits>

#include "page.h"

using namespace recording;

namespace {

// Everything that a host can ask of one item, with room for the answers.
class HostileInput : public Provider {
  protected:
    void AskEverything(const char* item,
                       const std::vector<int>& values = {0, 1, -1, INT_MAX, INT_MIN}) {
        for (const int value : values) {
            const int visible = check_visibility_int(item, value);
            const int enabled = check_enable_int(item, value);
            EXPECT_TRUE(visible == 0 || visible == 1);
            EXPECT_TRUE(enabled == 0 || enabled == 1);
            EXPECT_EQ(page->set_int(item, value), 0);
        }
        EXPECT_EQ(page->set_int(item, 9999), 0);
        int value = 0;
        EXPECT_EQ(page->get_int(item, &value), 0);
        EXPECT_EQ(page->get_int(item, nullptr), 0);
        HostText title;
        EXPECT_EQ(page->get_display_name(item, title.Out()), 0);
        EXPECT_EQ(page->get_display_name(item, nullptr), 0);
        HostText help;
        EXPECT_EQ(page->get_help_text(item, help.Out()), 0);
        EXPECT_EQ(page->get_help_text(item, nullptr), 0);
        int count = 0;
        ListItem** list = page->get_list_items(item, &count);
        if (list != nullptr) {
            EXPECT_EQ(page->free_list_items(list, count), 0);
        }
        const int offered = count;
        list = page->get_list_items(item, nullptr);
        if (list != nullptr) {
            EXPECT_EQ(page->free_list_items(list, offered), 0);
        }
        HostText why;
        bool flag = false;
        EXPECT_EQ(page->get_disable_text(item, why.Out(), &flag), 0);
        constexpr std::size_t ROOM = 8192;
        std::vector<char> buffers(5 * ROOM, '\0');
        char* b = buffers.data();
        EXPECT_EQ(page->get_messagebox_info(item, b, b + ROOM, b + 2 * ROOM, &value), 0);
        EXPECT_EQ(page->get_messagebox_title(item, b), 0);
        EXPECT_EQ(page->get_disablepopup_info(item, b, b + ROOM, b + 2 * ROOM, b + 3 * ROOM, &value,
                                              b + 4 * ROOM),
                  0);
        HostText property;
        EXPECT_EQ(page->provider_property(item, property.Out()), 0);
    }
    // The same of a key that is no item's.
    void AskEverythingOfNothing(const char* key) {
        AskEverything(key);
        EXPECT_EQ(check_visibility_int(key, 1), 0);
        EXPECT_EQ(check_enable_int(key, 1), 0);
        int number = -77;
        page->get_int(key, &number);
        EXPECT_EQ(page->get_list_items(key, &number), nullptr);
        EXPECT_EQ(number, -77);
        for (const auto text : {page->get_display_name, page->get_help_text}) {
            HostText none;
            text(key, none.Out());
            EXPECT_TRUE(none.IsNull()) << none.Text();
        }
    }
    void AskEverythingOfEveryItem(const std::vector<int>& values = {0, 1}) {
        for (const char* item : key::ALL) {
            AskEverything(item, values);
        }
    }
};

// A TV that answers every question, so that every path is taken on the way.
void AnsweringTv() {
    AgreeToTerms();
    tv().online = true;
    Feature(feature::VOICE, true);
    Feature(feature::ORVIK, true);
    Feature(feature::MIC, 1);
    Feature(feature::FAR_FIELD, 1);
    Feature(feature::PASSTHRU, true);
    Set(setting::MIC, 0);
}

// Policies and settings that no one should write.
const Lines DOCUMENTS = {
    "",
    "null",
    "[]",
    "{}",
    "[null]",
    "[{}]",
    "[[[]]]",
    "{\"app.orvik\":{\"app.orvik\":[]}}",
    "{\"app.orvik\":1e308}",
    "{\"app.orvik\":18446744073709551615}",
    "{\"\":\"\"}",
    "[{\"VAOrder\":null,\"VAId\":null,\"VAAppId\":null,\"VAName\":null,\"VAFFSupport\":null}]",
    "[{\"VAOrder\":true,\"VAId\":1.5,\"VAAppId\":-1,\"VAName\":0,\"VAFFSupport\":0.0}]",
    "[{\"VAOrder\":2147483648}]",
    "[{\"VAOrder\":-2147483648,\"VAAppId\":\"a\"},{\"VAOrder\":2147483647}]",
    "[{\"VAOrder\":1e400}]",
    "[{\"VAId\":\"\\u0000\",\"VAAppId\":\"\\u0000\"}]",
    "[{\"VAName\":\"%s%n%d\"}]",
    "\xFF\xFE",
    "\"\\ud800\"",
    "[1,2,3",
    "{\"app.orvik\":\"on\",}",
    "/* comment",
    "// comment",
};

Lines DeepDocuments() {
    Lines documents;
    for (const std::size_t depth : {10u, 1000u, 1001u, 20000u}) {
        std::string objects;
        for (std::size_t i = 0; i < depth; ++i) {
            objects += "{\"app.orvik\":";
        }
        documents.push_back(objects + "1" + std::string(depth, '}'));
        documents.push_back(std::string(depth, '[') + std::string(depth, ']'));
        documents.push_back(std::string(depth, '['));
        documents.push_back("{\"app.orvik\":" + std::string(depth, '[') + std::string(depth, ']') +
                            "}");
    }
    return documents;
}

}  // namespace

TEST_F(HostileInput, ANullKeyIsTakenEverywhere) {
    AnsweringTv();
    Offer(WholePolicy(), "app.orvik");
    AskEverythingOfNothing(nullptr);
}

TEST_F(HostileInput, AVeryLongKeyIsTakenEverywhere) {
    AnsweringTv();
    Offer(WholePolicy(), "app.orvik");
    AskEverythingOfNothing(std::string(1 << 20, 'k').c_str());
    AskEverythingOfNothing((std::string(key::TENCENT) + std::string(1 << 20, 't')).c_str());
}

TEST_F(HostileInput, AKeyOfAnyBytesIsTakenEverywhere) {
    AnsweringTv();
    Offer(WholePolicy(), "app.orvik");
    for (int byte = 1; byte < 256; ++byte) {
        const std::string item(3, static_cast<char>(byte));
        AskEverythingOfNothing(item.c_str());
        AskEverythingOfNothing((key::VOICE + item).c_str());
    }
    AskEverythingOfNothing("%s%s%n%x");
}

TEST_F(HostileInput, EveryItemIsAnsweredOnATvThatWasNeverSetUp) {
    AskEverythingOfEveryItem();
}

TEST_F(HostileInput, EveryItemIsAnsweredWhenEveryPlatformCallFails) {
    for (const int code : {-1, 1, -22, INT_MIN}) {
        AnsweringTv();
        Offer(WholePolicy(), "app.orvik");
        FailAny(1, FOREVER, code);
        AskEverythingOfEveryItem();
        ClearFaults();
    }
}

TEST_F(HostileInput, ADocumentOfAnyShapeIsTakenInEverySetting) {
    SetRecording(false);
    for (const std::string& document : DOCUMENTS + DeepDocuments()) {
        AnsweringTv();
        for (const char* name :
             {setting::FARFIELD, setting::HINT, setting::TENCENT, setting::PASSTHRU_STATE}) {
            Set(name, document.c_str());
        }
        Offer(WholePolicy(), "app.orvik");
        AskEverythingOfEveryItem({1});
        Offer(document, "");
        AskEverythingOfEveryItem({1});
        CSIMenuUtil::IsPassthruDimmed();
        CSIMenuUtil::GetPassthruDimmedToastPopUpString();
        CSIMenuUtil::checkSetUpComplete_Tencent();
    }
}

TEST_F(HostileInput, SettingsOfEveryOtherTypeAreTaken) {
    for (const int type : {0, 1, 2}) {
        AnsweringTv();
        Offer(WholePolicy(), "app.orvik");
        for (const char* name :
             {setting::CURRENT, setting::FARFIELD, setting::HINT, setting::LEGACY,
              setting::FIRST_TIME, setting::BLOCK, setting::PASSTHRU, setting::CONNECTED,
              setting::PASSTHRU_MIC, setting::MIC, setting::TENCENT}) {
            if (type == 0) {
                Set(name, 5);
            } else if (type == 1) {
                Set(name, true);
            } else {
                Set(name, "text");
            }
        }
        AskEverythingOfEveryItem();
    }
}

TEST_F(HostileInput, ALongPolicyIsOfferedWhole) {
    SetRecording(false);
    std::vector<std::string> assistants;
    for (int i = 2000; i > 0; --i) {
        assistants.push_back(Assistant(i, i == 7 ? "ORVIK2" : "GVA", "app" + std::to_string(i),
                                       "Name " + std::to_string(i)));
    }
    Offer(Policy(assistants), "app7");
    EXPECT_TRUE(MVAList::IsCurrentVAOrvik());
    int count = 0;
    ListItem** list = page->get_list_items(key::ASSISTANT, &count);
    ASSERT_EQ(count, 2000);
    EXPECT_EQ(list[0]->value, 1);
    EXPECT_STREQ(list[1999]->text, "Name 2000");
    page->free_list_items(list, count);
}

TEST_F(HostileInput, ATextWithConversionsInItIsNotAFormat) {
    AnsweringTv();
    tv().translations["TV_SID_SETTINGS_VOICE"] = "%s %n %d";
    HostText title;
    page->get_display_name(key::VOICE, title.Out());
    EXPECT_EQ(title.Text(), "%s %n %d");
    Offer(Policy({Assistant(1, "GVA", "%s", "%n"), Assistant(2, "ALEXA", "%n", "%s")}), "%n%s");
    Set(setting::FARFIELD, R"({"%n%s":"%s%n"})");
    AskEverythingOfEveryItem();
}

TEST_F(HostileInput, ATextThatCannotBeTranslatedIsItsId) {
    Fail("dgettext");
    HostText title;
    page->get_display_name(key::VOICE, title.Out());
    EXPECT_EQ(title.Text(), "TV_SID_SETTINGS_VOICE");
}

TEST_F(HostileInput, NullStringsAreTakenByTheUtilities) {
    EXPECT_EQ(CSIMenuUtil::VconfGetInt(nullptr), -1);
    EXPECT_FALSE(CSIMenuUtil::VconfGetBool(nullptr));
    EXPECT_EQ(CSIMenuUtil::VconfGetStr(nullptr), "");
    EXPECT_EQ(CSIMenuUtil::GetVconfStirng(nullptr), "");
    CSIMenuUtil::SetBool(nullptr, true);
    CSIMenuUtil::SetString(nullptr, nullptr);
    EXPECT_EQ(CSIMenuUtil::GetFMSString(nullptr), "");
    EXPECT_EQ(CSIMenuUtil::GetFMSInt(nullptr), -1);
    EXPECT_FALSE(CSIMenuUtil::GetFMSBool(nullptr));
    CSIMenuUtil::GetTextTVScreenOrPJT(nullptr, nullptr, nullptr);
    std::string value;
    EXPECT_EQ(CSIMenuUtil::GetMetaData(nullptr, nullptr, value), -1);
    CSIMenuUtil::LaunchApp(nullptr);
    CSIMenuUtil::LaunchApp(nullptr, nullptr, nullptr);
    CSIMenuUtil::SetVoiceAssistant(nullptr);
}
