// What the toolkit finds around it: the page's own fonts and theme, and nothing of the user's.
#pragma once

#include <string>

#include "host/core/temporary_folder.h"

namespace window {

// Where the theme lies. Throws vtv::Error (kPlatform) when it is not there.
std::string ThemeFile();

// The toolkit, for as long as this lives. It reads no profile, module or font of the user's, starts
// no service, and leaves nothing behind in the user's home. Throws vtv::Error (kPlatform).
class Toolkit {
  public:
    enum class For {
        kPictures,  // without a display
        kWindow,    // Throws when there is no display.
    };
    explicit Toolkit(For use);
    ~Toolkit();
    Toolkit(const Toolkit&) = delete;
    Toolkit& operator=(const Toolkit&) = delete;

  private:
    For use_;
    host::TemporaryFolder home_;
};

}  // namespace window
