/*
 * A provider that answers for the page from constants, and the same with one fault each: FAULT_...
 * But for some of the faults it asks no platform, so that the host can be tested without a TV.
 */
#include "abi/si_provider.h"

#include <ctype.h>
#include <fcntl.h>
#include <locale.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/applications.h"
#include "platform/features.h"
#include "platform/settings_store.h"

#define EXPORT __attribute__((visibility("default")))
#define VOICE "menu/system/general-voice"
#define ASSISTANT VOICE "-voice-assistant"
#define WAKE_UP VOICE "-voice-wake-up"
#define ORVIK VOICE "-voice-settings-orvik"
#define POLICY "db/menu/voice/mva_list"

#include "misconduct.h"

static int assistant = 1;
static int wake_up = 0;

static bool same(const char* key, const char* other) {
#ifdef FAULT_KNOWN_BY_ADDRESS
    static const char* last_key;
    static const char* last_other;
    if (key != NULL && key == last_key && other == last_other) {
        return true;
    }
    if (key != NULL && strcmp(key, other) == 0) {
        last_key = key;
        last_other = other;
    }
#endif
#ifdef FAULT_MATCHES_BEGINNINGS
    return key != NULL && strncmp(key, other, strlen(other)) == 0;
#endif
#ifdef FAULT_IGNORES_CASE
    return key != NULL && strcasecmp(key, other) == 0;
#endif
    return key != NULL && strcmp(key, other) == 0;
}

static void copy(char* buffer, const char* text) {
    if (buffer != NULL) {
        strcpy(buffer, text);
    }
}

static void lose_memory(void) {
    strcpy(malloc(20), "lost");
}

static int set_int(const char* key, int value) {
#ifdef FAULT_SETS_UNKNOWN
    vconf_set_int("db/fake/value", value);
#endif
#ifdef FAULT_STORES_ACTION
    if (value == SI_ACTION_VALUE && same(key, ASSISTANT)) {
        assistant = value;
    }
#endif
    if (value == SI_ACTION_VALUE) {
#ifdef FAULT_LEAKS_BUNDLE
        bundle_create();
#endif
#ifdef FAULT_THROWS
        extern void _ZSt17__throw_bad_allocv(void);
        _ZSt17__throw_bad_allocv();
#endif
#ifdef FAULT_VALUES_RETURN_1
        return 1;
#endif
        return 0;
    }
    if (same(key, ASSISTANT)) {
#ifdef FAULT_INDEXES_BY_VALUE
        static char names[3];
        names[value] = 1;
#endif
#ifdef FAULT_TAKES_WRONG_CHOICE
        assistant = 3 - value;
#elif defined(FAULT_TAKES_ANY_CHOICE)
        assistant = value;
#else
        assistant = value == 1 || value == 2 ? value : assistant;
#endif
    } else if (same(key, WAKE_UP)) {
#ifdef FAULT_STORES_ANY_VALUE
        wake_up = value;
#elif !defined(FAULT_FORGETS_VALUE)
        wake_up = value == 1;
#endif
#ifdef FAULT_LEAKS_VALUE
        lose_memory();
#endif
    }
    return 0;
}

