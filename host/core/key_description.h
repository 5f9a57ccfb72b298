// What is known of a settings key or a feature: what it means, who reads it, what it changes.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/page/page.h"
#include "host/page/provider.h"
#include "host/page/rules.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

struct KeyDescription {
    // An answer about an item that reads the key on the TV as it is now.
    struct Reader {
        const Item* item;
        std::string question;  // "visible", "enabled", "value", "reason", "popup"
        Rule rule;
    };
    // An application that the page starts, as it would be finished on the TV as it is now.
    struct Application {
        std::string appId;
        bool reads = false;
        bool writes = false;
    };

    std::string key;
    bool isFeature = false;
    std::string type;     // as it is known, else as the TV has it
    std::string meaning;  // empty: not known
    std::vector<std::string>
        values;  // that are known; of a member for each assistant where those are
    bool perAssistant = false;
    std::optional<vtv::Value> value;
    std::string problem;  // why the TV's value cannot be read
    std::optional<vtv::Value> model;
    bool isReadAtOpening = false;  // by the provider itself, when the page is opened
    std::vector<Reader> readers;
    std::vector<Application> applications;
    // The items that can look different when it changes, over all states; absent for a provider
    // that has not been explored.
    std::optional<std::vector<const Item*>> items;
};

// The key of a feature or setting, also a feature's short name. Absent for one that neither is
// known nor on the TV or in its model. The provider's own TV must be on; nothing on it is changed.
std::optional<KeyDescription> DescribeKey(const Provider& provider, const vtv::Tv& tv,
                                          const std::string& key);

}  // namespace host
