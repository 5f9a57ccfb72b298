// Texts that others choose: what the explorer writes down of them means what they are.
#include <gtest/gtest.h>
#include <toml++/toml.h>

#include <filesystem>
#include <fstream>

#include "explorer/diff/replay.h"
#include "explorer/invariants/violation_steps.h"
#include "explorer/tv/lazy_tv.h"
#include "explorer/tv/policy.h"
#include "host/core/toml_writer.h"
#include "process.h"
#include "virtual-tv/model/keys.h"

namespace {

constexpr char CHOSEN[] = "a'''\"\"\"b\\\n[[step]]\r\n\t\x01\x7f # { = 語";

std::string WriteToml(const std::string& name, const toml::table& document) {
    const std::string file = TemporaryFolder() + "/" + name;
    std::ofstream(file) << host::ToToml(document);
    return file;
}

// An input of each kind of value, and an assistant and a policy of that name.
explorer::Inputs ChosenInputs() {
    const toml::table words{{"as", CHOSEN}, {"text", CHOSEN}};
    const toml::table current{{"name", CHOSEN},
                              {"setting", vtv::kCurrentAssistantKey},
                              {"current-assistant", true},
                              {"values", toml::array{words}}};
    const toml::table setting{
        {"setting", CHOSEN}, {"type", "string"}, {"values", toml::array{CHOSEN}}};
    const toml::table feature{
        {"feature", CHOSEN}, {"type", "string"}, {"values", toml::array{CHOSEN}}};
    const toml::table call{
        {"call", explorer::MODE_CALL}, {"name", "mode"}, {"values", toml::array{1}}};
    const toml::table assistant{{"app", CHOSEN}, {"name", CHOSEN}};
    toml::array published;
    published.push_back(toml::array{CHOSEN});
    const toml::table policy{{"name", CHOSEN}, {"published", published}};
    return explorer::LoadInputs(WriteToml(
        "inputs.toml", toml::table{{"input", toml::array{current, setting, feature, call}},
                                   {"assistants", toml::table{{CHOSEN, assistant}}},
                                   {"policy", toml::array{policy}}}));
}

toml::array StepsIn(const std::string& scenario) {
    const toml::table root = toml::parse(scenario);
    EXPECT_EQ(root["title"], CHOSEN) << scenario;
    return *root["step"].as_array();
}

// The voice item has that title with the first provider, and none with the second.
std::string ScenarioOfTitle(const explorer::Inputs& inputs, const char* title) {
    explorer::Choices choices;
    explorer::tv().Use(inputs);
    explorer::tv().Begin(choices);
    explorer::tv().Append(explorer::Entry::kAnswer, explorer::answers::TITLE, title);
    const explorer::Question& question = *explorer::FindQuestion("title:voice");
    return explorer::ToScenario(
        inputs, {}, CHOSEN, explorer::ToReplay(inputs, {}, question, explorer::tv().Record(), ""));
}

}  // namespace

TEST(ChosenTexts, OfInputsAndPoliciesStandInAScenarioAsTheyAre) {
    const explorer::Inputs inputs = ChosenInputs();
    explorer::State state;
    for (std::size_t input = 0; input < inputs.inputs.size(); ++input) {
        state.path.push_back({static_cast<std::uint16_t>(input), 0, 1});
        state.texts.emplace_back(CHOSEN);
    }
    const std::vector<std::string> words = explorer::Describe(inputs, state);
    EXPECT_EQ(words[1], std::string(CHOSEN) + ": " + CHOSEN);
    EXPECT_EQ(
        StepsIn(explorer::ToScenario(inputs, state, CHOSEN, "")),
        (toml::array{toml::table{{"say", "applications are started, but not waited for"},
                                 {"applications", "record"}},
                     toml::table{{"policy", inputs.policies.front().published.front()}},
                     toml::table{{"say", words[1]},
                                 {"set", toml::table{{vtv::kCurrentAssistantKey, CHOSEN}}}},
                     toml::table{{"say", words[2]}, {"set", toml::table{{CHOSEN, CHOSEN}}}},
                     toml::table{{"say", words[3]}, {"feature", toml::table{{CHOSEN, CHOSEN}}}},
                     toml::table{{"say", words[4]},
                                 {"state", toml::table{{std::string(vtv::kModeState) + CHOSEN, 1}}},
                                 {"force", true}}}));
}

TEST(ChosenTexts, OfAProviderStandInAScenarioAsTheyAre) {
    const explorer::Inputs inputs = ChosenInputs();
    explorer::Observed observed;
    observed.handed = {{explorer::FindItem("voice"), 1}};
    observed.facts = {{explorer::FindItem("voice"), "choices", std::vector<std::string>{CHOSEN}}};
    observed.settings = {{CHOSEN, CHOSEN}};
    observed.state = {{CHOSEN, CHOSEN}};
    const toml::table chosen{{CHOSEN, CHOSEN}};
    const toml::table answer{{"voice", toml::table{{"choices", toml::array{CHOSEN}}}}};
    const toml::table never{{"answer", answer},
                            {"launched", toml::array()},
                            {"toast", toml::array()},
                            {"setting", chosen},
                            {"state", chosen}};
    const toml::array seen =
        StepsIn(explorer::ToScenario(inputs, {}, CHOSEN, explorer::StepsOf(observed)));
    EXPECT_EQ(
        *seen.back().as_table(),
        (toml::table{{"hand", toml::table{{"voice", 1}}}, {"never", never}, {"force", true}}));
    const toml::array replayed = StepsIn(ScenarioOfTitle(inputs, CHOSEN));
    EXPECT_EQ(replayed.back().at_path("expect.answer.voice.title"), CHOSEN);
}

