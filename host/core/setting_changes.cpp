#include "setting_changes.h"

#include <algorithm>
#include <charconv>

#include "virtual-tv/model/json_text.h"
#include "virtual-tv/model/known_settings.h"

namespace host {

namespace {

bool IsKeyOf(const vtv::Tv& tv, const std::string& key) {
    try {
        return vtv::FindKnownSetting(key) != nullptr || tv.Get(key).has_value();
    } catch (const vtv::Error& error) {
        return error.kind() == vtv::ErrorKind::kPlatform;  // it is there, and damaged
    }
}

// Settings whose value is a JSON object, so that a member can be set before there is one.
bool IsJsonObject(const vtv::KnownSetting* known) {
    return known != nullptr &&
           (known->perAssistant || (!known->values.empty() && known->values.front()[0] == '{'));
}

// The place that a text names in a list; -1 for no place.
int PlaceIn(const Json::Value& list, std::string_view text) {
    int place = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), place);
    const bool isPlace = error == std::errc() && end == text.data() + text.size() && place >= 0 &&
                         place < static_cast<int>(list.size());
    return isPlace ? place : -1;
}

// Where a member lies: what holds it, and its own name there.
struct Place {
    Json::Value* holder;
    std::string name;

    const Json::Value* Find() const {
        if (holder->isArray()) {
            const int place = PlaceIn(*holder, name);
            return place >= 0 ? &(*holder)[place] : nullptr;
        }
        return holder->isObject() && holder->isMember(name) ? &(*holder)[name] : nullptr;
    }
};

// The longest beginning of the path that is a member comes first: application ids hold dots.
Place Locate(Json::Value* root, const std::string& path) {
    Place whole{root, path};
    if (whole.Find() != nullptr) {
        return whole;
    }
    for (size_t dot = path.rfind('.'); dot != std::string::npos && dot > 0;
         dot = path.rfind('.', dot - 1)) {
        const Json::Value* inner = Place{root, path.substr(0, dot)}.Find();
        if (inner != nullptr && (inner->isObject() || inner->isArray())) {
            return Locate(const_cast<Json::Value*>(inner), path.substr(dot + 1));
        }
    }
    return whole;
}

Json::Value ToJson(const vtv::Value& value) {
    return std::visit([](const auto& v) { return Json::Value(v); }, value);
}

// Of the type that the member has. A new one is a text where the setting's members are known to be,
// else what it looks like.
Json::Value NewMember(const Json::Value* old, bool isText, const std::string& text) {
    if (old != nullptr && old->isBool()) {
        return ToJson(vtv::ParseValue("bool", text));
    }
    if (old != nullptr && old->isInt()) {
        return ToJson(vtv::ParseValue("int", text));
    }
    if (isText || (old != nullptr && old->isString())) {
        return text;
    }
    const vtv::JsonText document("", text);
    return document.Problem().empty() ? document.Root() : Json::Value(text);
}

vtv::Value WithMember(const SettingName& name, const std::optional<vtv::Value>& setting,
                      const std::string& text) {
    const vtv::KnownSetting* known = vtv::FindKnownSetting(name.key);
    Json::Value root(Json::objectValue);
    const bool isEmpty = !setting && IsJsonObject(known);
    const std::string* json = setting ? std::get_if<std::string>(&*setting) : nullptr;
    if (!isEmpty && (json == nullptr || !vtv::ParseJson(*json, &root) ||
                     (!root.isObject() && !root.isArray()))) {
        throw vtv::Error(vtv::ErrorKind::kNo,
                         name.key +
                             (setting ? " holds no JSON object or list"
                                      : " is not set, and nothing tells that it is JSON") +
                             ", so it has no member " + name.member + ".");
    }
    const Place place = Locate(&root, name.member);
    const Json::Value* old = place.Find();
    if (old == nullptr && !place.holder->isObject()) {
        throw vtv::Error(vtv::ErrorKind::kNoSuch,
                         name.key + ": the list has no place \"" + place.name + "\"; it has " +
                             std::to_string(place.holder->size()) + ", counted from 0.");
    }
    const Json::Value value = NewMember(old, known != nullptr && known->perAssistant, text);
    if (place.holder->isArray()) {
        (*place.holder)[PlaceIn(*place.holder, place.name)] = value;
    } else {
        (*place.holder)[place.name] = value;
    }
    return vtv::CompactJson(root);
}

}  // namespace

SettingName ParseSettingName(const vtv::Tv& tv, const std::string& name) {
    for (size_t end = name.size(); end != std::string::npos && end > 0;
         end = name.rfind('.', end - 1)) {
        const std::string key = name.substr(0, end);
        if (end + 1 != name.size() && IsKeyOf(tv, key)) {
            return {key, end < name.size() ? name.substr(end + 1) : ""};
        }
    }
    vtv::CheckSettingKey(name);
    return {name, ""};
}

std::optional<vtv::Value> MemberOf(const vtv::Value& setting, const std::string& member) {
    const std::string* text = std::get_if<std::string>(&setting);
    Json::Value root;
    if (text == nullptr || !vtv::ParseJson(*text, &root)) {
        return std::nullopt;
    }
    const Json::Value* found = Locate(&root, member).Find();
    if (found == nullptr) {
        return std::nullopt;
    }
    if (found->isBool()) {
        return found->asBool();
    }
    if (found->isInt()) {
        return found->asInt();
    }
    return found->isString() ? found->asString() : vtv::CompactJson(*found);
}

vtv::Value ParseSetting(const vtv::Tv& tv, const std::string& key, const std::string& text) {
    vtv::CheckSettingKey(key);
    std::string type;
    if (const vtv::KnownSetting* known = vtv::FindKnownSetting(key)) {
        type = known->type;
    } else if (const std::optional<vtv::Value> value = tv.Get(key)) {
        type = vtv::TypeName(*value);
    } else {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         key +
                             ": nobody knows the type of this setting, and the TV does not have "
                             "it yet. Say it once: vtv set " +
                             key + " TYPE VALUE");
    }
    try {
        return vtv::ParseValue(type, text);
    } catch (const vtv::Error& error) {
        throw vtv::Error(error.kind(), key + ": " + error.what());
    }
}

std::optional<vtv::Value> SettingChanges::Get(const std::string& key) const {
    const auto found = values_.find(key);
    return found != values_.end() ? found->second : tv_.Get(key);
}

void SettingChanges::Set(const std::string& name, const std::string& text) {
    const SettingName setting = ParseSettingName(tv_, name);
    if (setting.member.empty() && values_.count(setting.key) != 0) {
        throw vtv::Error(vtv::ErrorKind::kUsage, setting.key + " is given twice.");
    }
    values_[setting.key] = setting.member.empty() ? ParseSetting(tv_, setting.key, text)
                                                  : WithMember(setting, Get(setting.key), text);
}

void SettingChanges::Write(vtv::Tv& tv) const {
    if (values_.size() == 1) {
        tv.Set(values_.begin()->first, values_.begin()->second);
        return;
    }
    tv.SetTogether({values_.begin(), values_.end()});
}

}  // namespace host
