// Titles, help texts and the provider's description of itself.
#include <malloc.h>

#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <locale>

#include "contract_subject.h"
#include "supervised.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

namespace {

using TextSlot = int (*)(const char*, char**);

constexpr const char* kProperties[] = {"provider/owner", "provider/main-component",
                                       "provider/sub-component"};

struct NamedTextSlot {
    const char* name;
    TextSlot ask;
};

std::vector<NamedTextSlot> TitleSlots(const Subject& subject) {
    return {{"get_display_name()", subject.table->get_display_name},
            {"get_help_text()", subject.table->get_help_text}};
}

// Asks twice; both texts are the host's, and neither is the other.
void RequireFresh(const std::string& what, TextSlot ask, const char* key) {
    char* one = nullptr;
    char* two = nullptr;
    ask(key, &one);
    ask(key, &two);
    Require((one == nullptr) == (two == nullptr), what + ": the text comes and goes");
    Require(one == nullptr || one != two, what + ": the same text is handed out twice");
    std::free(one);
    std::free(two);
}

void TextSlotsReturnZero(const std::string& file) {
    const Subject subject(file);
    std::vector<std::string> keys = StrangeKeys();
    for (const std::string& key : PageKeys()) {
        keys.push_back(key);
    }
    keys.insert(keys.end(), std::begin(kProperties), std::end(kProperties));
    for (const std::string& key : keys) {
        std::vector<NamedTextSlot> slots = TitleSlots(subject);
        slots.push_back({"provider_property()", subject.table->provider_property});
        for (const NamedTextSlot& slot : slots) {
            char* text = nullptr;
            Require(slot.ask(key.c_str(), &text) == 0,
                    std::string(slot.name) + " of " + QuotedKey(key) + " does not return 0");
        }
        char* text = nullptr;
        bool flag = false;
        Require(subject.table->get_disable_text(key.c_str(), &text, &flag) == 0,
                "get_disable_text() of " + QuotedKey(key) + " does not return 0");
    }
}

void TextsAreFresh(const std::string& file) {
    const Subject subject(file);
    int texts = 0;
    for (const Item& item : PageItems()) {
        for (const NamedTextSlot& slot : TitleSlots(subject)) {
            RequireFresh(std::string(item.name) + ", " + slot.name, slot.ask, item.key);
            char* text = nullptr;
            slot.ask(item.key, &text);
            texts += text != nullptr ? 1 : 0;
            std::free(text);
        }
    }
    Require(texts > 0, "no item has a title or a help text");
}

void TextsAreSteady(const std::string& file) {
    const Provider provider(file);
    for (const Item& item : PageItems()) {
        Require(provider.Title(item.key) == provider.Title(item.key),
                std::string(item.name) + ": the title changes while nothing else does");
        Require(provider.Help(item.key) == provider.Help(item.key),
                std::string(item.name) + ": the help text changes while nothing else does");
    }
}

void TextsAreNotEmpty(const std::string& file) {
    const Provider provider(file);
    for (const Item& item : PageItems()) {
        Require(provider.Title(item.key) != "", std::string(item.name) + ": the title is empty");
        Require(provider.Help(item.key) != "", std::string(item.name) + ": the help text is empty");
    }
}

bool IsUtf8(const std::string& text) {
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    const locale_t before = uselocale(utf8);
    std::mbstate_t state = {};
    const char* rest = text.c_str();
    const size_t length = std::mbsrtowcs(nullptr, &rest, 0, &state);
    uselocale(before);
    return length != static_cast<size_t>(-1);
}

void RequireUtf8(const std::string& what, const std::optional<std::string>& text) {
    Require(!text || IsUtf8(*text), what + " is no UTF-8");
}

void TextsAreUtf8(const std::string& file) {
    const Provider provider(file);
    vtv::Tv& tv = *vtv::Current();
    for (const std::string& language : tv.Languages()) {
        tv.SetLanguage(language);
        tv.Dispatch();
        for (const Item& item : PageItems()) {
            const std::string where = std::string(item.name) + " in " + language;
            RequireUtf8("the title of " + where, provider.Title(item.key));
            RequireUtf8("the help text of " + where, provider.Help(item.key));
            RequireUtf8("the disable text of " + where, provider.DisableText(item.key));
            for (const Choice& choice : provider.Choices(item.key)) {
                RequireUtf8("a choice of " + where, choice.text);
            }
            for (const auto& box :
                 {provider.Confirmation(item.key), provider.DisablePopup(item.key)}) {
                RequireUtf8("a box of " + where, box ? box->title + box->message : "");
            }
        }
    }
}

void AbsentTextsAreNull(const std::string& file) {
    const Subject subject(file);
    std::vector<std::string> keys = StrangeKeys();
    for (const std::string& key : PageKeys()) {
        keys.push_back(key);
    }
    for (const std::string& key : keys) {
        for (const NamedTextSlot& slot : TitleSlots(subject)) {
            char before[] = "before";
            char* text = before;
            slot.ask(key.c_str(), &text);
            Require(text != before, std::string(slot.name) + " of " + QuotedKey(key) +
                                        " leaves the pointer as it was, in place of NULL");
            std::free(text);
        }
    }
}

void TextsAreNotLeaked(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        RequireNoGrowth(std::string(item.name) + ": the title and the help", [&] {
            for (const NamedTextSlot& slot : TitleSlots(subject)) {
                char* text = nullptr;
                slot.ask(item.key, &text);
                std::free(text);
            }
        });
    }
}

