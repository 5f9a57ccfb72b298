// Why an application could not do its work: left by it for whoever told it to.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

#include "running_apps.h"

namespace vtv {

namespace {

// Below the TV's folder.
std::string FailureName(int pid) {
    return "apps/" + FailureFileName(pid);
}

}  // namespace

void LeaveFailure(const std::string& tvDir, int pid, const Error& failure) {
    const std::string name = FailureName(pid);
    int error = 0;
    RemoveTvFile(tvDir, name);
    WriteTvFile(tvDir, name,
                std::to_string(static_cast<int>(failure.kind())) + " " + failure.what(), &error);
}

std::optional<Error> TakeFailure(const std::string& tvDir, int pid) {
    constexpr size_t kLongest = 4096;
    const std::string name = FailureName(pid);
    std::string text(kLongest, '\0');
    const int fd = OpenTvFile(tvDir, name, O_RDONLY);
    const ssize_t size = fd >= 0 ? read(fd, text.data(), text.size()) : 0;
    if (fd >= 0) {
        close(fd);
    }
    text.resize(static_cast<size_t>(std::max<ssize_t>(size, 0)));
    const size_t space = text.find(' ');
    if (space == std::string::npos) {
        return std::nullopt;  // it may be about to be written
    }
    RemoveTvFile(tvDir, name);
    const bool no = text.substr(0, space) == std::to_string(static_cast<int>(ErrorKind::kNo));
    return Error(no ? ErrorKind::kNo : ErrorKind::kPlatform, text.substr(space + 1));
}

std::string FailureFolder(const std::string& tvDir) {
    return tvDir + "/apps";
}

std::string FailureFileName(int pid) {
    return std::to_string(pid) + ".failed";
}

}  // namespace vtv
