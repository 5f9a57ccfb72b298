// The panel beside the TV.
#pragma once

#include <memory>

#include "pieces.h"
#include "scene.h"

namespace window {

// As wide as this, in units of the whole window, whose height it has.
inline constexpr double kPanelWidth = 528;

class PanelView {
  public:
    explicit PanelView(const Drawing& drawing) : drawing_(drawing) {}

    // At the right of the frame, which is that of the whole window; absent: none.
    void Draw(const Frame& whole, const std::optional<PanelScene>& panel);

  private:
    const Drawing& drawing_;
    std::unique_ptr<Piece> piece_;  // made when it is first opened
};

}  // namespace window
