// vtv explore table, run as a process.
#include <gtest/gtest.h>
#include <json/json.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <regex>

#include "process.h"

TEST(Table, OfARuleIsShownWithItsProof) {
    const ProcessResult result = RunExplorer({"table", "-q", "visible:voice-settings-alexa"});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_NE(result.output.find("current assistant's kind: ALEXA\n      -> visible"),
              std::string::npos)
        << result.output;
    EXPECT_NE(result.output.find("complete"), std::string::npos);
}

TEST(Table, OfAFunctionIsFoundByItsName) {
    const ProcessResult result = RunExplorer({"table", "-q", "check_general_voice_enable"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.output.find("microphone type: above 0\n      and built-in microphone: "),
              std::string::npos)
        << result.output;
}

TEST(Table, AsJsonHasRowsPathsAndStates) {
    const ProcessResult result = RunExplorer({"table", "-q", "--json", "enabled:voice"});
    EXPECT_EQ(result.exitCode, 0);
    const Json::Value table = Parse(result.output)["tables"][0];
    EXPECT_EQ(table["question"].asString(), "enabled:voice");
    ASSERT_EQ(table["rows"].size(), 2U);
    EXPECT_EQ(table["rows"][0]["fits"].asString(), "all");
    EXPECT_EQ(table["rows"][0]["conditions"].size(), 2U);
    EXPECT_TRUE(table["rows"][1]["conditions"].empty());
    // 4 + 2 x 6 paths under each policy.
    EXPECT_EQ(table["paths"].asInt() % (4 + 2 * 6), 0);
    EXPECT_TRUE(table["complete"].asBool());
}

TEST(Table, OfEveryQuestionIsComplete) {
    const ProcessResult result = RunExplorer({"table", "-q", "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    const Json::Value tables = Parse(result.output)["tables"];
    EXPECT_GT(tables.size(), 150U);
    for (const Json::Value& table : tables) {
        EXPECT_TRUE(table["complete"].asBool()) << table["question"];
        EXPECT_TRUE(table["troubles"].empty()) << table["troubles"];
    }
}

// On a terminal, in a file and on a page.
TEST(Table, BytesThatAreNoUtf8AndControlsAreShownInEveryFormat) {
    const std::string file = TemporaryFolder() + "/bytes";
    const std::vector<std::string> words = {"table", "-q", "--provider", SPEAKS_BYTES,
                                            "function:get_list_items_voice_wake_up"};
    for (const char* format : {"", "--json", "--markdown", "--html"}) {
        for (const bool isFile : {false, true}) {
            std::vector<std::string> asked = words;
            if (*format != '\0') {
                asked.emplace_back(format);
            }
            if (isFile) {
                asked.insert(asked.end(), {"-o", file});
            }
            const ProcessResult result = RunExplorer(asked);
            EXPECT_EQ(result.exitCode, 0) << format << result.errors;
            const std::string text = isFile ? ReadAll(file) : result.output;
            EXPECT_EQ(text.find('\xff'), std::string::npos) << format << isFile;
            EXPECT_EQ(text.find('\033'), std::string::npos) << format << isFile;
            EXPECT_NE(text.find("[31m"), std::string::npos) << format << isFile;
            std::filesystem::remove(file);
        }
    }
}

// How many rows a rule takes is what it costs to read it: a list that is longer than
// tests/explorer/ table-rows.txt says is looked at, and made shorter or written down there.
TEST(Table, OfARuleTakesNoMoreRowsThanIsWrittenDown) {
    std::ifstream file(TABLE_ROWS);
    std::map<std::string, unsigned> most;
    std::string line;
    while (std::getline(file, line)) {
        const std::size_t space = line.find(' ');
        if (line.rfind('#', 0) != 0 && space != std::string::npos) {
            most[line.substr(space + 1)] = static_cast<unsigned>(std::stoul(line));
        }
    }
    const ProcessResult result = RunExplorer({"table", "-q", "--json"});
    const Json::Value tables = Parse(result.output)["tables"];
    ASSERT_FALSE(tables.empty());
    for (const Json::Value& table : tables) {
        const std::string question = table["question"].asString();
        EXPECT_EQ(most.count(question), 1U) << question << " is not written down";
        EXPECT_LE(table["rows"].size(), most[question]) << question;
        most.erase(question);
    }
    for (const auto& [question, rows] : most) {
        ADD_FAILURE() << question << " is written down and is no question";
    }
}

TEST(Table, OfTheWholePageIsReadAtAGlance) {
    const ProcessResult result = RunExplorer({"table", "-q", "--json", "visible:voice"});
    EXPECT_LE(Parse(result.output)["tables"][0]["rows"].size(), 12U);
}

TEST(Table, SaysNothingByTwoNegations) {
    const ProcessResult result = RunExplorer({"table", "-q"});
    static const std::regex two("(not|neither|nor) (not |no |none\\b|fails)[^\n]*");
    std::smatch found;
    EXPECT_FALSE(std::regex_search(result.output, found, two)) << found.str();
    EXPECT_NE(result.output.find(": not "), std::string::npos);
}

TEST(Table, AsHtmlDrawsADiagram) {
    const ProcessResult result = RunExplorer({"table", "-q", "--html", "visible:voice-wake-up"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_NE(result.output.find("<svg"), std::string::npos);
    EXPECT_NE(result.output.find("</html>"), std::string::npos);
}

TEST(Table, AsHtmlHasNoDiagramThatIsWiderThanAPage) {
    const ProcessResult result = RunExplorer({"table", "-q", "--html"});
    static const std::regex box("viewBox=\"0 0 ([0-9]+) ");
    std::sregex_iterator drawing(result.output.begin(), result.output.end(), box);
    ASSERT_NE(drawing, std::sregex_iterator());
    for (; drawing != std::sregex_iterator(); ++drawing) {
        EXPECT_LE(std::stoi((*drawing)[1]), 1500);
    }
}

TEST(Table, ShardsTogetherAreTheWhole) {
    std::size_t together = 0;
    for (const char* shard : {"1/3", "2/3", "3/3"}) {
        const ProcessResult part =
            RunExplorer({"table", "-q", "--json", "--shard", shard, "visible"});
        EXPECT_EQ(part.exitCode, 0) << part.errors;
        together += Parse(part.output)["tables"].size();
    }
    const ProcessResult whole = RunExplorer({"table", "-q", "--json", "visible"});
    EXPECT_EQ(together, Parse(whole.output)["tables"].size());
}

TEST(Table, OfAnUnknownNameSaysWhatWasMeant) {
    const ProcessResult result = RunExplorer({"table", "voice-wakeup"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.errors.find("Did you mean"), std::string::npos);
    EXPECT_NE(result.errors.find("voice-wake-up"), std::string::npos);
}

TEST(Table, AWrongShardIsAUsageError) {
    EXPECT_EQ(RunExplorer({"table", "--shard", "9/3"}).exitCode, 2);
    EXPECT_EQ(RunExplorer({"table", "--no-such-option"}).exitCode, 2);
    EXPECT_EQ(RunExplorer({}).exitCode, 2);
}

TEST(Table, OfAProviderThatIsNotThereSaysSo) {
    const ProcessResult result =
        RunExplorer({"table", "--provider", "/no/such/provider.so", "voice"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_NE(result.errors.find("/no/such/provider.so"), std::string::npos);
}
