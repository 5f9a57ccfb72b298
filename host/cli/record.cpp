// vtv record.
#include <iostream>

#include "host/core/tv_recording.h"
#include "program/visible_text.h"
#include "verbs.h"

namespace cli {

namespace {

void Start(const Common& common, const std::string& file) {
    const vtv::Tv tv(TvDir(common));
    host::StartRecording(tv, file);
    std::cout << program::OneLine("Recording what vtv does to " + tv.Dir() + " into " +
                                  host::RecordingOf(tv) + ". End: vtv record stop")
              << '\n';
}

void Stop(const Common& common) {
    const vtv::Tv tv(TvDir(common));
    const std::string file = host::StopRecording(tv);
    std::cout << program::OneLine("Recorded " + file + ". Play it: vtv run " + file) << '\n';
}

void Status(Common& common) {
    const vtv::Tv tv(TvDir(common));
    const std::string file = host::RecordingOf(tv);
    if (common.json) {
        Json::Value json;
        json["recording"] = !file.empty();
        json["file"] = file.empty() ? Json::Value() : Json::Value(file);
        PrintJson(json);
    } else {
        std::cout << (file.empty() ? std::string("Nothing is being recorded.")
                                   : program::OneLine("Recording into " + file))
                  << '\n';
    }
    common.exitCode = file.empty() ? kNo : kOk;
}

}  // namespace

void AddRecord(CLI::App& app, Common& common) {
    CLI::App* verb = AddVerb(app, common, "record", "Record all that is done to a TV",
                             "  vtv record start mine.toml\n"
                             "  vtv press voice-wake-up && vtv network disconnected\n"
                             "  vtv record stop && vtv run mine.toml",
                             kTv);
    verb->require_subcommand(1);
    const auto file = std::make_shared<std::string>();
    CLI::App* start =
        AddVerb(*verb, common, "start", "Record from now on what any verb does to the TV",
                "  vtv record start mine.toml --tv kitchen\n\n"
                "The scenario begins with what the TV is now; one that was recorded is gone on\n"
                "with. What other programs do to the TV is not recorded.",
                kTv);
    start->add_option("FILE", *file, "The scenario (TOML), begun if it is not there")->required();
    start->callback([&common, file] { Start(common, *file); });
    CLI::App* stop = AddVerb(*verb, common, "stop", "End that", "  vtv record stop", kTv);
    stop->callback([&common] { Stop(common); });
    CLI::App* status =
        AddVerb(*verb, common, "status", "Tell whether the TV is being recorded",
                "  vtv record status --json\n\nEnds with 1 when it is not.", kTv | kJson);
    status->callback([&common] { Status(common); });
}

}  // namespace cli
