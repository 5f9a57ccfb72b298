// vtv explore depends, run as a process; and the pages and the list that are made from tables.
#include <gtest/gtest.h>
#include <json/json.h>

#include <filesystem>

#include "process.h"

namespace fs = std::filesystem;

TEST(Depends, OfAnItemNamesWhatItReadsAndThePolicy) {
    const ProcessResult result =
        RunExplorer({"depends", "-q", "--json", "enabled:voice", "voice-assistant"});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    const Json::Value root = Parse(result.output);
    ASSERT_EQ(root["voice"].size(), 2U) << root;
    EXPECT_EQ(root["voice"][0].asString(),
              "feature com.vantelo/featureconf/recorder.microphone_type");
    EXPECT_EQ(root["voice"][1].asString(), "setting db/aisound-app/soundsensorflag_prev");
    bool hasPolicy = false;
    for (const Json::Value& input : root["voice-assistant"]) {
        hasPolicy = hasPolicy || input.asString() == "setting db/menu/voice/mva_list";
    }
    EXPECT_TRUE(hasPolicy);
}

TEST(Depends, TheReverseNamesTheItemsOfAKey) {
    const ProcessResult result =
        RunExplorer({"depends", "-q", "--json", "--reverse", "db/menu/voice/is_k_voice"});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_GE(Parse(result.output)["setting db/menu/voice/is_k_voice"].size(), 6U) << result.output;
    EXPECT_EQ(RunExplorer({"depends", "--reverse", "db/no/such/key"}).exitCode, 3);
}

TEST(Depends, TheListThatTheHostRefreshesByIsUpToDate) {
    const ProcessResult result = RunExplorer({"depends", "-q", "--source"});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_TRUE(result.output == ReadAll(DEPENDENCIES_FILE))
        << DEPENDENCIES_FILE << " is stale: run vtv explore depends --source > "
        << DEPENDENCIES_FILE;
}

TEST(Docs, TheRulesArePagesThatAreUpToDate) {
    const fs::path made = fs::path(TemporaryFolder()) / "rules";
    const ProcessResult result = RunExplorer({"table", "-q", "--docs", made.string()});
    ASSERT_EQ(result.exitCode, 0) << result.errors;
    int pages = 0;
    for (const fs::directory_entry& page : fs::directory_iterator(made)) {
        ++pages;
        EXPECT_TRUE(ReadAll(page.path()) ==
                    ReadAll(fs::path(RULES_FOLDER) / page.path().filename()))
            << page.path().filename() << " is stale: run vtv explore table --docs docs/rules";
    }
    EXPECT_GE(pages, 14);
}
