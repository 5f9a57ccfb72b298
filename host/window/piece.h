// One object of the theme on the canvas: a row, a button, a text. Places are told in the units of
// the page, which is 1920 wide and 1080 high whatever the window is.
#pragma once

#include <Evas.h>

#include <functional>
#include <string>

namespace window {

inline constexpr double kPageWidth = 1920;
inline constexpr double kPageHeight = 1080;

struct Area {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
};

// Where the page lies on the canvas, and how it is turned.
struct Frame {
    double left = 0;
    double top = 0;
    double scale = 1;  // pixels a unit
    double text = 1;   // how much larger texts are
    bool mirrored = false;
};

enum class Align { kStart, kCenter, kEnd };

class Piece {
  public:
    Piece(Evas* canvas, const std::string& theme, const char* group, short layer);
    ~Piece();
    Piece(const Piece&) = delete;
    Piece& operator=(const Piece&) = delete;

    void Place(const Frame& frame, const Area& area);
    void Show(bool shown);
    bool IsShown() const;
    // Plain text, on as many lines as it has.
    void SetText(const char* part, const std::string& text, Align align = Align::kStart,
                 double indent = 0);
    // Text with tags of the theme's styles; see Plain().
    void SetMarkup(const char* part, const std::string& markup, Align align = Align::kStart,
                   double indent = 0);
    // Tells the theme: "look" is "focused".
    void Signal(const char* what, const char* is);
    void OnPress(std::function<void()> press);
    void ClipTo(Evas_Object* clip);

    // How large the text is at the width that its part has, in units; whole, even where it is cut.
    Area WholeText(const char* part) const;
    // Whether all of the text is to be seen.
    bool Fits(const char* part) const;
    std::string TextOf(const char* part) const;

  private:
    static void Pressed(void* piece, Evas*, Evas_Object*, void* event);

    Evas_Object* object_;
    Frame frame_;
    Area placed_;
    std::function<void()> press_;
};

// Text as markup that shows it as it is.
std::string Plain(const std::string& text);

}  // namespace window
