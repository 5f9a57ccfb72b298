// A TV whose applications are started, finished and ended as processes.
#pragma once

#include <chrono>
#include <thread>

#include "platform/applications.h"
#include "tv_fixture.h"

inline constexpr char kWizard[] = "org.nemra.wizard";

class ApplicationsTest : public TvTest {
  protected:
    ~ApplicationsTest() override {
        if (tv != nullptr) {
            tv->PowerCycle();  // ends what a failed test left running
        }
    }
    static int LaunchWith(const char* appId, const char* key, const char* value) {
        bundle* extras = bundle_create();
        bundle_add_str(extras, key, value);
        const int result = aul_launch_app(appId, extras);
        bundle_free(extras);
        return result;
    }
    bool WaitUntilGone(const std::string& appId) {
        for (int i = 0; i < 2000 && tv->IsRunning(appId); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
        return !tv->IsRunning(appId);
    }
    // Starts it, lets it do its work, and returns the text when it could not.
    std::string Finish(const std::string& appId, const char* key, const char* value) {
        EXPECT_EQ(LaunchWith(appId.c_str(), key, value), 0);
        try {
            tv->FinishApplication(appId);
        } catch (const vtv::Error& error) {
            return error.what();
        }
        return "";
    }
};
