// Loading providers: what is answered, what is owned, and what is said of one that cannot be used.
#include "host/page/provider.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using host::Provider;
using host::ProviderError;
using testing::HasSubstr;

namespace {

std::string Fake(const std::string& name) {
    return std::string(FAKES) + "/libfake-" + name + ".so";
}

std::string ErrorOf(const std::string& file) {
    try {
        const Provider provider(file);
    } catch (const ProviderError& error) {
        return error.what();
    }
    return "";
}

constexpr char kVoice[] = "menu/system/general-voice";
constexpr char kAssistant[] = "menu/system/general-voice-voice-assistant";
constexpr char kWakeUpItem[] = "menu/system/general-voice-voice-wake-up";
constexpr char kOrvikSettings[] = "menu/system/general-voice-voice-settings-orvik";

}  // namespace

TEST(Provider, AnswersWithValuesOfItsOwn) {
    const Provider provider(Fake("sound"));
    EXPECT_TRUE(provider.IsVisible(kVoice));
    EXPECT_FALSE(provider.IsVisible("x"));
    EXPECT_TRUE(provider.IsEnabled(kAssistant));
    EXPECT_FALSE(provider.IsEnabled(kWakeUpItem));
    EXPECT_EQ(provider.Title(kVoice), "Voice");
    EXPECT_EQ(provider.Title("x"), std::nullopt);
    EXPECT_EQ(provider.Help(kVoice), "Help");
    EXPECT_EQ(provider.Property("provider/owner"), "fake");
    EXPECT_EQ(provider.Property("provider/colour"), std::nullopt);
}

TEST(Provider, StoresAValueAndReadsItBack) {
    const Provider provider(Fake("sound"));
    EXPECT_EQ(provider.GetInt(kAssistant), 1);
    provider.SetInt(kAssistant, 2);
    EXPECT_EQ(provider.GetInt(kAssistant), 2);
}

TEST(Provider, AValueThatIsNotWrittenIsAbsent) {
    EXPECT_EQ(Provider(Fake("sound")).GetInt("x"), std::nullopt);
}

TEST(Provider, CopiesTheListOfChoices) {
    const Provider provider(Fake("sound"));
    const std::vector<host::Choice> expected = {{1, "One"}, {2, "Two"}};
    EXPECT_EQ(provider.Choices(kAssistant), expected);
    EXPECT_TRUE(provider.Choices(kWakeUpItem).empty());
}

TEST(Provider, SkipsAHoleInAList) {
    const std::vector<host::Choice> expected = {{1, "One"}};
    EXPECT_EQ(Provider(Fake("hole_in_list")).Choices(kAssistant), expected);
}

TEST(Provider, ABoxHasAsManyButtonsAsItSays) {
    const Provider provider(Fake("sound"));
    const host::Box confirmation = {"Change", "Change it?", {"Yes", "No"}, std::nullopt};
    const host::Box popup = {"Set up", "Set it up?", {"Start"}, 9999};
    EXPECT_EQ(provider.Confirmation(kAssistant), confirmation);
    EXPECT_EQ(provider.Confirmation(kWakeUpItem), std::nullopt);
    EXPECT_EQ(provider.DisablePopup(kOrvikSettings), popup);
    EXPECT_EQ(provider.DisablePopup(kWakeUpItem), std::nullopt);
}

TEST(Provider, ADisableTextCountsOnlyWithItsFlag) {
    const Provider provider(Fake("sound"));
    EXPECT_EQ(provider.DisableText(kWakeUpItem), "Not now.");
    EXPECT_EQ(provider.DisableText(kOrvikSettings), std::nullopt);
}

TEST(Provider, AMissingSlotMeansNoAnswer) {
    EXPECT_EQ(Provider(Fake("missing_slot")).Help(kVoice), std::nullopt);
}

TEST(Provider, AMissingFileIsNamed) {
    const std::string file = Fake("that-nobody-made");
    EXPECT_THAT(ErrorOf(file), HasSubstr(file + ": there is no such provider library."));
    try {
        const Provider provider(file);
        FAIL();
    } catch (const ProviderError& error) {
        EXPECT_EQ(error.kind(), ProviderError::Kind::kNoSuchFile);
    }
}

TEST(Provider, AFileThatIsNoLibraryIsRefused) {
    EXPECT_THAT(ErrorOf(VTV), HasSubstr("cannot be loaded as a provider"));
}

TEST(Provider, AMissingEntryPointIsNamed) {
    EXPECT_THAT(ErrorOf(Fake("missing_entry_point")),
                HasSubstr("does not export check_enable_bool()"));
}

TEST(Provider, APlatformCallThatNobodyServesIsNamed) {
    EXPECT_THAT(ErrorOf(Fake("unserved_call")),
                HasSubstr("needs the platform call vconf_get_weather,"));
}

TEST(Provider, AFailedCreationIsReported) {
    EXPECT_THAT(ErrorOf(Fake("create_fails")), HasSubstr("create_provider() failed with -1"));
    EXPECT_THAT(ErrorOf(Fake("no_table")), HasSubstr("create_provider() handed out no table"));
}
