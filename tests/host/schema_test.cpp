// What --json prints fits the schemas in docs/schemas/, and each schema refuses something else.
#include "vtv_process.h"

#include <filesystem>
#include <fstream>

#include <valijson/adapters/jsoncpp_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validation_results.hpp>
#include <valijson/validator.hpp>

namespace fs = std::filesystem;

namespace {

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

struct Case {
    const char* schema;
    std::vector<std::string> arguments;
    bool lines = false;  // one document a line
};

class SchemaTest : public VtvTest, public testing::WithParamInterface<Case> {};

}  // namespace

TEST_P(SchemaTest, WhatIsPrintedFits) {
    Ok({"choose", "voice-assistant", "2"});
    Ok({"trace", "on"});
    Ok({"fault", "vconf_get_int", "--slow", "1"});
    Ok({"app", "cancel"});
    Ok({"press", "voice-settings-alexa", "--ok"});
    Write("scenario.toml",
          "[[step]]\npress = \"voice-wake-up\"\n\n[[step]]\nexpect.page.voice = \"hidden\"\n");
    Ok({"new", "other", "--model", "farfield-cn"});
    std::vector<std::string> arguments = GetParam().arguments;
    for (std::string& argument : arguments) {
        argument = argument == "SCENARIO" ? Path("scenario.toml") : argument;
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
        Case{"show", {"show", "--json"}}, Case{"item", {"show", "voice-settings-alexa", "--json"}},
        Case{"press", {"press", "voice-assistant", "--choose", "1", "--ok", "--json"}},
        Case{"press", {"choose", "voice-assistant", "3", "--json"}},
        Case{"press", {"press", "voice-settings-alexa", "--ok", "--json"}},
        Case{"explain", {"explain", "voice-wake-up", "--json"}},
        Case{"setting", {"get", "db/comss/cisblock", "--json"}},
        Case{"search", {"search", "voice", "--json"}}, Case{"tvs", {"list", "--json"}},
        Case{"models", {"list", "--models", "--json"}},
        Case{"policy", {"policy", "show", "--json"}}, Case{"apps", {"app", "list", "--json"}},
        Case{"launches", {"app", "list", "--launches", "--json"}},
        Case{"features", {"feature", "--json"}},
        Case{"setting", {"feature", "recorder.microphone_type", "--json"}}, Case{"dump", {"dump"}},
        Case{"snapshot", {"snapshot"}}, Case{"diff", {"diff", "default", "other", "--json"}},
        Case{"run", {"run", "SCENARIO", "--json"}},
        Case{"validate", {"validate", PROVIDER, "--filter", "slot", "--json"}},
        Case{"faults", {"fault", "--json"}}, Case{"trace", {"trace", "--json"}},
        Case{"log", {"log", "--json"}, true}),
    [](const testing::TestParamInfo<Case>& tested) {
        return tested.param.schema + std::to_string(tested.index);
    });

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
