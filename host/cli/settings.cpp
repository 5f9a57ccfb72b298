// vtv get, set, unset, watch, search: the TV's settings by key.
#include <algorithm>
#include <cctype>
#include <iostream>
#include <memory>
#include <set>

#include "host/core/known_settings.h"
#include "verbs.h"

namespace cli {

namespace {

bool Contains(const std::string& text, const std::string& part) {
    return std::search(text.begin(), text.end(), part.begin(), part.end(), [](char a, char b) {
               return std::tolower(static_cast<unsigned char>(a)) ==
                      std::tolower(static_cast<unsigned char>(b));
           }) != text.end();
}

[[noreturn]] void ThrowNoSuchKey(const vtv::Tv& tv, const std::string& key) {
    std::string text = key + ": the TV has no such setting.";
    if (host::FindItem(key) != nullptr) {
        text += " It is an item of the page: vtv show " + key;
    } else if (const host::KnownSetting* known = host::FindKnownSetting(key)) {
        text += std::string(" It would be a ") + known->type + ": " + known->meaning + ".";
    } else {
        const std::string last = key.substr(key.rfind('/') + 1);
        for (const vtv::Setting& setting : tv.Settings()) {
            if (last.size() >= 3 && Contains(setting.key, last)) {
                text += " Did you mean " + setting.key + "?";
                break;
            }
        }
    }
    throw vtv::Error(vtv::ErrorKind::kNoSuch, text);
}

Json::Value SettingToJson(const std::string& key, const vtv::Value& value) {
    Json::Value json;
    json["key"] = key;
    json["type"] = vtv::TypeName(value);
    json["value"] = ToJson(value);
    return json;
}

std::string Shown(const vtv::Value& value) {
    return std::holds_alternative<std::string>(value) ? "\"" + vtv::ToText(value) + "\""
                                                      : vtv::ToText(value);
}

void AddGet(CLI::App& app, Common& common) {
    const auto key = std::make_shared<std::string>();
    CLI::App* verb = AddVerb(app, common, "get", "Print a setting of the TV",
                             "  vtv get db/menu_widget/language\n"
                             "  vtv get db/menu/voice/mva_list | jq\n"
                             "  vtv search voice               which keys are there?",
                             kTv | kJson);
    verb->add_option("KEY", *key, "A settings key; begins with db/ or memory/")->required();
    verb->callback([&common, key] {
        const vtv::Tv tv(TvDir(common));
        std::optional<vtv::Value> value;
        if (host::FindItem(*key) == nullptr) {
            value = tv.Get(*key);
        }
        if (!value) {
            ThrowNoSuchKey(tv, *key);
        }
        if (common.json) {
            PrintJson(SettingToJson(*key, *value));
        } else {
            std::cout << vtv::ToText(*value) << '\n';
        }
    });
}

struct SetOptions {
    std::string key;
    std::string type;
    std::string value;
    bool force = false;
};

void Set(const Common& common, const SetOptions& options) {
    const vtv::Value value = vtv::ParseValue(options.type, options.value);
    const host::KnownSetting* known = host::FindKnownSetting(options.key);
    if (known != nullptr && !options.force && std::string(known->type) != vtv::TypeName(value)) {
        throw Refusal(options.key + " is a " + known->type + " on a TV (" + known->meaning +
                      "); as " + (std::holds_alternative<int>(value) ? "an " : "a ") +
                      vtv::TypeName(value) +
                      " it could not be read. To see what happens then, add --force.");
    }
    vtv::Tv tv(TvDir(common));
    host::Recording::Step step = {{"set", std::map<std::string, vtv::Value>{{options.key, value}}}};
    if (options.force) {
        step["force"] = true;
    }
    Recorder recorder(common, tv, step);
    tv.Set(options.key, value);
    recorder.Done();
}

void AddSet(CLI::App& app, Common& common) {
    const auto options = std::make_shared<SetOptions>();
    CLI::App* verb =
        AddVerb(app, common, "set", "Write a setting of the TV, as any of its programs might",
                "  vtv set db/menu/voice/passthru bool true\n"
                "  vtv set db/comss/cisblock int 2\n"
                "  vtv set db/menu_widget/language string de_DE\n\n"
                "Keys under memory/ last until the next power cycle.",
                kTv | kRecord);
    verb->add_option("KEY", options->key, "A settings key; begins with db/ or memory/")->required();
    verb->add_option("TYPE", options->type, "bool, int or string")->required();
    verb->add_option("VALUE", options->value, "true, false, a whole number, or a text")->required();
    verb->add_flag("--force", options->force, "Write a key that the TV knows with another type");
    verb->callback([&common, options] { Set(common, *options); });
}

void AddUnset(CLI::App& app, Common& common) {
    const auto key = std::make_shared<std::string>();
    CLI::App* verb = AddVerb(app, common, "unset", "Remove a setting of the TV",
                             "  vtv unset db/menu/voice/assistant_farfield", kTv | kRecord);
    verb->add_option("KEY", *key, "A settings key")->required();
    verb->callback([&common, key] {
        vtv::Tv tv(TvDir(common));
        Recorder recorder(common, tv, {{"unset", *key}});
        if (!tv.Unset(*key)) {
            ThrowNoSuchKey(tv, *key);
        }
        recorder.Done();
    });
}

struct WatchOptions {
    std::vector<std::string> keys;
    int count = 0;
};

void Watch(const Common& common, const WatchOptions& options) {
    vtv::Tv tv(TvDir(common));
    int seen = 0;
    const auto tell = [&](const std::string& key) {
        const std::optional<vtv::Value> value = tv.Get(key);
        ++seen;
        if (common.json) {
            Json::Value json = value ? SettingToJson(key, *value) : Json::Value();
            json["key"] = key;
            json["removed"] = !value.has_value();
            PrintJsonLine(json);
        } else {
            std::cout << key << " = " << (value ? Shown(*value) : "(removed)") << std::endl;
        }
    };
    for (const std::string& key : options.keys) {
        tv.Watch(key, [&tell, &key] { tell(key); });
    }
    if (options.keys.empty()) {
        tv.WatchAll([&tell](const vtv::Change& change) {
            if (change.what == vtv::Change::What::kSetting) {
                tell(change.name);
            }
        });
    }
    std::cerr << "Watching" << (options.keys.empty() ? " every key" : "") << "; end with Ctrl-C.\n";
    while ((options.count == 0 || seen < options.count) && WaitForTv(tv)) {
        tv.Dispatch();
    }
}

void AddWatch(CLI::App& app, Common& common) {
    const auto options = std::make_shared<WatchOptions>();
    CLI::App* verb =
        AddVerb(app, common, "watch", "Print a setting each time that something writes it",
                "  vtv watch db/menu/voice/mva_list\n"
                "  vtv watch                        every setting of the TV\n\n"
                "A write is told of also when the value stays the same.",
                kTv | kJson);
    verb->add_option("KEY", options->keys, "Settings keys; all of them when none is named");
    verb->add_option("--count", options->count, "End after so many writes")
        ->type_name("N")
        ->check(WholeNumber(1));
    verb->callback([&common, options] { Watch(common, *options); });
}

struct Hit {
    std::string where;  // "setting", "feature", "item", "known setting"
    std::string name;
    std::string text;
};

std::vector<Hit> Search(const Session& session, const std::string& text) {
    std::vector<Hit> hits;
    const auto add = [&](const char* where, const std::string& name, const std::string& shown) {
        if (Contains(name, text) || Contains(shown, text)) {
            hits.push_back({where, name, shown});
        }
    };
    for (const host::ItemView& view : host::LookAtPage(session.provider).items) {
        const std::string name = view.item->name;
        add("item", name, view.title.value_or(""));
        for (const auto& [what, shown] : std::initializer_list<std::pair<const char*, std::string>>{
                 {"help", view.help.value_or("")}, {"reason", view.disableText.value_or("")}}) {
            if (Contains(shown, text)) {
                hits.push_back({what, name, shown});
            }
        }
        for (const host::Choice& choice : view.choices) {
            if (Contains(choice.text, text)) {
                hits.push_back({"choice", name, std::to_string(choice.value) + " " + choice.text});
            }
        }
    }
    std::set<std::string> present;
    for (const vtv::Setting& setting : session.tv.Settings()) {
        add("setting", setting.key, setting.value ? vtv::ToText(*setting.value) : setting.problem);
        present.insert(setting.key);
    }
    for (const auto& [key, value] : session.tv.Features()) {
        add("feature", key, vtv::ToText(value));
    }
    for (const host::KnownSetting& known : host::KnownSettings()) {
        if (present.count(known.key) == 0) {
            add("unset", known.key, std::string(known.type) + ": " + known.meaning);
        }
    }
    return hits;
}

void AddSearch(CLI::App& app, Common& common) {
    const auto text = std::make_shared<std::string>();
    CLI::App* verb =
        AddVerb(app, common, "search", "Find settings, features and items by key or shown text",
                "  vtv search wake\n"
                "  vtv search \"hands-free\"",
                kTv | kProvider | kJson);
    verb->add_option("TEXT", *text,
                     "A part of a key, a value or a shown text; case does not matter")
        ->required();
    verb->callback([&common, text] {
        const Session session(common);
        const std::vector<Hit> hits = Search(session, *text);
        Json::Value json(Json::arrayValue);
        for (const Hit& hit : hits) {
            Json::Value entry;
            entry["where"] = hit.where;
            entry["name"] = hit.name;
            entry["text"] = hit.text;
            json.append(entry);
            if (!common.json) {
                std::cout << Paint(Look::kDim, hit.where + " ") << hit.name << "  " << hit.text
                          << '\n';
            }
        }
        if (common.json) {
            PrintJson(json);
        }
        if (hits.empty()) {
            throw Refusal("nothing on this TV holds \"" + *text + "\".");
        }
    });
}

}  // namespace

void AddSettingVerbs(CLI::App& app, Common& common) {
    AddGet(app, common);
    AddSet(app, common);
    AddUnset(app, common);
    AddWatch(app, common);
    AddSearch(app, common);
}

}  // namespace cli
