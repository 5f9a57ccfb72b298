// What lies over the page: the list of choices, a box, an application, a toast.
#pragma once

#include <optional>

#include "page_view.h"

namespace window {

class Overlays {
  public:
    explicit Overlays(const Drawing& drawing);

    void Draw(const Scene& scene);
    void AddMisfits(std::vector<Misfit>* misfits) const;

  private:
    void DrawList(const std::optional<ListScene>& list);
    void DrawBox(const std::optional<BoxScene>& box);
    void DrawApplication(const std::optional<ApplicationScene>& application);
    void DrawToast(const std::string& toast);
    // As wide as the longest of them needs, side by side; centred, or from the start. Returns where
    // they end.
    void DrawButtons(Pieces& buttons, const std::vector<std::string>& titles, size_t focus,
                     const Area& within, bool centred);
    // At the width of the area, as high as it needs; returns where it ends.
    double DrawText(Pieces& texts, const std::string& markup, const Area& area);

    const Drawing& drawing_;
    Pieces listVeil_, list_, choices_;
    Pieces boxVeil_, box_, boxTitle_, boxMessage_, boxButtons_;
    Pieces front_, frontTitle_, frontMessage_, frontSmall_, frontButtons_;
    Pieces toast_, toastText_;
};

}  // namespace window
