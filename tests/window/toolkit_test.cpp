// The voice guide of a TV on a machine that has the toolkit.
#include <cstdlib>
#include <filesystem>

#include "platform/toolkit.h"
#include "tests/virtual-tv/tv_fixture.h"

namespace {

using ToolkitTest = TvTest;

TEST_F(ToolkitTest, TheAccessibilityModeIsSavedInTheTvsHome) {
    TurnOn();
    const std::string dir = tv->Dir();
    const std::string home = folder / "home";
    std::filesystem::create_directory(home);
    // In a process of its own: the toolkit reads its environment once.
    EXPECT_EQ(InChild([&] {
                  setenv("HOME", home.c_str(), 1);
                  unsetenv("DISPLAY");
                  setenv("ELM_DISPLAY", "buffer", 1);
                  if (elm_init(1, nullptr) <= 0) {
                      return 1;
                  }
                  elm_config_access_set(1);
                  if (elm_config_save() == 0) {
                      return 2;
                  }
                  elm_config_item_flush("ELM_ACCESS_MODE");
                  return std::filesystem::is_empty(home) ? 0 : 3;
              }),
              0);
    EXPECT_TRUE(std::filesystem::exists(dir + "/owner/.elementary")) << "nothing is saved";
    EXPECT_EQ(tv->State().at("toolkit/access"), vtv::Value(true));
    EXPECT_TRUE(LogHas("ELM_ACCESS_MODE"));
}

}  // namespace
