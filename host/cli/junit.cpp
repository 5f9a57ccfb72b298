#include "junit.h"

#include <cstdio>
#include <sstream>

namespace cli {

namespace {

std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                // XML 1.0 has no other control characters.
                escaped += static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\t' ? '?' : c;
        }
    }
    return escaped;
}

std::string Attribute(const char* name, const std::string& value) {
    return std::string(" ") + name + "=\"" + Escaped(value) + "\"";
}

// Why it was not played, or not to its end; nothing is said of its steps then.
std::vector<std::string> WhyUnplayed(const host::ScenarioResult& result) {
    return result.error.empty() ? result.problems : std::vector<std::string>{result.error};
}

std::string UnplayedSuite(const host::ScenarioResult& result) {
    const std::vector<std::string> why = WhyUnplayed(result);
    std::string problems;
    for (const std::string& problem : why) {
        problems += problem + "\n";
    }
    return "  <testsuite" + Attribute("name", result.title) + Attribute("file", result.file) +
           Attribute("tests", "1") + Attribute("failures", "0") + Attribute("errors", "1") +
           Attribute("skipped", "0") + Attribute("time", "0.000") + ">\n    <testcase" +
           Attribute("classname", result.file) + Attribute("name", "the scenario can be played") +
           Attribute("time", "0.000") + ">\n      <error" + Attribute("message", why.front()) +
           ">" + Escaped(problems) + "</error>\n    </testcase>\n  </testsuite>\n";
}

std::string Seconds(double seconds) {
    char text[32];
    std::snprintf(text, sizeof text, "%.3f", seconds);
    return text;
}

// Over all of them, as the head of the file has it.
std::string Totals(const std::vector<host::ScenarioResult>& results) {
    size_t tests = 0;
    size_t failures = 0;
    size_t errors = 0;
    size_t skipped = 0;
    double seconds = 0;
    for (const host::ScenarioResult& result : results) {
        if (!WhyUnplayed(result).empty()) {
            ++errors;
            ++tests;
            continue;
        }
        tests += result.steps.size();
        for (const host::StepResult& step : result.steps) {
            failures += step.failures.empty() ? 0 : 1;
            skipped += step.played ? 0 : 1;
            seconds += step.seconds;
        }
    }
    return Attribute("tests", std::to_string(tests)) +
           Attribute("failures", std::to_string(failures)) +
           Attribute("errors", std::to_string(errors)) +
           Attribute("skipped", std::to_string(skipped)) + Attribute("time", Seconds(seconds));
}

}  // namespace

std::string JUnit(const std::vector<host::ScenarioResult>& results) {
    std::ostringstream xml;
    xml << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" << Attribute("name", "vtv run")
        << Totals(results) << ">\n";
    for (const host::ScenarioResult& result : results) {
        if (!WhyUnplayed(result).empty()) {
            xml << UnplayedSuite(result);
            continue;
        }
        size_t failures = 0;
        size_t skipped = 0;
        double seconds = 0;
        for (const host::StepResult& step : result.steps) {
            failures += step.failures.empty() ? 0 : 1;
            skipped += step.played ? 0 : 1;
            seconds += step.seconds;
        }
        xml << "  <testsuite" << Attribute("name", result.title) << Attribute("file", result.file)
            << Attribute("tests", std::to_string(result.steps.size()))
            << Attribute("failures", std::to_string(failures))
            << Attribute("skipped", std::to_string(skipped)) << Attribute("errors", "0")
            << Attribute("time", Seconds(seconds)) << ">\n";
        for (const host::StepResult& step : result.steps) {
            xml << "    <testcase" << Attribute("classname", result.file)
                << Attribute("name", step.name) << Attribute("time", Seconds(step.seconds))
                << ">\n";
            for (const std::string& failure : step.failures) {
                xml << "      <failure" << Attribute("message", failure) << "/>\n";
            }
            if (!step.played) {
                xml << "      <skipped/>\n";
            }
            xml << "    </testcase>\n";
        }
        xml << "  </testsuite>\n";
    }
    xml << "</testsuites>\n";
    return xml.str();
}

}  // namespace cli
