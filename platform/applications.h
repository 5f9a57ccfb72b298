/* Starting, addressing and ending other applications. All int results are 0 on success. */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/* App control: a request with an operation, an addressee and string extras. */
#ifndef APP_CONTROL_OPERATION_DEFAULT
#define APP_CONTROL_OPERATION_DEFAULT "default"
#endif
typedef struct app_control_s* app_control_h;
typedef void (*app_control_reply_cb)(app_control_h request, app_control_h reply, int result,
                                     void* userData);
int app_control_create(app_control_h* control);
int app_control_set_operation(app_control_h control, const char* operation);
int app_control_set_app_id(app_control_h control, const char* appId);
int app_control_add_extra_data(app_control_h control, const char* key, const char* value);
/* The callback and its user data may be null; fails for a request without an addressee. */
int app_control_send_launch_request(app_control_h control, app_control_reply_cb callback,
                                    void* userData);
int app_control_destroy(app_control_h control);

/* Direct launch with a bundle of string arguments, or with a null one. Whoever got no bundle may
 * give the null back: that fails like other nulls, and is no mistake. */
typedef struct bundle_s bundle;
bundle* bundle_create(void);
int bundle_add_str(bundle* b, const char* key, const char* value);
int bundle_free(bundle* b);
int aul_launch_app(const char* appId, bundle* b);

/* Running applications. One that does not run has no context. */
typedef struct app_context_s* app_context_h;
int app_manager_get_app_context(const char* appId, app_context_h* context);
int app_manager_terminate_app(app_context_h context);

#ifdef __cplusplus
}
#endif
