// The inputs of the provider as data: explorer/inputs.toml.
#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace explorer {

// A file that cannot be used. what() has the file, the line and what to write instead.
class InputError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};
// A file that somebody named is not there.
class NoSuchFile : public InputError {
  public:
    using InputError::InputError;
};
// A file cannot be read, or was not installed.
class Unreadable : public InputError {
  public:
    using InputError::InputError;
};

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

inline constexpr std::string_view CURRENT_PLACEHOLDER = "<current>";

struct Input {
    enum class Kind { kSetting, kFeature, kFile, kConsent, kCall, kWrite };
    Kind kind = Kind::kSetting;
    std::string name;  // for people
    std::string key;   // settings key, feature key, path, item or function
    std::string type;  // settings and features: "bool", "int" or "string"
    bool isCurrentAssistant = false;
    std::vector<Value> values;
};

const char* ToText(Input::Kind kind);  // "setting", "feature", ...

inline constexpr std::string_view NAME_PLACEHOLDER = "<<A>>";

// One assistant of a policy.
struct Assistant {
    int order = 0;
    std::string id;
    std::string appId;
    std::string name;
    bool farField = false;
};

// A policy as the TV came to it: what was published, first to last.
struct Policy {
    std::string name;
    std::vector<std::string> published;
};

struct Inputs {
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

// Throws InputError.
Inputs LoadInputs(const std::string& file);
// The file that comes with the explorer: $VTV_EXPLORER_DATA, else found from where the program
// lies.
std::string InputsFile();
// A whole file. Throws InputError.
std::string ReadTextFile(const std::string& file);

}  // namespace explorer
