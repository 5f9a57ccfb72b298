// How output looks where it is read: its width, its letters, its colours, how much is said.
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <regex>
#include <sstream>
#include <thread>

#include "program/text_width.h"
#include "tests/caught_signal.h"
#include "vtv_process.h"

namespace fs = std::filesystem;

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

using Words = std::vector<std::string>;

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

// All words of a picture, without its frame.
std::string WordsOf(const std::string& picture) {
    std::string words = std::regex_replace(picture, std::regex("[│╭╮╰╯├┤─▸●○›✕▣]"), " ");
    return std::regex_replace(words, std::regex("\\s+"), " ");
}

bool IsAscii(const std::string& text) {
    return std::all_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

class LookTest : public VtvTest {};

}  // namespace

TEST_F(LookTest, APageFitsAnyWidthFrom30ColumnsOn) {
    for (const char* model : {"farfield-eu", "projector-fr", "farfield-cn", "legacy-kr"}) {
        Ok({"new", model, "--model", model});
        for (const int columns : {1, 30, 31, 37, 40, 52, 79, 100, 300}) {
            environment["COLUMNS"] = std::to_string(columns);
            const size_t width = std::min(std::max(columns, 30), 100);
            for (const std::string& line : LinesOf(Ok({"show", "--all", "--tv", model}))) {
                EXPECT_LE(program::Width(line), width) << model << ": " << line;
            }
        }
    }
}

TEST_F(LookTest, ANarrowPageWrapsItsTitlesAndLosesNoWord) {
    Ok({"new", "tv", "--model", "projector-fr"});
    environment["COLUMNS"] = "30";
    const std::string words = WordsOf(Ok({"show", "--all", "--tv", "tv"}));
    const Json::Value page = OkJson({"show", "--json", "--tv", "tv"});
    for (const Json::Value& item : page["items"]) {
        std::istringstream title(item["title"].asString());
        for (std::string word; title >> word;) {
            EXPECT_THAT(words, HasSubstr(word));
        }
    }
    environment["COLUMNS"] = "a lot";
    EXPECT_EQ(program::Width(LinesOf(Ok({"show", "--tv", "tv"}))[1]), 78U);
}

TEST_F(LookTest, WithoutUtf8AllIsPlainAsciiAndStandsInLine) {
    for (const char* model : {"farfield-eu", "projector-fr", "legacy-kr", "farfield-ru"}) {
        environment["LC_ALL"] = "C.UTF-8";
        Ok({"new", model, "--model", model});
        for (const char* locale : {"C", "POSIX"}) {
            environment["LC_ALL"] = locale;
            for (const Words& line : {Words{"show", "--all"}, Words{"explain", "voice"},
                                      Words{"texts"}, Words{"show", "voice-assistant"}}) {
                Words words = line;
                words.insert(words.end(), {"--tv", model});
                EXPECT_TRUE(IsAscii(Ok(words))) << model << line.front();
            }
            environment["COLUMNS"] = "41";
            for (const std::string& line : LinesOf(Ok({"show", "--tv", model}))) {
                if (line[0] == '|' || line[0] == '+') {
                    EXPECT_EQ(line.size(), 41U) << line;
                }
            }
            environment.erase("COLUMNS");
        }
    }
    const std::string page = Ok({"show", "--tv", "farfield-eu"});
    EXPECT_THAT(page, AllOf(HasSubstr("+-----"), HasSubstr("| Voice"), HasSubstr("on  *"),
                            HasSubstr("> 1 Orvik")));
    const Output french = Vtv({"show", "--tv", "projector-fr"});
    EXPECT_THAT(french.out, HasSubstr("televiseur"));  // é
    const Output korean = Vtv({"show", "--tv", "legacy-kr"});
    EXPECT_THAT(korean.err, HasSubstr("set LANG to a locale with UTF-8"));
    EXPECT_EQ(Vtv({"-q", "show", "--tv", "legacy-kr"}).err, "");
}

