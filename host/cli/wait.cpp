// vtv wait: until something is so.
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <optional>

#include "host/core/setting_changes.h"
#include "host/core/tv_names.h"
#include "program/visible_text.h"
#include "setting_text.h"
#include "verbs.h"
#include "virtual-tv/model/applications.h"
#include "virtual-tv/model/keys.h"
#include "virtual-tv/model/known_settings.h"
#include "virtual-tv/model/spelling.h"

// The header of Debian 12 does not say that this is a function of C.
extern "C" {
#include <sys/pidfd.h>
}

namespace cli {

namespace {

constexpr char kMissing[] = "(missing)";

using Clock = std::chrono::steady_clock;

// Something that is so, or not yet.
struct Condition {
    std::function<bool()> holds;
    std::string ended = {};  // the application whose end is waited for
};

std::string TextOr(const std::optional<vtv::Value>& value) {
    return value ? vtv::ToText(*value) : kMissing;
}

Condition OfSetting(const vtv::Tv& tv, const std::string& name, const std::string& value) {
    const host::SettingName setting = host::ParseSettingName(tv, name);
    if (vtv::FindKnownSetting(setting.key) == nullptr && !tv.Get(setting.key) &&
        tv.GetModel().settings.count(setting.key) == 0) {
        ThrowNoSuchKey(tv, name);
    }
    std::string wanted = value;
    if (setting.member.empty() && value != kMissing) {
        wanted = vtv::ToText(host::ParseSetting(tv, setting.key, value));
    }
    return {[&tv, setting, wanted] {
        std::optional<vtv::Value> now = tv.Get(setting.key);
        if (now && !setting.member.empty()) {
            now = host::MemberOf(*now, setting.member);
        }
        return TextOr(now) == wanted;
    }};
}

Condition OfFeature(const vtv::Tv& tv, const std::string& key, const std::string& value) {
    const vtv::KnownFeature* known = vtv::FindKnownFeature(key);
    if (known != nullptr && value != kMissing) {
        vtv::ParseValue(known->type, value);
    }
    return {[&tv, key, value] { return TextOr(tv.Feature(key)) == value; }};
}

Condition OfApplication(const vtv::Tv& tv, const std::string& app, const std::string& state) {
    if (state != "running" && state != "ended") {
        throw vtv::Error(vtv::ErrorKind::kUsage, "\"" + state +
                                                     "\": an application is running or ended: "
                                                     "write " +
                                                     app + "=running or =ended.");
    }
    const bool wanted = state == "running";
    return {[&tv, app, wanted] { return tv.IsRunning(app) == wanted; }, wanted ? "" : app};
}

// As scenarios know it: what a viewer cannot get to is hidden.
bool IsState(const std::string& state) {
    return state == "shown" || state == "hidden" || state == "enabled" || state == "dimmed" ||
           state == "disabled";
}

bool HasValue(const host::ItemView& view, const std::string& value) {
    return view.value && (view.ValueText() == value || std::to_string(*view.value) == value);
}

Condition OfItem(const host::Provider& provider, const host::Item& item,
                 const std::string& wanted) {
    const bool isSwitch = item.kind == host::ItemKind::kSwitch;
    const bool isOfSwitch = wanted == "on" || wanted == "off" || wanted == "0" || wanted == "1";
    if (!IsState(wanted) && (!host::HasValue(item) || (isSwitch && !isOfSwitch))) {
        throw vtv::Error(vtv::ErrorKind::kUsage, "\"" + wanted + "\": write " + item.name +
                                                     "=enabled, disabled, shown or hidden" +
                                                     (isSwitch               ? ", on or off."
                                                      : host::HasValue(item) ? ", or a value."
                                                                             : "."));
    }
    return {[&provider, &item, wanted] {
        const host::Page page = host::LookAtPage(provider);
        const host::ItemView& view = page[item.name];
        const bool isShown = page.IsReachable(item);
        if (!IsState(wanted)) {
            return HasValue(view, wanted);
        }
        return wanted == "shown"     ? isShown
               : wanted == "hidden"  ? !isShown
               : wanted == "enabled" ? isShown && view.enabled
                                     : isShown && !view.enabled;
    }};
}

// Throws kNoSuch for a name that there is not.
Condition OfTv(const vtv::Tv& tv, const std::string& name, const std::string& value) {
    if (vtv::IsSettingKey(name)) {
        return OfSetting(tv, name, value);
    }
    if (const host::StateName* state = host::FindStateName(name)) {
        return {[&tv, state, wanted = state->parse(value)] { return state->get(tv) == wanted; }};
    }
    if (vtv::IsInstalled(tv.GetModel(), name)) {
        return OfApplication(tv, name, value);
    }
    const std::string feature = vtv::FullFeatureKey(name);
    if (vtv::FindKnownFeature(feature) != nullptr || tv.Feature(feature)) {
        return OfFeature(tv, feature, value);
    }
    std::vector<std::string> known = vtv::InstalledApplications(tv.GetModel());
    for (const host::Item& item : host::PageItems()) {
        known.emplace_back(item.name);
    }
    for (const host::StateName& state : host::StateNames()) {
        known.emplace_back(state.name);
    }
    throw vtv::Error(vtv::ErrorKind::kNoSuch,
                     "\"" + name + "\": the TV has nothing of this name." +
                         vtv::DidYouMean(name, known) +
                         " Write an item, a settings key, an application, a feature, account, "
                         "network, language, voice-guide, tnc or pp.");
}

// Processes that are heard of when they have ended. The kernel tells of a file that is closed
// before it gives back its lock, so what the TV tells may come while the application still counts
// as running.
class EndingProcesses {
  public:
    EndingProcesses(const vtv::Tv& tv, const std::string& app) {
        if (app.empty()) {
            return;
        }
        for (const vtv::RunningApplication& running : tv.RunningApplications()) {
            const int fd = running.appId == app ? pidfd_open(running.pid, 0) : -1;
            if (fd >= 0) {
                descriptors_.push_back(fd);
            }
        }
    }
    ~EndingProcesses() {
        for (const int fd : descriptors_) {
            close(fd);
        }
    }
    EndingProcesses(const EndingProcesses&) = delete;
    EndingProcesses& operator=(const EndingProcesses&) = delete;

