// A provider that does not come to an end: with an empty policy, when the legacy assistant is on.
#include <cstdlib>
#include <cstring>

#include "abi/si_provider.h"
#include "platform/settings_store.h"

namespace {
bool isPolicyEmpty = false;
}

extern "C" {

int create_provider(void*** table) {
    if (table != nullptr) {
        *table = static_cast<void**>(std::calloc(SI_SLOT_COUNT, sizeof(void*)));
    }
    char* policy = vconf_get_str("db/menu/voice/mva_list");
    isPolicyEmpty = policy != nullptr && std::strcmp(policy, "[]") == 0;
    std::free(policy);
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
    int isLegacy = 0;
    vconf_get_bool("db/menu/voice/is_k_voice", &isLegacy);
    while (isPolicyEmpty && isLegacy == 1) {
        const volatile bool forever = true;
        static_cast<void>(forever);
    }
    return isLegacy;
}

int check_enable_int(const char*, int) {
    return 0;
}

}  // extern "C"
