// The model of a TV that is made from a dump.
#include <toml++/toml.h>

#include "dump.h"
#include "toml_writer.h"
#include "virtual-tv/model/format_version.h"
#include "virtual-tv/model/known_settings.h"

namespace host {

std::string ModelText(const Dump& dump) {
    toml::table root;
    root.insert("version", vtv::kModelVersion);
    root.insert("title", dump.title.value_or("Imported TV"));
    toml::table features;
    toml::table others;
    for (const auto& [key, value] : dump.features.value_or(std::map<std::string, vtv::Value>())) {
        if (vtv::FindKnownFeature(key) != nullptr) {
            Insert(features, vtv::ShortFeatureName(key), value);
        } else {
            Insert(others, key, value);
        }
    }
    root.insert("features", features);
    root.insert("other-features", others);
    toml::array packages;
    for (const vtv::Package& package : dump.packages.value_or(std::vector<vtv::Package>())) {
        toml::table metadata;
        for (const auto& [key, value] : package.metadata) {
            if (value) {
                metadata.insert_or_assign(key, *value);
            } else {
                metadata.insert_or_assign(key, false);
            }
        }
        packages.push_back(
            toml::table{{"app", package.appId}, {"name", package.name}, {"metadata", metadata}});
    }
    if (!packages.empty()) {
        root.insert("packages", packages);
    }
    try {
        return "# Made from a dump.\n" + ToToml(root);
    } catch (const std::runtime_error& error) {
        throw vtv::Error(vtv::ErrorKind::kUsage, std::string("the dump: ") + error.what());
    }
}

}  // namespace host
