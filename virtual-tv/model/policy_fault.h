// What is wrong with an assistant policy, before it is published.
#pragma once

#include <json/json.h>

#include <optional>
#include <string>

#include "json_text.h"

namespace vtv {

struct PolicyFault {
    const Json::Value* at;  // the part of the policy that is to be written otherwise
    std::string what;
    std::optional<Json::ArrayIndex> assistant;  // which entry is at fault; none: the list itself
};
// The first fault of a policy; nothing when there is none.
std::optional<PolicyFault> FindFault(const Json::Value& policy);

struct DocumentFault {
    std::string text;  // "FILE:LINE:COLUMN: what is wrong"
    int line;
};
// The same of a document, with its place.
std::optional<DocumentFault> FindFault(const JsonText& document);

}  // namespace vtv
