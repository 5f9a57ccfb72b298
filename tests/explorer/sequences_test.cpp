// vtv explore sequences, run as a process; and what it expects of a TV, replayed on a virtual one.
#include <gtest/gtest.h>
#include <json/json.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "process.h"
#include "program/text_width.h"

namespace {

namespace fs = std::filesystem;

struct Assistant {
    const char* id;
    const char* app;
    const char* more;  // members of its table
};

constexpr Assistant ORVIK = {"ORVIK2", "com.vantelo.tv.voice-instant-app", "hint = \"on_default\""};
constexpr Assistant GOOGLE = {"GVA", "com.vantelo.tv.google-assistant", ""};
constexpr Assistant ALEXA = {"ALEXA", "com.vantelo.tv.alexa", ""};
constexpr Assistant SALUTE = {"SBER", "com.vantelo.tv.salute-assistant", ""};
constexpr Assistant TENCENT = {"TENCENT", "com.vantelo.tv.tencent-voice-chrome", ""};
constexpr Assistant SVA = {"SVA", "com.vantelo.tv.sva-app", ""};

Assistant With(Assistant assistant, const char* more) {
    assistant.more = more;
    return assistant;
}

// A far-field model file; the first assistant is the current one.
std::string ModelFile(const std::string& name, const std::vector<Assistant>& assistants,
                      const std::string& more) {
    std::string text = R"(title = "A model of a test"
country = "DE"
language = "en_GB"
[features]
"voice.voice_recognition_support" = true
"voice.voice_recognition_orvik_support" = true
"voice.voice_recognition_far_field_type" = 1
)" + more;
    int order = 0;
    for (const Assistant& assistant : assistants) {
        ++order;
        text += "\n[[assistants]]\norder = " + std::to_string(order) + "\nid = \"" + assistant.id +
                "\"\napp = \"" + assistant.app + "\"\nname = \"" + assistant.id +
                "\"\nfar_field = true\nwake_up = \"off\"\n" +
                (order == 1 ? "current = true\n" : "") + assistant.more + "\n";
    }
    const std::string file = TemporaryFolder() + "/" + name + ".toml";
    std::ofstream(file) << text;
    return file;
}

ProcessResult Replay(const std::string& provider, const std::vector<std::string>& scenarios) {
    std::vector<std::string> arguments = {"run", "--provider", provider};
    arguments.insert(arguments.end(), scenarios.begin(), scenarios.end());
    return RunVtv(arguments);
}

ProcessResult Sequences(std::vector<std::string> arguments) {
    const std::vector<std::string> first = {"sequences", "-q", "--json", "--scenarios",
                                            TemporaryFolder() + "/found"};
    arguments.insert(arguments.begin(), first.begin(), first.end());
    return RunExplorer(arguments);
}

// A single assistant that nobody has set up, on a TV on which nobody has agreed to anything.
std::string UntouchedModel() {
    return ModelFile("untouched", {GOOGLE}, "");
}

std::vector<std::string> Texts(const Json::Value& list) {
    std::vector<std::string> texts;
    for (const Json::Value& one : list) {
        texts.push_back(one.asString());
    }
    return texts;
}

}  // namespace

TEST(Sequences, OfEveryModelKeepAllInvariantsHoweverLongTheyAre) {
    const ProcessResult result = Sequences({});
    EXPECT_EQ(result.exitCode, 0) << result.output << result.errors;
    const Json::Value root = Parse(result.output);
    EXPECT_GE(root["models"].size(), 15U);
    for (const Json::Value& model : root["models"]) {
        EXPECT_TRUE(model["finished"].asBool() && model["closed"].asBool()) << model;
    }
    for (const Json::Value& invariant : root["invariants"]) {
        EXPECT_TRUE(invariant["holds"].asBool()) << invariant;
    }
    EXPECT_GE(root["invariants"].size(), 20U);
    EXPECT_TRUE(root["violations"].empty());
}

// Not set up; its onboarding waits; set up with wake-up never touched, on and off: five, each
// before and after the policy is published again. In these there are 3, 5, 3, 3 and 3 things to do.
TEST(Sequences, OfASmallModelComeToTheStatesThatAreCountedByHand) {
    const Json::Value models =
        Parse(Sequences({"--tv", "single-assistant-gb", "no-voice"}).output)["models"];
    ASSERT_EQ(models.size(), 2U);
    EXPECT_EQ(models[0]["states"].asInt(), 10);
    EXPECT_EQ(models[0]["transitions"].asInt(), 2 * (3 + 5 + 3 + 3 + 3));
    EXPECT_EQ(models[0]["deepest"].asInt(), 5);
    // Nothing but publishing and the plug.
    EXPECT_EQ(models[1]["states"].asInt(), 2);
    EXPECT_EQ(models[1]["transitions"].asInt(), 4);
    EXPECT_EQ(models[1]["deepest"].asInt(), 1);
}

