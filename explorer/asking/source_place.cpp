#include "source_place.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <optional>
#include <regex>
#include <vector>

#include "question.h"

namespace fs = std::filesystem;

namespace explorer {

namespace {

constexpr char SOURCES[] = "si-ready/src";

// The table's slot that a host asks.
const char* SlotOf(Asks kind) {
    switch (kind) {
        case Asks::kTitle:
            return "get_display_name";
        case Asks::kHelp:
            return "get_help_text";
        case Asks::kValue:
            return "get_int";
        case Asks::kChoices:
            return "get_list_items";
        case Asks::kConfirmation:
            return "get_messagebox_info";
        case Asks::kReason:
            return "get_disable_text";
        case Asks::kPopup:
            return "get_disablepopup_info";
        case Asks::kWrite:
        case Asks::kPress:
            return "set_int";
        case Asks::kProperties:
            return "provider_property";
        case Asks::kVisible:
        case Asks::kEnabled:
        case Asks::kOtherTypes:
        case Asks::kFunction:
            break;
    }
    return "";
}

// "setPassthruEnabled=1" asks the function setPassthruEnabled.
std::string FunctionOf(const Question& question) {
    const std::string function = question.function.substr(0, question.function.find('='));
    return function.empty() ? SlotOf(question.kind) : function;
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
