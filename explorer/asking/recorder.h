// Makes calls with a provider and writes down what comes of them: what was done, and what it
// remembers then.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "living_provider.h"

namespace explorer {

class Recorder {
  public:
    // Must outlive this.
    explicit Recorder(LivingProvider& provider) : provider_(provider) {}

    LivingProvider& Provider() const { return provider_; }

    // Within the TV's current run, with no trace site registered.
    void Make(const ProviderState& state, const std::function<void()>& call);
    // What was made last is made again with other bytes where memory was given back or not written
    // yet, and, where there is tracing, with all trace sites registered, with its own, with the
    // others, and while it is off: the record tells that, too.
    void TryAgain();
    // Once more, and nothing is written down: the TV is as the provider leaves it.
    void MakeAgain(const ProviderState& state, const std::function<void()>& call);

    const std::string& Record() const { return record_; }
    // When it is another state.
    std::optional<ProviderState>& Next() { return next_; }

  private:
    bool IsAlikeWithOtherMemory();
    void TryTracing();
    std::vector<std::size_t> Places(bool own, bool others) const;
    std::string RecordWith(const std::vector<std::size_t>& places);
    void RequireSame(const std::vector<std::size_t>& places);

    LivingProvider& provider_;
    const ProviderState* state_ = nullptr;
    const std::function<void()>* call_ = nullptr;
    std::string record_;
    std::optional<ProviderState> next_;
    bool hasTraced_ = false;
    std::vector<std::size_t> registered_;
};

}  // namespace explorer
