#include "write_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>

#include "standard_output.h"

namespace program {

namespace {

std::string WhyNot(const std::string& file, int error) {
    return file + ": cannot be written: " + std::strerror(error);
}

// What a terminal is told steers it.
int WriteOpen(int descriptor, const std::string& text) {
    if (isatty(descriptor) != 1) {
        return WriteAll(descriptor, text);
    }
    VisibleText visible;
    const std::string shown = visible.Next(text, Form::kText);
    return WriteAll(descriptor, shown + visible.End());
}

// The number of what the program has open already, where a file is a name of that.
std::optional<int> OpenAlready(const std::string& file) {
    const std::string path = std::filesystem::path(file).lexically_normal().string();
    if (path == "-" || path == "/dev/stdout") {
        return STDOUT_FILENO;
    }
    if (path == "/dev/stderr") {
        return STDERR_FILENO;
    }
    for (const std::string folder : {"/dev/fd/", "/proc/self/fd/"}) {
        int number = -1;
        const char* const end = path.data() + path.size();
        if (path.rfind(folder, 0) == 0 && path.size() > folder.size() &&
            std::from_chars(path.data() + folder.size(), end, number).ptr == end) {
            return number;
        }
    }
    return std::nullopt;
}

std::string WriteToOpen(const std::string& file, int descriptor, const std::string& text) {
    if (descriptor == STDOUT_FILENO) {
        Print(text, Form::kExact);
        return "";  // what was lost is told at the end of the program
    }
    const int error = WriteOpen(descriptor, text);
    return error == 0 ? "" : WhyNot(file, error);
}

std::string WriteToDevice(const std::string& file, const std::string& text) {
    const int device = open(file.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW);
    const int error = device < 0 ? errno : WriteOpen(device, text);
    close(device);
    return error == 0 ? "" : WhyNot(file, error);
}

// A file beside another, which takes its place when it is whole, or is gone. One that a killed
// process left goes with the next: a writer locks its own.
class Aside {
  public:
    Aside(const std::string& file, mode_t mode) {
        const std::filesystem::path path(file);
        const std::string name = "." + path.filename().string() + ".vtv-new-";
        RemoveLeft(path.parent_path(), name);
        for (int i = 0; i < 100 && descriptor_ < 0; ++i) {
            path_ =
                path.parent_path() / (name + std::to_string(getpid()) + "-" + std::to_string(i));
            descriptor_ =
                open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
            if (descriptor_ < 0 && errno != EEXIST) {
                break;
            }
            if (descriptor_ >= 0 && !Guard()) {
                close(descriptor_);
                descriptor_ = -1;
            }
        }
    }
    ~Aside() {
        const int error = errno;
        if (descriptor_ >= 0) {
            close(descriptor_);
            unlink(path_.c_str());
        }
        if (guard_ >= 0) {
            close(guard_);
        }
        errno = error;
    }
    Aside(const Aside&) = delete;
    Aside& operator=(const Aside&) = delete;

    int Descriptor() const { return descriptor_; }

    bool TakeThePlaceOf(const std::string& file) {
        const bool isClosed = close(descriptor_) == 0;
        descriptor_ = -1;
        if (isClosed && std::rename(path_.c_str(), file.c_str()) == 0) {
            return true;
        }
        const int error = errno;
        unlink(path_.c_str());
        errno = error;
        return false;
    }

  private:
    static void RemoveLeft(const std::filesystem::path& folder, const std::string& name) {
        std::error_code error;
        std::filesystem::directory_iterator entries(folder.empty() ? "." : folder, error);
        for (; !error && entries != std::filesystem::directory_iterator();
             entries.increment(error)) {
            const std::filesystem::path& path = entries->path();
            if (path.filename().string().rfind(name, 0) != 0) {
                continue;
            }
            const int left = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
            if (left >= 0 && flock(left, LOCK_EX | LOCK_NB) == 0) {
                unlink(path.c_str());
            }
            close(left);
        }
    }

    // The lock is held by a descriptor of its own, until the file has its name: some file systems
    // tell only when the other is closed that it could not be written. Before the lock the file
    // looked like a leftover; false when it was taken for one.
    bool Guard() {
        guard_ = fcntl(descriptor_, F_DUPFD_CLOEXEC, 0);
        while (guard_ >= 0 && flock(guard_, LOCK_EX) != 0 && errno == EINTR) {
        }
        struct stat info = {};
        if (fstat(descriptor_, &info) != 0 || info.st_nlink > 0) {
            return true;
        }
        close(guard_);
        guard_ = -1;
        return false;
    }

    std::string path_;
    int descriptor_ = -1;
    int guard_ = -1;
};

std::string WriteNew(const std::string& file, const std::string& text) {
    Aside aside(file, 0666);
    const int error = aside.Descriptor() < 0 ? errno : WriteAll(aside.Descriptor(), text);
    if (error != 0) {
        return WhyNot(file, error);
    }
    return aside.TakeThePlaceOf(file) ? "" : WhyNot(file, errno);
}

// Nobody reads it before it has the mode and the owner of what it replaces.
std::string Replace(const std::string& file, const struct stat& old, const std::string& text) {
    if (faccessat(AT_FDCWD, file.c_str(), W_OK, AT_EACCESS) != 0) {
        return WhyNot(file, errno);
    }
    Aside aside(file, 0600);
    if (aside.Descriptor() < 0) {
        return WhyNot(file, errno);
    }
    int error = WriteAll(aside.Descriptor(), text);
    if (error != 0) {
        return WhyNot(file, error);
    }
    struct stat made = {};
    fstat(aside.Descriptor(), &made);
    if ((made.st_uid != old.st_uid || made.st_gid != old.st_gid) &&
        fchown(aside.Descriptor(), old.st_uid, old.st_gid) != 0) {
        return file + ": cannot be replaced: it would not keep its owner: " + std::strerror(errno);
    }
    if (fchmod(aside.Descriptor(), old.st_mode & 07777U) != 0 || !aside.TakeThePlaceOf(file)) {
        return WhyNot(file, errno);
    }
    return "";
}

const char* KindOf(mode_t mode) {
    return S_ISLNK(mode)    ? "a link"
           : S_ISDIR(mode)  ? "a folder"
           : S_ISFIFO(mode) ? "a pipe"
           : S_ISSOCK(mode) ? "a socket"
                            : "a device";
}

}  // namespace

int WriteAll(int descriptor, const std::string& text) {
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t step = write(descriptor, text.data() + written, text.size() - written);
        if (step >= 0) {
            written += static_cast<size_t>(step);
        } else if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

std::string WriteFile(const std::string& file, const std::string& text) {
    if (const std::optional<int> descriptor = OpenAlready(file)) {
        return WriteToOpen(file, *descriptor, text);
    }
    struct stat there = {};
    if (lstat(file.c_str(), &there) != 0) {
        return errno == ENOENT ? WriteNew(file, text) : WhyNot(file, errno);
    }
    if (S_ISREG(there.st_mode)) {
        return Replace(file, there, text);
    }
    if (S_ISCHR(there.st_mode)) {
        return WriteToDevice(file, text);
    }
    return file + ": cannot be written: this is " + KindOf(there.st_mode) +
           ", and only a plain file is replaced. Name another one, or - for the standard output.";
}

}  // namespace program
