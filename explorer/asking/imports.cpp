#include "imports.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstdint>
#include <string_view>

namespace explorer {

namespace {

// Of the C library: what the result follows from is in the arguments, or is memory.
constexpr std::string_view PURE[] = {"__assert_fail",
                                     "__cxa_atexit",
                                     "__cxa_finalize",
                                     "__cxa_pure_virtual",
                                     "__errno_location",
                                     "__gmon_start__",
                                     "__gxx_personality_v0",
                                     "__isoc99_sscanf",
                                     "__stack_chk_fail",
                                     "__stack_chk_guard",
                                     "abort",
                                     "abs",
                                     "aligned_alloc",
                                     "atof",
                                     "atoi",
                                     "atol",
                                     "atoll",
                                     "bcmp",
                                     "bsearch",
                                     "calloc",
                                     "div",
                                     "ffs",
                                     "free",
                                     "isalnum",
                                     "isalpha",
                                     "isdigit",
                                     "isspace",
                                     "isupper",
                                     "islower",
                                     "labs",
                                     "lldiv",
                                     "malloc",
                                     "posix_memalign",
                                     "qsort",
                                     "rawmemchr",
                                     "realloc",
                                     "reallocarray",
                                     "snprintf",
                                     "sprintf",
                                     "sscanf",
                                     "stpcpy",
                                     "stpncpy",
                                     "strcasecmp",
                                     "strcasestr",
                                     "strcat",
                                     "strchr",
                                     "strchrnul",
                                     "strcmp",
                                     "strcpy",
                                     "strcspn",
                                     "strdup",
                                     "strlen",
                                     "strncasecmp",
                                     "strncat",
                                     "strncmp",
                                     "strncpy",
                                     "strndup",
                                     "strnlen",
                                     "strpbrk",
                                     "strrchr",
                                     "strsep",
                                     "strspn",
                                     "strstr",
                                     "strtod",
                                     "strtof",
                                     "strtok_r",
                                     "strtol",
                                     "strtoll",
                                     "strtoul",
                                     "strtoull",
                                     "tolower",
                                     "toupper",
                                     "vsnprintf",
                                     "vsprintf",
                                     "vsscanf",
                                     "_Exit"};

// Runtimes of compilers and sanitizers, C++'s containers and texts, and the reader of JSON.
constexpr std::string_view PURE_PREFIXES[] = {"_ITM_",
                                              "_Unwind_",
                                              "__aeabi_",
                                              "__asan_",
                                              "__cxa_",
                                              "__gcov_",
                                              "__gnu_",
                                              "__lsan_",
                                              "__llvm_",
                                              "__ubsan_",
                                              "__sanitizer_",
                                              "__sanitize",
                                              "mem",
                                              "__mem",
                                              "_ZN4Json",
                                              "_ZNK4Json",
                                              "_ZTIN4Json",
                                              "_ZTVN4Json",
                                              "_ZTSN4Json",
                                              "_ZN9__gnu_cxx",
                                              "_ZNK9__gnu_cxx",
                                              "_ZNS",
                                              "_ZNKS",
                                              "_ZS",
                                              "_ZTI",
                                              "_ZTVS",
                                              "_ZTSS",
                                              "_ZTVN10__cxxabi",
                                              "_Zda",
                                              "_Zdl",
                                              "_Zna",
                                              "_Znw"};

// Among those: clocks, chance, files, threads, the locale, and storage of a thread's own.
constexpr std::string_view IMPURE_PREFIXES[] = {"__cxa_thread_atexit",
                                                "__cxa_get_globals",
                                                "_ZNSt10filesystem",
                                                "_ZNKSt10filesystem",
                                                "_ZNSt13basic_filebuf",
                                                "_ZNSt13basic_fstream",
                                                "_ZNSt13random_device",
                                                "_ZNSt14basic_ifstream",
                                                "_ZNSt14basic_ofstream",
                                                "_ZNSt18condition_variable",
                                                "_ZNSt3pmr",
                                                "_ZNSt6chrono",
                                                "_ZNSt6locale",
                                                "_ZNSt6thread",
                                                "_ZSt14set_unexpected",
                                                "_ZSt13set_terminate",
                                                "_ZSt15set_new_handler",
                                                "_ZSt3cin",
                                                "mem_",
                                                "memfd_"};

bool HasPrefix(std::string_view name, const std::string_view* begin, const std::string_view* end) {
    return std::any_of(begin, end,
                       [name](std::string_view prefix) { return name.rfind(prefix, 0) == 0; });
}

// "__memcpy_chk" is memcpy() with a check.
std::string_view WithoutCheck(std::string_view name) {
    constexpr std::string_view END = "_chk";
    const bool isChecked = name.rfind("__", 0) == 0 && name.size() > END.size() + 2 &&
                           name.substr(name.size() - END.size()) == END;
    return isChecked ? name.substr(2, name.size() - END.size() - 2) : name;
}

bool IsPure(std::string_view import) {
    const std::string_view name = WithoutCheck(import);
    if (HasPrefix(name, std::begin(IMPURE_PREFIXES), std::end(IMPURE_PREFIXES))) {
        return false;
    }
    return std::find(std::begin(PURE), std::end(PURE), name) != std::end(PURE) ||
           HasPrefix(name, std::begin(PURE_PREFIXES), std::end(PURE_PREFIXES));
}

// Whether this program serves it.
bool IsServed(const char* name) {
    void* const program = dlopen(nullptr, RTLD_LAZY | RTLD_NOLOAD);
    void* const place = program != nullptr ? dlsym(program, name) : nullptr;
    Dl_info where{};
    Dl_info here{};
    const bool isOurs = place != nullptr && dladdr(place, &where) != 0 &&
                        dladdr(reinterpret_cast<void*>(&IsPure), &here) != 0 &&
                        where.dli_fbase == here.dli_fbase;
    if (program != nullptr) {
        dlclose(program);
    }
    return isOurs;
}

// Where the loader has the parts of a library that its dynamic section names.
struct DynamicParts {
    const ElfW(Sym) * symbols = nullptr;
    const char* names = nullptr;
    const std::uint32_t* hash = nullptr;
    const std::uint32_t* gnuHash = nullptr;

