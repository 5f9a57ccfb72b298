#include "gallery_page.h"

#include <png.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <vector>

#include "program/visible_text.h"
#include "program/write_file.h"
#include "virtual-tv/model/error.h"
#include "virtual-tv/model/json_text.h"
#include "virtual-tv/model/text_file.h"

namespace fs = std::filesystem;

namespace window {

namespace {

constexpr char kHead[] = R"(<!doctype html>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width">
<style>
body { background: #0d1117; color: #e6edf3; font: 16px/1.4 sans-serif; margin: 1.5rem; }
select, label { font: inherit; margin-right: 1rem; }
#pictures { display: grid; grid-template-columns: repeat(auto-fill, minmax(24rem, 1fr)); gap: 1rem; margin-top: 1rem; }
figure { margin: 0; background: #161b22; padding: .5rem; border-radius: .4rem; }
img { width: 100%; display: block; aspect-ratio: 16 / 9; }
figcaption { padding-top: .4rem; overflow-wrap: anywhere; }
.mark { display: inline-block; border-radius: .3rem; padding: 0 .4rem; margin: .2rem .3rem 0 0; font-size: .85rem; }
.cut { background: #7d4e00; } .missing { background: #8e1519; } .english { background: #1f4b8f; }
.three { display: grid; grid-template-columns: 1fr 1fr 1fr; gap: .5rem; }
</style>
)";

constexpr char kScript[] = R"(
<script>
const shots = JSON.parse(document.getElementById("shots").textContent);
const filters = ["model", "language", "item"].map(name => {
  const select = document.getElementById(name);
  for (const value of [...new Set(shots.map(shot => shot[name]))].sort()) select.add(new Option(value || "no page", value));
  select.selectedIndex = name == "language" ? 1 : 0;
  return [name, select];
});
const onlyMarked = document.getElementById("marked");
const pictures = document.getElementById("pictures");
function show() {
  pictures.replaceChildren();
  let count = 0;
  for (const shot of shots) {
    if (filters.some(([name, select]) => select.value != "*" && select.value != shot[name])) continue;
    if (onlyMarked.checked && shot.marks.length == 0) continue;
    ++count;
    const figure = document.createElement("figure");
    const link = figure.appendChild(document.createElement("a"));
    link.href = shot.file;
    const image = link.appendChild(document.createElement("img"));
    image.loading = "lazy";
    image.src = shot.file;
    image.alt = shot.shot;
    const caption = figure.appendChild(document.createElement("figcaption"));
    caption.append(`${shot.model} · ${shot.language} · ${shot.shot} `);
    for (const mark of shot.marks) {
      const span = caption.appendChild(document.createElement("span"));
      span.className = "mark " + mark.kind;
      span.textContent = `${{cut: "cut", missing: "not translated", english: "as in English"}[mark.kind]}: ${mark.text}`;
    }
    pictures.append(figure);
  }
  document.getElementById("count").textContent = `${count} of ${shots.length}`;
}
for (const [, select] of filters) select.onchange = show;
onlyMarked.onchange = show;
show();
</script>
)";

void WriteWhole(const std::string& file, const std::string& text) {
    const std::string problem =
        program::WriteFile(file, program::Shown(text, program::Form::kText));
    if (!problem.empty()) {
        throw vtv::Error(vtv::ErrorKind::kPlatform, problem);
    }
}

// JSON within a page: nothing in it ends the script.
std::string Embedded(const Json::Value& json) {
    std::string text;
    for (const char c : vtv::CompactJson(json)) {
        text += c == '<' ? std::string("\\u003c") : std::string(1, c);
    }
    return text;
}

std::string Select(const std::string& name) {
    return "<label>" + name + " <select id=\"" + name +
           "\"><option value=\"*\">all</option></select></label>\n";
}

std::string Bytes(const std::string& file) {
    std::ostringstream bytes;
    bytes << std::ifstream(file, std::ios::binary).rdbuf();
    return bytes.str();
}

struct Picture {
    png_image header{};
    std::vector<png_byte> rgb;
};

bool Read(const std::string& file, Picture* picture) {
    picture->header.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&picture->header, file.c_str()) == 0) {
        return false;
    }
    picture->header.format = PNG_FORMAT_RGB;
    picture->rgb.resize(PNG_IMAGE_SIZE(picture->header));
    return png_image_finish_read(&picture->header, nullptr, picture->rgb.data(), 0, nullptr) != 0;
}

// Where the two differ, bright on the new one made dark. Nothing for pictures of two sizes.
void WriteDifference(const std::string& newFile, const std::string& oldFile,
                     const std::string& file) {
    Picture now;
    Picture old;
    if (!Read(newFile, &now) || !Read(oldFile, &old) || now.rgb.size() != old.rgb.size()) {
        return;
    }
    for (size_t i = 0; i < now.rgb.size(); i += 3) {
        const bool same = std::equal(&now.rgb[i], &now.rgb[i] + 3, &old.rgb[i]);
        for (size_t colour = i; colour < i + 3; ++colour) {
            now.rgb[colour] =
                same ? static_cast<png_byte>(now.rgb[colour] / 4) : static_cast<png_byte>(255);
        }
    }
    png_image_write_to_file(&now.header, file.c_str(), 0, now.rgb.data(), 0, nullptr);
}

std::set<std::string> FilesOf(const Json::Value& shots) {
    std::set<std::string> files;
    for (const Json::Value& shot : shots) {
        files.insert(shot["file"].asString());
    }
    return files;
}

std::string Column(const std::string& folder, const std::string& file, const char* what) {
    std::error_code ignored;
    const bool isThere = fs::exists(folder + "/" + file, ignored);
    return "<figure>" +
           (isThere ? "<a href=\"" + file + "\"><img loading=lazy src=\"" + file + "\"></a>"
                    : std::string()) +
           "<figcaption>" + what + (isThere ? "" : ": none") + "</figcaption></figure>\n";
}

}  // namespace

