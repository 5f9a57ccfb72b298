#include "live.h"

#include <filesystem>
#include <iostream>
#include <utility>

#include "environment.h"
#include "program/visible_text.h"
#include "program/write_file.h"

namespace window {

namespace {

constexpr double kLightSeconds = 1.2;

}  // namespace

Live::Live(vtv::Tv& tv, const host::Provider& provider, const WindowOptions& options)
    : tv_(tv), screen_(tv, provider), panel_(tv, provider, screen_) {
    screen_.look.large = options.text == "large";
    screen_.look.contrast = options.contrast == "high";
    if (options.display == "none") {
        canvas_ = std::make_unique<Canvas>(1280, 720, ThemeFile());
        stage_ = &canvas_->GetStage();
        TakeKeys(canvas_->GetEvas());
    } else {
        OpenWindow();
    }
    Wire();
    if (!options.keys.empty()) {
        PlayScript(options.keys);
    }
}

Live::~Live() {
    if (tvHandler_ != nullptr) {
        ecore_main_fd_handler_del(tvHandler_);
    }
    ownStage_.reset();
    if (window_ != nullptr) {
        evas_object_del(window_);
    }
}

void Live::OpenWindow() {
    const std::string title = std::filesystem::path(tv_.Dir()).filename().string();
    window_ = elm_win_add(nullptr, "vtv", ELM_WIN_BASIC);
    if (window_ == nullptr) {
        throw vtv::Error(vtv::ErrorKind::kPlatform,
                         "The display does not take a window: look at DISPLAY. Without a display: "
                         "vtv picture -o page.png");
    }
    elm_win_title_set(window_, (title + " · Voice").c_str());
    Evas* canvas = evas_object_evas_get(window_);
    ownStage_ = std::make_unique<Stage>(canvas, ThemeFile());
    stage_ = ownStage_.get();
    evas_object_event_callback_add(
        window_, EVAS_CALLBACK_RESIZE,
        [](void* live, Evas*, Evas_Object* window, void*) {
            auto* self = static_cast<Live*>(live);
            int width = 0;
            int height = 0;
            evas_object_geometry_get(window, nullptr, nullptr, &width, &height);
            self->stage_->Resize(width, height);
            self->drawn_.reset();
            self->Redraw();
        },
        this);
    evas_object_smart_callback_add(
        window_, "delete,request", [](void*, Evas_Object*, void*) { ecore_main_loop_quit(); },
        nullptr);
    stage_->Resize(1280, 720);
    evas_object_resize(window_, 1280, 720);
    evas_object_show(window_);
    // Without a window manager nobody else tells the window to draw.
    elm_win_norender_pop(window_);
    elm_win_activate(window_);
    TakeKeys(canvas);
}

void Live::TakeKeys(Evas* canvas) {
    evas_ = canvas;
    listener_ = evas_object_rectangle_add(canvas);
    evas_object_event_callback_add(
        listener_, EVAS_CALLBACK_KEY_DOWN,
        [](void* live, Evas*, Evas_Object*, void* event) {
            auto* self = static_cast<Live*>(live);
            const std::string name = static_cast<Evas_Event_Key_Down*>(event)->key;
            self->Guarded([&] { self->OnKey(name); });
        },
        this);
    evas_object_focus_set(listener_, EINA_TRUE);
}

void Live::Wire() {
    const auto after = [this](const auto& act) {
        Guarded([&] {
            act();
            Redraw();
        });
    };
    Drawing& wires = stage_->Wires();
    wires.pressItem = [=, this](const std::string& item) {
        after([&] { screen_.PressItem(item); });
    };
    wires.pressLine = [=, this](size_t line) { after([&] { screen_.PressLine(line); }); };
    wires.pressButton = [=, this](size_t button) {
        after([&] {
            if (showsKeys_) {
                showsKeys_ = false;
            } else {
                screen_.PressButton(button);
            }
        });
    };
    tvHandler_ = ecore_main_fd_handler_add(
        screen_.EventFd(), ECORE_FD_READ,
        [](void* live, Ecore_Fd_Handler*) -> Eina_Bool {
            auto* self = static_cast<Live*>(live);
            self->Guarded([self] { self->Update(); });
            return ECORE_CALLBACK_RENEW;
        },
        this, nullptr, nullptr);
}

void Live::Run() {
    Redraw();
    ecore_main_loop_begin();
    Rethrow();
}

void Live::Rethrow() {
    if (thrown_ != nullptr) {
        std::rethrow_exception(std::exchange(thrown_, nullptr));
    }
}

void Live::Feed(const char* keyName) {
    evas_event_feed_key_down(evas_, keyName, keyName, nullptr, nullptr, 0, nullptr);
    Rethrow();
}

void Live::AskAnew() {
    screen_.AskAnew();
    Redraw();
}

void Live::Update() {
    screen_.Dispatch();
    Redraw();
}

void Live::OnKey(const std::string& keyName) {
    const Stroke stroke = StrokeOf(keyName);
    if (showsKeys_ && (stroke.key || stroke.tool)) {
        showsKeys_ = false;
    } else if (stroke.tool) {
        UseTool(*stroke.tool);
    } else if (stroke.key && !screen_.Press(*stroke.key)) {
        if (script_ != nullptr) {
            script_->Stop();
        }
        ecore_main_loop_quit();
    }
    Redraw();
}

void Live::UseTool(Tool tool) {
    if (IsOfPanel(tool) && !panel_.IsOpen()) {
        screen_.Tell("This key belongs to the panel beside the TV: F2 opens it.");
        return;
    }
    switch (tool) {
        case Tool::kPanel:
            panel_.Turn();
            return;
        case Tool::kCopy:
            Copy();
            return;
        case Tool::kKeys:
            showsKeys_ = true;
            return;
        case Tool::kVoiceGuide:
            screen_.SwitchVoiceGuide(!tv_.VoiceGuide());
            return;
        case Tool::kLargeText:
            screen_.look.large = !screen_.look.large;
            return;
        case Tool::kContrast:
            screen_.look.contrast = !screen_.look.contrast;
            return;
        default:
            panel_.Use(tool);
            return;
    }
}

// To the clipboard where there is one, and to whoever started the window.
void Live::Copy() {
    const std::string& command = screen_.GetDiary().Command();
    if (command.empty()) {
        screen_.Tell("Nothing was done yet that is a command.");
        return;
    }
    if (window_ != nullptr) {
        elm_cnp_selection_set(window_, ELM_SEL_TYPE_CLIPBOARD, ELM_SEL_FORMAT_TEXT, command.c_str(),
                              command.size());
    }
    std::cout << program::OneLine(command) << std::endl;
    screen_.Tell("Copied: " + command);
}

Scene Live::Seen() {
    Scene scene = screen_.CurrentScene();
    if (showsKeys_) {
        scene.box = BoxScene{"Keys", KeysInWords(screen_.WhyNoVoiceGuide()), {"OK"}, 0};
    }
    if (panel_.IsOpen()) {
        scene.panel = panel_.Look();
    }
    return scene;
}

void Live::Redraw() {
    Scene scene = Seen();
    const TvScreen::Toast& toast = screen_.CurrentToast();
    if (toast.number != toast_) {
        toast_ = toast.number;
        toastEnds_.Start(std::chrono::duration<double>(toast.stays).count());
    }
    if (drawn_ == scene) {
        return;
    }
    for (const RowScene& row : scene.rows) {
        if (row.changed) {
            lightEnds_.Start(kLightSeconds);
        }
    }
    stage_->Draw(scene);
    drawn_ = std::move(scene);
}

void Live::PlayScript(const std::string& file) {
    ScriptPlayer::Stage stage;
    stage.press = [this](const std::string& keyName) { Feed(keyName.c_str()); };
    stage.seen = [this] { return ToText(Seen()); };
    stage.picture = [this](const KeyStep& step) {
        if (canvas_ == nullptr) {
            throw vtv::Error(vtv::ErrorKind::kUsage,
                             step.where + ": picture needs --display none.");
        }
        const std::string problem = program::WriteFile(step.text, canvas_->Png());
        if (!problem.empty()) {
            throw vtv::Error(vtv::ErrorKind::kPlatform, problem);
        }
    };
    stage.ended = [this] {
        if (canvas_ != nullptr) {
            ecore_main_loop_quit();
        }
    };
    stage.failed = [this](std::exception_ptr thrown) {
        thrown_ = std::move(thrown);
        ecore_main_loop_quit();
    };
    script_ = std::make_unique<ScriptPlayer>(file, std::move(stage));
}

}  // namespace window
