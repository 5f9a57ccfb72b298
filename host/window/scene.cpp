#include "scene.h"

#include <algorithm>
#include <string_view>

#include "words.h"

namespace window {

using host::ItemKind;
using host::ItemView;

namespace {

RowScene RowOf(const ItemView& view, const Words& words) {
    RowScene row;
    row.name = view.item->name;
    row.title = view.Label();
    row.depth = vtv::DepthOf(*view.item);
    row.dimmed = !view.enabled;
    switch (view.item->kind) {
        case ItemKind::kSwitch:
            row.mark = RowScene::Mark::kSwitch;
            row.on = view.value == 1;
            row.value = row.on ? words.on : view.value == 0 ? words.off : view.ValueText();
            break;
        case ItemKind::kList:
            row.mark = RowScene::Mark::kChoice;
            for (const host::Choice& choice : view.choices) {
                row.value = choice.value == view.value ? choice.text : row.value;
            }
            break;
        case ItemKind::kSetup:
        case ItemKind::kApplication:
            row.mark = RowScene::Mark::kOpens;
            break;
        case ItemKind::kPage:
            break;
    }
    return row;
}

std::string ReasonOf(const ItemView& view) {
    if (view.enabled) {
        return "";
    }
    return view.disableText    ? *view.disableText
           : view.disablePopup ? view.disablePopup->message
                               : "";
}

ApplicationScene SceneOf(const Application& application, size_t focus, const Words& words) {
    ApplicationScene scene;
    scene.id = application.id;
    scene.details = application.details;
    scene.problem = application.problem;
    scene.focus = focus;
    scene.title = application.title;
    if (application.id.empty()) {
        scene.details = {words.elsewhere};
        scene.buttons = {words.close};
    } else {
        scene.buttons = {words.finish, words.cancel};
    }
    return scene;
}

ListScene SceneOf(const Navigator::List& list) {
    ListScene scene;
    scene.title = list.title;
    scene.focus = list.focus;
    for (size_t i = 0; i < list.choices.size(); ++i) {
        scene.choices.push_back(list.choices[i].text);
        if (list.choices[i].value == list.current) {
            scene.current = i;
        }
    }
    return scene;
}

// Parts of a sentence that is spoken: "Voice Hints. Off. unavailable".
void Say(std::string* spoken, const std::string& part) {
    if (!part.empty()) {
        const bool ended = !spoken->empty() &&
                           std::string_view(".?!").find(spoken->back()) != std::string_view::npos;
        *spoken += (spoken->empty() ? "" : ended ? " " : ". ") + part;
    }
}

std::string At(const std::vector<std::string>& texts, size_t index) {
    return index < texts.size() ? texts[index] : "";
}

}  // namespace

Scene SceneOf(const Navigator& navigator, const std::string& menuLanguage,
              const std::set<std::string>& changed) {
    const host::Page& page = navigator.CurrentPage();
    const Words& words = WordsOf(menuLanguage);
    Scene scene;
    scene.look.mirrored = IsMirrored(menuLanguage);
    const ItemView& root = page["voice"];
    const ItemView& setup = page["onboarding"];
    scene.title = root.title.value_or(setup.title.value_or(""));
    for (const host::Item* item : navigator.Lines()) {
        const ItemView& view = page[item->name];
        RowScene row = RowOf(view, words);
        row.changed = changed.count(row.name) == 1;
        if (item == navigator.Focused()) {
            row.focused = true;
            scene.heading = view.Label();
            scene.help = view.help.value_or("");
            scene.reason = ReasonOf(view);
        }
        scene.rows.push_back(std::move(row));
    }
    if (scene.rows.empty()) {
        scene.empty = words.noPage;
    }
    if (navigator.OpenedList()) {
        scene.list = SceneOf(*navigator.OpenedList());
    }
    if (const auto& question = navigator.OpenedBox()) {
        const host::Box& box = question->box;
        scene.box = BoxScene{box.title, box.message, box.buttons, question->focus};
    }
    if (const Application* front = navigator.FrontApplication()) {
        scene.application = SceneOf(*front, navigator.ApplicationButton(), words);
    }
    return scene;
}

std::string SpokenText(const Scene& scene, const std::string& menuLanguage) {
    const Words& words = WordsOf(menuLanguage);
    std::string spoken;
    if (scene.application) {
        Say(&spoken, scene.application->title);
        Say(&spoken, scene.application->problem);
        Say(&spoken, At(scene.application->buttons, scene.application->focus));
        return spoken;
    }
    if (scene.box) {
        Say(&spoken, scene.box->title);
        Say(&spoken, scene.box->message);
        Say(&spoken, At(scene.box->buttons, scene.box->focus));
        return spoken;
    }
    if (scene.list) {
        Say(&spoken, scene.list->title);
        Say(&spoken, At(scene.list->choices, scene.list->focus));
        Say(&spoken, scene.list->current == scene.list->focus ? words.selected : "");
        return spoken;
    }
    for (const RowScene& row : scene.rows) {
        if (row.focused) {
            Say(&spoken, row.title);
            Say(&spoken, row.value);
            Say(&spoken, row.dimmed ? words.dimmed : "");
            Say(&spoken, scene.reason);
        }
    }
    return spoken.empty() ? scene.empty : spoken;
}

namespace {

void AddLine(std::string* text, const std::string& name, const std::string& value) {
    if (!value.empty()) {
        *text += name + ": " + value + "\n";
    }
}

std::string ToText(const RowScene& row) {
    std::string text = row.focused ? "> " : "  ";
    text += std::string(2 * static_cast<size_t>(row.depth), ' ') + row.title;
    text += row.value.empty() ? "" : " = " + row.value;
    text += row.dimmed ? " (dimmed)" : "";
    return text + (row.changed ? " (changed)" : "") + "\n";
}

void AddChoosable(std::string* text, const std::vector<std::string>& things, size_t focus) {
    for (size_t i = 0; i < things.size(); ++i) {
        *text += (i == focus ? " > [" : "   [") + things[i] + "]\n";
    }
}

}  // namespace

std::string ToText(const Scene& scene) {
    std::string text;
    const char* front = scene.application ? "application"
                        : scene.box       ? "box"
                        : scene.list      ? "list"
                                          : "page";
    AddLine(&text, "front", front);
    AddLine(&text, "page", scene.title);
    AddLine(&text, "empty", scene.empty);
    for (const RowScene& row : scene.rows) {
        text += ToText(row);
    }
    AddLine(&text, "help", scene.help);
    AddLine(&text, "reason", scene.reason);
    if (scene.list) {
        AddLine(&text, "list", scene.list->title);
        for (size_t i = 0; i < scene.list->choices.size(); ++i) {
            text += i == scene.list->focus ? " > " : "   ";
            text += scene.list->choices[i] + (scene.list->current == i ? " (current)" : "") + "\n";
        }
    }
    if (scene.box) {
        AddLine(&text, "box", scene.box->title);
        AddLine(&text, "message", scene.box->message);
        AddChoosable(&text, scene.box->buttons, scene.box->focus);
    }
    if (scene.application) {
        AddLine(&text, "application", scene.application->title);
        AddLine(&text, "id", scene.application->id);
        for (const std::string& detail : scene.application->details) {
            AddLine(&text, "with", detail);
        }
        AddLine(&text, "problem", scene.application->problem);
        AddChoosable(&text, scene.application->buttons, scene.application->focus);
    }
    AddLine(&text, "toast", scene.toast);
    if (scene.panel) {
        for (const PanelScene::Section& section : scene.panel->sections) {
            AddLine(&text, "panel", section.title);
            for (const std::string& line : section.lines) {
                text += "   " + line + "\n";
            }
        }
    }
    return text;
}

}  // namespace window
