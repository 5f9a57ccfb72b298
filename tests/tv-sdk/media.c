#include <tv/media.h>
int tts_create(tts_h* tts) {
    return -1;
}
int tts_foreach_supported_voices(tts_h tts, tts_supported_voice_cb callback, void* data) {
    return -1;
}
int tts_destroy(tts_h tts) {
    return -1;
}
int avoc_set_sound_feedback(int feedback, int priority) {
    return -1;
}
int AOVSystemDataGetAOVMode(void) {
    return -1;
}
int AOVSystemDataSetAOVMode(const char* app, int mode) {
    return -1;
}
int elm_init(int argc, char** argv) {
    return -1;
}
void elm_config_access_set(unsigned char is_access) {}
unsigned char elm_config_save(void) {
    return 0;
}
void elm_config_item_flush(const char* item) {}
