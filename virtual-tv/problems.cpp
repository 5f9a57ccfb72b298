// What is wrong with a TV's files.
#include "running_apps.h"
#include "texts.h"
#include "tv_impl.h"

namespace vtv {

namespace {

std::string ProblemOf(const Tv::Impl& tv, const Store& store, const Setting& setting) {
    if (!setting.value) {
        return setting.problem;
    }
    const std::string problem = &store == &tv.state    ? ProblemOfState(setting.key, *setting.value)
                                : &store == &tv.faults ? ProblemOfFault(*setting.value)
                                                       : "";
    return problem.empty() ? "" : store.Damaged(setting.key, problem);
}

void AddProblems(const Tv::Impl& tv, const Store& store, std::vector<std::string>* problems) {
    if (!store.Problem().empty()) {
        problems->push_back(store.Problem());
        return;
    }
    try {
        for (const Setting& setting : store.List()) {
            if (std::string problem = ProblemOf(tv, store, setting); !problem.empty()) {
                problems->push_back(std::move(problem));
            }
        }
    } catch (const HasTooMany& error) {
        problems->emplace_back(error.what());
    }
}

}  // namespace

std::vector<std::string> ProblemsAtStart(Tv::Impl& tv, const std::string& language) {
    std::vector<std::string> problems;
    for (const Store* store : tv.Stores()) {
        AddProblems(tv, *store, &problems);
    }
    ListRunning(tv.dir, &problems);
    for (std::string& problem : ProblemsOfTexts(language)) {
        problems.push_back(std::move(problem));
    }
    return problems;
}

std::vector<std::string> Tv::Problems() const {
    std::vector<std::string> problems = ProblemsAtStart(*impl_, Language());
    for (std::string& problem : ProblemsOfLaunches(impl_->dir)) {
        problems.push_back(std::move(problem));
    }
    return problems;
}

}  // namespace vtv
