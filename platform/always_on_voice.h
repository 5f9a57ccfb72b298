/* Always-on-voice mode: 1 wakes up at any time, any other value only while the screen is on. */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/* Of the assistant that is current; 0 where none was set for it. */
int AOVSystemDataGetAOVMode(void);
/* Of any application, known or not; 0 on success. */
int AOVSystemDataSetAOVMode(const char* appId, int mode);

#ifdef __cplusplus
}
#endif
