// vtv keys, describe, reset, set in all its forms: one rule of types, all or nothing.
#include <algorithm>

#include "vtv_process.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr char kBlock[] = "db/comss/cisblock";
constexpr char kWakeUp[] = "db/menu/voice/assistant_farfield";

Json::Value WithKey(const Json::Value& list, const std::string& key) {
    for (const Json::Value& entry : list) {
        if (entry["key"] == key) {
            return entry;
        }
    }
    return {};
}

std::map<std::string, std::string> ByName(const std::map<std::string, std::string>& files) {
    std::map<std::string, std::string> byName;
    for (const auto& [path, content] : files) {
        byName[path.substr(path.rfind('/'))] = content;
    }
    return byName;
}

}  // namespace

TEST_F(VtvTest, KeysListsWhatTheTvHasAndWhatThePageKnows) {
    Ok({"set", "db/of/somebody", "int", "7"});
    const JsonDocument keys = OkJson({"keys", "--json"});
    EXPECT_EQ(WithKey(keys, "db/of/somebody")["value"], 7);
    EXPECT_EQ(WithKey(keys, "db/of/somebody")["meaning"], "");
    EXPECT_TRUE(WithKey(keys, "memory/wizard/wizard_mode")["value"].isNull());
    EXPECT_EQ(WithKey(keys, "memory/wizard/wizard_mode")["type"], "string");
    EXPECT_EQ(WithKey(keys, kBlock)["model"], 0);
}

TEST_F(VtvTest, KeysTakesAPartInAnyCaseOrAPattern) {
    EXPECT_THAT(Ok({"keys", "CISBLOCK"}), AllOf(HasSubstr(kBlock), Not(HasSubstr("mva_list"))));
    EXPECT_THAT(Ok({"keys", "memory/*"}),
                AllOf(HasSubstr("memory/passthru/connected"), Not(HasSubstr("db/"))));
    EXPECT_EQ(Vtv({"keys", "cisblock*"}).code, 1);
    EXPECT_THAT(Ok({"keys", "*CISBLOCK"}), HasSubstr(kBlock));
}

TEST_F(VtvTest, KeysThatFitNothingEndWith1) {
    EXPECT_EQ(Vtv({"keys", "qwertyuiop"}).code, 1);
}

TEST_F(VtvTest, KeysMarksWhatDiffersFromTheModel) {
    EXPECT_THAT(Ok({"keys", "cisblock"}), Not(HasSubstr("model:")));
    Ok({"set", kBlock, "int", "2"});
    EXPECT_THAT(Ok({"keys", "cisblock"}), HasSubstr("2  model: 0"));
    Ok({"unset", kBlock});
    EXPECT_THAT(Ok({"keys", "cisblock"}), HasSubstr("(unset)  model: 0"));
}

TEST_F(VtvTest, ADescriptionTellsTypeMeaningReadersAndItems) {
    Ok({"set", kBlock, "int", "2"});
    const JsonDocument block = OkJson({"describe", kBlock, "--json"});
    EXPECT_EQ(block["type"], "int");
    EXPECT_EQ(block["value"], 2);
    EXPECT_EQ(block["model"], 0);
    EXPECT_THAT(block["meaning"].asString(), HasSubstr("content hub"));
    ASSERT_FALSE(block["read_by"].empty());
    EXPECT_EQ(block["read_by"][0]["item"], "voice");
    EXPECT_EQ(block["read_by"][0]["question"], "visible");
    EXPECT_THAT(Ok({"describe", kBlock}), HasSubstr("general_voice_visiblechecker.cpp"));
    ASSERT_EQ(block["items"].size(), 2U);
    EXPECT_EQ(block["items"][0], "voice");
}

TEST_F(VtvTest, ADescriptionTellsOfTheApplicationsThatReadOrWriteTheKey) {
    const JsonDocument policy = OkJson({"describe", "db/menu/voice/mva_list", "--json"});
    ASSERT_EQ(policy["applications"].size(), 1U);
    EXPECT_EQ(policy["applications"][0]["app"], "org.nemra.voice-onboarding");
    EXPECT_EQ(policy["applications"][0]["reads"], true);
    EXPECT_EQ(policy["applications"][0]["writes"], false);
    EXPECT_EQ(policy["read_at_opening"], true);
    const JsonDocument first = OkJson({"describe", "db/voice-app/activate_first_time", "--json"});
    ASSERT_FALSE(first["applications"].empty());
    EXPECT_EQ(first["applications"][0]["writes"], true);
    EXPECT_TRUE(OkJson({"describe", kBlock, "--json"})["applications"].empty());
}

