#include "policy_fault.h"

#include <json/json.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <memory>
#include <set>

namespace explorer {

namespace {

class Document {
  public:
    Document(const std::string& file, const std::string& text) : file_(file), text_(text) {}

    std::string Fault() const {
        Json::Value root;
        std::string fault = SyntaxFault(root);
        if (!fault.empty()) {
            return fault;
        }
        if (!root.isArray()) {
            return At(root, "a policy is a list of assistants: [ ... ]");
        }
        std::set<int> orders;
        for (const Json::Value& assistant : root) {
            std::string wrong = MemberFault(assistant);
            if (!wrong.empty()) {
                return wrong;
            }
            const Json::Value& order = assistant["VAOrder"];
            if (!orders.insert(order.asInt()).second) {
                return At(order, "\"VAOrder\" " + order.asString() + " is here twice");
            }
        }
        const int count = static_cast<int>(root.size());
        for (const Json::Value& assistant : root) {
            const Json::Value& order = assistant["VAOrder"];
            if (order.asInt() < 1 || order.asInt() > count) {
                return At(order, "\"VAOrder\" must count from 1 to " + std::to_string(count));
            }
        }
        return "";
    }

  private:
    // Stricter than a TV, which takes comments, trailing commas and anything behind the document.
    std::string SyntaxFault(Json::Value& root) const {
        Json::CharReaderBuilder builder;
        Json::CharReaderBuilder::strictMode(&builder.settings_);
        builder["strictRoot"] = false;
        const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
        std::string errors;
        try {
            if (reader->parse(text_.data(), text_.data() + text_.size(), &root, &errors)) {
                return "";
            }
        } catch (const Json::Exception& exception) {
            return file_ + ":1:1: " + exception.what();
        }
        // "* Line 3, Column 18\n  Missing ',' ...\n", once or more often.
        int line = 1;
        int column = 1;
        if (std::sscanf(errors.c_str(), "* Line %d, Column %d", &line, &column) == 2) {
            errors.erase(0, std::min(errors.size(), errors.find('\n') + 1));
        }
        std::string what = errors.substr(0, errors.find('\n'));
        what.erase(0, std::min(what.size(), what.find_first_not_of(' ')));
        what.erase(what.find_last_not_of(" .") + 1);
        return file_ + ":" + std::to_string(line) + ":" + std::to_string(column) +
               ": not JSON: " + (what.empty() ? "it ends too early" : what);
    }

    std::string MemberFault(const Json::Value& assistant) const {
        if (!assistant.isObject()) {
            return At(assistant, "an assistant is an object: { \"VAOrder\": 1, ... }");
        }
        const auto wrong = [&](const char* member, const std::string& must) {
            return At(
                assistant.isMember(member) ? assistant[member] : assistant,
                '"' + std::string(member) +
                    (assistant.isMember(member) ? "\" must be " : "\" is missing: it must be ") +
                    must);
        };
        if (!assistant["VAOrder"].isInt()) {
            return wrong("VAOrder", "a whole number");
        }
        for (const char* member : {"VAId", "VAAppId", "VAName"}) {
            if (!assistant[member].isString()) {
                return wrong(member, "a text");
            }
        }
        return assistant["VAFFSupport"].isBool() ? "" : wrong("VAFFSupport", "true or false");
    }

    std::string At(const Json::Value& value, const std::string& what) const {
        const auto begin = text_.begin();
        const auto end = begin + value.getOffsetStart();
        const auto line = std::count(begin, end, '\n') + 1;
        const std::string before(begin, end);
        const std::size_t newline = before.rfind('\n');
        const std::size_t column =
            newline == std::string::npos ? before.size() + 1 : before.size() - newline;
        return file_ + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " + what;
    }

    const std::string& file_;
    const std::string& text_;
};

}  // namespace

std::string FaultOf(const std::string& file, const std::string& text) {
    return Document(file, text).Fault();
}

}  // namespace explorer
