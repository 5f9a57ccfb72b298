// Playing scenarios: the actions of a step. What is expected is scenario_expect's.
#include <json/json.h>

#include <chrono>

#include "known_settings.h"
#include "scenario.h"
#include "scenario_expect.h"
#include "scenario_steps.h"

namespace host {

namespace {

constexpr char kVoiceGuideKey[] = "db/setting/accessibility/tts";
constexpr char kFeaturePrefix[] = "com.vantelo/featureconf/";

class Player {
  public:
    Player(const Scenario& scenario, vtv::Tv& tv, const Provider& provider)
        : file_(scenario.file), tv_(tv), provider_(provider) {}

    void Play(const toml::table& step, StepOutcome* outcome) {
        outcome->provider = &provider_;
        outcome->launchesBefore = tv_.Launches().size();
        outcome->logBefore = tv_.ReadLog().size();
        outcome->traceBefore = tv_.ReadTrace().size();
        ChangeSettings(step);
        ChangeState(step);
        ChangeFiles(step);
        ChangePlatform(step);
        UseApplications(step);
        Dispatch();
        HandOver(step);
        Press(step, outcome);
        Dispatch();
        outcome->page = LookAtPage(provider_);
    }

  private:
    [[noreturn]] void Fail(const toml::node& node, const std::string& text) const {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         file_ + ":" + std::to_string(node.source().begin.line) + ": " + text);
    }

    vtv::Value Scalar(const toml::node& node) const {
        if (const auto* flag = node.as_boolean()) {
            return flag->get();
        }
        if (const auto* number = node.as_integer()) {
            return static_cast<int>(number->get());
        }
        if (const auto* text = node.as_string()) {
            return text->get();
        }
        // A table or a list is a setting that holds JSON.
        Json::StreamWriterBuilder builder;
        builder["indentation"] = "";
        builder["emitUTF8"] = true;
        return Json::writeString(builder, ToJson(node));
    }

    Json::Value ToJson(const toml::node& node) const {
        if (const toml::table* table = node.as_table()) {
            Json::Value json(Json::objectValue);
            for (const auto& [key, value] : *table) {
                json[std::string(key.str())] = ToJson(value);
            }
            return json;
        }
        if (const toml::array* array = node.as_array()) {
            Json::Value json(Json::arrayValue);
            for (const toml::node& value : *array) {
                json.append(ToJson(value));
            }
            return json;
        }
        if (!node.is_boolean() && !node.is_integer() && !node.is_string()) {
            Fail(node, "write true, false, a whole number, a text, a list or a table.");
        }
        return std::visit([](const auto& v) { return Json::Value(v); }, Scalar(node));
    }

    const toml::table* Table(const toml::table& step, const char* name) const {
        const toml::node* node = step.get(name);
        if (node != nullptr && !node->is_table()) {
            Fail(*node, std::string("\"") + name + "\" must be a table: " + name + " = { ... }.");
        }
        return node != nullptr ? node->as_table() : nullptr;
    }

    std::string Text(const toml::node& node) const {
        if (!node.is_string()) {
            Fail(node, "write a text in quotes.");
        }
        return node.as_string()->get();
    }

    // A text, or a list of them.
    std::vector<std::string> Texts(const toml::table& step, const char* name) const {
        std::vector<std::string> texts;
        const toml::node* node = step.get(name);
        if (node == nullptr) {
            return texts;
        }
        if (const toml::array* array = node->as_array()) {
            for (const toml::node& one : *array) {
                texts.push_back(Text(one));
            }
        } else {
            texts.push_back(Text(*node));
        }
        return texts;
    }

    bool Flag(const toml::table& step, const char* name) const {
        const toml::node* node = step.get(name);
        if (node != nullptr && !node->is_boolean()) {
            Fail(*node, std::string("\"") + name + "\" must be true or false.");
        }
        return node != nullptr && node->as_boolean()->get();
    }

