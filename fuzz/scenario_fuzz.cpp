// A scenario of anybody's is read, and all that is wrong with it is told with the file.
#include <cstdint>
#include <string>

#include "host/core/scenario.h"
#include "promises.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    fuzz::ReadsOrRefuses("scenario.toml", [&] {
        const host::Scenario scenario = host::ParseScenario(text, "scenario.toml");
        for (const std::string& problem : scenario.problems) {
            fuzz::Require(problem.find(".toml") != std::string::npos,
                          "a problem of a scenario names the file");
        }
    });
    return 0;
}
