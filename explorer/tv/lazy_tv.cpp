#include "lazy_tv.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstring>

#include "explorer/engine/memory.h"
#include "virtual-tv/model/keys.h"

namespace explorer {

namespace {

constexpr std::size_t MAX_WRITES = 64;

const Value FAILED_READ = {Value::Kind::kFails, keys::FAILED, "", "fails", "", false};
const Value NO_FEATURE = {Value::Kind::kFails, platform::NO_SUCH_FEATURE, "", "fails", "", false};

// Where it begins in memory.
const void* LibraryOf(const void* inside) {
    Dl_info info{};
    return dladdr(inside, &info) != 0 ? info.dli_fbase : nullptr;
}

std::string WithCurrent(const Value& value, const Value* assistant) {
    std::string text = value.text;
    if (const std::size_t at = text.find(CURRENT_PLACEHOLDER); at != std::string::npos) {
        text.replace(at, CURRENT_PLACEHOLDER.size(), assistant != nullptr ? assistant->text : "");
    }
    return text;
}

}  // namespace

Tv& tv() {
    static Tv theTv;
    return theTv;
}

void Tv::Use(const Inputs& inputs) {
    const PlatformMemory own;
    inputs_ = &inputs;
    currentAssistant_ = inputs.CurrentAssistant();
    written_.reserve(MAX_WRITES);
    std::fill(std::begin(preset_), std::end(preset_), nullptr);
    expanded_.clear();
    unknown_.clear();
    translations_.clear();
    marked_.clear();
    for (const std::string& id : inputs.textsWithName) {
        translations_.emplace_back(id, id + " " + std::string(NAME_PLACEHOLDER));
    }
    for (auto& byKey : places_) {
        byKey.clear();
    }
    for (std::size_t i = 0; i < inputs.inputs.size(); ++i) {
        const Input& input = inputs.inputs[i];
        places_[static_cast<std::size_t>(input.kind)].emplace(input.key, static_cast<int>(i));
    }
    Reset();
    std::fill(std::begin(decided_), std::end(decided_), nullptr);
    decisionsSize_ = 0;
}

void Tv::NoteUnknown(const std::string& what) {
    const PlatformMemory own;
    unknown_.insert(what);
}

bool Tv::HasToldOf(std::string_view text) const {
    return std::any_of(touched_, touched_ + touchedSize_, [&](std::uint16_t input) {
        return current_[input] != nullptr && current_[input]->kind == Value::Kind::kText &&
               current_[input]->text == text;
    });
}

int Tv::Lookup(Input::Kind kind, const char* key) const {
    const auto& byKey = places_[static_cast<std::size_t>(kind)];
    const auto found = key != nullptr ? byKey.find(key) : byKey.end();
    return found != byKey.end() ? found->second : -1;
}

void Tv::Reset() {
    for (std::size_t i = 0; i < touchedSize_; ++i) {
        const std::size_t input = touched_[i];
        current_[input] = nullptr;
        reads_[input] = 0;
        wrote_[input] = false;
    }
    touchedSize_ = 0;
    recordSize_ = 0;
    effects_ = false;
    refused_ = false;
    threw_ = false;
    policyRead_ = false;
    written_.clear();
}

void Tv::Begin(Choices& choices) {
    for (std::size_t i = 0; i < decisionsSize_; ++i) {
        decided_[decisions_[i]] = nullptr;
    }
    decisionsSize_ = 0;
    Reset();
    choices_ = &choices;
    choices_->Restart();
    if (!firstTexts_.empty()) {
        const PlatformMemory own;
        firstTexts_.clear();
    }
}

void Tv::Again() {
    Reset();
}

void Tv::Touch(int input) {
    if (reads_[input] == 0 && !wrote_[input]) {
        touched_[touchedSize_++] = static_cast<std::uint16_t>(input);
    }
}

const Value& Tv::Decide(int input) {
    const Value* value = preset_[input] != nullptr ? preset_[input] : decided_[input];
    if (value == nullptr) {
        const std::vector<Value>& values = inputs_->inputs[static_cast<std::size_t>(input)].values;
        const int chosen =
            choices_ == nullptr ? 0 : choices_->Choose(input, static_cast<int>(values.size()));
        value = &values[static_cast<std::size_t>(chosen) < values.size()
                            ? static_cast<std::size_t>(chosen)
                            : 0];
        decided_[input] = value;
        decisions_[decisionsSize_++] = static_cast<std::uint16_t>(input);
    }
    current_[input] = value;
    return *value;
}

const Value& Tv::Read(Input::Kind kind, const char* key) {
    const int input = Lookup(kind, key);
    if (input < 0) {
        const PlatformMemory own;
        Note("reads", key);
        NoteUnknown(std::string(ToText(kind)) + " " + (key != nullptr ? key : "(null)"));
        return kind == Input::Kind::kFeature ? NO_FEATURE : FAILED_READ;
    }
    if (notesReads) {
        Note("reads", inputs_->inputs[static_cast<std::size_t>(input)].name.c_str());
    }
    Touch(input);
    if (reads_[input] != 0xFF) {
        ++reads_[input];
    }
    return current_[input] != nullptr ? *current_[input] : Decide(input);
}

const char* Tv::TextOf(const Value& value) {
    if (!value.hasPlaceholder) {
        return value.text.c_str();
    }
    const Value* assistant = nullptr;
    if (currentAssistant_ >= 0) {
        assistant = current_[currentAssistant_];
        if (assistant == nullptr) {
            Touch(currentAssistant_);
            assistant = &Decide(currentAssistant_);
        }
    }
    const PlatformMemory own;
    const bool isWritten = assistant != nullptr && wrote_[currentAssistant_];
    std::string& text = expanded_[&value][isWritten ? nullptr : assistant];
    if (text.empty() || isWritten) {
        text = WithCurrent(value, assistant);
    }
    return text.c_str();
}

const char* Tv::Translate(const char* id) {
    if (id == nullptr) {
        return nullptr;
    }
    const auto known = std::find_if(translations_.begin(), translations_.end(),
                                    [id](const auto& one) { return one.first == id; });
    const char* text = known != translations_.end() ? known->second.c_str() : id;
    if (!marksTexts) {
        return text;
    }
    const PlatformMemory own;
    std::string& marked = marked_[id];
    if (marked.empty()) {
        marked = std::string(TRANSLATED_FROM) + text + TRANSLATED_TO;
    }
    return marked.c_str();
}

std::string Tv::FirstText(int input) const {
    const auto known = firstTexts_.find(input);
    if (known != firstTexts_.end()) {
        return known->second;
    }
    const Value* value = preset_[input] != nullptr ? preset_[input] : decided_[input];
    if (value == nullptr) {
        return "";
    }
    if (!value->hasPlaceholder || currentAssistant_ < 0) {
        return WithCurrent(*value, nullptr);
    }
    const Value* assistant = decided_[currentAssistant_];
    if (assistant != nullptr && wrote_[currentAssistant_] && reads_[input] > 0) {
        assistant = current_[currentAssistant_];  // read for the first time after that
    }
    if (assistant == nullptr) {
        assistant = preset_[currentAssistant_];
    }
    if (assistant == nullptr) {
        assistant = &inputs_->inputs[static_cast<std::size_t>(currentAssistant_)].values[0];
    }
    return WithCurrent(*value, assistant);
}

// The current assistant is about to change: what was read for the old one stays what it was.
void Tv::FixTexts() {
    const PlatformMemory own;
    for (std::size_t i = 0; i < touchedSize_; ++i) {
        const int input = touched_[i];
        const Value* value = current_[input];
        if (value == nullptr || !value->hasPlaceholder) {
            continue;
        }
        if (written_.size() == MAX_WRITES) {
            NoteTooMuch(std::to_string(MAX_WRITES) + " writes in one call");
            return;
        }
        Value fixed = *value;
        fixed.text = TextOf(*value);
        fixed.hasPlaceholder = false;
        firstTexts_[input] = fixed.text;
        written_.push_back(std::move(fixed));
        current_[input] = &written_.back();
    }
}

int Tv::Write(int input, int writeInput, Value value) {
    if (writeInput >= 0) {
        const Input& write = inputs_->inputs[static_cast<std::size_t>(writeInput)];
        const Value& result = Read(write.kind, write.key.c_str());  // "write" or "call"
        if (result.kind == Value::Kind::kFails) {
            refused_ = true;
            return result.number;
        }
    }
    if (input < 0) {
        return 0;
    }
    if (written_.size() == MAX_WRITES) {
        NoteTooMuch(std::to_string(MAX_WRITES) + " writes in one call");
        return 0;
    }
    if (input == currentAssistant_) {
        // A document that nobody has looked at yet is the new assistant's as well as the old one's.
        FixTexts();
    }
    Touch(input);
    wrote_[input] = true;
    written_.push_back(std::move(value));
    current_[input] = &written_.back();
    return 0;
}

int Tv::WriteSetting(const char* key, const Said& stored, Value value) {
    Append(Entry::kWrite, key, stored);
    const int input = Lookup(Input::Kind::kSetting, key);
    const int write = Lookup(Input::Kind::kWrite, key);
    if (input < 0 && write < 0) {
        NoteUnknown(std::string("write ") + key);
    }
    return Write(input, write, std::move(value));
}

int Tv::WriteNumber(const char* key, int number) {
    const PlatformMemory own;
    return WriteSetting(key, number, NumberValue(number, "int"));
}

int Tv::WriteFlag(const char* key, bool flag) {
    const PlatformMemory own;
    return WriteSetting(key, flag, NumberValue(flag ? 1 : 0, "bool"));
}

int Tv::WriteText(const char* key, const char* text) {
    const PlatformMemory own;
    return WriteSetting(key, std::string(text), TextValue(text));
}

int Tv::SetMode(const char* appId, int mode) {
    const PlatformMemory own;
    Append(Entry::kMode, appId, mode);
    return Write(Lookup(Input::Kind::kCall, MODE_CALL),
                 Lookup(Input::Kind::kCall, "AOVSystemDataSetAOVMode"), NumberValue(mode, "int"));
}

// ---------------------------------------------------------------------------------------------
// The policy
// ---------------------------------------------------------------------------------------------

bool Tv::NotifyPolicy(const void* inside) {
    const auto found = std::find_if(watches_.rbegin(), watches_.rend(), [&](const Watch& watch) {
        return LibraryOf(reinterpret_cast<const void*>(watch.callback)) == LibraryOf(inside);
    });
    if (found == watches_.rend()) {
        return false;
    }
    const Watch watch = *found;
    watch.callback(nullptr, watch.userData);
    return true;
}

void Tv::AddWatch(const char* key, void (*callback)(keynode*, void*), void* userData) {
    const PlatformMemory own;
    if (!IsPolicy(key)) {
        NoteUnknown(std::string("watch ") + key);
        return;
    }
    const auto known = std::find_if(watches_.begin(), watches_.end(),
                                    [&](const Watch& watch) { return watch.callback == callback; });
    if (known != watches_.end()) {
        known->userData = userData;
    } else {
        watches_.push_back({callback, userData});
    }
    AppendTrace(userData == nullptr ? "watches the policy" : "watches the policy, with data");
}

bool Tv::RemoveWatch(const char* key, void (*callback)(keynode*, void*)) {
    const auto found = std::find_if(watches_.begin(), watches_.end(),
                                    [&](const Watch& watch) { return watch.callback == callback; });
    if (!IsPolicy(key) || found == watches_.end()) {
        Note("vconf_ignore_key_changed of what it does not watch", key);
        return false;
    }
    watches_.erase(found);
    AppendTrace("watches the policy no longer");
    return true;
}

bool Tv::IsPolicy(const char* key) {
    return key != nullptr && std::strcmp(key, vtv::kPolicyKey) == 0;
}

void Tv::SetWatches(const std::vector<Watch>& watches) {
    if (watches_ != watches) {
        const PlatformMemory own;
        watches_ = watches;
    }
}

const std::string* Tv::ReadPolicyDocument() {
    policyRead_ = true;
    AppendTrace("reads the policy");
    return policy_;
}

}  // namespace explorer
