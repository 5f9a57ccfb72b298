#include "json_views.h"

#include "cli.h"

namespace cli {

namespace {

Json::Value OrNull(const std::optional<std::string>& text) {
    return text ? Json::Value(*text) : Json::Value();
}

Json::Value ExtrasToJson(const vtv::Extras& extras) {
    Json::Value json(Json::objectValue);
    for (const auto& [key, value] : extras) {
        json[key] = value;
    }
    return json;
}

Json::Value TextsToJson(const std::vector<std::string>& texts) {
    Json::Value json(Json::arrayValue);
    for (const std::string& text : texts) {
        json.append(text);
    }
    return json;
}

Json::Value ChoicesToJson(const std::vector<host::Choice>& choices) {
    Json::Value json(Json::arrayValue);
    for (const host::Choice& choice : choices) {
        Json::Value entry;
        entry["value"] = choice.value;
        entry["text"] = choice.text;
        json.append(entry);
    }
    return json;
}

}  // namespace

Json::Value ToJson(const host::Box& box) {
    Json::Value json;
    json["title"] = box.title;
    json["message"] = box.message;
    json["buttons"] = Json::Value(Json::arrayValue);
    for (const std::string& button : box.buttons) {
        json["buttons"].append(button);
    }
    json["action"] = box.action ? Json::Value(*box.action) : Json::Value();
    return json;
}

Json::Value ToJson(const host::ItemView& view, bool reachable) {
    Json::Value json;
    json["item"] = view.item->name;
    json["key"] = view.item->key;
    json["visible"] = view.visible;
    json["enabled"] = view.enabled;
    json["reachable"] = reachable;
    json["title"] = OrNull(view.title);
    json["help"] = OrNull(view.help);
    json["value"] = view.value ? Json::Value(*view.value) : Json::Value();
    json["value_text"] = view.value ? Json::Value(view.ValueText()) : Json::Value();
    json["choices"] = ChoicesToJson(view.choices);
    json["disable_text"] = OrNull(view.disableText);
    json["disable_popup"] = view.disablePopup ? ToJson(*view.disablePopup) : Json::Value();
    json["missing_texts"] = Json::Value(Json::arrayValue);
    for (const std::string& missing : view.MissingTexts()) {
        json["missing_texts"].append(missing);
    }
    return json;
}

Json::Value ToJson(const host::Page& page, const host::Provider& provider, const vtv::Tv& tv) {
    Json::Value json;
    json["tv"]["dir"] = tv.Dir();
    json["tv"]["model"] = tv.GetModel().name;
    json["tv"]["title"] = tv.GetModel().title;
    json["tv"]["language"] = tv.Language();
    json["tv"]["problems"] = Json::Value(Json::arrayValue);
    for (const std::string& problem : tv.Problems()) {
        json["tv"]["problems"].append(problem);
    }
    json["provider"] = provider.File();
    json["items"] = Json::Value(Json::arrayValue);
    for (const host::ItemView& view : page.items) {
        json["items"].append(ToJson(view, page.IsReachable(*view.item)));
    }
    return json;
}

Json::Value ToJson(const host::PageChange& change) {
    Json::Value json;
    json["item"] = change.item->name;
    json["what"] = change.what;
    json["before"] = change.before;
    json["after"] = change.after;
    return json;
}

Json::Value ToJson(const host::PressResult& result, const host::Item& item) {
    Json::Value json;
    json["item"] = item.name;
    json["done"] = result.done;
    json["refusal"] = result.refusal.empty() ? Json::Value() : Json::Value(result.refusal);
    json["failures"] = Json::Value(Json::arrayValue);
    for (const std::string& failure : result.failures) {
        json["failures"].append(failure);
    }
    json["sees"] = Json::Value(Json::arrayValue);
    for (const host::Sight& sight : result.sights) {
        Json::Value entry;
        entry["kind"] = host::ToText(sight.kind);
        entry["text"] = sight.text;
        if (sight.kind == host::Sight::Kind::kChoices) {
            entry["choices"] = ChoicesToJson(sight.choices);
        }
        if (sight.box) {
            entry["box"] = ToJson(*sight.box);
        }
        if (sight.launch) {
            entry["launch"] = ToJson(*sight.launch);
        }
        if (sight.change) {
            entry["change"] = ToJson(*sight.change);
        }
        json["sees"].append(entry);
    }
    return json;
}

namespace {

Json::Value ValueToJson(const std::optional<vtv::Value>& value) {
    return value ? ToJson(*value) : Json::Value();
}

Json::Value DifferencesToJson(const host::Differences& differences) {
    Json::Value json(Json::arrayValue);
    for (const host::Difference& difference : differences.found) {
        Json::Value way;
        way["answer"] = difference.answer;
        way["text"] = host::ToText(difference);
        way["changes"] = Json::Value(Json::arrayValue);
        for (const host::Supposition& supposition : difference.suppositions) {
            Json::Value change;
            change["function"] = supposition.read.function;
            change["subject"] = supposition.read.subject;
            change["from"] = ValueToJson(supposition.was.value);
            change["to"] = ValueToJson(supposition.read.value);
            change["now"] = supposition.now;
            change["mended"] = supposition.mends;
            way["changes"].append(change);
        }
        json.append(way);
    }
    return json;
}

Json::Value RuleToJson(const host::Rule& rule) {
    Json::Value json;
    if (rule.function != nullptr) {
        json["function"] = rule.function;
        json["source"] = rule.source;
    }
    return json;
}

Json::Value ReasonsToJson(const host::Reasons& reasons, const vtv::Tv& tv) {
    Json::Value json;
    json["question"] = reasons.question;
    json["answer"] = reasons.answer;
    json["because"] = reasons.because;
    json["rule"] = RuleToJson(reasons.rule);
    json["otherwise"] = DifferencesToJson(reasons.differences);
    json["reads"] = Json::Value(Json::arrayValue);
    for (const vtv::Read& read : reasons.reads) {
        Json::Value one;
        one["function"] = read.function;
        one["subject"] = read.subject;
        one["value"] = ValueToJson(read.value);
        one["text"] = host::Describe(read, tv);
        json["reads"].append(one);
    }
    return json;
}

}  // namespace

Json::Value ToJson(const host::Explanation& explanation, const vtv::Tv& tv) {
    Json::Value json;
    json["item"] = explanation.item->name;
    json["sentence"] = explanation.sentence;
    json["reachable"] = explanation.reachable;
    json["barrier"] = Json::Value();
    if (explanation.barrier != nullptr) {
        json["barrier"] = ReasonsToJson(explanation.barrierReasons, tv);
        json["barrier"]["item"] = explanation.barrier->name;
    }
    json["questions"] = Json::Value(Json::arrayValue);
    for (const host::Reasons& reasons : explanation.reasons) {
        json["questions"].append(ReasonsToJson(reasons, tv));
    }
    json["further"] = Json::Value(Json::arrayValue);
    for (const host::FurtherRule& further : explanation.further) {
        Json::Value one;
        one["question"] = further.question;
        one["rule"] = RuleToJson(further.rule);
        json["further"].append(one);
    }
    return json;
}

Json::Value ToJson(const vtv::Launch& launch) {
    Json::Value json;
    json["time"] = vtv::ToText(launch.time);
    json["app"] = launch.appId;
    json["via"] = launch.via;
    json["operation"] = launch.operation;
    json["extras"] = ExtrasToJson(launch.extras);
    json["outcome"] = launch.outcome;
    json["pid"] = launch.pid;
    return json;
}

Json::Value ToJson(const vtv::RunningApplication& running) {
    Json::Value json;
    json["app"] = running.appId;
    json["pid"] = running.pid;
    json["since"] = vtv::ToText(running.since);
    json["extras"] = ExtrasToJson(running.extras);
    return json;
}

Json::Value ToJson(const vtv::LogRecord& record) {
    Json::Value json;
    json["time"] = vtv::ToText(record.time);
    json["pid"] = record.pid;
    json["priority"] = record.priority;
    json["tag"] = record.tag;
    json["file"] = record.file;
    json["function"] = record.function;
    json["line"] = record.line;
    json["message"] = record.message;
    return json;
}

Json::Value ToJson(const vtv::TraceEvent& event) {
    Json::Value json;
    json["time"] = vtv::ToText(event.time);
    json["pid"] = event.pid;
    json["thread"] = event.thread;
    json["file"] = event.file;
    json["line"] = event.line;
    json["function"] = event.function;
    json["format"] = event.format;
    json["message"] = event.message;
    json["arguments"] = Json::Value(Json::arrayValue);
    for (const vtv::TraceArgument& argument : event.arguments) {
        Json::Value one;
        one["type"] = argument.type;
        one["value"] = argument.value;
        json["arguments"].append(one);
    }
    return json;
}

Json::Value ToJson(const host::Scenario& scenario) {
    Json::Value json;
    json["file"] = scenario.file;
    json["title"] = scenario.title;
    json["sound"] = scenario.problems.empty();
    json["problems"] = TextsToJson(scenario.problems);
    return json;
}

Json::Value ToJson(const host::ScenarioResult& result) {
    Json::Value json;
    json["file"] = result.file;
    json["title"] = result.title;
    json["passed"] = result.Passed();
    json["problems"] = TextsToJson(result.problems);
    json["error"] = result.error;
    json["steps"] = Json::Value(Json::arrayValue);
    for (const host::StepResult& step : result.steps) {
        Json::Value entry;
        entry["name"] = step.name;
        entry["line"] = step.line;
        entry["played"] = step.played;
        entry["seconds"] = step.seconds;
        entry["failures"] = TextsToJson(step.failures);
        entry["beside"] = TextsToJson(step.beside);
        json["steps"].append(entry);
    }
    return json;
}

}  // namespace cli
