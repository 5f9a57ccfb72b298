// When each item of the Voice page is shown. Every rule ignores its arguments; true is shown.
#pragma once

#include "Export.h"

SI_EXPORT bool check_general_voice_supported(const char* key, int value);
SI_EXPORT bool check_general_voice_onboarding_supported(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_assistant(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_wake_up(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_wake_up();
SI_EXPORT bool check_general_voice_voice_always_wake_up(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_screen_on_wake_up(const char* key, int value);
SI_EXPORT bool check_general_voice_situational_hint(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_settings_orvik(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_settings_orvik_cn(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_settings_tencent(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_settings_alexa(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_settings_google(const char* key, int value);
SI_EXPORT bool check_general_voice_voice_settings_salute(const char* key, int value);
