#include "scenario_judge.h"

#include <libintl.h>

namespace host {

std::string InQuotes(const std::string& text) {
    return "\"" + text + "\"";
}

std::string List(const std::vector<std::string>& texts) {
    std::string list;
    for (const std::string& text : texts) {
        list += (list.empty() ? "" : ", ") + InQuotes(text);
    }
    return "[" + list + "]";
}

std::string InWords(const std::string& ids) {
    const size_t end = ids.find_first_of(" \n");
    const std::string word = ids.substr(0, end);
    std::string text = word.empty() ? "" : dgettext("si-ready", word.c_str());
    if (end == std::string::npos) {
        return text;
    }
    const std::string rest = InWords(ids.substr(end + 1));
    const size_t name = text.find("<<A>>");
    return name != std::string::npos ? text.replace(name, 5, rest) : text + ids[end] + rest;
}

std::vector<std::string> InWords(std::vector<std::string> texts) {
    for (std::string& text : texts) {
        text = InWords(text);
    }
    return texts;
}

Expectation Together(std::vector<Expectation> all) {
    return [all = std::move(all)](Judge& judge) {
        for (const Expectation& one : all) {
            one(judge);
        }
    };
}

void Judge::Fail(int line, const std::string& text) {
    failures_.push_back(file_ + ":" + std::to_string(line) + ": " + text);
}

void Judge::Same(int line, const std::string& what, const std::string& wanted,
                 const std::string& found) {
    if (wanted != found) {
        Fail(line, what + ": expected " + InQuotes(wanted) + ", found " + InQuotes(found));
    }
}

void Judge::SameList(int line, const std::string& what, const std::vector<std::string>& wanted,
                     const std::vector<std::string>& found) {
    if (wanted != found) {
        Fail(line, what + ": expected " + List(wanted) + ", found " + List(found));
    }
}

}  // namespace host
