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
#include <new>

#include "open_files.h"
#include "terminal.h"
#include "write_file.h"

namespace program {

namespace {

int failure = 0;  // the errno of the first write that failed

// A standard stream, on which nothing of others is printed that could steer a terminal.
struct Stream {
    int descriptor;
    Form form;
    VisibleText text;
};

Stream& Output() {
    static auto* const stream = new Stream{STDOUT_FILENO, Form::kText, {}};
    return *stream;
}

Stream& Errors() {
    static auto* const stream = new Stream{STDERR_FILENO, Form::kText, {}};
    return *stream;
}

// Where there is no memory, unwinding takes some as well, and the C++ library ends the process in
// the middle of reading a folder.
[[noreturn]] void EndWithoutMemory() {
    for (const char* text :
         {static_cast<const char*>(program_invocation_short_name), ": out of memory\n"}) {
        const ssize_t written = write(STDERR_FILENO, text, std::strlen(text));
        static_cast<void>(written);  // nobody is left to be told
    }
    _exit(kOutputFailed);
}

// Before whatever else is made before main().
__attribute__((constructor(101))) void WatchMemory() {
    std::set_new_handler(EndWithoutMemory);
}

ssize_t Write(void* cookie, const char* text, size_t size) {
    Stream& stream = *static_cast<Stream*>(cookie);
    const std::string shown = stream.text.Next(std::string_view(text, size), stream.form);
    // What programs read is UTF-8 everywhere.
    const int error =
        WriteAll(stream.descriptor, stream.form == Form::kText ? InCodeset(shown) : shown);
    if (error != 0 && stream.descriptor == STDOUT_FILENO) {
        failure = failure != 0 ? failure : error;
    }
    return error == 0 ? static_cast<ssize_t>(size) : 0;
}

// The C library's own streams show everything as it is, and that of the output forgets the reason
// of a failure that is not its last. Kept to the end of the process: std::cout is flushed after
// everything else is gone. Null without memory.
FILE* Open(Stream& stream, int buffering) {
    FILE* const file = fopencookie(&stream, "w", {nullptr, Write, nullptr, nullptr});
    if (file != nullptr) {
        std::setvbuf(file, nullptr, buffering, BUFSIZ);
    }
    return file;
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
    ReadCodeset();
    setlocale(LC_CTYPE, "C.UTF-8");  // inside the program all text is UTF-8
    setlocale(LC_MESSAGES, "");
    if (FILE* const file = Open(Output(), isatty(STDOUT_FILENO) == 1 ? _IOLBF : _IOFBF)) {
        stdout = file;
        std::cout.rdbuf(new __gnu_cxx::stdio_sync_filebuf<char>(file));
    }
    if (FILE* const file = Open(Errors(), _IONBF)) {
        stderr = file;
        std::cerr.rdbuf(new __gnu_cxx::stdio_sync_filebuf<char>(file));
        std::clog.rdbuf(std::cerr.rdbuf());
    }
    if (const std::string problem = OpenFilesProblem(); !problem.empty()) {
        std::cerr << program_invocation_short_name << ": " << problem << '\n';
        std::_Exit(kOutputFailed);
    }
}

void Print(const std::string& text, Form form) {
    std::cout.flush();
    std::fflush(stdout);
    const bool isShown = form == Form::kExact && isatty(STDOUT_FILENO) == 1;
    Output().form = isShown ? Form::kText : form;
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
    Output().form = Form::kText;
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
    const int error = WriteAll(STDOUT_FILENO, Output().text.End());
    if (problem.empty() && error != 0) {
        failure = error;
        problem = OutputProblem();
    }
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
