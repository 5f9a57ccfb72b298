// A gallery as files: the list of its pictures, the page to look through them, and what differs
// from another one.
#pragma once

#include <json/json.h>

#include <string>

namespace window {

// Tells a gallery from other folders.
inline constexpr char kGalleryFile[] = "gallery.json";

// The list of another gallery's pictures. Throws vtv::Error for what is none, or is the new one.
Json::Value ReadGallery(const std::string& folder, const std::string& newFolder);
// The list, and index.html.
void WriteGallery(const std::string& folder, const Json::Value& shots);
// Writes compare.html, with both pictures and where they differ side by side; returns how many
// differ, those included that only one of the two has.
size_t Compare(const std::string& folder, const Json::Value& shots, const std::string& oldFolder,
               const Json::Value& oldShots);

}  // namespace window
