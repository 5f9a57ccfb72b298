// What the explorer's TV tells of what came of a press.
#pragma once

#include <iterator>

#include "host/page/tv_events.h"
#include "lazy_tv.h"

namespace explorer {

// Of the TV of this process and its current run.
class LazyTvEvents : public host::TvEvents {
  public:
    vtv::LaunchMark LaunchMark() override { return {.size = std::ssize(tv().Record())}; }
    std::vector<vtv::Launch> LaunchesSince(const vtv::LaunchMark& mark) override {
        std::vector<vtv::Launch> launches;
        const std::vector<RecordEntry> entries = ReadRecord(tv().Record().substr(mark.size));
        for (const RecordEntry& entry : entries) {
            if (entry.kind == Entry::kLaunch || entry.kind == Entry::kPopup) {
                vtv::Launch& launch = launches.emplace_back();
                launch.appId = entry.subject;
                launch.via = entry.kind == Entry::kLaunch ? "aul" : "app-control";
                launch.extras = entry.extras;
            }
        }
        return launches;
    }
    // Everything has happened when a call of the platform returns.
    void Settle() override {}
    // That a call fails is a value like any other here, which is looked at in a state of its own.
    std::vector<std::string> TakeFailures() override { return {}; }
};

}  // namespace explorer
