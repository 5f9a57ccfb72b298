#include "explain.h"

#include <array>
#include <filesystem>

#include <json/json.h>

#include "known_settings.h"

namespace host {

namespace {

struct Phrase {
    const char*
        subject;      // settings key, feature key, consent item, or function where it says it all
    const char* yes;  // true, or a number above 0
    const char* no;   // false, 0, or a read that failed
};

constexpr char kCurrentAssistantKey[] = "db/multi-assistant/default_assistant_appid";
constexpr char kBlockKey[] = "db/comss/cisblock";
constexpr char kTencentKey[] = "db/tencent-voice-assistant/voice-setting";
constexpr char kOrvikFeature[] = "com.vantelo/featureconf/voice.voice_recognition_orvik_support";

#define FEATURE "com.vantelo/featureconf/"
constexpr std::array kPhrases = {
    Phrase{"sso_get_login_state", "signed in", "signed out"},
    Phrase{"tnc", "the terms are agreed to", "the terms are not agreed to"},
    Phrase{"pp", "the privacy policy is agreed to", "the privacy policy is not agreed to"},
    Phrase{"connection_profile_check_default_gateway", "the network is up", "the network is down"},
    Phrase{"AOVSystemDataGetAOVMode", "always-on voice is on", "always-on voice is off"},
    Phrase{"memory/passthru/connected", "a pass-through device is connected",
           "no pass-through device is connected"},
    Phrase{"db/menu/voice/passthru", "pass-through is switched on", "pass-through is switched off"},
    Phrase{"db/passthru/mic_state", "the pass-through microphone is on",
           "the pass-through microphone is off"},
    Phrase{"db/voice-app/activate_first_time", "Orvik has not been set up yet", "Orvik is set up"},
    Phrase{"db/menu/voice/is_k_voice", "the legacy voice assistant is in use",
           "the legacy voice assistant is not in use"},
    Phrase{"db/aisound-app/soundsensorflag_prev", "the built-in microphone is on",
           "the built-in microphone is off"},
    Phrase{FEATURE "recorder.microphone_type", "the TV has a built-in microphone",
           "the TV has no built-in microphone"},
    Phrase{FEATURE "voice.voice_recognition_far_field_type", "the TV has far-field microphones",
           "the TV has no far-field microphones"},
    Phrase{FEATURE "voice.farfield_passthru_support", "the TV supports pass-through",
           "the TV does not support pass-through"},
    Phrase{FEATURE "cn_ai_service_supported", "the TV is a China model",
           "the TV is no China model"},
    Phrase{FEATURE "voice.voice_recognition_support", "the TV has voice recognition",
           "the TV has no voice recognition"},
    Phrase{FEATURE "voice.voice_recognition_orvik_support", "the TV supports Orvik",
           "the TV does not support Orvik"},
};
#undef FEATURE

bool IsYes(const vtv::Value& value) {
    if (const int* number = std::get_if<int>(&value)) {
        return *number > 0;
    }
    if (const bool* flag = std::get_if<bool>(&value)) {
        return *flag;
    }
    return !std::get<std::string>(value).empty();
}

std::string Quoted(const vtv::Read& read) {
    if (!read.value) {
        return "missing";
    }
    const std::string text = vtv::ToText(*read.value);
    return std::holds_alternative<std::string>(*read.value) ? "\"" + text + "\"" : text;
}

// The assistant's member of a setting that holds one JSON object for all of them.
std::string DescribeMember(const vtv::Read& read, const vtv::Tv& tv) {
    const std::string assistant = vtv::ToText(tv.Get(kCurrentAssistantKey).value_or(std::string()));
    Json::Value document;
    const std::string text = read.value ? vtv::ToText(*read.value) : "";
    if (!Json::Reader().parse(text, document) || !document.isObject() ||
        !document.isMember(assistant)) {
        return read.subject + " says nothing about " + (assistant.empty() ? "\"\"" : assistant);
    }
    const Json::Value& member = document[assistant];
    return read.subject + " has \"" +
           (member.isConvertibleTo(Json::stringValue) ? member.asString() : "...") + "\" for " +
           assistant;
}

std::string DescribeTencent(const vtv::Read& read) {
    Json::Value document;
    const std::string text = read.value ? vtv::ToText(*read.value) : "";
    const bool done = Json::Reader().parse(text, document) && document.isObject() &&
                      document.isMember("onboarding_completed");
    return done ? "Tencent's onboarding is done" : "Tencent's onboarding is not done";
}

std::string DescribeCurrentAssistant(const vtv::Read& read) {
    const std::string id = read.value ? vtv::ToText(*read.value) : "";
    return id.empty() ? "no assistant is chosen" : "the current assistant is " + id;
}

std::string DescribeMarker(const vtv::Read& read) {
    const std::string name = std::filesystem::path(read.subject).filename().string();
    const bool there = read.value && IsYes(*read.value);
    return std::string(there ? "the sign-in marker " : "there is no sign-in marker ") + name +
           (there ? " is there" : "");
}

std::string ListedAssistants(const vtv::Tv& tv) {
    Json::Value policy;
    const std::string text = vtv::ToText(tv.Get(kPolicyKey).value_or(std::string()));
    const int count = Json::Reader().parse(text, policy) && policy.isArray()
                          ? static_cast<int>(policy.size())
                          : 0;
    return "the policy offers " + (count == 0   ? std::string("no assistant")
                                   : count == 1 ? std::string("one assistant")
                                                : std::to_string(count) + " assistants");
}

// The list of assistants is kept by the provider: no read tells of it. It settles what is asked
// without any read, and what goes on after the last consent was found to be given.
bool IsSettledByTheList(const Reasons& visible) {
    return visible.reads.empty() ||
           (visible.reads.back().subject == "pp" && visible.reads.back().value == vtv::Value(true));
}

template <typename Question>
Reasons Ask(const char* question, const vtv::Tv& tv, Question ask) {
    Reasons reasons;
    reasons.question = question;
    vtv::StartRecordingReads();
    try {
        reasons.answer = ask();
    } catch (...) {
        vtv::StopRecordingReads();
        throw;
    }
    reasons.reads = vtv::StopRecordingReads();
    reasons.because = reasons.reads.empty() ? "always so" : Describe(reasons.reads.back(), tv);
    return reasons;
}

}  // namespace

std::string Describe(const vtv::Read& read, const vtv::Tv& tv) {
    if (read.subject == kOrvikFeature && !read.value) {
        return "the TV does not tell whether it supports Orvik, which counts as support";
    }
    for (const Phrase& phrase : kPhrases) {
        if (read.subject == phrase.subject || read.function == phrase.subject) {
            return read.value && IsYes(*read.value) ? phrase.yes : phrase.no;
        }
    }
    if (read.subject == kCurrentAssistantKey) {
        return DescribeCurrentAssistant(read);
    }
    if (read.subject == kTencentKey) {
        return DescribeTencent(read);
    }
    if (read.function == "access") {
        return DescribeMarker(read);
    }
    const KnownSetting* known = FindKnownSetting(read.subject);
    if (known != nullptr && known->perAssistant) {
        return DescribeMember(read, tv);
    }
    if (read.subject == kBlockKey) {
        return read.value && *read.value == vtv::Value(2) ? "the content hub is blocked"
                                                          : "the content hub is not blocked";
    }
    return (read.subject.empty() ? read.function : read.subject) + " is " + Quoted(read);
}

Explanation Explain(const Provider& provider, const vtv::Tv& tv, const Item& item) {
    Explanation explanation;
    explanation.item = &item;
    explanation.view = LookAt(provider, item);
    const ItemView& view = explanation.view;

    Reasons visible =
        Ask("visible", tv, [&] { return provider.IsVisible(item.key) ? "shown" : "hidden"; });
    if (IsSettledByTheList(visible)) {
        visible.because = ListedAssistants(tv);
    }
    explanation.reasons.push_back(visible);
    explanation.reasons.push_back(
        Ask("enabled", tv, [&] { return provider.IsEnabled(item.key) ? "enabled" : "dimmed"; }));
    if (HasValue(item)) {
        explanation.reasons.push_back(Ask("value", tv, [&] {
            ItemView now = view;
            now.value = provider.GetInt(item.key);
            return now.ValueText();
        }));
    }

    const Reasons& decisive = !view.visible ? explanation.reasons[0]
                              : !view.enabled || explanation.reasons.size() < 3
                                  ? explanation.reasons[1]
                                  : explanation.reasons[2];
    explanation.sentence = view.Label() + " is " + decisive.answer + ": " + decisive.because;
    return explanation;
}

}  // namespace host
