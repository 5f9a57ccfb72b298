// What every dispatcher shares: comparing keys and finding a key's row.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

// A null key equals nothing.
inline bool SameKey(const char* key, std::string_view menuKey) {
    return key != nullptr && key == menuKey;
}

// A null key starts with nothing.
inline bool StartsWith(const char* key, const char* prefix) {
    return key != nullptr && std::strncmp(key, prefix, std::strlen(prefix)) == 0;
}

// The first row with that key, or null. A row is anything with a member `key`, whose length is
// known: the keys begin alike, and most differ in it.
template <typename Row, std::size_t Count>
const Row* FindRow(const Row (&table)[Count], const char* key) {
    if (key == nullptr) {
        return nullptr;
    }
    const std::string_view wanted(key);
    for (const Row& row : table) {
        if (row.key == wanted) {
            return &row;
        }
    }
    return nullptr;
}

// One row of the visibility and the enable table.
struct RuleRow {
    std::string_view key;
    bool (*rule)(const char* key, int value);
};
