// Writing a scenario from what is done to a TV.
#pragma once

#include <map>
#include <string>

#include "viewer.h"

namespace host {

class Recording {
  public:
    // Begins a scenario in the file unless it is there already: with the TV's model, and with what
    // the TV has by now become. Call this before the thing that is to be recorded is done. Throws
    // vtv::Error (kPlatform) when the file cannot be written.
    Recording(const std::string& file, const vtv::Tv& tv);

    // Adds a step with one action, "power-cycle = true" or "set = { KEY = VALUE }".
    void Add(const std::string& action, const vtv::Value& value);
    void Add(const std::string& action, const std::map<std::string, vtv::Value>& members);
    // Adds a press with what the viewer saw then as what is expected.
    void AddPress(const Press& press, const PressResult& result);

  private:
    void Append(const std::string& text);

    std::string file_;
};

}  // namespace host
