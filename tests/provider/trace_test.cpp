// The trace records: thirteen sites, each with its line, its message and its arguments.
#include <algorithm>
#include <cstdint>
#include <set>

#include "allocation_faults.h"
#include "fresh_provider.h"
#include "si-ready/trace/Trace.h"

using namespace recording;

namespace {

constexpr const char* WAKE_UP = "menu/system/general-voice-voice-wake-up";
constexpr const char* ALWAYS = "menu/system/general-voice-voice-always-wake-up";
constexpr const char* SCREEN_ON = "menu/system/general-voice-voice-screen-on-wake-up";
constexpr const char* HINT = "menu/system/general-voice-situational-hint";
constexpr const char* HINT_SETTING = "db/multi-assistant/situational_hint_supported";

std::string Bytes(int number) {
    const std::int32_t value = number;
    return std::string(reinterpret_cast<const char*>(&value), 4);
}
std::string Bytes(bool value) {
    return std::string(1, value ? '\1' : '\0');
}
std::string Bytes(const std::string& text) {
    std::string bytes;
    std::size_t rest = text.size();
    while (rest > 127) {
        bytes += static_cast<char>(rest % 128 + 128);
        rest /= 128;
    }
    return bytes + static_cast<char>(rest) + text;
}
std::string Bytes(const char* text) {
    return Bytes(std::string(text));
}

class Trace : public testing::Test {
  protected:
    void SetUp() override {
        PrepareTv();
        page = provider.Create();
        SetTracing(true);
        ClearCalls();
    }

  public:
    // Orvik current, hands-free on.
    static void PrepareTv() {
        Reset();
        Publish("db/menu/voice/mva_list", R"([{"VAOrder":1,"VAId":"ORVIK2","VAAppId":"app.orvik"},)"
                                          R"({"VAOrder":2,"VAId":"GVA","VAAppId":"app.google"}])");
        tv().settings["db/multi-assistant/default_assistant_appid"] = std::string("app.orvik");
        tv().settings["db/menu/voice/assistant_farfield"] = std::string(R"({"app.orvik":"on"})");
        Hint("on_user");
    }

  protected:
    void TearDown() override {
        SetTracing(false);
        provider.Delete(page);
        EXPECT_EQ(Debts(), std::vector<std::string>());
        Reset();
    }
    static void Hint(const std::string& entry) {
        tv().settings[HINT_SETTING] = R"({"app.orvik":")" + entry + "\"}";
    }
    static void MakeGoogleCurrent() {
        tv().settings["db/multi-assistant/default_assistant_appid"] = std::string("app.google");
    }
    void Read(const char* item) {
        int value = 0;
        page->get_int(item, &value);
    }
    void Write(const char* item, int value) { page->set_int(item, value); }

    // The event and its site, of the only event at that line.
    struct Recorded {
        CallSite site;
        TraceEvent event;
    };
    static Recorded At(int line) {
        Recorded found = {};
        int count = 0;
        for (const TraceEvent& event : TraceEvents()) {
            const CallSite& site = CallSites().at(event.siteId);
            if (site.line == line) {
                found = {site, event};
                ++count;
            }
        }
        EXPECT_EQ(count, 1) << "events at line " << line;
        return found;
    }
    static std::string WithoutBlanksBeforeStars(std::string text) {
        for (std::size_t i = text.find(" *"); i != std::string::npos; i = text.find(" *")) {
            text.erase(i, 1);
        }
        return text;
    }
    static void Expect(int line, const std::string& file, const std::string& function,
                       const std::string& format, const std::vector<std::string>& types,
                       const std::string& payload) {
        const Recorded recorded = At(line);
        EXPECT_TRUE(recorded.site.file.ends_with(file)) << recorded.site.file;
        EXPECT_EQ(WithoutBlanksBeforeStars(recorded.site.function), function);
        EXPECT_EQ(recorded.site.format, format);
        EXPECT_EQ(recorded.site.argumentTypes, types);
        EXPECT_EQ(recorded.event.payload, payload);
        EXPECT_EQ(recorded.event.reserved, 1);
        EXPECT_NE(recorded.event.siteId, 0);
    }

