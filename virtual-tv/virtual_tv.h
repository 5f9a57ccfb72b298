// A TV without the TV: the public face of the virtual TV.
//
// A virtual TV is a folder. It is made once from a model (a TOML file) and then lives: its
// settings, its account, its running applications, its log and its trace are files in that folder,
// so that any number of processes on the same machine share one TV.
//
//     vtv::Tv::Create(dir, vtv::FindModel("farfield-eu"));
//     vtv::Tv tv(dir);
//     vtv::PowerOn(tv);           // from here on the platform calls of this process are this TV's
//     void* provider = dlopen("libsi-ready.so", RTLD_NOW);
//
// The library exports every platform call that a provider imports (platform/*.h), and access(),
// which finds "/home/owner/..." in the TV's folder. A process uses it from one thread, the one of
// its main loop. There is no thread and no daemon behind it: watch EventFd() in your main loop and
// call Dispatch() when it is readable.
//
// Whatever goes wrong is thrown as vtv::Error, with a text for people. The platform calls
// themselves never throw; they return what the TV's platform would return.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "records.h"
#include "virtual-tv/model/launch.h"
#include "virtual-tv/model/tv_model.h"

namespace vtv {

// ---------------------------------------------------------------------------------------------
// Commands of models
// ---------------------------------------------------------------------------------------------

// A package's command comes with its model, from whoever wrote that. It runs only where the user
// has allowed this very text, on whatever TV; the list is kept outside of every TV. Each throws
// kPlatform when the list cannot be read or written, or could have been written by others.
VTV_EXPORT std::string AllowedCommandsFile();
VTV_EXPORT std::vector<std::string> AllowedCommands();
// Throws kUsage for a text that is not shown as it is, so that nobody could judge it.
VTV_EXPORT void AllowCommand(const std::string& command);
// False when it was not allowed.
VTV_EXPORT bool ForbidCommand(const std::string& command);

// ---------------------------------------------------------------------------------------------
// Faults and changes
// ---------------------------------------------------------------------------------------------

// How a platform call is made to fail.
struct Fault {
    enum class Kind {
        kOnce,    // the next call fails, in whichever process it is made
        kAlways,  // every call fails from now on
        kSlow,    // every call takes delayMs longer and then works
    };
    std::string function;  // one of PlatformFunctions()
    Kind kind = Kind::kOnce;
    int result = -1;  // what a failing call returns where it returns an int error
    int delayMs = 0;
};
// The names of the platform calls that can be made to fail, sorted.
VTV_EXPORT const std::vector<std::string>& PlatformFunctions();

// Something of the TV has changed.
struct Change {
    enum class What {
        kSetting,  // name is a settings key
        kState,    // name is a key of Tv::State(): account, consents, network, ...
        kFile,     // name is a path below /home/owner
    };
    What what;
    std::string name;
};

// For those who write down what is to be done to a TV before there is one. Each throws kUsage, with
// what to write instead, for what the TV would refuse.
VTV_EXPORT void CheckSettingKey(const std::string& key);
VTV_EXPORT void CheckOwnerFile(const std::string& path);
VTV_EXPORT void CheckStateName(const std::string& name);
// An entry of Tv::State(), as snapshots hold them.
VTV_EXPORT void CheckState(const std::string& name, const Value& value);

// Makes the features of some state these and no others.
VTV_EXPORT void BringFeatures(const Model& model, const std::map<std::string, Value>& wanted,
                              std::map<std::string, Value>* state);

// Everything that a viewer or an application can change on a TV.
struct Snapshot {
    std::map<std::string, Value> settings;
    std::map<std::string, Value> state;
    std::vector<std::string> ownerFiles;  // contents are not kept: only their existence counts
};

// ---------------------------------------------------------------------------------------------
// A TV
// ---------------------------------------------------------------------------------------------

class VTV_EXPORT Tv {
  public:
    // Makes the folder from a model file. Throws kUsage when the folder is not empty or the model
    // is wrong; nothing is left behind then.
    static void Create(const std::string& dir, const std::string& modelFile);
    // The same from a model's text, which the name of a file stands for in errors. What `furnish`
    // does to the TV belongs to its making; what it throws leaves nothing behind, either.
    static void Create(const std::string& dir, const std::string& modelText,
                       const std::string& modelFile, const std::function<void(Tv& made)>& furnish);
    // Whether the folder is a TV. Throws kPlatform when that cannot be found out.
    static bool IsTv(const std::string& dir);

