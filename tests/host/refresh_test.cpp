// A page that is kept up to date with the list of dependencies, beside one that is asked afresh.
#include "host/core/refresh.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <utility>

#include "host/core/page_dependencies.h"
#include "platform/always_on_voice.h"
#include "tests/environment.h"
#include "virtual-tv/model/known_settings.h"

namespace fs = std::filesystem;

using host::Item;
using host::Page;
using testing::Contains;
using testing::IsEmpty;
using testing::SizeIs;
using vtv::Change;

namespace {

constexpr char kOrvik[] = "com.vantelo.tv.voice-instant-app";
constexpr char kGoogle[] = "com.vantelo.tv.google-assistant";
constexpr char kAlexa[] = "com.vantelo.tv.alexa";
constexpr char kSalute[] = "com.vantelo.tv.salute-assistant";
constexpr char kTencent[] = "com.vantelo.tv.tencent-voice-chrome";
const std::vector<std::string> kApplications = {kOrvik,  kGoogle,  kAlexa,
                                                kSalute, kTencent, "org.example.other"};

std::string Policy(const std::vector<std::pair<std::string, std::string>>& assistants) {
    std::string text;
    for (const auto& [id, app] : assistants) {
        text += (text.empty() ? "[" : ",") + std::string(R"({"VAOrder":)") +
                std::to_string(std::count(text.begin(), text.end(), '{') + 1) + R"(,"VAId":")" +
                id + R"(","VAAppId":")" + app + R"(","VAName":")" + id + R"(","VAFFSupport":true})";
    }
    return text + "]";
}

std::string Entries(const std::string& value) {
    std::string text;
    for (const std::string& app : kApplications) {
        text += (text.empty() ? "{\"" : ",\"") + app + "\":\"" + value + '"';
    }
    return text + "}";
}

// What the page's settings may hold; none of it comes from the list that is tested.
const std::map<std::string, std::vector<vtv::Value>>& SettingValues() {
    static const std::map<std::string, std::vector<vtv::Value>> values = {
        {"db/multi-assistant/default_assistant_appid",
         {std::string(kOrvik), std::string(kGoogle), std::string(kAlexa), std::string(kSalute),
          std::string(kTencent), std::string("org.example.other"), std::string(), 7}},
        {"db/menu/voice/mva_list",
         {Policy({{"ORVIK2", kOrvik}, {"GVA", kGoogle}, {"ALEXA", kAlexa}}),
          Policy({{"ORVIK2", kOrvik}, {"SBER", kSalute}}),
          Policy({{"TENCENT", kTencent}, {"ALEXA", kAlexa}}),
          Policy({{"ORVIK2", kOrvik}, {"TENCENT", kTencent}, {"SBER", kSalute}}),
          Policy({{"GVA", kGoogle}}), std::string("[]"), std::string("[")}},
        {"db/menu/voice/assistant_farfield", {Entries("on"), Entries("off"), std::string("{")}},
        {"db/multi-assistant/situational_hint_supported",
         {Entries("on_default"), Entries("off_user"), Entries("on_user"), std::string("{}")}},
        {"db/voice-app/activate_first_time", {true, false, 1}},
        {"db/tencent-voice-assistant/voice-setting",
         {std::string(R"({"onboarding_completed":true})"), std::string("{}")}},
        {"db/menu/voice/is_k_voice", {true, false}},
        {"db/comss/cisblock", {0, 1, 2}},
        {"db/comss/countrycode", {std::string("DE"), std::string("US")}},
        {"db/menu_widget/language", {std::string("en_US"), std::string("de_DE")}},
        {"db/aisound-app/soundsensorflag_prev", {0, 1}},
        {"db/menu/voice/passthru", {true, false}},
        {"db/menu/voice/passthru/state",
         {std::string(R"({"state":"dim","text":"Busy"})"), std::string(R"({"state":"active"})")}},
        {"db/passthru/mic_state", {true, false}},
        {"memory/passthru/connected", {true, false}},
        {"db/setting/accessibility/tts", {true, false}},
        {"db/menu/refresh_menu", {0, 1}},
        {"memory/wizard/wizard_mode", {std::string("PNP_SETUP"), std::string()}},
        {"db/of/another/program", {1, 2}},
    };
    return values;
}

// The list's name of what a platform call read.
std::string NameOf(const vtv::Read& read) {
    const char* kind = read.function.rfind("vconf_get", 0) == 0        ? "setting "
                       : read.function.rfind("system_info", 0) == 0    ? "feature "
                       : read.function == "access"                     ? "file "
                       : read.function == "GetDisclaimerItemAgreement" ? "consent "
                                                                       : nullptr;
    return kind != nullptr ? kind + read.subject : "call " + read.function;
}

