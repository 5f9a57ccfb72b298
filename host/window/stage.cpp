#include "stage.h"

#include <Edje.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace window {

namespace {

constexpr double kLargeText = 1.2;

// An entry of the theme's "data".
std::string DataOf(const std::string& theme, const std::string& name) {
    char* data = edje_file_data_get(theme.c_str(), name.c_str());
    std::string text = data != nullptr ? data : "";
    std::free(data);
    return text;
}

}  // namespace

Stage::Stage(Evas* canvas, const std::string& theme)
    : drawing_{canvas, theme, {}, [](const std::string&) {}, [](size_t) {}, [](size_t) {}},
      ground_(evas_object_rectangle_add(canvas)),
      page_(std::make_unique<PageView>(drawing_)),
      overlays_(std::make_unique<Overlays>(drawing_)),
      panel_(std::make_unique<PanelView>(drawing_)) {
    // Letters as they are, and not as some screen's pixels would have them.
    evas_font_hinting_set(canvas, EVAS_FONT_HINTING_NONE);
    evas_object_color_set(ground_, 0, 0, 0, 255);
    evas_object_layer_set(ground_, -1);
}

void Stage::Resize(int width, int height) {
    width_ = width;
    height_ = height;
    evas_object_geometry_set(ground_, 0, 0, width, height);
    evas_object_show(ground_);
}

void Stage::Draw(const Scene& scene) {
    // The panel takes its part of the whole at the right, and leaves the rest to the TV.
    const Frame whole = Within(width_);
    const double taken = kPanelWidth * whole.scale + whole.left;
    Frame& frame = drawing_.frame;
    frame = scene.panel ? Within(width_ - taken) : whole;
    frame.text = scene.look.large ? kLargeText : 1;
    frame.mirrored = scene.look.mirrored;
    SetContrast(scene.look.contrast);
    page_->Draw(scene);
    overlays_->Draw(scene);
    panel_->Draw(whole, scene.panel);
}

// The page in the middle of so much of the canvas, from its left.
Frame Stage::Within(double width) const {
    Frame frame;
    frame.scale = std::min(width / kPageWidth, height_ / kPageHeight);
    frame.left = (width - kPageWidth * frame.scale) / 2;
    frame.top = (height_ - kPageHeight * frame.scale) / 2;
    return frame;
}

std::vector<Misfit> Stage::Misfits() const {
    std::vector<Misfit> misfits;
    page_->AddMisfits(&misfits);
    overlays_->AddMisfits(&misfits);
    return misfits;
}

void Stage::SetContrast(bool high) {
    if (high == contrast_) {
        return;
    }
    contrast_ = high;
    std::istringstream names(DataOf(drawing_.theme, "contrast"));
    for (std::string name; names >> name;) {
        if (!high) {
            edje_color_class_del(name.c_str());
            continue;
        }
        std::istringstream colour(DataOf(drawing_.theme, "contrast/" + name));
        int red = 0;
        int green = 0;
        int blue = 0;
        int alpha = 255;
        colour >> red >> green >> blue >> alpha;
        edje_color_class_set(name.c_str(), red, green, blue, alpha, 0, 0, 0, 0, 0, 0, 0, 0);
    }
}

}  // namespace window