    const std::vector<int>& Descriptors() const { return descriptors_; }

  private:
    std::vector<int> descriptors_;
};

struct WaitOptions {
    std::string condition;
    std::optional<double> timeout;
};

Woken Until(vtv::Tv& tv, const Condition& condition, std::optional<Clock::time_point> deadline) {
    tv.WatchAll([](const vtv::Change&) {});
    tv.WatchApplications([] {});
    for (;;) {
        tv.Dispatch();
        const EndingProcesses ending(tv, condition.ended);
        if (condition.holds()) {
            return Woken::kByTv;
        }
        const Woken woken = WaitForAny(tv, ending.Descriptors(), deadline);
        if (woken != Woken::kByTv) {
            return woken;
        }
    }
}

double SecondsSince(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

void Tell(Common& common, const WaitOptions& options, Woken woken, double seconds) {
    if (common.json) {
        Json::Value json;
        json["condition"] = options.condition;
        json["met"] = woken == Woken::kByTv;
        json["seconds"] = seconds;
        PrintJson(json);
    }
    const std::string waited = std::to_string(std::lround(seconds)) + " s";
    if (woken == Woken::kBySignal) {
        TellOfSignal(common, EndingSignal(), waited);
    } else if (woken == Woken::kByTime) {
        throw Refusal(options.condition + " is not so after " + waited + ".");
    }
}

void Wait(Common& common, const WaitOptions& options) {
    const auto begin = Clock::now();
    std::optional<Clock::time_point> deadline;
    if (options.timeout) {
        deadline = begin + std::chrono::duration_cast<Clock::duration>(
                               std::chrono::duration<double>(*options.timeout));
    }
    const size_t sign = options.condition.find('=');
    if (sign == std::string::npos) {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         "\"" + options.condition +
                             "\" is no condition: write NAME=VALUE, for example "
                             "voice-wake-up=enabled.");
    }
    const std::string name = options.condition.substr(0, sign);
    const std::string value = options.condition.substr(sign + 1);
    if (const host::Item* item = host::FindItem(name)) {
        Session session(common);
        const Woken woken = Until(session.tv, OfItem(session.provider, *item, value), deadline);
        Tell(common, options, woken, SecondsSince(begin));
        return;
    }
    vtv::Tv tv(TvDir(common));
    const Woken woken = Until(tv, OfTv(tv, name, value), deadline);
    Tell(common, options, woken, SecondsSince(begin));
}

}  // namespace

void AddWait(CLI::App& app, Common& common) {
    const auto options = std::make_shared<WaitOptions>();
    CLI::App* verb = AddVerb(
        app, common, "wait", "Wait until something on the TV is so",
        "  vtv wait voice-wake-up=enabled --timeout 10\n"
        "  vtv wait voice-assistant=\"Google Assistant\"\n"
        "  vtv wait db/comss/cisblock=2 && vtv show\n"
        "  vtv wait org.nemra.voice-onboarding=ended\n\n"
        "Of an item: enabled, disabled, shown, hidden, or its value; what a viewer cannot get\n"
        "to is hidden. Of an application: running or ended. Of a setting, a member of one, a\n"
        "feature, account, network, language, voice-guide, tnc or pp: its value; (missing) for\n"
        "a setting or feature that is not there. Ends with 1 when the time is over first, and\n"
        "with 3 for a name that there is not.",
        kTv | kProvider | kJson);
    verb->add_option("CONDITION", options->condition, "NAME=VALUE")->required();
    verb->add_option("--timeout", options->timeout, "Wait no longer than this; for ever without")
        ->type_name("SECONDS")
        ->check(CLI::Range(0.0, 1e9));
    verb->callback([&common, options] { Wait(common, *options); });
}

}  // namespace cli
