#include "page_text.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "cli.h"
#include "text_width.h"

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

    void Line(const std::string& left, Look leftLook, const std::string& right = "",
              Look rightLook = Look::kPlain) {
        const std::string cutRight = Cut(right, inner_ / 2);
        const size_t rightWidth = Width(cutRight);
        const std::string cutLeft = Cut(left, inner_ - rightWidth - (rightWidth > 0 ? 2 : 0));
        const std::string gap(inner_ - rightWidth - Width(cutLeft), ' ');
        text_ += Paint(Look::kDim, "│") + " " + Paint(leftLook, cutLeft) + gap +
                 Paint(rightLook, cutRight) + " " + Paint(Look::kDim, "│") + "\n";
    }

    void Wrapped(const std::string& text, size_t indent, Look look) {
        for (const std::string& line : Wrap(text, inner_ - indent)) {
            Line(std::string(indent, ' ') + line, look);
        }
    }

    void Outside(const std::string& text) { text_ += text + "\n"; }
    const std::string& Text() const { return text_; }

  private:
    size_t inner_;
    std::string text_;
};

size_t DepthOf(const host::Item& item) {
    return item.parent != nullptr && std::string_view(item.parent) != "voice" ? 1 : 0;
}

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
    const size_t indent = 2 * DepthOf(*view.item);
    const std::string margin(indent, ' ');
    const bool lit = view.visible && view.enabled;
    const std::string state = !view.visible ? "  (hidden)" : !view.enabled ? "  (dimmed)" : "";
    picture.Line(margin + view.Label() + state, lit ? Look::kBold : Look::kDim, ValueMark(view),
                 lit ? Look::kGood : Look::kDim);
    if (view.help && !view.help->empty() && *view.help != view.Label()) {
        picture.Wrapped(*view.help, indent + 2, Look::kPlain);
    }
    for (const host::Choice& choice : view.choices) {
        const bool current = view.value == choice.value;
        picture.Line(
            margin + (current ? "  ▸ " : "    ") + std::to_string(choice.value) + " " + choice.text,
            current ? Look::kGood : Look::kPlain);
    }
    if (view.visible && !view.enabled) {
        DrawReason(picture, view, indent + 2);
    }
    for (const std::string& missing : view.MissingTexts()) {
        picture.Line(margin + "  ! not translated: " + missing, Look::kBad);
    }
    picture.Line(margin + "  " + view.item->name, Look::kDim);
}

void DrawHeading(Picture& picture, const ItemView& heading) {
    picture.Line(heading.Label() + (heading.enabled ? "" : "  (dimmed)"),
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
    picture.Outside(
        Paint(Look::kDim, " " + Cut(name + " · " + tv.GetModel().title + " · " + tv.Language(),
                                    options.columns - 2)));
    picture.Edge("╭", "╮");
    if (root.visible) {
        DrawHeading(picture, root);
    } else if (!setup.visible) {
        picture.Line("This TV's menu has no Voice page now.", Look::kBold);
        picture.Line("See: vtv explain voice", Look::kDim);
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
            picture.Line("", Look::kPlain);
        }
        first = false;
        DrawItem(picture, view);
    }
    picture.Edge("╰", "╯");
    if (!hidden.empty()) {
        for (const std::string& line : Wrap("Hidden: " + hidden, options.columns - 2)) {
            picture.Outside(Paint(Look::kDim, " " + line));
        }
    }
    return picture.Text();
}

size_t PictureColumns() {
    winsize size = {};
    if (isatty(STDOUT_FILENO) != 1 || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 ||
        size.ws_col == 0) {
        return 78;
    }
    return std::clamp<size_t>(size.ws_col, 50, 100);
}

}  // namespace cli
