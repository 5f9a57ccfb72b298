// vtv explore diff, run as a process on the provider and on broken ones.
#include <gtest/gtest.h>
#include <json/json.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "explorer/asking/question.h"
#include "explorer/tv/fixed_lines.h"
#include "process.h"

namespace {

std::string Folder(const char* name) {
    return TemporaryFolder() + "/" + name;
}

std::vector<std::string> With(std::vector<std::string> words, const std::string& option) {
    words.insert(words.begin() + 1, option);
    return words;
}

// The name of the function that a place of a source lies in.
std::string FunctionAt(const std::string& source, std::ptrdiff_t place) {
    static const std::regex head(R"(\n[A-Za-z][^\n]*?(\w+)\()");
    std::string name;
    for (std::sregex_iterator at(source.begin(), source.begin() + place, head), end; at != end;
         ++at) {
        name = (*at)[1];
    }
    return name;
}

}  // namespace

// On every path of every question of a table, and on more, in every state that it comes to.
TEST(Diff, AProviderIsLikeItself) {
    const ProcessResult result =
        RunExplorer({"diff", "-q", "--json", ProviderFile(), ProviderFile()});
    EXPECT_EQ(result.exitCode, 0) << result.output << result.errors;
    const Json::Value root = Parse(result.output);
    EXPECT_TRUE(root["alike"].asBool());
    EXPECT_TRUE(root["differences"].empty());
    EXPECT_TRUE(root["troubles"].empty());
    const Json::Value& coverage = root["coverage"];
    const JsonDocument all = Parse(RunExplorer({"table", "-q", "--json"}).output);
    for (const Json::Value& table : all["tables"]) {
        const Json::Value& one = coverage[table["question"].asString()];
        EXPECT_EQ(one["a"], one["b"]) << table["question"];
        EXPECT_GT(one["a"]["paths"].asUInt64(), 0U) << table["question"];
    }
    EXPECT_GT(all["tables"].size(), 150U);
    EXPECT_GT(root["paths"].asUInt64(), 1000000U);
    EXPECT_GT(root["questions"].asUInt64(), 50000U);
    EXPECT_TRUE(root["closed"].asBool());
    EXPECT_GT(root["pairs"].asUInt(), 200U);
    EXPECT_EQ(root["pairs"], root["states"]["a"]);
    EXPECT_EQ(root["pairs"], root["states"]["b"]);
}

// One reads a setting more: it has more paths, which stand for more states.
TEST(Diff, TellsHowFarEachQuestionWentOnBothSides) {
    const std::vector<std::string> words = {"diff",         "-q",
                                            "--no-reads",   "--no-logs",
                                            "--only",       "visible:voice-settings-alexa",
                                            ProviderFile(), READS_MORE};
    const JsonDocument root = Parse(RunExplorer(With(words, "--json")).output);
    const Json::Value& one = root["coverage"]["visible:voice-settings-alexa"];
    EXPECT_GT(one["b"]["paths"].asUInt64(), one["a"]["paths"].asUInt64()) << one;
    EXPECT_GT(one["b"]["states"].asString().size(), 0U);
    const std::string text = RunExplorer(With(words, "--coverage")).output;
    EXPECT_NE(
        text.find("visible:voice-settings-alexa: a " + one["a"]["paths"].asString().substr(0, 1)),
        std::string::npos)
        << text;
    EXPECT_NE(text.find(" states\nThe providers are alike"), std::string::npos) << text;
}

// Its memory is the same in both, but never as it was.
TEST(Diff, AProviderThatCountsItsQuestionsIsNotProvenToBeLikeItself) {
    const ProcessResult result = RunExplorer(
        {"diff", "-q", "--only", "visible", "--most-states", "250", BROKEN_COUNTS, BROKEN_COUNTS});
    EXPECT_EQ(result.exitCode, 4) << result.output << result.errors;
    EXPECT_NE(result.errors.find("new states go on to appear"), std::string::npos) << result.errors;
    EXPECT_EQ(result.output, "Alike so far, and not proven.\n");
}

