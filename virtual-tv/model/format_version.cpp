#include "format_version.h"

namespace vtv {

std::string VersionProblem(const std::string& kind, std::optional<int64_t> version, int known) {
    if (!version || *version < 1) {
        return "the version of " + kind + " must be a whole number from 1 on; today's is " +
               std::to_string(known) + ".";
    }
    if (*version > known) {
        return "this is version " + std::to_string(*version) + " of " + kind +
               ", which is newer than this program knows (" + std::to_string(known) +
               "). Use a newer program, or have the older one write it.";
    }
    return "";
}

std::optional<int64_t> VersionOf(const Json::Value& json) {
    return json.isInt64() && json.type() != Json::realValue ? std::optional(json.asInt64())
                                                            : std::nullopt;
}

}  // namespace vtv
