/* What a host and a provider agree on, checked while compiling: as C and as C++, at 64 and 32 bits.
 */
#pragma once

#include <stddef.h>

#include "abi/si_provider.h"

#ifdef __cplusplus
#define CHECK(condition) static_assert(condition, #condition)
#else
#define CHECK(condition) _Static_assert(condition, #condition)
#endif
#define CHECK_SLOT(index, name) CHECK(offsetof(SIProviderTable, name) == (index) * sizeof(void*))

CHECK(sizeof(SIProviderTable) == 52 * sizeof(void*));
CHECK(sizeof(void*) != 4 || sizeof(SIProviderTable) == 208);
CHECK(SI_SLOT_COUNT == 52);

CHECK_SLOT(0, set_int);
CHECK_SLOT(8, get_int);
CHECK_SLOT(13, get_display_name);
CHECK_SLOT(14, get_help_text);
CHECK_SLOT(16, get_list_items);
CHECK_SLOT(17, list_item_text);
CHECK_SLOT(20, list_item_value);
CHECK_SLOT(23, list_item_kind);
CHECK_SLOT(24, free_list_items);
CHECK_SLOT(39, get_messagebox_info);
CHECK_SLOT(41, get_disable_text);
CHECK_SLOT(44, provider_property);
CHECK_SLOT(50, get_messagebox_title);
CHECK_SLOT(51, get_disablepopup_info);

CHECK(offsetof(ListItem, value) == 0);
CHECK(offsetof(ListItem, text) == sizeof(void*));
CHECK(sizeof(ListItem) == 2 * sizeof(void*));
CHECK(sizeof(int) == 4);
CHECK(sizeof(bool) == 1);

CHECK(SI_ACTION_VALUE == 9999);
CHECK(sizeof(SI_ACTION_TEXT) == 5);
CHECK(SI_LIST_ITEM_INTEGER == 2);
CHECK(SI_PROPERTY_SIZE == 255);

/* The signatures, by assigning what must fit. */
typedef struct Signatures {
    int (*create)(void*** table);
    int (*intQuestion)(const char* key, int value);
    int (*boolQuestion)(const char* key, bool value);
    int (*doubleQuestion)(const char* key, double value);
    int (*stringQuestion)(const char* key, const char* value);
} Signatures;

extern const Signatures signatures;
const Signatures signatures = {create_provider, check_enable_int, check_visibility_bool,
                               check_enable_double, check_visibility_string};
