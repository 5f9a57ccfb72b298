// What the contract checks share: a provider by hand, keys to try, and buffers for its answers.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "contract_checks.h"
#include "host/page/page.h"
#include "host/page/provider.h"
#include "supervised.h"

namespace host {

inline const char* const kVoiceKey = FindItem("voice")->key;
inline const char* const kAssistantKey = FindItem("voice-assistant")->key;
inline const char* const kWakeUpKey = FindItem("voice-wake-up")->key;
inline constexpr size_t kBoxBufferSize = size_t{64} * 1024;

inline void Require(bool holds, const std::string& otherwise) {
    if (!holds) {
        FailTask(otherwise);
    }
}

// A provider by hand: nothing here softens what the library does.
class Subject {
  public:
    explicit Subject(const std::string& file);
    ~Subject() { loaded.Entry().destroy(&slots); }
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    ProviderLibrary loaded;
    void** slots = nullptr;
    SIProviderTable* table = nullptr;
};

// Keys that no page has, of any bytes and length; without NULL.
const std::vector<std::string>& StrangeKeys();
// The keys of the page.
std::vector<std::string> PageKeys();
// For messages: the key in quotes, long ones cut.
std::string QuotedKey(const std::string& key);

// Calls it some dozen times; fails when the heap has grown by a block each time. `what` begins a
// sentence: "the titles and helps".
void RequireNoGrowth(const std::string& what, const std::function<void()>& once);

// Asks everything about every item as a settings application does, and presses what can be pressed.
void UsePage(const Provider& provider);

// Slots 39, 50 and 51 with buffers whose every byte is known.
struct BoxBuffers {
    // What stands in each text buffer before the call, and in the count.
    explicit BoxBuffers(const std::string& prefill = "", int countPrefill = -7);
    char* operator[](size_t i) { return text[i].data(); }
    bool Untouched() const { return text == before && count == countBefore; }
    // The text of a buffer; fails when it has no end.
    std::string Text(size_t i) const;
    // Fails when a byte behind the end of a text was written. `what` begins a sentence.
    void RequireNothingBehindTexts(const std::string& what) const;

    void AskBox(const Subject& subject, const char* key);    // slots 39 and 50
    void AskPopup(const Subject& subject, const char* key);  // slot 51

    std::vector<std::vector<char>> text;  // slot 39: 0 to 2, slot 50: 3; slot 51: 0 to 4
    int count;
    std::vector<std::vector<char>> before;
    int countBefore;
};

// The checks, one source a group.
std::vector<ContractCheck> LifeChecks();
std::vector<ContractCheck> ProcessChecks();
std::vector<ContractCheck> KeyChecks();
std::vector<ContractCheck> ValueChecks();
std::vector<ContractCheck> TextChecks();
std::vector<ContractCheck> DimmedTextChecks();
std::vector<ContractCheck> ListChecks();
std::vector<ContractCheck> BoxChecks();
std::vector<ContractCheck> PlatformChecks();

}  // namespace host
