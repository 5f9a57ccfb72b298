// vtv feature, language, voice-guide, account, consent, network, file, power-cycle: the TV around
// the page.
#include <iostream>
#include <memory>

#include "host/core/tv_names.h"
#include "host/core/voice_guide.h"
#include "program/visible_text.h"
#include "verbs.h"
#include "virtual-tv/model/known_settings.h"

namespace cli {

namespace {

using Features = std::map<std::string, vtv::Value>;

std::string TextOr(const Features& features, Features::const_iterator found) {
    return found != features.end() ? vtv::ToText(found->second) : "(missing)";
}

void ListFeatures(const Common& common) {
    const vtv::Tv tv(TvDir(common));
    const std::map<std::string, vtv::Value> features = tv.Features();
    const std::map<std::string, vtv::Value>& model = tv.GetModel().features;
    Json::Value json(Json::arrayValue);
    const auto add = [&](const std::string& key, const std::string& type,
                         const std::string& meaning) {
        const auto found = features.find(key);
        const auto models = model.find(key);
        const std::string now = TextOr(features, found);
        const std::string tried =
            now == TextOr(model, models) ? "" : "   tried; the model: " + TextOr(model, models);
        Json::Value entry;
        entry["key"] = key;
        entry["type"] = type;
        entry["value"] = found != features.end() ? ToJson(found->second) : Json::Value();
        entry["model"] = models != model.end() ? ToJson(models->second) : Json::Value();
        entry["meaning"] = meaning;
        json.append(entry);
        if (!common.json) {
            std::cout << program::OneLine(vtv::ShortFeatureName(key)) << " = "
                      << program::OneLine(now) << Paint(Look::kNote, tried)
                      << Paint(Look::kDim, meaning.empty() ? "" : "   " + meaning) << '\n';
        }
    };
    for (const vtv::KnownFeature& known : vtv::KnownFeatures()) {
        add(known.key, known.type, known.meaning);
    }
    std::map<std::string, vtv::Value> others = features;
    others.insert(model.begin(), model.end());
    for (const auto& [key, value] : others) {
        if (vtv::FindKnownFeature(key) == nullptr) {
            add(key, vtv::TypeName(value), "");
        }
    }
    if (common.json) {
        PrintJson(json);
    }
}

struct FeatureOptions {
    std::string name;
    std::string value;
    bool hasValue = false;
    bool missing = false;
    bool reset = false;
};

vtv::Value ParseFeature(const vtv::Tv& tv, const std::string& key, const std::string& text) {
    if (const vtv::KnownFeature* known = vtv::FindKnownFeature(key)) {
        return vtv::ParseValue(known->type, text);
    }
    if (const std::optional<vtv::Value> value = tv.Feature(key)) {
        return vtv::ParseValue(vtv::TypeName(*value), text);
    }
    throw vtv::Error(vtv::ErrorKind::kNoSuch,
                     key + ": the TV has no such feature. vtv feature lists them.");
}

void Feature(const Common& common, const FeatureOptions& options) {
    if (options.name.empty()) {
        ListFeatures(common);
        return;
    }
    vtv::Tv tv(TvDir(common));
    const std::string key = vtv::FullFeatureKey(options.name);
    if (options.reset) {
        if (vtv::FindKnownFeature(key) == nullptr && tv.GetModel().features.count(key) == 0 &&
            !tv.Feature(key)) {
            throw vtv::Error(vtv::ErrorKind::kNoSuch, key + ": the TV has no such feature.");
        }
        Recorder recorder(common, tv, {{"feature-reset", key}});
        tv.ResetFeature(key);
        recorder.Done();
    } else if (options.missing) {
        if (vtv::FindKnownFeature(key) == nullptr && !tv.Feature(key)) {
            throw vtv::Error(vtv::ErrorKind::kNoSuch, key + ": the TV has no such feature anyway.");
        }
        Recorder recorder(common, tv, {{"feature-missing", key}});
        tv.SetFeature(key, std::nullopt);
        recorder.Done();
    } else if (options.hasValue) {
        const vtv::Value value = ParseFeature(tv, key, options.value);
        Recorder recorder(common, tv,
                          {{"feature", std::map<std::string, vtv::Value>{{key, value}}}});
        tv.SetFeature(key, value);
        recorder.Done();
    } else {
        const std::optional<vtv::Value> value = tv.Feature(key);
        if (!value) {
            throw vtv::Error(vtv::ErrorKind::kNoSuch, key + ": the TV has no such feature.");
        }
        if (common.json) {
            Json::Value json;
            json["key"] = key;
            json["type"] = vtv::TypeName(*value);
            json["value"] = ToJson(*value);
            PrintJson(json);
        } else {
            std::cout << program::OneLine(vtv::ToText(*value)) << '\n';
        }
    }
}

void AddFeature(CLI::App& app, Common& common) {
    const auto options = std::make_shared<FeatureOptions>();
    CLI::App* verb =
        AddVerb(app, common, "feature", "Look at the TV's features, or try another one",
                "  vtv feature\n"
                "  vtv feature recorder.microphone_type 0\n"
                "  vtv feature voice.voice_recognition_orvik_support --missing\n"
                "  vtv feature recorder.microphone_type --reset",
                kTv | kJson | kRecord);
    CLI::Option* feature = verb->add_option(
        "FEATURE", options->name, "A feature key, with or without com.vantelo/featureconf/");
    CLI::Option* value = verb->add_option("VALUE", options->value, "The value to try");
    CLI::Option* missing =
        verb->add_flag("--missing", options->missing, "Let the TV lack the feature")
            ->needs(feature)
            ->excludes(value);
    CLI::Option* reset = verb->add_flag("--reset", options->reset, "Back to the model's value")
                             ->needs(feature)
                             ->excludes(value)
                             ->excludes(missing);
    PrintsWithout(*verb, {value, missing, reset});
    verb->callback([&common, options, value] {
        options->hasValue = value->count() > 0;
        Feature(common, *options);
    });
}

// A TV that is on for as long as this lives.
struct PowerSwitch {
    explicit PowerSwitch(vtv::Tv& tv) { vtv::PowerOn(tv); }
    ~PowerSwitch() { vtv::PowerOff(); }
    PowerSwitch(const PowerSwitch&) = delete;
    PowerSwitch& operator=(const PowerSwitch&) = delete;
};

// Through the provider, which also tells the toolkit and the sound.
void SwitchVoiceGuide(const Common& common, vtv::Tv& tv, bool on) {
    const PowerSwitch power(tv);
    const host::Provider provider(ProviderFile(common));
    if (const std::optional<std::string> why = host::WhyNoVoiceGuide(provider)) {
        throw Refusal(*why + " The setting by itself: vtv set " + vtv::kVoiceGuideKey + " bool " +
                      (on ? "true" : "false"));
    }
    host::SwitchVoiceGuide(provider, on);
    const std::vector<std::string> failures = tv.TakeFailures();
    if (!failures.empty()) {
        throw vtv::Error(vtv::ErrorKind::kPlatform, failures.front());
    }
}

void Put(const Common& common, const host::StateName& state, vtv::Tv& tv,
         const std::string& value) {
    if (state.name == std::string("voice-guide")) {
        SwitchVoiceGuide(common, tv, value == "on");
        return;
    }
    state.put(tv, value);
}

// A verb that prints what is without an argument and changes it with one.
void AddState(CLI::App& app, Common& common, const char* name, const char* does,
              const char* examples, const char* takes, unsigned alsoTakes = 0) {
    const auto value = std::make_shared<std::string>();
    CLI::App* verb = AddVerb(app, common, name, does, examples, kTv | kJson | kRecord | alsoTakes);
    CLI::Option* given = verb->add_option("VALUE", *value, takes);
    PrintsWithout(*verb, {given});
    verb->callback([&common, value, given, state = host::FindStateName(name)] {
        vtv::Tv tv(TvDir(common));
        if (given->count() > 0) {
            const std::string wanted = state->parse(*value);
            Recorder recorder(common, tv, {{state->name, wanted}});
            Put(common, *state, tv, wanted);
            recorder.Done();
        } else if (common.json) {
            Json::Value json;
            json[state->name] = state->get(tv);
            PrintJson(json);
        } else {
            std::cout << program::OneLine(state->get(tv)) << '\n';
        }
    });
}

struct ConsentOptions {
    std::string item;
    std::string value;
};

void AddConsent(CLI::App& app, Common& common) {
    const auto options = std::make_shared<ConsentOptions>();
    CLI::App* verb =
        AddVerb(app, common, "consent", "Look at what the viewer has agreed to, or change it",
                "  vtv consent\n"
                "  vtv consent tnc off",
                kTv | kJson | kRecord);
    verb->add_option("CONSENT", options->item, "tnc (terms and conditions) or pp (privacy policy)");
    CLI::Option* value = verb->add_option("VALUE", options->value, "on or off");
    PrintsWithout(*verb, {value});
    verb->callback([&common, options] {
        if (!options->item.empty() && options->value.empty()) {
            throw vtv::Error(vtv::ErrorKind::kUsage,
                             "vtv consent " + options->item + ": add on or off.");
        }
        vtv::Tv tv(TvDir(common));
        if (!options->item.empty()) {
            const bool isAgreed = host::ParseSwitch(options->value);
            Recorder recorder(
                common, tv,
                {{"consent", std::map<std::string, vtv::Value>{{options->item, isAgreed}}}});
            tv.SetConsent(options->item, isAgreed);
            recorder.Done();
            return;
        }
        Json::Value json;
        for (const char* item : vtv::kConsents) {
            json[item] = tv.Consent(item);
            if (!common.json) {
                std::cout << program::OneLine(item) << (tv.Consent(item) ? " on" : " off") << '\n';
            }
        }
        if (common.json) {
            PrintJson(json);
        }
    });
}

void AddPowerCycle(CLI::App& app, Common& common) {
    CLI::App* verb =
        AddVerb(app, common, "power-cycle", "Pull the plug and plug it in again",
                "  vtv power-cycle\n\n"
                "Settings under memory/ are lost, running applications end, faults are forgotten.",
                kTv | kRecord);
    verb->callback([&common] {
        vtv::Tv tv(TvDir(common));
        Recorder recorder(common, tv, {{"power-cycle", true}});
        tv.PowerCycle();
        recorder.Done();
    });
}

struct FileOptions {
    std::string path;
    bool add = false;
    bool remove = false;
};

void AddFile(CLI::App& app, Common& common) {
    const auto options = std::make_shared<FileOptions>();
    CLI::App* verb = AddVerb(app, common, "file",
                             "List, add or remove files that the TV knows below /home/owner",
                             "  vtv file\n"
                             "  vtv file --add share/.voice/ga_login_success",
                             kTv | kJson | kRecord);
    verb->add_option("PATH", options->path, "A path below /home/owner");
    CLI::Option* add = verb->add_flag("--add", options->add, "Make the file");
    CLI::Option* remove = verb->add_flag("--remove", options->remove, "Remove it")->excludes(add);
    PrintsWithout(*verb, {add, remove});
    verb->callback([&common, options] {
        if ((options->add || options->remove) == options->path.empty()) {
            throw vtv::Error(vtv::ErrorKind::kUsage,
                             "vtv file: write a path and --add or --remove, or neither.");
        }
        vtv::Tv tv(TvDir(common));
        if (options->add) {
            Recorder recorder(common, tv, {{"file-add", options->path}});
            tv.AddOwnerFile(options->path);
            recorder.Done();
        } else if (options->remove) {
            Recorder recorder(common, tv, {{"file-remove", options->path}});
            if (!tv.RemoveOwnerFile(options->path)) {
                throw vtv::Error(vtv::ErrorKind::kNoSuch,
                                 options->path + ": there is no such file.");
            }
            recorder.Done();
        } else {
            Json::Value json(Json::arrayValue);
            for (const std::string& file : tv.OwnerFiles()) {
                json.append(file);
                if (!common.json) {
                    std::cout << program::OneLine(file) << '\n';
                }
            }
            if (common.json) {
                PrintJson(json);
            }
        }
    });
}

}  // namespace

void AddStateVerbs(CLI::App& app, Common& common) {
    AddFeature(app, common);
    AddState(app, common, "language", "Look at the menu language, or change it",
             "  vtv language de_DE", "A locale, such as ko_KR");
    AddState(app, common, "voice-guide", "Look at the voice guide, or switch it as the TV does",
             "  vtv voice-guide on", "on or off", kProvider);
    AddState(app, common, "account", "Look at the maker's account, or sign in and out",
             "  vtv account signed-in", "signed-in or signed-out");
    AddState(app, common, "network", "Look at the network, or plug it in and out",
             "  vtv network disconnected\n  vtv network host               as this machine's own",
             "connected, disconnected or host");
    AddConsent(app, common);
    AddFile(app, common);
    AddPowerCycle(app, common);
}

}  // namespace cli
