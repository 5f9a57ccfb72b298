// A provider that takes in what no call of the platform tells it: IMPORT is the call.
#include <fcntl.h>
#include <sys/mman.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "abi/si_provider.h"

namespace {

[[maybe_unused]] char text[] = "a b";
#ifdef NAMED
extern "C" volatile char siNamed[] __asm__(NAMED);
#endif
volatile bool isTold = false;

}  // namespace

extern "C" {

__attribute__((tls_model("global-dynamic"))) thread_local volatile int siOfEachThread = 1;

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
    isTold = (IMPORT) != 0;
    return isTold ? 1 : 0;
}

int check_enable_int(const char*, int) {
    return 0;
}

}  // extern "C"
