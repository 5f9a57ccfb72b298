// What all verbs have in common: the help, --tv and --provider, completion.
#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "every_verb.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

class VerbsTest : public EveryVerbTest {
  protected:
    // Every verb as the words that call it, and what verbs stand below: {"app"}, {"app", "list"}.
    std::vector<std::vector<std::string>> VerbsAndGroups() {
        std::vector<std::vector<std::string>> words;
        for (const std::string& verb : Offered({})) {
            words.push_back({verb});
            for (const std::string& below : Below(verb)) {
                words.push_back({verb, below});
            }
        }
        return words;
    }
};

}  // namespace

TEST_F(VerbsTest, HelpTeachesEachVerb) {
    const std::string help = Ok({"--help"});
    for (std::vector<std::string> verb : VerbsAndGroups()) {
        EXPECT_THAT(help, HasSubstr("\n  " + verb.front() + " "));
        verb.emplace_back("--help");
        EXPECT_THAT(Ok(verb), HasSubstr("Examples:")) << verb.front();
    }
}

TEST_F(VerbsTest, EachVerbHasAManPageThatTheFormatterTakesWithoutAWord) {
    Ok({"__man", folder_});
    std::vector<std::string> pages = {"vtv"};
    for (const std::vector<std::string>& verb : VerbsAndGroups()) {
        pages.push_back("vtv");
        for (const std::string& word : verb) {
            pages.back() += "-" + word;
        }
    }
    for (const std::string& page : pages) {
        EXPECT_THAT(Read(page + ".1"), AllOf(HasSubstr(".SH NAME\n" + page + " "),
                                             HasSubstr(".SH EXAMPLES\n.nf\nvtv ")));
    }
    if (std::system("command -v groff >/dev/null") == 0) {
        ASSERT_EQ(std::system(("groff -Tutf8 -man -ww " + folder_ + "/*.1 2>&1 >/dev/null | tee " +
                               Path("complaints"))
                                  .c_str()),
                  0);
        EXPECT_EQ(Read("complaints"), "");
    }
}

TEST_F(VerbsTest, AMistypedWordIsToldWithWhatMayHaveBeenMeant) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> mistakes = {
        {{"shwo"}, "vtv: There is no verb \"shwo\". Did you mean show?\nSee: vtv --help\n"},
        {{"xyz"}, "vtv: There is no verb \"xyz\".\nSee: vtv --help\n"},
        {{"--tv", "a", "shwo"},
         "vtv: There is no verb \"shwo\". Did you mean show?\nSee: vtv --help\n"},
        {{"--tv", "a"}, "vtv: Say what to do: a verb is missing.\nSee: vtv --help\n"},
        {{"app", "fnish"},
         "vtv: There is no verb \"app fnish\". Did you mean app finish?\nSee: vtv app --help\n"},
        {{"policy"}, "vtv policy: say which: show, publish.\nSee: vtv policy --help\n"},
        {{"show", "--wacth"},
         "vtv show: there is no option --wacth. Did you mean --watch?\nSee: vtv show --help\n"},
        {{"show", "--colour=1"},
         "vtv show: there is no option --colour. Did you mean --color?\nSee: vtv show --help\n"},
        {{"get", "db/x", "db/y"},
         "vtv get: \"db/y\" is one argument too many.\nSee: vtv get --help\n"},
        {{"set", "db/x"}, "vtv set: TYPE is required\nSee: vtv set --help\n"},
        {{"log", "-n", "x"},
         "vtv log: --lines: \"x\" is no whole number from 1 up.\nSee: vtv log --help\n"}};
    for (const auto& [arguments, says] : mistakes) {
        const Output output = Vtv(arguments);
        EXPECT_EQ(output.code, 2) << arguments.back();
        EXPECT_EQ(output.err, says);
        EXPECT_EQ(output.out, "");
    }
}

