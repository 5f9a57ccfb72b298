// Every way through the page, by scripted keys and without a display: what is seen, what has the
// focus, what was launched. And what others do to the TV meanwhile.
#include "window_test.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

constexpr char kOrvikAlone[] =
    R"([{"VAOrder": 1, "VAId": "ORVIK2", "VAAppId": "com.vantelo.tv.voice-instant-app",
         "VAName": "Orvik", "VAFFSupport": true}])";

}  // namespace

TEST_F(WindowTest, OkTurnsASwitchOver) {
    Make("farfield-eu");
    const std::string seen = Keys("down\nok\nshow\n");
    EXPECT_THAT(seen, StartsWith("front: page\n"));
    EXPECT_THAT(seen, HasSubstr("> Hands-free Wake-up = Off (changed)\n"));
    EXPECT_EQ(Item("voice-wake-up", {"--tv", "tv"})["value"].asInt(), 0);
    Keys("down\nok\n");
    EXPECT_EQ(Item("voice-wake-up", {"--tv", "tv"})["value"].asInt(), 1);
}

TEST_F(WindowTest, TheListOpensOnTheCurrentChoiceAndBackLeavesItUnchanged) {
    Make("farfield-eu");
    const std::string seen = Keys("ok\nshow\ndown\nback\nshow\n");
    EXPECT_THAT(seen, AllOf(StartsWith("front: list\n"), HasSubstr(" > Orvik (current)\n"),
                            HasSubstr("   Google Assistant\n"), HasSubstr("\nfront: page\n")));
    EXPECT_EQ(Item("voice-assistant", {"--tv", "tv"})["value"].asInt(), 1);
}

TEST_F(WindowTest, AnotherAssistantIsAskedAboutAndThenSetUp) {
    Make("farfield-eu");
    const std::string seen = Keys("ok\ndown\nok\nshow\nok\nshow\nok\nuntil front: page\nshow\n");
    EXPECT_THAT(seen, AllOf(StartsWith("front: box\n"), HasSubstr("box: Change Voice Assistant\n"),
                            HasSubstr(" > [OK]\n   [Cancel]\n")));
    EXPECT_THAT(seen, AllOf(HasSubstr("front: application\n"),
                            HasSubstr("id: org.nemra.voice-onboarding\n"),
                            HasSubstr("with: type = ONBOARDING_SETUP\n"),
                            HasSubstr(" > [Finish]\n   [Cancel]\n")));
    // Once the assistant is set up, its items can be used.
    EXPECT_THAT(seen.substr(seen.rfind("front: ")),
                AllOf(HasSubstr("> Voice Assistant = Alexa"), Not(HasSubstr("(dimmed)"))));
    EXPECT_THAT(Launches(), HasSubstr("org.nemra.voice-onboarding  type=ONBOARDING_SETUP"));
}

TEST_F(WindowTest, TheSecondButtonOfTheBoxLaunchesNothing) {
    Make("farfield-eu");
    EXPECT_THAT(Keys("ok\ndown\nok\nright\nok\nshow\n"),
                AllOf(StartsWith("front: page\n"), HasSubstr("Voice Assistant = Orvik\n")));
    EXPECT_THAT(Launches(), HasSubstr("Nothing has been started yet."));
}

TEST_F(WindowTest, AnApplicationThatIsCancelledLeavesThePageAsItWas) {
    Make("farfield-eu");
    const std::string seen = Keys("ok\ndown\nok\nok\nright\nok\nuntil front: page\nshow\n");
    EXPECT_THAT(seen, HasSubstr("Alexa Settings (dimmed)"));
    EXPECT_THAT(Ok({"app", "list", "--tv", "tv"}), HasSubstr("No application is running."));
}

TEST_F(WindowTest, WhatCannotBeFinishedSaysSoAndStays) {
    Make("farfield-eu");
    Ok({"network", "disconnected", "--tv", "tv"});
    const std::string seen = Keys(
        "ok\ndown\ndown\nok\nok\nok\nuntil problem:\nshow\nback\n"
        "until front: page\nshow\n");
    EXPECT_THAT(seen, AllOf(StartsWith("front: application\n"), HasSubstr("\nproblem: ")));
    EXPECT_THAT(seen.substr(seen.rfind("front: ")), StartsWith("front: page\n"));
}

