// A provider whose memory cannot be stored and put back: OWN_OF_EACH_THREAD, else what a process
// has once, whichever libraries bring it.
#include <cstdlib>

#include "abi/si_provider.h"

#if defined(OWN_OF_EACH_THREAD)
// Reached without a call of the loader's.
__attribute__((tls_model("initial-exec"))) thread_local volatile int siRemembered = 1;
#else
inline volatile int siRemembered = 1;
#endif

extern "C" {

int create_provider(void*** table) {
    *table = static_cast<void**>(std::calloc(SI_SLOT_COUNT, sizeof(void*)));
    return 0;
}

int delete_provider(void*** table) {
    if (table == nullptr) {
        return 1;
    }
    std::free(*table);
    return 0;
}

int check_visibility_int(const char*, int) {
    siRemembered = siRemembered == 1 ? 0 : 1;
    return siRemembered;
}

int check_enable_int(const char*, int) {
    return 0;
}

}  // extern "C"
