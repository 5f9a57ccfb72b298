// What must hold for every input.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

#include "virtual-tv/model/error.h"

namespace fuzz {

// Prints what was promised and stops the fuzzer, which then keeps the input.
inline void Require(bool kept, const char* promise) {
    if (!kept) {
        std::fprintf(stderr, "not kept: %s\n", promise);
        std::abort();
    }
}

// Runs what may refuse an input, with a text for people that names the file; any other exception
// ends the fuzzer.
template <typename Read>
void ReadsOrRefuses(const std::string& file, const Read& read) {
    try {
        read();
    } catch (const vtv::Error& error) {
        Require(std::string(error.what()).find(file) != std::string::npos,
                "a refusal names the file");
    }
}

// Runs what takes every input.
template <typename Read>
void Reads(const Read& read) {
    try {
        read();
    } catch (const vtv::Error& error) {
        std::fprintf(stderr, "%s\n", error.what());
        Require(false, "what was read once can be used");
    }
}

}  // namespace fuzz
