// What the look of each item depends on, as exploring the provider in every state found it.
#pragma once

#include <string_view>
#include <vector>

namespace host {

// Something of a TV that an answer of the provider may depend on.
struct PageInput {
    // Its kind and its name: "setting db/menu/voice/is_k_voice", "feature com.vantelo/...",
    // "file /home/owner/...", "consent tnc", or "call sso_get_login_state" for what a platform call
    // answers.
    std::string_view name;
    // The items whose look it can change, by name, sorted.
    std::vector<std::string_view> items;
};

// Sorted by name. What is not in the list changes no item. Texts are listed by id: that the menu
// language changes the texts that a viewer reads is not in it.
//
// The source is generated: vtv-explore depends --source > host/core/page_dependencies.cpp
const std::vector<PageInput>& PageInputs();

}  // namespace host
