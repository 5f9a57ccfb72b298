// vtv log: what the provider and the TV wrote to the TV's log.
#include <cctype>
#include <iostream>
#include <iterator>
#include <memory>

#include "json_views.h"
#include "verbs.h"

namespace cli {

namespace {

// By the priority's number.
constexpr const char* kPriorities[] = {"?",       "?",     "verbose", "debug", "info",
                                       "warning", "error", "fatal",   "silent"};

struct LogOptions {
    bool follow = false;
    int lines = 0;
    std::string function;
    std::string tag;
    std::string priority;
};

int ParsePriority(const std::string& text) {
    if (text.empty()) {
        return 0;
    }
    for (int priority = 3; priority <= 6; ++priority) {
        if (text == kPriorities[priority]) {
            return priority;
        }
    }
    throw vtv::Error(vtv::ErrorKind::kUsage,
                     "\"" + text + "\" is no priority: write debug, info, warning or error.");
}

char Letter(int priority) {
    const bool known = priority >= 0 && priority < static_cast<int>(std::size(kPriorities));
    return static_cast<char>(std::toupper(known ? *kPriorities[priority] : '?'));
}

void Print(const vtv::LogRecord& record, bool json) {
    if (json) {
        PrintJsonLine(ToJson(record));
        return;
    }
    const bool fatal =
        record.message.rfind("[FATAL]", 0) == 0 || record.message.rfind("[EXCEPTION]", 0) == 0;
    std::cout << Paint(Look::kDim, vtv::ToText(record.time).substr(11, 12) + " ")
              << Letter(record.priority) << ' ' << Paint(Look::kDim, record.tag + " ")
              << PaintPlace(record.file, record.line, record.function)
              << Paint(fatal ? Look::kBad : Look::kPlain, record.message) << '\n';
}

void Log(const Common& common, const LogOptions& options) {
    vtv::Tv tv(TvDir(common));
    const vtv::LogFilter filter{options.function, options.tag, ParsePriority(options.priority)};
    // The reader starts before the first look at its end, so that no record falls in between.
    vtv::LogReader reader(tv, filter, false);
    const std::vector<vtv::LogRecord> records = reader.ReadNew();
    const size_t wanted = options.lines > 0 ? static_cast<size_t>(options.lines) : records.size();
    for (size_t i = records.size() - std::min(wanted, records.size()); i < records.size(); ++i) {
        Print(records[i], common.json);
    }
    if (!options.follow) {
        return;
    }
    tv.WatchLog([] {});
    do {
        tv.Dispatch();
        for (const vtv::LogRecord& record : reader.ReadNew()) {
            Print(record, common.json);
        }
        std::cout.flush();
    } while (WaitForTv(tv));
}

}  // namespace

void AddLog(CLI::App& app, Common& common) {
    const auto options = std::make_shared<LogOptions>();
    CLI::App* verb =
        AddVerb(app, common, "log", "Print the TV's log",
                "  vtv log --lines 20\n"
                "  vtv log --follow --function set_int\n"
                "  vtv log --tag VTV                only what the TV itself says\n"
                "  vtv log --json                   one JSON document a line\n\n"
                "A line tells when, how grave (D, I, W or E), whose, where in the source\n"
                "(file:line function), and what.",
                kTv | kJson);
    verb->add_flag("-f,--follow", options->follow, "Stay, and print what is added");
    verb->add_option("-n,--lines", options->lines, "Only the last so many")
        ->type_name("N")
        ->check(WholeNumber(1));
    verb->add_option("--function", options->function, "Only records of this function")
        ->type_name("NAME");
    verb->add_option("--tag", options->tag,
                     "Only this tag: SI-MENU is the provider, VTV the TV itself")
        ->type_name("TAG");
    verb->add_option("--priority", options->priority,
                     "Only this priority and above: debug, info, warning, error")
        ->type_name("PRIORITY");
    verb->callback([&common, options] { Log(common, *options); });
}

}  // namespace cli