    // Opens a TV; many processes may. Throws kNoSuch when the folder is no TV, and kUsage when it
    // holds anything but plain files and folders, kPlatform when it is of a version that this
    // program does not know. A damaged part does not keep it from opening: see Problems().
    explicit Tv(const std::string& dir);
    ~Tv();
    Tv(const Tv&) = delete;
    Tv& operator=(const Tv&) = delete;

    // What is wrong with the TV's files, one text each; empty on a healthy TV. A settings store
    // that has lost its version makes every read and write fail, and the page shows neutral values.
    std::vector<std::string> Problems() const;

    // What platform calls of this process could not do since the last time, one text each: a write
    // to a full disk, an application that did not start, a call that was to change something and
    // was told to fail. A caller of such a call learns only that it failed. A read that was told to
    // fail is not among them: the page shows what comes of it.
    std::vector<std::string> TakeFailures();

    // The first thing that the machine did not do for a platform call of this process: read what is
    // there, write, record; empty when it did all. A page that was made without it is no TV's page.
    static const std::string& MachineFailure();

    const Model& GetModel() const&;
    const Model& GetModel() && = delete;  // it ends with the TV

    // Paths, absolute.
    const std::string& Dir() const;
    std::string OwnerDir() const;  // what the TV knows as /home/owner
    std::string TraceFile() const;

    // --- Settings: keys under "db/" and "memory/" ---
    // Absent when there is no such key. Throws kUsage for what is no key, kPlatform for a damaged
    // value.
    std::optional<Value> Get(const std::string& key) const;
    // As Get(), for who goes on with a damaged value: that is told in the setting.
    std::optional<Setting> Find(const std::string& key) const;
    // Durable when it returns ("memory/": until the next power cycle). Replaces the type as well.
    void Set(const std::string& key, const Value& value);
    // False when there was no such key. Watchers are called for this too.
    bool Unset(const std::string& key);
    // Writes several, and unsets those without a value: all of them or, as Restore(), none. Each is
    // a write, also one that leaves a value as it was.
    void SetTogether(const std::map<std::string, std::optional<Value>>& values);
    // When and by whom the value was written that the key has now; absent when it has none.
    std::optional<Writing> LastWriting(const std::string& key) const;
    // All of them, sorted by key.
    std::vector<Setting> Settings() const;

    // --- Watching; the callbacks run inside Dispatch(), on this process's main loop ---
    using WatchId = int;
    // Every write of the key calls back once, in the order of the writes, also one that leaves the
    // value as it was; after an overflow of the kernel's queue once a key that was written. Writing
    // or watching anything and removing any watch are allowed inside a callback.
    WatchId Watch(const std::string& key, std::function<void()> callback);
    WatchId WatchAll(std::function<void(const Change&)> callback);
    // Called when the log has grown.
    WatchId WatchLog(std::function<void()> callback);
    // Called when the trace has grown, or was cleared.
    WatchId WatchTrace(std::function<void()> callback);
    // Called when an application has started or ended, and now and then when none has.
    WatchId WatchApplications(std::function<void()> callback);
    void Unwatch(WatchId id);
    // Readable (poll, Ecore, GLib) when Dispatch() has something to do. Belongs to the TV.
    int EventFd() const;
    // Calls back for everything that has happened so far, without waiting. Returns how many
    // callbacks ran. Also serves vconf_notify_key_changed. Throws kPlatform when the TV is gone.
    int Dispatch();

    // Empties "memory/", ends the running applications and forgets the faults, as pulling the plug
    // and plugging it in again does. Everything else stays.
    void PowerCycle();

