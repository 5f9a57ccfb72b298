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
    EXPECT_EQ(result.exitCode, 4) << result.output;
    EXPECT_TRUE(Has(result.errors, "interrupted")) << result.errors;
    EXPECT_TRUE(Has(result.output, "unfinished")) << result.output;
    EXPECT_TRUE(Has(result.output, "0 violated")) << result.output;
    EXPECT_FALSE(Has(result.output, "holds     nothing-goes-wrong")) << result.output;
}

TEST(Patience, CtrlCShowsTheTablesSoFarAndLeavesThePagesAlone) {
    const ProcessResult result = InterruptExplorer({"table", "-q", "--jobs", "1", "set"}, 250);
    EXPECT_EQ(result.exitCode, 4) << result.output;
    EXPECT_TRUE(Has(result.errors, "interrupted")) << result.errors;
    EXPECT_TRUE(Has(result.output, "set:voice-assistant=1")) << result.output;
    const std::string pages = TemporaryFolder() + "/pages";
    EXPECT_EQ(InterruptExplorer({"table", "-q", "--jobs", "1", "--docs", pages}, 250).exitCode, 4);
    EXPECT_FALSE(std::filesystem::exists(pages));
}
