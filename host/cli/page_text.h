// The Voice page as a picture in text.
#pragma once

#include <string>

#include "host/page/page.h"
#include "virtual-tv/virtual_tv.h"

namespace cli {

struct PictureOptions {
    bool all = false;     // hidden items, too
    size_t columns = 78;  // the width of the whole picture
    std::string po;       // the file that its texts come from; empty: the TV's catalogue
};

std::string DrawPage(const host::Page& page, const vtv::Tv& tv, const PictureOptions& options);
// The width to draw for: from 30 to 100 as $COLUMNS or the terminal has it; 78 where there is none.
size_t PictureColumns();

}  // namespace cli
