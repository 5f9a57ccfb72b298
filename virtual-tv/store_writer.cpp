#include "store_writer.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <string>

#include "store.h"

namespace vtv {

namespace {

// "PID PROGRAM", an extended attribute.
constexpr char kNote[] = "user.vtv.writer";
constexpr size_t kLongestNote = 256;

void ReadSignature(int fd, Writing* writing) {
    std::array<char, kLongestNote> note{};
    const ssize_t size = fgetxattr(fd, kNote, note.data(), note.size());
    if (size <= 0) {
        return;
    }
    const char* const end = note.data() + size;
    int pid = 0;
    const auto [rest, error] = std::from_chars(note.data(), end, pid);
    if (error == std::errc() && pid > 0 && rest != end && *rest == ' ') {
        writing->pid = pid;
        writing->program.assign(rest + 1, end);
    }
}

}  // namespace

void SignWriting(int fd) {
    const std::string note = std::to_string(getpid()) + " " + program_invocation_short_name;
    const int before = errno;
    if (note.size() <= kLongestNote) {
        fsetxattr(fd, kNote, note.data(), note.size(), 0);
    }
    errno = before;
}

std::optional<Writing> Store::LastWriting(std::string_view key) const {
    const std::string name = EncodeKey(key);
    const int fd =
        name.empty() || !Problem().empty()
            ? -1
            : openat(dirFd_, name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (fd < 0) {
        return std::nullopt;
    }
    Writing writing;
    struct stat info{};
    if (fstat(fd, &info) == 0) {
        writing.time = TimePoint(std::chrono::seconds(info.st_mtim.tv_sec) +
                                 std::chrono::microseconds(info.st_mtim.tv_nsec / 1000));
    }
    ReadSignature(fd, &writing);
    close(fd);
    return writing;
}

}  // namespace vtv
