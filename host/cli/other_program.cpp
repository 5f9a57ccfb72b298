#include "other_program.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>

#include "virtual-tv/model/text_file.h"
#include "virtual-tv/model/tv_model.h"

namespace fs = std::filesystem;

namespace cli {

std::string ProgramBeside(const std::string& name, const std::string& whatToDo) {
    const fs::path folder = vtv::FolderOfTheProgram();
    const fs::path program = folder / name;
    if (!vtv::IsThere(program.string())) {
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
