#include "standard_output.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ext/stdio_sync_filebuf.h>
#include <iostream>

namespace program {

namespace {

int failure = 0;  // the errno of the first write that failed

ssize_t Write(void* /*cookie*/, const char* text, size_t size) {
    size_t written = 0;
    while (written < size) {
        const ssize_t step = write(STDOUT_FILENO, text + written, size - written);
        if (step >= 0) {
            written += static_cast<size_t>(step);
        } else if (errno != EINTR) {
            failure = failure != 0 ? failure : errno;
            break;
        }
    }
    return static_cast<ssize_t>(written);
}

// A stream that was closed stays of no use: it is opened in the direction that nobody uses.
void OccupyStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) < 0) {
            // The lowest free number, which is this one.
            const int opened = open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
            static_cast<void>(opened);
        }
    }
}

}  // namespace

void Begin() {
    OccupyStandardStreams();
    setlocale(LC_CTYPE, "C.UTF-8");  // what is printed is UTF-8 everywhere
    setlocale(LC_MESSAGES, "");
    // The C library's own stream forgets the reason of a failure that is not its last.
    FILE* stream = fopencookie(nullptr, "w", {nullptr, Write, nullptr, nullptr});
    if (stream == nullptr) {
        return;  // no memory: what fails is then told without its reason
    }
    std::setvbuf(stream, nullptr, isatty(STDOUT_FILENO) == 1 ? _IOLBF : _IOFBF, BUFSIZ);
    stdout = stream;
    // Kept to the end of the process: std::cout is flushed after everything else is gone.
    static auto* const buffer = new __gnu_cxx::stdio_sync_filebuf<char>(stream);
    std::cout.rdbuf(buffer);
}

std::string OutputProblem() {
    std::cout.flush();
    std::fflush(stdout);
    const bool failed = failure != 0 || std::ferror(stdout) != 0;
    if (!failed) {
        return "";
    }
    const int reason = failure != 0 ? failure : EIO;
    return std::string("the standard output cannot be written: ") + std::strerror(reason);
}

bool IsOutputLost() {
    pollfd output = {STDOUT_FILENO, 0, 0};  // its end is told without being asked for
    if (poll(&output, 1, 0) == 1) {
        raise(SIGPIPE);
        failure = failure != 0 ? failure : EPIPE;
    }
    return !OutputProblem().empty();
}

int End(const std::string& programName, int code) {
    std::string problem = OutputProblem();
    // Some file systems tell only now.
    if (problem.empty() && close(STDOUT_FILENO) != 0 && errno != EINTR) {
        failure = errno;
        problem = OutputProblem();
    }
    // A program that has ended because its reader went away says so by its code, and quietly.
    if (problem.empty() || (failure == EPIPE && code == 128 + SIGPIPE)) {
        return code;
    }
    std::cerr << programName << ": " << problem << '\n';
    return kOutputFailed;
}

}  // namespace program
