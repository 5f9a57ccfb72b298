#include "json_text.h"

#include <algorithm>
#include <cstdio>
#include <memory>

#include "error.h"

namespace vtv {

namespace {

// The reader throws the same of a text that is nested deeper than it reads and of memory that has
// run out. What has fewer brackets than that cannot be nested so deep.
void RequireNesting(const std::string& text, const std::string& name) {
    constexpr std::ptrdiff_t kDeepest = 1000;
    if (std::count_if(text.begin(), text.end(), [](char c) { return c == '[' || c == '{'; }) <
        kDeepest) {
        throw Error(ErrorKind::kPlatform, name + ": cannot be read: out of memory.");
    }
}

}  // namespace

bool ParseJson(const std::string& text, Json::Value* root) {
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    std::string errors;
    try {
        return reader->parse(text.data(), text.data() + text.size(), root, &errors);
    } catch (const Json::Exception&) {
        RequireNesting(text, "a JSON text");
        return false;
    }
}

namespace {

std::string WriteJson(const Json::Value& json, const char* indentation) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = indentation;
    builder["emitUTF8"] = true;
    return Json::writeString(builder, json);
}

}  // namespace

std::string CompactJson(const Json::Value& json) {
    return WriteJson(json, "");
}

std::string PrettyJson(const Json::Value& json) {
    return WriteJson(json, "  ");
}

JsonText::JsonText(std::string file, std::string text)
    : file_(std::move(file)), text_(std::move(text)) {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["strictRoot"] = false;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    std::string complaints;
    try {
        if (!reader->parse(text_.data(), text_.data() + text_.size(), &root_, &complaints)) {
            NoteProblem(complaints);
        }
    } catch (const Json::Exception& exception) {
        RequireNesting(text_, file_);
        problem_ = file_ + ":1:1: not JSON: " + exception.what();
    }
}

// "* Line 3, Column 18\n  Missing ',' ...\n", once or more often.
void JsonText::NoteProblem(const std::string& complaints) {
    std::string first = complaints;
    int column = 1;
    if (std::sscanf(first.c_str(), "* Line %d, Column %d", &problemLine_, &column) == 2) {
        first.erase(0, std::min(first.size(), first.find('\n') + 1));
    }
    std::string what = first.substr(0, first.find('\n'));
    what.erase(0, std::min(what.size(), what.find_first_not_of(' ')));
    what.erase(what.find_last_not_of(" .") + 1);
    problem_ = file_ + ":" + std::to_string(problemLine_) + ":" + std::to_string(column) +
               ": not JSON: " + (what.empty() ? "it ends too early" : what);
}

std::string JsonText::At(const Json::Value& part, const std::string& what) const {
    const std::string before = Before(part);
    const std::size_t newline = before.rfind('\n');
    const std::size_t column =
        newline == std::string::npos ? before.size() + 1 : before.size() - newline;
    return file_ + ":" + std::to_string(LineOf(part)) + ":" + std::to_string(column) + ": " + what;
}

int JsonText::LineOf(const Json::Value& part) const {
    const std::string before = Before(part);
    return static_cast<int>(std::count(before.begin(), before.end(), '\n')) + 1;
}

std::string JsonText::Before(const Json::Value& part) const {
    return text_.substr(0, static_cast<std::size_t>(part.getOffsetStart()));
}

}  // namespace vtv
