// vtv explore depends and vtv impact, run as processes; and the generated pages.
#include <gtest/gtest.h>
#include <json/json.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

#include "process.h"

namespace {

namespace fs = std::filesystem;

constexpr char ORVIK[] =
    R"({"VAOrder":1,"VAId":"ORVIK2","VAAppId":"com.vantelo.tv.voice-instant-app","VAName":"Orvik","VAFFSupport":true})";
constexpr char GOOGLE[] =
    R"({"VAOrder":2,"VAId":"GVA","VAAppId":"com.vantelo.tv.google-assistant","VAName":"Google Assistant","VAFFSupport":false})";

std::string PolicyFile(const char* name, const std::string& text) {
    const std::string file = TemporaryFolder() + "/" + name;
    std::ofstream(file) << text;
    return file;
}

std::string Read(const fs::path& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

Json::Value Parse(const std::string& text) {
    Json::Value root;
    std::string errors;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    EXPECT_TRUE(reader->parse(text.data(), text.data() + text.size(), &root, &errors)) << errors;
    return root;
}

bool Has(const Json::Value& changes, const std::string& item, const std::string& change) {
    for (const Json::Value& one : changes) {
        if (one["item"].asString() == item && one["change"].asString() == change) {
            return true;
        }
    }
    return false;
}

}  // namespace

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
    EXPECT_TRUE(result.output == Read(DEPENDENCIES_FILE))
        << DEPENDENCIES_FILE << " is stale: run vtv explore depends --source > "
        << DEPENDENCIES_FILE;
}

TEST(Impact, OfTheSamePolicyIsNothing) {
    const std::string file = PolicyFile("same.json", std::string("[") + ORVIK + "," + GOOGLE + "]");
    const ProcessResult result = RunExplorer({"impact", "-q", file, file, "--tv", "farfield-eu"});
    EXPECT_EQ(result.exitCode, 0) << result.errors;
    EXPECT_NE(result.output.find("nothing changes"), std::string::npos);
}

TEST(Impact, OfAnAssistantThatIsNoLongerOfferedNamesItsUsers) {
    const std::string before =
        PolicyFile("before.json", std::string("[") + ORVIK + "," + GOOGLE + "]");
    const std::string after = PolicyFile("after.json", std::string("[") + ORVIK + "]");
    const ProcessResult result =
        RunExplorer({"impact", "-q", "--json", before, after, "--tv", "farfield-eu"});
    EXPECT_EQ(result.exitCode, 1) << result.errors;
    const Json::Value changes = Parse(result.output)["models"][0]["changes"];
    EXPECT_TRUE(Has(changes, "voice-assistant", "vanishes")) << changes;
    EXPECT_TRUE(Has(changes, "voice-settings-google", "vanishes")) << changes;
    EXPECT_TRUE(Has(changes, "users", "the user's assistant is no longer offered")) << changes;
    EXPECT_FALSE(Has(changes, "voice-settings-orvik", "vanishes")) << changes;
}

TEST(Impact, AMalformedPolicyIsRefusedWithItsPlaceAndWhatATvDoes) {
    const std::string good = PolicyFile("good.json", std::string("[") + ORVIK + "]");
    const std::string bad =
        PolicyFile("bad.json",
                   "[\n  {\"VAOrder\":\"one\",\"VAId\":\"GVA\",\"VAAppId\":\"a\","
                   "\"VAName\":\"b\",\"VAFFSupport\":true}]");
    const ProcessResult result = RunExplorer({"impact", good, bad});
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_NE(result.errors.find(
                  "bad.json:2:3: \"VAOrder\" must be a whole number. A TV keeps the policy"),
              std::string::npos)
        << result.errors;
    EXPECT_EQ(RunExplorer({"impact", good, PolicyFile("cut.json", "[{")}).exitCode, 2);
}

TEST(Docs, TheRulesArePagesThatAreUpToDate) {
    const fs::path made = fs::path(TemporaryFolder()) / "rules";
    const ProcessResult result = RunExplorer({"table", "-q", "--docs", made.string()});
    ASSERT_EQ(result.exitCode, 0) << result.errors;
    int pages = 0;
    for (const fs::directory_entry& page : fs::directory_iterator(made)) {
        ++pages;
        EXPECT_TRUE(Read(page.path()) == Read(fs::path(RULES_FOLDER) / page.path().filename()))
            << page.path().filename() << " is stale: run vtv explore table --docs docs/rules";
    }
    EXPECT_GE(pages, 14);
}
