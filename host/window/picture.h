// A picture of the page, or of what a viewer sees after some presses. Made on a copy of the TV, so
// that no picture changes a TV.
#pragma once

#include <string>

#include "window_options.h"

namespace window {

// Writes the PNG file. Throws vtv::Error, host::ProviderError.
void MakePicture(const std::string& tvDir, const std::string& provider,
                 const PictureOptions& options);

}  // namespace window
