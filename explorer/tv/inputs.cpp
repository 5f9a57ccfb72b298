#include "inputs.h"

#include <json/json.h>
#include <toml++/toml.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "explorer/engine/coverage.h"
#include "keys.h"

namespace explorer {

namespace {

struct KindName {
    Input::Kind kind;
    const char* name;
};
constexpr KindName KIND_NAMES[] = {
    {Input::Kind::kSetting, "setting"}, {Input::Kind::kFeature, "feature"},
    {Input::Kind::kFile, "file"},       {Input::Kind::kConsent, "consent"},
    {Input::Kind::kCall, "call"},       {Input::Kind::kWrite, "write"},
};

std::string Quoted(const std::string& text) {
    return '"' + text + '"';
}

class Reader {
  public:
    explicit Reader(const std::string& file) : file_(file) {}

    Inputs Read() {
        toml::table root;
        try {
            root = toml::parse(ReadTextFile(file_), file_);
        } catch (const toml::parse_error& error) {
            Fail(error.source(), std::string(error.description()));
        }
        Inputs inputs;
        inputs.file = file_;
        for (const toml::table* table : Tables(root, "input")) {
            inputs.inputs.push_back(ReadInput(*table, inputs));
        }
        assistants_ = root["assistants"].as_table();
        for (const toml::table* table : Tables(root, "policy")) {
            inputs.policies.push_back(ReadPolicy(*table));
        }
        if (const toml::array* ids = root["texts"]["with-name"].as_array()) {
            for (const toml::node& id : *ids) {
                inputs.textsWithName.push_back(id.value_or(std::string()));
            }
        }
        if (inputs.inputs.empty() || inputs.policies.empty()) {
            throw InputError(file_ + ": needs at least one [[input]] and one [[policy]]");
        }
        return inputs;
    }

  private:
    [[noreturn]] void Fail(const toml::source_region& where, const std::string& text) const {
        throw InputError(file_ + ":" + std::to_string(where.begin.line) + ": " + text);
    }
    [[noreturn]] void Fail(const toml::node& node, const std::string& text) const {
        Fail(node.source(), text);
    }

    std::vector<const toml::table*> Tables(const toml::table& root, const char* name) const {
        std::vector<const toml::table*> tables;
        const toml::array* array = root[name].as_array();
        for (std::size_t i = 0; array != nullptr && i < array->size(); ++i) {
            const toml::table* table = (*array)[i].as_table();
            if (table == nullptr) {
                Fail((*array)[i], std::string("write [[") + name + "]] above each entry");
            }
            tables.push_back(table);
        }
        return tables;
    }

    Input ReadInput(const toml::table& table, const Inputs& before) const {
        Input input;
        int kinds = 0;
        for (const KindName& kind : KIND_NAMES) {
            if (const auto key = table[kind.name].value<std::string>()) {
                input.kind = kind.kind;
                input.key = *key;
                ++kinds;
            }
        }
        if (kinds != 1) {
            Fail(table, "an input is one of: setting, feature, file, consent, call, write");
        }
        if (before.Find(input.kind, input.key) != nullptr) {
            Fail(table, Quoted(input.key) + " is here twice");
        }
        input.name = table["name"].value_or(input.key);
        input.type = table["type"].value_or(std::string());
        input.isCurrentAssistant = table["current-assistant"].value_or(false);
        const bool isTyped =
            input.kind == Input::Kind::kSetting || input.kind == Input::Kind::kFeature;
        const bool knownType =
            input.type == "bool" || input.type == "int" || input.type == "string";
        if (isTyped && !knownType) {
            Fail(table, Quoted(input.name) + " needs type = \"bool\", \"int\" or \"string\"");
        }
        const toml::array* values = table["values"].as_array();
        if (values == nullptr || values->empty() || values->size() > Coverage::MAX_VALUES) {
            Fail(table, Quoted(input.name) + " needs values = [...], 1 to " +
                            std::to_string(Coverage::MAX_VALUES) + " of them");
        }
        for (const toml::node& node : *values) {
            input.values.push_back(ReadValue(node, input));
        }
        return input;
    }

    Value ReadValue(const toml::node& node, const Input& input) const {
        Value value;
        if (const toml::table* table = node.as_table()) {
            ReadTableValue(*table, input, value);
        } else {
            ReadPlainValue(node, input, value);
        }
        value.hasPlaceholder = value.text.find(CURRENT_PLACEHOLDER) != std::string::npos;
        return value;
    }

    void ReadTableValue(const toml::table& table, const Input& input, Value& value) const {
        if (const auto code = table["fails"].value<int>()) {
            value.kind = Value::Kind::kFails;
            value.number = *code;
            value.words = *code == keys::FAILED ? "fails" : "fails with " + std::to_string(*code);
        } else if (table["missing"].value_or(false)) {
            value.kind = Value::Kind::kFails;
            value.number = keys::FAILED;
            value.words = "missing";
        } else if (const auto type = table["stored"].value<std::string>()) {
            if (*type == input.type) {
                Fail(table, "stored = " + Quoted(*type) + " is the input's own type");
            }
            value.kind = Value::Kind::kFails;
            value.number = keys::FAILED;
            value.storedType = *type;
            value.words = "of type " + *type;
        } else if (table["null"].value_or(false)) {
            value.kind = Value::Kind::kNull;
            value.words = "null";
        } else if (const toml::node* text = table.get("text")) {
            ReadPlainValue(*text, input, value);
        } else if (const toml::node* plain = table.get("value")) {
            ReadPlainValue(*plain, input, value);
        } else {
            Fail(table,
                 "a value is { value = ... }, { text = ... }, { fails = N }, "
                 "{ missing = true }, { stored = \"type\" } or { null = true }");
        }
        value.words = table["as"].value_or(value.words);
        value.isOdd = table["odd"].value_or(false);
    }