TEST(Diff, WhatIsNotClosedInItsTimeIsNotProven) {
    const ProcessResult result =
        RunExplorer({"diff", "-q", "--most-seconds", "0.1", ProviderFile(), ProviderFile()});
    EXPECT_EQ(result.exitCode, 4) << result.output << result.errors;
    EXPECT_EQ(result.output, "Alike so far, and not proven.\n");
}

TEST(Diff, TheShortestSequenceOfCallsShowsADifferenceThatNeedsSeveral) {
    const ProcessResult result =
        RunExplorer({"diff", "-q", "--json", "--scenarios", Folder("sequence"), "--only",
                     "visible:voice-settings-alexa", ProviderFile(), FORGETS_THE_THIRD_POLICY});
    EXPECT_EQ(result.exitCode, 1) << result.output << result.errors;
    const JsonDocument root = Parse(result.output);
    ASSERT_EQ(root["differences"].size(), 1U) << result.output;
    const Json::Value& difference = root["differences"][0];
    // The first policy comes with create_provider, two more are taken, the next one is not.
    ASSERT_EQ(difference["sequence"].size(), 3U) << result.output;
    EXPECT_EQ(difference["sequence"][0].asString().rfind("create_provider", 0), 0U);
    EXPECT_EQ(difference["question"].asString().rfind("publish", 0), 0U) << result.output;
    const std::string file = difference["calls"].asString();
    EXPECT_EQ(RunExplorer({"replay", file, "--provider", ProviderFile()}).exitCode, 0);
    EXPECT_EQ(RunExplorer({"replay", file, "--provider", FORGETS_THE_THIRD_POLICY}).exitCode, 1);
}

TEST(Diff, AFileOfCallsThatIsNoneIsRefusedWithItsLine) {
    const std::string file = TemporaryFolder() + "/calls.toml";
    for (const auto& [text, line] :
         {std::pair("[[call]]\ndo = \"jump\"\n", ":1: "),
          {"[[call]\n", ":1: "},
          {"\n[[call]]\ndo = \"ask\"\nquestion = \"no-such\"\n", ":2: "},
          {"[[call]]\ndo = \"create\"\ntv = [[\"no such input\", 1]]\nexpect = []\n", ":3: "},
          {"[[call]]\ndo = \"create\"\n", ":1: "}}) {
        std::ofstream(file) << text;
        const ProcessResult result = RunExplorer({"replay", file, "--provider", ProviderFile()});
        EXPECT_EQ(result.exitCode, 2) << text << result.errors;
        EXPECT_NE(result.errors.find(file + line), std::string::npos) << result.errors;
    }
    EXPECT_EQ(RunExplorer({"replay", "/no/such/file", "--provider", ProviderFile()}).exitCode, 3);
}

TEST(Diff, WhatIsAThreadsOwnOrOneInAProcessCannotBeStoredAndIsRefused) {
    for (const auto& [provider, what] :
         {std::pair(OWN_OF_EACH_THREAD, "PT_TLS"), {ONE_IN_A_PROCESS, "STB_GNU_UNIQUE"}}) {
        for (const std::vector<std::string>& words :
             {std::vector<std::string>{"diff", "-q", ProviderFile(), provider},
              {"check", "-q", "--provider", provider}}) {
            const ProcessResult result = RunExplorer(words);
            EXPECT_EQ(result.exitCode, 4) << what << words.front() << result.output;
            EXPECT_NE(result.errors.find(what), std::string::npos) << result.errors;
        }
    }
}

TEST(Diff, WhatTakesInMoreThanThePlatformTellsIsRefusedByName) {
    std::istringstream names(UNSEEN_NAMES
                             " getenv setenv open mmap time rand strtok setlocale __tls_get_addr");
    for (std::string name; names >> name;) {
        const std::string provider = IMPORTING_PROVIDERS + name + ".so";
        for (const std::vector<std::string>& words :
             {std::vector<std::string>{"diff", "-q", ProviderFile(), provider},
              {"diff", "-q", provider, ProviderFile()},
              {"table", "-q", "--provider", provider, "visible:voice"},
              {"check", "-q", "--provider", provider}}) {
            const ProcessResult result = RunExplorer(words);
            EXPECT_EQ(result.exitCode, 4) << name << words.front() << result.output;
            EXPECT_NE(result.errors.find(": " + name + "."), std::string::npos) << result.errors;
        }
    }
}

