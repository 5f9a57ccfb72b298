#include "host_calls.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>

#include "promises.h"
#include "recording_platform.h"
#include "si-ready/src/Keys.h"
#include "si-ready/src/MVAList.h"
#include "si-ready/src/SIMenuUtil.h"
#include "si-ready/src/general_voice_dataprovider.h"
#include "si-ready/src/general_voice_enablechecker.h"
#include "si-ready/src/general_voice_visiblechecker.h"
#include "tests/provider/host_text.h"

namespace fuzz {

namespace {

constexpr const char* KEYS[] = {menu::VOICE,
                                menu::ONBOARDING,
                                menu::VOICE_ASSISTANT,
                                menu::WAKE_UP,
                                menu::ALWAYS_WAKE_UP,
                                menu::SCREEN_ON_WAKE_UP,
                                menu::SITUATIONAL_HINT,
                                menu::SETTINGS_ORVIK,
                                menu::SETTINGS_ORVIK_CN,
                                menu::SETTINGS_TENCENT,
                                menu::SETTINGS_ALEXA,
                                menu::SETTINGS_GOOGLE,
                                menu::SETTINGS_SALUTE,
                                "provider/owner",
                                "provider/main-component",
                                "provider/sub-component",
                                "menu/system/general-voice-voice-settings-orvik-terms",
                                "no such key",
                                "",
                                nullptr};

constexpr int VALUES[] = {0, 1, 2, 3, 4, 5, 6, 7, -1, SI_ACTION_VALUE};

constexpr std::size_t MOST_BYTES = 24;

// A translation may be as long as what Replace() leaves of it.
constexpr std::size_t ROOM = std::size_t{1} << 17;

// Buffers of the host's, one behind the other.
struct Buffers {
    char message[ROOM] = {};
    char title[ROOM] = {};
    char first[ROOM] = {};
    char second[ROOM] = {};
    char value[sizeof SI_ACTION_TEXT] = {};
};

void AskForList(const SIProviderTable& page, const char* key) {
    int count = 0;
    ListItem** list = page.get_list_items(key, &count);
    if (list == nullptr) {
        return;
    }
    // Without memory of the host's own, which may have come to an end.
    for (int i = 0; i < count; ++i) {
        Require(list[i] != nullptr && list[i]->text != nullptr, "a list has no gaps");
        char* text = nullptr;
        int value = 0;
        int kind = 0;
        Require(page.list_item_text(list[i], &text) == 0 && text == list[i]->text,
                "a choice's text is the list's own");
        Require(page.list_item_value(list[i], &value) == 0 && value == list[i]->value,
                "a choice's value is the list's own");
        Require(page.list_item_kind(list[i], &kind) == 0 && kind == SI_LIST_ITEM_INTEGER,
                "a choice is an integer");
        Require(
            std::none_of(list, list + i, [&](const ListItem* one) { return one->value == value; }),
            "no two choices have one value");
    }
    Require(page.free_list_items(list, count) == 0, "a list can be given back");
}

constexpr int TEXT_SLOTS = 6;

// `without`: which of the host's out-pointers it leaves out, a bit each.
void AskForText(const SIProviderTable& page, int slot, const char* key, unsigned without = 0) {
    HostText text;
    static Buffers buffers;
    int buttons = 0;
    bool flag = false;
    int result = 0;
    char** out = (without & 1U) != 0 ? nullptr : text.Out();
    bool* answered = (without & 2U) != 0 ? nullptr : &flag;
    int* count = (without & 4U) != 0 ? nullptr : &buttons;
    char* message = (without & 8U) != 0 ? nullptr : buffers.message;
    char* title = (without & 16U) != 0 ? nullptr : buffers.title;
    char* first = (without & 32U) != 0 ? nullptr : buffers.first;
    char* second = (without & 64U) != 0 ? nullptr : buffers.second;
    char* value = (without & 128U) != 0 ? nullptr : buffers.value;
    switch (slot) {
        case 0:
            result = page.get_display_name(key, out);
            break;
        case 1:
            result = page.get_help_text(key, out);
            break;
        case 2:
            result = page.get_disable_text(key, out, answered);
            break;
        case 3:
            result = page.get_messagebox_info(key, message, first, second, count);
            break;
        case 4:
            result = page.get_messagebox_title(key, title);
            break;
        default:
            result = page.get_disablepopup_info(key, message, title, first, second, count, value);
    }
    Require(result == 0, "a slot returns 0");
}

// What the provider does not make itself: entries that are missing, no list at all.
void GiveBackOdd(const SIProviderTable& page) {
    auto** list = static_cast<ListItem**>(std::calloc(2, sizeof(ListItem*)));
    Require(page.free_list_items(list, 2) == 0 && page.free_list_items(nullptr, 2) == 0,
            "a list without entries can be given back");
    Require(page.list_item_text(nullptr, nullptr) == 0 &&
                page.list_item_value(nullptr, nullptr) == 0 &&
                page.list_item_kind(nullptr, nullptr) == 0,
            "no choice has no text and no value");
}

void AskForChecks(const char* key, int value) {
    for (const int answer : {check_visibility_int(key, value), check_enable_int(key, value)}) {
        Require(answer == 0 || answer == 1, "a check answers 0 or 1");
    }
    Require(check_visibility_bool(key, value != 0) == 1 &&
                check_enable_bool(key, value != 0) == 1 &&
                check_visibility_double(key, value) == 1 && check_enable_double(key, value) == 1 &&
                check_visibility_string(key, key) == 1 && check_enable_string(key, key) == 1,
            "only the checks of integers consult a rule");
}

}  // namespace

void ShowItem(FuzzedDataProvider& bytes, const SIProviderTable& page) {
    const char* key = bytes.PickValueInArray(KEYS);
    AskForChecks(key, 0);
    int value = 0;
    Require(page.get_int(key, &value) == 0, "a slot returns 0");
    AskForList(page, key);
    for (int slot = 0; slot < TEXT_SLOTS; ++slot) {
        AskForText(page, slot, key);
    }
}

void AskAsHost(FuzzedDataProvider& bytes, const SIProviderTable& page) {
    const char* key = bytes.PickValueInArray(KEYS);
    const int what = bytes.ConsumeIntegralInRange(0, 12);
    const int value = bytes.ConsumeIntegralInRange(1, 16) == 16 ? bytes.ConsumeIntegral<int>()
                                                                : bytes.PickValueInArray(VALUES);
    const unsigned without =
        bytes.ConsumeIntegralInRange(1, 16) == 16 ? bytes.ConsumeIntegral<std::uint8_t>() : 0;
    int number = value;
    HostText property;
    switch (what) {
        case 0:
        case 1:
            Require(page.set_int(key, value) == 0, "a slot returns 0");
            return;
        case 2:
            Require(page.get_int(key, without == 0 ? &number : nullptr) == 0, "a slot returns 0");
            return;
        case 3:
            return AskForList(page, key);
        case 4:
            Require(page.provider_property(key, without == 0 ? property.Out() : nullptr) == 0,
                    "a slot returns 0");
            return;
        case 5:
            return AskForChecks(key, value);
        case 6:
            return GiveBackOdd(page);
        default:
            try {
                AskForText(page, what - 7, key, without);
            } catch (const std::bad_alloc&) {  // these slots say so
            }
    }
}

namespace {

void AskUtilities(FuzzedDataProvider& bytes) {
    const std::string text = bytes.ConsumeRandomLengthString(MOST_BYTES);
    const std::string more = bytes.ConsumeRandomLengthString(MOST_BYTES);
    const int value = bytes.ConsumeIntegralInRange(-1, 2);
    std::string metadata;
    switch (bytes.ConsumeIntegralInRange(0, 14)) {
        case 0:
            CSIMenuUtil::IsMenuLanguageSupportTTS();
            return;
        case 1:
            return CSIMenuUtil::SetVoiceGuideOnOff(value == 1);
        case 2:
            CSIMenuUtil::GetTextTVScreenOrPJT("COM_TV_SID_TV", "screen", text.c_str());
            CSIMenuUtil::GetTextTVScreenOrPJT("COM_TV_SID_TV", nullptr, nullptr);
            return;
        case 3:
            CSIMenuUtil::IsPassthruDimmed();
            CSIMenuUtil::GetPassthruDimmedToastPopUpString();
            return;
        case 4:
            CSIMenuUtil::setPassthruEnabled(value == 1);
            return;
        case 5:
            return CSIMenuUtil::RefreshMenu();
        case 6:
            CSIMenuUtil::GetCountryCode();
            CSIMenuUtil::FlagLFDProductModel();
            CSIMenuUtil::isBuiltInMicActivated();
            return;
        case 7:
            return CSIMenuUtil::ShowPopup(text);
        case 8:
            CSIMenuUtil::m_TTSSupportVoiceCb(nullptr, text.c_str(), value, nullptr);
            CSIMenuUtil::m_TTSSupportVoiceCb(nullptr, nullptr, value, nullptr);
            return;
        case 9:
            CSIMenuUtil::GetMetaData("org.nemra.tts-engine-neural", text.c_str(), metadata);
            return;
        case 10:
            CSIMenuUtil::getValueOfJsonVconf(setting::HINT, text);
            return;
        case 11:
            CSIMenuUtil::setVAsValueOfJsonVconf(setting::HINT, text, more);
            return;
        case 12:
            return CSIMenuUtil::LaunchApp(text.c_str());
        case 13:
            return CSIMenuUtil::LaunchApp(text.c_str(), more.c_str(), text.c_str());
        default:
            CSIMenuUtil::m_listTTSLanguage.clear();  // as in a process that was just started
    }
}

void AskList(FuzzedDataProvider& bytes) {
    const auto type = static_cast<ASSISTANT_TYPE>(bytes.ConsumeIntegralInRange(-1, 7));
    switch (bytes.ConsumeIntegralInRange(0, 4)) {
        case 0:
            MVAList::GetVANameByType(type);
            CSIMenuUtil::IsVASetupComplete(type);
            return;
        case 1:
            MVAList::GetVATypeByAppID(bytes.ConsumeRandomLengthString(MOST_BYTES));
            Require(MVAList::GetVAListSize() == MVAList::GetVAList().size(),
                    "the list has the size that is told");
            return;
        case 2:
            MVAList::IsVoiceDisabledByVAPolicy();
            MVAList::IsCurrentVASupportFF();
            return;
        case 3:
            return LaunchOnboarding("any reason");
        default:
            return showVAChangingNoticePopup();
    }
}

}  // namespace

void AskAsProgram(FuzzedDataProvider& bytes) {
    int count = 0;
    try {
        switch (bytes.ConsumeIntegralInRange(0, 4)) {
            case 0:
                return AskList(bytes);
            case 1:
                if (ListItem** list = get_list_items_voice_wake_up(nullptr, &count)) {
                    Require(count == 2 || count == 3, "wake-up has two choices or three");
                    for (int i = 0; i < count; ++i) {
                        std::free(list[i]->text);
                        std::free(list[i]);
                    }
                    std::free(list);
                }
                return;
            default:
                return AskUtilities(bytes);
        }
    } catch (const std::bad_alloc&) {
    }
}

}  // namespace fuzz
