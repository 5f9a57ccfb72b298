#include "contract_checks.h"

#include "contract_subject.h"

namespace host {

const std::vector<ContractCheck>& ContractChecks() {
    static const std::vector<ContractCheck> checks = [] {
        std::vector<ContractCheck> all;
        for (const auto& group :
             {LifeChecks(), ProcessChecks(), KeyChecks(), ValueChecks(), TextChecks(),
              DimmedTextChecks(), ListChecks(), BoxChecks(), PlatformChecks()}) {
            all.insert(all.end(), group.begin(), group.end());
        }
        return all;
    }();
    return checks;
}

}  // namespace host
