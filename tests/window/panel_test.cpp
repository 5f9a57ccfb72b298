// The panel beside the TV: what it tells, and what its keys do.
#include <filesystem>
#include <set>
#include <sstream>

#include "window_test.h"

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

class PanelTest : public WindowTest {
  protected:
    // What is recorded goes to the working folder.
    PanelTest() : before_(fs::current_path()) { fs::current_path(folder_); }
    ~PanelTest() override { fs::current_path(before_); }

    // The lines of the section with that title, in what was shown last.
    static std::string Section(const std::string& seen, const std::string& title) {
        std::istringstream lines(seen.substr(seen.rfind("front: ")));
        std::string section;
        bool inside = false;
        for (std::string line; std::getline(lines, line);) {
            if (line.rfind("panel: ", 0) == 0) {
                inside = line.find(title) != std::string::npos;
            } else if (inside) {
                section += line + "\n";
            }
        }
        return section;
    }
    std::string FirstLine(const std::string& text) { return text.substr(0, text.find('\n')); }
    // The command that the panel shows after these keys, as a shell takes it.
    std::string CommandAfter(const std::string& keys) {
        const std::string seen = Keys("panel\n" + keys + "copy\nshow\n");
        const std::string command = FirstLine(seen.substr(seen.find("vtv ")));
        EXPECT_THAT(Section(seen, "The last action"), HasSubstr("   " + command + "\n"));
        EXPECT_THAT(seen, HasSubstr("toast: Copied: " + command));
        return command;
    }
    // All that a viewer could have changed.
    std::string Page(const std::string& tv) {
        std::string page = Ok({"show", "--tv", tv});
        for (const char* verb : {"account", "network", "language", "voice-guide"}) {
            page += verb + (": " + Ok({verb, "--tv", tv}));
        }
        for (const auto& [file, value] : Contents("tvs/" + tv + "/settings")) {
            page += file + ": " + value + "\n";
        }
        return page;
    }

  private:
    fs::path before_;
};

}  // namespace

TEST_F(PanelTest, ExplainsTheItemInFocusAsVtvExplainDoes) {
    // With so many items to be focused.
    const std::pair<const char*, size_t> kModels[] = {
        {"farfield-eu", 6}, {"monitor-es", 6}, {"modular-us", 6}, {"projector-fr", 1}};
    for (const auto& [model, items] : kModels) {
        Make(model);
        std::string keys = "panel\n";
        for (int i = 0; i < 7; ++i) {
            keys += "show\ndown\n";
        }
        const std::string seen = Keys(keys);
        std::set<std::string> explained;
        for (size_t at = seen.find("vtv explain "); at != std::string::npos;
             at = seen.find("vtv explain ", at + 1)) {
            const std::string item = seen.substr(at + 12, seen.find(')', at) - at - 12);
            const std::string line = seen.substr(seen.find('\n', at) + 1);
            EXPECT_EQ(FirstLine(line), "   " + FirstLine(Ok({"explain", item, "--tv", "tv"})));
            explained.insert(item);
        }
        EXPECT_EQ(explained.size(), items) << model;
        Ok({"remove", "tv", "--force"});
    }
}

TEST_F(PanelTest, ExplainsAnewWhenTheTvHasChanged) {
    Make("farfield-eu");
    RunningVtv window(environment, Window("panel\ndown\nshow\nuntil is dimmed: signed out\n"
                                          "show\ngone is dimmed\nshow\n"));
    ASSERT_TRUE(window.WaitFor("   Hands-free Wake-up is on: "));
    Ok({"account", "signed-out", "--tv", "tv"});
    ASSERT_TRUE(window.WaitFor("   Hands-free Wake-up is dimmed: signed out")) << window.Text();
    Ok({"account", "signed-in", "--tv", "tv"});
    EXPECT_EQ(window.End().code, 0) << window.Text();
}

TEST_F(PanelTest, TellsWhatTheLastPressHasStartedAndWhatTheLogHasOfIt) {
    Make("farfield-eu");
    const std::string seen = Keys("panel\nok\ndown\nok\nok\nshow\nok\nuntil front: page\nshow\n");
    EXPECT_EQ(Section(seen, "Started by the last press"),
              "   org.nemra.voice-onboarding type=ONBOARDING_SETUP\n");
    const std::string log = Section(seen, "Log of the last press");
    EXPECT_THAT(log, AllOf(HasSubstr("   set_int: key:menu/system/general-voice-voice-assistant, "
                                     "value:2\n"),
                           HasSubstr("   LaunchOnboarding: ")));
    // A look at the page is no part of the press.
    EXPECT_THAT(log, Not(HasSubstr("check_visibility_int")));
    // The next press has its own.
    const std::string next = Keys("panel\nok\nback\nshow\n");
    EXPECT_EQ(Section(next, "Started by the last press"), "   nothing\n");
    EXPECT_THAT(Section(next, "Log of the last press"), Not(HasSubstr("LaunchOnboarding")));
}

