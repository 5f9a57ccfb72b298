// The dull model runs beside the library over many random states of a TV.
//
// SI_MODEL_SEED begins elsewhere (tests/environment.h), SI_MODEL_STEPS shortens or lengthens the
// walk.
#include <random>

#include "model/page_model.h"
#include "page.h"
#include "tests/environment.h"

using namespace recording;
using model::Item;
using model::State;

namespace {

class Walker {
  public:
    Walker() { StartAnew(); }

    // Changes one input of the TV, of the library's and of the model's alike.
    void Step() {
        switch (Below(24)) {
            case 0:
                return FeatureBoolOf(feature::VOICE, state_.voiceRecognition, 90);
            case 1:
                return OrvikFeature();
            case 2:
                return FeatureIntOf(feature::FAR_FIELD, state_.farFieldType);
            case 3:
                return FeatureBoolOf(feature::PASSTHRU, state_.passThroughModel, 60);
            case 4:
                return FeatureBoolOf(feature::CHINA, state_.china, 30);
            case 5:
                return FeatureIntOf(feature::MIC, state_.microphoneType);
            case 6:
                return SettingInt(setting::BLOCK, state_.block, {0, 1, 2, 3});
            case 7:
                return SettingBool(setting::LEGACY, state_.legacy, 25);
            case 8:
                return SettingBool(setting::FIRST_TIME, state_.firstTime, 40);
            case 9:
                return SettingBool(setting::CONNECTED, state_.connected, 60);
            case 10:
                return SettingBool(setting::PASSTHRU, state_.passThrough, 60);
            case 11:
                return SettingBool(setting::PASSTHRU_MIC, state_.passThroughMic, 60);
            case 12:
                return SettingInt(setting::MIC, state_.microphone, {0, 1, 1, 2, -1});
            case 13:
            case 14:
                return CurrentAssistant();
            case 15:
                return EntriesOf(setting::FARFIELD, state_.handsFree,
                                 {"on", "off", "on", "On", ""});
            case 16:
                return EntriesOf(setting::HINT, state_.hints,
                                 {"on_user", "off_default", "null", ""});
            case 17:
                return TencentSetup();
            case 18:
                return Login();
            case 19:
                return Consents();
            case 20:
                return File(file::ALEXA, state_.alexaFile);
            case 21:
                return File(file::GOOGLE, state_.googleFile);
            case 22:
                return File(file::SALUTE, state_.saluteFile);
            default:
                return NewPolicy();
        }
    }

    const State& Now() const { return state_; }

  private:
    static constexpr const char* APPS[] = {"app.a", "app.b", "app.c", "app.d", ""};
    static constexpr const char* IDS[] = {"ORVIK2", "ORVIK2", "ALEXA",   "GVA",
                                          "SBER",   "SVA",    "TENCENT", "orvik2"};

    int Below(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }
    bool Percent(int n) { return Below(100) < n; }
    template <typename T, std::size_t N>
    T OneOf(const T (&choices)[N]) {
        return choices[Below(static_cast<int>(N))];
    }
    template <typename T>
    T OneOf(const std::vector<T>& choices) {
        return choices[static_cast<std::size_t>(Below(static_cast<int>(choices.size())))];
    }

    void StartAnew() {
        Reset();
        SetRecording(false);
        MVAList::Initialize();
        Publish(setting::POLICY, R"([{"VAId":"nobody"}])");
        Publish(setting::POLICY, "[]");
        for (int i = 0; i < 500; ++i) {
            Step();
        }
    }

