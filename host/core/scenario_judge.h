// What came of a step, and what of it is not as it was expected.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/page/provider.h"
#include "host/page/viewer.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

struct StepOutcome {
    const Provider* provider = nullptr;  // for what is asked whether a viewer can get to it or not
    const vtv::Tv* tv = nullptr;
    std::optional<PressResult> press;
    std::vector<std::string> failures;  // as PressResult::failures, of all that the step does
    int line = 0;                       // of its press, else its own
    Page page;
    vtv::LaunchMark launchMark;
    size_t logBefore = 0;
    size_t traceBefore = 0;

    void AddFailures(const std::vector<std::string>& more) {
        failures.insert(failures.end(), more.begin(), more.end());
    }
};

// Collects what is not met.
class Judge {
  public:
    Judge(std::string file, const StepOutcome& outcome)
        : file_(std::move(file)), outcome_(outcome) {}

    const StepOutcome& Outcome() const { return outcome_; }
    // "FILE:LINE: what was expected and what was there", one text each.
    const std::vector<std::string>& Failures() const { return failures_; }

    void Fail(int line, const std::string& text);
    void Same(int line, const std::string& what, const std::string& wanted,
              const std::string& found);
    void SameList(int line, const std::string& what, const std::vector<std::string>& wanted,
                  const std::vector<std::string>& found);

  private:
    std::string file_;
    const StepOutcome& outcome_;
    std::vector<std::string> failures_;
};

using Expectation = std::function<void(Judge&)>;
Expectation Together(std::vector<Expectation> all);

// "text", ["text", "text"].
std::string InQuotes(const std::string& text);
std::string List(const std::vector<std::string>& texts);
// A text that is told by its ids as the provider shows it: "TITLE_ID", "ID_WITH_A_NAME Alexa".
std::string InWords(const std::string& ids);
std::vector<std::string> InWords(std::vector<std::string> texts);

}  // namespace host
