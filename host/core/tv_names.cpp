#include "tv_names.h"

#include <algorithm>
#include <regex>

#include "virtual-tv/model/keys.h"
#include "virtual-tv/model/known_settings.h"
#include "virtual-tv/model/spelling.h"

namespace host {

namespace {

std::string OnOff(bool isOn) {
    return isOn ? "on" : "off";
}

std::string Switch(const std::string& text) {
    return OnOff(ParseSwitch(text));
}

std::string Account(const std::string& text) {
    if (text != "signed-in" && text != "signed-out") {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         "\"" + text + "\": write signed-in or signed-out.");
    }
    return text;
}

std::string Language(const std::string& text) {
    if (const std::string problem = ProblemOfLanguage(text); !problem.empty()) {
        throw vtv::Error(text.empty() ? vtv::ErrorKind::kUsage : vtv::ErrorKind::kNoSuch,
                         problem + " Where another one is meant: vtv set " + vtv::kLanguageKey);
    }
    return text;
}

}  // namespace

std::string ProblemOfLanguage(const std::string& language) {
    const std::vector<std::string> known = vtv::Tv::Languages();
    const auto is = [&](const std::string& word) {
        return std::find(known.begin(), known.end(), word) != known.end();
    };
    static const std::regex form("([a-z]+)_[A-Z]{2}");
    std::smatch parts;
    if (is(language) || (std::regex_match(language, parts, form) && is(parts[1]))) {
        return "";
    }
    std::string names;
    for (const std::string& one : known) {
        names += " " + one;
    }
    return "there are no texts in the language \"" + language + "\"; there are:" + names +
           ", each with or without a country, \"de_DE\".";
}

const std::vector<StateName>& StateNames() {
    using Tv = vtv::Tv;
    using Text = const std::string&;
    static const std::vector<StateName> names = {
        {"account",
         [](const Tv& tv) { return std::string(tv.SignedIn() ? "signed-in" : "signed-out"); },
         Account, [](Tv& tv, Text value) { tv.SetSignedIn(value == "signed-in"); }},
        {"network", [](const Tv& tv) { return std::string(vtv::ToText(tv.GetNetwork())); },
         [](Text text) { return std::string(vtv::ToText(vtv::ParseNetwork(text))); },
         [](Tv& tv, Text value) { tv.SetNetwork(vtv::ParseNetwork(value)); }},
        {"language", [](const Tv& tv) { return tv.Language(); }, Language,
         [](Tv& tv, Text value) { tv.SetLanguage(value); }},
        {"voice-guide", [](const Tv& tv) { return OnOff(tv.VoiceGuide()); }, Switch,
         [](Tv& tv, Text value) { tv.Set(vtv::kVoiceGuideKey, value == "on"); }},
        {vtv::kTermsConsent, [](const Tv& tv) { return OnOff(tv.Consent(vtv::kTermsConsent)); },
         Switch, [](Tv& tv, Text value) { tv.SetConsent(vtv::kTermsConsent, value == "on"); }},
        {vtv::kPrivacyConsent, [](const Tv& tv) { return OnOff(tv.Consent(vtv::kPrivacyConsent)); },
         Switch, [](Tv& tv, Text value) { tv.SetConsent(vtv::kPrivacyConsent, value == "on"); }},
    };
    return names;
}

const StateName* FindStateName(const std::string& name) {
    for (const StateName& known : StateNames()) {
        if (name == known.name || name == std::string(vtv::kConsentState) + known.name) {
            return &known;
        }
    }
    return nullptr;
}

bool ParseSwitch(const std::string& text) {
    if (text == "on" || text == "true" || text == "1") {
        return true;
    }
    if (text == "off" || text == "false" || text == "0") {
        return false;
    }
    throw vtv::Error(vtv::ErrorKind::kUsage, "\"" + text + "\": write on or off.");
}

void ThrowNoSuchName(const std::string& name) {
    std::vector<std::string> names;
    for (const StateName& known : StateNames()) {
        names.emplace_back(known.name);
    }
    const std::string known = vtv::Join(names);
    for (const vtv::KnownFeature& feature : vtv::KnownFeatures()) {
        names.push_back(feature.Name());
    }
    throw vtv::Error(vtv::ErrorKind::kNoSuch, "\"" + name + "\": the TV has nothing of this name." +
                                                  vtv::DidYouMean(name, names) +
                                                  " Write a settings key, a feature, or " + known +
                                                  ".");
}

}  // namespace host
