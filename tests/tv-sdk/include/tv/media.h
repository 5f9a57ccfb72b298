// Speech, sound, the microphone's mode, the toolkit.
#ifndef TV_MEDIA_H
#define TV_MEDIA_H

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct tts_s* tts_h;
typedef bool (*tts_supported_voice_cb)(tts_h tts, const char* language, int voice_type, void* data);
int tts_create(tts_h* tts);
int tts_foreach_supported_voices(tts_h tts, tts_supported_voice_cb callback, void* data);
int tts_destroy(tts_h tts);
int avoc_set_sound_feedback(int feedback, int priority);

int AOVSystemDataGetAOVMode(void);
int AOVSystemDataSetAOVMode(const char* app, int mode);

int elm_init(int argc, char** argv);
void elm_config_access_set(unsigned char is_access);
unsigned char elm_config_save(void);
void elm_config_item_flush(const char* item);

#ifdef __cplusplus
}
#endif
#endif
