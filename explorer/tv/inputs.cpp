#include "inputs.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "explorer/engine/coverage.h"
#include "virtual-tv/model/known_settings.h"
#include "virtual-tv/model/policy.h"
#include "virtual-tv/model/toml_reader.h"
#include "virtual-tv/model/tv_model.h"

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

bool IsType(const std::string& text) {
    return text == "bool" || text == "int" || text == "string";
}

class Reader : private vtv::TomlReader {
  public:
    Reader(const std::string& file, bool full) : TomlReader(file), full_(full) {}

    Inputs Read() {
        const toml::table root = ReadFile();
        CheckKeys(root, "here", {"input", "assistants", "policy", "texts"});
        Inputs inputs;
        inputs.file = File();
        for (const toml::table* table : Tables(root, "input")) {
            inputs.inputs.push_back(ReadInput(*table, inputs));
        }
        assistants_ = Table(root, "assistants");
        CheckAssistants();
        for (const toml::table* table : Tables(root, "policy")) {
            Policy policy = ReadPolicy(*table);
            if (full_ || !Bool(*table, "full", false)) {
                inputs.policies.push_back(std::move(policy));
            }
        }
        if (const toml::table* texts = Table(root, "texts")) {
            CheckKeys(*texts, "in [texts]", {"with-name"});
            inputs.textsWithName = Strings(*texts, "with-name");
        }
        if (inputs.inputs.size() > Inputs::MOST) {
            throw vtv::Error(vtv::ErrorKind::kUsage, File() + ": has more than " +
                                                         std::to_string(Inputs::MOST) +
                                                         " inputs; leave some out");
        }
        if (inputs.inputs.empty() || inputs.policies.empty()) {
            throw vtv::Error(vtv::ErrorKind::kUsage,
                             File() + ": needs at least one [[input]] and one [[policy]]");
        }
        return inputs;
    }

  private:
    void CheckAssistants() const {
        if (assistants_ == nullptr) {
            return;
        }
        for (const auto& [id, node] : *assistants_) {
            const toml::table& own = *Table(*assistants_, std::string(id.str()).c_str());
            CheckKeys(own, "in an assistant", {"app", "name"});
            RequiredString(own, "app", "an assistant");
            String(own, "name", "");
        }
    }

    Input ReadInput(const toml::table& table, const Inputs& before) const {
        std::vector<std::string> known = {"name", "type", "current-assistant", "values", "full"};
        Input input;
        int kinds = 0;
        for (const KindName& kind : KIND_NAMES) {
            known.emplace_back(kind.name);
            if (table.contains(kind.name)) {
                input.kind = kind.kind;
                input.key = RequiredString(table, kind.name, "an input");
                ++kinds;
            }
        }
        CheckKeys(table, "in an input", known);
        if (kinds != 1) {
            Fail(table, "an input is one of: setting, feature, file, consent, call, write");
        }
        if (before.Find(input.kind, input.key) != nullptr) {
            Fail(table, Quoted(input.key) + " is here twice");
        }
        input.name = String(table, "name", input.key);
        input.type = TypeOf(table, input);
        input.isCurrentAssistant = Bool(table, "current-assistant", false);
        ReadValues(table, "values", input);
        const std::size_t usual = input.values.size();
        ReadValues(table, "full", input);
        if (usual == 0 || input.values.size() > Coverage::MAX_VALUES) {
            Fail(table, Quoted(input.name) + " needs values = [...], with full = [...] 1 to " +
                            std::to_string(Coverage::MAX_VALUES) + " of them");
        }
        if (!full_) {
            input.others.assign(input.values.begin() + static_cast<std::ptrdiff_t>(usual),
                                input.values.end());
            input.values.resize(usual);
        }
        return input;
    }

    void ReadValues(const toml::table& table, const char* name, Input& input) const {
        if (const toml::array* values = List(table, name)) {
            for (const toml::node& node : *values) {
                input.values.push_back(ReadValue(node, input));
            }
        }
    }

    // What every TV knows has the type that every TV gives it.
    std::string TypeOf(const toml::table& table, const Input& input) const {
        const vtv::KnownSetting* setting =
            input.kind == Input::Kind::kSetting ? vtv::FindKnownSetting(input.key) : nullptr;
        const vtv::KnownFeature* feature =
            input.kind == Input::Kind::kFeature ? vtv::FindKnownFeature(input.key) : nullptr;
        const std::string known = setting != nullptr   ? setting->type
                                  : feature != nullptr ? feature->type
                                                       : "";
        std::string type = String(table, "type", known);
        if (!known.empty() && type != known) {
            Fail(table, Quoted(input.name) + " is of type " + known + ", not " + type);
        }
        const bool isTyped =
            input.kind == Input::Kind::kSetting || input.kind == Input::Kind::kFeature;
        if (isTyped && !IsType(type)) {
            Fail(table, Quoted(input.name) + " needs type = \"bool\", \"int\" or \"string\"");
        }
        return type;
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
        CheckKeys(table, "in a value",
                  {"value", "text", "fails", "missing", "stored", "null", "as", "odd"});
        const std::size_t notes = (table.contains("as") ? 1 : 0) + (table.contains("odd") ? 1 : 0);
        if (const toml::node* code = table.get("fails")) {
            ReadFailure(*code, value);
        } else if (Bool(table, "missing", false)) {
            value = MissingValue();
        } else if (table.contains("stored")) {
            value = MissingValue();
            value.storedType = OtherType(table, input);
            value.words = "of type " + value.storedType;
        } else if (Bool(table, "null", false)) {
            value.kind = Value::Kind::kNull;
            value.words = "null";
        } else if (const toml::node* text = table.get("text")) {
            ReadPlainValue(*text, input, value);
        } else if (const toml::node* plain = table.get("value")) {
            ReadPlainValue(*plain, input, value);
        } else {
            FailAsValue(table);
        }
        if (table.size() != notes + 1) {
            FailAsValue(table);
        }
        value.words = String(table, "as", value.words);
        value.isOdd = Bool(table, "odd", false);
    }

