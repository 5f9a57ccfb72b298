// Loads what a TV loads, in its order: the platform is in the process from the start, then the
// provider with all its symbols bound at once, then the suite that calls it. The suite's calls of
// the provider's exports resolve to the provider that was loaded.
//
// The environment variable SI_PROVIDER names another build of the provider.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "recording_platform.h"

namespace {

bool Load(const char* library) {
    if (dlopen(library, RTLD_NOW | RTLD_GLOBAL) != nullptr) {
        return true;
    }
    std::fprintf(stderr, "cannot load: %s\n", dlerror());
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    const char* provider = std::getenv("SI_PROVIDER");
    recording::Reset();
    if (!Load(provider != nullptr ? provider : SI_PROVIDER_PATH)) {
        return 4;
    }
    if (!recording::Calls().empty()) {
        std::fprintf(stderr, "loading the provider called the platform: %s\n",
                     recording::Calls().front().c_str());
        return 1;
    }
    if (!Load(SI_SUITE_PATH)) {
        return 4;
    }
    // Only now: GoogleTest makes its parameterised tests when it is initialised.
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