TEST_F(VtvTest, AFeatureIsDescribedByEitherOfItsNames) {
    const JsonDocument shortName = OkJson({"describe", "recorder.microphone_type", "--json"});
    EXPECT_EQ(shortName["kind"], "feature");
    EXPECT_EQ(shortName["key"], "com.vantelo/featureconf/recorder.microphone_type");
    EXPECT_EQ(OkJson({"describe", shortName["key"].asString(), "--json"}), shortName);
}

TEST_F(VtvTest, WhatAnotherProviderMakesOfAKeyIsNotGuessed) {
    const std::string fake = std::string(FAKES) + "/libfake-sound.so";
    EXPECT_TRUE(OkJson({"describe", kBlock, "--json", "--provider", fake})["items"].isNull());
    EXPECT_EQ(Vtv({"describe", "db/nowhere"}).code, 3);
}

TEST_F(VtvTest, AKnownTypeNeedsNotBeSaid) {
    Ok({"set", kBlock, "2"});
    EXPECT_EQ(OkJson({"get", kBlock, "--json"})["value"], 2);
    Ok({"set", "db/comss/countrycode=2"});
    EXPECT_EQ(OkJson({"get", "db/comss/countrycode", "--json"})["value"], "2");
    Ok({"set", "db/mine", "int", "1"});
    Ok({"set", "db/mine=5"});
    EXPECT_EQ(OkJson({"get", "db/mine", "--json"})["value"], 5);
    EXPECT_EQ(Vtv({"set", "db/mine=five"}).code, 2);
    const Output unknown = Vtv({"set", "db/new=5"});
    EXPECT_EQ(unknown.code, 2);
    EXPECT_THAT(unknown.err, HasSubstr("vtv set db/new TYPE VALUE"));
}

TEST_F(VtvTest, SeveralSettingsAreWrittenAllOrNotAtAll) {
    Ok({"set", "db/comss/cisblock=2", "db/comss/countrycode=FR", "memory/passthru/connected=true"});
    EXPECT_EQ(Ok({"get", kBlock}), "2\n");
    EXPECT_EQ(Ok({"get", "db/comss/countrycode"}), "FR\n");
    EXPECT_EQ(Ok({"get", "memory/passthru/connected"}), "true\n");
    const auto before = Contents("tvs/default");
    EXPECT_EQ(Vtv({"set", "db/comss/countrycode=IT", "db/comss/cisblock=two"}).code, 2);
    EXPECT_EQ(Vtv({"set", "db/comss/countrycode=IT", "db/new=1"}).code, 2);
    EXPECT_EQ(Vtv({"set", "db/comss/countrycode=IT", "nowhere=1"}).code, 2);
    EXPECT_EQ(Vtv({"set", "db/comss/countrycode=IT", "db/menu/voice/mva_list.99=x"}).code, 3);
    EXPECT_EQ(Vtv({"set", "db/comss/countrycode=IT", "db/comss/countrycode=ES"}).code, 2);
    EXPECT_EQ(Vtv({"set", "db/comss/countrycode=IT", "db/comss/cisblock"}).code, 2);
    EXPECT_EQ(Vtv({"set", "db/comss/countrycode=IT", "--force"}).code, 2);
    EXPECT_TRUE(Contents("tvs/default") == before);
}

TEST_F(VtvTest, SeveralSettingsThatCannotAllBeWrittenLeaveTheTvAsItWas) {
    Ok({"show"});
    const auto before = Contents("tvs/default/settings");
    const std::string large(size_t{300} * 1024, 'x');
    Write("policy", large);
    // The second value is larger than a file may become.
    const std::string script =
        "(trap '' XFSZ; ulimit -f 100; VTV_HOME=" + Path("tvs") + " " + VTV +
        " set db/comss/countrycode=IT \"db/menu/voice/mva_list=$(cat " + Path("policy") +
        " | cut -c1-120000)\"; echo \"code $?\") 2>&1 | cat > " + Path("said");
    ASSERT_EQ(std::system(script.c_str()), 0);
    EXPECT_THAT(Read("said"), HasSubstr("code 4\n"));
    EXPECT_TRUE(Contents("tvs/default/settings") == before);
}

TEST_F(VtvTest, AMemberOfAJsonSettingIsSetAndTheOthersStay) {
    const std::string app = "com.vantelo.tv.voice-instant-app";
    EXPECT_EQ(Ok({"get", kWakeUp + ("." + app)}), "on\n");
    Ok({"set", kWakeUp + ("." + app), "off"});
    EXPECT_EQ(Ok({"get", kWakeUp + ("." + app)}), "off\n");
    EXPECT_EQ(Ok({"get", std::string(kWakeUp) + ".com.vantelo.tv.alexa"}), "off\n");
    Ok({"set", "db/menu/voice/mva_list.0.VAName=Hugo", "db/menu/voice/mva_list.1.VAOrder=3",
        "db/menu/voice/mva_list.2.VAOrder=2"});
    const JsonDocument policy = OkJson({"policy", "show", "--json"});
    EXPECT_EQ(policy[0]["VAName"], "Hugo");
    EXPECT_EQ(policy[1]["VAOrder"], 3);
    EXPECT_EQ(policy[2]["VAOrder"], 2);
}

