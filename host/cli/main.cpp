// vtv: a virtual TV's Voice page on the command line.
#include <csignal>
#include <iostream>

#include "verbs.h"

namespace cli {
namespace {

constexpr char kFooter[] =
    "First steps:\n"
    "  vtv show                         the Voice page of the default TV\n"
    "  vtv press voice-assistant        what a viewer sees who presses an item\n"
    "  vtv explain voice-wake-up        why an item is hidden, dimmed or on\n"
    "  vtv new kitchen --model ptt-passthrough-us && vtv show --tv kitchen\n"
    "\n"
    "Exit codes: 0 done, 1 the answer is no, 2 wrong usage, 3 no such key, item or TV,\n"
    "4 the platform failed. Each verb has a help of its own: vtv VERB --help";

int Report(const std::string& text, int code) {
    std::cout.flush();
    std::cerr << "vtv: " << text << '\n';
    return code;
}

bool HasVerb(const CLI::App& app, const std::string& name) {
    return !app.get_subcommands([&](const CLI::App* verb) { return verb->get_name() == name; })
                .empty();
}

int ReportUsage(const CLI::App& app, const CLI::ParseError& error, int argc, char** argv) {
    const std::string first = argc > 1 ? argv[1] : "";
    if (!first.empty() && first[0] != '-' && !HasVerb(app, first)) {
        return Report("There is no verb \"" + first + "\". vtv --help lists the verbs.", kUsage);
    }
    const bool verb = !first.empty() && HasVerb(app, first);
    return Report(std::string(error.what()) + "\nSee: vtv " + (verb ? first + " " : "") + "--help",
                  kUsage);
}

int Run(int argc, char** argv) {
    CLI::App app{"A virtual TV: open the Voice page of any TV, press its items, see what happens.",
                 "vtv"};
    Common common;
    app.require_subcommand(1);
    app.set_version_flag("--version", "vtv " VTV_VERSION);
    app.footer(kFooter);
    // Before the verb they hold for any verb, so that a shell alias can carry them.
    app.add_option("--tv", common.tv, "The TV, for every verb");
    AddProviderOption(app, common, "The provider library, for every verb");
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
    AddLog(app, common);
    AddTraceVerbs(app, common);

    if (argc == 1) {
        std::cout << app.help();
        return kUsage;
    }
    try {
        if (std::string(argv[1]) == "__complete") {
            Complete(app, {argv + 2, argv + argc});
            return kOk;
        }
        app.parse(argc, argv);
        std::cout.flush();
        return common.exitCode;
    } catch (const CLI::Success& done) {
        return app.exit(done);
    } catch (const CLI::ParseError& error) {
        return ReportUsage(app, error, argc, argv);
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
    std::signal(SIGPIPE, SIG_DFL);
    return cli::Run(argc, argv);
}
