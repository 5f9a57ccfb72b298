// What each slot writes through its out-parameters and what it leaves alone. Each is asked twice,
// with two different prefills: what is as it was both times was left alone, what is equal both
// times was written, and anything else is a fault.
#include <algorithm>
#include <array>
#include <map>
#include <set>

#include "page.h"

using namespace recording;

namespace out_parameters {

namespace {

constexpr const char* ORVIK_TERMS = "menu/system/general-voice-voice-settings-orvik-terms";
constexpr const char* TENCENT_MORE = "menu/system/general-voice-voice-settings-tencent-more";

// Everything that a host may ask for, and what no item is.
std::vector<const char*> Keys() {
    std::vector<const char*> keys(std::begin(key::ALL), std::end(key::ALL));
    keys.insert(keys.end(), {ORVIK_TERMS, TENCENT_MORE, "menu/other", "", nullptr,
                             "menu/system/general-voice-voice-wake-up2", "provider/owner",
                             "provider/main-component", "provider/sub-component", "provider"});
    return keys;
}

// --- One call with one prefill ---

struct Prefill {
    int number;
    bool flag;
    char letter;
};
constexpr Prefill PREFILLS[] = {{-77, false, '#'}, {4711, true, '?'}};

// An out-parameter after the call.
struct Seen {
    bool isAsItWas;
    std::string content;
};
using Outs = std::map<std::string, Seen>;

Seen See(int before, int after) {
    return {before == after, std::to_string(after)};
}

// A buffer of the host's, a text already as the provider logs it: what is behind the text that is
// written must be as it was, too.
class Buffer {
  public:
    explicit Buffer(const Prefill& prefill) : letter_(prefill.letter) {
        bytes_.fill(letter_);
        bytes_.back() = '\0';
    }
    char* Out() { return bytes_.data(); }
    Seen After() {
        const std::string all(bytes_.begin(), bytes_.end() - 1);
        if (all.find_first_not_of(letter_) == std::string::npos) {
            return {true, all};
        }
        const std::size_t end = all.find('\0');
        const bool isTidy = end != std::string::npos &&
                            all.find_first_not_of(letter_, end + 1) == std::string::npos;
        return {false, isTidy ? all.substr(0, end) : "more than a text: " + all};
    }

  private:
    char letter_;
    std::array<char, 256> bytes_;
};

// A text that the host frees.
class Text {
  public:
    explicit Text(const Prefill& prefill) : before_{prefill.letter, '\0'}, after_(before_) {}
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    ~Text() {
        if (after_ != before_) {
            std::free(after_);
        }
    }
    char** Out() { return &after_; }
    Seen After() const { return {after_ == before_, after_ != nullptr ? after_ : "null"}; }