    // --- The rest of the TV's live state; each call reads or writes the TV's folder ---
    // All of the state below as raw data, by name ("account/signed_in", "consent/tnc", ...).
    std::map<std::string, Value> State() const;

    bool SignedIn() const;
    void SetSignedIn(bool signedIn);
    bool Consent(const std::string& item) const;  // "tnc", "pp"
    void SetConsent(const std::string& item, bool agreed);
    Network GetNetwork() const;
    void SetNetwork(Network network);
    bool Online() const;  // follows the machine's default route for Network::kHost
    // Menu language, "de_DE". Texts change at once in this process, at the next Dispatch() in
    // others.
    std::string Language() const;
    void SetLanguage(const std::string& language);
    // What the installed catalogues offer, "de", "zh_CN", ...
    static std::vector<std::string> Languages();
    // The feature by full key, as the model has it or as it was changed.
    std::optional<Value> Feature(const std::string& key) const;
    std::map<std::string, Value> Features() const;
    // Tries another feature value on this TV, or (absent) makes the TV lack it. Throws kUsage for a
    // known key of another type.
    void SetFeature(const std::string& key, const std::optional<Value>& value);
    // Back to the model's.
    void ResetFeature(const std::string& key);
    // Files below /home/owner, relative to it ("share/.voice/ga_login_success"), sorted.
    std::vector<std::string> OwnerFiles() const;
    void AddOwnerFile(const std::string& path);     // empty; its folders are made
    bool RemoveOwnerFile(const std::string& path);  // false when there was none

    Snapshot TakeSnapshot() const;
    // Writes what differs, so that watchers hear of exactly that. All or nothing: when it throws,
    // or the process ends, the TV is as it was, or it is as it shall be for all who open it from
    // then on.
    void Restore(const Snapshot& snapshot);

    // --- Applications ---
    ApplicationMode Applications() const;
    void SetApplications(ApplicationMode mode);
    std::vector<RunningApplication> RunningApplications() const;
    bool IsRunning(const std::string& appId) const;
    // For one that was asked to end. False when it runs on all that time.
    bool WaitForEnd(const RunningApplication& running, std::chrono::milliseconds most) const;
    // Starts an application as the TV's own launcher would; returns how it went, recorded or not.
    Launch LaunchApplication(const std::string& appId, const Extras& extras);
    // The application does its work (the wizard agrees to the terms, ...) and ends; the call
    // returns when it has ended. Throws kNoSuch when it does not run, kPlatform when it does not
    // end in time or what it did failed, and kNo when it cannot do its work now: it runs on then.
    void FinishApplication(const std::string& appId);
    // It ends without having done anything.
    void CancelApplication(const std::string& appId);
    // For a program that plays an application: this process is it, from here to LeaveApplication().
    void EnterApplication(const std::string& appId, const Extras& extras);
    void LeaveApplication();
    // Tells whoever called FinishApplication() why this application cannot do its work.
    void ReportFailure(const Error& failure);
    // Where the list of launches ends now.
    vtv::LaunchMark LaunchMark() const;
    // Every launch behind the mark, oldest first; the oldest of all are forgotten in time.
    std::vector<Launch> LaunchesSince(const vtv::LaunchMark& mark) const;
    std::vector<Launch> Launches() const;

    // --- Log ---
    // Oldest first, rotated files included.
    std::vector<LogRecord> ReadLog(const LogFilter& filter = {}) const;
    // Writes a record of the virtual TV's own, tag "VTV".
    void Log(int priority, const std::string& text);

    // --- Trace ---
    bool TraceEnabled() const;
    void SetTraceEnabled(bool enabled);  // at once in this process, at the next platform call or
                                         // Dispatch() in others
    std::vector<TraceEvent> ReadTrace() const;
    void ClearTrace();
    // In the Chrome trace event format (JSON), which chrome://tracing and Perfetto open.
    std::string ExportTrace() const;

