// The inputs of the provider as data: explorer/inputs.toml.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/call_table.h"
#include "virtual-tv/model/values.h"

namespace explorer {

// Names and results of the platform's calls that several parts must spell alike.
namespace keys {
inline constexpr char LOGIN[] = "sso_get_login_state";
// What reading a setting returns that the TV does not have. Not constexpr: with
// -fsanitize=undefined GCC takes no comparison with null for constant.
inline const int FAILED = platform::FailureOf("vconf_get_int");
}  // namespace keys

// What a platform call answers.
struct Value {
    enum class Kind { kNumber, kText, kNull, kFails };
    Kind kind = Kind::kNumber;
    int number = 0;     // kNumber: also a boolean; kFails: the result of the call
    std::string text;   // kText
    std::string words;  // how tables name it
    // Settings only, for a scenario: what the store holds. Empty: nothing.
    std::string storedType;
    bool hasPlaceholder = false;  // the text names the current assistant
    bool isOdd = false;           // no user's TV has it
};

// No such setting, or a call that fails.
Value MissingValue(int result = keys::FAILED);
Value NumberValue(int number, const char* storedType);
Value TextValue(const std::string& text);
// What a store or the features of a model hold.
Value StoredValue(const vtv::Value& stored);

inline constexpr std::string_view CURRENT_PLACEHOLDER = "<current>";
// Answers the always-on-voice mode of the current assistant.
inline constexpr char MODE_CALL[] = "AOVSystemDataGetAOVMode";

struct Input {
    enum class Kind { kSetting, kFeature, kFile, kConsent, kCall, kWrite };
    static constexpr std::size_t KINDS = 6;
    Kind kind = Kind::kSetting;
    std::string name;  // for people
    std::string key;   // settings key, feature key, path, item or function
    std::string type;  // settings and features: "bool", "int" or "string"
    bool isCurrentAssistant = false;
    std::vector<Value> values;
    std::vector<Value> others;  // that are named as well, but not tried
};

const char* ToText(Input::Kind kind);  // "setting", "feature", ...

inline constexpr std::string_view NAME_PLACEHOLDER = "<<A>>";

// A policy as the TV came to it: what was published, first to last.
struct Policy {
    std::string name;
    std::vector<std::string> published;
};

struct Inputs {
    static constexpr std::size_t MOST = 256;
    std::string file;
    std::vector<Input> inputs;
    std::vector<Policy> policies;
    // Text ids whose translations have the placeholder for a name.
    std::vector<std::string> textsWithName;

    // Null when there is none.
    const Input* Find(Input::Kind kind, std::string_view key) const;
    int IndexOf(const Input& input) const { return static_cast<int>(&input - inputs.data()); }
    // The input that names the current assistant; -1 without one.
    int CurrentAssistant() const;
};

// The policy that these documents are, by its place; added when it is none of the inputs'.
int PlaceOfPolicy(Inputs& inputs, const std::vector<std::string>& published);

// With `full` also the values and policies that the file marks so: they cost more than they tell.
// Throws vtv::Error.
Inputs LoadInputs(const std::string& file, bool full = false);
// The file that comes with the explorer: $VTV_EXPLORER_DATA, else found from where the program
// lies.
std::string InputsFile();

}  // namespace explorer
