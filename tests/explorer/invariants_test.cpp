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

// The violation's scenario: it asks and does what was asked and done where it was found.
void ExpectToFailOnlyOn(const std::string& provider, const Json::Value& violation) {
    const std::string file = violation["scenario"].asString();
    ASSERT_TRUE(std::filesystem::exists(file)) << violation;
    const ProcessResult there = RunVtv({"run", "--provider", provider, file});
    EXPECT_EQ(there.exitCode, 1) << there.output << there.errors;
    const ProcessResult here = RunVtv({"run", "--provider", ProviderFile(), file});
    EXPECT_EQ(here.exitCode, 0) << here.output << here.errors;
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
    ExpectToFailOnlyOn(BROKEN_BOTH_ENTRIES, violation);
}

TEST(Check, AProviderThatWritesWhileItIsAskedIsFoundOut) {
    const ProcessResult result = Check(BROKEN_WRITES, "reads-do-not-write");
    EXPECT_EQ(result.exitCode, 1);
    ExpectToFailOnlyOn(BROKEN_WRITES, Parse(result.output)["invariants"][0]["violations"][0]);
}

// What is wrong is what it does not do, which no answer shows.
TEST(Check, AProviderThatLeavesTheModeAsItWasIsFoundOutByHandingItTheValue) {
    const ProcessResult result = Check(LEAVES_ALWAYS_ON, "off-ends-always-on");
    EXPECT_EQ(result.exitCode, 1);
    ExpectToFailOnlyOn(LEAVES_ALWAYS_ON, Parse(result.output)["invariants"][0]["violations"][0]);
}

TEST(Check, AProviderThatLeaksIsFoundOut) {
    const ProcessResult result = Check(BROKEN_LEAKS, "nothing-goes-wrong");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.output.find("leaks"), std::string::npos) << result.output;
}

TEST(Check, AProviderThatTouchesMemoryThatItDoesNotHaveIsFoundOut) {
    for (const auto& [provider, what] : {std::pair(WRITES_LATE, "writes to memory"),
                                         {READS_LATE, "answers from memory"},
                                         {READS_UNWRITTEN, "answers from memory"}}) {
        const ProcessResult result =
            RunExplorer({"check", "-q", "--most-states", "60", "--provider", provider,
                         "--scenarios", Folder("scenarios"), "nothing-goes-wrong"});
        EXPECT_EQ(result.exitCode, 1) << result.output << result.errors;
        EXPECT_NE(result.output.find(what), std::string::npos) << result.output;
        const ProcessResult diff =
            RunExplorer({"diff", "-q", "--only", "visible:voice", ProviderFile(), provider});
        EXPECT_EQ(diff.exitCode, 1) << diff.output << diff.errors;
        EXPECT_NE(diff.output.find(what), std::string::npos) << diff.output;
    }
}

TEST(Check, AProviderThatCrashesIsFoundOutWithTheStateAndTheRestIsStillChecked) {
    const ProcessResult result = Check(BROKEN_CRASHES, "nothing-goes-wrong");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.output.find("crashes (signal"), std::string::npos) << result.output;
    EXPECT_GT(Parse(result.output)["invariants"][0]["paths"].asInt(), 1000);
}
