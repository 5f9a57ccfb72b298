// Typed reading of a scenario. What does not fit is noted, with file, line and what to write
// instead, and reading goes on, so that everything is told at once.
#pragma once

#include <toml++/toml.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "host/page/page.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

inline int LineOf(const toml::node& node) {
    return static_cast<int>(node.source().begin.line);
}

// How a scenario says that what nobody knows is meant.
inline constexpr char kIfMeant[] = " If it is meant: \"force = true\" in the step.";

// " Did you mean X?" for the word that comes closest; "" when none comes close.
std::string DidYouMean(std::string_view word, const std::vector<std::string>& known);

class ScenarioReader {
  public:
    explicit ScenarioReader(std::string file) : file_(std::move(file)) {}

    // The TV that is played on. Without one, because the scenario's model is broken, nothing that
    // depends on it is checked.
    std::optional<vtv::Model> model;

    void Problem(const toml::source_region& where, const std::string& text);
    void Problem(const toml::node& where, const std::string& text);
    // As it stands, for what is wrong in another file.
    void ForeignProblem(const toml::node& where, const std::string& text);
    // In the order of the lines.
    std::vector<std::string> Problems() const;

    // Each notes a problem for what is no such value, and then returns a neutral one. `name` is the
    // member's, for the text.
    bool Flag(const toml::node& node, const std::string& name);
    int Number(const toml::node& node, const std::string& name);
    std::string Text(const toml::node& node, const std::string& name);
    std::vector<std::string> Texts(const toml::node& node, const std::string& name);
    // A text or a list of at least one, none of them empty.
    std::vector<std::string> Some(const toml::node& node, const std::string& name);
    std::string OneOf(const toml::node& node, const std::string& name,
                      const std::vector<std::string>& words);
    // true, false, a whole number or a text.
    vtv::Value Scalar(const toml::node& node, const std::string& name);
    // The same, or a list or table, which becomes JSON text.
    vtv::Value SettingValue(const toml::node& node, const std::string& name);
    const toml::table& Table(const toml::node& node, const std::string& name);

    // What nobody knows is taken for a slip unless it is forced: of a settings key one that comes
    // close to a known one, and a value of another type than it is known to have.
    void CheckSetting(const toml::key& key, const toml::node& value, const std::string& type,
                      bool isForced);
    std::vector<std::string> SettingKeys(const toml::node& node, const std::string& name,
                                         bool isForced);
    // An entry of the TV's raw state; without a value only its name.
    void CheckState(const toml::key& key, const std::optional<vtv::Value>& value, bool isForced);
    // Of an application that the TV does not have; `otherwise` tells what else to write.
    void CheckApplication(const toml::source_region& where, const std::string& id,
                          const std::string& otherwise);
    // The full key of a feature, by short name or full key.
    std::string Feature(const toml::source_region& where, const std::string& name);
    vtv::Value FeatureValue(const toml::node& node, const std::string& key);
    std::vector<std::string> OwnerFiles(const toml::node& node, const std::string& name);
    std::vector<std::string> Applications(const toml::node& node, const std::string& name);
    // Null for what is no item.
    const Item* ItemNamed(const toml::source_region& where, const std::string& name);
    // Runs what throws vtv::Error for a wrong value, and notes what it says.
    template <typename Check>
    void Noting(const toml::source_region& where, const Check& check) {
        try {
            check();
        } catch (const vtv::Error& error) {
            Problem(where, error.what());
        }
    }

    // Reads the members of a table in the order of the rows: each row has the `name` of a member,
    // and `read` is called with those that are there. Members without a row are noted.
    template <typename Rows, typename Read>
    void Members(const toml::table& table, const std::string& where, const Rows& rows,
                 const Read& read) {
        std::vector<std::string> names;
        for (const auto& row : rows) {
            names.emplace_back(row.name);
        }
        NoteUnknown(table, where, names);
        for (const auto& row : rows) {
            if (const toml::node* node = table.get(row.name)) {
                read(row, *node);
            }
        }
    }
    void NoteUnknown(const toml::table& table, const std::string& where,
                     const std::vector<std::string>& known);

  private:
    void CheckSettingKey(const toml::source_region& where, const std::string& key, bool isForced);
    bool Require(bool fits, const toml::node& node, const std::string& name, const char* wanted);

    std::string file_;
    std::multimap<int, std::string> problems_;  // by line
};

}  // namespace host
