#include "recording.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <toml++/toml.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "known_settings.h"
#include "scenario.h"
#include "toml_writer.h"

namespace host {

namespace fs = std::filesystem;

namespace {

constexpr char kToastApplication[] = "org.nemra.alert-syspopup";

// ---------------------------------------------------------------------------------------------
// TOML
// ---------------------------------------------------------------------------------------------

std::string Written(const toml::table& document) {
    try {
        return host::ToToml(document);
    } catch (const std::runtime_error& error) {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         std::string("This cannot be recorded: ") + error.what());
    }
}

std::string StepText(const toml::table& step) {
    return "\n" + Written(toml::table{{"step", toml::array{step}}});
}

void Insert(toml::table& table, const std::string& key, const vtv::Value& value) {
    std::visit([&](const auto& v) { table.insert_or_assign(key, v); }, value);
}

toml::table Values(const std::map<std::string, vtv::Value>& wanted,
                   const std::map<std::string, vtv::Value>& present) {
    toml::table table;
    for (const auto& [key, value] : wanted) {
        const auto found = present.find(key);
        if (found == present.end() || found->second != value) {
            Insert(table, key, value);
        }
    }
    return table;
}

toml::table ToToml(const Recording::Step& step) {
    toml::table table;
    for (const auto& [name, member] : step) {
        if (const auto* value = std::get_if<vtv::Value>(&member)) {
            Insert(table, name, *value);
        } else {
            table.insert(name, Values(std::get<std::map<std::string, vtv::Value>>(member), {}));
        }
    }
    return table;
}

// ---------------------------------------------------------------------------------------------
// The beginning: the model, and what the TV had become
// ---------------------------------------------------------------------------------------------

std::string ReadText(const std::string& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

bool IsModelOf(const std::string& modelFile, const vtv::Tv& tv) {
    return ReadText(modelFile) == ReadText(tv.GetModel().file);
}

// A model that comes with the virtual TV is named; any other is the TV's own copy.
std::string ModelOf(const vtv::Tv& tv) {
    for (const std::string& file : vtv::ModelFiles()) {
        if (IsModelOf(file, tv)) {
            return fs::path(file).stem().string();
        }
    }
    return tv.GetModel().file;
}

vtv::Snapshot FreshSnapshot(const vtv::Tv& tv) {
    std::string folder = (fs::temp_directory_path() / "vtv-record-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        throw vtv::Error(vtv::ErrorKind::kPlatform,
                         folder + ": cannot be made: " + std::strerror(errno));
    }
    vtv::Snapshot snapshot;
    try {
        vtv::Tv::Create(folder + "/tv", tv.GetModel().file);
        snapshot = vtv::Tv(folder + "/tv").TakeSnapshot();
    } catch (...) {
        fs::remove_all(folder);
        throw;
    }
    fs::remove_all(folder);
    return snapshot;
}

toml::array Missing(const std::vector<std::string>& all, const std::vector<std::string>& some) {
    toml::array missing;
    for (const std::string& one : all) {
        if (std::find(some.begin(), some.end(), one) == some.end()) {
            missing.push_back(one);
        }
    }
    return missing;
}

std::vector<std::string> KeysOf(const std::map<std::string, vtv::Value>& values) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : values) {
        keys.push_back(key);
    }
    return keys;
}

// Settings that programs have written with another type than they are known to have.
bool HasForced(const std::map<std::string, vtv::Value>& settings) {
    return std::any_of(settings.begin(), settings.end(), [](const auto& setting) {
        const KnownSetting* known = FindKnownSetting(setting.first);
        return known != nullptr && std::string(known->type) != vtv::TypeName(setting.second);
    });
}

toml::table FaultTable(const vtv::Fault& fault) {
    toml::table table{{"function", fault.function}};
    if (fault.kind == vtv::Fault::Kind::kSlow) {
        table.insert("slow", fault.delayMs);
    } else {
        table.insert("always", fault.kind == vtv::Fault::Kind::kAlways);
        table.insert("result", fault.result);
    }
    return table;
}

