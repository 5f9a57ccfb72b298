#include "compare_tvs.h"

#include <map>
#include <set>

#include "virtual-tv/model/keys.h"

namespace host {

namespace {

std::map<std::string, std::string> Texts(const std::map<std::string, vtv::Value>& values) {
    std::map<std::string, std::string> texts;
    for (const auto& [key, value] : values) {
        texts[key] = std::string(vtv::TypeName(value)) + " " + vtv::ToText(value);
    }
    return texts;
}

void Compare(const char* what, const std::map<std::string, std::string>& first,
             const std::map<std::string, std::string>& second,
             std::vector<TvDifference>* differences) {
    std::set<std::string> names;
    for (const auto& [name, text] : first) {
        names.insert(name);
    }
    for (const auto& [name, text] : second) {
        names.insert(name);
    }
    const auto at = [](const auto& map, const std::string& name) {
        const auto found = map.find(name);
        return found != map.end() ? std::optional<std::string>(found->second) : std::nullopt;
    };
    for (const std::string& name : names) {
        if (at(first, name) != at(second, name)) {
            differences->push_back({what, name, at(first, name), at(second, name)});
        }
    }
}

std::map<std::string, std::string> FileTexts(const std::vector<std::string>& files) {
    std::map<std::string, std::string> texts;
    for (const std::string& file : files) {
        texts[file] = "there";
    }
    return texts;
}

}  // namespace

std::vector<TvDifference> CompareTvs(const vtv::Tv& first, const vtv::Tv& second) {
    std::vector<TvDifference> differences;
    const vtv::Snapshot a = first.TakeSnapshot();
    const vtv::Snapshot b = second.TakeSnapshot();
    Compare("feature", Texts(first.Features()), Texts(second.Features()), &differences);
    Compare("setting", Texts(a.settings), Texts(b.settings), &differences);
    const auto withoutFeatures = [](std::map<std::string, vtv::Value> state) {
        std::erase_if(state, [](const auto& entry) {
            return entry.first.starts_with(vtv::kFeatureState) ||
                   entry.first.starts_with(vtv::kAbsentFeatureState);
        });
        return state;
    };
    Compare("state", Texts(withoutFeatures(a.state)), Texts(withoutFeatures(b.state)),
            &differences);
    Compare("file", FileTexts(a.ownerFiles), FileTexts(b.ownerFiles), &differences);
    return differences;
}

}  // namespace host
