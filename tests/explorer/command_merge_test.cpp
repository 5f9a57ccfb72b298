// vtv explore merge: parts of a check, diff or table, made by processes that know nothing of each
// other, against one run. What walks through states is named Walks...
#include <gtest/gtest.h>
#include <json/json.h>

#include <algorithm>
#include <fstream>
#include <functional>

#include "process.h"

namespace {

using Words = std::vector<std::string>;

Words operator+(Words words, const Words& others) {
    words.insert(words.end(), others.begin(), others.end());
    return words;
}

std::string Write(const std::string& name, const std::string& text) {
    const std::string file = TemporaryFolder() + "/" + name;
    std::ofstream(file) << text;
    return file;
}

// The last part first.
Words PartsOf(const Words& words, int count) {
    Words files;
    for (int i = count; i >= 1; --i) {
        const std::string shard = std::to_string(i) + "/" + std::to_string(count);
        const ProcessResult part = RunExplorer(words + Words{"-q", "--json", "--shard", shard});
        files.push_back(
            Write("part-" + std::to_string(i) + "-of-" + std::to_string(count), part.output));
    }
    return files;
}

// Both folders have to be the same, so that files have the same names; so one run is the last.
void ExpectMergedIsOneRun(const Words& words, int count, const Words& how, int code) {
    const Words parts = PartsOf(words, count);
    for (const Words& format : {Words{"--json"}, Words{}}) {
        const ProcessResult merged = RunExplorer(Words{"merge"} + parts + format + how);
        const ProcessResult one = RunExplorer(words + format + Words{"-q"} + how);
        EXPECT_EQ(one.exitCode, code) << one.output << one.errors;
        EXPECT_EQ(merged.exitCode, one.exitCode) << merged.errors;
        EXPECT_EQ(merged.errors, one.errors);
        EXPECT_EQ(merged.output, one.output);
    }
}

Words TwoTables() {
    return PartsOf({"table", "visible:voice", "help:voice"}, 2);
}

// The second of two tables, changed.
std::string Changed(const Words& parts, const std::function<void(Json::Value&)>& change) {
    JsonDocument root = Parse(ReadAll(parts.front()));
    change(root);
    return Write("changed", root.toStyledString());
}

void ExpectRefused(const Words& files, int code, const Words& told) {
    const ProcessResult result = RunExplorer(Words{"merge"} + files);
    EXPECT_EQ(result.exitCode, code) << result.output << result.errors;
    EXPECT_EQ(result.output, "");
    for (const std::string& text : told) {
        EXPECT_NE(result.errors.find(text), std::string::npos) << text << "\n" << result.errors;
    }
}

}  // namespace

TEST(Merge, TablesFromPartsAreTheVeryBytesOfOneRun) {
    ExpectMergedIsOneRun({"table", "visible"}, 3, {}, 0);
    ExpectMergedIsOneRun({"table", "help:voice"}, 2, {}, 0);  // a part has nothing to do
    const Words broken = {"table", "title:voice", "visible:voice", "--provider", BROKEN_CRASHES};
    ExpectMergedIsOneRun(broken, 2, {}, RunExplorer(broken + Words{"-q"}).exitCode);
}

TEST(Merge, WalksOfProvidersThatAreAlikeAreOneRun) {
    ExpectMergedIsOneRun({"diff", ProviderFile(), ProviderFile(), "--only", "help"}, 3, {}, 0);
}

TEST(Merge, WalksThatDifferAreOneRunThatShowsAll) {
    const Words words = {"diff",   "--no-reads", ProviderFile(), BROKEN_BOTH_ENTRIES,
                         "--only", "visible"};
    const Words folder = {"--scenarios", TemporaryFolder() + "/found"};
    ExpectMergedIsOneRun(words + Words{"--all"}, 2, folder, 1);
    // And without --all the nearest of them.
    const ProcessResult all = RunExplorer(words + Words{"-q", "--json", "--all"});
    const ProcessResult nearest = RunExplorer(Words{"merge", "--json"} + PartsOf(words, 2));
    EXPECT_EQ(nearest.exitCode, 1);
    Json::Value expected = Parse(all.output);
    ASSERT_GT(expected["differences"].size(), 1U);
    expected["differences"].resize(1);
    EXPECT_EQ(Parse(nearest.output), expected);
}

TEST(Merge, WalksThatAreNotProvenAreNot) {
    ExpectMergedIsOneRun(
        {"diff", BROKEN_COUNTS, BROKEN_COUNTS, "--only", "visible", "--most-states", "250"}, 2, {},
        4);
}

TEST(Merge, WalksOfACheckAreOneRun) {
    const Words folder = {"--scenarios", TemporaryFolder() + "/violated"};
    ExpectMergedIsOneRun({"check", "never-both-entries"}, 2, folder, 0);
    ExpectMergedIsOneRun(
        {"check", "never-both-entries", "exactly-one-entry", "--provider", BROKEN_BOTH_ENTRIES}, 3,
        folder, 1);
}

