// Installed packages and their metadata.
#include "platform/packages.h"

#include <cstring>

#include "serve.h"
#include "tv_impl.h"
#include "virtual-tv/model/applications.h"

namespace vtv {

namespace {

// What a handle points to: a copy, so that the values live as long as the handle.
struct AppInfo {
    std::map<std::string, std::optional<std::string>> metadata;
};

}  // namespace

}  // namespace vtv

extern "C" {

VTV_EXPORT int pkgmgrinfo_appinfo_get_appinfo(const char* appId, pkgmgrinfo_appinfo_h* handle) {
    return vtv::Serve("pkgmgrinfo_appinfo_get_appinfo", [&](vtv::Tv::Impl& tv) {
        if (appId == nullptr || handle == nullptr) {
            return false;
        }
        const vtv::Package* package = vtv::FindPackage(tv.model, appId);
        if (!vtv::IsInstalled(tv.model, appId)) {
            return false;
        }
        auto info = std::make_unique<vtv::AppInfo>();
        if (package != nullptr) {
            info->metadata = package->metadata;
        }
        *handle = info.release();
        return true;
    });
}

VTV_EXPORT int pkgmgrinfo_appinfo_get_metadata_value(pkgmgrinfo_appinfo_h handle, const char* key,
                                                     char** value) {
    return vtv::Serve("pkgmgrinfo_appinfo_get_metadata_value", [&](vtv::Tv::Impl&) {
        if (handle == nullptr || key == nullptr || value == nullptr) {
            return false;
        }
        auto& metadata = static_cast<vtv::AppInfo*>(handle)->metadata;
        const auto found = metadata.find(key);
        if (found == metadata.end()) {
            return false;
        }
        *value = found->second ? found->second->data() : nullptr;
        return true;
    });
}

VTV_EXPORT int pkgmgrinfo_appinfo_destroy_appinfo(pkgmgrinfo_appinfo_h handle) {
    // Also when the call is told to fail: what was handed out is given back.
    const std::unique_ptr<vtv::AppInfo> info(static_cast<vtv::AppInfo*>(handle));
    return vtv::Serve("pkgmgrinfo_appinfo_destroy_appinfo",
                      [&](vtv::Tv::Impl&) { return info != nullptr; });
}

}  // extern "C"
