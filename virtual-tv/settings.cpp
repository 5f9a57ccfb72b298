// The settings store: the TV's keys under "db/" and "memory/", and vconf_*.
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/settings_store.h"
#include "serve.h"
#include "tv_impl.h"

struct keynode {
    const char* key;
};

namespace vtv {

struct KeyCallback {
    std::string key;
    vconf_callback_fn callback;
    void* userData;
    Tv::WatchId watch;
};

namespace {

// A damaged value is told of once a process, not at each of the page's many reads.
void ReportDamage(Tv::Impl& tv, const std::string& key, const std::string& problem) {
    if (tv.reportedDamage.emplace(key, true).second) {
        tv.LogLine(kError, problem);
    }
}

template <typename T>
bool ReadSetting(Tv::Impl& tv, const char* key, T* result) {
    if (key == nullptr || !IsSettingKey(key)) {
        return false;
    }
    Value value;
    std::string problem;
    switch (tv.StoreOf(key).Read(key, &value, &problem)) {
        case Store::Status::kMissing:
            return false;
        case Store::Status::kDamaged:
            ReportDamage(tv, key, problem);
            return false;
        case Store::Status::kOk:
            break;
    }
    if (!std::holds_alternative<T>(value)) {
        return false;
    }
    *result = std::move(std::get<T>(value));
    return true;
}

template <typename T>
Served ServeSetting(const char* function, const char* key, T* result) {
    return TryRead(function, key, result,
                   [&](Tv::Impl& tv) { return ReadSetting(tv, key, result); });
}

bool WriteSetting(Tv::Impl& tv, const char* key, const Value& value) {
    if (key == nullptr || !IsSettingKey(key)) {
        return false;
    }
    tv.StoreOf(key).Write(key, value);
    if (std::strcmp(key, kLanguageKey) == 0 && std::holds_alternative<std::string>(value)) {
        BindTexts(std::get<std::string>(value));
    }
    return true;
}

void RequirePrefix(const std::string& key) {
    if (!IsSettingKey(key)) {
        throw Error(
            ErrorKind::kUsage,
            "\"" + key +
                "\" is no settings key: one begins with \"db/\" (kept) or \"memory/\" (until the "
                "next power cycle).");
    }
}

}  // namespace

void CheckSettingKey(const std::string& key) {
    RequirePrefix(key);
    Store::RequireKey(key);
}

Store& Tv::Impl::StoreOf(const std::string& key) {
    return const_cast<Store&>(static_cast<const Impl*>(this)->StoreOf(key));
}

const Store& Tv::Impl::StoreOf(const std::string& key) const {
    RequirePrefix(key);
    return IsKeptSetting(key) ? settings : memory;
}

std::optional<Setting> Tv::Find(const std::string& key) const {
    Setting setting{key, std::nullopt, ""};
    Value value;
    switch (impl_->StoreOf(key).Read(key, &value, &setting.problem)) {
        case Store::Status::kOk:
            setting.value = std::move(value);
            return setting;
        case Store::Status::kMissing:
            return std::nullopt;
        case Store::Status::kDamaged:
            break;
    }
    return setting;
}

std::optional<Value> Tv::Get(const std::string& key) const {
    const std::optional<Setting> setting = Find(key);
    if (setting && !setting->value) {
        throw Error(ErrorKind::kPlatform, setting->problem);
    }
    return setting ? setting->value : std::nullopt;
}

void Tv::Set(const std::string& key, const Value& value) {
    impl_->StoreOf(key).Write(key, value);
    if (key == kLanguageKey && Current() == this) {
        BindTexts(Language());
    }
}

bool Tv::Unset(const std::string& key) {
    return impl_->StoreOf(key).Remove(key);
}

std::optional<Writing> Tv::LastWriting(const std::string& key) const {
    return impl_->StoreOf(key).LastWriting(key);
}

std::vector<Setting> Tv::Settings() const {
    std::vector<Setting> settings = impl_->settings.List();
    for (Setting& setting : impl_->memory.List()) {
        settings.push_back(std::move(setting));
    }
    RequireNotTooMany(impl_->dir, "settings", settings.size());
    return settings;
}

std::map<std::string, Value> Tv::State() const {
    std::map<std::string, Value> state;
    for (const Setting& setting : impl_->state.List()) {
        if (setting.value && ProblemOfState(setting.key, *setting.value).empty()) {
            state[setting.key] = *setting.value;
        }
    }
    return state;
}

std::optional<Value> Tv::Impl::ReadState(const std::string& key) const {
    Value value;
    std::string problem;
    const bool isGood = state.Read(key, &value, &problem) == Store::Status::kOk &&
                        ProblemOfState(key, value).empty();
    return isGood ? std::optional(value) : std::nullopt;
}

void ForgetKeyCallbacks(Tv::Impl& tv) {
    if (Tv* on = Current(); on != nullptr && &on->impl() == &tv) {
        for (const auto& callback : tv.keyCallbacks) {
            on->Unwatch(callback->watch);
        }
    }
    tv.keyCallbacks.clear();
}

}  // namespace vtv

