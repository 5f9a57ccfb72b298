// vtv get, set, unset, reset: the TV's settings by key.
#include <unistd.h>

#include <iostream>
#include <memory>
#include <optional>

#include "host/core/setting_changes.h"
#include "program/standard_output.h"
#include "setting_text.h"
#include "verbs.h"
#include "virtual-tv/model/known_settings.h"

namespace cli {

namespace {

bool IsType(const std::string& text) {
    return text == "bool" || text == "int" || text == "string" || text == "str";
}

std::optional<vtv::Value> ValueOf(const vtv::Tv& tv, const std::string& name) {
    if (host::FindItem(name) != nullptr) {
        return std::nullopt;
    }
    const host::SettingName setting = host::ParseSettingName(tv, name);
    const std::optional<vtv::Value> value = tv.Get(setting.key);
    return value && !setting.member.empty() ? host::MemberOf(*value, setting.member) : value;
}

void AddGet(CLI::App& app, Common& common) {
    const auto key = std::make_shared<std::string>();
    CLI::App* verb = AddVerb(app, common, "get", "Print a setting of the TV",
                             "  vtv get db/menu_widget/language\n"
                             "  vtv get db/menu/voice/mva_list | jq\n"
                             "  vtv get db/menu/voice/mva_list.0.VAName    a member of JSON\n"
                             "  vtv keys voice                             which keys are there?",
                             kTv | kJson);
    verb->add_option("KEY", *key, "A settings key; begins with db/ or memory/")->required();
    verb->callback([&common, key] {
        const vtv::Tv tv(TvDir(common));
        const std::optional<vtv::Value> value = ValueOf(tv, *key);
        if (!value) {
            ThrowNoSuchKey(tv, *key);
        }
        if (common.json) {
            PrintJson(SettingToJson(*key, *value));
        } else {
            const std::string text = vtv::ToText(*value);
            const bool isSeen = isatty(STDOUT_FILENO) == 1;
            program::Print((isSeen ? program::OneLine(text) : text) + "\n", program::Form::kExact);
        }
    });
}

struct SetOptions {
    std::string key;
    std::string type;
    std::string value;
    std::vector<std::string> more;
    bool force = false;

