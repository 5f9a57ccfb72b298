// vtv copy, rename and remove, as a user runs them.
#include <signal.h>

#include <filesystem>

#include "vtv_process.h"

namespace fs = std::filesystem;

using testing::AllOf;
using testing::HasSubstr;

namespace {

constexpr char kWizard[] = "org.nemra.wizard";

class WholeTvsTest : public VtvTest {
  protected:
    WholeTvsTest() { Ok({"new", "kitchen"}); }

    std::string Tv(const std::string& name) const { return Path("tvs/" + name); }
    // Its process.
    int StartWizard() {
        Ok({"consent", "tnc", "off", "--tv", "kitchen"});
        Ok({"press", "onboarding", "--tv", "kitchen"});
        const Json::Value running = OkJson({"app", "list", "--tv", "kitchen", "--json"});
        EXPECT_EQ(running.size(), 1U);
        EXPECT_EQ(running[0]["app"], kWizard);
        return running[0]["pid"].asInt();
    }
    static bool Ends(int pid) {
        for (int i = 0; i < 200 && kill(pid, 0) == 0; ++i) {
            usleep(50000);
        }
        return kill(pid, 0) != 0;
    }
    std::vector<std::string> Names() {
        std::vector<std::string> names;
        const Json::Value tvs = OkJson({"list", "--json"});
        for (const Json::Value& tv : tvs) {
            names.push_back(tv["name"].asString());
        }
        return names;
    }
    // All that TVs are; a lock that stays is no part of them.
    std::map<std::string, std::string> AllTvs() const {
        std::map<std::string, std::string> files = Contents("tvs");
        std::erase_if(files,
                      [](const auto& file) { return fs::path(file.first).filename() == ".lock"; });
        return files;
    }
    using Words = std::vector<std::string>;
};

}  // namespace

TEST_F(WholeTvsTest, ACopyHasThePageOfTheOtherAndALifeOfItsOwn) {
    Ok({"set", "db/x", "int", "7", "--tv", "kitchen"});
    EXPECT_EQ(Ok({"copy", "kitchen", "bedroom"}),
              "Made " + Tv("bedroom") + ". Look at it: vtv show --tv bedroom\n");
    EXPECT_EQ(Vtv({"diff", "kitchen", "bedroom"}).code, 0);
    Ok({"set", "db/x", "int", "8", "--tv", "bedroom"});
    EXPECT_EQ(Ok({"get", "db/x", "--tv", "kitchen"}), "7\n");
}

TEST_F(WholeTvsTest, ACopyTakesNoRunningApplicationAndLeavesItRunning) {
    StartWizard();
    Ok({"copy", "kitchen", "bedroom"});
    EXPECT_EQ(Ok({"app", "list", "--tv", "bedroom"}), "No application is running.\n");
    EXPECT_EQ(Ok({"app", "list", "--launches", "--tv", "bedroom"}),
              "Nothing has been started yet.\n");
    Ok({"app", "finish", kWizard, "--tv", "kitchen"});
    EXPECT_THAT(Ok({"consent", "--tv", "kitchen"}), HasSubstr("tnc on"));
    EXPECT_THAT(Ok({"consent", "--tv", "bedroom"}), HasSubstr("tnc off"));
}

TEST_F(WholeTvsTest, ATvOnWhichApplicationsRunIsRemovedOnlyByForce) {
    const int wizard = StartWizard();
    const auto before = Contents("tvs/kitchen/settings");
    const Output refused = Vtv({"remove", "kitchen"});
    EXPECT_EQ(refused.code, 1);
    EXPECT_THAT(refused.err, AllOf(HasSubstr(kWizard), HasSubstr("--force")));
    EXPECT_EQ(Contents("tvs/kitchen/settings"), before);
    EXPECT_EQ(kill(wizard, 0), 0) << "it was ended";
    EXPECT_EQ(Ok({"remove", "kitchen", "--force"}),
              std::string("Ended ") + kWizard + "\nRemoved " + Tv("kitchen") + ".\n");
    EXPECT_TRUE(Ends(wizard));
    EXPECT_FALSE(fs::exists(Tv("kitchen")));
    EXPECT_EQ(Vtv({"show", "--tv", "kitchen"}).code, 3);
}

TEST_F(WholeTvsTest, WhatUsesATvThatIsRenamedEndsAndTheTvGoesOnUnderItsNewName) {
    const int wizard = StartWizard();
    RunningVtv watching(environment, {"watch", "--tv", "kitchen"});
    ASSERT_TRUE(watching.WaitForError("Watching"));
    EXPECT_THAT(Ok({"rename", "kitchen", "bedroom"}),
                AllOf(HasSubstr(Tv("bedroom")), HasSubstr(kWizard)));
    const Output ended = watching.End();
    EXPECT_EQ(ended.code, 4);
    EXPECT_THAT(ended.err, HasSubstr("this TV is gone"));
    EXPECT_TRUE(Ends(wizard));
    EXPECT_EQ(Ok({"app", "list", "--tv", "bedroom"}), "No application is running.\n");
    EXPECT_EQ(Names(), Words{"bedroom"});
}

TEST_F(WholeTvsTest, WhoWatchesATvThatIsRemovedEnds) {
    RunningVtv watching(environment, {"show", "--watch", "--tv", "kitchen"});
    ASSERT_TRUE(watching.WaitFor("Hidden:"));
    Ok({"remove", "kitchen"});
    EXPECT_EQ(watching.End().code, 4);
}

