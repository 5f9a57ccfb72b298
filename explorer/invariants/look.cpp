#include "look.h"

#include "explorer/engine/memory.h"
#include "explorer/tv/lazy_tv.h"
#include "explorer/tv/state.h"
#include "virtual-tv/model/keys.h"

namespace explorer {

namespace {

const char* KeyOf(const char* item) {
    return FindItem(item)->key;
}

}  // namespace

bool Look::Visible(const char* item) const {
    const bool isVisible = subject_.Provider().IsVisible(KeyOf(item));
    Note({FindItem(item), "visible", isVisible});
    return isVisible;
}

bool Look::Enabled(const char* item) const {
    const bool isEnabled = subject_.Provider().IsEnabled(KeyOf(item));
    Note({FindItem(item), "enabled", isEnabled});
    return isEnabled;
}

int Look::Value(const char* item) const {
    const std::optional<int> value = subject_.Provider().GetInt(KeyOf(item));
    Note({FindItem(item), "value", value ? vtv::Value(*value) : "none"});
    return value.value_or(NO_VALUE);
}

std::size_t Look::CountChoices(const char* item) const {
    const auto choices = subject_.Provider().Choices(KeyOf(item));
    const PlatformMemory own;
    std::vector<std::string> texts;
    for (const auto& choice : choices) {
        texts.push_back(std::to_string(choice.value) + ": " + choice.text);
    }
    Note({FindItem(item), "choices", std::move(texts)});
    return choices.size();
}

void Look::Write(const char* item, int value) const {
    {
        const PlatformMemory own;
        seen_.handed.emplace_back(FindItem(item), value);
        seen_.facts.clear();
        seen_.settings.clear();
        seen_.state.clear();
        handedAt_ = tv().Record().size();
    }
    subject_.Provider().SetInt(KeyOf(item), value);
}

void Look::PressPopup(const char* item) const {
    Write(item, SI_ACTION_VALUE);
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
    seen_.question = &question;
    return ReadRecord(record_);
}

int Look::Now(Input::Kind kind, const char* key) const {
    const explorer::Value* value = CurrentOf(kind, key);
    NoteHeld(kind, key, value);
    return value == nullptr ? -1 : value->number;
}

std::string Look::TextNow(Input::Kind kind, const char* key) const {
    const explorer::Value* value = CurrentOf(kind, key);
    NoteHeld(kind, key, value);
    return value == nullptr || value->kind != explorer::Value::Kind::kText ? "" : value->text;
}

void Look::ForgetSeen() const {
    seen_.handed.clear();
    seen_.facts.clear();
    seen_.settings.clear();
    seen_.state.clear();
    seen_.question = nullptr;
}

Observed Look::Seen() const {
    Observed seen = seen_;
    seen.record = seen.handed.empty() ? record_ : std::string(tv().Record().substr(handedAt_));
    return seen;
}

void Look::Note(Observed::Fact fact) const {
    const PlatformMemory own;
    seen_.facts.push_back(std::move(fact));
}

const explorer::Value* Look::CurrentOf(Input::Kind kind, const char* key) const {
    const Input* input = tv().GetInputs().Find(kind, key);
    return input != nullptr ? tv().Current(tv().GetInputs().IndexOf(*input)) : nullptr;
}

// Before anything was handed over, it is what the scenario has made it.
void Look::NoteHeld(Input::Kind kind, const char* key, const explorer::Value* value) const {
    if (seen_.handed.empty()) {
        return;
    }
    const PlatformMemory own;
    if (kind == Input::Kind::kSetting) {
        const bool isThere = value != nullptr && value->kind != explorer::Value::Kind::kFails;
        seen_.settings[key] = isThere ? StoredBy(*value, value->text) : "(missing)";
    } else if (kind == Input::Kind::kCall && key == std::string_view(MODE_CALL)) {
        const explorer::Value* current =
            CurrentOf(Input::Kind::kSetting, vtv::kCurrentAssistantKey);
        const std::string application = current != nullptr ? current->text : "";
        seen_.state[vtv::kModeState + application] =
            value != nullptr ? vtv::Value(value->number) : "(missing)";
    }
}

}  // namespace explorer
