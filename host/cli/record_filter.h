// Which records of the log and the trace are wanted: since when, and with what in them.
#pragma once

#include <regex.h>

#include <memory>
#include <string>

#include "virtual-tv/model/values.h"

namespace cli {

// "10m" (that long ago: s, m, h, d), "07:15" (today), "2026-03-29", "2026-03-29 07:15:02". The
// clock is that of the records, UTC. Throws kUsage for anything else.
vtv::TimePoint ParseSince(const std::string& text);

// An extended regular expression, as of grep -E; in any case where it has no capital letter.
class TextSearch {
  public:
    // Finds everything when it is empty. Throws kUsage for what is no expression.
    explicit TextSearch(const std::string& expression);

    bool Finds(const std::string& text) const;

  private:
    std::shared_ptr<regex_t> compiled_;
};

}  // namespace cli