    FreshProvider provider;
    SIProviderTable* page = nullptr;
};

constexpr const char* PROVIDER_SOURCE = "si-ready/src/general_voice_dataprovider.cpp";
constexpr const char* VISIBLE_SOURCE = "si-ready/src/general_voice_visiblechecker.cpp";

}  // namespace

TEST_F(Trace, ReadingTheWakeUpSwitchIsRecorded) {
    Read(WAKE_UP);
    Expect(658, PROVIDER_SOURCE, "int checknode_int_voice_wake_up()",
           "[general voice] Hands-free Wake-up value = %d", {"int"}, Bytes(1));
}

TEST_F(Trace, WritingTheWakeUpSwitchIsRecordedWithItsState) {
    Write(WAKE_UP, 7);
    Expect(676, PROVIDER_SOURCE, "void setnode_int_voice_wake_up(int)",
           "Set Hands-free Wake-up value [%d] && Wakeup[%s]", {"int", "char const*"},
           Bytes(7) + Bytes("off"));
}

TEST_F(Trace, ReadingTheAlwaysItemIsRecorded) {
    Read(ALWAYS);
    Expect(689, PROVIDER_SOURCE, "int checknode_int_voice_always_wake_up()",
           "[general voice] voice always wakeup value = %d", {"int"}, Bytes(0));
}

TEST_F(Trace, WritingTheAlwaysItemIsRecordedWithItsModeAsABool) {
    Write(ALWAYS, 1);
    Expect(700, PROVIDER_SOURCE, "void setnode_int_voice_always_wake_up(int)",
           "Set voice always wakeup value AOV[%d]", {"bool"}, Bytes(true));
}

TEST_F(Trace, ReadingTheScreenOnItemIsRecorded) {
    Read(SCREEN_ON);
    Expect(713, PROVIDER_SOURCE, "int checknode_int_voice_screen_on_wake_up()",
           "[general voice] voice screen on value = %d", {"int"}, Bytes(1));
}

TEST_F(Trace, WritingTheScreenOnItemIsRecordedWithItsModeAsABool) {
    Write(SCREEN_ON, 1);
    Expect(724, PROVIDER_SOURCE, "void setnode_int_voice_screen_on_wake_up(int)",
           "Set voice screen on value AOV[%d]", {"bool"}, Bytes(false));
}

TEST_F(Trace, ReadingTheHintIsRecordedWithItsSettingValueAndReason) {
    Read(HINT);
    Expect(749, PROVIDER_SOURCE, "int checknode_int_voice_situational_hint()",
           "[general voice] %s value = %d because of %s", {"char const*", "int", "char const*"},
           Bytes(std::string(HINT_SETTING)) + Bytes(1) + Bytes("on_user"));
}

TEST_F(Trace, ARefusedHintIsRecordedWithItsSetting) {
    Hint("null");
    Write(HINT, 1);
    Expect(765, PROVIDER_SOURCE, "void setnode_int_voice_situational_hint(int)",
           "[general voice] Failed to set %s. Vconf Value is NULL(fuction not supported)",
           {"char const*"}, Bytes(std::string(HINT_SETTING)));
    // The writer reads first.
    At(749);
    EXPECT_EQ(TraceEvents().size(), 2u);
}

TEST_F(Trace, AChangedHintIsRecordedWithBothValues) {
    Write(HINT, 0);
    Expect(780, PROVIDER_SOURCE, "void setnode_int_voice_situational_hint(int)",
           "nOriginValue = %d, changed value = %s", {"int", "char const*"},
           Bytes(1) + Bytes("off_user"));
    At(749);
    EXPECT_EQ(TraceEvents().size(), 2u);
}

