#include "po_file.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sstream>

#include "virtual-tv/model/text_file.h"
#include "virtual-tv/texts.h"

extern char** environ;

namespace host {

namespace {

constexpr char kCompiler[] = "msgfmt";

[[noreturn]] void FailToStart(int error) {
    if (error == ENOENT) {
        throw vtv::Error(vtv::ErrorKind::kPlatform,
                         "A .po file is made into a catalogue by gettext's program msgfmt, which "
                         "is not on this machine. Install it: apt-get install gettext");
    }
    throw vtv::Error(vtv::ErrorKind::kPlatform,
                     std::string(kCompiler) + " cannot be started: " + std::strerror(error) + ".");
}

// What the program says goes into a file; returns how it ended.
int Run(std::vector<std::string> words, const std::string& complaints) {
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) {
        posix_spawn_file_actions_addopen(&actions, stream, complaints.c_str(),
                                         O_WRONLY | O_CREAT | O_APPEND, 0600);
    }
    pid_t child = -1;
    const int error = posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        FailToStart(error);
    }
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

// "fr.po:70: end-of-line within string", the first of msgfmt's complaints.
std::string FirstLine(const std::string& complaints) {
    std::string line;
    std::istringstream lines(complaints);
    std::getline(lines, line);
    return line;
}

}  // namespace

TriedPoFile::TriedPoFile(const std::string& file) : folder_("vtv-po") {
    vtv::ReadTextFile(file);  // says what is wrong with the file's name
    const std::string catalogue = folder_.Path() + "/tried/LC_MESSAGES";
    std::filesystem::create_directories(catalogue);
    const std::string complaints = folder_.Path() + "/complaints";
    const int status = Run({kCompiler, "--check-format", "--check-domain",
                            "--output-file=" + catalogue + "/si-ready.mo", "--", file},
                           complaints);
    if (status != 0) {
        throw vtv::Error(vtv::ErrorKind::kUsage, FirstLine(vtv::ReadTextFile(complaints)) + " (" +
                                                     kCompiler + " refuses the file)");
    }
    vtv::TryCatalogue(folder_.Path());
}

TriedPoFile::~TriedPoFile() {
    vtv::TryCatalogue("");
}

}  // namespace host
