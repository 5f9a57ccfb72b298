// The explorer's TV and the virtual TV answer alike: every call of the platform with every kind of
// value, and every application.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "explorer/engine/choices.h"
#include "explorer/tv/app_effects.h"
#include "explorer/tv/concrete_tv.h"
#include "explorer/tv/lazy_tv.h"
#include "explorer/tv/new_tv.h"
#include "platform_questions.h"
#include "process.h"
#include "virtual-tv/model/keys.h"

namespace fs = std::filesystem;

using explorer::Input;
using explorer::Value;

namespace {

class LazyTestTv : public TestTv {
  public:
    LazyTestTv(const explorer::Inputs& inputs, const explorer::NewTv& model)
        : inputs_(inputs), tv_(inputs, model), state_(tv_.Start()) {
        explorer::tv().SetPolicy(model.policy ? &*model.policy : nullptr);
    }

    void Store(const std::string& key, const std::optional<vtv::Value>& value) override {
        Set(Input::Kind::kSetting, key,
            value ? explorer::StoredValue(*value) : explorer::MissingValue());
    }
    void SetFeature(const std::string& key, const std::optional<vtv::Value>& value) override {
        Set(Input::Kind::kFeature, key,
            value ? explorer::StoredValue(*value)
                  : explorer::MissingValue(explorer::keys::INVALID_PARAMETER));
    }
    void SetConsent(const std::string& item, bool agreed) override {
        Set(Input::Kind::kConsent, item, explorer::NumberValue(agreed ? 1 : 0, "int"));
    }
    void SetSignedIn(bool signedIn) override {
        Set(Input::Kind::kCall, explorer::keys::LOGIN,
            explorer::NumberValue(signedIn ? 1 : 0, "int"));
    }
    void SetOwnerFile(const std::string& path, bool isThere) override {
        Set(Input::Kind::kFile, vtv::kOwnerFolder + path,
            explorer::NumberValue(isThere ? 1 : 0, "bool"));
    }
    void Do(const std::function<void()>& calls) override {
        explorer::Choices choices;
        tv_.Load(state_);
        explorer::tv().Begin(choices);
        calls();
        tv_.TakeOver(state_);
    }
    bool IsRunning(const std::string& appId) override {
        return StartOf(appId).application == appId;
    }
    bool Finish(const std::string& appId) override {
        const explorer::Started started = StartOf(appId);
        const bool can = explorer::CanFinish(tv_, state_, started);
        tv_.Finish(state_, started);
        return can;
    }
    std::string Stored(const std::string& key) override {
        const Value& value =
            tv_.ValueOf(state_, inputs_.IndexOf(*inputs_.Find(Input::Kind::kSetting, key)));
        if (value.kind == Value::Kind::kFails) {
            return "none";
        }
        const bool isFlag = value.storedType == "bool";
        return value.storedType + " " +
               (value.kind == Value::Kind::kText ? value.text
                : isFlag                         ? (value.number != 0 ? "true" : "false")
                                                 : std::to_string(value.number));
    }

  private:
    void Set(Input::Kind kind, const std::string& key, const Value& value) {
        tv_.Set(state_, kind, key, value);
        Do([] {});  // what follows from it
    }
    explorer::Started StartOf(const std::string& appId) {
        for (const explorer::Started& started : tv_.RunningIn(state_)) {
            if (started.application == appId) {
                return started;
            }
        }
        return {};
    }

    const explorer::Inputs& inputs_;
    explorer::ConcreteTv tv_;
    explorer::TvState state_;
};

struct Answers {
    std::vector<std::string> lines;
    std::vector<std::string> platform;  // the names of its calls
};

Answers AnswersOfTheVirtualTv(const std::string& model, const std::string& folder) {
    const std::string file = folder + "/answers";
    const std::string command = std::string(VIRTUAL_TV_ANSWERS) + " " + model + " " + folder +
                                "/tv >" + file + " 2>" + folder + "/errors";
    EXPECT_EQ(std::system(command.c_str()), 0) << ReadAll(folder + "/errors");
    Answers answers;
    std::ifstream stream(file);
    bool isBehind = false;
    for (std::string line; std::getline(stream, line);) {
        isBehind = isBehind || line.empty();
        (isBehind ? answers.platform : answers.lines).push_back(line);
    }
    return answers;
}

constexpr char ASSISTANTS[] = R"(
[[assistants]]
order = 1
id = "ORVIK2"
app = "com.vantelo.tv.voice-instant-app"
name = "Orvik"
[[assistants]]
order = 2
id = "GVA"
app = "com.vantelo.tv.google-assistant"
name = "Google Assistant"
[[assistants]]
order = 3
id = "ALEXA"
app = "com.vantelo.tv.alexa"
name = "Alexa"
[[assistants]]
order = 4
id = "SBER"
app = "com.vantelo.tv.salute-assistant"
name = "Salute"
[[assistants]]
order = 5
id = "TENCENT"
app = "com.vantelo.tv.tencent-voice-chrome"
name = "Xiaowei"
[[assistants]]
order = 6
id = "SVA"
app = "com.vantelo.tv.sva-app"
name = "SVA"
)";

