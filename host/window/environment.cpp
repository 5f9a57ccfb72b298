#include "environment.h"

#include <Ecore.h>
#include <Ecore_Evas.h>
#include <Edje.h>
#include <Efreet.h>
#include <Elementary.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <optional>

#include "virtual-tv/model/text_file.h"
#include "virtual-tv/model/tv_model.h"

namespace fs = std::filesystem;

namespace window {

namespace {

std::string DataFile(const std::string& name) {
    const fs::path programs = vtv::FolderOfTheProgram();
    fs::path file = (programs / SI_PROGRAMS_TO_DATA / "window" / name).lexically_normal();
    if (!vtv::IsThere(file.string())) {
        throw vtv::Error(vtv::ErrorKind::kPlatform,
                         file.string() + ": this part of the window is missing. Install it again.");
    }
    return file.string();
}

// Variables that are others for as long as this lives; those of the user come back.
class OtherVariables {
  public:
    explicit OtherVariables(const std::map<std::string, std::optional<std::string>>& variables) {
        for (const auto& [name, value] : variables) {
            const char* old = std::getenv(name.c_str());
            old_[name] = old != nullptr ? std::optional<std::string>(old) : std::nullopt;
            Set(name, value);
        }
    }
    ~OtherVariables() {
        for (const auto& [name, value] : old_) {
            Set(name, value);
        }
    }
    OtherVariables(const OtherVariables&) = delete;
    OtherVariables& operator=(const OtherVariables&) = delete;

  private:
    static void Set(const std::string& name, const std::optional<std::string>& value) {
        if (value) {
            setenv(name.c_str(), value->c_str(), 1);
        } else {
            unsetenv(name.c_str());
        }
    }

    std::map<std::string, std::optional<std::string>> old_;
};

bool HasDisplay() {
    const auto isSet = [](const char* name) {
        const char* value = std::getenv(name);
        return value != nullptr && *value != '\0';
    };
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY");
}

void RequireDisplay() {
    if (!HasDisplay()) {
        throw vtv::Error(
            vtv::ErrorKind::kPlatform,
            "There is no display to open a window on: neither DISPLAY nor WAYLAND_DISPLAY is set. "
            "Start it within a desktop; or make a picture without one: vtv picture -o page.png; or "
            "play keys without one: vtv window --display none --keys FILE");
    }
}

// The toolkit would start services and print pages of complaints without them.
void KeepToItself() {
    setenv("ELM_MODULES", "", 1);
    setenv("EINA_LOG_LEVEL", "0", 0);
    setenv("EINA_LOG_BACKTRACE", "-1", 0);
    unsetenv("EVAS_FONT_DPI");
    setenv("FONTCONFIG_FILE", DataFile("fonts.conf").c_str(), 1);
    ecore_app_no_system_modules();
    efreet_cache_disable();
}

}  // namespace

std::string ThemeFile() {
    return DataFile("tv.edj");
}

Toolkit::Toolkit(For use) : use_(use), home_("vtv-window") {
    if (use_ == For::kWindow) {
        RequireDisplay();
    }
    KeepToItself();
    // The toolkit looks once where its home is.
    const OtherVariables others({{"HOME", home_.Path()},
                                 {"XDG_CONFIG_HOME", std::nullopt},
                                 {"ELM_PROFILE", std::nullopt},
                                 {"ELM_THEME", std::nullopt},
                                 {"ELM_SCALE", std::nullopt},
                                 {"ELM_CONFIG_DIR_XDG", std::nullopt}});
    const bool ready =
        use_ == For::kWindow ? elm_init(0, nullptr) > 0 : ecore_evas_init() > 0 && edje_init() > 0;
    if (!ready) {
        throw vtv::Error(vtv::ErrorKind::kPlatform, "The toolkit (EFL) cannot be started.");
    }
    if (use_ == For::kPictures) {
        edje_transition_duration_factor_set(0);
    }
}

Toolkit::~Toolkit() {
    if (use_ == For::kWindow) {
        elm_shutdown();
    } else {
        edje_shutdown();
        ecore_evas_shutdown();
    }
}

}  // namespace window
