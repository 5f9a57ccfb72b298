#include "key_description.h"

#include <algorithm>

#include "refresh.h"
#include "suppositions.h"
#include "virtual-tv/model/applications.h"
#include "virtual-tv/model/known_settings.h"

namespace host {

namespace {

template <typename Known>
void TakeKnown(const Known& known, KeyDescription* description) {
    description->type = known.type;
    description->meaning = known.meaning;
    description->values = {known.values.begin(), known.values.end()};
}

// False when there is no such thing.
bool TakeSetting(const vtv::Tv& tv, KeyDescription* description) {
    const std::string& key = description->key;
    const vtv::KnownSetting* known = vtv::FindKnownSetting(key);
    if (known != nullptr) {
        TakeKnown(*known, description);
        description->perAssistant = known->perAssistant;
    }
    bool isThere = known != nullptr;
    for (const vtv::Setting& setting : tv.Settings()) {
        if (setting.key == key) {
            isThere = true;
            description->value = setting.value;
            description->problem = setting.problem;
        }
    }
    const auto model = tv.GetModel().settings.find(key);
    if (model != tv.GetModel().settings.end()) {
        isThere = true;
        description->model = model->second;
    }
    return isThere;
}

bool TakeFeature(const vtv::Tv& tv, KeyDescription* description) {
    const vtv::KnownFeature* known = vtv::FindKnownFeature(description->key);
    if (known != nullptr) {
        TakeKnown(*known, description);
    }
    description->value = tv.Feature(description->key);
    const auto model = tv.GetModel().features.find(description->key);
    if (model != tv.GetModel().features.end()) {
        description->model = model->second;
    }
    description->isFeature = known != nullptr || description->value || description->model;
    return description->isFeature;
}

template <typename Question>
bool Reads(const std::string& key, Question question) {
    vtv::StartRecordingReads();
    question();
    const std::vector<vtv::Read> reads = vtv::StopRecordingReads();
    return std::any_of(reads.begin(), reads.end(),
                       [&](const vtv::Read& read) { return read.subject == key; });
}

std::vector<KeyDescription::Reader> ReadersOf(const Provider& provider, const std::string& key) {
    std::vector<KeyDescription::Reader> readers;
    for (const Item& item : PageItems()) {
        const auto add = [&](const char* question, auto ask) {
            if (Reads(key, ask)) {
                readers.push_back({&item, question, RuleOf(item, question)});
            }
        };
        add("visible", [&] { provider.IsVisible(item.key); });
        add("enabled", [&] { provider.IsEnabled(item.key); });
        if (HasValue(item)) {
            add("value", [&] { provider.GetInt(item.key); });
        }
        if (!provider.IsEnabled(item.key)) {
            add("reason", [&] { provider.DisableText(item.key); });
            add("popup", [&] { provider.DisablePopup(item.key); });
        }
    }
    return readers;
}

vtv::Surroundings SurroundingsOf(const vtv::Tv& tv) {
    return {tv.GetModel().accountUi,
            tv.Online(),
            tv.Feature(vtv::kChinaFeature) == vtv::Value(true),
            TextOf(tv, vtv::kPolicyKey),
            TextOf(tv, vtv::kCurrentAssistantKey),
            TextOf(tv, vtv::kTencentKey)};
}

// The surroundings where what the key stands for is another; as they are for any other key.
vtv::Surroundings Otherwise(const std::string& key, vtv::Surroundings tv) {
    if (key == vtv::kChinaFeature) {
        tv.isChina = !tv.isChina;
    } else if (key == vtv::kPolicyKey) {
        tv.policy = "[]";
    } else if (key == vtv::kCurrentAssistantKey) {
        tv.currentAssistant.clear();
    } else if (key == vtv::kTencentKey) {
        tv.tencentSettings = R"({"another":true})";
    }
    return tv;
}

bool IsSame(const vtv::Outcome& one, const vtv::Outcome& other) {
    return one.failure == other.failure &&
           std::equal(one.deeds.begin(), one.deeds.end(), other.deeds.begin(), other.deeds.end(),
                      [](const vtv::Deed& a, const vtv::Deed& b) {
                          return a.kind == b.kind && a.name == b.name && a.value == b.value;
                      });
}

std::vector<KeyDescription::Application> ApplicationsOf(const vtv::Tv& tv, const std::string& key) {
    const vtv::Surroundings now = SurroundingsOf(tv);
    const vtv::Surroundings other = Otherwise(key, now);
    std::vector<KeyDescription::Application> applications;
    for (const std::string& appId : vtv::InstalledApplications(tv.GetModel())) {
        KeyDescription::Application application{appId};
        for (const bool hasExtras : {false, true}) {
            const vtv::Outcome outcome = vtv::Finish(appId, hasExtras, now);
            application.writes |=
                std::any_of(outcome.deeds.begin(), outcome.deeds.end(), [&](const vtv::Deed& deed) {
                    return deed.kind == vtv::Deed::Kind::kSetting && deed.name == key;
                });
            application.reads |= !IsSame(outcome, vtv::Finish(appId, hasExtras, other));
        }
        if ((application.reads || application.writes) &&
            !vtv::IsForeign(vtv::FindPackage(tv.GetModel(), appId))) {
            applications.push_back(application);
        }
    }
    return applications;
}

}  // namespace

std::optional<KeyDescription> DescribeKey(const Provider& provider, const vtv::Tv& tv,
                                          const std::string& key) {
    KeyDescription description;
    description.key = key;
    if (!TakeSetting(tv, &description)) {
        description.key = vtv::FullFeatureKey(key);
        if (!TakeFeature(tv, &description)) {
            return std::nullopt;
        }
    }
    if (description.type.empty() && (description.value || description.model)) {
        description.type =
            vtv::TypeName(description.value ? *description.value : *description.model);
    }
    const vtv::Experiment asking({});  // nobody else is to notice that the provider is asked
    description.isReadAtOpening = Reads(description.key, [&] {
        const Provider another(provider.File(), Provider::Copy::kPrivate);
    });
    description.readers = ReadersOf(provider, description.key);
    description.applications = ApplicationsOf(tv, description.key);
    if (IsListed(provider)) {
        const vtv::Change change =
            description.isFeature
                ? vtv::Change{vtv::Change::What::kState, vtv::kFeatureState + description.key}
                : vtv::Change{vtv::Change::What::kSetting, description.key};
        description.items = ItemsToAsk(provider, {change});
    }
    return description;
}

}  // namespace host
