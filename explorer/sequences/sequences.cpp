// vtv explore sequences
#include "sequences.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>

#include "explorer/engine/bytes.h"
#include "explorer/engine/memory.h"
#include "explorer/engine/workers.h"
#include "explorer/invariants/check.h"
#include "explorer/tv/lazy_tv.h"
#include "sequences_result.h"

namespace explorer {

namespace {

// A provider that crashes in more ways than this has been looked at enough.
constexpr std::size_t MOST_CRASHES = 100;

std::string SearchOne(const Inputs& inputs, const NewTv& model, const std::vector<Case>& cases,
                      const SequencesOptions& options, const SearchOptions& searchOptions,
                      Shared& shared) {
    const auto begin = std::chrono::steady_clock::now();
    memoryBooks.poisoning = true;
    ConcreteTv concrete(inputs, model);
    const Stage stage(options.provider, model);
    Search search(stage, concrete, cases, searchOptions, shared);
    const bool finished = search.Run();
    SequencesResult result = ResultOf(search, stage, concrete, !options.tour.empty());
    result.finished = finished;
    result.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    return ToBytes(result);
}

// The shortest sequence of each invariant over all TVs.
std::vector<ShortestBreak> ShortestBreaks(const std::vector<SequencesResult>& results) {
    std::vector<ShortestBreak> breaks;
    for (const Invariant& invariant : Invariants()) {
        ShortestBreak shortest;
        shortest.invariant = &invariant;
        std::vector<std::pair<const SequencesResult*, const BrokenResult*>> all;
        for (const SequencesResult& result : results) {
            for (const BrokenResult& broken : result.broken) {
                if (broken.invariant == invariant.name) {
                    all.emplace_back(&result, &broken);
                }
            }
        }
        if (all.empty()) {
            continue;
        }
        const auto first =
            std::min_element(all.begin(), all.end(), [](const auto& a, const auto& b) {
                return a.second->actions.size() < b.second->actions.size();
            });
        shortest.model = first->first;
        shortest.broken = first->second;
        for (const auto& [model, broken] : all) {
            if (broken != shortest.broken) {
                shortest.alsoOn.push_back(model->model + " (" +
                                          std::to_string(broken->actions.size()) + ")");
            }
        }
        breaks.push_back(std::move(shortest));
    }
    return breaks;
}

void WriteScenarios(const SequencesOptions& options, const std::vector<SequencesResult>& results,
                    std::vector<ShortestBreak>& breaks) {
    for (ShortestBreak& one : breaks) {
        std::filesystem::create_directories(options.scenarios);
        one.file = options.scenarios + "/" + one.invariant->name + ".toml";
        WriteScenarioFile(one.file, one.broken->scenario);
    }
    for (const SequencesResult& result : results) {
        for (std::size_t i = 0; i < result.tours.size(); ++i) {
            std::filesystem::create_directories(options.tour);
            WriteScenarioFile(
                options.tour + "/" + result.model + "-" + std::to_string(i + 1) + ".toml",
                result.tours[i]);
        }
    }
}

// To standard error; false when something is not.
bool ReportWhatIsNotProven(const SequencesOptions& options, const Inputs& inputs,
                           const std::vector<SequencesResult>& results) {
    std::set<std::string> unknown;
    std::uint64_t states = 0;
    bool isWhole = true;
    bool remembers = false;
    for (const SequencesResult& result : results) {
        unknown.insert(result.unknownKeys.begin(), result.unknownKeys.end());
        states += result.states;
        isWhole = isWhole && result.finished && !result.remembers;
        remembers = remembers || result.remembers;
    }
    if (remembers) {
        std::fputs(
            "vtv explore sequences: not proven: the provider remembers what it was asked before, "
            "and sequences are told apart by the TV alone. \"vtv-explore check\" and \"diff\" look "
            "at what it remembers\n",
            stderr);
    }
    ReportUnknownKeys(unknown, inputs);
    ReportRate(options.quiet, states, "states");
    ReportInterruption();
    return isWhole && unknown.empty();
}

}  // namespace

int SequencesMain(const SequencesOptions& options) {
    const std::vector<const Invariant*> invariants = InvariantsOf(options.invariants);
    const std::vector<Case> cases = CasesOf(invariants);
    const Inputs inputs = LoadInputs(InputsFile());
    const std::vector<NewTv> tvs = LoadNewTvs(inputs, options.models);
    CheckSubject(options.provider);

    std::vector<SequencesResult> results(tvs.size());
    for (std::size_t i = 0; i < tvs.size(); ++i) {
        results[i].model = tvs[i].model.name;
    }
    std::vector<SearchOptions> searchOptions(tvs.size());
    for (SearchOptions& one : searchOptions) {
        one.depth = options.depth;
    }
    const auto task = [&](int tv, Shared& shared) {
        const auto index = static_cast<std::size_t>(tv);
        return SearchOne(inputs, tvs[index], cases, options, searchOptions[index], shared);
    };
    const auto finished = [&](const WorkerResult& worker) {
        const auto index = static_cast<std::size_t>(worker.task);
        if (worker.trouble.empty()) {
            results[index] = BytesReader(worker.bytes).Next<SequencesResult>();
            return false;
        }
        // The search is made again up to where it crashed, and goes on behind.
        searchOptions[index].crashes[worker.step] = worker.trouble;
        return searchOptions[index].crashes.size() <= MOST_CRASHES;
    };
    WorkOptions work;
    work.workers = options.workers;
    work.progress = !options.quiet;
    work.what = "states";
    Work(static_cast<int>(tvs.size()), work, task, finished);

    std::vector<ShortestBreak> breaks = ShortestBreaks(results);
    WriteScenarios(options, results, breaks);
    if (options.format == Format::kJson) {
        PrintJson(results, invariants, breaks);
    } else {
        PrintText(results, invariants, breaks);
    }
    const bool isProven = ReportWhatIsNotProven(options, inputs, results);
    if (!breaks.empty()) {
        return kExitNo;
    }
    return isProven ? kExitOk : kExitTrouble;
}

}  // namespace explorer
