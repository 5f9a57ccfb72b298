// How fast a provider is explored, and how the work grows; docs/performance.md has the figures.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <string>
#include <vector>

#include "explorer/asking/exploration.h"
#include "explorer/tv/lazy_tv.h"
#include "virtual-tv/model/policy.h"

namespace {

using namespace explorer;

std::string Provider() {
    const char* named = std::getenv("VTV_PROVIDER");
    return named != nullptr ? named : PROVIDER_FILE;
}

// The questions behind how the page looks.
std::vector<const Question*> Looks() {
    std::vector<const Question*> looks;
    for (const Question& question : Questions()) {
        if (question.item != nullptr && !question.writes) {
            looks.push_back(&question);
        }
    }
    return looks;
}

void ReportQuestions(benchmark::State& state, std::uint64_t questions) {
    const double count = static_cast<double>(questions);
    state.counters["questions"] = count / static_cast<double>(state.iterations());
    state.counters["questions/s"] = benchmark::Counter(count, benchmark::Counter::kIsRate);
}

// Every path of the questions, without anything being made of the answers.
void AskEverything(benchmark::State& state, const Inputs& inputs, const Policy& policy,
                   const std::vector<const Question*>& questions) {
    tv().Use(inputs);
    const Subject subject(Provider(), policy);
    std::atomic<std::uint64_t> runs = 0;
    Choices choices;
    for (auto _ : state) {
        for (const Question* question : questions) {
            ForEachPath(
                choices, runs, [&] { Ask(subject, *question); },
                [] { benchmark::DoNotOptimize(tv().Record()); });
        }
    }
    ReportQuestions(state, runs);
}

void BM_Question(benchmark::State& state, const char* name) {
    const Inputs inputs = LoadInputs(InputsFile());
    AskEverything(state, inputs, inputs.policies.front(), {FindQuestion(name)});
}
BENCHMARK_CAPTURE(BM_Question, enabled, "enabled:voice");
BENCHMARK_CAPTURE(BM_Question, visible, "visible:voice");
BENCHMARK_CAPTURE(BM_Question, dimmed, "enabled:voice-wake-up");
BENCHMARK_CAPTURE(BM_Question, text, "title:voice-settings-google");
BENCHMARK_CAPTURE(BM_Question, read_json, "value:situational-hint");
BENCHMARK_CAPTURE(BM_Question, list, "choices:voice-assistant");
BENCHMARK_CAPTURE(BM_Question, write_json, "set:situational-hint=1");
BENCHMARK_CAPTURE(BM_Question, choose, "set:voice-assistant=2");

double SecondsOf(int who) {
    rusage usage;
    getrusage(who, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// What this process and its workers have computed so far.
double ComputedSeconds() {
    return SecondsOf(RUSAGE_SELF) + SecondsOf(RUSAGE_CHILDREN);
}

// Every question under every policy with one worker, diagrams and proofs included: the time is that
// of the processor.
void BM_WholeTable(benchmark::State& state) {
    const Inputs inputs = LoadInputs(InputsFile());
    std::vector<const Question*> questions;
    for (const Question& question : Questions()) {
        questions.push_back(&question);
    }
    CommonOptions options;
    options.provider = Provider();
    options.workers = 1;
    options.quiet = true;
    std::uint64_t paths = 0;
    for (auto _ : state) {
        const double before = ComputedSeconds();
        const auto exploration = Explore(inputs, questions, options);
        state.SetIterationTime(ComputedSeconds() - before);
        for (const QuestionResult& result : exploration->results) {
            paths += result.Paths();
        }
    }
    ReportQuestions(state, paths);
}
BENCHMARK(BM_WholeTable)->Unit(benchmark::kMillisecond)->UseManualTime();

// --- How the work grows ---

constexpr const char* kIds[] = {"ORVIK2", "GVA", "ALEXA", "SBER", "TENCENT", "SVA", "NEW1", "NEW2"};

std::string AppOf(int assistant) {
    return std::string("com.example.") + kIds[assistant];
}

// A policy of so many assistants, each of which may be the current one.
void BM_Assistants(benchmark::State& state) {
    const int count = static_cast<int>(state.range(0));
    Inputs inputs = LoadInputs(InputsFile());
    std::vector<vtv::Assistant> assistants;
    std::vector<Value> current;
    for (int i = 0; i < count; ++i) {
        assistants.push_back({i + 1, kIds[i], AppOf(i), kIds[i], true});
        current.push_back({Value::Kind::kText, 0, AppOf(i), kIds[i], "string", false});
    }
    inputs.inputs[static_cast<std::size_t>(inputs.CurrentAssistant())].values = current;
    AskEverything(state, inputs, {"generated", {vtv::WritePolicy(assistants)}}, Looks());
}
BENCHMARK(BM_Assistants)->DenseRange(1, 8)->Unit(benchmark::kMillisecond);

// All inputs but the first so many that the page's own visibility reads have one value only.
void BM_Inputs(benchmark::State& state) {
    Inputs inputs = LoadInputs(InputsFile());
    const Question& question = *FindQuestion("visible:voice");
    CommonOptions options;
    options.provider = Provider();
    options.workers = 1;
    options.quiet = true;
    const std::vector<int> order = Explore(inputs, {&question}, options)->results[0].orders[0];
    for (std::size_t i = static_cast<std::size_t>(state.range(0)); i < order.size(); ++i) {
        inputs.inputs[static_cast<std::size_t>(order[i])].values.resize(1);
    }
    AskEverything(state, inputs, inputs.policies.front(), {&question});
}
BENCHMARK(BM_Inputs)->DenseRange(0, 12, 2);

// Each input has at most so many values.
void BM_Values(benchmark::State& state) {
    Inputs inputs = LoadInputs(InputsFile());
    for (Input& input : inputs.inputs) {
        input.values.resize(
            std::min(input.values.size(), static_cast<std::size_t>(state.range(0))));
    }
    AskEverything(state, inputs, inputs.policies.front(), Looks());
}
BENCHMARK(BM_Values)->DenseRange(1, 9, 2)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
