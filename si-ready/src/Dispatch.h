// What every dispatcher shares: comparing keys and finding a key's row.
#pragma once

#include <cstddef>
#include <cstring>

// A null key equals nothing.
inline bool SameKey(const char* a, const char* b) {
    return a != nullptr && b != nullptr && std::strcmp(a, b) == 0;
}

// A null key starts with nothing.
inline bool StartsWith(const char* key, const char* prefix) {
    return key != nullptr && std::strncmp(key, prefix, std::strlen(prefix)) == 0;
}

// The first row with that key, or null. A row is anything with a member `key`.
template <typename Row, std::size_t Count>
const Row* FindRow(const Row (&table)[Count], const char* key) {
    for (const Row& row : table) {
        if (SameKey(row.key, key)) {
            return &row;
        }
    }
    return nullptr;
}

// One row of the visibility and the enable table.
struct RuleRow {
    const char* key;
    bool (*rule)(const char* key, int value);
};
