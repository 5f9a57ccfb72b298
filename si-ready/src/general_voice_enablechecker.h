// When each item of the Voice page can be selected. Every rule ignores its arguments, but the two
// shared ones log the key; true is enabled, false is dimmed.
#pragma once

#include "Export.h"

SI_EXPORT bool check_return_true(const char* key, int value);
SI_EXPORT bool check_return_false(const char* key, int value);

SI_EXPORT bool check_general_voice_enable(const char* key, int value);
SI_EXPORT bool check_general_voice_onboarding_enable(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_wake_up_enable(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_wake_up_enable();
SI_EXPORT bool check_general_voice_voice_always_wake_up_enable(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_screen_on_wake_up_enable(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_situational_hint_enable(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_settings_orvik_enable(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_settings_orvik_cn_enable(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_settings_tencent_enable(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_settings_alexa_enable(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_settings_google_enable(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_settings_salute_enable(const char* key, int value);