TEST_F(LookTest, WhatProgramsReadIsUtf8InEveryLocale) {
    Ok({"new", "default", "--model", "legacy-kr"});
    const std::string json = Ok({"show", "--json"});
    EXPECT_FALSE(IsAscii(json));
    environment["LC_ALL"] = "C";
    EXPECT_EQ(Ok({"show", "--json"}), json);
    Ok({"set", "db/x", "string", "é"});
    EXPECT_EQ(Ok({"get", "db/x"}), "é\n");
}

TEST_F(LookTest, AnotherCharacterSetIsSpokenAsItIs) {
    Ok({"new", "default", "--model", "projector-fr"});
    environment["LC_ALL"] = "fr_FR.ISO-8859-1";
    const std::string page = Ok({"show"});
    EXPECT_THAT(page, HasSubstr("t\xe9l\xe9viseur"));
    EXPECT_THAT(page, AllOf(Not(HasSubstr("é")), HasSubstr("+---")));
}

TEST_F(LookTest, ColourIsAsItWasAskedForElseAsTheTerminalAndNoColorSay) {
    Ok({"show"});
    const auto isColoured = [](const std::string& text) {
        return text.find('\x1b') != std::string::npos;
    };
    EXPECT_FALSE(isColoured(Ok({"show"})));
    EXPECT_TRUE(isColoured(Ok({"show", "--color", "always"})));
    EXPECT_TRUE(isColoured(Ok({"--color=always", "show"})));
    EXPECT_FALSE(isColoured(Ok({"show", "--json", "--color", "always"})));
    EXPECT_TRUE(isColoured(OnTerminal("vtv", {"show"}).out));
    EXPECT_FALSE(isColoured(OnTerminal("vtv", {"show", "--color", "never"}).out));
    environment["NO_COLOR"] = "1";
    EXPECT_FALSE(isColoured(OnTerminal("vtv", {"show"}).out));
    EXPECT_FALSE(isColoured(OnTerminal("vtv", {"show", "--color", "auto"}).out));
    EXPECT_TRUE(isColoured(Ok({"show", "--color", "always"})));
    environment["NO_COLOR"] = "";
    EXPECT_TRUE(isColoured(OnTerminal("vtv", {"show"}).out));
    const Output wrong = Vtv({"show", "--color", "sometimes"});
    EXPECT_EQ(wrong.code, 2);
    EXPECT_THAT(wrong.err, HasSubstr("auto, always or never"));
}

TEST_F(LookTest, QuietLeavesOutNotesAndHintsButNeitherAnswersNorErrors) {
    EXPECT_THAT(Vtv({"show"}).err, HasSubstr("Made the TV"));
    Ok({"remove", "default"});
    const Output page = Vtv({"show", "--quiet"});
    EXPECT_EQ(page.err, "");
    EXPECT_THAT(page.out, HasSubstr("Voice Assistant"));
    EXPECT_THAT(Ok({"press", "voice-assistant"}), HasSubstr("(the list waits"));
    EXPECT_THAT(Ok({"-q", "press", "voice-assistant"}),
                AllOf(HasSubstr("choose:"), Not(HasSubstr("waits"))));
    for (const Words& line : {Words{"new", "a", "-q"}, Words{"copy", "a", "b", "-q"},
                              Words{"rename", "b", "c", "-q"}, Words{"remove", "c", "-q"}}) {
        EXPECT_EQ(Ok(line), "") << line.front();
    }
    EXPECT_THAT(Vtv({"get", "db/none", "-q"}).err, HasSubstr("no such setting"));
}

