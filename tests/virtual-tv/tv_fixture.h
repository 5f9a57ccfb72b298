// A TV of the test's own, made from a model that comes with the virtual TV or from one written in
// the test.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "child.h"
#include "temporary_folder.h"
#include "virtual-tv/virtual_tv.h"

class TvTest : public testing::Test {
  protected:
    ~TvTest() override { vtv::PowerOff(); }

    // A TV that is on. Applications are only recorded unless the test wants processes.
    vtv::Tv& TurnOn(const std::string& model = "farfield-eu") {
        vtv::PowerOff();
        const std::string dir = folder / ("tv" + std::to_string(++count));
        vtv::Tv::Create(dir, vtv::FindModel(model));
        return Open(dir);
    }
    vtv::Tv& TurnOnText(const std::string& toml) {
        const std::string file = folder / "model.toml";
        WriteText(file, toml);
        return TurnOn(file);
    }
    vtv::Tv& Open(const std::string& dir) {
        vtv::PowerOff();
        tv = std::make_unique<vtv::Tv>(dir);
        vtv::PowerOn(*tv);
        return *tv;
    }
    bool LogHas(const std::string& text) const {
        for (const vtv::LogRecord& record : tv->ReadLog()) {
            if (record.message.find(text) != std::string::npos) {
                return true;
            }
        }
        return false;
    }

    TemporaryFolder folder;
    std::unique_ptr<vtv::Tv> tv;
    int count = 0;
};

// The kind of the error that the statement throws, with its text; kUsage and "" when it throws
// none.
template <typename Body>
std::string ErrorOf(vtv::ErrorKind kind, Body body) {
    try {
        body();
    } catch (const vtv::Error& error) {
        EXPECT_EQ(error.kind(), kind) << error.what();
        return error.what();
    }
    ADD_FAILURE() << "nothing is thrown";
    return "";
}
