#include "command.h"

#include <cstdio>

#include "explorer/engine/coverage.h"
#include "explorer/engine/workers.h"
#include "host/core/toml_writer.h"
#include "program/write_file.h"

namespace explorer {

std::vector<const Question*> QuestionsOf(const std::vector<std::string>& names) {
    std::vector<const Question*> questions;
    if (names.empty()) {
        for (const Question& question : Questions()) {
            questions.push_back(&question);
        }
        return questions;
    }
    for (const std::string& name : names) {
        const std::vector<const Question*> meant = SelectQuestions(name);
        if (meant.empty()) {
            std::string text = "no item, function or question \"" + name + "\". Did you mean ";
            for (const std::string& similar : SimilarNames(name)) {
                text += '"' + similar + "\", ";
            }
            throw CommandError(kExitNoSuch, text + "...?");
        }
        questions.insert(questions.end(), meant.begin(), meant.end());
    }
    return questions;
}

void WriteTextFile(const std::string& file, const std::string& text) {
    const std::string problem = program::WriteFile(file, text);
    if (!problem.empty()) {
        throw CommandError(kExitTrouble, problem);
    }
}

void WriteScenarioFile(const std::string& file, const std::string& text) {
    try {
        host::RequireToml(text);
    } catch (const std::runtime_error& error) {
        throw CommandError(kExitTrouble, file + ": " + error.what());
    }
    WriteTextFile(file, text);
}

void ReportUnknownKeys(const std::set<std::string>& keys, const Inputs& inputs) {
    for (const std::string& key : keys) {
        std::fprintf(
            stderr,
            "vtv explore: the provider asks for %s, which %s does not name: add an [[input]] "
            "with the values that it can take\n",
            key.c_str(), inputs.file.c_str());
    }
}

void ReportRate(bool wanted) {
    if (!wanted) {
        return;
    }
    std::fprintf(
        stderr, "%s questions in %.1f s: %s a second\n", BigNumber(TotalRuns()).ToString().c_str(),
        TotalSeconds(),
        BigNumber(static_cast<std::uint64_t>(static_cast<double>(TotalRuns()) / TotalSeconds()))
            .ToString()
            .c_str());
}

}  // namespace explorer
