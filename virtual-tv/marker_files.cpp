// Files below /home/owner, which lie in the TV's folder: applications leave some of them behind to
// tell that a viewer has signed in.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "serve.h"
#include "tv_impl.h"
#include "virtual-tv/model/owner_files.h"

namespace vtv {

namespace fs = std::filesystem;

void CheckOwnerFile(const std::string& path) {
    RequireOwnerFile(path);
}

bool OwnerPath(std::string_view path, std::string* relative) {
    static constexpr std::string_view kOwner = "/home/owner";
    if (path.substr(0, kOwner.size()) != kOwner ||
        (path.size() > kOwner.size() && path[kOwner.size()] != '/')) {
        return false;
    }
    *relative = path.substr(kOwner.size());
    return true;
}

std::string Tv::OwnerDir() const {
    return impl_->dir + "/owner";
}

std::vector<std::string> Tv::OwnerFiles() const {
    std::vector<std::string> files;
    const int error =
        WalkTvFolder(impl_->dir, "owner", [&](const std::string& name, const struct stat& info) {
            if (!S_ISDIR(info.st_mode)) {
                files.push_back(name);
            }
            return true;
        });
    Unreadable::ThrowIf(error, OwnerDir());
    RequireNotTooMany(OwnerDir(), "files", files.size());
    std::sort(files.begin(), files.end());
    return files;
}

namespace {

// Below the TV's folder.
std::string OwnerFileName(const std::string& path) {
    return "owner/" + RequireOwnerFile(path);
}

[[noreturn]] void Fail(const std::string& file, const char* what) {
    throw Error(ErrorKind::kPlatform,
                file + ": cannot be " + what + ": " + std::strerror(errno) + ".");
}

}  // namespace

void Tv::AddOwnerFile(const std::string& path) {
    const std::string name = OwnerFileName(path);
    MakeTvFolder(impl_->dir, fs::path(name).parent_path().string());
    const int fd = OpenTvFile(impl_->dir, name, O_WRONLY | O_CREAT);
    if (fd < 0) {
        Fail(impl_->dir + "/" + name, "made");
    }
    close(fd);
}

bool Tv::RemoveOwnerFile(const std::string& path) {
    const std::string name = OwnerFileName(path);
    const bool removed = RemoveTvFile(impl_->dir, name);
    if (!removed && errno != ENOENT && errno != ENOTDIR) {
        Fail(impl_->dir + "/" + name, "removed");
    }
    return removed;
}

namespace {

int Access(const char* path, int mode) {
    std::string relative;
    if (Current() == nullptr || !OwnerPath(path, &relative)) {
        return faccessat(AT_FDCWD, path, mode, 0);
    }
    if (const Read* substitute = SubstituteFor("access", path)) {
        NoteRead("access", path, substitute->value);
        errno = ENOENT;
        return substitute->value == Value(true) ? 0 : -1;
    }
    Tv::Impl& tv = Current()->impl();
    int ignored = 0;
    if (Faulted(tv, "access", &ignored)) {
        NoteRead("access", path, std::nullopt);
        errno = EIO;
        return -1;
    }
    const int result = faccessat(AT_FDCWD, (tv.dir + "/owner" + relative).c_str(), mode, 0);
    const int error = errno;
    NoteRead("access", path, result == 0);
    errno = error;
    return result;
}

}  // namespace

}  // namespace vtv

// The C library's access(), but for the TV's own paths. It has a name of its own here, because the
// C library's declaration lets the compiler take it for granted that no path is null.
extern "C" VTV_EXPORT int TvAccess(const char* path, int mode) noexcept __asm__("access");

int TvAccess(const char* path, int mode) noexcept {
    if (path == nullptr) {
        errno = EFAULT;
        return -1;
    }
    try {
        return vtv::Access(path, mode);
    } catch (const std::exception&) {
        errno = ENOMEM;
        return -1;
    }
}