const std::string SPEECH = R"(
[speech]
voices = ["en_US", "de_DE"]
[[packages]]
app = "org.nemra.tts-engine-neural"
)";

struct TestModel {
    const char* name;
    std::string text;
};
void PrintTo(const TestModel& model, std::ostream* out) {
    *out << model.name;
}
const std::vector<TestModel> MODELS = {
    {"everything", ASSISTANTS + SPEECH +
                       "metadata = { \"com.vantelo/tv/metadata/tts-engine/legacy_tts_language\" = "
                       "\"de_DE\" }\n"},
    {"offline", "network = \"disconnected\"\n[account]\nsigned_in = true\n" +
                    std::string(ASSISTANTS) + SPEECH +
                    "metadata = { \"com.vantelo/tv/metadata/tts-engine/legacy_tts_language\" = "
                    "false }\n"},
    {"recorded",
     "applications = \"record\"\n[account]\nui = \"\"\n[features]\n"
     "\"cn_ai_service_supported\" = true\n" +
         std::string(ASSISTANTS)},
    {"automatic", "applications = \"auto\"\n" + std::string(ASSISTANTS)},
    {"oddpolicy",
     "[settings]\n\"db/menu/voice/mva_list\" = [{VAOrder = 1, VAAppId = \"a.one\"}]\n" + SPEECH},
    {"bare", "title = \"Nothing\"\n"},
};

// A model's file, in a folder for a TV.
struct Place {
    explicit Place(const TestModel& test) : folder(TemporaryFolder() + "/two-" + test.name) {
        fs::create_directories(folder);
        std::ofstream(model) << test.text;
    }
    ~Place() {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    std::string folder;
    std::string model = folder + "/model.toml";
};

class TwoTvs : public testing::TestWithParam<TestModel> {};

}  // namespace

TEST_P(TwoTvs, AnswerEveryCallOfThePlatformAndRunEveryApplicationAlike) {
    const Place place(GetParam());
    const explorer::Inputs inputs = explorer::LoadInputs(explorer::InputsFile());
    const std::vector<explorer::NewTv> models = explorer::LoadNewTvs(inputs, {place.model});
    LazyTestTv lazy(inputs, models.front());
    const std::vector<std::string> ours = AskEverything(lazy, inputs, models.front().model);
    EXPECT_EQ(explorer::tv().UnknownKeys(), std::set<std::string>());
    const std::vector<std::string> theirs = AnswersOfTheVirtualTv(place.model, place.folder).lines;
    ASSERT_GT(ours.size(), 1000U);
    ASSERT_EQ(ours.size(), theirs.size());
    int shown = 0;
    for (std::size_t i = 0; i < ours.size() && shown < 20; ++i) {
        EXPECT_EQ(ours[i], theirs[i]);
        shown += ours[i] != theirs[i] ? 1 : 0;
    }
}

TEST(TwoTvsQuestions, AskForEveryCallOfThePlatformOnATvThatHasEverything) {
    const Place place(MODELS.front());
    const Answers answers = AnswersOfTheVirtualTv(place.model, place.folder);
    std::set<std::string> asked;
    for (const std::string& line : answers.lines) {
        asked.insert(line.substr(0, line.find(' ')));
    }
    ASSERT_GT(answers.platform.size(), 30U);
    for (const std::string& function : answers.platform) {
        // The widget toolkit is the machine's own on the one and none on the other; of the trace
        // each keeps what is recorded in its own way.
        const bool isLeftOut =
            function.empty() || function.rfind("elm_", 0) == 0 || function == "PrepareCallBuffer";
        EXPECT_EQ(asked.count(function), isLeftOut ? 0U : 1U) << function;
    }
}

INSTANTIATE_TEST_SUITE_P(Models, TwoTvs, testing::ValuesIn(MODELS),
                         [](const auto& model) { return std::string(model.param.name); });
