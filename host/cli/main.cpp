// vtv: a virtual TV's Voice page on the command line.
#include <iostream>

#include "help.h"
#include "program/options.h"
#include "program/standard_output.h"
#include "verbs.h"

namespace cli {
namespace {

constexpr char kExamples[] =
    "Examples:\n"
    "  vtv show                         the Voice page of the default TV\n"
    "  vtv press voice-assistant        what a viewer sees who presses an item\n"
    "  vtv explain voice-wake-up        why an item is hidden, dimmed or on\n"
    "  vtv new kitchen --model ptt-passthrough-us && vtv show --tv kitchen\n"
    "\n"
    "Each verb has a help of its own: vtv VERB --help. Exit codes: ";

// The help lists the verbs in these groups.
const std::pair<const char*, std::vector<std::string>> kGroups[] = {
    {"The page", {"show", "press", "choose", "explain", "search"}},
    {"TVs", {"new", "list", "import", "dump", "load", "snapshot", "restore", "diff"}},
    {"What the page is made of", {"get", "set", "unset", "watch", "feature", "policy", "app"}},
    {"The TV around it",
     {"language", "voice-guide", "account", "consent", "network", "file", "power-cycle"}},
    {"Proving", {"run", "validate", "explore", "impact", "log", "trace", "fault"}},
};

int Report(const std::string& text, int code) {
    std::cout.flush();
    std::cerr << (text.rfind("vtv ", 0) == 0 ? "" : "vtv: ") << text << '\n';
    return code;
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
    const std::string name = FullName(verb);
    const std::vector<std::string> verbs = VerbNames(verb);
    const std::vector<std::string> unknown = verb.remaining();
    if (!unknown.empty() && unknown.front()[0] == '-') {
        const std::string option = unknown.front().substr(0, unknown.front().find('='));
        return name + ": there is no option " + option + "." +
               DidYouMean("", option, OptionNames(verb));
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
    return Report(WhatIsWrong(verb, error) + "\nSee: " + FullName(verb) + " --help", kUsage);
}

int Run(int argc, char** argv) {
    CLI::App app{"A virtual TV: open the Voice page of any TV, press its items, see what happens",
                 "vtv"};
    Common common;
    app.require_subcommand(1);
    app.set_version_flag("--version", "vtv " VTV_VERSION);
    app.footer(kExamples + ExitCodes());
    app.formatter(std::make_shared<HelpFormatter>());
    // Before the verb they hold for any verb, so that a shell alias can carry them.
    app.add_option("--tv", common.tv, "The TV, for every verb that is about one")->type_name("TV");
    AddProviderOption(app, common, "The provider library, for every verb")->group("Options");
    AddShow(app, common);
    AddPressVerbs(app, common);
    AddExplain(app, common);
    AddTvVerbs(app, common);
    AddSettingVerbs(app, common);
    AddPolicy(app, common);
    AddApp(app, common);
    AddStateVerbs(app, common);
    AddTransferVerbs(app, common);
    AddRun(app, common);
    AddValidate(app, common);
    AddExplore(app, common);
    AddLog(app, common);
    AddTraceVerbs(app, common);

    for (const auto& [group, verbs] : kGroups) {
        for (const std::string& verb : verbs) {
            app.get_subcommand(verb)->group(group);
        }
    }

    program::RefuseEmptyWords(app);

    if (argc == 1) {
        std::cout << app.help();
        return kUsage;
    }
    try {
        if (std::string(argv[1]) == "__complete") {
            Complete(app, {argv + 2, argv + argc});
            return kOk;
        }
        if (std::string(argv[1]) == "__man" && argc == 3) {
            WriteManPages(app, argv[2]);
            return kOk;
        }
        app.parse(argc, argv);
        return common.exitCode;
    } catch (const CLI::Success& done) {
        return app.exit(done);
    } catch (const CLI::ParseError& error) {
        return ReportUsage(app, error);
    } catch (const OutputLost&) {
        return kPlatform;
    } catch (const Refusal& refusal) {
        return Report(refusal.what(), kNo);
    } catch (const vtv::Error& error) {
        return Report(error.what(), static_cast<int>(error.kind()));
    } catch (const host::ProviderError& error) {
        return Report(error.what(),
                      error.kind() == host::ProviderError::Kind::kNoSuchFile ? kNoSuch : kPlatform);
    } catch (const std::exception& error) {
        return Report(std::string("unexpected failure: ") + error.what(), kPlatform);
    }
}

}  // namespace
}  // namespace cli

int main(int argc, char** argv) {
    program::Begin();
    return program::End("vtv", cli::Run(argc, argv));
}