    // --- Faults; they last until cleared or until a power cycle, in all processes ---
    void SetFault(const Fault& fault);  // throws kNoSuch for an unknown function
    bool ClearFault(const std::string& function);
    void ClearFaults();  // all, damaged ones too
    std::vector<Fault> Faults() const;

    // --- Speech ---
    // The voices that the TV can speak with.
    std::vector<Voice> Voices() const;
    bool VoiceGuide() const;  // "db/setting/accessibility/tts"
    // Speaks the text when the voice guide is on; returns whether it was spoken. Sound goes where
    // the model's speech.output says: the speakers, "speech/last.wav" in the TV's folder, or
    // nowhere.
    bool Speak(const std::string& text);

    struct Impl;
    Impl& impl() { return *impl_; }
    const Impl& impl() const { return *impl_; }

  private:
    std::unique_ptr<Impl> impl_;
};

// Reads the log as it grows: each call returns what was added since the last one, across rotation.
// Start at the end with skipExisting.
class VTV_EXPORT LogReader {
  public:
    LogReader(const Tv& tv, LogFilter filter, bool skipExisting);
    ~LogReader();
    std::vector<LogRecord> ReadNew();

  private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

// ---------------------------------------------------------------------------------------------
// The TV of this process
// ---------------------------------------------------------------------------------------------

// What this process writes from now on may be lost with the power: its TVs are thrown away.
VTV_EXPORT void SyncNothing();

// For a process that looks once and ends: no watch of a setting, the TV's own included, tells
// anything from now on, and none costs anything. The kernel takes longer to end the first watch
// than a page takes to be asked.
VTV_EXPORT void WatchNothing();

// Makes the TV answer this process's platform calls, binds the texts of "si-ready" to its menu
// language, and follows its trace switch. The TV must outlive PowerOff(). A platform call without a
// TV that is on stops the program with its name (exit code 4).
VTV_EXPORT void PowerOn(Tv& tv);
VTV_EXPORT void PowerOff();
// Null when none is on.
VTV_EXPORT Tv* Current();

// The translation that the page shows for an id, in the menu language of the TV that is on; the id
// itself when the catalogue has none.
VTV_EXPORT std::string Text(const std::string& id);

// ---------------------------------------------------------------------------------------------
// What a question reads
// ---------------------------------------------------------------------------------------------

// One read that a platform call of this process made.
struct Read {
    std::string function;  // "vconf_get_bool", "sso_get_login_state", ...
    // What was asked for: the settings key, the feature key, the consent item, the path, ...; empty
    // when the function's name says it all.
    std::string subject;
    std::optional<Value> value;  // absent when the read failed
};
// Collects every read between the two calls, in order: whoever asks the provider a question in
// between learns what the answer was made of. Off unless started; costs nothing then.
VTV_EXPORT void StartRecordingReads();
VTV_EXPORT std::vector<Read> StopRecordingReads();

// While it lives, the platform calls of this process find these values in place of the TV's own: a
// host asks the provider what it would answer on a TV that does not exist. An absent value is a
// read that fails. Nothing of it reaches the TV: calls that would change something, or leave a
// record, do nothing and say that they worked; faults that are there for one call stay for the
// real one. A TV must be on. An inner experiment stands in place of the outer one.
class VTV_EXPORT Experiment {
  public:
    // `mended`: calls that work although they were told to fail.
    explicit Experiment(std::vector<Read> reads, std::vector<std::string> mended = {});
    ~Experiment();
    Experiment(const Experiment&) = delete;
    Experiment& operator=(const Experiment&) = delete;

    const std::vector<Read>& Reads() const { return reads_; }
    bool Mends(const std::string& function) const;

  private:
    std::vector<Read> reads_;
    std::vector<std::string> mended_;
    const Experiment* outer_;
};

// Where TVs live unless told otherwise: $VTV_HOME, else $XDG_DATA_HOME/vtv, else
// ~/.local/share/vtv.
VTV_EXPORT std::string HomeDir();
// The program that plays the simulated applications: $VTV_APP, else next to the library's programs.
VTV_EXPORT std::string AppProgram();

}  // namespace vtv