    void ChangeSettings(const toml::table& step) {
        if (const toml::table* settings = Table(step, "set")) {
            for (const auto& [key, value] : *settings) {
                tv_.Set(std::string(key.str()), Scalar(value));
            }
        }
        for (const std::string& key : Texts(step, "unset")) {
            tv_.Unset(key);
        }
        if (const toml::node* policy = step.get("policy")) {
            tv_.Set(kPolicyKey, Scalar(*policy));
        }
    }

    void ChangeState(const toml::table& step) {
        if (const toml::table* state = Table(step, "state")) {
            vtv::Snapshot snapshot = tv_.TakeSnapshot();
            for (const auto& [key, value] : *state) {
                snapshot.state[std::string(key.str())] = Scalar(value);
            }
            tv_.Restore(snapshot);
        }
        if (const toml::table* features = Table(step, "feature")) {
            for (const auto& [key, value] : *features) {
                tv_.SetFeature(FeatureKey(std::string(key.str())), Scalar(value));
            }
        }
        for (const std::string& name : Texts(step, "feature-missing")) {
            tv_.SetFeature(FeatureKey(name), std::nullopt);
        }
        if (const toml::node* account = step.get("account")) {
            tv_.SetSignedIn(Text(*account) == "signed-in");
        }
        if (const toml::table* consents = Table(step, "consent")) {
            for (const auto& [item, agreed] : *consents) {
                tv_.SetConsent(std::string(item.str()), Scalar(agreed) == vtv::Value(true));
            }
        }
        if (const toml::node* network = step.get("network")) {
            tv_.SetNetwork(vtv::ParseNetwork(Text(*network)));
        }
        if (const toml::node* language = step.get("language")) {
            tv_.SetLanguage(Text(*language));
        }
        if (const toml::node* guide = step.get("voice-guide")) {
            tv_.Set(kVoiceGuideKey, Text(*guide) == "on");
        }
    }

    static std::string FeatureKey(const std::string& name) {
        return name.find('/') == std::string::npos ? kFeaturePrefix + name : name;
    }

    void ChangeFiles(const toml::table& step) {
        for (const std::string& path : Texts(step, "file-add")) {
            tv_.AddOwnerFile(path);
        }
        for (const std::string& path : Texts(step, "file-remove")) {
            tv_.RemoveOwnerFile(path);
        }
    }

    void ChangePlatform(const toml::table& step) {
        if (const toml::node* mode = step.get("applications")) {
            tv_.SetApplications(vtv::ParseApplicationMode(Text(*mode)));
        }
        if (step.contains("trace")) {
            tv_.SetTraceEnabled(Flag(step, "trace"));
        }
        if (Flag(step, "clear-faults")) {
            for (const vtv::Fault& fault : tv_.Faults()) {
                tv_.ClearFault(fault.function);
            }
        }
        if (const toml::table* wanted = Table(step, "fault")) {
            vtv::Fault fault;
            fault.function = wanted->get_as<std::string>("function") != nullptr
                                 ? wanted->get_as<std::string>("function")->get()
                                 : "";
            fault.kind =
                Flag(*wanted, "always") ? vtv::Fault::Kind::kAlways : vtv::Fault::Kind::kOnce;
            if (const auto* result = wanted->get_as<int64_t>("result")) {
                fault.result = static_cast<int>(result->get());
            }
            if (const auto* slow = wanted->get_as<int64_t>("slow")) {
                fault.kind = vtv::Fault::Kind::kSlow;
                fault.delayMs = static_cast<int>(slow->get());
            }
            tv_.SetFault(fault);
        }
        if (Flag(step, "power-cycle")) {
            tv_.PowerCycle();
        }
    }

    void UseApplications(const toml::table& step) {
        for (const std::string& app : Texts(step, "finish")) {
            tv_.FinishApplication(app);
        }
        for (const std::string& app : Texts(step, "cancel")) {
            tv_.CancelApplication(app);
        }
    }

