#include "user_values.h"

#include <algorithm>
#include <iterator>
#include <map>

#include "virtual-tv/model/keys.h"

namespace explorer {

namespace {

constexpr const char* MARKET_SETTINGS[] = {vtv::kBlockKey, vtv::kCountryKey, vtv::kLegacyVoiceKey,
                                           vtv::kWizardModeKey};

// Assistants of the same name are told by their applications, too.
void TellApart(std::vector<Value>& assistants) {
    std::map<std::string, int> count;
    for (const Value& assistant : assistants) {
        ++count[assistant.words];
    }
    for (Value& assistant : assistants) {
        if (count[assistant.words] > 1 || assistant.words.empty()) {
            assistant.words += (assistant.words.empty() ? "" : " ") + ('(' + assistant.text + ')');
        }
    }
}

}  // namespace

bool IsOfModel(const Input& input) {
    return input.kind == Input::Kind::kFeature ||
           (input.kind == Input::Kind::kSetting &&
            std::find(std::begin(MARKET_SETTINGS), std::end(MARKET_SETTINGS), input.key) !=
                std::end(MARKET_SETTINGS));
}

void KeepUserValues(Inputs& inputs, const std::vector<PolicyState>& policies) {
    for (Input& input : inputs.inputs) {
        if (IsOfModel(input)) {
            continue;
        }
        std::vector<Value> kept;
        if (input.isCurrentAssistant) {
            std::vector<std::string> seen;
            for (const PolicyState& policy : policies) {
                for (const Assistant& assistant : policy.list) {
                    if (std::find(seen.begin(), seen.end(), assistant.appId) == seen.end()) {
                        seen.push_back(assistant.appId);
                        kept.push_back(
                            {Value::Kind::kText, 0, assistant.appId, assistant.name, "string"});
                    }
                }
            }
            TellApart(kept);
            kept.push_back({Value::Kind::kText, 0, "", "none", "string"});
        } else {
            for (const Value& value : input.values) {
                const bool isOdd = value.isOdd || value.kind == Value::Kind::kFails ||
                                   value.kind == Value::Kind::kNull || value.number < 0 ||
                                   value.number > 2;
                const bool isOddDocument =
                    value.hasPlaceholder
                        ? false
                        : value.kind == Value::Kind::kText && input.type == "string" &&
                              !value.text.empty() && value.text.front() != '{';
                const bool isThird = input.kind != Input::Kind::kSetting && value.number == 2;
                if (!isOdd && !isOddDocument && !isThird) {
                    kept.push_back(value);
                }
            }
        }
        if (!kept.empty()) {
            kept.resize(std::min<std::size_t>(kept.size(), 16));
            input.values = kept;
        }
    }
}

}  // namespace explorer
