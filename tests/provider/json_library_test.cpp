// What the provider answers does not hang on the wording of the JSON library's exceptions.
#include <new>

#include "allocation_faults.h"
#include "fresh_provider.h"

using namespace recording;

namespace {

constexpr const char* TENCENT = "menu/system/general-voice-voice-settings-tencent";
constexpr const char* TENCENT_SETTING = "db/tencent-voice-assistant/voice-setting";

class OtherJsonTexts : public testing::Test {
  protected:
    void SetUp() override {
        Reset();
        ASSERT_NE(texts, nullptr) << dlerror();
        tv().settings["db/menu/voice/mva_list"] =
            std::string(R"([{"VAOrder":1,"VAId":"TENCENT","VAAppId":"app.tencent"}])");
        tv().settings["db/multi-assistant/default_assistant_appid"] = std::string("app.tencent");
        page = provider.Create();
    }
    void TearDown() override {
        provider.Delete(page);
        Reset();
    }
    // The answer of slot 41 with the nth allocation failing; -1 when memory ran out.
    int DisableTextWithoutAllocation(int nth) const {
        char* text = nullptr;
        bool flag = false;
        int answer = -1;
        ArmAllocationFaults(nth);
        try {
            answer = page->get_disable_text(TENCENT, &text, &flag);
        } catch (const std::bad_alloc&) {
        }
        DisarmAllocationFaults();
        std::free(text);
        return answer;
    }
    static bool HasLogged(const std::string& text) {
        for (const std::string& line : CallsOf("log ")) {
            if (line.find(text) != std::string::npos) {
                return true;
            }
        }
        return false;
    }

    // Before the provider, which loads the JSON library.
    void* texts = dlopen(OTHER_JSON_TEXTS_PATH, RTLD_NOW | RTLD_GLOBAL);
    FreshProvider provider;
    SIProviderTable* page = nullptr;
};

std::string Deep(std::size_t depth) {
    return R"({"onboarding_completed":)" + std::string(depth, '[') + std::string(depth, ']') + "}";
}

}  // namespace

TEST_F(OtherJsonTexts, TheyAreInForce) {
    Publish("db/menu/voice/mva_list", std::string(5000, '['));
    EXPECT_TRUE(HasLogged("[EXCEPTION]another text"));
}

TEST_F(OtherJsonTexts, ATooDeepSettingIsAnsweredAsOneThatIsNoObject) {
    for (const std::size_t depth : {1000u, 5000u}) {
        tv().settings[TENCENT_SETTING] = Deep(depth);
        ClearCalls();
        EXPECT_EQ(provider.Function<int(const char*, int)>("check_enable_int")(TENCENT, 0), 0);
        EXPECT_FALSE(HasLogged("[EXCEPTION]"));
        EXPECT_EQ(DisableTextWithoutAllocation(0), 0);
    }
    tv().settings[TENCENT_SETTING] = Deep(900);
    EXPECT_EQ(provider.Function<int(const char*, int)>("check_enable_int")(TENCENT, 0), 1);
}

TEST_F(OtherJsonTexts, WithoutMemoryOnlyBadAllocLeavesATextSlot) {
    ASSERT_TRUE(AllocationFaultsWork());
    tv().settings[TENCENT_SETTING] = std::string(R"({"onboarding_completed":"a text"})");
    DisableTextWithoutAllocation(0);
    const int allocations = AllocationCount();
    ASSERT_GT(allocations, 5);
    int ranOut = 0;
    for (int nth = 1; nth <= allocations; ++nth) {
        ranOut += DisableTextWithoutAllocation(nth) == -1 ? 1 : 0;
    }
    EXPECT_GT(ranOut, 0);
}
