// vtv app allow, forbid, allowed: a TV from somebody else runs what the user wants, and nothing
// else.
#include "vtv_process.h"

#include <filesystem>

using testing::HasSubstr;
using testing::Not;

namespace {

class CommandsTest : public VtvTest {
  protected:
    // A TV as it came out of an archive: an application that a press starts is a command.
    void Unpack() {
        Ok({"new", "packed", "--model", "farfield-eu"});
        Write("tvs/packed/tv.toml", Read("tvs/packed/tv.toml") + Packages());
        ASSERT_EQ(std::system(("cd " + folder_ +
                               "/tvs && tar cf ../sent.tar packed && rm -r packed "
                               "&& tar xf ../sent.tar")
                                  .c_str()),
                  0);
    }
    std::string Packages() const {
        std::string text;
        for (const char* app : {"com.vantelo.tv.google-assistant", "org.nemra.voice-onboarding",
                                "org.nemra.wizard", "com.vantelo.tv.voice-instant-app",
                                "org.nemra.alert-syspopup", "com.vantelo.account-ui"}) {
            text += "\n[[packages]]\napp = \"" + std::string(app) + "\"\ncommand = \"" + Command() +
                    "\"\n";
        }
        return text;
    }
    std::string Command() const { return "/bin/touch " + Path("owned"); }
    void PressEverything(const std::string& tv) {
        for (const char* item : {"voice-settings-google", "voice-settings-orvik", "voice-wake-up",
                                 "voice-settings-alexa", "voice-hints"}) {
            Vtv({"press", item, "--ok", "--tv", tv});
        }
        Vtv({"press", "voice-assistant", "--choose", "3", "--ok", "--tv", tv});
        Vtv({"press", "voice-settings-google", "--ok", "--tv", tv});
    }
    // The command runs beside vtv.
    bool HasRun(int patience = 20) const {
        for (int i = 0; i < patience; ++i) {
            if (std::filesystem::exists(Path("owned"))) {
                return true;
            }
            usleep(50000);
        }
        return false;
    }
};

}  // namespace

TEST_F(CommandsTest, ATvThatSomebodySentRunsNoCommandOfItsOwn) {
    Unpack();
    PressEverything("packed");
    EXPECT_FALSE(HasRun());
    const std::string launches = Ok({"app", "list", "--launches", "--tv", "packed"});
    EXPECT_THAT(launches, HasSubstr("is not allowed"));
    EXPECT_THAT(launches, HasSubstr("vtv app allow --command '" + Command() + "'"));
    EXPECT_THAT(launches, Not(HasSubstr("  started")));
}

TEST_F(CommandsTest, ACommandRunsOnceTheUserHasAllowedIt) {
    Unpack();
    EXPECT_EQ(Ok({"__complete", "--tv", "packed", "app", "allow", "org.nemra.v"}),
              "org.nemra.voice-onboarding\n");
    EXPECT_THAT(Ok({"app", "allow", "org.nemra.voice-onboarding", "--tv", "packed"}),
                HasSubstr(Command()));
    EXPECT_EQ(Ok({"app", "allowed"}), Command() + "\n");
    PressEverything("packed");
    EXPECT_TRUE(HasRun(200));
    while (!OkJson({"app", "list", "--json", "--tv", "packed"}).empty()) {
    }
    std::filesystem::remove(Path("owned"));
    EXPECT_FALSE(OkJson({"app", "forbid", "--command", Command(), "--json"})["allowed"].asBool());
    EXPECT_EQ(OkJson({"app", "allowed", "--json"}), Json::Value(Json::arrayValue));
    PressEverything("packed");
    EXPECT_FALSE(HasRun());
}

TEST_F(CommandsTest, AModelThatIsNamedByItsFileRunsNoCommand) {
    Unpack();
    const std::string model = Path("tvs/packed/tv.toml");
    Ok({"new", "other", "--model", model});
    PressEverything("other");
    Write("s.toml", "model = \"" + model +
                        "\"\n\n[[step]]\npress = \"voice-settings-orvik\"\n"
                        "\n[[step]]\npress = \"voice-settings-google\"\n");
    Vtv({"run", Path("s.toml")});
    EXPECT_FALSE(HasRun());
}

// Somebody who looks at the list would read another command.
TEST_F(CommandsTest, ACommandWithACharacterThatIsNotSeenAsItIsCannotBeAllowed) {
    const std::pair<const char*, const char*> unseen[] = {
        {"\t", "U+0009"},         {"\x7f", "U+007F"},   {"\u00a0", "U+00A0"},
        {"\u00ad", "U+00AD"},     {"\u0600", "U+0600"}, {"\u115f", "U+115F"},
        {"\u1680", "U+1680"},     {"\u2003", "U+2003"}, {"\u200b", "U+200B"},
        {"\u2028", "U+2028"},     {"\u202e", "U+202E"}, {"\u202f", "U+202F"},
        {"\u205f", "U+205F"},     {"\u2800", "U+2800"}, {"\u3000", "U+3000"},
        {"\ufe0f", "U+FE0F"},     {"\ufeff", "U+FEFF"}, {"\U0001d173", "U+1D173"},
        {"\U000e0041", "U+E0041"}};
    for (const auto& [character, name] : unseen) {
        const Output output = Vtv({"app", "allow", "--command", std::string("ö ") + character});
        EXPECT_EQ(output.code, 2) << name;
        EXPECT_THAT(output.err, HasSubstr(std::string("its character 3, ") + name + ",")) << name;
    }
    EXPECT_EQ(Ok({"app", "allowed"}), "No command is allowed.\n");
    Ok({"app", "allow", "--command", "/opt/Küche/道具 -x ~"});
    EXPECT_EQ(Ok({"app", "allowed"}), "/opt/Küche/道具 -x ~\n");
}

TEST_F(CommandsTest, WhatCannotBeAllowedIsToldApart) {
    Unpack();
    EXPECT_EQ(Vtv({"app", "allow"}).code, 2);
    EXPECT_EQ(Vtv({"app", "allow", "org.none", "--tv", "packed"}).code, 3);
    EXPECT_EQ(Vtv({"app", "allow", "--command", "a\nb"}).code, 2);
    EXPECT_EQ(Vtv({"app", "forbid", "--command", "never"}).code, 1);
    std::filesystem::create_directories(Path(".config/vtv"));
    std::filesystem::create_symlink("elsewhere", Path(".config/vtv/allowed-commands.json"));
    const Output output = Vtv({"app", "allow", "--command", "true"});
    EXPECT_EQ(output.code, 4);
    EXPECT_THAT(output.err, HasSubstr("allowed-commands.json"));
}
