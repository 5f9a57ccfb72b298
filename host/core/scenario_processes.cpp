#include "scenario_processes.h"

#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <map>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <type_traits>

#include "host/page/provider.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

namespace {

// ---------------------------------------------------------------------------------------------
// What a process hands over, as bytes: its program was built with this one
// ---------------------------------------------------------------------------------------------

enum class HandoverKind : char { kResult, kProviderError, kOtherError };

class HandoverWriter {
  public:
    std::string bytes;

    template <typename T>
    void Plain(T value) {
        static_assert(std::is_trivially_copyable_v<T>);
        bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    }
    void Text(const std::string& text) {
        Plain(text.size());
        bytes += text;
    }
    void Texts(const std::vector<std::string>& texts) {
        Plain(texts.size());
        for (const std::string& text : texts) {
            Text(text);
        }
    }
};

class HandoverReader {
  public:
    // The bytes outlive it.
    explicit HandoverReader(std::string_view bytes) : bytes_(bytes) {}

    template <typename T>
    T Plain() {
        T value;
        std::memcpy(&value, Next(sizeof value), sizeof value);
        return value;
    }
    std::string Text() {
        const auto size = Plain<size_t>();
        return {Next(size), size};
    }
    std::vector<std::string> Texts() {
        std::vector<std::string> texts;
        for (auto left = Plain<size_t>(); left > 0; --left) {
            texts.push_back(Text());
        }
        return texts;
    }

  private:
    const char* Next(size_t size) {
        if (size > bytes_.size() - at_) {
            throw std::runtime_error("the result of a scenario is cut off");
        }
        at_ += size;
        return bytes_.data() + at_ - size;
    }

    std::string_view bytes_;
    size_t at_ = 0;
};

std::string WhyNotPlayed(const std::string& file, const std::string& why) {
    const bool isNamed = why.empty() || why.rfind(file + ":", 0) == 0;
    return isNamed ? why : file + ": could not be played: " + why;
}

std::string ToBytes(const ScenarioResult& result) {
    HandoverWriter writer;
    writer.Plain(HandoverKind::kResult);
    writer.Text(result.file);
    writer.Text(result.title);
    writer.Texts(result.problems);
    writer.Text(
        WhyNotPlayed(result.file, result.error.empty() ? vtv::Tv::MachineFailure() : result.error));
    writer.Plain(result.steps.size());
    for (const StepResult& step : result.steps) {
        writer.Text(step.name);
        writer.Plain(step.line);
        writer.Texts(step.failures);
        writer.Texts(step.beside);
        writer.Plain(step.played);
        writer.Plain(step.seconds);
    }
    return writer.bytes;
}

ScenarioResult NotPlayed(const Scenario& scenario, const std::string& why) {
    ScenarioResult result = Unplayed(scenario);
    result.error = WhyNotPlayed(scenario.file, why);
    return result;
}

ScenarioResult ReadHandover(const Scenario& scenario, HandoverReader& reader) {
    const auto kind = reader.Plain<HandoverKind>();
    if (kind == HandoverKind::kProviderError) {
        const auto why = reader.Plain<ProviderError::Kind>();
        throw ProviderError(why, reader.Text());
    }
    if (kind == HandoverKind::kOtherError) {
        return NotPlayed(scenario, reader.Text());
    }
    ScenarioResult result;
    result.file = reader.Text();
    result.title = reader.Text();
    result.problems = reader.Texts();
    result.error = reader.Text();
    for (auto left = reader.Plain<size_t>(); left > 0; --left) {
        StepResult& step = result.steps.emplace_back();
        step.name = reader.Text();
        step.line = reader.Plain<int>();
        step.failures = reader.Texts();
        step.beside = reader.Texts();
        step.played = reader.Plain<bool>();
        step.seconds = reader.Plain<double>();
    }
    return result;
}

// ---------------------------------------------------------------------------------------------
// In a process that plays
// ---------------------------------------------------------------------------------------------

std::string HandoverOf(const std::function<ScenarioResult()>& play) {
    HandoverWriter writer;
    try {
        return ToBytes(play());
    } catch (const ProviderError& error) {
        writer.Plain(HandoverKind::kProviderError);
        writer.Plain(error.kind());
        writer.Text(error.what());
    } catch (const std::exception& error) {
        writer.Plain(HandoverKind::kOtherError);
        writer.Text(error.what());
    }
    return writer.bytes;
}

[[noreturn]] void PlayAndEnd(const PlayOne& play, size_t scenario, int answer, pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        _exit(1);  // it was gone already
    }
    try {
        play(scenario, answer);
    } catch (...) {
        TellResult(answer, []() -> ScenarioResult { throw; });
    }
    std::exit(0);  // what the provider leaves to the end of its process is a part of it
}

