// vtv-window: the page on the screen. `vtv window`, `vtv picture`, `vtv gallery` and `vtv run
// --window` start it, so that vtv itself needs no toolkit.
#include <CLI/CLI.hpp>

#include <iostream>

#include "gallery.h"
#include "host/page/provider.h"
#include "picture.h"
#include "program/standard_output.h"
#include "program/visible_text.h"
#include "real_window.h"
#include "virtual-tv/model/error.h"
#include "window_user.h"

namespace {

struct Where {
    std::string tv;
    std::string provider;
};

CLI::App* AddVerb(CLI::App& app, const char* name, Where& where) {
    CLI::App* verb = app.add_subcommand(name);
    verb->add_option("--tv", where.tv, "The TV's folder")->required();
    verb->add_option("--provider", where.provider, "The provider library")->required();
    return verb;
}

int Report(const std::string& text, int code) {
    std::cerr << "vtv: " << program::OneLine(text) << '\n';
    return code;
}

int Run(int argc, char** argv) {
    CLI::App app("The page on the screen; started by verbs of vtv.", "vtv-window");
    app.require_subcommand(1);
    Where where;
    window::WindowOptions windowOptions;
    CLI::App* window = AddVerb(app, "window", where);
    window::AddWindowOptions(*window, windowOptions);
    window::PictureOptions pictureOptions;
    CLI::App* picture = AddVerb(app, "picture", where);
    window::AddPictureOptions(*picture, pictureOptions);
    window::GalleryOptions galleryOptions;
    window::PlayOptions playOptions;
    CLI::App* play = AddVerb(app, "play", where);
    play->add_option("--answer", playOptions.answer, "The descriptor for what comes of it")
        ->required();
    play->add_option("SCENARIO", playOptions.scenario)->required();
    CLI::App* gallery = app.add_subcommand("gallery");
    gallery->add_option("--provider", where.provider, "The provider library")->required();
    window::AddGalleryOptions(*gallery, galleryOptions);
    try {
        app.parse(argc, argv);
        if (gallery->parsed()) {
            return window::MakeGallery(where.provider, galleryOptions);
        }
        if (play->parsed()) {
            window::PlayInWindow(where.tv, where.provider, playOptions);
        } else if (picture->parsed()) {
            window::MakePicture(where.tv, where.provider, pictureOptions);
        } else {
            window::ShowWindow(where.tv, where.provider, windowOptions);
        }
        return 0;
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : static_cast<int>(vtv::ErrorKind::kUsage);
    } catch (const vtv::Error& error) {
        return Report(error.what(), static_cast<int>(error.kind()));
    } catch (const host::ProviderError& error) {
        const bool none = error.kind() == host::ProviderError::Kind::kNoSuchFile;
        return Report(error.what(),
                      static_cast<int>(none ? vtv::ErrorKind::kNoSuch : vtv::ErrorKind::kPlatform));
    } catch (const std::exception& error) {
        return Report(std::string("unexpected failure: ") + error.what(),
                      static_cast<int>(vtv::ErrorKind::kPlatform));
    }
}

}  // namespace

int main(int argc, char** argv) {
    program::Begin();
    return program::End("vtv", Run(argc, argv));
}
