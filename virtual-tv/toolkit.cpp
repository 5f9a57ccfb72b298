// The widget toolkit's accessibility mode. Elementary itself is loaded only when somebody asks for
// it, so that the command line starts fast and works where there is no toolkit.
#include "platform/toolkit.h"

#include <dlfcn.h>

#include <cstdlib>
#include <string>

#include "serve.h"
#include "tv_impl.h"

namespace vtv {

namespace {

constexpr char kElementary[] = "libelementary.so.1";

struct Elementary {
    int (*init)(int, char**) = nullptr;
    void (*accessSet)(unsigned char) = nullptr;
    unsigned char (*configSave)() = nullptr;
};

template <typename Function>
void Find(void* library, const char* name, Function* function) {
    *function = reinterpret_cast<Function>(dlsym(library, name));
}

// The TV's configuration belongs to the TV: without this, switching the voice guide on would switch
// it on for every Elementary program of whoever runs the virtual TV. A process that has a window
// has loaded and set up the toolkit itself.
class TvHome {
  public:
    explicit TvHome(const std::string& home) {
        const char* old = std::getenv("HOME");
        had_ = old != nullptr;
        old_ = had_ ? old : "";
        setenv("HOME", home.c_str(), 1);
    }
    ~TvHome() {
        if (had_) {
            setenv("HOME", old_.c_str(), 1);
        } else {
            unsetenv("HOME");
        }
    }
    TvHome(const TvHome&) = delete;
    TvHome& operator=(const TvHome&) = delete;

  private:
    bool had_;
    std::string old_;
};

// Null functions when there is no Elementary; the log then says so, once a process.
const Elementary& Load(Tv::Impl* tv) {
    static Elementary toolkit;
    static bool tried = false;
    if (tried) {
        return toolkit;
    }
    tried = true;
    // Without a display or a system bus the toolkit would tell so at length, with stack traces.
    setenv("EINA_LOG_LEVEL", "0", 0);
    setenv("EINA_LOG_BACKTRACE", "-1", 0);
    void* library = dlopen(kElementary, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr && tv != nullptr) {
        tv->LogLine(kWarning,
                    std::string("the toolkit's accessibility mode is not set: ") + dlerror());
    }
    if (library == nullptr) {
        return toolkit;
    }
    // Nor is there a service of the desktop's to look for, or to start.
    void (*alone[2])() = {nullptr, nullptr};
    Find(library, "ecore_app_no_system_modules", &alone[0]);
    Find(library, "efreet_cache_disable", &alone[1]);
    for (void (*call)() : alone) {
        if (call != nullptr) {
            call();
        }
    }
    Find(library, "elm_init", &toolkit.init);
    Find(library, "elm_config_access_set", &toolkit.accessSet);
    Find(library, "elm_config_save", &toolkit.configSave);
    return toolkit;
}

}  // namespace

}  // namespace vtv

// A program with a window calls the toolkit before a TV is on, too: such calls are the toolkit's
// alone.
extern "C" {

VTV_EXPORT int elm_init(int argc, char** argv) {
    const auto init = [&](vtv::Tv::Impl* tv) {
        const vtv::Elementary& toolkit = vtv::Load(tv);
        return toolkit.init != nullptr ? toolkit.init(argc, argv) : 0;
    };
    if (vtv::Current() == nullptr) {
        return init(nullptr);
    }
    return vtv::ServeOr(0, "elm_init", [&](vtv::Tv::Impl& tv) {
        const vtv::TvHome home(tv.dir + "/owner");
        return init(&tv);
    });
}

VTV_EXPORT void elm_config_access_set(unsigned char isAccess) {
    const auto set = [&](vtv::Tv::Impl* tv) {
        const vtv::Elementary& toolkit = vtv::Load(tv);
        if (toolkit.accessSet != nullptr) {
            toolkit.accessSet(isAccess);
        }
        return 0;
    };
    if (vtv::Current() == nullptr) {
        set(nullptr);
        return;
    }
    vtv::ServeOr(0, "elm_config_access_set", [&](vtv::Tv::Impl& tv) {
        tv.state.Write("toolkit/access", isAccess != 0);
        return set(&tv);
    });
}

VTV_EXPORT unsigned char elm_config_save(void) {
    using Boolean = unsigned char;
    const auto save = [](vtv::Tv::Impl* tv) -> Boolean {
        const vtv::Elementary& toolkit = vtv::Load(tv);
        return toolkit.configSave != nullptr ? toolkit.configSave() : Boolean{0};
    };
    if (vtv::Current() == nullptr) {
        return save(nullptr);
    }
    return vtv::ServeOr(Boolean{0}, "elm_config_save", [&](vtv::Tv::Impl& tv) {
        const vtv::TvHome home(tv.dir + "/owner");
        return save(&tv);
    });
}

// On the TV this makes the running applications read the item again; here it can only be told of.
VTV_EXPORT void elm_config_item_flush(const char* item) {
    vtv::ServeOr(0, "elm_config_item_flush", [&](vtv::Tv::Impl& tv) {
        tv.LogLine(vtv::kInfo,
                   std::string("toolkit: ") + (item != nullptr ? item : "") + " flushed");
        return 0;
    });
}

}  // extern "C"
