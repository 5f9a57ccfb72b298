// A provider library under exploration. What a host does with it goes through Provider(); who wants
// to see each byte that it answers calls the bare contract, which costs nothing but the answer.
#pragma once

#include <list>
#include <optional>
#include <string>

#include "explorer/engine/memory.h"
#include "explorer/tv/inputs.h"
#include "host/page/provider.h"

namespace explorer {

// Whether the file can be loaded as a provider on this platform, tried out in a process of its own.
// Throws host::ProviderError.
void CheckSubject(const std::string& file);

class Subject {
  public:
    using Copy = host::ProviderLibrary::Copy;

    // Loads the library and nothing more. Throws host::ProviderError.
    Subject(const std::string& file, Copy copy);
    // Loads the library, creates the provider on a TV whose policy is the first that was published,
    // and publishes the others. Throws host::ProviderError.
    Subject(const std::string& file, const Policy& policy, Copy copy = Copy::kShared);
    // Deletes the provider and unloads the library.
    ~Subject() {
        if (slots_ != nullptr) {
            entry_.destroy(&slots_);
        }
    }
    Subject(const Subject&) = delete;
    Subject& operator=(const Subject&) = delete;

    // Publishes another document through the provider's own watch: the record of that.
    std::string Publish(const std::string& document);

    // Within the TV's current run, on the policy that it has.
    void Create();
    // False when nobody watches the policy.
    bool Notify() const;
    void Delete();
    // No place for a table; what was begun is ended as well.
    void CreateNothing() const;
    // That by the functions of their own.
    void InitializeAndFinalize() const;
    // What deletes nothing: no table, and no place for one.
    void DeleteNothing() const;
    // Creates a second one and deletes one of the two; the other one stays.
    void CreateSecond(bool isFirstDeleted);
    // The table that the host has; null: none.
    void** Slots() const { return slots_; }
    void SetSlots(void** slots);

    const host::AskableProvider& Provider() const { return *provider_; }
    const SIProviderTable& Table() const { return *reinterpret_cast<SIProviderTable*>(slots_); }
    // Null when the library does not export it.
    void* Symbol(const char* mangled) const {
        const PlatformMemory own;  // the loader keeps what it complains of
        return library_.Symbol(mangled);
    }

    // What no question can be asked without; what else a build lacks is its answer.
    struct EntryPoints {
        // Throws host::ProviderError for a library that lacks one.
        explicit EntryPoints(const host::ProviderLibrary& library);

        int (*create)(void***) = nullptr;
        int (*destroy)(void***) = nullptr;
        int (*checkVisible)(const char*, int) = nullptr;
        int (*checkEnabled)(const char*, int) = nullptr;
    };
    const EntryPoints& Entry() const { return entry_; }
    // The library's one cache that fills by itself; null when it does not export it.
    std::list<std::string>* Languages() const { return languages_; }
    // Empties the library's one cache that fills by itself, where it has that, so that no question
    // leaves something to the next.
    void ForgetLanguages() const {
        if (languages_ != nullptr) {
            languages_->clear();
        }
    }

    // What create_provider and the publications did, as a record of the TV.
    const std::string& StartRecord() const { return startRecord_; }
    // Deletes the provider before its time, asks what may be asked of a deleted one, creates and
    // deletes two more at once: the record of that. Nothing may be asked afterwards.
    std::string End();

  private:
    // Into the TV's record.
    void CreateAt(void**& slots) const;
    void DeleteAt(void**& slots) const;

    host::ProviderLibrary library_;
    EntryPoints entry_;
    void** slots_ = nullptr;
    std::optional<host::AskableProvider> provider_;
    std::list<std::string>* languages_ = nullptr;
    std::string startRecord_;
};

}  // namespace explorer