    // Values for items, whether a viewer could press them or not.
    void HandOver(const toml::table& step) {
        if (const toml::table* items = Table(step, "hand")) {
            for (const auto& [name, value] : *items) {
                if (!value.is_integer()) {
                    Fail(value, "write a whole number.");
                }
                provider_.SetInt(FindItem(name.str())->key,
                                 static_cast<int>(value.as_integer()->get()));
            }
        }
    }

    void Press(const toml::table& step, StepOutcome* outcome) {
        const toml::node* name = step.get("press");
        if (name == nullptr) {
            return;
        }
        host::Press press;
        press.item = FindItem(Text(*name));
        if (const toml::node* answer = step.get("answer")) {
            press.answer = Text(*answer) == "ok" ? Answer::kOk : Answer::kCancel;
        }
        if (const toml::node* choose = step.get("choose")) {
            press.choose =
                ParseChoice(LookAt(provider_, *press.item), vtv::ToText(Scalar(*choose)));
        }
        outcome->press = Viewer(provider_, tv_).PressItem(press);
    }

    void Dispatch() {
        while (tv_.Dispatch() > 0) {
        }
    }

    std::string file_;
    vtv::Tv& tv_;
    const Provider& provider_;
};

std::string StepName(const toml::table& step, size_t number) {
    const auto* say = step.get_as<std::string>("say");
    const auto* press = step.get_as<std::string>("press");
    return "step " + std::to_string(number) +
           (say != nullptr     ? ": " + say->get()
            : press != nullptr ? ": press " + press->get()
                               : "");
}

// The TV is on, and its provider loaded, for as long as a scenario plays.
class Stage {
  public:
    Stage(const std::string& dir, const std::string& providerFile)
        : tv(dir), power_(tv), provider(providerFile) {}

    vtv::Tv tv;

  private:
    struct Power {
        explicit Power(vtv::Tv& tv) { vtv::PowerOn(tv); }
        ~Power() { vtv::PowerOff(); }
    } power_;

  public:
    Provider provider;
};

void EndApplications(vtv::Tv& tv) {
    for (const vtv::RunningApplication& running : tv.RunningApplications()) {
        try {
            tv.CancelApplication(running.appId);
        } catch (const vtv::Error& error) {
            // It has ended by itself, or with another one of its name, as notifications do.
            if (error.kind() != vtv::ErrorKind::kNoSuch) {
                throw;
            }
        }
    }
}

}  // namespace

ScenarioResult PlayScenario(const Scenario& scenario, const std::string& providerFile,
                            const std::string& tvDir) {
    ScenarioResult result;
    result.file = scenario.file;
    result.title = scenario.title;
    for (size_t i = 0; i < scenario.steps->tables.size(); ++i) {
        StepResult step;
        step.name = StepName(*scenario.steps->tables[i].as_table(), i + 1);
        step.line = static_cast<int>(scenario.steps->tables[i].source().begin.line);
        result.steps.push_back(step);
    }
    vtv::Tv::Create(tvDir, vtv::FindModel(scenario.model));
    Stage stage(tvDir, providerFile);
    Player player(scenario, stage.tv, stage.provider);
    for (size_t i = 0; i < result.steps.size(); ++i) {
        StepResult& step = result.steps[i];
        const toml::table& table = *scenario.steps->tables[i].as_table();
        const auto start = std::chrono::steady_clock::now();
        step.played = true;
        StepOutcome outcome;
        try {
            player.Play(table, &outcome);
            step.failures = Unmet(scenario.file, table, outcome, stage.tv);
        } catch (const vtv::Error& error) {
            const std::string place = scenario.file + ":";
            const std::string text = error.what();
            step.failures = {
                text.rfind(place, 0) == 0 ? text : place + std::to_string(step.line) + ": " + text};
        }
        step.seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (!step.failures.empty()) {
            break;
        }
    }
    EndApplications(stage.tv);
    return result;
}

}  // namespace host
