#include "similar_items.h"

#include "host/page/page.h"
#include "virtual-tv/model/spelling.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

std::vector<std::string> SimilarItems(std::string_view nameOrKey) {
    const std::string_view root = PageItems().front().key;
    if (nameOrKey.substr(0, root.size()) == root && nameOrKey.size() > root.size() + 1) {
        nameOrKey.remove_prefix(root.size() + 1);
    }
    std::vector<std::string> names;
    for (const Item& item : PageItems()) {
        names.emplace_back(item.name);
    }
    return vtv::Similar(nameOrKey, names);
}

}  // namespace host
