// A value as the content of a file of the store.
#pragma once

#include <string>
#include <string_view>

#include "store.h"
#include "virtual-tv/model/limits.h"

namespace vtv {

inline constexpr size_t kLargestStoreFile = kLargestValue + 64;  // with its header

// The text is the value's.
std::string FormatStored(const Value& value, const std::string& text);
// The reverse. Returns what is wrong, or null.
const char* ParseStored(std::string_view content, Value* value);

}  // namespace vtv
