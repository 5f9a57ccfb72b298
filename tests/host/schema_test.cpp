// What --json prints fits the schemas in docs/schemas/, and each schema refuses something else.
#include "vtv_process.h"

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include <valijson/adapters/jsoncpp_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validation_results.hpp>
#include <valijson/validator.hpp>

namespace fs = std::filesystem;

namespace {

constexpr char BROKEN_PROVIDER[] = FAKES "/libfake-missing_slot.so";

// Empty when the document fits.
std::string Misfit(const std::string& schemaName, const Json::Value& document) {
    Json::Value text;
    std::ifstream(std::string(SCHEMAS) + "/" + schemaName + ".json") >> text;
    valijson::Schema schema;
    valijson::SchemaParser parser;
    parser.populateSchema(valijson::adapters::JsonCppAdapter(text), schema);
    valijson::Validator validator;
    valijson::ValidationResults results;
    if (validator.validate(schema, valijson::adapters::JsonCppAdapter(document), &results)) {
        return "";
    }
    valijson::ValidationResults::Error error;
    std::string misfit = "does not fit";
    while (results.popError(error)) {
        for (const std::string& part : error.context) {
            misfit += part;
        }
        misfit += ": " + error.description + "\n";
    }
    return misfit;
}

// The documents that were printed one a line, each as it fits or does not.
std::vector<Json::Value> Lines(const std::string& text) {
    std::vector<Json::Value> documents;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_TRUE(Json::Reader().parse(line, documents.emplace_back())) << line;
    }
    return documents;
}

struct VerbCall {
    const char* schema;
    std::vector<std::string> arguments;
    bool lines = false;  // one document a line
};

void PrintTo(const VerbCall& call, std::ostream* out) {
    *out << "vtv";
    for (const std::string& argument : call.arguments) {
        *out << ' ' << argument;
    }
}

std::string NameOf(const testing::TestParamInfo<VerbCall>& tested) {
    return std::regex_replace(tested.param.schema, std::regex("-"), "") +
           std::to_string(tested.index);
}

class SchemaTest : public VtvTest, public testing::WithParamInterface<VerbCall> {};

}  // namespace

