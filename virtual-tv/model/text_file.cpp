#include "text_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace vtv {

namespace {

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) {
            close(number_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Number() const { return number_; }

  private:
    int number_;
};

// who: "FILE:", or "the standard input".
[[noreturn]] void FailToRead(const std::string& who) {
    const int reason = errno;
    throw Error(reason == ENOENT || reason == ENOTDIR ? ErrorKind::kNoSuch : ErrorKind::kPlatform,
                who + " cannot be read: " + std::strerror(reason));
}

std::string ReadToEnd(int descriptor, const std::string& who, std::size_t most) {
    std::string text;
    char buffer[1 << 16];
    for (;;) {
        const ssize_t size = read(descriptor, buffer, sizeof buffer);
        if (size < 0 && errno != EINTR) {
            FailToRead(who);
        }
        if (size == 0) {
            return text;
        }
        text.append(buffer, size > 0 ? static_cast<std::size_t>(size) : 0);
        if (text.size() > most) {
            throw Error(ErrorKind::kUsage, who + " has more than " + std::to_string(most >> 20U) +
                                               " MiB, the most that is read.");
        }
    }
}

bool IsOpenAlready(const std::string& file) {
    return file == "/dev/stdin" || file.rfind("/dev/fd/", 0) == 0 ||
           file.rfind("/proc/self/fd/", 0) == 0;
}

void RequirePlainFile(const std::string& file, int descriptor) {
    struct stat status = {};
    if (fstat(descriptor, &status) != 0) {
        FailToRead(file + ":");
    }
    if (S_ISDIR(status.st_mode)) {
        throw Error(ErrorKind::kUsage, file + ": this is a folder; name a file.");
    }
    if (!S_ISREG(status.st_mode)) {
        throw Error(ErrorKind::kUsage, file + ": this is no plain file; only such a one is read.");
    }
}

}  // namespace

std::string ReadTextFile(const std::string& file, std::size_t most) {
    if (file == "-") {
        return ReadToEnd(STDIN_FILENO, "the standard input", most);
    }
    const bool isOpen = IsOpenAlready(file);
    // Without waiting for the writer of a pipe.
    const int flags = O_RDONLY | O_CLOEXEC | O_NOCTTY | (isOpen ? 0 : O_NONBLOCK);
    const Descriptor descriptor(open(file.c_str(), flags));
    if (descriptor.Number() < 0) {
        FailToRead(file + ":");
    }
    if (!isOpen) {
        RequirePlainFile(file, descriptor.Number());
    }
    return ReadToEnd(descriptor.Number(), file + ":", most);
}

namespace {

std::filesystem::file_type KnownType(const std::filesystem::file_status& status,
                                     const std::string& path, const std::error_code& error) {
    if (status.type() == std::filesystem::file_type::none) {
        throw Error(ErrorKind::kPlatform, path + ": cannot be read: " + error.message() + ".");
    }
    return status.type();
}

}  // namespace

std::filesystem::file_type KindOf(const std::string& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::symlink_status(path, error);
    return KnownType(status, path, error);
}

bool IsThere(const std::string& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    return KnownType(status, path, error) != std::filesystem::file_type::not_found;
}

}  // namespace vtv