TEST_F(LookTest, HelpOfAVerbIsTheSameBothWays) {
    EXPECT_EQ(Ok({"help"}), Ok({"--help"}));
    for (const std::string& verb : LinesOf(Ok({"__complete", ""}))) {
        EXPECT_EQ(Ok({"help", verb}), Ok({verb, "--help"})) << verb;
    }
    EXPECT_EQ(Ok({"help", "app", "finish"}), Ok({"app", "finish", "--help"}));
    const Output unknown = Vtv({"help", "shwo"});
    EXPECT_EQ(unknown.code, 2);
    EXPECT_THAT(unknown.err, HasSubstr("Did you mean show?"));
    EXPECT_EQ(Vtv({"help", "show", "voice"}).code, 2);
    EXPECT_FALSE(fs::exists(Path("tvs")));
}

// Only the verb that the line begins with is described, and what stands before it may be named as
// another one.
TEST_F(LookTest, TheVerbIsFoundBehindTheOptionsOfTheProgram) {
    Ok({"new", "show"});
    const Words get = {"get", "db/menu_widget/language"};
    const std::string value = Ok({"get", "db/menu_widget/language", "--tv", "show"});
    for (Words line : {Words{"--tv", "show"}, Words{"--tv=show"}, Words{"-q", "--tv", "show"},
                       Words{"--color", "never", "--quiet", "--tv", "show"},
                       Words{"--tv", "show", "--color=never"}}) {
        line.insert(line.end(), get.begin(), get.end());
        EXPECT_EQ(Ok(line), value) << testing::PrintToString(line);
    }
    const Output unknown = Vtv({"--tv", "get", "shwo"});
    EXPECT_EQ(unknown.code, 2);
    EXPECT_THAT(unknown.err, HasSubstr("Did you mean show?"));
}

TEST_F(LookTest, TheHelpOfTheProgramFitsAScreenAndAHalf) {
    const std::vector<std::string> lines = LinesOf(Ok({"--help"}));
    EXPECT_LE(lines.size(), 70U);
    for (const std::string& line : lines) {
        EXPECT_LE(program::Width(line), 80U) << line;
    }
}

TEST_F(LookTest, EachManPageTellsOfTheEnvironmentAndOfFiles) {
    Ok({"__man", folder_});
    for (const char* page : {"vtv.1", "vtv-show.1", "vtv-app-finish.1"}) {
        EXPECT_THAT(Read(page), AllOf(HasSubstr(".SH ENVIRONMENT\n.TP\n.B VTV_TV\n"),
                                      HasSubstr(".SH FILES\n"), HasSubstr("NO_COLOR")));
    }
}

#ifdef WITH_EXPLORER

TEST_F(LookTest, ExplorationsHaveTheHelpOfVerbs) {
    for (const std::string& exploration : LinesOf(Ok({"__complete", "explore", ""}))) {
        const std::string help = Ok({"help", "explore", exploration});
        EXPECT_THAT(help, AllOf(HasSubstr("\n\nUsage: vtv explore " + exploration + " [OPTIONS]"),
                                HasSubstr("\nCommon options:\n  -h, --help"),
                                HasSubstr("\nExamples:\n  vtv "), Not(HasSubstr("TEXT ..."))));
        for (const std::string& line : LinesOf(help)) {
            EXPECT_LE(program::Width(line), 80U) << line;
        }
    }
}

#endif

TEST_F(LookTest, OneOfSomethingIsNotSeveral) {
    Write("one.toml", "[[step]]\npress = \"voice-wake-up\"\n");
    const std::regex wrong("(^|[^0-9.,:/-])1 (other )?[a-z]+s\\b(?! (of|no|is|to))");
    const auto plurals = [&](const Words& words) {
        std::smatch match;
        const std::string out = Vtv(words).out;
        return std::regex_search(out, match, wrong) ? match.str() : "";
    };
    EXPECT_EQ(plurals({"validate", "--filter", "list-slots-return"}), "");
    EXPECT_EQ(plurals({"run", Path("one.toml")}), "");
    EXPECT_THAT(Vtv({"validate", "--filter", "list-slots-return"}).out,
                HasSubstr("1 check, 0 failed"));
    EXPECT_THAT(Vtv({"validate", "--filter", "slot"}).out, HasSubstr(" checks, 0 failed"));
    for (const char* model : {"farfield-eu", "no-voice", "single-assistant-gb"}) {
        Ok({"new", model, "--model", model});
        for (const char* item : {"voice", "voice-assistant", "voice-wake-up", "onboarding"}) {
            EXPECT_EQ(plurals({"explain", item, "--tv", model}), "") << model << item;
            EXPECT_THAT(Ok({"explain", item, "--tv", model}), Not(HasSubstr("not not")));
        }
    }
}

