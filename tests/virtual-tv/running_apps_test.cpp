// What runs on a TV is what holds the lock on its file; nothing else is believed or sent a signal.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <sstream>

#include "applications_fixture.h"

namespace {

using vtv::ErrorKind;

using RunningAppsTest = ApplicationsTest;

// A process that is no application of any TV, in a process group of its own.
class Sentinel {
  public:
    Sentinel()
        : child_([] {
              setpgid(0, 0);
              pause();
          }) {
        setpgid(child_.Pid(), child_.Pid());
    }
    ~Sentinel() { child_.Kill(); }  // the child is waited for afterwards

    int Pid() const { return child_.Pid(); }
    bool Lives() const { return waitpid(child_.Pid(), nullptr, WNOHANG) == 0; }
    // As the kernel tells it: with the number, what names a process.
    std::string Start() const {
        const std::string text = ReadText("/proc/" + std::to_string(Pid()) + "/stat");
        std::istringstream fields(text.substr(text.rfind(')') + 1));
        std::string field;
        for (int i = 3; i <= 22; ++i) {
            fields >> field;
        }
        return field;
    }

  private:
    Child child_;
};

std::string RecordOf(const std::string& pid, const std::string& start) {
    return R"({"app":"org.nemra.wizard","pid":)" + pid + R"(,"start":)" + start +
           R"(,"since":1,"extras":[]})";
}

TEST_F(RunningAppsTest, AFileThatNamesAnyProcessMakesItNoApplicationAndSendsItNoSignal) {
    TurnOn();
    Sentinel sentinel;
    const std::string pid = std::to_string(sentinel.Pid());
    const std::string file = tv->Dir() + "/apps/" + pid + ".json";
    WriteText(file, RecordOf(pid, sentinel.Start()));
    EXPECT_FALSE(tv->IsRunning(kWizard));
    EXPECT_FALSE(std::filesystem::exists(file)) << "what nobody holds is forgotten";
    WriteText(file, RecordOf(pid, sentinel.Start()));
    ErrorOf(ErrorKind::kNoSuch, [&] { tv->CancelApplication(kWizard); });
    WriteText(file, RecordOf(pid, sentinel.Start()));
    tv->PowerCycle();
    EXPECT_TRUE(sentinel.Lives());
}

// Minus the number of a process group is what kill() takes for the whole group, as it takes -1 for
// every process of the user.
TEST_F(RunningAppsTest, AFileThatNamesAGroupOfProcessesSendsItNoSignal) {
    TurnOn();
    Sentinel sentinel;
    const std::string group = "-" + std::to_string(sentinel.Pid());
    for (const std::string& name : {group, std::to_string(sentinel.Pid()), std::string("none")}) {
        const std::string file = tv->Dir() + "/apps/" + name + ".json";
        WriteText(file, RecordOf(group, "-1"));
        EXPECT_FALSE(tv->IsRunning(kWizard)) << name;
        ErrorOf(ErrorKind::kNoSuch, [&] { tv->CancelApplication(kWizard); });
        tv->PowerCycle();
        EXPECT_TRUE(sentinel.Lives()) << name;
        EXPECT_EQ(tv->Problems().size(), 1u) << name;
        std::filesystem::remove(file);
    }
}

TEST_F(RunningAppsTest, AProcessThatDoesNotHoldTheLockItselfIsNoApplication) {
    TurnOn();
    Sentinel sentinel;
    const std::string pid = std::to_string(sentinel.Pid());
    const std::string file = tv->Dir() + "/apps/" + pid + ".json";
    WriteText(file, RecordOf(pid, sentinel.Start()));
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    Child holder([&] {
        const int fd = open(file.c_str(), O_RDWR);
        struct flock lock{};
        lock.l_type = F_WRLCK;
        fcntl(fd, F_SETLK, &lock);
        static_cast<void>(write(ready[1], "x", 1));
        pause();
    });
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    ErrorOf(ErrorKind::kNoSuch, [&] { tv->CancelApplication(kWizard); });
    tv->PowerCycle();
    EXPECT_TRUE(sentinel.Lives());
    EXPECT_EQ(waitpid(holder.Pid(), nullptr, WNOHANG), 0);
    EXPECT_EQ(tv->Problems().size(), 1u);
    holder.Kill();
}

TEST_F(RunningAppsTest, DamageAmongTheRunningApplicationsIsNamedAndTheOthersAreStillSeen) {
    TurnOn();
    aul_launch_app(kWizard, nullptr);
    const std::string apps = tv->Dir() + "/apps/";
    const std::vector<std::pair<std::string, std::string>> damaged = {
        {"none", RecordOf("4000001", "1")},
        {"0", RecordOf("0", "1")},
        {"1", RecordOf("1", "1")},
        {"-1", RecordOf("-1", "-1")},
        {"4000002", RecordOf("-1", "-1")},
        {"4000003", RecordOf("\"x\"", "1")},
        {"4000004", RecordOf("4000004.5", "1")},
        {"4000005", RecordOf("99999999999999999999", "1")},
        {"4000006", R"({"app":[],"pid":4000006,"since":1,"extras":[]})"},
        {"4000007", R"({"app":"a","pid":4000007,"since":"now","extras":[]})"},
        {"4000008", R"({"app":"a","pid":4000008,"since":1,"extras":[7]})"},
        {"4000009", R"({"app":"a","pid":4000009,"since":1,"extras":{"a":"b"}})"},
        {"4000010", "{"},
        {"4000011", ""},
        {"4000012", "[]"},
        {"4000013", std::string(5000, '[')},
    };
    for (const auto& [name, text] : damaged) {
        WriteText(apps + name + ".json", text);
        EXPECT_EQ(tv->RunningApplications().size(), 1u) << name;
        const std::vector<std::string> problems = tv->Problems();
        ASSERT_EQ(problems.size(), 1u) << name;
        EXPECT_NE(problems[0].find(apps + name + ".json: "), std::string::npos) << problems[0];
        std::filesystem::remove(apps + name + ".json");
    }
    tv->CancelApplication(kWizard);
}

TEST_F(RunningAppsTest, LinksPipesAndFoldersAmongTheRunningApplicationsAreNamedAndNotFollowed) {
    TurnOn();
    const std::string apps = tv->Dir() + "/apps/";
    WriteText(folder / "elsewhere", RecordOf("4000001", "1"));
    std::filesystem::create_symlink(folder / "elsewhere", apps + "4000001.json");
    ASSERT_EQ(mkfifo((apps + "4000002.json").c_str(), 0600), 0);
    std::filesystem::create_directory(apps + "4000003.json");
    EXPECT_TRUE(tv->RunningApplications().empty());
    EXPECT_EQ(tv->Problems().size(), 3u);
    aul_launch_app(kWizard, nullptr);
    tv->CancelApplication(kWizard);
    EXPECT_TRUE(std::filesystem::exists(folder / "elsewhere"));
}

TEST_F(RunningAppsTest, AnApplicationThatEndsAtOnceIsForgottenAtOnceAndNeverResumed) {
    TurnOn();
    setenv("VTV_APP", "/bin/true", 1);
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(aul_launch_app(kWizard, nullptr), 0);
        EXPECT_TRUE(WaitUntilGone(kWizard));
    }
    unsetenv("VTV_APP");
    for (const vtv::Launch& launch : tv->Launches()) {
        EXPECT_EQ(launch.outcome, "started");
    }
}

