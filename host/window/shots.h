// All that a viewer can get to see of a TV's page without changing it: the page with each item in
// focus, the list, the confirmation, each reason and each popup. And what of its texts is wrong.
#pragma once

#include <string>
#include <vector>

#include "host/page/provider.h"
#include "scene.h"

namespace window {

struct Shot {
    std::string name;  // "voice-wake-up", "voice-assistant-list"
    std::string item;  // empty where the TV has no page
    Scene scene;
};

// The provider's own TV must be on. Nothing is sent to it.
std::vector<Shot> ShotsOf(const host::Provider& provider, const std::string& menuLanguage);

// A text that people should look at.
struct Mark {
    enum class Kind {
        kCut,      // longer than its place
        kMissing,  // an id, or nothing, in place of the translation
        kEnglish,  // the same as in English
    };
    Kind kind;
    std::string text;
};
const char* ToText(Mark::Kind kind);

// Those that can be seen without drawing; `english` is the same shot in English, or null. Names,
// such as those of assistants, may be alike.
std::vector<Mark> MarksOf(const Scene& scene, const Scene* english);

}  // namespace window