std::set<std::string> Names(const std::vector<const Item*>& items) {
    std::set<std::string> names;
    for (const Item* item : items) {
        names.insert(item->name);
    }
    return names;
}

class Refreshing : public testing::Test {
  protected:
    Refreshing() {
        // Writes are durable: in memory, where there is such a folder, they cost nothing.
        const bool memory = access("/dev/shm", W_OK | X_OK) == 0;
        const fs::path place = memory ? fs::path("/dev/shm") : fs::temp_directory_path();
        folder_ = (place / "refresh-test-XXXXXX").string();
        EXPECT_NE(mkdtemp(folder_.data()), nullptr);
    }
    ~Refreshing() override {
        provider_.reset();
        vtv::PowerOff();
        tv_.reset();
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

    void TurnOn(const std::string& model) {
        provider_.reset();
        vtv::PowerOff();
        const std::string dir = folder_ + "/" + model;
        vtv::Tv::Create(dir, vtv::FindModel(model));
        tv_ = std::make_unique<vtv::Tv>(dir);
        vtv::PowerOn(*tv_);
        provider_ = std::make_unique<host::Provider>(PROVIDER);
        tv_->WatchAll([this](const Change& change) { changes_.push_back(change); });
    }

    unsigned Choose(size_t count) { return static_cast<unsigned>(random_() % count); }

    // Changes one thing of the TV; returns what, for a message.
    std::string ChangeSomething() {
        const unsigned what = Choose(40);
        const bool yes = Choose(2) == 1;
        const std::string word = yes ? " yes" : " no";
        if (what < 24) {
            auto setting = SettingValues().begin();
            std::advance(setting, Choose(SettingValues().size()));
            const unsigned value = Choose(setting->second.size() + 1);
            if (value == setting->second.size()) {
                tv_->Unset(setting->first);
                return "unset " + setting->first;
            }
            tv_->Set(setting->first, setting->second[value]);
            return "set " + setting->first + " " + vtv::ToText(setting->second[value]);
        }
        if (what < 28) {
            tv_->SetSignedIn(yes);
            return "signed in" + word;
        }
        if (what < 31) {
            const char* item = Choose(2) == 1 ? "tnc" : "pp";
            tv_->SetConsent(item, yes);
            return item + word;
        }
        if (what < 32) {
            tv_->SetNetwork(yes ? vtv::Network::kConnected : vtv::Network::kDisconnected);
            return "network" + word;
        }
        if (what < 34) {
            const std::string& app = kApplications[Choose(kApplications.size())];
            AOVSystemDataSetAOVMode(app.c_str(), yes ? 1 : 0);
            return "mode of " + app + word;
        }
        if (what < 37) {
            const vtv::KnownFeature& feature =
                vtv::KnownFeatures()[Choose(vtv::KnownFeatures().size())];
            tv_->SetFeature(feature.key, feature.type == "bool"  ? vtv::Value(yes)
                                         : feature.type == "int" ? vtv::Value(yes ? 1 : 0)
                                                                 : vtv::Value(std::string("X")));
            return feature.key + word;
        }
        const char* files[] = {"share/.voice/alexa_login_success", "share/.voice/ga_login_success",
                               "share/.voice/salute_login_success"};
        const std::string file = files[Choose(3)];
        yes ? tv_->AddOwnerFile(file) : static_cast<void>(tv_->RemoveOwnerFile(file));
        return file + word;
    }

    std::vector<Change> TakeChanges() {
        tv_->Dispatch();
        return std::exchange(changes_, {});
    }

    std::string folder_;
    std::unique_ptr<vtv::Tv> tv_;
    std::unique_ptr<host::Provider> provider_;
    std::vector<Change> changes_;
    std::mt19937 random_{Seed()};
    testing::ScopedTrace note_{__FILE__, __LINE__, SeedNote()};
};

constexpr const char* kModels[] = {"farfield-eu", "farfield-cn", "ptt-passthrough-us",
                                   "farfield-ru"};
constexpr int kSteps = 100;

}  // namespace

