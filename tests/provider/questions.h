// Everything that a host may ask, on TVs that lead to different paths: for tests that disturb each
// platform call or allocation in turn.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "page.h"

struct Situation {
    const char* name;
    void (*prepare)();
};
inline void PrintTo(const Situation& situation, std::ostream* out) {
    *out << situation.name;
}
extern const std::vector<Situation> SITUATIONS;

// What a host may ask. The answer is a number that is 0 when it is neutral.
struct Action {
    std::string name;
    std::function<int(SIProviderTable*)> run;
    bool mayRunOutOfMemory = false;  // std::bad_alloc may leave it
    int firstAllocation = 1;         // allocations before it are not made to fail
    void (*prepare)() = [] {};       // after the situation
};
std::vector<Action> Actions();

class AnySituation : public Provider {
  protected:
    // The situation as it was before the action, whatever the action did to it: four assistants.
    static void Prepare(const Situation& situation, const Action& action);
};

class EverySituation : public AnySituation, public testing::WithParamInterface<Situation> {
  protected:
    static void Prepare(const Action& action) { AnySituation::Prepare(GetParam(), action); }
};

#define ON_EVERY_SITUATION(suite)                                                                  \
    INSTANTIATE_TEST_SUITE_P(On, suite, testing::ValuesIn(SITUATIONS), [](const auto& situation) { \
        return std::string(situation.param.name);                                                  \
    })