TEST(Sequences, WithADepthEndThereAndGoOn) {
    const Json::Value model =
        Parse(Sequences({"--tv", "single-assistant-gb", "--depth", "1"}).output)["models"][0];
    EXPECT_EQ(model["states"].asInt(), 3);  // as it was, its onboarding waits, published again
    EXPECT_EQ(model["transitions"].asInt(), 3);
    EXPECT_EQ(model["deepest"].asInt(), 1);
    EXPECT_FALSE(model["closed"].asBool());
}

TEST(Sequences, OfModelsWithAnyNameLineUpOnATerminal) {
    const std::string accented = ModelFile("k\u00fcche-\u5ba2\u5385", {GOOGLE}, "");
    const std::string output =
        RunExplorer({"sequences", "-q", "--scenarios", TemporaryFolder() + "/found", "--depth", "1",
                     "--tv", UntouchedModel(), accented})
            .output;
    std::set<std::size_t> columns;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        if (const std::size_t at = line.find(" states  "); at != std::string::npos) {
            columns.insert(program::Width(line.substr(0, at)));
        }
    }
    EXPECT_EQ(columns.size(), 1U) << output;
}

TEST(Sequences, ToAFaultAreTheShortestThatThereAre) {
    const std::vector<std::string> common = {"--provider",  BROKEN_BOTH_ENTRIES,
                                             "--tv",        UntouchedModel(),
                                             "--invariant", "never-both-entries"};
    const ProcessResult result = Sequences(common);
    EXPECT_EQ(result.exitCode, 1) << result.errors;
    const Json::Value violation = Parse(result.output)["violations"][0];
    EXPECT_EQ(violation["what"].asString(), "both are visible");
    EXPECT_EQ(violation["state"]["Google signed in"].asString(), "yes");
    const std::vector<std::string> shortest = {"press onboarding", "finish org.nemra.wizard",
                                               "press onboarding",
                                               "finish com.vantelo.tv.google-assistant"};
    EXPECT_EQ(Texts(violation["actions"]), shortest);

    std::vector<std::string> shorter = common;
    shorter.insert(shorter.end(), {"--depth", "3"});
    EXPECT_EQ(Sequences(shorter).exitCode, 0);
}

TEST(Sequences, ToAFaultAreReplayedByTheVirtualTv) {
    const Json::Value violation =
        Parse(Sequences({"--provider", BROKEN_BOTH_ENTRIES, "--tv", UntouchedModel(), "--invariant",
                         "never-both-entries"})
                  .output)["violations"][0];
    const std::string scenario = violation["scenario"].asString();
    const ProcessResult broken = Replay(BROKEN_BOTH_ENTRIES, {scenario});
    EXPECT_EQ(broken.exitCode, 0) << broken.output << broken.errors;
    const ProcessResult whole = Replay(ProviderFile(), {scenario});
    EXPECT_EQ(whole.exitCode, 1) << whole.output << whole.errors;
    EXPECT_NE(whole.output.find("onboarding visible: expected \"true\", found \"false\""),
              std::string::npos)
        << whole.output;
}

// What applications, presses and the plug do in memory is what they do on the virtual TV: the page,
// settings, files, launches and what runs are compared after every step.
TEST(Sequences, TakeTheSameWayInMemoryAndOnTheVirtualTv) {
    const std::string folder = TemporaryFolder() + "/tours";
    const std::string agreed = "[consents]\ntnc = true\npp = true\n";
    // Keeps the tours short: it hides the switches, which are another model's part.
    const std::string legacy = "[settings]\n\"db/menu/voice/is_k_voice\" = true\n";
    const std::string signedIn = agreed + "[account]\nsigned_in = true\n";
    const Assistant done = With(ORVIK, "set_up = true\nhint = \"off_user\"");
    const ProcessResult result = RunExplorer(
        {"sequences", "-q", "--tour", folder, "--tv", "out-of-the-box-us", "ptt-basic-br",
         "single-assistant-gb", UntouchedModel(), ModelFile("orvik", {ORVIK}, agreed + legacy),
         ModelFile("orvik-signed-in", {ORVIK}, signedIn + legacy),
         ModelFile("orvik-done", {done}, agreed),
         ModelFile("salute", {SALUTE, With(GOOGLE, "set_up = true")}, agreed),
         ModelFile("sva", {SVA, TENCENT}, agreed)});
    ASSERT_EQ(result.exitCode, 0) << result.output << result.errors;
    std::string all;
    std::vector<std::string> files;
    for (const fs::directory_entry& file : fs::directory_iterator(folder)) {
        files.push_back(file.path());
        all += ReadAll(file.path());
    }
    for (const char* application :
         {"com.vantelo.account-ui", "com.vantelo.tv.google-assistant",
          "com.vantelo.tv.salute-assistant", "com.vantelo.tv.tencent-voice-chrome",
          "com.vantelo.tv.voice-instant-app", "org.nemra.voice-onboarding", "org.nemra.wizard"}) {
        for (const char* what : {"finish", "cancel"}) {
            const std::string step = std::string(what) + " = \"" + application + '"';
            EXPECT_NE(all.find("\n" + step), std::string::npos) << "no tour has: " << step;
        }
    }
    for (const char* step : {"(on)", "(off)", "OK", "Cancel", "(dimmed), OK", "(dimmed), Cancel",
                             "the policy is published again", "power cycle"}) {
        EXPECT_NE(all.find(step), std::string::npos) << "no tour has: " << step;
    }
    const ProcessResult replay = Replay(ProviderFile(), files);
    EXPECT_EQ(replay.exitCode, 0) << replay.output << replay.errors;
}

