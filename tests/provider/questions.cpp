#include "questions.h"

#include <cstring>

#include "allocation_faults.h"

using namespace recording;

namespace {

void Old() {}

void Ready() {
    AgreeToTerms();
    SignIn();
    tv().online = true;
    Feature(feature::VOICE, true);
    Feature(feature::ORVIK, true);
    Feature(feature::MIC, 1);
    Feature(feature::FAR_FIELD, 1);
    Feature(feature::PASSTHRU, true);
    Feature(feature::CHINA, false);
    Feature(feature::NEURAL, true);
    Set(setting::BLOCK, 0);
    Set(setting::MIC, 1);
    Set(setting::FIRST_TIME, false);
    Set(setting::CONNECTED, true);
    Set(setting::PASSTHRU, true);
    Set(setting::PASSTHRU_MIC, false);
    Set(setting::FARFIELD, R"({"app.orvik":"on","app.alexa":"on","app.google":"off"})");
    Set(setting::HINT, R"({"app.orvik":"on_default","app.alexa":"null"})");
    Set(setting::TENCENT, R"({"onboarding_completed":true})");
    Set(setting::LANGUAGE, "en_US");
    Set(setting::WIZARD, "PNP_SETUP");
    tv().packages["org.nemra.tts-engine-neural"]
                 ["com.vantelo/tv/metadata/tts-engine/legacy_tts_language"] = "de_DE,en_US";
    tv().voices = {"en_US", "ko_KR"};
    tv().files = {file::ALEXA, file::GOOGLE, file::SALUTE};
    Set(setting::CURRENT, "app.orvik");
    SetTracing(true);
}

void AnotherAssistant() {
    Ready();
    Set(setting::CURRENT, "app.alexa");
    Set(setting::WIZARD, "");
    tv().runningApps = {"app.alexa"};
    Set(setting::PASSTHRU_MIC, true);
    Feature(feature::FAR_FIELD, 0);
}

void NotSetUp() {
    Ready();
    tv().loginState = 0;
    Set(setting::CURRENT, "app.google");
    Set(setting::MIC, 0);
    Feature(feature::CHINA, true);
    Feature(feature::FAR_FIELD, 0);
    Set(setting::CONNECTED, false);
    tv().files.clear();
    Set(setting::FIRST_TIME, true);
    Set(setting::TENCENT, "{}");
}

void Tencent() {
    Ready();
    Set(setting::CURRENT, "app.tencent");
}

void SignedOut() {
    Ready();
    tv().loginState = 0;
    Feature(feature::FAR_FIELD, 0);
    Set(setting::PASSTHRU, false);
}

// A text that there is no memory for is none, and the record says so.
void ExpectTextOrRecord(const HostText& text, const std::string& name) {
    DisarmAllocationFaults();
    const Lines records = CallsOf("log E ");
    if (records.empty()) {
        return;  // nothing is written down
    }
    EXPECT_EQ(records.back().find("]" + name + " is NULL") != std::string::npos, text.IsNull())
        << records.back();
}

void AddItems(std::vector<Action>& actions) {
    for (const char* item : key::ALL) {
        const std::string name = std::string(item).substr(std::strlen("menu/system/"));
        actions.push_back({"check_visibility_int " + name,
                           [item](SIProviderTable*) { return check_visibility_int(item, 0); }});
        actions.push_back({"check_enable_int " + name,
                           [item](SIProviderTable*) { return check_enable_int(item, 0); }});
        actions.push_back({"get_display_name " + name,
                           [item](SIProviderTable* page) {
                               HostText text;
                               const int result = page->get_display_name(item, text.Out());
                               ExpectTextOrRecord(text, "display name");
                               return result;
                           },
                           true});
        actions.push_back({"get_help_text " + name,
                           [item](SIProviderTable* page) {
                               HostText text;
                               const int result = page->get_help_text(item, text.Out());
                               ExpectTextOrRecord(text, "help text");
                               return result;
                           },
                           true});
        actions.push_back({"get_disable_text " + name,
                           [item](SIProviderTable* page) {
                               HostText text;
                               bool flag = false;
                               return page->get_disable_text(item, text.Out(), &flag);
                           },
                           true});
        actions.push_back({"get_disablepopup_info " + name,
                           [item](SIProviderTable* page) {
                               char buffers[6][256] = {};
                               int buttons = 0;
                               return page->get_disablepopup_info(item, buffers[0], buffers[1],
                                                                  buffers[2], buffers[3], &buttons,
                                                                  buffers[4]);
                           },
                           true});
    }
}

void AddValues(std::vector<Action>& actions) {
    for (const char* item :
         {key::ASSISTANT, key::WAKE_UP, key::ALWAYS, key::SCREEN_ON, key::HINT, key::VOICE}) {
        const std::string name = std::string(item).substr(std::strlen("menu/system/"));
        actions.push_back({"get_int " + name, [item](SIProviderTable* page) {
                               int value = 0;
                               return page->get_int(item, &value);
                           }});
        for (const int value : {0, 1, 2, 3}) {
            actions.push_back(
                {"set_int " + name + " " + std::to_string(value),
                 [item, value](SIProviderTable* page) { return page->set_int(item, value); }});
        }
    }
    actions.push_back(
        {"set_int 9999", [](SIProviderTable* page) { return page->set_int(key::ORVIK, 9999); }});
}

// No gap, and a text for each: also where memory was short.
void ExpectWholeList(SIProviderTable* page, ListItem** list, int count) {
    for (int i = 0; i < count; ++i) {
        ASSERT_NE(list[i], nullptr) << i << " of " << count;
        char* text = nullptr;
        int value = 0;
        int kind = 0;
        page->list_item_text(list[i], &text);
        page->list_item_value(list[i], &value);
        page->list_item_kind(list[i], &kind);
        EXPECT_NE(text, nullptr) << i << " of " << count;
    }
}

void AddListsAndBoxes(std::vector<Action>& actions) {
    actions.push_back({"get_list_items", [](SIProviderTable* page) {
                           int count = 0;
                           ListItem** list = page->get_list_items(key::ASSISTANT, &count);
                           if (list == nullptr) {
                               return 0;
                           }
                           ExpectWholeList(page, list, count);
                           page->free_list_items(list, count);
                           return 1;
                       }});
    actions.push_back({"get_messagebox_info",
                       [](SIProviderTable* page) {
                           char buffers[3][256] = {};
                           int buttons = 0;
                           return page->get_messagebox_info(key::ASSISTANT, buffers[0], buffers[1],
                                                            buffers[2], &buttons);
                       },
                       true});
    actions.push_back({"get_messagebox_title",
                       [](SIProviderTable* page) {
                           char title[256] = {};
                           return page->get_messagebox_title(key::ASSISTANT, title);
                       },
                       true});
    actions.push_back({"provider_property", [](SIProviderTable* page) {
                           HostText text;
                           return page->provider_property("provider/owner", text.Out());
                       }});
    actions.push_back({"the other questions", [](SIProviderTable*) {
                           check_visibility_bool(key::VOICE, true);
                           check_visibility_double(key::VOICE, 1);
                           check_visibility_string(key::VOICE, "");
                           check_enable_bool(key::VOICE, true);
                           check_enable_double(key::VOICE, 1);
                           return check_enable_string(key::VOICE, "");
                       }});
}

void AddFunctions(std::vector<Action>& actions) {
    actions.push_back({"create_provider, delete_provider",
                       [](SIProviderTable*) {
                           void** table = nullptr;
                           create_provider(&table);
                           return delete_provider(&table);
                       },
                       false, 2});
    actions.push_back({"a new policy",
                       [](SIProviderTable*) {
                           Notify(setting::POLICY);
                           return 0;
                       },
                       false, 1, [] { tv().settings[setting::POLICY] = WholePolicy(); }});
    actions.push_back({"get_list_items_voice_wake_up",
                       [](SIProviderTable* page) {
                           int count = 0;
                           ListItem** list = get_list_items_voice_wake_up(nullptr, &count);
                           if (list == nullptr) {
                               EXPECT_EQ(count, 0) << "a list for which there is no memory";
                               return 0;
                           }
                           ExpectWholeList(page, list, count);
                           page->free_list_items(list, count);
                           return 0;
                       },
                       true});
    actions.push_back({"the utilities that no item uses",
                       [](SIProviderTable*) {
                           CSIMenuUtil::IsMenuLanguageSupportTTS();
                           CSIMenuUtil::SetVoiceGuideOnOff(true);
                           CSIMenuUtil::GetTextTVScreenOrPJT("a", "b", "<<A>>");
                           CSIMenuUtil::IsPassthruDimmed();
                           CSIMenuUtil::GetPassthruDimmedToastPopUpString();
                           CSIMenuUtil::setPassthruEnabled(true);
                           CSIMenuUtil::RefreshMenu();
                           CSIMenuUtil::GetCountryCode();
                           return 0;
                       },
                       true});
}

}  // namespace

const std::vector<Situation> SITUATIONS = {
    {"Old", Old},           {"Ready", Ready},     {"AnotherAssistant", AnotherAssistant},
    {"NotSetUp", NotSetUp}, {"Tencent", Tencent}, {"SignedOut", SignedOut}};

std::vector<Action> Actions() {
    std::vector<Action> actions;
    AddItems(actions);
    AddValues(actions);
    AddListsAndBoxes(actions);
    AddFunctions(actions);
    return actions;
}

void AnySituation::Prepare(const Situation& situation, const Action& action) {
    Reset();
    // The watch stays as the provider registered it.
    situation.prepare();
    MVAList::Initialize();
    Publish(setting::POLICY, Policy({::Assistant(1, "ORVIK2", "app.orvik", "Orvik", true),
                                     ::Assistant(2, "ALEXA", "app.alexa", "Alexa"),
                                     ::Assistant(3, "GVA", "app.google", "Google", true),
                                     ::Assistant(4, "TENCENT", "app.tencent", "Xiaowei")}));
    CSIMenuUtil::m_listTTSLanguage.clear();
    action.prepare();
    ClearCalls();
}
