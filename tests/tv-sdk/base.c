#include <stddef.h>
#include <tv/base.h>
int vconf_get_int(const char* key, int* value) {
    return -1;
}
int vconf_get_bool(const char* key, int* value) {
    return -1;
}
char* vconf_get_str(const char* key) {
    return NULL;
}
int vconf_set_int(const char* key, int value) {
    return -1;
}
int vconf_set_bool(const char* key, int value) {
    return -1;
}
int vconf_set_str(const char* key, const char* value) {
    return -1;
}
int vconf_notify_key_changed(const char* key, vconf_callback_fn callback, void* data) {
    return -1;
}
int vconf_ignore_key_changed(const char* key, vconf_callback_fn callback) {
    return -1;
}
int system_info_get_custom_bool(const char* key, bool* value) {
    return -1;
}
int system_info_get_custom_int(const char* key, int* value) {
    return -1;
}
int system_info_get_custom_string(const char* key, char** value) {
    return -1;
}
int __dlog_print(int log, int priority, const char* tag, const char* format, ...) {
    return -1;
}
int connection_profile_check_default_gateway(bool* connected) {
    return -1;
}
int sso_get_login_state(int* state) {
    return -1;
}
int sso_get_account_ui_application_package_id(char** id) {
    return -1;
}
int GetDisclaimerItemAgreement(const char* item) {
    return -1;
}
