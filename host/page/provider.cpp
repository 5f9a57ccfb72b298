#include "provider.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

#include "virtual-tv/model/text_file.h"
#include "virtual-tv/model/tv_model.h"

namespace host {

namespace {

std::string Demangled(const std::string& symbol) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status), std::free);
    return status == 0 && name ? name.get() : symbol;
}

[[noreturn]] void ThrowLoadError(const std::string& file, const std::string& reason) {
    static const std::string kUndefined = "undefined symbol: ";
    const size_t at = reason.find(kUndefined);
    if (at != std::string::npos) {
        std::string symbol = reason.substr(at + kUndefined.size());
        symbol = symbol.substr(0, symbol.find_first_of(" ,\t\n"));
        throw ProviderError(
            ProviderError::Kind::kUnusable,
            file + ": needs the platform call " + Demangled(symbol) +
                ", which this TV does not serve. The provider was built for another "
                "platform, or the call is missing here.");
    }
    throw ProviderError(ProviderError::Kind::kUnusable,
                        file + ": cannot be loaded as a provider: " + reason);
}

struct Descriptor {
    explicit Descriptor(int number) : fd(number) {}
    ~Descriptor() { close(fd); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    const int fd;
};

// The bytes of the library in memory, under a name that the dynamic linker has not seen: to it they
// are another library.
void* LoadCopy(const std::string& file) {
    const auto fail = [&](const char* what) {
        throw ProviderError(ProviderError::Kind::kUnusable, file + ": cannot be copied: " + what +
                                                                ": " + std::strerror(errno) + ".");
    };
    const Descriptor from(open(file.c_str(), O_RDONLY | O_CLOEXEC));
    const Descriptor copy(memfd_create("provider", MFD_CLOEXEC));
    struct stat info;
    if (from.fd < 0 || copy.fd < 0 || fstat(from.fd, &info) != 0) {
        fail("it cannot be opened");
    }
    for (off_t left = info.st_size; left > 0;) {
        const ssize_t sent = sendfile(copy.fd, from.fd, nullptr, static_cast<size_t>(left));
        if (sent <= 0) {
            fail("it cannot be read");
        }
        left -= sent;
    }
    // A library that is still loaded has its name from a descriptor that was closed since.
    std::vector<std::unique_ptr<Descriptor>> taken;
    int fd = copy.fd;
    for (;;) {
        const std::string path = "/proc/self/fd/" + std::to_string(fd);
        void* known = dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD);
        if (known == nullptr) {
            return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        }
        dlclose(known);
        fd = fcntl(copy.fd, F_DUPFD_CLOEXEC, fd + 1);
        if (fd < 0) {
            fail("too many files are open");
        }
        taken.push_back(std::make_unique<Descriptor>(fd));
    }
}

std::unique_ptr<void, int (*)(void*)> Load(const std::string& file, ProviderLibrary::Copy copy) {
    if (!vtv::IsThere(file)) {
        throw ProviderError(ProviderError::Kind::kNoSuchFile,
                            file + ": there is no such provider library.");
    }
    // A name without a slash would be searched for in the system's folders.
    const std::string path = std::filesystem::absolute(file).string();
    void* library = copy == ProviderLibrary::Copy::kPrivate
                        ? LoadCopy(path)
                        : dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* reason = dlerror();
        ThrowLoadError(file, reason != nullptr ? reason : "unknown reason");
    }
    return {library, dlclose};
}

}  // namespace

std::string DefaultProvider() {
    namespace fs = std::filesystem;
    if (const char* named = std::getenv("VTV_PROVIDER")) {
        return named;
    }
    const fs::path programs = vtv::FolderOfTheProgram();
    const fs::path installed = programs / SI_PROGRAMS_TO_PLUGINS / "libsi-ready.so";
    for (const fs::path& built :
         {programs / "../lib/libsi-ready.so", programs / "libsi-ready.so"}) {
        if (!vtv::IsThere(installed.string()) && vtv::IsThere(built.string())) {
            return built.lexically_normal();
        }
    }
    return installed.lexically_normal();
}

ProviderLibrary::ProviderLibrary(const std::string& file, Copy copy)
    : file_(file), library_(Load(file, copy)) {}

void* ProviderLibrary::Symbol(const char* name) const {
    return dlsym(library_.get(), name);
}

void* ProviderLibrary::Need(const char* name) const {
    void* symbol = Symbol(name);
    if (symbol == nullptr) {
        throw ProviderError(
            ProviderError::Kind::kUnusable,
            file_ + ": is no provider: it does not export " + name +
                "(). A provider exports all ten entry points of abi/si_provider.h.");
    }
    return symbol;
}

ProviderLibrary::EntryPoints ProviderLibrary::Entry() const {
    EntryPoints entry;
    Find("create_provider", entry.create);
    Find("delete_provider", entry.destroy);
    Find("check_visibility_int", entry.visibleInt);
    Find("check_visibility_bool", entry.visibleBool);
    Find("check_visibility_double", entry.visibleDouble);
    Find("check_visibility_string", entry.visibleString);
    Find("check_enable_int", entry.enabledInt);
    Find("check_enable_bool", entry.enabledBool);
    Find("check_enable_double", entry.enabledDouble);
    Find("check_enable_string", entry.enabledString);
    return entry;
}

CreatedProvider::CreatedProvider(const std::string& file, ProviderLibrary::Copy copy)
    : library(file, copy), entry(library.Entry()) {
    const int result = entry.create(&slots);
    if (result != 0 || slots == nullptr) {
        throw ProviderError(
            ProviderError::Kind::kUnusable,
            file + ": create_provider() " +
                (result != 0 ? "failed with " + std::to_string(result) : "handed out no table") +
                ".");
    }
}

Provider::Provider(const std::string& file, Copy copy)
    : CreatedProvider(file, copy),
      AskableProvider(entry.visibleInt, entry.enabledInt,
                      *reinterpret_cast<const SIProviderTable*>(slots)) {}

}  // namespace host
