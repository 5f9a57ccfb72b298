// Every call of the platform asked of a TV, with every kind of value, and every application run on
// it. Whoever serves the calls: the answers are lines that can be compared. A line that is asked
// with a null says "(null)" before the answer.
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
    virtual std::string Stored(const std::string& key) = 0;  // "bool true", or "none"

    // --- Of a TV that can run applications ---
    virtual bool IsRunning(const std::string&) { return false; }
    // The viewer goes through with it; false when it cannot do its work.
    virtual bool Finish(const std::string&) { return false; }
};

// Each line begins with the name of the call.
std::vector<std::string> AskEveryCall(TestTv& tv, const explorer::Inputs& inputs,
                                      const vtv::Model& model);
std::vector<std::string> RunEveryApplication(TestTv& tv, const explorer::Inputs& inputs,
                                             const vtv::Model& model);

// What a call is asked that the TV cannot know has this in its name.
inline constexpr char UNHEARD_OF[] = "unheard-of";

// Every call with each null that it can be given, and with names that no TV knows. Platform calls
// are made in here; the key is that of a setting that is not stored.
class OddQuestions {
  public:
    // call, what it is asked, the answer
    using Line = std::function<void(const std::string&, const std::string&, const std::string&)>;
    OddQuestions(std::string key, Line line) : key_(std::move(key)), line_(std::move(line)) {}

    void AskAll();

  private:
    void Result(const char* call, const std::string& asked, int result);
    void Settings();
    void Features();
    void Services();
    void Packages();
    void Speech();
    void Requests();
    void Bundles();
    void Toolkit();

    std::string key_;
    Line line_;
};
