/*
 * The four calls of the widget toolkit that the provider makes. The first three are EFL
 * Elementary's own, declared as Elementary.h declares them so that a TV build needs no toolkit
 * headers; the platform adds the last.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

int elm_init(int argc, char** argv);
void elm_config_access_set(unsigned char isAccess); /* Eina_Bool */
unsigned char elm_config_save(void);
void elm_config_item_flush(const char* item);

#ifdef __cplusplus
}
#endif
