// What the window has done to its TV last: as a command of vtv, with what came of it, and in the
// scenario that the TV is being recorded into.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/core/recorder.h"
#include "host/page/provider.h"
#include "navigator.h"
#include "virtual-tv/virtual_tv.h"

namespace window {

class Diary {
  public:
    // Both must outlive this.
    Diary(const vtv::Tv& tv, const host::Provider& provider) : tv_(tv), provider_(provider) {}

    // A press may begin now: the log from here on is its log.
    void Listen();
    // It has, and ends; what it comes to is not sent yet. Throws what host::Recorder throws.
    void EndPress(const Navigator::End& end, const host::Page& before);
    // What the log has got of it by now.
    void HearLog();
    void Add(const std::vector<vtv::Launch>& launches, const std::vector<std::string>& failures);
    // All that comes of the press has come: it is recorded. Does nothing without a press.
    void ClosePress(const host::Page& after);

    // Something else is done, by a verb of vtv. Throws what host::Recorder throws, and what doing
    // it throws.
    void Do(std::vector<std::string> words, const host::Recording::Step& step,
            const std::function<void()>& act, bool takesProvider = false);

    // "vtv press voice-wake-up --tv kitchen", for a shell; empty before anything was done.
    const std::string& Command() const { return command_; }
    // Of the last press, and null before there was one.
    const host::PressResult* Result() const { return result_ ? &*result_ : nullptr; }
    const std::vector<vtv::LogRecord>& Log() const { return log_; }
    const std::vector<vtv::Launch>& Launches() const { return launches_; }

  private:
    struct OpenPress;
    std::string CommandLine(std::vector<std::string> words, bool takesProvider) const;

    const vtv::Tv& tv_;
    const host::Provider& provider_;
    std::unique_ptr<vtv::LogReader> reader_;
    std::shared_ptr<OpenPress> press_;
    std::string command_;
    std::optional<host::PressResult> result_;
    std::vector<vtv::LogRecord> log_;
    std::vector<vtv::Launch> launches_;
    std::vector<std::string> failures_;
};

}  // namespace window
