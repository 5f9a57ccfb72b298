#include "recording.h"

#include <toml++/toml.h>

#include <filesystem>
#include <set>
#include <stdexcept>

#include "record_file.h"
#include "scenario.h"
#include "step_to.h"
#include "temporary_folder.h"
#include "toml_writer.h"
#include "virtual-tv/model/applications.h"
#include "virtual-tv/model/format_version.h"
#include "virtual-tv/model/text_file.h"

namespace host {

namespace fs = std::filesystem;

namespace {

// ---------------------------------------------------------------------------------------------
// TOML
// ---------------------------------------------------------------------------------------------

std::string Written(const toml::table& document) {
    try {
        return host::ToToml(document);
    } catch (const std::runtime_error& error) {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         std::string("This cannot be recorded: ") + error.what());
    }
}

std::string StepText(const toml::table& step) {
    return "\n" + Written(toml::table{{"step", toml::array{step}}});
}

toml::table ToToml(const Recording::Step& step) {
    toml::table table;
    for (const auto& [name, member] : step) {
        if (const auto* value = std::get_if<vtv::Value>(&member)) {
            Insert(table, name, *value);
        } else if (const auto* texts = std::get_if<std::vector<std::string>>(&member)) {
            table.insert(name, TomlList(*texts));
        } else {
            table.insert(name, TomlTable(std::get<std::map<std::string, vtv::Value>>(member)));
        }
    }
    return table;
}

// ---------------------------------------------------------------------------------------------
// The beginning: the model, and what the TV had become
// ---------------------------------------------------------------------------------------------

bool IsModelOf(const std::string& modelFile, const vtv::Tv& tv) {
    return vtv::ReadTextFile(modelFile) == vtv::ReadTextFile(tv.GetModel().file);
}

// A model that comes with the virtual TV is named; any other is the TV's own copy.
std::string ModelOf(const vtv::Tv& tv) {
    for (const std::string& file : vtv::ModelFiles()) {
        if (IsModelOf(file, tv)) {
            return fs::path(file).stem().string();
        }
    }
    return tv.GetModel().file;
}

vtv::Snapshot FreshSnapshot(const vtv::Tv& tv) {
    const TemporaryFolder folder("vtv-record");
    vtv::Tv::Create(folder.Path() + "/tv", tv.GetModel().file);
    return vtv::Tv(folder.Path() + "/tv").TakeSnapshot();
}

toml::table FaultTable(const vtv::Fault& fault) {
    toml::table table{{"function", fault.function}};
    if (fault.kind == vtv::Fault::Kind::kSlow) {
        table.insert("slow", fault.delayMs);
    } else {
        table.insert("always", fault.kind == vtv::Fault::Kind::kAlways);
        table.insert("result", fault.result);
    }
    return table;
}

// A notification goes away by itself.
toml::array Running(const vtv::Tv& tv) {
    toml::array launches;
    for (const vtv::RunningApplication& running : tv.RunningApplications()) {
        if (running.appId == vtv::kNotification) {
            continue;
        }
        toml::table launch{{"app", running.appId}};
        toml::table extras;
        for (const auto& [key, value] : running.extras) {
            extras.insert_or_assign(key, value);
        }
        InsertAny(launch, "extras", extras);
        launches.push_back(launch);
    }
    return launches;
}

std::string Heading(const vtv::Tv& tv) {
    return RecordFile::kMark + Written(toml::table{{"version", vtv::kScenarioVersion},
                                                   {"title", "Recorded on " + tv.GetModel().title},
                                                   {"model", ModelOf(tv)}});
}

// The scenario with the step. What was done to a TV, or has become of it, is meant: the step is
// forced where a scenario takes it for a slip.
Scenario WithStep(const std::string& before, const std::string& file, toml::table* step) {
    Scenario plain = ParseScenario(before + StepText(*step), file);
    if (plain.problems.empty()) {
        return plain;
    }
    toml::table forced = *step;
    forced.insert_or_assign("force", true);
    Scenario meant = ParseScenario(before + StepText(forced), file);
    if (!meant.problems.empty()) {
        return plain;
    }
    *step = forced;
    return meant;
}

// The steps that bring a new TV of the model to where this one is.
std::string FirstSteps(const vtv::Tv& tv) {
    toml::table step = ToToml(StepTo(tv.TakeSnapshot(), FreshSnapshot(tv)));
    toml::array faults;
    for (const vtv::Fault& fault : tv.Faults()) {
        faults.push_back(FaultTable(fault));
    }
    InsertAny(step, "fault", faults);
    const bool isNew = step.empty();
    step.insert("say", "what the TV had become before");
    WithStep(Heading(tv), "", &step);
    const toml::array running = Running(tv);
    if (running.empty()) {
        return isNew ? "" : StepText(step);
    }
    // They wait to be finished, whatever is to become of those that are started later.
    step.insert("applications", "process");
    step.insert("launch", running);
    const std::string mode = vtv::ToText(tv.Applications());
    return StepText(step) +
           (mode == "process" ? "" : StepText(toml::table{{"applications", mode}}));
}

// ---------------------------------------------------------------------------------------------
// What a viewer saw
// ---------------------------------------------------------------------------------------------

toml::table ExpectedItem(const ItemView& view, bool isReachable) {
    toml::table item{{"visible", isReachable}};
    if (isReachable) {
        item.insert("enabled", view.enabled);
    }
    if (isReachable && view.value) {
        item.insert("value", *view.value);
    }
    return item;
}

toml::table Expected(const PressResult& result, bool isPress) {
    toml::table expect;
    toml::table page;
    toml::array sees;
    toml::array launched;
    toml::array toasts;
    for (const Sight& sight : result.sights) {
        if (sight.change) {
            const ItemView& view = result.after[sight.change->item->name];
            page.insert_or_assign(view.item->name,
                                  ExpectedItem(view, result.after.IsReachable(*view.item)));
            continue;
        }
        sees.push_back(ToText(sight.kind));
        if (sight.kind == Sight::Kind::kApplication) {
            launched.push_back(sight.text);
        } else if (sight.kind == Sight::Kind::kToast) {
            toasts.push_back(sight.text);
        }
    }
    if (isPress) {
        expect.insert("sees", sees);
    }
    if (!result.done) {
        expect.insert("refused", true);
    }
    const std::set<std::string> told(result.failures.begin(), result.failures.end());
    InsertAny(expect, "failed", TomlList({told.begin(), told.end()}));
    expect.insert("launched", launched);
    expect.insert("toast", toasts);
    InsertAny(expect, "page", page);
    return expect;
}

void RequireScenario(const RecordFile& file, const vtv::Tv& tv) {
    const Scenario scenario = ParseScenario(file.Text(), file.Name());
    if (!scenario.problems.empty()) {
        throw vtv::Error(
            vtv::ErrorKind::kUsage,
            scenario.problems.front() + " Nothing was done: only a sound scenario is added to.");
    }
    if (!IsModelOf(scenario.model, tv)) {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         file.Name() + ": this scenario is of the model " +
                             fs::path(scenario.model).stem().string() + ", and the TV of " +
                             tv.GetModel().name + ": record into another file. Nothing was done.");
    }
}

}  // namespace