// A notification goes away by itself.
toml::array Running(const vtv::Tv& tv) {
    toml::array launches;
    for (const vtv::RunningApplication& running : tv.RunningApplications()) {
        if (running.appId == kToastApplication) {
            continue;
        }
        toml::table launch{{"app", running.appId}};
        toml::table extras;
        for (const auto& [key, value] : running.extras) {
            extras.insert_or_assign(key, value);
        }
        if (!extras.empty()) {
            launch.insert("extras", extras);
        }
        launches.push_back(launch);
    }
    return launches;
}

// The steps that bring a new TV of the model to where this one is.
std::string FirstSteps(const vtv::Tv& tv) {
    const vtv::Snapshot fresh = FreshSnapshot(tv);
    const vtv::Snapshot now = tv.TakeSnapshot();
    toml::table step{{"say", "what the TV had become before"}};
    const auto add = [&](const char* name, auto&& members) {
        if (!members.empty()) {
            step.insert_or_assign(name, members);
        }
    };
    std::map<std::string, vtv::Value> state = now.state;
    state.erase("model");  // the name under which the TV knows it
    add("set", Values(now.settings, fresh.settings));
    add("state", Values(state, fresh.state));
    add("unset", Missing(KeysOf(fresh.settings), KeysOf(now.settings)));
    add("file-add", Missing(now.ownerFiles, fresh.ownerFiles));
    add("file-remove", Missing(fresh.ownerFiles, now.ownerFiles));
    toml::array faults;
    for (const vtv::Fault& fault : tv.Faults()) {
        faults.push_back(FaultTable(fault));
    }
    add("fault", faults);
    if (step.contains("set") && HasForced(now.settings)) {
        step.insert("force", true);
    }
    const toml::array running = Running(tv);
    if (running.empty()) {
        return step.size() > 1 ? StepText(step) : "";
    }
    // They wait to be finished, whatever is to become of those that are started later.
    step.insert("applications", "process");
    step.insert("launch", running);
    const std::string mode = vtv::ToText(tv.Applications());
    return StepText(step) +
           (mode == "process" ? "" : StepText(toml::table{{"applications", mode}}));
}

// ---------------------------------------------------------------------------------------------
// What a viewer saw
// ---------------------------------------------------------------------------------------------

toml::table ExpectedItem(const ItemView& view, bool isReachable) {
    toml::table item{{"visible", isReachable}};
    if (isReachable) {
        item.insert("enabled", view.enabled);
    }
    if (isReachable && view.value) {
        item.insert("value", *view.value);
    }
    return item;
}

toml::table Expected(const PressResult& result, bool isPress) {
    toml::table expect;
    toml::table page;
    toml::array sees;
    toml::array launched;
    toml::array toasts;
    for (const Sight& sight : result.sights) {
        if (sight.change) {
            const ItemView& view = result.after[sight.change->item->name];
            page.insert_or_assign(view.item->name,
                                  ExpectedItem(view, result.after.IsReachable(*view.item)));
            continue;
        }
        sees.push_back(ToText(sight.kind));
        if (sight.kind == Sight::Kind::kApplication) {
            launched.push_back(sight.text);
        } else if (sight.kind == Sight::Kind::kToast) {
            toasts.push_back(sight.text);
        }
    }
    if (isPress) {
        expect.insert("sees", sees);
    }
    if (!result.done) {
        expect.insert("refused", true);
    }
    expect.insert("launched", launched);
    expect.insert("toast", toasts);
    if (!page.empty()) {
        expect.insert("page", page);
    }
    return expect;
}

// ---------------------------------------------------------------------------------------------
// The file
// ---------------------------------------------------------------------------------------------

// Enough for any step: a disk that is full is found out before anything is done.
constexpr off_t kReserve = off_t{256} * 1024;

[[noreturn]] void FailToWrite(const std::string& file, const std::string& after = "") {
    const std::string reason = std::strerror(errno);
    throw vtv::Error(vtv::ErrorKind::kPlatform,
                     file + ": the recording cannot be written: " + reason + "." + after);
}

}  // namespace

