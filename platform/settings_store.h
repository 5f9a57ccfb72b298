/*
 * Settings store: typed values under string keys, shared by every process of the TV.
 * Keys under "db/" survive a restart; keys under "memory/" do not.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

struct keynode; /* the changed key, as a change callback sees it; opaque */

/* Runs on the thread of the main loop of the process that registered it: from that loop, or inside
 * a platform call that is made there. */
typedef void (*vconf_callback_fn)(struct keynode* node, void* userData);

/* Readers and writers return 0 on success. A missing key, a key of another type and one that begins
 * with neither "db/" nor "memory/" are failures; a failed read leaves *value as it was. A write
 * replaces what is stored, also of another type. */
int vconf_get_int(const char* key, int* value);
int vconf_get_bool(const char* key, int* value); /* any non-zero value is true */
char* vconf_get_str(const char* key);            /* heap string, or NULL; the caller frees it */
int vconf_set_int(const char* key, int value);
int vconf_set_bool(const char* key, int value);
int vconf_set_str(const char* key, const char* value);

/* Every write of the key calls back, also one that leaves the value as it was. A callback that is
 * registered for the same key again only gets the new user data, which may be null: a write calls
 * it once, and it is ignored once. Ignoring one that is not registered fails. */
int vconf_notify_key_changed(const char* key, vconf_callback_fn callback, void* userData);
int vconf_ignore_key_changed(const char* key, vconf_callback_fn callback);

#ifdef __cplusplus
}
#endif
