// The policy: what becomes of its document, and what the list answers.
#include "page.h"

using namespace recording;

namespace {

constexpr const char* PARSING = "_ParsingMVAPolicyResult_Legacy";

// What a change of the policy logs before its result.
Lines Read() {
    return {E(source::LIST, PARSING, "reason:_VconfChangeCallback"), GetStr(setting::POLICY)};
}

std::string Listed(const std::string& text) {
    return E(source::LIST, PARSING, text);
}

class AssistantList : public Provider {
  protected:
    void Change(const std::string& policy) {
        ClearCalls();
        Publish(setting::POLICY, policy);
    }
    static std::string Ids() {
        std::string ids;
        for (const VAInfo& assistant : MVAList::GetVAList()) {
            ids += assistant.id + " ";
        }
        return ids;
    }
};

}  // namespace

TEST_F(AssistantList, NamesItsSettingsKeyAndTheMakersAssistant) {
    EXPECT_STREQ(MVAList::MVA_LIST_VCONF, "db/menu/voice/mva_list");
    EXPECT_STREQ(MVAList::ID_ORVIK, "ORVIK2");
}

TEST_F(AssistantList, TheKindsHaveTheirNumbers) {
    EXPECT_EQ(ASSISTANT_NONE, 0);
    EXPECT_EQ(ASSISTANT_ALEXA, 1);
    EXPECT_EQ(ASSISTANT_ORVIK, 2);
    EXPECT_EQ(ASSISTANT_GVA, 3);
    EXPECT_EQ(ASSISTANT_SBER, 4);
    EXPECT_EQ(ASSISTANT_SVA, 5);
    EXPECT_EQ(ASSISTANT_TENCENT, 6);
}

TEST_F(AssistantList, ADocumentIsListedInItsOrderWithEveryMember) {
    Change(Policy({Assistant(2, "GVA", "app.google", "Google Assistant", true),
                   Assistant(1, "ALEXA", "app.alexa", "Alexa", false)}));
    EXPECT_CALLS(Read() + Lines{Listed("VAOrder:2, VAId:GVA, VAAppId:app.google, VAName:Google "
                                       "Assistant, VAFFSupport:true"),
                                Listed("VAOrder:1, VAId:ALEXA, VAAppId:app.alexa, VAName:Alexa, "
                                       "VAFFSupport:false")});
    const std::vector<VAInfo> list = MVAList::GetVAList();
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(list[0].order, 2);
    EXPECT_EQ(list[0].id, "GVA");
    EXPECT_EQ(list[0].appId, "app.google");
    EXPECT_EQ(list[0].name, "Google Assistant");
    EXPECT_TRUE(list[0].ffSupport);
    EXPECT_EQ(list[1].order, 1);
    EXPECT_EQ(list[1].id, "ALEXA");
    EXPECT_FALSE(list[1].ffSupport);
}

TEST_F(AssistantList, EachKnownIdHasItsKind) {
    Change(WholePolicy());
    EXPECT_EQ(MVAList::GetVATypeByAppID("app.alexa"), ASSISTANT_ALEXA);
    EXPECT_EQ(MVAList::GetVATypeByAppID("app.orvik"), ASSISTANT_ORVIK);
    EXPECT_EQ(MVAList::GetVATypeByAppID("app.google"), ASSISTANT_GVA);
    EXPECT_EQ(MVAList::GetVATypeByAppID("app.salute"), ASSISTANT_SBER);
    EXPECT_EQ(MVAList::GetVATypeByAppID("app.sva"), ASSISTANT_SVA);
    EXPECT_EQ(MVAList::GetVATypeByAppID("app.tencent"), ASSISTANT_TENCENT);
}

TEST_F(AssistantList, ALookUpComparesTheWholeApplicationIdAndLogsNothing) {
    Change(WholePolicy());
    for (const char* other : {"", "app", "app.orvik2", "APP.ORVIK", " app.orvik"}) {
        EXPECT_EQ(Ask([&] { return MVAList::GetVATypeByAppID(other); }), ASSISTANT_NONE) << other;
        EXPECT_CALLS(Lines{});
    }
    EXPECT_EQ(MVAList::GetVATypeByAppID(std::string("app.orvik\0", 10)), ASSISTANT_NONE);
}

