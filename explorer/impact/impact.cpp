// vtv impact
#include "impact.h"

#include <json/json.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <set>

#include "explorer/asking/command.h"
#include "explorer/asking/exploration.h"
#include "explorer/engine/bytes.h"
#include "explorer/engine/workers.h"
#include "explorer/tables/table.h"
#include "explorer/tv/lazy_tv.h"
#include "explorer/tv/models.h"
#include "explorer/tv/policy.h"
#include "host/core/policy_fault.h"
#include "look.h"

namespace explorer {

namespace {

// ---------------------------------------------------------------------------------------------
// What a TV does with a policy that is refused here
// ---------------------------------------------------------------------------------------------

// The assistants that the page offers, as the provider lists them.
std::vector<std::string> Offered(const std::string& provider, const Policy& policy) {
    const Subject subject(provider, policy);
    Choices choices;
    tv().Begin(choices);
    Ask(subject, *FindQuestion("choices:voice-assistant"));
    std::vector<std::string> offered;
    for (const RecordEntry& entry : ReadRecord(tv().Record())) {
        if (entry.text.rfind("choice ", 0) == 0) {
            offered.push_back(entry.text);
        }
    }
    return offered;
}

// Two assistants that nobody else offers, to see whether they stay.
constexpr char PROBE[] =
    R"([{"VAOrder":1,"VAId":"P1","VAAppId":"probe.1","VAName":"Probe 1","VAFFSupport":true},)"
    R"({"VAOrder":2,"VAId":"P2","VAAppId":"probe.2","VAName":"Probe 2","VAFFSupport":true}])";

// Asks the provider itself, in a process of its own.
std::string WhatATvDoes(const Inputs& inputs, const ImpactOptions& options,
                        const std::string& document) {
    std::string consequence;
    const Policy before{"before", {PROBE}};
    const Policy after{"after", {PROBE, document}};
    const auto task = [&](int, Shared&) -> std::string {
        tv().Use(inputs);
        const std::vector<std::string> offered = Offered(options.provider, after);
        if (offered == Offered(options.provider, before)) {
            return "A TV would go on with the assistants that it has.";
        }
        // A single assistant is not offered as a choice.
        const std::size_t count = std::max(
            offered.size(), StateOf(after).list.size() == 1 ? std::size_t{1} : std::size_t{0});
        return count == 0 ? "A TV would offer no assistant."
                          : "A TV would take it, and offer " + std::to_string(count) +
                                (count == 1 ? " assistant." : " assistants.");
    };
    const auto finished = [&](const WorkerResult& result) {
        consequence =
            result.trouble.empty() ? result.bytes : "A TV's provider " + result.trouble + " on it.";
        return false;
    };
    WorkOptions work;
    work.progress = false;
    Work(1, work, task, finished);
    return consequence;
}

// ---------------------------------------------------------------------------------------------
// The two policies side by side
// ---------------------------------------------------------------------------------------------

struct Change {
    std::string item;
    std::string what;
    std::vector<std::string> when;  // one line for each group of states
    std::uint64_t paths = 0;
    bool operator==(const Change&) const = default;
};

struct ModelImpact {
    std::string model;
    std::vector<Change> changes;
};

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
        // The page comes first: a model that never shows it shows none of its items.
        for (const Item& item : Items()) {
            if (&item == &Items().front() || isPageShown_) {
                CompareItem(item, bytes);
            }
        }
        if (isPageShown_) {
            CompareUsers(bytes);
        }
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
                const ItemWords before = LookAt(a_, item);
                tv().Again();
                const ItemWords after = LookAt(b_, item);
                change = ChangeOf(before, after);
                isPageShown_ = isPageShown_ || before.visible || after.visible;
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
                conditions.push_back(one.name + ": " + WordsOf(one, values));
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

    // "Orvik or Alexa", or "anything but Google" where that is shorter.
    static std::string WordsOf(const Input& input, const std::set<int>& values) {
        std::vector<std::string> named;
        std::vector<std::string> others;
        for (std::size_t i = 0; i < input.values.size(); ++i) {
            const bool isNamed = values.count(static_cast<int>(i)) == 1;
            (isNamed ? named : others).push_back(input.values[i].words);
        }
        return !others.empty() && named.size() > 2 && others.size() < named.size()
                   ? "anything but " + Join(others, " or ")
                   : Join(named, " or ");
    }

    const Inputs& inputs_;
    Shared& shared_;
    bool isPageShown_ = false;  // in any state, with either policy
    std::filesystem::path copy_;
    Subject a_;
    Subject b_;
};

// ---------------------------------------------------------------------------------------------
// What is shown
// ---------------------------------------------------------------------------------------------

// Models that the policy changes in the same way.
struct Group {
    std::vector<std::string> models;
    const ModelImpact* impact = nullptr;
};

std::vector<Group> GroupsOf(const std::vector<ModelImpact>& impacts) {
    std::vector<Group> groups;
    for (const ModelImpact& impact : impacts) {
        const auto same = std::find_if(groups.begin(), groups.end(), [&](const Group& group) {
            return group.impact->changes == impact.changes;
        });
        if (same != groups.end()) {
            same->models.push_back(impact.model);
        } else {
            groups.push_back({{impact.model}, &impact});
        }
    }
    return groups;
}

std::string AsText(const std::vector<ModelImpact>& impacts) {
    std::string text;
    for (const Group& group : GroupsOf(impacts)) {
        text += (text.empty() ? "" : "\n") + Join(group.models) + "\n";
        for (const Change& change : group.impact->changes) {
            text += "  " + change.item + (change.item == "users" ? ": " : " ") + change.what + "\n";
            for (const std::string& when : change.when) {
                text += "      when " + when + "\n";
            }
        }
        text += group.impact->changes.empty() ? "  nothing changes\n" : "";
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
    for (const Group& group : GroupsOf(impacts)) {
        html += "<h2>" + EscapeHtml(Join(group.models)) + "</h2>\n";
        const ModelImpact& impact = *group.impact;
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
    CheckSubject(options.provider);
    const Policy before{"old", {oldText}};
    const Policy after{"new", {oldText, newText}};
    const std::string oldFault = host::FaultOf(host::JsonText(options.oldFile, oldText));
    const std::string newFault = host::FaultOf(host::JsonText(options.newFile, newText));
    if (!oldFault.empty()) {
        throw CommandError(kExitUsage, oldFault + ". " + WhatATvDoes(inputs, options, oldText));
    }
    if (!newFault.empty()) {
        throw CommandError(kExitUsage, newFault + ". " + WhatATvDoes(inputs, options, newText));
    }
    const PolicyState oldState = StateOf(before);
    const PolicyState newState = StateOf(after);
    KeepUserValues(inputs, {oldState, newState});
    const std::vector<TvModel> models = LoadModels(options.models);
    std::vector<ModelImpact> impacts(models.size());
    std::vector<std::string> crashes;
    const auto task = [&](int index, Shared& shared) {
        tv().Use(inputs);
        const TvModel& model = models[static_cast<std::size_t>(index)];
        std::map<int, Value> values = ValuesOf(inputs, model);
        values.merge(MarketValuesOf(inputs, model));
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
