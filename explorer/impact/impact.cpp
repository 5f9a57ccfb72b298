// vtv impact
#include "impact.h"

#include <json/json.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>

#include "explorer/asking/exploration.h"
#include "explorer/engine/bytes.h"
#include "explorer/tables/table.h"
#include "explorer/tv/lazy_tv.h"
#include "explorer/tv/new_tv.h"
#include "explorer/tv/policy.h"
#include "explorer/tv/user_values.h"
#include "host/page/page.h"
#include "impact_result.h"
#include "program/findings.h"
#include "virtual-tv/model/json_text.h"
#include "virtual-tv/model/policy.h"
#include "virtual-tv/model/policy_fault.h"
#include "virtual-tv/model/text_file.h"

namespace explorer {

namespace {

const Item& ASSISTANT = *FindItem("voice-assistant");

// ---------------------------------------------------------------------------------------------
// What a TV does with a policy that is refused here
// ---------------------------------------------------------------------------------------------

// The assistants that the page offers, as the provider lists them.
std::vector<host::Choice> Offered(const std::string& provider, const Policy& policy) {
    const Subject subject(provider, policy);
    Choices choices;
    tv().Begin(choices);
    return subject.Provider().Choices(ASSISTANT.key);
}

// Two assistants that nobody else offers, to see whether they stay.
const std::vector<Assistant> PROBE = {{1, "P1", "probe.1", "Probe 1", true},
                                      {2, "P2", "probe.2", "Probe 2", true}};

// Asks the provider itself, in a process of its own.
std::string WhatATvDoes(const Inputs& inputs, const ImpactOptions& options,
                        const std::string& document) {
    std::string consequence;
    const std::string probe = vtv::WritePolicy(PROBE);
    const Policy before{"before", {probe}};
    const Policy after{"after", {probe, document}};
    const auto task = [&](int, Shared&) -> std::string {
        tv().Use(inputs);
        const std::vector<host::Choice> offered = Offered(options.provider, after);
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

// Of a hidden item nothing more is asked: what it would show is nobody's concern, and costs paths.
host::ItemView LookAt(const Subject& subject, const Item& item) {
    host::ItemView hidden;
    hidden.item = &item;
    subject.ForgetLanguages();
    return subject.Provider().IsVisible(item.key) ? host::LookAt(subject.Provider(), item) : hidden;
}

// "vanishes", "changes title: A -> B"; empty when nothing changes.
std::string InWords(const std::vector<host::PageChange>& changes) {
    std::vector<std::string> parts;
    for (const host::PageChange& change : changes) {
        if (change.what == "visible") {
            return change.after == "shown" ? "appears" : "vanishes";
        }
        if (change.what == "enabled") {
            return change.after == "enabled" ? "is enabled" : "is dimmed";
        }
        parts.push_back(change.what + ": " + host::ToText(change));
    }
    return parts.empty() ? "" : "changes " + Join(parts, "; ");
}

class ModelComparer {
  public:
    ModelComparer(const Inputs& inputs, const ImpactOptions& options, const Policy& before,
                  const Policy& after, Shared& shared)
        : inputs_(inputs),
          shared_(shared),
          a_(options.provider, before),
          b_(options.provider, after, Subject::Copy::kPrivate) {}

    std::vector<Change> Compare() {
        // The page comes first: a model that never shows it shows none of its items.
        for (const Item& item : PageItems()) {
            if (&item == &PageItems().front() || isPageShown_) {
                CompareItem(item);
            }
        }
        if (isPageShown_) {
            CompareUsers();
        }
        return changes_;
    }

  private:
    void CompareItem(const Item& item) {
        Compare(item.name, [&] {
            const host::ItemView before = LookAt(a_, item);
            tv().Again();
            const host::ItemView after = LookAt(b_, item);
            isPageShown_ = isPageShown_ || before.visible || after.visible;
            return InWords(host::CompareItems(before, after));
        });
    }

    void CompareUsers() {
        Compare("users", [&] {
            const bool was = a_.Provider().GetInt(ASSISTANT.key) != 0;
            tv().Again();
            const bool is = b_.Provider().GetInt(ASSISTANT.key) != 0;
            return std::string(was && !is ? "the user's assistant is no longer offered" : "");
        });
    }

    // On every path, what changes of it: empty for nothing.
    void Compare(const std::string& item, const std::function<std::string()>& changeOnPath) {
        Diagram diagram;
        Outcomes outcomes;
        DiagramBuilder builder(diagram);
        std::map<std::string, std::uint64_t> paths;
        std::string change;
        ForEachPath(
            shared_.choices, shared_.runs, [&] { change = changeOnPath(); },
            [&] {
                ++paths[change];
                builder.Add(shared_.choices, outcomes.Intern(change));
            });
        std::map<std::string, std::vector<std::string>> when;
        for (const Row& row : RowsOf(diagram, builder.Root())) {
            std::vector<std::string> conditions;
            for (const auto& [input, values] : row.conditions) {
                const Input& one = inputs_.inputs[static_cast<std::size_t>(input)];
                conditions.push_back(one.name + ": " + WordsOf(one, values));
            }
            when[outcomes[row.outcome]].push_back(conditions.empty() ? "always" : Join(conditions));
        }
        when.erase("");
        for (const auto& [what, lines] : when) {
            changes_.push_back({item, what, lines, paths.at(what)});
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
    Subject a_;
    Subject b_;
    std::vector<Change> changes_;
};

// ---------------------------------------------------------------------------------------------
// What is shown
// ---------------------------------------------------------------------------------------------

// Nothing in the formats for people and programs.
void PrintFindings(const ImpactOptions& options, const std::vector<program::Finding>& list,
                   const std::vector<std::string>& troubles) {
    explorer::PrintFindings(FindingsFormat(options.asked.format), {"vtv impact", list, troubles});
}

void Print(const ImpactOptions& options, const std::vector<ModelImpact>& impacts,
           const std::vector<std::string>& troubles) {
    if (options.asked.html) {
        PrintDocument(AsHtml(impacts), Format::kHtml);
    } else if (options.asked.json || options.asked.format == "json") {
        program::Print(AsJson(impacts), program::Form::kJson);
    } else if (options.asked.format == "text") {
        program::Print(AsText(impacts), program::Form::kText);
    } else {
        PrintFindings(options, FindingsOf(impacts, options.asked.after), troubles);
    }
}

void RequirePolicy(const Inputs& inputs, const ImpactOptions& options, const std::string& file,
                   const std::string& text) {
    if (const auto fault = vtv::FindFault(vtv::JsonText(file, text))) {
        const std::string told = fault->text + ". " + WhatATvDoes(inputs, options, text);
        PrintFindings(
            options,
            {{"policy-is-well-formed", "The policy is well formed.", told, file, fault->line}}, {});
        throw CommandError(kExitUsage, told);
    }
}

}  // namespace

int ImpactMain(const ImpactOptions& options) {
    Inputs inputs = LoadInputs(InputsFile());
    const std::string oldText = vtv::ReadTextFile(options.asked.before);
    const std::string newText = vtv::ReadTextFile(options.asked.after);
    CheckSubject(options.provider);
    const Policy before{"old", {oldText}};
    const Policy after{"new", {oldText, newText}};
    RequirePolicy(inputs, options, options.asked.before, oldText);
    RequirePolicy(inputs, options, options.asked.after, newText);
    const PolicyState oldState = StateOf(before);
    const PolicyState newState = StateOf(after);
    KeepUserValues(inputs, {oldState, newState});
    const std::vector<NewTv> models = LoadNewTvs(inputs, options.asked.models);
    std::vector<ModelImpact> impacts(models.size());
    std::vector<std::string> troubles;
    const auto task = [&](int index, Shared& shared) {
        tv().Use(inputs);
        for (const auto& [input, value] : models[static_cast<std::size_t>(index)].values) {
            if (IsOfModel(inputs.inputs[static_cast<std::size_t>(input)])) {
                tv().Preset(input, &value);
            }
        }
        return ToBytes(ModelComparer(inputs, options, before, after, shared).Compare());
    };
    const auto finished = [&](const WorkerResult& result) {
        ModelImpact& impact = impacts[static_cast<std::size_t>(result.task)];
        impact.model = models[static_cast<std::size_t>(result.task)].model.name;
        if (!result.trouble.empty()) {
            troubles.push_back(impact.model + ": the provider " + result.trouble);
            return false;
        }
        impact.changes = BytesReader(result.bytes).Next<std::vector<Change>>();
        return false;
    };
    const WorkOptions work = {.workers = options.asked.jobs, .progress = !options.asked.quiet};
    Work(static_cast<int>(models.size()), work, task, finished);
    if (IsInterrupted()) {
        troubles.emplace_back("interrupted: not every model was looked at");
    }
    Print(options, impacts, troubles);
    ReportRate(options.asked.quiet);
    for (const std::string& trouble : troubles) {
        std::fprintf(stderr, "vtv impact: %s\n", program::OneLine(trouble).c_str());
    }
    if (!troubles.empty()) {
        return kExitTrouble;
    }
    const bool changes = std::any_of(impacts.begin(), impacts.end(), [](const ModelImpact& impact) {
        return !impact.changes.empty();
    });
    return changes ? kExitNo : kExitOk;
}

}  // namespace explorer
