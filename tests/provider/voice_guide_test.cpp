// The voice guide and the languages that can be spoken.
#include "page.h"

using namespace recording;

namespace {

constexpr const char* ENGINE = "org.nemra.tts-engine-neural";
constexpr const char* METADATA = "com.vantelo/tv/metadata/tts-engine/legacy_tts_language";

class VoiceGuide : public Provider {
  protected:
    void SetUp() override {
        Provider::SetUp();
        Set(setting::LANGUAGE, "en_US");
        Set(setting::WIZARD, "");
        Feature(feature::NEURAL, false);
        tv().voices = {"ko_KR", "en_US"};
    }
    static bool IsSupported() {
        ClearCalls();
        return CSIMenuUtil::IsMenuLanguageSupportTTS();
    }
    static void EnterWizardOnNeuralModel() {
        Set(setting::WIZARD, "PNP_SETUP");
        Feature(feature::NEURAL, true);
    }
    static void Metadata(const char* value) { tv().packages[ENGINE][METADATA] = value; }
};

const Lines QUESTION = {GetStr(setting::LANGUAGE), GetStr(setting::WIZARD),
                        FeatureBool(feature::NEURAL)};

std::string Voice(const std::string& language) {
    return I(source::UTIL, "m_TTSSupportVoiceCb", 170, "tts language = " + language);
}

std::string Verdict(const std::string& language, bool supported) {
    return I(source::UTIL, "IsMenuLanguageSupportTTS", 141,
             "Current language [" + language + "] " + (supported ? "do" : "do not") +
                 " support voice guide");
}

const Lines ENGINE_ASKED = {"tts_create", "tts_foreach_supported_voices handle (null)"};

}  // namespace

TEST_F(VoiceGuide, ALanguageThatTheEngineSpeaksIsSupported) {
    EXPECT_TRUE(IsSupported());
    EXPECT_CALLS(QUESTION + ENGINE_ASKED +
                 Lines{Voice("ko_KR"), Voice("en_US"), "tts_destroy", Verdict("en_US", true)});
}

TEST_F(VoiceGuide, ALanguageThatTheEngineDoesNotSpeakIsNot) {
    Set(setting::LANGUAGE, "fr_FR");
    EXPECT_FALSE(IsSupported());
    EXPECT_LOGGED(Verdict("fr_FR", false));
}

TEST_F(VoiceGuide, OnlyTheFirstFiveCharactersOfTheLanguageCount) {
    Set(setting::LANGUAGE, "en_US.utf8");
    EXPECT_TRUE(IsSupported());
    EXPECT_LOGGED(Verdict("en_US", true));
}

TEST_F(VoiceGuide, AVoiceOfALongerNameDoesNotMatch) {
    tv().voices = {"en_US.utf8", "en_U", "en"};
    EXPECT_FALSE(IsSupported());
}

TEST_F(VoiceGuide, ALanguageInCapitalsDoesNotMatch) {
    Set(setting::LANGUAGE, "EN_US");
    EXPECT_FALSE(IsSupported());
    EXPECT_LOGGED(Verdict("EN_US", false));
}

TEST_F(VoiceGuide, ALanguageShorterThanFiveCharactersIsNotLookedUp) {
    for (const char* language : {"en", "", "en_U"}) {
        Set(setting::LANGUAGE, language);
        EXPECT_FALSE(IsSupported());
        EXPECT_CALLS(
            Lines{GetStr(setting::LANGUAGE), E(source::UTIL, "IsMenuLanguageSupportTTS", 83,
                                               "Osd Language empty or length less than 5")});
    }
}

TEST_F(VoiceGuide, AMissingLanguageIsLoggedByItsReaderToo) {
    Remove(setting::LANGUAGE);
    EXPECT_FALSE(IsSupported());
    EXPECT_CALLS(Lines{GetStr(setting::LANGUAGE),
                       E(source::UTIL, "GetVconfStirng", 68,
                         "[FATAL]can not get string from db/menu_widget/language"),
                       E(source::UTIL, "IsMenuLanguageSupportTTS", 83,
                         "Osd Language empty or length less than 5")});
}

