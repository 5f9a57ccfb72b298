#include "trial.h"

#include <filesystem>

#include "setting_changes.h"
#include "tv_names.h"
#include "virtual-tv/model/keys.h"
#include "virtual-tv/model/known_settings.h"
#include "virtual-tv/whole_tvs.h"

namespace fs = std::filesystem;

namespace host {

namespace {

constexpr char kTakenAway[] = "(missing)";

void TryFeature(vtv::Tv& tv, const std::string& name, const std::string& text) {
    const std::string key = vtv::FullFeatureKey(name);
    const vtv::KnownFeature* known = vtv::FindKnownFeature(key);
    const std::optional<vtv::Value> value = tv.Feature(key);
    if (known == nullptr && !value) {
        ThrowNoSuchName(name);
    }
    if (text == kTakenAway) {
        tv.SetFeature(key, std::nullopt);
        return;
    }
    try {
        tv.SetFeature(
            key, vtv::ParseValue(known != nullptr ? known->type : vtv::TypeName(*value), text));
    } catch (const vtv::Error& error) {
        throw vtv::Error(error.kind(), name + ": " + error.what());
    }
}

void TrySetting(vtv::Tv& tv, const std::string& name, const std::string& text) {
    if (text != kTakenAway) {
        SettingChanges changes(tv);
        changes.Set(name, text);
        changes.Write(tv);
        return;
    }
    vtv::CheckSettingKey(name);
    if (!tv.Unset(name) && vtv::FindKnownSetting(name) == nullptr) {
        throw vtv::Error(vtv::ErrorKind::kNoSuch, name + ": the TV has no such setting.");
    }
}

}  // namespace

TrialTv::TrialTv(const std::string& dir)
    : folder_("vtv-trial"), dir_(folder_.Path() + "/" + fs::path(dir).filename().string()) {
    vtv::SyncNothing();
    vtv::CopyTv(dir, dir_);
    vtv::Tv(dir_).SetApplications(vtv::ApplicationMode::kRecord);
}

void TryOut(vtv::Tv& tv, const std::vector<std::string>& assignments) {
    for (const std::string& assignment : assignments) {
        const size_t sign = assignment.find('=');
        if (sign == std::string::npos || sign == 0) {
            throw vtv::Error(
                vtv::ErrorKind::kUsage,
                "\"" + assignment + "\": write NAME=VALUE, for example network=disconnected.");
        }
        const std::string name = assignment.substr(0, sign);
        const std::string text = assignment.substr(sign + 1);
        if (vtv::IsSettingKey(name)) {
            TrySetting(tv, name, text);
        } else if (const StateName* state = FindStateName(name)) {
            state->set(tv, text);
        } else {
            TryFeature(tv, name, text);
        }
    }
}

}  // namespace host
