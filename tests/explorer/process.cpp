#include "process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <thread>

#include "tests/caught_signal.h"

extern char** environ;

namespace {

struct Folder {
    Folder() {
        std::string pattern = std::filesystem::temp_directory_path() / "explorer-test-XXXXXX";
        path = mkdtemp(pattern.data());
    }
    ~Folder() {
        std::error_code error;
        std::filesystem::remove_all(path, error);
    }
    std::string path;
};

}  // namespace

std::string TemporaryFolder() {
    static const Folder folder;
    return folder.path;
}

std::string ReadAll(const std::string& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
}

JsonDocument Parse(const std::string& text) {
    Json::Value root;
    std::string errors;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    EXPECT_TRUE(reader->parse(text.data(), text.data() + text.size(), &root, &errors)) << errors;
    return root;
}

std::string ProviderFile() {
    return PROVIDER_FILE;
}

namespace {

ProcessResult Run(const char* program, const std::vector<std::string>& arguments,
                  int interruptAfter = 0, int signal = SIGINT) {
    const std::string output = TemporaryFolder() + "/output";
    const std::string errors = TemporaryFolder() + "/errors";
    std::vector<std::string> words = {program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, 1, output.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600);
    posix_spawn_file_actions_addopen(&files, 2, errors.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600);
    pid_t pid = 0;
    ProcessResult result;
    if (posix_spawn(&pid, program, &files, nullptr, argv.data(), environ) != 0) {
        return result;
    }
    posix_spawn_file_actions_destroy(&files);
    if (interruptAfter > 0) {
        EXPECT_TRUE(WaitUntilCaught(pid, signal));
        std::this_thread::sleep_for(std::chrono::milliseconds(interruptAfter));
        kill(pid, signal);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    result.output = ReadAll(output);
    result.errors = ReadAll(errors);
    return result;
}

}  // namespace

ProcessResult RunExplorer(const std::vector<std::string>& arguments) {
    return Run(EXPLORER_PROGRAM, arguments);
}

ProcessResult InterruptExplorer(const std::vector<std::string>& arguments, int milliseconds,
                                int signal) {
    return Run(EXPLORER_PROGRAM, arguments, milliseconds, signal);
}

ProcessResult RunVtv(const std::vector<std::string>& arguments) {
    return Run(VTV_PROGRAM, arguments);
}
