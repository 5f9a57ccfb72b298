// What a step of a scenario expects, checked, and held against what came of it.
#pragma once

#include <vector>

#include "scenario_judge.h"
#include "scenario_reader.h"

namespace host {

struct Reading;  // scenario_members.h

// What the step expects; without a word of it, that its press is not refused and does not fail.
// Notes what is wrong.
std::vector<Expectation> ReadExpectations(ScenarioReader& reader, const toml::table& step);
// The part of it that is about items: "page" and "answer".
Expectation ReadPageExpectation(ScenarioReader& reader, const toml::node& node);
Expectation ReadAnswerExpectation(ScenarioReader& reader, const toml::node& node);
// About the log: each text is part of a record, in that order; of none; the whole records, one
// right after the other. And about the trace: each is part of an event's message.
Expectation ReadLog(const Reading& reading, const toml::node& node);
Expectation ReadNoLog(const Reading& reading, const toml::node& node);
Expectation ReadLogRun(const Reading& reading, const toml::node& node);
Expectation ReadExpectedTrace(const Reading& reading, const toml::node& node);

}  // namespace host
