#include "rules.h"

#include <algorithm>
#include <iterator>

namespace host {

namespace {

constexpr char kVisibleChecker[] = "si-ready/src/general_voice_visiblechecker.cpp";
constexpr char kEnableChecker[] = "si-ready/src/general_voice_enablechecker.cpp";
constexpr char kDataProvider[] = "si-ready/src/general_voice_dataprovider.cpp";

struct Slot {
    std::string_view question;
    const char* function;
};
constexpr Slot kSlots[] = {
    {"title", "get_display_name"},
    {"help", "get_help_text"},
    {"value", "get_int"},
    {"choices", "get_list_items"},
    {"confirmation", "get_messagebox_info"},
    {"reason", "get_disable_text"},
    {"popup", "get_disablepopup_info"},
    {"button", "CurrentPopupAction"},
    {"set", "set_int"},
    {"press", "set_int"},
    {"properties", "provider_property"},
};

Rule InDataProvider(const char* function) {
    return {function, function != nullptr ? kDataProvider : nullptr};
}

}  // namespace

const char* SlotOf(std::string_view question) {
    const auto* const slot = std::find_if(std::begin(kSlots), std::end(kSlots),
                                          [&](const Slot& s) { return s.question == question; });
    return slot != std::end(kSlots) ? slot->function : nullptr;
}

Rule RuleOf(const vtv::Item& item, std::string_view question) {
    if (question == "visible") {
        return {item.visibilityRule, kVisibleChecker};
    }
    if (question == "enabled") {
        return {item.enableRule, kEnableChecker};
    }
    if (question == "value") {
        return InDataProvider(item.reader);
    }
    if (question == "choices") {
        return InDataProvider(item.listBuilder);
    }
    if (question == "set") {
        return InDataProvider(item.writer);
    }
    return InDataProvider(SlotOf(question));
}

std::vector<FurtherRule> FurtherRulesOf(const vtv::Item& item) {
    std::vector<FurtherRule> rules;
    const auto add = [&](const char* question, const char* inWords) {
        const Rule rule = RuleOf(item, question);
        if (rule.function != nullptr) {
            rules.push_back({question, inWords, rule});
        }
    };
    add("title", "its title");
    add("help", "its help");
    add("choices", "its choices");
    add("set", "what a press writes");
    add("reason", "why it is dimmed");
    if (item.kind == vtv::ItemKind::kApplication) {
        add("popup", "its popup when it is dimmed");
        add("button", "what the popup's button starts");
    }
    return rules;
}

}  // namespace host
