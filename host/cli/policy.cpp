// vtv policy: the list of assistants that the TV is told to offer.
#include <iostream>
#include <memory>

#include "host/core/known_settings.h"
#include "host/core/policy_fault.h"
#include "verbs.h"

namespace cli {

namespace {

// As a TV reads it, which takes more than JSON.
Json::Value Parse(const std::string& text) {
    Json::Value policy;
    return Json::Reader().parse(text, policy) ? policy : Json::Value();
}

void Show(const Common& common) {
    const vtv::Tv tv(TvDir(common));
    const std::optional<vtv::Value> value = tv.Get(host::kPolicyKey);
    if (!value) {
        throw vtv::Error(
            vtv::ErrorKind::kNoSuch,
            "The TV has no assistant policy: " + std::string(host::kPolicyKey) + " is not set.");
    }
    const Json::Value policy = Parse(vtv::ToText(*value));
    if (common.json) {
        PrintJson(policy);
        return;
    }
    const std::string problem =
        host::FaultOf(host::JsonText(host::kPolicyKey, vtv::ToText(*value)));
    if (!policy.isArray()) {
        std::cout << vtv::ToText(*value) << '\n';
    } else if (policy.empty()) {
        std::cout << "The policy offers no assistant.\n";
    } else {
        const std::string current = vtv::ToText(
            tv.Get("db/multi-assistant/default_assistant_appid").value_or(std::string()));
        for (const Json::Value& assistant : policy) {
            const auto text = [&](const char* name) {
                return assistant.isObject() && assistant[name].isConvertibleTo(Json::stringValue)
                           ? assistant[name].asString()
                           : "?";
            };
            std::cout << (text("VAAppId") == current ? "▸ " : "  ") << text("VAOrder") << "  "
                      << Paint(Look::kBold, text("VAName")) << "  " << text("VAId") << "  "
                      << text("VAAppId") << (text("VAFFSupport") == "true" ? "  far-field" : "")
                      << '\n';
        }
    }
    if (!problem.empty()) {
        std::cerr << "vtv: warning: " << problem << '\n';
    }
}

struct PublishOptions {
    std::string file;
    bool force = false;
};

void Publish(const Common& common, const PublishOptions& options) {
    std::string text = ReadFile(options.file);
    while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) {
        text.pop_back();
    }
    if (!options.force) {
        const std::string problem = host::FaultOf(host::JsonText(options.file, text));
        if (!problem.empty()) {
            throw vtv::Error(vtv::ErrorKind::kUsage,
                             problem + ". To see what the TV makes of it, add --force.");
        }
    }
    vtv::Tv tv(TvDir(common));
    Recorder recorder(common, tv, {{"policy", text}});
    tv.Set(host::kPolicyKey, text);
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