TEST_F(VerbsTest, EveryVerbTakesAProviderBeforeAndAfterItself) {
    const std::string missing = Path("missing.so");
    for (std::vector<std::string> verb : VerbsAndGroups()) {
        std::vector<std::string> before = {"--provider", missing};
        before.insert(before.end(), verb.begin(), verb.end());
        verb.insert(verb.end(), {"--provider", missing});
        for (const std::vector<std::string>& arguments : {before, verb}) {
            const Output output = Vtv(arguments);
            EXPECT_EQ(output.code, 3) << testing::PrintToString(arguments);
            EXPECT_EQ(output.err, "vtv: " + missing + ": there is no such provider library.\n")
                << testing::PrintToString(arguments);
        }
    }
}

TEST_F(VerbsTest, EveryVerbThatAsksThePageAsksTheProviderThatIsNamed) {
    const std::string unusable = "/dev/null";
    Ok({"show"});
    const std::vector<std::vector<std::string>> asking = {{"show"},
                                                          {"press", "voice"},
                                                          {"choose", "voice-wake-up", "on"},
                                                          {"explain", "voice"},
                                                          {"run"},
                                                          {"search", "anything"},
                                                          {"diff", "default", "default"},
                                                          {"validate", "--filter", "table"}};
    Write("scenario.toml", "[[step]]\npress = \"voice-wake-up\"\n");
    for (std::vector<std::string> verb : asking) {
        if (verb.front() == "run") {
            verb.push_back(Path("scenario.toml"));
        }
        verb.insert(verb.end(), {"--provider", unusable});
        const Output output = Vtv(verb);
        EXPECT_THAT(output.out + output.err, HasSubstr("cannot be loaded as a provider"))
            << verb.front();
        EXPECT_NE(output.code, 0) << verb.front();
    }
}

TEST_F(VerbsTest, AVerbThatDoesNotAskThePageDoesNotLoadTheProvider) {
    EXPECT_EQ(Ok({"language", "--provider", "/dev/null"}), "en_GB\n");
    EXPECT_EQ(Ok({"--provider", "/dev/null", "get", "db/menu_widget/language"}), "en_GB\n");
    EXPECT_THAT(Ok({"language", "--help"}), Not(HasSubstr("--provider")));
    EXPECT_THAT(Ok({"show", "--help"}), HasSubstr("--provider"));
}

TEST_F(VerbsTest, TheTvAndTheProviderMayStandBeforeTheVerb) {
    Ok({"new", "cn", "--model", "farfield-cn"});
    EXPECT_EQ(Ok({"--tv", "cn", "get", "db/comss/countrycode"}), "CN\n");
    const std::string fake = std::string(FAKES) + "/libfake-sound.so";
    EXPECT_THAT(Ok({"--provider", fake, "show", "voice-assistant"}),
                HasSubstr("Assistant  (voice-assistant)"));
}

TEST_F(VerbsTest, CompletionKnowsWhatTheTvAndTheMachineHave) {
    const auto offered = [&](std::vector<std::string> words) {
        words.insert(words.begin(), "__complete");
        return Ok(words);
    };
    Ok({"new", "kitchen"});
    EXPECT_EQ(offered({"account", ""}), "signed-in\nsigned-out\n");
    EXPECT_EQ(offered({"network", ""}), "connected\ndisconnected\nhost\n");
    EXPECT_EQ(offered({"consent", ""}), "pp\ntnc\n");
    EXPECT_EQ(offered({"consent", "tnc", ""}), "off\non\n");
    EXPECT_EQ(offered({"voice-guide", ""}), "off\non\n");
    EXPECT_EQ(offered({"language", "pt"}), "pt\npt_BR\npt_PT\n");
    EXPECT_EQ(offered({"texts", "--language", "f"}), "fr\n");
    EXPECT_EQ(offered({"choose", "voice-wake-up", ""}), "off\non\n");
    EXPECT_EQ(offered({"app", "mode", ""}), "auto\nprocess\nrecord\n");
    EXPECT_EQ(offered({"--color", "a"}), "always\nauto\n");
    EXPECT_EQ(offered({"-q", "show", "--color", "n"}), "never\n");
    EXPECT_THAT(offered({"feature", "recorder.microphone_type", ""}), HasSubstr("1\n"));
    EXPECT_EQ(offered({"help", "app", "fin"}), "finish\n");
    EXPECT_EQ(offered({"help", "sho"}), "show\n");
    EXPECT_EQ(offered({"dump", "--tv", "kitchen", ""}), "");
    // Only what runs, on the TV that is meant.
    EXPECT_EQ(offered({"app", "finish", "--tv", "kitchen", ""}), "");
    Ok({"account", "signed-out", "--tv", "kitchen"});
    Ok({"press", "voice-settings-orvik", "--ok", "--tv", "kitchen"});
    const std::string running =
        OkJson({"app", "list", "--json", "--tv", "kitchen"})[0]["app"].asString();
    EXPECT_EQ(offered({"app", "finish", "--tv", "kitchen", ""}), running + "\n");
    EXPECT_EQ(offered({"app", "cancel", ""}), "");
    environment["VTV_TV"] = "kitchen";
    EXPECT_EQ(offered({"app", "cancel", ""}), running + "\n");
    EXPECT_FALSE(std::filesystem::exists(Path("tvs/default"))) << "completion made a TV";
}

