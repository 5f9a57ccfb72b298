#include "panel_view.h"

namespace window {

void PanelView::Draw(const Frame& whole, const std::optional<PanelScene>& panel) {
    if (!panel) {
        piece_.reset();
        return;
    }
    if (piece_ == nullptr) {
        piece_ = std::make_unique<Piece>(drawing_.canvas, drawing_.theme, "beside", kPanelLayer);
    }
    piece_->Place(whole, {kPageWidth - kPanelWidth, 0, kPanelWidth, kPageHeight});
    std::string markup;
    for (const PanelScene::Section& section : panel->sections) {
        markup += markup.empty() ? "" : "<br/><gap><br/></gap>";
        markup += "<heading>" + Plain(section.title) + "</heading>";
        for (const std::string& line : section.lines) {
            markup += "<br/>" + Plain(line);
        }
    }
    piece_->SetMarkup("text", markup);
}

}  // namespace window
