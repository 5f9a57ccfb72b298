#include "invariants.h"

#include "explorer/tv/lazy_tv.h"
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

// ---------------------------------------------------------------------------------------------
// Looking
// ---------------------------------------------------------------------------------------------

namespace {
const char* KeyOf(const char* item) {
    return FindItem(item)->key;
}
}  // namespace

bool Look::Visible(const char* item) const {
    return subject_.Provider().IsVisible(KeyOf(item));
}

bool Look::Enabled(const char* item) const {
    return subject_.Provider().IsEnabled(KeyOf(item));
}

int Look::Value(const char* item) const {
    return subject_.Provider().GetInt(KeyOf(item)).value_or(-99);
}

void Look::Write(const char* item, int value) const {
    subject_.Provider().SetInt(KeyOf(item), value);
}

void Look::PressPopup(const char* item) const {
    subject_.Provider().SetInt(KeyOf(item), SI_ACTION_VALUE);
}

bool Look::OffersPopup(const char* item) const {
    return subject_.Provider().DisablePopup(KeyOf(item)).has_value();
}

std::string Look::RecordOf(const Question& question) const {
    const std::size_t before = tv().Record().size();
    Ask(subject_, question);
    return std::string(tv().Record().substr(before));
}

std::vector<RecordEntry> Look::AskFor(const Question& question) const {
    if (askedFor_ != &question) {
        record_ = RecordOf(question);
        askedFor_ = &question;
    }
    return ReadRecord(record_);
}

int Look::Now(Input::Kind kind, const char* key) const {
    const Input* input = tv().GetInputs().Find(kind, key);
    const explorer::Value* value =
        input != nullptr ? tv().Current(tv().GetInputs().IndexOf(*input)) : nullptr;
    return value == nullptr ? -1 : value->number;
}

std::string Look::TextNow(Input::Kind kind, const char* key) const {
    const Input* input = tv().GetInputs().Find(kind, key);
    const explorer::Value* value =
        input != nullptr ? tv().Current(tv().GetInputs().IndexOf(*input)) : nullptr;
    return value == nullptr || value->kind != explorer::Value::Kind::kText ? "" : value->text;
}

}  // namespace explorer
