#include "what_if.h"

#include <algorithm>

#include "virtual-tv/model/known_settings.h"

namespace host {

namespace {

// More things that all have to be otherwise tell nobody a reason.
constexpr size_t kMostTogether = 4;
// Some seconds at worst; three together are always within it on the page.
constexpr size_t kMostAttempts = 30000;
// What reads the policy when a provider is created.
constexpr char kPolicyCall[] = "vconf_get_str";

bool IsSameRead(const vtv::Read& a, const vtv::Read& b) {
    return a.function == b.function && a.subject == b.subject;
}

std::vector<vtv::Read> WithoutRepetition(const std::vector<vtv::Read>& reads) {
    std::vector<vtv::Read> unique;
    for (const vtv::Read& read : reads) {
        if (std::none_of(unique.begin(), unique.end(),
                         [&](const vtv::Read& known) { return IsSameRead(known, read); })) {
            unique.push_back(read);
        }
    }
    return unique;
}

Reply Recorded(const WhatIf::Question& question, const Provider& provider) {
    Reply answer;
    vtv::StartRecordingReads();
    try {
        answer.text = question(provider);
    } catch (...) {
        vtv::StopRecordingReads();
        throw;
    }
    answer.reads = vtv::StopRecordingReads();
    return answer;
}

vtv::Read PolicyRead(const vtv::Tv& tv) {
    vtv::Read read = {kPolicyCall, vtv::kPolicyKey, std::nullopt};
    const std::string text = TextOf(tv, vtv::kPolicyKey);
    if (!text.empty()) {
        read.value = text;
    }
    return read;
}

bool IsOfTheModel(const Difference& difference) {
    return std::any_of(difference.suppositions.begin(), difference.suppositions.end(),
                       [](const Supposition& supposition) {
                           return supposition.read.function.rfind("system_info_", 0) == 0 &&
                                  !supposition.mends;
                       });
}

bool Holds(const std::vector<std::string>& functions, const std::string& function) {
    return std::find(functions.begin(), functions.end(), function) != functions.end();
}

std::vector<std::string> MendedIn(const std::vector<Supposition>& suppositions) {
    std::vector<std::string> mended;
    for (const Supposition& supposition : suppositions) {
        if (supposition.mends) {
            mended.push_back(supposition.read.function);
        }
    }
    return mended;
}

// Differences in the same things tell a reader the same.
void AddDifference(const Difference& difference, std::vector<Difference>* found) {
    const auto isSame = [&](const Difference& known) {
        return std::equal(known.suppositions.begin(), known.suppositions.end(),
                          difference.suppositions.begin(), difference.suppositions.end(),
                          [](const Supposition& a, const Supposition& b) {
                              return IsSameRead(a.read, b.read) && a.now == b.now;
                          });
    };
    if (std::none_of(found->begin(), found->end(), isSame)) {
        found->push_back(difference);
    }
}

}  // namespace

// Suppositions that have not changed the answer, and what is read under them.
struct WhatIf::Branch {
    std::vector<Supposition> suppositions;
    std::vector<vtv::Read> reads;
    // A run under one more supposition is the same up to the read that it is about. So each set is
    // met in the order of its reads, once, and those before this one need not be tried again.
    size_t next = 0;
};

WhatIf::WhatIf(const Provider& provider, const vtv::Tv& tv) : provider_(provider), tv_(tv) {
    for (const vtv::Fault& fault : tv.Faults()) {
        if (fault.kind == vtv::Fault::Kind::kAlways) {
            failing_.push_back(fault.function);
        }
    }
}

WhatIf::~WhatIf() {
    const vtv::Experiment quiet({});
    providers_.clear();
}

void WhatIf::Remember(const std::vector<vtv::Read>& reads) {
    for (const vtv::Read& read : WithoutRepetition(reads)) {
        // The mode is the current assistant's, so it changes with that one.
        if (read.function != "AOVSystemDataGetAOVMode" &&
            std::none_of(world_.begin(), world_.end(),
                         [&](const vtv::Read& known) { return IsSameRead(known, read); })) {
            world_.push_back(read);
        }
    }
}

const Provider& WhatIf::ProviderFor(const std::vector<Supposition>& suppositions) {
    const std::vector<std::string> mended = MendedIn(suppositions);
    std::vector<vtv::Read> policies;
    for (const Supposition& supposition : suppositions) {
        if (supposition.read.subject == vtv::kPolicyKey) {
            policies.push_back(supposition.read);
        }
    }
    if (policies.empty() && !Holds(mended, kPolicyCall)) {
        return provider_;
    }
    std::unique_ptr<Provider>& provider =
        providers_[policies.empty() ? std::nullopt
                                    : std::optional(vtv::ToText(*policies.front().value))];
    if (provider == nullptr) {
        const vtv::Experiment supposed(policies, mended);
        provider = std::make_unique<Provider>(provider_.File(), Provider::Copy::kPrivate);
    }
    return *provider;
}

Reply WhatIf::Ask(const Question& question) {
    Reply answer = Recorded(question, provider_);
    Remember(answer.reads);
    return answer;
}

Reply WhatIf::Suppose(const Question& question, const std::vector<Supposition>& suppositions) {
    const Provider& provider = ProviderFor(suppositions);
    std::vector<vtv::Read> reads;
    reads.reserve(suppositions.size() + world_.size());
    for (const Supposition& supposition : suppositions) {
        if (!supposition.mends) {
            reads.push_back(supposition.read);
        }
    }
    const std::vector<std::string> mended = MendedIn(suppositions);
    for (const vtv::Read& known : world_) {
        if (!Holds(mended, known.function) &&
            std::none_of(reads.begin(), reads.end(),
                         [&](const vtv::Read& read) { return IsSameRead(known, read); })) {
            reads.push_back(known);
        }
    }
    const vtv::Experiment supposed(std::move(reads), mended);
    Reply answer = Recorded(question, provider);
    std::vector<vtv::Read> found = answer.reads;
    std::erase_if(found, [&](const vtv::Read& read) {
        return Holds(mended, read.function) ||
               std::any_of(suppositions.begin(), suppositions.end(),
                           [&](const Supposition& supposition) {
                               return IsSameRead(supposition.read, read);
                           });
    });
    Remember(found);
    return answer;
}

Circumstances WhatIf::CircumstancesOf(const Branch& branch) const {
    Circumstances circumstances = host::CircumstancesOf(tv_);
    for (const Supposition& supposition : branch.suppositions) {
        const vtv::Read& read = supposition.read;
        const std::string text = read.value ? vtv::ToText(*read.value) : "";
        if (read.subject == vtv::kCurrentAssistantKey) {
            circumstances.assistant = text;
        } else if (read.subject == vtv::kPolicyKey) {
            circumstances.policy = text;
        }
    }
    return circumstances;
}

// The calls that fail first, for they decide what is read; the provider read the policy before all
// else, when it was created.
std::vector<vtv::Read> WhatIf::Inputs(const Branch& branch) const {
    std::vector<vtv::Read> inputs;
    for (const std::string& function : failing_) {
        inputs.push_back(Mended(function).read);
    }
    inputs.push_back(PolicyRead(tv_));
    for (const vtv::Read& read : WithoutRepetition(branch.reads)) {
        inputs.push_back(read);
    }
    return inputs;
}

// What else it could be. A call that was told to fail tells nothing else before it is mended.
std::vector<Supposition> WhatIf::Others(const Branch& branch, size_t input,
                                        const vtv::Read& read) const {
    if (input < failing_.size()) {
        return {Mended(read.function)};
    }
    const bool fails =
        Holds(failing_, read.function) && !Holds(MendedIn(branch.suppositions), read.function);
    return fails ? std::vector<Supposition>() : Suppositions(read, tv_, CircumstancesOf(branch));
}

std::vector<WhatIf::Branch> WhatIf::Grow(const Question& question, const std::string& answer,
                                         const std::vector<Branch>& branches, size_t* left,
                                         std::vector<Difference>* found) {
    std::vector<Branch> grown;
    for (const Branch& branch : branches) {
        const std::vector<vtv::Read> inputs = Inputs(branch);
        for (size_t i = branch.next; i < inputs.size(); ++i) {
            const size_t before = found->size();
            for (Supposition& supposition : Others(branch, i, inputs[i])) {
                if (supposition.lastResort && found->size() > before) {
                    continue;
                }
                if (*left == 0) {
                    return {};
                }
                --*left;
                Branch next = {branch.suppositions, {}, i + 1};
                next.suppositions.push_back(std::move(supposition));
                Reply other = Suppose(question, next.suppositions);
                if (other.text != answer) {
                    AddDifference({std::move(next.suppositions), std::move(other.text)}, found);
                } else {
                    next.reads = WithoutRepetition(other.reads);
                    grown.push_back(std::move(next));
                }
            }
        }
    }
    return grown;
}

Differences WhatIf::Find(const Question& question, const Reply& answer) {
    Differences differences;
    // The many short experiments below need not each find out afterwards what the TV traces.
    const vtv::Experiment quiet({});
    const Reply again = Suppose(question, {});
    if (again.text != answer.text) {
        differences.otherAnswer = again.text;
        return differences;
    }
    std::vector<Branch> branches = {{{}, again.reads, 0}};
    size_t left = kMostAttempts;
    while (differences.found.empty() && differences.tried < kMostTogether && !branches.empty()) {
        branches = Grow(question, answer.text, branches, &left, &differences.found);
        if (left == 0) {
            break;
        }
        ++differences.tried;
    }
    // First what can be done about a TV, then what another model would be.
    std::stable_partition(differences.found.begin(), differences.found.end(),
                          [](const Difference& one) { return !IsOfTheModel(one); });
    return differences;
}

}  // namespace host
