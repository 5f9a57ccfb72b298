// Two providers side by side, compared in every pair of states that they come to by the same calls.
#pragma once

#include <memory>
#include <vector>

#include "comparison.h"
#include "explorer/asking/walk.h"

namespace explorer {

class WalkComparison {
  public:
    // Loads both. Throws host::ProviderError. All that is named must outlive this.
    WalkComparison(const Inputs& inputs, const DiffOptions& options,
                   const std::vector<const Question*>& questions);

    void Run() { walk_->Run(); }

    // Nearest first; only that one, unless all are asked for.
    std::vector<Difference> Found() const;
    const Calls& AllCalls() const { return calls_; }
    const Walk& Walked() const { return *walk_; }

  private:
    WalkWork Work();
    bool See(const Seen& seen);
    void AddAt(int joint, int call, const State& state, Difference difference,
               bool isCounted = true);
    int LengthOf(int joint, int call) const;

    const Inputs& inputs_;
    const DiffOptions& options_;
    const Calls calls_;
    Differences differences_;
    const WalkWork work_;
    std::unique_ptr<Walk> walk_;
};

}  // namespace explorer