TEST_F(LookTest, NoTitleIsOnlyWhatAPlaceholderLeaves) {
    for (const char* language : {"en_GB", "de_DE", "fr_FR", "pt_BR", "ko_KR", "zh_CN", "ru_RU"}) {
        Ok({"new", language, "--model", "single-assistant-gb"});
        Ok({"language", language, "--tv", language});
        EXPECT_THAT(Ok({"show", "--all", "--tv", language}),
                    HasSubstr("│ voice-settings-google (hidden)"));
        EXPECT_THAT(Ok({"show", "voice-settings-google", "--tv", language}),
                    StartsWith("voice-settings-google  ("));
    }
}

TEST_F(LookTest, AValueThatIsNeitherOnNorOffIsSaidToBeSo) {
    Ok({"new", "tv", "--model", "farfield-eu"});
    Ok({"set", "db/multi-assistant/situational_hint_supported", "string",
        R"({"com.vantelo.tv.voice-instant-app":"null"})", "--force", "--tv", "tv"});
    const Json::Value hint = Item("situational-hint", {"--tv", "tv"});
    ASSERT_EQ(hint["value"], -1);
    EXPECT_EQ(hint["value_text"], "neither on nor off (-1)");
}

TEST_F(LookTest, VtvTvNamesATvByNameOrFolderForEveryProgram) {
    Ok({"new", "kitchen"});
    for (const std::string& named : {std::string("kitchen"), Path("tvs/kitchen")}) {
        environment["VTV_TV"] = named;
        Ok({"account", "signed-out"});
        EXPECT_EQ(RunInto("/dev/null", "vtv-app", {"--auto", "com.vantelo.tv.account"}).code, 0);
        EXPECT_THAT(Ok({"log", "--tv", "kitchen"}), HasSubstr("com.vantelo.tv.account finished"));
        Ok({"remove", "kitchen"});
        Ok({"new", "kitchen"});
    }
    environment["VTV_TV"] = "";
    Ok({"show"});
    EXPECT_EQ(RunInto("/dev/null", "vtv-app", {"--auto", "com.vantelo.tv.account"}).code, 0);
    EXPECT_THAT(Ok({"log", "--tv", "default"}), HasSubstr("com.vantelo.tv.account finished"));
    environment["VTV_TV"] = "none";
    EXPECT_EQ(RunInto("/dev/null", "vtv-app", {"--auto", "com.vantelo.tv.account"}).code, 3);
}

namespace {

// A terminal with a program on it, as far as vtv steers one: what stands on its lines.
class WatchedTerminal {
  public:
    WatchedTerminal(const std::map<std::string, std::string>& environment, Words words,
                    unsigned short rows, unsigned short columns) {
        winsize size = {rows, columns, 0, 0};
        pid_ = forkpty(&master_, nullptr, nullptr, &size);
        if (pid_ == 0) {
            for (const auto& [name, value] : environment) {
                setenv(name.c_str(), value.c_str(), 1);
            }
            alarm(60);
            std::string program = VTV;
            std::vector<char*> argv = {program.data()};
            for (std::string& word : words) {
                argv.push_back(word.data());
            }
            argv.push_back(nullptr);
            execv(VTV, argv.data());
            _exit(127);
        }
    }
    ~WatchedTerminal() {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
        close(master_);
    }
    WatchedTerminal(const WatchedTerminal&) = delete;
    WatchedTerminal& operator=(const WatchedTerminal&) = delete;

