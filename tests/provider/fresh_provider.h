// A provider that was loaded a moment ago and is unloaded with this object: nothing of another test
// is left in it.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "abi/si_provider.h"
#include "recording_platform.h"

class FreshProvider {
  public:
    FreshProvider() : library_(dlopen(Path(), RTLD_NOW | RTLD_LOCAL)) {
        if (library_ == nullptr) {
            ADD_FAILURE() << dlerror();
            std::abort();
        }
    }
    ~FreshProvider() { dlclose(library_); }
    FreshProvider(const FreshProvider&) = delete;
    FreshProvider& operator=(const FreshProvider&) = delete;

    // The environment variable SI_PROVIDER names another build of the provider.
    static const char* Path() {
        const char* path = std::getenv("SI_PROVIDER");
        return path != nullptr ? path : SI_PROVIDER_PATH;
    }
    static bool IsLoaded() {
        void* library = dlopen(Path(), RTLD_NOW | RTLD_NOLOAD);
        if (library != nullptr) {
            dlclose(library);
        }
        return library != nullptr;
    }

    void* Symbol(const std::string& name) const { return dlsym(library_, name.c_str()); }
    template <typename Signature>
    Signature* Function(const std::string& name) const {
        return reinterpret_cast<Signature*>(Symbol(name));
    }

    SIProviderTable* Create() {
        void** table = nullptr;
        Function<int(void***)>("create_provider")(&table);
        return reinterpret_cast<SIProviderTable*>(table);
    }
    void Delete(SIProviderTable* table) {
        void** pointers = reinterpret_cast<void**>(table);
        Function<int(void***)>("delete_provider")(&pointers);
    }
    int IsVisible(const char* item) {
        return Function<int(const char*, int)>("check_visibility_int")(item, 0);
    }

  private:
    void* library_;
};