TEST_F(Trace, AnAlwaysItemHiddenForAnotherAssistantIsRecordedWithoutArguments) {
    MakeGoogleCurrent();
    provider.IsVisible(ALWAYS);
    Expect(175, VISIBLE_SOURCE, "bool check_general_voice_voice_always_wake_up(const char*, int)",
           "current VA is not Orvik, item is invisible.", {}, "");
}

TEST_F(Trace, AScreenOnItemHiddenForAnotherAssistantIsRecordedWithoutArguments) {
    MakeGoogleCurrent();
    provider.IsVisible(SCREEN_ON);
    Expect(187, VISIBLE_SOURCE,
           "bool check_general_voice_voice_screen_on_wake_up(const char*, int)",
           "current VA is not Orvik, item is invisible.", {}, "");
}

TEST_F(Trace, AShownHintIsRecorded) {
    provider.IsVisible(HINT);
    Expect(205, VISIBLE_SOURCE, "bool check_general_voice_situational_hint(const char*, int)",
           "situational Hint (supported)", {}, "");
}

TEST_F(Trace, AHiddenHintIsRecorded) {
    Hint("");
    provider.IsVisible(HINT);
    Expect(211, VISIBLE_SOURCE, "bool check_general_voice_situational_hint(const char*, int)",
           "situational Hint Value is NULL(unsupported)", {}, "");
}

TEST_F(Trace, NothingElseIsRecorded) {
    for (const char* item : {"menu/system/general-voice", "menu/system/general-voice-onboarding",
                             "menu/system/general-voice-voice-assistant", WAKE_UP, ALWAYS,
                             SCREEN_ON, "menu/system/general-voice-voice-settings-orvik"}) {
        provider.IsVisible(item);
        provider.Function<int(const char*, int)>("check_enable_int")(item, 0);
        Read("menu/system/general-voice-voice-assistant");
        Write("menu/system/general-voice-voice-assistant", 77);
    }
    EXPECT_EQ(CallsOf("trace"), std::vector<std::string>());
}

// --- How ---

TEST_F(Trace, WhileTracingIsOffNothingOfTheStorageIsCalled) {
    SetTracing(false);
    for (const char* item : {WAKE_UP, ALWAYS, SCREEN_ON, HINT}) {
        Read(item);
        Write(item, 1);
        provider.IsVisible(item);
    }
    EXPECT_EQ(CallsOf("trace"), std::vector<std::string>());
    // Counted to the last call: the same with tracing on takes more.
    ClearCalls();
    FailAny(1 << 30);
    Read(WAKE_UP);
    const int quiet = CallCount();
    SetTracing(true);
    FailAny(1 << 30);
    Read(WAKE_UP);
    EXPECT_GT(CallCount(), quiet);
}

TEST_F(Trace, ASiteIsRegisteredOnce) {
    const std::size_t before = CallSites().size();
    Read(WAKE_UP);
    Read(WAKE_UP);
    EXPECT_EQ(CallSites().size(), before + 1);
    ASSERT_EQ(TraceEvents().size(), 2u);
    EXPECT_EQ(TraceEvents()[0].siteId, TraceEvents()[1].siteId);
    EXPECT_EQ(CallsOf("trace site").size(), 1u);
}

TEST_F(Trace, EachSiteHasAnIdOfItsOwn) {
    Hint("null");
    Write(HINT, 1);
    Hint("on_user");
    Write(HINT, 1);
    std::set<int> ids;
    for (const TraceEvent& event : TraceEvents()) {
        ids.insert(event.siteId);
    }
    EXPECT_EQ(ids.size(), 3u);
}

TEST_F(Trace, TheRecordOfTheLogComesBeforeTheEvent) {
    Read(WAKE_UP);
    const std::vector<std::string>& calls = Calls();
    ASSERT_GE(calls.size(), 5u);
    const std::size_t log = calls.size() - 5;
    EXPECT_TRUE(calls[log].ends_with("Hands-free Wake-up value = 1")) << calls[log];
    EXPECT_TRUE(calls[log + 1].starts_with("trace site 658 ")) << calls[log + 1];
    EXPECT_EQ(calls[log + 2], "trace prepare 658 4");
    EXPECT_EQ(calls[log + 3], "trace commit 658");
    EXPECT_TRUE(calls[log + 4].starts_with("log E general_voice_dataprovider.cpp get_int "));
}

