#include "findings.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "visible_text.h"

namespace fs = std::filesystem;

namespace program {

namespace {

// From the current folder where the file lies below it, else from the root.
std::string NamedFromHere(const std::string& file) {
    std::error_code error;
    const fs::path whole = fs::absolute(file, error).lexically_normal();
    const fs::path here = fs::current_path(error);
    const fs::path near = whole.lexically_relative(here);
    return error || near.empty() || *near.begin() == ".." ? whole.string() : near.string();
}

// RFC 3986: what has no meaning of its own in a path stands as it is.
std::string Uri(const std::string& file) {
    const std::string path = NamedFromHere(file);
    std::string uri = path.front() == '/' ? "file://" : "";
    for (const char c : path) {
        const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                             (c >= '0' && c <= '9') ||
                             std::string("-._~/").find(c) != std::string::npos;
        char code[4];
        std::snprintf(code, sizeof code, "%%%02X", static_cast<unsigned char>(c));
        uri += isPlain ? std::string(1, c) : code;
    }
    return uri;
}

const char* LevelOf(Severity severity) {
    return severity == Severity::kError ? "error" : "warning";
}

Json::Value TextOf(const std::string& text) {
    Json::Value json;
    json["text"] = text;
    return json;
}

// The rules that something was found of, each once.
class Rules {
  public:
    int PlaceOf(const Finding& finding) {
        const auto place = std::find(names_.begin(), names_.end(), finding.rule);
        const auto number = static_cast<int>(place - names_.begin());
        if (place == names_.end()) {
            names_.push_back(finding.rule);
            Json::Value rule;
            rule["id"] = finding.rule;
            rule["shortDescription"] =
                TextOf(finding.sentence.empty() ? finding.rule : finding.sentence);
            json_.append(rule);
        }
        return number;
    }
    const Json::Value& AsJson() const { return json_; }

  private:
    std::vector<std::string> names_;
    Json::Value json_ = Json::arrayValue;
};

Json::Value ResultOf(const Finding& finding, Rules& rules) {
    Json::Value result;
    result["ruleId"] = finding.rule;
    result["ruleIndex"] = rules.PlaceOf(finding);
    result["level"] = LevelOf(finding.severity);
    result["message"] = TextOf(finding.message);
    Json::Value place;
    place["artifactLocation"]["uri"] = Uri(finding.file);
    if (finding.line > 0) {
        place["region"]["startLine"] = finding.line;
    }
    Json::Value location;
    location["physicalLocation"] = place;
    result["locations"].append(location);
    return result;
}

// As the data of a workflow command, where a newline would end it.
std::string Data(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        escaped += c == '%' ? "%25" : c == '\r' ? "%0D" : c == '\n' ? "%0A" : std::string(1, c);
    }
    return escaped;
}

// As one of its properties, which a comma or a colon would end.
std::string Property(const std::string& text) {
    std::string escaped;
    for (const char c : Data(text)) {
        escaped += c == ':' ? "%3A" : c == ',' ? "%2C" : std::string(1, c);
    }
    return escaped;
}

}  // namespace

Json::Value Sarif(const Findings& findings) {
    Rules rules;
    Json::Value results(Json::arrayValue);
    for (const Finding& finding : findings.list) {
        results.append(ResultOf(finding, rules));
    }
    Json::Value invocation;
    invocation["executionSuccessful"] = findings.troubles.empty();
    for (const std::string& trouble : findings.troubles) {
        Json::Value notification;
        notification["level"] = "error";
        notification["message"] = TextOf(trouble);
        invocation["toolExecutionNotifications"].append(notification);
    }
    Json::Value run;
    run["tool"]["driver"]["name"] = findings.command;
    run["tool"]["driver"]["version"] = VTV_VERSION;
    run["tool"]["driver"]["rules"] = rules.AsJson();
    run["invocations"].append(invocation);
    run["results"] = results;
    Json::Value root;
    root["$schema"] = "https://json.schemastore.org/sarif-2.1.0.json";
    root["version"] = "2.1.0";
    root["runs"].append(run);
    return root;
}

std::string Annotations(const Findings& findings) {
    std::string lines;
    for (const Finding& finding : findings.list) {
        lines += std::string("::") + LevelOf(finding.severity) +
                 " file=" + Property(NamedFromHere(finding.file)) +
                 (finding.line > 0 ? ",line=" + std::to_string(finding.line) : "") +
                 ",title=" + Property(findings.command + ": " + finding.rule) +
                 "::" + Data(finding.message) + "\n";
    }
    for (const std::string& trouble : findings.troubles) {
        lines += "::error title=" + Property(findings.command) + "::" + Data(trouble) + "\n";
    }
    return lines;
}

CLI::Option* AddFindingsFormat(CLI::App& verb, std::string& format) {
    return AddFindingsFormat(verb, [&format](const std::string& name) { format = name; });
}

CLI::Option* AddFindingsFormat(CLI::App& verb,
                               const std::function<void(const std::string&)>& take) {
    return verb
        .add_option_function<std::string>(
            "--format", take,
            "text; json; sarif, for code scanners; github, for the pages of a change")
        ->type_name("FORMAT")
        ->check(CLI::IsMember(kFindingsFormats));
}

}  // namespace program
