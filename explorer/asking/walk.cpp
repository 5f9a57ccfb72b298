#include "walk.h"

#include <algorithm>
#include <thread>

#include "walk_worker.h"

namespace explorer {

namespace {
constexpr int ENOUGH_CRASHES = 3;
constexpr std::size_t FEW_JOINTS = 4;
}  // namespace

void RequireArena() {
    if (!Arena::IsServed()) {
        throw CommandError(kExitTrouble,
                           "this program is built with a sanitizer: what a provider remembers "
                           "cannot be put back, so not every call can be made in every state");
    }
}

void Asked::Add(const Asked& other) {
    paths += other.paths;
    states.Add(other.states);
}

// ---------------------------------------------------------------------------------------------
// In the starting process
// ---------------------------------------------------------------------------------------------

Walk::Walk(const Inputs& inputs, const CommonOptions& options, const WalkBounds& bounds,
           const WalkWork& work)
    : inputs_(inputs), options_(options), bounds_(bounds), work_(work) {
    for (const std::string& file : work.files) {
        providers_.push_back(
            std::make_unique<LivingProvider>(file, static_cast<int>(providers_.size())));
        const std::string& problem = providers_.back()->Unprovable();
        if (!problem.empty()) {
            open_.insert(file + ": " + problem);
        }
    }
    StartAgain();
}

void Walk::StartAgain() {
    joints_.clear();
    known_.clear();
    sitesWhenAsked_.clear();
    withoutTable_.clear();
    lived_ = 0;
    probed_ = 0;
    asked_ = 0;
    Joint first;
    for (std::size_t i = 0; i < providers_.size(); ++i) {
        first.states[i] = StateOf(i, providers_[i]->Start());
    }
    Meet(first);
}

int Walk::StateOf(std::size_t provider, ProviderState state) {
    const auto [place, isNew] =
        numbers_[provider].emplace(state.form, static_cast<int>(states_[provider].size()));
    if (isNew) {
        states_[provider].push_back(std::move(state));
    }
    return place->second;
}

void Walk::Meet(Joint joint) {
    const std::array<int, Arena::MOST + 1> key = {joint.states[0], joint.states[1],
                                                  followsDocuments_ ? joint.document : 0};
    if (known_.emplace(key, static_cast<int>(joints_.size())).second) {
        joint.depth = joint.parent < 0 ? 0 : At(joint.parent).depth + 1;
        joints_.push_back(std::move(joint));
    }
}

bool Walk::HasTable(int joint) const {
    return states_[0][static_cast<std::size_t>(At(joint).states[0])].HasTable();
}

bool Walk::MayBeDone(int call, int joint) const {
    const bool hasTable = HasTable(joint);
    return call < work_.calls->Count() ? work_.calls->MayBeDone(call, hasTable) : hasTable;
}

// What crashed in several states is not looked at in others.
bool Walk::IsSkipped(int joint, int call) const {
    const auto crashes = crashes_.find(call);
    return skipped_.count({joint, call}) != 0 ||
           (crashes != crashes_.end() && crashes->second >= ENOUGH_CRASHES);
}

// Of several parts of a walk each makes the calls of its own.
bool Walk::IsOurs(int joint, int call) const {
    return options_.shard.Has(joint * (work_.calls->Count() + work_.units) + call);
}

// Every part comes to all states: it makes all calls near the begin of a provider's life, and later
// those that were seen to lead to other states there. Should others do so later, the parts differ
// in their ways.
bool Walk::IsNeeded(int joint, int call) const {
    return call < work_.calls->FirstQuestion() || At(joint).depth <= 1 ||
           changing_.count(call) != 0 || IsOurs(joint, call);
}

bool Walk::IsOver() const {
    return isBounded_ || IsInterrupted() || (work_.stopsAtOnce && work_.found() > 0);
}

void Walk::Run() {
    while (!IsOver()) {
        std::vector<Task> tasks = LifeTasks();
        if (tasks.empty()) {
            tasks = ProbeTasks();
        }
        if (tasks.empty()) {
            tasks = AskTasks();
        }
        if (tasks.empty()) {
            break;
        }
        RunTasks(tasks);
    }
    isInterrupted_ = isInterrupted_ || IsInterrupted();
}

// The life of all joints that are new: so the states in which a question may differ are found soon.
std::vector<Walk::Task> Walk::LifeTasks() {
    return TasksFrom(lived_, {{}, 0, work_.calls->FirstQuestion(), false, false});
}

// The first path of every question in all joints that are new: most differences show there, and
// most questions that lead to other states.
std::vector<Walk::Task> Walk::ProbeTasks() {
    return work_.found() != 0 ? std::vector<Task>()
                              : TasksFrom(probed_, {{},
                                                    work_.calls->FirstQuestion(),
                                                    work_.calls->Count() + work_.units,
                                                    false,
                                                    true});
}

// Of all joints from `next` on, some each.
std::vector<Walk::Task> Walk::TasksFrom(std::size_t& next, const Task& task) {
    std::vector<Task> tasks;
    const std::size_t workers = options_.workers > 0
                                    ? static_cast<std::size_t>(options_.workers)
                                    : std::max(1U, std::thread::hardware_concurrency());
    const std::size_t share = std::max<std::size_t>(1, (joints_.size() - next) / (4 * workers));
    for (; next < joints_.size(); ++next) {
        if (tasks.empty() || tasks.back().joints.size() >= share) {
            tasks.push_back(task);
        }
        tasks.back().joints.push_back(static_cast<int>(next));
    }
    return tasks;
}

// The questions in joints that are equally many calls away, nearest first; then again where trace
// sites were not known yet.
std::vector<Walk::Task> Walk::AskTasks() {
    std::vector<Task> tasks;
    const int first = work_.calls->FirstQuestion();
    const int behind = work_.calls->Count() + work_.units;
    const auto add = [&](int joint) {
        tasks.push_back({{joint}, first, behind, sitesWhenAsked_.count(joint) != 0, false});
        sitesWhenAsked_[joint] = Sites();
    };
    const int found = work_.found();
    // Few at first: what was tried in them need not be tried in others.
    const std::size_t most = std::max(asked_, FEW_JOINTS);
    while (asked_ < joints_.size() && tasks.size() < most &&
           (tasks.empty() || joints_[asked_].depth == At(tasks.back().joints.front()).depth)) {
        const int joint = static_cast<int>(asked_++);
        if (!HasTable(joint)) {
            withoutTable_.push_back(joint);
        } else if (found == 0 || At(joint).depth + 1 < found) {
            add(joint);
        }
    }
    if (tasks.empty() && found == 0) {
        std::for_each(withoutTable_.begin(), withoutTable_.end(), add);
        withoutTable_.clear();
    }
    if (tasks.empty() && found == 0) {
        const std::map<int, std::size_t> before = sitesWhenAsked_;
        for (const auto& [joint, sites] : before) {
            if (sites < Sites()) {
                add(joint);
            }
        }
    }
    return tasks;
}

std::size_t Walk::Sites() const {
    std::size_t sites = 0;
    for (const auto& provider : providers_) {
        sites += provider->KnownCells().size();
    }
    return sites;
}

void Walk::RunTasks(const std::vector<Task>& tasks) {
    // Joints have the same numbers whichever worker is faster.
    std::map<int, Part> parts;
    bool mustStartAgain = false;
    WorkOptions options = {.workers = options_.workers, .progress = !options_.quiet};
    options.what = work_.what;
    options.stop = [this] { return IsOver(); };
    Work(
        static_cast<int>(tasks.size()), options,
        [&](int task, Shared& shared) {
            return DoTask(tasks[static_cast<std::size_t>(task)], shared);
        },
        [&](const WorkerResult& result) {
            const Task& task = tasks[static_cast<std::size_t>(result.task)];
            if (!result.trouble.empty()) {
                const int calls = task.behind - task.first;
                const int joint = task.joints[static_cast<std::size_t>(result.step / calls)];
                const int call = task.first + result.step % calls;
                if (IsOurs(joint, call)) {
                    work_.note(joint, call, result);
                }
                ++crashes_[call];
                return skipped_.insert({joint, call}).second && !IsOver();
            }
            Part part = BytesReader(result.bytes).Next<Part>();
            mustStartAgain = mustStartAgain || (part.readsPolicy && !followsDocuments_);
            work_.take(BytesReader(part.seen));
            part.seen.clear();
            parts[result.task] = std::move(part);
            isBounded_ = isBounded_ || TotalSeconds() > bounds_.seconds;
            return false;
        });
    const std::size_t sites = Sites();
    for (auto& [task, part] : parts) {
        Take(std::move(part));
    }
    if (Sites() > sites) {
        tried_.clear();
    }
    isBounded_ = isBounded_ || joints_.size() > static_cast<std::size_t>(bounds_.states);
    if (parts.size() < tasks.size() && !IsOver()) {
        open_.insert("some calls were not made to their end");
    }
    if (mustStartAgain) {
        // What was published is not only what a provider made of it.
        followsDocuments_ = true;
        StartAgain();
    }
}

void Walk::Take(Part part) {
    count_.questions += part.questions;
    count_.paths += part.paths;
    for (const auto& [place, asked] : part.asked) {
        count_.asked[{NameOf(place.first), place.second}].Add(asked);
    }
    open_.merge(part.open);
    unknown_.merge(part.unknown);
    tried_.insert(part.tried.begin(), part.tried.end());
    isInterrupted_ = isInterrupted_ || part.isInterrupted;
    std::array<std::vector<int>, Arena::MOST> numbers;
    for (std::size_t i = 0; i < providers_.size(); ++i) {
        providers_[i]->KnowCells(part.cells[i]);
        for (ProviderState& state : part.states[i]) {
            numbers[i].push_back(StateOf(i, std::move(state)));
        }
    }
    for (FoundJoint& found : part.found) {
        if (found.call >= work_.calls->FirstQuestion()) {
            changing_.insert(found.call);
        }
        Joint joint;
        joint.parent = found.parent;
        joint.call = found.call;
        joint.path = std::move(found.path);
        for (std::size_t i = 0; i < providers_.size(); ++i) {
            const int state = found.states[i];
            joint.states[i] = state >= 0 ? state : numbers[i][static_cast<std::size_t>(-1 - state)];
        }
        const bool publishes =
            found.call < work_.calls->Count() && work_.calls->Publishes(found.call);
        joint.document =
            publishes ? (*work_.calls)[found.call].document : At(found.parent).document;
        Meet(std::move(joint));
    }
}

// ---------------------------------------------------------------------------------------------
// What came of it
// ---------------------------------------------------------------------------------------------

std::vector<int> Walk::WayTo(int joint) const {
    std::vector<int> way;
    for (; At(joint).parent >= 0; joint = At(joint).parent) {
        way.push_back(joint);
    }
    std::reverse(way.begin(), way.end());
    return way;
}

std::vector<std::string> Walk::EverPublishedIn(int joint) const {
    std::vector<std::string> published;
    for (const int step : WayTo(joint)) {
        const int call = At(step).call;
        const bool publishes = call < work_.calls->Count() && work_.calls->Publishes(call);
        const std::string* document =
            publishes ? work_.calls->Document((*work_.calls)[call].document) : nullptr;
        if (document != nullptr) {
            published.push_back(*document);
        }
    }
    return published;
}

std::vector<std::string> Walk::PublishedIn(int joint) const {
    int last = joint;
    const auto isCreation = [&](int step) {
        const int call = At(step).call;
        return call < work_.calls->Count() && (*work_.calls)[call].kind == Call::Kind::kCreate;
    };
    while (last >= 0 && At(last).parent >= 0 && !isCreation(last)) {
        last = At(last).parent;
    }
    const std::size_t before = At(last).parent < 0 ? 0 : EverPublishedIn(At(last).parent).size();
    std::vector<std::string> published = EverPublishedIn(joint);
    published.erase(published.begin(), published.begin() + static_cast<std::ptrdiff_t>(before));
    return published;
}

bool Walk::IsOfAPage(int joint) const {
    const std::vector<int> way = WayTo(joint);
    return !way.empty() && std::all_of(way.begin(), way.end(), [&](int step) {
        const int call = At(step).call;
        const Call::Kind wanted = step == way.front() ? Call::Kind::kCreate : Call::Kind::kPublish;
        return call < work_.calls->Count() && (*work_.calls)[call].kind == wanted;
    });
}

std::string Walk::NameOf(int call) const {
    const int calls = work_.calls->Count();
    return call < calls ? work_.calls->NameOf(call) : work_.nameOf(call - calls);
}

std::vector<std::string> Walk::CallsTo(int joint) const {
    std::vector<std::string> calls;
    for (const int step : WayTo(joint)) {
        calls.push_back(NameOf(At(step).call));
    }
    return calls;
}

WalkCount Walk::Count() const {
    WalkCount count = count_;
    count.joints = joints_.size();
    count.way = 14695981039346656037U;  // FNV-1a
    for (const Joint& joint : joints_) {
        for (const int number : {joint.parent, joint.call, joint.states[0], joint.states[1]}) {
            count.way = (count.way ^ static_cast<std::uint64_t>(number)) * 1099511628211U;
        }
    }
    for (std::size_t i = 0; i < providers_.size(); ++i) {
        count.states[i] = states_[i].size();
    }
    count.open.assign(open_.begin(), open_.end());
    if (isBounded_) {
        count.open.push_back("new states go on to appear: after " + std::to_string(joints_.size()) +
                             " of them, or " + std::to_string(static_cast<int>(bounds_.seconds)) +
                             " seconds, the walk was ended (--most-states, --most-seconds)");
    }
    if (!skipped_.empty()) {
        count.open.emplace_back("a provider crashes, and was not asked on from there");
    }
    if (!unknown_.empty()) {
        count.open.emplace_back(
            "a provider asks for what the inputs do not name, or does more than is seen");
    }
    if (isInterrupted_) {
        count.open.emplace_back("it was interrupted");
    }
    return count;
}

}  // namespace explorer
