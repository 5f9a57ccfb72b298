// The page in a window that lives until it is closed; or, without a display, for as long as there
// are keys to press.
#pragma once

#include <string>

#include "window_options.h"

namespace window {

// Throws vtv::Error, host::ProviderError.
void ShowWindow(const std::string& tvDir, const std::string& provider,
                const WindowOptions& options);

}  // namespace window
