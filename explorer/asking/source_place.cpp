#include "source_place.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <regex>
#include <vector>

#include "host/page/rules.h"
#include "question.h"

namespace fs = std::filesystem;

namespace explorer {

namespace {

constexpr char SOURCES[] = "si-ready/src";

// "setPassthruEnabled=1" asks the function setPassthruEnabled.
std::string FunctionOf(const Question& question) {
    std::string function = question.function.substr(0, question.function.find('='));
    if (!function.empty()) {
        return function;
    }
    const char* slot = host::SlotOf(question.name.substr(0, question.name.find(':')));
    return slot != nullptr ? slot : "";
}

// The line at which the function is defined.
std::optional<int> LineOf(const std::string& function, const fs::path& source) {
    const std::string call = function + "(";
    const std::regex head("^[A-Za-z_].*\\b" + function + "\\(.*[^;]$");
    std::ifstream stream(source);
    int number = 0;
    for (std::string line; std::getline(stream, line);) {
        ++number;
        if (line.find(call) != std::string::npos && std::regex_search(line, head)) {
            return number;
        }
    }
    return std::nullopt;
}

std::vector<fs::path> Sources() {
    std::vector<fs::path> sources;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(SOURCES, error)) {
        if (entry.path().extension() == ".cpp") {
            sources.push_back(entry.path());
        }
    }
    std::sort(sources.begin(), sources.end());
    return sources;
}

}  // namespace

SourcePlace PlaceOf(const std::string& question, const std::string& library) {
    const Question* asked = FindQuestion(question);
    const std::string function = asked != nullptr ? FunctionOf(*asked) : "";
    if (!function.empty()) {
        for (const fs::path& source : Sources()) {
            if (const std::optional<int> line = LineOf(function, source)) {
                return {source.string(), *line};
            }
        }
    }
    return {library};
}

}  // namespace explorer