TEST_F(VtvTest, AMemberKeepsItsTypeAndANewOneIsATextWhereTheOthersAre) {
    EXPECT_EQ(Vtv({"set", "db/menu/voice/mva_list.0.VAOrder=first"}).code, 2);
    EXPECT_EQ(Vtv({"set", "db/menu/voice/mva_list.0.VAFFSupport=7"}).code, 2);
    Ok({"set", std::string(kWakeUp) + ".org.new.app", "on"});
    EXPECT_EQ(Ok({"get", std::string(kWakeUp) + ".org.new.app"}), "on\n");
    Ok({"unset", kWakeUp});
    Ok({"set", std::string(kWakeUp) + ".org.new.app=1"});
    EXPECT_EQ(Ok({"get", kWakeUp}), "{\"org.new.app\":\"1\"}\n");
    Ok({"set", "db/mine", "string", R"({"a.b":{"c":[1,2]}})"});
    Ok({"set", "db/mine.a.b.c.1=9", "db/mine.a.b.d=true"});
    EXPECT_EQ(Ok({"get", "db/mine"}), "{\"a.b\":{\"c\":[1,9],\"d\":true}}\n");
}

TEST_F(VtvTest, WhatHoldsNoJsonHasNoMembers) {
    const Output number = Vtv({"set", "db/comss/cisblock.a=1"});
    EXPECT_EQ(number.code, 1);
    EXPECT_THAT(number.err, HasSubstr("holds no JSON"));
    EXPECT_EQ(Vtv({"get", "db/comss/cisblock.a"}).code, 3);
}

TEST_F(VtvTest, AKeyThatHoldsADotIsItselfAndNoMember) {
    Ok({"set", "db/a", "string", "{\"b\":\"inner\"}"});
    Ok({"set", "db/a.b", "string", "outer"});
    Ok({"set", "db/a.b=changed"});
    EXPECT_EQ(Ok({"get", "db/a.b"}), "changed\n");
    EXPECT_EQ(Ok({"get", "db/a"}), "{\"b\":\"inner\"}\n");
}

TEST_F(VtvTest, AResetSettingIsAsTheModelHasIt) {
    Ok({"set", kBlock, "2"});
    Ok({"set", "db/mine", "int", "1"});
    Ok({"set", "db/comss/countrycode=FR"});
    Ok({"reset", kBlock, "db/mine"});
    EXPECT_EQ(Ok({"get", kBlock}), "0\n");
    EXPECT_EQ(Vtv({"get", "db/mine"}).code, 3);
    EXPECT_EQ(Ok({"get", "db/comss/countrycode"}), "FR\n");
}

TEST_F(VtvTest, AllSettingsAreResetAtOnceAndTheStateStays) {
    Ok({"new", "fresh"});
    Ok({"new", "used"});
    Ok({"set", "db/comss/cisblock=2", "db/comss/countrycode=FR", "--tv", "used"});
    Ok({"set", "db/mine", "int", "1", "--tv", "used"});
    Ok({"unset", "db/menu/voice/mva_list", "--tv", "used"});
    Write("tvs/used/settings/db%2Fvoice-app%2Factivate_first_time", "bool 4\ntr");
    Ok({"account", "signed-out", "--tv", "used"});
    Ok({"reset", "--all", "--tv", "used"});
    EXPECT_EQ(ByName(Contents("tvs/used/settings")), ByName(Contents("tvs/fresh/settings")));
    EXPECT_EQ(Ok({"account", "--tv", "used"}), "signed-out\n");
}

TEST_F(VtvTest, AResetOfWhatThereIsNotChangesNothing) {
    Ok({"set", kBlock, "2"});
    const auto before = Contents("tvs/default");
    EXPECT_EQ(Vtv({"reset", kBlock, "db/nowhere"}).code, 3);
    EXPECT_EQ(Vtv({"reset"}).code, 2);
    EXPECT_EQ(Vtv({"reset", "--all", kBlock}).code, 2);
    EXPECT_EQ(Vtv({"reset", kBlock, "nowhere"}).code, 2);
    EXPECT_TRUE(Contents("tvs/default") == before);
}

TEST_F(VtvTest, ChangesOfSeveralSettingsAreRecordedAndPlayed) {
    Ok({"set", "db/mine", "int", "1"});
    Ok({"set", "db/comss/cisblock=2", "db/comss/countrycode=FR", "--record", Path("mine.toml")});
    Ok({"reset", kBlock, "db/mine", "--record", Path("mine.toml")});
    Write("more.toml", Read("mine.toml") +
                           "\n[[step]]\nexpect.setting.\"db/comss/cisblock\" = 0\n"
                           "expect.setting.\"db/comss/countrycode\" = \"FR\"\n"
                           "expect.setting.\"db/mine\" = \"(missing)\"\n");
    Ok({"run", Path("more.toml")});
}

