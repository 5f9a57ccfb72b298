#include "comparison.h"

#include <algorithm>

#include "explorer/tv/lazy_tv.h"
#include "explorer/tv/trace_sites.h"
#include "walk_comparison.h"

namespace explorer {

namespace {

// What is in the one and not in the other: what a host sees, then logs, traces and other calls.
std::vector<RecordEntry> Only(const std::vector<RecordEntry>& record,
                              std::vector<RecordEntry> others) {
    std::vector<RecordEntry> only;
    for (const RecordEntry& entry : record) {
        const auto found = std::find(others.begin(), others.end(), entry);
        if (found == others.end()) {
            only.push_back(entry);
        } else {
            others.erase(found);
        }
    }
    std::stable_partition(only.begin(), only.end(), [](const RecordEntry& entry) {
        return entry.kind != Entry::kLog && entry.kind != Entry::kTrace &&
               entry.kind != Entry::kNote;
    });
    return only;
}

}  // namespace

Difference DifferenceOf(const std::string& recordA, const std::string& recordB) {
    const std::vector<RecordEntry> a = ReadRecord(recordA);
    const std::vector<RecordEntry> b = ReadRecord(recordB);
    std::vector<RecordEntry> onlyA = Only(a, b);
    std::vector<RecordEntry> onlyB = Only(b, a);
    if (onlyA.empty() && onlyB.empty()) {
        onlyA = a;  // the same in another order
        onlyB = b;
    }
    Difference difference;
    difference.onlyA = TextsOf(onlyA);
    difference.onlyB = TextsOf(onlyB);
    difference.recordA = recordA;
    difference.recordB = recordB;
    return difference;
}

void Place(Difference& difference, const Inputs& inputs, const std::string& question,
           const State& state) {
    difference.question = question;
    difference.questions = {{difference.call, question}};
    difference.paths = 1;
    difference.smallest = state;
    difference.nearness = NearnessOf(inputs, state);
    difference.nearness.length = 1;
    difference.nearness.question = question;
    difference.nearness.joint = difference.joint;
    difference.nearness.call = difference.call;
}

void Add(Differences& differences, const Difference& one) {
    const auto [place, isNew] = differences.try_emplace({one.onlyA, one.onlyB}, one);
    if (isNew) {
        return;
    }
    Difference& known = place->second;
    const std::uint64_t paths = known.paths + one.paths;
    std::set<std::pair<int, std::string>> questions = std::move(known.questions);
    questions.insert(one.questions.begin(), one.questions.end());
    if (one.nearness < known.nearness) {
        known = one;
    }
    known.paths = paths;
    known.questions = std::move(questions);
}

void Merge(const std::vector<Difference>& found, Differences& into) {
    for (const Difference& one : found) {
        Add(into, one);
    }
}

std::vector<Difference> ListOf(const Differences& differences) {
    std::vector<Difference> list;
    for (const auto& [key, difference] : differences) {
        list.push_back(difference);
    }
    return list;
}

PolicyComparer::PolicyComparer(const Inputs& inputs, const DiffOptions& options, int policy,
                               Shared& shared)
    : inputs_(inputs), options_(options), policy_(policy), shared_(shared) {
    UseRecords(options.records);
    const Policy& published = inputs.policies[static_cast<std::size_t>(policy)];
    a_ = std::make_unique<Subject>(options.provider, published);
    // The loader opens a file only once: what may be the same file needs a copy.
    b_ = std::make_unique<Subject>(options.other, published, Subject::Copy::kPrivate);
    memoryOfA_.emplace(reinterpret_cast<const void*>(a_->Entry().create));
    memoryOfB_.emplace(reinterpret_cast<const void*>(b_->Entry().create));
    CompareRecords(a_->StartRecord(), b_->StartRecord(), "create_provider");
}

bool PolicyComparer::Compare(const Question& question) {
    Choices& choices = shared_.choices;
    ForEachPath(
        choices, shared_.runs, [&] { Run(question); },
        [&] {
            if (differs_) {
                // The state's documents are told as the first provider found them.
                tv().Again();
                Ask(*a_, question, languages_);
                Note(recordA_, recordB_, question.name + before_, CurrentState(policy_, choices));
            }
        });
    return !options_.brief || differences_.empty();
}

bool PolicyComparer::IsClosed() {
    languages_ = Languages::kKept;
    const int ids = static_cast<int>(TraceSites().size());
    const bool isAsBefore = memoryOfA_->IsAsBefore(BEFORE_SITES, ids);
    return memoryOfB_->IsAsBefore(BEFORE_SITES, ids) && isAsBefore;
}

void PolicyComparer::Publish(const Policy& other) {
    if (other.published.empty()) {
        return;
    }
    const std::string& document = other.published.back();
    const std::string record = a_->Publish(document);
    CompareRecords(record, b_->Publish(document), "the policy's watch");
    before_ = ", after another policy was published";
}

void PolicyComparer::CompareEnds() {
    const std::string end = a_->End();
    CompareRecords(end, b_->End(), "delete_provider");
}

void PolicyComparer::CompareRecords(const std::string& a, const std::string& b, const char* what) {
    if (a != b) {
        Note(a, b, what, {policy_, {}, {}});
    }
}

void PolicyComparer::Run(const Question& question) {
    Record(*a_, question, &recordA_);
    tv().Again();
    Record(*b_, question, &recordB_);
    differs_ = recordA_ != recordB_;
}

void PolicyComparer::Record(const Subject& subject, const Question& question,
                            std::string* record) const {
    Ask(subject, question, languages_);
    record->assign(tv().Record());
}

void PolicyComparer::Note(const std::string& recordA, const std::string& recordB,
                          const std::string& question, const State& state) {
    Difference difference = DifferenceOf(recordA, recordB);
    Place(difference, inputs_, question, state);
    Add(differences_, difference);
}

}  // namespace explorer
