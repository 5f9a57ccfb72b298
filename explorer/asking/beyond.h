// Whether the inputs name every value that matters: others are drawn, and each must be answered as
// one that is named, in every state of the rest of the TV.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "command.h"
#include "question.h"
#include "records.h"

namespace explorer {

// Numbers and texts that an input does not name, near those that it does and far from them: the
// same ones each time. None for what can only be yes or no, or the result of a call.
std::vector<Value> DrawnValues(const Input& input, int count);

struct AnswersBeyond {
    // A line each for people: values that are answered unlike every named one.
    std::vector<std::string> troubles;
    // Equal for providers that answer alike: by question, policy, and the value in words.
    std::map<std::array<std::string, 3>, std::uint64_t> answers;
};

// Draws options.beyond values for each input that the questions read. Throws host::ProviderError.
AnswersBeyond AskBeyond(const Inputs& inputs, const std::vector<const Question*>& questions,
                        const CommonOptions& options, const RecordOptions& records = {});

}  // namespace explorer