    void FeatureBoolOf(const char* name, std::optional<bool>& member, int likely) {
        if (Percent(5)) {
            member.reset();
            FeatureFails(name, -1);
            return;
        }
        member = Percent(likely);
        Feature(name, *member);
    }
    void FeatureIntOf(const char* name, std::optional<int>& member) {
        if (Percent(5)) {
            member.reset();
            FeatureFails(name, -1);
            return;
        }
        member = OneOf({0, 1, 1, 2, -1});
        Feature(name, *member);
    }
    void OrvikFeature() {
        if (Percent(30)) {
            state_.orvikFeature.reset();
            state_.orvikFeatureError = Percent(50) ? -22 : -1;
            FeatureFails(feature::ORVIK, state_.orvikFeatureError);
            return;
        }
        state_.orvikFeature = Percent(50);
        Feature(feature::ORVIK, *state_.orvikFeature);
    }
    void SettingBool(const char* name, std::optional<bool>& member, int likely) {
        if (Percent(5)) {
            member.reset();
            Remove(name);
            return;
        }
        member = Percent(likely);
        Set(name, *member);
    }
    void SettingInt(const char* name, std::optional<int>& member, const std::vector<int>& values) {
        if (Percent(5)) {
            member.reset();
            Remove(name);
            return;
        }
        member = OneOf(values);
        Set(name, *member);
    }
    void CurrentAssistant() {
        if (Percent(5)) {
            state_.current.reset();
            Remove(setting::CURRENT);
            return;
        }
        state_.current = OneOf(APPS);
        Set(setting::CURRENT, state_.current->c_str());
    }
    void EntriesOf(const char* name, model::Entries& member,
                   const std::vector<const char*>& texts) {
        member = {};
        const int shape = Below(20);
        if (shape == 0) {
            Remove(name);
            return;
        }
        if (shape == 1) {
            Set(name, OneOf({"", "{", "[]", "5", "[\"app.a\"]"}));
            return;
        }
        member.readable = true;
        std::string json = "{";
        for (const char* app : APPS) {
            if (Percent(70)) {
                const char* text = OneOf(texts);
                member.texts[app] = text;
                json += (json.size() > 1 ? ",\"" : "\"") + std::string(app) + "\":\"" + text + "\"";
            }
        }
        Set(name, (json + "}").c_str());
    }
    void TencentSetup() {
        state_.tencent = {};
        switch (Below(5)) {
            case 0:
                return Remove(setting::TENCENT);
            case 1:
                return Set(setting::TENCENT, OneOf({"{", "[]", "7"}));
            case 2:
                state_.tencent.readable = true;
                return Set(setting::TENCENT, R"({"other":true})");
            default:
                state_.tencent.readable = true;
                state_.tencent.texts["onboarding_completed"] = "whatever";
                return Set(setting::TENCENT, OneOf({R"({"onboarding_completed":false})",
                                                    R"({"onboarding_completed":"yes"})",
                                                    R"({"a":1,"onboarding_completed":null})"}));
        }
    }
    void Login() {
        ClearFaults();
        if (Percent(10)) {
            state_.loginState.reset();
            Fail("sso_get_login_state");
            return;
        }
        state_.loginState = OneOf({0, 1, 1, 2});
        tv().loginState = *state_.loginState;
    }
    void Consents() {
        state_.tnc = OneOf({1, 1, 1, 2, 0, -1});
        state_.pp = OneOf({1, 1, 1, 2, 0, -1});
        tv().consents = {{"tnc", state_.tnc}, {"pp", state_.pp}};
    }
    void File(const char* path, bool& member) {
        member = Percent(50);
        if (member) {
            tv().files.insert(path);
        } else {
            tv().files.erase(path);
        }
    }
    void NewPolicy() {
        const int shape = Below(10);
        if (shape == 0) {
            // A broken document changes nothing.
            Publish(setting::POLICY, OneOf({"[", "", R"([{"VAOrder":"x"}])", "[1]"}));
            return;
        }
        if (shape == 1) {
            model::TakePolicy(state_, {});
            Publish(setting::POLICY, OneOf({"[]", "{}", "null"}));
            return;
        }
        std::vector<model::Assistant> assistants;
        std::vector<std::string> elements;
        const int count = 1 + Below(5);
        for (int i = 0; i < count; ++i) {
            const model::Assistant assistant = {OneOf(IDS), OneOf(APPS), Percent(50)};
            assistants.push_back(assistant);
            elements.push_back(
                ::Assistant(Below(7), assistant.id, assistant.appId, "Name", assistant.farField));
        }
        model::TakePolicy(state_, assistants);
        Publish(setting::POLICY, Policy(elements));
    }

    std::mt19937 random_{Seed()};
    State state_;
};

}  // namespace

TEST(Model, AnswersAsTheLibraryInManyRandomStates) {
    SCOPED_TRACE(SeedNote());
    const unsigned steps = NumberFromEnvironment("SI_MODEL_STEPS", 100000);
    ASSERT_GT(steps, 0u);
    Walker walker;
    // How often each answer was seen: a walk that never shows an item proves nothing about it.
    unsigned seen[static_cast<int>(Item::COUNT)][4] = {};
    for (unsigned step = 0; step < steps; ++step) {
        walker.Step();
        for (int i = 0; i < static_cast<int>(Item::COUNT); ++i) {
            const Item item = static_cast<Item>(i);
            const bool shown = model::IsShown(walker.Now(), item);
            const bool selectable = model::CanBeSelected(walker.Now(), item);
            ++seen[i][shown ? 1 : 0];
            ++seen[i][selectable ? 3 : 2];
            ASSERT_EQ(check_visibility_int(key::ALL[i], 0), shown ? 1 : 0)
                << key::ALL[i] << " is to be " << (shown ? "shown" : "hidden") << ": step " << step;
            ASSERT_EQ(check_enable_int(key::ALL[i], 0), selectable ? 1 : 0)
                << key::ALL[i] << " is to be " << (selectable ? "enabled" : "dimmed") << ": step "
                << step;
        }
    }
    if (steps >= 10000) {
        for (int i = 0; i < static_cast<int>(Item::COUNT); ++i) {
            EXPECT_GT(seen[i][0], 0u) << key::ALL[i] << " was never hidden";
            EXPECT_GT(seen[i][1], 0u) << key::ALL[i] << " was never shown";
            if (std::string(key::ALL[i]) != key::ASSISTANT) {
                EXPECT_GT(seen[i][2], 0u) << key::ALL[i] << " was never dimmed";
            }
            EXPECT_GT(seen[i][3], 0u) << key::ALL[i] << " was never enabled";
        }
    }
    MVAList::Finalize();
    Reset();
}
