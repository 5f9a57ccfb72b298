// What was read from a TV in words, and what could have been read instead.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "virtual-tv/virtual_tv.h"

namespace host {

// What a read found, in words: "signed out", "the terms are not agreed",
// "db/menu/voice/is_k_voice is true". Of a setting with an entry for each assistant it tells the
// entry of the one that is given.
std::string Describe(const vtv::Read& read, const vtv::Tv& tv, const std::string& assistant);
std::string Describe(const vtv::Read& read, const vtv::Tv& tv);  // of the current one

// Something that is supposed to be otherwise.
struct Supposition {
    vtv::Read was;
    vtv::Read read;    // the same read with another value; absent: it fails
    std::string now;   // "the terms are not agreed"
    std::string then;  // "consent tnc"; what it would be like "with"
    // Tells nothing more where something else about the same read changes the answer already.
    bool lastResort = false;
    // The call works that was told to fail: whatever it is asked for, it tells what the TV has.
    bool mends = false;
};
Supposition Mended(const std::string& function);

// What the TV is taken to be where a supposition depends on it.
struct Circumstances {
    std::string assistant;  // application id of the current one
    std::string policy;
};
Circumstances CircumstancesOf(const vtv::Tv& tv);

// Every other value that is known of what was read, the most usual first.
std::vector<Supposition> Suppositions(const vtv::Read& read, const vtv::Tv& tv,
                                      const Circumstances& circumstances);

// A setting's text; empty when it is missing, damaged or no text.
std::string TextOf(const vtv::Tv& tv, const std::string& key);

}  // namespace host
