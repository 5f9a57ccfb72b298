#include "contract_subject.h"

#include <malloc.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "program/counted.h"

// The sanitizers bring a heap of their own.
extern "C" size_t __sanitizer_get_current_allocated_bytes() __attribute__((weak));

namespace host {

namespace {

constexpr size_t kGrowthRounds = 50;
constexpr size_t kGrowthOfARound = 16;  // less than any block of the heap

constexpr size_t kBoxTexts = 5;

size_t HeapInUse() {
    if (__sanitizer_get_current_allocated_bytes != nullptr) {
        return __sanitizer_get_current_allocated_bytes();
    }
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

}  // namespace

Subject::Subject(const std::string& file) : loaded(file) {
    Require(loaded.Entry().create(&slots) == 0, "create_provider() does not return 0");
    Require(slots != nullptr, "create_provider() hands out no table");
    table = reinterpret_cast<SIProviderTable*>(slots);
}

const std::vector<std::string>& StrangeKeys() {
    static const std::vector<std::string> keys = {"",
                                                  "x",
                                                  "menu",
                                                  "menu/system/general-voice-",
                                                  "MENU/SYSTEM/GENERAL-VOICE",
                                                  std::string(kAssistantKey) + "x",
                                                  "%s%s%n%d",
                                                  "\xff\xfe\x01",
                                                  std::string(100000, 'k')};
    return keys;
}

std::vector<std::string> PageKeys() {
    std::vector<std::string> keys;
    for (const Item& item : PageItems()) {
        keys.emplace_back(item.key);
    }
    return keys;
}

std::string QuotedKey(const std::string& key) {
    constexpr size_t kLongest = 60;
    return "\"" + key.substr(0, kLongest) + (key.size() > kLongest ? "..." : "") + "\"";
}

// What grows now and then, by doubling or for a cache, does not grow in each of several spans.
void RequireNoGrowth(const std::string& what, const std::function<void()>& once) {
    size_t leastGrowth = SIZE_MAX;
    for (int span = 0; span < 3 && leastGrowth >= kGrowthRounds * kGrowthOfARound; ++span) {
        const size_t before = HeapInUse();
        for (size_t round = 0; round < kGrowthRounds; ++round) {
            once();
        }
        const size_t after = HeapInUse();
        leastGrowth = std::min(leastGrowth, after > before ? after - before : 0);
    }
    Require(leastGrowth < kGrowthRounds * kGrowthOfARound,
            what + " grow the heap by " + std::to_string(leastGrowth / kGrowthRounds) +
                " bytes each time");
}

void UsePage(const Provider& provider) {
    LookAtPage(provider);
    for (const Item& item : PageItems()) {
        provider.Confirmation(item.key);
        provider.DisableText(item.key);
        provider.DisablePopup(item.key);
        if (HasValue(item)) {
            provider.SetInt(item.key, 1);
            provider.SetInt(item.key, 0);
        }
        provider.SetInt(item.key, SI_ACTION_VALUE);
    }
}

BoxBuffers::BoxBuffers(const std::string& prefill, int countPrefill)
    : text(kBoxTexts, std::vector<char>(kBoxBufferSize, '#')),
      count(countPrefill),
      countBefore(countPrefill) {
    for (std::vector<char>& buffer : text) {
        std::memcpy(buffer.data(), prefill.c_str(), prefill.size() + 1);
    }
    before = text;
}

std::string BoxBuffers::Text(size_t i) const {
    const auto end = std::find(text[i].begin(), text[i].end(), '\0');
    Require(end != text[i].end(), "a text of the box has no end");
    return {text[i].begin(), end};
}

void BoxBuffers::RequireNothingBehindTexts(const std::string& what) const {
    for (size_t i = 0; i < text.size(); ++i) {
        const size_t end = Text(i).size() + 1;
        const size_t known = std::max(end, std::strlen(before[i].data()) + 1);
        const auto wrong = std::find_if(text[i].begin() + static_cast<long>(known), text[i].end(),
                                        [](char c) { return c != '#'; });
        Require(wrong == text[i].end(),
                what + " writes byte " + std::to_string(wrong - text[i].begin()) +
                    " of a buffer for a text of " + program::Counted(end, "byte"));
    }
}

void BoxBuffers::AskBox(const Subject& subject, const char* key) {
    subject.table->get_messagebox_info(key, text[0].data(), text[1].data(), text[2].data(), &count);
    subject.table->get_messagebox_title(key, text[3].data());
}

void BoxBuffers::AskPopup(const Subject& subject, const char* key) {
    subject.table->get_disablepopup_info(key, text[0].data(), text[1].data(), text[2].data(),
                                         text[3].data(), &count, text[4].data());
}

}  // namespace host
