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

std::map<std::string, vtv::Value> ValuesOf(const vtv::Tv& tv) {
    std::map<std::string, vtv::Value> values;
    for (const vtv::Setting& setting : tv.Settings()) {
        if (setting.value) {
            values[setting.key] = *setting.value;
        }
    }
    return values;
}

// One write, or removal, of a setting.
struct Change {
    std::string key;
    std::optional<vtv::Value> before;
    std::optional<vtv::Value> value;
    vtv::Writing writing;
};

Json::Value ChangeToJson(const Change& change) {
    Json::Value json = change.value ? SettingToJson(change.key, *change.value) : Json::Value();
    json["key"] = change.key;
    json["removed"] = !change.value.has_value();
    json["before"] = change.before ? ToJson(*change.before) : Json::Value();
    json["time"] = vtv::ToText(change.writing.time);
    json["writer"] = Json::Value();
    if (change.writing.pid != 0) {
        json["writer"]["pid"] = change.writing.pid;
        json["writer"]["program"] = change.writing.program;
    }
    return json;
}

void Print(const Change& change) {
    std::cout << Paint(Look::kDim, TimeOfDay(vtv::ToText(change.writing.time), 12) + " ")
              << program::OneLine(change.key + " = " +
                                  (change.value ? Shown(*change.value) : "(removed)"))
              << Paint(Look::kDim, "  was " + (change.before ? Shown(*change.before) : "(unset)"));
    if (change.writing.pid != 0) {
        std::cout << Paint(Look::kDim, "  by " + change.writing.program + " " +
                                           std::to_string(change.writing.pid));
    }
    std::cout << std::endl;
}

void Watch(const Common& common, const WatchOptions& options) {
    vtv::Tv tv(TvDir(common));
    int seen = 0;
    std::map<std::string, vtv::Value> known;
    const auto tell = [&](const std::string& key) {
        Change change{key, std::nullopt, tv.Get(key), {}};
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
        if (change.value) {
            known[key] = *change.value;
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
    known = ValuesOf(tv);
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
