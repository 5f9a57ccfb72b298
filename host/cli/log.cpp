// vtv log: what the provider and the TV wrote to the TV's log.
#include <iostream>
#include <memory>

#include "json_views.h"
#include "verbs.h"

namespace cli {

namespace {

constexpr int kErrorPriority = 6;

struct LogOptions {
    bool follow = false;
    int lines = 0;
    std::string function;
    std::string tag;
    std::string priority;
};

int ParsePriority(const std::string& text) {
    static const std::vector<std::pair<std::string, int>> names = {
        {"", 0}, {"debug", 3}, {"info", 4}, {"warning", 5}, {"error", kErrorPriority}};
    for (const auto& [name, priority] : names) {
        if (text == name) {
            return priority;
        }
    }
    throw vtv::Error(vtv::ErrorKind::kUsage,
                     "\"" + text + "\" is no priority: write debug, info, warning or error.");
}

void Print(const vtv::LogRecord& record, bool json) {
    if (json) {
        PrintJsonLine(ToJson(record));
        return;
    }
    const bool fatal =
        record.message.rfind("[FATAL]", 0) == 0 || record.message.rfind("[EXCEPTION]", 0) == 0;
    const std::string place =
        record.function.empty() ? "" : record.function + "(" + std::to_string(record.line) + ") ";
    std::cout << Paint(Look::kDim, vtv::ToText(record.time).substr(11, 12) + " ")
              << (record.priority >= kErrorPriority ? "E "
                  : record.priority == 5            ? "W "
                                                    : "I ")
              << Paint(Look::kDim, record.tag + " ") << Paint(Look::kNote, place)
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
    CLI::App* verb = AddVerb(app, common, "log", "Print the TV's log",
                             "  vtv log --lines 20\n"
                             "  vtv log --follow --function set_int\n"
                             "  vtv log --tag VTV                only what the TV itself says\n"
                             "  vtv log --json                   one JSON document a line",
                             kTv | kJson);
    verb->add_flag("-f,--follow", options->follow, "Stay, and print what is added");
    verb->add_option("-n,--lines", options->lines, "Only the last so many")
        ->check(CLI::PositiveNumber);
    verb->add_option("--function", options->function, "Only records of this function");
    verb->add_option("--tag", options->tag,
                     "Only this tag: SI-MENU is the provider, VTV the TV itself");
    verb->add_option("--priority", options->priority,
                     "Only this priority and above: debug, info, warning, error");
    verb->callback([&common, options] { Log(common, *options); });
}

}  // namespace cli
