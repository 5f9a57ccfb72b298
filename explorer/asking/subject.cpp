#include "subject.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string_view>

#include "explorer/engine/memory.h"
#include "explorer/tv/lazy_tv.h"
#include "imports.h"
#include "virtual-tv/model/items.h"

namespace explorer {

using host::ProviderError;

namespace {

void RequireProvable(const std::string& file, const Subject::EntryPoints& entry) {
    std::string names;
    for (const std::string& name : UnseenImports(reinterpret_cast<const void*>(entry.create))) {
        names += (names.empty() ? "" : ", ") + name;
    }
    if (!names.empty()) {
        throw ProviderError(
            ProviderError::Kind::kUnusable,
            file + " takes in what no platform call tells it: " + names +
                ". What it answers may follow from that, so nothing can be proven.");
    }
    const std::string unstorable = UnstorableParts(reinterpret_cast<const void*>(entry.create));
    if (!unstorable.empty()) {
        throw ProviderError(ProviderError::Kind::kUnusable,
                            file + " has " + unstorable +
                                ". What it remembers there cannot be put back, so nothing can be "
                                "proven. Build it without.");
    }
}

}  // namespace

void CheckSubject(const std::string& file) {
    int ends[2];
    if (pipe(ends) != 0) {
        throw std::runtime_error("cannot make a pipe");
    }
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        try {
            const host::ProviderLibrary library(file);
            const Subject::EntryPoints entry(library);
            RequireProvable(file, entry);
        } catch (const ProviderError& error) {
            const std::string_view problem = error.what();
            const ssize_t written = write(ends[1], problem.data(), problem.size());
            _exit(error.kind() == ProviderError::Kind::kNoSuchFile && written > 0 ? 2 : 1);
        }
        _exit(0);
    }
    close(ends[1]);
    char problem[1024] = "";
    const ssize_t size = read(ends[0], problem, sizeof(problem) - 1);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (status != 0) {
        const bool isThere = !WIFEXITED(status) || WEXITSTATUS(status) != 2;
        throw ProviderError(
            isThere ? ProviderError::Kind::kUnusable : ProviderError::Kind::kNoSuchFile,
            size > 0 ? std::string(problem) : file + " crashes when it is loaded");
    }
}

Subject::EntryPoints::EntryPoints(const host::ProviderLibrary& library) {
    library.Find("create_provider", create);
    library.Find("delete_provider", destroy);
    library.Find("check_visibility_int", checkVisible);
    library.Find("check_enable_int", checkEnabled);
}

Subject::Subject(const std::string& file, Copy copy) : library_(file, copy), entry_(library_) {
    languages_ =
        static_cast<std::list<std::string>*>(Symbol("_ZN11CSIMenuUtil17m_listTTSLanguageB5cxx11E"));
}

Subject::Subject(const std::string& file, const Policy& policy, Copy copy) : Subject(file, copy) {
    Choices choices;
    tv().Begin(choices);
    tv().SetPolicy(policy.published.empty() ? nullptr : &policy.published.front());
    Create();
    startRecord_.assign(tv().Record());
    if (slots_ == nullptr) {
        throw ProviderError(ProviderError::Kind::kUnusable,
                            file + ": create_provider() handed out no table.");
    }
    for (std::size_t i = 1; i < policy.published.size(); ++i) {
        startRecord_ += Publish(policy.published[i]);
    }
}

std::string Subject::Publish(const std::string& document) {
    Choices choices;
    tv().Begin(choices);
    tv().SetPolicy(&document);
    if (!Notify()) {
        tv().Append(Entry::kWrong, "nobody watches the policy");
    }
    return std::string(tv().Record());
}

void Subject::SetSlots(void** slots) {
    if (slots_ != slots) {
        const PlatformMemory own;
        slots_ = slots;
        provider_.reset();
        if (slots != nullptr) {
            provider_.emplace(entry_.checkVisible, entry_.checkEnabled, Table());
        }
    }
}

void Subject::Create() {
    void** slots = nullptr;
    CreateAt(slots);
    SetSlots(slots);
}

bool Subject::Notify() const {
    try {
        return tv().NotifyPolicy(reinterpret_cast<const void*>(entry_.create));
    } catch (const std::exception& exception) {
        tv().Append(Entry::kWrong,
                    std::string("an exception leaves the watch callback: ") + exception.what());
        return true;
    }
}

void Subject::Delete() {
    void** slots = slots_;
    DeleteAt(slots);
    SetSlots(nullptr);
}

void Subject::CreateAt(void**& slots) const {
    tv().Append(Entry::kAnswer, "create_provider", entry_.create(&slots));
    tv().Append(Entry::kAnswer, "the table", slots != nullptr);
}

void Subject::DeleteAt(void**& slots) const {
    tv().Append(Entry::kAnswer, "delete_provider", entry_.destroy(&slots));
    tv().Append(Entry::kAnswer, "the table", slots != nullptr);
}

void Subject::CreateNothing() const {
    tv().Append(Entry::kAnswer, "create_provider of no table", entry_.create(nullptr));
    tv().Append(Entry::kAnswer, "delete_provider of no table", entry_.destroy(nullptr));
}

void Subject::InitializeAndFinalize() const {
    for (const char* symbol : {"_ZN7MVAList10InitializeEv", "_ZN7MVAList8FinalizeEv"}) {
        auto* function = reinterpret_cast<void (*)()>(Symbol(symbol));
        if (function == nullptr) {
            const PlatformMemory own;
            tv().Append(Entry::kWrong, std::string(symbol) + " is not exported");
            continue;
        }
        try {
            function();
        } catch (const std::exception& exception) {
            tv().Append(Entry::kAnswer, "throws", exception.what());
        }
    }
}

void Subject::DeleteNothing() const {
    void** none = nullptr;
    DeleteAt(none);
    tv().Append(Entry::kAnswer, "delete_provider of no table", entry_.destroy(nullptr));
}

void Subject::CreateSecond(bool isFirstDeleted) {
    void** second = nullptr;
    CreateAt(second);
    if (isFirstDeleted) {
        Delete();
        SetSlots(second);
    } else {
        DeleteAt(second);
    }
}

std::string Subject::End() {
    Choices choices;
    tv().Begin(choices);
    Delete();
    DeleteNothing();
    const auto askChecks = [this] {
        for (const vtv::Item& item : vtv::PageItems()) {
            tv().Append(Entry::kAnswer, item.name, entry_.checkVisible(item.key, 0));
            tv().Append(Entry::kAnswer, item.name, entry_.checkEnabled(item.key, 0));
        }
    };
    askChecks();
    void** first = nullptr;
    void** second = nullptr;
    CreateAt(first);
    CreateAt(second);
    askChecks();
    DeleteAt(first);
    askChecks();
    DeleteAt(second);
    return std::string(tv().Record());
}

}  // namespace explorer
