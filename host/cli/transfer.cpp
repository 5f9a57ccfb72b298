// vtv dump, load, import, snapshot, restore, diff: whole TVs in and out of files.
#include <filesystem>
#include <iostream>
#include <memory>

#include "host/core/compare_tvs.h"
#include "host/core/dump.h"
#include "host/core/step_to.h"
#include "program/visible_text.h"
#include "verbs.h"
#include "virtual-tv/model/json_text.h"

namespace fs = std::filesystem;

namespace cli {

namespace {

void WriteJsonTo(const std::string& file, const Json::Value& json) {
    WriteFile(file.empty() ? "-" : file, vtv::PrettyJson(json) + "\n");
}

void AddOut(CLI::App& app, Common& common, const char* name, const char* does, const char* examples,
            Json::Value (*take)(const vtv::Tv& tv)) {
    const auto file = std::make_shared<std::string>();
    CLI::App* verb = AddVerb(app, common, name, does, examples, kTv);
    verb->add_option("FILE", *file, "Where to; the standard output when left out");
    verb->callback([&common, file, take] {
        const vtv::Tv tv(TvDir(common));
        WarnOfProblems(tv);  // what cannot be read is not in the document
        WriteJsonTo(*file, take(tv));
    });
}

void AddIn(CLI::App& app, Common& common, const char* name, const char* does, const char* examples,
           vtv::Snapshot (*wanted)(const vtv::JsonText& document, const std::string& file,
                                   const vtv::Tv& tv)) {
    const auto file = std::make_shared<std::string>();
    CLI::App* verb = AddVerb(app, common, name, does, examples, kTv | kRecord);
    verb->add_option("FILE", *file, "A JSON file; - is the standard input")->required();
    verb->callback([&common, file, wanted] {
        const vtv::JsonText document = ReadJsonFile(*file);
        vtv::Tv tv(TvDir(common));
        const vtv::Snapshot snapshot = wanted(document, *file, tv);
        Recorder recorder(common, tv, [&] { return host::StepTo(snapshot, tv.TakeSnapshot()); });
        tv.Restore(snapshot);
        recorder.Done();
    });
}

vtv::Snapshot Load(const vtv::JsonText& document, const std::string& file, const vtv::Tv& tv) {
    const host::Dump dump = host::ParseDump(document);
    if (dump.packages && !dump.packages->empty()) {
        Warn("the packages of " + file +
             " are left out: they belong to a TV's model. To have them: vtv import " + file +
             " NAME");
    }
    return host::SnapshotWith(dump, tv);
}

struct ImportOptions {
    std::string file;
    std::string name;
};

void Import(const ImportOptions& options) {
    const host::Dump dump = host::ParseDump(ReadJsonFile(options.file));
    const std::string dir = TvPath(options.name);
    if (vtv::Tv::IsTv(dir)) {
        throw Refusal(dir + ": there is a TV already. To change it: vtv load " + options.file +
                      " --tv " + options.name);
    }
    vtv::Tv::Create(dir, host::ModelText(dump), fs::path(dir).filename().string() + ".toml",
                    [&](vtv::Tv& tv) { tv.Restore(host::SnapshotWith(dump, tv)); });
    TellOfNewTv(dir, options.name);
}

void AddImport(CLI::App& app, Common& common) {
    const auto options = std::make_shared<ImportOptions>();
    CLI::App* verb =
        AddVerb(app, common, "import", "Make a TV from the dump of a real set",
                "  vtv import set-4711.json set-4711\n\n"
                "The dump is a JSON object with \"settings\", \"features\" and \"packages\";\n"
                "vtv dump prints one of a virtual TV to start from.",
                0);
    verb->add_option("FILE", options->file, "The dump")->required();
    verb->add_option("NAME", options->name, "Name or folder of the new TV")->required();
    verb->callback([options] { Import(*options); });
}

struct DiffOptions {
    std::string first;
    std::string second;
};

void Diff(Common& common, const DiffOptions& options) {
    Common one = common;
    one.tv = options.first;
    Common two = common;
    two.tv = options.second;
    std::vector<host::TvDifference> differences =
        host::CompareTvs(vtv::Tv(TvDir(one)), vtv::Tv(TvDir(two)));
    vtv::WatchNothing();
    const auto look = [](const Common& which) { return host::LookAtPage(Session(which).provider); };
    const host::Page first = look(one);
    const host::Page second = look(two);
    for (const host::PageChange& change : host::ComparePages(first, second)) {
        differences.push_back({"item", std::string(change.item->name) + " " + change.what,
                               change.before, change.after});
    }
    Json::Value json(Json::arrayValue);
    for (const host::TvDifference& difference : differences) {
        Json::Value entry;
        entry["what"] = difference.what;
        entry["name"] = difference.name;
        entry["first"] = difference.first ? Json::Value(*difference.first) : Json::Value();
        entry["second"] = difference.second ? Json::Value(*difference.second) : Json::Value();
        json.append(entry);
        if (!common.json) {
            std::cout << Paint(Look::kDim, difference.what + " ")
                      << Paint(Look::kBold, difference.name) << '\n'
                      << Paint(Look::kBad, "  - " + difference.first.value_or("(none)")) << '\n'
                      << Paint(Look::kGood, "  + " + difference.second.value_or("(none)")) << '\n';
        }
    }
    if (common.json) {
        PrintJson(json);
    }
    common.exitCode = differences.empty() ? kOk : kNo;
}

void AddDiff(CLI::App& app, Common& common) {
    const auto options = std::make_shared<DiffOptions>();
    CLI::App* verb =
        AddVerb(app, common, "diff", "Compare two TVs: features, settings, state, files and pages",
                "  vtv diff kitchen bedroom\n\n"
                "Ends with 0 when they are alike and with 1 when they differ.",
                kProvider | kJson);
    verb->add_option("TV", options->first, "A TV")->required();
    verb->add_option("OTHER", options->second, "Another")->required();
    verb->callback([&common, options] { Diff(common, *options); });
}

}  // namespace

void AddTransferVerbs(CLI::App& app, Common& common) {
    AddOut(app, common, "dump", "Print a TV as one JSON document",
           "  vtv dump > kitchen.json\n  vtv dump kitchen.json --tv kitchen",
           [](const vtv::Tv& tv) { return host::ToJson(host::TakeDump(tv)); });
    AddIn(app, common, "load", "Put the settings, features and state of a dump onto a TV",
          "  vtv load kitchen.json --tv bedroom\n\nWhat the document leaves out stays as it is.",
          Load);
    AddImport(app, common);
    AddOut(app, common, "snapshot", "Keep everything that can change on a TV",
           "  vtv snapshot before.json\n  vtv restore before.json",
           [](const vtv::Tv& tv) { return host::ToJson(tv.TakeSnapshot()); });
    AddIn(app, common, "restore", "Bring a TV back to a snapshot", "  vtv restore before.json",
          [](const vtv::JsonText& document, const std::string& /*file*/, const vtv::Tv& /*tv*/) {
              return host::ParseSnapshot(document);
          });
    AddDiff(app, common);
}

}  // namespace cli
