#include "rules.h"

namespace host {

Rule RuleOf(const vtv::Item& item, std::string_view question) {
    static constexpr char kData[] = "si-ready/src/general_voice_dataprovider.cpp";
    if (question == "visible") {
        return {item.visibilityRule, "si-ready/src/general_voice_visiblechecker.cpp"};
    }
    if (question == "enabled") {
        return {item.enableRule, "si-ready/src/general_voice_enablechecker.cpp"};
    }
    if (question == "value") {
        return {item.reader, item.reader != nullptr ? kData : nullptr};
    }
    return {"get_disable_text", kData};
}

}  // namespace host
