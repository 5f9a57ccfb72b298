// The file of inputs: what it does not say right is refused, with its line, and never passed over.
#include "explorer/tv/inputs.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <tuple>
#include <vector>

#include "process.h"

namespace {

std::string Sound() {
    return "[[input]]\nsetting = \"db/a\"\ntype = \"int\"\nvalues = [1]\n"
           "[[policy]]\nname = \"none\"\npublished = []\n";
}

std::string ErrorOf(const std::string& text) {
    const std::string file = TemporaryFolder() + "/inputs.toml";
    std::ofstream(file) << text;
    try {
        static_cast<void>(explorer::LoadInputs(file));
        return "";
    } catch (const vtv::Error& error) {
        EXPECT_EQ(error.kind(), vtv::ErrorKind::kUsage);
        return std::string(error.what()).substr(file.size());
    }
}

struct Mistake {
    const char* what;     // of the sound file; empty: before it
    const char* written;  // in its place
    const char* told;
};

const Mistake kMistakes[] = {
    {"", "polices = 1\n", ":1: \"polices\" is unknown"},
    {"", "assistants = 1\n", ":1: \"assistants\" must be a table"},
    {"", "texts = { with-names = [] }\n", ":1: \"with-names\" is unknown in [texts]"},
    {"", "texts = { with-name = [1] }\n", ":1: \"with-name\" must be a list of texts"},
    {"type = \"int\"", "type = \"int\"\ncurent-assistant = true", ":4: \"curent-assistant\""},
    {"type = \"int\"", "type = \"int\"\ncurrent-assistant = 1",
     ":4: \"current-assistant\" must be"},
    {"type = \"int\"", "type = \"int\"\nname = 5", ":4: \"name\" must be a text"},
    {"type = \"int\"", "type = \"number\"", ":1: \"db/a\" needs type ="},
    {"setting = \"db/a\"", "setting = 5", ":2: \"setting\" must be a text"},
    {"values = [1]", "values = 1", ":4: \"values\" must be a list"},
    {"values = [1]", "values = [1]\nful = [2]", ":5: \"ful\" is unknown in an input"},
    {"values = [1]", "values = [1]\nfull = 2", ":5: \"full\" must be a list"},
    {"values = [1]", "values = [\"1\"]", ":4: \"db/a\" is of type int, not string"},
    {"values = [1]", "values = [{ odd = true }]", ":4: a value is one of"},
    {"values = [1]", "values = [{ value = 1, odd = \"yes\" }]",
     ":4: \"odd\" must be true or false"},
    {"values = [1]", "values = [{ value = 1, az = \"x\" }]", ":4: \"az\" is unknown in a value"},
    {"values = [1]", "values = [{ value = 1, as = 5 }]", ":4: \"as\" must be a text"},
    {"values = [1]", "values = [{ value = 1, fails = -1 }]", ":4: a value is one of"},
    {"values = [1]", "values = [{ value = 1, missing = false }]", ":4: a value is one of"},
    {"values = [1]", "values = [{ missing = \"yes\" }]", ":4: \"missing\" must be true or false"},
    {"values = [1]", "values = [{ missing = false }]", ":4: a value is one of"},
    {"values = [1]", "values = [{ null = 1 }]", ":4: \"null\" must be true or false"},
    {"values = [1]", "values = [{ fails = \"-1\" }]", ":4: \"fails\" must be"},
    {"values = [1]", "values = [{ fails = 9999999999 }]", ":4: 9999999999 does not fit"},
    {"values = [1]", "values = [{ stored = \"int\" }]", ":4: stored = \"int\" must be"},
    {"values = [1]", "values = [{ stored = \"text\" }]", ":4: stored = \"text\" must be"},
    {"values = [1]", "values = [{ stored = 1 }]", ":4: \"stored\" must be a text"},
    {"published = []", "published = 5", ":7: \"published\" must be a list"},
    {"published = []", "publishd = []", ":7: \"publishd\" is unknown in a policy"},
    {"published = []", "published = [[5]]", ":7: an assistant is its id in quotes"},
    {"published = []", "published = [5]", ":7: write a list of assistants"},
    {"published = []", "published = []\nfull = 1", ":8: \"full\" must be true or false"},
    {"name = \"none\"", "name = \"\"", ":5: a policy needs \"name\""},
    {"published = []", "published = [[\"X\"]]\n[assistants]\nX = 1", ":9: \"X\" must be a table"},
    {"published = []", "published = [[\"X\"]]\n[assistants]\nX = { app = \"a\", nam = \"b\" }",
     ":9: \"nam\" is unknown in an assistant"},
    // Of an assistant that no policy names, too.
    {"published = []", "published = []\n[assistants]\nX = 1", ":9: \"X\" must be a table"},
    {"published = []", "published = []\n[assistants]\nX = { app = \"a\", nam = \"b\" }",
     ":9: \"nam\" is unknown in an assistant"},
    {"published = []", "published = []\n[assistants]\nX = { name = \"b\" }", ":9: "},
    {"published = []", "published = []\n[assistants]\nX = { app = \"a\", name = 1 }",
     ":9: \"name\" must be a text"},
};

}  // namespace

TEST(InputsFile, WhatAProviderAsksForAndTheFileDoesNotNameIsToldByName) {
    for (const auto& [provider, question, name] :
         {std::tuple(ASKS_FOR_ANOTHER_KEY, "function:CSIMenuUtil::GetCountryCode",
                     "setting db/comss/countrycodX"),
          {ASKS_FOR_ANOTHER_FILE, "function:LaunchOnboarding", "file /tmp/alexa_login_success"},
          {STARTS_ANOTHER_APPLICATION, "press:popup", "application org.nemra.wizarx"}}) {
        for (const std::vector<std::string>& words :
             {std::vector<std::string>{"table", "-q", "--provider", provider, question},
              {"diff", "-q", "--only", question, provider, provider}}) {
            const ProcessResult result = RunExplorer(words);
            EXPECT_EQ(result.exitCode, 4) << words[0] << ' ' << name << result.errors;
            EXPECT_NE(result.errors.find(name), std::string::npos) << result.errors;
        }
    }
}

TEST(InputsFile, EveryMistakeIsRefusedWithItsLine) {
    ASSERT_EQ(ErrorOf(Sound()), "");
    for (const Mistake& mistake : kMistakes) {
        std::string text = Sound();
        const std::string what = mistake.what;
        ASSERT_NE(text.find(what), std::string::npos) << what;
        text.replace(text.find(what), what.size(), mistake.written);
        const std::string error = ErrorOf(text);
        EXPECT_EQ(error.rfind(mistake.told, 0), 0U) << mistake.written << "\n" << error;
    }
}