    bool WaitFor(const std::string& text) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
        while (Shown().find(text) == std::string::npos) {
            pollfd source = {master_, POLLIN, 0};
            char buffer[4096];
            if (std::chrono::steady_clock::now() > end || poll(&source, 1, 1000) < 0) {
                return false;
            }
            const ssize_t got = source.revents != 0 ? read(master_, buffer, sizeof buffer) : 0;
            if (got < 0) {
                return false;
            }
            text_.append(buffer, static_cast<size_t>(got));
        }
        return true;
    }

    pid_t Pid() const { return pid_; }

    void Resize(unsigned short rows, unsigned short columns) const {
        const winsize size = {rows, columns, 0, 0};
        EXPECT_EQ(ioctl(master_, TIOCSWINSZ, &size), 0);
    }

    // The lines as they would stand there, were the terminal as high as needed.
    std::string Shown() const {
        std::vector<std::string> lines = {""};
        size_t at = 0;
        static const std::regex control("^\x1b\\[([0-9;]*)([A-Za-z])");
        for (size_t i = 0; i < text_.size(); ++i) {
            std::smatch match;
            const std::string rest = text_.substr(i, 12);
            if (std::regex_search(rest, match, control)) {
                i += match.length() - 1;
                if (match[2] == "A") {
                    at -= std::min(at, static_cast<size_t>(std::stoi(match[1])));
                } else if (match[2] == "H") {
                    at = 0;
                } else if (match[2] == "J") {
                    lines.resize(at + 1);
                    lines[at].clear();
                }
            } else if (text_[i] == '\n') {
                lines.resize(std::max(lines.size(), ++at + 1));
                lines[at].clear();
            } else if (text_[i] != '\r') {
                lines[at] += text_[i];
            }
        }
        std::string shown;
        for (const std::string& line : lines) {
            shown += line + "\n";
        }
        return shown;
    }

  private:
    int master_ = -1;
    pid_t pid_ = -1;
    std::string text_;
};

size_t Count(const std::string& text, const std::string& part) {
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

}  // namespace

TEST_F(LookTest, AWatchedPageIsDrawnInItsOwnPlaceOnATerminal) {
    Ok({"show"});
    for (const unsigned short rows : {60, 12}) {  // where it fits, and where it does not
        Ok({"choose", "voice-wake-up", "on"});
        WatchedTerminal terminal(environment, {"show", "--watch"}, rows, 80);
        ASSERT_TRUE(terminal.WaitFor("╯")) << terminal.Shown();
        Ok({"choose", "voice-wake-up", "off"});
        ASSERT_TRUE(terminal.WaitFor("on -> off")) << terminal.Shown();
        Ok({"choose", "voice-wake-up", "on"});
        ASSERT_TRUE(terminal.WaitFor("off -> on")) << terminal.Shown();
        EXPECT_EQ(Count(terminal.Shown(), "╭"), 1U) << terminal.Shown();
        EXPECT_EQ(Count(terminal.Shown(), "on -> off"), 0U) << terminal.Shown();
    }
}

TEST_F(LookTest, AWatchedPageFollowsTheSizeOfItsTerminal) {
    Ok({"show"});
    WatchedTerminal terminal(environment, {"show", "--watch"}, 60, 80);
    ASSERT_TRUE(terminal.WaitFor("╯")) << terminal.Shown();
    ASSERT_TRUE(WaitUntilCaught(terminal.Pid(), SIGWINCH));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));  // until it waits
    terminal.Resize(60, 40);
    std::string edge = "╭";
    for (int i = 0; i < 38; ++i) {
        edge += "─";
    }
    EXPECT_TRUE(terminal.WaitFor(edge + "╮")) << terminal.Shown();
}
