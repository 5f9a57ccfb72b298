// The commands of models run only where the user has allowed them.
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "applications_fixture.h"

namespace {

using vtv::ErrorKind;

// A TV whose wizard is a command that leaves a file, and a list of allowed commands of the test's
// own.
class CommandsTest : public ApplicationsTest {
  protected:
    CommandsTest() {
        setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
        std::filesystem::create_directory(folder / "config");
    }
    ~CommandsTest() override { unsetenv("XDG_CONFIG_HOME"); }

    std::string TurnOnCommand(const std::string& command) {
        TurnOnText("[[packages]]\napp = \"" + std::string(kWizard) + "\"\ncommand = '" + command +
                   "'\n");
        return command;
    }
    // Empty when it was started; otherwise why not. The command has ended then.
    std::string Launch() {
        const int result = aul_launch_app(kWizard, nullptr);
        EXPECT_TRUE(WaitUntilGone(kWizard));
        const std::string outcome = tv->Launches().back().outcome;
        EXPECT_EQ(result == 0, outcome == "started") << outcome;
        return outcome == "started" ? "" : outcome;
    }
    bool HasRun() { return std::filesystem::remove(folder / "owned"); }
    std::string Touch() const { return "/bin/touch " + (folder / "owned"); }
    std::string List() const { return folder / "config/vtv/allowed-commands.json"; }
};

TEST_F(CommandsTest, ACommandThatTheUserHasNotAllowedDoesNotRunAndSaysHowToAllowIt) {
    const std::string command = TurnOnCommand(Touch());
    const std::string outcome = Launch();
    EXPECT_NE(outcome.find("failed: "), std::string::npos) << outcome;
    EXPECT_NE(outcome.find("is not allowed"), std::string::npos) << outcome;
    EXPECT_NE(outcome.find("vtv app allow --command '" + command + "'"), std::string::npos)
        << outcome;
    EXPECT_FALSE(HasRun());
    EXPECT_FALSE(std::filesystem::exists(folder / "config/vtv")) << "nothing is kept unasked";
}

TEST_F(CommandsTest, AnAllowedCommandRunsOnEveryTvUntilItIsForbidden) {
    const std::string command = TurnOnCommand(Touch());
    vtv::AllowCommand(command);
    vtv::AllowCommand(command);
    EXPECT_EQ(vtv::AllowedCommands(), std::vector<std::string>{command});
    EXPECT_EQ(Launch(), "");
    EXPECT_TRUE(HasRun());
    TurnOnCommand(Touch());
    EXPECT_EQ(Launch(), "");
    EXPECT_TRUE(HasRun());
    EXPECT_TRUE(vtv::ForbidCommand(command));
    EXPECT_FALSE(vtv::ForbidCommand(command));
    EXPECT_NE(Launch(), "");
    EXPECT_FALSE(HasRun());
}

TEST_F(CommandsTest, OnlyTheVeryCommandIsAllowed) {
    vtv::AllowCommand(Touch());
    for (const std::string& other :
         {Touch() + " ", " " + Touch(), Touch() + "; true", Touch().substr(1), Touch() + "2"}) {
        TurnOnCommand(other);
        EXPECT_NE(Launch(), "") << other;
    }
    TurnOnText("[[packages]]\napp = \"org.nemra.wizard\"\ncommand = \"" + Touch() +
               "\\u0000; true\"\n");
    EXPECT_NE(Launch(), "");
    EXPECT_FALSE(HasRun());
}

TEST_F(CommandsTest, AListThatOthersMayHaveWrittenAllowsNothing) {
    vtv::AllowCommand(TurnOnCommand(Touch()));
    const std::string good = ReadText(List());
    const auto refused = [&](const std::string& what) {
        const std::string outcome = Launch();
        EXPECT_NE(outcome.find(folder / "config/vtv"), std::string::npos) << what << outcome;
        EXPECT_FALSE(HasRun()) << what;
    };
    chmod(List().c_str(), 0620);
    refused("writable for a group");
    chmod(List().c_str(), 0602);
    refused("writable for all");
    chmod(List().c_str(), 0600);
    chmod((folder / "config/vtv").c_str(), 0777);
    refused("in a folder that is writable for all");
    chmod((folder / "config/vtv").c_str(), 0700);
    if (geteuid() == 0) {
        ASSERT_EQ(chown(List().c_str(), 12345, 0), 0);
        refused("of another user");
        ASSERT_EQ(chown(List().c_str(), 0, 0), 0);
    }
    EXPECT_EQ(Launch(), "");
    EXPECT_TRUE(HasRun());
    std::filesystem::rename(List(), folder / "elsewhere");
    std::filesystem::create_symlink(folder / "elsewhere", List());
    refused("a link");
    std::filesystem::remove(List());
    ASSERT_EQ(mkfifo(List().c_str(), 0600), 0);
    refused("a pipe");
    std::filesystem::remove(List());
    for (const std::string& text : {std::string(), std::string("[]"), std::string("{"),
                                    std::string(5000, '['), good.substr(0, good.size() / 2)}) {
        WriteText(List(), text);
        refused(text);
    }
}

TEST_F(CommandsTest, TheListIsOnlyForItsUser) {
    vtv::AllowCommand("true");
    struct stat info{};
    ASSERT_EQ(stat(List().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600U);
}

TEST_F(CommandsTest, NothingIsAllowedInAFolderThatOthersCanWrite) {
    const std::string own = folder / "config/vtv";
    std::filesystem::create_directory(own);
    chmod(own.c_str(), 0777);
    const std::string error = ErrorOf(ErrorKind::kPlatform, [] { vtv::AllowCommand("true"); });
    EXPECT_EQ(error.rfind(own + ": can be written by others", 0), 0U) << error;
    EXPECT_TRUE(std::filesystem::is_empty(own));
}

TEST_F(CommandsTest, ACommandThatIsNotShownAsItIsCannotBeAllowed) {
    for (const std::string hidden :
         {"\n", "\r", "\x1b[2K", "\x7f", "\xc2\x9b", "\xe2\x80\xae", "\xe2\x80\x8b", "\xef\xbb\xbf",
          "\xe3\x85\xa4", "\xe1\x85\x9f"}) {
        const std::string command = "true" + hidden + "x";
        const std::string error = ErrorOf(ErrorKind::kUsage, [&] { vtv::AllowCommand(command); });
        EXPECT_NE(error.find("its character 5, U+"), std::string::npos) << error;
    }
    vtv::AllowCommand("/opt/Küche/テレビ 'x'");
    EXPECT_EQ(vtv::AllowedCommands().size(), 1U);
}

TEST_F(CommandsTest, NobodyIsToldToAllowACommandThatCannotBeAllowed) {
    TurnOnCommand("true\xe3\x85\xa4x");
    const std::string reason = Launch();
    EXPECT_NE(reason.find("cannot be, for its character 5, U+3164"), std::string::npos) << reason;
    EXPECT_EQ(reason.find("vtv app allow"), std::string::npos) << reason;
}

TEST_F(CommandsTest, NothingThatATvHoldsGrantsThePermission) {
    TurnOnCommand(Touch());
    std::filesystem::create_directories(tv->Dir() + "/vtv");
    vtv::AllowCommand(Touch());
    for (const std::string& place : {tv->Dir() + "/vtv/", tv->Dir() + "/", tv->Dir() + "/state/"}) {
        std::filesystem::copy_file(List(), place + "allowed-commands.json");
    }
    vtv::ForbidCommand(Touch());
    unsetenv("XDG_CONFIG_HOME");
    setenv("XDG_CONFIG_HOME", ".", 1);  // relative: from wherever vtv was started
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(tv->Dir());
    EXPECT_NE(Launch(), "");
    std::filesystem::current_path(before);
    EXPECT_FALSE(HasRun());
}

TEST_F(CommandsTest, WhatManyProcessesAllowAtOnceIsAllKept) {
    {
        std::vector<std::unique_ptr<Child>> children;
        for (int i = 0; i < 8; ++i) {
            children.push_back(std::make_unique<Child>(
                [i] { vtv::AllowCommand("command " + std::to_string(i)); }));
        }
    }
    EXPECT_EQ(vtv::AllowedCommands().size(), 8U);
}

TEST_F(CommandsTest, ACommandGetsTheExtrasAndTheTvAndIsNotFinished) {
    const std::string output = folder / "output";
    TurnOnText("[[packages]]\napp = \"org.example.tool\"\ncommand = \"" + (folder / "tool.sh") +
               " first\"\n");
    WriteText(folder / "tool.sh", "#!/bin/sh\necho \"$@ $VTV_APP_ID $VTV_TV\" > " + output +
                                      ".new; mv " + output + ".new " + output +
                                      "; exec sleep 60\n");
    chmod((folder / "tool.sh").c_str(), 0755);
    vtv::AllowCommand((folder / "tool.sh") + " first");
    EXPECT_EQ(LaunchWith("org.example.tool", "key", "a value"), 0);
    for (int i = 0; i < 1000 && !std::filesystem::exists(output); ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    EXPECT_EQ(ReadText(output), "first key=a value org.example.tool " + tv->Dir() + "\n");
    ErrorOf(ErrorKind::kUsage, [&] { tv->FinishApplication("org.example.tool"); });
    tv->CancelApplication("org.example.tool");
    EXPECT_FALSE(tv->IsRunning("org.example.tool"));
}

// What a TV writes could be a command elsewhere, in a file that a shell reads.
TEST_F(CommandsTest, ATvWithALinkOrAPipeAmongItsFilesIsNotOpenedAndNothingElsewhereIsChanged) {
    TurnOn();
    tv->LaunchApplication("org.none", {});
    const std::string dir = tv->Dir();
    vtv::PowerOff();
    tv.reset();
    const std::string elsewhere = folder / "elsewhere";
    WriteText(elsewhere, "mine\n");
    for (const std::string name : {"/launches.jsonl", "/log/tv.log", "/log/applications.log",
                                   "/trace/events", "/tv.toml", "/settings", "/log", "/apps"}) {
        const std::string kept = folder / "kept";
        const bool there = std::filesystem::exists(dir + name);
        if (there) {
            std::filesystem::rename(dir + name, kept);
        }
        std::filesystem::create_symlink(std::filesystem::is_directory(kept) ? kept : elsewhere,
                                        dir + name);
        EXPECT_NE(ErrorOf(ErrorKind::kUsage, [&] { vtv::Tv other(dir); }).find(dir + name),
                  std::string::npos);
        std::filesystem::remove(dir + name);
        if (there) {
            std::filesystem::rename(kept, dir + name);
        }
        EXPECT_EQ(ReadText(elsewhere), "mine\n") << name;
    }
    ASSERT_EQ(mkfifo((dir + "/state/pipe").c_str(), 0600), 0);
    ErrorOf(ErrorKind::kUsage, [&] { vtv::Tv other(dir); });
    std::filesystem::remove(dir + "/state/pipe");
    std::filesystem::remove(dir + "/apps/.lock");
    std::filesystem::create_symlink(folder / "none", dir + "/apps/.lock");
    Open(dir);
    tv->LaunchApplication(kWizard, {});
    EXPECT_FALSE(std::filesystem::exists(folder / "none"));
    tv->PowerCycle();
}

}  // namespace
