// vtv log: what the provider and the TV wrote to the TV's log.
#include <cctype>
#include <iostream>
#include <iterator>
#include <memory>

#include "json_views.h"
#include "record_filter.h"
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
    std::string since;
    std::string grep;
};

char Letter(int priority) {
    const bool known = priority >= 0 && priority < static_cast<int>(std::size(kPriorities));
    return static_cast<char>(std::toupper(known ? *kPriorities[priority] : '?'));
}

int ParsePriority(const std::string& text) {
    if (text.empty()) {
        return 0;
    }
    const std::string letter = text.size() == 1 ? text : "";
    for (int priority = 3; priority <= 6; ++priority) {
        if (text == kPriorities[priority] ||
            (!letter.empty() && std::toupper(letter[0]) == Letter(priority))) {
            return priority;
        }
    }
    throw vtv::Error(
        vtv::ErrorKind::kUsage,
        "\"" + text + "\" is no priority: write debug, info, warning or error, or D, I, W or E.");
}

void Print(const vtv::LogRecord& record, bool json) {
    if (json) {
        PrintJsonLine(ToJson(record));
        return;
    }
    const bool fatal =
        record.message.rfind("[FATAL]", 0) == 0 || record.message.rfind("[EXCEPTION]", 0) == 0;
    std::cout << Paint(Look::kDim, TimeOfDay(vtv::ToText(record.time), 12) + " ")
              << Letter(record.priority) << ' ' << Paint(Look::kDim, record.tag + " ")
              << PaintPlace(record.file, record.line, record.function)
              << Paint(fatal ? Look::kBad : Look::kPlain, record.message) << '\n';
}

void Log(const Common& common, const LogOptions& options) {
    const vtv::LogFilter filter{options.function, options.tag, ParsePriority(options.priority)};
    const vtv::TimePoint since =
        options.since.empty() ? vtv::TimePoint::min() : ParseSince(options.since);
    const TextSearch search(options.grep);
    vtv::Tv tv(TvDir(common));
    // The reader starts before the first look at its end, so that no record falls in between.
    vtv::LogReader reader(tv, filter, false);
    const auto readNew = [&] {
        std::vector<vtv::LogRecord> records = reader.ReadNew();
        std::erase_if(records, [&](const vtv::LogRecord& record) {
            return record.time < since || !search.Finds(record.message);
        });
        return records;
    };
    const std::vector<vtv::LogRecord> records = readNew();
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
        for (const vtv::LogRecord& record : readNew()) {
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
                "  vtv log --since 10m --priority W --grep 'mva|policy'\n"
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
                     "Only this priority and above: debug, info, warning, error, or D, I, W, E")
        ->type_name("PRIORITY");
    verb->add_option("--since", options->since,
                     "Only from then on: 10m (ago; s, m, h, d), 07:15, 2026-03-29, \"2026-03-29 "
                     "07:15:02\" (UTC, as shown)")
        ->type_name("TIME");
    verb->add_option("-g,--grep", options->grep,
                     "Only messages that this regular expression (as of grep -E) finds something "
                     "in; in any case when it has no capital letter")
        ->type_name("EXPRESSION");
    verb->callback([&common, options] { Log(common, *options); });
}

}  // namespace cli
