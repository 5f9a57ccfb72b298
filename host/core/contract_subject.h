// What the contract checks share: a provider by hand, and buffers for its answers.
#pragma once

#include <string>
#include <vector>

#include "contract_checks.h"
#include "provider.h"

namespace host {

inline constexpr char kAssistantKey[] = "menu/system/general-voice-voice-assistant";
inline constexpr size_t kBoxBufferSize = size_t{64} * 1024;

inline void Require(bool holds, const std::string& otherwise) {
    if (!holds) {
        throw CheckFailed(otherwise);
    }
}

// A provider by hand: nothing here softens what the library does.
class Subject {
  public:
    explicit Subject(const std::string& file) : loaded(file) {
        Require(loaded.Entry().create(&slots) == 0, "create_provider() does not return 0");
        Require(slots != nullptr, "create_provider() hands out no table");
        table = reinterpret_cast<SIProviderTable*>(slots);
    }
    ~Subject() { loaded.Entry().destroy(&slots); }
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    ProviderLibrary loaded;
    void** slots = nullptr;
    SIProviderTable* table = nullptr;
};

// Slots 39, 50 and 51 with buffers whose every byte is known.
struct BoxBuffers {
    BoxBuffers() {
        for (std::vector<char>& buffer : text) {
            buffer.assign(kBoxBufferSize, '#');
            buffer[0] = '\0';
        }
    }
    char* operator[](size_t i) { return text[i].data(); }
    bool Untouched() const {
        for (const std::vector<char>& buffer : text) {
            if (buffer[0] != '\0' || buffer[1] != '#') {
                return false;
            }
        }
        return count == -7;
    }
    std::vector<char> text[5];
    int count = -7;
};

// The checks of texts, lists and boxes.
const std::vector<ContractCheck>& AnswerChecks();

}  // namespace host
