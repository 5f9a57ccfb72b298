#include "scenario_steps.h"

#include <strings.h>

#include "scenario_members.h"

namespace host {

namespace {

// Values for items, whether a viewer could press them or not.
Play ReadHand(const Reading& reading, const toml::node& node) {
    std::vector<std::pair<const Item*, int>> values;
    for (const auto& [key, value] : reading.reader.Table(node, reading.name)) {
        const std::string name(key.str());
        values.emplace_back(reading.reader.ItemNamed(key.source(), name),
                            reading.reader.Number(value, name));
    }
    return [values](const StepScene& scene) {
        for (const auto& [item, value] : values) {
            scene.user.Hand(*item, value);
        }
        // Before a press begins, which tells its own.
        scene.outcome.AddFailures(scene.tv.TakeFailures());
    };
}

Answer ReadAnswer(ScenarioReader& reader, const toml::node& node, const Item* item) {
    const std::string answer = reader.OneOf(node, "answer", {"ok", "cancel"});
    const bool asks =
        item == nullptr || item->kind == ItemKind::kList || item->kind == ItemKind::kApplication;
    if (!asks) {
        reader.Problem(node, item->name + std::string(" asks nothing: leave out \"answer\"."));
    }
    return answer == "ok" ? Answer::kOk : Answer::kCancel;
}

// The choice as ParseChoice() takes it: which texts a list offers is known when it is pressed.
std::string ReadChoice(ScenarioReader& reader, const toml::node& node, const Item* item) {
    if (!node.is_integer() && !node.is_string()) {
        reader.Problem(node, "\"choose\" must be a choice's number, or its text in quotes.");
        return "";
    }
    const std::string choice = vtv::ToText(reader.Scalar(node, "choose"));
    if (item != nullptr && !HasValue(*item)) {
        reader.Problem(node, item->name + std::string(" has no choices: leave out \"choose\"."));
    } else if (item != nullptr && item->kind == ItemKind::kSwitch && choice != "0" &&
               choice != "1" && strcasecmp(choice.c_str(), "on") != 0 &&
               strcasecmp(choice.c_str(), "off") != 0) {
        reader.Problem(node, item->name + std::string(" is a switch: choose \"on\" or \"off\"."));
    } else if (choice.empty()) {
        reader.Problem(node, "\"choose\" names nothing: write a choice, or leave it out.");
    }
    return choice;
}

Play ReadPress(const Reading& reading, const toml::node& node) {
    ScenarioReader& reader = reading.reader;
    host::Press press;
    const std::string name = reader.Text(node, reading.name);
    press.item = node.is_string() ? reader.ItemNamed(node.source(), name) : nullptr;
    if (const toml::node* answer = reading.step.get("answer")) {
        press.answer = ReadAnswer(reader, *answer, press.item);
    }
    std::optional<std::string> choice;
    if (const toml::node* choose = reading.step.get("choose")) {
        choice = ReadChoice(reader, *choose, press.item);
    }
    return [press, choice, line = LineOf(node)](const StepScene& scene) {
        host::Press now = press;
        if (choice) {
            now.choose = ParseChoice(LookAt(scene.provider, *press.item), *choice);
        }
        scene.outcome.line = line;
        scene.outcome.press = scene.user.Press(now);
        scene.outcome.AddFailures(scene.outcome.press->failures);
    };
}

// Read with the press that it belongs to.
Play RequirePress(const Reading& reading, const toml::node& node) {
    if (!reading.step.contains("press")) {
        reading.reader.Problem(node,
                               "\"" + reading.name + "\" needs a \"press\" in the same step.");
    }
    return nullptr;
}

// Read by ReadExpectations().
Play ReadExpect(const Reading&, const toml::node&) {
    return nullptr;
}

Play ReadSay(const Reading& reading, const toml::node& node) {
    reading.reader.Text(node, reading.name);
    return nullptr;
}

void Read(const StepMember& member, const Reading& reading, const toml::node& node,
          ScenarioStep* step) {
    Play play = member.read(reading, node);
    if (play) {
        (member.usesPage ? step->uses : step->changes).push_back({LineOf(node), std::move(play)});
    }
}

std::vector<StepMember> AllMembers() {
    std::vector<StepMember> all = {{"say", ReadSay}};
    for (const auto* members : {&SettingMembers(), &PlatformMembers(), &PageMembers()}) {
        all.insert(all.end(), members->begin(), members->end());
    }
    return all;
}

}  // namespace

const std::vector<StepMember>& PageMembers() {
    static const std::vector<StepMember> members = {
        {"hand", ReadHand, true}, {"press", ReadPress, true}, {"choose", RequirePress},
        {"answer", RequirePress}, {"expect", ReadExpect},     {"never", ReadExpect},
    };
    return members;
}

ScenarioStep ReadStep(ScenarioReader& reader, const toml::table& table, size_t number) {
    static const std::vector<StepMember> members = AllMembers();
    ScenarioStep step;
    const auto* say = table.get_as<std::string>("say");
    const auto* press = table.get_as<std::string>("press");
    step.name = "step " + std::to_string(number) +
                (say != nullptr     ? ": " + say->get()
                 : press != nullptr ? ": press " + press->get()
                                    : "");
    step.line = LineOf(table);
    if (table.empty()) {
        reader.Problem(table, "the step is empty: write what is done or expected in it.");
    }
    reader.Members(table, "a step", members, [&](const StepMember& member, const toml::node& node) {
        Read(member, {reader, table, member.name}, node, &step);
    });
    step.expectations = ReadExpectations(reader, table);
    return step;
}

}  // namespace host
