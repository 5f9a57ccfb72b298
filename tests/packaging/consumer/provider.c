/* A small provider: every item is shown, and has its key for a title. */
#include <abi/si_provider.h>
#include <stdlib.h>
#include <string.h>

static int get_display_name(const char* key, char** text) {
    *text = key != NULL ? strdup(key) : NULL;
    return 0;
}

int create_provider(void*** table) {
    SIProviderTable* mine = calloc(1, sizeof(SIProviderTable));
    mine->get_display_name = get_display_name;
    *table = (void**)mine;
    return 0;
}

int delete_provider(void*** table) {
    free(*table);
    return 0;
}

/* clang-format off */
#define YES(check, type) int check(const char* key, type value) { (void)value; return key != NULL; }
/* clang-format on */
YES(check_visibility_int, int)
YES(check_visibility_bool, bool)
YES(check_visibility_double, double)
YES(check_visibility_string, const char*)
YES(check_enable_int, int)
YES(check_enable_bool, bool)
YES(check_enable_double, double)
YES(check_enable_string, const char*)
