#include "app_effects.h"

#include <algorithm>

#include "virtual-tv/model/applications.h"
#include "virtual-tv/model/keys.h"

namespace explorer {

namespace {

vtv::Outcome OutcomeOf(const ConcreteTv& tv, const TvState& state, const Started& started) {
    return vtv::Finish(
        started.application, !started.extras.empty(),
        {tv.Model().model.accountUi, tv.Model().IsOnline(),
         tv.IsOn(state, Input::Kind::kFeature, vtv::kChinaFeature), tv.Model().policy.value_or(""),
         tv.TextOf(state, vtv::kCurrentAssistantKey), tv.TextOf(state, vtv::kTencentKey)});
}

bool IsForeign(const ConcreteTv& tv, const Started& started) {
    return vtv::IsForeign(vtv::FindPackage(tv.Model().model, started.application));
}

StartedApplications::const_iterator Find(const StartedApplications& running,
                                         const std::string& application) {
    return std::find_if(running.begin(), running.end(),
                        [&](const Started& started) { return started.application == application; });
}

}  // namespace

void StartApplication(ConcreteTv& tv, TvState& state, const Started& started) {
    const vtv::Model& model = tv.Model().model;
    if (started.application == vtv::kNotification ||
        !vtv::IsInstalled(model, started.application) ||
        model.applications == vtv::ApplicationMode::kRecord) {
        return;
    }
    if (model.applications == vtv::ApplicationMode::kAuto) {
        FinishApplication(tv, state, started);
        return;
    }
    StartedApplications running = tv.RunningIn(state);
    if (Find(running, started.application) == running.end()) {
        running.insert(started);
        tv.SetRunning(state, running);
    }
}

void EndApplication(ConcreteTv& tv, TvState& state, const std::string& application) {
    StartedApplications running = tv.RunningIn(state);
    if (const auto one = Find(running, application); one != running.end()) {
        running.erase(one);
        tv.SetRunning(state, running);
    }
}

bool CanFinish(const ConcreteTv& tv, const TvState& state, const Started& started) {
    return !IsForeign(tv, started) && OutcomeOf(tv, state, started).failure.empty();
}

void FinishApplication(ConcreteTv& tv, TvState& state, const Started& started) {
    if (IsForeign(tv, started)) {
        return;
    }
    for (const vtv::Deed& deed : OutcomeOf(tv, state, started).deeds) {
        switch (deed.kind) {
            case vtv::Deed::Kind::kSetting:
                tv.Set(state, Input::Kind::kSetting, deed.name, StoredValue(deed.value));
                break;
            case vtv::Deed::Kind::kConsent:
                tv.Set(state, Input::Kind::kConsent, deed.name, NumberValue(1, "int"));
                break;
            case vtv::Deed::Kind::kSignIn:
                tv.Set(state, Input::Kind::kCall, keys::LOGIN, NumberValue(1, "int"));
                break;
            case vtv::Deed::Kind::kOwnerFile:
                tv.Set(state, Input::Kind::kFile, vtv::kOwnerFolder + deed.name,
                       NumberValue(1, "bool"));
                break;
        }
    }
}

}  // namespace explorer
