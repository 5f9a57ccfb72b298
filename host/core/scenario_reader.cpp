#include "scenario_reader.h"

#include <json/json.h>

#include <algorithm>
#include <limits>

#include "similar_items.h"
#include "virtual-tv/model/applications.h"
#include "virtual-tv/model/json_text.h"
#include "virtual-tv/model/known_settings.h"
#include "virtual-tv/model/spelling.h"

namespace host {

namespace {

const char* KindOf(const toml::node& node) {
    switch (node.type()) {
        case toml::node_type::table:
            return "a table";
        case toml::node_type::array:
            return "a list";
        case toml::node_type::string:
            return "a text";
        case toml::node_type::integer:
            return "a whole number";
        case toml::node_type::floating_point:
            return "a fraction";
        case toml::node_type::boolean:
            return "true or false";
        default:
            return "a date or time";
    }
}

bool Fits(int64_t number) {
    return number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max();
}

}  // namespace

std::string DidYouMean(std::string_view word, const std::vector<std::string>& known) {
    const std::vector<std::string> similar = vtv::Similar(word, known);
    return similar.empty() ? "" : " Did you mean " + similar.front() + "?";
}

void ScenarioReader::Problem(const toml::source_region& where, const std::string& text) {
    const int line = static_cast<int>(where.begin.line);
    problems_.emplace(line, file_ + ":" + std::to_string(line) + ": " + text);
}

void ScenarioReader::Problem(const toml::node& where, const std::string& text) {
    Problem(where.source(), text);
}

void ScenarioReader::ForeignProblem(const toml::node& where, const std::string& text) {
    problems_.emplace(LineOf(where), text);
}

std::vector<std::string> ScenarioReader::Problems() const {
    std::vector<std::string> problems;
    for (const auto& [line, problem] : problems_) {
        problems.push_back(problem);
    }
    return problems;
}

bool ScenarioReader::Require(bool fits, const toml::node& node, const std::string& name,
                             const char* wanted) {
    if (!fits) {
        Problem(node, "\"" + name + "\" must be " + wanted + ", not " + KindOf(node) + ".");
    }
    return fits;
}

bool ScenarioReader::Flag(const toml::node& node, const std::string& name) {
    return Require(node.is_boolean(), node, name, "true or false, without quotes") &&
           node.as_boolean()->get();
}

int ScenarioReader::Number(const toml::node& node, const std::string& name) {
    if (!Require(node.is_integer(), node, name, "a whole number, without quotes")) {
        return 0;
    }
    const int64_t number = node.as_integer()->get();
    if (!Fits(number)) {
        Problem(node, "\"" + name + "\" cannot be " + std::to_string(number) +
                          ": write a whole number from -2147483648 to 2147483647.");
        return 0;
    }
    return static_cast<int>(number);
}

std::string ScenarioReader::Text(const toml::node& node, const std::string& name) {
    return Require(node.is_string(), node, name, "a text in quotes") ? node.as_string()->get() : "";
}

std::vector<std::string> ScenarioReader::Texts(const toml::node& node, const std::string& name) {
    std::vector<std::string> texts;
    if (const toml::array* list = node.as_array()) {
        for (const toml::node& one : *list) {
            if (Require(one.is_string(), one, name, "a list of texts in quotes")) {
                texts.push_back(one.as_string()->get());
            }
        }
    } else if (Require(node.is_string(), node, name, "a text in quotes, or a list of them")) {
        texts.push_back(node.as_string()->get());
    }
    return texts;
}

std::vector<std::string> ScenarioReader::Some(const toml::node& node, const std::string& name) {
    std::vector<std::string> texts = Texts(node, name);
    const bool isEmptyList = node.is_array() && node.as_array()->empty();
    if (isEmptyList || std::find(texts.begin(), texts.end(), "") != texts.end()) {
        Problem(node, "\"" + name + "\" names nothing: write a text, or leave the member out.");
    }
    return texts;
}

std::string ScenarioReader::OneOf(const toml::node& node, const std::string& name,
                                  const std::vector<std::string>& words) {
    std::string choice;
    for (size_t i = 0; i < words.size(); ++i) {
        choice += (i == 0 ? "\"" : i + 1 == words.size() ? " or \"" : ", \"") + words[i] + "\"";
    }
    std::string text = node.is_string() ? node.as_string()->get() : "";
    if (!node.is_string()) {
        Problem(node, "\"" + name + "\" is " + choice + ", not " + KindOf(node) + ".");
    } else if (std::find(words.begin(), words.end(), text) == words.end()) {
        Problem(node, "\"" + name + "\" is " + choice + ", not \"" + text + "\"." +
                          DidYouMean(text, words));
    }
    return text;
}

vtv::Value ScenarioReader::Scalar(const toml::node& node, const std::string& name) {
    if (node.is_boolean()) {
        return node.as_boolean()->get();
    }
    if (node.is_integer()) {
        return Number(node, name);
    }
    return Require(node.is_string(), node, name, "true, false, a whole number or a text in quotes")
               ? node.as_string()->get()
               : "";
}

namespace {

Json::Value ToJson(ScenarioReader& reader, const toml::node& node, const std::string& name) {
    if (const toml::table* table = node.as_table()) {
        Json::Value object(Json::objectValue);
        for (const auto& [key, value] : *table) {
            object[std::string(key.str())] = ToJson(reader, value, std::string(key.str()));
        }
        return object;
    }
    if (const toml::array* array = node.as_array()) {
        Json::Value list(Json::arrayValue);
        for (const toml::node& value : *array) {
            list.append(ToJson(reader, value, name));
        }
        return list;
    }
    if (node.is_integer()) {
        return static_cast<Json::Int64>(node.as_integer()->get());
    }
    return std::visit([](const auto& value) { return Json::Value(value); },
                      reader.Scalar(node, name));
}

}  // namespace

vtv::Value ScenarioReader::SettingValue(const toml::node& node, const std::string& name) {
    if (!node.is_table() && !node.is_array()) {
        return Scalar(node, name);
    }
    return vtv::CompactJson(ToJson(*this, node, name));
}

const toml::table& ScenarioReader::Table(const toml::node& node, const std::string& name) {
    static const toml::table kNothing;
    if (!node.is_table()) {
        Problem(node, "\"" + name + "\" must be a table, not " + KindOf(node) + ": write " + name +
                          " = { ... }.");
        return kNothing;
    }
    if (node.as_table()->empty()) {
        Problem(node, "\"" + name + "\" is empty: write what is in it, or leave it out.");
    }
    return *node.as_table();
}

void ScenarioReader::CheckSettingKey(const toml::source_region& where, const std::string& key,
                                     bool isForced) {
    Noting(where, [&] { vtv::CheckSettingKey(key); });
    const bool isTaken = isForced || (model && model->settings.count(key) != 0);
    const std::string meant = isTaken ? "" : vtv::MeantSetting(key);
    if (!meant.empty()) {
        Problem(where,
                "nobody knows the setting \"" + key + "\". Did you mean " + meant + "?" + kIfMeant);
    }
}

void ScenarioReader::CheckSetting(const toml::key& key, const toml::node& value,
                                  const std::string& type, bool isForced) {
    const std::string name(key.str());
    CheckSettingKey(key.source(), name, isForced);
    const std::string problem = isForced ? "" : vtv::TypeProblem(name, type);
    if (!problem.empty()) {
        Problem(value, problem + kIfMeant);
    }
}

std::vector<std::string> ScenarioReader::SettingKeys(const toml::node& node,
                                                     const std::string& name, bool isForced) {
    const std::vector<std::string> keys = Some(node, name);
    for (const std::string& key : keys) {
        CheckSettingKey(node.source(), key, isForced);
    }
    return keys;
}

void ScenarioReader::CheckState(const toml::key& key, const std::optional<vtv::Value>& value,
                                bool isForced) {
    const std::string name(key.str());
    Noting(key.source(),
           [&] { value ? vtv::CheckState(name, *value) : vtv::CheckStateName(name); });
    const size_t end = name.find('/') + 1;
    const std::string kind = name.substr(0, end);
    const std::string about = name.substr(end);
    if (isForced || about.empty()) {
        return;
    }
    if (kind == vtv::kModeState) {
        CheckApplication(key.source(), about, kIfMeant);
    } else if ((kind == vtv::kFeatureState || kind == vtv::kAbsentFeatureState) &&
               vtv::FindKnownFeature(about) == nullptr && model &&
               model->features.count(about) == 0) {
        std::vector<std::string> names;
        for (const vtv::KnownFeature& known : vtv::KnownFeatures()) {
            names.push_back(known.key);
        }
        Problem(key.source(), "the TV has no feature \"" + about + "\"." +
                                  DidYouMean(about, names) + " Known: " + vtv::Join(names) + "." +
                                  kIfMeant);
    }
}

std::string ScenarioReader::Feature(const toml::source_region& where, const std::string& name) {
    std::vector<std::string> names;
    for (const vtv::KnownFeature& known : vtv::KnownFeatures()) {
        if (name == known.key || vtv::kFeaturePrefix + name == known.key) {
            return known.key;
        }
        names.push_back(known.Name());
    }
    if (model && model->features.count(name) == 0) {
        Problem(where, "the TV has no feature \"" + name + "\"." + DidYouMean(name, names) +
                           " Known: " + vtv::Join(names) + ".");
    }
    return name;
}

vtv::Value ScenarioReader::FeatureValue(const toml::node& node, const std::string& key) {
    const std::string name = vtv::ShortFeatureName(key);
    const vtv::Value value = Scalar(node, name);
    std::string type;
    if (model && model->features.count(key) != 0) {
        type = vtv::TypeName(model->features.at(key));
    }
    if (const vtv::KnownFeature* known = vtv::FindKnownFeature(key)) {
        type = known->type;
    }
    const bool isScalar = node.is_boolean() || node.is_integer() || node.is_string();
    if (isScalar && !type.empty() && type != vtv::TypeName(value)) {
        Problem(node, "the feature \"" + name + "\" is of type " + type + ", not " +
                          vtv::TypeName(value) + ": write " + vtv::ExampleOf(type) + ".");
    }
    return value;
}

std::vector<std::string> ScenarioReader::OwnerFiles(const toml::node& node,
                                                    const std::string& name) {
    const std::vector<std::string> paths = Some(node, name);
    for (const std::string& path : paths) {
        Noting(node.source(), [&] { vtv::CheckOwnerFile(path); });
    }
    return paths;
}

std::vector<std::string> ScenarioReader::Applications(const toml::node& node,
                                                      const std::string& name) {
    const std::vector<std::string> ids = Some(node, name);
    for (const std::string& id : ids) {
        CheckApplication(node.source(), id, "");
    }
    return ids;
}

void ScenarioReader::CheckApplication(const toml::source_region& where, const std::string& id,
                                      const std::string& otherwise) {
    if (!model || id.empty() || vtv::IsInstalled(*model, id)) {
        return;
    }
    const std::vector<std::string> installed = vtv::InstalledApplications(*model);
    Problem(where, "the TV has no application \"" + id + "\"." + DidYouMean(id, installed) +
                       " It has: " + vtv::Join(installed) + "." + otherwise);
}

const Item* ScenarioReader::ItemNamed(const toml::source_region& where, const std::string& name) {
    const Item* item = FindItem(name);
    if (item == nullptr) {
        const std::vector<std::string> similar = SimilarItems(name);
        Problem(where, "there is no item \"" + name + "\"." +
                           (similar.empty() ? " vtv show --all lists the items."
                                            : " Did you mean " + similar.front() + "?"));
    }
    return item;
}

void ScenarioReader::NoteUnknown(const toml::table& table, const std::string& where,
                                 const std::vector<std::string>& known) {
    for (const auto& [key, node] : table) {
        const std::string name(key.str());
        if (std::find(known.begin(), known.end(), name) == known.end()) {
            Problem(key.source(), "\"" + name + "\" is unknown in " + where + "." +
                                      DidYouMean(name, known) + " Known: " + vtv::Join(known) +
                                      ".");
        }
    }
}

}  // namespace host