TEST_F(VoiceGuide, LengthsAndPrefixesAreBytes) {
    Set(setting::LANGUAGE, "\xC3\xA9\xC3\xA9x");
    tv().voices = {"\xC3\xA9\xC3\xA9x"};
    EXPECT_TRUE(IsSupported());
}

TEST_F(VoiceGuide, TheEngineIsAskedOnceAndRemembered) {
    EXPECT_TRUE(IsSupported());
    tv().voices = {};
    EXPECT_TRUE(IsSupported());
    EXPECT_CALLS(QUESTION + Lines{Verdict("en_US", true)});
}

TEST_F(VoiceGuide, AnEngineThatReportedNothingIsAskedAgain) {
    tv().voices = {};
    EXPECT_FALSE(IsSupported());
    EXPECT_CALLS(QUESTION + ENGINE_ASKED + Lines{"tts_destroy", Verdict("en_US", false)});
    tv().voices = {"en_US"};
    EXPECT_TRUE(IsSupported());
}

TEST_F(VoiceGuide, VoicesAreKeptInTheEnginesOrderWithDuplicates) {
    tv().voices = {"de_DE", "en_US", "de_DE"};
    CSIMenuUtil::m_GetTTSSupportLanguage();
    EXPECT_EQ(CSIMenuUtil::m_listTTSLanguage, (std::list<std::string>{"de_DE", "en_US", "de_DE"}));
    CSIMenuUtil::m_GetTTSSupportLanguage();
    EXPECT_EQ(CSIMenuUtil::m_listTTSLanguage.size(), 6u);
}

TEST_F(VoiceGuide, AnEngineThatCannotBeCreatedIsStillAskedWithoutAHandleAndNotDestroyed) {
    Fail("tts_create");
    EXPECT_FALSE(IsSupported());
    EXPECT_CALLS(QUESTION +
                 Lines{"tts_create",
                       E(source::UTIL, "m_GetTTSSupportLanguage", 151, "[FATAL]Failed tts_create"),
                       "tts_foreach_supported_voices (null) (null)", Verdict("en_US", false)});
    ClearFaults();
    EXPECT_TRUE(IsSupported());
}

TEST_F(VoiceGuide, AnEngineThatCannotBeDestroyedIsLogged) {
    Fail("tts_destroy");
    EXPECT_TRUE(IsSupported());
    EXPECT_LOGGED(E(source::UTIL, "m_GetTTSSupportLanguage", 162, "[FATAL]Failed tts_destroy"));
}

TEST_F(VoiceGuide, TheVoiceCallbackGoesOnAndAppends) {
    EXPECT_TRUE(Ask([] { return CSIMenuUtil::m_TTSSupportVoiceCb(nullptr, "ru_RU", 3, nullptr); }));
    EXPECT_CALLS(Lines{Voice("ru_RU")});
    EXPECT_EQ(CSIMenuUtil::m_listTTSLanguage, (std::list<std::string>{"ru_RU"}));
}

TEST_F(VoiceGuide, AVoiceWithoutALanguageDoesNotCrash) {
    EXPECT_TRUE(CSIMenuUtil::m_TTSSupportVoiceCb(nullptr, nullptr, 0, nullptr));
}

// --- The setup wizard on a model with the neural engine ---

TEST_F(VoiceGuide, DuringTheWizardTheNeuralEnginesMetadataDecides) {
    EnterWizardOnNeuralModel();
    Metadata("en_US,de_DE");
    Set(setting::LANGUAGE, "de_DE");
    EXPECT_TRUE(IsSupported());
    EXPECT_CALLS(QUESTION + Lines{std::string("pkgmgrinfo_appinfo_get_appinfo ") + ENGINE,
                                  std::string("pkgmgrinfo_appinfo_get_metadata_value ") + METADATA,
                                  "pkgmgrinfo_appinfo_destroy_appinfo",
                                  I(source::UTIL, "IsMenuLanguageSupportTTS", 97,
                                    "legacy_tts_langagues [en_US,de_DE]"),
                                  Verdict("de_DE", true)});
}

