// vtv explore and vtv impact, which hand over to vtv-explore.
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "vtv_process.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr char kOrvikPolicy[] =
    R"([{"VAOrder":1,"VAId":"ORVIK2","VAAppId":"com.vantelo.tv.voice-instant-app",
    "VAName":"Orvik","VAFFSupport":true}])";

}  // namespace

TEST_F(VtvTest, ExploreHandsItsArgumentsOverAndKeepsTheExitCode) {
    const Output depends = Vtv({"explore", "depends", "-q", "--json", "enabled:voice"});
    EXPECT_EQ(depends.code, 0) << depends.err;
    EXPECT_THAT(depends.out, HasSubstr("setting db/aisound-app/soundsensorflag_prev"));
    EXPECT_EQ(Vtv({"explore", "depends", "no-such-item"}).code, 3);
    EXPECT_EQ(
        Vtv({"explore", "diff", "--brief", "-q", PROVIDER, PROVIDER, "--only", "help:voice"}).code,
        0);
    EXPECT_THAT(Vtv({"explore", "check", "--help"}).out, HasSubstr("--shard"));
    const Output unknown = Vtv({"explore", "chekc"});
    EXPECT_EQ(unknown.code, 2);
    EXPECT_THAT(unknown.err, HasSubstr("no exploration \"chekc\""));
    EXPECT_EQ(Vtv({"explore"}).code, 2);
}

TEST_F(VtvTest, ExploreAsksTheProviderThatVtvIsTold) {
    const std::string fake = std::string(FAKES) + "/libfake-unserved_call.so";
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"explore", "--provider", fake, "depends", "enabled:voice"},
          {"explore", "depends", "enabled:voice", "--provider", fake}}) {
        const Output result = Vtv(words);
        EXPECT_EQ(result.code, 4);
        EXPECT_THAT(result.err, HasSubstr(fake));
    }
    environment["VTV_PROVIDER"] = fake;
    EXPECT_THAT(Vtv({"explore", "depends", "enabled:voice"}).err, HasSubstr(fake));
}

TEST_F(VtvTest, ImpactComparesThePolicyOfATvWithANewOne) {
    Write("old.json", Ok({"policy", "show", "--json"}));
    Write("new.json", kOrvikPolicy);
    EXPECT_EQ(Vtv({"impact", Path("old.json"), Path("old.json"), "--tv", "farfield-eu", "-q"}).code,
              0);
    const Output change = Vtv({"impact", Path("old.json"), Path("new.json"), "--tv", "farfield-eu",
                               "--tv", "farfield-ru", "-q"});
    EXPECT_EQ(change.code, 1) << change.err;
    EXPECT_THAT(change.out, AllOf(HasSubstr("farfield-eu"), HasSubstr("farfield-ru")));
    const Output page = Vtv({"impact", Path("old.json"), Path("new.json"), "--html", "-q"});
    EXPECT_EQ(page.code, 1) << page.err;
    EXPECT_THAT(page.out, HasSubstr("<html"));
    Write("cut.json", "[{");
    EXPECT_EQ(Vtv({"impact", Path("old.json"), Path("cut.json")}).code, 2);
}

TEST_F(VtvTest, AModelThatVtvNewRefusesIsRefusedByTheExplorerInTheSameWords) {
    Write("old.json", "[]");
    Write("new.json", kOrvikPolicy);
    for (const char* model :
         {"[features]\n\"voice.voice_recognition_suport\" = true\n",
          "[features]\n\"product.product_type\" = \"4\"\n", "titel = \"x\"\n",
          "network = \"wifi\"\n", "[consents]\ntnc = 1\n", "[settings]\n\"db/x\" = 1.5\n",
          "[[assistants]]\norder = 2\nid = \"GVA\"\napp = \"g\"\nname = \"G\"\n",
          "[[assistants]]\norder = 1\nid = \"orvik2\"\napp = \"o\"\nname = \"O\"\n",
          "owner_files = [\"/etc/x\"]\n", "a = \n"}) {
        Write("model.toml", model);
        const std::string file = Path("model.toml");
        const Output made = Vtv({"new", "kitchen", "--model", file});
        EXPECT_EQ(made.code, 2) << model;
        const std::string refusal = made.err.substr(std::string("vtv: ").size());
        ASSERT_THAT(refusal, StartsWith(file + ":")) << model;
        for (const std::vector<std::string>& words :
             {std::vector<std::string>{"impact", Path("old.json"), Path("new.json"), "--tv", file},
              {"explore", "sequences", "--tv", file}}) {
            const Output explored = Vtv(words);
            EXPECT_EQ(explored.code, 2) << model;
            EXPECT_THAT(explored.err, HasSubstr(": " + refusal)) << words.front();
        }
    }
}

TEST_F(VtvTest, CompletionKnowsWhatCanBeExplored) {
    const std::string offered = Ok({"__complete", "explore", ""});
    EXPECT_THAT(offered, HasSubstr("check\n"));
    std::istringstream explorations(offered);
    for (std::string word; std::getline(explorations, word);) {
        EXPECT_EQ(Vtv({"explore", word, "--help"}).code, 0) << word;
    }
    EXPECT_EQ(Ok({"__complete", "explore", "table", "--ht"}), "--html\n");
    EXPECT_THAT(Ok({"__complete", "explore", "check", "--"}), HasSubstr("--shard\n"));
    EXPECT_EQ(Ok({"__complete", "explore", "sequences", "--tv", "no-v"}), "no-voice\n");
    const std::string invariants = Ok({"explore", "check", "--list"});
    for (const std::vector<std::string>& line :
         {std::vector<std::string>{"__complete", "explore", "check", ""},
          std::vector<std::string>{"__complete", "explore", "sequences", "--invariant", ""}}) {
        std::istringstream names(Ok(line));
        int count = 0;
        for (std::string name; std::getline(names, name); ++count) {
            EXPECT_THAT(invariants, HasSubstr(name));
        }
        EXPECT_GT(count, 5);
    }
    EXPECT_THAT(Ok({"__complete", "explore", "table", "voice-wa"}), HasSubstr("voice-wake-up"));
    EXPECT_THAT(Ok({"__complete", "impact", "a", "b", "--tv", "farfield-e"}),
                HasSubstr("farfield-eu"));
}

TEST_F(VtvTest, WithoutTheExplorerItIsToldWhatToInstall) {
    const std::string alone = Path("vtv");
    std::filesystem::copy_file(VTV, alone);
    for (const char* words : {" explore check", " impact a b"}) {
        const int status = std::system((alone + words + " 2>" + Path("errors")).c_str());
        EXPECT_EQ(WEXITSTATUS(status), 4);
        EXPECT_THAT(
            Read("errors"),
            StartsWith("vtv: This needs the program vtv-explore, which is not in " + folder_));
    }
}
