// The current assistant: the stored application id joined with the policy.
#include "page.h"

using namespace recording;

namespace {

class CurrentAssistant : public Provider {};

std::string NotMatched(const char* function) {
    return E(source::LIST, function, "[FATAL]Not matched!");
}

}  // namespace

TEST_F(CurrentAssistant, ItsKindIsReadAfreshWithoutALogRecord) {
    Offer(WholePolicy(), "app.google");
    EXPECT_EQ(Ask([] { return MVAList::GetCurrentVAType(); }), ASSISTANT_GVA);
    EXPECT_CALLS(Walk(1));
    Set(setting::CURRENT, "app.alexa");
    EXPECT_EQ(MVAList::GetCurrentVAType(), ASSISTANT_ALEXA);
}

TEST_F(CurrentAssistant, AnUnknownEmptyOrMissingIdHasNoKind) {
    Offer(WholePolicy());
    EXPECT_EQ(MVAList::GetCurrentVAType(), ASSISTANT_NONE);
    Set(setting::CURRENT, "");
    EXPECT_EQ(MVAList::GetCurrentVAType(), ASSISTANT_NONE);
    Set(setting::CURRENT, "app.unknown");
    EXPECT_EQ(MVAList::GetCurrentVAType(), ASSISTANT_NONE);
}

TEST_F(CurrentAssistant, OrvikIsRecognisedByItsRecordsId) {
    Offer(WholePolicy(), "app.orvik");
    EXPECT_TRUE(Ask([] { return MVAList::IsCurrentVAOrvik(); }));
    EXPECT_CALLS(Walk(1));
}

TEST_F(CurrentAssistant, AnyOtherAssistantIsNotOrvik) {
    Offer(WholePolicy(), "app.sva");
    EXPECT_FALSE(Ask([] { return MVAList::IsCurrentVAOrvik(); }));
    EXPECT_CALLS(Walk(5));
}

TEST_F(CurrentAssistant, TheWalkForOrvikReadsTheIdOncePerRecordAndLogsWhenNoneMatches) {
    Offer(WholePolicy(), "app.unknown");
    EXPECT_FALSE(Ask([] { return MVAList::IsCurrentVAOrvik(); }));
    EXPECT_CALLS(Walk(6) + Lines{NotMatched("IsCurrentVAOrvik")});
}

TEST_F(CurrentAssistant, TheWalkForFarFieldReadsTheIdOncePerRecordAndLogsWhenNoneMatches) {
    Offer(WholePolicy(), "app.unknown");
    EXPECT_FALSE(Ask([] { return MVAList::IsCurrentVASupportFF(); }));
    EXPECT_CALLS(Walk(6) + Lines{NotMatched("IsCurrentVASupportFF")});
}

TEST_F(CurrentAssistant, FarFieldIsItsRecordsFlag) {
    Offer(WholePolicy(), "app.google");
    EXPECT_TRUE(Ask([] { return MVAList::IsCurrentVASupportFF(); }));
    EXPECT_CALLS(Walk(3));
    Set(setting::CURRENT, "app.alexa");
    EXPECT_FALSE(MVAList::IsCurrentVASupportFF());
}

TEST_F(CurrentAssistant, GoogleListedUnderItsIdIsGoogleAndNotOrvik) {
    for (const bool farField : {false, true}) {
        Offer(Policy({Assistant(1, "GVA", "com.vantelo.tv.google-assistant", "G", farField)}),
              "com.vantelo.tv.google-assistant");
        EXPECT_EQ(MVAList::GetCurrentVAType(), 3);
        EXPECT_FALSE(MVAList::IsCurrentVAOrvik());
        EXPECT_EQ(MVAList::IsCurrentVASupportFF(), farField);
    }
}

TEST_F(CurrentAssistant, OnAnEmptyListTheKindStillComesFromWhatWasKnown) {
    Offer(WholePolicy(), "app.orvik");
    Offer("[]");
    EXPECT_EQ(MVAList::GetCurrentVAType(), ASSISTANT_ORVIK);
}

TEST_F(CurrentAssistant, OnAnEmptyListNothingMatchesAndNothingIsRead) {
    Offer(WholePolicy(), "app.orvik");
    Offer("[]");
    EXPECT_FALSE(Ask([] { return MVAList::IsCurrentVAOrvik(); }));
    EXPECT_CALLS(Lines{NotMatched("IsCurrentVAOrvik")});
    EXPECT_FALSE(Ask([] { return MVAList::IsCurrentVASupportFF(); }));
    EXPECT_CALLS(Lines{NotMatched("IsCurrentVASupportFF")});
}

