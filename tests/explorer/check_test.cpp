// vtv explore check and diff, run as processes on the provider and on broken ones.
#include <gtest/gtest.h>
#include <json/json.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "process.h"

namespace {

std::string Folder(const char* name) {
    return TemporaryFolder() + "/" + name;
}

ProcessResult Check(const std::string& provider, const std::string& invariant) {
    return RunExplorer({"check", "-q", "--json", "--provider", provider, "--scenarios",
                        Folder("scenarios"), invariant});
}

}  // namespace

TEST(Check, HasAtLeastTwentyInvariantsEachWithASentence) {
    const ProcessResult result = RunExplorer({"check", "--list"});
    EXPECT_EQ(result.exitCode, 0);
    const std::regex entry("([a-z]+(?:-[a-z]+)*) +([A-Z][^ ]* [^ ]+ .*[.])");
    std::set<std::string> names;
    std::set<std::string> sentences;
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        ASSERT_TRUE(std::regex_match(line, match, entry)) << "a name and a sentence? " << line;
        EXPECT_TRUE(names.insert(match[1]).second) << "twice: " << line;
        EXPECT_TRUE(sentences.insert(match[2]).second) << "twice: " << line;
    }
    EXPECT_GE(names.size(), 20U);
}

TEST(Check, OfTheProviderHolds) {
    const ProcessResult result =
        RunExplorer({"check", "-q", "--json", "--scenarios", Folder("none")});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    const Json::Value invariants = Parse(result.output)["invariants"];
    EXPECT_GE(invariants.size(), 20U);
    for (const Json::Value& invariant : invariants) {
        EXPECT_TRUE(invariant["holds"].asBool()) << invariant;
        EXPECT_TRUE(invariant["complete"].asBool()) << invariant["name"];
        EXPECT_GT(invariant["paths"].asInt(), 0) << invariant["name"];
    }
}

TEST(Check, OfAnUnknownInvariantSaysWhereToLook) {
    const ProcessResult result = RunExplorer({"check", "no-such-invariant"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.errors.find("--list"), std::string::npos);
}

TEST(Check, AProviderThatShowsBothEntriesIsFoundOutWithItsSmallestState) {
    const ProcessResult result = Check(BROKEN_BOTH_ENTRIES, "never-both-entries");
    EXPECT_EQ(result.exitCode, 1) << result.errors;
    const Json::Value violation = Parse(result.output)["invariants"][0]["violations"][0];
    EXPECT_EQ(violation["what"].asString(), "both are visible");
    EXPECT_GT(violation["smallestState"].size(), 1U);
    EXPECT_TRUE(std::filesystem::exists(violation["scenario"].asString()));
}

TEST(Check, AProviderThatWritesWhileItIsAskedIsFoundOut) {
    EXPECT_EQ(Check(BROKEN_WRITES, "reads-do-not-write").exitCode, 1);
}

TEST(Check, AProviderThatLeaksIsFoundOut) {
    const ProcessResult result = Check(BROKEN_LEAKS, "nothing-goes-wrong");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.output.find("leaks"), std::string::npos) << result.output;
}

TEST(Check, AProviderThatCrashesIsFoundOutWithTheStateAndTheRestIsStillChecked) {
    const ProcessResult result = Check(BROKEN_CRASHES, "nothing-goes-wrong");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.output.find("crashes (signal"), std::string::npos) << result.output;
    EXPECT_GT(Parse(result.output)["invariants"][0]["paths"].asInt(), 1000);
}

// On every path of every question: as many as there are in the tables.
TEST(Diff, AProviderIsLikeItself) {
    const ProcessResult result =
        RunExplorer({"diff", "-q", "--json", ProviderFile(), ProviderFile()});
    EXPECT_EQ(result.exitCode, 0) << result.output << result.errors;
    const Json::Value root = Parse(result.output);
    EXPECT_TRUE(root["alike"].asBool());
    EXPECT_TRUE(root["differences"].empty());
    EXPECT_TRUE(root["troubles"].empty());
    Json::UInt64 paths = 0;
    for (const Json::Value& table :
         Parse(RunExplorer({"table", "-q", "--json"}).output)["tables"]) {
        paths += table["paths"].asUInt64();
    }
    EXPECT_GT(paths, 100000U);
    EXPECT_EQ(root["questions"].asUInt64(), paths);
}

TEST(Diff, AProviderThatAnswersByChanceIsNotLikeItself) {
    const ProcessResult result =
        RunExplorer({"diff", "-q", "--only", "visible", BROKEN_CHANCE, BROKEN_CHANCE});
    EXPECT_EQ(result.exitCode, 1) << result.output << result.errors;
    EXPECT_EQ(result.output.find("alike"), std::string::npos) << result.output;
}

TEST(Diff, ShowsTheSmallestStateInWhichTwoProvidersDiffer) {
    const ProcessResult result = RunExplorer({"diff", "-q", "--json", "--scenarios", Folder("diff"),
                                              ProviderFile(), BROKEN_BOTH_ENTRIES});
    EXPECT_EQ(result.exitCode, 1) << result.errors;
    const Json::Value root = Parse(result.output);
    EXPECT_FALSE(root["alike"].asBool());
    ASSERT_FALSE(root["differences"].empty());
    bool found = false;
    for (const Json::Value& difference : root["differences"]) {
        found = found || difference["onlyA"][0].asString() == "hidden";
        EXPECT_TRUE(std::filesystem::exists(difference["scenario"].asString()));
    }
    EXPECT_TRUE(found) << result.output;
}

// Every file that was written: fine with the one, and a failure with the other.
TEST(Diff, ItsScenariosPassWithTheFirstProviderAndFailWithTheSecond) {
    for (const char* broken : {BROKEN_BOTH_ENTRIES, BROKEN_WRITES}) {
        const ProcessResult result =
            RunExplorer({"diff", "-q", "--json", "--only", "visible", "--scenarios",
                         Folder("replay"), ProviderFile(), broken});
        ASSERT_EQ(result.exitCode, 1) << result.errors;
        const Json::Value differences = Parse(result.output)["differences"];
        ASSERT_FALSE(differences.empty());
        for (const Json::Value& difference : differences) {
            const std::string file = difference["scenario"].asString();
            ASSERT_TRUE(std::filesystem::exists(file)) << difference;
            const ProcessResult first = RunVtv({"run", "--provider", ProviderFile(), file});
            EXPECT_EQ(first.exitCode, 0) << first.output << first.errors;
            const ProcessResult second = RunVtv({"run", "--provider", broken, file});
            EXPECT_EQ(second.exitCode, 1) << second.output << second.errors;
        }
    }
}

TEST(Diff, BrieflySaysThatTwoProvidersDiffer) {
    const ProcessResult result =
        RunExplorer({"diff", "-q", "--brief", ProviderFile(), BROKEN_WRITES});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.output, "The providers differ.\n");
}

TEST(Diff, AProviderThatCrashesIsADifference) {
    const ProcessResult result =
        RunExplorer({"diff", "-q", "--only", "title", ProviderFile(), BROKEN_CRASHES});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.output.find("crashes"), std::string::npos);
}

TEST(Diff, OfWhatIsNotThereOrNoProviderIsTold) {
    EXPECT_EQ(RunExplorer({"diff", "-q", ProviderFile(), "/no/such/file.so"}).exitCode, 3);
    const std::string text = TemporaryFolder() + "/text.so";
    std::ofstream(text) << "no library";
    EXPECT_EQ(RunExplorer({"diff", "-q", ProviderFile(), text}).exitCode, 4);
}
