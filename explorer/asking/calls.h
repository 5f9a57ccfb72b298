// What can be done to a provider, one step of a sequence each: its life first, then every question.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "explorer/tv/inputs.h"
#include "question.h"

namespace explorer {

struct Call {
    enum class Kind {
        kCreate,
        kPublish,
        kDelete,
        kCreateNothing,
        kInitialize,  // the policy's list alone, and Finalize
        kDeleteNothing,
        kSecond,       // is created and deleted at once
        kSecondStays,  // and the first is deleted
        kAsk,
    };
    Kind kind = Kind::kAsk;
    int document = -1;  // kCreate, kPublish; -1: none was ever published
    const Question* question = nullptr;
};

class Calls {
  public:
    Calls(const Inputs& inputs, const std::vector<const Question*>& questions);

    int Count() const { return static_cast<int>(calls_.size()); }
    // Those before this one are the provider's life.
    int FirstQuestion() const { return firstQuestion_; }
    const Call& operator[](int call) const { return calls_[static_cast<std::size_t>(call)]; }
    // Null for none.
    const std::string* Document(int document) const {
        return document < 0 ? nullptr : &documents_[static_cast<std::size_t>(document)];
    }
    // "create_provider with the policy "Orvik only"", "visible:voice".
    std::string NameOf(int call) const;
    const std::string& NameOfDocument(int document) const;

    // Whether the call's document is the TV's policy from then on.
    bool Publishes(int call) const {
        const Call::Kind kind = (*this)[call].kind;
        return kind == Call::Kind::kCreate || kind == Call::Kind::kPublish;
    }
    // Whether it may be done to a provider with or without a table.
    bool MayBeDone(int call, bool hasTable) const;

  private:
    std::vector<std::string> documents_;
    std::vector<std::string> documentNames_;
    std::vector<Call> calls_;
    int firstQuestion_ = 0;
};

}  // namespace explorer