TEST_F(Trace, AnEventWithoutABufferIsDroppedAndTheNextIsRecorded) {
    Fail("TCStorage::PrepareCallBuffer", 1, 1);
    Read(WAKE_UP);
    EXPECT_EQ(TraceEvents().size(), 0u);
    EXPECT_EQ(CallsOf("trace commit"), std::vector<std::string>());
    EXPECT_EQ(CallsOf("trace prepare"), std::vector<std::string>{"trace prepare 658 4"});
    Read(WAKE_UP);
    EXPECT_EQ(TraceEvents().size(), 1u);
    EXPECT_EQ(CallsOf("trace site").size(), 1u);
}

TEST_F(Trace, AStorageThatFailsChangesNoAnswer) {
    for (const char* function :
         {"TIStorageManager::CurrentStorage", "TCStorage::ThreadHandle", "TSDemangler::Demangle",
          "TCStorage::SaveLocation", "TCStorage::PrepareCallBuffer"}) {
        Fail(function);
        int value = 0;
        EXPECT_EQ(page->get_int(WAKE_UP, &value), 0);
        EXPECT_EQ(value, 1) << function;
        ClearFaults();
    }
}

class TraceWithoutMemory : public testing::Test {
  protected:
    static int EventsOfTheWakeUpSwitch() {
        return static_cast<int>(std::count_if(
            TraceEvents().begin(), TraceEvents().end(),
            [](const TraceEvent& event) { return CallSites().at(event.siteId).line == 658; }));
    }
};

// Memory is asked for when a site is new, so the provider is a fresh one for each allocation.
TEST_F(TraceWithoutMemory, LosesTheEventButNeitherTheAnswerNorTheNextEvent) {
    ASSERT_TRUE(AllocationFaultsWork()) << "a tool has replaced this process's allocations";
    int lost = 0;
    int allocations = 1;
    for (int nth = 1; nth <= allocations; ++nth) {
        Trace::PrepareTv();
        FreshProvider provider;
        SIProviderTable* page = provider.Create();
        SetTracing(true);
        ClearCalls();
        int value = -1;
        ArmAllocationFaults(nth);
        page->get_int(WAKE_UP, &value);
        DisarmAllocationFaults();
        allocations = AllocationCount();
        if (value == 1 && EventsOfTheWakeUpSwitch() == 0) {
            ++lost;
            page->get_int(WAKE_UP, &value);
            EXPECT_EQ(value, 1);
            EXPECT_EQ(EventsOfTheWakeUpSwitch(), 1);
        }
        SetTracing(false);
        provider.Delete(page);
        EXPECT_EQ(Debts(), std::vector<std::string>());
        Reset();
    }
    EXPECT_GT(lost, 0);
}

TEST_F(Trace, ALongTextHasItsLengthInSevenBitGroups) {
    for (const std::size_t length : {0u, 1u, 127u, 128u, 200u, 16383u, 16384u, 40000u}) {
        Hint(std::string(length, 'x'));
        Read(HINT);
        EXPECT_EQ(TraceEvents().back().payload,
                  Bytes(std::string(HINT_SETTING)) + Bytes(0) + Bytes(std::string(length, 'x')))
            << length;
    }
}

// A null text cannot come from the provider's own sites; the writer of payloads takes it all the
// same.
TEST(TracePayload, ANullTextIsTwoBytes) {
    Reset();
    static int id = 0;
    static const trace::CallSite site = {__FILE__, __LINE__, "test", &id};
    const char* null = nullptr;
    trace::Record(site, "%s", {null, true, 1, "text"});
    ASSERT_EQ(TraceEvents().size(), 1u);
    EXPECT_EQ(TraceEvents()[0].payload, "\xFF\x7F" + Bytes(true) + Bytes(1) + Bytes("text"));
}
