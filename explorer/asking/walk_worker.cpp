#include "walk_worker.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <optional>
#include <tuple>
#include <unordered_set>

#include "exploration.h"
#include "explorer/engine/coverage.h"
#include "explorer/tv/lazy_tv.h"
#include "platform/trace_storage.h"
#include "recorder.h"

namespace explorer {

class Walk::Worker {
  public:
    Worker(const Walk& walk, const Task& task, Shared& shared)
        : walk_(walk), work_(walk.work_), task_(task), shared_(shared) {
        tv().Use(walk.inputs_);
        for (const auto& provider : walk.providers_) {
            recorders_.emplace_back(*provider);
            makes_.emplace_back([this, &provider] { Make(*provider); });
        }
        work_.prepare();
    }

    std::string Run() {
        const int calls = task_.behind - task_.first;
        for (std::size_t i = 0; i < task_.joints.size() && !isEnough_; ++i) {
            joint_ = task_.joints[i];
            for (call_ = task_.first; call_ < task_.behind && !isEnough_; ++call_) {
                shared_.step = static_cast<int>(i) * calls + call_ - task_.first;
                if (!walk_.IsSkipped(joint_, call_) && IsNeeded() &&
                    walk_.MayBeDone(call_, joint_)) {
                    MakeCall();
                }
            }
        }
        for (std::size_t i = 0; i < Providers(); ++i) {
            part_.cells[i] = Provider(i).KnownCells();
            if (!Provider(i).Unprovable().empty()) {
                part_.open.insert(walk_.work_.files[i] + ": " + Provider(i).Unprovable());
            }
        }
        part_.unknown = tv().UnknownKeys();
        part_.seen = work_.seen();
        return ToBytes(part_);
    }

  private:
    // The paths of one provider among those of both: by what it read itself.
    class OwnPaths {
      public:
        // Behind a run of it.
        void Add(const Choices& choices) {
            path_.clear();
            std::copy_if(choices.Path(), choices.Path() + choices.Depth(),
                         std::back_inserter(path_),
                         [](const Decision& decision) { return tv().HasRead(decision.input); });
            // What it read no part of comes again with each value of that.
            if (path_.size() == choices.Depth() || known_.insert(Hash()).second) {
                coverage.Add(path_.data(), path_.size());
            }
        }

        Coverage coverage;

      private:
        std::uint64_t Hash() const {
            std::uint64_t hash = 14695981039346656037U;  // FNV-1a
            for (const Decision& decision : path_) {
                hash = (hash ^ decision.input) * 1099511628211U;
                hash = (hash ^ decision.value) * 1099511628211U;
            }
            return hash;
        }

        std::vector<Decision> path_;
        std::unordered_set<std::uint64_t> known_;
    };

    std::size_t Providers() const { return walk_.providers_.size(); }
    LivingProvider& Provider(std::size_t i) const { return *walk_.providers_[i]; }
    const ProviderState& StateOf(std::size_t i) const {
        return walk_.states_[i][static_cast<std::size_t>(walk_.At(joint_).states[i])];
    }

    // A probe is cheap, and tells every part which calls lead to other states.
    bool IsNeeded() const { return task_.isProbe || walk_.IsNeeded(joint_, call_); }

    void MakeCall() {
        const bool isOurs = walk_.IsOurs(joint_, call_);
        Coverage coverage;
        own_ = {};
        bool hasDiverged = false;
        Choices& choices = shared_.choices;
        const bool isWhole = ForEachPath(
            choices, shared_.runs, [this] { MakeWithAll(); },
            [&] {
                coverage.Add(choices.Path(), choices.Depth());
                hasDiverged = hasDiverged || choices.Diverged();
                Follow();
                isEnough_ = isOurs && !work_.see(SeenOn(choices));
            },
            [this, &coverage] { return isEnough_ || (task_.isProbe && coverage.Paths() > 0); });
        part_.isInterrupted = part_.isInterrupted || IsInterrupted();
        if (isOurs && !task_.isAgain && !task_.isProbe) {
            ++part_.questions;
            part_.paths += coverage.Paths();
            for (std::size_t i = 0; i < Providers(); ++i) {
                part_.asked[{call_, i}].Add({own_[i].coverage.Paths(), own_[i].coverage.States()});
            }
        }
        if (hasDiverged) {
            part_.open.insert(walk_.NameOf(call_) + ": asks differently when it is asked again");
        } else if (isWhole && !coverage.IsComplete()) {
            part_.open.insert(walk_.NameOf(call_) + ": its paths do not stand for all states");
        }
        isEnough_ = isEnough_ || IsInterrupted();
    }

