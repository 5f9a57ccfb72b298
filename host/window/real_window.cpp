#include "real_window.h"

#include "environment.h"
#include "live.h"

namespace window {

namespace {

struct PowerOn {
    explicit PowerOn(vtv::Tv& tv) { vtv::PowerOn(tv); }
    ~PowerOn() { vtv::PowerOff(); }
    PowerOn(const PowerOn&) = delete;
    PowerOn& operator=(const PowerOn&) = delete;
};

}  // namespace

void ShowWindow(const std::string& tvDir, const std::string& provider,
                const WindowOptions& options) {
    const bool hasDisplay = options.display != "none";
    if (!hasDisplay && options.keys.empty()) {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         "vtv window: --display none needs --keys: nobody could press one.");
    }
    const Toolkit toolkit(hasDisplay ? Toolkit::For::kWindow : Toolkit::For::kPictures);
    vtv::Tv tv(tvDir);
    const PowerOn on(tv);
    const host::Provider asked(provider);
    Live live(tv, asked, options);
    live.Run();
}

}  // namespace window
