// What check and diff found, as it is shown beside the sources.
#include <gtest/gtest.h>
#include <json/json.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "explorer/asking/question.h"
#include "explorer/asking/source_place.h"
#include "process.h"

namespace fs = std::filesystem;

namespace {

// Where a repository begins, and where none does.
class FindingsTest : public testing::Test {
  protected:
    ~FindingsTest() override { fs::current_path(before_); }

    static void GoToTheSources() {
        fs::current_path(fs::path(PROVIDER_SOURCES).parent_path().parent_path());
    }
    static void GoElsewhere() { fs::current_path(TemporaryFolder()); }

    static std::string LineOf(const explorer::SourcePlace& place) {
        std::ifstream source(place.file);
        std::string line;
        for (int i = 0; i < place.line; ++i) {
            std::getline(source, line);
        }
        return line;
    }

  private:
    const fs::path before_ = fs::current_path();
};

TEST_F(FindingsTest, AQuestionsPlaceIsTheHeadOfTheFunctionBehindIt) {
    GoToTheSources();
    int placed = 0;
    for (const explorer::Question& question : explorer::Questions()) {
        if (question.item == nullptr) {
            continue;
        }
        const explorer::SourcePlace place = explorer::PlaceOf(question.name, "lib.so");
        ASSERT_GT(place.line, 0) << question.name;
        if (!question.function.empty()) {
            EXPECT_NE(LineOf(place).find(" " + question.function + "("), std::string::npos)
                << question.name << ": " << LineOf(place);
        }
        ++placed;
    }
    EXPECT_GT(placed, 100);
    const explorer::SourcePlace rule = explorer::PlaceOf("visible:voice", "lib.so");
    EXPECT_EQ(rule.file, "si-ready/src/general_voice_visiblechecker.cpp");
    const explorer::SourcePlace slot = explorer::PlaceOf("reason:voice", "lib.so");
    EXPECT_EQ(LineOf(slot).rfind("int get_disable_text(const char* key", 0), 0U) << LineOf(slot);
    const explorer::SourcePlace written =
        explorer::PlaceOf("function:CSIMenuUtil::setPassthruEnabled=1", "lib.so");
    EXPECT_NE(LineOf(written).find("setPassthruEnabled("), std::string::npos);
}

TEST_F(FindingsTest, WithoutSourcesOrAQuestionThePlaceIsTheLibrary) {
    GoElsewhere();
    EXPECT_EQ(explorer::PlaceOf("visible:voice", "lib.so").file, "lib.so");
    GoToTheSources();
    EXPECT_EQ(explorer::PlaceOf("the page", "lib.so").file, "lib.so");
    EXPECT_EQ(explorer::PlaceOf("the page", "lib.so").line, 0);
}

TEST_F(FindingsTest, ADifferenceIsShownAtItsRule) {
    GoToTheSources();
    const ProcessResult result =
        RunExplorer({"diff", "-q", "--only", "visible:voice-settings-alexa", "--format", "github",
                     ProviderFile(), BROKEN_WRITES});
    EXPECT_EQ(result.exitCode, 1) << result.errors;
    // One by a walk, several by single questions.
    int differences = 0;
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line); ++differences) {
        EXPECT_EQ(line.rfind("::error file=si-ready/src/general_voice_visiblechecker.cpp,line=", 0),
                  0U)
            << line;
    }
    EXPECT_GT(differences, 0);
    EXPECT_NE(result.output.find("title=vtv explore diff%3A visible%3Avoice-settings-alexa::"),
              std::string::npos);
    EXPECT_NE(result.output.find("writes db/menu/refresh_menu"), std::string::npos);
}

TEST_F(FindingsTest, WhatIsNotProvenIsATroubleAndNoPass) {
    GoElsewhere();
    const ProcessResult result = RunExplorer({"diff", "-q", "--most-seconds", "0.1", "--format",
                                              "sarif", ProviderFile(), ProviderFile()});
    EXPECT_EQ(result.exitCode, 4);
    const Json::Value run = Parse(result.output)["runs"][0];
    EXPECT_TRUE(run["results"].empty());
    EXPECT_EQ(run["invocations"][0]["executionSuccessful"], false);
    EXPECT_FALSE(run["invocations"][0]["toolExecutionNotifications"].empty());
}

TEST_F(FindingsTest, AViolationNamesItsInvariantAndWhatHoldsIsNotShown) {
    GoElsewhere();
    const ProcessResult result = RunExplorer(
        {"check", "-q", "--format", "sarif", "--provider", BROKEN_BOTH_ENTRIES, "--scenarios",
         TemporaryFolder(), "never-both-entries", "exactly-one-entry", "popups-are-whole"});
    const Json::Value run = Parse(result.output)["runs"][0];
    EXPECT_EQ(result.exitCode, 1) << result.errors;
    ASSERT_EQ(run["results"].size(), 2U) << run;
    EXPECT_EQ(run["results"][0]["ruleId"], "never-both-entries");
    EXPECT_EQ(run["results"][1]["ruleId"], "exactly-one-entry");
    EXPECT_EQ(run["invocations"][0]["executionSuccessful"], true);
    EXPECT_NE(run["results"][0]["message"]["text"].asString().find("both are visible"),
              std::string::npos);
}

TEST_F(FindingsTest, OfTheWaysToShowThemOnlyOneIsTaken) {
    for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
             {"check", "--json", "--format", "sarif"},
             {"check", "--list", "--format", "sarif"},
             {"diff", "--brief", "--format", "sarif", ProviderFile(), ProviderFile()},
             {"check", "--format", "junit"}}) {
        EXPECT_EQ(RunExplorer(words).exitCode, 2) << words[1];
    }
}

}  // namespace
