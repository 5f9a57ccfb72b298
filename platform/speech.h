/* Text-to-speech engine and sound feedback. All int results are 0 on success. */
#pragma once

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct tts_s* tts_h;
/* Called once per voice; false ends the walk. */
typedef bool (*tts_supported_voice_cb)(tts_h tts, const char* language, int voiceType,
                                       void* userData);
int tts_create(tts_h* tts);
int tts_foreach_supported_voices(tts_h tts, tts_supported_voice_cb callback, void* userData);
int tts_destroy(tts_h tts);

/* Any numbers are taken. */
int avoc_set_sound_feedback(int feedback, int priority);

#ifdef __cplusplus
}
#endif
