#include "vtv_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;

extern char** environ;

namespace {

using Environment = std::map<std::string, std::string>;

// Reads what two pipes deliver until both end.
void Drain(int out, int err, Output* output) {
    pollfd fds[2] = {{out, POLLIN, 0}, {err, POLLIN, 0}};
    while (fds[0].fd >= 0 || fds[1].fd >= 0) {
        poll(fds, 2, -1);
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || fds[i].revents == 0) {
                continue;
            }
            char buffer[65536];
            const ssize_t size = read(fds[i].fd, buffer, sizeof buffer);
            if (size <= 0) {
                fds[i].fd = -1;
            } else {
                (i == 0 ? output->out : output->err).append(buffer, static_cast<size_t>(size));
            }
        }
    }
}

int Start(const Environment& environment, const std::vector<std::string>& arguments, int in,
          int out, int err, const std::string& program = VTV, unsigned seconds = 0) {
    const pid_t child = fork();
    if (child != 0) {
        return child;
    }
    if (in >= 0) {
        dup2(in, STDIN_FILENO);
    }
    if (out < 0) {
        close(STDOUT_FILENO);
    } else {
        dup2(out, STDOUT_FILENO);
    }
    dup2(err, STDERR_FILENO);
    for (const auto& [name, value] : environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    alarm(seconds);  // whoever waits for what never comes is ended
    std::vector<char*> argv = {const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    execv(program.c_str(), argv.data());
    _exit(127);
}

// Adds what comes next; false at the end and when nothing comes in time.
bool Fill(int fd, std::string* text, int timeoutMs = 20000) {
    pollfd descriptor = {fd, POLLIN, 0};
    if (poll(&descriptor, 1, timeoutMs) <= 0) {
        return false;
    }
    char buffer[65536];
    const ssize_t size = read(fd, buffer, sizeof buffer);
    if (size > 0) {
        text->append(buffer, static_cast<size_t>(size));
    }
    return size > 0;
}

int CodeOf(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

VtvTest::VtvTest() {
    umask(022);  // what others could write into is no TV
    folder_ = (fs::temp_directory_path() / "vtv-test-XXXXXX").string();
    EXPECT_NE(mkdtemp(folder_.data()), nullptr);
    environment = {
        {"VTV_HOME", folder_ + "/tvs"}, {"HOME", folder_}, {"TERM", "dumb"}, {"LANG", "C.UTF-8"}};
    for (const char* name :
         {"VTV_TV", "VTV_PROVIDER", "VTV_DATA", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "LANGUAGE",
          "LC_ALL", "LC_CTYPE", "COLUMNS", "NO_COLOR"}) {
        unsetenv(name);
    }
}

VtvTest::~VtvTest() {
    // Applications that a test left running would write into a folder that is gone.
    std::error_code ignored;
    for (const fs::directory_entry& tv : fs::directory_iterator(folder_ + "/tvs", ignored)) {
        Vtv({"power-cycle", "--tv", tv.path().string()});
    }
    fs::remove_all(folder_, ignored);
}

Output VtvTest::Vtv(const std::vector<std::string>& arguments, const std::string& input) {
    int in[2], out[2], err[2];
    EXPECT_EQ(pipe2(in, O_CLOEXEC) | pipe2(out, O_CLOEXEC) | pipe2(err, O_CLOEXEC), 0);
    const int child = Start(environment, arguments, in[0], out[1], err[1]);
    close(in[0]);
    close(out[1]);
    close(err[1]);
    signal(SIGPIPE, SIG_IGN);
    EXPECT_EQ(write(in[1], input.data(), input.size()), static_cast<ssize_t>(input.size()));
    close(in[1]);
    Output output;
    Drain(out[0], err[0], &output);
    close(out[0]);
    close(err[0]);
    int status = 0;
    waitpid(child, &status, 0);
    output.code = CodeOf(status);
    return output;
}

Output VtvTest::RunInto(const std::string& file, const std::string& program,
                        const std::vector<std::string>& arguments) {
    const int in = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const int out = file.empty() ? -1 : open(file.c_str(), O_WRONLY | O_CLOEXEC);
    int err[2];
    EXPECT_EQ(pipe2(err, O_CLOEXEC), 0);
    const std::string path = (fs::path(VTV).parent_path() / program).string();
    const int child = Start(environment, arguments, in, out, err[1], path, 15);
    close(in);
    close(err[1]);
    if (out >= 0) {
        close(out);
    }
    Output output;
    while (Fill(err[0], &output.err)) {
    }
    close(err[0]);
    int status = 0;
    waitpid(child, &status, 0);
    output.code = CodeOf(status);
    return output;
}

Output VtvTest::OnTerminal(const std::string& program, const std::vector<std::string>& arguments) {
    const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    EXPECT_EQ(grantpt(master) | unlockpt(master), 0);
    const int terminal = open(ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings = {};
    EXPECT_EQ(tcgetattr(terminal, &settings), 0);
    cfmakeraw(&settings);  // the terminal itself adds nothing
    EXPECT_EQ(tcsetattr(terminal, TCSANOW, &settings), 0);
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const std::string path = (fs::path(VTV).parent_path() / program).string();
    const int child = Start(environment, arguments, nothing, terminal, terminal, path, 30);
    close(nothing);
    close(terminal);
    Output output;
    while (Fill(master, &output.out)) {
    }
    close(master);
    int status = 0;
    waitpid(child, &status, 0);
    output.code = CodeOf(status);
    return output;
}

std::string VtvTest::Ok(const std::vector<std::string>& arguments, const std::string& input) {
    const Output output = Vtv(arguments, input);
    std::string line;
    for (const std::string& argument : arguments) {
        line += " " + argument;
    }
    EXPECT_EQ(output.code, 0) << "vtv" << line << '\n' << output.out << output.err;
    return output.out;
}

JsonDocument VtvTest::OkJson(const std::vector<std::string>& arguments) {
    const std::string text = Ok(arguments);
    Json::Value json;
    EXPECT_TRUE(Json::Reader().parse(text, json)) << text;
    return json;
}

JsonDocument VtvTest::Item(const std::string& name, const std::vector<std::string>& more) {
    std::vector<std::string> arguments = {"show", name, "--json"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return OkJson(arguments);
}

void VtvTest::Write(const std::string& name, const std::string& text) const {
    std::ofstream(Path(name)) << text;
}

std::string VtvTest::Read(const std::string& name) const {
    std::ostringstream text;
    text << std::ifstream(Path(name)).rdbuf();
    return text.str();
}

std::map<std::string, std::string> VtvTest::Contents(const std::string& name) const {
    std::map<std::string, std::string> contents;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(Path(name))) {
        if (entry.is_regular_file()) {
            std::ostringstream text;
            text << std::ifstream(entry.path()).rdbuf();
            contents[entry.path().string()] = text.str();
        }
    }
    return contents;
}

RunningVtv::RunningVtv(const Environment& environment, const std::vector<std::string>& arguments) {
    int out[2], err[2];
    EXPECT_EQ(pipe2(out, O_CLOEXEC) | pipe2(err, O_CLOEXEC), 0);
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    pid_ = Start(environment, arguments, nothing, out[1], err[1]);
    close(nothing);
    close(out[1]);
    close(err[1]);
    out_ = out[0];
    err_ = err[0];
}

RunningVtv::~RunningVtv() {
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    close(out_);
    close(err_);
}

bool RunningVtv::WaitFor(const std::string& text) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (output_.out.find(text) == std::string::npos) {
        if (std::chrono::steady_clock::now() > end || !Fill(out_, &output_.out)) {
            return false;
        }
    }
    return true;
}

bool RunningVtv::WaitForError(const std::string& text) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (output_.err.find(text) == std::string::npos) {
        if (std::chrono::steady_clock::now() > end || !Fill(err_, &output_.err)) {
            return false;
        }
    }
    return true;
}

Output RunningVtv::Interrupt(int signal) {
    kill(pid_, signal);
    return End();
}

Output RunningVtv::End() {
    Drain(out_, err_, &output_);
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    output_.code = CodeOf(status);
    return output_;
}
