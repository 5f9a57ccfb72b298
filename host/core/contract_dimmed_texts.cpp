// Why an item is dimmed: slot 41, which writes only when it has something to say.
#include <cstdlib>
#include <cstring>

#include "contract_subject.h"
#include "virtual-tv/model/keys.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

namespace {

// The page has something to say: its microphone is off.
void SwitchMicrophoneOff() {
    vtv::Current()->Set(vtv::kMicrophoneKey, 0);
    vtv::Current()->Dispatch();
}

void DisableTextsAreFresh(const std::string& file) {
    const Subject subject(file);
    SwitchMicrophoneOff();
    int texts = 0;
    for (const Item& item : PageItems()) {
        char* one = nullptr;
        char* two = nullptr;
        bool flag = false;
        subject.table->get_disable_text(item.key, &one, &flag);
        subject.table->get_disable_text(item.key, &two, &flag);
        Require(one == nullptr || one != two,
                std::string(item.name) + ": the same text is handed out twice");
        texts += one != nullptr ? 1 : 0;
        std::free(one);
        std::free(two);
    }
    Require(texts > 0, "the microphone is off, but no item says why it is dimmed");
}

void DisableTextsWrittenOrLeft(const std::string& file) {
    const Subject subject(file);
    SwitchMicrophoneOff();
    std::vector<std::string> keys = StrangeKeys();
    for (const std::string& key : PageKeys()) {
        keys.push_back(key);
    }
    for (const std::string& key : keys) {
        char before[] = "before";
        char* text = before;
        bool flagFalse = false;
        subject.table->get_disable_text(key.c_str(), &text, &flagFalse);
        Require(text != nullptr, "get_disable_text() of " + QuotedKey(key) +
                                     " has no text and does not leave the pointer as it was");
        if (text != before) {
            std::free(text);
        }
        text = before;
        bool flagTrue = true;
        subject.table->get_disable_text(key.c_str(), &text, &flagTrue);
        Require(flagTrue, "get_disable_text() of " + QuotedKey(key) + " sets the flag to false");
        if (text != before) {
            std::free(text);
        }
    }
}

void DisableFlagsTakeOneByte(const std::string& file) {
    const Subject subject(file);
    SwitchMicrophoneOff();
    for (const Item& item : PageItems()) {
        unsigned char bytes[16];
        std::memset(bytes, 0x5a, sizeof bytes);
        bool* flag = reinterpret_cast<bool*>(bytes + 8);
        *flag = false;
        char* text = nullptr;
        subject.table->get_disable_text(item.key, &text, flag);
        std::free(text);
        for (size_t i = 0; i < sizeof bytes; ++i) {
            Require(
                i == 8 ? bytes[i] <= 1 : bytes[i] == 0x5a,
                std::string(item.name) + ": a byte beside the flag is written, or it is no bool");
        }
    }
}

void DisableTextsNotLeaked(const std::string& file) {
    const Subject subject(file);
    SwitchMicrophoneOff();
    for (const Item& item : PageItems()) {
        RequireNoGrowth(std::string(item.name) + ": the reasons of a dimmed item", [&] {
            char* text = nullptr;
            bool flag = false;
            subject.table->get_disable_text(item.key, &text, &flag);
            std::free(text);
        });
    }
}

}  // namespace

std::vector<ContractCheck> DimmedTextChecks() {
    return {
        {"disable-texts-are-fresh",
         "Each reason of a dimmed item is a heap text of its own, which the host frees.",
         DisableTextsAreFresh},
        {"disable-texts-are-written-or-left",
         "Without a reason the text stays as it was, and the flag is never set to false.",
         DisableTextsWrittenOrLeft},
        {"disable-flags-take-one-byte", "No byte beside the flag of slot 41 is written.",
         DisableFlagsTakeOneByte},
        {"disable-texts-are-not-leaked",
         "The reasons of dimmed items leave nothing behind once the host has freed them.",
         DisableTextsNotLeaked},
    };
}

}  // namespace host
