// vtv feature, language, voice-guide, account, consent, network, file, power-cycle: the TV around
// the page.
#include <algorithm>
#include <iostream>
#include <memory>
#include <regex>

#include "verbs.h"

namespace cli {

namespace {

constexpr char kFeaturePrefix[] = "com.vantelo/featureconf/";

const vtv::FeatureKey* FindKnownFeature(const std::string& key) {
    for (const vtv::FeatureKey& feature : vtv::KnownFeatures()) {
        if (feature.key == key) {
            return &feature;
        }
    }
    return nullptr;
}

// A feature's full key, also from its short name.
std::string FeatureKeyOf(const std::string& name) {
    return FindKnownFeature(name) == nullptr && name.find('/') == std::string::npos
               ? kFeaturePrefix + name
               : name;
}

std::string ShortName(const std::string& key) {
    return key.rfind(kFeaturePrefix, 0) == 0 ? key.substr(sizeof kFeaturePrefix - 1) : key;
}

void ListFeatures(const Common& common) {
    const vtv::Tv tv(TvDir(common));
    const std::map<std::string, vtv::Value> features = tv.Features();
    Json::Value json(Json::arrayValue);
    const auto add = [&](const std::string& key, const std::string& type,
                         const std::string& meaning) {
        const auto found = features.find(key);
        Json::Value entry;
        entry["key"] = key;
        entry["type"] = type;
        entry["value"] = found != features.end() ? ToJson(found->second) : Json::Value();
        entry["meaning"] = meaning;
        json.append(entry);
        if (!common.json) {
            std::cout << ShortName(key) << " = "
                      << (found != features.end() ? vtv::ToText(found->second) : "(missing)")
                      << Paint(Look::kDim, meaning.empty() ? "" : "   " + meaning) << '\n';
        }
    };
    for (const vtv::FeatureKey& known : vtv::KnownFeatures()) {
        add(known.key, known.type, known.meaning);
    }
    for (const auto& [key, value] : features) {
        if (FindKnownFeature(key) == nullptr) {
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
    if (const vtv::FeatureKey* known = FindKnownFeature(key)) {
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
    const std::string key = FeatureKeyOf(options.name);
    if (options.reset) {
        if (FindKnownFeature(key) == nullptr && tv.GetModel().features.count(key) == 0 &&
            !tv.Feature(key)) {
            throw vtv::Error(vtv::ErrorKind::kNoSuch, key + ": the TV has no such feature.");
        }
        Recorder recorder(common, tv, {{"feature-reset", key}});
        tv.ResetFeature(key);
        recorder.Done();
    } else if (options.missing) {
        if (FindKnownFeature(key) == nullptr && !tv.Feature(key)) {
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
            std::cout << vtv::ToText(*value) << '\n';
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

// A verb that prints what is without an argument and changes it with one.
using StateVerb = std::function<void(vtv::Tv& tv, const std::string& value)>;
using StatePrint = std::function<std::string(vtv::Tv& tv)>;
// The value as a scenario has it; throws kUsage for what is none.
using StateParse = std::function<std::string(const std::string& value)>;

void AddState(CLI::App& app, Common& common, const char* name, const char* does,
              const char* examples, const char* takes, StatePrint print, StateParse parse,
              StateVerb change) {
    const auto value = std::make_shared<std::string>();
    CLI::App* verb = AddVerb(app, common, name, does, examples, kTv | kJson | kRecord);
    CLI::Option* given = verb->add_option("VALUE", *value, takes);
    PrintsWithout(*verb, {given});
    verb->callback([&common, value, given, print = std::move(print), parse = std::move(parse),
                    change = std::move(change), name] {
        vtv::Tv tv(TvDir(common));
        if (given->count() > 0) {
            const std::string wanted = parse(*value);
            Recorder recorder(common, tv, {{name, wanted}});
            change(tv, wanted);
            recorder.Done();
        } else if (common.json) {
            Json::Value json;
            json[name] = print(tv);
            PrintJson(json);
        } else {
            std::cout << print(tv) << '\n';
        }
    });
}

// "de", "de_AT", "zh_CN.UTF-8", ...
std::string ParseLanguage(const std::string& name) {
    static const std::regex form("[a-z]{2,3}(_[A-Z]{2})?([.@][A-Za-z0-9.@-]+)?");
    if (!std::regex_match(name, form)) {
        throw vtv::Error(name.empty() ? vtv::ErrorKind::kUsage : vtv::ErrorKind::kNoSuch,
                         "There is no language \"" + name + "\": write a locale, such as ko_KR.");
    }
    return name;
}

void SetLanguage(vtv::Tv& tv, const std::string& language) {
    // A TV can be set to a language that nobody has translated; people who do so should know.
    const std::vector<std::string> languages = vtv::Tv::Languages();
    const std::string stem = language.substr(0, language.find('_'));
    if (std::find(languages.begin(), languages.end(), language) == languages.end() &&
        std::find(languages.begin(), languages.end(), stem) == languages.end()) {
        std::string offered;
        for (const std::string& one : languages) {
            offered += " " + one;
        }
        std::cerr << "vtv: warning: there is no catalogue for " << language
                  << "; there are:" << offered << '\n';
    }
    tv.SetLanguage(language);
}

std::string ParseAccount(const std::string& value) {
    if (value != "signed-in" && value != "signed-out") {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         "\"" + value + "\": write signed-in or signed-out.");
    }
    return value;
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
            const bool isAgreed = ParseSwitch(options->value);
            Recorder recorder(
                common, tv,
                {{"consent", std::map<std::string, vtv::Value>{{options->item, isAgreed}}}});
            tv.SetConsent(options->item, isAgreed);
            recorder.Done();
            return;
        }
        Json::Value json;
        for (const char* item : {"tnc", "pp"}) {
            json[item] = tv.Consent(item);
            if (!common.json) {
                std::cout << item << (tv.Consent(item) ? " on" : " off") << '\n';
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
                    std::cout << file << '\n';
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
    AddState(
        app, common, "language", "Look at the menu language, or change it", "  vtv language de_DE",
        "A locale, such as ko_KR", [](vtv::Tv& tv) { return tv.Language(); }, ParseLanguage,
        SetLanguage);
    AddState(
        app, common, "voice-guide", "Look at the voice guide, or switch it", "  vtv voice-guide on",
        "on or off", [](vtv::Tv& tv) { return std::string(tv.VoiceGuide() ? "on" : "off"); },
        [](const std::string& value) { return std::string(ParseSwitch(value) ? "on" : "off"); },
        [](vtv::Tv& tv, const std::string& value) {
            tv.Set("db/setting/accessibility/tts", value == "on");
        });
    AddState(
        app, common, "account", "Look at the maker's account, or sign in and out",
        "  vtv account signed-in", "signed-in or signed-out",
        [](vtv::Tv& tv) { return std::string(tv.SignedIn() ? "signed-in" : "signed-out"); },
        ParseAccount,
        [](vtv::Tv& tv, const std::string& value) { tv.SetSignedIn(value == "signed-in"); });
    AddState(
        app, common, "network", "Look at the network, or plug it in and out",
        "  vtv network disconnected\n  vtv network host               as this machine's own",
        "connected, disconnected or host",
        [](vtv::Tv& tv) { return std::string(vtv::ToText(tv.GetNetwork())); },
        [](const std::string& value) { return std::string(vtv::ToText(vtv::ParseNetwork(value))); },
        [](vtv::Tv& tv, const std::string& value) { tv.SetNetwork(vtv::ParseNetwork(value)); });
    AddConsent(app, common);
    AddFile(app, common);
    AddPowerCycle(app, common);
}

}  // namespace cli
