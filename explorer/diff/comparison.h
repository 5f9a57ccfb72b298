// Where two providers differ; and two of them asked the same under one policy, for programs in
// which no memory can be put back.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "diff.h"
#include "explorer/asking/question.h"
#include "explorer/engine/library_memory.h"
#include "explorer/engine/workers.h"

namespace explorer {

using Lines = std::vector<std::string>;

// By what is different, in a worker and then over all of them.
using Differences = std::map<std::pair<Lines, Lines>, Difference>;

// Of unequal records: what only the one and only the other has.
Difference DifferenceOf(const std::string& recordA, const std::string& recordB);
// Where it shows: in that state, for that question or other call.
void Place(Difference& difference, const Inputs& inputs, const std::string& question,
           const State& state);
void Add(Differences& differences, const Difference& one);
void Merge(const std::vector<Difference>& found, Differences& into);
std::vector<Difference> ListOf(const Differences& differences);

class PolicyComparer {
  public:
    // Loads both. Throws host::ProviderError. All that is named must outlive this.
    PolicyComparer(const Inputs& inputs, const DiffOptions& options, int policy, Shared& shared);

    // On every path. False when it may stop.
    bool Compare(const Question& question);
    // After all questions: whether neither provider remembers anything that it did not remember
    // before them. What comes now is asked of providers that know what they were asked.
    bool IsClosed();
    // What comes now is asked after another policy was published.
    void Publish(const Policy& other);
    // After the last question.
    void CompareEnds();

    bool IsAlike() const { return differences_.empty(); }
    std::vector<Difference> Found() const { return ListOf(differences_); }

  private:
    void CompareRecords(const std::string& a, const std::string& b, const char* what);
    void Run(const Question& question);
    void Record(const Subject& subject, const Question& question, std::string* record) const;
    void Note(const std::string& recordA, const std::string& recordB, const std::string& question,
              const State& state);

    const Inputs& inputs_;
    const DiffOptions& options_;
    const int policy_;
    Shared& shared_;
    std::unique_ptr<Subject> a_;
    std::unique_ptr<Subject> b_;
    std::optional<LibraryMemory> memoryOfA_;
    std::optional<LibraryMemory> memoryOfB_;
    Languages languages_ = Languages::kForgotten;
    std::string before_;  // what happened before a question is asked; with it there is no scenario
    Differences differences_;
    std::string recordA_;
    std::string recordB_;
    bool differs_ = false;
};

}  // namespace explorer
