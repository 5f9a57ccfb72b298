// A provider library, loaded as a settings application loads it.
//
// The platform calls that the library imports must be served by something that the process has
// loaded before. Everything happens on the calling thread.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include "askable_provider.h"

namespace host {

// A provider that cannot be used. what() is for people: the file, what is wrong with it, what to
// do.
class ProviderError : public std::runtime_error {
  public:
    enum class Kind { kNoSuchFile, kUnusable };
    ProviderError(Kind kind, const std::string& text) : std::runtime_error(text), kind_(kind) {}
    Kind kind() const { return kind_; }

  private:
    Kind kind_;
};

// $VTV_PROVIDER, else the one that was installed with this program, or built with it. Where it
// should be when there is none.
std::string DefaultProvider();

// A library that has been loaded and nothing more: for who calls the contract by hand.
class ProviderLibrary {
  public:
    // A library has its memory once a process, and several providers from it share that. A private
    // copy has a memory of its own, as fresh as after the start of the TV.
    enum class Copy { kShared, kPrivate };
    struct EntryPoints {
        int (*create)(void*** table) = nullptr;
        int (*destroy)(void*** table) = nullptr;
        int (*visibleInt)(const char*, int) = nullptr;
        int (*visibleBool)(const char*, bool) = nullptr;
        int (*visibleDouble)(const char*, double) = nullptr;
        int (*visibleString)(const char*, const char*) = nullptr;
        int (*enabledInt)(const char*, int) = nullptr;
        int (*enabledBool)(const char*, bool) = nullptr;
        int (*enabledDouble)(const char*, double) = nullptr;
        int (*enabledString)(const char*, const char*) = nullptr;
    };

    // Throws ProviderError.
    explicit ProviderLibrary(const std::string& file, Copy copy = Copy::kShared);

    const std::string& File() const { return file_; }
    // Null when the library does not export it.
    void* Symbol(const char* name) const;
    // Throws ProviderError for a library that does not export it.
    template <typename Function>
    void Find(const char* name, Function*& function) const {
        function = reinterpret_cast<Function*>(Need(name));
    }
    // All ten. Throws ProviderError for a library that lacks one.
    EntryPoints Entry() const;

  private:
    void* Need(const char* name) const;

    std::string file_;
    std::unique_ptr<void, int (*)(void*)> library_;
};

// A provider that exists for as long as this does.
struct CreatedProvider {
    CreatedProvider(const std::string& file, ProviderLibrary::Copy copy);
    ~CreatedProvider() { entry.destroy(&slots); }
    CreatedProvider(const CreatedProvider&) = delete;
    CreatedProvider& operator=(const CreatedProvider&) = delete;

    ProviderLibrary library;
    ProviderLibrary::EntryPoints entry;
    void** slots = nullptr;
};

// A provider as a settings application has it.
class Provider : private CreatedProvider, public AskableProvider {
  public:
    using Copy = ProviderLibrary::Copy;

    // Loads the library, finds its ten entry points and creates the provider, which is deleted with
    // this. Throws ProviderError.
    explicit Provider(const std::string& file, Copy copy = Copy::kShared);

    const std::string& File() const { return library.File(); }
    // What else the library exports; null when it does not.
    void* Symbol(const char* name) const { return library.Symbol(name); }
};

}  // namespace host
