// Values as bytes and back, for what worker processes hand to the one that started them: numbers,
// texts, containers, and structs that name their members once for both ways:
//
//     template <typename Bytes> void Members(Bytes& bytes) { bytes(first, second); }
//
// Addresses stay what they are: a worker is a fork, and has all things where its starter has them.
#pragma once

#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace explorer {

template <typename T>
concept BytesPair = requires(T value) {
    value.first;
    value.second;
};
template <typename T>
concept BytesContainer = requires(T value) {
    value.begin();
    value.insert(value.end(), *value.begin());
};

class BytesWriter {
  public:
    template <typename... T>
    void operator()(const T&... values) {
        (Write(values), ...);
    }
    const std::string& Bytes() const { return bytes_; }

  private:
    template <typename T>
    void Write(const T& value) {
        if constexpr (std::is_trivially_copyable_v<T>) {
            bytes_.append(reinterpret_cast<const char*>(&value), sizeof(value));
        } else if constexpr (std::is_same_v<T, std::string>) {
            Write(value.size());
            bytes_ += value;
        } else if constexpr (BytesContainer<T>) {
            Write(value.size());
            for (const auto& element : value) {
                Write(element);
            }
        } else if constexpr (BytesPair<T>) {
            (*this)(value.first, value.second);
        } else {
            const_cast<T&>(value).Members(*this);
        }
    }

    std::string bytes_;
};

class BytesReader {
  public:
    explicit BytesReader(std::string_view bytes) : bytes_(bytes) {}
    template <typename... T>
    void operator()(T&... values) {
        (Read(values), ...);
    }
    template <typename T>
    T Next() {
        T value{};
        Read(value);
        return value;
    }

  private:
    template <typename T>
    void Read(T& value) {
        if constexpr (std::is_trivially_copyable_v<T>) {
            Take(sizeof(value)).copy(reinterpret_cast<char*>(&value), sizeof(value));
        } else if constexpr (std::is_same_v<T, std::string>) {
            value = Take(Next<std::size_t>());
        } else if constexpr (BytesContainer<T>) {
            for (auto size = Next<std::size_t>(); size > 0; --size) {
                if constexpr (requires { typename T::mapped_type; }) {
                    auto key = Next<typename T::key_type>();
                    value.emplace(std::move(key), Next<typename T::mapped_type>());
                } else {
                    value.insert(value.end(), Next<typename T::value_type>());
                }
            }
        } else if constexpr (BytesPair<T>) {
            (*this)(value.first, value.second);
        } else {
            value.Members(*this);
        }
    }

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

template <typename... T>
std::string ToBytes(const T&... values) {
    BytesWriter bytes;
    bytes(values...);
    return bytes.Bytes();
}

}  // namespace explorer
