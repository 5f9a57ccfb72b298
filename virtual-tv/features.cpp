// Feature configuration: what the model has, and what was changed on this TV to try it.
#include "platform/features.h"

#include <cstring>

#include "serve.h"
#include "tv_impl.h"
#include "virtual-tv/model/known_settings.h"

namespace vtv {

namespace {

// A tried value, and the mark that the TV lacks the feature, in the TV's state.
std::string OverrideKey(const std::string& key) {
    return kFeatureState + key;
}
std::string AbsenceKey(const std::string& key) {
    return kAbsentFeatureState + key;
}

std::optional<Value> ReadFeature(const Tv::Impl& tv, const std::string& key) {
    if (std::optional<Value> tried = tv.ReadState(OverrideKey(key))) {
        return tried;
    }
    if (tv.StateOr<bool>(AbsenceKey(key), false)) {
        return std::nullopt;
    }
    const auto found = tv.model.features.find(key);
    return found != tv.model.features.end() ? std::optional<Value>(found->second) : std::nullopt;
}

// A feature of another type is as good as none.
template <typename T>
Served Answer(const char* function, const char* key, T* found) {
    if (key == nullptr || found == nullptr) {
        return {false, platform::NO_SUCH_FEATURE};
    }
    const auto read = [&](Tv::Impl& tv) {
        const std::optional<Value> value = ReadFeature(tv, key);
        if (!value || !std::holds_alternative<T>(*value)) {
            return false;
        }
        *found = std::get<T>(*value);
        return true;
    };
    return TryRead(function, key, found, read, platform::NO_SUCH_FEATURE);
}

}  // namespace

void BringFeatures(const Model& model, const std::map<std::string, Value>& wanted,
                   std::map<std::string, Value>* state) {
    for (auto entry = state->begin(); entry != state->end();) {
        const bool ofFeature = entry->first.rfind(OverrideKey(""), 0) == 0 ||
                               entry->first.rfind(AbsenceKey(""), 0) == 0;
        entry = ofFeature ? state->erase(entry) : std::next(entry);
    }
    for (const auto& [key, value] : model.features) {
        if (wanted.count(key) == 0) {
            state->emplace(AbsenceKey(key), true);
        }
    }
    for (const auto& [key, value] : wanted) {
        const auto found = model.features.find(key);
        if (found == model.features.end() || found->second != value) {
            state->emplace(OverrideKey(key), value);
        }
    }
}

std::optional<Value> Tv::Feature(const std::string& key) const {
    return ReadFeature(*impl_, key);
}

std::map<std::string, Value> Tv::Features() const {
    std::map<std::string, Value> features = impl_->model.features;
    for (const auto& [key, value] : State()) {
        if (key.rfind(OverrideKey(""), 0) == 0) {
            features[key.substr(OverrideKey("").size())] = value;
        } else if (key.rfind(AbsenceKey(""), 0) == 0) {
            features.erase(key.substr(AbsenceKey("").size()));
        }
    }
    return features;
}

void Tv::SetFeature(const std::string& key, const std::optional<Value>& value) {
    if (value) {
        CheckFeature(key, *value);
        impl_->state.Write(OverrideKey(key), *value);
        impl_->state.Remove(AbsenceKey(key));
    } else {
        impl_->state.Write(AbsenceKey(key), true);
        impl_->state.Remove(OverrideKey(key));
    }
}

void Tv::ResetFeature(const std::string& key) {
    impl_->state.Remove(OverrideKey(key));
    impl_->state.Remove(AbsenceKey(key));
}

}  // namespace vtv

extern "C" {

VTV_EXPORT int system_info_get_custom_bool(const char* key, bool* value) {
    return vtv::Answer("system_info_get_custom_bool", key, value).result;
}

VTV_EXPORT int system_info_get_custom_int(const char* key, int* value) {
    return vtv::Answer("system_info_get_custom_int", key, value).result;
}

VTV_EXPORT int system_info_get_custom_string(const char* key, char** value) {
    constexpr char kFunction[] = "system_info_get_custom_string";
    std::string text;
    const vtv::Served served = vtv::Answer(kFunction, key, value != nullptr ? &text : nullptr);
    if (!served.isDone || value == nullptr) {
        return served.result;
    }
    char* const copy = strdup(text.c_str());
    if (copy == nullptr) {
        return platform::FailureOf(kFunction);
    }
    *value = copy;
    return 0;
}

}  // extern "C"
