// The window of one TV, on a display or without one: keys and mouse in, the page and what stands
// beside it out, alive in the toolkit's loop.
#pragma once

#include <Elementary.h>

#include <exception>
#include <memory>
#include <optional>
#include <string>

#include "canvas.h"
#include "script_player.h"
#include "side_panel.h"
#include "window_options.h"

namespace window {

class Live {
  public:
    // All must outlive this, and the toolkit must be there.
    Live(vtv::Tv& tv, const host::Provider& provider, const WindowOptions& options);
    ~Live();
    Live(const Live&) = delete;
    Live& operator=(const Live&) = delete;

    // Until the viewer leaves, or the keys of options.keys are through.
    void Run();

    // For who drives it without that loop. Throws what was thrown on the way.
    void Feed(const char* keyName);  // as the toolkit calls it
    void Update();                   // whatever the TV has to tell
    void AskAnew();                  // the whole page, as on coming back to it
    const TvScreen& Screen() const { return screen_; }
    Scene Seen();

  private:
    void OpenWindow();
    void TakeKeys(Evas* canvas);
    void Wire();
    void OnKey(const std::string& keyName);
    void UseTool(Tool tool);
    void Redraw();
    void Copy();
    void Rethrow();
    void PlayScript(const std::string& file);
    // Ends the window with what was thrown within a callback of the toolkit.
    template <typename Do>
    void Guarded(const Do& act) {
        try {
            act();
        } catch (...) {
            thrown_ = std::current_exception();
            ecore_main_loop_quit();
        }
    }

    vtv::Tv& tv_;
    TvScreen screen_;
    SidePanel panel_;
    Evas_Object* window_ = nullptr;
    std::unique_ptr<Canvas> canvas_;  // without a display
    std::unique_ptr<Stage> ownStage_;
    Stage* stage_ = nullptr;
    Evas* evas_ = nullptr;
    Evas_Object* listener_ = nullptr;
    Ecore_Fd_Handler* tvHandler_ = nullptr;
    std::optional<Scene> drawn_;
    bool showsKeys_ = false;
    int toast_ = 0;
    Timer toastEnds_{[this] {
        screen_.EndToast();
        Redraw();
    }};
    Timer lightEnds_{[this] {
        screen_.ForgetChanges();
        Redraw();
    }};
    std::unique_ptr<ScriptPlayer> script_;
    std::exception_ptr thrown_;
};

}  // namespace window
