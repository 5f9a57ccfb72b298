#include "key_script.h"

#include <cstdlib>
#include <sstream>

#include "keyboard.h"
#include "virtual-tv/model/error.h"
#include "virtual-tv/model/text_file.h"

namespace window {

namespace {

constexpr double kLongestWait = 600;

constexpr struct {
    const char* word;
    KeyStep::What what;
} kWords[] = {
    {"wait", KeyStep::What::kWait},
    {"until", KeyStep::What::kUntil},
    {"gone", KeyStep::What::kGone},
    {"picture", KeyStep::What::kPicture},
};

[[noreturn]] void Wrong(const std::string& where, const std::string& text) {
    throw vtv::Error(vtv::ErrorKind::kUsage, where + ": " + text);
}

std::string Trimmed(const std::string& text) {
    const size_t first = text.find_first_not_of(" \t\r");
    const size_t last = text.find_last_not_of(" \t\r");
    return first == std::string::npos ? "" : text.substr(first, last - first + 1);
}

double Seconds(const std::string& text, const std::string& where) {
    char* end = nullptr;
    const double seconds = std::strtod(text.c_str(), &end);
    if (end == text.c_str() || *end != '\0' || !(seconds >= 0) || seconds > kLongestWait) {
        Wrong(where, "wait: \"" + text + "\" is no number of seconds from 0 to 600.");
    }
    return seconds;
}

}  // namespace

std::vector<KeyStep> ReadStep(const std::string& line, const std::string& where) {
    const std::string text = Trimmed(line);
    if (text.empty() || text.front() == '#') {
        return {};
    }
    const size_t space = text.find(' ');
    const std::string word = text.substr(0, space);
    const std::string rest = space == std::string::npos ? "" : Trimmed(text.substr(space));
    for (const auto& known : kWords) {
        if (word != known.word) {
            continue;
        }
        if (rest.empty()) {
            Wrong(where, word + ": say what for.");
        }
        const bool waits = known.what == KeyStep::What::kWait;
        return {{known.what, waits ? "" : rest, waits ? Seconds(rest, where) : 0, where}};
    }
    if (text == "show") {
        return {{KeyStep::What::kShow, "", 0, where}};
    }
    const std::optional<std::string> key = KeyNameOf(text);
    if (!key) {
        Wrong(where, "\"" + text + "\" is no key. There are: " + NamesOfKeys() +
                         "; and show, wait, until, gone, picture.");
    }
    return {{KeyStep::What::kKey, *key, 0, where}};
}

std::vector<KeyStep> ReadSteps(const std::string& file) {
    std::vector<KeyStep> steps;
    std::istringstream text(vtv::ReadTextFile(file));
    int number = 0;
    for (std::string line; std::getline(text, line);) {
        for (KeyStep& step : ReadStep(line, file + ":" + std::to_string(++number))) {
            steps.push_back(std::move(step));
        }
    }
    return steps;
}

}  // namespace window
