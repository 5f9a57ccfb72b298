// vtv impact
#include "impact.h"

#include <json/json.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <set>

#include "bytes.h"
#include "command.h"
#include "exploration.h"
#include "models.h"
#include "policy.h"
#include "table.h"
#include "tv/lazy_tv.h"
#include "workers.h"

namespace explorer {

namespace {

// ---------------------------------------------------------------------------------------------
// Policies that are to be published
// ---------------------------------------------------------------------------------------------

// A fault of a document, with its position; empty when there is none.
std::string FaultOf(const std::string& file, const std::string& text) {
    Json::Value root;
    Json::CharReaderBuilder builder;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    std::string errors;
    if (!reader->parse(text.data(), text.data() + text.size(), &root, &errors)) {
        return file + ": " + errors + "A TV keeps the policy that it has.";
    }
    const auto at = [&](const Json::Value& value, const std::string& what,
                        const std::string& then) {
        const auto begin = text.begin();
        const auto end = begin + value.getOffsetStart();
        const auto line = std::count(begin, end, '\n') + 1;
        const auto newline =
            std::find(std::make_reverse_iterator(end), std::make_reverse_iterator(begin), '\n');
        const auto column = newline.base() == begin ? end - begin + 1 : end - newline.base() + 1;
        return file + ":" + std::to_string(line) + ":" + std::to_string(column) + ": " + what +
               " " + then;
    };
    const std::string keeps = "A TV keeps the policy that it has.";
    if (!root.isArray()) {
        return at(root, "a policy is a list of assistants: [ ... ].",
                  "A TV then offers no assistant.");
    }
    std::set<int> orders;
    for (const Json::Value& element : root) {
        if (!element.isObject()) {
            return at(element, "an assistant is an object: { \"VAOrder\": 1, ... }.", keeps);
        }
        for (const char* member : {"VAId", "VAAppId", "VAName"}) {
            if (!element[member].isString()) {
                return at(element, std::string("\"") + member + "\" must be a text.",
                          element[member].isArray() || element[member].isObject()
                              ? keeps
                              : "A TV reads it as text or as empty.");
            }
        }
        if (!element["VAOrder"].isInt()) {
            return at(element, "\"VAOrder\" must be a whole number.",
                      element["VAOrder"].isNull() ? "A TV reads it as 0." : keeps);
        }
        if (!element["VAFFSupport"].isBool()) {
            return at(element, "\"VAFFSupport\" must be true or false.",
                      element["VAFFSupport"].isNull() ? "A TV reads it as false." : keeps);
        }
        if (!orders.insert(element["VAOrder"].asInt()).second) {
            return at(
                element,
                "\"VAOrder\" " + std::to_string(element["VAOrder"].asInt()) + " is here twice.",
                "A TV then offers only the first of the two.");
        }
    }
    const int count = static_cast<int>(orders.size());
    if (count > 0 && (*orders.begin() != 1 || *orders.rbegin() != count)) {
        return at(root, "\"VAOrder\" must count from 1 to " + std::to_string(count) + ".",
                  "A TV sorts the assistants by it.");
    }
    return "";
}

// ---------------------------------------------------------------------------------------------
// The two policies side by side
// ---------------------------------------------------------------------------------------------

struct Change {
    std::string item;
    std::string what;
    std::vector<std::string> when;  // one line for each group of states
    std::uint64_t paths = 0;
};

struct ModelImpact {
    std::string model;
    std::vector<Change> changes;
    std::uint64_t states = 0;
};

// The look of an item, one line for each property.
std::vector<std::string> LookAt(const Subject& subject, const Item& item) {
    std::vector<std::string> look;
    const bool visible = subject.checkVisible(item.key, 0) == 1;
    look.push_back(visible ? "visible" : "hidden");
    if (!visible) {
        return look;
    }
    const bool enabled = subject.checkEnabled(item.key, 0) == 1;
    look.push_back(enabled ? "enabled" : "dimmed");
    const std::size_t before = tv().Record().size();
    for (const char* kind : {"title:", "help:", "value:", "choices:"}) {
        Ask(subject, *FindQuestion(kind + std::string(item.name)));
    }
    if (!enabled) {
        Ask(subject, *FindQuestion(std::string("reason:") + item.name));
        Ask(subject, *FindQuestion(std::string("popup:") + item.name));
    }
    for (const RecordEntry& entry : ReadRecord(tv().Record().substr(before))) {
        look.push_back(entry.text);
    }
    return look;
}

std::string Join(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += (text.empty() ? "" : ", ") + line;
    }
    return text;
}

std::string ChangeOf(const std::vector<std::string>& before,
                     const std::vector<std::string>& after) {
    if (before == after) {
        return "";
    }
    if (before[0] != after[0]) {
        return after[0] == "visible" ? "appears" : "vanishes";
    }
    std::string change =
        before[1] != after[1] ? (after[1] == "dimmed" ? "is dimmed" : "is enabled") : "";
    std::vector<std::string> gone;
    std::vector<std::string> come;
    for (std::size_t i = 2; i < before.size(); ++i) {
        if (std::find(after.begin(), after.end(), before[i]) == after.end()) {
            gone.push_back(before[i]);
        }
    }
    for (std::size_t i = 2; i < after.size(); ++i) {
        if (std::find(before.begin(), before.end(), after[i]) == before.end()) {
            come.push_back(after[i]);
        }
    }
    if (change.empty() || before[1] == after[1]) {
        change += "changes: " + (gone.empty() ? "nothing" : Join(gone)) + " -> " +
                  (come.empty() ? "nothing" : Join(come));
    }
    return change;
}

class ModelComparer {
  public:
    ModelComparer(const Inputs& inputs, const ImpactOptions& options, const Policy& before,
                  const Policy& after, Shared& shared)
        : inputs_(inputs),
          shared_(shared),
          a_(options.provider, before),
          b_(CopyOf(options.provider), after) {
        std::filesystem::remove(copy_);
    }

