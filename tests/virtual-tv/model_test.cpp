// TV models: all that come with the virtual TV are right, and a wrong one says where and what.
#include <json/json.h>

#include <set>

#include "tv_fixture.h"

namespace {

using vtv::ErrorKind;
using vtv::Value;

class ModelTest : public TvTest {
  protected:
    std::string Complaint(const std::string& toml) {
        const std::string file = folder / "model.toml";
        WriteText(file, toml);
        return ErrorOf(ErrorKind::kUsage, [&] { vtv::LoadModel(file); });
    }
    void ExpectComplaint(const std::string& toml, int line, const std::string& word) {
        const std::string text = Complaint(toml);
        EXPECT_NE(text.find("model.toml:" + std::to_string(line) + ": "), std::string::npos)
            << text;
        EXPECT_NE(text.find(word), std::string::npos) << text;
    }
};

TEST_F(ModelTest, EveryModelThatComesWithTheTvLoadsAndMakesATv) {
    const auto files = vtv::ModelFiles();
    ASSERT_GE(files.size(), 10u);
    std::set<std::string> titles;
    for (const std::string& file : files) {
        SCOPED_TRACE(file);
        const vtv::Model model = vtv::LoadModel(file);
        EXPECT_TRUE(titles.insert(model.title).second) << "the title is another model's too";
        EXPECT_FALSE(model.description.empty());
        EXPECT_EQ(ReadText(file).rfind("# ", 0), 0u)
            << "the model begins with the reason why it exists";
        vtv::Tv& made = TurnOn(model.name);
        EXPECT_TRUE(made.Problems().empty());
        EXPECT_EQ(made.GetModel().name, model.name);
        for (const auto& [key, value] : model.settings) {
            EXPECT_EQ(made.Get(key), value) << key;
        }
        EXPECT_EQ(made.Features(), model.features);
        EXPECT_EQ(made.SignedIn(), model.signedIn);
        for (const auto& [item, agreed] : model.consents) {
            EXPECT_EQ(made.Consent(item), agreed) << item;
        }
    }
}

TEST_F(ModelTest, AssistantsBecomeThePolicyAndTheirSettings) {
    TurnOn("farfield-eu");
    Json::Value policy;
    std::istringstream(std::get<std::string>(*tv->Get("db/menu/voice/mva_list"))) >> policy;
    ASSERT_EQ(policy.size(), 3u);
    EXPECT_EQ(policy[0]["VAOrder"], 1);
    EXPECT_EQ(policy[0]["VAId"], "ORVIK2");
    EXPECT_EQ(policy[2]["VAAppId"], "com.vantelo.tv.google-assistant");
    EXPECT_EQ(policy[2]["VAName"], "Google Assistant");
    EXPECT_EQ(policy[1]["VAFFSupport"], true);
    EXPECT_EQ(tv->Get("db/multi-assistant/default_assistant_appid"),
              Value("com.vantelo.tv.voice-instant-app"));
    EXPECT_EQ(tv->Get("db/voice-app/activate_first_time"), Value(false));
}

TEST_F(ModelTest, AnAssistantThatIsSetUpHasLeftItsMark) {
    TurnOnText(
        "[[assistants]]\norder = 1\nid = \"GVA\"\napp = \"g\"\nname = \"G\"\nset_up = true\n"
        "[[assistants]]\norder = 2\nid = \"TENCENT\"\napp = \"t\"\nname = \"T\"\nset_up = true\n"
        "[[assistants]]\norder = 3\nid = \"ORVIK2\"\napp = \"o\"\nname = \"O\"\n"
        "[[assistants]]\norder = 4\nid = \"ALEXA\"\napp = \"a\"\nname = \"A\"\n");
    EXPECT_EQ(tv->OwnerFiles(), std::vector<std::string>{"share/.voice/ga_login_success"});
    EXPECT_EQ(tv->Get("db/tencent-voice-assistant/voice-setting"),
              Value("{\"onboarding_completed\":true}"));
    EXPECT_EQ(tv->Get("db/voice-app/activate_first_time"), Value(true));
}

TEST_F(ModelTest, SettingsMayBeTablesAndListsWhichBecomeJson) {
    TurnOnText("[settings]\n\"db/table\" = { a = \"x\", b = true, c = 3 }\n\"db/list\" = [1, 2]\n");
    EXPECT_EQ(tv->Get("db/table"), Value("{\"a\":\"x\",\"b\":true,\"c\":3}"));
    EXPECT_EQ(tv->Get("db/list"), Value("[1,2]"));
}

TEST_F(ModelTest, FeaturesThatThePageDoesNotReadHaveAPlaceOfTheirOwn) {
    TurnOnText("[other-features]\n\"com.vantelo/featureconf/new.thing\" = true\n");
    EXPECT_EQ(tv->Feature("com.vantelo/featureconf/new.thing"), Value(true));
}

TEST_F(ModelTest, AnUnknownFeatureIsToldWithItsLineAndTheLikelyOne) {
    ExpectComplaint("title = \"x\"\n\n[features]\n\"voice.voice_recogniton_support\" = true\n", 4,
                    "Did you mean \"voice.voice_recognition_support\"?");
}

TEST_F(ModelTest, AFeatureThatResemblesNoneIsToldWithAllOfThem) {
    const std::string text = Complaint("[features]\n\"warp.drive\" = true\n");
    EXPECT_EQ(text.find("Did you mean"), std::string::npos) << text;
    EXPECT_NE(text.find("Known: cn_ai_service_supported, "), std::string::npos) << text;
}

TEST_F(ModelTest, FileAndLineAreToldOnce) {
    for (const char* toml : {"[network]\n", "[applications]\n", "network = \"fast\"\n"}) {
        const std::string text = Complaint(toml);
        EXPECT_EQ(text.find("model.toml:1: "), text.rfind("model.toml")) << text;
    }
}

TEST_F(ModelTest, AFeatureOfTheWrongTypeIsToldWithWhatToWrite) {
    ExpectComplaint("[features]\n\"product.product_type\" = \"4\"\n", 2, "write a whole number");
    ExpectComplaint("[features]\n\"voice.voice_recognition_support\" = 1\n", 2,
                    "write true or false");
    ExpectComplaint("[features]\n\"product.device_sid\" = true\n", 2, "write a text in quotes");
    ExpectComplaint("[features]\n\"product.product_type\" = 99999999999\n", 2, "32 bits");
    ExpectComplaint("[features]\n\"product.product_type\" = 1.5\n", 2, "whole number");
}

std::string AssistantsNumbered(const std::vector<int>& orders) {
    std::string toml;
    for (const int order : orders) {
        toml += "[[assistants]]\norder = " + std::to_string(order) +
                "\nid = \"GVA\"\napp = \"g\"\nname = \"G\"\n";
    }
    return toml;
}

TEST_F(ModelTest, APolicyThatIsNotNumberedOneToNIsToldWithItsNumbers) {
    for (const auto& orders : {std::vector<int>{2}, {0, 1}, {1, 1}, {1, 3}, {-1, 1}}) {
        const std::string text = Complaint(AssistantsNumbered(orders));
        EXPECT_NE(text.find("1 to " + std::to_string(orders.size())), std::string::npos) << text;
        EXPECT_NE(text.find("model.toml:1:"), std::string::npos) << text;
    }
    WriteText(folder / "good.toml", AssistantsNumbered({3, 1, 2}));
    EXPECT_EQ(vtv::LoadModel(folder / "good.toml").assistants.size(), 3u);
    ExpectComplaint("\n[settings]\n\"db/menu/voice/mva_list\" = [{VAOrder = 2}]\n", 3, "1 to 1");
    ExpectComplaint(
        "\n[settings]\n\"db/menu/voice/mva_list\" = '[{\"VAOrder\":0},{\"VAOrder\":1}]'\n", 3,
        "1 to 2");
    ExpectComplaint("[settings]\n\"db/menu/voice/mva_list\" = \"no json\"\n", 2,
                    "list of assistants");
}

TEST_F(ModelTest, EveryOtherSlipIsToldWithItsLine) {
    ExpectComplaint("a = \n", 1, "TOML");
    ExpectComplaint("[~consents]\n", 1, "TOML");
    ExpectComplaint("\xEF\xBB\xAD = 1\n", 1, "TOML");  // a letter of another script
    ExpectComplaint("titel = \"x\"\n", 1, "Did you mean \"title\"?");
    ExpectComplaint("title = 5\n", 1, "in quotes");
    ExpectComplaint("features = 5\n", 1, "[features]");
    ExpectComplaint("assistants = 5\n", 1, "[[assistants]]");
    ExpectComplaint("network = \"wifi\"\n", 1, "\"host\"");
    ExpectComplaint("applications = \"never\"\n", 1, "\"record\"");
    ExpectComplaint("[settings]\n\"language\" = 1\n", 2, "db/");
    ExpectComplaint("[settings]\n\"db/x\" = 1.5\n", 2, "whole number");
    ExpectComplaint("language = \"de_DE\"\n[settings]\n\"db/menu_widget/language\" = \"x\"\n", 3,
                    "one of the two");
    ExpectComplaint("[consents]\ntnc = 1\n", 2, "true or false");
    ExpectComplaint("[speech]\nvoices = \"en_US\"\n", 2, "list");
    ExpectComplaint("[speech]\noutput = \"loud\"\n", 2, "\"file\"");
    ExpectComplaint("[[packages]]\nname = \"x\"\n", 1, "app");
    ExpectComplaint("[[assistants]]\norder = 1\nid = \"orvik2\"\napp = \"o\"\nname = \"O\"\n", 3,
                    "Did you mean \"ORVIK2\"?");
    ExpectComplaint(
        "[[assistants]]\norder = 1\nid = \"GVA\"\napp = \"o\"\nname = \"O\"\nwake_up = \"yes\"\n",
        6, "off");
    ExpectComplaint(
        "[[assistants]]\norder = 1\nid = \"GVA\"\napp = \"o\"\nname = \"O\"\nhint = \"on\"\n", 6,
        "on_user");
    ExpectComplaint("owner_files = [\"/etc/x\"]\n", 1, "leading slash");
    ExpectComplaint("owner_files = [\"../x\"]\n", 1, "below /home/owner");
}

TEST_F(ModelTest, AModelThatIsNotThereIsToldWithTheOnesThatAre) {
    const std::string text = ErrorOf(ErrorKind::kNoSuch, [] { vtv::FindModel("farfield-mars"); });
    EXPECT_NE(text.find("farfield-eu"), std::string::npos) << text;
    ErrorOf(ErrorKind::kNoSuch, [&] { vtv::LoadModel(folder / "none.toml"); });
}

TEST_F(ModelTest, AFailedCreationLeavesNothingBehind) {
    WriteText(folder / "bad.toml", "titel = \"x\"\n");
    ErrorOf(ErrorKind::kUsage, [&] { vtv::Tv::Create(folder / "tv", folder / "bad.toml"); });
    EXPECT_FALSE(std::filesystem::exists(folder / "tv"));
    const auto entries = std::distance(std::filesystem::directory_iterator(folder.Path()), {});
    EXPECT_EQ(entries, 1);
}

TEST_F(ModelTest, ModelsThatCannotBeListedAreNotTakenForNone) {
    setenv("VTV_DATA", (folder / "nowhere").c_str(), 1);
    try {
        vtv::FindModel("farfield-eu");
        ADD_FAILURE() << "a model was found where there is no folder";
    } catch (const vtv::Error& error) {
        EXPECT_EQ(error.kind(), vtv::ErrorKind::kPlatform);
        EXPECT_NE(std::string(error.what()).find("nowhere/tvs: the models of TVs cannot be read"),
                  std::string::npos)
            << error.what();
    }
    unsetenv("VTV_DATA");
}

TEST_F(ModelTest, ATvIsNotMadeOverSomethingThatIsThere) {
    std::filesystem::create_directory(folder / "full");
    WriteText(folder / "full/file", "mine");
    ErrorOf(ErrorKind::kUsage,
            [&] { vtv::Tv::Create(folder / "full", vtv::FindModel("farfield-eu")); });
    EXPECT_EQ(ReadText(folder / "full/file"), "mine");
    std::filesystem::create_directory(folder / "empty");
    vtv::Tv::Create(folder / "empty", vtv::FindModel("farfield-eu"));
    EXPECT_TRUE(vtv::Tv::IsTv(folder / "empty"));
}

TEST_F(ModelTest, OfProcessesThatMakeTheSameTvAtOnceOneDoesAndTheOthersAreTold) {
    const std::string dir = folder / "tv";
    int made = 0;
    std::vector<std::unique_ptr<Child>> children;
    for (int i = 0; i < 6; ++i) {
        children.push_back(std::make_unique<Child>([&] {
            try {
                vtv::Tv::Create(dir, vtv::FindModel("farfield-eu"));
            } catch (const vtv::Error& error) {
                _exit(error.kind() == ErrorKind::kUsage ? 1 : 2);
            }
        }));
    }
    for (const auto& child : children) {
        const int code = WEXITSTATUS(child->Wait());
        EXPECT_LE(code, 1);
        made += code == 0 ? 1 : 0;
    }
    EXPECT_EQ(made, 1);
    EXPECT_TRUE(vtv::Tv(dir).Problems().empty());
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path()), {}), 1);
}

