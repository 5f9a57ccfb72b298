#include "gallery.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <iterator>
#include <map>
#include <optional>
#include <thread>

#include "canvas.h"
#include "environment.h"
#include "gallery_page.h"
#include "gallery_workers.h"
#include "host/core/po_file.h"
#include "program/visible_text.h"
#include "program/write_file.h"
#include "pseudo.h"
#include "shots.h"
#include "toasts.h"
#include "virtual-tv/model/json_text.h"
#include "virtual-tv/virtual_tv.h"

namespace fs = std::filesystem;

namespace window {

namespace {

constexpr char kEnglish[] = "en";
constexpr char kLonger[] = "en-long";
constexpr char kMirrored[] = "en-mirrored";
constexpr char kTriedPo[] = "po";

void Write(const std::string& file, const std::string& text) {
    const std::string problem = program::WriteFile(file, text);
    if (!problem.empty()) {
        throw vtv::Error(vtv::ErrorKind::kPlatform, problem);
    }
}

std::vector<std::string> LanguagesOf(const GalleryOptions& options) {
    std::vector<std::string> languages = options.languages;
    if (languages.empty()) {
        languages = vtv::Tv::Languages();
    }
    const std::vector<std::string> known = vtv::Tv::Languages();
    for (const std::string& language : languages) {
        if (std::find(known.begin(), known.end(), language) == known.end()) {
            std::string offered;
            for (const std::string& one : known) {
                offered += " " + one;
            }
            throw vtv::Error(vtv::ErrorKind::kNoSuch, "There is no catalogue for \"" + language +
                                                          "\"; there are:" + offered);
        }
    }
    if (options.pseudo) {
        languages.insert(languages.end(), {kLonger, kMirrored});
    }
    if (!options.po.empty()) {
        languages.emplace_back(kTriedPo);
    }
    return languages;
}

std::vector<std::string> ModelsOf(const GalleryOptions& options) {
    std::vector<std::string> models;
    for (const std::string& model : options.models) {
        models.push_back(vtv::FindModel(model));
    }
    return models.empty() ? vtv::ModelFiles() : models;
}

// A folder of its own: what is in it goes.
void MakeRoom(const std::string& folder) {
    std::error_code ignored;
    if (fs::exists(folder, ignored) && !fs::is_empty(folder, ignored) &&
        !fs::exists(folder + "/" + kGalleryFile, ignored)) {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         folder + ": is no gallery, and not empty. Name another folder.");
    }
    fs::remove_all(folder, ignored);
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) {
        throw vtv::Error(vtv::ErrorKind::kPlatform,
                         folder + ": cannot be made: " + error.message() + ".");
    }
}

// A TV that is on, and thrown away.
struct Stand {
    Stand(const std::string& model, const std::string& folder) : tv(Made(model, folder)) {
        vtv::PowerOn(tv);
    }
    ~Stand() { vtv::PowerOff(); }
    Stand(const Stand&) = delete;
    Stand& operator=(const Stand&) = delete;

    static std::string Made(const std::string& model, const std::string& folder) {
        vtv::Tv::Create(folder, model);
        return folder;
    }

    vtv::Tv tv;
};

// Draws the pictures of one model in one language; lives as long as its process.
class Painter {
  public:
    Painter(std::string provider, const GalleryOptions& options)
        : provider_(std::move(provider)), options_(options), canvas_(1920, 1080, ThemeFile()) {}

    // Returns what was drawn, for the gallery's page.
    Json::Value Paint(const std::string& model, const std::string& language) {
        const std::string name = fs::path(model).stem().string();
        Stand stand(model, folder_.Path() + "/" + std::to_string(++count_));
        const host::Provider provider(provider_, host::Provider::Copy::kPrivate);
        Speak(stand.tv, kEnglish);
        std::vector<Shot> english = ShotsOf(provider, kEnglish);
        const vtv::Snapshot fresh = stand.tv.TakeSnapshot();
        const vtv::Snapshot& ready = Ready(model, stand.tv, provider);
        Append(ToastsOf(stand.tv, provider, ready, kEnglish), &english);
        stand.tv.Restore(fresh);
        const std::optional<host::TriedPoFile> tried = Try(language);
        const std::string menu = IsReal(language) ? language : kEnglish;
        Speak(stand.tv, menu);
        const std::string place = name + "/" + language;
        fs::create_directories(options_.folder + "/" + place);
        std::vector<Shot> all = ShotsOf(provider, menu);
        Append(ToastsOf(stand.tv, provider, ready, menu), &all);
        Json::Value shots(Json::arrayValue);
        for (Shot& shot : all) {
            shot.scene.look.mirrored = shot.scene.look.mirrored || language == kMirrored;
            const bool translated = IsReal(language) && language != kEnglish;
            const Scene* other = translated ? Same(english, shot.name) : nullptr;
            Json::Value json = Draw(shot, other, place);
            json["model"] = name;
            json["language"] = language;
            shots.append(std::move(json));
        }
        return shots;
    }

