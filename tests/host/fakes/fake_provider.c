/*
 * A provider that answers for the page from constants, and the same with one fault each: FAULT_...
 * It asks no platform, so that the host can be tested without a TV.
 */
#include "abi/si_provider.h"

#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#define EXPORT __attribute__((visibility("default")))
#define VOICE "menu/system/general-voice"
#define ASSISTANT VOICE "-voice-assistant"
#define WAKE_UP VOICE "-voice-wake-up"
#define ORVIK VOICE "-voice-settings-orvik"

static int assistant = 1;
static int wake_up = 0;

static bool same(const char* key, const char* other) {
    return key != NULL && strcmp(key, other) == 0;
}

static void copy(char* buffer, const char* text) {
    if (buffer != NULL) {
        strcpy(buffer, text);
    }
}

static int set_int(const char* key, int value) {
    if (same(key, ASSISTANT)) {
        assistant = value;
    } else if (same(key, WAKE_UP)) {
        wake_up = value;
    }
    return 0;
}

static int get_int(const char* key, int* value) {
#ifdef FAULT_WRITES_UNKNOWN_VALUE
    *value = 0;
#endif
    if (value == NULL) {
        return 0;
    }
    if (same(key, ASSISTANT)) {
        *value = assistant;
    } else if (same(key, WAKE_UP)) {
        *value = wake_up;
    }
    return 0;
}

static int get_display_name(const char* key, char** text) {
#ifdef FAULT_CRASHES_ON_NULL
    const size_t length = strlen(key);
    (void)length;
#endif
    if (text == NULL) {
        return 0;
    }
    *text = NULL;
#ifdef FAULT_STATIC_TEXT
    static char title[] = "A text that is not the host's to free, long enough to be one";
    if (same(key, VOICE)) {
        *text = title;
    }
    return 0;
#endif
    if (same(key, VOICE)) {
        *text = strdup("Voice");
    } else if (same(key, ASSISTANT)) {
        *text = strdup("Assistant");
    } else if (same(key, WAKE_UP)) {
        *text = strdup("TV_SID_ORVIK_CDJAN_HANS_FREE_WAKE_UP");
    }
#ifdef FAULT_LEAKS_TEXT
    strcpy(malloc(200), "lost");
#endif
    return 0;
}

static int get_help_text(const char* key, char** text) {
    if (text != NULL) {
        *text = same(key, VOICE) ? strdup("Help") : NULL;
    }
    return 0;
}

static ListItem* item(int value, const char* text) {
    ListItem* one = calloc(1, sizeof(ListItem));
    one->value = value;
    one->text = strdup(text);
    return one;
}

static ListItem** get_list_items(const char* key, int* count) {
    if (!same(key, ASSISTANT)) {
        return NULL;
    }
#ifdef FAULT_HANGS
    sleep(1000);
#endif
    ListItem** items = calloc(2, sizeof(ListItem*));
    items[0] = item(1, "One");
#ifndef FAULT_HOLE_IN_LIST
    items[1] = item(2, "Two");
#endif
    *count = 2;
    return items;
}

static int list_item_text(const ListItem* one, char** text) {
    *text = one->text;
    return 0;
}

static int list_item_value(const ListItem* one, int* value) {
    *value = one->value;
    return 0;
}

static int list_item_kind(const ListItem* one, int* kind) {
    (void)one;
#ifdef FAULT_WRONG_KIND
    *kind = 3;
#else
    *kind = SI_LIST_ITEM_INTEGER;
#endif
    return 0;
}

static int free_list_items(ListItem** items, int count) {
    for (int i = 0; i < count; ++i) {
        if (items[i] == NULL) {
            continue;
        }
#ifndef FAULT_LEAKS_LIST_TEXT
        free(items[i]->text);
#endif
        free(items[i]);
#ifdef FAULT_FREES_TWICE
        free(items[i]);
#endif
    }
    free(items);
    return 0;
}

static int get_messagebox_info(const char* key, char* text, char* first, char* second, int* count) {
    if (same(key, ASSISTANT)) {
        copy(text, "Change it?");
        copy(first, "Yes");
        copy(second, "No");
        if (count != NULL) {
            *count = 2;
        }
    }
    return 0;
}

