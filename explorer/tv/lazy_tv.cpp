#include "lazy_tv.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "explorer/engine/memory.h"

namespace explorer {

namespace {

constexpr std::size_t MAX_WRITES = 64;

const Value FAILED_READ = {Value::Kind::kFails, -1, "", "fails", "", false};

std::size_t SlotOf(Input::Kind kind, const char* key, std::size_t size) {
    // The ends of the keys differ most.
    std::uint64_t tail = 0;
    std::memcpy(&tail, key + (size > 8 ? size - 8 : 0), std::min<std::size_t>(size, 8));
    const std::uint64_t mixed =
        (tail ^ (size << 32) ^ static_cast<std::uint64_t>(kind)) * 0x9E3779B97F4A7C15U;
    return mixed >> 55;  // 512 slots
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
    std::fill(std::begin(slots_), std::end(slots_), std::int16_t{0});
    std::fill(std::begin(preset_), std::end(preset_), nullptr);
    expanded_.clear();
    unknown_.clear();
    translations_.clear();
    for (const std::string& id : inputs.textsWithName) {
        translations_.emplace_back(id, id + " " + std::string(NAME_PLACEHOLDER));
    }
    for (std::size_t i = 0; i < inputs.inputs.size() && i < MAX_INPUTS; ++i) {
        const Input& input = inputs.inputs[i];
        std::size_t slot = SlotOf(input.kind, input.key.c_str(), input.key.size());
        while (slots_[slot] != 0) {
            slot = (slot + 1) % SLOTS;
        }
        slots_[slot] = static_cast<std::int16_t>(i + 1);
    }
    Reset();
    std::fill(std::begin(decided_), std::end(decided_), nullptr);
    decisionsSize_ = 0;
}

int Tv::Lookup(Input::Kind kind, const char* key) {
    if (inputs_ == nullptr || key == nullptr) {
        return -1;
    }
    const std::size_t size = std::strlen(key);
    std::size_t slot = SlotOf(kind, key, size);
    while (slots_[slot] != 0) {
        const int index = slots_[slot] - 1;
        const Input& input = inputs_->inputs[static_cast<std::size_t>(index)];
        if (input.kind == kind && input.key.size() == size &&
            std::memcmp(input.key.data(), key, size) == 0) {
            return index;
        }
        slot = (slot + 1) % SLOTS;
    }
    return -1;
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
        unknown_.insert(std::string(ToText(kind)) + " " + (key != nullptr ? key : "(null)"));
        return FAILED_READ;
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
        text = value.text;
        const std::size_t at = text.find(CURRENT_PLACEHOLDER);
        text.replace(at, CURRENT_PLACEHOLDER.size(), assistant != nullptr ? assistant->text : "");
    }
    return text.c_str();
}

const char* Tv::Translate(const char* id) const {
    for (const auto& [known, text] : translations_) {
        if (known == id) {
            return text.c_str();
        }
    }
    return id;
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
    std::string text = value->text;
    const std::size_t at = text.find(CURRENT_PLACEHOLDER);
    if (at != std::string::npos) {
        const Value* assistant = currentAssistant_ >= 0 ? decided_[currentAssistant_] : nullptr;
        if (assistant != nullptr && wrote_[currentAssistant_] && reads_[input] > 0) {
            assistant = current_[currentAssistant_];  // read for the first time after that
        }
        if (assistant == nullptr && currentAssistant_ >= 0) {
            assistant =
                preset_[currentAssistant_] != nullptr
                    ? preset_[currentAssistant_]
                    : &inputs_->inputs[static_cast<std::size_t>(currentAssistant_)].values[0];
        }
        text.replace(at, CURRENT_PLACEHOLDER.size(), assistant != nullptr ? assistant->text : "");
    }
    return text;
}

// The current assistant is about to change: what was read for the old one stays what it was.
void Tv::FixTexts() {
    const PlatformMemory own;
    for (std::size_t i = 0; i < touchedSize_; ++i) {
        const int input = touched_[i];
        const Value* value = current_[input];
        if (value == nullptr || !value->hasPlaceholder || written_.size() == MAX_WRITES) {
            continue;
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
    if (input < 0 || written_.size() == MAX_WRITES) {
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

int Tv::WriteNumber(const char* key, const char* type, int number) {
    const PlatformMemory own;
    char text[16] = "";
    std::snprintf(text, sizeof(text), "%d", number);
    effects_ = true;
    Append(Entry::kWrite, std::string(key != nullptr ? key : "(null)") + " = " + type + " " + text);
    const int input = Lookup(Input::Kind::kSetting, key);
    const int write = Lookup(Input::Kind::kWrite, key);
    if (input < 0 && write < 0) {
        unknown_.insert(std::string("write ") + (key != nullptr ? key : "(null)"));
    }
    Value value;
    value.number = number;
    value.words = text;
    value.storedType = type;
    if (input >= 0 && inputs_->inputs[static_cast<std::size_t>(input)].type != type) {
        value.kind = Value::Kind::kFails;  // the setting is of another type from now on
        value.number = -1;
    }
    return Write(input, write, std::move(value));
}

int Tv::WriteText(const char* key, const char* text) {
    const PlatformMemory own;
    effects_ = true;
    Append(Entry::kWrite, std::string(key != nullptr ? key : "(null)") + " = string " +
                              (text != nullptr ? text : "(null)"));
    const int input = Lookup(Input::Kind::kSetting, key);
    const int write = Lookup(Input::Kind::kWrite, key);
    if (input < 0 && write < 0) {
        unknown_.insert(std::string("write ") + (key != nullptr ? key : "(null)"));
    }
    Value value;
    value.kind = Value::Kind::kText;
    value.text = text != nullptr ? text : "";
    value.words = value.text;
    value.storedType = "string";
    if (input >= 0 && inputs_->inputs[static_cast<std::size_t>(input)].type != "string") {
        value.kind = Value::Kind::kFails;
        value.number = -1;
    }
    return Write(input, write, std::move(value));
}

int Tv::SetMode(const char* appId, int mode) {
    const PlatformMemory own;
    Append(Entry::kMode,
           std::string(appId != nullptr ? appId : "(null)") + " to " + std::to_string(mode));
    Value value;
    value.number = mode;
    value.words = std::to_string(mode);
    value.storedType = "int";
    return Write(Lookup(Input::Kind::kCall, "AOVSystemDataGetAOVMode"),
                 Lookup(Input::Kind::kCall, "AOVSystemDataSetAOVMode"), std::move(value));
}

// ---------------------------------------------------------------------------------------------
// The record
// ---------------------------------------------------------------------------------------------

void Tv::Put(std::string_view text) {
    const std::size_t length = std::min(text.size(), BUFFER - 1 - recordSize_);
    std::memcpy(record_ + recordSize_, text.data(), length);
    recordSize_ += length;
}

void Tv::Append(Entry kind, std::string_view text) {
    const bool isEffect = kind != Entry::kAnswer && kind != Entry::kLog && kind != Entry::kTrace &&
                          kind != Entry::kWrong;
    effects_ = effects_ || isEffect;
    const char letter = static_cast<char>(kind);
    Put({&letter, 1});
    Put(text);
    Put({"\0", 1});
}

void Tv::AppendNumber(Entry kind, const char* what, int number) {
    char text[128];
    const int size = std::snprintf(text, sizeof(text), "%s: %d", what, number);
    Append(kind, {text, static_cast<std::size_t>(size)});
}

void Tv::AppendTrace(std::string_view text) {
    if (logLevel == LogLevel::kNone) {
        return;
    }
    Append(Entry::kTrace, text);
}

namespace {

// Whether the message, behind the prefix "%s: %s(%d) > ", reports an exception.
bool ReportsException(const char* format) {
    return std::strncmp(format, "%s: %s(%d) > [EXCEPTION]", 24) == 0;
}

}  // namespace

void Tv::Log(int priority, const char* format, std::va_list arguments) {
    threw_ = threw_ || ReportsException(format);
    if (logLevel == LogLevel::kNone) {
        return;
    }
    const char head[] = {static_cast<char>(Entry::kLog), static_cast<char>('0' + priority), ' '};
    Put({head, sizeof(head)});
    if (logLevel == LogLevel::kMessages && std::strncmp(format, "%s: %s(%d) > ", 13) == 0) {
        va_arg(arguments, const char*);  // the file and the line may move
        Put(va_arg(arguments, const char*));
        va_arg(arguments, int);
        Put(" > ");
        format += 13;
    }
    for (const char* c = format; *c != '\0'; ++c) {
        if (c[0] == '%' && c[1] == 's') {
            const char* text = va_arg(arguments, const char*);
            Put(text != nullptr ? text : "(null)");
            ++c;
        } else if (c[0] == '%') {
            const bool isSize = c[1] == 'z';
            char number[24];
            const int size =
                isSize
                    ? std::snprintf(number, sizeof(number), "%zu", va_arg(arguments, std::size_t))
                    : std::snprintf(number, sizeof(number), "%d", va_arg(arguments, int));
            Put({number, static_cast<std::size_t>(size)});
            c += isSize ? 2 : 1;
        } else {
            Put({c, 1});
        }
    }
    Put({"\0", 1});
}

std::vector<RecordEntry> ReadRecord(std::string_view record) {
    std::vector<RecordEntry> entries;
    while (!record.empty()) {
        const std::size_t end = std::min(record.find('\0'), record.size());
        entries.push_back({static_cast<Entry>(record[0]), std::string(record.substr(1, end - 1))});
        record.remove_prefix(std::min(end + 1, record.size()));
    }
    return entries;
}

std::string ToText(const RecordEntry& entry) {
    switch (entry.kind) {
        case Entry::kWrite:
            return "writes " + entry.text;
        case Entry::kLaunch:
            return "starts " + entry.text;
        case Entry::kPopup:
            return "asks for " + entry.text;
        case Entry::kTerminate:
            return "ends " + entry.text;
        case Entry::kMode:
            return "sets the always-on-voice mode of " + entry.text;
        case Entry::kCall:
            return "calls " + entry.text;
        case Entry::kAnswer:
            return entry.text;
        case Entry::kLog:
            return "logs " + entry.text;
        case Entry::kTrace:
            return "traces " + entry.text;
        case Entry::kWrong:
            return "WRONG: " + entry.text;
    }
    return entry.text;
}

// ---------------------------------------------------------------------------------------------
// The policy
// ---------------------------------------------------------------------------------------------

namespace {
constexpr char POLICY_KEY[] = "db/menu/voice/mva_list";
}  // namespace

bool Tv::NotifyPolicy() {
    if (watches_.empty()) {
        return false;
    }
    const Watch watch = watches_.back();
    watch.callback(nullptr, watch.userData);
    return true;
}

int Tv::AddWatch(const char* key, void (*callback)(keynode*, void*), void* userData) {
    const PlatformMemory own;
    if (key == nullptr || std::strcmp(key, POLICY_KEY) != 0) {
        unknown_.insert(std::string("watch ") + (key != nullptr ? key : "(null)"));
        return -1;
    }
    watches_.push_back({callback, userData});
    AppendTrace("watches the policy");
    return 0;
}

int Tv::RemoveWatch(const char* key, void (*callback)(keynode*, void*)) {
    const auto found = std::find_if(watches_.begin(), watches_.end(),
                                    [&](const Watch& watch) { return watch.callback == callback; });
    if (key == nullptr || std::strcmp(key, POLICY_KEY) != 0 || found == watches_.end()) {
        return -1;
    }
    watches_.erase(found);
    AppendTrace("watches the policy no longer");
    return 0;
}

const std::string* Tv::PolicyDocument(const char* key) {
    static const std::string none;
    if (key == nullptr || std::strcmp(key, POLICY_KEY) != 0) {
        return nullptr;
    }
    AppendTrace("reads the policy");
    return policy_ != nullptr ? policy_ : &none;
}

}  // namespace explorer