TEST(ChosenTexts, OfTheInputsAreReplayedWithWhatIsDifferentThere) {
    toml::table inputs = toml::parse_file(explorer::InputsFile());
    for (toml::node& input : *inputs["input"].as_array()) {
        toml::table& table = *input.as_table();
        table.insert_or_assign("name", table["name"].value_or(std::string()) + CHOSEN);
        for (toml::node& value : *table["values"].as_array()) {
            if (toml::table* words = value.as_table(); words != nullptr && words->contains("as")) {
                words->insert_or_assign("as", (*words)["as"].value_or(std::string()) + CHOSEN);
            }
        }
    }
    const std::string folder =
        std::filesystem::path(WriteToml("inputs.toml", inputs)).parent_path();
    setenv("VTV_EXPLORER_DATA", folder.c_str(), 1);
    const ProcessResult result =
        RunExplorer({"diff", "-q", "--json", "--only", "visible:voice-settings-alexa",
                     "--scenarios", folder, ProviderFile(), BROKEN_WRITES});
    const JsonDocument root = Parse(result.output);
    EXPECT_EQ(result.exitCode, 1) << result.errors;
    const Json::Value& difference = root["differences"][0];
    const std::string calls = difference["calls"].asString();
    const std::string scenario = difference["scenario"].asString();
    EXPECT_NE(ReadAll(calls).find("[[step]]\\u000D"), std::string::npos) << ReadAll(calls);
    for (const auto& [provider, code] : {std::pair(ProviderFile(), 0), {BROKEN_WRITES, 1}}) {
        EXPECT_EQ(RunExplorer({"replay", calls, "--provider", provider}).exitCode, code);
        EXPECT_EQ(RunVtv({"run", "--provider", provider, scenario}).exitCode, code);
    }
    unsetenv("VTV_EXPLORER_DATA");
}

TEST(ChosenTexts, OfAModelStandInATourAsTheyAre) {
    const toml::table features{{"voice.voice_recognition_support", true},
                               {"voice.voice_recognition_far_field_type", 1}};
    const toml::table assistant{{"order", 1},        {"id", "GVA"},
                                {"name", CHOSEN},    {"app", "com.vantelo.tv.google-assistant"},
                                {"far_field", true}, {"wake_up", "off"},
                                {"current", true}};
    const std::string model =
        WriteToml("chosen.toml", toml::table{{"title", CHOSEN},
                                             {"country", "DE"},
                                             {"language", "en_GB"},
                                             {"features", features},
                                             {"assistants", toml::array{assistant}}});
    const std::string folder = TemporaryFolder() + "/chosen-tours";
    const ProcessResult result = RunExplorer({"sequences", "-q", "--tour", folder, "--tv", model});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    bool isPublished = false;
    for (const auto& file : std::filesystem::directory_iterator(folder)) {
        const toml::table tour = toml::parse_file(file.path().string());
        for (const toml::node& step : *tour["step"].as_array()) {
            if (const toml::node* policy = step.as_table()->get("policy")) {
                isPublished = true;
                EXPECT_EQ(Parse(policy->value_or(std::string()))[0]["VAName"], CHOSEN);
            }
        }
        const ProcessResult replay = RunVtv({"run", file.path()});
        EXPECT_EQ(replay.exitCode, 0) << replay.output << replay.errors;
    }
    EXPECT_TRUE(isPublished);
}

TEST(ChosenTexts, ThatAreNoUtf8AreToldInPlaceOfTheirStep) {
    const explorer::Inputs inputs = ChosenInputs();
    const std::string scenario = ScenarioOfTitle(inputs, "\xff");
    EXPECT_EQ(StepsIn(scenario).size(), 2U);
    EXPECT_NE(scenario.find("# \"step.expect.answer.voice.title\" cannot be written as TOML"),
              std::string::npos)
        << scenario;

    const ProcessResult result =
        RunExplorer({"diff", "-q", "--json", "--only", "function:get_list_items_voice_wake_up",
                     "--scenarios", TemporaryFolder(), SPEAKS_BYTES, ProviderFile()});
    EXPECT_EQ(result.exitCode, 1) << result.errors;
    const JsonDocument root = Parse(result.output);
    const std::string calls = ReadAll(root["differences"][0]["calls"].asString());
    EXPECT_NE(calls.find("# \"call.expect\" cannot be written as TOML"), std::string::npos)
        << calls;
}
