#include "overlays.h"

#include <algorithm>

namespace window {

namespace {

constexpr Area kWholePage = {0, 0, kPageWidth, kPageHeight};
constexpr Area kList = {1200, 0, 720, 1080};
constexpr Area kChoices = {1248, 224, 624, 800};
constexpr double kChoicePitch = 90;
constexpr double kChoiceHeight = 88;
constexpr double kBoxWidth = 1040;
constexpr double kPadding = 64;
constexpr double kGap = 28;
constexpr double kButtonHeight = 80;
constexpr double kButtonLeast = 300;
constexpr double kButtonPadding = 44;
constexpr double kToastBottom = 1026;
constexpr double kToastWidest = 1400;
constexpr double kToastText = 300;  // no higher than this

std::string Lines(const std::vector<std::string>& lines) {
    std::string markup;
    for (const std::string& line : lines) {
        markup += (markup.empty() ? "" : "<br/>") + Plain(line);
    }
    return markup;
}

}  // namespace

Overlays::Overlays(const Drawing& drawing)
    : drawing_(drawing),
      listVeil_(drawing, "veil", kListLayer),
      list_(drawing, "list", kListLayer + 1),
      choices_(drawing, "choice", kListLayer + 2),
      boxVeil_(drawing, "veil", kBoxLayer),
      box_(drawing, "box", kBoxLayer + 1),
      boxTitle_(drawing, "text-title", kBoxLayer + 2),
      boxMessage_(drawing, "text-message", kBoxLayer + 2),
      boxButtons_(drawing, "button", kBoxLayer + 2),
      front_(drawing, "application", kFrontLayer),
      frontTitle_(drawing, "text-title", kFrontLayer + 1),
      frontMessage_(drawing, "text-message", kFrontLayer + 1),
      frontSmall_(drawing, "text-small", kFrontLayer + 1),
      frontButtons_(drawing, "button", kFrontLayer + 1),
      toast_(drawing, "toast", kToastLayer),
      toastText_(drawing, "text-toast", kToastLayer + 1) {}

void Overlays::Draw(const Scene& scene) {
    Pieces* const all[] = {&listVeil_,     &list_,       &choices_,      &boxVeil_, &box_,
                           &boxTitle_,     &boxMessage_, &boxButtons_,   &front_,   &frontTitle_,
                           &frontMessage_, &frontSmall_, &frontButtons_, &toast_,   &toastText_};
    for (Pieces* pieces : all) {
        pieces->Begin();
    }
    DrawList(scene.list);
    DrawBox(scene.box);
    DrawApplication(scene.application);
    DrawToast(scene.toast);
    for (Pieces* pieces : all) {
        pieces->End();
    }
}

void Overlays::DrawList(const std::optional<ListScene>& list) {
    if (!list) {
        return;
    }
    listVeil_.Next(kWholePage);
    list_.Next(kList).SetText("title", list->title);
    const double pitch = kChoicePitch * drawing_.frame.text;
    // As many as there is room for, with the focused one among them.
    const auto room = static_cast<size_t>(kChoices.height / pitch);
    const size_t first = list->focus < room ? 0 : list->focus - room + 1;
    double y = kChoices.y;
    for (size_t i = first; i < list->choices.size() && i < first + room; ++i) {
        Piece& choice =
            choices_.Next({kChoices.x, y, kChoices.width, kChoiceHeight * drawing_.frame.text});
        choice.SetText("title", list->choices[i]);
        choice.Signal("look", i == list->focus ? "focused" : "default");
        choice.Signal("current", i == list->current ? "yes" : "no");
        choice.OnPress([this, i] { drawing_.pressLine(i); });
        y += pitch;
    }
}

void Overlays::DrawBox(const std::optional<BoxScene>& box) {
    if (!box) {
        return;
    }
    boxVeil_.Next(kWholePage);
    const double x = (kPageWidth - kBoxWidth) / 2;
    const double width = kBoxWidth - 2 * kPadding;
    const double most = kPageHeight - 400;
    // Where things end is known when they are drawn: at the top first, then where they belong.
    double top = 0;
    for (int round = 0; round < 2; ++round) {
        boxTitle_.Begin();
        boxMessage_.Begin();
        double y = top + kPadding;
        if (!box->title.empty()) {
            y = DrawText(boxTitle_, Plain(box->title), {x + kPadding, y, width, most}) + kGap;
        }
        y = DrawText(boxMessage_, Plain(box->message), {x + kPadding, y, width, most}) + 2 * kGap;
        const double height = y + kButtonHeight + kPadding - top;
        if (round == 0) {
            top = std::max(54.0, (kPageHeight - height) / 2);
            continue;
        }
        box_.Next({x, top, kBoxWidth, height});
        DrawButtons(boxButtons_, box->buttons, box->focus, {x + kPadding, y, width, kButtonHeight},
                    true);
    }
}

void Overlays::DrawApplication(const std::optional<ApplicationScene>& application) {
    if (!application) {
        return;
    }
    front_.Next(kWholePage);
    constexpr double kLeft = 220;
    constexpr double kWidth = kPageWidth - 2 * kLeft;
    double y = 250;
    if (!application->title.empty()) {
        y = DrawText(frontTitle_, Plain(application->title), {kLeft, y, kWidth, 200}) + kGap;
    }
    std::vector<std::string> small = application->details;
    if (!application->id.empty()) {
        small.insert(small.begin(), application->id);
    }
    if (!small.empty()) {
        y = DrawText(frontSmall_, Lines(small), {kLeft, y, kWidth, 300}) + kGap;
    }
    if (!application->problem.empty()) {
        const std::string problem = "<reason>" + Plain(application->problem) + "</reason>";
        y = DrawText(frontMessage_, problem, {kLeft, y, kWidth, 220}) + kGap;
    }
    DrawButtons(frontButtons_, application->buttons, application->focus,
                {kLeft, y + kGap, kWidth, kButtonHeight}, false);
}

void Overlays::DrawToast(const std::string& toast) {
    if (toast.empty()) {
        return;
    }
    constexpr double kSide = 40;
    constexpr double kAbove = 26;
    Piece& text = toastText_.Next({0, 0, kToastWidest - 2 * kSide, kToastText});
    text.SetText("text", toast);
    const Area whole = text.WholeText("text");
    const double width = std::min(kToastWidest, whole.width + 2 * kSide + 4);
    const double textHeight = std::min(kToastText, whole.height + 1);
    const double height = textHeight - 1 + 2 * kAbove;
    const Area area = {(kPageWidth - width) / 2, kToastBottom - height, width, height};
    toast_.Next(area);
    text.Place(drawing_.frame, {area.x + kSide, area.y + kAbove, width - 2 * kSide, textHeight});
    text.SetText("text", toast);
}

void Overlays::DrawButtons(Pieces& buttons, const std::vector<std::string>& titles, size_t focus,
                           const Area& within, bool centred) {
    if (titles.empty()) {
        return;
    }
    const auto count = static_cast<double>(titles.size());
    const double most = (within.width - (count - 1) * kGap) / count;
    double width = std::min(kButtonLeast, most);
    std::vector<Piece*> pieces;
    for (const std::string& title : titles) {
        pieces.push_back(&buttons.Next({within.x, within.y, most, within.height}));
        pieces.back()->SetText("title", title, Align::kCenter);
        width = std::clamp(pieces.back()->WholeText("title").width + 2 * kButtonPadding, width,
                           std::max(width, most));
    }
    const double all = width * count + kGap * (count - 1);
    double x = centred ? within.x + (within.width - all) / 2 : within.x;
    for (size_t i = 0; i < pieces.size(); ++i) {
        pieces[i]->Place(drawing_.frame, {x, within.y, width, within.height});
        pieces[i]->SetText("title", titles[i], Align::kCenter);
        pieces[i]->Signal("look", i == focus ? "focused" : "default");
        pieces[i]->OnPress([this, i] { drawing_.pressButton(i); });
        x += width + kGap;
    }
}

double Overlays::DrawText(Pieces& texts, const std::string& markup, const Area& area) {
    Piece& text = texts.Next(area);
    text.SetMarkup("text", markup);
    const double height = std::min(text.WholeText("text").height + 1, area.height);
    text.Place(drawing_.frame, {area.x, area.y, area.width, height});
    return area.y + height;
}

void Overlays::AddMisfits(std::vector<Misfit>* misfits) const {
    const auto look = [&](const Pieces& pieces, const char* where, const char* what,
                          const char* part) {
        pieces.ForEach([&](const Piece& piece) {
            if (!piece.Fits(part)) {
                misfits->push_back({where, what, piece.TextOf(part)});
            }
        });
    };
    look(list_, "list", "title", "title");
    look(choices_, "list", "choice", "title");
    look(boxTitle_, "box", "title", "text");
    look(boxMessage_, "box", "message", "text");
    look(boxButtons_, "box", "button", "title");
    look(frontTitle_, "application", "title", "text");
    look(frontButtons_, "application", "button", "title");
    look(toastText_, "toast", "text", "text");
}

}  // namespace window
