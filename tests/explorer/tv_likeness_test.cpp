// The explorer's TV, the virtual TV and the recording platform answer alike: every call of the
// platform with every kind of value; the first two also run every application alike.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
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
                  : explorer::MissingValue(platform::NO_SUCH_FEATURE));
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

using Lines = std::vector<std::string>;

struct Answers {
    Lines calls;
    Lines applications;
};

// What one of the programs that have another platform prints.
Answers AnswersOf(const std::string& call, const std::string& folder) {
    const std::string file = folder + "/answers";
    const std::string command = call + " >" + file + " 2>" + folder + "/errors";
    EXPECT_EQ(std::system(command.c_str()), 0) << ReadAll(folder + "/errors");
    Answers answers;
    std::ifstream stream(file);
    bool isBehind = false;
    for (std::string line; std::getline(stream, line);) {
        isBehind = isBehind || line.empty();
        if (!line.empty()) {
            (isBehind ? answers.applications : answers.calls).push_back(line);
        }
    }
    return answers;
}

void ExpectAlike(const Lines& ours, const Lines& theirs) {
    ASSERT_EQ(ours.size(), theirs.size());
    int shown = 0;
    for (std::size_t i = 0; i < ours.size() && shown < 20; ++i) {
        EXPECT_EQ(ours[i], theirs[i]);
        shown += ours[i] != theirs[i] ? 1 : 0;
    }
}

// The calls of the platform, and how many of their parameters can be given a null that is not only
// handed on.
std::map<std::string, int> NullsOfCalls() {
    std::map<std::string, int> nulls;
    const std::regex parameter(R"([^(),]+)");
    const std::regex nullable(R"((\*|_h|_cb|_fn)\s*$)");
    const auto count = [&](const std::string& parameters) {
        int number = 0;
        for (std::sregex_iterator one(parameters.begin(), parameters.end(), parameter), end;
             one != end; ++one) {
            const std::string type = one->str();
            number += std::regex_search(type, nullable) && type.find("void*") == type.npos ? 1 : 0;
        }
        return number;
    };
#define CALL(result, name, parameters, failure, does, object) nulls[#name] = count(#parameters);
    SI_PLATFORM_CALLS(CALL)
#undef CALL
    return nulls;
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
    Answers ours;
    ours.calls = AskEveryCall(lazy, inputs, models.front().model);
    for (const std::string& unknown : explorer::tv().UnknownKeys()) {
        const std::string name = unknown.substr(unknown.find(' ') + 1);
        const bool isMeant = name.empty() || name == "(null)" || name == "db" ||
                             name.find(UNHEARD_OF) != std::string::npos;
        EXPECT_TRUE(isMeant) << unknown;
    }
    ours.applications = RunEveryApplication(lazy, inputs, models.front().model);
    ASSERT_GT(ours.calls.size(), 1000U);
    const Answers ofVirtualTv =
        AnswersOf(std::string(VIRTUAL_TV_ANSWERS) + " " + place.model + " " + place.folder + "/tv",
                  place.folder);
    ExpectAlike(ours.calls, ofVirtualTv.calls);
    ExpectAlike(ours.applications, ofVirtualTv.applications);
    const Answers recorded =
        AnswersOf(std::string(RECORDING_ANSWERS) + " " + place.model, place.folder);
    ExpectAlike(ours.calls, recorded.calls);
}

TEST(TwoTvsQuestions, AskForEveryCallOfThePlatformAndForEachOfItsNulls) {
    const Place place(MODELS.front());
    const Answers answers =
        AnswersOf(std::string(RECORDING_ANSWERS) + " " + place.model, place.folder);
    std::set<std::string> asked;
    std::map<std::string, std::set<std::string>> nulls;
    for (const std::string& line : answers.calls) {
        const std::string call = line.substr(0, line.find(' '));
        asked.insert(call);
        if (line.find("(null)") != std::string::npos) {
            nulls[call].insert(line.substr(0, line.rfind(": ")));
        }
    }
    ASSERT_GT(NullsOfCalls().size(), 30U);
    ASSERT_EQ(NullsOfCalls()["app_control_add_extra_data"], 3);
    for (const auto& [call, count] : NullsOfCalls()) {
        EXPECT_EQ(asked.count(call), 1U) << call;
        EXPECT_GE(nulls[call].size(), static_cast<std::size_t>(count)) << call;
    }
}

INSTANTIATE_TEST_SUITE_P(Models, TwoTvs, testing::ValuesIn(MODELS),
                         [](const auto& model) { return std::string(model.param.name); });
