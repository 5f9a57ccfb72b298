#include "calls.h"

#include <algorithm>

namespace explorer {

namespace {

constexpr struct {
    Call::Kind kind;
    const char* name;
} LIFE[] = {
    {Call::Kind::kDelete, "delete_provider"},
    {Call::Kind::kCreateNothing, "create_provider without a place for a table"},
    {Call::Kind::kInitialize, "MVAList::Initialize and MVAList::Finalize"},
    {Call::Kind::kDeleteNothing, "delete_provider without a table"},
    {Call::Kind::kSecond, "create_provider and delete_provider of a second one"},
    {Call::Kind::kSecondStays, "create_provider of a second one, delete_provider of the first"},
};

}  // namespace

Calls::Calls(const Inputs& inputs, const std::vector<const Question*>& questions) {
    for (const Policy& policy : inputs.policies) {
        for (const std::string& document : policy.published) {
            const auto known = std::find(documents_.begin(), documents_.end(), document);
            if (known == documents_.end()) {
                documents_.push_back(document);
                documentNames_.push_back(policy.published.size() == 1
                                             ? policy.name
                                             : policy.name + ": " + document.substr(0, 24));
            } else if (policy.published.size() == 1) {
                documentNames_[static_cast<std::size_t>(known - documents_.begin())] = policy.name;
            }
        }
    }
    const int documents = static_cast<int>(documents_.size());
    for (int document = -1; document < documents; ++document) {
        calls_.push_back({Call::Kind::kCreate, document, nullptr});
    }
    for (int document = 0; document < documents; ++document) {
        calls_.push_back({Call::Kind::kPublish, document, nullptr});
    }
    for (const auto& life : LIFE) {
        calls_.push_back({life.kind, -1, nullptr});
    }
    firstQuestion_ = Count();
    for (const Question* question : questions) {
        calls_.push_back({Call::Kind::kAsk, -1, question});
    }
}

const std::string& Calls::NameOfDocument(int document) const {
    static const std::string none = "never published";
    return document < 0 ? none : documentNames_[static_cast<std::size_t>(document)];
}

std::string Calls::NameOf(int call) const {
    const Call& one = (*this)[call];
    switch (one.kind) {
        case Call::Kind::kCreate:
            return "create_provider with the policy \"" + NameOfDocument(one.document) + '"';
        case Call::Kind::kPublish:
            return "publish the policy \"" + NameOfDocument(one.document) + '"';
        case Call::Kind::kAsk:
            return one.question->name;
        default:
            return std::find_if(std::begin(LIFE), std::end(LIFE),
                                [&](const auto& life) { return life.kind == one.kind; })
                ->name;
    }
}

bool Calls::MayBeDone(int call, bool hasTable) const {
    const Call& one = (*this)[call];
    switch (one.kind) {
        case Call::Kind::kCreate:
            return !hasTable;
        case Call::Kind::kPublish:
        case Call::Kind::kDeleteNothing:
            return true;
        case Call::Kind::kAsk:
            return hasTable || one.question->IsCheck();
        default:
            return hasTable;
    }
}

}  // namespace explorer
