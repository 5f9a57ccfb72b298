#include "recording.h"

#include <stdlib.h>
#include <toml++/toml.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace host {

namespace fs = std::filesystem;

namespace {

std::string StepText(const toml::table& step) {
    const toml::table document{{"step", toml::array{step}}};
    std::ostringstream text;
    text << document << '\n';
    return text.str();
}

void Insert(toml::table& table, const std::string& key, const vtv::Value& value) {
    std::visit([&](const auto& v) { table.insert_or_assign(key, v); }, value);
}

toml::table Values(const std::map<std::string, vtv::Value>& wanted,
                   const std::map<std::string, vtv::Value>& present) {
    toml::table table;
    for (const auto& [key, value] : wanted) {
        const auto found = present.find(key);
        if (found == present.end() || found->second != value) {
            Insert(table, key, value);
        }
    }
    return table;
}

vtv::Snapshot FreshSnapshot(const std::string& model) {
    std::string folder = (fs::temp_directory_path() / "vtv-record-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        throw vtv::Error(vtv::ErrorKind::kPlatform,
                         folder + ": cannot be made: " + std::strerror(errno));
    }
    vtv::Snapshot snapshot;
    try {
        vtv::Tv::Create(folder + "/tv", model);
        snapshot = vtv::Tv(folder + "/tv").TakeSnapshot();
    } catch (...) {
        fs::remove_all(folder);
        throw;
    }
    fs::remove_all(folder);
    return snapshot;
}

// The step that brings a new TV of the model to where this one is.
toml::table FirstStep(const vtv::Tv& tv, const vtv::Snapshot& fresh) {
    const vtv::Snapshot now = tv.TakeSnapshot();
    toml::table step{{"say", "what the TV had become before"}};
    const auto add = [&](const char* name, auto&& members) {
        if (!members.empty()) {
            step.insert_or_assign(name, members);
        }
    };
    add("set", Values(now.settings, fresh.settings));
    add("state", Values(now.state, fresh.state));
    toml::array unset;
    for (const auto& [key, value] : fresh.settings) {
        if (now.settings.count(key) == 0) {
            unset.push_back(key);
        }
    }
    add("unset", unset);
    const auto missing = [](const std::vector<std::string>& all,
                            const std::vector<std::string>& some) {
        toml::array files;
        for (const std::string& file : all) {
            if (std::find(some.begin(), some.end(), file) == some.end()) {
                files.push_back(file);
            }
        }
        return files;
    };
    add("file-add", missing(now.ownerFiles, fresh.ownerFiles));
    add("file-remove", missing(fresh.ownerFiles, now.ownerFiles));
    return step;
}

}  // namespace

Recording::Recording(const std::string& file, const vtv::Tv& tv) : file_(file) {
    std::error_code error;
    if (fs::exists(file, error)) {
        return;
    }
    // A model that comes with the virtual TV is named; any other is the TV's own copy.
    std::string model = tv.GetModel().name;
    try {
        vtv::FindModel(model);
    } catch (const vtv::Error&) {
        model = tv.GetModel().file;
    }
    std::ostringstream text;
    text << toml::table{{"title", "Recorded on " + tv.GetModel().title}, {"model", model}}
         << "\n\n";
    const toml::table first = FirstStep(tv, FreshSnapshot(vtv::FindModel(model)));
    if (first.size() > 1) {
        text << StepText(first);
    }
    Append(text.str());
}

void Recording::Add(const std::string& action, const vtv::Value& value) {
    toml::table step;
    Insert(step, action, value);
    Append("\n" + StepText(step));
}

void Recording::Add(const std::string& action, const std::map<std::string, vtv::Value>& members) {
    Append("\n" + StepText(toml::table{{action, Values(members, {})}}));
}

void Recording::AddPress(const Press& press, const PressResult& result) {
    toml::table step{{"press", press.item->name}};
    if (press.choose) {
        step.insert("choose", *press.choose);
    }
    if (press.answer != Answer::kNone) {
        step.insert("answer", press.answer == Answer::kOk ? "ok" : "cancel");
    }
    toml::table expect;
    toml::table page;
    toml::array sees;
    toml::array launched;
    for (const Sight& sight : result.sights) {
        if (sight.change) {
            const ItemView& view = result.after[sight.change->item->name];
            const bool there = result.after.IsReachable(*view.item);
            toml::table item{{"visible", there}};
            if (there) {
                item.insert("enabled", view.enabled);
            }
            if (there && view.value) {
                item.insert("value", *view.value);
            }
            page.insert_or_assign(view.item->name, item);
            continue;
        }
        sees.push_back(ToText(sight.kind));
        if (sight.kind == Sight::Kind::kApplication) {
            launched.push_back(sight.text);
        } else if (sight.kind == Sight::Kind::kToast) {
            expect.insert_or_assign("toast", sight.text);
        }
    }
    if (!result.done) {
        expect.insert("refused", true);
    }
    expect.insert("sees", sees);
    if (!launched.empty()) {
        expect.insert("launched", launched);
    }
    if (!page.empty()) {
        expect.insert("page", page);
    }
    step.insert("expect", expect);
    Append("\n" + StepText(step));
}

void Recording::Append(const std::string& text) {
    std::ofstream stream(file_, std::ios::app);
    stream << text;
    stream.close();
    if (!stream) {
        throw vtv::Error(vtv::ErrorKind::kPlatform,
                         file_ + ": the recording cannot be written: " + std::strerror(errno));
    }
}

}  // namespace host
