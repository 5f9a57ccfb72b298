// Writing a scenario from what is done to a TV.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "host/page/viewer.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

class Recording {
  public:
    // The members of a step, as docs/scenarios.md has them; some of them are tables or lists.
    using Member =
        std::variant<vtv::Value, std::map<std::string, vtv::Value>, std::vector<std::string>>;
    using Step = std::map<std::string, Member>;

    // Begins the scenario in a file that is not there, as it would be begun for the first step; one
    // that is there must be a recording of the TV's model. Throws as the constructor.
    static void Begin(const std::string& file, const vtv::Tv& tv);

    // Makes sure that the step can be added to the scenario in the file, which is begun if it is
    // not there: with the TV's model, and with what the TV has by now become. Make this before the
    // thing is done, and do it only then. Throws vtv::Error: kUsage for a file that is no scenario
    // of the TV's model and for a step that no scenario can have, kPlatform when the file cannot be
    // written.
    Recording(const std::string& file, const vtv::Tv& tv, const Step& step);
    ~Recording();
    Recording(Recording&&) noexcept;
    Recording(const Recording&) = delete;
    Recording& operator=(const Recording&) = delete;

    // It was done: the step is added; of what a viewer did, with what the viewer saw as what is
    // expected. Without this the file stays as it was.
    void Done();
    void Done(const PressResult& result);

  private:
    struct Pending;
    std::unique_ptr<Pending> pending_;
};

}  // namespace host
