#include "other_program.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>

#include "virtual-tv/model/error.h"

namespace fs = std::filesystem;

namespace cli {

std::string ProgramBeside(const std::string& name, const std::string& whatToDo) {
    std::error_code ignored;
    const fs::path folder = fs::read_symlink("/proc/self/exe", ignored).parent_path();
    const fs::path program = folder / name;
    if (!fs::exists(program, ignored)) {
        throw vtv::Error(vtv::ErrorKind::kPlatform, "This needs the program " + name +
                                                        ", which is not in " + folder.string() +
                                                        ". " + whatToDo);
    }
    return program.string();
}

std::string WindowProgram() {
    return ProgramBeside("vtv-window",
                         "Install the package vtv-window; or, where the sources are, build it and "
                         "open the page: ./run window");
}

void Become(const std::string& program, const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) {
        argv.push_back(word.data());
    }
    argv.push_back(nullptr);
    std::cout.flush();
    execv(program.c_str(), argv.data());
    throw vtv::Error(vtv::ErrorKind::kPlatform,
                     program + ": cannot be started: " + std::strerror(errno) + ".");
}

}  // namespace cli
