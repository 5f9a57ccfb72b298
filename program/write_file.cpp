#include "write_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace program {

namespace fs = std::filesystem;

namespace {

bool Fill(const std::string& file, const std::string& text, std::ios::openmode mode = {}) {
    std::ofstream stream(file, std::ios::binary | mode);
    stream << text;
    stream.close();
    return !stream.fail();
}

// What the program has open already, by one of its names: that is written to as it stands, also
// where it is a plain file.
bool IsOpenAlready(const std::string& file) {
    return file == "/dev/stdout" || file == "/dev/stderr" || file.rfind("/dev/fd/", 0) == 0 ||
           file.rfind("/proc/", 0) == 0;
}

std::string WhyNot(const std::string& file, int error) {
    return file + ": cannot be written: " + std::strerror(error);
}

}  // namespace

std::string WriteFile(const std::string& file, const std::string& text) {
    std::error_code none;
    errno = 0;
    if (IsOpenAlready(file) || (fs::exists(file, none) && !fs::is_regular_file(file, none))) {
        return Fill(file, text, std::ios::app) ? "" : WhyNot(file, errno);
    }
    // A link stays one: what it leads to is replaced.
    const fs::path target = fs::weakly_canonical(file, none);
    const std::string path = target.empty() ? file : target.string();
    const std::string aside = path + ".new-" + std::to_string(getpid());
    if (Fill(aside, text) && std::rename(aside.c_str(), path.c_str()) == 0) {
        return "";
    }
    const int error = errno;
    unlink(aside.c_str());
    return WhyNot(file, error);
}

}  // namespace program
