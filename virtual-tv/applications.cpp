// Applications: how they are started, finished and ended; aul_launch_app and the app manager.
#include "applications.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <list>

#include "platform/applications.h"
#include "running_apps.h"
#include "serve.h"
#include "virtual-tv/model/applications.h"

struct app_context_s {
    std::string appId;
};

namespace vtv {

namespace {

constexpr char kModeKey[] = "applications";
constexpr auto kEndTimeout = std::chrono::seconds(10);

std::string Describe(int error) {
    return std::string("failed: ") + std::strerror(error);
}

std::vector<std::string> Arguments(const Tv::Impl& tv, const Launch& request,
                                   const Package* package, ApplicationMode mode) {
    std::vector<std::string> arguments;
    if (IsForeign(package)) {
        // The TV's own command, with the extras behind it.
        arguments = {"/bin/sh", "-c", "exec " + package->command + " \"$@\"", package->appId};
    } else {
        arguments = {AppProgram(), "--tv", tv.dir};
        if (mode == ApplicationMode::kAuto) {
            arguments.push_back("--auto");
        }
        arguments.push_back("--");
        arguments.push_back(request.appId);
    }
    for (const auto& [key, value] : request.extras) {
        arguments.push_back(key + "=" + value);
    }
    return arguments;
}

ApplicationMode ModeOf(const Tv::Impl& tv) {
    return ParseApplicationMode(tv.StateOr<std::string>(kModeKey, ToText(tv.model.applications)));
}

// Decides, starts and registers; writes outcome and pid.
void Start(Tv::Impl& tv, Launch* launch) {
    const Package* package = FindPackage(tv.model, launch->appId);
    if (!IsInstalled(tv.model, launch->appId)) {
        launch->outcome = "failed: " + launch->appId + " is not installed";
        return;
    }
    const ApplicationMode mode = ModeOf(tv);
    if (mode == ApplicationMode::kRecord) {
        launch->outcome = "recorded";
        return;
    }
    if (IsForeign(package)) {
        if (const std::string reason = WhyNotAllowed(package->command); !reason.empty()) {
            launch->outcome = "failed: " + launch->appId + " is not started: " + reason;
            return;
        }
    }
    // Nobody else starts the same application meanwhile, and it cannot end before it is registered.
    const FileLock lock(tv.dir, kAppsLock);
    for (const RunningApplication& running : ListRunning(tv.dir)) {
        if (running.appId == launch->appId && launch->appId != kNotification) {
            launch->outcome = "resumed";
            launch->pid = running.pid;
            return;
        }
    }
    Registration registration(tv.dir);
    if (registration.Error() != 0) {
        launch->outcome = Describe(registration.Error());
        return;
    }
    Program program;
    program.arguments = Arguments(tv, *launch, package, mode);
    program.environment = {"VTV_TV=" + tv.dir, "VTV_APP_ID=" + launch->appId};
    program.tvDir = tv.dir;
    program.blockAppSignals = !IsForeign(package);
    program.record = registration.Descriptor();
    int error = 0;
    const int pid = SpawnDetached(program, &error);
    if (pid < 0) {
        launch->outcome = Describe(error);
        return;
    }
    if (!registration.Publish({launch->appId, pid, launch->time, launch->extras})) {
        registration.End(pid);
        launch->outcome = Describe(registration.Error());
        return;
    }
    launch->pid = pid;
    launch->outcome = "started";
}

std::string DoesNotEnd(const RunningApplication& running) {
    return running.appId + " (process " + std::to_string(running.pid) +
           ") does not end. End it with kill.";
}

// Throws kPlatform for a process that goes on unsignalled.
void Tell(const ApplicationProcess& process, const RunningApplication& running, AppSignal signal) {
    if (const int error = process.Signal(signal); error != 0) {
        throw Error(ErrorKind::kPlatform,
                    running.appId + " (process " + std::to_string(running.pid) +
                        ") cannot be told to end: " + std::strerror(error) + ".");
    }
}

// Sends the signal and waits until the process has ended, or has said why it cannot do what it was
// told to and stays.
std::optional<Error> SignalAndWait(const std::string& tvDir, const RunningApplication& running,
                                   AppSignal signal) {
    const ApplicationProcess process(tvDir, running);
    Watcher answers;
    answers.Watch(FailureFolder(tvDir), IN_CLOSE_WRITE, FailureFileName(running.pid),
                  [](const std::string&) {});
    TakeFailure(tvDir, running.pid);  // of an earlier time, for which nobody waited
    Tell(process, running, signal);
    const auto deadline = std::chrono::steady_clock::now() + kEndTimeout;
    for (;;) {
        if (!process.WaitForEnd(deadline, answers.Fd())) {
            return Error(ErrorKind::kPlatform, DoesNotEnd(running));
        }
        answers.Dispatch();
        const bool ended = process.WaitForEnd(std::chrono::steady_clock::now());
        std::optional<Error> failure = TakeFailure(tvDir, running.pid);
        if (ended || failure) {
            return failure;
        }
    }
}

void End(Tv::Impl& tv, const std::string& appId, AppSignal signal) {
    const Package* package = FindPackage(tv.model, appId);
    const bool foreign = IsForeign(package);
    if (signal == AppSignal::kFinish && foreign) {
        throw Error(ErrorKind::kUsage, appId + " is run by the TV's own command \"" +
                                           package->command + "\": finish it there, or cancel it.");
    }
    bool found = false;
    std::optional<Error> failure;
    for (const RunningApplication& running : ListRunning(tv.dir)) {
        if (running.appId == appId) {
            found = true;
            // A foreign command knows no signal of ours but the one that everybody knows.
            const std::optional<Error> one =
                SignalAndWait(tv.dir, running, foreign ? AppSignal::kTerminate : signal);
            failure = failure ? failure : one;
        }
    }
    if (!found) {
        throw Error(ErrorKind::kNoSuch, appId + " does not run.");
    }
    if (failure) {
        throw Error(*failure);
    }
}

}  // namespace

bool Succeeded(const Launch& launch) {
    return launch.outcome.rfind("failed", 0) != 0;
}

Launch StartApplication(Tv::Impl& tv, Launch request) {
    request.time = Now();
    try {
        Start(tv, &request);
    } catch (const Error& error) {
        request.outcome = std::string("failed: ") + error.what();
    }
    RecordLaunch(tv, request);
    return request;
}

void EndRunningApplications(const std::string& tvDir) {
    const auto deadline = std::chrono::steady_clock::now() + kEndTimeout;
    std::list<std::pair<RunningApplication, ApplicationProcess>> ending;
    for (const RunningApplication& running : ListRunning(tvDir)) {
        ending.emplace_back(std::piecewise_construct, std::forward_as_tuple(running),
                            std::forward_as_tuple(tvDir, running));
        Tell(ending.back().second, running, AppSignal::kTerminate);
    }
    for (const auto& [running, process] : ending) {
        if (!process.WaitForEnd(deadline)) {
            throw Error(ErrorKind::kPlatform, DoesNotEnd(running));
        }
    }
}

ApplicationMode Tv::Applications() const {
    return ModeOf(*impl_);
}

void Tv::SetApplications(ApplicationMode mode) {
    impl_->state.Write(kModeKey, ToText(mode));
}

std::vector<RunningApplication> Tv::RunningApplications() const {
    return ListRunning(impl_->dir);
}

bool Tv::WaitForEnd(const RunningApplication& running, std::chrono::milliseconds most) const {
    return ApplicationProcess(impl_->dir, running)
        .WaitForEnd(std::chrono::steady_clock::now() + most);
}

bool Tv::IsRunning(const std::string& appId) const {
    for (const RunningApplication& running : ListRunning(impl_->dir)) {
        if (running.appId == appId) {
            return true;
        }
    }
    return false;
}

Launch Tv::LaunchApplication(const std::string& appId, const Extras& extras) {
    Launch request;
    request.appId = appId;
    request.via = "aul";
    request.extras = extras;
    return StartApplication(*impl_, std::move(request));
}

void Tv::FinishApplication(const std::string& appId) {
    End(*impl_, appId, AppSignal::kFinish);
}

void Tv::CancelApplication(const std::string& appId) {
    End(*impl_, appId, AppSignal::kCancel);
}

void Tv::EnterApplication(const std::string& appId, const Extras& extras) {
    // The launcher has registered what it started; a program started by hand does it itself.
    const FileLock lock(impl_->dir, kAppsLock);
    if (IsRegistered(impl_->dir, getpid())) {
        return;
    }
    Registration registration(impl_->dir);
    if (registration.Error() == 0 && LockRecord(registration.Descriptor()) &&
        registration.Publish({appId, getpid(), Now(), extras})) {
        registration.KeepOpen();
    }
}

void Tv::ReportFailure(const Error& failure) {
    LeaveFailure(impl_->dir, getpid(), failure);
}

void Tv::LeaveApplication() {
    const FileLock lock(impl_->dir, kAppsLock);
    Unregister(impl_->dir, getpid());
}

}  // namespace vtv

