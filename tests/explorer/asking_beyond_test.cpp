// Values that the inputs do not name: which are drawn, and what is told of them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <string>

#include "explorer/asking/beyond.h"
#include "explorer/asking/echoes.h"
#include "process.h"

namespace {

using explorer::Input;
using explorer::Value;

bool Has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

const Input& InputNamed(const explorer::Inputs& inputs, const std::string& name) {
    for (const Input& input : inputs.inputs) {
        if (input.name == name) {
            return input;
        }
    }
    throw std::runtime_error("no input " + name);
}

// Inputs that lack something that the file which comes with the explorer has.
class LackingInputs : public testing::Test {
  protected:
    LackingInputs() { setenv("VTV_EXPLORER_DATA", folder_.c_str(), 1); }
    ~LackingInputs() override { unsetenv("VTV_EXPLORER_DATA"); }

    void Replace(const std::string& what, const std::string& by) {
        unsetenv("VTV_EXPLORER_DATA");
        const std::string all = ReadAll(explorer::InputsFile());
        setenv("VTV_EXPLORER_DATA", folder_.c_str(), 1);
        ASSERT_TRUE(Has(all, what)) << what;
        std::string text = all;
        text.replace(text.find(what), what.size(), by);
        std::filesystem::create_directories(folder_);
        std::ofstream(folder_ + "/inputs.toml") << text;
    }

