// Why items look as they do: reasons that are held against what the provider really answers on a TV
// that was changed accordingly.
#include "host/core/explain.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <regex>
#include <set>
#include <sstream>

#include "platform/account.h"
#include "platform/always_on_voice.h"
#include "platform/settings_store.h"
#include "tests/environment.h"
#include "virtual-tv/model/known_settings.h"

namespace fs = std::filesystem;

using host::Item;
using testing::HasSubstr;
using testing::Not;

namespace {

const Item& Named(const char* name) {
    return *host::FindItem(name);
}

std::string ReadFile(const fs::path& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

class Explaining : public testing::Test {
  protected:
    Explaining() {
        const bool memory = access("/dev/shm", W_OK | X_OK) == 0;
        const fs::path place = memory ? fs::path("/dev/shm") : fs::temp_directory_path();
        folder_ = (place / "explain-test-XXXXXX").string();
        EXPECT_NE(mkdtemp(folder_.data()), nullptr);
    }
    ~Explaining() override {
        provider_.reset();
        vtv::PowerOff();
        tv_.reset();
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

    void TurnOn(const std::string& model) {
        provider_.reset();
        vtv::PowerOff();
        const std::string dir = folder_ + "/" + std::to_string(++count_) + model;
        vtv::Tv::Create(dir, vtv::FindModel(model));
        tv_ = std::make_unique<vtv::Tv>(dir);
        vtv::PowerOn(*tv_);
        provider_ = std::make_unique<host::Provider>(PROVIDER);
    }
    // As the next vtv would find the TV.
    void LoadAgain() {
        provider_.reset();
        provider_ = std::make_unique<host::Provider>(PROVIDER, host::Provider::Copy::kPrivate);
    }

    std::string Sentence(const char* item) {
        LoadAgain();
        return host::Explain(*provider_, *tv_, Named(item)).sentence;
    }

    size_t Choose(size_t count) { return random_() % count; }

    // Makes the TV what is supposed.
    void Make(const vtv::Read& read) {
        if (read.function == "GetDisclaimerItemAgreement") {
            tv_->SetConsent(read.subject, read.value == vtv::Value(true));
        } else if (read.function == "sso_get_login_state") {
            tv_->SetSignedIn(read.value == vtv::Value(1));
        } else if (read.function == "AOVSystemDataGetAOVMode") {
            AOVSystemDataSetAOVMode(host::TextOf(*tv_, vtv::kCurrentAssistantKey).c_str(),
                                    std::get<int>(read.value.value_or(0)));
        } else if (read.function == "access") {
            const std::string path = read.subject.substr(std::string("/home/owner/").size());
            if (read.value == vtv::Value(true)) {
                tv_->AddOwnerFile(path);
            } else {
                tv_->RemoveOwnerFile(path);
            }
        } else if (read.function.rfind("system_info", 0) == 0) {
            tv_->SetFeature(read.subject, read.value);
        } else if (read.value) {
            tv_->Set(read.subject, *read.value);
        } else {
            tv_->Unset(read.subject);
        }
    }

    void Make(const host::Supposition& supposed) {
        if (supposed.mends) {
            tv_->ClearFault(supposed.read.function);
        } else {
            Make(supposed.read);
        }
    }

    // One call that the page is known to make fails from here on, or none does.
    void BreakSomething() {
        static const std::vector<vtv::Read> inputs = Inputs();
        for (const vtv::Fault& fault : tv_->Faults()) {
            tv_->ClearFault(fault.function);
        }
        if (Choose(4) != 0) {
            Break({{inputs[Choose(inputs.size())].function, vtv::Fault::Kind::kAlways, -1, 0}});
        }
    }
    void Break(const std::vector<vtv::Fault>& faults) {
        for (const vtv::Fault& fault : faults) {
            tv_->SetFault(fault);
        }
    }

    // Any value of anything that the page is known to read.
    void ChangeSomething() {
        static const std::vector<vtv::Read> inputs = Inputs();
        const vtv::Read& input = inputs[Choose(inputs.size())];
        const std::vector<host::Supposition> others =
            host::Suppositions(input, *tv_, host::CircumstancesOf(*tv_));
        if (!others.empty()) {
            Make(others[Choose(others.size())].read);
        }
    }

    static std::vector<vtv::Read> Inputs() {
        std::vector<vtv::Read> inputs = {{"GetDisclaimerItemAgreement", "tnc", {}},
                                         {"GetDisclaimerItemAgreement", "pp", {}},
                                         {"sso_get_login_state", "", {}},
                                         {"AOVSystemDataGetAOVMode", "", {}},
                                         {"vconf_get_str", vtv::kPolicyKey, {}},
                                         {"vconf_get_str", vtv::kPolicyKey, {}},
                                         {"vconf_get_str", vtv::kCurrentAssistantKey, {}}};
        for (const char* name : {"alexa_login_success", "ga_login_success"}) {
            inputs.push_back({"access", std::string("/home/owner/share/.voice/") + name, {}});
        }
        for (const vtv::KnownSetting& setting : vtv::KnownSettings()) {
            if (!setting.values.empty()) {
                const std::string type = setting.type;
                inputs.push_back(
                    {"vconf_get_" + (type == "string" ? "str" : type), setting.key, {}});
            }
        }
        for (const vtv::KnownFeature& feature : vtv::KnownFeatures()) {
            inputs.push_back({"system_info_get_custom_" + feature.type, feature.key, {}});
        }
        return inputs;
    }

    std::string folder_;
    int count_ = 0;
    std::unique_ptr<vtv::Tv> tv_;
    std::unique_ptr<host::Provider> provider_;
    std::mt19937 random_{Seed()};
    testing::ScopedTrace note_{__FILE__, __LINE__, SeedNote()};
};

constexpr const char* kModels[] = {"farfield-eu", "farfield-cn", "ptt-passthrough-us",
                                   "single-assistant-gb", "out-of-the-box-us"};

// The answer of a provider that is loaded on the TV as it is now.
std::string AnswerNow(const Item& item, const std::string& question) {
    const host::Provider provider(PROVIDER, host::Provider::Copy::kPrivate);
    const host::ItemView view = host::LookAt(provider, item);
    if (question == "visible") {
        return view.visible ? "shown" : "hidden";
    }
    return question == "enabled" ? (view.enabled ? "enabled" : "dimmed") : view.ValueText();
}

}  // namespace

TEST_F(Explaining, InEveryStateItSaysOfEachItemWhatThePageShows) {
    std::set<std::string> unreachable;
    for (const char* model : kModels) {
        TurnOn(model);
        for (int step = 0; step < 12; ++step) {
            ChangeSomething();
            LoadAgain();
            const host::Page page = host::LookAtPage(*provider_);
            for (const Item& item : host::PageItems()) {
                if (Choose(3) != 0) {
                    continue;
                }
                const host::Explanation told = host::Explain(*provider_, *tv_, item);
                const host::ItemView& view = page[item.name];
                const std::string where = model + std::string(", ") + told.sentence;
                EXPECT_EQ(told.reachable, page.IsReachable(item)) << where;
                EXPECT_EQ(told.reasons[0].answer, view.visible ? "shown" : "hidden") << where;
                EXPECT_EQ(told.reasons[1].answer, view.enabled ? "enabled" : "dimmed") << where;
                if (host::HasValue(item)) {
                    EXPECT_EQ(told.reasons[2].answer, view.ValueText()) << where;
                }
                const bool says = told.sentence.find(" is hidden") != std::string::npos ||
                                  told.sentence.find(" cannot be reached") != std::string::npos;
                EXPECT_EQ(says, !told.reachable) << where;
                if (!told.reachable) {
                    unreachable.insert(item.name);
                }
            }
        }
    }
    EXPECT_GT(unreachable.size(), 8U);  // otherwise nothing was tested
}

TEST_F(Explaining, ADimmedItemsRuleIsTheFunctionThatTellsTheViewer) {
    std::set<std::string> told;
    for (const char* model : kModels) {
        for (const bool agreed : {false, true}) {
            TurnOn(model);
            tv_->SetConsent("tnc", agreed);
            tv_->SetSignedIn(false);
            tv_->Set("db/menu/voice/passthru", false);
            LoadAgain();
            for (const Item& item : host::PageItems()) {
                const host::Explanation explanation = host::Explain(*provider_, *tv_, item);
                const host::Reasons& last = explanation.reasons.back();
                if (last.question != "reason" || last.answer.empty()) {
                    continue;
                }
                const std::optional<host::Box> popup = provider_->DisablePopup(item.key);
                const bool isPopups = popup && popup->message == last.answer;
                EXPECT_STREQ(last.rule.function,
                             isPopups ? "get_disablepopup_info" : "get_disable_text")
                    << model << " " << explanation.sentence;
                told.insert(std::string(last.rule.function) + " " + item.name);
            }
        }
    }
    // Every item that has a popup, and some that have a reason.
    for (const Item& item : host::PageItems()) {
        const bool hasPopup = item.kind == vtv::ItemKind::kApplication;
        EXPECT_EQ(told.count(std::string("get_disablepopup_info ") + item.name), hasPopup ? 1U : 0U)
            << item.name;
    }
    EXPECT_EQ(told.count("get_disable_text voice-wake-up"), 1U);
}

TEST_F(Explaining, EachReasonChangesTheAnswerOfTheRealTvAndNoPartOfItDoes) {
    size_t held = 0;
    size_t together = 0;
    size_t mended = 0;
    for (const char* model : kModels) {
        TurnOn(model);
        for (int step = 0; step < 8; ++step) {
            ChangeSomething();
            ChangeSomething();
            BreakSomething();
            LoadAgain();
            const Item& item = host::PageItems()[Choose(host::PageItems().size())];
            const host::Explanation told = host::Explain(*provider_, *tv_, item);
            const vtv::Snapshot before = tv_->TakeSnapshot();
            const std::vector<vtv::Fault> faults = tv_->Faults();
            for (const host::Reasons& reasons : told.reasons) {
                if (reasons.question == "reason") {
                    continue;
                }
                for (const host::Difference& difference : reasons.differences.found) {
                    for (const host::Supposition& one : difference.suppositions) {
                        EXPECT_EQ(AnswerNow(item, reasons.question), reasons.answer)
                            << model << ": " << item.name << " already before " << one.then;
                        Make(one);
                        mended += one.mends ? 1 : 0;
                    }
                    EXPECT_EQ(AnswerNow(item, reasons.question), difference.answer)
                        << model << ": " << item.name << " with " << host::ToText(difference);
                    tv_->Restore(before);
                    Break(faults);
                    ++held;
                    together += difference.suppositions.size() > 1 ? 1 : 0;
                }
            }
        }
    }
    EXPECT_GT(held, 100U);
    EXPECT_GT(together, 0U);
    EXPECT_GT(mended, 0U);
}

TEST_F(Explaining, TwoConsentsThatAreBothMissingAreNamedTogether) {
    TurnOn("farfield-eu");
    tv_->SetConsent("tnc", false);
    tv_->SetConsent("pp", false);
    EXPECT_EQ(Sentence("voice"),
              "Voice is hidden: the terms are not agreed; it would show with consent tnc and pp");
    EXPECT_THAT(Sentence("voice-wake-up"),
                HasSubstr("is not on the page: the page itself is hidden because the terms are "
                          "not agreed; it would show with consent tnc and pp"));
}

TEST_F(Explaining, WhereNoAssistantIsChosenNothingIsSupposedOfOneWithoutAName) {
    TurnOn("out-of-the-box-us");
    const std::string key = "db/menu/voice/assistant_farfield";
    for (const char* stored : {"{}", R"({"":"off"})"}) {
        tv_->Set(key, std::string(stored));
        LoadAgain();
        for (const host::Reasons& reasons :
             host::Explain(*provider_, *tv_, Named("voice-always-wake-up")).reasons) {
            EXPECT_THAT(reasons.because, Not(HasSubstr("for  in"))) << stored;
        }
    }
    const vtv::Read mode = {"AOVSystemDataGetAOVMode", "", 0};
    EXPECT_TRUE(host::Suppositions(mode, *tv_, host::CircumstancesOf(*tv_)).empty());
    EXPECT_EQ(host::Describe({"vconf_get_str", key, tv_->Get(key)}, *tv_),
              key + R"( has "off" for "")");
}

TEST_F(Explaining, AnItemOfADimmedPageCannotBeReached) {
    TurnOn("farfield-eu");
    tv_->Set("db/aisound-app/soundsensorflag_prev", 0);
    EXPECT_THAT(Sentence("voice-wake-up"),
                HasSubstr("cannot be reached: the page itself is dimmed because the built-in "
                          "microphone is off"));
}

TEST_F(Explaining, ThePolicysOwnFlagIsNamed) {
    TurnOn("farfield-eu");
    tv_->Set(vtv::kCurrentAssistantKey, std::string("com.vantelo.tv.google-assistant"));
    EXPECT_THAT(Sentence("voice-wake-up"),
                HasSubstr("the policy says VAFFSupport=false for Google Assistant"));
    EXPECT_THAT(Sentence("voice-wake-up"),
                HasSubstr("VAFFSupport=true for Google Assistant in the policy"));
    EXPECT_THAT(Sentence("voice-settings-salute"), HasSubstr("Salute in the policy"));
}

TEST_F(Explaining, ASettingThatIsNoJsonIsSaidToBeNone) {
    TurnOn("farfield-eu");
    const std::string key = "db/menu/voice/assistant_farfield";
    tv_->Set(key, std::string("on"));
    EXPECT_THAT(Sentence("voice-wake-up"), HasSubstr("is off: " + key + " is no JSON;"));
    tv_->Set(key, std::string("[]"));
    EXPECT_THAT(Sentence("voice-wake-up"), HasSubstr(key + " is no JSON object"));
    tv_->Set(vtv::kPolicyKey, std::string("{"));
    EXPECT_THAT(Sentence("voice-assistant"), HasSubstr("is hidden: the policy is no JSON;"));
    tv_->Set(vtv::kPolicyKey, std::string("[7]"));
    EXPECT_THAT(Sentence("voice-assistant"), HasSubstr("the policy is refused: its entry 1"));
}

TEST_F(Explaining, ASettingOfTheWrongTypeIsSaidToBeOne) {
    TurnOn("farfield-eu");
    tv_->Set("db/aisound-app/soundsensorflag_prev", true);
    EXPECT_THAT(Sentence("voice"),
                HasSubstr("db/aisound-app/soundsensorflag_prev is of type bool, and read as int"));
}

TEST_F(Explaining, ACallThatWasToldToFailIsTheReason) {
    TurnOn("farfield-eu");
    tv_->SetFault({"sso_get_login_state", vtv::Fault::Kind::kAlways, -1, 0});
    EXPECT_THAT(Sentence("voice-wake-up"),
                HasSubstr("is dimmed: sso_get_login_state fails, as it was told to and "));
    EXPECT_THAT(Sentence("voice-wake-up"),
                HasSubstr("it would be enabled with sso_get_login_state working again (vtv fault "
                          "--clear sso_get_login_state)"));
    EXPECT_THAT(Sentence("voice-wake-up"), Not(HasSubstr("signed in")));
}

TEST_F(Explaining, WhatACallThatFailsWouldTellIsTriedOnceItWorksAgain) {
    TurnOn("farfield-eu");
    tv_->SetFault({"GetDisclaimerItemAgreement", vtv::Fault::Kind::kAlways, -1, 0});
    tv_->SetConsent("tnc", false);
    EXPECT_EQ(Sentence("voice"),
              "Voice is hidden: GetDisclaimerItemAgreement fails, as it was told to and the terms "
              "are not agreed; it would show with GetDisclaimerItemAgreement working again (vtv "
              "fault --clear GetDisclaimerItemAgreement) and consent tnc");
}

TEST_F(Explaining, ACallThatFailsWhenTheProviderIsCreatedIsTheReason) {
    TurnOn("farfield-eu");
    tv_->SetFault({"vconf_get_str", vtv::Fault::Kind::kAlways, -1, 0});
    EXPECT_THAT(Sentence("voice-assistant"),
                HasSubstr("it would show with vconf_get_str working again (vtv fault --clear"));
}

TEST_F(Explaining, AnAnswerThatNothingChangesIsSaidToHaveNoReason) {
    TurnOn("farfield-eu");
    LoadAgain();
    const host::Reasons enabled =
        host::Explain(*provider_, *tv_, Named("voice-assistant")).reasons[1];
    EXPECT_THAT(enabled.because, HasSubstr("always so"));
    EXPECT_TRUE(enabled.differences.found.empty());
}

TEST_F(Explaining, NothingOfItReachesTheTv) {
    TurnOn("farfield-eu");
    tv_->SetTraceEnabled(true);
    tv_->SetFault({"vconf_get_int", vtv::Fault::Kind::kOnce, -1, 0});
    const vtv::Snapshot before = tv_->TakeSnapshot();
    const size_t records = tv_->ReadLog().size();
    const std::string trace = ReadFile(tv_->TraceFile());
    {
        const vtv::Experiment supposed({{"vconf_get_int", "db/comss/cisblock", vtv::Value(2)},
                                        {"sso_get_login_state", "", std::nullopt}});
        const host::Provider copy(PROVIDER, host::Provider::Copy::kPrivate);
        EXPECT_FALSE(copy.IsVisible(Named("voice").key));
        EXPECT_FALSE(copy.IsEnabled(Named("voice-wake-up").key));
        copy.SetInt(Named("voice-wake-up").key, 0);
        copy.SetInt(Named("voice-assistant").key, 3);
        copy.SetInt(Named("voice-settings-google").key, SI_ACTION_VALUE);
        int mode = 7;
        EXPECT_EQ(vconf_get_int("db/aisound-app/soundsensorflag_prev", &mode), 0);
    }
    EXPECT_EQ(tv_->ReadLog().size(), records);
    EXPECT_EQ(ReadFile(tv_->TraceFile()), trace);
    EXPECT_TRUE(tv_->Launches().empty());
    EXPECT_EQ(tv_->TakeSnapshot().settings, before.settings);
    EXPECT_EQ(tv_->TakeSnapshot().state, before.state);
    EXPECT_EQ(tv_->Faults().size(), 1U);
    int state = 0;
    EXPECT_EQ(sso_get_login_state(&state), 0);
    EXPECT_EQ(state, 1);
    EXPECT_TRUE(tv_->TraceEnabled());
}

TEST_F(Explaining, WhyAnItemIsDimmedIsAskedOfThePageAndOnceForTheReads) {
    TurnOn("farfield-eu");
    tv_->SetSignedIn(false);
    LoadAgain();
    const std::size_t records = tv_->ReadLog().size();
    host::Explain(*provider_, *tv_, Named("voice-wake-up"));
    const std::vector<vtv::LogRecord> log = tv_->ReadLog();
    EXPECT_EQ(std::count_if(log.begin() + static_cast<std::ptrdiff_t>(records), log.end(),
                            [](const vtv::LogRecord& record) {
                                return record.function == "get_disable_text" &&
                                       record.message ==
                                           std::string("key : ") + Named("voice-wake-up").key;
                            }),
              2);
}

TEST_F(Explaining, APrivateCopyHasItsOwnPolicy) {
    TurnOn("farfield-eu");
    std::unique_ptr<host::Provider> empty;
    {
        const vtv::Experiment supposed(
            {{"vconf_get_str", vtv::kPolicyKey, vtv::Value(std::string("[]"))}});
        empty = std::make_unique<host::Provider>(PROVIDER, host::Provider::Copy::kPrivate);
    }
    const host::Provider other(PROVIDER, host::Provider::Copy::kPrivate);
    EXPECT_EQ(provider_->Choices(Named("voice-assistant").key).size(), 3U);
    EXPECT_EQ(other.Choices(Named("voice-assistant").key).size(), 3U);
    EXPECT_EQ(empty->Choices(Named("voice-assistant").key).size(), 0U);
}

// The rows {menu::KEY, ..., function, ...} of a table of the provider, functions by key.
namespace {

std::map<std::string, std::string> RulesIn(const std::string& source, const std::string& table,
                                           const std::string& function) {
    const std::string keys = ReadFile(fs::path(SOURCE_DIR) / "si-ready/src/Keys.h");
    std::map<std::string, std::string> values;
    const std::regex constant(R"re(constexpr char (\w+)\[\] = "([^"]+)")re");
    for (std::sregex_iterator match(keys.begin(), keys.end(), constant), end; match != end;
         ++match) {
        values["menu::" + (*match)[1].str()] = (*match)[2];
    }
    std::string text = ReadFile(fs::path(SOURCE_DIR) / source);
    text = text.substr(text.find(table + "[] = {"));
    text = text.substr(0, text.find("};"));
    std::map<std::string, std::string> rules;
    const std::string row = "{menu::";
    for (size_t at = text.find(row); at != std::string::npos;) {
        const size_t next = text.find(row, at + row.size());
        const std::string cells = text.substr(at + 1, next - at - 1);
        std::smatch named;
        const bool found = std::regex_search(cells, named, std::regex("\\b(" + function + ")\\b"));
        const std::string key = cells.substr(0, cells.find_first_of(",}"));
        rules[values.at(key)] = found ? named[1].str() : "";
        at = next;
    }
    return rules;
}

std::string NameOf(const host::Rule& rule) {
    return rule.function != nullptr ? rule.function : "";
}

}  // namespace

TEST(Rules, AreThoseOfTheProvidersTables) {
    const auto visible =
        RulesIn("si-ready/src/general_voice_visiblechecker.cpp", "VISIBILITY_RULES", "check_\\w+");
    const auto enabled =
        RulesIn("si-ready/src/general_voice_enablechecker.cpp", "ENABLE_RULES", "check_\\w+");
    const auto values =
        RulesIn("si-ready/src/general_voice_dataprovider.cpp", "MENU_NODES", "checknode_int_\\w+");
    const auto choices =
        RulesIn("si-ready/src/general_voice_dataprovider.cpp", "MENU_NODES", "get_list_items_\\w+");
    const auto writers =
        RulesIn("si-ready/src/general_voice_dataprovider.cpp", "MENU_NODES", "setnode_int_\\w+");
    ASSERT_EQ(visible.size(), host::PageItems().size());
    ASSERT_EQ(enabled.size(), host::PageItems().size());
    ASSERT_EQ(values.size(), host::PageItems().size());
    for (const Item& item : host::PageItems()) {
        EXPECT_EQ(NameOf(host::RuleOf(item, "visible")), visible.at(item.key)) << item.name;
        EXPECT_EQ(NameOf(host::RuleOf(item, "enabled")), enabled.at(item.key)) << item.name;
        EXPECT_EQ(NameOf(host::RuleOf(item, "value")), values.at(item.key)) << item.name;
        EXPECT_EQ(NameOf(host::RuleOf(item, "choices")), choices.at(item.key)) << item.name;
        EXPECT_EQ(NameOf(host::RuleOf(item, "set")), writers.at(item.key)) << item.name;
        for (const host::FurtherRule& further : host::FurtherRulesOf(item)) {
            EXPECT_THAT(ReadFile(fs::path(SOURCE_DIR) / further.rule.source),
                        HasSubstr(std::string(" ") + further.rule.function + "("))
                << item.name << " " << further.question;
        }
    }
}
