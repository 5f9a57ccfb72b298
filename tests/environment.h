// What the environment says about the random tests. They begin at the same place in every run, so
// that a run tells of the code and not of the draw.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <string>

// A variable that is no number fails the test that asks: a test that did nothing would pass.
inline unsigned NumberFromEnvironment(const std::string& name, unsigned otherwise) {
    const char* variable = std::getenv(name.c_str());
    const std::string text = variable != nullptr ? variable : "";
    if (text.empty()) {
        return otherwise;
    }
    std::size_t end = 0;
    unsigned long number = 0;
    if (text.find_first_not_of("0123456789") == std::string::npos && text.size() <= 10) {
        number = std::stoul(text, &end);
    }
    if (end == 0 || number != static_cast<unsigned>(number)) {
        throw std::invalid_argument(name + " must be a number, not \"" + text + '"');
    }
    return static_cast<unsigned>(number);
}

// Where CI runs, nothing may be skipped: a test that was skipped looks like one that passed.
inline bool InCi() {
    const char* const ci = std::getenv("CI");
    return ci != nullptr && std::string(ci) == "true";
}

// SI_MODEL_SEED=random draws one, prints it, and stays with it until the process ends.
inline unsigned Seed() {
    const char* variable = std::getenv("SI_MODEL_SEED");
    if (variable == nullptr || variable != std::string("random")) {
        return NumberFromEnvironment("SI_MODEL_SEED", 20);
    }
    static const unsigned drawn = [] {
        const unsigned seed = std::random_device()();
        std::printf("SI_MODEL_SEED=%u\n", seed);
        std::fflush(stdout);
        return seed;
    }();
    return drawn;
}

// For SCOPED_TRACE: how to run a failed test as it was.
inline std::string SeedNote() {
    return "SI_MODEL_SEED=" + std::to_string(Seed()) + " runs it as it was";
}
