// Pieces of one kind, as many as are needed: those that are not are kept, out of sight.
#pragma once

#include <deque>
#include <string>
#include <utility>

#include "piece.h"

namespace window {

// The canvas, the theme, and where the page lies: what every view draws with.
struct Drawing {
    Evas* canvas;
    std::string theme;
    Frame frame;
    // What the mouse presses.
    std::function<void(const std::string& item)> pressItem;
    std::function<void(size_t line)> pressLine;
    std::function<void(size_t button)> pressButton;
};

// Layers, from the back.
enum Layer : short {
    kPageLayer = 1,
    kListLayer = 10,
    kBoxLayer = 20,
    kFrontLayer = 30,
    kToastLayer = 40,
    kPanelLayer = 50
};

class Pieces {
  public:
    Pieces(const Drawing& drawing, const char* group, short layer)
        : drawing_(drawing), group_(group), layer_(layer) {}

    // The next one, at its place and to be seen.
    Piece& Next(const Area& area) {
        if (used_ == all_.size()) {
            all_.emplace_back(drawing_.canvas, drawing_.theme, group_, layer_);
        }
        Piece& piece = all_[used_++];
        piece.Place(drawing_.frame, area);
        return piece;
    }
    void Begin() { used_ = 0; }
    void End() {
        for (size_t i = used_; i < all_.size(); ++i) {
            all_[i].Show(false);
        }
    }
    // Those that are to be seen.
    template <typename Do>
    void ForEach(const Do& look) const {
        for (size_t i = 0; i < used_; ++i) {
            look(all_[i]);
        }
    }

  private:
    const Drawing& drawing_;
    const char* group_;
    short layer_;
    std::deque<Piece> all_;
    size_t used_ = 0;
};

}  // namespace window