    // Those that a library takes from others come first, before the first that others can find.
    std::size_t Count() const {
        if (symbols == nullptr || names == nullptr) {
            return 0;
        }
        return gnuHash != nullptr ? gnuHash[1] : hash != nullptr ? hash[1] : 0;
    }
};

DynamicParts PartsOf(const link_map& map) {
    DynamicParts parts;
    for (const ElfW(Dyn)* entry = map.l_ld; entry->d_tag != DT_NULL; ++entry) {
        // The loader tells places as numbers. NOLINTNEXTLINE(performance-no-int-to-ptr)
        const auto* place = reinterpret_cast<const void*>(entry->d_un.d_ptr);
        switch (entry->d_tag) {
            case DT_SYMTAB:
                parts.symbols = static_cast<const ElfW(Sym)*>(place);
                break;
            case DT_STRTAB:
                parts.names = static_cast<const char*>(place);
                break;
            case DT_HASH:
                parts.hash = static_cast<const std::uint32_t*>(place);
                break;
            case DT_GNU_HASH:
                parts.gnuHash = static_cast<const std::uint32_t*>(place);
                break;
            default:
                break;
        }
    }
    return parts;
}

const link_map* MapAround(const void* inside) {
    Dl_info info{};
    link_map* map = nullptr;
    return dladdr1(inside, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) != 0 ? map
                                                                                        : nullptr;
}

// Behind those that the library takes from others: the hash table's last chain ends with them.
std::size_t CountWithOwn(const DynamicParts& parts) {
    if (parts.gnuHash == nullptr) {
        return parts.Count();
    }
    const std::uint32_t buckets = parts.gnuHash[0];
    const std::uint32_t first = parts.gnuHash[1];
    const auto* bloom = reinterpret_cast<const ElfW(Addr)*>(parts.gnuHash + 4);
    const auto* bucket = reinterpret_cast<const std::uint32_t*>(bloom + parts.gnuHash[2]);
    const std::uint32_t* chain = bucket + buckets;
    std::uint32_t last = *std::max_element(bucket, bucket + buckets);
    if (last < first) {
        return first;
    }
    while ((chain[last - first] & 1U) == 0) {
        ++last;
    }
    return last + 1U;
}

struct ThreadStorage {
    ElfW(Addr) library;
    bool isThere;
};

int VisitForThreads(dl_phdr_info* info, std::size_t, void* data) {
    auto* search = static_cast<ThreadStorage*>(data);
    if (info->dlpi_addr != search->library) {
        return 0;
    }
    search->isThere = std::any_of(
        info->dlpi_phdr, info->dlpi_phdr + info->dlpi_phnum,
        [](const ElfW(Phdr) & segment) { return segment.p_type == PT_TLS && segment.p_memsz > 0; });
    return 1;
}

}  // namespace

std::vector<std::string> UnseenImports(const void* inside) {
    const link_map* map = MapAround(inside);
    if (map == nullptr) {
        return {};
    }
    const DynamicParts parts = PartsOf(*map);
    std::vector<std::string> unseen;
    const std::size_t count = parts.Count();
    for (std::size_t i = 1; i < count; ++i) {
        const ElfW(Sym)& symbol = parts.symbols[i];
        const char* name = parts.names + symbol.st_name;
        if (symbol.st_shndx == SHN_UNDEF && *name != '\0' && !IsPure(name) && !IsServed(name)) {
            unseen.emplace_back(name);
        }
    }
    std::sort(unseen.begin(), unseen.end());
    return unseen;
}

std::string UnstorableParts(const void* inside) {
    const link_map* map = MapAround(inside);
    if (map == nullptr) {
        return "";
    }
    ThreadStorage storage = {map->l_addr, false};
    dl_iterate_phdr(VisitForThreads, &storage);
    if (storage.isThere) {
        return "storage of each thread's own (PT_TLS)";
    }
    const DynamicParts parts = PartsOf(*map);
    const std::size_t count = CountWithOwn(parts);
    for (std::size_t i = 1; i < count; ++i) {
        const ElfW(Sym)& symbol = parts.symbols[i];
        if (symbol.st_info >> 4 == STB_GNU_UNIQUE && symbol.st_shndx != SHN_UNDEF) {
            return std::string("a variable that is one in a process (STB_GNU_UNIQUE): ") +
                   (parts.names + symbol.st_name);
        }
    }
    return "";
}

}  // namespace explorer
