// What checks found, as code scanners and the pages of a change read it.
#include "vtv_process.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "program/findings.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace fs = std::filesystem;

namespace {

program::Findings One(const program::Finding& finding) {
    return {"vtv validate", {finding}, {}};
}

std::string UriOf(const std::string& file) {
    const Json::Value sarif = program::Sarif(One({"rule", "", "message", file}));
    const Json::Value& place = sarif["runs"][0]["results"][0]["locations"][0];
    return place["physicalLocation"]["artifactLocation"]["uri"].asString();
}

TEST(Findings, AFileBelowTheCurrentFolderIsNamedFromThere) {
    const std::string here = fs::current_path().string();
    EXPECT_EQ(UriOf("a/b.json"), "a/b.json");
    EXPECT_EQ(UriOf("./a/../b.json"), "b.json");
    EXPECT_EQ(UriOf(here + "/a.json"), "a.json");
    EXPECT_EQ(UriOf("/nowhere/a.json"), "file:///nowhere/a.json");
    EXPECT_EQ(UriOf(here + "/../a.json"),
              "file://" + fs::current_path().parent_path().string() + "/a.json");
    EXPECT_THAT(program::Annotations(One({"rule", "", "message", here + "/a.json"})),
                HasSubstr("::error file=a.json,title="));
}

TEST(Findings, WhatHasAMeaningInAUriIsEncoded) {
    EXPECT_EQ(UriOf("a b#1%.json"), "a%20b%231%25.json");
    EXPECT_EQ(UriOf("é?.json"), "%C3%A9%3F.json");
}

TEST(Findings, WhatWouldEndAnAnnotationIsEncoded) {
    const program::Finding finding{"a,b:c", "", "100 %\r\nof: it, all", "x,y:z%.json", 7};
    EXPECT_EQ(program::Annotations(One(finding)),
              "::error file=x%2Cy%3Az%25.json,line=7,title=vtv validate%3A a%2Cb%3Ac"
              "::100 %25%0D%0Aof: it, all\n");
}

TEST(Findings, TroublesAndSeveritiesAreToldApart) {
    program::Findings findings = {
        "vtv impact", {{"a", "", "m", "f", 0, program::Severity::kWarning}}, {"no\nend"}};
    EXPECT_EQ(program::Annotations(findings),
              "::warning file=f,title=vtv impact%3A a::m\n"
              "::error title=vtv impact::no%0Aend\n");
    const Json::Value run = program::Sarif(findings)["runs"][0];
    EXPECT_EQ(run["results"][0]["level"], "warning");
    EXPECT_FALSE(run["results"][0]["locations"][0]["physicalLocation"].isMember("region"));
    EXPECT_EQ(run["invocations"][0]["executionSuccessful"], false);
    EXPECT_EQ(run["invocations"][0]["toolExecutionNotifications"][0]["message"]["text"], "no\nend");
}

TEST(Findings, EachRuleStandsOnceAndEachResultNamesIts) {
    const program::Findings findings = {
        "vtv validate",
        {{"one", "First.", "m", "f"}, {"two", "Second.", "m", "f"}, {"one", "First.", "n", "f"}},
        {}};
    const Json::Value run = program::Sarif(findings)["runs"][0];
    const Json::Value& rules = run["tool"]["driver"]["rules"];
    ASSERT_EQ(rules.size(), 2U);
    ASSERT_EQ(run["results"].size(), 3U);
    for (const Json::Value& result : run["results"]) {
        EXPECT_EQ(rules[result["ruleIndex"].asInt()]["id"], result["ruleId"]);
    }
    EXPECT_EQ(rules[1]["shortDescription"]["text"], "Second.");
    EXPECT_EQ(run["invocations"][0]["executionSuccessful"], true);
}

class FindingsTest : public VtvTest {
  protected:
    static std::string Fake(const std::string& name) {
        return std::string(FAKES) + "/libfake-" + name + ".so";
    }
    Json::Value Run(const std::vector<std::string>& words, int code) {
        const Output output = Vtv(words);
        EXPECT_EQ(output.code, code) << output.err;
        Json::Value sarif;
        EXPECT_TRUE(Json::Reader().parse(output.out, sarif)) << output.out;
        return sarif["runs"][0];
    }
};

TEST_F(FindingsTest, AValidationNamesTheCheckAndTheLibrary) {
    const std::string library = Fake("clears_pointer");
    const Json::Value run =
        Run({"validate", library, "--filter", "delete", "--format", "sarif"}, 1);
    ASSERT_EQ(run["results"].size(), 1U) << run;
    EXPECT_EQ(run["results"][0]["ruleId"], "delete-leaves-the-pointer");
    const Output github = Vtv({"validate", library, "--filter", "delete", "--format", "github"});
    EXPECT_EQ(github.code, 1);
    EXPECT_THAT(github.out, AllOf(HasSubstr("libfake-clears_pointer.so,title=vtv validate%3A "
                                            "delete-leaves-the-pointer::delete_provider() writes"),
                                  Not(HasSubstr("passed"))));
    EXPECT_EQ(std::count(github.out.begin(), github.out.end(), '\n'), 1) << github.out;
}

TEST_F(FindingsTest, AProviderThatPassesHasNone) {
    EXPECT_EQ(Run({"validate", PROVIDER, "--filter", "delete", "--format", "sarif"}, 0)["results"],
              Json::Value(Json::arrayValue));
    EXPECT_EQ(Ok({"validate", PROVIDER, "--filter", "delete", "--format", "github"}), "");
}

TEST_F(FindingsTest, ALibraryThatCannotBeLoadedIsATroubleAndNoPass) {
    const Json::Value run = Run({"validate", Fake("missing_entry_point"), "--format", "sarif"}, 4);
    EXPECT_EQ(run["results"].size(), 0U);
    EXPECT_EQ(run["invocations"][0]["executionSuccessful"], false);
    EXPECT_THAT(Vtv({"validate", Fake("missing_entry_point"), "--format", "github"}).out,
                testing::StartsWith("::error title=vtv validate::"));
}

TEST_F(FindingsTest, JsonIsOneOfTheFormats) {
    const auto named = [](const std::string& text) {
        Json::Value document;
        EXPECT_TRUE(Json::Reader().parse(text, document)) << text;
        return document[0]["name"];
    };
    EXPECT_EQ(named(Ok({"validate", PROVIDER, "--filter", "delete", "--format", "json"})),
              named(Ok({"validate", PROVIDER, "--filter", "delete", "--json"})));
    EXPECT_THAT(Ok({"validate", PROVIDER, "--filter", "delete", "--format", "text"}),
                HasSubstr("passed  "));
    EXPECT_EQ(Vtv({"validate", PROVIDER, "--json", "--format", "sarif"}).code, 2);
    EXPECT_THAT(Vtv({"validate", PROVIDER, "--format", "junit"}).err, HasSubstr("sarif,github"));
    EXPECT_EQ(Vtv({"validate", "--list", "--format", "sarif"}).code, 2);
}

#ifdef WITH_EXPLORER

TEST_F(FindingsTest, TheImpactOfAPolicyIsAWarningAboutItsFile) {
    Json::Value policy = OkJson({"policy", "show", "--json"});
    Write("old.json", policy.toStyledString());
    policy.resize(2);
    Write("new.json", policy.toStyledString());
    const std::vector<std::string> words = {"impact",  Path("old.json"), Path("new.json"),
                                            "--quiet", "--tv",           "farfield-eu",
                                            "--tv",    "modular-us",     "--format"};
    std::vector<std::string> sarif = words;
    sarif.emplace_back("sarif");
    const Json::Value run = Run(sarif, 1);
    ASSERT_GT(run["results"].size(), 0U);
    std::set<std::string> rules;
    for (const Json::Value& result : run["results"]) {
        EXPECT_EQ(result["level"], "warning");
        EXPECT_THAT(
            result["locations"][0]["physicalLocation"]["artifactLocation"]["uri"].asString(),
            testing::EndsWith("/new.json"));
        EXPECT_THAT(result["message"]["text"].asString(),
                    AllOf(HasSubstr("farfield-eu"), HasSubstr("\nwhen ")));
        rules.insert(result["ruleId"].asString());
    }
    EXPECT_THAT(rules, testing::IsSupersetOf({"voice-assistant", "users"}));
    std::vector<std::string> github = words;
    github.emplace_back("github");
    EXPECT_THAT(Vtv(github).out, HasSubstr("new.json,line=1,title=vtv impact%3A users::"));
}

TEST_F(FindingsTest, AMalformedPolicyIsAnErrorWhereItIsMalformed) {
    Write("old.json", OkJson({"policy", "show", "--json"}).toStyledString());
    Write("bad.json", "[\n{\n\"VAOrder\": \"one\"}]\n");
    const Json::Value run =
        Run({"impact", Path("old.json"), Path("bad.json"), "--format", "sarif"}, 2);
    ASSERT_EQ(run["results"].size(), 1U) << run;
    EXPECT_EQ(run["results"][0]["level"], "error");
    const Json::Value& place = run["results"][0]["locations"][0]["physicalLocation"];
    EXPECT_EQ(place["region"]["startLine"], 3);
    EXPECT_THAT(place["artifactLocation"]["uri"].asString(), testing::EndsWith("/bad.json"));
}

#endif

}  // namespace