// Or there is a call of the provider's life that makes it, or a question of another name.
TEST(Diff, EveryExportIsAsked) {
    std::set<std::string> asked = {"_ZN7MVAList10InitializeEv", "_ZN7MVAList8FinalizeEv",
                                   "_ZN11CSIMenuUtil17m_listTTSLanguageB5cxx11E", "create_provider",
                                   "delete_provider"};
    for (const char* check : {"check_visibility_", "check_enable_"}) {
        for (const char* type : {"int", "bool", "double", "string"}) {
            asked.insert(std::string(check) + type);
        }
    }
    for (const explorer::Question& question : explorer::ThoroughQuestions()) {
        asked.insert(question.symbol != nullptr ? question.symbol : "");
    }
    std::ifstream exports(std::string(PROVIDER_SOURCES) + "/../exports.txt");
    int known = 0;
    for (std::string line; std::getline(exports, line);) {
        const std::string symbol = line.substr(0, line.find_first_of(" #"));
        known += symbol.empty() ? 0 : 1;
        EXPECT_TRUE(symbol.empty() || asked.count(symbol) == 1) << symbol;
    }
    EXPECT_GT(known, 100);
}

TEST(Diff, TheLinesThatAreComparedAreThoseOfTheSources) {
    const std::regex record(R"((?:LOG_ERROR|LOG_INFO|TRACE_EVENT)_AT\(\s*(\d+))");
    int found = 0;
    for (const auto& entry : std::filesystem::directory_iterator(PROVIDER_SOURCES)) {
        std::ostringstream text;
        text << std::ifstream(entry.path()).rdbuf();
        const std::string source = text.str();
        const std::string file = entry.path().filename().string();
        for (std::sregex_iterator at(source.begin(), source.end(), record), end; at != end; ++at) {
            if (entry.path().extension() == ".cpp") {
                ++found;
                const int line = std::stoi((*at)[1]);
                EXPECT_TRUE(explorer::IsFixedLine(file, FunctionAt(source, at->position()), line))
                    << file << line;
            }
        }
    }
    EXPECT_GT(found, 40);
    EXPECT_EQ(found, explorer::FixedLines());
    EXPECT_FALSE(explorer::IsFixedLine("SIMenuUtil.cpp", "SetBoolean", 526));
    EXPECT_TRUE(explorer::IsFixedLine("SIMenuUtil.cpp", "static void SetBool(const char*)", 526));
    EXPECT_FALSE(explorer::IsFixedLine("SIMenuUtil.cpp", "SetBool", 527));
}

TEST(Diff, ShowsTheSmallestStateInWhichTwoProvidersDiffer) {
    const ProcessResult result =
        RunExplorer({"diff", "-q", "--json", "--all", "--no-reads", "--only", "visible",
                     "--scenarios", Folder("diff"), ProviderFile(), BROKEN_BOTH_ENTRIES});
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
            RunExplorer({"diff", "-q", "--json", "--all", "--no-reads", "--only", "visible",
                         "--scenarios", Folder("replay"), ProviderFile(), broken});
        ASSERT_EQ(result.exitCode, 1) << result.errors;
        const Json::Value differences = Parse(result.output)["differences"];
        ASSERT_FALSE(differences.empty());
        for (const Json::Value& difference : differences) {
            const std::string file = difference["scenario"].asString();
            ASSERT_TRUE(std::filesystem::exists(file)) << difference;
            const std::string calls = difference["calls"].asString();
            EXPECT_EQ(RunExplorer({"replay", calls, "--provider", ProviderFile()}).exitCode, 0);
            EXPECT_EQ(RunExplorer({"replay", calls, "--provider", broken}).exitCode, 1) << calls;
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