// Open, and nobody else's until it is closed. One that was made for this and got nothing goes away.
class RecordFile {
  public:
    explicit RecordFile(const std::string& file) : file_(file) {
        std::error_code error;
        const fs::file_status status = fs::status(file, error);
        isNew_ = status.type() == fs::file_type::not_found;
        if (fs::exists(status) && !fs::is_regular_file(status)) {
            throw vtv::Error(vtv::ErrorKind::kUsage,
                             file + ": this is no file that a scenario could be written to.");
        }
        fd_ = open(file.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
        if (fd_ < 0 || flock(fd_, LOCK_EX) != 0) {
            FailToWrite(file, " Nothing was done.");
        }
        text_ = ReadText(file);
        // Where a file system cannot reserve, the write itself tells.
        const auto size = static_cast<off_t>(text_.size());
        if (fallocate(fd_, FALLOC_FL_KEEP_SIZE, size, kReserve) != 0 && errno == ENOSPC) {
            Close();
            errno = ENOSPC;
            FailToWrite(file, " Nothing was done.");
        }
    }
    ~RecordFile() { Close(); }
    RecordFile(const RecordFile&) = delete;
    RecordFile& operator=(const RecordFile&) = delete;

    const std::string& Name() const { return file_; }
    const std::string& Text() const { return text_; }

    // All of it or nothing.
    void Append(const std::string& text) {
        if (write(fd_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
            const int reason = errno;
            [[maybe_unused]] const int cut = ftruncate(fd_, static_cast<off_t>(text_.size()));
            errno = reason;
            FailToWrite(file_, " It was done all the same.");
        }
        text_ += text;
    }

  private:
    void Close() {
        // The reserve is given back.
        [[maybe_unused]] const int cut = ftruncate(fd_, static_cast<off_t>(text_.size()));
        if (isNew_ && text_.empty()) {
            unlink(file_.c_str());
        }
        close(fd_);
    }

    std::string file_;
    std::string text_;
    bool isNew_ = false;
    int fd_ = -1;
};

namespace {

void RequireScenario(const RecordFile& file, const vtv::Tv& tv) {
    const Scenario scenario = ParseScenario(file.Text(), file.Name());
    if (!scenario.problems.empty()) {
        throw vtv::Error(
            vtv::ErrorKind::kUsage,
            scenario.problems.front() + " Nothing was done: only a sound scenario is added to.");
    }
    if (!IsModelOf(scenario.model, tv)) {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         file.Name() + ": this scenario is of the model " +
                             fs::path(scenario.model).stem().string() + ", and the TV of " +
                             tv.GetModel().name + ": record into another file. Nothing was done.");
    }
}

}  // namespace

struct Recording::Pending {
    explicit Pending(const std::string& name) : file(name) {}

    RecordFile file;
    std::string before;  // what the file does not have yet: its beginning
    toml::table step;

    void Add() {
        file.Append(before + StepText(step));
        before.clear();
    }
};

Recording::Recording(const std::string& file, const vtv::Tv& tv, const Step& step)
    : pending_(std::make_unique<Pending>(file)) {
    const std::string& text = pending_->file.Text();
    if (text.find_first_not_of(" \t\r\n") != std::string::npos) {
        RequireScenario(pending_->file, tv);
    } else {
        pending_->before = Written(toml::table{{"title", "Recorded on " + tv.GetModel().title},
                                               {"model", ModelOf(tv)}}) +
                           FirstSteps(tv);
    }
    pending_->step = ToToml(step);
    const Scenario after = ParseScenario(text + pending_->before + StepText(pending_->step), file);
    if (!after.problems.empty()) {
        throw vtv::Error(
            vtv::ErrorKind::kUsage,
            after.problems.front() + " Nothing was done: a scenario could not have it.");
    }
}

Recording::~Recording() = default;
Recording::Recording(Recording&&) noexcept = default;

void Recording::Done() {
    pending_->Add();
}

void Recording::Done(const PressResult& result) {
    pending_->step.insert("expect", Expected(result, pending_->step.contains("press")));
    pending_->Add();
}

}  // namespace host