TEST_F(VoiceGuide, AMetadataEntryKeepsItsBlankAndNeverMatches) {
    EnterWizardOnNeuralModel();
    Metadata("en_US, de_DE");
    Set(setting::LANGUAGE, "de_DE");
    EXPECT_FALSE(IsSupported());
    Set(setting::LANGUAGE, "en_US");
    EXPECT_TRUE(IsSupported());
}

TEST_F(VoiceGuide, TheMetadataIsSplitAtEveryComma) {
    EnterWizardOnNeuralModel();
    for (const char* value : {",,de_DE,", "de_DE", "en_US,de_DE,ko_KR", ",de_DE"}) {
        Metadata(value);
        Set(setting::LANGUAGE, "de_DE");
        EXPECT_TRUE(IsSupported()) << value;
    }
}

TEST_F(VoiceGuide, EmptyOrMissingMetadataTextSupportsNothing) {
    EnterWizardOnNeuralModel();
    Metadata("");
    EXPECT_FALSE(IsSupported());
    EXPECT_LOGGED(I(source::UTIL, "IsMenuLanguageSupportTTS", 97, "legacy_tts_langagues []"));
    tv().packages[ENGINE][METADATA] = std::nullopt;
    EXPECT_FALSE(IsSupported());
    EXPECT_LOGGED(I(source::UTIL, "IsMenuLanguageSupportTTS", 97, "legacy_tts_langagues []"));
}

TEST_F(VoiceGuide, WithoutTheMetadataItemTheEightLegacyLanguagesAreSupported) {
    EnterWizardOnNeuralModel();
    tv().packages[ENGINE];
    for (const char* language :
         {"ko_KR", "en_US", "en_GB", "de_DE", "it_IT", "es_ES", "ru_RU", "pt_PT"}) {
        Set(setting::LANGUAGE, language);
        EXPECT_TRUE(IsSupported()) << language;
    }
    for (const char* language : {"fr_FR", "pt_BR", "es_MX"}) {
        Set(setting::LANGUAGE, language);
        EXPECT_FALSE(IsSupported()) << language;
    }
    EXPECT_CALLS(QUESTION + Lines{std::string("pkgmgrinfo_appinfo_get_appinfo ") + ENGINE,
                                  std::string("pkgmgrinfo_appinfo_get_metadata_value ") + METADATA,
                                  E(source::UTIL, "GetMetaData", 633, "error: [-1]"),
                                  "pkgmgrinfo_appinfo_destroy_appinfo",
                                  I(source::UTIL, "IsMenuLanguageSupportTTS", 107,
                                    "deprecated logical: legacy tts langagues 8"),
                                  Verdict("es_MX", false)});
}

TEST_F(VoiceGuide, WithoutTheNeuralPackageTheLegacyLanguagesAreSupported) {
    EnterWizardOnNeuralModel();
    EXPECT_TRUE(IsSupported());
    EXPECT_CALLS(QUESTION + Lines{std::string("pkgmgrinfo_appinfo_get_appinfo ") + ENGINE,
                                  E(source::UTIL, "GetMetaData", 625, "error: [-1]"),
                                  I(source::UTIL, "IsMenuLanguageSupportTTS", 107,
                                    "deprecated logical: legacy tts langagues 8"),
                                  Verdict("en_US", true)});
}

TEST_F(VoiceGuide, OutsideTheWizardOrWithoutTheNeuralEngineTheMetadataIsNotRead) {
    Metadata("en_US");
    const std::pair<const char*, bool> cases[] = {
        {"PNP_SETUP", false}, {"", true}, {"pnp_setup", true}, {"PNP_SETUP2", true}};
    for (const auto& [wizard, neural] : cases) {
        Set(setting::WIZARD, wizard);
        Feature(feature::NEURAL, neural);
        IsSupported();
        EXPECT_EQ(CallsOf("pkgmgrinfo"), Lines{}) << wizard;
    }
}

TEST_F(VoiceGuide, TheFeatureIsReadEvenWhenTheWizardModeIsMissing) {
    Remove(setting::WIZARD);
    CSIMenuUtil::m_listTTSLanguage = {"en_US"};
    EXPECT_TRUE(IsSupported());
    EXPECT_CALLS(Lines{GetStr(setting::LANGUAGE), GetStr(setting::WIZARD),
                       E(source::UTIL, "GetVconfStirng", 68,
                         "[FATAL]can not get string from memory/wizard/wizard_mode"),
                       FeatureBool(feature::NEURAL), Verdict("en_US", true)});
}

