// The TV that the provider finds while it is explored: it decides what it is only when it is asked.
//
// A run begins with Begin(). The first time the provider reads an input, the TV takes the value
// that the odometer chooses; from then on the input has that value, or the one that was last
// written. What the provider does (writes, launches, popups) and what it answers is appended to
// Record().
//
// There is one such TV in the process: it serves the platform's C functions.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "explorer/engine/choices.h"
#include "inputs.h"
#include "record.h"

struct keynode;  // platform/settings_store.h

namespace explorer {

// kFiles: with the files, and with the lines that the product fixes.
enum class LogLevel { kNone, kFiles, kLines };

// Of the policy, by a provider.
struct Watch {
    void (*callback)(keynode*, void*) = nullptr;
    void* userData = nullptr;
    bool operator==(const Watch&) const = default;
};

class Tv {
  public:
    // The inputs must outlive their use. Before the first run, and again to change them.
    void Use(const Inputs& inputs);
    const Inputs& GetInputs() const { return *inputs_; }

    // --- A run ---
    void Begin(Choices& choices);
    // Starts over on the same TV, as a second provider that is asked the same does: what was
    // written is undone, what was decided stays, and the record is empty again.
    void Again();

    // Gives an input a value for all coming runs: it is not chosen then. Null: it is chosen again.
    // The value must outlive the runs.
    void Preset(int input, const Value* value) { preset_[input] = value; }
    // What the input is now; null when nobody has read or written it.
    const Value* Current(int input) const { return current_[input]; }
    // Whether this run wrote the input.
    bool IsWritten(int input) const { return wrote_[input]; }
    // The text that the input had when it was first read in this run, the current assistant put in.
    std::string FirstText(int input) const;

    // Answers, effects and, where they are written down, log records and trace events, in the order
    // in which they came.
    std::string_view Record() const { return {record_, recordSize_}; }
    void Append(Entry kind, std::string_view subject, const Said& value = {});
    // What was read how often.
    void AppendReads();

    // What is written down beside answers and effects.
    LogLevel logLevel = LogLevel::kNone;
    bool everything = false;  // every call of the platform, with its arguments
    bool notesReads = false;  // the reads among them
    bool marksTexts = false;  // a text that was translated is told from its id: "«TV_SID_...»"

    // Reads of the input in this run, the first one included.
    int ReadCount(int input) const { return reads_[input]; }
    // The inputs that this run read or wrote.
    const std::uint16_t* Touched() const { return touched_; }
    std::size_t TouchedSize() const { return touchedSize_; }
    // In this run.
    bool HasRead(int input) const { return reads_[input] != 0; }
    // Whether anything but the log and the trace was written, launched or set.
    bool HasEffects() const { return effects_; }
    // False when the store or the platform refused a write of this run.
    bool IsEveryWriteTaken() const { return !refused_; }
    bool HasThrown() const { return threw_; }
    // Keys that the provider asked for and the data does not name, since Use(): "setting db/...".
    const std::set<std::string>& UnknownKeys() const { return unknown_; }

    // --- The policy ---
    // What db/menu/voice/mva_list holds; null: nothing. Not an input that is chosen.
    void SetPolicy(const std::string* document) { policy_ = document; }
    // Calls back the library that an address lies in; false when it does not watch the policy.
    bool NotifyPolicy(const void* inside);
    const std::vector<Watch>& Watches() const { return watches_; }
    void SetWatches(const std::vector<Watch>& watches);
    // Whether the document was read in this run.
    bool IsPolicyRead() const { return policyRead_; }

    // --- For the platform's services ---
    const Value& Read(Input::Kind kind, const char* key);
    // What a call that has no input of its own finds.
    const Value& ReadCall(const char* function) { return Read(Input::Kind::kCall, function); }
    // The text of a value, with the current assistant put in. Lives until the next run.
    const char* TextOf(const Value& value);
    // What a text id is translated to: itself, with the placeholder where translations have one.
    // Lives until the next use.
    const char* Translate(const char* id);
    // Writes a setting, unless writing fails. Returns what the call returns.
    int WriteNumber(const char* key, int number);
    int WriteFlag(const char* key, bool flag);
    int WriteText(const char* key, const char* text);
    // The always-on-voice mode is what MODE_CALL answers from now on.
    int SetMode(const char* appId, int mode);
    void Log(int priority, const char* format, std::va_list arguments);
    void AppendTrace(std::string_view event);
    // A call that is no effect; null arguments are told as such.
    void Note(std::string_view call, const char* arguments = "");
    void Note(std::string_view call, int argument);
    // Something that the provider asked for and the data does not name: one of UnknownKeys().
    void NoteUnknown(const std::string& what);
    // That more was done in a run than there is room for, so that not all of it was seen: one of
    // UnknownKeys().
    void NoteTooMuch(const std::string& what) { NoteUnknown(TOO_MUCH + what); }
    static constexpr char TOO_MUCH[] = "more than ";
    // Whether an input that this run read or wrote is that text.
    bool HasToldOf(std::string_view text) const;
    // Whether the line of a record is written down.
    bool ShowsLine(const char* file, const char* function, int line) const;
    void AddWatch(const char* key, void (*callback)(keynode*, void*), void* userData);
    // False when there is none.
    bool RemoveWatch(const char* key, void (*callback)(keynode*, void*));
    static bool IsPolicy(const char* key);
    // Null when there is none.
    const std::string* ReadPolicyDocument();

  private:
    int Lookup(Input::Kind kind, const char* key) const;
    const Value& Decide(int input);
    void Touch(int input);
    int Write(int input, int writeInput, Value value);
    int WriteSetting(const char* key, const Said& stored, Value value);
    void Reset();
    void FixTexts();
    void Put(std::string_view text);
    void PutNumber(long long number);
    void PutFormatted(const char* format, std::va_list arguments);
    void NoteFullRecord();

    static constexpr std::size_t BUFFER = 1 << 16;

    const Inputs* inputs_ = nullptr;
    Choices* choices_ = nullptr;
    int currentAssistant_ = -1;
    const Value* preset_[Inputs::MOST] = {};
    const Value* decided_[Inputs::MOST] = {};
    std::uint16_t decisions_[Inputs::MOST] = {};  // the inputs in decided_
    std::size_t decisionsSize_ = 0;
    const Value* current_[Inputs::MOST] = {};
    std::uint8_t reads_[Inputs::MOST] = {};
    bool wrote_[Inputs::MOST] = {};
    std::uint16_t touched_[Inputs::MOST] = {};
    std::size_t touchedSize_ = 0;
    // Where inputs are, by kind and key.
    std::unordered_map<std::string_view, int> places_[Input::KINDS];

    std::vector<Value> written_;  // values that this run wrote; never grows beyond its capacity
    // Texts with the current assistant put in, by value and by the value of the current assistant.
    std::unordered_map<const Value*, std::unordered_map<const Value*, std::string>> expanded_;
    std::unordered_map<int, std::string> firstTexts_;
    std::vector<std::pair<std::string, std::string>> translations_;
    std::unordered_map<std::string, std::string> marked_;  // translations of ids

    char record_[BUFFER] = {};
    std::size_t recordSize_ = 0;
    bool effects_ = false;
    bool refused_ = false;
    bool threw_ = false;
    std::set<std::string> unknown_;

    const std::string* policy_ = nullptr;
    bool policyRead_ = false;
    std::vector<Watch> watches_;
};

// The TV of this process.
Tv& tv();

}  // namespace explorer
