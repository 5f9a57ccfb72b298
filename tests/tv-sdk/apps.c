#include <stddef.h>
#include <tv/apps.h>
int app_control_create(app_control_h* control) {
    return -1;
}
int app_control_set_operation(app_control_h control, const char* operation) {
    return -1;
}
int app_control_set_app_id(app_control_h control, const char* app) {
    return -1;
}
int app_control_add_extra_data(app_control_h control, const char* key, const char* value) {
    return -1;
}
int app_control_send_launch_request(app_control_h control, app_control_reply_cb callback,
                                    void* data) {
    return -1;
}
int app_control_destroy(app_control_h control) {
    return -1;
}
bundle* bundle_create(void) {
    return NULL;
}
int bundle_add_str(bundle* b, const char* key, const char* value) {
    return -1;
}
int bundle_free(bundle* b) {
    return -1;
}
int aul_launch_app(const char* app, bundle* b) {
    return -1;
}
int app_manager_get_app_context(const char* app, app_context_h* context) {
    return -1;
}
int app_manager_terminate_app(app_context_h context) {
    return -1;
}
int pkgmgrinfo_appinfo_get_appinfo(const char* app, pkgmgrinfo_appinfo_h* handle) {
    return -1;
}
int pkgmgrinfo_appinfo_get_metadata_value(pkgmgrinfo_appinfo_h handle, const char* key,
                                          char** value) {
    return -1;
}
int pkgmgrinfo_appinfo_destroy_appinfo(pkgmgrinfo_appinfo_h handle) {
    return -1;
}