// ---------------------------------------------------------------------------------------------
// In the process that waits for them
// ---------------------------------------------------------------------------------------------

// A process, and the file in memory to which it writes its answer.
struct Playing {
    size_t scenario = 0;
    int answer = -1;
};

struct Handover {
    int status = 0;
    std::string bytes;
};

std::string ReadBack(int fd) {
    std::string bytes;
    char buffer[4096];
    for (ssize_t size = 1; size > 0;) {
        size = pread(fd, buffer, sizeof buffer, static_cast<off_t>(bytes.size()));
        bytes.append(buffer, size > 0 ? static_cast<size_t>(size) : 0);
    }
    return bytes;
}

[[noreturn]] void FailToStart(const char* what, int error) {
    throw vtv::Error(vtv::ErrorKind::kPlatform, std::string("A scenario cannot be played: ") +
                                                    what + ": " + std::strerror(error) + ".");
}

std::string HowEnded(int status) {
    return WIFSIGNALED(status) ? strsignal(WTERMSIG(status))
                               : "exit code " + std::to_string(WEXITSTATUS(status));
}

ScenarioResult ResultOf(const Scenario& scenario, const Handover& answer) {
    if (answer.status != 0 || answer.bytes.empty()) {
        return NotPlayed(scenario, scenario.file +
                                       ": was not played to its end: the provider crashed, or "
                                       "ended the process (" +
                                       HowEnded(answer.status) + ").");
    }
    HandoverReader reader(answer.bytes);
    return ReadHandover(scenario, reader);
}

class PlayingProcesses {
  public:
    explicit PlayingProcesses(const PlayOne& play) : play_(play) {
        std::signal(SIGCHLD, SIG_DFL);  // ignored, as a caller may have left it, it keeps no status
    }
    ~PlayingProcesses() {
        while (!playing_.empty()) {
            WaitForOne();
        }
    }
    PlayingProcesses(const PlayingProcesses&) = delete;
    PlayingProcesses& operator=(const PlayingProcesses&) = delete;

    size_t Running() const { return playing_.size(); }
    void Start(size_t scenario);
    void WaitForOne();
    // Takes it out, if that process has ended.
    std::optional<Handover> Take(size_t scenario);

  private:
    const PlayOne& play_;
    std::map<pid_t, Playing> playing_;
    std::map<size_t, Handover> answers_;
};

void PlayingProcesses::Start(size_t scenario) {
    const int answer = memfd_create("scenario", MFD_CLOEXEC);
    if (answer < 0) {
        FailToStart("a file in memory cannot be made", errno);
    }
    std::cout.flush();
    std::fflush(nullptr);
    const pid_t parent = getpid();
    const pid_t child = fork();
    if (child == 0) {
        PlayAndEnd(play_, scenario, answer, parent);
    }
    if (child < 0) {
        const int error = errno;
        close(answer);
        FailToStart("a process cannot be started", error);
    }
    playing_[child] = {scenario, answer};
}

void PlayingProcesses::WaitForOne() {
    int status = 0;
    const pid_t child = waitpid(-1, &status, 0);
    const auto found = playing_.find(child);
    if (found == playing_.end()) {
        return;  // interrupted, or another child of this process
    }
    answers_[found->second.scenario] = {status, ReadBack(found->second.answer)};
    close(found->second.answer);
    playing_.erase(found);
}

std::optional<Handover> PlayingProcesses::Take(size_t scenario) {
    const auto found = answers_.find(scenario);
    if (found == answers_.end()) {
        return std::nullopt;
    }
    Handover answer = std::move(found->second);
    answers_.erase(found);
    return answer;
}

}  // namespace

void TellResult(int answer, const std::function<ScenarioResult()>& play) {
    const std::string bytes = HandoverOf(play);
    size_t written = 0;
    while (written < bytes.size()) {
        const ssize_t size = write(answer, bytes.data() + written, bytes.size() - written);
        if (size <= 0) {
            _exit(1);
        }
        written += static_cast<size_t>(size);
    }
}

void PlayInProcesses(const std::vector<Scenario>& scenarios, size_t jobs, const PlayOne& play,
                     const std::function<bool()>& goOn,
                     const std::function<void(const ScenarioResult& result)>& tell) {
    PlayingProcesses processes(play);
    size_t begun = 0;
    size_t told = 0;
    for (;;) {
        while (begun < scenarios.size() && processes.Running() < jobs && goOn()) {
            processes.Start(begun++);
        }
        for (; const std::optional<Handover> answer = processes.Take(told); ++told) {
            tell(ResultOf(scenarios[told], *answer));
        }
        if (processes.Running() == 0) {
            return;
        }
        processes.WaitForOne();
    }
}

}  // namespace host
