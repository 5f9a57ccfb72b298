// The library as a file: what it exports and imports, and that loading it does nothing.
#include <cxxabi.h>
#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <set>

#include "fresh_provider.h"
#include "platform_functions.h"

using namespace recording;

namespace {

using Names = std::set<std::string>;

struct DynamicSymbols {
    Names exported;
    Names imported;
};

// The library's dynamic symbol table, without versions.
DynamicSymbols Symbols() {
    std::ifstream file(FreshProvider::Path(), std::ios::binary);
    const std::string image((std::istreambuf_iterator<char>(file)),
                            std::istreambuf_iterator<char>());
    const auto at = [&](auto* record, std::size_t offset) {
        if (offset + sizeof(*record) > image.size()) {
            ADD_FAILURE() << "not an ELF file: " << FreshProvider::Path();
            std::abort();
        }
        std::memcpy(record, image.data() + offset, sizeof(*record));
    };
    ElfW(Ehdr) header;
    at(&header, 0);
    DynamicSymbols symbols;
    for (unsigned i = 0; i < header.e_shnum; ++i) {
        ElfW(Shdr) section;
        at(&section, header.e_shoff + std::size_t{i} * header.e_shentsize);
        if (section.sh_type != SHT_DYNSYM) {
            continue;
        }
        ElfW(Shdr) names;
        at(&names, header.e_shoff + std::size_t{section.sh_link} * header.e_shentsize);
        for (std::size_t offset = section.sh_entsize; offset < section.sh_size;
             offset += section.sh_entsize) {
            ElfW(Sym) symbol;
            at(&symbol, section.sh_offset + offset);
            const std::string name = image.c_str() + names.sh_offset + symbol.st_name;
            if (symbol.st_shndx == SHN_UNDEF) {
                symbols.imported.insert(name);
            } else if (symbol.st_info >> 4 != STB_LOCAL) {
                symbols.exported.insert(name);
            }
        }
    }
    return symbols;
}

void ReplaceAll(std::string& text, const std::string& what, const std::string& by) {
    for (std::size_t i = text.find(what); i != std::string::npos; i = text.find(what)) {
        text.replace(i, what.size(), by);
    }
}

// A mangled name as one would declare it.
std::string Declared(const std::string& symbol) {
    int status = 0;
    char* demangled = abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status);
    std::string name = demangled != nullptr ? demangled : symbol;
    std::free(demangled);
    ReplaceAll(name, "[abi:cxx11]", "");
    ReplaceAll(name,
               "std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >",
               "std::string");
    ReplaceAll(name, "char const*", "const char*");
    return name;
}

Names Declared(const Names& symbols) {
    Names names;
    for (const std::string& symbol : symbols) {
        names.insert(Declared(symbol));
    }
    return names;
}

Names Without(const Names& names, const Names& others) {
    Names rest;
    std::set_difference(names.begin(), names.end(), others.begin(), others.end(),
                        std::inserter(rest, rest.end()));
    return rest;
}

const Names ENTRY_POINTS = {"create_provider",         "delete_provider",
                            "check_visibility_int",    "check_visibility_bool",
                            "check_visibility_double", "check_visibility_string",
                            "check_enable_int",        "check_enable_bool",
                            "check_enable_double",     "check_enable_string"};