TEST_F(AssistantList, AnEmptyArrayEmptiesTheListAndKeepsTheKinds) {
    Change(WholePolicy());
    Change("[]");
    EXPECT_CALLS(Read() + Lines{Listed("empty result")});
    EXPECT_EQ(MVAList::GetVAListSize(), 0u);
    EXPECT_EQ(MVAList::GetVATypeByAppID("app.google"), ASSISTANT_GVA);
}

TEST_F(AssistantList, AnythingButAnArrayCountsAsEmpty) {
    for (const char* text : {R"({"VAList":[]})", "{}", R"("text")", "3", "true", "null"}) {
        Change(WholePolicy());
        Change(text);
        EXPECT_CALLS(Read() + Lines{Listed("empty result")});
        EXPECT_EQ(MVAList::GetVAListSize(), 0u) << text;
        EXPECT_EQ(MVAList::GetVATypeByAppID("app.google"), ASSISTANT_GVA) << text;
    }
}

TEST_F(AssistantList, BrokenTextLeavesTheListAndTheKindsAsTheyWere) {
    for (const char* text : {"[", "", "[{]", "{\"a\":", "nonsense", "[{\"VAOrder\":1}"}) {
        Change(WholePolicy());
        Change(text);
        EXPECT_CALLS(Read() + Lines{E(source::LIST, "_String2Json", "json parse fail"),
                                    Listed("json parse error")});
        EXPECT_EQ(MVAList::GetVAListSize(), 6u) << text;
        EXPECT_EQ(MVAList::GetVATypeByAppID("app.sva"), ASSISTANT_SVA) << text;
    }
}

TEST_F(AssistantList, AMissingKeyIsLoggedByItsReaderAndChangesNothing) {
    Change(WholePolicy());
    Remove(setting::POLICY);
    ClearCalls();
    Notify(setting::POLICY);
    EXPECT_CALLS(Read() + Lines{E(source::UTIL, "GetVconfStirng", 68,
                                  "[FATAL]can not get string from db/menu/voice/mva_list"),
                                E(source::LIST, "_String2Json", "json parse fail"),
                                Listed("json parse error")});
    EXPECT_EQ(MVAList::GetVAListSize(), 6u);
}

TEST_F(AssistantList, AKeyOfAnotherTypeChangesNothing) {
    Change(WholePolicy());
    Set(setting::POLICY, 5);
    Notify(setting::POLICY);
    EXPECT_EQ(MVAList::GetVAListSize(), 6u);
}

TEST_F(AssistantList, AnIdInLowerCaseIsListedWithoutAKind) {
    Change(R"([{"VAOrder":3,"VAId":"orvik2","VAAppId":"app.orvik","VAName":"Orvik"}])");
    EXPECT_EQ(MVAList::GetVAListSize(), 1u);
    EXPECT_EQ(MVAList::GetVATypeByAppID("app.orvik"), ASSISTANT_NONE);
}

TEST_F(AssistantList, AnIdThatIsNearlyKnownHasNoKind) {
    for (const char* id : {"ORVIK", "ORVIK22", "ALEXA ", "", "SBE"}) {
        Change(Policy({Assistant(1, id, "app", "Name")}));
        EXPECT_EQ(MVAList::GetVAListSize(), 1u) << id;
        EXPECT_EQ(MVAList::GetVATypeByAppID("app"), ASSISTANT_NONE) << id;
    }
}

TEST_F(AssistantList, OfAnApplicationListedTwiceTheLaterKindCounts) {
    Change(Policy({Assistant(1, "GVA", "app", "First"), Assistant(2, "ALEXA", "app", "Second")}));
    EXPECT_EQ(Ids(), "GVA ALEXA ");
    EXPECT_EQ(MVAList::GetVATypeByAppID("app"), ASSISTANT_ALEXA);
}

TEST_F(AssistantList, ALaterUnknownIdLeavesTheEarlierKind) {
    Change(Policy({Assistant(1, "GVA", "app", "First"), Assistant(2, "OTHER", "app", "Second")}));
    EXPECT_EQ(MVAList::GetVATypeByAppID("app"), ASSISTANT_GVA);
}

TEST_F(AssistantList, RecordsThatAreAlikeAreAllKept) {
    Change(Policy({Assistant(1, "GVA", "app", "A"), Assistant(1, "GVA", "app", "A")}));
    EXPECT_EQ(MVAList::GetVAListSize(), 2u);
}

