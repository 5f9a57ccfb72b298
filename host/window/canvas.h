// A canvas without a display, and what is drawn on it as PNG.
#pragma once

#include <Ecore_Evas.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "stage.h"

namespace window {

class Canvas {
  public:
    Canvas(int width, int height, const std::string& theme);
    ~Canvas();
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    // For keys that a test feeds.
    Evas* GetEvas() const { return ecore_evas_get(canvas_); }
    Stage& GetStage() { return *stage_; }
    // What it looks like, drawn to the end, as a PNG file.
    std::string Png();

  private:
    int width_;
    int height_;
    Ecore_Evas* canvas_;
    std::unique_ptr<Stage> stage_;
};

}  // namespace window