TEST_F(RunningAppsTest, WhatAnApplicationLeavesBehindIsNotTheApplication) {
    TurnOn();
    WriteText(folder / "app", "#!/bin/sh\nsleep 60 &\necho $! > " + (folder / "child.new") +
                                  "\nmv " + (folder / "child.new") + " " + (folder / "child"));
    chmod((folder / "app").c_str(), 0755);
    setenv("VTV_APP", (folder / "app").c_str(), 1);
    ASSERT_EQ(aul_launch_app(kWizard, nullptr), 0);
    unsetenv("VTV_APP");
    EXPECT_TRUE(WaitUntilGone(kWizard));
    const int child = std::stoi(ReadText(folder / "child"));
    EXPECT_EQ(kill(child, 0), 0);
    kill(child, SIGKILL);
}

TEST_F(RunningAppsTest, AnApplicationThatLooksAtTheTvGoesOnRunning) {
    TurnOn();
    const std::string dir = tv->Dir();
    EXPECT_EQ(InChild([&] {
                  vtv::Tv other(dir);
                  other.EnterApplication(kWizard, {});
                  const bool once = other.IsRunning(kWizard) && other.Problems().empty();
                  const bool again = InChild([&] { return tv->IsRunning(kWizard) ? 0 : 1; }) == 0;
                  return once && again && other.IsRunning(kWizard) ? 0 : 1;
              }),
              0);
    EXPECT_FALSE(tv->IsRunning(kWizard));
}

}  // namespace
