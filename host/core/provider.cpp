#include "provider.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace host {

namespace {

// Slots 39, 50 and 51 write whole texts without asking for the room. No translation of a page comes
// near this.
constexpr size_t kBufferSize = 64 * 1024;
using Buffer = std::array<char, kBufferSize>;

struct FreeText {
    void operator()(char* text) const { std::free(text); }
};
using OwnedText = std::unique_ptr<char, FreeText>;

std::string Demangled(const std::string& symbol) {
    int status = 0;
    const OwnedText name(abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status));
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

std::unique_ptr<void, int (*)(void*)> Load(const std::string& file, Provider::Copy copy) {
    std::error_code ignored;
    if (!std::filesystem::exists(file, ignored)) {
        throw ProviderError(ProviderError::Kind::kNoSuchFile,
                            file + ": there is no such provider library.");
    }
    // A name without a slash would be searched for in the system's folders.
    const std::string path = std::filesystem::absolute(file).string();
    void* library = copy == Provider::Copy::kPrivate ? LoadCopy(path)
                                                     : dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        const char* reason = dlerror();
        ThrowLoadError(file, reason != nullptr ? reason : "unknown reason");
    }
    return {library, dlclose};
}

template <typename F>
void Find(void* library, const std::string& file, const char* name, F** function) {
    void* symbol = dlsym(library, name);
    if (symbol == nullptr) {
        throw ProviderError(
            ProviderError::Kind::kUnusable,
            file + ": is no provider: it does not export " + name +
                "(). A provider exports all ten entry points of abi/si_provider.h.");
    }
    static_assert(sizeof(symbol) == sizeof(*function));
    std::memcpy(function, &symbol, sizeof(symbol));
}

std::optional<std::string> TakeText(int (*slot)(const char*, char**), const std::string& key) {
    if (slot == nullptr) {
        return std::nullopt;
    }
    char* text = nullptr;
    slot(key.c_str(), &text);
    const OwnedText owned(text);
    return owned ? std::optional<std::string>(owned.get()) : std::nullopt;
}

std::vector<std::string> Buttons(int count, const Buffer& first, const Buffer& second) {
    std::vector<std::string> buttons;
    if (count > 0) {
        buttons.emplace_back(first.data());
    }
    if (count > 1) {
        buttons.emplace_back(second.data());
    }
    return buttons;
}

std::optional<int> ParseAction(const char* text) {
    char* end = nullptr;
    const long value = std::strtol(text, &end, 10);
    return end != text && *end == '\0' ? std::optional<int>(static_cast<int>(value)) : std::nullopt;
}

}  // namespace

ProviderLibrary::ProviderLibrary(const std::string& file, Provider::Copy copy)
    : library_(Load(file, copy)) {
    void* library = library_.get();
    Find(library, file, "create_provider", &entry_.create);
    Find(library, file, "delete_provider", &entry_.destroy);
    Find(library, file, "check_visibility_int", &entry_.visibleInt);
    Find(library, file, "check_visibility_bool", &entry_.visibleBool);
    Find(library, file, "check_visibility_double", &entry_.visibleDouble);
    Find(library, file, "check_visibility_string", &entry_.visibleString);
    Find(library, file, "check_enable_int", &entry_.enabledInt);
    Find(library, file, "check_enable_bool", &entry_.enabledBool);
    Find(library, file, "check_enable_double", &entry_.enabledDouble);
    Find(library, file, "check_enable_string", &entry_.enabledString);
}

Provider::Provider(const std::string& file, Copy copy) : file_(file), library_(nullptr, dlclose) {
    ProviderLibrary loaded(file, copy);
    entry_ = loaded.Entry();
    library_ = loaded.Release();
    const int result = entry_.create(&slots_);
    if (result != 0 || slots_ == nullptr) {
        throw ProviderError(ProviderError::Kind::kUnusable,
                            file + ": create_provider() " +
                                (result != 0 ? "failed with " + std::to_string(result)
                                             : std::string("handed out no table")) +
                                ".");
    }
    table_ = reinterpret_cast<const SIProviderTable*>(slots_);
}

