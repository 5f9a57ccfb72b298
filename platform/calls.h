/*
 * Every call of the TV's platform that the provider makes, described once for those who serve the
 * calls: a line is
 *
 *     CALL(result, name, parameters, failure, does, object)
 *
 * failure: what it returns when it fails; out-parameters are then left as they were, and nothing
 *          happens on the TV. A call fails for a null where its header does not allow one, and for
 *          what the TV does not have. Of a feature, call_table.h names another result for that.
 * does:    ASKS     it only tells; what it hands out is the caller's to give back
 *          CHANGES  it leaves something behind on the TV, or prepares that
 *          ENDS     it gives back what another call handed out
 *          RECORDS  it leaves nothing but a record, or is called back
 * object:  what it hands out, works on or gives back: NOTHING, or
 *          TEXT     which comes back by free()
 *          REQUEST, BUNDLE, PACKAGE, SPEECH
 *                   a handle, which comes back by the one call of the same object that ENDS it
 *          CONTEXT  which stays the platform's
 *
 * A handle is used only between the call that hands it out and the one that ENDS it: what another
 * use does is not defined.
 *
 * Types are those of the other headers here, which a reader includes first. Not in the list are
 * those that fail in a way of their own: of the C library access(), which sets errno, and
 * dgettext(), which never does; and the trace storage, which is C++ and hands out a null buffer.
 */
#pragma once

/* clang-format off */
#define SI_PLATFORM_BASE_CALLS(CALL)                                                                                       \
    CALL(int, vconf_get_int, (const char*, int*), -1, ASKS, NOTHING)                                                       \
    CALL(int, vconf_get_bool, (const char*, int*), -1, ASKS, NOTHING)                                                      \
    CALL(char*, vconf_get_str, (const char*), 0, ASKS, TEXT)                                                               \
    CALL(int, vconf_set_int, (const char*, int), -1, CHANGES, NOTHING)                                                     \
    CALL(int, vconf_set_bool, (const char*, int), -1, CHANGES, NOTHING)                                                    \
    CALL(int, vconf_set_str, (const char*, const char*), -1, CHANGES, NOTHING)                                             \
    CALL(int, vconf_notify_key_changed, (const char*, vconf_callback_fn, void*), -1, RECORDS, NOTHING)                     \
    CALL(int, vconf_ignore_key_changed, (const char*, vconf_callback_fn), -1, RECORDS, NOTHING)                            \
    CALL(int, system_info_get_custom_bool, (const char*, bool*), -1, ASKS, NOTHING)                                        \
    CALL(int, system_info_get_custom_int, (const char*, int*), -1, ASKS, NOTHING)                                          \
    CALL(int, system_info_get_custom_string, (const char*, char**), -1, ASKS, TEXT)                                        \
    CALL(int, __dlog_print, (int, int, const char*, const char*, ...), -1, RECORDS, NOTHING)                               \
    CALL(int, connection_profile_check_default_gateway, (bool*), -1, ASKS, NOTHING)                                        \
    CALL(int, sso_get_login_state, (int*), -1, ASKS, NOTHING)                                                              \
    CALL(int, sso_get_account_ui_application_package_id, (char**), -1, ASKS, TEXT)                                         \
    CALL(int, GetDisclaimerItemAgreement, (const char*), -1, ASKS, NOTHING)

#define SI_PLATFORM_APPLICATION_CALLS(CALL)                                                                                \
    CALL(int, app_control_create, (app_control_h*), -1, CHANGES, REQUEST)                                                  \
    CALL(int, app_control_set_operation, (app_control_h, const char*), -1, CHANGES, REQUEST)                               \
    CALL(int, app_control_set_app_id, (app_control_h, const char*), -1, CHANGES, REQUEST)                                  \
    CALL(int, app_control_add_extra_data, (app_control_h, const char*, const char*), -1, CHANGES, REQUEST)                 \
    CALL(int, app_control_send_launch_request, (app_control_h, app_control_reply_cb, void*), -1, CHANGES, REQUEST)         \
    CALL(int, app_control_destroy, (app_control_h), -1, ENDS, REQUEST)                                                     \
    CALL(bundle*, bundle_create, (void), 0, CHANGES, BUNDLE)                                                               \
    CALL(int, bundle_add_str, (bundle*, const char*, const char*), -1, CHANGES, BUNDLE)                                    \
    CALL(int, bundle_free, (bundle*), -1, ENDS, BUNDLE)                                                                    \
    CALL(int, aul_launch_app, (const char*, bundle*), -1, CHANGES, BUNDLE)                                                 \
    CALL(int, app_manager_get_app_context, (const char*, app_context_h*), -1, ASKS, CONTEXT)                               \
    CALL(int, app_manager_terminate_app, (app_context_h), -1, CHANGES, CONTEXT)                                            \
    CALL(int, pkgmgrinfo_appinfo_get_appinfo, (const char*, pkgmgrinfo_appinfo_h*), -1, ASKS, PACKAGE)                     \
    CALL(int, pkgmgrinfo_appinfo_get_metadata_value, (pkgmgrinfo_appinfo_h, const char*, char**), -1, ASKS, PACKAGE)       \
    CALL(int, pkgmgrinfo_appinfo_destroy_appinfo, (pkgmgrinfo_appinfo_h), -1, ENDS, PACKAGE)

#define SI_PLATFORM_MEDIA_CALLS(CALL)                                                                                      \
    CALL(int, tts_create, (tts_h*), -1, ASKS, SPEECH)                                                                      \
    CALL(int, tts_foreach_supported_voices, (tts_h, tts_supported_voice_cb, void*), -1, ASKS, SPEECH)                      \
    CALL(int, tts_destroy, (tts_h), -1, ENDS, SPEECH)                                                                      \
    CALL(int, avoc_set_sound_feedback, (int, int), -1, CHANGES, NOTHING)                                                   \
    CALL(int, AOVSystemDataGetAOVMode, (void), -1, ASKS, NOTHING)                                                          \
    CALL(int, AOVSystemDataSetAOVMode, (const char*, int), -1, CHANGES, NOTHING)                                           \
    CALL(int, elm_init, (int, char**), 0, CHANGES, NOTHING)                                                                \
    CALL(void, elm_config_access_set, (unsigned char), , CHANGES, NOTHING)                                                 \
    CALL(unsigned char, elm_config_save, (void), 0, CHANGES, NOTHING)                                                      \
    CALL(void, elm_config_item_flush, (const char*), , CHANGES, NOTHING)

#define SI_PLATFORM_CALLS(CALL)         \
    SI_PLATFORM_BASE_CALLS(CALL)        \
    SI_PLATFORM_APPLICATION_CALLS(CALL) \
    SI_PLATFORM_MEDIA_CALLS(CALL)
/* clang-format on */
