// Draws scenes on a canvas, a window's or a picture's.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "overlays.h"
#include "panel_view.h"

namespace window {

class Stage {
  public:
    Stage(Evas* canvas, const std::string& theme);

    // The page is 16:9, as large as the canvas and an open panel let it be.
    void Resize(int width, int height);
    void Draw(const Scene& scene);
    // The texts that are cut in what was drawn last.
    std::vector<Misfit> Misfits() const;

    Drawing& Wires() { return drawing_; }

  private:
    Frame Within(double width) const;
    void SetContrast(bool high);

    Drawing drawing_;
    Evas_Object* ground_;
    int width_ = 0;
    int height_ = 0;
    bool contrast_ = false;
    std::unique_ptr<PageView> page_;
    std::unique_ptr<Overlays> overlays_;
    std::unique_ptr<PanelView> panel_;
};

}  // namespace window