TEST_F(WindowTest, TheButtonOfADimmedItemsPopupStartsItsAction) {
    Make("modular-us");
    const std::string seen = Keys("down\ndown\ndown\ndown\ndown\nok\nshow\nok\nshow\n");
    EXPECT_THAT(seen, AllOf(StartsWith("front: box\n"), HasSubstr("> Orvik Settings (dimmed)\n"),
                            HasSubstr("box: Sign In\n"), HasSubstr(" > [Sign In]\n")));
    EXPECT_THAT(seen.substr(seen.rfind("front: ")), StartsWith("front: application\n"));
    EXPECT_THAT(Launches(), HasSubstr("started"));
}

TEST_F(WindowTest, ADimmedItemTellsItsReasonForAWhileAndSendsNothing) {
    Make("monitor-es");
    const std::string seen = Keys("down\nok\nshow\ngone toast:\nshow\n");
    EXPECT_THAT(seen, AllOf(HasSubstr("> Activación manos libres = Activado (dimmed)\n"),
                            HasSubstr("reason: El micrófono del dispositivo de sonido"),
                            HasSubstr("toast: El micrófono del dispositivo de sonido")));
    EXPECT_EQ(Item("voice-wake-up", {"--tv", "tv"})["value"].asInt(), 1);
}

TEST_F(WindowTest, TheSetupStandsInThePagesPlaceUntilItIsDone) {
    Make("out-of-the-box-us");
    const std::string seen = Keys(
        "show\nok\nuntil front: application\nshow\nok\n"
        "until front: page\nshow\n");
    EXPECT_THAT(seen, StartsWith("front: page\npage: Voice\n> Voice\n"));
    EXPECT_THAT(seen, HasSubstr("id: org.nemra.wizard\nwith: type = PIVORA_SETUP\n"));
}

TEST_F(WindowTest, ADimmedPageIsALineThatTellsWhy) {
    Make("projector-fr");
    EXPECT_THAT(Keys("ok\nshow\n"), AllOf(HasSubstr("> Voix (dimmed)\n"),
                                          HasSubstr("toast: Le microphone du téléviseur")));
}

TEST_F(WindowTest, ATvWithoutAPageSaysSo) {
    Make("no-voice");
    EXPECT_THAT(Keys("down\nok\nshow\n"), HasSubstr("empty: This TV has no Voice page now.\n"));
}

TEST_F(WindowTest, AnAssistantsOwnSettingsOpenAndCloseAgain) {
    Make("farfield-eu");
    const std::string seen = Keys("down\ndown\ndown\ndown\ndown\nok\nshow\nok\nshow\n");
    EXPECT_THAT(seen, AllOf(HasSubstr("application: Orvik Settings\n"), HasSubstr(" > [Close]\n")));
    EXPECT_THAT(seen.substr(seen.rfind("front: ")),
                AllOf(StartsWith("front: page\n"), HasSubstr("> Orvik Settings\n")));
}

TEST_F(WindowTest, BackOnThePageEndsTheWindowAndHomeLeavesEverything) {
    Make("farfield-eu");
    EXPECT_EQ(Keys("back\nshow\n"), "");
    EXPECT_THAT(Keys("down\ndown\nhome\nok\nok\nhome\nshow\n"),
                AllOf(StartsWith("front: page\n"), HasSubstr("> Voice Assistant = Orvik\n")));
}

TEST_F(WindowTest, WhatOthersChangeIsSeenAndTheFocusStays) {
    Make("farfield-eu");
    RunningVtv window(environment, Window("down\nshow\nuntil Hands-free Wake-up = Off\nshow\n"
                                          "until Sprache\nshow\n"));
    ASSERT_TRUE(window.WaitFor("> Hands-free Wake-up = On\n"));
    Ok({"choose", "voice-wake-up", "off", "--tv", "tv"});
    EXPECT_TRUE(window.WaitFor("> Hands-free Wake-up = Off (changed)\n")) << window.Text();
    Ok({"language", "de_DE", "--tv", "tv"});
    EXPECT_TRUE(window.WaitFor("> Freihändig aktivieren = Aus (changed)\n")) << window.Text();
    EXPECT_EQ(window.End().code, 0);
}

