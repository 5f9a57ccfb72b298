#include "piece.h"

#include <Edje.h>

#include <cmath>
#include <cstdlib>

#include "virtual-tv/model/error.h"

namespace window {

namespace {

constexpr double kBesideFirstLetter = 6;

const char* Tag(Align align, bool mirrored) {
    if (align == Align::kCenter) {
        return "<align=center>";
    }
    return (align == Align::kEnd) != mirrored ? "<align=right>" : "<align=left>";
}

int Pixel(double units) {
    return static_cast<int>(std::lround(units));
}

Evas_Object* TextPart(const Evas_Object* object, const char* part) {
    // The toolkit's own answer is constant; what is asked of it is not changed.
    return const_cast<Evas_Object*>(edje_object_part_object_get(object, part));
}

// The same text in the same style, but never cut.
Evas_Object* NewProbe(Evas_Object* text, int width) {
    Evas_Object* probe = evas_object_textblock_add(evas_object_evas_get(text));
    const Evas_Textblock_Style* style = evas_object_textblock_style_get(text);
    std::string whole = evas_textblock_style_get(style);
    const std::string cut = "ellipsis=1.0";
    if (const size_t at = whole.find(cut); at != std::string::npos) {
        whole.replace(at, cut.size(), "ellipsis=-1");
    }
    Evas_Textblock_Style* own = evas_textblock_style_new();
    evas_textblock_style_set(own, whole.c_str());
    evas_object_textblock_style_set(probe, own);
    evas_textblock_style_free(own);
    evas_object_scale_set(probe, evas_object_scale_get(text));
    evas_object_textblock_text_markup_set(probe, evas_object_textblock_text_markup_get(text));
    evas_object_resize(probe, width, 10000);
    return probe;
}

}  // namespace

std::string Plain(const std::string& text) {
    char* markup = evas_textblock_text_utf8_to_markup(nullptr, text.c_str());
    std::string plain = markup != nullptr ? markup : "";
    std::free(markup);
    return plain;
}

Piece::Piece(Evas* canvas, const std::string& theme, const char* group, short layer)
    : object_(edje_object_add(canvas)) {
    if (!edje_object_file_set(object_, theme.c_str(), group)) {
        throw vtv::Error(vtv::ErrorKind::kPlatform,
                         theme + ": has no \"" + group + "\". Install it again.");
    }
    evas_object_layer_set(object_, layer);
}

Piece::~Piece() {
    evas_object_del(object_);
}

void Piece::Place(const Frame& frame, const Area& area) {
    frame_ = frame;
    placed_ = area;
    const double x = frame.mirrored ? kPageWidth - area.x - area.width : area.x;
    const int left = Pixel(frame.left + x * frame.scale);
    const int top = Pixel(frame.top + area.y * frame.scale);
    const int right = Pixel(frame.left + (x + area.width) * frame.scale);
    const int bottom = Pixel(frame.top + (area.y + area.height) * frame.scale);
    edje_object_mirrored_set(object_, frame.mirrored);
    edje_object_scale_set(object_, frame.scale * frame.text);
    evas_object_geometry_set(object_, left, top, right - left, bottom - top);
    evas_object_show(object_);
}

void Piece::Show(bool shown) {
    if (shown) {
        evas_object_show(object_);
    } else {
        evas_object_hide(object_);
    }
}

bool Piece::IsShown() const {
    return evas_object_visible_get(object_);
}

void Piece::SetText(const char* part, const std::string& text, Align align, double indent) {
    SetMarkup(part, Plain(text), align, indent);
}

void Piece::SetMarkup(const char* part, const std::string& markup, Align align, double indent) {
    std::string text = markup;
    if (!markup.empty() && align == Align::kStart) {
        // The toolkit cuts a part of the first letter off where a line begins at the right edge.
        const double beside = frame_.mirrored ? indent + kBesideFirstLetter : indent;
        const char* margin = frame_.mirrored ? "<right_margin=" : "<left_margin=";
        text = margin + std::to_string(Pixel(beside * frame_.scale)) + ">" + text;
    }
    if (!markup.empty()) {
        text = Tag(align, frame_.mirrored) + text;
    }
    edje_object_part_text_set(object_, part, text.c_str());
}

void Piece::Signal(const char* what, const char* is) {
    edje_object_signal_emit(object_, is, what);
}

void Piece::OnPress(std::function<void()> press) {
    if (!press_) {
        evas_object_event_callback_add(object_, EVAS_CALLBACK_MOUSE_UP, &Pressed, this);
    }
    press_ = std::move(press);
}

void Piece::Pressed(void* piece, Evas*, Evas_Object*, void* event) {
    if (static_cast<Evas_Event_Mouse_Up*>(event)->button == 1) {
        static_cast<Piece*>(piece)->press_();
    }
}

void Piece::ClipTo(Evas_Object* clip) {
    evas_object_clip_set(object_, clip);
}

Area Piece::WholeText(const char* part) const {
    edje_object_calc_force(object_);
    Evas_Object* text = TextPart(object_, part);
    int partWidth = 0;
    evas_object_geometry_get(text, nullptr, nullptr, &partWidth, nullptr);
    Evas_Object* probe = NewProbe(text, partWidth);
    int width = 0;
    int height = 0;
    evas_object_textblock_size_formatted_get(probe, &width, &height);
    evas_object_del(probe);
    return {0, 0, width / frame_.scale, height / frame_.scale};
}

bool Piece::Fits(const char* part) const {
    const Area whole = WholeText(part);
    Evas_Object* text = TextPart(object_, part);
    int width = 0;
    int height = 0;
    evas_object_geometry_get(text, nullptr, nullptr, &width, &height);
    const std::string style = evas_textblock_style_get(evas_object_textblock_style_get(text));
    // A single line may stand out above and below, where there are no letters.
    const bool isLine = style.find("wrap=none") != std::string::npos;
    // Half a pixel is rounded either way.
    return whole.width * frame_.scale < width + 1 &&
           (isLine || whole.height * frame_.scale < height + 1);
}

std::string Piece::TextOf(const char* part) const {
    const char* markup = edje_object_part_text_get(object_, part);
    char* text = evas_textblock_text_markup_to_utf8(nullptr, markup != nullptr ? markup : "");
    std::string plain = text != nullptr ? text : "";
    std::free(text);
    return plain;
}

}  // namespace window