    void MakeWithAll() {
        bool isAlike = true;
        for (std::size_t i = 0; i < Providers(); ++i) {
            if (i > 0) {
                tv().Again();
            }
            recorders_[i].Make(StateOf(i), makes_[i]);
            own_[i].Add(shared_.choices);
            isAlike = isAlike && recorders_[i].Record() == recorders_[0].Record();
        }
        if (!isAlike || IsUntried()) {
            for (Recorder& recorder : recorders_) {
                recorder.TryAgain();
            }
        }
    }

    // Whether what the providers did, which is alike, was not tried with other memory and tracing
    // yet; from now on it is.
    bool IsUntried() {
        std::uint64_t hash = 14695981039346656037U;  // FNV-1a
        const auto add = [&hash](std::uint64_t number) { hash = (hash ^ number) * 1099511628211U; };
        add(static_cast<std::uint64_t>(call_));
        add(std::hash<std::string>()(recorders_.front().Record()));
        for (Recorder& recorder : recorders_) {
            add(recorder.Next() ? std::hash<std::string>()(recorder.Next()->form) : 0);
        }
        const bool isUntried = walk_.tried_.count(hash) == 0 && tried_.insert(hash).second;
        if (isUntried) {
            part_.tried.push_back(hash);
        }
        return isUntried;
    }

    Seen SeenOn(const Choices& choices) {
        Seen seen = {joint_, call_, {}, choices, !task_.isAgain && !task_.isProbe, [this] {
                         recorders_[0].MakeAgain(StateOf(0), makes_[0]);
                     }};
        for (const Recorder& recorder : recorders_) {
            seen.records.push_back(recorder.Record());
        }
        return seen;
    }

    void Make(LivingProvider& provider) {
        const Calls& calls = *work_.calls;
        const int units = calls.Count();
        const Joint& joint = walk_.At(joint_);
        const bool publishes = call_ < units && calls.Publishes(call_);
        tv().SetPolicy(calls.Document(publishes ? calls[call_].document : joint.document));
        if (call_ < units) {
            provider.Do(calls[call_]);
        } else {
            work_.look(provider, joint_, call_ - units);
        }
        if (call_ >= work_.calls->FirstQuestion() && tv().IsPolicyRead()) {
            part_.readsPolicy = true;
        }
    }

    void Follow() {
        FoundJoint found = {joint_, call_, {}, walk_.At(joint_).states};
        bool isNew = false;
        for (std::size_t i = 0; i < Providers(); ++i) {
            if (std::optional<ProviderState>& next = recorders_[i].Next()) {
                found.states[i] = NumberOf(i, *next);
                isNew = true;
            }
        }
        if (isNew && met_.insert({joint_, found.states, call_}).second) {
            const Choices& choices = shared_.choices;
            found.path.assign(choices.Path(), choices.Path() + choices.Depth());
            part_.found.push_back(std::move(found));
        }
    }

    int NumberOf(std::size_t i, ProviderState& state) {
        const auto known = walk_.numbers_[i].find(state.form);
        if (known != walk_.numbers_[i].end()) {
            return known->second;
        }
        std::vector<ProviderState>& added = part_.states[i];
        const auto [place, isNew] =
            new_[i].emplace(state.form, -1 - static_cast<int>(added.size()));
        if (isNew) {
            added.push_back(std::move(state));
            Provider(i).Judge();
        }
        return place->second;
    }

    const Walk& walk_;
    const WalkWork& work_;
    const Task& task_;
    Shared& shared_;
    int joint_ = 0;
    int call_ = 0;
    bool isEnough_ = false;
    std::vector<Recorder> recorders_;
    std::vector<std::function<void()>> makes_;  // the call, with each provider
    std::array<std::map<std::string, int>, Arena::MOST> new_;
    std::set<std::tuple<int, std::array<int, Arena::MOST>, int>> met_;
    std::unordered_set<std::uint64_t> tried_;  // beside the walk's
    std::array<OwnPaths, Arena::MOST> own_;    // of this call
    Part part_;
};

std::string Walk::DoTask(const Task& task, Shared& shared) const {
    return Worker(*this, task, shared).Run();
}

}  // namespace explorer
