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

struct VerbCall {
    const char* schema;
    std::vector<std::string> arguments;
    bool lines = false;  // one document a line
};

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
    testing::Values(VerbCall{"show", {"show", "--json"}},
                    VerbCall{"item", {"show", "voice-settings-alexa", "--json"}},
                    VerbCall{"press",
                             {"press", "voice-assistant", "--choose", "1", "--ok", "--json"}},
                    VerbCall{"press", {"choose", "voice-assistant", "3", "--json"}},
                    VerbCall{"press", {"press", "voice-settings-alexa", "--ok", "--json"}},
                    VerbCall{"explain", {"explain", "voice-wake-up", "--json"}},
                    VerbCall{"setting", {"get", "db/comss/cisblock", "--json"}},
                    VerbCall{"search", {"search", "voice", "--json"}},
                    VerbCall{"tvs", {"list", "--json"}},
                    VerbCall{"models", {"list", "--models", "--json"}},
                    VerbCall{"policy", {"policy", "show", "--json"}},
                    VerbCall{"apps", {"app", "list", "--json"}},
                    VerbCall{"launches", {"app", "list", "--launches", "--json"}},
                    VerbCall{"features", {"feature", "--json"}},
                    VerbCall{"setting", {"feature", "recorder.microphone_type", "--json"}},
                    VerbCall{"dump", {"dump"}}, VerbCall{"snapshot", {"snapshot"}},
                    VerbCall{"diff", {"diff", "default", "other", "--json"}},
                    VerbCall{"run", {"run", "SCENARIO", "--json"}},
                    VerbCall{"validate", {"validate", PROVIDER, "--filter", "slot", "--json"}},
                    VerbCall{"faults", {"fault", "--json"}}, VerbCall{"trace", {"trace", "--json"}},
                    VerbCall{"log", {"log", "--json"}, true}),
    [](const testing::TestParamInfo<VerbCall>& tested) {
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