TEST_P(SchemaTest, WhatIsPrintedFits) {
    Ok({"choose", "voice-assistant", "2"});
    Ok({"trace", "on"});
    Ok({"fault", "vconf_get_int", "--slow", "1"});
    Ok({"app", "cancel"});
    Ok({"press", "voice-settings-alexa", "--ok"});
    Write("scenario.toml",
          "[[step]]\npress = \"voice-wake-up\"\n\n[[step]]\nexpect.page.voice = \"hidden\"\n");
    Write("broken.toml", "[[step]]\npres = 1\n");
    Ok({"new", "other", "--model", "farfield-cn"});
    std::vector<std::string> arguments = GetParam().arguments;
    for (std::string& argument : arguments) {
        argument = argument == "SCENARIO" ? Path("scenario.toml")
                   : argument == "BROKEN" ? Path("broken.toml")
                                          : argument;
    }
    const std::string out = Vtv(arguments).out;
    std::istringstream stream(out);
    std::string line;
    while (std::getline(stream, line, GetParam().lines ? '\n' : '\0')) {
        Json::Value document;
        ASSERT_TRUE(Json::Reader().parse(line, document)) << line;
        EXPECT_EQ(Misfit(GetParam().schema, document), "") << line;
    }
    EXPECT_FALSE(out.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Json, SchemaTest,
    testing::Values(
        VerbCall{"show", {"show", "--json"}},
        VerbCall{"item", {"show", "voice-settings-alexa", "--json"}},
        VerbCall{"press", {"press", "voice-assistant", "--choose", "1", "--ok", "--json"}},
        VerbCall{"press", {"choose", "voice-assistant", "3", "--json"}},
        VerbCall{"press", {"press", "voice-settings-alexa", "--ok", "--json"}},
        VerbCall{"explain", {"explain", "voice-wake-up", "--json"}},
        VerbCall{"setting", {"get", "db/comss/cisblock", "--json"}},
        VerbCall{"search", {"search", "voice", "--json"}}, VerbCall{"texts", {"texts", "--json"}},
        VerbCall{"texts", {"texts", "--language", "fr", "--todo", "--json"}},
        VerbCall{"tvs", {"list", "--json"}}, VerbCall{"models", {"list", "--models", "--json"}},
        VerbCall{"copied", {"copy", "default", "copy", "--json"}},
        VerbCall{"renamed", {"rename", "other", "renamed", "--json"}},
        VerbCall{"removed", {"remove", "default", "--force", "--json"}},
        VerbCall{"policy", {"policy", "show", "--json"}},
        VerbCall{"apps", {"app", "list", "--json"}},
        VerbCall{"launches", {"app", "list", "--launches", "--json"}},
        VerbCall{"permission", {"app", "allow", "--command", "true", "--json"}},
        VerbCall{"allowed", {"app", "allowed", "--json"}},
        VerbCall{"features", {"feature", "--json"}},
        VerbCall{"setting", {"feature", "recorder.microphone_type", "--json"}},
        VerbCall{"dump", {"dump"}}, VerbCall{"snapshot", {"snapshot"}},
        VerbCall{"diff", {"diff", "default", "other", "--json"}},
        VerbCall{"run", {"run", "SCENARIO", "BROKEN", "--json"}},
        VerbCall{"run-check", {"run", "--check", "SCENARIO", "BROKEN", "--json"}},
        VerbCall{"validate", {"validate", PROVIDER, "--filter", "slot", "--json"}},
        VerbCall{"sarif", {"validate", PROVIDER, "--filter", "slot", "--format", "sarif"}},
        VerbCall{"sarif", {"validate", BROKEN_PROVIDER, "--format", "sarif"}},
        VerbCall{"faults", {"fault", "--json"}}, VerbCall{"trace", {"trace", "--json"}},
        VerbCall{"log", {"log", "--json"}, true}),
    NameOf);

INSTANTIATE_TEST_SUITE_P(
    JsonOfSettings, SchemaTest,
    testing::Values(VerbCall{"setting", {"get", "db/menu/voice/mva_list.0", "--json"}},
                    VerbCall{"keys", {"keys", "--json"}},
                    VerbCall{"describe", {"describe", "db/menu/voice/mva_list", "--json"}},
                    VerbCall{"describe", {"describe", "recorder.microphone_type", "--json"}},
                    VerbCall{"show", {"show", "--with", "tnc=off", "--json"}},
                    VerbCall{"explain", {"explain", "voice", "--with", "tnc=off", "--json"}},
                    VerbCall{"press", {"press", "voice", "--with", "pp=off", "--json"}},
                    VerbCall{"wait", {"wait", "network=connected", "--json"}},
                    VerbCall{"wait", {"wait", "tnc=off", "--timeout", "0", "--json"}},
                    VerbCall{"recording", {"record", "status", "--json"}}),
    NameOf);

TEST_F(VtvTest, TheErrorOfAProviderThatCannotBeValidatedFitsItsSchema) {
    const std::string fake = std::string(FAKES) + "/libfake-missing_entry_point.so";
    Json::Value document;
    ASSERT_TRUE(Json::Reader().parse(Vtv({"validate", fake, "--json"}).out, document));
    EXPECT_EQ(Misfit("validate", document), "");
    document["more"] = 1;
    EXPECT_NE(Misfit("validate", document), "");
}

// In these tests one process prints while others write.

TEST_F(VtvTest, EachChangeOfAWatchedPageFitsItsSchema) {
    Ok({"show"});
    RunningVtv watching(environment, {"show", "--watch", "--json"});
    ASSERT_TRUE(watching.WaitFor("\"items\""));
    Ok({"choose", "voice-wake-up", "off"});
    Ok({"account", "signed-out"});
    Ok({"language", "de_DE"});
    Json::Value policy = OkJson({"policy", "show", "--json"});
    policy.resize(policy.size() - 1);
    Ok({"policy", "publish", "-"}, policy.toStyledString());
    EXPECT_TRUE(watching.WaitFor("\"what\":\"choices\"")) << watching.Text();
    Ok({"policy", "publish", "-"}, "[]");
    EXPECT_TRUE(watching.WaitFor("\"after\":\"hidden\"")) << watching.Text();
    const std::vector<Json::Value> documents = Lines(watching.Interrupt().out);
    ASSERT_GE(documents.size(), 2U);
    EXPECT_EQ(Misfit("show", documents.front()), "");
    std::set<std::string> seen;
    for (size_t i = 1; i < documents.size(); ++i) {
        EXPECT_EQ(Misfit("change", documents[i]), "") << documents[i];
        seen.insert(documents[i]["what"].asString());
    }
    EXPECT_THAT(seen, testing::IsSupersetOf(
                          {"visible", "enabled", "value", "title", "help", "choices", "reason"}));
}

TEST_F(VtvTest, EachWriteOfAWatchedSettingFitsItsSchema) {
    Ok({"show"});
    RunningVtv watching(environment, {"watch", "--json", "--count", "4"});
    ASSERT_TRUE(watching.WaitForError("Watching"));
    Ok({"set", "db/a", "bool", "true"});
    Ok({"set", "db/a", "int", "-7"});
    Ok({"set", "db/a", "string", "text with \"quotes\"\n"});
    Ok({"unset", "db/a"});
    EXPECT_TRUE(watching.WaitFor("\"removed\":true")) << watching.Text();
    const std::vector<Json::Value> documents = Lines(watching.Interrupt().out);
    ASSERT_EQ(documents.size(), 4U);
    for (const Json::Value& document : documents) {
        EXPECT_EQ(Misfit("watch", document), "") << document;
    }
    EXPECT_EQ(documents[0]["value"], true);
    EXPECT_EQ(documents[1]["value"], -7);
    EXPECT_EQ(documents[2]["value"], "text with \"quotes\"\n");
    EXPECT_FALSE(documents[3].isMember("value"));
}

TEST_F(VtvTest, EachRecordOfAFollowedLogFitsItsSchema) {
    Ok({"show"});
    RunningVtv following(environment, {"log", "--follow", "--json"});
    Ok({"choose", "voice-wake-up", "off"});
    EXPECT_TRUE(following.WaitFor("Set Hands-free Wake-up value [0]"));
    Ok({"fault", "vconf_get_int"});
    EXPECT_TRUE(following.WaitFor("Finalize"));
    const std::vector<Json::Value> documents = Lines(following.Interrupt().out);
    EXPECT_GT(documents.size(), 10U);
    for (const Json::Value& document : documents) {
        EXPECT_EQ(Misfit("log", document), "") << document;
    }
}

TEST(Schemas, RefuseWhatIsNoDocumentOfTheirs) {
    Json::Value wrong;
    wrong["surprise"] = 1;
    int schemas = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(SCHEMAS)) {
        const std::string name = entry.path().stem().string();
        EXPECT_NE(Misfit(name, wrong), "") << name;
        EXPECT_NE(Misfit(name, Json::Value(7)), "") << name;
        ++schemas;
    }
    EXPECT_GE(schemas, 18);
}

TEST(Schemas, StillFitWhatAVtvOfTheirVersionHasPrinted) {
    int samples = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(SCHEMAS)) {
        const std::string name = entry.path().stem().string();
        Json::Value schema;
        std::ifstream(entry.path()) >> schema;
        const std::string version = schema["version"].asString();
        const std::string file = std::string(FORMATS) + "/json/" + name + "-" + version + ".json";
        Json::Value sample;
        std::ifstream stream(file);
        ASSERT_TRUE(Json::Reader().parse(stream, sample))
            << file << ": keep there what vtv prints with version " << version;
        EXPECT_EQ(Misfit(name, sample), "") << file;
        ++samples;
    }
    EXPECT_GE(samples, 18);
}