    const std::string folder_ = TemporaryFolder() + "/lacking";
};

TEST(Beyond, NoNamedValueIsDrawnAndNoneTwice) {
    const explorer::Inputs inputs = explorer::LoadInputs(explorer::InputsFile());
    for (const char* name : {"far-field type", "device kind", "hint entry", "account", "voices"}) {
        const Input& input = InputNamed(inputs, name);
        std::vector<Value> all = input.values;
        all.insert(all.end(), input.others.begin(), input.others.end());
        const std::vector<Value> drawn = explorer::DrawnValues(input, 40);
        EXPECT_EQ(drawn.size(), 40U) << name;
        for (const Value& value : drawn) {
            for (const Value& other : all) {
                EXPECT_FALSE(value.kind == other.kind && value.number == other.number &&
                             value.text == other.text)
                    << name << ": " << value.words;
            }
            all.push_back(value);
        }
    }
}

TEST(Beyond, TheSameValuesAreDrawnEachTime) {
    const explorer::Inputs inputs = explorer::LoadInputs(explorer::InputsFile());
    const Input& input = InputNamed(inputs, "hint entry");
    const std::vector<Value> first = explorer::DrawnValues(input, 20);
    const std::vector<Value> second = explorer::DrawnValues(input, 20);
    ASSERT_EQ(first.size(), second.size());
    for (std::size_t i = 0; i < first.size(); ++i) {
        EXPECT_EQ(first[i].text, second[i].text);
    }
}

TEST(Beyond, OfASwitchAFileAWriteAndAResultNothingIsDrawn) {
    const explorer::Inputs inputs = explorer::LoadInputs(explorer::InputsFile());
    for (const char* name : {"legacy voice", "China model", "Alexa signed in", "launch", "network",
                             "writing the hint entries"}) {
        EXPECT_TRUE(explorer::DrawnValues(InputNamed(inputs, name), 5).empty()) << name;
    }
}

TEST(Beyond, RecordsAreAlikeWhereOnlyTheValuesShow) {
    const explorer::EchoComparison numbers(explorer::NumberValue(-7, "int"),
                                           explorer::NumberValue(1, "int"));
    EXPECT_TRUE(numbers.IsAlike("type -7 at 1", "type 1 at 1"));
    EXPECT_TRUE(numbers.IsAlike("-7-7", "11"));
    EXPECT_FALSE(numbers.IsAlike("type -7 at 1", "type 1 at 2"));
    EXPECT_FALSE(numbers.IsAlike("type -7", "type 1 and more"));
    EXPECT_FALSE(numbers.IsAlike("type 1", "type -7"));

    const explorer::EchoComparison documents(
        explorer::TextValue(R"({"state":"im","text":""})"),
        explorer::TextValue(R"({"state":"dim","text":"Busy"})"));
    EXPECT_TRUE(documents.IsAlike("is im, says ''", "is dim, says 'Busy'"));
    EXPECT_TRUE(documents.IsAlike("the dim im", "the dim dim"));
    EXPECT_FALSE(documents.IsAlike("is im: true", "is dim: false"));

    const explorer::EchoComparison lists(explorer::TextValue("de_CH,fr_CHx"),
                                         explorer::TextValue("en_US,pt_PT"));
    EXPECT_TRUE(lists.IsAlike("1. de_CH 2. fr_CHx, fr_CH", "1. en_US 2. pt_PT, pt_PT"));
    EXPECT_FALSE(lists.IsAlike("1. de_CH", "1. en_US 2. pt_PT"));
}

TEST(Beyond, WhatIsDrawnIsAnsweredAsSomeNamedValue) {
    const ProcessResult result =
        RunExplorer({"table", "-q", "--beyond", "8", "visible:voice", "enabled:voice-assistant",
                     "function:CSIMenuUtil::IsPassthruDimmed"});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_EQ(result.errors, "");
}

TEST_F(LackingInputs, ANumberThatIsAnsweredUnlikeEveryNamedOneIsTold) {
    const std::string fails = "{ fails = -22 }, { fails = -1 }]\n";
    Replace("microphone_type\"\nvalues = [1, 0, 2, -1, " + fails +
                "full = [3, 4, 5, 6, 7, 8, 2147483647, -2147483648]",
            "microphone_type\"\nvalues = [0, -1, " + fails);
    const ProcessResult result = RunExplorer({"table", "-q", "--beyond", "8", "reason:voice"});
    EXPECT_EQ(result.exitCode, 4) << result.output;
    EXPECT_TRUE(std::regex_search(result.errors,
                                  std::regex("microphone type = [0-9]+ is answered unlike every "
                                             "value that .*/lacking/inputs.toml names \\(.*\\): "
                                             "add it there")))
        << result.errors;
    EXPECT_FALSE(Has(result.errors, "microphone type = -")) << result.errors;
    const ProcessResult without = RunExplorer({"table", "-q", "reason:voice"});
    EXPECT_EQ(without.exitCode, 0) << without.errors;
}

TEST_F(LackingInputs, ATextThatIsAnsweredUnlikeEveryNamedOneLeavesADiffUnproven) {
    Replace("full = [\"en_US,de_DE,en_GB\", \"ja_JP\"]", "");
    const ProcessResult result = RunExplorer({"diff", "-q", "--json", "--beyond", "3", "--only",
                                              "function:CSIMenuUtil::IsMenuLanguageSupportTTS",
                                              ProviderFile(), ProviderFile()});
    EXPECT_EQ(result.exitCode, 4) << result.errors;
    const JsonDocument json = Parse(result.output);
    EXPECT_FALSE(json["alike"].asBool());
    EXPECT_TRUE(Has(json["troubles"].toStyledString(), "voices = ")) << json["troubles"];
}

TEST(Beyond, ADrawnValueThatTwoProvidersAnswerDifferentlyIsADifference) {
    const ProcessResult result =
        RunExplorer({"diff", "-q", "--beyond", "8", "--only", "press:popup", ProviderFile(),
                     FORGETS_LARGE_CONSENTS});
    EXPECT_EQ(result.exitCode, 1) << result.output << result.errors;
    EXPECT_TRUE(Has(result.output, "terms = ")) << result.output;
}

// With drawn values as with the named ones.
TEST(Beyond, WhatIsNotComparedIsNotComparedBeyondTheInputsEither) {
    const std::vector<std::string> words = {
        "diff",         "-q",      "--beyond", "3", "--only", "visible:voice-settings-alexa",
        ProviderFile(), READS_MORE};
    EXPECT_EQ(RunExplorer(words).exitCode, 1);
    std::vector<std::string> without = words;
    without.insert(without.begin() + 1, {"--no-reads", "--no-logs"});
    const ProcessResult result = RunExplorer(without);
    EXPECT_EQ(result.exitCode, 0) << result.output << result.errors;
}

// A part of the answers is neither like the others nor unlike them.
TEST(Beyond, WhatIsInterruptedIsNeitherAlikeNorDifferent) {
    for (const int milliseconds : {100, 500, 1000}) {
        const ProcessResult result =
            InterruptExplorer({"diff", "-q", "--json", "--jobs", "1", "--beyond", "500", "--only",
                               "visible:voice-settings-alexa", ProviderFile(), ProviderFile()},
                              milliseconds, SIGTERM);
        EXPECT_EQ(result.exitCode, 143) << result.errors;
        const JsonDocument json = Parse(result.output);
        EXPECT_FALSE(json["alike"].asBool()) << milliseconds;
        EXPECT_EQ(json["differences"].size(), 0U) << json["differences"];
    }
}

TEST_F(LackingInputs, AnAnswerThatIsLongerThanARecordProvesNothing) {
    Replace("name = \"Other\" }", "name = \"" + std::string(70000, 'x') + "\" }");
    const ProcessResult result = RunExplorer(
        {"diff", "-q", "--only", "choices:voice-assistant", ProviderFile(), ProviderFile()});
    EXPECT_EQ(result.exitCode, 4) << result.output;
    EXPECT_TRUE(Has(result.errors, "bytes of answers and effects in one call")) << result.errors;
}

TEST(Bounds, MoreWritesThanThereIsRoomForProveNothing) {
    const ProcessResult result =
        RunExplorer({"table", "-q", "--provider", WRITES_TOO_MUCH, "visible:voice-settings-alexa"});
    EXPECT_EQ(result.exitCode, 4) << result.output.substr(0, 300);
    EXPECT_TRUE(Has(result.errors, "more than 64 writes in one call")) << result.errors;
}

TEST(Bounds, MoreInputsThanThereIsRoomForAreRefused) {
    const std::string folder = TemporaryFolder() + "/many";
    std::filesystem::create_directories(folder);
    std::ofstream file(folder + "/inputs.toml");
    for (int i = 0; i < 257; ++i) {
        file << "[[input]]\nsetting = \"db/" << i << "\"\ntype = \"int\"\nvalues = [1]\n";
    }
    file << "[[policy]]\nname = \"none\"\npublished = []\n";
    file.close();
    EXPECT_THROW(explorer::LoadInputs(folder + "/inputs.toml"), vtv::Error);
}

TEST(Full, TellsAProviderThatTakesOneConsentForTheOnlyOne) {
    const ProcessResult result = RunExplorer(
        {"diff", "-q", "--full", "--only", "press:popup", ProviderFile(), TAKES_ONE_CONSENT});
    EXPECT_EQ(result.exitCode, 1) << result.output << result.errors;
    EXPECT_TRUE(Has(result.output, "terms: 2")) << result.output;
}

TEST(Full, HasMoreValuesAndPoliciesWithUpToSixteenAssistants) {
    const explorer::Inputs usual = explorer::LoadInputs(explorer::InputsFile());
    const explorer::Inputs full = explorer::LoadInputs(explorer::InputsFile(), true);
    EXPECT_EQ(usual.inputs.size(), full.inputs.size());
    EXPECT_EQ(usual.policies.size() + 12, full.policies.size());
    for (const char* name : {"far-field type", "content hub block", "account"}) {
        std::set<int> numbers;
        for (const Value& value : InputNamed(full, name).values) {
            if (value.kind == Value::Kind::kNumber) {
                numbers.insert(value.number);
            }
        }
        for (int number = -1; number <= 8; ++number) {
            EXPECT_EQ(numbers.count(number), 1U) << name << ' ' << number;
        }
        EXPECT_EQ(numbers.count(2147483647) + numbers.count(-2147483647 - 1), 2U) << name;
        EXPECT_LT(InputNamed(usual, name).values.size(), InputNamed(full, name).values.size());
    }
}

}  // namespace