TEST_F(AssistantList, AnApplicationWithAnEmptyIdHasItsKind) {
    Change(Policy({Assistant(1, "SBER", "", "Salute")}));
    EXPECT_EQ(MVAList::GetVATypeByAppID(""), ASSISTANT_SBER);
}

TEST_F(AssistantList, AMissingMemberReadsAsNeutral) {
    Change(R"([{}])");
    EXPECT_CALLS(Read() + Lines{Listed("VAOrder:0, VAId:, VAAppId:, VAName:, VAFFSupport:false")});
    const std::vector<VAInfo> list = MVAList::GetVAList();
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0].order, 0);
    EXPECT_EQ(list[0].id + list[0].appId + list[0].name, "");
    EXPECT_FALSE(list[0].ffSupport);
}

TEST_F(AssistantList, AMissingFarFieldFlagIsFalseAndAMissingOrderZero) {
    Change(R"([{"VAId":"GVA","VAAppId":"app.google","VAName":"Google"}])");
    const std::vector<VAInfo> list = MVAList::GetVAList();
    ASSERT_EQ(list.size(), 1u);
    EXPECT_FALSE(list[0].ffSupport);
    EXPECT_EQ(list[0].order, 0);
}

TEST_F(AssistantList, MembersAreConvertedWhereTheJsonLibraryCan) {
    Change(R"([{"VAOrder":2.0,"VAId":7,"VAAppId":true,"VAName":null,"VAFFSupport":1}])");
    EXPECT_CALLS(Read() +
                 Lines{Listed("VAOrder:2, VAId:7, VAAppId:true, VAName:, VAFFSupport:true")});
}

TEST_F(AssistantList, AMemberOfATypeThatCannotBeConvertedChangesNothingAndIsLogged) {
    for (const char* text :
         {R"([{"VAOrder":"first"}])", R"([{"VAOrder":[]}])", R"([{"VAId":{}}])",
          R"([{"VAAppId":[1]}])", R"([{"VAName":{"a":1}}])", R"([{"VAFFSupport":"yes"}])",
          R"([{"VAFFSupport":[]}])", R"([{"VAOrder":99999999999}])", R"([{"VAOrder":-1e300}])"}) {
        Change(WholePolicy());
        Change(text);
        const Lines logged = CallsOf("log E MVAList.cpp _VconfChangeCallback ");
        ASSERT_EQ(logged.size(), 1u) << text;
        EXPECT_NE(logged[0].find(" [EXCEPTION]"), std::string::npos) << logged[0];
        EXPECT_EQ(MVAList::GetVAListSize(), 6u) << text;
        EXPECT_EQ(MVAList::GetVATypeByAppID("app.sva"), ASSISTANT_SVA) << text;
    }
}

TEST_F(AssistantList, AnElementThatIsNoObjectChangesNothingAndIsLogged) {
    for (const char* text : {"[1]", "[\"x\"]", "[[]]", "[true]", "[[1,2]]"}) {
        Change(WholePolicy());
        Change(text);
        EXPECT_EQ(CallsOf("log E MVAList.cpp _VconfChangeCallback ").size(), 1u) << text;
        EXPECT_EQ(MVAList::GetVAListSize(), 6u) << text;
    }
}

TEST_F(AssistantList, ABadElementAfterGoodOnesChangesNothing) {
    Change(WholePolicy());
    Change("[" + Assistant(1, "GVA", "app.new", "New") + R"(,{"VAOrder":"second"}])");
    EXPECT_EQ(MVAList::GetVAListSize(), 6u);
    EXPECT_EQ(MVAList::GetVATypeByAppID("app.new"), ASSISTANT_NONE);
    EXPECT_EQ(MVAList::GetVATypeByAppID("app.sva"), ASSISTANT_SVA);
}

TEST_F(AssistantList, ADocumentNestedBeyondTheLimitChangesNothing) {
    Change(WholePolicy());
    Change(std::string(100000, '['));
    EXPECT_EQ(MVAList::GetVAListSize(), 6u);
    Change(std::string(5000, '[') + std::string(5000, ']'));
    EXPECT_EQ(MVAList::GetVAListSize(), 6u);
}

