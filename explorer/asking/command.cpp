#include "command.h"

#include <cstdio>

#include "explorer/engine/coverage.h"
#include "explorer/tv/lazy_tv.h"
#include "host/core/toml_writer.h"
#include "program/write_file.h"
#include "virtual-tv/model/json_text.h"
#include "virtual-tv/model/spelling.h"

namespace explorer {

std::vector<const Question*> QuestionsOf(const std::vector<std::string>& names,
                                         const std::vector<Question>& all) {
    std::vector<const Question*> questions;
    if (names.empty()) {
        for (const Question& question : all) {
            questions.push_back(&question);
        }
        return questions;
    }
    for (const std::string& name : names) {
        const std::vector<const Question*> meant = SelectQuestions(name, all);
        if (meant.empty()) {
            throw CommandError(kExitNoSuch, "no item, function or question \"" + name + "\"." +
                                                vtv::DidYouMean(name, QuestionNames()));
        }
        questions.insert(questions.end(), meant.begin(), meant.end());
    }
    return questions;
}

std::vector<const Question*> ShareOf(const std::vector<const Question*>& questions,
                                     const Shard& shard) {
    std::vector<const Question*> share;
    for (std::size_t i = 0; i < questions.size(); ++i) {
        if (shard.Has(static_cast<int>(i))) {
            share.push_back(questions[i]);
        }
    }
    return share;
}

Shard ParseShard(const std::string& text) {
    Shard shard;
    char rest = 0;
    if (std::sscanf(text.c_str(), "%d/%d%c", &shard.index, &shard.count, &rest) != 2 ||
        shard.count < 1 || shard.index < 1 || shard.index > shard.count) {
        throw CommandError(kExitUsage,
                           "--shard " + text + ": write I/N with I from 1 to N, as in 2/8");
    }
    --shard.index;
    return shard;
}

void PrintDocument(const std::string& text, Format format) {
    if (format == Format::kText || format == Format::kJson) {
        program::Print(text, format == Format::kText ? program::Form::kText : program::Form::kJson);
    } else {
        program::Print(program::Shown(text, program::Form::kText), program::Form::kExact);
    }
}

Format FindingsFormat(const std::string& name) {
    return name == "json"     ? Format::kJson
           : name == "sarif"  ? Format::kSarif
           : name == "github" ? Format::kGithub
                              : Format::kText;
}

void PrintFindings(Format format, const program::Findings& findings) {
    if (format == Format::kSarif) {
        program::Print(vtv::PrettyJson(program::Sarif(findings)) + "\n", program::Form::kJson);
    } else if (format == Format::kGithub) {
        program::Print(program::Annotations(findings), program::Form::kText);
    }
}

void WriteTextFile(const std::string& file, const std::string& text, Format format) {
    const program::Form form =
        format == Format::kJson ? program::Form::kJson : program::Form::kText;
    const std::string problem = program::WriteFile(file, program::Shown(text, form));
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

Json::Value JsonList(const std::vector<std::string>& texts) {
    Json::Value array(Json::arrayValue);
    for (const std::string& text : texts) {
        array.append(text);
    }
    return array;
}

void ReportInterruption() {
    if (IsInterrupted()) {
        std::fputs("vtv explore: interrupted; what was found so far is shown\n", stderr);
    }
}

void ReportUnknownKeys(const std::set<std::string>& keys, const Inputs& inputs) {
    for (const std::string& key : keys) {
        if (key.rfind(Tv::TOO_MUCH, 0) == 0) {
            std::fprintf(stderr,
                         "vtv explore: the provider does %s: the rest was not seen, and nothing "
                         "is proven\n",
                         key.c_str());
            continue;
        }
        std::fprintf(
            stderr,
            "vtv explore: the provider asks for %s, which %s does not name: add an [[input]] "
            "with the values that it can take, or let the provider do without\n",
            key.c_str(), inputs.file.c_str());
    }
}

void ReportRate(bool quiet, std::uint64_t count, const char* what) {
    if (!quiet) {
        const double rate = static_cast<double>(count) / TotalSeconds();
        std::fprintf(stderr, "%s %s in %.1f s: %s a second\n", BigNumber(count).ToString().c_str(),
                     what, TotalSeconds(),
                     BigNumber(static_cast<std::uint64_t>(rate)).ToString().c_str());
    }
}

}  // namespace explorer
