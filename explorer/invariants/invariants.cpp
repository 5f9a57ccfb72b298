#include "invariants.h"

#include "invariant_rules.h"

namespace explorer {

const std::vector<Invariant>& Invariants() {
    static const std::vector<Invariant> invariants = [] {
        std::vector<Invariant> all = rules::OfStates();
        all.insert(all.end(), rules::OfConduct().begin(), rules::OfConduct().end());
        return all;
    }();
    return invariants;
}

}  // namespace explorer
