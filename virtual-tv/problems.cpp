// What is wrong with a TV's files.
#include "running_apps.h"
#include "texts.h"
#include "tv_impl.h"

namespace vtv {

std::vector<std::string> ProblemsAtStart(Tv::Impl& tv, const std::string& language) {
    std::vector<std::string> problems;
    for (const Store* store : tv.Stores()) {
        if (!store->Problem().empty()) {
            problems.push_back(store->Problem());
            continue;
        }
        for (const Setting& setting : store->List()) {
            std::string problem = setting.problem;
            if (setting.value && store == &tv.state) {
                problem = ProblemOfState(setting.key, *setting.value);
            } else if (setting.value && store == &tv.faults) {
                problem = ProblemOfFault(*setting.value);
            }
            if (!problem.empty()) {
                problems.push_back(setting.value ? store->Damaged(setting.key, problem) : problem);
            }
        }
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
