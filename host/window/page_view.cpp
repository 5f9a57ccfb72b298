#include "page_view.h"

#include <algorithm>

namespace window {

namespace {

constexpr Area kRows = {96, 176, 1144, 850};
constexpr double kPitch = 86;
constexpr double kRowHeight = 84;
constexpr double kIndent = 48;

const char* LookOf(const RowScene& row) {
    if (row.dimmed) {
        return row.focused ? "focused-dimmed" : "dimmed";
    }
    return row.focused ? "focused" : "default";
}

const char* SwitchOf(const RowScene& row) {
    if (row.mark != RowScene::Mark::kSwitch) {
        return "default";
    }
    if (row.dimmed) {
        return row.on ? "on-dimmed" : "off-dimmed";
    }
    return row.on ? "on" : "off";
}

}  // namespace

PageView::PageView(const Drawing& drawing)
    : drawing_(drawing),
      page_(drawing.canvas, drawing.theme, "page", 0),
      clip_(evas_object_rectangle_add(drawing.canvas)),
      rows_(drawing, "row", kPageLayer) {
    evas_object_layer_set(clip_, kPageLayer);
}

PageView::~PageView() {
    evas_object_del(clip_);
}

void PageView::Draw(const Scene& scene) {
    const Frame& frame = drawing_.frame;
    page_.Place(frame, {0, 0, kPageWidth, kPageHeight});
    page_.SetText("title", scene.title);
    page_.SetText("empty", scene.empty);
    page_.Signal("page", scene.rows.empty() ? "empty" : "rows");
    DrawHelp(scene);
    evas_object_geometry_set(
        clip_, static_cast<int>(frame.left), static_cast<int>(frame.top + kRows.y * frame.scale),
        static_cast<int>(kPageWidth * frame.scale), static_cast<int>(kRows.height * frame.scale));
    // What clips nothing would itself be seen.
    if (scene.rows.empty()) {
        evas_object_hide(clip_);
    } else {
        evas_object_show(clip_);
    }

    const double pitch = kPitch * frame.text;
    Scroll(scene, pitch);
    rows_.Begin();
    names_.clear();
    double y = kRows.y - scrolled_;
    for (const RowScene& row : scene.rows) {
        DrawRow(row, {kRows.x, y, kRows.width, kRowHeight * frame.text});
        y += pitch;
    }
    rows_.End();
}

// As little as shows the focused row.
void PageView::Scroll(const Scene& scene, double pitch) {
    double top = 0;
    for (const RowScene& row : scene.rows) {
        if (row.focused) {
            break;
        }
        top += pitch;
    }
    const double all = pitch * static_cast<double>(scene.rows.size());
    scrolled_ = std::min(scrolled_, std::max(0.0, all - kRows.height));
    scrolled_ =
        std::clamp(scrolled_, std::max(0.0, top + pitch - kRows.height), std::max(0.0, top));
}

void PageView::DrawRow(const RowScene& row, const Area& area) {
    Piece& piece = rows_.Next(area);
    piece.ClipTo(clip_);
    names_.push_back(row.name);
    piece.SetText("title", row.title, Align::kStart, kIndent * row.depth);
    const bool isSwitch = row.mark == RowScene::Mark::kSwitch;
    const std::string value = isSwitch ? "" : row.value;
    piece.SetText("value", value, Align::kEnd);
    piece.Signal("beside", value.empty() ? "nothing" : "value");
    const bool hasMark = row.mark == RowScene::Mark::kChoice || row.mark == RowScene::Mark::kOpens;
    piece.SetText("mark", !hasMark ? "" : drawing_.frame.mirrored ? "‹" : "›", Align::kEnd);
    piece.Signal("look", LookOf(row));
    piece.Signal("switch", SwitchOf(row));
    piece.Signal("light", row.changed ? "on" : "off");
    piece.OnPress([this, name = row.name] { drawing_.pressItem(name); });
}

void PageView::DrawHelp(const Scene& scene) {
    std::string markup;
    if (!scene.heading.empty()) {
        markup = "<heading>" + Plain(scene.heading) + "</heading>";
    }
    if (!scene.help.empty() && scene.help != scene.heading) {
        markup += "<br/><gap><br/></gap>" + Plain(scene.help);
    }
    if (!scene.reason.empty()) {
        markup += "<br/><gap><br/></gap><reason>" + Plain(scene.reason) + "</reason>";
    }
    page_.SetMarkup("help", markup);
}

void PageView::AddMisfits(std::vector<Misfit>* misfits) const {
    const auto look = [&](const Piece& piece, const std::string& where, const char* part) {
        if (!piece.Fits(part)) {
            misfits->push_back({where, part, piece.TextOf(part)});
        }
    };
    for (const char* part : {"title", "empty", "help"}) {
        look(page_, "page", part);
    }
    size_t row = 0;
    rows_.ForEach([&](const Piece& piece) {
        look(piece, names_[row], "title");
        look(piece, names_[row], "value");
        ++row;
    });
}

}  // namespace window
