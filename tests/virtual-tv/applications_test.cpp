// Applications: launched, running, finished, cancelled, ended; each as a process of its own.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <set>
#include <thread>

#include "applications_fixture.h"
#include "platform/applications.h"

namespace {

using vtv::ErrorKind;
using vtv::Value;

constexpr char kOnboarding[] = "org.nemra.voice-onboarding";
constexpr char kPopup[] = "org.nemra.alert-syspopup";
constexpr char kGoogle[] = "com.vantelo.tv.google-assistant";
constexpr char kCurrent[] = "db/multi-assistant/default_assistant_appid";

TEST_F(ApplicationsTest, ALaunchIsRecordedWithItsExtrasAndTime) {
    TurnOn();
    tv->SetApplications(vtv::ApplicationMode::kRecord);
    EXPECT_EQ(LaunchWith(kWizard, "type", "PIVORA_SETUP"), 0);
    EXPECT_EQ(LaunchWith("org.none", "a", "b"), -1);
    const auto launches = tv->Launches();
    ASSERT_EQ(launches.size(), 2u);
    EXPECT_EQ(launches[0].appId, kWizard);
    EXPECT_EQ(launches[0].via, "aul");
    EXPECT_EQ(launches[0].extras, (vtv::Extras{{"type", "PIVORA_SETUP"}}));
    EXPECT_EQ(launches[0].outcome, "recorded");
    EXPECT_LE(launches[0].time, std::chrono::system_clock::now());
    EXPECT_EQ(launches[1].outcome, "failed: org.none is not installed");
    EXPECT_FALSE(tv->IsRunning(kWizard));
    EXPECT_TRUE(LogHas("launch of org.nemra.wizard type=PIVORA_SETUP: recorded"));
}

TEST_F(ApplicationsTest, BehindAMarkStandsOnlyWhatWasLaunchedSince) {
    TurnOn();
    tv->SetApplications(vtv::ApplicationMode::kRecord);
    EXPECT_EQ(LaunchWith(kWizard, "type", "before"), 0);
    const auto mark = tv->LaunchMark();
    EXPECT_TRUE(tv->LaunchesSince(mark).empty());
    EXPECT_EQ(LaunchWith(kGoogle, "Login", "1"), 0);
    ASSERT_EQ(tv->LaunchesSince(mark).size(), 1U);
    EXPECT_EQ(tv->LaunchesSince(mark)[0].appId, kGoogle);
    EXPECT_EQ(tv->Launches().size(), 2U);
    const auto end = tv->LaunchMark();
    std::filesystem::remove(tv->Dir() + "/launches.jsonl");
    EXPECT_EQ(LaunchWith(kWizard, "type", "after"), 0);
    ASSERT_EQ(tv->LaunchesSince(end).size(), 1U) << "a list that was removed begins anew";
}

TEST_F(ApplicationsTest, AppControlSendsOperationAddresseeAndExtrasInTheirOrder) {
    TurnOn();
    tv->SetApplications(vtv::ApplicationMode::kRecord);
    app_control_h control = nullptr;
    ASSERT_EQ(app_control_create(&control), 0);
    EXPECT_NE(app_control_send_launch_request(control, nullptr, nullptr), 0)
        << "nobody is addressed";
    EXPECT_EQ(app_control_set_operation(control, APP_CONTROL_OPERATION_DEFAULT), 0);
    EXPECT_EQ(app_control_set_app_id(control, kPopup), 0);
    EXPECT_EQ(app_control_add_extra_data(control, "type", "notification"), 0);
    EXPECT_EQ(app_control_add_extra_data(control, "text", "two\nlines \"quoted\" 語"), 0);
    EXPECT_EQ(app_control_add_extra_data(control, "timeout", "7"), 0);
    EXPECT_EQ(app_control_add_extra_data(control, "type", "again"), 0);
    EXPECT_EQ(app_control_send_launch_request(control, nullptr, nullptr), 0);
    EXPECT_EQ(app_control_destroy(control), 0);
    const auto launches = tv->Launches();
    ASSERT_EQ(launches.size(), 1u);
    EXPECT_EQ(launches[0].via, "app-control");
    EXPECT_EQ(launches[0].operation, "default");
    EXPECT_EQ(
        launches[0].extras,
        (vtv::Extras{{"type", "again"}, {"text", "two\nlines \"quoted\" 語"}, {"timeout", "7"}}));
}

TEST_F(ApplicationsTest, NullHandlesAreFailures) {
    TurnOn();
    EXPECT_NE(app_control_create(nullptr), 0);
    EXPECT_NE(app_control_set_app_id(nullptr, "x"), 0);
    EXPECT_NE(app_control_destroy(nullptr), 0);
    EXPECT_NE(bundle_add_str(nullptr, "a", "b"), 0);
    EXPECT_NE(bundle_free(nullptr), 0);
    EXPECT_NE(aul_launch_app(nullptr, nullptr), 0);
    EXPECT_NE(app_manager_terminate_app(nullptr), 0);
    app_context_h context = nullptr;
    EXPECT_NE(app_manager_get_app_context("", &context), 0);
    EXPECT_EQ(context, nullptr);
}

TEST_F(ApplicationsTest, ALaunchedApplicationIsAProcessThatEveryProcessOfTheTvSees) {
    TurnOn();
    const std::string dir = tv->Dir();
    ASSERT_EQ(LaunchWith(kWizard, "type", "PIVORA_SETUP"), 0);
    const auto running = tv->RunningApplications();
    ASSERT_EQ(running.size(), 1u);
    EXPECT_EQ(running[0].appId, kWizard);
    EXPECT_EQ(running[0].extras, (vtv::Extras{{"type", "PIVORA_SETUP"}}));
    EXPECT_EQ(kill(running[0].pid, 0), 0);
    EXPECT_EQ(InChild([&] { return vtv::Tv(dir).IsRunning(kWizard) ? 0 : 1; }), 0);
    tv->CancelApplication(kWizard);
    EXPECT_FALSE(tv->IsRunning(kWizard));
}

TEST_F(ApplicationsTest, ALaunchLeavesNoChildAndOutlivesItsLauncher) {
    TurnOn();
    const std::string dir = tv->Dir();
    EXPECT_EQ(InChild([&] {
                  vtv::Tv other(dir);
                  vtv::PowerOn(other);
                  const int result = aul_launch_app(kWizard, nullptr);
                  return result == 0 && waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD ? 0
                                                                                               : 1;
              }),
              0);
    EXPECT_TRUE(tv->IsRunning(kWizard));
    tv->FinishApplication(kWizard);
}

TEST_F(ApplicationsTest, ALaunchDoesNotWaitForTheApplication) {
    TurnOn();
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_EQ(aul_launch_app(kWizard, nullptr), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
    tv->CancelApplication(kWizard);
}

TEST_F(ApplicationsTest, ARunningApplicationIsResumedAndNotStartedTwice) {
    TurnOn();
    aul_launch_app(kWizard, nullptr);
    aul_launch_app(kWizard, nullptr);
    EXPECT_EQ(tv->RunningApplications().size(), 1u);
    EXPECT_EQ(tv->Launches()[1].outcome, "resumed");
    EXPECT_EQ(tv->Launches()[1].pid, tv->Launches()[0].pid);
    tv->CancelApplication(kWizard);
}

TEST_F(ApplicationsTest, TheAppManagerFindsAndEndsWhatRuns) {
    TurnOn();
    app_context_h context = nullptr;
    EXPECT_NE(app_manager_get_app_context(kGoogle, &context), 0);
    aul_launch_app(kGoogle, nullptr);
    ASSERT_EQ(app_manager_get_app_context(kGoogle, &context), 0);
    EXPECT_EQ(app_manager_terminate_app(context), 0);
    EXPECT_TRUE(WaitUntilGone(kGoogle));
    EXPECT_NE(app_manager_terminate_app(context), 0);
    EXPECT_TRUE(tv->OwnerFiles().empty()) << "an application that was ended has done nothing";
}

TEST_F(ApplicationsTest, ADeadApplicationIsForgotten) {
    TurnOn();
    aul_launch_app(kWizard, nullptr);
    kill(tv->RunningApplications().at(0).pid, SIGKILL);
    EXPECT_TRUE(WaitUntilGone(kWizard));
    EXPECT_FALSE(std::filesystem::exists(tv->Dir() + "/apps/" +
                                         std::to_string(tv->Launches()[0].pid) + ".json"));
    ErrorOf(ErrorKind::kNoSuch, [&] { tv->FinishApplication(kWizard); });
}

TEST_F(ApplicationsTest, APowerCycleEndsEverythingThatRuns) {
    TurnOn();
    aul_launch_app(kWizard, nullptr);
    aul_launch_app(kGoogle, nullptr);
    tv->PowerCycle();
    EXPECT_TRUE(tv->RunningApplications().empty());
}

// --- What finishing does ---

TEST_F(ApplicationsTest, TheWizardAgreesToTheTerms) {
    TurnOn();
    tv->SetConsent("tnc", false);
    tv->SetConsent("pp", false);
    EXPECT_EQ(Finish(kWizard, "type", "PIVORA_SETUP"), "");
    EXPECT_TRUE(tv->Consent("tnc"));
    EXPECT_TRUE(tv->Consent("pp"));
}

TEST_F(ApplicationsTest, ACancelledWizardAgreesToNothing) {
    TurnOn();
    tv->SetConsent("tnc", false);
    aul_launch_app(kWizard, nullptr);
    tv->CancelApplication(kWizard);
    EXPECT_FALSE(tv->Consent("tnc"));
    EXPECT_TRUE(LogHas("org.nemra.wizard cancelled"));
}

TEST_F(ApplicationsTest, TheAccountScreenSignsIn) {
    TurnOn();
    tv->SetSignedIn(false);
    EXPECT_EQ(Finish(tv->GetModel().accountUi, "a", "b"), "");
    EXPECT_TRUE(tv->SignedIn());
}

TEST_F(ApplicationsTest, EachAssistantsApplicationLeavesItsMark) {
    TurnOn("farfield-cn");
    tv->Set("db/voice-app/activate_first_time", true);
    tv->Set("db/tencent-voice-assistant/voice-setting", "{\"other\":1}");
    EXPECT_EQ(Finish(kGoogle, "Login", "1"), "");
    EXPECT_EQ(Finish("com.vantelo.tv.salute-assistant", "PAGETYPE", "ONBOARDING"), "");
    EXPECT_EQ(Finish("com.vantelo.tv.tencent-voice-chrome", "show_onboarding", "ONBOARDING"), "");
    EXPECT_EQ(Finish("com.vantelo.tv.voice-instant-app", "show_onboarding", "ONBOARDING"), "");
    EXPECT_EQ(tv->OwnerFiles(), (std::vector<std::string>{"share/.voice/ga_login_success",
                                                          "share/.voice/salute_login_success"}));
    EXPECT_EQ(tv->Get("db/voice-app/activate_first_time"), Value(false));
    EXPECT_EQ(tv->Get("db/tencent-voice-assistant/voice-setting"),
              Value("{\"onboarding_completed\":true,\"other\":1}"));
}

TEST_F(ApplicationsTest, TheGenericOnboardingSetsUpTheCurrentAssistantAndWhateverItNeeds) {
    TurnOn();
    tv->SetConsent("tnc", false);
    tv->SetSignedIn(false);
    tv->Set(kCurrent, "com.vantelo.tv.alexa");
    EXPECT_EQ(Finish(kOnboarding, "type", "ONBOARDING_SETUP"), "");
    EXPECT_EQ(tv->OwnerFiles(), std::vector<std::string>{"share/.voice/alexa_login_success"});
    EXPECT_TRUE(tv->Consent("tnc"));
    EXPECT_FALSE(tv->SignedIn()) << "Alexa does not need the maker's account";

    tv->Set(kCurrent, "com.vantelo.tv.voice-instant-app");
    tv->Set("db/voice-app/activate_first_time", true);
    EXPECT_EQ(Finish(kOnboarding, "type", "ONBOARDING_SETUP"), "");
    EXPECT_EQ(tv->Get("db/voice-app/activate_first_time"), Value(false));
    EXPECT_TRUE(tv->SignedIn());
}

TEST_F(ApplicationsTest, AReasonIsHeardWhateverElseHappensInItsFolder) {
    TurnOn();
    tv->SetNetwork(vtv::Network::kDisconnected);
    std::atomic<bool> isOver = false;
    std::thread others([&] {
        while (!isOver) {
            close(open((tv->Dir() + "/apps/.lock").c_str(), O_RDWR | O_CLOEXEC));
        }
    });
    std::set<std::string> reasons;
    for (int i = 0; i < 200 && reasons.size() < 2; ++i) {
        reasons.insert(Finish(kOnboarding, "type", "ONBOARDING_SETUP"));
    }
    isOver = true;
    others.join();
    EXPECT_EQ(reasons.size(), 1U) << *reasons.rbegin();
    EXPECT_NE(reasons.begin()->find("no network"), std::string::npos);
}

TEST_F(ApplicationsTest, WithoutANetworkTheSetupFailsWithItsReason) {
    TurnOn();
    tv->SetNetwork(vtv::Network::kDisconnected);
    tv->SetConsent("tnc", false);
    EXPECT_NE(Finish(kOnboarding, "type", "ONBOARDING_SETUP").find("no network"),
              std::string::npos);
    EXPECT_NE(Finish(kGoogle, "Login", "1").find("no network"), std::string::npos);
    EXPECT_TRUE(tv->OwnerFiles().empty());
    EXPECT_FALSE(tv->Consent("tnc"));
}

TEST_F(ApplicationsTest, WhatCannotBeDoneWithoutANetworkIsDoneOnceThereIsOne) {
    TurnOn();
    tv->SetNetwork(vtv::Network::kDisconnected);
    tv->SetConsent("tnc", false);
    ASSERT_EQ(LaunchWith(kOnboarding, "type", "ONBOARDING_SETUP"), 0);
    for (int i = 0; i < 2; ++i) {
        const std::string why =
            ErrorOf(vtv::ErrorKind::kNo, [&] { tv->FinishApplication(kOnboarding); });
        EXPECT_NE(why.find("no network"), std::string::npos) << why;
        EXPECT_TRUE(tv->IsRunning(kOnboarding));
        EXPECT_FALSE(tv->Consent("tnc"));
    }
    tv->SetNetwork(vtv::Network::kConnected);
    EXPECT_NO_THROW(tv->FinishApplication(kOnboarding));
    EXPECT_FALSE(tv->IsRunning(kOnboarding));
    EXPECT_TRUE(tv->Consent("tnc"));
}

TEST_F(ApplicationsTest, AnApplicationEndsWhenItsTvIsRemoved) {
    TurnOn();
    ASSERT_EQ(LaunchWith(kWizard, "a", "b"), 0);
    const int pid = tv->RunningApplications().at(0).pid;
    const int process = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
    ASSERT_GE(process, 0);
    // The application may be making a file of its own there meanwhile.
    std::error_code error;
    do {
        std::filesystem::remove_all(tv->Dir(), error);
    } while (error == std::errc::directory_not_empty);
    ASSERT_FALSE(error) << error.message();
    pollfd end{process, POLLIN, 0};
    EXPECT_EQ(poll(&end, 1, 10000), 1) << "it runs on";
    syscall(SYS_pidfd_send_signal, process, SIGKILL, nullptr, 0);
    close(process);
    tv.reset();
}

TEST_F(ApplicationsTest, APopupShowsItsTextForItsTimeout) {
    TurnOn();
    app_control_h control = nullptr;
    app_control_create(&control);
    app_control_set_app_id(control, kPopup);
    app_control_add_extra_data(control, "text", "Your voice assistant has been changed.");
    app_control_add_extra_data(control, "timeout", "1");
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_EQ(app_control_send_launch_request(control, nullptr, nullptr), 0);
    app_control_destroy(control);
    EXPECT_TRUE(tv->IsRunning(kPopup));
    EXPECT_TRUE(WaitUntilGone(kPopup));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(950));
    EXPECT_TRUE(LogHas("shows: Your voice assistant has been changed."));
}

TEST_F(ApplicationsTest, AutomaticApplicationsFinishByThemselves) {
    TurnOn();
    tv->SetApplications(vtv::ApplicationMode::kAuto);
    tv->SetConsent("tnc", false);
    aul_launch_app(kWizard, nullptr);
    EXPECT_TRUE(WaitUntilGone(kWizard));
    EXPECT_TRUE(tv->Consent("tnc"));
}

TEST_F(ApplicationsTest, AProgramThatCannotBeStartedIsAFailedLaunch) {
    TurnOn();
    setenv("VTV_APP", (folder / "none").c_str(), 1);
    EXPECT_NE(aul_launch_app(kWizard, nullptr), 0);
    unsetenv("VTV_APP");
    EXPECT_EQ(tv->Launches().at(0).outcome, "failed: No such file or directory");
    EXPECT_FALSE(tv->IsRunning(kWizard));
}

TEST_F(ApplicationsTest, ALaunchThatCannotBeRecordedIsAFailureWithTheFile) {
    TurnOn();
    // What is allowed is less than what is there, and more than the log needs.
    constexpr rlim_t kMost = 1 << 19;
    WriteText(tv->Dir() + "/launches.jsonl", std::string(kMost, '\n'));
    const auto ignored = signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small = {kMost, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    tv->LaunchApplication("org.nemra.wizard", {});
    setrlimit(RLIMIT_FSIZE, &before);
    signal(SIGXFSZ, ignored);
    const std::vector<std::string> failures = tv->TakeFailures();
    ASSERT_EQ(failures.size(), 1u);
    EXPECT_EQ(failures[0],
              tv->Dir() + "/launches.jsonl: the launch cannot be recorded: File too large.");
    EXPECT_TRUE(LogHas(failures[0]));
}

TEST_F(ApplicationsTest, ANoteThatWasCutOffCostsNoOther) {
    TurnOn();
    tv->SetApplications(vtv::ApplicationMode::kRecord);
    tv->LaunchApplication(kWizard, {});
    const std::string file = tv->Dir() + "/launches.jsonl";
    std::filesystem::resize_file(file, std::filesystem::file_size(file) - 5);
    const auto mark = tv->LaunchMark();
    for (int more = 0; more < 2; ++more) {
        tv->LaunchApplication(kWizard, {{"more", std::to_string(more)}});
    }
    EXPECT_EQ(tv->Launches().size(), 2u);
    EXPECT_EQ(tv->LaunchesSince(mark).size(), 2u);
}

TEST_F(ApplicationsTest, AFullListOfLaunchesIsSetAsideAndNoneIsMissedMeanwhile) {
    TurnOn();
    tv->SetApplications(vtv::ApplicationMode::kRecord);
    for (int i = 0; i < 300; ++i) {
        const auto mark = tv->LaunchMark();
        tv->LaunchApplication(kWizard, {{"text", std::string(10000, 'x')}});
        ASSERT_EQ(tv->LaunchesSince(mark).size(), 1U) << i;
    }
    EXPECT_GT(tv->Launches().size(), 100U);
    std::uintmax_t bytes = 0;
    for (const auto& file : std::filesystem::directory_iterator(tv->Dir())) {
        bytes += file.is_regular_file() ? file.file_size() : 0;
    }
    EXPECT_LT(bytes, 5U << 19U);
}

TEST_F(ApplicationsTest, NoLaunchBehindAMarkIsMissedWhenTheListIsSetAside) {
    TurnOn();
    tv->SetApplications(vtv::ApplicationMode::kRecord);
    const auto beginning = tv->LaunchMark();
    tv->LaunchApplication(kWizard, {});
    const auto mark = tv->LaunchMark();
    for (int i = 0; i < 130; ++i) {
        tv->LaunchApplication(kWizard, {{"text", std::string(10000, 'x')}});
    }
    const std::string file = tv->Dir() + "/launches.jsonl";
    ASSERT_TRUE(std::filesystem::exists(file + ".1"));
    EXPECT_EQ(tv->LaunchesSince(beginning).size(), 131U);
    EXPECT_EQ(tv->LaunchesSince(mark).size(), 130U);
    EXPECT_TRUE(tv->LaunchesSince(tv->LaunchMark()).empty());
    std::filesystem::rename(file, file + ".1");  // as between two that add to it
    EXPECT_TRUE(tv->LaunchesSince(tv->LaunchMark()).empty());
}

TEST_F(ApplicationsTest, ALineOfLaunchesThatCannotBeReadIsAProblemOfTheTv) {
    TurnOn();
    tv->SetApplications(vtv::ApplicationMode::kRecord);
    tv->LaunchApplication(kWizard, {});
    EXPECT_TRUE(tv->Problems().empty());
    const std::string file = tv->Dir() + "/launches.jsonl";
    WriteText(file, ReadText(file) + "foreign\n[]\n");
    tv->LaunchApplication(kWizard, {});
    EXPECT_EQ(tv->Launches().size(), 2U);
    ASSERT_EQ(tv->Problems().size(), 1U);
    EXPECT_EQ(tv->Problems()[0],
              file + ":2: this line tells of no launch and is passed over. Remove it.");
    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    ASSERT_EQ(tv->Problems().size(), 1U);
    EXPECT_EQ(tv->Problems()[0].rfind(file + ": cannot be read: ", 0), 0U);
}

TEST_F(ApplicationsTest, WhatApplicationsPrintIsSetAsideWhenItIsFull) {
    TurnOn();
    const std::string file = tv->Dir() + "/log/applications.log";
    WriteText(file, std::string(1 << 20, 'x'));
    tv->LaunchApplication(kWizard, {});
    EXPECT_TRUE(std::filesystem::exists(file + ".1"));
    EXPECT_LT(std::filesystem::file_size(file), 1U << 20U);
}

TEST_F(ApplicationsTest, LaunchesOfManyProcessesAreAllRecordedWhole) {
    TurnOn();
    tv->SetApplications(vtv::ApplicationMode::kRecord);
    const std::string dir = tv->Dir();
    {
        std::vector<std::unique_ptr<Child>> children;
        for (int i = 0; i < 8; ++i) {
            children.push_back(std::make_unique<Child>([&] {
                vtv::Tv other(dir);
                for (int n = 0; n < 25; ++n) {
                    other.LaunchApplication(kWizard, {{"text", std::string(500, 'x')}});
                }
            }));
        }
    }
    EXPECT_EQ(tv->Launches().size(), 200u);
}

}  // namespace
