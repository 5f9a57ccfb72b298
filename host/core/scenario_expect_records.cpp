// What a scenario expects of the records that a step leaves: in the log, and of the trace.
#include <algorithm>

#include "scenario_expect.h"
#include "scenario_members.h"

namespace host {

namespace {

using Texts = std::vector<std::string>;

// "function: message" of the step's records.
Texts Records(const StepOutcome& outcome) {
    Texts texts;
    const std::vector<vtv::LogRecord> records = outcome.tv->ReadLog();
    for (size_t i = outcome.logBefore; i < records.size(); ++i) {
        texts.push_back(records[i].function + ": " + records[i].message);
    }
    return texts;
}

auto Holding(const std::string& part) {
    return [&part](const std::string& text) { return text.find(part) != std::string::npos; };
}

}  // namespace

Expectation ReadLog(const Reading& reading, const toml::node& node) {
    return [wanted = reading.reader.Some(node, reading.name), line = LineOf(node)](Judge& judge) {
        const Texts records = Records(judge.Outcome());
        auto at = records.begin();
        for (const std::string& part : wanted) {
            at = std::find_if(at, records.end(), Holding(part));
            if (at == records.end()) {
                judge.Fail(line, "the log of this step has no " + InQuotes(part));
                return;
            }
            ++at;
        }
    };
}

Expectation ReadNoLog(const Reading& reading, const toml::node& node) {
    return [wanted = reading.reader.Some(node, reading.name), line = LineOf(node)](Judge& judge) {
        const Texts records = Records(judge.Outcome());
        for (const std::string& part : wanted) {
            const auto found = std::find_if(records.begin(), records.end(), Holding(part));
            if (found != records.end()) {
                judge.Fail(line, "the log of this step has " + InQuotes(*found));
            }
        }
    };
}

Expectation ReadLogRun(const Reading& reading, const toml::node& node) {
    return [wanted = reading.reader.Some(node, reading.name), line = LineOf(node)](Judge& judge) {
        const Texts records = Records(judge.Outcome());
        if (std::search(records.begin(), records.end(), wanted.begin(), wanted.end()) ==
            records.end()) {
            judge.Fail(
                line, "the log of this step does not have these records in a row: " + List(wanted));
        }
    };
}

Expectation ReadExpectedTrace(const Reading& reading, const toml::node& node) {
    return [wanted = reading.reader.Some(node, reading.name), line = LineOf(node)](Judge& judge) {
        Texts messages;
        const std::vector<vtv::TraceEvent> events = judge.Outcome().tv->ReadTrace();
        for (size_t i = judge.Outcome().traceBefore; i < events.size(); ++i) {
            messages.push_back(events[i].message);
        }
        for (const std::string& part : wanted) {
            if (std::none_of(messages.begin(), messages.end(), Holding(part))) {
                judge.Fail(line, "the trace of this step has no " + InQuotes(part) + ", but " +
                                     List(messages));
            }
        }
    };
}

}  // namespace host