TEST(Merge, WalksInPartDoNotReadLikeTheWhole) {
    const Words check = {"check", "-q", "never-both-entries", "--shard", "1/2"};
    const ProcessResult text = RunExplorer(check);
    EXPECT_EQ(text.exitCode, 0) << text.errors;
    EXPECT_NE(text.output.find("in part 1 of 2 of the work"), std::string::npos) << text.output;
    EXPECT_EQ(text.output.find("holds  "), std::string::npos) << text.output;
    const JsonDocument checked = Parse(RunExplorer(check + Words{"--json"}).output);
    EXPECT_FALSE(checked["closed"].asBool());
    EXPECT_FALSE(checked["invariants"][0]["complete"].asBool());
    EXPECT_TRUE(checked["part"]["closed"].asBool());
    const JsonDocument sarif = Parse(RunExplorer(check + Words{"--format", "sarif"}).output);
    EXPECT_FALSE(sarif["runs"][0]["invocations"][0]["executionSuccessful"].asBool());

    const Words diff = {"diff",   "-q",         ProviderFile(), ProviderFile(),
                        "--only", "help:voice", "--shard",      "1/2"};
    const ProcessResult alike = RunExplorer(diff);
    EXPECT_EQ(alike.exitCode, 0) << alike.errors;
    EXPECT_EQ(alike.output.rfind("Alike in part 1 of 2 of the work: ", 0), 0U) << alike.output;
    const JsonDocument compared = Parse(RunExplorer(diff + Words{"--json"}).output);
    EXPECT_FALSE(compared["alike"].asBool());
    EXPECT_FALSE(compared["closed"].asBool());
    EXPECT_TRUE(compared["part"]["closed"].asBool());
}

TEST(Merge, WalksThatCameToDifferentStatesAreNotMerged) {
    Words parts = PartsOf({"diff", ProviderFile(), ProviderFile(), "--only", "help:voice"}, 2);
    const std::string other =
        Changed(parts, [](Json::Value& root) { root["part"]["way"] = std::string(16, '0'); });
    ExpectRefused({other, parts.back()}, 2,
                  {other, parts.back(), "the parts came to different states; run unsharded"});
}

TEST(Merge, PartsThatAreMissingOrGivenTwiceAreNamed) {
    const Words parts = TwoTables();
    ExpectRefused({parts[0]}, 2, {parts[0], "there is no part 1/2"});
    ExpectRefused({parts[0], parts[1], parts[0]}, 2, {parts[0], "both are part 2 of the work"});
    ExpectRefused({}, 2, {"FILE"});
}

TEST(Merge, PartsOfDifferentWorkAreRefusedWithTheirFiles) {
    const Words parts = TwoTables();
    const auto refuse = [&](const Words& told, const std::function<void(Json::Value&)>& change) {
        const std::string other = Changed(parts, change);
        ExpectRefused({parts.back(), other}, 2, Words{parts.back() + " and " + other} + told);
    };
    for (const auto& [member, told] : {std::pair("verb", "different verbs"),
                                       {"inputs", "different inputs"},
                                       {"program", "different builds"}}) {
        refuse({told}, [&](Json::Value& root) { root["part"]["work"][member] = "other"; });
    }
    refuse({"different options"},
           [](Json::Value& root) { root["part"]["work"]["options"]["all"] = true; });
    refuse({"of 2 parts", "of 3"}, [](Json::Value& root) { root["part"]["of"] = 3; });
    // As they come about.
    const std::string mine = Write("mine", ReadAll(parts.back()));
    for (const auto& [words, told] :
         {std::pair(Words{"table", "visible:voice", "title:voice"}, "different names"),
          {Words{"table", "visible:voice", "help:voice", "--provider", BROKEN_WRITES},
           "different providers"}}) {
        const Words others = PartsOf(words, 2);
        ExpectRefused({mine, others.front()}, 2, {mine + " and " + others.front(), told});
    }
}

TEST(Merge, WhatIsNoPartIsRefusedWithItsName) {
    const Words parts = TwoTables();
    const std::string whole = ReadAll(parts.front());
    const std::string torn = Write("torn", whole.substr(0, whole.size() / 2));
    ExpectRefused({parts.back(), torn}, 2, {torn + ":"});
    for (const char* text :
         {"{}", "[1]", "7", "{\"part\": 3}",
          "{\"part\": {\"index\": 3, \"of\": 2, \"way\": \"1\", \"work\": {}}}"}) {
        const std::string foreign = Write("foreign", text);
        ExpectRefused({parts.back(), foreign}, 2, {foreign + ": is no part of an exploration"});
    }
    for (const auto& damage : std::vector<std::function<void(Json::Value&)>>{
             [](Json::Value& root) { root.removeMember("tables"); },
             [](Json::Value& root) { root["tables"] = Json::arrayValue; },
             [](Json::Value& root) { root["part"]["texts"] = 1; },
             [](Json::Value& root) { root["part"]["code"] = "none"; }}) {
        const std::string damaged = Changed(parts, damage);
        ExpectRefused({parts.back(), damaged}, 2, {damaged + ": is damaged: "});
    }
    ExpectRefused({parts.back(), "/no/such/file"}, 3, {"/no/such/file"});
}
