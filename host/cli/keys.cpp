// vtv keys, describe, search: which settings and features there are, and what they mean.
#include <fnmatch.h>

#include <iostream>
#include <memory>
#include <set>

#include "host/core/key_description.h"
#include "program/text_width.h"
#include "program/visible_text.h"
#include "setting_text.h"
#include "verbs.h"
#include "virtual-tv/model/known_settings.h"
#include "virtual-tv/model/spelling.h"

namespace cli {

namespace {

constexpr size_t kKeyColumns = 50;
constexpr size_t kValueColumns = 60;

// A part of a key in any case, or a pattern with * and ?.
bool Fits(const std::string& key, const std::string& pattern) {
    return pattern.find_first_of("*?[") == std::string::npos
               ? Contains(key, pattern)
               : fnmatch(pattern.c_str(), key.c_str(), FNM_CASEFOLD) == 0;
}

Json::Value OrNull(const std::optional<vtv::Value>& value) {
    return value ? ToJson(*value) : Json::Value();
}

std::string ShownOr(const std::optional<vtv::Value>& value, const std::string& otherwise) {
    return value ? program::Cut(Shown(*value), kValueColumns) : otherwise;
}

// A setting that the TV has, its model has, or the page knows.
struct Key {
    std::string type;
    std::string meaning;
    std::optional<vtv::Value> value;
    std::string problem;
    std::optional<vtv::Value> model;
};

std::map<std::string, Key> KeysOf(const vtv::Tv& tv) {
    std::map<std::string, Key> keys;
    for (const auto& [key, value] : tv.GetModel().settings) {
        keys[key].model = value;
        keys[key].type = vtv::TypeName(value);
    }
    for (const vtv::KnownSetting& known : vtv::KnownSettings()) {
        keys[known.key].type = known.type;
        keys[known.key].meaning = known.meaning;
    }
    for (const vtv::Setting& setting : tv.Settings()) {
        Key& key = keys[setting.key];
        key.value = setting.value;
        key.problem = setting.problem;
        key.type = setting.value ? vtv::TypeName(*setting.value) : key.type;
    }
    return keys;
}

void PrintKey(const std::string& name, const Key& key) {
    const bool isModels = key.value == key.model && key.problem.empty();
    std::cout << program::Pad(name, kKeyColumns) << ' ' << program::Pad(key.type, 6) << ' '
              << ShownOr(key.value, key.problem.empty() ? "(unset)" : "(damaged)")
              << Paint(Look::kNote, isModels ? "" : "  model: " + ShownOr(key.model, "(unset)"))
              << '\n';
}

void Keys(const Common& common, const std::string& pattern) {
    const vtv::Tv tv(TvDir(common));
    Json::Value json(Json::arrayValue);
    for (const auto& [name, key] : KeysOf(tv)) {
        if (!Fits(name, pattern)) {
            continue;
        }
        Json::Value entry;
        entry["key"] = name;
        entry["type"] = key.type.empty() ? Json::Value() : Json::Value(key.type);
        entry["value"] = OrNull(key.value);
        entry["model"] = OrNull(key.model);
        entry["meaning"] = key.meaning;
        json.append(entry);
        if (!common.json) {
            PrintKey(name, key);
        }
    }
    if (common.json) {
        PrintJson(json);
    }
    if (json.empty()) {
        throw Refusal("no settings key of this TV fits \"" + pattern +
                      "\". vtv search looks at what they mean as well.");
    }
}

void AddKeys(CLI::App& app, Common& common) {
    const auto pattern = std::make_shared<std::string>();
    CLI::App* verb =
        AddVerb(app, common, "keys", "List settings: type, value, and the model's where it differs",
                "  vtv keys\n"
                "  vtv keys passthru            keys with this in them\n"
                "  vtv keys 'memory/*'          keys that fit\n\n"
                "Those that the TV has, its model has, or the page knows. What one means:\n"
                "vtv describe KEY.",
                kTv | kJson);
    verb->add_option("PATTERN", *pattern,
                     "A part of a key, or a pattern with * and ?; case does not matter");
    verb->callback([&common, pattern] { Keys(common, *pattern); });
}

Json::Value DescriptionToJson(const host::KeyDescription& description) {
    Json::Value json;
    json["key"] = description.key;
    json["kind"] = description.isFeature ? "feature" : "setting";
    json["type"] = description.type.empty() ? Json::Value() : Json::Value(description.type);
    json["meaning"] = description.meaning;
    json["values"] = Json::Value(Json::arrayValue);
    for (const std::string& value : description.values) {
        json["values"].append(value);
    }
    json["per_assistant"] = description.perAssistant;
    json["value"] = OrNull(description.value);
    json["problem"] =
        description.problem.empty() ? Json::Value() : Json::Value(description.problem);
    json["model"] = OrNull(description.model);
    json["read_at_opening"] = description.isReadAtOpening;
    json["read_by"] = Json::Value(Json::arrayValue);
    for (const host::KeyDescription::Reader& reader : description.readers) {
        Json::Value entry;
        entry["item"] = reader.item->name;
        entry["question"] = reader.question;
        const bool hasRule = reader.rule.function != nullptr;
        entry["function"] = hasRule ? Json::Value(reader.rule.function) : Json::Value();
        entry["source"] = hasRule ? Json::Value(reader.rule.source) : Json::Value();
        json["read_by"].append(entry);
    }
    json["applications"] = Json::Value(Json::arrayValue);
    for (const host::KeyDescription::Application& application : description.applications) {
        Json::Value entry;
        entry["app"] = application.appId;
        entry["reads"] = application.reads;
        entry["writes"] = application.writes;
        json["applications"].append(entry);
    }
    json["items"] = Json::Value();
    if (description.items) {
        json["items"] = Json::Value(Json::arrayValue);
        for (const host::Item* item : *description.items) {
            json["items"].append(item->name);
        }
    }
    return json;
}

void PrintField(const char* name, const std::string& text) {
    std::cout << "  " << program::Pad(name, 10) << program::OneLine(text) << '\n';
}

// One line a reader, application or item; the heading stands before the first.
void PrintFields(const char* name, const std::vector<std::string>& texts,
                 const std::string& otherwise) {
    if (texts.empty()) {
        PrintField(name, otherwise);
    }
    for (size_t i = 0; i < texts.size(); ++i) {
        PrintField(i == 0 ? name : "", texts[i]);
    }
}

void PrintDescription(const host::KeyDescription& description) {
    std::cout << Paint(Look::kBold, description.key) << '\n';
    PrintField("type", description.type.empty() ? "(not known)" : description.type);
    PrintField("meaning", description.meaning.empty() ? "(not known)" : description.meaning);
    if (!description.values.empty()) {
        PrintField("values", vtv::Join(description.values) +
                                 (description.perAssistant ? " for each assistant" : ""));
    }
    const std::string missing = description.isFeature ? "(missing)" : "(unset)";
    PrintField("value", description.problem.empty() ? ShownOr(description.value, missing)
                                                    : description.problem);
    PrintField("model", ShownOr(description.model, missing));
    std::vector<std::string> readers;
    if (description.isReadAtOpening) {
        readers.emplace_back("the provider, when the page is opened");
    }
    for (const host::KeyDescription::Reader& reader : description.readers) {
        readers.push_back(
            std::string(reader.item->name) + ": " + reader.question +
            (reader.rule.function == nullptr
                 ? ""
                 : std::string(", ") + reader.rule.function + " in " + reader.rule.source));
    }
    PrintFields("read by", readers, "no rule of the page, as the TV is now");
    std::vector<std::string> applications;
    for (const host::KeyDescription::Application& application : description.applications) {
        applications.push_back(application.appId + (application.reads && application.writes
                                                        ? " reads and writes it"
                                                    : application.reads ? " reads it"
                                                                        : " writes it"));
    }
    if (!applications.empty()) {
        PrintFields("", applications, "");
    }
    if (!description.items) {
        PrintField("changes", "not known of this provider: vtv explore depends ITEM");
        return;
    }
    std::vector<std::string> items;
    for (const host::Item* item : *description.items) {
        items.emplace_back(item->name);
    }
    PrintFields("changes", items, "no item");
}

void AddDescribe(CLI::App& app, Common& common) {
    const auto key = std::make_shared<std::string>();
    CLI::App* verb = AddVerb(
        app, common, "describe",
        "Tell what a setting or feature means, who reads it, what it changes",
        "  vtv describe db/comss/cisblock\n"
        "  vtv describe recorder.microphone_type\n\n"
        "\"read by\" are the rules that read it on the TV as it is now, and the applications\n"
        "of the TV that read or write it when they are finished. \"changes\" are the items\n"
        "that can look different when it changes, whatever else the TV is.",
        kTv | kProvider | kJson);
    verb->add_option("KEY", *key, "A settings key, or a feature")->required();
    verb->callback([&common, key] {
        vtv::WatchNothing();
        const Session session(common);
        const auto description = host::DescribeKey(session.provider, session.tv, *key);
        if (!description) {
            ThrowNoSuchKey(session.tv, *key);
        }
        if (common.json) {
            PrintJson(DescriptionToJson(*description));
        } else {
            PrintDescription(*description);
        }
    });
}

struct Hit {
    std::string where;  // "setting", "feature", "item", ...
    std::string name;
    std::string text;
    std::string meaning = {};
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
        const vtv::KnownSetting* known = vtv::FindKnownSetting(setting.key);
        const std::string meaning = known != nullptr ? known->meaning : "";
        const std::string shown = setting.value ? vtv::ToText(*setting.value) : setting.problem;
        present.insert(setting.key);
        if (Contains(setting.key, text) || Contains(shown, text) || Contains(meaning, text)) {
            hits.push_back({"setting", setting.key, shown, meaning});
        }
    }
    const std::map<std::string, vtv::Value> features = session.tv.Features();
    for (const vtv::KnownFeature& known : vtv::KnownFeatures()) {
        const auto found = features.find(known.key);
        const std::string shown = found != features.end() ? vtv::ToText(found->second) : "";
        present.insert(known.key);
        if (Contains(known.key, text) || Contains(shown, text) || Contains(known.meaning, text)) {
            hits.push_back(
                {"feature", known.key, shown.empty() ? "(missing)" : shown, known.meaning});
        }
    }
    for (const auto& [key, value] : features) {
        if (present.count(key) == 0) {
            add("feature", key, vtv::ToText(value));
        }
    }
    for (const vtv::KnownSetting& known : vtv::KnownSettings()) {
        if (present.count(known.key) == 0) {
            add("unset", known.key, std::string(known.type) + ": " + known.meaning);
        }
    }
    return hits;
}

void AddSearch(CLI::App& app, Common& common) {
    const auto text = std::make_shared<std::string>();
    CLI::App* verb = AddVerb(
        app, common, "search", "Find settings, features and items by key, meaning or shown text",
        "  vtv search wake\n"
        "  vtv search microphone            also by what a setting or feature means\n"
        "  vtv search \"hands-free\"",
        kTv | kProvider | kJson);
    verb->add_option("TEXT", *text,
                     "A part of a key, a value, a meaning or a shown text; case does not matter")
        ->required();
    verb->callback([&common, text] {
        vtv::WatchNothing();
        const Session session(common);
        const std::vector<Hit> hits = Search(session, *text);
        Json::Value json(Json::arrayValue);
        for (const Hit& hit : hits) {
            Json::Value entry;
            entry["where"] = hit.where;
            entry["name"] = hit.name;
            entry["text"] = hit.text;
            entry["meaning"] = hit.meaning;
            json.append(entry);
            if (!common.json) {
                std::cout << Paint(Look::kDim, hit.where + " ")
                          << program::OneLine(hit.name + "  " + hit.text)
                          << Paint(Look::kDim, hit.meaning.empty() ? "" : "   " + hit.meaning)
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

void AddKeyVerbs(CLI::App& app, Common& common) {
    AddKeys(app, common);
    AddDescribe(app, common);
    AddSearch(app, common);
}

}  // namespace cli
