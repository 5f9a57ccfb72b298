// Plays a file of keys in the toolkit's loop, which goes on between the steps.
#pragma once

#include <deque>
#include <exception>
#include <functional>
#include <string>

#include "key_script.h"
#include "timer.h"

namespace window {

class ScriptPlayer {
  public:
    struct Stage {
        std::function<void(const std::string& keyName)> press;
        std::function<std::string()> seen;
        std::function<void(const KeyStep& step)> picture;
        std::function<void()> ended;
        std::function<void(std::exception_ptr)> failed;
    };

    // "-" is the standard input, which is read as it comes. Throws what ReadSteps() throws.
    ScriptPlayer(const std::string& file, Stage stage);
    ~ScriptPlayer();
    ScriptPlayer(const ScriptPlayer&) = delete;
    ScriptPlayer& operator=(const ScriptPlayer&) = delete;

    // Forgets the steps that are left.
    void Stop() { steps_.clear(); }

  private:
    bool ReadMore();
    void Play();
    bool Take(const KeyStep& step);
    bool Awaits(const KeyStep& step);
    template <typename Do>
    void Guarded(const Do& act) {
        try {
            act();
        } catch (...) {
            steps_.clear();
            stage_.failed(std::current_exception());
        }
    }

    Stage stage_;
    Timer next_{[this] { Guarded([this] { Play(); }); }};
    Ecore_Fd_Handler* input_ = nullptr;
    std::deque<KeyStep> steps_;
    std::string unread_;  // the beginning of a line
    int line_ = 0;
    double awaited_ = 0;  // seconds
};

}  // namespace window
