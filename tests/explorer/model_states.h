// The states of the dull model, made of what the explorer decided.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "explorer/tv/inputs.h"
#include "model/page_model.h"

// Keeps one state of the model in step with a path: an input that the path decided has its value,
// every other one has the value of its filling.
class StateFiller {
  public:
    // `filling` chooses the values of inputs that were not read; 0 is the usual value of each.
    StateFiller(const explorer::Inputs& inputs, const explorer::Policy& policy, int filling);

    // Inputs that the model knows nothing of.
    std::vector<std::string> Unknown() const;
    // The value of each input by number, -1 where the path decided nothing, and the texts of those
    // that were decided.
    const model::State& At(const std::vector<int>& values, const std::vector<std::string>& texts);

  private:
    // The value's text with the current assistant put in, which comes before all documents.
    std::string WithCurrent(const explorer::Value& value) const;
    void Apply(const explorer::Input& input, const explorer::Value& value, const std::string& text);

    const explorer::Inputs& inputs_;
    const int filling_;
    model::State state_;
    std::vector<int> values_;
    std::vector<std::string> texts_;
    std::unordered_map<std::string, model::Entries> entries_;
};
