// The odometer of an exploration: a run is a sequence of decisions, and each run after the first
// differs from the one before in its last decision that has a value left.
//
//     Choices choices;
//     do {
//         choices.Restart();
//         ... choices.Choose(input, count) wherever the run depends on something ...
//     } while (choices.Advance());
//
// visits every combination of what the runs really ask for, each exactly once.
#pragma once

#include <cstddef>
#include <cstdint>

namespace explorer {

struct Decision {
    std::uint16_t input;
    std::uint16_t value;  // below count
    std::uint16_t count;
};

class Choices {
  public:
    static constexpr std::size_t MAX_DEPTH = 128;

    // The value that this run takes for the input, which has `count` values. Ask once a run for
    // each input and keep the answer.
    int Choose(int input, int count) {
        if (position_ < depth_) {
            const Decision& decision = path_[position_++];
            diverged_ = diverged_ || decision.input != input || decision.count != count;
            return decision.value;
        }
        if (depth_ == MAX_DEPTH) {
            diverged_ = true;
            return 0;
        }
        path_[depth_++] = {static_cast<std::uint16_t>(input), 0, static_cast<std::uint16_t>(count)};
        position_ = depth_;
        return 0;
    }

    void Restart() { position_ = 0; }

    // False when every run has been made.
    bool Advance() {
        while (depth_ > 0 && path_[depth_ - 1].value + 1 == path_[depth_ - 1].count) {
            --depth_;
        }
        if (depth_ == 0) {
            return false;
        }
        ++path_[depth_ - 1].value;
        return true;
    }

    // Forgets everything: the next run is the first one again.
    void Clear() { *this = Choices(); }

    const Decision* Path() const { return path_; }
    std::size_t Depth() const { return depth_; }

    // The run asked for something else than the run before it at the same place, or did not come to
    // the place where the two were to part: it depends on more than its decisions.
    bool Diverged() const { return diverged_ || position_ != depth_; }

  private:
    Decision path_[MAX_DEPTH] = {};
    std::size_t depth_ = 0;
    std::size_t position_ = 0;
    bool diverged_ = false;
};

}  // namespace explorer
