#include "picture.h"

#include <algorithm>
#include <charconv>
#include <iostream>

#include "canvas.h"
#include "environment.h"
#include "host/core/po_file.h"
#include "host/core/similar_items.h"
#include "host/core/temporary_folder.h"
#include "host/core/trial.h"
#include "program/visible_text.h"
#include "program/write_file.h"
#include "tv_screen.h"
#include "virtual-tv/whole_tvs.h"

namespace window {

namespace {

constexpr int kLeastPixels = 160;
constexpr int kMostPixels = 7680;

[[noreturn]] void Misuse(const std::string& text) {
    throw vtv::Error(vtv::ErrorKind::kUsage, "vtv picture: " + text);
}

int Number(const std::string& text, const std::string& whole) {
    int number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end || number < kLeastPixels || number > kMostPixels) {
        Misuse("--size: \"" + whole + "\": write WIDTHxHEIGHT, each from " +
               std::to_string(kLeastPixels) + " to " + std::to_string(kMostPixels) +
               ", such as 1280x720.");
    }
    return number;
}

std::pair<int, int> SizeOf(const std::string& text) {
    const size_t by = text.find('x');
    if (by == std::string::npos) {
        Number("", text);
    }
    return {Number(text.substr(0, by), text), Number(text.substr(by + 1), text)};
}

// An item that a viewer presses, and perhaps the line of its list.
struct Wish {
    const host::Item* item;
    std::string choice;
};

Wish WishOf(const std::string& press) {
    const size_t equals = press.find('=');
    const std::string name = press.substr(0, equals);
    const host::Item* item = host::FindItem(name);
    if (item == nullptr) {
        std::string text = "There is no item \"" + name + "\" on the Voice page.";
        const std::vector<std::string> similar = host::SimilarItems(name);
        if (!similar.empty()) {
            text += " Did you mean " + similar.front() + "?";
        }
        throw vtv::Error(vtv::ErrorKind::kNoSuch, text);
    }
    return {item, equals == std::string::npos ? "" : press.substr(equals + 1)};
}

// The line that stands for "2" or "Google Assistant".
size_t LineNamed(const ListScene& list, const Wish& wish) {
    for (size_t i = 0; i < list.choices.size(); ++i) {
        if (wish.choice == list.choices[i] || wish.choice == std::to_string(i + 1)) {
            return i;
        }
    }
    throw vtv::Error(vtv::ErrorKind::kUsage, "\"" + wish.choice + "\" is no choice of " +
                                                 wish.item->name + ": it has " +
                                                 std::to_string(list.choices.size()) + ".");
}

void Press(TvScreen& screen, const Wish& wish) {
    const Scene before = screen.CurrentScene();
    const bool isThere =
        std::any_of(before.rows.begin(), before.rows.end(),
                    [&](const RowScene& row) { return row.name == wish.item->name; });
    if (!isThere || before.box || before.application) {
        throw vtv::Error(vtv::ErrorKind::kNo,
                         std::string(wish.item->name) + (isThere ? " is covered by what the press "
                                                                   "before it has opened."
                                                                 : " is not on the page now."));
    }
    screen.PressItem(wish.item->name);
    if (!wish.choice.empty()) {
        const std::optional<ListScene> list = screen.CurrentScene().list;
        if (!list) {
            throw vtv::Error(vtv::ErrorKind::kUsage,
                             std::string(wish.item->name) + " opens no list now.");
        }
        screen.PressLine(LineNamed(*list, wish));
    }
}

// A TV that is on for as long as this lives; then nothing runs on it any more.
class Copy {
  public:
    Copy(const std::string& dir, const std::string& folder) : tv_(Made(dir, folder)) {
        vtv::PowerOn(tv_);
    }
    ~Copy() {
        for (const vtv::RunningApplication& running : tv_.RunningApplications()) {
            try {
                tv_.CancelApplication(running.appId);
            } catch (const vtv::Error&) {
                continue;  // it has ended by itself
            }
        }
        vtv::PowerOff();
    }
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;

    vtv::Tv& Get() { return tv_; }

  private:
    static std::string Made(const std::string& dir, const std::string& folder) {
        vtv::CopyTv(dir, folder);
        return folder;
    }

    vtv::Tv tv_;
};

}  // namespace

void MakePicture(const std::string& tvDir, const std::string& provider,
                 const PictureOptions& options) {
    const auto [width, height] = SizeOf(options.size);
    std::vector<Wish> wishes;
    for (const std::string& press : options.presses) {
        wishes.push_back(WishOf(press));
    }
    std::optional<host::TriedPoFile> tried;
    if (!options.po.empty()) {
        tried.emplace(options.po);
    }
    const host::TemporaryFolder folder("vtv-picture");
    vtv::SyncNothing();
    Copy copy(tvDir, folder.Path() + "/tv");
    host::TryOut(copy.Get(), options.with);
    if (!options.language.empty()) {
        copy.Get().SetLanguage(options.language);
    }
    copy.Get().Dispatch();
    const host::Provider asked(provider);
    const Toolkit toolkit(Toolkit::For::kPictures);
    TvScreen screen(copy.Get(), asked);
    screen.look.large = options.text == "large";
    screen.look.contrast = options.contrast == "high";
    for (const Wish& wish : wishes) {
        Press(screen, wish);
    }
    screen.ForgetChanges();
    Canvas canvas(width, height, ThemeFile());
    canvas.GetStage().Draw(screen.CurrentScene());
    const std::string file = options.file.empty() ? "page.png" : options.file;
    const std::string problem = program::WriteFile(file, canvas.Png());
    if (!problem.empty()) {
        throw vtv::Error(vtv::ErrorKind::kPlatform, problem);
    }
    if (options.file.empty()) {
        std::cout << "Made " << program::OneLine(file) << '\n';
    }
}

}  // namespace window
