#include "setting_text.h"

#include <algorithm>
#include <cctype>

#include "cli.h"
#include "virtual-tv/model/known_settings.h"

namespace cli {

bool Contains(const std::string& text, const std::string& part) {
    return std::search(text.begin(), text.end(), part.begin(), part.end(), [](char a, char b) {
               return std::tolower(static_cast<unsigned char>(a)) ==
                      std::tolower(static_cast<unsigned char>(b));
           }) != text.end();
}

void ThrowNoSuchKey(const vtv::Tv& tv, const std::string& key) {
    std::string text = key + ": the TV has no such setting.";
    if (host::FindItem(key) != nullptr) {
        text += " It is an item of the page: vtv show " + key;
    } else if (const vtv::KnownSetting* known = vtv::FindKnownSetting(key)) {
        text += " It would be " + vtv::WithArticle(known->type) + ": " + known->meaning + ".";
    } else {
        const std::string last = key.substr(key.rfind('/') + 1);
        for (const vtv::Setting& setting : tv.Settings()) {
            if (last.size() >= 3 && Contains(setting.key, last)) {
                text += " Did you mean " + setting.key + "?";
                break;
            }
        }
    }
    throw vtv::Error(vtv::ErrorKind::kNoSuch, text);
}

Json::Value SettingToJson(const std::string& key, const vtv::Value& value) {
    Json::Value json;
    json["key"] = key;
    json["type"] = vtv::TypeName(value);
    json["value"] = ToJson(value);
    return json;
}

std::string Shown(const vtv::Value& value) {
    return std::holds_alternative<std::string>(value) ? "\"" + vtv::ToText(value) + "\""
                                                      : vtv::ToText(value);
}

}  // namespace cli