TEST_F(ModelTest, AFolderThatIsNoTvIsToldAsSuch) {
    EXPECT_FALSE(vtv::Tv::IsTv(folder.Path()));
    ErrorOf(ErrorKind::kNoSuch, [&] { vtv::Tv nothing(folder.Path()); });
    ErrorOf(ErrorKind::kNoSuch, [&] { vtv::Tv nothing(folder / "none"); });
}

TEST_F(ModelTest, ATvCanBeMovedAndCopied) {
    TurnOn();
    tv->Set("db/x", 5);
    const std::string dir = tv->Dir();
    vtv::PowerOff();
    tv.reset();
    std::filesystem::rename(dir, folder / "moved");
    std::filesystem::copy(folder / "moved", folder / "copied",
                          std::filesystem::copy_options::recursive);
    EXPECT_EQ(vtv::Tv(folder / "moved").Get("db/x"), Value(5));
    Open(folder / "copied");
    EXPECT_EQ(tv->Get("db/x"), Value(5));
}

TEST_F(ModelTest, ASnapshotPutsEverythingBackAndTellsOnlyOfWhatDiffers) {
    TurnOn();
    const vtv::Snapshot before = tv->TakeSnapshot();
    tv->Set("db/new", 1);
    tv->Set("db/comss/cisblock", 2);
    tv->Set("memory/passthru/connected", true);
    tv->SetSignedIn(false);
    tv->AddOwnerFile("share/.voice/ga_login_success");
    int changes = 0;
    tv->WatchAll([&](const vtv::Change&) { ++changes; });
    tv->Restore(before);
    while (tv->Dispatch() > 0) {
    }
    EXPECT_EQ(changes, 5);
    const vtv::Snapshot after = tv->TakeSnapshot();
    EXPECT_EQ(after.settings, before.settings);
    EXPECT_EQ(after.state, before.state);
    EXPECT_EQ(after.ownerFiles, before.ownerFiles);
}

}  // namespace
