// Heap strings that the platform hands over.
#pragma once

#include <cstdlib>
#include <memory>

struct FreeCString {
    void operator()(char* text) const { std::free(text); }
};

// Owns a string that is released with free().
using PlatformString = std::unique_ptr<char, FreeCString>;
