// The window of a TV "tv", without a display and with its keys in a file.
#pragma once

#include "tests/host/vtv_process.h"

class WindowTest : public VtvTest {
  protected:
    // What the keys show, on the TV "tv" of the model.
    void Make(const std::string& model) { Ok({"new", "tv", "--model", model}); }
    std::vector<std::string> Window(const std::string& keys) {
        Write("keys.txt", keys);
        return {"window", "--tv", "tv", "--keys", Path("keys.txt"), "--display", "none"};
    }
    std::string Keys(const std::string& keys) { return Ok(Window(keys)); }
    std::string Launches() { return Ok({"app", "list", "--launches", "--tv", "tv"}); }
};
