#include "progress.h"

#include <unistd.h>

#include <cstdio>

#include "visible_text.h"

namespace program {

void ShowProgress(const std::string& line) {
    if (isatty(STDERR_FILENO) != 0) {
        std::fputs((Control("[G") + Control("[K") + line).c_str(), stderr);
        std::fflush(stderr);
    }
}

void ClearProgress() {
    ShowProgress("");
}

}  // namespace program