  private:
    char before_[2];
    char* after_;
};

// --- The slots ---

struct Slot {
    const char* name;
    Outs (*ask)(const SIProviderTable& page, const char* key, const Prefill& prefill);
};

Outs GetInt(const SIProviderTable& page, const char* key, const Prefill& prefill) {
    int value = prefill.number;
    page.get_int(key, &value);
    return {{"value", See(prefill.number, value)}};
}

Outs GetDisplayName(const SIProviderTable& page, const char* key, const Prefill& prefill) {
    Text text(prefill);
    page.get_display_name(key, text.Out());
    return {{"text", text.After()}};
}

Outs GetHelpText(const SIProviderTable& page, const char* key, const Prefill& prefill) {
    Text text(prefill);
    page.get_help_text(key, text.Out());
    return {{"text", text.After()}};
}

Outs GetListItems(const SIProviderTable& page, const char* key, const Prefill& prefill) {
    int count = prefill.number;
    ListItem** items = page.get_list_items(key, &count);
    page.free_list_items(items, count);
    return {{"count", See(prefill.number, count)}};
}

Outs GetMessageBoxInfo(const SIProviderTable& page, const char* key, const Prefill& prefill) {
    Buffer text(prefill);
    Buffer first(prefill);
    Buffer second(prefill);
    int buttons = prefill.number;
    page.get_messagebox_info(key, text.Out(), first.Out(), second.Out(), &buttons);
    return {{"text", text.After()},
            {"first", first.After()},
            {"second", second.After()},
            {"buttons", See(prefill.number, buttons)}};
}

Outs GetMessageBoxTitle(const SIProviderTable& page, const char* key, const Prefill& prefill) {
    Buffer title(prefill);
    page.get_messagebox_title(key, title.Out());
    return {{"title", title.After()}};
}

Outs GetDisableText(const SIProviderTable& page, const char* key, const Prefill& prefill) {
    Text text(prefill);
    bool flag = prefill.flag;
    page.get_disable_text(key, text.Out(), &flag);
    return {{"text", text.After()}, {"flag", See(prefill.flag ? 1 : 0, flag ? 1 : 0)}};
}

Outs ProviderProperty(const SIProviderTable& page, const char* key, const Prefill& prefill) {
    Text text(prefill);
    page.provider_property(key, text.Out());
    return {{"text", text.After()}};
}

Outs GetDisablePopupInfo(const SIProviderTable& page, const char* key, const Prefill& prefill) {
    Buffer message(prefill);
    Buffer title(prefill);
    Buffer first(prefill);
    Buffer second(prefill);
    Buffer action(prefill);
    int buttons = prefill.number;
    page.get_disablepopup_info(key, message.Out(), title.Out(), first.Out(), second.Out(), &buttons,
                               action.Out());
    return {{"message", message.After()}, {"title", title.After()},
            {"first", first.After()},     {"second", second.After()},
            {"action", action.After()},   {"buttons", See(prefill.number, buttons)}};
}

// Slots of a list's entry, which know no key: "item" stands for an entry, any other for none.
Outs ListItemText(const SIProviderTable& page, const char* key, const Prefill& prefill) {
    char label[] = "label";
    const ListItem item = {5, label};
    char before[] = {prefill.letter, '\0'};
    char* text = before;
    page.list_item_text(key == std::string("item") ? &item : nullptr, &text);
    return {{"text", {text == before, text != nullptr ? text : "null"}}};
}

Outs ListItemValue(const SIProviderTable& page, const char* key, const Prefill& prefill) {
    const ListItem item = {5, nullptr};
    int value = prefill.number;
    page.list_item_value(key == std::string("item") ? &item : nullptr, &value);
    return {{"value", See(prefill.number, value)}};
}

Outs ListItemKind(const SIProviderTable& page, const char* key, const Prefill& prefill) {
    const ListItem item = {5, nullptr};
    int kind = prefill.number;
    page.list_item_kind(key == std::string("item") ? &item : nullptr, &kind);
    return {{"kind", See(prefill.number, kind)}};
}

// --- What is to be written ---

using Names = std::set<std::string>;

// A TV, and what its slots write where that depends on the TV.
struct Situation {
    const char* name;
    void (*prepare)();
    Names entryReason;   // of the page and its onboarding
    Names wakeUpReason;  // of hands-free wake-up
    bool popupHasSecondButton = true;
};

void PrintTo(const Situation& situation, std::ostream* out) {
    *out << situation.name;
}

const Names NOTHING = {};
const Names FLAG = {"flag"};
const Names TEXT_AND_FLAG = {"flag", "text"};

void Old() {}
// Orvik set up, on a far-field TV whose pass-through device is connected, enabled and listening.
void FarField() {
    AgreeToTerms();
    Feature(feature::MIC, 1);
    Feature(feature::FAR_FIELD, 1);
    Set(setting::MIC, 1);
    Set(setting::FIRST_TIME, false);
    Set(setting::CONNECTED, true);
    Set(setting::PASSTHRU, true);
    Set(setting::PASSTHRU_MIC, true);
    Set(setting::FARFIELD, R"({"app.orvik":"on"})");
    Set(setting::HINT, R"({"app.orvik":"on_user"})");
}
void FarFieldMicrophoneOff() {
    FarField();
    Set(setting::PASSTHRU_MIC, false);
}
void FarFieldDisabled() {
    FarFieldMicrophoneOff();
    Set(setting::PASSTHRU, false);
}
void FarFieldDisconnected() {
    FarFieldMicrophoneOff();
    Set(setting::CONNECTED, false);
}
void PushToTalk() {
    FarField();
    Feature(feature::FAR_FIELD, 0);
}
void PushToTalkMicrophoneOff() {
    PushToTalk();
    Set(setting::PASSTHRU_MIC, false);
}
void PushToTalkDisabled() {
    PushToTalk();
    Set(setting::PASSTHRU, false);
}
void PushToTalkDisconnected() {
    PushToTalk();
    Set(setting::CONNECTED, false);
}
void BuiltInMicrophoneOff() {
    FarField();
    Set(setting::MIC, 0);
}
void WithoutBuiltInMicrophone() {
    BuiltInMicrophoneOff();
    Feature(feature::MIC, 0);
}
void NotSetUp() {
    BuiltInMicrophoneOff();
    Set(setting::FIRST_TIME, true);
}
void AnotherAssistant() {
    FarFieldMicrophoneOff();
    Set(setting::CURRENT, "app.alexa");
    tv().files.insert(file::ALEXA);
}
void SignedIn() {
    FarField();
    SignIn();
}
void China() {
    FarField();
    Feature(feature::CHINA, true);
}
void TermsNotAgreed() {
    FarField();
    tv().consents.clear();
}
void BrokenEntries() {
    FarField();
    for (const char* name : {setting::FARFIELD, setting::HINT}) {
        Set(name, R"({"app.orvik":{"on":1}})");
    }
}

const Situation SITUATIONS[] = {
    {"Old", Old, NOTHING, TEXT_AND_FLAG, false},
    {"FarField", FarField, NOTHING, FLAG},
    {"FarFieldMicrophoneOff", FarFieldMicrophoneOff, NOTHING, TEXT_AND_FLAG},
    {"FarFieldDisabled", FarFieldDisabled, NOTHING, FLAG},
    {"FarFieldDisconnected", FarFieldDisconnected, NOTHING, FLAG},
    {"PushToTalk", PushToTalk, NOTHING, FLAG},
    {"PushToTalkMicrophoneOff", PushToTalkMicrophoneOff, NOTHING, TEXT_AND_FLAG},
    {"PushToTalkDisabled", PushToTalkDisabled, NOTHING, TEXT_AND_FLAG},
    {"PushToTalkDisconnected", PushToTalkDisconnected, NOTHING, TEXT_AND_FLAG},
    {"BuiltInMicrophoneOff", BuiltInMicrophoneOff, TEXT_AND_FLAG, FLAG},
    {"WithoutBuiltInMicrophone", WithoutBuiltInMicrophone, NOTHING, FLAG},
    {"NotSetUp", NotSetUp, TEXT_AND_FLAG, NOTHING},
    {"AnotherAssistant", AnotherAssistant, NOTHING, FLAG},
    {"SignedIn", SignedIn, NOTHING, FLAG},
    {"China", China, NOTHING, FLAG},
    {"TermsNotAgreed", TermsNotAgreed, NOTHING, FLAG, false},
    {"BrokenEntries", BrokenEntries, NOTHING, FLAG},
};

bool IsOneOf(const char* key, const std::vector<const char*>& keys) {
    return std::any_of(keys.begin(), keys.end(), [key](const char* one) {
        return key != nullptr && key == std::string(one);
    });
}

Names Written(bool isWritten, const Names& names) {
    return isWritten ? names : NOTHING;
}

Names WrittenPopup(const Situation& situation, const char* key) {
    Names names = {"message", "title", "first", "action", "buttons"};
    if (situation.popupHasSecondButton) {
        names.insert("second");
    }
    return Written(IsOneOf(key, {key::ORVIK, ORVIK_TERMS, key::ORVIK_CN, key::ALEXA, key::GOOGLE,
                                 key::SALUTE, key::TENCENT, TENCENT_MORE}),
                   names);
}

Names WrittenReason(const Situation& situation, const char* key) {
    return IsOneOf(key, {key::VOICE, key::ONBOARDING}) ? situation.entryReason
           : IsOneOf(key, {key::WAKE_UP})              ? situation.wakeUpReason
                                                       : NOTHING;
}

Names WrittenValue(const Situation&, const char* key) {
    return Written(
        IsOneOf(key, {key::ASSISTANT, key::WAKE_UP, key::ALWAYS, key::SCREEN_ON, key::HINT}),
        {"value"});
}

struct Rule {
    Slot slot;
    Names (*written)(const Situation& situation, const char* key);
};

const Rule RULES[] = {
    {{"get_int", GetInt}, WrittenValue},
    // Null for what has none.
    {{"get_display_name", GetDisplayName},
     [](const Situation&, const char*) { return Names{"text"}; }},
    {{"get_help_text", GetHelpText}, [](const Situation&, const char*) { return Names{"text"}; }},
    {{"get_list_items", GetListItems},
     [](const Situation&, const char* key) {
         return Written(IsOneOf(key, {key::ASSISTANT}), {"count"});
     }},
    {{"get_messagebox_info", GetMessageBoxInfo},
     [](const Situation&, const char* key) {
         return Written(IsOneOf(key, {key::ASSISTANT}), {"text", "first", "second", "buttons"});
     }},
    {{"get_messagebox_title", GetMessageBoxTitle},
     [](const Situation&, const char* key) {
         return Written(IsOneOf(key, {key::ASSISTANT}), {"title"});
     }},
    {{"get_disable_text", GetDisableText}, WrittenReason},
    {{"provider_property", ProviderProperty},
     [](const Situation&, const char* key) {
         return Written(
             IsOneOf(key, {"provider/owner", "provider/main-component", "provider/sub-component"}),
             {"text"});
     }},
    {{"get_disablepopup_info", GetDisablePopupInfo}, WrittenPopup},
};

const Rule LIST_RULES[] = {
    {{"list_item_text", ListItemText},
     [](const Situation&, const char* key) { return Written(IsOneOf(key, {"item"}), {"text"}); }},
    {{"list_item_value", ListItemValue},
     [](const Situation&, const char* key) { return Written(IsOneOf(key, {"item"}), {"value"}); }},
    {{"list_item_kind", ListItemKind}, [](const Situation&, const char*) { return Names{"kind"}; }},
};

class OutParameters : public Provider, public testing::WithParamInterface<Situation> {
  protected:
    void SetUp() override {
        Provider::SetUp();
        Offer(WholePolicy(), "app.orvik");
        GetParam().prepare();
    }

