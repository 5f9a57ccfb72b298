// Settings, features, log, network, account.
#ifndef TV_BASE_H
#define TV_BASE_H

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

// Code in the manner of many SDKs, at which a build that takes it for its own would warn, and stop.
static inline unsigned char tv_low_byte(int value) {
    return value;
}

struct keynode;
typedef void (*vconf_callback_fn)(struct keynode* node, void* data);

int vconf_get_int(const char* key, int* value);
int vconf_get_bool(const char* key, int* value);
char* vconf_get_str(const char* key);
int vconf_set_int(const char* key, int value);
int vconf_set_bool(const char* key, int value);
int vconf_set_str(const char* key, const char* value);
int vconf_notify_key_changed(const char* key, vconf_callback_fn callback, void* data);
int vconf_ignore_key_changed(const char* key, vconf_callback_fn callback);

int system_info_get_custom_bool(const char* key, bool* value);
int system_info_get_custom_int(const char* key, int* value);
int system_info_get_custom_string(const char* key, char** value);

int __dlog_print(int log, int priority, const char* tag, const char* format, ...);

int connection_profile_check_default_gateway(bool* connected);

int sso_get_login_state(int* state);
int sso_get_account_ui_application_package_id(char** id);
int GetDisclaimerItemAgreement(const char* item);

#ifdef __cplusplus
}
#endif
#endif
