/*
 * The contract between a settings application (the host) and a settings-menu provider.
 *
 * The host loads the provider library with dlopen, finds the entry points below by name and calls
 * create_provider() once. From then until delete_provider() it may call the filled slots of the
 * table and the check functions. Everything is called on one thread, the host's; the provider has
 * no thread and no main loop of its own. It is a guest in the host's process: signals, timers,
 * working folder, environment, locale, descriptors and standard streams stay the host's.
 *
 * A slot that is NULL says that the provider does not answer that kind of request. Slots have fixed
 * indices for good; a host and a provider built years apart agree on them.
 *
 * A key is a menu key: a NUL-terminated string, compared whole and case-sensitively. NULL and
 * unknown keys are allowed everywhere and match nothing. An out-pointer that is NULL is not
 * written. Strings are UTF-8.
 *
 * Watches. The provider watches one settings key, that of the assistant policy. The settings store
 * may deliver any watch on the host's thread inside any platform call that the provider makes,
 * those for the log and the trace included. A watch of the host's may call every slot and check
 * function then, but neither create_provider() nor delete_provider(). A walk over the assistants
 * that the provider's watch interrupts goes on over the list that it began with, and the next walk
 * is over the new list, so one answer may come from both.
 *
 * Trace. The file, function and format that the trace storage is given with a call site
 * (SaveLocation) are constants of the provider library: a storage that keeps their addresses and
 * not the texts must not read them after the library is unloaded. All else that it is given lives
 * during the call only.
 *
 * Stack. A policy, or a setting that holds JSON, is read recursively up to 1000 levels deep; deeper
 * ones are refused. The deepest take 540 KiB of the calling thread's stack (measured on x86-64);
 * those of a TV, two levels deep, less than 8 KiB.
 */
#pragma once

#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

/* One choice of a list item. */
typedef struct ListItem {
    int value;  /* what the host passes back to set_int when the choice is taken */
    char* text; /* what the viewer reads; owned by the list */
} ListItem;

/* set_int() with this value reports that the viewer pressed the action button of a disable popup;
 * the provider then starts what the popup offered. */
#define SI_ACTION_VALUE 9999
#define SI_ACTION_TEXT "9999"

/* list_item_kind() stores this for every item. */
#define SI_LIST_ITEM_INTEGER 2

/* A text of provider_property() is a heap buffer of this many bytes. */
#define SI_PROPERTY_SIZE 255

/*
 * The provider table: 52 slots of one pointer each. Every callback returns 0 on every path, except
 * get_list_items. No exception leaves a slot, but that the text slots (13, 14, 39, 41, 50, 51) let
 * std::bad_alloc through when memory has run out.
 */
typedef struct SIProviderTable {
    /* 0: store a new integer value. The value SI_ACTION_VALUE is not a value, see above. */
    int (*set_int)(const char* key, int value);

    void* slot_1_to_7[7];

    /* 8: the current integer value. An item without a value leaves *value as it was. */
    int (*get_int)(const char* key, int* value);

    void* slot_9_to_12[4];

    /* 13, 14: the translated title and help text. *text receives a heap string that the host frees
     * with free(), or NULL when there is none. */
    int (*get_display_name)(const char* key, char** text);
    int (*get_help_text)(const char* key, char** text);

    void* slot_15;

    /* 16: the choices of a list item: a heap array of *count pointers, which the host gives back to
     * free_list_items(). NULL when the item offers no choice or memory has run out; *count may then
     * hold any number and is not to be used. */
    ListItem** (*get_list_items)(const char* key, int* count);

    /* 17: the text of one item of a list. *text belongs to the list and is not to be freed. */
    int (*list_item_text)(const ListItem* item, char** text);

    void* slot_18_to_19[2];

    /* 20: the value of one item of a list. */
    int (*list_item_value)(const ListItem* item, int* value);

    void* slot_21_to_22[2];

    /* 23: what kind of value the items of a list have; the item itself is not looked at. */
    int (*list_item_kind)(const ListItem* item, int* kind);

    /* 24: frees a list of get_list_items() with all its items. NULL entries are skipped; with a
     * count below 1 only the array itself is freed. */
    int (*free_list_items)(ListItem** items, int count);

    void* slot_25_to_38[14];

    /* 39: the confirmation box before a value change. The host's buffers must hold the longest
     * translation: the provider does not know their sizes. A key without a box writes nothing. The
     * buffers and the count are read for the log whatever the key: on entry each buffer holds a
     * NUL-terminated text. */
    int (*get_messagebox_info)(const char* key, char* pDisplayText, char* pFirstButtonText,
                               char* pSecondButtonText, int* nButtonCount);

    void* slot_40;

    /* 41: why an item is dimmed. *text receives a heap string that the host frees, or stays as it
     * was when there is no text; *flag is set to true when the provider has answered, and stays as
     * it was otherwise. It may become true without a text: set *text to NULL before the call. */
    int (*get_disable_text)(const char* key, char** text, bool* flag);

    void* slot_42_to_43[2];

    /* 44: describes the provider: "provider/owner", "provider/main-component",
     * "provider/sub-component". *text receives a heap buffer of SI_PROPERTY_SIZE bytes that the
     * host frees; another key leaves it as it was. */
    int (*provider_property)(const char* key, char** text);

    void* slot_45_to_49[5];

    /* 50: the title of the confirmation box of slot 39, into a buffer of the host's that holds a
     * NUL-terminated text on entry. */
    int (*get_messagebox_title)(const char* key, char* title);

    /* 51: the popup offered when a dimmed item is selected, into buffers of the host's. A buffer
     * that the popup does not need stays as it was. actionValue receives SI_ACTION_TEXT, for
     * set_int(); it needs five bytes. A key without a popup writes nothing. */
    int (*get_disablepopup_info)(const char* key, char* message, char* title, char* firstButton,
                                 char* secondButton, int* buttonCount, char* actionValue);
} SIProviderTable;

#define SI_SLOT_COUNT (sizeof(SIProviderTable) / sizeof(void*))

/*
 * Entry points. On the wire the table is an array of 52 pointers; it may be cast to
 * SIProviderTable*.
 */

/* *table receives the table, which the host owns until delete_provider(). Returns 0. A second call
 * hands out a second table. */
int create_provider(void*** table);

/* Stops the provider and frees *table; does not clear the host's pointer. Returns 1 when table is
 * NULL, else 0. */
int delete_provider(void*** table);

/* 1 when the item is to be shown, 0 when it is hidden; an unknown key is hidden. Only the integer
 * form consults a rule, the others answer 1. The value is not looked at. */
int check_visibility_int(const char* key, int value);
int check_visibility_bool(const char* key, bool value);
int check_visibility_double(const char* key, double value);
int check_visibility_string(const char* key, const char* value);

/* 1 when the item can be selected, 0 when it is dimmed; otherwise as the visibility checks. A
 * check that comes before create_provider() or after delete_provider() does no harm. */
int check_enable_int(const char* key, int value);
int check_enable_bool(const char* key, bool value);
int check_enable_double(const char* key, double value);
int check_enable_string(const char* key, const char* value);

#ifdef __cplusplus
}
#endif
