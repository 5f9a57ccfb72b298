// What a provider adds to the platform calls that it makes. The calls of each question are recorded
// once; then they are made by the provider and bare, in turns. Prints JSON; under callgrind it
// leaves one dump for each of the two, named by the question, and scripts/bench reads those.
//
// provider-bench PROVIDER
#include <dlfcn.h>
#include <json/json.h>
#include <pthread.h>
#include <sys/mman.h>
#include <time.h>
#include <valgrind/callgrind.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "abi/si_provider.h"
#include "si-ready/trace/Trace.h"
#include "silent_platform.h"

// Every allocation of the process is counted: the provider has none of its own.
namespace {
long allocations = 0;
long allocatedBytes = 0;
}  // namespace

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);

void* malloc(std::size_t size) {
    ++allocations;
    allocatedBytes += static_cast<long>(size);
    return __libc_malloc(size);
}
void* calloc(std::size_t count, std::size_t size) {
    ++allocations;
    allocatedBytes += static_cast<long>(count * size);
    return __libc_calloc(count, size);
}
}

namespace {

constexpr int kRuns = 10;  // of the provider and of the bare calls, in turns

#define VOICE "menu/system/general-voice"
constexpr const char* kItems[] = {
    VOICE,
    VOICE "-voice-assistant",
    VOICE "-voice-wake-up",
    VOICE "-voice-always-wake-up",
    VOICE "-voice-screen-on-wake-up",
    VOICE "-situational-hint",
    VOICE "-voice-settings-orvik",
    VOICE "-voice-settings-orvik-cn",
    VOICE "-voice-settings-tencent",
    VOICE "-voice-settings-alexa",
    VOICE "-voice-settings-google",
    VOICE "-voice-settings-salute",
    VOICE "-onboarding",
};

class Library {
  public:
    explicit Library(const char* file) : handle_(dlopen(file, RTLD_NOW)) {
        if (handle_ == nullptr) {
            std::fprintf(stderr, "%s\n", dlerror());
            std::exit(4);
        }
        Find("create_provider", create_);
        Find("delete_provider", destroy_);
        Find("check_visibility_int", visible);
        Find("check_enable_int", enabled);
    }
    // The platform is silent only about a tape.
    void Create() {
        void** slots = nullptr;
        create_(&slots);
        table = reinterpret_cast<SIProviderTable*>(slots);
    }

    int (*visible)(const char*, int) = nullptr;
    int (*enabled)(const char*, int) = nullptr;
    SIProviderTable* table = nullptr;

  private:
    template <typename Function>
    void Find(const char* name, Function*& function) {
        function = reinterpret_cast<Function*>(dlsym(handle_, name));
        if (function == nullptr) {
            std::fprintf(stderr, "%s\n", dlerror());
            std::exit(4);
        }
    }

    void* handle_;
    int (*create_)(void***) = nullptr;
    int (*destroy_)(void***) = nullptr;
};

// What a host asks that shows an item, whatever the item is.
void Look(const Library& provider, const char* key) {
    static std::array<std::array<char, 1024>, 4> texts;
    static std::array<char, 16> action;
    provider.visible(key, 0);
    provider.enabled(key, 0);
    for (const auto ask : {provider.table->get_display_name, provider.table->get_help_text}) {
        char* text = nullptr;
        ask(key, &text);
        std::free(text);
    }
    int value = 0;
    provider.table->get_int(key, &value);
    int count = 0;
    if (ListItem** const items = provider.table->get_list_items(key, &count)) {
        for (int i = 0; i < count; ++i) {
            char* text = nullptr;
            provider.table->list_item_text(items[i], &text);
            provider.table->list_item_value(items[i], &value);
            provider.table->list_item_kind(items[i], &value);
        }
        provider.table->free_list_items(items, count);
    }
    char* reason = nullptr;
    bool isAnswered = false;
    provider.table->get_disable_text(key, &reason, &isAnswered);
    std::free(reason);
    provider.table->get_disablepopup_info(key, texts[0].data(), texts[1].data(), texts[2].data(),
                                          texts[3].data(), &count, action.data());
}

void OpenPage(const Library& provider) {
    for (const char* key : kItems) {
        Look(provider, key);
    }
}

std::string Policy(int assistants) {
    constexpr const char* kIds[] = {"ORVIK2", "ALEXA", "GVA", "SBER", "TENCENT", "SVA"};
    std::string text = "[";
    for (int i = 0; i < assistants; ++i) {
        const std::string number = std::to_string(i + 1);
        text += std::string(i == 0 ? "" : ",") + R"({"VAOrder":)" + number + R"(,"VAId":")" +
                kIds[static_cast<std::size_t>(i) % std::size(kIds)] +
                R"(","VAAppId":"app.assistant-)" + number + R"(","VAName":"Assistant )" + number +
                R"(","VAFFSupport":)" + (i % 2 == 0 ? "true" : "false") + "}";
    }
    return text + "]";
}

