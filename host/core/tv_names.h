// The state of a TV around its page, as people name it on a command line: "account", "network", ...
#pragma once

#include <string>
#include <vector>

#include "virtual-tv/virtual_tv.h"

namespace host {

struct StateName {
    const char* name;
    // The value in words: "signed-in", "on", ...
    std::string (*get)(const vtv::Tv& tv);
    // The value as get() tells it; throws kUsage, or kNoSuch for a language, for what is none.
    std::string (*parse)(const std::string& text);
    void (*put)(vtv::Tv& tv, const std::string& value);  // of parse()

    void set(vtv::Tv& tv, const std::string& text) const { put(tv, parse(text)); }
};

const std::vector<StateName>& StateNames();
// "consent/tnc" is "tnc". Null for an unknown name.
const StateName* FindStateName(const std::string& name);

// Why the page has no texts in a language; empty when it has. Any other can be set all the same,
// as the setting that it is.
std::string ProblemOfLanguage(const std::string& language);
// "on" or "off"; throws kUsage.
bool ParseSwitch(const std::string& text);
// Throws kNoSuch with what can be named.
[[noreturn]] void ThrowNoSuchName(const std::string& name);

}  // namespace host
