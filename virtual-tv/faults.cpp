// Platform calls that fail, or take long, because they were told to.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>
#include <thread>

#include "serve.h"
#include "tv_impl.h"
#include "virtual-tv/model/limits.h"

namespace vtv {

namespace {

constexpr char kOfTheLibrary[] = "access";
constexpr char kOfTheTrace[] = "PrepareCallBuffer";

// "always -1 0", as it is kept in the TV's folder under the function's name.
std::string Format(const Fault& fault) {
    const char* kind = fault.kind == Fault::Kind::kOnce     ? "once"
                       : fault.kind == Fault::Kind::kAlways ? "always"
                                                            : "slow";
    return std::string(kind) + " " + std::to_string(fault.result) + " " +
           std::to_string(fault.delayMs);
}

// What is wrong with it; empty when nothing is.
std::string Parse(const Value& value, Fault* fault) {
    const std::string* text = std::get_if<std::string>(&value);
    std::istringstream words(text != nullptr ? *text : "");
    std::string kind;
    if (!(words >> kind >> fault->result >> fault->delayMs) || !words.eof() ||
        (kind != "once" && kind != "always" && kind != "slow")) {
        return "\"" + ToText(value) + "\" is no fault.";
    }
    fault->kind = kind == "once"     ? Fault::Kind::kOnce
                  : kind == "always" ? Fault::Kind::kAlways
                                     : Fault::Kind::kSlow;
    return fault->kind == Fault::Kind::kSlow ? DelayProblem(fault->delayMs) : "";
}

}  // namespace

const std::vector<std::string>& PlatformFunctions() {
    static const std::vector<std::string> functions = [] {
        std::vector<std::string> names = {kOfTheLibrary, kOfTheTrace};
        for (const platform::DescribedCall& call : platform::CALLS) {
            names.emplace_back(call.name);
        }
        std::sort(names.begin(), names.end());
        return names;
    }();
    return functions;
}

platform::Does WhatDoes(std::string_view function) {
    const platform::DescribedCall* call = platform::Find(function);
    return call != nullptr           ? call->does
           : function == kOfTheTrace ? platform::Does::RECORDS
                                     : platform::Does::ASKS;
}

Switches::Switches(const std::string& tvDir) {
    int fd = OpenTvFile(tvDir, kSwitches, O_RDWR | O_CREAT);
    writable_ = fd >= 0;
    if (fd < 0) {
        fd = OpenTvFile(tvDir, kSwitches, O_RDONLY);
    }
    if (fd < 0) {
        return;
    }
    struct stat info;
    const bool sized =
        fstat(fd, &info) == 0 && (info.st_size >= static_cast<off_t>(sizeof *counter_) ||
                                  (writable_ && ftruncate(fd, sizeof *counter_) == 0));
    if (sized) {
        void* page = mmap(nullptr, sizeof *counter_, writable_ ? PROT_READ | PROT_WRITE : PROT_READ,
                          MAP_SHARED, fd, 0);
        counter_ = page != MAP_FAILED ? static_cast<std::atomic<uint32_t>*>(page) : nullptr;
    }
    close(fd);
}

Switches::~Switches() {
    if (counter_ != nullptr) {
        munmap(counter_, sizeof *counter_);
    }
}

bool Switches::Changed() {
    if (counter_ == nullptr) {
        return true;
    }
    const uint32_t now = counter_->load(std::memory_order_acquire);
    if (!first_ && now == seen_) {
        return false;
    }
    first_ = false;
    seen_ = now;
    return true;
}

void Switches::Announce() {
    if (counter_ != nullptr && writable_) {
        counter_->fetch_add(1, std::memory_order_release);
    }
}

bool Faulted(Tv::Impl& tv, const char* function, int* result) {
    if (tv.switches.Changed()) {
        tv.FollowSwitches();
    }
    if (tv.activeFaults.empty()) {
        return false;
    }
    const auto found = tv.activeFaults.find(function);
    if (found == tv.activeFaults.end()) {
        return false;
    }
    const Fault fault = found->second;
    if (Experimenting()) {
        *result = fault.result;
        return fault.kind == Fault::Kind::kAlways && !IsMended(fault.function);
    }
    if (fault.kind == Fault::Kind::kSlow) {
        tv.LogLine(kWarning, "fault: " + fault.function + " takes " +
                                 std::to_string(fault.delayMs) + " ms longer");
        std::this_thread::sleep_for(std::chrono::milliseconds(fault.delayMs));
        return false;
    }
    if (fault.kind == Fault::Kind::kOnce) {
        tv.activeFaults.erase(found);
        if (!tv.faults.Remove(fault.function)) {
            return false;  // another process's call has had it
        }
        tv.switches.Announce();
    }
    tv.LogLine(kWarning, "fault: " + fault.function + " fails");
    if (WhatDoes(function) == platform::Does::CHANGES) {
        NoteFailure(tv, fault.function + " failed, as it was told to. Faults are listed and " +
                            "cleared with \"vtv fault\".");
    }
    *result = fault.result;
    return true;
}

void Tv::SetFault(const Fault& fault) {
    const auto& known = PlatformFunctions();
    if (!std::binary_search(known.begin(), known.end(), fault.function)) {
        throw Error(ErrorKind::kNoSuch,
                    "\"" + fault.function + "\" is no platform call that can be made to fail.");
    }
    if (const std::string problem = DelayProblem(fault.delayMs);
        fault.kind == Fault::Kind::kSlow && !problem.empty()) {
        throw Error(ErrorKind::kUsage, problem);
    }
    impl_->faults.Write(fault.function, Format(fault));
    impl_->switches.Announce();
    impl_->LogLine(kWarning, "fault set: " + fault.function + ": " + Format(fault));
}

bool Tv::ClearFault(const std::string& function) {
    const bool removed = impl_->faults.Remove(function);
    impl_->switches.Announce();
    return removed;
}

void Tv::ClearFaults() {
    impl_->faults.RemoveAll();
    impl_->switches.Announce();
}

std::string ProblemOfFault(const Value& value) {
    Fault ignored;
    return Parse(value, &ignored);
}

std::vector<Fault> Tv::Faults() const {
    std::vector<Fault> faults;
    for (const Setting& setting : impl_->faults.List()) {
        Fault fault;
        fault.function = setting.key;
        if (setting.value && Parse(*setting.value, &fault).empty()) {
            faults.push_back(fault);
        }
    }
    return faults;
}

void Tv::Impl::FollowSwitches() {
    activeFaults.clear();
    for (const Setting& setting : faults.List()) {
        Fault fault;
        fault.function = setting.key;
        if (setting.value && Parse(*setting.value, &fault).empty()) {
            activeFaults[fault.function] = fault;
        }
    }
    FollowTraceSwitch(*this);
}

}  // namespace vtv