TEST_F(Refreshing, AfterAnyChangeThePageIsAsIfItWasAskedAfresh) {
    int asked = 0;
    int looks = 0;
    std::set<std::string> changed;
    for (const char* model : kModels) {
        TurnOn(model);
        Page page = host::LookAtPage(*provider_);
        for (int step = 0; step < kSteps; ++step) {
            const std::string what = ChangeSomething();
            const std::vector<Change> changes = TakeChanges();
            const Page refreshed = host::Refresh(*provider_, page, changes);
            const Page fresh = host::LookAtPage(*provider_);
            for (size_t i = 0; i < fresh.items.size(); ++i) {
                EXPECT_TRUE(refreshed.items[i] == fresh.items[i])
                    << model << ", step " << step << ", " << what << ": "
                    << fresh.items[i].item->name;
                if (!(page.items[i] == fresh.items[i])) {
                    changed.insert(fresh.items[i].item->name);
                }
            }
            asked += static_cast<int>(host::ItemsToAsk(*provider_, changes).size());
            looks += static_cast<int>(fresh.items.size());
            page = fresh;
        }
    }
    // Otherwise nothing was tested: every item has changed, and most items were not asked again.
    EXPECT_EQ(changed.size(), host::PageItems().size());
    EXPECT_LT(asked, looks / 2);
}

TEST_F(Refreshing, EverythingThatAnItemReadsIsInTheList) {
    std::map<std::string, std::set<std::string_view>> listed;
    for (const host::PageInput& input : host::PageInputs()) {
        listed[std::string(input.name)] = {input.items.begin(), input.items.end()};
    }
    std::set<std::string> seen;
    for (const char* model : kModels) {
        TurnOn(model);
        for (int step = 0; step < kSteps; ++step) {
            ChangeSomething();
            TakeChanges();
            for (const Item& item : host::PageItems()) {
                vtv::StartRecordingReads();
                host::LookAt(*provider_, item);
                for (const vtv::Read& read : vtv::StopRecordingReads()) {
                    EXPECT_EQ(listed[NameOf(read)].count(item.name), 1U)
                        << item.name << " reads " << NameOf(read);
                    seen.insert(NameOf(read));
                }
            }
        }
    }
    for (const host::PageInput& input : host::PageInputs()) {
        // The provider keeps the policy in memory.
        EXPECT_TRUE(seen.count(std::string(input.name)) == 1 ||
                    input.name == "setting db/menu/voice/mva_list")
            << input.name << " was never read";
    }
}

TEST_F(Refreshing, AsksNothingWhenNoItemDependsOnWhatChanged) {
    TurnOn("farfield-eu");
    ASSERT_TRUE(host::IsListed(*provider_));
    tv_->Set("db/of/another/program", 1);
    const std::vector<Change> changes = TakeChanges();
    EXPECT_THAT(changes, SizeIs(1));
    EXPECT_THAT(host::ItemsToAsk(*provider_, changes), IsEmpty());
    EXPECT_THAT(host::ItemsToAsk(*provider_, {}), IsEmpty());
}

TEST_F(Refreshing, AsksOnlyTheItemsThatDependOnWhatChanged) {
    TurnOn("farfield-eu");
    tv_->Set("db/menu/voice/passthru", true);
    const std::set<std::string> asked = Names(host::ItemsToAsk(*provider_, TakeChanges()));
    EXPECT_EQ(asked, (std::set<std::string>{"voice-wake-up", "voice-always-wake-up",
                                            "voice-screen-on-wake-up"}));
}

TEST_F(Refreshing, AsksEverythingWhenTheMenuLanguageOrAnUnknownStateChanges) {
    TurnOn("farfield-eu");
    tv_->SetLanguage("de_DE");
    EXPECT_THAT(host::ItemsToAsk(*provider_, TakeChanges()), SizeIs(host::PageItems().size()));
    EXPECT_THAT(host::ItemsToAsk(*provider_, {{Change::What::kState, "weather"}}),
                SizeIs(host::PageItems().size()));
}

TEST_F(Refreshing, AFolderThatGoesAwayTakesItsFilesAlong) {
    TurnOn("farfield-eu");
    const auto asked = [&](const char* path) {
        return Names(host::ItemsToAsk(*provider_, {{Change::What::kFile, path}}));
    };
    EXPECT_THAT(asked("share/.voice"), Contains("voice"));
    EXPECT_THAT(asked("share/.voice/ga_login_success"), Contains("voice"));
    EXPECT_THAT(asked("share/.voi"), IsEmpty());
    EXPECT_THAT(asked("share/.voice/ga_login_success.old"), IsEmpty());
}

TEST_F(Refreshing, AsksEverythingOfAProviderThatTheListWasNotMadeFrom) {
    TurnOn("farfield-eu");
    const host::Provider other(std::string(FAKES) + "/libfake-sound.so");
    EXPECT_FALSE(host::IsListed(other));
    EXPECT_THAT(host::ItemsToAsk(other, {{Change::What::kSetting, "db/of/another/program"}}),
                SizeIs(host::PageItems().size()));
    EXPECT_THAT(host::ItemsToAsk(other, {}), IsEmpty());
}
