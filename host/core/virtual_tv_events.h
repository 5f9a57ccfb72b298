// What a virtual TV tells of what came of a press.
#pragma once

#include "host/page/tv_events.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

class VirtualTvEvents : public TvEvents {
  public:
    // The TV must be on, and outlive this.
    explicit VirtualTvEvents(vtv::Tv& tv) : tv_(tv) {}

    vtv::LaunchMark LaunchMark() override { return tv_.LaunchMark(); }
    std::vector<vtv::Launch> LaunchesSince(const vtv::LaunchMark& mark) override {
        return tv_.LaunchesSince(mark);
    }
    void Settle() override { tv_.Dispatch(); }
    std::vector<std::string> TakeFailures() override { return tv_.TakeFailures(); }

  private:
    vtv::Tv& tv_;
};

}  // namespace host
