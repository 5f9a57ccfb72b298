// What every verb of vtv has in common when it is called wrongly, and with --json.
#include <filesystem>
#include <iterator>
#include <map>
#include <set>

#include "every_verb.h"

using testing::AnyOf;
using testing::HasSubstr;

namespace {

using Words = std::vector<std::string>;

class ExitCodesTest : public EveryVerbTest {
  protected:
    ExitCodesTest() {
        Ok({"show"});
        for (const char* name : {"spare", "old"}) {
            Ok({"new", name});
        }
        Write("policy.json", Ok({"policy", "show", "--json"}));
        Write("scenario.toml", "[[step]]\npress = \"voice-wake-up\"\n");
        Write("dump.json", Ok({"dump"}));
        Write("snapshot.json", Ok({"snapshot"}));
    }

    static Words With(const std::string& verb, const Words& more) {
        std::istringstream split(verb);
        Words words{std::istream_iterator<std::string>(split), {}};
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }
    bool Offers(const std::string& verb, const std::string& option) {
        return Ok(With(verb, {"--help"})).find("\n  " + option) != std::string::npos;
    }

    // What a verb cannot be called without.
    Words Arguments(const std::string& verb) const {
        const std::map<std::string, Words> rows = {
            {"app allow", {"org.nope"}},
            {"app forbid", {"org.nope"}},
            {"choose", {"voice-wake-up", "off"}},
            {"describe", {"db/menu/voice/passthru"}},
            {"explain", {"voice"}},
            {"get", {"db/menu_widget/language"}},
            {"impact", {Path("policy.json"), Path("policy.json"), "--tv", "no-voice"}},
            {"load", {Path("dump.json")}},
            {"policy publish", {Path("policy.json")}},
            {"press", {"voice-wake-up"}},
            {"record start", {Path("r.toml")}},
            {"reset", {"db/comss/cisblock"}},
            {"restore", {Path("snapshot.json")}},
            {"search", {"voice"}},
            {"set", {"db/x", "int", "1"}},
            {"unset", {"db/comss/cisblock"}},
            {"wait", {"network=connected"}}};
        const auto row = rows.find(verb);
        return row != rows.end() ? row->second : Words();
    }
};

}  // namespace

TEST_F(ExitCodesTest, AnOptionThatThereIsNotEndsEveryVerbWith2) {
    for (const std::string& verb : Verbs()) {
        const Output output = Vtv(With(verb, {"--no-such-option"}));
        EXPECT_EQ(output.code, 2) << verb << output.err;
        EXPECT_EQ(output.out, "") << verb;
        EXPECT_THAT(output.err, HasSubstr("--no-such-option")) << verb;
    }
}

TEST_F(ExitCodesTest, ATvThatThereIsNotEndsEveryVerbThatTakesOneWith3) {
    const std::map<std::string, Words> amongOthers = {{"copy", {"nowhere", "x"}},
                                                      {"diff", {"default", "nowhere"}},
                                                      {"remove", {"nowhere"}},
                                                      {"rename", {"nowhere", "x"}}};
    const std::set<std::string> takesNone = {
        "app allowed", "explore", "gallery", "impact", "import", "list", "new", "run", "validate"};
    const std::set<std::string> ofTheWindow = {"picture", "window"};  // which may not be there
    for (const std::string& verb : Verbs()) {
        Words words = Arguments(verb);
        if (Offers(verb, "--tv TV ")) {
            words.insert(words.end(), {"--tv", "nowhere"});
        } else if (amongOthers.count(verb) != 0) {
            words = amongOthers.at(verb);
        } else {
            EXPECT_EQ(takesNone.count(verb), 1U) << verb << ": say which TV it is about";
            continue;
        }
        const Output output = Vtv(With(verb, words));
        if (ofTheWindow.count(verb) == 0 || output.code != 4) {
            EXPECT_EQ(output.code, 3) << verb << output.err;
            EXPECT_THAT(output.err, HasSubstr("nowhere: there is no TV here")) << verb;
        }
        EXPECT_EQ(output.out, "") << verb;
        EXPECT_FALSE(std::filesystem::exists(Path("tvs/nowhere"))) << verb;
    }
}

TEST_F(ExitCodesTest, WhatEveryVerbPrintsWithJsonCanBeRead) {
    const std::map<std::string, Words> rows = {{"app allow", {"--command", "true"}},
                                               {"app forbid", {"--command", "true"}},
                                               {"copy", {"default", "made"}},
                                               {"diff", {"default", "default"}},
                                               {"new", {"fresh"}},
                                               {"remove", {"spare"}},
                                               {"rename", {"old", "renamed"}},
                                               {"run", {Path("scenario.toml")}},
                                               {"validate", {"--list"}}};
    std::set<std::string> left = {"watch"};  // which prints nothing before something changes
#ifndef WITH_EXPLORER
    left.insert("impact");
#endif
    for (const std::string& verb : Verbs()) {
        if (left.count(verb) != 0 || !Offers(verb, "--json")) {
            continue;
        }
        Words words = rows.count(verb) != 0 ? rows.at(verb) : Arguments(verb);
        words.emplace_back("--json");
        const Output output = Vtv(With(verb, words));
        EXPECT_THAT(output.code, AnyOf(0, 1)) << verb << output.err;
        Json::Value document;
        if (Json::Reader().parse(output.out, document)) {
            continue;
        }
        std::istringstream lines(output.out);  // what can be followed has a document a line
        for (std::string line; std::getline(lines, line);) {
            EXPECT_TRUE(Json::Reader().parse(line, document)) << verb << ": " << line;
        }
        EXPECT_NE(output.out, "") << verb;
    }
}