TEST_F(PanelTest, TheCommandOfTheLastActionDoesTheSameOnAnotherTv) {
    const std::pair<const char*, const char*> kActions[] = {
        {"farfield-eu", "down\nok\n"},                                 // a switch
        {"farfield-eu", "ok\nback\n"},                                 // only a look at the list
        {"farfield-eu", "ok\ndown\nok\nok\n"},                         // confirmed
        {"farfield-eu", "ok\ndown\nok\nright\nok\n"},                  // not confirmed
        {"farfield-eu", "ok\ndown\nok\nok\nok\nuntil front: page\n"},  // and set up
        {"modular-us", "down\ndown\ndown\ndown\ndown\nok\nok\n"},      // a popup's button
        {"modular-us", "down\ndown\ndown\ndown\ndown\nok\nback\n"},    // or not
        {"monitor-es", "down\nok\n"},                                  // refused
        {"farfield-eu", "account\n"},
        {"farfield-eu", "language\n"},
        {"farfield-eu", "network\n"},
        {"farfield-eu", "power-cycle\n"},
        {"farfield-eu", "voice-guide\n"},
    };
    for (const auto& [model, keys] : kActions) {
        Make(model);
        // On the other one: what had been done before, and the command.
        const std::string command = CommandAfter(keys);
        const std::string after = Page("tv");
        Ok({"remove", "tv", "--force"});
        Make(model);
        const std::string untouched = Page("tv");
        if (std::string(keys).find("until") != std::string::npos) {
            Ok({"press", "voice-assistant", "--choose", "2", "--ok", "--tv", "tv"});
        }
        std::istringstream words(command);
        std::vector<std::string> arguments;
        for (std::string word; words >> word;) {
            arguments.push_back(word);
        }
        ASSERT_EQ(arguments.front(), "vtv");
        arguments.erase(arguments.begin());
        Vtv(arguments);
        EXPECT_EQ(Page("tv"), after) << command;
        if (std::string(keys) == "down\nok\n" && std::string(model) == "farfield-eu") {
            EXPECT_NE(after, untouched);
        }
        Ok({"remove", "tv", "--force"});
    }
}

TEST_F(PanelTest, TheCommandNamesTheTvSoThatAShellFindsIt) {
    Ok({"new", "it's one", "--model", "farfield-eu"});
    Write("keys.txt", "panel\ndown\nok\ncopy\n");
    const std::string command = FirstLine(
        Ok({"window", "--tv", "it's one", "--keys", Path("keys.txt"), "--display", "none"}));
    EXPECT_EQ(command, "vtv press voice-wake-up --tv 'it'\\''s one'");
    // A TV that is not among the others is named by its folder.
    Ok({"new", Path("elsewhere/tv"), "--model", "farfield-eu"});
    EXPECT_EQ(FirstLine(Ok({"window", "--tv", Path("elsewhere/tv"), "--keys", Path("keys.txt"),
                            "--display", "none"})),
              "vtv press voice-wake-up --tv " + Path("elsewhere/tv"));
    const std::string fake = std::string(FAKES) + "/libfake-sound.so";
    EXPECT_THAT(Ok({"window", "--tv", "it's one", "--keys", Path("keys.txt"), "--display", "none",
                    "--provider", fake}),
                HasSubstr(" --provider " + fake + "\n"));
}

TEST_F(PanelTest, ItsKeysChangeLanguageAccountNetworkAndPower) {
    Make("farfield-eu");
    Ok({"set", "memory/passthru/connected", "bool", "true", "--tv", "tv"});
    std::string seen = Keys("panel\naccount\nnetwork\nshow\n");
    EXPECT_EQ(Ok({"account", "--tv", "tv"}), "signed-out\n");
    EXPECT_EQ(Ok({"network", "--tv", "tv"}), "disconnected\n");
    EXPECT_THAT(seen, AllOf(HasSubstr("A  account: signed-out\n"),
                            HasSubstr("N  network: disconnected\n")));
    EXPECT_EQ(Ok({"get", "memory/passthru/connected", "--tv", "tv"}), "true\n");
    seen = Keys("panel\naccount\nnetwork\npower-cycle\nshow\n");
    EXPECT_THAT(seen,
                AllOf(HasSubstr("A  account: signed-in\n"), HasSubstr("N  network: connected\n")));
    EXPECT_EQ(Vtv({"get", "memory/passthru/connected", "--tv", "tv"}).code, 3);
    // Every language in turn, and then the first one again.
    std::string keys = "panel\n";
    for (int i = 0; i < 9; ++i) {
        keys += "language\nshow\n";
    }
    seen = Keys(keys);
    for (const char* page :
         {"page: Voz\n", "page: Voix\n", "page: 음성\n", "page: Sprache\n", "page: Voice\n"}) {
        EXPECT_THAT(seen, HasSubstr(page));
    }
}