TEST(Sequences, OfAProviderThatCrashesAreShownAndTheRestIsStillSearched) {
    const ProcessResult result =
        Sequences({"--provider", BROKEN_CRASHES, "--tv", "single-assistant-gb", "--invariant",
                   "every-item-has-a-title", "nothing-goes-wrong", "never-both-entries"});
    EXPECT_EQ(result.exitCode, 1);
    const Json::Value root = Parse(result.output);
    EXPECT_EQ(root["models"][0]["states"].asInt(), 10);
    ASSERT_EQ(root["violations"].size(), 2U) << result.output;
    EXPECT_NE(root["violations"][0]["what"].asString().find("crashes (signal"), std::string::npos);
    EXPECT_TRUE(fs::exists(root["violations"][0]["scenario"].asString()));
}

TEST(Sequences, OfAProviderThatRemembersAreNotProven) {
    const ProcessResult result = RunExplorer(
        {"sequences", "-q", "--tv", "farfield-eu", "--depth", "2", "--provider", BROKEN_COUNTS});
    EXPECT_EQ(result.exitCode, 4) << result.output << result.errors;
    EXPECT_NE(result.output.find("UNPROVEN"), std::string::npos) << result.output;
    EXPECT_EQ(result.output.find("leads anywhere else"), std::string::npos) << result.output;
    EXPECT_NE(result.errors.find("remembers"), std::string::npos) << result.errors;
    const ProcessResult sound =
        RunExplorer({"sequences", "-q", "--tv", "farfield-eu", "--depth", "2"});
    EXPECT_EQ(sound.exitCode, 0) << sound.output << sound.errors;
}

TEST(Sequences, ThatAreInterruptedShowWhatWasFound) {
    const std::string model = ModelFile("six", {ORVIK, ALEXA, GOOGLE, SALUTE, TENCENT, SVA}, "");
    const ProcessResult result = InterruptExplorer({"sequences", "--json", "--tv", model}, 700);
    EXPECT_EQ(result.exitCode, 128 + SIGINT) << result.errors;
    EXPECT_NE(result.errors.find("interrupted"), std::string::npos) << result.errors;
    const Json::Value one = Parse(result.output)["models"][0];
    EXPECT_FALSE(one["finished"].asBool());
    EXPECT_GT(one["states"].asInt(), 1);
}

TEST(Sequences, OfWhatIsNotThereSayWhat) {
    const ProcessResult model = Sequences({"--tv", "no-such-tv"});
    EXPECT_EQ(model.exitCode, 3);
    EXPECT_NE(model.errors.find("no-such-tv"), std::string::npos) << model.errors;
    const ProcessResult invariant = Sequences({"--invariant", "no-such-invariant"});
    EXPECT_EQ(invariant.exitCode, 3);
    EXPECT_NE(invariant.errors.find("--list"), std::string::npos) << invariant.errors;
    EXPECT_EQ(Sequences({"--provider", "/no/such/file.so"}).exitCode, 3);
    EXPECT_EQ(Sequences({"--depth", "-1"}).exitCode, 2);
    const std::string broken = TemporaryFolder() + "/broken.toml";
    std::ofstream(broken) << "title = \n";
    const ProcessResult file = Sequences({"--tv", broken});
    EXPECT_EQ(file.exitCode, 2);
    EXPECT_NE(file.errors.find("broken.toml:1"), std::string::npos) << file.errors;
}