TEST_F(CurrentAssistant, AnEmptyListDisablesVoiceOnceTheTermsAreAgreed) {
    Offer("[]");
    EXPECT_FALSE(Ask([] { return MVAList::IsVoiceDisabledByVAPolicy(); }));
    EXPECT_CALLS(Lines{"GetDisclaimerItemAgreement tnc"});
    AgreeToTerms();
    EXPECT_TRUE(Ask([] { return MVAList::IsVoiceDisabledByVAPolicy(); }));
    EXPECT_CALLS(AskTerms());
}

TEST_F(CurrentAssistant, AnOfferedAssistantKeepsVoiceEnabled) {
    AgreeToTerms();
    Offer(Policy({Assistant(1, "XY", "x", "X")}));
    EXPECT_FALSE(MVAList::IsVoiceDisabledByVAPolicy());
}

TEST_F(CurrentAssistant, AnEmptyIdMatchesARecordWithAnEmptyApplication) {
    Offer(Policy({Assistant(1, "GVA", "a", "A"), Assistant(2, "ORVIK2", "", "O", true)}), "");
    EXPECT_TRUE(MVAList::IsCurrentVAOrvik());
    EXPECT_TRUE(MVAList::IsCurrentVASupportFF());
    Remove(setting::CURRENT);
    EXPECT_TRUE(MVAList::IsCurrentVAOrvik());
}

TEST_F(CurrentAssistant, OfTwoRecordsTheWalksTakeTheFirstAndTheKindTheLater) {
    Offer(Policy({Assistant(1, "ORVIK2", "app", "A", true), Assistant(2, "GVA", "app", "B")}),
          "app");
    EXPECT_TRUE(Ask([] { return MVAList::IsCurrentVAOrvik(); }));
    EXPECT_CALLS(Walk(1));
    EXPECT_TRUE(MVAList::IsCurrentVASupportFF());
    EXPECT_EQ(MVAList::GetCurrentVAType(), ASSISTANT_GVA);
    Offer(Policy({Assistant(1, "GVA", "app", "A"), Assistant(2, "ORVIK2", "app", "B", true)}));
    EXPECT_FALSE(MVAList::IsCurrentVAOrvik());
    EXPECT_FALSE(MVAList::IsCurrentVASupportFF());
    EXPECT_EQ(MVAList::GetCurrentVAType(), ASSISTANT_ORVIK);
}

TEST_F(CurrentAssistant, AnOrvikRecordThatIsNotCurrentIsNotLookedAt) {
    Offer(Policy({Assistant(1, "ORVIK2", "app.orvik", "O"), Assistant(2, "GVA", "app.g", "G")}),
          "app.g");
    EXPECT_FALSE(MVAList::IsCurrentVAOrvik());
}

TEST_F(CurrentAssistant, AnIdThatChangesDuringTheWalkIsSeen) {
    // Reads that fail give "", which matches the second record.
    Offer(Policy({Assistant(1, "GVA", "app.g", "G"), Assistant(2, "ORVIK2", "", "O")}), "app.x");
    Fail("vconf_get_str", 2);
    EXPECT_TRUE(MVAList::IsCurrentVAOrvik());
}

TEST_F(CurrentAssistant, SetupIsAskedForItsKind) {
    Offer(WholePolicy(), "app.alexa");
    EXPECT_FALSE(Ask([] { return MVAList::IsCurrentVASetupComplete(); }));
    EXPECT_CALLS(Walk(1) + Lines{std::string("access ") + file::ALEXA + " 0"});
    tv().files.insert(file::ALEXA);
    EXPECT_TRUE(MVAList::IsCurrentVASetupComplete());
}

TEST_F(CurrentAssistant, WithoutAKindSetupIsNotComplete) {
    Offer(WholePolicy(), "app.unknown");
    EXPECT_FALSE(Ask([] { return MVAList::IsCurrentVASetupComplete(); }));
    EXPECT_CALLS(Walk(1) +
                 Lines{E(source::UTIL, "IsVASetupComplete", 651, "[FATAL]VA not selected")});
}