    void ReadPlainValue(const toml::node& node, const Input& input, Value& value) const {
        if (const auto text = node.value_exact<std::string>()) {
            value.kind = Value::Kind::kText;
            value.text = *text;
            value.words = text->empty() ? "empty" : *text;
            value.storedType = "string";
        } else if (const auto flag = node.value_exact<bool>()) {
            value.number = *flag ? 1 : 0;
            value.words = input.kind == Input::Kind::kFile ? (*flag ? "yes" : "no")
                                                           : (*flag ? "true" : "false");
            value.storedType = "bool";
        } else if (const auto number = node.value_exact<std::int64_t>()) {
            value.number = static_cast<int>(*number);
            value.words = std::to_string(*number);
            value.storedType = "int";
        } else {
            Fail(node, "a value is a boolean, a whole number or a text");
        }
        if (!input.type.empty() && value.storedType != input.type) {
            Fail(node,
                 Quoted(input.name) + " is of type " + input.type + ", not " + value.storedType);
        }
    }

    Policy ReadPolicy(const toml::table& table) const {
        Policy policy;
        policy.name = table["name"].value_or(std::string());
        const toml::array* published = table["published"].as_array();
        if (policy.name.empty() || published == nullptr) {
            Fail(table, "a policy needs name = \"...\" and published = [...]");
        }
        for (const toml::node& node : *published) {
            if (const auto text = node.value<std::string>()) {
                policy.published.push_back(*text);
            } else {
                policy.published.push_back(ShortForm(node));
            }
        }
        return policy;
    }

    std::string ShortForm(const toml::node& node) const {
        const toml::array* ids = node.as_array();
        if (ids == nullptr) {
            Fail(node, "write a list of assistants or the document as a text");
        }
        Json::Value document(Json::arrayValue);
        for (const toml::node& entry : *ids) {
            std::string id = entry.value_or(std::string());
            const bool farField = !id.empty() && id.back() == '+';
            if (farField) {
                id.pop_back();
            }
            const toml::table* assistant =
                assistants_ == nullptr ? nullptr : (*assistants_)[id].as_table();
            if (assistant == nullptr) {
                Fail(entry, Quoted(id) + " is not in [assistants]");
            }
            Json::Value element;
            element["VAOrder"] = document.size() + 1;
            element["VAId"] = id;
            element["VAAppId"] = (*assistant)["app"].value_or(std::string());
            element["VAName"] = (*assistant)["name"].value_or(id);
            element["VAFFSupport"] = farField;
            document.append(element);
        }
        Json::StreamWriterBuilder builder;
        builder["indentation"] = "";
        return Json::writeString(builder, document);
    }

    std::string file_;
    const toml::table* assistants_ = nullptr;
};

}  // namespace

const char* ToText(Input::Kind kind) {
    for (const KindName& name : KIND_NAMES) {
        if (name.kind == kind) {
            return name.name;
        }
    }
    return "";
}

const Input* Inputs::Find(Input::Kind kind, std::string_view key) const {
    const auto found = std::find_if(inputs.begin(), inputs.end(), [&](const Input& input) {
        return input.kind == kind && input.key == key;
    });
    return found == inputs.end() ? nullptr : &*found;
}

int Inputs::CurrentAssistant() const {
    for (const Input& input : inputs) {
        if (input.isCurrentAssistant) {
            return IndexOf(input);
        }
    }
    return -1;
}

std::string ReadTextFile(const std::string& file) {
    std::error_code error;
    if (!std::filesystem::exists(file, error)) {
        throw NoSuchFile(file + ": there is no such file");
    }
    if (std::filesystem::is_directory(file, error)) {
        throw InputError(file + ": this is a folder; name a file");
    }
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    if (stream.peek() != std::ifstream::traits_type::eof()) {
        text << stream.rdbuf();
    }
    if (!stream.is_open() || stream.bad()) {
        throw Unreadable(file + ": cannot be read: " + std::strerror(errno));
    }
    return text.str();
}

Inputs LoadInputs(const std::string& file) {
    return Reader(file).Read();
}

std::string InputsFile() {
    namespace fs = std::filesystem;
    if (const char* data = std::getenv("VTV_EXPLORER_DATA")) {
        return std::string(data) + "/inputs.toml";
    }
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    const fs::path file =
        fs::weakly_canonical(program.parent_path() / "../share/vtv-explorer/inputs.toml", error);
    if (!fs::exists(file, error)) {
        throw Unreadable(
            file.string() +
            ": is not installed. Install it, or name its folder in VTV_EXPLORER_DATA.");
    }
    return file;
}

}  // namespace explorer