void PropertiesAreBuffers(const std::string& file) {
    const Subject subject(file);
    for (const char* key : kProperties) {
        char* text = nullptr;
        subject.table->provider_property(key, &text);
        Require(text != nullptr && *text != '\0', std::string(key) + " has no text");
        Require(malloc_usable_size(text) >= SI_PROPERTY_SIZE,
                std::string(key) + " is no buffer of 255 bytes");
        Require(memchr(text, '\0', SI_PROPERTY_SIZE) != nullptr,
                std::string(key) + " is a text without an end");
        std::free(text);
    }
}

void PropertiesAreFresh(const std::string& file) {
    const Subject subject(file);
    for (const char* key : kProperties) {
        RequireFresh(key, subject.table->provider_property, key);
    }
}

void UnknownPropertiesAreLeft(const std::string& file) {
    const Subject subject(file);
    for (const std::string& key : StrangeKeys()) {
        char before[] = "before";
        char* text = before;
        subject.table->provider_property(key.c_str(), &text);
        Require(text == before, "the property " + QuotedKey(key) + " is unknown and was written");
    }
}

void PropertiesAreNotLeaked(const std::string& file) {
    const Subject subject(file);
    RequireNoGrowth("the provider's descriptions", [&] {
        for (const char* key : kProperties) {
            char* text = nullptr;
            subject.table->provider_property(key, &text);
            std::free(text);
        }
    });
}

}  // namespace

std::vector<ContractCheck> TextChecks() {
    return {
        {"text-slots-return-0", "The text slots return 0, whatever the key.", TextSlotsReturnZero},
        {"texts-are-fresh", "Each title and help is a heap text of its own, which the host frees.",
         TextsAreFresh},
        {"texts-are-steady", "Titles and helps stay the same while nothing changes.",
         TextsAreSteady},
        {"texts-are-not-empty", "A title or help that is there is not empty.", TextsAreNotEmpty},
        {"texts-are-utf8", "Texts, choices and boxes are UTF-8 in every language of the TV.",
         TextsAreUtf8},
        {"absent-texts-are-null", "Where there is no title or help, the pointer becomes NULL.",
         AbsentTextsAreNull},
        {"texts-are-not-leaked",
         "Titles and helps leave nothing behind once the host has freed them.", TextsAreNotLeaked},
        {"properties-are-buffers", "The provider's descriptions are heap buffers of 255 bytes.",
         PropertiesAreBuffers},
        {"properties-are-fresh", "Each description is a buffer of its own, which the host frees.",
         PropertiesAreFresh},
        {"unknown-properties-are-left", "The pointer for an unknown description stays as it was.",
         UnknownPropertiesAreLeft},
        {"properties-are-not-leaked",
         "The descriptions leave nothing behind once the host has freed them.",
         PropertiesAreNotLeaked},
    };
}

}  // namespace host
