// How an item of the page looks, to tell people what changes.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "explorer/asking/items.h"
#include "explorer/asking/subject.h"

namespace explorer {

// What is seen of an item, by name, in words.
struct ItemWords {
    bool visible = false;
    bool enabled = false;
    std::vector<std::pair<std::string, std::string>> parts;
};

// Asks the provider within the TV's current run.
ItemWords LookAt(const Subject& subject, const Item& item);
// "vanishes", "changes title: A -> B"; empty when nothing does.
std::string ChangeOf(const ItemWords& before, const ItemWords& after);

std::string Join(const std::vector<std::string>& lines, const char* separator = ", ");

}  // namespace explorer
