/* Always-on-voice mode: 1 wakes up at any time, any other value only while the screen is on. */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

int AOVSystemDataGetAOVMode(void);
int AOVSystemDataSetAOVMode(const char* appId, int mode);

#ifdef __cplusplus
}
#endif