  private:
    static bool IsReal(const std::string& language) {
        return language != kLonger && language != kMirrored && language != kTriedPo;
    }

    static void Append(std::vector<Shot> more, std::vector<Shot>* shots) {
        std::move(more.begin(), more.end(), std::back_inserter(*shots));
    }

    // The model's TV with everything set up, which takes its time, and is done once.
    const vtv::Snapshot& Ready(const std::string& model, vtv::Tv& tv,
                               const host::Provider& provider) {
        const auto known = ready_.find(model);
        return known != ready_.end() ? known->second
                                     : ready_.emplace(model, SetUpAll(tv, provider)).first->second;
    }

    static void Speak(vtv::Tv& tv, const std::string& language) {
        tv.SetLanguage(language);
        tv.Dispatch();
    }

    std::optional<host::TriedPoFile> Try(const std::string& language) {
        std::string file = options_.po;
        if (language == kLonger) {
            file = folder_.Path() + "/longer.po";
            Write(file, LongerEnglish());
        }
        if (language != kLonger && language != kTriedPo) {
            return std::nullopt;
        }
        return std::optional<host::TriedPoFile>(std::in_place, file);
    }

    static const Scene* Same(const std::vector<Shot>& shots, const std::string& name) {
        for (const Shot& shot : shots) {
            if (shot.name == name) {
                return &shot.scene;
            }
        }
        return nullptr;
    }

    Json::Value Draw(const Shot& shot, const Scene* english, const std::string& place) {
        canvas_.GetStage().Draw(shot.scene);
        Json::Value json;
        json["file"] = place + "/" + shot.name + ".png";
        json["item"] = shot.item;
        json["shot"] = shot.name;
        json["marks"] = Json::Value(Json::arrayValue);
        Write(options_.folder + "/" + json["file"].asString(), canvas_.Png());
        std::vector<Mark> marks = MarksOf(shot.scene, english);
        for (const Misfit& misfit : canvas_.GetStage().Misfits()) {
            marks.push_back({Mark::Kind::kCut, misfit.text});
        }
        for (const Mark& mark : marks) {
            Json::Value one;
            one["kind"] = ToText(mark.kind);
            one["text"] = mark.text;
            json["marks"].append(one);
        }
        return json;
    }

    std::string provider_;
    const GalleryOptions& options_;
    const host::TemporaryFolder folder_{"vtv-gallery"};
    const Toolkit toolkit_{Toolkit::For::kPictures};
    Canvas canvas_;
    std::map<std::string, vtv::Snapshot> ready_;  // by model
    int count_ = 0;
};

size_t Count(const Json::Value& shots, const std::string& kind) {
    size_t count = 0;
    for (const Json::Value& shot : shots) {
        for (const Json::Value& mark : shot["marks"]) {
            count += mark["kind"] == kind ? 1 : 0;
        }
    }
    return count;
}

}  // namespace

int MakeGallery(const std::string& provider, const GalleryOptions& options) {
    const std::vector<std::string> models = ModelsOf(options);
    const std::vector<std::string> languages = LanguagesOf(options);
    if (!options.po.empty()) {
        const host::TriedPoFile checked(options.po);
    }
    const Json::Value old =
        options.compare.empty() ? Json::Value() : ReadGallery(options.compare, options.folder);
    MakeRoom(options.folder);
    vtv::SyncNothing();
    const size_t count = models.size() * languages.size();
    const size_t jobs = options.jobs > 0 ? static_cast<size_t>(options.jobs)
                                         : std::max(1U, std::thread::hardware_concurrency());
    std::unique_ptr<Painter> painter;  // one a process, made in it
    const Json::Value shots =
        DoInProcesses(count, std::min(jobs, count), !options.quiet, [&](size_t task) {
            if (painter == nullptr) {
                painter = std::make_unique<Painter>(provider, options);
            }
            return painter->Paint(models[task / languages.size()],
                                  languages[task % languages.size()]);
        });
    WriteGallery(options.folder, shots);
    std::cout << "Made " << program::OneLine(options.folder) << "/index.html: " << shots.size()
              << " pictures of " << models.size() << " models in " << languages.size()
              << " languages. Texts that are cut: " << Count(shots, "cut")
              << "; missing: " << Count(shots, "missing")
              << "; as in English: " << Count(shots, "english") << ".\n";
    if (options.compare.empty()) {
        return 0;
    }
    const size_t different = Compare(options.folder, shots, options.compare, old);
    std::cout << (different == 0 ? "Nothing differs from " : "Differ from ")
              << program::OneLine(options.compare)
              << (different == 0 ? "."
                                 : ": " + std::to_string(different) + " pictures; see " +
                                       options.folder + "/compare.html")
              << '\n';
    return different == 0 ? 0 : static_cast<int>(vtv::ErrorKind::kNo);
}

}  // namespace window
