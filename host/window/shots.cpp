#include "shots.h"

namespace window {

namespace {

// A viewer who has come to the item with the arrows.
Navigator At(const host::Provider& provider, const host::Page& page, const host::Item& item) {
    Navigator navigator(provider, page);
    while (navigator.Focused() != &item) {
        navigator.Press(Key::kDown);
    }
    return navigator;
}

class Camera {
  public:
    Camera(const host::Provider& provider, std::string language)
        : provider_(provider), language_(std::move(language)), page_(LookAtPage(provider)) {}

    std::vector<Shot> Shots() {
        const Navigator front(provider_, page_);
        for (const host::Item* item : front.Lines()) {
            Take(*item);
        }
        if (shots_.empty()) {
            shots_.push_back({"page", "", SceneOf(front, language_, {})});
        }
        return std::move(shots_);
    }

  private:
    void Take(const host::Item& item) {
        Navigator navigator = At(provider_, page_, item);
        Add(item, "", navigator);
        const host::ItemView& view = page_[item.name];
        if (view.enabled && item.kind != host::ItemKind::kList) {
            return;  // a press would change the TV
        }
        navigator.Press(Key::kOk);
        if (navigator.OpenedList()) {
            Add(item, "-list", navigator);
            // Without a question the choice would be taken.
            if (provider_.Confirmation(item.key)) {
                navigator.Press(Key::kOk);
                Add(item, "-box", navigator);
            }
        } else if (navigator.OpenedBox()) {
            Add(item, "-popup", navigator);
        }
        if (const std::optional<std::string> reason = navigator.TakeReason()) {
            Add(item, "-reason", At(provider_, page_, item));
            shots_.back().scene.toast = *reason;
        }
    }

    void Add(const host::Item& item, const char* what, const Navigator& navigator) {
        shots_.push_back(
            {std::string(item.name) + what, item.name, SceneOf(navigator, language_, {})});
    }

    const host::Provider& provider_;
    std::string language_;
    host::Page page_;
    std::vector<Shot> shots_;
};

// The texts that come from the catalogue, in an order that is the same in every language.
std::vector<std::string> TextsOf(const Scene& scene) {
    std::vector<std::string> texts = {scene.title, scene.heading, scene.help, scene.reason,
                                      scene.toast};
    for (const RowScene& row : scene.rows) {
        texts.push_back(row.title);
    }
    if (scene.box) {
        texts.insert(texts.end(), {scene.box->title, scene.box->message});
        texts.insert(texts.end(), scene.box->buttons.begin(), scene.box->buttons.end());
    }
    return texts;
}

// "OK" is "OK" in many a language.
bool IsWord(const std::string& text) {
    return text.size() > 2;
}

void AddOnce(std::vector<Mark>* marks, Mark::Kind kind, const std::string& text) {
    for (const Mark& mark : *marks) {
        if (mark.kind == kind && mark.text == text) {
            return;
        }
    }
    marks->push_back({kind, text});
}

}  // namespace

std::vector<Shot> ShotsOf(const host::Provider& provider, const std::string& menuLanguage) {
    return Camera(provider, menuLanguage).Shots();
}

const char* ToText(Mark::Kind kind) {
    switch (kind) {
        case Mark::Kind::kCut:
            return "cut";
        case Mark::Kind::kMissing:
            return "missing";
        case Mark::Kind::kEnglish:
            break;
    }
    return "english";
}

std::vector<Mark> MarksOf(const Scene& scene, const Scene* english) {
    std::vector<Mark> marks;
    const std::vector<std::string> texts = TextsOf(scene);
    const std::vector<std::string> others =
        english != nullptr ? TextsOf(*english) : std::vector<std::string>();
    for (size_t i = 0; i < texts.size(); ++i) {
        if (host::HoldsTextId(texts[i])) {
            AddOnce(&marks, Mark::Kind::kMissing, texts[i]);
        } else if (others.size() == texts.size() && texts[i] == others[i] && IsWord(texts[i])) {
            AddOnce(&marks, Mark::Kind::kEnglish, texts[i]);
        }
    }
    for (const RowScene& row : scene.rows) {
        if (row.title == row.name) {
            AddOnce(&marks, Mark::Kind::kMissing, row.name);
        }
    }
    return marks;
}

}  // namespace window
