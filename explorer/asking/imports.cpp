#include "imports.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <string_view>

namespace explorer {

namespace {

// Of the C library: what the result follows from is in the arguments, or is memory. Whether there
// are threads decides only how shared pointers count.
constexpr std::string_view PURE[] = {"_Exit",
                                     "_Unwind_DeleteException",
                                     "_Unwind_RaiseException",
                                     "_Unwind_Resume",
                                     "_Unwind_Resume_or_Rethrow",
                                     "__assert_fail",
                                     "__cxa_allocate_exception",
                                     "__cxa_atexit",
                                     "__cxa_bad_cast",
                                     "__cxa_bad_typeid",
                                     "__cxa_begin_catch",
                                     "__cxa_begin_cleanup",
                                     "__cxa_call_terminate",
                                     "__cxa_call_unexpected",
                                     "__cxa_deleted_virtual",
                                     "__cxa_end_catch",
                                     "__cxa_end_cleanup",
                                     "__cxa_finalize",
                                     "__cxa_free_exception",
                                     "__cxa_get_exception_ptr",
                                     "__cxa_guard_abort",
                                     "__cxa_guard_acquire",
                                     "__cxa_guard_release",
                                     "__cxa_init_primary_exception",
                                     "__cxa_pure_virtual",
                                     "__cxa_rethrow",
                                     "__cxa_throw",
                                     "__cxa_throw_bad_array_new_length",
                                     "__cxa_type_match",
                                     "__dynamic_cast",
                                     "__errno_location",
                                     "__gmon_start__",
                                     "__gxx_personality_v0",
                                     "__isoc23_sscanf",
                                     "__isoc23_strtol",
                                     "__isoc23_strtoll",
                                     "__isoc23_strtoul",
                                     "__isoc23_strtoull",
                                     "__isoc99_sscanf",
                                     "__libc_single_threaded",
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
                                     "islower",
                                     "isspace",
                                     "isupper",
                                     "labs",
                                     "lldiv",
                                     "malloc",
                                     "memccpy",
                                     "memchr",
                                     "memcmp",
                                     "memcpy",
                                     "memmem",
                                     "memmove",
                                     "mempcpy",
                                     "memrchr",
                                     "memset",
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
                                     "vsscanf"};

// Of C++: what throws, allocates, and keeps trees and hashed containers in order. A mangled name
// has the length of its parts in it, so none of the "_ZSt" begins another one.
constexpr std::string_view PURE_BEGINNINGS[] = {
    "_Znw", "_Zna", "_Zdl", "_Zda", "_ZSt7nothrow", "_ZSt9terminatev", "_ZSt11_Hash_bytes",
    "_ZSt16__throw_bad_cast", "_ZSt17__throw_bad_alloc", "_ZSt19__throw_logic_error",
    "_ZSt19__throw_range_error", "_ZSt20__throw_domain_error", "_ZSt20__throw_length_error",
    "_ZSt20__throw_out_of_range", "_ZSt21__glibcxx_assert_fail", "_ZSt21__throw_runtime_error",
    "_ZSt24__throw_invalid_argument", "_ZSt24__throw_out_of_range_fmt",
    "_ZSt25__throw_bad_function_call", "_ZSt28__throw_bad_array_new_length",
    "_ZSt18_Rb_tree_decrement", "_ZSt18_Rb_tree_increment", "_ZSt28_Rb_tree_rebalance_for_erase",
    "_ZSt29_Rb_tree_insert_and_rebalance", "_ZTI", "_ZTS", "_ZTVN10__cxxabiv1",
    // Runtimes of compilers and sanitizers.
    "_ITM_", "__aeabi_", "__asan_", "__gcov_", "__llvm_", "__lsan_", "__sanitizer_", "__ubsan_"};

// Whose members do nothing but with themselves and their arguments.
constexpr std::string_view PURE_CLASSES[] = {"4Json",
                                             "SaIc",
                                             "9__gnu_cxx13new_allocatorIc",
                                             "St15__new_allocatorIc",
                                             "St7__cxx1112basic_stringIc",
                                             "St8__detail15_List_node_base",
                                             "St8__detail20_Prime_rehash_policy",
                                             "St19_Sp_make_shared_tag",
                                             "St9exception",
                                             "St9bad_alloc",
                                             "St9type_info",
                                             "St8bad_cast",
                                             "St10bad_typeid",
                                             "St11logic_error",
                                             "St11range_error",
                                             "St12domain_error",
                                             "St12length_error",
                                             "St12out_of_range",
                                             "St13bad_exception",
                                             "St13runtime_error",
                                             "St14overflow_error",
                                             "St15underflow_error",
                                             "St16invalid_argument",
                                             "St17bad_function_call",
                                             "St18bad_variant_access",
                                             "St19bad_optional_access",
                                             "St20bad_array_new_length"};

template <std::size_t N>
bool HasPrefix(std::string_view name, const std::string_view (&prefixes)[N]) {
    return std::any_of(std::begin(prefixes), std::end(prefixes),
                       [name](std::string_view prefix) { return name.rfind(prefix, 0) == 0; });
}

// "__memcpy_chk" is memcpy() with a check.
std::string_view WithoutCheck(std::string_view name) {
    constexpr std::string_view END = "_chk";
    const bool isChecked = name.rfind("__", 0) == 0 && name.size() > END.size() + 2 &&
                           name.substr(name.size() - END.size()) == END;
    return isChecked ? name.substr(2, name.size() - END.size() - 2) : name;
}

// A member, a constant member, or the table of the virtual ones.
bool IsOfPureClass(std::string_view name) {
    for (const std::string_view head : {"_ZNK", "_ZN", "_ZTVN", "_ZTV"}) {
        if (name.rfind(head, 0) == 0 && HasPrefix(name.substr(head.size()), PURE_CLASSES)) {
            return true;
        }
    }
    return false;
}

bool IsPure(std::string_view import) {
    const std::string_view name = WithoutCheck(import);
    return std::find(std::begin(PURE), std::end(PURE), name) != std::end(PURE) ||
           HasPrefix(name, PURE_BEGINNINGS) || IsOfPureClass(name);
}

bool IsVariable(const ElfW(Sym) * symbol) {
    return symbol != nullptr && (symbol->st_info & 0xFU) == STT_OBJECT;
}

// Whether this program serves it.
bool IsServed(const char* name) {
    void* const program = dlopen(nullptr, RTLD_LAZY | RTLD_NOLOAD);
    void* const place = program != nullptr ? dlsym(program, name) : nullptr;
    Dl_info where{};
    Dl_info here{};
    // A variable of another library lies here as well, when this program uses it: "stderr".
    void* entry = nullptr;
    const bool isOurs =
        place != nullptr && dladdr1(place, &where, &entry, RTLD_DL_SYMENT) != 0 &&
        (!IsVariable(static_cast<const ElfW(Sym)*>(entry)) || dlsym(RTLD_NEXT, name) == nullptr) &&
        dladdr(reinterpret_cast<void*>(&IsPure), &here) != 0 && where.dli_fbase == here.dli_fbase;
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

    bool AreThere() const { return symbols != nullptr && names != nullptr; }
    // Those that a library takes from others come first, before the first that others can find.
    std::size_t Count() const {
        return gnuHash != nullptr ? gnuHash[1] : hash != nullptr ? hash[1] : 0;
    }
};

DynamicParts PartsOf(const link_map& map) {
    DynamicParts parts;
    for (const ElfW(Dyn)* entry = map.l_ld; entry->d_tag != DT_NULL; ++entry) {
        const auto* place = std::bit_cast<const void*>(entry->d_un.d_ptr);
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
    if (!parts.AreThere()) {
        return {};
    }
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
    if (!parts.AreThere()) {
        return "";
    }
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
