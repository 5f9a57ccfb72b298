// Every call of the platform asked of a TV, with every kind of value, and every application run on
// it. Whoever serves the calls: the answers are lines that can be compared.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "explorer/tv/inputs.h"
#include "virtual-tv/model/tv_model.h"

// A TV that can be made what a question needs.
class TestTv {
  public:
    virtual ~TestTv() = default;

    // Absent: the TV has none.
    virtual void Store(const std::string& key, const std::optional<vtv::Value>& value) = 0;
    virtual void SetFeature(const std::string& key, const std::optional<vtv::Value>& value) = 0;
    virtual void SetConsent(const std::string& item, bool agreed) = 0;
    virtual void SetSignedIn(bool signedIn) = 0;
    virtual void SetOwnerFile(const std::string& path, bool isThere) = 0;

    // Platform calls are made in here.
    virtual void Do(const std::function<void()>& calls) = 0;
    virtual bool IsRunning(const std::string& appId) = 0;
    // The viewer goes through with it; false when it cannot do its work.
    virtual bool Finish(const std::string& appId) = 0;
    virtual std::string Stored(const std::string& key) = 0;  // "bool true", or "none"
};

// Each line begins with the name of the call.
std::vector<std::string> AskEverything(TestTv& tv, const explorer::Inputs& inputs,
                                       const vtv::Model& model);
