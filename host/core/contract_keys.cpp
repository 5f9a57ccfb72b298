// Keys are compared whole, and what no key matches is not answered.
#include <climits>
#include <set>

#include "contract_subject.h"
#include "supervised.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

namespace {

void NullKeys(const std::string& file) {
    const Subject subject(file);
    const ProviderLibrary::EntryPoints& entry = subject.loaded.Entry();
    Doing("the check functions with a null key");
    Require(entry.visibleInt(nullptr, 0) == 0, "a null key is visible");
    Require(entry.enabledInt(nullptr, 0) == 0, "a null key is enabled");
    Doing("get_int() and set_int() with a null key");
    int value = -7;
    subject.table->get_int(nullptr, &value);
    Require(value == -7, "get_int() of a null key writes a value");
    subject.table->set_int(nullptr, 1);
    Doing("the texts of a null key");
    char* text = nullptr;
    subject.table->get_display_name(nullptr, &text);
    Require(text == nullptr, "a null key has a title");
    subject.table->get_help_text(nullptr, &text);
    Require(text == nullptr, "a null key has a help text");
    subject.table->provider_property(nullptr, &text);
    Require(text == nullptr, "a null key is a property");
    bool flag = false;
    subject.table->get_disable_text(nullptr, &text, &flag);
    Require(text == nullptr, "a null key has a disable text");
    Doing("the list of a null key");
    int count = -7;
    Require(subject.table->get_list_items(nullptr, &count) == nullptr, "a null key has choices");
    Doing("the boxes of a null key");
    BoxBuffers buffers;
    buffers.AskBox(subject, nullptr);
    buffers.AskPopup(subject, nullptr);
    Require(buffers.Untouched(), "a null key writes into the host's buffers");
}

void RequireHidden(const Subject& subject, const std::string& key) {
    Require(subject.loaded.Entry().visibleInt(key.c_str(), 0) == 0, "visible: " + QuotedKey(key));
    Require(subject.loaded.Entry().enabledInt(key.c_str(), 0) == 0, "enabled: " + QuotedKey(key));
}

void UnknownKeysHidden(const std::string& file) {
    const Subject subject(file);
    for (const std::string& key : StrangeKeys()) {
        RequireHidden(subject, key);
    }
}

// What must hold of a key that only looks like one of the page. The popup is not among it: it may
// serve whole families of keys.
void RequireNoAnswer(const Subject& subject, const std::string& key) {
    const std::string name = " of " + QuotedKey(key);
    int value = -7;
    subject.table->get_int(key.c_str(), &value);
    Require(value == -7, "get_int() writes the value" + name);
    BoxBuffers buffers;
    buffers.AskBox(subject, key.c_str());
    Require(buffers.Untouched(), "a box is written" + name);
    char* text = nullptr;
    subject.table->get_display_name(key.c_str(), &text);
    subject.table->get_help_text(key.c_str(), &text);
    subject.table->provider_property(key.c_str(), &text);
    Require(text == nullptr, "a text is handed out" + name);
    int count = 0;
    Require(subject.table->get_list_items(key.c_str(), &count) == nullptr,
            "a list is handed out" + name);
}

void UnknownKeysWriteNothing(const std::string& file) {
    const Subject subject(file);
    for (const std::string& key : StrangeKeys()) {
        RequireNoAnswer(subject, key);
        BoxBuffers buffers;
        buffers.AskPopup(subject, key.c_str());
        Require(buffers.Untouched(), "a popup is written of " + QuotedKey(key));
    }
}

void UnknownKeysSetNothing(const std::string& file) {
    const Subject subject(file);
    vtv::Tv& tv = *vtv::Current();
    tv.Dispatch();
    std::string written;
    tv.WatchAll([&written](const vtv::Change& change) { written = change.name; });
    for (const std::string& key : StrangeKeys()) {
        for (const int value : {0, 1, -1}) {
            subject.table->set_int(key.c_str(), value);
        }
        tv.Dispatch();
        Require(written.empty(), "set_int() of " + QuotedKey(key) + " writes " + written);
    }
    Require(tv.Launches().empty(), "set_int() of an unknown key starts an application");
}

void KeysComparedWhole(const std::string& file) {
    const Subject subject(file);
    const std::vector<std::string> page = PageKeys();
    const std::set<std::string> known(page.begin(), page.end());
    for (const std::string& key : page) {
        for (const std::string& other : {key + "x", key + "/", key + " ", " " + key, "/" + key,
                                         key.substr(0, key.size() - 1), key.substr(1)}) {
            if (known.count(other) == 0) {
                RequireHidden(subject, other);
                RequireNoAnswer(subject, other);
            }
        }
    }
}

void KeysHaveCase(const std::string& file) {
    const Subject subject(file);
    for (const std::string& key : PageKeys()) {
        std::string upper = key;
        for (char& c : upper) {
            c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        }
        RequireHidden(subject, upper);
        RequireNoAnswer(subject, upper);
    }
}

void KeysReadEachTime(const std::string& file) {
    const Subject subject(file);
    for (const std::string& key : PageKeys()) {
        std::string buffer = key;
        subject.loaded.Entry().visibleInt(buffer.c_str(), 0);
        subject.loaded.Entry().enabledInt(buffer.c_str(), 0);
        int value = -7;
        subject.table->get_int(buffer.c_str(), &value);
        buffer.front() = 'x';
        const std::string otherwise =
            "the answer for " + QuotedKey(key) + " is given again for another key at its address";
        Require(subject.loaded.Entry().visibleInt(buffer.c_str(), 0) == 0, otherwise);
        Require(subject.loaded.Entry().enabledInt(buffer.c_str(), 0) == 0, otherwise);
        value = -7;
        subject.table->get_int(buffer.c_str(), &value);
        Require(value == -7, otherwise);
    }
}

void NullOutPointers(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        if (HasValue(item)) {
            Doing("get_int() with a null out-pointer");
            subject.table->get_int(item.key, nullptr);
        }
        Doing("a text slot with a null out-pointer");
        subject.table->get_display_name(item.key, nullptr);
        subject.table->get_help_text(item.key, nullptr);
        subject.table->get_disable_text(item.key, nullptr, nullptr);
        Doing("a box with null buffers");
        subject.table->get_messagebox_info(item.key, nullptr, nullptr, nullptr, nullptr);
        subject.table->get_messagebox_title(item.key, nullptr);
        subject.table->get_disablepopup_info(item.key, nullptr, nullptr, nullptr, nullptr, nullptr,
                                             nullptr);
        Doing("get_list_items() without a count");
        subject.table->get_list_items(item.key, nullptr);
    }
    Doing("provider_property() with a null out-pointer");
    subject.table->provider_property("provider/owner", nullptr);
}

