// Values, choices and onboarding of the Voice page.
#pragma once

#include "Export.h"
#include "abi/si_provider.h"

// Readers and writers of the items that have a value. A switch reads 1 or 0; a writer takes 1 as on
// and every other integer as off.
SI_EXPORT int checknode_int_voice_assistant();  // the assistant's order; 0: none of the list
SI_EXPORT int checknode_int_voice_wake_up();
SI_EXPORT int checknode_int_voice_always_wake_up();
SI_EXPORT int checknode_int_voice_screen_on_wake_up();
SI_EXPORT int checknode_int_voice_situational_hint();  // -1: the assistant has no hints
SI_EXPORT void setnode_int_voice_assistant(int value);
SI_EXPORT void setnode_int_voice_wake_up(int value);
SI_EXPORT void setnode_int_voice_always_wake_up(int value);
SI_EXPORT void setnode_int_voice_screen_on_wake_up(int value);
SI_EXPORT void setnode_int_voice_situational_hint(int value);

// Choices. The key is not looked at. The caller owns the list and frees it as slot 24 does; null
// when there is no choice, or no memory.
SI_EXPORT ListItem** get_list_items_voice_assistant(const char* key, int* count);
SI_EXPORT ListItem** get_list_items_voice_wake_up(const char* key, int* count);

// Tells the viewer that the assistant has changed, if it listens hands-free.
SI_EXPORT void showVAChangingNoticePopup();

// Starts the setup of the current assistant; reason is only logged.
SI_EXPORT void LaunchOnboarding(const char* reason);