    // One line a change: item, what, when, paths.
    std::string Compare() {
        BytesWriter bytes;
        for (const Item& item : Items()) {
            CompareItem(item, bytes);
        }
        CompareUsers(bytes);
        return bytes.Bytes();
    }

  private:
    std::string CopyOf(const std::string& provider) {
        copy_ = std::filesystem::temp_directory_path() /
                ("vtv-impact-" + std::to_string(getpid()) + ".so");
        std::filesystem::copy_file(provider, copy_,
                                   std::filesystem::copy_options::overwrite_existing);
        return copy_;
    }

    void CompareItem(const Item& item, BytesWriter& bytes) {
        Diagram diagram;
        Outcomes outcomes;
        DiagramBuilder builder(diagram);
        std::map<std::string, std::uint64_t> paths;
        std::string change;
        ForEachPath(
            shared_.choices, shared_.runs,
            [&] {
                const std::vector<std::string> before = LookAt(a_, item);
                tv().Again();
                change = ChangeOf(before, LookAt(b_, item));
            },
            [&] {
                ++paths[change];
                builder.Add(shared_.choices, outcomes.Intern(change));
            });
        if (builder.Root() != NONE) {
            Write(item.name, diagram, outcomes, builder.Root(), paths, bytes);
        }
    }

    void CompareUsers(BytesWriter& bytes) {
        Diagram diagram;
        Outcomes outcomes;
        DiagramBuilder builder(diagram);
        std::map<std::string, std::uint64_t> paths;
        std::string change;
        const Question& value = *FindQuestion("value:voice-assistant");
        ForEachPath(
            shared_.choices, shared_.runs,
            [&] {
                Ask(a_, value);
                const bool was = tv().Record() != std::string_view("avalue: 0\0", 10);
                tv().Again();
                Ask(b_, value);
                const bool is = tv().Record() != std::string_view("avalue: 0\0", 10);
                change = was && !is ? "the user's assistant is no longer offered" : "";
            },
            [&] {
                ++paths[change];
                builder.Add(shared_.choices, outcomes.Intern(change));
            });
        if (builder.Root() != NONE) {
            Write("users", diagram, outcomes, builder.Root(), paths, bytes);
        }
    }

    void Write(const std::string& item, const Diagram& diagram, const Outcomes& outcomes,
               NodeId root, const std::map<std::string, std::uint64_t>& paths, BytesWriter& bytes) {
        std::map<std::string, std::vector<std::string>> when;
        for (const Row& row : RowsOf(diagram, root)) {
            const std::string& change = outcomes[row.outcome];
            if (change.empty()) {
                continue;
            }
            std::vector<std::string> conditions;
            for (const auto& [input, values] : row.conditions) {
                const Input& one = inputs_.inputs[static_cast<std::size_t>(input)];
                std::string words;
                for (const int value : values) {
                    words += (words.empty() ? "" : " or ") +
                             one.values[static_cast<std::size_t>(value)].words;
                }
                conditions.push_back(one.name + ": " + words);
            }
            when[change].push_back(conditions.empty() ? "always" : Join(conditions));
        }
        for (const auto& [change, lines] : when) {
            bytes.Text(item);
            bytes.Text(change);
            bytes.Number(paths.at(change));
            bytes.Number(lines.size());
            for (const std::string& line : lines) {
                bytes.Text(line);
            }
        }
    }

