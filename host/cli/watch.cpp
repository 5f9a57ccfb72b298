// vtv watch: what is written to a TV, as it happens.
#include <iostream>
#include <memory>
#include <optional>

#include "program/visible_text.h"
#include "setting_text.h"
#include "verbs.h"

namespace cli {

namespace {

struct WatchOptions {
    std::vector<std::string> keys;
    int count = 0;
};

std::map<std::string, vtv::Setting> SettingsOf(const vtv::Tv& tv) {
    std::map<std::string, vtv::Setting> settings;
    for (vtv::Setting& setting : tv.Settings()) {
        settings[setting.key] = std::move(setting);
    }
    return settings;
}

// One write, or removal, of a setting.
struct Change {
    std::string key;
    std::optional<vtv::Setting> before;
    std::optional<vtv::Setting> now;
    vtv::Writing writing;
};

Json::Value ChangeToJson(const Change& change) {
    const bool hasValue = change.now && change.now->value;
    Json::Value json = hasValue ? SettingToJson(change.key, *change.now->value) : Json::Value();
    json["key"] = change.key;
    json["removed"] = !change.now.has_value();
    if (change.now && !hasValue) {
        json["problem"] = change.now->problem;
    }
    json["before"] =
        change.before && change.before->value ? ToJson(*change.before->value) : Json::Value();
    json["time"] = vtv::ToText(change.writing.time);
    json["writer"] = Json::Value();
    if (change.writing.pid != 0) {
        json["writer"]["pid"] = change.writing.pid;
        json["writer"]["program"] = change.writing.program;
    }
    return json;
}

std::string ShownOr(const std::optional<vtv::Setting>& setting, const char* whenThereIsNone) {
    return !setting ? whenThereIsNone : setting->value ? Shown(*setting->value) : "(damaged)";
}

void Print(const Change& change) {
    std::cout << Paint(Look::kDim, TimeOfDay(vtv::ToText(change.writing.time), 12) + " ")
              << program::OneLine(change.key + " = " + ShownOr(change.now, "(removed)"))
              << Paint(Look::kDim, "  was " + ShownOr(change.before, "(unset)"));
    if (change.writing.pid != 0) {
        std::cout << Paint(Look::kDim, "  by " + change.writing.program + " " +
                                           std::to_string(change.writing.pid));
    }
    if (change.now && !change.now->value) {
        std::cout << program::OneLine("  " + change.now->problem);
    }
    std::cout << std::endl;
}

void Watch(const Common& common, const WatchOptions& options) {
    vtv::Tv tv(TvDir(common));
    int seen = 0;
    std::map<std::string, vtv::Setting> known;
    const auto tell = [&](const std::string& key) {
        Change change{key, std::nullopt, tv.Find(key), {}};
        if (const auto before = known.find(key); before != known.end()) {
            change.before = before->second;
        }
        // Who removes a setting leaves nothing behind that could tell of it.
        const auto now = std::chrono::system_clock::now();
        change.writing = tv.LastWriting(key).value_or(
            vtv::Writing{std::chrono::time_point_cast<std::chrono::microseconds>(now), 0, ""});
        ++seen;
        if (common.json) {
            PrintJsonLine(ChangeToJson(change));
        } else {
            Print(change);
        }
        known.erase(key);
        if (change.now) {
            known[key] = *change.now;
        }
    };
    for (const std::string& key : options.keys) {
        tv.Watch(key, [&tell, &key] { tell(key); });
    }
    if (options.keys.empty()) {
        tv.WatchAll([&tell](const vtv::Change& change) {
            if (change.what == vtv::Change::What::kSetting) {
                tell(change.name);
            }
        });
    }
    known = SettingsOf(tv);
    Note(std::string("Watching") + (options.keys.empty() ? " every key" : "") +
         "; end with Ctrl-C.");
    while ((options.count == 0 || seen < options.count) && WaitForTv(tv)) {
        tv.Dispatch();
    }
}

}  // namespace

void AddWatch(CLI::App& app, Common& common) {
    const auto options = std::make_shared<WatchOptions>();
    CLI::App* verb = AddVerb(
        app, common, "watch", "Print a setting each time that something writes it",
        "  vtv watch db/menu/voice/mva_list\n"
        "  vtv watch                        every setting of the TV\n\n"
        "A write is told of also when the value stays the same: when it was written, the value\n"
        "that was seen before, and the program and process that wrote it. Who wrote is not\n"
        "told of a removal, which leaves nothing behind, nor where the file system keeps no\n"
        "extended attributes.",
        kTv | kJson);
    verb->add_option("KEY", options->keys, "Settings keys; all of them when none is named");
    verb->add_option("--count", options->count, "End after so many writes")
        ->type_name("N")
        ->check(WholeNumber(1));
    verb->callback([&common, options] { Watch(common, *options); });
}

}  // namespace cli
