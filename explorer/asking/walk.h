// The states that one provider, or two side by side, come to by any calls: every call is made in
// every state, until no state is new.
#pragma once

#include <array>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "calls.h"
#include "command.h"
#include "explorer/engine/bytes.h"
#include "explorer/engine/coverage.h"
#include "explorer/engine/workers.h"
#include "living_provider.h"

namespace explorer {

// How far a walk may go before it says that it does not come to an end.
struct WalkBounds {
    int states = 20000;
    double seconds = 900;
};

// States of all providers of the walk, to which the same calls led.
struct Joint {
    std::array<int, Arena::MOST> states = {-1, -1};
    int document = -1;           // that was published last
    int parent = -1;             // -1: as they were loaded
    int call = -1;               // from there
    std::vector<Decision> path;  // of the TV during that call
    int depth = 0;               // calls
};

// What one provider was asked by a call, in all joints together: its own paths, by what it read
// itself, and the states of the TV that they stand for.
struct Asked {
    std::uint64_t paths = 0;
    BigNumber states;

    void Add(const Asked& other);
    template <typename Bytes>
    void Members(Bytes& bytes) {
        bytes(paths, states);
    }
};

// What a walk came to.
struct WalkCount {
    std::size_t joints = 0;
    std::array<std::size_t, Arena::MOST> states = {};
    std::uint64_t questions = 0;  // calls, by the joint in which they were made
    std::uint64_t paths = 0;
    std::map<std::pair<std::string, std::size_t>, Asked> asked;  // by call and provider
    // Equal for parts of one walk that came to the same states.
    std::uint64_t way = 0;
    // Empty: the providers are closed under their calls, every one was made in every state, and its
    // paths stand for all states of the TV.
    std::vector<std::string> open;
};

// A path of a call.
struct Seen {
    int joint = 0;
    int call = 0;
    std::vector<std::string_view> records;  // by provider
    const Choices& choices;
    bool isCounted = true;  // false: it is looked at another time as well
    // Makes the call with the first provider once more: the TV is then as that one leaves it.
    std::function<void()> again;
};

// Who walks tells what is done and what is to be seen. Of the functions, those that are said to be
// a worker's are called in worker processes.
struct WalkWork {
    std::vector<std::string> files;  // one or two
    const Calls* calls = nullptr;
    // Beside the calls: further units that are looked at in each joint, numbered from 0.
    int units = 0;
    std::function<std::string(int unit)> nameOf = nullptr;
    const char* what = "questions";

    // A worker begins.
    std::function<void()> prepare = [] {};
    // In a worker: makes the unit within the TV's current run.
    std::function<void(LivingProvider& provider, int joint, int unit)> look;
    // In a worker, behind each path: what each provider did. Units count from Calls::Count(). False
    // when that is enough.
    std::function<bool(const Seen& seen)> see;
    // In a worker, at its end: what it has seen.
    std::function<std::string()> seen;
    // What a worker has seen comes here.
    std::function<void(BytesReader seen)> take;
    // A worker crashed or hung.
    std::function<void(int joint, int call, const WorkerResult& result)> note;
    // At how many calls something is known that ends the walk; 0: nothing is. Joints that are that
    // far away are not looked at any more.
    std::function<int()> found = [] { return 0; };
    bool stopsAtOnce = false;  // with what is found first, and not with what is nearest
};

// Throws CommandError in a program that cannot put back what a provider remembers.
void RequireArena();

class Walk {
  public:
    // Loads the providers. Throws host::ProviderError. All that is named must outlive this.
    Walk(const Inputs& inputs, const CommonOptions& options, const WalkBounds& bounds,
         const WalkWork& work);

    void Run();

    const Joint& At(int joint) const { return joints_[static_cast<std::size_t>(joint)]; }
    bool HasTable(int joint) const;
    // From the first call on.
    std::vector<int> WayTo(int joint) const;
    // What was published since the last create_provider, that first; or ever, to the library.
    std::vector<std::string> PublishedIn(int joint) const;
    std::vector<std::string> EverPublishedIn(int joint) const;
    // Whether a page comes there: by one create_provider and publications.
    bool IsOfAPage(int joint) const;
    std::string NameOf(int call) const;
    // The calls that lead there, in words.
    std::vector<std::string> CallsTo(int joint) const;
    WalkCount Count() const;
    const std::set<std::string>& UnknownKeys() const { return unknown_; }

  private:
    struct FoundJoint;
    struct Part;
    struct Task;
    class Worker;

    std::size_t Sites() const;
    // In a worker.
    std::string DoTask(const Task& task, Shared& shared) const;
    void RunTasks(const std::vector<Task>& tasks);
    std::vector<Task> LifeTasks();
    std::vector<Task> ProbeTasks();
    std::vector<Task> TasksFrom(std::size_t& next, const Task& task);
    std::vector<Task> AskTasks();
    void Take(Part part);
    int StateOf(std::size_t provider, ProviderState state);
    void Meet(Joint joint);
    void StartAgain();
    bool IsOver() const;
    bool IsSkipped(int joint, int call) const;
    bool IsOurs(int joint, int call) const;
    bool IsNeeded(int joint, int call) const;
    bool MayBeDone(int call, int joint) const;

    const Inputs& inputs_;
    const CommonOptions& options_;
    const WalkBounds bounds_;
    const WalkWork& work_;
    std::vector<std::unique_ptr<LivingProvider>> providers_;
    std::array<std::vector<ProviderState>, Arena::MOST> states_;
    std::array<std::map<std::string, int>, Arena::MOST> numbers_;
    std::vector<Joint> joints_;
    std::map<std::array<int, Arena::MOST + 1>, int> known_;
    // Joints whose life or questions come next, from those on.
    std::size_t lived_ = 0;
    std::size_t probed_ = 0;
    std::size_t asked_ = 0;
    std::vector<int> withoutTable_;  // asked last
    // By joint: how many trace sites were known when it was asked.
    std::map<int, std::size_t> sitesWhenAsked_;
    // What was done while all sites were known and tried with tracing: another state in which the
    // same call does just the same needs no other trial.
    std::unordered_set<std::uint64_t> tried_;
    std::set<std::pair<int, int>> skipped_;  // joint and call
    std::map<int, int> crashes_;             // by call
    std::set<int> changing_;                 // calls beside life that led to another state
    bool followsDocuments_ = false;
    bool isBounded_ = false;
    bool isInterrupted_ = false;
    WalkCount count_;
    std::set<std::string> open_;
    std::set<std::string> unknown_;
};

}  // namespace explorer