TEST_F(PanelTest, ItsKeysDoNothingWhileItIsClosed) {
    Make("farfield-eu");
    const std::string before = Page("tv");
    for (const char* key : {"language", "account", "network", "power-cycle", "record", "copy"}) {
        EXPECT_THAT(
            Keys(std::string(key) + "\nshow\n"),
            AllOf(StartsWith("front: page\n"), HasSubstr("F2 opens it"), Not(HasSubstr("panel:"))));
    }
    EXPECT_EQ(Page("tv"), before);
    EXPECT_THAT(Keys("panel\npanel\nshow\n"), Not(HasSubstr("panel:")));
}

TEST_F(PanelTest, WhatIsRecordedPlaysAgainInBothHosts) {
    Make("farfield-eu");
    const std::string seen = Keys(
        "panel\nrecord\ndown\nok\nhome\nok\ndown\nok\nok\nok\nuntil front: page\nok\nback\n"
        "network\nvoice-guide\nrecord\nshow\n");
    EXPECT_THAT(seen, HasSubstr("toast: Recorded " + Path("tv.toml") + ". Play it: vtv run "));
    const std::string scenario = Read("tv.toml");
    EXPECT_THAT(scenario,
                AllOf(HasSubstr("press = \"voice-wake-up\""), HasSubstr("choose = 2"),
                      HasSubstr("sees = [\"box\", \"application\"]"),
                      HasSubstr("finish = \"org.nemra.voice-onboarding\""),
                      HasSubstr("network = \"disconnected\""), HasSubstr("voice-guide = \"on\"")));
    Ok({"run", Path("tv.toml")});
    Ok({"run", "--window", Path("tv.toml")});
    // What came afterwards is no part of it, and another one goes into another file.
    Keys("panel\nnetwork\nrecord\naccount\nrecord\n");
    EXPECT_EQ(Read("tv.toml"), scenario);
    EXPECT_THAT(Read("tv-2.toml"), AllOf(HasSubstr("account = \"signed-out\""),
                                         Not(HasSubstr("network = \"connected\""))));
}

TEST_F(PanelTest, WhatIsPressedIsRecordedIntoAScenarioThatWasBegunElsewhere) {
    Make("monitor-es");
    Ok({"record", "start", Path("mine.toml"), "--tv", "tv"});
    EXPECT_THAT(Keys("panel\ndown\nok\nshow\n"), HasSubstr("R  recording mine.toml\n"));
    Ok({"record", "stop", "--tv", "tv"});
    EXPECT_THAT(Read("mine.toml"),
                AllOf(HasSubstr("press = \"voice-wake-up\""), HasSubstr("refused = true"),
                      HasSubstr("sees = [\"reason\"]")));
    Ok({"run", Path("mine.toml")});
}

TEST_F(PanelTest, WhatCannotBeRecordedIsNotDone) {
    Make("farfield-eu");
    Ok({"record", "start", Path("mine.toml"), "--tv", "tv"});
    Write("mine.toml", "title = \"by hand\"\n");
    const std::string before = Page("tv");
    const std::string seen = Keys("down\nok\nshow\npanel\naccount\nshow\n");
    EXPECT_THAT(seen, AllOf(HasSubstr("toast: " + Path("mine.toml")),
                            HasSubstr("> Hands-free Wake-up = On\n")));
    EXPECT_EQ(Page("tv"), before);
    EXPECT_EQ(Read("mine.toml"), "title = \"by hand\"\n");
}

TEST_F(PanelTest, ThePageIsDrawnAsEverOnceItIsClosed) {
    Make("farfield-eu");
    Keys("picture " + Path("before.png") + "\npanel\npicture " + Path("open.png") +
         "\npanel\npicture " + Path("after.png") + "\n");
    EXPECT_EQ(Read("before.png"), Read("after.png"));
    EXPECT_NE(Read("before.png"), Read("open.png"));
}
