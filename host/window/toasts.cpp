#include "toasts.h"

#include "host/page/viewer.h"
#include "virtual-tv/model/applications.h"
#include "virtual-tv/model/keys.h"

namespace window {

namespace {

constexpr char kAssistant[] = "voice-assistant";
constexpr char kWakeUp[] = "voice-wake-up";

void Send(vtv::Tv& tv, const host::Provider& provider, const char* item, int value) {
    provider.SetInt(host::FindItem(item)->key, value);
    tv.Dispatch();
}

// Whatever has been started does its work, or ends without where it cannot.
void FinishAll(vtv::Tv& tv) {
    for (const vtv::RunningApplication& running : tv.RunningApplications()) {
        try {
            if (running.appId != vtv::kNotification) {
                tv.FinishApplication(running.appId);
                continue;
            }
        } catch (const vtv::Error&) {
            // it is cancelled
        }
        try {
            tv.CancelApplication(running.appId);
        } catch (const vtv::Error&) {
            continue;  // it has ended by itself
        }
    }
    tv.Dispatch();
}

}  // namespace

vtv::Snapshot SetUpAll(vtv::Tv& tv, const host::Provider& provider) {
    tv.SetNetwork(vtv::Network::kConnected);
    tv.SetSignedIn(true);
    for (const char* consent : vtv::kConsents) {
        tv.SetConsent(consent, true);
    }
    tv.SetApplications(vtv::ApplicationMode::kProcess);
    tv.Dispatch();
    for (const host::Choice& choice : LookAt(provider, *host::FindItem(kAssistant)).choices) {
        Send(tv, provider, kAssistant, choice.value);
        FinishAll(tv);
        // Only who can be woken is told how.
        Send(tv, provider, kWakeUp, 1);
    }
    tv.SetApplications(vtv::ApplicationMode::kRecord);
    return tv.TakeSnapshot();
}

std::vector<Shot> ToastsOf(vtv::Tv& tv, const host::Provider& provider, const vtv::Snapshot& ready,
                           const std::string& menuLanguage) {
    tv.Restore(ready);
    tv.SetLanguage(menuLanguage);
    tv.Dispatch();
    std::vector<Shot> shots;
    const host::Page page = LookAtPage(provider);
    const host::Item& item = *host::FindItem(kAssistant);
    if (!page.IsReachable(item)) {
        return shots;
    }
    for (const host::Choice& choice : page[item.name].choices) {
        const vtv::LaunchMark mark = tv.LaunchMark();
        Send(tv, provider, kAssistant, choice.value);
        for (const vtv::Launch& launch : tv.LaunchesSince(mark)) {
            if (launch.appId == vtv::kNotification) {
                const Navigator navigator(provider, LookAtPage(provider));
                shots.push_back({std::string(item.name) + "-toast-" + std::to_string(choice.value),
                                 item.name, SceneOf(navigator, menuLanguage, {})});
                shots.back().scene.toast = host::SightOf(launch).text;
            }
        }
    }
    return shots;
}

}  // namespace window
