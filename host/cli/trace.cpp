// vtv trace and vtv fault: looking into the platform, and breaking it.
#include <algorithm>
#include <climits>
#include <iostream>
#include <memory>
#include <tuple>

#include "host/core/tv_names.h"
#include "json_views.h"
#include "program/visible_text.h"
#include "record_filter.h"
#include "verbs.h"

namespace cli {

namespace {

struct TraceOptions {
    std::string onOff;
    std::string file;
    bool clear = false;
    bool follow = false;
    std::string function;
    std::string grep;
};

void Print(const vtv::TraceEvent& event) {
    std::cout << Paint(Look::kDim, TimeOfDay(vtv::ToText(event.time), 15) + " ")
              << PaintPlace(event.file, event.line, event.function)
              << program::OneLine(event.message);
    for (const vtv::TraceArgument& argument : event.arguments) {
        std::cout << Paint(Look::kDim, "  " + argument.type + " ")
                  << program::OneLine(argument.value);
    }
    std::cout << '\n';
}

// An event names its function as the compiler does: "void f(int)".
bool IsOf(const vtv::TraceEvent& event, const std::string& function) {
    const std::string text = " " + event.function;
    for (const char* before : {" ", "::"}) {
        if (text.find(before + function + "(") != std::string::npos) {
            return true;
        }
    }
    return event.function == function;
}

// Those that are wanted.
std::vector<vtv::TraceEvent> Wanted(std::vector<vtv::TraceEvent> events,
                                    const TraceOptions& options, const TextSearch& search) {
    std::erase_if(events, [&](const vtv::TraceEvent& event) {
        return (!options.function.empty() && !IsOf(event, options.function)) ||
               !search.Finds(event.message);
    });
    return events;
}

bool IsSame(const vtv::TraceEvent& a, const vtv::TraceEvent& b) {
    return std::tie(a.time, a.pid, a.thread, a.line, a.message) ==
           std::tie(b.time, b.pid, b.thread, b.line, b.message);
}

void Follow(const Common& common, vtv::Tv& tv, const TraceOptions& options,
            const TextSearch& search) {
    if (!tv.TraceEnabled()) {
        std::cerr << "Recording is off. Switch it on: vtv trace on\n";
    }
    tv.WatchTrace([] {});
    vtv::TraceEvent last;
    do {
        tv.Dispatch();
        const std::vector<vtv::TraceEvent> events = Wanted(tv.ReadTrace(), options, search);
        // The oldest are forgotten in time, and all when the trace is cleared.
        const auto told =
            std::find_if(events.rbegin(), events.rend(),
                         [&](const vtv::TraceEvent& event) { return IsSame(event, last); });
        std::for_each(told.base(), events.end(), [&](const vtv::TraceEvent& event) {
            if (common.json) {
                PrintJsonLine(ToJson(event));
            } else {
                Print(event);
            }
            last = event;
        });
        std::cout.flush();
    } while (WaitForTv(tv));
}

void Trace(const Common& common, const TraceOptions& options) {
    vtv::Tv tv(TvDir(common));
    if (!options.onOff.empty()) {
        const bool isOn = host::ParseSwitch(options.onOff);
        Recorder recorder(common, tv, {{"trace", isOn}});
        tv.SetTraceEnabled(isOn);
        recorder.Done();
        return;
    }
    if (!options.file.empty()) {
        WriteFile(options.file, tv.ExportTrace());
        return;
    }
    if (options.clear) {
        tv.ClearTrace();
        return;
    }
    const TextSearch search(options.grep);
    if (options.follow) {
        Follow(common, tv, options, search);
        return;
    }
    const std::vector<vtv::TraceEvent> events = Wanted(tv.ReadTrace(), options, search);
    if (common.json) {
        Json::Value json;
        json["enabled"] = tv.TraceEnabled();
        json["events"] = Json::Value(Json::arrayValue);
        for (const vtv::TraceEvent& event : events) {
            json["events"].append(ToJson(event));
        }
        PrintJson(json);
        return;
    }
    for (const vtv::TraceEvent& event : events) {
        Print(event);
    }
    if (events.empty()) {
        const bool isFiltered = !options.function.empty() || !options.grep.empty();
        std::cout << (isFiltered          ? "No such event has been recorded.\n"
                      : tv.TraceEnabled() ? "Nothing has been recorded yet.\n"
                                          : "Recording is off. Switch it on: vtv trace on\n");
    }
}

void AddTraceVerb(CLI::App& app, Common& common) {
    const auto options = std::make_shared<TraceOptions>();
    CLI::App* verb = AddVerb(
        app, common, "trace", "Record and print the provider's trace events",
        "  vtv trace on\n"
        "  vtv press voice-wake-up && vtv trace\n"
        "  vtv trace --follow --grep wake   as it happens; with --json one document a line\n"
        "  vtv trace --export trace.json    open it in ui.perfetto.dev or chrome://tracing",
        kTv | kJson | kRecord);
    CLI::Option* onOff = verb->add_option("SWITCH", options->onOff, "on or off");
    CLI::Option* file =
        verb->add_option("--export", options->file, "Write a file for a trace viewer")
            ->type_name("FILE")
            ->excludes(onOff);
    CLI::Option* clear = verb->add_flag("--clear", options->clear, "Forget what was recorded")
                             ->excludes(onOff)
                             ->excludes(file);
    PrintsWithout(*verb, {onOff, clear});
    verb->get_option("--json")->excludes(file);
    verb->add_flag("-f,--follow", options->follow, "Stay, and print what is added")
        ->excludes(onOff)
        ->excludes(file)
        ->excludes(clear);
    const auto addFilter = [&](const char* name, std::string& filter, const char* what,
                               const char* type) {
        verb->add_option(name, filter, what)
            ->type_name(type)
            ->excludes(onOff)
            ->excludes(file)
            ->excludes(clear);
    };
    addFilter("--function", options->function, "Only events of this function", "NAME");
    addFilter("-g,--grep", options->grep,
              "Only messages that this regular expression (as of grep -E) finds something in; in "
              "any case when it has no capital letter",
              "EXPRESSION");
    verb->callback([&common, options] { Trace(common, *options); });
}

struct FaultOptions {
    std::string function;
    bool always = false;
    bool clear = false;
    bool functions = false;
    int slow = 0;
    int result = -1;
};

const char* KindName(vtv::Fault::Kind kind) {
    switch (kind) {
        case vtv::Fault::Kind::kOnce:
            return "once";
        case vtv::Fault::Kind::kAlways:
            return "always";
        case vtv::Fault::Kind::kSlow:
            break;
    }
    return "slow";
}

std::map<std::string, vtv::Value> ToMembers(const vtv::Fault& fault) {
    if (fault.kind == vtv::Fault::Kind::kSlow) {
        return {{"function", fault.function}, {"slow", fault.delayMs}};
    }
    return {{"function", fault.function},
            {"always", fault.kind == vtv::Fault::Kind::kAlways},
            {"result", fault.result}};
}

void ListFaults(const Common& common, const vtv::Tv& tv) {
    Json::Value json(Json::arrayValue);
    for (const vtv::Fault& fault : tv.Faults()) {
        Json::Value entry;
        entry["function"] = fault.function;
        entry["kind"] = KindName(fault.kind);
        entry["result"] = fault.result;
        entry["delay_ms"] = fault.delayMs;
        json.append(entry);
        if (!common.json) {
            std::cout << program::OneLine(fault.function) << "  " << KindName(fault.kind)
                      << (fault.kind == vtv::Fault::Kind::kSlow
                              ? " " + std::to_string(fault.delayMs) + " ms"
                              : " returns " + std::to_string(fault.result))
                      << '\n';
        }
    }
    if (common.json) {
        PrintJson(json);
    }
}

void Fault(const Common& common, const FaultOptions& options) {
    if (options.functions) {
        for (const std::string& function : vtv::PlatformFunctions()) {
            std::cout << function << '\n';
        }
        return;
    }
    vtv::Tv tv(TvDir(common));
    if (options.function.empty() && options.clear) {
        Recorder recorder(common, tv, {{"clear-faults", true}});
        tv.ClearFaults();
        recorder.Done();
    } else if (options.function.empty()) {
        ListFaults(common, tv);
    } else if (options.clear) {
        Recorder recorder(common, tv, {{"clear-faults", options.function}});
        if (!tv.ClearFault(options.function)) {
            throw vtv::Error(vtv::ErrorKind::kNoSuch,
                             options.function + ": no such fault was asked for. See: vtv fault");
        }
        recorder.Done();
    } else {
        vtv::Fault fault;
        fault.function = options.function;
        fault.kind = options.slow > 0 ? vtv::Fault::Kind::kSlow
                     : options.always ? vtv::Fault::Kind::kAlways
                                      : vtv::Fault::Kind::kOnce;
        fault.result = options.result;
        fault.delayMs = options.slow;
        Recorder recorder(common, tv, {{"fault", ToMembers(fault)}});
        tv.SetFault(fault);
        recorder.Done();
    }
}

void AddFaultVerb(CLI::App& app, Common& common) {
    const auto options = std::make_shared<FaultOptions>();
    CLI::App* verb = AddVerb(app, common, "fault", "Make a platform call of the TV fail, or slow",
                             "  vtv fault vconf_set_str                  the next call fails\n"
                             "  vtv fault sso_get_login_state --always\n"
                             "  vtv fault aul_launch_app --slow 500\n"
                             "  vtv fault --clear                        all of them\n"
                             "  vtv fault --functions                    what can be made to fail",
                             kTv | kJson | kRecord);
    CLI::Option* function = verb->add_option("FUNCTION", options->function, "A platform call");
    CLI::Option* always =
        verb->add_flag("--always", options->always, "Every call from now on, not only the next")
            ->needs(function);
    CLI::Option* slow = verb->add_option("--slow", options->slow,
                                         "Delay each call by so many milliseconds, at most 5000")
                            ->type_name("MS")
                            ->check(WholeNumber(1))
                            ->needs(function)
                            ->excludes(always);
    CLI::Option* result =
        verb->add_option("--result", options->result, "What a failing call returns")
            ->type_name("N")
            ->check(WholeNumber(INT_MIN))
            ->capture_default_str()
            ->needs(function)
            ->excludes(slow);
    CLI::Option* clear = verb->add_flag("--clear", options->clear,
                                        "Forget the fault; all of them without a FUNCTION")
                             ->excludes(always)
                             ->excludes(slow)
                             ->excludes(result);
    CLI::Option* functions =
        verb->add_flag("--functions", options->functions, "List the calls that can be made to fail")
            ->excludes(function)
            ->excludes(clear)
            ->excludes(verb->get_option("--tv"));
    PrintsWithout(*verb, {function, clear});
    verb->get_option("--json")->excludes(functions);
    verb->callback([&common, options] { Fault(common, *options); });
}

}  // namespace

void AddTraceVerbs(CLI::App& app, Common& common) {
    AddTraceVerb(app, common);
    AddFaultVerb(app, common);
}

}  // namespace cli