const Names CPP_EXPORTS = {
    "MVAList::MVA_LIST_VCONF",
    "MVAList::ID_ORVIK",
    "MVAList::Initialize()",
    "MVAList::Finalize()",
    "MVAList::GetVAList()",
    "MVAList::GetVAListSize()",
    "MVAList::GetVATypeByAppID(std::string)",
    "MVAList::GetVANameByType(ASSISTANT_TYPE)",
    "MVAList::GetCurrentVAType()",
    "MVAList::IsCurrentVAOrvik()",
    "MVAList::IsCurrentVASupportFF()",
    "MVAList::IsCurrentVASetupComplete()",
    "MVAList::IsVoiceDisabledByVAPolicy()",
    "CSIMenuUtil::VconfGetInt(const char*)",
    "CSIMenuUtil::VconfGetBool(const char*)",
    "CSIMenuUtil::VconfGetStr(const char*)",
    "CSIMenuUtil::GetVconfStirng(const char*)",
    "CSIMenuUtil::SetBool(const char*, bool)",
    "CSIMenuUtil::SetString(const char*, const char*)",
    "CSIMenuUtil::GetCurrentVAAppID()",
    "CSIMenuUtil::GetCountryCode()",
    "CSIMenuUtil::GetOsdLanguage()",
    "CSIMenuUtil::GetFMSString(const char*)",
    "CSIMenuUtil::GetFMSInt(const char*)",
    "CSIMenuUtil::GetFMSBool(const char*)",
    "CSIMenuUtil::isBuiltInMicSupported()",
    "CSIMenuUtil::IsFarFieldFMSSupported()",
    "CSIMenuUtil::FlagLFDProductModel()",
    "CSIMenuUtil::IsPassthruSupportModel()",
    "CSIMenuUtil::isChina()",
    "CSIMenuUtil::getValueOfJsonVconf(std::string, std::string)",
    "CSIMenuUtil::setVAsValueOfJsonVconf(std::string, std::string, std::string)",
    "CSIMenuUtil::Replace(std::string, std::string const&)",
    "CSIMenuUtil::Replace(std::string, std::string const&, std::string const&)",
    "CSIMenuUtil::GetDeviceSID()",
    "CSIMenuUtil::GetTextTVScreenOrPJT(const char*, const char*, const char*)",
    "CSIMenuUtil::isBuiltInMicActivated()",
    "CSIMenuUtil::setPassthruEnabled(bool)",
    "CSIMenuUtil::IsPassthruDimmed()",
    "CSIMenuUtil::GetPassthruDimmedToastPopUpString()",
    "CSIMenuUtil::isExistFile(std::string)",
    "CSIMenuUtil::checkSetUpComplete_Alexa()",
    "CSIMenuUtil::checkSetUpComplete_Google()",
    "CSIMenuUtil::checkSetUpComplete_Salute()",
    "CSIMenuUtil::checkSetUpComplete_Tencent()",
    "CSIMenuUtil::IsVASetupComplete(ASSISTANT_TYPE)",
    "CSIMenuUtil::IsSignedIn()",
    "CSIMenuUtil::IsTncPPAgreed()",
    "CSIMenuUtil::IsNetworkConnected()",
    "CSIMenuUtil::IsMenuLanguageSupportTTS()",
    "CSIMenuUtil::SetVoiceGuideOnOff(bool)",
    "CSIMenuUtil::GetMetaData(const char*, const char*, std::string&)",
    "CSIMenuUtil::m_GetTTSSupportLanguage()",
    "CSIMenuUtil::m_TTSSupportVoiceCb(tts_s*, const char*, int, void*)",
    "CSIMenuUtil::m_listTTSLanguage",
    "CSIMenuUtil::LaunchApp(const char*)",
    "CSIMenuUtil::LaunchApp(const char*, const char*, const char*)",
    "CSIMenuUtil::ShowPopup(std::string)",
    "CSIMenuUtil::RefreshMenu()",
    "CSIMenuUtil::SetVoiceAssistant(const char*)",
    "check_return_true(const char*, int)",
    "check_return_false(const char*, int)",
    "check_general_voice_supported(const char*, int)",
    "check_general_voice_onboarding_supported(const char*, int)",
    "check_general_voice_voice_assistant(const char*, int)",
    "check_general_voice_voice_wake_up(const char*, int)",
    "check_general_voice_voice_wake_up()",
    "check_general_voice_voice_always_wake_up(const char*, int)",
    "check_general_voice_voice_screen_on_wake_up(const char*, int)",
    "check_general_voice_situational_hint(const char*, int)",
    "check_general_voice_voice_settings_orvik(const char*, int)",
    "check_general_voice_voice_settings_orvik_cn(const char*, int)",
    "check_general_voice_voice_settings_tencent(const char*, int)",
    "check_general_voice_voice_settings_alexa(const char*, int)",
    "check_general_voice_voice_settings_google(const char*, int)",
    "check_general_voice_voice_settings_salute(const char*, int)",
    "check_general_voice_enable(const char*, int)",
    "check_general_voice_onboarding_enable(const char*, int)",
    "check_general_voice_voice_wake_up_enable(const char*, int)",
    "check_general_voice_voice_wake_up_enable()",
    "check_general_voice_voice_always_wake_up_enable(const char*, int)",
    "check_general_voice_voice_screen_on_wake_up_enable(const char*, int)",
    "check_general_voice_voice_situational_hint_enable(const char*, int)",
    "check_general_voice_voice_settings_orvik_enable(const char*, int)",
    "check_general_voice_voice_settings_orvik_cn_enable(const char*, int)",
    "check_general_voice_voice_settings_tencent_enable(const char*, int)",
    "check_general_voice_voice_settings_alexa_enable(const char*, int)",
    "check_general_voice_voice_settings_google_enable(const char*, int)",
    "check_general_voice_voice_settings_salute_enable(const char*, int)",
    "checknode_int_voice_assistant()",
    "checknode_int_voice_wake_up()",
    "checknode_int_voice_always_wake_up()",
    "checknode_int_voice_screen_on_wake_up()",
    "checknode_int_voice_situational_hint()",
    "setnode_int_voice_assistant(int)",
    "setnode_int_voice_wake_up(int)",
    "setnode_int_voice_always_wake_up(int)",
    "setnode_int_voice_screen_on_wake_up(int)",
    "setnode_int_voice_situational_hint(int)",
    "get_list_items_voice_assistant(const char*, int*)",
    "get_list_items_voice_wake_up(const char*, int*)",
    "showVAChangingNoticePopup()",
    "LaunchOnboarding(const char*)",
};

