// Plain values as bytes and back, for what worker processes hand to the one that started them.
#pragma once

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

namespace explorer {

class BytesWriter {
  public:
    void Number(std::uint64_t number) {
        bytes_.append(reinterpret_cast<const char*>(&number), sizeof(number));
    }
    void Text(std::string_view text) {
        Number(text.size());
        bytes_.append(text);
    }
    const std::string& Bytes() const { return bytes_; }

  private:
    std::string bytes_;
};

class BytesReader {
  public:
    explicit BytesReader(std::string_view bytes) : bytes_(bytes) {}
    bool AtEnd() const { return bytes_.empty(); }
    std::uint64_t Number() {
        std::uint64_t number = 0;
        std::memcpy(&number, Take(sizeof(number)).data(), sizeof(number));
        return number;
    }
    int Int() { return static_cast<int>(Number()); }
    std::string Text() { return std::string(Take(Number())); }

  private:
    std::string_view Take(std::size_t size) {
        if (size > bytes_.size()) {
            throw std::runtime_error("a worker's message is cut off");
        }
        const std::string_view taken = bytes_.substr(0, size);
        bytes_.remove_prefix(size);
        return taken;
    }

    std::string_view bytes_;
};

}  // namespace explorer