static int get_messagebox_title(const char* key, char* title) {
    if (same(key, ASSISTANT)) {
        copy(title, "Change");
    }
    return 0;
}

static int get_disable_text(const char* key, char** text, bool* flag) {
    if (same(key, WAKE_UP) && text != NULL && flag != NULL) {
        *text = strdup("Not now.");
        *flag = true;
    }
    return 0;
}

static int provider_property(const char* key, char** text) {
    const bool known = same(key, "provider/owner") || same(key, "provider/main-component") ||
                       same(key, "provider/sub-component");
    if (known && text != NULL) {
        *text = calloc(SI_PROPERTY_SIZE, 1);
        strcpy(*text, "fake");
    }
    return 0;
}

static int get_disablepopup_info(const char* key, char* message, char* title, char* first,
                                 char* second, int* count, char* action) {
    (void)second;
    if (same(key, ORVIK)) {
        copy(message, "Set it up?");
        copy(title, "Set up");
        copy(first, "Start");
        if (count != NULL) {
            *count = 1;
        }
#ifdef FAULT_WRONG_ACTION
        copy(action, "999");
#else
        copy(action, SI_ACTION_TEXT);
#endif
    }
    return 0;
}

EXPORT int create_provider(void*** table) {
#ifdef FAULT_NO_TABLE
    *table = NULL;
    return 0;
#endif
#ifdef FAULT_CREATE_FAILS
    *table = NULL;
    return -1;
#endif
    SIProviderTable* slots = calloc(1, sizeof(SIProviderTable));
    slots->set_int = set_int;
    slots->get_int = get_int;
    slots->get_display_name = get_display_name;
#ifndef FAULT_MISSING_SLOT
    slots->get_help_text = get_help_text;
#else
    (void)get_help_text;
#endif
    slots->get_list_items = get_list_items;
    slots->list_item_text = list_item_text;
    slots->list_item_value = list_item_value;
    slots->list_item_kind = list_item_kind;
    slots->free_list_items = free_list_items;
    slots->get_messagebox_info = get_messagebox_info;
    slots->get_disable_text = get_disable_text;
    slots->provider_property = provider_property;
    slots->get_messagebox_title = get_messagebox_title;
    slots->get_disablepopup_info = get_disablepopup_info;
#ifdef FAULT_EXTRA_SLOT
    slots->slot_40 = slots;
#endif
    *table = (void**)slots;
    return 0;
}

EXPORT int delete_provider(void*** table) {
    if (table == NULL) {
#ifdef FAULT_DELETES_NULL
        return 0;
#endif
        return 1;
    }
    free(*table);
    return 0;
}

EXPORT int check_visibility_int(const char* key, int value) {
    (void)value;
#ifdef FAULT_SHOWS_UNKNOWN
    return key != NULL;
#endif
    return same(key, VOICE) || same(key, ASSISTANT) || same(key, WAKE_UP) || same(key, ORVIK);
}

EXPORT int check_visibility_bool(const char* key, bool value) {
    (void)key;
    (void)value;
#ifdef FAULT_TYPED_NO
    return 0;
#endif
    return 1;
}

EXPORT int check_visibility_double(const char* key, double value) {
    (void)key;
    (void)value;
    return 1;
}

EXPORT int check_visibility_string(const char* key, const char* value) {
    (void)key;
    (void)value;
    return 1;
}

EXPORT int check_enable_int(const char* key, int value) {
    (void)value;
    return same(key, VOICE) || same(key, ASSISTANT);
}

#ifndef FAULT_MISSING_ENTRY_POINT
EXPORT int check_enable_bool(const char* key, bool value) {
    (void)key;
    (void)value;
    return 1;
}
#endif

EXPORT int check_enable_double(const char* key, double value) {
    (void)key;
    (void)value;
    return 1;
}

EXPORT int check_enable_string(const char* key, const char* value) {
    (void)key;
    (void)value;
#ifdef FAULT_UNSERVED_CALL
    extern int vconf_get_weather(const char* key);
    return vconf_get_weather(key);
#endif
    return 1;
}