void TypedChecksSayYes(const std::string& file) {
    const Subject subject(file);
    const ProviderLibrary::EntryPoints& entry = subject.loaded.Entry();
    for (const char* key : {kVoiceKey, "x", "", static_cast<const char*>(nullptr)}) {
        const std::string name = " of " + (key == nullptr ? "a null key" : QuotedKey(key));
        Require(entry.visibleBool(key, false) == 1 && entry.visibleDouble(key, 0) == 1 &&
                    entry.visibleString(key, "") == 1 && entry.visibleString(key, nullptr) == 1,
                "check_visibility_bool, _double or _string" + name + " is not 1");
        Require(entry.enabledBool(key, false) == 1 && entry.enabledDouble(key, 0) == 1 &&
                    entry.enabledString(key, "") == 1 && entry.enabledString(key, nullptr) == 1,
                "check_enable_bool, _double or _string" + name + " is not 1");
    }
}

void AnswersAreZeroOrOne(const std::string& file) {
    const Subject subject(file);
    for (const std::string& key : PageKeys()) {
        const int visible = subject.loaded.Entry().visibleInt(key.c_str(), 0);
        const int enabled = subject.loaded.Entry().enabledInt(key.c_str(), 0);
        Require(visible == 0 || visible == 1,
                QuotedKey(key) + ": visibility " + std::to_string(visible));
        Require(enabled == 0 || enabled == 1,
                QuotedKey(key) + ": enabling " + std::to_string(enabled));
    }
}

void ValuesDoNotSwayRules(const std::string& file) {
    const Subject subject(file);
    const ProviderLibrary::EntryPoints& entry = subject.loaded.Entry();
    for (const std::string& key : PageKeys()) {
        const int visible = entry.visibleInt(key.c_str(), 0);
        const int enabled = entry.enabledInt(key.c_str(), 0);
        for (const int value : {1, -1, SI_ACTION_VALUE, INT_MAX, INT_MIN}) {
            Require(
                entry.visibleInt(key.c_str(), value) == visible &&
                    entry.enabledInt(key.c_str(), value) == enabled,
                QuotedKey(key) + " is answered otherwise with the value " + std::to_string(value));
        }
    }
}

}  // namespace

std::vector<ContractCheck> KeyChecks() {
    return {
        {"null-keys-match-nothing",
         "A null key is hidden and dimmed, and nothing is written for it.", NullKeys},
        {"unknown-keys-are-hidden", "Unknown keys of any bytes and length are hidden and dimmed.",
         UnknownKeysHidden},
        {"unknown-keys-write-nothing", "For an unknown key no value, text, list or box is written.",
         UnknownKeysWriteNothing},
        {"unknown-keys-set-nothing",
         "A value for an unknown key changes nothing on the TV and starts nothing.",
         UnknownKeysSetNothing},
        {"keys-are-compared-whole",
         "A key that only begins or ends like one of the page is unknown.", KeysComparedWhole},
        {"keys-have-case", "A key in capital letters is unknown.", KeysHaveCase},
        {"keys-are-read-each-time", "What counts is the text of a key, not its address.",
         KeysReadEachTime},
        {"null-out-pointers-are-spared", "A null out-pointer is not written.", NullOutPointers},
        {"typed-checks-say-yes", "The bool, double and string checks answer 1 for any key.",
         TypedChecksSayYes},
        {"answers-are-0-or-1", "Visibility and enabling answer 0 or 1.", AnswersAreZeroOrOne},
        {"values-do-not-sway-rules", "Visibility and enabling do not look at the value.",
         ValuesDoNotSwayRules},
    };
}

}  // namespace host