struct Recording::Pending {
    explicit Pending(const std::string& name) : file(name) {}

    RecordFile file;
    std::string before;  // what the file does not have yet: its beginning
    toml::table step;

    void Add() {
        file.Append(before + StepText(step));
        before.clear();
    }
};

void Recording::Begin(const std::string& file, const vtv::Tv& tv) {
    RecordFile record(file);
    if (!record.Text().empty()) {
        RequireScenario(record, tv);
        return;
    }
    const std::string first = FirstSteps(tv);
    const std::string text =
        Heading(tv) +
        (first.empty() ? StepText(toml::table{{"say", "the TV is as it was made"}}) : first);
    const Scenario begun = ParseScenario(text, file);
    if (!begun.problems.empty()) {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         begun.problems.front() + " Nothing was done: no scenario could begin so.");
    }
    record.Append(text);
}

Recording::Recording(const std::string& file, const vtv::Tv& tv, const Step& step)
    : pending_(std::make_unique<Pending>(file)) {
    const std::string& text = pending_->file.Text();
    if (!text.empty()) {
        RequireScenario(pending_->file, tv);
    } else {
        pending_->before = Heading(tv) + FirstSteps(tv);
    }
    pending_->step = ToToml(step);
    const Scenario after = WithStep(text + pending_->before, file, &pending_->step);
    if (!after.problems.empty()) {
        throw vtv::Error(
            vtv::ErrorKind::kUsage,
            after.problems.front() + " Nothing was done: a scenario could not have it.");
    }
}

Recording::~Recording() = default;
Recording::Recording(Recording&&) noexcept = default;

void Recording::Done() {
    pending_->Add();
}

void Recording::Done(const PressResult& result) {
    pending_->step.insert("expect", Expected(result, pending_->step.contains("press")));
    pending_->Add();
}

}  // namespace host
