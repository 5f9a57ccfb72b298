// vtv policy: the list of assistants that the TV is told to offer.
#include <iostream>
#include <memory>

#include "program/visible_text.h"
#include "verbs.h"
#include "virtual-tv/model/known_settings.h"
#include "virtual-tv/model/policy.h"
#include "virtual-tv/model/policy_fault.h"
#include "virtual-tv/model/text_file.h"

namespace cli {

namespace {

void Show(const Common& common) {
    const vtv::Tv tv(TvDir(common));
    const std::optional<vtv::Value> value = tv.Get(vtv::kPolicyKey);
    if (!value) {
        throw vtv::Error(
            vtv::ErrorKind::kNoSuch,
            "The TV has no assistant policy: " + std::string(vtv::kPolicyKey) + " is not set.");
    }
    Json::Value policy;
    vtv::ParseJson(vtv::ToText(*value), &policy);
    if (common.json) {
        PrintJson(policy);
        return;
    }
    const auto fault = vtv::FindFault(vtv::JsonText(vtv::kPolicyKey, vtv::ToText(*value)));
    if (!policy.isArray()) {
        std::cout << program::OneLine(vtv::ToText(*value)) << '\n';
    } else if (policy.empty()) {
        std::cout << "The policy offers no assistant.\n";
    } else {
        const std::string current =
            vtv::ToText(tv.Get(vtv::kCurrentAssistantKey).value_or(std::string()));
        for (const vtv::PolicyEntry& entry : vtv::PolicyEntries(vtv::ToText(*value))) {
            std::cout << (entry.appId == current ? "▸ " : "  ") << program::OneLine(entry.order)
                      << "  " << Paint(Look::kBold, entry.name) << "  "
                      << program::OneLine(entry.id + "  " + entry.appId)
                      << (entry.farField ? "  far-field" : "") << '\n';
        }
    }
    if (fault) {
        Warn(fault->text);
    }
}

struct PublishOptions {
    std::string file;
    bool force = false;
};

void Publish(const Common& common, const PublishOptions& options) {
    std::string text = vtv::ReadTextFile(options.file);
    while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) {
        text.pop_back();
    }
    if (!options.force) {
        if (const auto fault = vtv::FindFault(vtv::JsonText(options.file, text))) {
            throw vtv::Error(vtv::ErrorKind::kUsage,
                             fault->text + ". To see what the TV makes of it, add --force.");
        }
    }
    vtv::Tv tv(TvDir(common));
    Recorder recorder(common, tv, {{"policy", text}});
    tv.Set(vtv::kPolicyKey, text);
    recorder.Done();
}

}  // namespace

void AddPolicy(CLI::App& app, Common& common) {
    CLI::App* verb =
        AddVerb(app, common, "policy", "Look at the assistant policy, or publish another",
                "  vtv policy show\n  vtv policy publish europe.json", kTv);
    verb->require_subcommand(1);
    CLI::App* show =
        AddVerb(*verb, common, "show", "Print the assistants that the TV is told to offer",
                "  vtv policy show\n  vtv policy show --json > policy.json", kTv | kJson);
    show->callback([&common] { Show(common); });

    const auto options = std::make_shared<PublishOptions>();
    CLI::App* publish =
        AddVerb(*verb, common, "publish", "Give the TV another policy, as its owner would",
                "  vtv policy publish europe.json\n"
                "  echo '[]' | vtv policy publish -",
                kTv | kRecord);
    publish->add_option("FILE", options->file, "A JSON file; - is the standard input")->required();
    publish->add_flag("--force", options->force, "Publish also what is no sound policy");
    publish->callback([&common, options] { Publish(common, *options); });
}

}  // namespace cli