// Beside the platform: the C library, the compiler's runtime and jsoncpp.
const Names C_LIBRARY = {"calloc",
                         "free",
                         "malloc",
                         "realloc",
                         "strdup",
                         "strlen",
                         "strcmp",
                         "strncmp",
                         "strncpy",
                         "strstr",
                         "strchr",
                         "memcpy",
                         "memmove",
                         "memset",
                         "memcmp",
                         "memchr",
                         "bcmp",
                         "abort",
                         "__libc_single_threaded",  // how shared pointers count
                         "__stack_chk_fail",
                         "__strncpy_chk",
                         "__memcpy_chk",
                         "__memmove_chk",
                         "__memset_chk",
                         "__stack_chk_guard",
                         "__tls_get_addr",
                         "___tls_get_addr",
                         "__errno_location"};
// The dynamic section's own and the ones of every shared library.
const Names LINKER = {"__gmon_start__", "_ITM_deregisterTMCloneTable", "_ITM_registerTMCloneTable",
                      "__cxa_finalize"};
const char* const RUNTIME_PREFIXES[] = {
    "_ZNSt",   "_ZNKSt",   "_ZSt",    "_ZTISt", "_ZTVSt", "_ZTSSt", "_ZTVN10__cxxabiv1",
    "_ZTIi",   "_ZTIb",    "_ZTIPKc", "_Zn",    "_Zd",    "__cxa",  "__gxx",
    "_Unwind", "__aeabi_", "__gnu_"};
// A library that is built to be examined asks for its examiner.
const char* const EXAMINERS[] = {"__asan_", "__ubsan_", "__lsan_", "__sanitizer_", "__llvm_",
                                 "__gcov_", "__msan_",  "__tsan_", "__start_",     "__stop_"};

bool StartsWithOneOf(const std::string& name, const auto& prefixes) {
    return std::any_of(std::begin(prefixes), std::end(prefixes),
                       [&](const char* prefix) { return name.starts_with(prefix); });
}

bool IsTracePrepare(const std::string& name) {
    return name.starts_with(
        "ht::TCStorage::PrepareCallBuffer(ht::TCStorage*, ht::TCThread*, "
        "unsigned ");
}

}  // namespace

