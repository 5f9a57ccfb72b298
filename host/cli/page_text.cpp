#include "page_text.h"

#include <algorithm>
#include <filesystem>

#include "cli.h"
#include "program/terminal.h"
#include "program/text_width.h"

namespace cli {

namespace {

using host::ItemKind;
using host::ItemView;

std::string Repeat(const std::string& text, size_t times) {
    std::string repeated;
    for (size_t i = 0; i < times; ++i) {
        repeated += text;
    }
    return repeated;
}

class Picture {
  public:
    explicit Picture(size_t columns) : inner_(columns - 4) {}

    size_t Inner() const { return inner_; }

    void Edge(const char* left, const char* right) {
        text_ += Paint(Look::kDim, left + Repeat("─", inner_ + 2) + right) + "\n";
    }

    // The left text goes on in the next line where it is too long; the right one stands in the
    // first.
    void Line(size_t indent, const std::string& left, Look leftLook, const std::string& right = "",
              Look rightLook = Look::kPlain) {
        std::string cutRight = program::Cut(right, inner_ / 2);
        const size_t rightWidth = program::Width(cutRight);
        const size_t room = inner_ - indent - rightWidth - (rightWidth > 0 ? 2 : 0);
        for (const std::string& line : program::Wrap(left, room)) {
            const std::string gap(inner_ - indent - program::Width(line) - program::Width(cutRight),
                                  ' ');
            text_ += Paint(Look::kDim, "│") + " " + std::string(indent, ' ') +
                     Paint(leftLook, line) + gap + Paint(rightLook, cutRight) + " " +
                     Paint(Look::kDim, "│") + "\n";
            cutRight.clear();
        }
    }

    void Wrapped(const std::string& text, size_t indent, Look look) { Line(indent, text, look); }

    void Outside(const std::string& text) {
        for (const std::string& line : program::Wrap(text, inner_ + 2)) {
            text_ += Paint(Look::kDim, " " + line) + "\n";
        }
    }
    const std::string& Text() const { return text_; }

  private:
    size_t inner_;
    std::string text_;
};

std::string ValueMark(const ItemView& view) {
    switch (view.item->kind) {
        case ItemKind::kSwitch:
            return view.value == 1 ? "on  ●" : view.value == 0 ? "off ○" : view.ValueText();
        case ItemKind::kList:
            return view.ValueText();
        case ItemKind::kApplication:
        case ItemKind::kSetup:
            return "›";
        case ItemKind::kPage:
            break;
    }
    return "";
}

void DrawReason(Picture& picture, const ItemView& view, size_t indent) {
    if (view.disableText) {
        picture.Wrapped("✕ " + *view.disableText, indent, Look::kBad);
    }
    if (view.disablePopup) {
        const host::Box& box = *view.disablePopup;
        std::string buttons;
        for (const std::string& button : box.buttons) {
            buttons += " [" + button + "]";
        }
        picture.Wrapped("▣ " + box.title, indent, Look::kNote);
        picture.Wrapped(box.message + buttons, indent + 2, Look::kNote);
    }
    if (!view.disableText && !view.disablePopup) {
        picture.Wrapped(std::string("✕ no reason given; see: vtv explain ") + view.item->name,
                        indent, Look::kBad);
    }
}

void DrawItem(Picture& picture, const ItemView& view) {
    const size_t indent = 2 * static_cast<size_t>(vtv::DepthOf(*view.item));
    const bool lit = view.visible && view.enabled;
    const std::string state = !view.visible ? "  (hidden)" : !view.enabled ? "  (dimmed)" : "";
    picture.Line(indent, view.Label() + state, lit ? Look::kBold : Look::kDim, ValueMark(view),
                 lit ? Look::kGood : Look::kDim);
    if (view.help && !view.help->empty() && *view.help != view.Label()) {
        picture.Wrapped(*view.help, indent + 2, Look::kPlain);
    }
    for (const host::Choice& choice : view.choices) {
        const bool current = view.value == choice.value;
        const std::string text = std::to_string(choice.value) + " " + choice.text;
        picture.Line(indent + (current ? 2 : 4), (current ? "▸ " : "") + text,
                     current ? Look::kGood : Look::kPlain);
    }
    if (view.visible && !view.enabled) {
        DrawReason(picture, view, indent + 2);
    }
    for (const std::string& missing : view.MissingTexts()) {
        picture.Line(indent + 2, "! not translated: " + missing, Look::kBad);
    }
    picture.Line(indent + 2, view.item->name, Look::kDim);
}

void DrawHeading(Picture& picture, const ItemView& heading) {
    picture.Line(0, heading.Label() + (heading.enabled ? "" : "  (dimmed)"),
                 heading.enabled ? Look::kBold : Look::kDim, heading.item->name, Look::kDim);
    if (heading.help && *heading.help != heading.Label()) {
        picture.Wrapped(*heading.help, 0, Look::kPlain);
    }
    if (!heading.enabled) {
        DrawReason(picture, heading, 0);
    }
}

}  // namespace

std::string DrawPage(const host::Page& page, const vtv::Tv& tv, const PictureOptions& options) {
    Picture picture(options.columns);
    const ItemView& root = page["voice"];
    const ItemView& setup = page["onboarding"];
    const std::string name = std::filesystem::path(tv.Dir()).filename().string();
    const std::string texts = options.po.empty() ? tv.Language() : options.po;
    picture.Outside(name + " · " + tv.GetModel().title + " · " + texts);
    picture.Edge("╭", "╮");
    if (root.visible) {
        DrawHeading(picture, root);
    } else if (!setup.visible) {
        picture.Line(0, "This TV's menu has no Voice page now.", Look::kBold);
        picture.Line(0, "See: vtv explain voice", Look::kDim);
    }
    if (setup.visible) {
        DrawItem(picture, setup);
    }
    std::string hidden;
    bool first = true;
    for (const ItemView& view : page.items) {
        const bool shown = page.IsShown(*view.item);
        if (view.item->parent == nullptr) {
            continue;
        }
        if (!shown && !options.all) {
            hidden += (hidden.empty() ? "" : ", ") + std::string(view.item->name);
            continue;
        }
        if (first) {
            picture.Edge("├", "┤");
        } else {
            picture.Line(0, "", Look::kPlain);
        }
        first = false;
        DrawItem(picture, view);
    }
    picture.Edge("╰", "╯");
    if (!hidden.empty()) {
        picture.Outside("Hidden: " + hidden);
    }
    return picture.Text();
}

size_t PictureColumns() {
    const size_t columns = program::Columns();
    return columns == 0 ? 78 : std::clamp<size_t>(columns, 30, 100);
}

}  // namespace cli
