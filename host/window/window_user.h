// Scenarios played in the window: what is pressed goes through its keys, what is expected is held
// against what it shows.
#pragma once

#include <string>

namespace window {

struct PlayOptions {
    std::string scenario;
    int answer = -1;
};

// On a new TV in that folder. What comes of it, or goes wrong, is told into the descriptor.
void PlayInWindow(const std::string& tvDir, const std::string& provider,
                  const PlayOptions& options);

}  // namespace window