TEST_F(WindowTest, TheFocusGoesToTheNextItemWhenItsOwnVanishes) {
    Make("farfield-eu");
    RunningVtv window(environment, Window("show\ngone Voice Assistant\nshow\n"));
    ASSERT_TRUE(window.WaitFor("> Voice Assistant = Orvik\n"));
    Ok({"policy", "publish", "-", "--tv", "tv"}, kOrvikAlone);
    EXPECT_TRUE(window.WaitFor("> Hands-free Wake-up = On")) << window.Text();
    EXPECT_EQ(window.End().code, 0);
}

TEST_F(WindowTest, AnOpenBoxOutlivesAPolicyThatIsPublishedMeanwhile) {
    Make("farfield-eu");
    RunningVtv window(environment, Window("ok\ndown\nok\nshow\nuntil   Hands-free Wake-up = Off\n"
                                          "show\nok\nshow\n"));
    ASSERT_TRUE(window.WaitFor(" > [OK]\n"));
    Ok({"policy", "publish", "-", "--tv", "tv"}, kOrvikAlone);
    Ok({"choose", "voice-wake-up", "off", "--tv", "tv"});
    const Output end = window.End();
    EXPECT_EQ(end.code, 0) << end.err;
    // The box is still open, then answered; the choice is none any more.
    EXPECT_THAT(end.out, HasSubstr("= Off (changed)"));
    EXPECT_THAT(end.out.substr(end.out.rfind("front: ")), StartsWith("front: page\n"));
    EXPECT_THAT(Launches(), HasSubstr("Nothing has been started yet."));
}

TEST_F(WindowTest, ALaunchAndAnEndByOthersCoverAndUncoverThePage) {
    Make("farfield-eu");
    RunningVtv window(environment, Window("show\nuntil front: application\nshow\n"
                                          "until front: page\nshow\n"));
    ASSERT_TRUE(window.WaitFor("front: page\n"));
    Ok({"press", "voice-assistant", "--choose", "2", "--ok", "--tv", "tv"});
    ASSERT_TRUE(window.WaitFor("id: org.nemra.voice-onboarding\n")) << window.Text();
    Ok({"app", "cancel", "--tv", "tv"});
    const Output end = window.End();
    EXPECT_EQ(end.code, 0) << end.err;
    EXPECT_THAT(end.out.substr(end.out.rfind("front: ")), StartsWith("front: page\n"));
}

TEST_F(WindowTest, AToastStaysForItsTimeoutAndThenGoes) {
    Make("farfield-eu");
    // Set up, and awake: then the change is only told of.
    Keys("ok\ndown\nok\nok\nok\nuntil front: page\n");
    Ok({"choose", "voice-wake-up", "on", "--tv", "tv"});
    Ok({"choose", "voice-assistant", "1", "--tv", "tv"});
    const std::string seen =
        Keys("ok\ndown\nok\nok\nuntil toast:\nwait 6\nshow\ngone toast:\nshow\n");
    EXPECT_THAT(seen, HasSubstr("toast: Your voice assistant"));
    EXPECT_THAT(seen.substr(seen.rfind("front: ")), Not(HasSubstr("toast:")));
}

TEST_F(WindowTest, TheVoiceGuideSpeaksWhateverHasTheFocusInTheMenuLanguage) {
    Make("monitor-es");
    Keys("voice-guide\ndown\nok\n");
    EXPECT_EQ(Ok({"voice-guide", "--tv", "tv"}), "on\n");
    const std::string log = Ok({"log", "--tag", "VTV", "--tv", "tv"});
    EXPECT_THAT(log, HasSubstr("voice guide: Asistente de voz. Orvik"));
    EXPECT_THAT(log, HasSubstr("voice guide: Activación manos libres. Activado. no disponible. "
                               "El micrófono"));
    const size_t once = log.find("Activación manos libres. Activado");
    EXPECT_EQ(log.find("Activación manos libres. Activado", once + 1), std::string::npos);
    Keys("voice-guide\ndown\n");
    EXPECT_EQ(Ok({"voice-guide", "--tv", "tv"}), "off\n");
    EXPECT_THAT(Ok({"log", "--tag", "VTV", "--tv", "tv"}), Not(HasSubstr("voice guide: Siempre")));
}