TEST_F(WholeTvsTest, WhatCannotBeDoneChangesNothing) {
    Ok({"new", "taken"});
    fs::create_directories(Path("tvs/full/folder"));
    fs::create_directories(Path("tvs/empty"));
    fs::create_directory_symlink("kitchen", Path("tvs/link"));
    const std::vector<std::pair<Words, int>> mistakes = {
        {{"copy", "kitchen", "taken"}, 1},
        {{"copy", "kitchen", "kitchen"}, 1},
        {{"copy", "kitchen", "full"}, 2},
        {{"copy", "kitchen", ".vtv-new-1-1"}, 2},
        {{"copy", "kitchen", Tv("kitchen") + "/settings/inside"}, 2},
        {{"copy", "nobody", "x"}, 3},
        {{"copy", "empty", "x"}, 3},
        {{"copy", "kitchen", "/proc/x"}, 4},
        {{"rename", "kitchen", "taken"}, 1},
        {{"rename", "kitchen", "kitchen"}, 1},
        {{"rename", "kitchen", "full"}, 2},
        {{"rename", "kitchen", ".vtv-removed-1-1"}, 2},
        {{"rename", "kitchen", Tv("kitchen") + "/settings/inside"}, 2},
        {{"rename", "link", "x"}, 2},
        {{"rename", "nobody", "x"}, 3},
        {{"rename", "kitchen", "/proc/x"}, 4},
        {{"remove", "link"}, 2},
        {{"remove", Tv("link") + "/"}, 2},
        {{"remove", "nobody"}, 3},
        {{"remove", "full"}, 3},
        {{"remove", "/"}, 3}};
    const auto before = AllTvs();
    for (const auto& [words, code] : mistakes) {
        const Output output = Vtv(words);
        EXPECT_EQ(output.code, code) << testing::PrintToString(words) << output.err;
        EXPECT_EQ(output.out, "");
        EXPECT_NE(output.err, "");
        EXPECT_TRUE(AllTvs() == before) << testing::PrintToString(words);
    }
    EXPECT_EQ(Names(), (Words{"kitchen", "link", "taken"}));
}

TEST_F(WholeTvsTest, ANameOrAPathStandsForATvAsElsewhere) {
    Ok({"copy", "kitchen", Path("elsewhere/tv")});
    Ok({"rename", Path("elsewhere/tv/"), Path("further/away/")});
    EXPECT_FALSE(fs::exists(Path("elsewhere/tv")));
    Ok({"rename", Path("further/away"), "home"});
    EXPECT_EQ(Names(), (Words{"home", "kitchen"}));
    fs::create_directory_symlink(Tv("home"), Path("link"));
    Ok({"copy", Path("link"), "copy"});
    EXPECT_FALSE(fs::is_symlink(Tv("copy")));
    Ok({"remove", Tv("home") + "/"});
    EXPECT_EQ(Names(), (Words{"copy", "kitchen"}));
}

TEST_F(WholeTvsTest, FilesThatAreNoPartOfTheTvAreNotRemovedUnasked) {
    Write("tvs/kitchen/notes.txt", "mine");
    const Output refused = Vtv({"remove", "kitchen"});
    EXPECT_EQ(refused.code, 1);
    EXPECT_THAT(refused.err, HasSubstr("notes.txt"));
    EXPECT_EQ(Read("tvs/kitchen/notes.txt"), "mine");
    Ok({"remove", "kitchen", "--force"});
    EXPECT_EQ(Names(), Words());
}

TEST_F(WholeTvsTest, ATvFullOfLinksIsRemovedAndWhatTheyLeadToStays) {
    fs::create_directories(Path("outside/folder"));
    Write("outside/folder/file", "mine");
    const auto addLinks = [&](const std::string& folder) {
        fs::create_directory_symlink(Path("outside"), folder + "/folder");
        fs::create_symlink(Path("outside/folder/file"), folder + "/file");
        fs::create_symlink(Path("nowhere"), folder + "/nothing");
    };
    for (const char* part : {"settings", "owner", "log", "apps", "state", "trace"}) {
        addLinks(Tv("kitchen") + "/" + part);
    }
    EXPECT_EQ(Vtv({"copy", "kitchen", "x"}).code, 2);
    Ok({"remove", "kitchen"});
    EXPECT_EQ(Names(), Words());
    EXPECT_EQ(Read("outside/folder/file"), "mine");

    Ok({"new", "kitchen"});
    addLinks(Tv("kitchen"));
    EXPECT_EQ(Vtv({"remove", "kitchen"}).code, 1);
    Ok({"remove", "kitchen", "--force"});
    EXPECT_EQ(Names(), Words());
    EXPECT_EQ(Read("outside/folder/file"), "mine");
}

TEST_F(WholeTvsTest, CompletionOffersTvsAndNothingElse) {
    fs::create_directories(Path("tvs/kitten"));
    fs::create_directories(Path("tvs/.vtv-new-1-1"));
    for (const char* verb : {"remove", "rename", "copy"}) {
        EXPECT_EQ(Ok({"__complete", verb, "ki"}), "kitchen\n");
        EXPECT_EQ(Ok({"__complete", verb, ""}), "kitchen\n");
    }
}