extern "C" {

VTV_EXPORT int app_manager_get_app_context(const char* appId, app_context_h* context) {
    return vtv::Serve("app_manager_get_app_context", [&](vtv::Tv::Impl& tv) {
        if (appId == nullptr || context == nullptr) {
            return false;
        }
        for (const vtv::RunningApplication& running : vtv::ListRunning(tv.dir)) {
            if (running.appId == appId) {
                // Callers do not give contexts back: there is one an application, and it is ours.
                static std::map<std::string, app_context_s> contexts;
                *context = &(contexts[running.appId] = app_context_s{running.appId});
                return true;
            }
        }
        return false;
    });
}

VTV_EXPORT int app_manager_terminate_app(app_context_h context) {
    return vtv::Serve("app_manager_terminate_app", [&](vtv::Tv::Impl& tv) {
        bool sent = false;
        for (const vtv::RunningApplication& running : vtv::ListRunning(tv.dir)) {
            if (context != nullptr && running.appId == context->appId) {
                const vtv::ApplicationProcess process(tv.dir, running);
                vtv::Tell(process, running, vtv::AppSignal::kTerminate);
                sent = true;
            }
        }
        tv.LogLine(vtv::kInfo, "end of " +
                                   (context != nullptr ? context->appId : std::string("nothing")) +
                                   (sent ? ": asked" : ": it does not run"));
        return sent;
    });
}

}  // extern "C"
