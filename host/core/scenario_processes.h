// Plays scenarios, each in a process of its own, several at once.
#pragma once

#include <functional>
#include <string>

#include "scenario.h"

namespace host {

// Plays one in the process that was started for it, which ends then, and tells what came of it into
// the descriptor with TellResult(). It may become another program that does.
using PlayOne = std::function<void(size_t scenario, int answer)>;
void TellResult(int answer, const std::function<ScenarioResult()>& play);

// Plays them in order, at most `jobs` at once, and begins none any more once goOn() says no. `tell`
// hears what came of each that was begun, in order, each as soon as it can; also that it could not
// be played. The processes end with this one.
//
// Throws ProviderError, which holds for all of them, and kPlatform where no process can be started.
void PlayInProcesses(const std::vector<Scenario>& scenarios, size_t jobs, const PlayOne& play,
                     const std::function<bool()>& goOn,
                     const std::function<void(const ScenarioResult& result)>& tell);

}  // namespace host