    const Inputs& inputs_;
    Shared& shared_;
    std::filesystem::path copy_;
    Subject a_;
    Subject b_;
};

// ---------------------------------------------------------------------------------------------
// What is shown
// ---------------------------------------------------------------------------------------------

std::string AsText(const std::vector<ModelImpact>& impacts) {
    std::string text;
    for (const ModelImpact& impact : impacts) {
        text += impact.model + "\n";
        for (const Change& change : impact.changes) {
            text += "  " + change.item + " " + change.what + "\n";
            for (const std::string& when : change.when) {
                text += "      when " + when + "\n";
            }
        }
        text += impact.changes.empty() ? "  nothing changes\n" : "";
    }
    return text;
}

std::string AsJson(const std::vector<ModelImpact>& impacts) {
    Json::Value root;
    root["models"] = Json::arrayValue;
    for (const ModelImpact& impact : impacts) {
        Json::Value json;
        json["model"] = impact.model;
        json["changes"] = Json::arrayValue;
        for (const Change& change : impact.changes) {
            Json::Value one;
            one["item"] = change.item;
            one["change"] = change.what;
            one["paths"] = Json::UInt64{change.paths};
            for (const std::string& when : change.when) {
                one["when"].append(when);
            }
            json["changes"].append(one);
        }
        root["models"].append(json);
    }
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "  ";
    return Json::writeString(builder, root) + "\n";
}

std::string AsHtml(const std::vector<ModelImpact>& impacts) {
    std::string html =
        "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\"><title>What the new "
        "policy "
        "changes</title><style>body{font:15px/1.45 system-ui,sans-serif;margin:2em;max-width:70em}"
        "td,th{border-top:1px solid #ccc;padding:.3em .6em;text-align:left;vertical-align:top}"
        "table{border-collapse:collapse;width:100%}</style></head><body><h1>What the new policy "
        "changes</h1>\n";
    for (const ModelImpact& impact : impacts) {
        html += "<h2>" + EscapeHtml(impact.model) + "</h2>\n";
        if (impact.changes.empty()) {
            html += "<p>Nothing changes.</p>\n";
            continue;
        }
        html += "<table><tr><th>Item</th><th>Change</th><th>When</th></tr>\n";
        for (const Change& change : impact.changes) {
            html += "<tr><td>" + EscapeHtml(change.item) + "</td><td>" + EscapeHtml(change.what) +
                    "</td><td>";
            for (const std::string& when : change.when) {
                html += "<div>" + EscapeHtml(when) + "</div>";
            }
            html += "</td></tr>\n";
        }
        html += "</table>\n";
    }
    return html + "</body></html>\n";
}

}  // namespace

int ImpactMain(const ImpactOptions& options) {
    Inputs inputs = LoadInputs(InputsFile());
    const std::string oldText = ReadTextFile(options.oldFile);
    const std::string newText = ReadTextFile(options.newFile);
    for (const std::string& fault :
         {FaultOf(options.oldFile, oldText), FaultOf(options.newFile, newText)}) {
        if (!fault.empty()) {
            throw CommandError(kExitUsage, fault);
        }
    }
    CheckSubject(options.provider);
    const Policy before{"old", {oldText}};
    const Policy after{"new", {oldText, newText}};
    const PolicyState oldState = StateOf(before);
    const PolicyState newState = StateOf(after);
    KeepUserValues(inputs, {oldState, newState});
    const std::vector<TvModel> models = LoadModels(options.models);
    std::vector<ModelImpact> impacts(models.size());
    std::vector<std::string> crashes;
    const auto task = [&](int index, Shared& shared) {
        tv().Use(inputs);
        const std::map<int, Value> values =
            ValuesOf(inputs, models[static_cast<std::size_t>(index)]);
        for (const auto& [input, value] : values) {
            tv().Preset(input, &value);
        }
        return ModelComparer(inputs, options, before, after, shared).Compare();
    };
    const auto finished = [&](const WorkerResult& result) {
        ModelImpact& impact = impacts[static_cast<std::size_t>(result.task)];
        impact.model = models[static_cast<std::size_t>(result.task)].name;
        if (!result.trouble.empty()) {
            crashes.push_back(impact.model + ": the provider " + result.trouble);
            return false;
        }
        BytesReader bytes(result.bytes);
        while (!bytes.AtEnd()) {
            Change change;
            change.item = bytes.Text();
            change.what = bytes.Text();
            change.paths = bytes.Number();
            for (std::uint64_t lines = bytes.Number(); lines > 0; --lines) {
                change.when.push_back(bytes.Text());
            }
            impact.changes.push_back(change);
        }
        return false;
    };
    WorkOptions work;
    work.workers = options.workers;
    work.progress = options.progress;
    Work(static_cast<int>(models.size()), work, task, finished);
    const std::string text = options.format == "json"   ? AsJson(impacts)
                             : options.format == "html" ? AsHtml(impacts)
                                                        : AsText(impacts);
    std::fputs(text.c_str(), stdout);
    ReportRate(options.progress);
    for (const std::string& crash : crashes) {
        std::fprintf(stderr, "vtv impact: %s\n", crash.c_str());
    }
    if (IsInterrupted() || !crashes.empty()) {
        return kExitTrouble;
    }
    const bool changes = std::any_of(impacts.begin(), impacts.end(), [](const ModelImpact& impact) {
        return !impact.changes.empty();
    });
    return changes ? kExitNo : kExitOk;
}

}  // namespace explorer
