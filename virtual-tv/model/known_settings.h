// The settings keys that the Voice page reads or writes, the features behind it, and what they may
// be, so that people can find, complete and mistype them with help, and an experiment knows what to
// try.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "keys.h"
#include "values.h"

namespace vtv {

// What holds in words: where the value is true or above 0, and where it is not or cannot be read.
struct YesAndNo {
    const char* yes;
    const char* no;
};

struct KnownSetting {
    const char* key;
    const char* type;  // "bool", "int" or "string"
    const char* meaning;
    // What it is known to be, the most usual first; of an assistant's member where it has those.
    std::vector<const char*> values = {};
    bool perAssistant = false;  // a JSON object with one member for each assistant's application id
    std::optional<YesAndNo> words = std::nullopt;
};

const std::vector<KnownSetting>& KnownSettings();
// Null for an unknown key.
const KnownSetting* FindKnownSetting(std::string_view key);

// The known key that one which nobody knows is likely to be a slip of; empty for none.
std::string MeantSetting(const std::string& key);

// Why no setting of this key is of the type, and what to write, in one sentence; empty where one
// may be, as of a key that nobody knows. Whoever takes in settings asks this.
std::string TypeProblem(std::string_view key, std::string_view type);

struct KnownFeature {
    std::string key;  // full key
    std::string type;
    std::string meaning;
    std::vector<const char*> values;  // as above
    std::optional<YesAndNo> words = std::nullopt;

    std::string Name() const { return key.substr(sizeof kFeaturePrefix - 1); }
};

// Models may use no others outside [other-features].
const std::vector<KnownFeature>& KnownFeatures();
// By full key; null for an unknown one.
const KnownFeature* FindKnownFeature(std::string_view key);
// The words of a setting, a feature, or a consent; none for another subject.
std::optional<YesAndNo> WordsOf(std::string_view subject);
// A feature's full key, also from its name without the beginning that all have.
std::string FullFeatureKey(const std::string& name);
// A feature's name without the beginning that all have; any other key as it is.
std::string ShortFeatureName(const std::string& key);
// Throws kUsage for a known feature of another type.
void CheckFeature(const std::string& key, const Value& value);

}  // namespace vtv
