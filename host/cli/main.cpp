// vtv: a virtual TV's Voice page on the command line.
#include <algorithm>
#include <iostream>
#include <new>

#include "program/help.h"
#include "program/options.h"
#include "program/standard_output.h"
#include "program/terminal.h"
#include "verbs.h"
#include "virtual-tv/model/spelling.h"

namespace cli {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  vtv show          the Voice page of the default TV\n"
    "  vtv help press    all of a verb, with its options and examples\n"
    "\n"
    "Exit codes: ";

// The help lists the verbs in these groups.
const std::pair<const char*, std::vector<std::string>> kGroups[] = {
    {"The page",
     {"show", "window", "picture", "gallery", "press", "choose", "explain", "search", "texts"}},
    {"TVs",
     {"new", "list", "copy", "rename", "remove", "import", "dump", "load", "snapshot", "restore",
      "diff"}},
    {"What the page is made of",
     {"keys", "describe", "get", "set", "unset", "reset", "watch", "wait", "feature", "policy",
      "app"}},
    {"The TV around it",
     {"language", "voice-guide", "account", "consent", "network", "file", "power-cycle"}},
    {"Proving", {"record", "run", "validate", "explore", "impact", "log", "trace", "fault"}},
};

int Report(const std::string& text, int code) {
    std::cout.flush();
    std::cerr << (text.rfind("vtv ", 0) == 0 ? "" : "vtv: ") << program::OneLine(text) << '\n';
    return code;
}

// What was found with a TV whose machine failed is neither a yes nor a no.
int Verdict(int code) {
    const std::string& failure = vtv::Tv::MachineFailure();
    return failure.empty() || code == kPlatform ? code : Report(failure, kPlatform);
}

// The verb that the arguments name, as far as they were understood: the last one, or the first that
// was left with something that it does not know.
const CLI::App& LastVerb(const CLI::App& app) {
    const std::vector<CLI::App*> verbs = app.get_subcommands();
    return verbs.empty() || !app.remaining().empty() ? app : LastVerb(*verbs.front());
}

std::string DidYouMean(const std::string& prefix, const std::string& word,
                       const std::vector<std::string>& candidates) {
    const std::vector<std::string> similar = vtv::Similar(word, candidates);
    return similar.empty() ? "" : " Did you mean " + prefix + similar.front() + "?";
}

std::string WhatIsWrong(const CLI::App& verb, const CLI::ParseError& error) {
    const std::string name = program::FullName(verb);
    const std::vector<std::string> verbs = program::VerbNames(verb);
    const std::vector<std::string> unknown = verb.remaining();
    if (!unknown.empty() && unknown.front()[0] == '-') {
        const std::string option = unknown.front().substr(0, unknown.front().find('='));
        return name + ": there is no option " + option + "." +
               DidYouMean("", option, program::OptionNames(verb));
    }
    if (!unknown.empty() && !verbs.empty()) {
        const std::string group = verb.get_parent() != nullptr ? verb.get_name() + " " : "";
        return "There is no verb \"" + group + unknown.front() + "\"." +
               DidYouMean(group, unknown.front(), verbs);
    }
    if (!unknown.empty()) {
        return name + ": \"" + unknown.front() + "\" is one argument too many.";
    }
    if (!verbs.empty() && verb.get_subcommands().empty() && verb.get_parent() != nullptr) {
        std::string list;
        for (const std::string& one : verbs) {
            list += (list.empty() ? "" : ", ") + one;
        }
        return name + ": say which: " + list + ".";
    }
    return verbs.empty() ? name + ": " + error.what() : "Say what to do: a verb is missing.";
}

int ReportUsage(const CLI::App& app, const CLI::ParseError& error) {
    const CLI::App& verb = LastVerb(app);
    Report(WhatIsWrong(verb, error), kUsage);
    std::cerr << "See: " << program::FullName(verb) << " --help\n";
    return kUsage;
}

// What describes which verbs.
const struct {
    void (*describe)(CLI::App&, Common&);
    std::vector<std::string> verbs;
} kFamilies[] = {
    {AddShow, {"show"}},
    {AddWindowVerbs, {"window", "picture", "gallery"}},
    {AddPressVerbs, {"press", "choose"}},
    {AddExplain, {"explain"}},
    {AddTvVerbs, {"new", "list", "copy", "rename", "remove"}},
    {AddSettingVerbs, {"get", "set", "unset", "reset"}},
    {AddKeyVerbs, {"keys", "describe", "search"}},
    {AddWatch, {"watch"}},
    {AddWait, {"wait"}},
    {AddPolicy, {"policy"}},
    {AddApp, {"app"}},
    {AddStateVerbs,
     {"feature", "language", "voice-guide", "account", "network", "consent", "file",
      "power-cycle"}},
    {AddTexts, {"texts"}},
    {AddTransferVerbs, {"dump", "load", "import", "snapshot", "restore", "diff"}},
    {AddRecord, {"record"}},
    {AddRun, {"run"}},
    {AddValidate, {"validate"}},
    {AddExplore, {"explore", "impact"}},
    {AddLog, {"log"}},
    {AddTraceVerbs, {"trace", "fault"}},
};

bool Has(const std::vector<std::string>& words, const std::string& word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

// The verb that a line begins with; empty where an option before it leaves a doubt.
std::string VerbOf(const std::vector<std::string>& line) {
    for (size_t i = 0; i < line.size(); ++i) {
        if (line[i].rfind('-', 0) != 0) {
            return line[i];
        }
        if (Has({"--tv", "--provider", "--color"}, line[i])) {
            ++i;
        } else if (!Has({"-q", "--quiet"}, line[i])) {
            break;
        }
    }
    return "";
}

// The verb that the line begins with and its family; all of them where it begins with none. All of
// them would take more than half of what get and set take.
void DescribeVerbs(CLI::App& app, Common& common, const std::string& verb) {
    const auto* const family =
        std::find_if(std::begin(kFamilies), std::end(kFamilies),
                     [&verb](const auto& one) { return Has(one.verbs, verb); });
    for (const auto& one : kFamilies) {
        if (family == std::end(kFamilies) || &one == family) {
            one.describe(app, common);
        }
    }
    for (const auto& [group, verbs] : kGroups) {
        for (CLI::App* const described : app.get_subcommands({})) {
            if (Has(verbs, described->get_name())) {
                described->group(group);
            }
        }
    }
}

// The options, and the verbs that the line is about.
void Describe(CLI::App& app, Common& common, const std::vector<std::string>& line) {
    app.require_subcommand(1);
    program::AddVersion(app, "vtv");
    app.footer(kExamples + program::ExitCodes());
    app.formatter(std::make_shared<program::HelpFormatter>());
    // Before the verb they hold for any verb, so that a shell alias can carry them.
    app.add_option("--tv", common.tv, "The TV, for every verb that is about one")->type_name("TV");
    AddProviderOption(app, common, "The provider library, for every verb")->group("Options");
    AddLookOptions(app, "Options");
    DescribeVerbs(app, common, VerbOf(line));
    program::RefuseEmptyWords(app);
}

// "help app list" is "app list --help".
std::vector<std::string> AsOption(const CLI::App& app, std::vector<std::string> words) {
    words.erase(words.begin());
    const CLI::App* verb = &app;
    for (const std::string& word : words) {
        if (verb->get_prefix_command()) {
            break;  // the rest belongs to another program
        }
        const auto found = verb->get_subcommands(
            [&](const CLI::App* candidate) { return candidate->get_name() == word; });
        if (found.empty()) {
            throw vtv::Error(vtv::ErrorKind::kUsage,
                             "There is no verb \"" + word +
                                 "\" to help with. See: " + program::FullName(*verb) + " --help" +
                                 DidYouMean("", word, program::VerbNames(*verb)));
        }
        verb = found.front();
    }
    words.emplace_back("--help");
    return words;
}

void Parse(CLI::App& app, std::vector<std::string> words) {
    if (!words.empty() && words.front() == "help") {
        words = AsOption(app, std::move(words));
    }
    std::reverse(words.begin(), words.end());  // as CLI11 takes them
    app.parse(std::move(words));
}

int Run(int argc, char** argv) {
    CLI::App app{"A virtual TV: open the Voice page of any TV, press its items, see what happens",
                 "vtv"};
    Common common;
    try {
        Describe(app, common, {argv + 1, argv + argc});
        if (argc == 1) {
            std::cout << app.help();
            return kUsage;
        }
        if (std::string(argv[1]) == "__complete") {
            Complete(app, {argv + 2, argv + argc});
            return kOk;
        }
        if (std::string(argv[1]) == "__man" && argc == 3) {
            const std::string problem = program::WriteManPages(app, argv[2]);
            return problem.empty() ? kOk : Report(problem, kPlatform);
        }
        Parse(app, {argv + 1, argv + argc});
        return Verdict(common.exitCode);
    } catch (const CLI::Success& done) {
        return app.exit(done);
    } catch (const CLI::ParseError& error) {
        return ReportUsage(app, error);
    } catch (const OutputLost&) {
        return kPlatform;
    } catch (const Refusal& refusal) {
        return Verdict(Report(refusal.what(), kNo));
    } catch (const vtv::Error& error) {
        return Report(error.what(), static_cast<int>(error.kind()));
    } catch (const host::MeaninglessPress& error) {
        return Verdict(Report(error.what(), kUsage));
    } catch (const host::ProviderError& error) {
        return Report(error.what(),
                      error.kind() == host::ProviderError::Kind::kNoSuchFile ? kNoSuch : kPlatform);
    } catch (const std::bad_alloc&) {
        return Report("out of memory", kPlatform);
    } catch (const std::exception& error) {
        return Report(std::string("unexpected failure: ") + error.what(), kPlatform);
    }
}

// Once all is printed.
int TellOfLostLetters(int code) {
    try {
        std::cout.flush();
        if (const std::string lost = program::LettersLost(); !lost.empty()) {
            Warn(lost);
        }
        return code;
    } catch (const std::exception& error) {
        return Report(std::string("unexpected failure: ") + error.what(), kPlatform);
    }
}

}  // namespace
}  // namespace cli

int main(int argc, char** argv) {
    program::Begin();
    return program::End("vtv", cli::TellOfLostLetters(cli::Run(argc, argv)));
}
