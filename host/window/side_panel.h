// What stands beside the TV: why the focused item is as it is, what came of the last press, the
// command for the last action, and the TV around the page with keys that change it.
#pragma once

#include <string>

#include "keyboard.h"
#include "tv_screen.h"

namespace window {

class SidePanel {
  public:
    // All must outlive this.
    SidePanel(vtv::Tv& tv, const host::Provider& provider, TvScreen& screen)
        : tv_(tv), provider_(provider), screen_(screen) {}

    bool IsOpen() const { return isOpen_; }
    void Turn() { isOpen_ = !isOpen_; }
    // Language, account, network, power cycle, record.
    void Use(Tool tool);
    PanelScene Look();

  private:
    PanelScene::Section LookAtTv() const;
    void Explain();
    void Put(const char* name, const std::string& value);
    void TurnRecording();
    std::string NextLanguage() const;

    vtv::Tv& tv_;
    const host::Provider& provider_;
    TvScreen& screen_;
    bool isOpen_ = false;
    // Why that item is as it is, which is asked anew only when it may have become otherwise.
    const host::Item* explained_ = nullptr;
    int explainedAt_ = 0;
    PanelScene::Section why_;
};

}  // namespace window
