#include "diary.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string_view>
#include <utility>

#include "virtual-tv/whole_tvs.h"

namespace window {

// One that has ended, and whose consequences are still to come.
struct Diary::OpenPress {
    host::Recorder recorder;
    host::Page before;
};

namespace {

// A word of a shell's command line.
std::string InShell(const std::string& word) {
    const auto isPlain = [](unsigned char c) {
        return std::isalnum(c) != 0 ||
               std::string_view("_-./=:@+,%").find(static_cast<char>(c)) != std::string_view::npos;
    };
    if (!word.empty() && std::all_of(word.begin(), word.end(), isPlain)) {
        return word;
    }
    std::string quoted = "'";
    for (const char c : word) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

std::vector<std::string> WordsOf(const host::Press& press) {
    std::vector<std::string> words = {"press", press.item->name};
    if (press.choose) {
        words.insert(words.end(), {"--choose", std::to_string(*press.choose)});
    }
    if (press.answer != host::Answer::kNone) {
        words.emplace_back(press.answer == host::Answer::kOk ? "--ok" : "--cancel");
    }
    return words;
}

// The name by which vtv finds the TV from here, or its folder.
std::string NameOf(const vtv::Tv& tv) {
    const std::string name = std::filesystem::path(tv.Dir()).filename().string();
    std::error_code ignored;
    return std::filesystem::equivalent(vtv::TvPath(name), tv.Dir(), ignored) ? name : tv.Dir();
}

}  // namespace

void Diary::Listen() {
    reader_ = std::make_unique<vtv::LogReader>(tv_, vtv::LogFilter{}, true);
}

void Diary::EndPress(const Navigator::End& end, const host::Page& before) {
    const auto step = [&] { return host::StepOf(end.press); };
    press_ = std::make_shared<OpenPress>(OpenPress{host::Recorder("", tv_, step), before});
    command_ = CommandLine(WordsOf(end.press), true);
    result_ = host::SeenOf(end.press, end.view, end.session);
    log_.clear();
    launches_.clear();
    failures_.clear();
}

void Diary::HearLog() {
    if (press_ != nullptr && reader_ != nullptr) {
        for (vtv::LogRecord& record : reader_->ReadNew()) {
            log_.push_back(std::move(record));
        }
    }
}

void Diary::Add(const std::vector<vtv::Launch>& launches,
                const std::vector<std::string>& failures) {
    if (press_ != nullptr) {
        launches_.insert(launches_.end(), launches.begin(), launches.end());
        failures_.insert(failures_.end(), failures.begin(), failures.end());
    }
}

void Diary::ClosePress(const host::Page& after) {
    if (const std::shared_ptr<OpenPress> press = std::exchange(press_, nullptr)) {
        host::AddConsequences(press->before, launches_, failures_, after, &*result_);
        press->recorder.Done(*result_);
    }
}

void Diary::Do(std::vector<std::string> words, const host::Recording::Step& step,
               const std::function<void()>& act, bool takesProvider) {
    host::Recorder recorder("", tv_, [&] { return step; });
    act();
    recorder.Done();
    command_ = CommandLine(std::move(words), takesProvider);
}

std::string Diary::CommandLine(std::vector<std::string> words, bool takesProvider) const {
    words.insert(words.end(), {"--tv", NameOf(tv_)});
    if (takesProvider && provider_.File() != host::DefaultProvider()) {
        words.insert(words.end(), {"--provider", provider_.File()});
    }
    std::string line = "vtv";
    for (const std::string& word : words) {
        line += " " + InShell(word);
    }
    return line;
}

}  // namespace window