// --- The platform calls ---

using vtv::Serve;

extern "C" {

VTV_EXPORT int vconf_get_int(const char* key, int* value) {
    return value != nullptr ? vtv::ServeSetting("vconf_get_int", key, value).result
                            : platform::FailureOf("vconf_get_int");
}

VTV_EXPORT int vconf_get_bool(const char* key, int* value) {
    if (value == nullptr) {
        return platform::FailureOf("vconf_get_bool");
    }
    bool flag = false;
    const vtv::Served served = vtv::ServeSetting("vconf_get_bool", key, &flag);
    if (served.isDone) {
        *value = flag ? 1 : 0;
    }
    return served.result;
}

VTV_EXPORT char* vconf_get_str(const char* key) {
    std::string text;
    return vtv::ServeSetting("vconf_get_str", key, &text).isDone ? strdup(text.c_str()) : nullptr;
}

VTV_EXPORT int vconf_set_int(const char* key, int value) {
    return Serve("vconf_set_int",
                 [&](vtv::Tv::Impl& tv) { return vtv::WriteSetting(tv, key, value); });
}

VTV_EXPORT int vconf_set_bool(const char* key, int value) {
    return Serve("vconf_set_bool",
                 [&](vtv::Tv::Impl& tv) { return vtv::WriteSetting(tv, key, value != 0); });
}

VTV_EXPORT int vconf_set_str(const char* key, const char* value) {
    return Serve("vconf_set_str", [&](vtv::Tv::Impl& tv) {
        return value != nullptr && vtv::WriteSetting(tv, key, std::string(value));
    });
}

VTV_EXPORT int vconf_notify_key_changed(const char* key, vconf_callback_fn callback,
                                        void* userData) {
    return Serve("vconf_notify_key_changed", [&](vtv::Tv::Impl& tv) {
        if (key == nullptr || callback == nullptr || !vtv::IsSettingKey(key)) {
            return false;
        }
        for (const auto& known : tv.keyCallbacks) {
            if (known->key == key && known->callback == callback) {
                known->userData = userData;
                return true;
            }
        }
        auto entry =
            std::make_shared<vtv::KeyCallback>(vtv::KeyCallback{key, callback, userData, 0});
        entry->watch = vtv::Current()->Watch(key, [entry] {
            keynode node{entry->key.c_str()};
            entry->callback(&node, entry->userData);
        });
        tv.keyCallbacks.push_back(entry);
        return true;
    });
}

VTV_EXPORT int vconf_ignore_key_changed(const char* key, vconf_callback_fn callback) {
    return Serve("vconf_ignore_key_changed", [&](vtv::Tv::Impl& tv) {
        for (auto entry = tv.keyCallbacks.begin(); entry != tv.keyCallbacks.end(); ++entry) {
            if (key != nullptr && (*entry)->key == key && (*entry)->callback == callback) {
                vtv::Current()->Unwatch((*entry)->watch);
                tv.keyCallbacks.erase(entry);
                return true;
            }
        }
        return false;
    });
}

}  // extern "C"
