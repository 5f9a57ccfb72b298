// Whatever the settings store, the feature configuration and the services answer, the provider does
// not crash, leak or throw. The input is those answers.
//
//     cmake --preset fuzz && cmake --build --preset fuzz
//     mkdir -p build/fuzz/corpus       # the fuzzer writes into the first folder
//     build/fuzz/bin/provider-fuzz -max_total_time=60 build/fuzz/corpus fuzz/corpus

#include <cstdlib>

#include "abi/si_provider.h"
#include "answering_platform.h"
#include "platform/trace_storage.h"

namespace {

constexpr const char* KEYS[] = {
    "menu/system/general-voice",
    "menu/system/general-voice-onboarding",
    "menu/system/general-voice-voice-assistant",
    "menu/system/general-voice-voice-wake-up",
    "menu/system/general-voice-voice-always-wake-up",
    "menu/system/general-voice-voice-screen-on-wake-up",
    "menu/system/general-voice-situational-hint",
    "menu/system/general-voice-voice-settings-orvik",
    "menu/system/general-voice-voice-settings-orvik-cn",
    "menu/system/general-voice-voice-settings-tencent",
    "menu/system/general-voice-voice-settings-alexa",
    "menu/system/general-voice-voice-settings-google",
    "menu/system/general-voice-voice-settings-salute",
    "provider/owner",
    "no such key",
    nullptr,
};

void AskAll(const SIProviderTable& table, const char* key) {
    // The longest text is a translation with an assistant's name in it.
    static char buffers[5][1 << 16];
    char* text = nullptr;
    int number = 0;
    bool flag = false;

    check_visibility_int(key, answers->ConsumeIntegral<int>());
    check_enable_int(key, answers->ConsumeIntegral<int>());
    table.get_int(key, &number);
    table.set_int(key, answers->ConsumeBool() ? SI_ACTION_VALUE : answers->ConsumeIntegral<int>());
    table.get_display_name(key, &text);
    free(text);
    text = nullptr;
    table.get_help_text(key, &text);
    free(text);
    text = nullptr;
    table.get_disable_text(key, &text, &flag);
    free(text);
    text = nullptr;
    table.provider_property(key, &text);
    free(text);
    table.get_messagebox_info(key, buffers[0], buffers[1], buffers[2], &number);
    table.get_messagebox_title(key, buffers[0]);
    table.get_disablepopup_info(key, buffers[0], buffers[1], buffers[2], buffers[3], &number,
                                buffers[4]);

    int count = 0;
    ListItem** items = table.get_list_items(key, &count);
    for (int i = 0; items != nullptr && i < count; ++i) {
        if (items[i] == nullptr || items[i]->text == nullptr) {
            abort();  // a list has no gaps
        }
        table.list_item_text(items[i], &text);
        table.list_item_value(items[i], &number);
        table.list_item_kind(items[i], &number);
    }
    if (items != nullptr) {
        table.free_list_items(items, count);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider provider(data, size);
    answers = &provider;
    strings.clear();
    TIStorageManagerState::enabled = provider.ConsumeBool();
    // The policy comes first, so that the fuzzer finds it quickly.
    strings["db/menu/voice/mva_list"] = provider.ConsumeRandomLengthString();

    void** slots = nullptr;
    create_provider(&slots);
    while (provider.remaining_bytes() > 0) {
        if (provider.ConsumeBool()) {
            strings["db/menu/voice/mva_list"] = provider.ConsumeRandomLengthString();
            policyCallback(nullptr, nullptr);
        }
        AskAll(*reinterpret_cast<SIProviderTable*>(slots), provider.PickValueInArray(KEYS));
    }
    delete_provider(&slots);
    return 0;
}
