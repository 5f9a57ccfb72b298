#include "refresh.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "build_id.h"
#include "page_dependencies.h"
#include "provider_build.h"
#include "virtual-tv/model/keys.h"

namespace host {

namespace {

constexpr std::string_view kMode = "call AOVSystemDataGetAOVMode";

// A key of the TV's state and the input that it is behind. A prefix ends in a slash; what follows
// is the input's name unless `input` says all.
struct StateInput {
    std::string_view state;
    std::string_view input;
    bool isWhole;
};
constexpr StateInput kStateInputs[] = {
    {vtv::kSignedInState, "call sso_get_login_state", true},
    {vtv::kNetworkState, "call connection_profile_check_default_gateway", true},
    {vtv::kModeState, kMode, true},
    {vtv::kConsentState, "consent ", false},
    {vtv::kFeatureState, "feature ", false},
    {vtv::kAbsentFeatureState, "feature ", false},
};

bool StartsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

const StateInput* FindStateInput(std::string_view state) {
    for (const StateInput& known : kStateInputs) {
        if (known.state.back() == '/' ? StartsWith(state, known.state) : state == known.state) {
            return &known;
        }
    }
    return nullptr;
}

// Whether any item may look different.
bool ChangesEverything(const vtv::Change& change) {
    switch (change.what) {
        case vtv::Change::What::kSetting:
            return change.name == vtv::kLanguageKey;
        case vtv::Change::What::kState:
            return FindStateInput(change.name) == nullptr;
        case vtv::Change::What::kFile:
            return false;
    }
    return true;
}

// Whether the change is one of the input.
bool IsOf(const vtv::Change& change, std::string_view input) {
    const std::string& name = change.name;
    switch (change.what) {
        case vtv::Change::What::kSetting:
            // The mode is kept for each assistant and answered for the current one.
            return input == "setting " + name ||
                   (name == vtv::kCurrentAssistantKey && input == kMode);
        case vtv::Change::What::kState: {
            const StateInput* known = FindStateInput(name);
            return known != nullptr &&
                   (known->isWhole
                        ? input == known->input
                        : input == std::string(known->input) + name.substr(known->state.size()));
        }
        case vtv::Change::What::kFile: {
            // With a folder comes and goes all that is in it.
            const std::string path = "file " + std::string(vtv::kOwnerFolder) + name;
            return input == path || StartsWith(input, path + "/");
        }
    }
    return true;
}

bool IsTouched(const Item& item, const std::vector<vtv::Change>& changes) {
    const auto names = [&](const PageInput& input) {
        return std::find(input.items.begin(), input.items.end(), item.name) != input.items.end();
    };
    const auto changed = [&](const PageInput& input) {
        return std::any_of(changes.begin(), changes.end(),
                           [&](const vtv::Change& change) { return IsOf(change, input.name); });
    };
    const std::vector<PageInput>& inputs = PageInputs();
    return std::any_of(inputs.begin(), inputs.end(),
                       [&](const PageInput& input) { return names(input) && changed(input); });
}

}  // namespace

bool IsListed(const Provider& provider) {
    constexpr std::string_view kListed = PROVIDER_BUILD_ID;
    return !kListed.empty() && BuildIdOf(provider.File()) == kListed;
}

std::vector<const Item*> ItemsToAsk(const Provider& provider,
                                    const std::vector<vtv::Change>& changes) {
    const bool all = std::any_of(changes.begin(), changes.end(), ChangesEverything) ||
                     (!changes.empty() && !IsListed(provider));
    std::vector<const Item*> items;
    for (const Item& item : PageItems()) {
        if (all || IsTouched(item, changes)) {
            items.push_back(&item);
        }
    }
    return items;
}

Page Refresh(const Provider& provider, const Page& old, const std::vector<vtv::Change>& changes) {
    Page page = old;
    for (const Item* item : ItemsToAsk(provider, changes)) {
        for (ItemView& view : page.items) {
            if (view.item == item) {
                view = LookAt(provider, *item);
            }
        }
    }
    return page;
}

}  // namespace host
