/* Feature configuration: what this TV model has. Read-only. */
#pragma once

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Each returns 0 on success, else a negative error; -22 is "invalid parameter", also for a feature
 * that the model does not have, or has of another type. A failed read leaves *value as it was. */
int system_info_get_custom_bool(const char* key, bool* value);
int system_info_get_custom_int(const char* key, int* value);
int system_info_get_custom_string(const char* key,
                                  char** value); /* heap string; the caller frees it */

#ifdef __cplusplus
}
#endif
