#include "side_panel.h"

#include <algorithm>
#include <filesystem>

#include "host/core/explain.h"
#include "host/core/tv_names.h"
#include "host/core/tv_recording.h"

namespace fs = std::filesystem;

namespace window {

namespace {

constexpr size_t kMostRecords = 30;

std::string FileName(const std::string& path) {
    return fs::path(path).filename().string();
}

std::string Now(const vtv::Tv& tv, const char* name) {
    return host::FindStateName(name)->get(tv);
}

// In the working folder, as vtv's own verbs write there; none that is there already.
std::string FreeScenario(const vtv::Tv& tv) {
    const std::string name = FileName(tv.Dir());
    std::string file = name + ".toml";
    for (int number = 2; fs::exists(file); ++number) {
        file = name + "-" + std::to_string(number) + ".toml";
    }
    return fs::absolute(file).string();
}

std::string ToText(const vtv::LogRecord& record) {
    std::string text = record.function.empty() ? record.tag : record.function;
    text += ": " + record.message;
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

PanelScene::Section LogOf(const Diary& diary) {
    PanelScene::Section section{"Log of the last press", {}};
    const std::vector<vtv::LogRecord>& log = diary.Log();
    for (size_t i = 0; i < std::min(log.size(), kMostRecords); ++i) {
        section.lines.push_back(ToText(log[i]));
    }
    if (log.size() > kMostRecords) {
        section.lines.push_back("... and " + std::to_string(log.size() - kMostRecords) +
                                " more: vtv log");
    }
    if (log.empty()) {
        section.lines.emplace_back("nothing");
    }
    return section;
}

PanelScene::Section LaunchesOf(const Diary& diary) {
    PanelScene::Section section{"Started by the last press", {}};
    for (const vtv::Launch& launch : diary.Launches()) {
        section.lines.push_back(host::SightOf(launch).text);
    }
    if (section.lines.empty()) {
        section.lines.emplace_back("nothing");
    }
    return section;
}

}  // namespace

PanelScene SidePanel::Look() {
    PanelScene scene;
    scene.sections.push_back(LookAtTv());
    Explain();
    if (explained_ != nullptr) {
        scene.sections.push_back(why_);
    }
    const Diary& diary = screen_.GetDiary();
    if (!diary.Command().empty()) {
        scene.sections.push_back({"The last action (Y copies it)", {diary.Command()}});
    }
    if (diary.Result() != nullptr) {
        scene.sections.push_back(LaunchesOf(diary));
        scene.sections.push_back(LogOf(diary));
    }
    return scene;
}

PanelScene::Section SidePanel::LookAtTv() const {
    const std::string recording = host::RecordingOf(tv_);
    return {FileName(tv_.Dir()) + ", " + tv_.GetModel().name,
            {"L  language: " + Now(tv_, "language"), "A  account: " + Now(tv_, "account"),
             "N  network: " + Now(tv_, "network"), "P  power cycle",
             recording.empty() ? "R  record a scenario" : "R  recording " + FileName(recording)}};
}

void SidePanel::Explain() {
    const host::Item* item = screen_.GetNavigator().Focused();
    if (item == explained_ && explainedAt_ == screen_.Changes()) {
        return;
    }
    explained_ = item;
    explainedAt_ = screen_.Changes();
    if (item == nullptr) {
        return;
    }
    const host::Explanation explanation = host::Explain(provider_, tv_, *item);
    why_ = {"Why (vtv explain " + std::string(item->name) + ")", {explanation.sentence}};
    for (const host::Reasons& reasons : explanation.reasons) {
        if (explanation.sentence.find(reasons.because) != std::string::npos) {
            continue;  // the sentence has said it
        }
        why_.lines.push_back("· " + host::Heading(reasons) + ": " + reasons.because);
    }
}

void SidePanel::Use(Tool tool) {
    switch (tool) {
        case Tool::kLanguage:
            Put("language", NextLanguage());
            return;
        case Tool::kAccount:
            Put("account", tv_.SignedIn() ? "signed-out" : "signed-in");
            return;
        case Tool::kNetwork:
            Put("network", tv_.Online() ? "disconnected" : "connected");
            return;
        case Tool::kPowerCycle:
            screen_.Do({"power-cycle"}, {{"power-cycle", true}}, [this] { tv_.PowerCycle(); });
            return;
        case Tool::kRecord:
            TurnRecording();
            return;
        default:
            return;
    }
}

void SidePanel::Put(const char* name, const std::string& value) {
    screen_.Do({name, value}, {{name, value}}, [&] { host::FindStateName(name)->set(tv_, value); });
}

// The one behind that of now, of those that there are texts for.
std::string SidePanel::NextLanguage() const {
    const std::vector<std::string> languages = vtv::Tv::Languages();
    const std::string now = tv_.Language();
    auto at = std::find(languages.begin(), languages.end(), now);
    if (at == languages.end()) {
        at = std::find(languages.begin(), languages.end(), now.substr(0, now.find('_')));
    }
    const bool isLast = at == languages.end() || at + 1 == languages.end();
    return isLast ? languages.front() : *(at + 1);
}

void SidePanel::TurnRecording() {
    if (host::RecordingOf(tv_).empty()) {
        const std::string file = FreeScenario(tv_);
        screen_.Do({"record", "start", file}, {}, [&] { host::StartRecording(tv_, file); });
        if (!host::RecordingOf(tv_).empty()) {
            screen_.Tell("Recording into " + file + ". R ends it.");
        }
        return;
    }
    std::string saved;
    screen_.Do({"record", "stop"}, {}, [&] { saved = host::StopRecording(tv_); });
    if (!saved.empty()) {
        screen_.Tell("Recorded " + saved + ". Play it: vtv run " + saved);
    }
}

}  // namespace window
