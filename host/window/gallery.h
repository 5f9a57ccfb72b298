// `vtv gallery`: every model in every language as pictures and one page to look through.
#pragma once

#include <string>

#include "window_options.h"

namespace window {

// Returns the exit code: kNo when something differs from the gallery that it is compared with.
// Throws vtv::Error, host::ProviderError.
int MakeGallery(const std::string& provider, const GalleryOptions& options);

}  // namespace window
