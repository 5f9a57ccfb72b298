// Loaded, created, used, deleted and unloaded a thousand times, the provider leaves nothing behind;
// SI_LOADINGS makes it more.
#include <malloc.h>
#include <unistd.h>

#include <fstream>

#include "fresh_provider.h"
#include "tests/environment.h"

using namespace recording;

namespace {

// An emulator takes long to load a library; valgrind sees a leak in fewer rounds, too.
constexpr unsigned ROUNDS = UNDER_EMULATOR ? 60 : 1000;
constexpr unsigned WARM_UP = UNDER_EMULATOR ? 20 : 100;

#if defined(__SANITIZE_ADDRESS__)
#define WATCHED_BY_SANITIZER true
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define WATCHED_BY_SANITIZER true
#endif
#endif
#ifndef WATCHED_BY_SANITIZER
#define WATCHED_BY_SANITIZER false
#endif

long ResidentBytes() {
    long pages = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

long AllocatedBytes() {
    const struct mallinfo2 info = mallinfo2();
    return static_cast<long>(info.uordblks + info.hblkhd);
}

void SetUpTv() {
    Reset();
    tv().consents = {{"tnc", 1}, {"pp", 1}};
    tv().settings["db/menu/voice/mva_list"] =
        std::string(R"([{"VAOrder":1,"VAId":"ORVIK2","VAAppId":"app.orvik","VAName":"Orvik"},)"
                    R"({"VAOrder":2,"VAId":"GVA","VAAppId":"app.google","VAName":"Google"}])");
    tv().settings["db/multi-assistant/default_assistant_appid"] = std::string("app.orvik");
    tv().settings["db/menu/voice/assistant_farfield"] = std::string(R"({"app.orvik":"on"})");
}

void Round() {
    SetUpTv();
    FreshProvider provider;
    SIProviderTable* page = provider.Create();
    for (const char* item :
         {"menu/system/general-voice", "menu/system/general-voice-voice-assistant",
          "menu/system/general-voice-voice-wake-up",
          "menu/system/general-voice-voice-settings-"
          "alexa",
          "other"}) {
        provider.IsVisible(item);
        int value = 0;
        page->get_int(item, &value);
        page->set_int(item, 1);
        char* text = nullptr;
        page->get_display_name(item, &text);
        std::free(text);
        int count = 0;
        ListItem** list = page->get_list_items(item, &count);
        if (list != nullptr) {
            page->free_list_items(list, count);
        }
    }
    provider.Delete(page);
}

}  // namespace

TEST(Load, AThousandLoadingsLeaveNothingBehind) {
    long allocated = 0;
    long resident = 0;
    const unsigned rounds = NumberFromEnvironment("SI_LOADINGS", ROUNDS);
    for (unsigned i = 0; i < rounds; ++i) {
        if (i == WARM_UP) {
            Reset();
            allocated = AllocatedBytes();
            resident = ResidentBytes();
        }
        Round();
        ASSERT_EQ(Debts(), std::vector<std::string>());
        ASSERT_EQ(WatchCount("db/menu/voice/mva_list"), 0);
    }
    ASSERT_FALSE(FreshProvider::IsLoaded());
    Reset();
    if (!WATCHED_BY_SANITIZER) {
        // A leak of one small block a round would be 900 times 32 bytes.
        EXPECT_LT(AllocatedBytes() - allocated, 8 * 1024);
    }
    // An emulator keeps what it translated of every loading.
    if (!WATCHED_BY_SANITIZER && !UNDER_EMULATOR) {
        EXPECT_LT(ResidentBytes() - resident, 512 * 1024);
    }
}
