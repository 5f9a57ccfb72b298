#include "walk_comparison.h"

#include <algorithm>

#include "explorer/tv/lazy_tv.h"
#include "platform/trace_storage.h"

namespace explorer {

namespace {
constexpr int FAR_AWAY = 1000;
}

WalkComparison::WalkComparison(const Inputs& inputs, const DiffOptions& options,
                               const std::vector<const Question*>& questions)
    : inputs_(inputs),
      options_(options),
      calls_(inputs, questions),
      work_(Work()),
      walk_(std::make_unique<Walk>(inputs, options, options.bounds, work_)) {}

WalkWork WalkComparison::Work() {
    WalkWork work;
    work.files = {options_.provider, options_.other};
    work.calls = &calls_;
    work.stopsAtOnce = options_.brief;
    work.prepare = [this] {
        UseRecords(options_.records);
        differences_.clear();
    };
    work.see = [this](const Seen& seen) { return See(seen); };
    work.seen = [this] { return ToBytes(ListOf(differences_)); };
    work.take = [this](BytesReader seen) {
        Merge(seen.Next<std::vector<Difference>>(), differences_);
    };
    work.note = [this](int joint, int call, const WorkerResult& result) {
        // One of the two is at fault: that is a difference to look at, unless both are.
        Difference difference;
        difference.onlyB = {"one of them " + result.trouble};
        AddAt(joint, call, {0, result.path, {}}, difference);
    };
    work.found = [this] {
        int nearest = 0;
        for (const auto& [key, difference] : differences_) {
            nearest = nearest == 0 ? difference.nearness.length
                                   : std::min(nearest, difference.nearness.length);
        }
        return options_.FindsAll() ? 0 : nearest;
    };
    return work;
}

// No host asks a provider that it has not created: what shows there only is shown last.
int WalkComparison::LengthOf(int joint, int call) const {
    const bool isOdd = call >= calls_.FirstQuestion() && !walk_->HasTable(joint);
    return walk_->At(joint).depth + 1 + (isOdd ? FAR_AWAY : 0);
}

// In a worker.
bool WalkComparison::See(const Seen& seen) {
    if (seen.records[0] == seen.records[1]) {
        return true;
    }
    const std::string a(seen.records[0]);
    const std::string b(seen.records[1]);
    // The state's documents are told as the first provider found them.
    seen.again();
    // A path that is looked at another time as well is one path; that time comes unless the walk
    // ends with this.
    const bool isCounted = seen.isCounted || !options_.FindsAll();
    AddAt(seen.joint, seen.call, CurrentState(0, seen.choices), DifferenceOf(a, b), isCounted);
    return !options_.brief;
}

void WalkComparison::AddAt(int joint, int call, const State& state, Difference difference,
                           bool isCounted) {
    difference.joint = joint;
    difference.call = call;
    Place(difference, inputs_, calls_.NameOf(call), state);
    difference.nearness.length = LengthOf(joint, call);
    difference.paths = isCounted ? 1 : 0;
    Add(differences_, difference);
}

std::vector<Difference> WalkComparison::Found() const {
    std::vector<Difference> found = ListOf(differences_);
    std::stable_sort(found.begin(), found.end(), [](const Difference& a, const Difference& b) {
        return a.nearness < b.nearness;
    });
    for (Difference& difference : found) {
        difference.paths = std::max<std::uint64_t>(1, difference.paths);
    }
    if (!options_.FindsAll() && found.size() > 1) {
        found.resize(1);
    }
    return found;
}

}  // namespace explorer
