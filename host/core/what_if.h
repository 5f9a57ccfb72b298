// Asks a provider what it would answer on a TV that is a little different, and finds the smallest
// differences that change an answer. Nothing of it reaches the TV.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/page/provider.h"
#include "suppositions.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

// What the provider answers, and what was read for it, in order.
struct Reply {
    std::string text;
    std::vector<vtv::Read> reads;
};

// Suppositions that together change an answer, while no part of them does.
struct Difference {
    std::vector<Supposition> suppositions;
    std::string answer;  // what it is then
};

struct Differences {
    std::vector<Difference> found;  // all of the same, smallest size
    size_t tried = 0;               // up to how many suppositions together
    // The same question, asked again of the same TV, has another answer: nothing can be concluded.
    std::optional<std::string> otherAnswer;
};

class WhatIf {
  public:
    using Question = std::function<std::string(const Provider&)>;

    // The provider's own TV must be on. Both must outlive this.
    WhatIf(const Provider& provider, const vtv::Tv& tv);
    ~WhatIf();
    WhatIf(const WhatIf&) = delete;
    WhatIf& operator=(const WhatIf&) = delete;

    // Asks for real, and takes what is read for what the TV is from here on.
    Reply Ask(const Question& question);
    Reply Suppose(const Question& question, const std::vector<Supposition>& suppositions);
    Differences Find(const Question& question, const Reply& answer);

  private:
    struct Branch;

    const Provider& ProviderFor(const std::vector<Supposition>& suppositions);
    void Remember(const std::vector<vtv::Read>& reads);
    std::vector<vtv::Read> Inputs(const Branch& branch) const;
    std::vector<Supposition> Others(const Branch& branch, size_t input,
                                    const vtv::Read& read) const;
    Circumstances CircumstancesOf(const Branch& branch) const;
    std::vector<Branch> Grow(const Question& question, const std::string& answer,
                             const std::vector<Branch>& branches, size_t* left,
                             std::vector<Difference>* found);

    const Provider& provider_;
    const vtv::Tv& tv_;
    std::vector<std::string> failing_;  // the calls that were told to fail
    std::vector<vtv::Read> world_;      // what the TV is known to be
    // A provider keeps the policy that it was created with: one for each policy that is supposed,
    // and one for the TV's own where it could not be read.
    std::map<std::optional<std::string>, std::unique_ptr<Provider>> providers_;
};

}  // namespace host
