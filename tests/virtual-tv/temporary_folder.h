// A folder of the test's own, gone afterwards.
#pragma once

#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>

class TemporaryFolder {
  public:
    explicit TemporaryFolder(
        const std::filesystem::path& in = std::filesystem::temp_directory_path()) {
        umask(022);  // what others could write into is no TV
        std::string pattern = (in / "virtual-tv-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        path_ = pattern;
    }
    ~TemporaryFolder() {
        std::error_code error;
        std::filesystem::remove_all(path_, error);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& Path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

inline void WriteText(const std::string& file, const std::string& text) {
    std::ofstream(file, std::ios::binary) << text;
}

inline std::string ReadText(const std::string& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}
