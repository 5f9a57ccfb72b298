// Applications and their packages.
#ifndef TV_APPS_H
#define TV_APPS_H

// A value of the SDK's own: a provider that was built with this SDK carries it.
#define APP_CONTROL_OPERATION_DEFAULT "tv-sdk-operation"

#ifdef __cplusplus
extern "C" {
#endif

struct app_control_s;
typedef struct app_control_s* app_control_h;
typedef void (*app_control_reply_cb)(app_control_h request, app_control_h reply, int result,
                                     void* data);
int app_control_create(app_control_h* control);
int app_control_set_operation(app_control_h control, const char* operation);
int app_control_set_app_id(app_control_h control, const char* app);
int app_control_add_extra_data(app_control_h control, const char* key, const char* value);
int app_control_send_launch_request(app_control_h control, app_control_reply_cb callback,
                                    void* data);
int app_control_destroy(app_control_h control);

typedef struct bundle_s bundle;
bundle* bundle_create(void);
int bundle_add_str(bundle* b, const char* key, const char* value);
int bundle_free(bundle* b);
int aul_launch_app(const char* app, bundle* b);

typedef struct app_context_s* app_context_h;
int app_manager_get_app_context(const char* app, app_context_h* context);
int app_manager_terminate_app(app_context_h context);

typedef void* pkgmgrinfo_appinfo_h;
int pkgmgrinfo_appinfo_get_appinfo(const char* app, pkgmgrinfo_appinfo_h* handle);
int pkgmgrinfo_appinfo_get_metadata_value(pkgmgrinfo_appinfo_h handle, const char* key,
                                          char** value);
int pkgmgrinfo_appinfo_destroy_appinfo(pkgmgrinfo_appinfo_h handle);

#ifdef __cplusplus
}
#endif
#endif
