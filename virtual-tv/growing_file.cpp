#include "growing_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tv_files.h"
#include "virtual-tv/model/error.h"

namespace vtv {

std::vector<std::string> GrowingFile::Names() const {
    std::vector<std::string> names;
    for (int i = oldFiles; i >= 1; --i) {
        names.push_back(std::string(name) + "." + std::to_string(i));
    }
    names.emplace_back(name);
    return names;
}

int GrowingFile::OpenToAdd(const std::string& tvDir) const {
    constexpr int kFlags = O_RDWR | O_CREAT | O_APPEND;
    const int fd = OpenTvFile(tvDir, name, kFlags);
    struct stat info{};
    const bool isFull = fd >= 0 ? fstat(fd, &info) == 0 && info.st_size >= maxSize : errno == EFBIG;
    if (!isFull) {
        return fd;
    }
    try {
        SetAside(tvDir);
    } catch (const Error&) {
        return fd >= 0 ? fd : OpenTvFile(tvDir, name, kFlags);
    }
    if (fd >= 0) {
        close(fd);
    }
    return OpenTvFile(tvDir, name, kFlags);
}

// Throws kPlatform.
void GrowingFile::SetAside(const std::string& tvDir) const {
    const FileLock lock(tvDir, kLock);
    struct stat info{};
    if (lstat((tvDir + "/" + name).c_str(), &info) != 0 || info.st_size < maxSize) {
        return;  // another process was sooner
    }
    const std::vector<std::string> names = Names();
    for (size_t i = 0; i + 1 < names.size(); ++i) {
        RenameInTv(tvDir, names[i + 1], names[i]);
    }
}

GrowingFileWriter::~GrowingFileWriter() {
    if (fd_ >= 0) {
        close(fd_);
    }
}

// Another process may have set the file aside that this one has open.
bool GrowingFileWriter::IsCurrent() const {
    struct stat ours{};
    struct stat named{};
    return fd_ >= 0 && fstat(fd_, &ours) == 0 && ours.st_size < file_.maxSize &&
           lstat((tvDir_ + "/" + file_.name).c_str(), &named) == 0 && ours.st_ino == named.st_ino &&
           ours.st_dev == named.st_dev;
}

int GrowingFileWriter::Descriptor() {
    isAnother_ = !IsCurrent();
    if (isAnother_) {
        const int before = fd_;
        fd_ = file_.OpenToAdd(tvDir_);
        const int error = errno;
        if (before >= 0) {
            close(before);
        }
        errno = error;
    }
    return fd_;
}

void GrowingFile::Remove(const std::string& tvDir) const {
    const FileLock lock(tvDir, kLock);
    for (const std::string& each : Names()) {
        if (!RemoveTvFile(tvDir, each) && errno != ENOENT) {
            throw Error(ErrorKind::kPlatform,
                        tvDir + "/" + each + ": cannot be cleared: " + std::strerror(errno) + ".");
        }
    }
}

}  // namespace vtv