TEST(Library, ExportsEveryDeclaredSymbolAndNoOther) {
    Names declared = ENTRY_POINTS;
    declared.insert(CPP_EXPORTS.begin(), CPP_EXPORTS.end());
    const Names exported = Declared(Symbols().exported);
    EXPECT_EQ(Without(declared, exported), Names()) << "declared and not exported";
    EXPECT_EQ(Without(exported, declared), Names()) << "exported and not declared";
}

TEST(Library, ExportsItsListAndNothingElse) {
    std::ifstream file(EXPORTS_FILE);
    ASSERT_TRUE(file) << EXPORTS_FILE;
    Names listed;
    for (std::string line; std::getline(file, line);) {
        const std::string symbol = line.substr(0, line.find(' '));
        if (!symbol.empty() && symbol[0] != '#') {
            listed.insert(symbol);
        }
    }
    const Names exported = Symbols().exported;
    EXPECT_EQ(Without(listed, exported), Names()) << "listed and not exported";
    EXPECT_EQ(Without(exported, listed), Names()) << "exported and not listed";
}

TEST(Library, ImportsEveryPlatformCall) {
    const Names imported = Declared(Symbols().imported);
    EXPECT_EQ(Without(PLATFORM_FUNCTIONS, imported), Names());
    EXPECT_EQ(std::count_if(imported.begin(), imported.end(), IsTracePrepare), 1);
}

TEST(Library, ImportsNothingButThePlatformTheRuntimeAndJsoncpp) {
    Names unexpected;
    for (const std::string& symbol : Symbols().imported) {
        const std::string name = Declared(symbol);
        if (symbol.empty() || PLATFORM_FUNCTIONS.count(name) == 1 || IsTracePrepare(name) ||
            C_LIBRARY.count(symbol) == 1 || LINKER.count(symbol) == 1 ||
            StartsWithOneOf(symbol, RUNTIME_PREFIXES) || StartsWithOneOf(symbol, EXAMINERS) ||
            name.starts_with("Json::") || name.find(" for Json::") != std::string::npos) {
            continue;
        }
        unexpected.insert(name);
    }
    EXPECT_EQ(unexpected, Names());
}

TEST(Library, FindsEveryPlatformCallInThePlatformThatWasLoadedFirst) {
    for (const std::string& symbol : Symbols().imported) {
        if (PLATFORM_FUNCTIONS.count(Declared(symbol)) == 1) {
            Dl_info info;
            void* address = dlsym(RTLD_DEFAULT, symbol.c_str());
            ASSERT_NE(address, nullptr) << symbol;
            ASSERT_NE(dladdr(address, &info), 0) << symbol;
            EXPECT_NE(std::string(info.dli_fname).find("recording-platform"), std::string::npos)
                << symbol << " is served by " << info.dli_fname;
        }
    }
}

TEST(Library, LoadingAndUnloadingItCallsNothing) {
    Reset();
    FailAny(1 << 30);
    ASSERT_FALSE(FreshProvider::IsLoaded());
    {
        const FreshProvider provider;
        EXPECT_TRUE(FreshProvider::IsLoaded());
    }
    EXPECT_EQ(CallCount(), 0);
    EXPECT_EQ(Calls(), std::vector<std::string>());
    Reset();
}

TEST(Library, UnloadsWhole) {
    Reset();
    {
        FreshProvider provider;
        SIProviderTable* page = provider.Create();
        for (const char* item : {"menu/system/general-voice", "other"}) {
            provider.IsVisible(item);
        }
        provider.Delete(page);
    }
    EXPECT_FALSE(FreshProvider::IsLoaded());
    Reset();
}

TEST(Library, StartsWithAnEmptyListAndNoKnownApplication) {
    Reset();
    FreshProvider provider;
    EXPECT_EQ(provider.Function<std::size_t()>("_ZN7MVAList13GetVAListSizeEv")(), 0u);
    tv().settings["db/multi-assistant/default_assistant_appid"] = std::string("");
    EXPECT_EQ(provider.Function<int()>("_ZN7MVAList16GetCurrentVATypeEv")(), 0);
    Reset();
}