TEST_F(VtvTest, AWrongTypeIsRefusedAlikeWhereverItComesFrom) {
    Ok({"show"});
    const std::string rule =
        "\"db/comss/cisblock\" is an int on a TV (2 while the content hub is blocked), not a "
        "string: write a whole number.";
    EXPECT_THAT(Vtv({"set", kBlock, "string", "2"}).err, HasSubstr(rule));
    Write("dump.json", R"({"settings": {"db/comss/cisblock": "2"}})");
    EXPECT_THAT(Vtv({"load", Path("dump.json")}).err, HasSubstr(rule));
    EXPECT_THAT(Vtv({"import", Path("dump.json"), "new"}).err, HasSubstr(rule));
    Write(
        "snapshot.json",
        R"({"format": "vtv-snapshot", "settings": {"db/comss/cisblock": "2"}, "state": {}, "files": []})");
    EXPECT_THAT(Vtv({"restore", Path("snapshot.json")}).err, HasSubstr(rule));
    Write("model.toml", "[settings]\n\"db/comss/cisblock\" = \"2\"\n");
    const Output made = Vtv({"new", "wrong", "--model", Path("model.toml")});
    EXPECT_EQ(made.code, 2);
    EXPECT_THAT(made.err, AllOf(HasSubstr(rule), HasSubstr("model.toml:2:")));
    Write("scenario.toml", "[[step]]\nset.\"db/comss/cisblock\" = \"2\"\n");
    EXPECT_THAT(Vtv({"run", Path("scenario.toml")}).err, HasSubstr(rule));
}

TEST_F(VtvTest, AWrongTypeOfAFeatureIsRefusedAlikeWhereverItComesFrom) {
    Ok({"show"});
    const std::string key = "com.vantelo/featureconf/recorder.microphone_type";
    Write("dump.json", "{\"features\": {\"" + key + "\": \"1\"}}");
    EXPECT_EQ(Vtv({"load", Path("dump.json")}).code, 2);
    Write("snapshot.json",
          "{\"format\": \"vtv-snapshot\", \"settings\": {}, \"state\": {\"feature/" + key +
              "\": \"1\"}, \"files\": []}");
    const Output restored = Vtv({"restore", Path("snapshot.json")});
    EXPECT_EQ(restored.code, 2);
    EXPECT_THAT(restored.err, HasSubstr("is of type int, not string"));
    Write("model.toml", "[other-features]\n\"" + key + "\" = \"1\"\n");
    EXPECT_EQ(Vtv({"new", "wrong", "--model", Path("model.toml")}).code, 2);
    Write("scenario.toml", "[[step]]\nstate.\"feature/" + key + "\" = \"1\"\n");
    EXPECT_EQ(Vtv({"run", "--check", Path("scenario.toml")}).code, 2);
}

TEST_F(VtvTest, SearchFindsASettingAndAFeatureByWhatTheyMean) {
    const std::string hits = Ok({"search", "content hub"});
    EXPECT_THAT(hits, AllOf(HasSubstr(kBlock), HasSubstr("2 while the content hub is blocked")));
    EXPECT_THAT(Ok({"search", "FAR-FIELD MICROPHONES"}), HasSubstr("far_field_type"));
    EXPECT_THAT(Ok({"search", "signage"}), HasSubstr("product.product_type"));
    EXPECT_THAT(Ok({"search", "a projector"}), HasSubstr("(missing)"));
}

TEST_F(VtvTest, FeaturesMarksWhatIsTriedAgainstTheModel) {
    EXPECT_THAT(Ok({"feature"}), Not(HasSubstr("tried")));
    Ok({"feature", "recorder.microphone_type", "0"});
    EXPECT_THAT(Ok({"feature"}), HasSubstr("recorder.microphone_type = 0   tried; the model: 1"));
    Ok({"feature", "recorder.microphone_type", "--missing"});
    EXPECT_THAT(Ok({"feature"}),
                HasSubstr("recorder.microphone_type = (missing)   tried; the model: 1"));
    Ok({"feature", "projector_feature_support", "true"});
    EXPECT_THAT(Ok({"feature"}),
                HasSubstr("projector_feature_support = true   tried; the model: (missing)"));
    Ok({"feature", "projector_feature_support", "--reset"});
    Ok({"feature", "recorder.microphone_type", "--reset"});
    EXPECT_THAT(Ok({"feature"}), Not(HasSubstr("tried")));
    const JsonDocument features = OkJson({"feature", "--json"});
    EXPECT_EQ(WithKey(features, "com.vantelo/featureconf/recorder.microphone_type")["model"], 1);
}
