// The explorer as it is installed.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>

#include "process.h"

namespace fs = std::filesystem;

TEST(Installed, TheExplorerHasAllThatItNeeds) {
    const fs::path place = fs::path(TemporaryFolder()) / "usr";
    const auto run = [](const std::string& command) {
        const int status = std::system((command + " >/dev/null").c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    };
    unsetenv("VTV_PROVIDER");
    unsetenv("VTV_DATA");
    unsetenv("VTV_EXPLORER_DATA");
    ASSERT_EQ(run(std::string(CMAKE) + " --install " + BUILD_FOLDER +
                  " --component explorer --prefix " + place.string()),
              0);
    const std::string program = (place / "bin/vtv-explore").string();
    EXPECT_EQ(run(program + " depends -q voice"), 0);
    EXPECT_EQ(run(program + " sequences -q --depth 1 --tv farfield-eu"), 0);
    // It is what was installed that it used.
    fs::remove(place / "share/vtv-explorer/inputs.toml");
    EXPECT_EQ(run(program + " depends -q voice 2>&1"), 4);
    fs::remove(place / "lib/vtv/libsi-ready.so");
    EXPECT_EQ(run("VTV_EXPLORER_DATA=" + fs::path(RULES_FOLDER).string() + "/../../explorer " +
                  program + " depends -q voice 2>&1"),
              3);
}