struct Question {
    std::string name;
    bench::SilentTv tv;
    std::function<void()> ask;
};

std::vector<Question> Questions(const Library& provider) {
    const bench::SilentTv tv = {"app.assistant-1", Policy(3), false};
    bench::SilentTv traced = tv;
    traced.tracing = true;
    std::vector<Question> questions = {{"page", tv, [&] { OpenPage(provider); }},
                                       {"page, traced", traced, [&] { OpenPage(provider); }}};
    for (const char* key : kItems) {
        const std::string name = key + sizeof VOICE - 1;
        const auto press = [&](const std::string& what, int value) {
            questions.push_back({"press " + (name.empty() ? "voice" : name.substr(1)) + what, tv,
                                 [&provider, key, value] { provider.table->set_int(key, value); }});
        };
        const bool isList = name == "-voice-assistant";
        press(isList ? " 1" : " on", 1);
        press(isList ? " 2" : " off", isList ? 2 : 0);
        press(" popup", SI_ACTION_VALUE);
    }
    for (const int count : {1, 10, 100, 1000}) {
        questions.push_back({"policy of " + std::to_string(count),
                             {"app.assistant-1", Policy(count), false},
                             [] { bench::TellOfPolicy(); }});
    }
    return questions;
}

// ---------------------------------------------------------------------------------------------
// Time and allocations
// ---------------------------------------------------------------------------------------------

struct Sample {
    double nanoseconds = 0;
    long allocations = 0;
    long bytes = 0;
};

// Of the processor: on a busy machine others take their share of the clock's.
double Nanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