    [[noreturn]] void FailAsValue(const toml::table& table) const {
        Fail(table,
             "a value is one of { value = ... }, { text = ... }, { fails = N }, "
             "{ missing = true }, { stored = \"type\" } and { null = true }");
    }

    void ReadFailure(const toml::node& code, Value& value) const {
        if (!code.is_integer()) {
            Fail(code, "\"fails\" must be the result of the call, a whole number.");
        }
        value.kind = Value::Kind::kFails;
        value.number = Integer(code);
        value.words =
            value.number == keys::FAILED ? "fails" : "fails with " + std::to_string(value.number);
    }

    // What is stored where the input's own type is looked for.
    std::string OtherType(const toml::table& table, const Input& input) const {
        const std::string type = String(table, "stored", "");
        if (!IsType(type) || type == input.type) {
            Fail(table, "stored = " + Quoted(type) +
                            " must be the one of bool, int and string that the input is not");
        }
        return type;
    }

    void ReadPlainValue(const toml::node& node, const Input& input, Value& value) const {
        value = StoredValue(Scalar(node, input.name));
        if (value.kind == Value::Kind::kText && value.text.empty()) {
            value.words = "empty";
        } else if (input.kind == Input::Kind::kFile && value.storedType == "bool") {
            value.words = value.number != 0 ? "yes" : "no";
        }
        if (!input.type.empty() && value.storedType != input.type) {
            Fail(node,
                 Quoted(input.name) + " is of type " + input.type + ", not " + value.storedType);
        }
    }

    Policy ReadPolicy(const toml::table& table) const {
        CheckKeys(table, "in a policy", {"name", "published", "full"});
        Policy policy;
        policy.name = RequiredString(table, "name", "a policy");
        const toml::array* published = List(table, "published");
        if (published == nullptr) {
            Fail(table, "a policy needs published = [...]");
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
        std::vector<vtv::Assistant> list;
        for (const toml::node& entry : *ids) {
            vtv::Assistant assistant;
            assistant.order = static_cast<int>(list.size()) + 1;
            if (!entry.is_string()) {
                Fail(entry, "an assistant is its id in quotes, \"ID\" or \"ID+\"");
            }
            assistant.id = entry.as_string()->get();
            assistant.farField = !assistant.id.empty() && assistant.id.back() == '+';
            if (assistant.farField) {
                assistant.id.pop_back();
            }
            const toml::table* own =
                assistants_ == nullptr ? nullptr : Table(*assistants_, assistant.id.c_str());
            if (own != nullptr) {
                assistant.appId = RequiredString(*own, "app", "an assistant");
                assistant.name = String(*own, "name", assistant.id);
            } else if (const auto* known = vtv::FindKnownAssistant(assistant.id)) {
                assistant.appId = known->appId;
                assistant.name = known->name;
            } else {
                Fail(entry, Quoted(assistant.id) + " is not in [assistants]");
            }
            list.push_back(assistant);
        }
        return vtv::WritePolicy(list);
    }

    const bool full_;
    const toml::table* assistants_ = nullptr;
};

}  // namespace

Value MissingValue(int result) {
    Value value;
    value.kind = Value::Kind::kFails;
    value.number = result;
    value.words = "missing";
    return value;
}

Value NumberValue(int number, const char* storedType) {
    Value value;
    value.number = number;
    value.words = std::to_string(number);
    value.storedType = storedType;
    return value;
}

Value TextValue(const std::string& text) {
    Value value;
    value.kind = Value::Kind::kText;
    value.text = text;
    value.words = text;
    value.storedType = "string";
    return value;
}

Value StoredValue(const vtv::Value& stored) {
    if (const std::string* text = std::get_if<std::string>(&stored)) {
        return TextValue(*text);
    }
    const bool* flag = std::get_if<bool>(&stored);
    Value value = NumberValue(flag != nullptr ? (*flag ? 1 : 0) : std::get<int>(stored),
                              vtv::TypeName(stored));
    value.words = vtv::ToText(stored);
    return value;
}

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

int PlaceOfPolicy(Inputs& inputs, const std::vector<std::string>& published) {
    const auto known =
        std::find_if(inputs.policies.begin(), inputs.policies.end(),
                     [&](const Policy& policy) { return policy.published == published; });
    const auto place = known - inputs.policies.begin();
    if (known == inputs.policies.end()) {
        inputs.policies.push_back({"as it was published", published});
    }
    return static_cast<int>(place);
}

int Inputs::CurrentAssistant() const {
    for (const Input& input : inputs) {
        if (input.isCurrentAssistant) {
            return IndexOf(input);
        }
    }
    return -1;
}

Inputs LoadInputs(const std::string& file, bool full) {
    return Reader(file, full).Read();
}

std::string InputsFile() {
    namespace fs = std::filesystem;
    if (const char* data = std::getenv("VTV_EXPLORER_DATA")) {
        return std::string(data) + "/inputs.toml";
    }
    const fs::path file = fs::weakly_canonical(vtv::InstalledDataDir() + "/explorer/inputs.toml");
    std::error_code error;
    if (!fs::exists(file, error)) {
        throw vtv::Error(
            vtv::ErrorKind::kPlatform,
            file.string() +
                ": is not installed. Install it, or name its folder in VTV_EXPLORER_DATA.");
    }
    return file;
}

}  // namespace explorer
