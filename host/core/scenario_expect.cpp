#include "scenario_expect.h"

#include <algorithm>

#include "scenario_members.h"
#include "virtual-tv/model/known_settings.h"

namespace host {

namespace {

using Texts = std::vector<std::string>;

// ---------------------------------------------------------------------------------------------
// What a press brings
// ---------------------------------------------------------------------------------------------

const std::vector<Sight>& SightsOf(const StepOutcome& outcome) {
    static const std::vector<Sight> kNothing;
    return outcome.press ? outcome.press->sights : kNothing;
}

// False, with a failure, where nothing was pressed that could have brought something.
bool RequirePressed(Judge& judge, int line) {
    if (!judge.Outcome().press) {
        judge.Fail(line, "nothing was pressed in this step: add a \"press\"");
    }
    return judge.Outcome().press.has_value();
}

Texts SightWords() {
    Texts words;
    for (const Sight::Kind kind : kSightKinds) {
        if (kind != Sight::Kind::kChange) {  // told by expect.page
            words.emplace_back(ToText(kind));
        }
    }
    return words;
}

Expectation ReadSees(const Reading& reading, const toml::node& node) {
    const Texts wanted = reading.reader.Texts(node, reading.name);
    const Texts known = SightWords();
    for (const std::string& word : wanted) {
        if (std::find(known.begin(), known.end(), word) == known.end()) {
            std::string words;
            for (const std::string& one : known) {
                words += (words.empty() ? "" : ", ") + one;
            }
            reading.reader.Problem(node, "a press brings no \"" + word + "\"." +
                                             DidYouMean(word, known) + " It brings: " + words +
                                             ".");
        }
    }
    return [wanted, line = LineOf(node)](Judge& judge) {
        Texts kinds;
        for (const Sight& sight : SightsOf(judge.Outcome())) {
            if (sight.kind != Sight::Kind::kChange) {
                kinds.emplace_back(ToText(sight.kind));
            }
        }
        if (RequirePressed(judge, line)) {
            judge.SameList(line, "the viewer sees", wanted, kinds);
        }
    };
}

struct BoxMember {
    const char* name;
    bool isList;
    Texts (*found)(const Box& box);
};
constexpr BoxMember kBoxMembers[] = {
    {"title", false, [](const Box& box) { return Texts{box.title}; }},
    {"message", false, [](const Box& box) { return Texts{box.message}; }},
    {"buttons", true, [](const Box& box) { return box.buttons; }},
};

// A confirmation, or the popup of a dimmed item.
Expectation ReadBox(const Reading& reading, const toml::node& node) {
    std::vector<std::function<void(Judge&, const Box&)>> checks;
    const toml::table& table = reading.reader.Table(node, reading.name);
    reading.reader.Members(
        table, reading.name, kBoxMembers, [&](const BoxMember& member, const toml::node& value) {
            const Texts wanted = member.isList ? reading.reader.Texts(value, member.name)
                                               : Texts{reading.reader.Text(value, member.name)};
            const std::string what = reading.name + " " + member.name;
            checks.push_back(
                [wanted, what, member, line = LineOf(value)](Judge& judge, const Box& box) {
                    if (member.isList) {
                        judge.SameList(line, what, wanted, member.found(box));
                    } else {
                        judge.Same(line, what, wanted.front(), member.found(box).front());
                    }
                });
        });
    const auto kind = reading.name == "box" ? Sight::Kind::kBox : Sight::Kind::kPopup;
    return [checks, kind, line = LineOf(node)](Judge& judge) {
        const std::vector<Sight>& sights = SightsOf(judge.Outcome());
        const auto sight = std::find_if(sights.begin(), sights.end(),
                                        [&](const Sight& one) { return one.kind == kind; });
        if (sight == sights.end()) {
            judge.Fail(line, std::string("no ") + ToText(kind) + " was shown");
            return;
        }
        for (const auto& check : checks) {
            check(judge, *sight->box);
        }
    };
}

Expectation ReadReason(const Reading& reading, const toml::node& node) {
    const Texts wanted = reading.reader.Texts(node, reading.name);
    return [wanted, line = LineOf(node)](Judge& judge) {
        Texts found;
        for (const Sight& sight : SightsOf(judge.Outcome())) {
            if (sight.kind == Sight::Kind::kReason) {
                found.push_back(sight.text);
            }
        }
        if (RequirePressed(judge, line)) {
            judge.SameList(line, "the reason", wanted, found);
        }
    };
}

Expectation ReadRefused(const Reading& reading, const toml::node& node) {
    const bool isWanted = reading.reader.Flag(node, reading.name);
    if (!reading.step.contains("press")) {
        reading.reader.Problem(node, "\"refused\" needs a \"press\" in the same step.");
    }
    return [isWanted, line = LineOf(node)](Judge& judge) {
        const PressResult& press = *judge.Outcome().press;
        if (isWanted == press.done) {
            judge.Fail(line, press.done ? "the press was not refused"
                                        : "the press was refused: " + press.refusal);
        }
    };
}

bool Names(const std::string& text, const std::string& failure) {
    return failure.find(text) != std::string::npos;
}

// Every failure of the step is named, and every name is of one.
Expectation ReadFailed(const Reading& reading, const toml::node& node) {
    const Texts wanted = reading.reader.Some(node, reading.name);
    return [wanted, line = LineOf(node)](Judge& judge) {
        const Texts& failures = judge.Outcome().failures;
        const auto isNamed = [&](const std::string& failure) {
            return std::any_of(wanted.begin(), wanted.end(),
                               [&](const std::string& text) { return Names(text, failure); });
        };
        const auto hasFailed = [&](const std::string& text) {
            return std::any_of(failures.begin(), failures.end(),
                               [&](const std::string& failure) { return Names(text, failure); });
        };
        if (!std::all_of(failures.begin(), failures.end(), isNamed) ||
            !std::all_of(wanted.begin(), wanted.end(), hasFailed)) {
            judge.SameList(line, "failed", wanted, failures);
        }
    };
}

// ---------------------------------------------------------------------------------------------
// The TV
// ---------------------------------------------------------------------------------------------

Texts Launched(const StepOutcome& outcome, Sight::Kind kind) {
    Texts texts;
    for (const vtv::Launch& launch : outcome.tv->LaunchesSince(outcome.launchMark)) {
        const Sight sight = SightOf(launch);
        if (sight.kind == kind) {
            texts.push_back(sight.text);
        }
    }
    return texts;
}

void CheckExpected(const Reading& reading, const toml::node& node, const std::string& app,
                   const std::string& ifMeant) {
    if (app.empty()) {
        reading.reader.Problem(node,
                               "\"" + reading.name + "\" has an empty text: name an application.");
    } else if (!IsForced(reading.step)) {
        reading.reader.CheckApplication(node.source(), app, ifMeant);
    }
}

// Which applications a provider asks for is its own affair; one that the TV does not have fails.
Expectation ReadLaunched(const Reading& reading, const toml::node& node) {
    const Texts wanted = reading.reader.Texts(node, reading.name);
    for (const std::string& text : wanted) {
        const std::string app = text.substr(0, text.find(' '));
        const std::string end = " (failed: " + app + " is not installed)";
        if (!text.ends_with(end)) {
            CheckExpected(reading, node, app,
                          " Where it is asked for all the same: \"" + text + end + "\".");
        }
    }
    return [wanted, line = LineOf(node)](Judge& judge) {
        judge.SameList(line, "launched", wanted,
                       Launched(judge.Outcome(), Sight::Kind::kApplication));
    };
}

Expectation ReadToast(const Reading& reading, const toml::node& node) {
    const Texts wanted = reading.reader.Texts(node, reading.name);
    return [wanted, line = LineOf(node)](Judge& judge) {
        judge.SameList(line, "the toasts", InWords(wanted),
                       Launched(judge.Outcome(), Sight::Kind::kToast));
    };
}

constexpr std::chrono::seconds kEndOfApplication(2);

Expectation ReadRunning(const Reading& reading, const toml::node& node) {
    Texts wanted = reading.reader.Texts(node, reading.name);
    for (const std::string& app : wanted) {
        CheckExpected(reading, node, app, kIfMeant);
    }
    std::sort(wanted.begin(), wanted.end());
    return [wanted, line = LineOf(node)](Judge& judge) {
        // An application that was asked to end takes its time.
        const vtv::Tv& tv = *judge.Outcome().tv;
        for (const vtv::RunningApplication& one : tv.RunningApplications()) {
            if (std::find(wanted.begin(), wanted.end(), one.appId) == wanted.end()) {
                tv.WaitForEnd(one, kEndOfApplication);
            }
        }
        Texts running;
        for (const vtv::RunningApplication& one : tv.RunningApplications()) {
            running.push_back(one.appId);
        }
        std::sort(running.begin(), running.end());
        judge.SameList(line, "running", wanted, running);
    };
}

std::string OrMissing(const std::optional<vtv::Value>& value) {
    return value ? vtv::ToText(*value) : kMissing;
}

// The type that the wanted value stands for: a text may also tell a value of another type, or that
// there is none.
std::string TypeOfWanted(const std::string& key, const vtv::Value& wanted) {
    const vtv::KnownSetting* known = vtv::FindKnownSetting(key);
    if (known != nullptr && std::holds_alternative<std::string>(wanted)) {
        const std::string& text = std::get<std::string>(wanted);
        try {
            return text == kMissing ? known->type
                                    : vtv::TypeName(vtv::ParseValue(known->type, text));
        } catch (const vtv::Error&) {
            return "string";
        }
    }
    return vtv::TypeName(wanted);
}

Expectation ReadSettings(const Reading& reading, const toml::node& node) {
    std::vector<Expectation> all;
    for (const auto& [key, value] : reading.reader.Table(node, reading.name)) {
        const std::string name(key.str());
        const vtv::Value wanted = reading.reader.Scalar(value, name);
        reading.reader.CheckSetting(key, value, TypeOfWanted(name, wanted), IsForced(reading.step));
        all.emplace_back([name, wanted, line = LineOf(value)](Judge& judge) {
            judge.Same(line, name, vtv::ToText(wanted), OrMissing(judge.Outcome().tv->Get(name)));
        });
    }
    return Together(std::move(all));
}

Expectation ReadState(const Reading& reading, const toml::node& node) {
    std::vector<Expectation> all;
    for (const auto& [key, value] : reading.reader.Table(node, reading.name)) {
        const std::string name(key.str());
        const vtv::Value wanted = ReadStateValue(reading, key, value);
        all.emplace_back([name, wanted, line = LineOf(value)](Judge& judge) {
            const std::map<std::string, vtv::Value> state = judge.Outcome().tv->State();
            const auto found = state.find(name);
            judge.Same(line, name, vtv::ToText(wanted),
                       found != state.end() ? vtv::ToText(found->second) : kMissing);
        });
    }
    return Together(std::move(all));
}

Expectation ReadFiles(const Reading& reading, const toml::node& node) {
    return [wanted = reading.reader.OwnerFiles(node, reading.name),
            line = LineOf(node)](Judge& judge) {
        const Texts files = judge.Outcome().tv->OwnerFiles();
        for (const std::string& file : wanted) {
            if (std::find(files.begin(), files.end(), file) == files.end()) {
                judge.Fail(line, "there is no file /home/owner/" + file);
            }
        }
    };
}

struct ExpectMember {
    const char* name;
    Expectation (*read)(const Reading& reading, const toml::node& node);
};
constexpr ExpectMember kMembers[] = {
    {"page", [](const Reading& reading,
                const toml::node& node) { return ReadPageExpectation(reading.reader, node); }},
    {"answer", [](const Reading& reading,
                  const toml::node& node) { return ReadAnswerExpectation(reading.reader, node); }},
    {"sees", ReadSees},
    {"box", ReadBox},
    {"popup", ReadBox},
    {"reason", ReadReason},
    {"refused", ReadRefused},
    {"failed", ReadFailed},
    {"launched", ReadLaunched},
    {"toast", ReadToast},
    {"running", ReadRunning},
    {"setting", ReadSettings},
    {"state", ReadState},
    {"file", ReadFiles},
    {"log", ReadLog},
    {"log-run", ReadLogRun},
    {"no-log", ReadNoLog},
    {"trace", ReadExpectedTrace},
};

// A press that comes to nothing is told unless the step says itself whether it does.
void ExpectPressDone(Judge& judge) {
    const StepOutcome& outcome = judge.Outcome();
    if (outcome.press && !outcome.press->done) {
        judge.Fail(outcome.line, "the press was refused: " + outcome.press->refusal);
    }
}

// And so is what the TV could not do for it.
void ExpectNoFailure(Judge& judge) {
    const StepOutcome& outcome = judge.Outcome();
    for (const std::string& failure : outcome.press ? outcome.failures : Texts()) {
        judge.Fail(outcome.line, "not done: " + failure);
    }
}

std::vector<Expectation> ReadMembers(ScenarioReader& reader, const toml::table& step,
                                     const std::string& name) {
    std::vector<Expectation> all;
    if (const toml::node* node = step.get(name)) {
        reader.Members(reader.Table(*node, name), name, kMembers,
                       [&](const ExpectMember& member, const toml::node& value) {
                           all.push_back(member.read({reader, step, member.name}, value));
                       });
    }
    return all;
}

// Met where at least one of them is not.
Expectation NotTogether(std::vector<Expectation> all, int line) {
    return [all = Together(std::move(all)), line](Judge& judge) {
        Judge together("", judge.Outcome());
        all(together);
        if (together.Failures().empty()) {
            judge.Fail(line, "all that \"never\" names is so");
        }
    };
}

}  // namespace

std::vector<Expectation> ReadExpectations(ScenarioReader& reader, const toml::table& step) {
    const toml::table* expected = step["expect"].as_table();
    std::vector<Expectation> all;
    if (expected == nullptr || !expected->contains("refused")) {
        all.emplace_back(ExpectPressDone);
    }
    if (expected == nullptr || !expected->contains("failed")) {
        all.emplace_back(ExpectNoFailure);
    }
    for (Expectation& one : ReadMembers(reader, step, "expect")) {
        all.push_back(std::move(one));
    }
    if (const toml::node* never = step.get("never")) {
        if (never->is_table() && never->as_table()->empty()) {
            reader.Problem(*never,
                           "\"never\" is empty, and that is always so: write what must not be.");
        }
        all.push_back(NotTogether(ReadMembers(reader, step, "never"), LineOf(*never)));
    }
    return all;
}

}  // namespace host