    void Compare(const Rule& rule, const char* key) {
        const Outs one = rule.slot.ask(*page, key, PREFILLS[0]);
        const Outs two = rule.slot.ask(*page, key, PREFILLS[1]);
        const Names written = rule.written(GetParam(), key);
        for (const auto& [name, first] : one) {
            const Seen& second = two.at(name);
            const std::string what =
                std::string(rule.slot.name) + "(" + (key != nullptr ? key : "null") + "), " + name;
            if (written.count(name) == 0) {
                EXPECT_TRUE(first.isAsItWas && second.isAsItWas)
                    << what << " must be left alone and is \"" << first.content << "\", \""
                    << second.content << '"';
            } else {
                EXPECT_EQ(first.content, second.content) << what << " must be written";
            }
        }
    }
};

}  // namespace

TEST_P(OutParameters, AreWrittenOrLeftAloneAsTheSlotSays) {
    for (const Rule& rule : RULES) {
        for (const char* key : Keys()) {
            Compare(rule, key);
        }
    }
    for (const Rule& rule : LIST_RULES) {
        for (const char* key : {"item", "no item"}) {
            Compare(rule, key);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(On, OutParameters, testing::ValuesIn(SITUATIONS),
                         [](const testing::TestParamInfo<Situation>& situation) {
                             return std::string(situation.param.name);
                         });

}  // namespace out_parameters