Provider::~Provider() {
    entry_.destroy(&slots_);
}

bool Provider::IsVisible(const std::string& key) const {
    return entry_.visibleInt(key.c_str(), 0) != 0;
}

bool Provider::IsEnabled(const std::string& key) const {
    return entry_.enabledInt(key.c_str(), 0) != 0;
}

std::optional<std::string> Provider::Title(const std::string& key) const {
    return TakeText(table_->get_display_name, key);
}

std::optional<std::string> Provider::Help(const std::string& key) const {
    return TakeText(table_->get_help_text, key);
}

std::optional<std::string> Provider::Property(const std::string& key) const {
    return TakeText(table_->provider_property, key);
}

std::optional<int> Provider::GetInt(const std::string& key) const {
    if (table_->get_int == nullptr) {
        return std::nullopt;
    }
    int value = INT_MIN;
    table_->get_int(key.c_str(), &value);
    return value != INT_MIN ? std::optional<int>(value) : std::nullopt;
}

void Provider::SetInt(const std::string& key, int value) const {
    if (table_->set_int != nullptr) {
        table_->set_int(key.c_str(), value);
    }
}

std::vector<Choice> Provider::Choices(const std::string& key) const {
    std::vector<Choice> choices;
    if (table_->get_list_items == nullptr) {
        return choices;
    }
    int count = 0;
    ListItem** items = table_->get_list_items(key.c_str(), &count);
    if (items == nullptr) {
        return choices;
    }
    for (int i = 0; i < count; ++i) {
        if (items[i] == nullptr) {
            continue;
        }
        Choice choice;
        char* text = nullptr;
        if (table_->list_item_text != nullptr) {
            table_->list_item_text(items[i], &text);
        }
        if (table_->list_item_value != nullptr) {
            table_->list_item_value(items[i], &choice.value);
        }
        choice.text = text != nullptr ? text : "";
        choices.push_back(std::move(choice));
    }
    if (table_->free_list_items != nullptr) {
        table_->free_list_items(items, count);
    }
    return choices;
}

std::optional<Box> Provider::Confirmation(const std::string& key) const {
    if (table_->get_messagebox_info == nullptr) {
        return std::nullopt;
    }
    const auto message = std::make_unique<Buffer>();
    const auto first = std::make_unique<Buffer>();
    const auto second = std::make_unique<Buffer>();
    const auto title = std::make_unique<Buffer>();
    int buttons = 0;
    table_->get_messagebox_info(key.c_str(), message->data(), first->data(), second->data(),
                                &buttons);
    if (buttons <= 0) {
        return std::nullopt;
    }
    if (table_->get_messagebox_title != nullptr) {
        table_->get_messagebox_title(key.c_str(), title->data());
    }
    return Box{title->data(), message->data(), Buttons(buttons, *first, *second), std::nullopt};
}

std::optional<std::string> Provider::DisableText(const std::string& key) const {
    if (table_->get_disable_text == nullptr) {
        return std::nullopt;
    }
    char* text = nullptr;
    bool flag = false;
    table_->get_disable_text(key.c_str(), &text, &flag);
    const OwnedText owned(text);
    return flag && owned ? std::optional<std::string>(owned.get()) : std::nullopt;
}

std::optional<Box> Provider::DisablePopup(const std::string& key) const {
    if (table_->get_disablepopup_info == nullptr) {
        return std::nullopt;
    }
    const auto message = std::make_unique<Buffer>();
    const auto title = std::make_unique<Buffer>();
    const auto first = std::make_unique<Buffer>();
    const auto second = std::make_unique<Buffer>();
    const auto action = std::make_unique<Buffer>();
    int buttons = 0;
    table_->get_disablepopup_info(key.c_str(), message->data(), title->data(), first->data(),
                                  second->data(), &buttons, action->data());
    if (buttons <= 0) {
        return std::nullopt;
    }
    return Box{title->data(), message->data(), Buttons(buttons, *first, *second),
               ParseAction(action->data())};
}

}  // namespace host