Sample Take(const bench::Tape& tape, int times, const std::function<void()>& work) {
    const long allocationsBefore = allocations;
    const long bytesBefore = allocatedBytes;
    const double start = Nanoseconds();
    for (int i = 0; i < times; ++i) {
        bench::Rewind(tape);
        work();
    }
    return {(Nanoseconds() - start) / times, (allocations - allocationsBefore) / times,
            (allocatedBytes - bytesBefore) / times};
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

Json::Value Measure(const Question& question, const bench::Tape& tape) {
    const auto bare = [&] { bench::MakeBareCalls(tape); };
    const double once = Take(tape, 10, question.ask).nanoseconds;
    const int times = std::max(3, static_cast<int>(1e7 / once));  // about 10 ms each
    std::vector<double> provider;
    std::vector<double> alone;
    std::vector<double> ratios;
    Sample own;
    Sample least;
    for (int run = 0; run < kRuns; ++run) {
        own = Take(tape, times, question.ask);
        least = Take(tape, times, bare);
        provider.push_back(own.nanoseconds);
        alone.push_back(least.nanoseconds);
        ratios.push_back(own.nanoseconds / least.nanoseconds);
    }
    Json::Value row;
    row["name"] = question.name;
    row["calls"] = Json::UInt64(tape.size());
    row["logs"] = Json::Int64(std::count_if(tape.begin(), tape.end(), [](const bench::Step& step) {
        return step.call == bench::Call::kLog;
    }));
    row["ns"] = Median(provider);
    row["bare_ns"] = Median(alone);
    row["ratio"] = Median(ratios);
    row["ratio_low"] = *std::min_element(ratios.begin(), ratios.end());
    row["ratio_high"] = *std::max_element(ratios.begin(), ratios.end());
    row["allocations"] = Json::Int64(own.allocations);
    row["bare_allocations"] = Json::Int64(least.allocations);
    row["bytes"] = Json::Int64(own.bytes);
    row["bare_bytes"] = Json::Int64(least.bytes);
    return row;
}

// ---------------------------------------------------------------------------------------------
// Instructions, under callgrind
// ---------------------------------------------------------------------------------------------

void Count(const std::string& name, const bench::Tape& tape, const std::function<void()>& work) {
    bench::Rewind(tape);
    work();  // whatever is done once only has been done
    bench::Rewind(tape);
    CALLGRIND_ZERO_STATS;
    CALLGRIND_TOGGLE_COLLECT;
    work();
    CALLGRIND_TOGGLE_COLLECT;
    CALLGRIND_DUMP_STATS_AT(name.c_str());
}

constexpr int kEvents = 1000;

__attribute__((noinline)) void DoNothing(int i) {
    asm volatile("" : : "r"(i) : "memory");
}
__attribute__((noinline)) void DoNothingTraced(int i) {
    asm volatile("" : : "r"(i) : "memory");
    TRACE_EVENT_AT(1, "value %d", i);
}

void CountTrace() {
    const auto events = [] {
        for (int i = 0; i < kEvents; ++i) {
            DoNothingTraced(i);
        }
    };
    const bench::Tape none;
    bench::SetTracing(false);
    Count("no trace", none, [] {
        for (int i = 0; i < kEvents; ++i) {
            DoNothing(i);
        }
    });
    Count("trace off", none, events);
    bench::SilentTv traced;
    traced.tracing = true;
    const bench::Tape tape = bench::Record(traced, events);
    Count("trace on", tape, events);
    Count("bare trace", tape, [&] { bench::MakeBareCalls(tape); });
}

// ---------------------------------------------------------------------------------------------
// Stack
// ---------------------------------------------------------------------------------------------

constexpr std::size_t kStack = std::size_t{1024} * 1024;
constexpr unsigned char kUntouched = 0xA5;

// How much of a stack the work touches, with the frames below it that any thread has.
std::size_t StackOf(const std::function<void()>& work) {
    auto* const stack = static_cast<unsigned char*>(mmap(
        nullptr, kStack, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0));
    std::memset(stack, kUntouched, kStack);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, stack, kStack);
    pthread_t thread{};
    const auto run = +[](void* asked) -> void* {
        (*static_cast<const std::function<void()>*>(asked))();
        return nullptr;
    };
    if (pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&work)) != 0) {
        std::abort();
    }
    pthread_join(thread, nullptr);
    std::size_t untouched = 0;
    while (untouched < kStack && stack[untouched] == kUntouched) {
        ++untouched;
    }
    munmap(stack, kStack);
    return kStack - untouched;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("Usage: provider-bench PROVIDER\n", stderr);
        return 2;
    }
    Library provider(argv[1]);
    bench::Record({"app.assistant-1", Policy(3), false}, [&] { provider.Create(); });
    Json::Value document;
    Json::Value& rows = document["rows"];
    for (const Question& question : Questions(provider)) {
        // The policy is what the questions are about: the provider knows it before they are asked.
        bench::Record(question.tv, [] { bench::TellOfPolicy(); });
        bench::Record(question.tv, question.ask);
        const bench::Tape tape = bench::Record(question.tv, question.ask);
        if (RUNNING_ON_VALGRIND != 0) {
            Count(question.name + "/provider", tape, question.ask);
            Count(question.name + "/bare", tape, [&] { bench::MakeBareCalls(tape); });
        } else {
            rows.append(Measure(question, tape));
        }
        if (question.name == "page") {
            const auto look = [&] {
                bench::Rewind(tape);
                OpenPage(provider);
            };
            document["stack"] = Json::UInt64(StackOf(look) - StackOf([] {}));
        }
    }
    if (RUNNING_ON_VALGRIND != 0) {
        CountTrace();
    } else {
        std::cout << document << '\n';
    }
    return 0;
}
