// What does not come to an end by itself: a provider that hangs, and a user who has seen enough.
#include <gtest/gtest.h>

#include <filesystem>

#include "process.h"

namespace {

bool Has(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

}  // namespace

TEST(Patience, AQuestionWithoutAnAnswerIsStoppedAndReportedWithItsState) {
    const ProcessResult result = RunExplorer({"table", "-q", "--patience", "0.3", "--provider",
                                              HANGING_PROVIDER, "visible:voice-assistant"});
    EXPECT_EQ(result.exitCode, 1) << result.errors;
    EXPECT_TRUE(Has(result.output, "does not come to an end")) << result.output;
    EXPECT_TRUE(Has(result.output, "policy: empty")) << result.output;
    EXPECT_TRUE(Has(result.output, "legacy voice: true")) << result.output;
}

TEST(Patience, AHangOfOneProviderIsADifferenceToAnother) {
    const ProcessResult result =
        RunExplorer({"diff", "-q", "--patience", "0.3", "--no-logs", "--only",
                     "visible:voice-assistant", HANGING_PROVIDER, HANGING_PROVIDER});
    EXPECT_EQ(result.exitCode, 1) << result.errors;
    EXPECT_TRUE(Has(result.output, "one of them does not come to an end")) << result.output;
    EXPECT_TRUE(Has(result.output, "legacy voice: true")) << result.output;
}

TEST(Patience, CtrlCShowsWhatWasCheckedSoFarAndThatItIsNotAll) {
    const ProcessResult result = InterruptExplorer({"check", "-q", "--jobs", "1"}, 500);
    EXPECT_EQ(result.exitCode, 128 + SIGINT) << result.output;
    EXPECT_TRUE(Has(result.errors, "interrupted")) << result.errors;
    EXPECT_TRUE(Has(result.output, "unfinished")) << result.output;
    EXPECT_TRUE(Has(result.output, "0 violated")) << result.output;
    EXPECT_FALSE(Has(result.output, "holds     nothing-goes-wrong")) << result.output;
}

TEST(Patience, WhatEndsADiffEarlyIsNoProof) {
    for (const int signal : {SIGINT, SIGTERM}) {
        const ProcessResult result =
            InterruptExplorer({"diff", "-q", ProviderFile(), ProviderFile()}, 300, signal);
        EXPECT_EQ(result.exitCode, 128 + signal) << result.output << result.errors;
        EXPECT_TRUE(Has(result.errors, "it was interrupted")) << result.errors;
        EXPECT_EQ(result.output, "Interrupted; alike so far, and not proven.\n");
        const ProcessResult json = InterruptExplorer(
            {"diff", "-q", "--json", ProviderFile(), ProviderFile()}, 300, signal);
        EXPECT_TRUE(Has(json.output, "\"alike\" : false")) << json.output;
        EXPECT_TRUE(Has(json.output, "\"closed\" : false")) << json.output;
    }
}

TEST(Patience, SigtermShowsWhatWasCheckedSoFarAsCtrlCDoes) {
    const ProcessResult result = InterruptExplorer({"check", "-q"}, 300, SIGTERM);
    EXPECT_EQ(result.exitCode, 128 + SIGTERM) << result.output;
    EXPECT_TRUE(Has(result.errors, "it was interrupted")) << result.errors;
    EXPECT_TRUE(Has(result.output, "unfinished")) << result.output;
    EXPECT_TRUE(Has(result.output, "not closed")) << result.output;
}

TEST(Patience, CtrlCShowsTheTablesSoFarAndLeavesThePagesAlone) {
    const ProcessResult result = InterruptExplorer({"table", "-q", "--jobs", "1", "set"}, 250);
    EXPECT_EQ(result.exitCode, 128 + SIGINT) << result.output;
    EXPECT_TRUE(Has(result.errors, "interrupted")) << result.errors;
    EXPECT_TRUE(Has(result.output, "set:voice-assistant=1")) << result.output;
    const std::string pages = TemporaryFolder() + "/pages";
    EXPECT_EQ(InterruptExplorer({"table", "-q", "--jobs", "1", "--docs", pages}, 250).exitCode,
              128 + SIGINT);
    EXPECT_FALSE(std::filesystem::exists(pages));
}

// Half of what an item depends on looks like all of it.
TEST(Interrupted, DependenciesAreSaidToBeUnfinishedOrNotPrinted) {
    for (const char* form : {"--source", "--json"}) {
        const ProcessResult result =
            InterruptExplorer({"depends", "-q", "--jobs", "1", form}, 1, SIGTERM);
        EXPECT_EQ(result.exitCode, 143) << form << result.errors;
        EXPECT_EQ(result.output, "") << form;
        EXPECT_NE(result.errors.find("interrupted"), std::string::npos) << form;
    }
    for (const bool isReversed : {false, true}) {
        std::vector<std::string> words = {"depends", "-q", "--jobs", "1"};
        if (isReversed) {
            words.emplace_back("--reverse");
        }
        const ProcessResult result = InterruptExplorer(words, 1, SIGTERM);
        EXPECT_EQ(result.exitCode, 143) << result.errors;
        EXPECT_NE(result.output.find("(unfinished)\n"), std::string::npos) << result.output;
        EXPECT_NE(result.errors.find("interrupted"), std::string::npos);
    }
}

TEST(Interrupted, AnInvariantThatWasNotLookedAtNeitherHoldsNorDoesNot) {
    const ProcessResult result =
        InterruptExplorer({"check", "-q", "--json", "--jobs", "1"}, 1, SIGTERM);
    EXPECT_EQ(result.exitCode, 143) << result.errors;
    const JsonDocument root = Parse(result.output);
    ASSERT_GT(root["invariants"].size(), 30U);
    for (const Json::Value& invariant : root["invariants"]) {
        EXPECT_TRUE(invariant["holds"].isNull()) << invariant;
    }
}
