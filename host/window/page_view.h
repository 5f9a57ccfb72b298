// The page itself: title, rows, and the help of the focused one.
#pragma once

#include "pieces.h"
#include "scene.h"

namespace window {

// A text that is cut because it is longer than its place.
struct Misfit {
    std::string where;  // the item, or "box", "list", ...
    std::string what;   // "title", "value", ...
    std::string text;
};

class PageView {
  public:
    explicit PageView(const Drawing& drawing);
    ~PageView();
    PageView(const PageView&) = delete;
    PageView& operator=(const PageView&) = delete;

    void Draw(const Scene& scene);
    void AddMisfits(std::vector<Misfit>* misfits) const;

  private:
    void DrawRow(const RowScene& row, const Area& area);
    void DrawHelp(const Scene& scene);
    void Scroll(const Scene& scene, double pitch);

    const Drawing& drawing_;
    Piece page_;
    Evas_Object* clip_;  // rows are seen within this
    Pieces rows_;
    std::vector<std::string> names_;  // of the rows
    double scrolled_ = 0;
};

}  // namespace window
