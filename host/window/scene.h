// What is on the screen now, in the words that the viewer reads: all that is drawn, and nothing of
// how.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "navigator.h"

namespace window {

struct RowScene {
    enum class Mark { kNone, kSwitch, kChoice, kOpens };
    std::string name;  // of the item
    std::string title;
    std::string value;
    Mark mark = Mark::kNone;
    bool on = false;
    int depth = 0;
    bool dimmed = false;
    bool focused = false;
    bool changed = false;  // it has just become different
    bool operator==(const RowScene&) const = default;
};

struct ListScene {
    std::string title;
    std::vector<std::string> choices;
    std::optional<size_t> current;
    size_t focus = 0;
    bool operator==(const ListScene&) const = default;
};

struct BoxScene {
    std::string title;
    std::string message;
    std::vector<std::string> buttons;
    size_t focus = 0;
    bool operator==(const BoxScene&) const = default;
};

struct ApplicationScene {
    std::string title;
    std::string id;
    std::vector<std::string> details;
    std::string problem;
    std::vector<std::string> buttons;
    size_t focus = 0;
    bool operator==(const ApplicationScene&) const = default;
};

// What stands beside the TV, for whoever works on it.
struct PanelScene {
    struct Section {
        std::string title;
        std::vector<std::string> lines;
        bool operator==(const Section&) const = default;
    };
    std::vector<Section> sections;
    bool operator==(const PanelScene&) const = default;
};

// How the page is drawn; what the viewer has set, and not what the page says.
struct Look {
    bool mirrored = false;
    bool large = false;
    bool contrast = false;
    bool operator==(const Look&) const = default;
};

struct Scene {
    Look look;
    std::string title;
    std::string empty;  // said in place of the rows
    std::vector<RowScene> rows;
    std::string heading;  // of the help: the focused item
    std::string help;
    std::string reason;  // why the focused item cannot be used
    std::optional<ListScene> list;
    std::optional<BoxScene> box;
    std::optional<ApplicationScene> application;
    std::string toast;
    std::optional<PanelScene> panel;
    bool operator==(const Scene&) const = default;
};

// The menu language decides on the words of the window itself, and whether the page is mirrored.
Scene SceneOf(const Navigator& navigator, const std::string& menuLanguage,
              const std::set<std::string>& changed);

// What the voice guide says of whatever has the focus.
std::string SpokenText(const Scene& scene, const std::string& menuLanguage);

// A line for each thing that is seen, for tests and for people without a screen.
std::string ToText(const Scene& scene);

}  // namespace window