TEST_F(AssistantList, ANewDocumentReplacesTheOldOneWhole) {
    Change(WholePolicy());
    Change(Policy({Assistant(1, "SVA", "app.one", "One")}));
    EXPECT_EQ(Ids(), "SVA ");
    EXPECT_EQ(MVAList::GetVATypeByAppID("app.one"), ASSISTANT_SVA);
    EXPECT_EQ(MVAList::GetVATypeByAppID("app.orvik"), ASSISTANT_NONE);
}

TEST_F(AssistantList, ACopyObtainedEarlierStaysAsItWas) {
    Change(WholePolicy());
    const std::vector<VAInfo> copy = MVAList::GetVAList();
    Change("[]");
    ASSERT_EQ(copy.size(), 6u);
    EXPECT_EQ(copy[5].name, "Xiaowei");
}

TEST_F(AssistantList, QuestionsAboutTheListAskThePlatformNothing) {
    Change(WholePolicy());
    ClearCalls();
    MVAList::GetVAList();
    MVAList::GetVAListSize();
    EXPECT_EQ(MVAList::GetVANameByType(ASSISTANT_GVA), "Google Assistant");
    EXPECT_CALLS(Lines{});
}

TEST_F(AssistantList, TheNameOfAKindIsItsFirstRecords) {
    Change(Policy({Assistant(1, "GVA", "a", "First"), Assistant(2, "GVA", "b", "Second")}));
    EXPECT_EQ(MVAList::GetVANameByType(ASSISTANT_GVA), "First");
}

TEST_F(AssistantList, TheNameOfAKindIsFoundThroughTheApplicationsKind) {
    Change(Policy({Assistant(1, "GVA", "app", "First"), Assistant(2, "ALEXA", "app", "Second")}));
    EXPECT_EQ(MVAList::GetVANameByType(ASSISTANT_ALEXA), "First");
    EXPECT_EQ(MVAList::GetVANameByType(ASSISTANT_GVA), "");
}

TEST_F(AssistantList, TheNameOfAKindThatIsNotListedIsEmptyAndLogged) {
    Change(WholePolicy());
    EXPECT_EQ(Ask([] { return MVAList::GetVANameByType(ASSISTANT_NONE); }), "");
    EXPECT_CALLS(Lines{E(source::LIST, "GetVANameByType", "[FATAL]Not matched!")});
}

TEST_F(AssistantList, TheNameOfNoKindIsTheFirstUnknownRecords) {
    Change(Policy({Assistant(1, "GVA", "a", "Known"), Assistant(2, "XY", "b", "Unknown")}));
    EXPECT_EQ(MVAList::GetVANameByType(ASSISTANT_NONE), "Unknown");
}

TEST_F(AssistantList, AnEmptyListHasNoNames) {
    Change(WholePolicy());
    Change("[]");
    EXPECT_EQ(Ask([] { return MVAList::GetVANameByType(ASSISTANT_ALEXA); }), "");
    EXPECT_CALLS(Lines{E(source::LIST, "GetVANameByType", "[FATAL]Not matched!")});
}

TEST_F(AssistantList, InitializeWatchesThenReads) {
    Set(setting::POLICY, Policy({Assistant(1, "SBER", "a", "S", true)}).c_str());
    Ask([] {
        MVAList::Initialize();
        return 0;
    });
    EXPECT_CALLS(Lines{E(source::LIST, "Initialize", "Notify MVA_LIST_VCONF"),
                       "vconf_notify_key_changed db/menu/voice/mva_list (null)",
                       E(source::LIST, PARSING, "reason:Initialize"), GetStr(setting::POLICY),
                       Listed("VAOrder:1, VAId:SBER, VAAppId:a, VAName:S, VAFFSupport:true")});
    MVAList::Finalize();
}

TEST_F(AssistantList, AMalformedDocumentLeavesInitializeAsAnException) {
    Set(setting::POLICY, "[1]");
    EXPECT_THROW(MVAList::Initialize(), std::exception);
    MVAList::Finalize();
}

TEST_F(AssistantList, ATextWithCommentsOrTrailingBlanksIsRead) {
    Change("// policy\n" + WholePolicy() + "  \n");
    EXPECT_EQ(MVAList::GetVAListSize(), 6u);
}