TEST_F(VerbsTest, CompletionOffersVerbsItemsKeysAndModels) {
    EXPECT_EQ(Ok({"__complete", "pow"}), "power-cycle\n");
    EXPECT_EQ(Ok({"__complete", "press", "voice-w"}), "voice-wake-up\n");
    EXPECT_EQ(Ok({"__complete", "set", "db/comss/c", ""}), "bool\nint\nstring\n");
    EXPECT_THAT(Ok({"__complete", "get", "db/menu/voice/m"}), HasSubstr("db/menu/voice/mva_list"));
    EXPECT_EQ(Ok({"__complete", "policy", ""}), "publish\nshow\n");
    EXPECT_EQ(Ok({"__complete", "show", "--wa"}), "--watch\n");
    EXPECT_THAT(Ok({"__complete", "new", "x", "--model", "far"}), HasSubstr("farfield-eu"));
    EXPECT_EQ(Vtv({"list"}).out,
              "There are no TVs in " + Path("tvs") + " yet. vtv show makes the first.\n");
}

TEST_F(VerbsTest, CompletionLooksPastTheOptionsBeforeTheVerb) {
    EXPECT_EQ(Ok({"__complete", "--tv", "kitchen", "pow"}), "power-cycle\n");
    EXPECT_EQ(Ok({"__complete", "--tv", "kitchen", "app", "fi"}), "finish\n");
    EXPECT_EQ(Ok({"__complete", "--prov"}), "--provider\n");
}

TEST_F(VerbsTest, BashCompletesThroughItsScript) {
    Write("complete.sh", std::string("source ") + COMPLETION + "/vtv.bash\nCOMP_WORDS=(" + VTV +
                             " press voice-sc)\nCOMP_CWORD=2\n_vtv\necho \"${COMPREPLY[@]}\" > " +
                             Path("words") + "\n");
    ASSERT_EQ(std::system(("bash " + Path("complete.sh")).c_str()), 0);
    EXPECT_EQ(Read("words"), "voice-screen-on-wake-up\n");
}

TEST_F(VerbsTest, ZshCompletesThroughItsScript) {
    ASSERT_EQ(std::system("command -v zsh >/dev/null"), 0) << "apt-get install zsh";
    // A function of the same name stands for the completion system: it notes what it is handed.
    Write("complete.zsh", std::string("compadd() { shift; print -l -- \"$@\" }\n") +
                              "_files() { print files }\nwords=(" + VTV +
                              " press voice-sc)\nCURRENT=3\n. " + COMPLETION + "/_vtv\nwords=(" +
                              VTV + " new '')\n_vtv\n");
    ASSERT_EQ(
        std::system(("zsh -f " + Path("complete.zsh") + " > " + Path("words") + " 2>&1").c_str()),
        0);
    EXPECT_EQ(Read("words"), "voice-screen-on-wake-up\nfiles\n");
}

TEST_F(VerbsTest, NoColourReachesAPipe) {
    EXPECT_THAT(Ok({"show"}), Not(HasSubstr("\033")));
}
