/* A small host: prints the title of an item of a provider. */
#include <abi/si_provider.h>
#include <dlfcn.h>
#include <stdio.h>

int main(int count, char** words) {
    void* library = count == 3 ? dlopen(words[1], RTLD_NOW) : NULL;
    SIProviderTable* table = NULL;
    char* title = NULL;
    if (library == NULL) {
        fprintf(stderr, "%s\n", count == 3 ? dlerror() : "usage: host PROVIDER KEY");
        return 1;
    }
    ((int (*)(void***))dlsym(library, "create_provider"))((void***)&table);
    table->get_display_name(words[2], &title);
    return puts(title != NULL ? title : "no title") < 0;
}
