// Every verb of vtv, as the program itself lists them: a new one is tested from its first day.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "vtv_process.h"

class EveryVerbTest : public VtvTest {
  protected:
    // As it is typed: "show", "app list".
    std::vector<std::string> Verbs() {
        std::vector<std::string> verbs;
        for (const std::string& verb : Offered({})) {
            const std::vector<std::string> below = Below(verb);
            for (const std::string& one : below) {
                verbs.push_back(verb + " " + one);
            }
            if (below.empty()) {
                verbs.push_back(verb);
            }
        }
        EXPECT_GE(verbs.size(), 36U);
        return verbs;
    }

    // What may be typed behind these words.
    std::vector<std::string> Offered(std::vector<std::string> words) {
        words.insert(words.begin(), "__complete");
        words.emplace_back();
        std::istringstream lines(Ok(words));
        std::vector<std::string> offered;
        for (std::string line; std::getline(lines, line);) {
            offered.push_back(line);
        }
        return offered;
    }
    // The verbs of a group, as of "app"; none of a verb.
    std::vector<std::string> Below(const std::string& verb) {
        const std::string usage = "\nUsage: vtv " + verb + " [OPTIONS] VERB ...";
        const bool isGroup = Ok({verb, "--help"}).find(usage) != std::string::npos;
        return isGroup ? Offered({verb}) : std::vector<std::string>();
    }
};