// --- Metadata ---

TEST_F(VoiceGuide, MetadataIsCopiedAndTheInformationReleased) {
    tv().packages["app"]["item"] = "text";
    std::string value = "before";
    EXPECT_EQ(Ask([&] { return CSIMenuUtil::GetMetaData("app", "item", value); }), 0);
    EXPECT_EQ(value, "text");
    EXPECT_CALLS(Lines{"pkgmgrinfo_appinfo_get_appinfo app",
                       "pkgmgrinfo_appinfo_get_metadata_value item",
                       "pkgmgrinfo_appinfo_destroy_appinfo"});
}

TEST_F(VoiceGuide, AMetadataItemWithoutAValueSucceedsAndLeavesTheTextAsItWas) {
    tv().packages["app"]["item"] = std::nullopt;
    std::string value = "before";
    EXPECT_EQ(CSIMenuUtil::GetMetaData("app", "item", value), 0);
    EXPECT_EQ(value, "before");
}

TEST_F(VoiceGuide, MetadataOfAnUnknownPackageFailsWithThePlatformsCode) {
    std::string value = "before";
    Fail("pkgmgrinfo_appinfo_get_appinfo", 1, 1, -9);
    EXPECT_EQ(Ask([&] { return CSIMenuUtil::GetMetaData("app", "item", value); }), -1);
    EXPECT_EQ(value, "before");
    EXPECT_CALLS(Lines{"pkgmgrinfo_appinfo_get_appinfo app",
                       E(source::UTIL, "GetMetaData", 625, "error: [-9]")});
}

TEST_F(VoiceGuide, AnUnknownMetadataItemFailsAndReleasesTheInformation) {
    tv().packages["app"];
    std::string value = "before";
    Fail("pkgmgrinfo_appinfo_get_metadata_value", 1, 1, -8);
    EXPECT_EQ(Ask([&] { return CSIMenuUtil::GetMetaData("app", "item", value); }), -1);
    EXPECT_EQ(value, "before");
    EXPECT_CALLS(Lines{
        "pkgmgrinfo_appinfo_get_appinfo app", "pkgmgrinfo_appinfo_get_metadata_value item",
        E(source::UTIL, "GetMetaData", 633, "error: [-8]"), "pkgmgrinfo_appinfo_destroy_appinfo"});
}

// --- The switch ---

TEST_F(VoiceGuide, SwitchingItOnTellsTheStoreTheSoundAndTheToolkitInThisOrder) {
    Ask([] {
        CSIMenuUtil::SetVoiceGuideOnOff(true);
        return 0;
    });
    EXPECT_CALLS(Lines{E(source::UTIL, "SetVoiceGuideOnOff", 596, "Turn ON"),
                       "vconf_set_bool db/setting/accessibility/tts 1",
                       "avoc_set_sound_feedback 3 1", "elm_init 1 (null)",
                       "elm_config_access_set 1", "elm_config_save",
                       "elm_config_item_flush ELM_ACCESS_MODE"});
}

TEST_F(VoiceGuide, SwitchingItOffDoesTheSameWithTheOtherValues) {
    Ask([] {
        CSIMenuUtil::SetVoiceGuideOnOff(false);
        return 0;
    });
    EXPECT_CALLS(Lines{E(source::UTIL, "SetVoiceGuideOnOff", 596, "Turn OFF"),
                       "vconf_set_bool db/setting/accessibility/tts 0",
                       "avoc_set_sound_feedback 1 1", "elm_init 1 (null)",
                       "elm_config_access_set 0", "elm_config_save",
                       "elm_config_item_flush ELM_ACCESS_MODE"});
}

TEST_F(VoiceGuide, TheSwitchIgnoresEveryFailure) {
    FailAny(1);
    CSIMenuUtil::SetVoiceGuideOnOff(true);
    EXPECT_EQ(CallsOf("elm_config_item_flush").size(), 1u);
}