static int get_int(const char* key, int* value) {
#ifdef FAULT_WRITES_UNKNOWN_VALUE
    *value = 0;
#endif
#ifdef FAULT_TRUSTS_THE_PLATFORM
    char* text = vconf_get_str("db/multi-assistant/default_assistant_appid");
    const size_t length = strlen(text);
    (void)length;
    free(text);
#endif
#ifdef FAULT_TRUSTS_SETTINGS
    char room[200];
    char* appId = vconf_get_str("db/multi-assistant/default_assistant_appid");
    strcpy(room, appId != NULL ? appId : "");
    free(appId);
#endif
    if (value == NULL) {
        return 0;
    }
    if (same(key, ASSISTANT)) {
#ifdef FAULT_ADDS_TO_VALUE
        *value += 1;
        return 0;
#endif
        *value = assistant;
    } else if (same(key, WAKE_UP)) {
#ifdef FAULT_WIDE_VALUE
        *(long*)value = wake_up;
#endif
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
#ifndef FAULT_LEAVES_TITLE
    *text = NULL;
#endif
#ifdef FAULT_STATIC_TEXT
    static char title[] = "A text that is not the host's to free, long enough to be one";
    if (same(key, VOICE)) {
        *text = title;
    }
    return 0;
#endif
#ifdef FAULT_CHANGING_TITLE
    static char title[] = "Voice A";
    title[6] = (char)('A' + (title[6] - 'A' + 1) % 26);
    *text = same(key, VOICE) ? strdup(title) : NULL;
    return 0;
#endif
#ifdef FAULT_EMPTY_TITLE
    *text = same(key, VOICE) ? strdup("") : NULL;
    return 0;
#endif
#ifdef FAULT_LATIN1_TITLE
    *text = same(key, VOICE) ? strdup("Vo\xeex") : NULL;
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
    lose_memory();
#endif
#ifdef FAULT_TEXTS_RETURN_1
    return 1;
#endif
    return 0;
}

static int get_help_text(const char* key, char** text) {
    if (text != NULL) {
        *text = same(key, VOICE) ? strdup("Help") : NULL;
    }
    return 0;
}

static char borrowed[] = "Two";

static ListItem* item(int value, const char* text) {
    ListItem* one = calloc(1, sizeof(ListItem));
    one->value = value;
    one->text = strdup(text);
#ifdef FAULT_BORROWED_TEXTS
    one->text = borrowed;
#endif
    return one;
}

static ListItem** get_list_items(const char* key, int* count) {
    if (!same(key, ASSISTANT)) {
        return NULL;
    }
#ifdef FAULT_HANGS
    sleep(1000);
#endif
#ifdef FAULT_ONE_LIST
    static ListItem** items;
    if (items != NULL) {
        *count = 2;
        return items;
    }
    items = calloc(2, sizeof(ListItem*));
#else
    ListItem** items = calloc(2, sizeof(ListItem*));
#endif
    items[0] = item(1, "One");
#ifdef FAULT_SAME_VALUES
    items[1] = item(1, "Two");
#elif !defined(FAULT_HOLE_IN_LIST)
    items[1] = item(2, "Two");
#endif
    if (count != NULL) {
#ifdef FAULT_COUNTS_TOO_MANY
        *count = 200;
#else
        *count = 2;
#endif
    }
    return items;
}

static int list_item_text(const ListItem* one, char** text) {
#ifdef FAULT_READS_INTO_NULL
    *text = one->text;
#endif
    if (text != NULL) {
        *text = one->text;
    }
#ifdef FAULT_LISTS_RETURN_1
    return 1;
#endif
    return 0;
}

static int list_item_value(const ListItem* one, int* value) {
    if (value != NULL) {
        *value = one->value;
    }
    return 0;
}

static int list_item_kind(const ListItem* one, int* kind) {
#ifdef FAULT_KIND_OF_ITEM
    *kind = one->text != NULL ? SI_LIST_ITEM_INTEGER : 0;
    return 0;
#endif
    (void)one;
    if (kind == NULL) {
        return 0;
    }
#ifdef FAULT_WRONG_KIND
    *kind = 3;
#else
    *kind = SI_LIST_ITEM_INTEGER;
#endif
    return 0;
}

static int free_list_items(ListItem** items, int count) {
#ifdef FAULT_ONE_LIST
    return 0;
#endif
    for (int i = 0; i < count; ++i) {
#ifndef FAULT_NEEDS_ENTRIES
        if (items[i] == NULL) {
            continue;
        }
#endif
#if !defined(FAULT_LEAKS_LIST_TEXT) && !defined(FAULT_BORROWED_TEXTS)
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
#ifdef FAULT_LEAKS_BOX
    lose_memory();
#endif
    if (same(key, ASSISTANT)) {
#ifdef FAULT_APPENDS_TO_BOX
        if (text != NULL) {
            strcat(text, "Change it?");
        }
#elif defined(FAULT_UNENDING_BOX)
        if (text != NULL) {
            memcpy(text, "Change it?", 10);
        }
#elif defined(FAULT_PADS_BOX)
        if (text != NULL) {
            strncpy(text, "Change it?", 256);
        }
#else
        copy(text, "Change it?");
#endif
        copy(first, "Yes");
        copy(second, "No");
        if (count != NULL) {
#ifdef FAULT_THREE_BUTTONS
            *count = 3;
#else
            *count = 2;
#endif
        }
    }
#ifdef FAULT_BOXES_RETURN_1
    return 1;
#endif
    return 0;
}

static int get_messagebox_title(const char* key, char* title) {
#ifdef FAULT_TITLE_WITHOUT_BOX
    if (same(key, VOICE)) {
        copy(title, "Voice");
    }
#endif
    if (same(key, ASSISTANT)) {
        copy(title, "Change");
    }
    return 0;
}

static int get_disable_text(const char* key, char** text, bool* flag) {
#ifdef FAULT_CLEARS_DISABLE_TEXT
    if (text != NULL) {
        *text = NULL;
    }
#endif
#ifdef FAULT_CLEARS_DISABLE_FLAG
    if (flag != NULL) {
        *flag = false;
    }
#endif
    if (same(key, WAKE_UP) && text != NULL && flag != NULL) {
#ifdef FAULT_STATIC_DISABLE_TEXT
        static char reason[] = "A reason that is not the host's to free, long enough to be one";
        *text = reason;
#else
        *text = strdup("Not now.");
#endif
#ifdef FAULT_WIDE_FLAG
        *(int*)flag = true;
#endif
        *flag = true;
#ifdef FAULT_LEAKS_DISABLE_TEXT
        lose_memory();
#endif
    }
    return 0;
}

static int provider_property(const char* key, char** text) {
    const bool known = same(key, "provider/owner") || same(key, "provider/main-component") ||
                       same(key, "provider/sub-component");
#ifdef FAULT_CLEARS_PROPERTY
    if (text != NULL) {
        *text = NULL;
    }
#endif
    if (known && text != NULL) {
#ifdef FAULT_SHORT_PROPERTY
        *text = strdup("fake");
        return 0;
#endif
#ifdef FAULT_STATIC_PROPERTY
        static char name[SI_PROPERTY_SIZE] = "fake";
        *text = name;
        return 0;
#endif
        *text = calloc(SI_PROPERTY_SIZE, 1);
        strcpy(*text, "fake");
#ifdef FAULT_LEAKS_PROPERTY
        lose_memory();
#endif
    }
    return 0;
}

static int get_disablepopup_info(const char* key, char* message, char* title, char* first,
                                 char* second, int* count, char* action) {
    (void)second;
    if (same(key, ORVIK)) {
#ifdef FAULT_APPENDS_TO_POPUP
        if (message != NULL) {
            strcat(message, "Set it up?");
        }
#elif defined(FAULT_PADS_POPUP)
        if (message != NULL) {
            strncpy(message, "Set it up?", 256);
        }
#else
        copy(message, "Set it up?");
#endif
        copy(title, "Set up");
#ifndef FAULT_POPUP_WITHOUT_BUTTON
        copy(first, "Start");
#endif
        if (count != NULL) {
            *count = 1;
        }
#ifdef FAULT_WRONG_ACTION
        copy(action, "999");
#else
        copy(action, SI_ACTION_TEXT);
#endif
#ifdef FAULT_LONG_ACTION
        if (action != NULL) {
            memset(action + 4, 0, 8);
        }
#endif
    }
    return 0;
}

static void on_policy(struct keynode* node, void* userData) {
    (void)node;
    (void)userData;
    borrowed[0] = 'X';
#ifdef FAULT_TRUSTS_THE_POLICY
    char* policy = vconf_get_str(POLICY);
    const char first = strchr(policy, '[')[0];
    (void)first;
    free(policy);
#endif
}

#ifdef FAULT_NEEDS_ITS_TABLE
static void** its_table;
#endif

EXPORT int create_provider(void*** table) {
    misbehave();
#ifdef FAULT_NO_TABLE
    *table = NULL;
    return 0;
#endif
#ifdef FAULT_CREATE_FAILS
    *table = NULL;
    return -1;
#endif
#ifdef FAULT_CREATES_ONCE
    static bool created = false;
    if (created) {
        return -1;
    }
    created = true;
#endif
#ifdef FAULT_LIVES_ONCE
    if (getenv("FAKE_HAS_LIVED") != NULL) {
        return -1;
    }
    setenv("FAKE_HAS_LIVED", "yes", 1);
#endif
#ifdef FAULT_NEEDS_A_FEATURE
    int feature = 0;
    if (system_info_get_custom_int("com.vantelo/featureconf/recorder.microphone_type", &feature) !=
            0 ||
        feature == 0) {
        abort();
    }
#endif
#ifdef FAULT_ONE_TABLE
    static SIProviderTable only;
    SIProviderTable* slots = &only;
#else
    SIProviderTable* slots = calloc(1, sizeof(SIProviderTable));
#endif
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
#ifdef FAULT_SHORT_TABLE
    slots = realloc(slots, 20 * sizeof(void*));
#endif
#ifdef FAULT_NEEDS_ITS_TABLE
    its_table = (void**)slots;
#endif
#ifdef FAULT_LEAKS_LIFE
    lose_memory();
#endif
#if defined(FAULT_BORROWED_TEXTS) || defined(FAULT_TRUSTS_THE_POLICY) || defined(FAULT_KEEPS_WATCH)
    vconf_notify_key_changed(POLICY, on_policy, NULL);
#endif
    *table = (void**)slots;
    return 0;
}

EXPORT int delete_provider(void*** table) {
#if defined(FAULT_BORROWED_TEXTS) || defined(FAULT_TRUSTS_THE_POLICY)
    vconf_ignore_key_changed(POLICY, on_policy);
#else
    (void)on_policy;
#endif
    if (table == NULL) {
#ifdef FAULT_DELETES_NULL
        return 0;
#endif
        return 1;
    }
#ifdef FAULT_ONE_TABLE
    return 0;
#endif
    free(*table);
#ifdef FAULT_CLEARS_POINTER
    *table = NULL;
#endif
#ifdef FAULT_NEEDS_ITS_TABLE
    its_table = NULL;
#endif
#ifdef FAULT_DELETE_FAILS
    return 1;
#endif
    return 0;
}

EXPORT int check_visibility_int(const char* key, int value) {
#ifdef FAULT_SHOWS_UNKNOWN
    return key != NULL;
#endif
#ifdef FAULT_NEEDS_ITS_TABLE
    const void* first = its_table[0];
    (void)first;
#endif
#ifdef FAULT_SWAYED_BY_VALUE
    return same(key, VOICE) && value == 0;
#endif
#ifdef FAULT_WRITES_WHEN_ASKED
    vconf_set_int("db/fake/asked", 1);
#endif
#ifdef FAULT_FLICKERS
    static int asked = 0;
    return same(key, VOICE) && ++asked % 2 == 0;
#endif
#ifdef FAULT_REMEMBERS_FAILURE
    static bool failed = false;
    int on = 0;
    failed = failed || vconf_get_bool("db/menu/voice/is_k_voice", &on) != 0;
    return same(key, VOICE) && !failed;
#endif
#ifdef FAULT_LEAKS_RULE
    lose_memory();
#endif
    (void)value;
    const bool shown =
        same(key, VOICE) || same(key, ASSISTANT) || same(key, WAKE_UP) || same(key, ORVIK);
#ifdef FAULT_YES_IS_2
    return shown ? 2 : 0;
#endif
    return shown;
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
