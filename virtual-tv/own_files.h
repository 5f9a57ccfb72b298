// What the user keeps outside of every TV, where no TV, model, dump or scenario that somebody sent
// can reach.
#pragma once

#include <optional>
#include <string>

namespace vtv {

// The folder of these files; empty when the environment names no home.
std::string OwnFolder();
// Makes a folder, OwnFolder() or one in it, for nobody else. Throws kPlatform, also when others can
// write in one that is there.
void MakeOwnFolder(const std::string& dir);
// Absent when there is no such file. Throws kPlatform for one that others could have written:
// that says nothing about what the user wants. `otherwise` tells what holds until it is mended.
std::optional<std::string> ReadOwnFile(const std::string& file, const std::string& otherwise);
// Whole or not at all. Throws kPlatform.
void WriteOwnFile(const std::string& file, const std::string& text);

}  // namespace vtv