Json::Value ReadGallery(const std::string& folder, const std::string& newFolder) {
    std::error_code ignored;
    if (fs::weakly_canonical(folder, ignored) == fs::weakly_canonical(newFolder, ignored)) {
        throw vtv::Error(vtv::ErrorKind::kUsage,
                         "--compare: " + folder + " is the gallery that is made anew.");
    }
    const std::string file = folder + "/" + kGalleryFile;
    const vtv::JsonText json(file, vtv::ReadTextFile(file));
    bool fits = json.Problem().empty() && json.Root().isArray();
    for (const Json::Value& shot : fits ? json.Root() : Json::Value(Json::arrayValue)) {
        // A name that leads out of the gallery is no picture of it.
        fits = fits && shot.isObject() && shot["file"].isString() &&
               shot["file"].asString().find("..") == std::string::npos;
    }
    if (!fits) {
        throw vtv::Error(vtv::ErrorKind::kUsage, file + ": is not the list of a gallery.");
    }
    return json.Root();
}

void WriteGallery(const std::string& folder, const Json::Value& shots) {
    std::string html = kHead;
    html += "<title>The Voice page</title>\n<h1>The Voice page</h1>\n";
    html += Select("model") + Select("language") + Select("item");
    html += "<label><input type=\"checkbox\" id=\"marked\"> only marked</label>\n";
    html += "<span id=\"count\"></span>\n<div id=\"pictures\"></div>\n";
    html += "<script type=\"application/json\" id=\"shots\">" + Embedded(shots) + "</script>";
    WriteWhole(folder + "/index.html", html + kScript);
    WriteWhole(folder + "/" + kGalleryFile, vtv::PrettyJson(shots) + "\n");
}

size_t Compare(const std::string& folder, const Json::Value& shots, const std::string& oldFolder,
               const Json::Value& oldShots) {
    std::set<std::string> files = FilesOf(shots);
    files.merge(FilesOf(oldShots));
    std::string rows;
    size_t different = 0;
    for (const std::string& file : files) {
        const std::string now = folder + "/" + file;
        const std::string old = oldFolder + "/" + file;
        if (Bytes(now) == Bytes(old)) {
            continue;
        }
        ++different;
        const std::string kept = "compare/" + file;
        std::error_code ignored;
        fs::create_directories((fs::path(folder) / kept).parent_path(), ignored);
        fs::copy_file(old, folder + "/" + kept, fs::copy_options::overwrite_existing, ignored);
        const std::string difference = kept + ".difference.png";
        WriteDifference(now, old, folder + "/" + difference);
        rows += "<h2>" + file + "</h2>\n<div class=\"three\">" + Column(folder, kept, "before") +
                Column(folder, file, "now") + Column(folder, difference, "difference") + "</div>\n";
    }
    WriteWhole(folder + "/compare.html",
               kHead + std::string("<title>What differs</title>\n<h1>What differs: ") +
                   std::to_string(different) + " of " + std::to_string(files.size()) + "</h1>\n" +
                   rows);
    return different;
}

}  // namespace window