    std::vector<std::string> Words() const {
        std::vector<std::string> words = {key};
        for (const std::string* word : {&type, &value}) {
            if (given > words.size()) {
                words.push_back(*word);
            }
        }
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }
    size_t given = 0;  // of the three
};

// KEY TYPE VALUE: any type that the key may have, or by force any at all.
void SetTyped(const Common& common, const SetOptions& options) {
    const vtv::Value value = vtv::ParseValue(options.type, options.value);
    const std::string problem =
        options.force ? "" : vtv::TypeProblem(options.key, vtv::TypeName(value));
    if (!problem.empty()) {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         problem + " To see what happens otherwise, add --force.");
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

// The names and values that were given without a type: KEY VALUE, or NAME=VALUE as often as wanted.
std::vector<std::pair<std::string, std::string>> Assignments(
    const std::vector<std::string>& words) {
    const auto assigns = [](const std::string& word) { return word.find('=') != word.npos; };
    if (words.size() == 2 && !assigns(words[0])) {
        return {{words[0], words[1]}};
    }
    std::vector<std::pair<std::string, std::string>> assignments;
    for (const std::string& word : words) {
        if (!assigns(word)) {
            if (words.size() == 1) {
                throw CLI::RequiredError("TYPE");
            }
            throw vtv::Error(vtv::ErrorKind::kUsage,
                             "vtv set: \"" + word +
                                 "\" is no NAME=VALUE. Write KEY TYPE VALUE, KEY VALUE, or "
                                 "NAME=VALUE as often as you want.");
        }
        assignments.emplace_back(word.substr(0, word.find('=')), word.substr(word.find('=') + 1));
    }
    return assignments;
}

void Set(const Common& common, const SetOptions& options) {
    const std::vector<std::string> words = options.Words();
    if (words.size() == 3 && (words[0].find('=') == std::string::npos || IsType(words[1]))) {
        SetTyped(common, options);
        return;
    }
    const auto assignments = Assignments(words);
    if (options.force) {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         "vtv set: --force has no effect here: it needs a TYPE to force.");
    }
    vtv::Tv tv(TvDir(common));
    host::SettingChanges changes(tv);
    for (const auto& [name, text] : assignments) {
        changes.Set(name, text);
    }
    Recorder recorder(common, tv, {{"set", changes.Values()}});
    changes.Write(tv);
    recorder.Done();
}

void AddSet(CLI::App& app, Common& common) {
    const auto options = std::make_shared<SetOptions>();
    CLI::App* verb = AddVerb(
        app, common, "set", "Write settings of the TV, as any of its programs might",
        "  vtv set db/menu/voice/passthru bool true\n"
        "  vtv set db/comss/cisblock 2                  the type is known\n"
        "  vtv set db/comss/cisblock=2 db/comss/countrycode=DE\n"
        "  vtv set db/menu/voice/mva_list.0.VAName Orvik   a member of JSON\n\n"
        "Several are written all or not at all, and none before all are found right.\n"
        "A member of a setting that holds JSON is named behind a dot, a place in a list by\n"
        "its number from 0. Keys under memory/ last until the next power cycle.",
        kTv | kRecord);
    verb->add_option("KEY", options->key,
                     "A settings key; begins with db/ or memory/. Or NAME=VALUE, as often as "
                     "wanted; NAME is a KEY or KEY.MEMBER")
        ->required();
    CLI::Option* type = verb->add_option(
        "TYPE", options->type, "bool, int or string; may be left out where the type is known");
    CLI::Option* value =
        verb->add_option("VALUE", options->value, "true, false, a whole number, or a text");
    verb->add_option("MORE", options->more, "Further NAME=VALUE");
    verb->add_flag("--force", options->force, "Write a key that the TV knows with another type");
    verb->callback([&common, options, type, value] {
        options->given = 1 + type->count() + value->count();
        Set(common, *options);
    });
}

struct ResetOptions {
    std::vector<std::string> keys;
    bool all = false;
};

// What has to be written, or (absent) to go, so that the settings are the model's.
std::map<std::string, std::optional<vtv::Value>> ToModel(const vtv::Tv& tv,
                                                         const std::vector<std::string>& keys) {
    std::map<std::string, std::optional<vtv::Value>> changes;
    std::map<std::string, std::optional<vtv::Value>> present;
    for (const vtv::Setting& setting : tv.Settings()) {
        present[setting.key] = setting.value;
    }
    const std::map<std::string, vtv::Value>& model = tv.GetModel().settings;
    for (const std::string& key : keys) {
        const auto wanted = model.find(key);
        const auto now = present.find(key);
        if (wanted == model.end() && now == present.end()) {
            if (vtv::FindKnownSetting(key) == nullptr) {
                ThrowNoSuchKey(tv, key);
            }
        } else if (wanted == model.end()) {
            changes[key] = std::nullopt;
        } else if (now == present.end() || now->second != wanted->second) {
            changes[key] = wanted->second;
        }
    }
    return changes;
}

host::Recording::Step ResetStep(const std::map<std::string, std::optional<vtv::Value>>& changes) {
    std::map<std::string, vtv::Value> set;
    std::vector<std::string> unset;
    for (const auto& [key, value] : changes) {
        if (value) {
            set[key] = *value;
        } else {
            unset.push_back(key);
        }
    }
    host::Recording::Step step;
    if (!set.empty()) {
        step["set"] = set;
    }
    if (!unset.empty()) {
        step["unset"] = unset;
    }
    return step;
}

void Reset(const Common& common, const ResetOptions& options) {
    if (options.all == !options.keys.empty()) {
        throw vtv::Error(vtv::ErrorKind::kUsage, "vtv reset: name settings, or write --all.");
    }
    vtv::Tv tv(TvDir(common));
    std::vector<std::string> keys = options.keys;
    if (options.all) {
        for (const vtv::Setting& setting : tv.Settings()) {
            keys.push_back(setting.key);
        }
        for (const auto& [key, value] : tv.GetModel().settings) {
            keys.push_back(key);
        }
    }
    for (const std::string& key : keys) {
        vtv::CheckSettingKey(key);
    }
    const auto changes = ToModel(tv, keys);
    if (changes.empty()) {
        return;
    }
    Recorder recorder(common, tv, ResetStep(changes));
    tv.SetTogether(changes);
    recorder.Done();
}

void AddReset(CLI::App& app, Common& common) {
    const auto options = std::make_shared<ResetOptions>();
    CLI::App* verb =
        AddVerb(app, common, "reset", "Bring settings back to what the TV's model has",
                "  vtv reset db/comss/cisblock db/menu/voice/mva_list\n"
                "  vtv reset --all\n\n"
                "A setting that the model does not have is removed. All are reset or none; one\n"
                "that is as the model has it is not written. Features: vtv feature X --reset.",
                kTv | kRecord);
    CLI::Option* keys = verb->add_option("KEY", options->keys, "Settings keys");
    verb->add_flag("--all", options->all, "Every setting of the TV")->excludes(keys);
    verb->callback([&common, options] { Reset(common, *options); });
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

}  // namespace

void AddSettingVerbs(CLI::App& app, Common& common) {
    AddGet(app, common);
    AddSet(app, common);
    AddUnset(app, common);
    AddReset(app, common);
}

}  // namespace cli