TEST_F(WindowTest, TheVoiceGuideIsSwitchedThroughTheProvider) {
    Make("farfield-eu");
    Keys("voice-guide\n");
    EXPECT_THAT(Ok({"log", "--tv", "tv"}), HasSubstr("Turn ON"));
    Ok({"voice-guide", "off", "--tv", "tv"});
    EXPECT_THAT(Ok({"log", "--tv", "tv"}), HasSubstr("Turn OFF"));
}

TEST_F(WindowTest, AProviderThatCannotSwitchTheVoiceGuideSaysSo) {
    Make("farfield-eu");
    std::vector<std::string> words = Window("voice-guide\nshow\nkeys\nshow\n");
    words.insert(words.end(), {"--provider", std::string(FAKES) + "/libfake-sound.so"});
    const std::string seen = Ok(words);
    EXPECT_THAT(seen, HasSubstr("toast: "));
    EXPECT_THAT(seen, HasSubstr("does not export CSIMenuUtil::SetVoiceGuideOnOff(bool)."));
    EXPECT_EQ(Ok({"voice-guide", "--tv", "tv"}), "off\n");
    const Output refused = Vtv({"voice-guide", "on", "--tv", "tv", "--provider",
                                std::string(FAKES) + "/libfake-sound.so"});
    EXPECT_EQ(refused.code, 1);
    EXPECT_THAT(refused.err, HasSubstr("does not export"));
}

TEST_F(WindowTest, NothingIsLeftInTheHomeOfItsUser) {
    Make("farfield-eu");
    Keys("voice-guide\ndown\nvoice-guide\n");
    for (const auto& [file, content] : Contents(".")) {
        EXPECT_TRUE(file.find("tvs/") != std::string::npos ||
                    file.find("keys.txt") != std::string::npos ||
                    file.find(".cache/vtv/fonts") != std::string::npos)
            << file;
    }
}

TEST_F(WindowTest, TheKeysAreListedByAKeyAndAnyKeyClosesTheList) {
    Make("farfield-eu");
    const std::string seen = Keys("keys\nshow\ndown\nshow\n");
    EXPECT_THAT(seen, AllOf(StartsWith("front: box\n"), HasSubstr("voice guide on or off")));
    EXPECT_THAT(seen.substr(seen.rfind("front: ")),
                AllOf(StartsWith("front: page\n"), HasSubstr("> Voice Assistant")));
}

TEST_F(WindowTest, AFileOfKeysIsReadWholeBeforeAnyIsPressed) {
    Make("farfield-eu");
    const Output wrong = Vtv(Window("down\nok\nsideways\n"));
    EXPECT_EQ(wrong.code, 2);
    EXPECT_THAT(wrong.err, HasSubstr("keys.txt:3: \"sideways\" is no key"));
    EXPECT_EQ(Item("voice-wake-up", {"--tv", "tv"})["value"].asInt(), 1);
    for (const char* line : {"wait x", "wait", "wait -1", "until", "picture", "show me"}) {
        EXPECT_EQ(Vtv(Window(line)).code, 2) << line;
    }
    EXPECT_EQ(Vtv({"window", "--tv", "tv", "--keys", Path("none"), "--display", "none"}).code, 3);
    EXPECT_EQ(Vtv({"window", "--tv", "tv", "--display", "none"}).code, 2);
}

TEST_F(WindowTest, KeysCanComeFromTheStandardInput) {
    Make("farfield-eu");
    EXPECT_THAT(
        Ok({"window", "--tv", "tv", "--keys", "-", "--display", "none"}, "# comment\n\ndown\nshow"),
        HasSubstr("> Hands-free Wake-up = On\n"));
}

TEST_F(WindowTest, WithoutADisplayItSaysWhatToDo) {
    Make("farfield-eu");
    environment["DISPLAY"] = "";
    environment["WAYLAND_DISPLAY"] = "";
    const Output none = Vtv({"window", "--tv", "tv"});
    EXPECT_EQ(none.code, 4);
    EXPECT_THAT(none.err, AllOf(HasSubstr("no display"), HasSubstr("vtv picture")));
    environment["DISPLAY"] = ":4711";
    const Output wrong = Vtv({"window", "--tv", "tv"});
    EXPECT_EQ(wrong.code, 4);
    EXPECT_THAT(wrong.err, StartsWith("vtv: The display does not take a window"));
}
