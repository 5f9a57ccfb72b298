// vtv impact, run as a process.
#include <gtest/gtest.h>
#include <json/json.h>

#include <fstream>

#include "process.h"

namespace {

constexpr char ORVIK[] =
    R"({"VAOrder":1,"VAId":"ORVIK2","VAAppId":"com.vantelo.tv.voice-instant-app","VAName":"Orvik","VAFFSupport":true})";
constexpr char GOOGLE[] =
    R"({"VAOrder":2,"VAId":"GVA","VAAppId":"com.vantelo.tv.google-assistant","VAName":"Google Assistant","VAFFSupport":false})";

std::string PolicyFile(const char* name, const std::string& text) {
    const std::string file = TemporaryFolder() + "/" + name;
    std::ofstream(file) << text;
    return file;
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

TEST(Impact, OnAModelThatNeverShowsThePageIsNothing) {
    const std::string before =
        PolicyFile("shown.json", std::string("[") + ORVIK + "," + GOOGLE + "]");
    const std::string after = PolicyFile("none.json", "[]");
    EXPECT_EQ(RunExplorer({"impact", "-q", before, after, "--tv", "no-voice"}).exitCode, 0);
}

TEST(Impact, TellsAssistantsOfTheSameNameApart) {
    const std::string before =
        PolicyFile("apps.json", std::string("[") + ORVIK + "," + GOOGLE + "]");
    std::string moved = GOOGLE;
    moved.replace(moved.find("google-assistant"), 6, "newest");
    const std::string after =
        PolicyFile("moved.json", std::string("[") + ORVIK + "," + moved + "]");
    const ProcessResult result =
        RunExplorer({"impact", "-q", before, after, "--tv", "farfield-eu"});
    EXPECT_EQ(result.exitCode, 1) << result.errors;
    EXPECT_NE(result.output.find("users: the user's assistant is no longer offered\n      when "
                                 "current assistant: Google Assistant "
                                 "(com.vantelo.tv.google-assistant)\n"),
              std::string::npos)
        << result.output;
}

TEST(Impact, ShowsChoicesByNameAndModelsThatChangeAlikeTogether) {
    const std::string before =
        PolicyFile("order.json", std::string("[") + ORVIK + "," + GOOGLE + "]");
    std::string renamed = GOOGLE;
    renamed.replace(renamed.find("Google Assistant"), 16, "Helper");
    const std::string after =
        PolicyFile("renamed.json", std::string("[") + ORVIK + "," + renamed + "]");
    for (const char* format : {"-q", "--html"}) {
        const ProcessResult result = RunExplorer(
            {"impact", format, before, after, "--tv", "farfield-eu", "--tv", "modular-us"});
        EXPECT_EQ(result.exitCode, 1) << result.errors;
        EXPECT_NE(result.output.find("farfield-eu, modular-us"), std::string::npos)
            << result.output;
        EXPECT_NE(result.output.find("Google Assistant"), std::string::npos);
        EXPECT_NE(result.output.find("Helper"), std::string::npos);
    }
}

TEST(Impact, TellsADifferenceInTheWordsOfTheCommand) {
    const std::string before =
        PolicyFile("words.json", std::string("[") + ORVIK + "," + GOOGLE + "]");
    std::string renamed = GOOGLE;
    renamed.replace(renamed.find("Google Assistant"), 16, "Helper");
    const std::string after =
        PolicyFile("other-words.json", std::string("[") + ORVIK + "," + renamed + "]");
    const ProcessResult result =
        RunExplorer({"impact", "-q", "--json", before, after, "--tv", "farfield-eu"});
    const Json::Value changes = Parse(result.output)["models"][0]["changes"];
    EXPECT_TRUE(Has(changes, "voice-assistant",
                    "changes value: Google Assistant -> Helper; choices: 1 DREAM_ORV_TMBODY_ORVIK, "
                    "2 Google Assistant -> 1 DREAM_ORV_TMBODY_ORVIK, 2 Helper"))
        << changes;
}

TEST(Impact, AMalformedPolicyIsRefusedWithItsPlaceAndWhatATvDoes) {
    const std::string good = PolicyFile("good.json", std::string("[") + ORVIK + "]");
    const std::string first = R"([{"VAOrder":)";
    const std::string rest = R"(,"VAId":"GVA","VAAppId":"a","VAName":"b","VAFFSupport":true})";
    const std::string goesOn = "A TV would go on with the assistants that it has.";
    struct Malformed {
        std::string text;
        std::string fault;
    };
    const Malformed documents[] = {
        {first + "\n\"one\"" + rest + "]", ":2:1: \"VAOrder\" must be a whole number. " + goesOn},
        {"[{", ":1:3: not JSON: Missing '}' or object member name. " + goesOn},
        {first + "1" + rest + "\n,5]",
         ":2:2: an assistant is an object: { \"VAOrder\": 1, ... }. " + goesOn},
        {first + "1" + rest + ",]",
         ":1:75: not JSON: Syntax error: value, object or array expected. "
         "A TV would take it, and offer 1 assistant."},
        {first + "1" + rest + "]\n x",
         ":2:2: not JSON: Extra non-whitespace after JSON value. A TV "
         "would take it, and offer 1 assistant."},
        {R"({"VAList":[]})",
         ":1:1: a policy is a list of assistants: [ ... ]. A TV would offer no assistant."},
        {first + "1" + rest + "," + first.substr(1) + "3" + rest + "]",
         "must count from 1 to 2. A TV would take it, and offer 2 assistants."},
        {R"([{"VAOrder":1,"VAId":"GVA","VAAppId":"a","VAName":"b"}])",
         ":1:2: \"VAFFSupport\" is missing: it must be true or false. A TV would take it, and "
         "offer 1 assistant."},
    };
    for (const Malformed& document : documents) {
        const ProcessResult result =
            RunExplorer({"impact", good, PolicyFile("bad.json", document.text)});
        EXPECT_EQ(result.exitCode, 2);
        EXPECT_EQ(result.errors.rfind("vtv impact: ", 0), 0U) << result.errors;
        EXPECT_NE(result.errors.find(document.fault), std::string::npos)
            << result.errors << "instead of\n"
            << document.fault;
    }
}
