// Asks the virtual TV everything that tv_likeness_test.cpp asks the explorer's own:
//
//     virtual-tv-answers MODEL FOLDER
//
// prints a line for each answer of a call, and behind an empty line what came of each application.
#include <iostream>

#include "platform_questions.h"
#include "virtual-tv/virtual_tv.h"

namespace {

class VirtualTestTv : public TestTv {
  public:
    explicit VirtualTestTv(const std::string& folder) : tv_(folder) { vtv::PowerOn(tv_); }
    ~VirtualTestTv() override {
        tv_.PowerCycle();  // ends what still runs
        vtv::PowerOff();
    }

    vtv::Tv& Tv() { return tv_; }

    void Store(const std::string& key, const std::optional<vtv::Value>& value) override {
        if (value) {
            tv_.Set(key, *value);
        } else {
            tv_.Unset(key);
        }
    }
    void SetFeature(const std::string& key, const std::optional<vtv::Value>& value) override {
        tv_.SetFeature(key, value);
    }
    void SetConsent(const std::string& item, bool agreed) override { tv_.SetConsent(item, agreed); }
    void SetSignedIn(bool signedIn) override { tv_.SetSignedIn(signedIn); }
    void SetOwnerFile(const std::string& path, bool isThere) override {
        if (isThere) {
            tv_.AddOwnerFile(path);
        } else {
            tv_.RemoveOwnerFile(path);
        }
    }
    void Do(const std::function<void()>& calls) override { calls(); }
    bool IsRunning(const std::string& appId) override { return tv_.IsRunning(appId); }
    bool Finish(const std::string& appId) override {
        try {
            tv_.FinishApplication(appId);
            return true;
        } catch (const vtv::Error&) {
            return false;
        }
    }
    std::string Stored(const std::string& key) override {
        const std::optional<vtv::Value> value = tv_.Get(key);
        return value ? std::string(vtv::TypeName(*value)) + " " + vtv::ToText(*value) : "none";
    }

  private:
    vtv::Tv tv_;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        return 2;
    }
    vtv::Tv::Create(argv[2], argv[1]);
    VirtualTestTv tv(argv[2]);
    const explorer::Inputs inputs = explorer::LoadInputs(explorer::InputsFile());
    for (const auto& ask : {AskEveryCall, RunEveryApplication}) {
        for (const std::string& line : ask(tv, inputs, tv.Tv().GetModel())) {
            std::cout << line << '\n';
        }
        std::cout << '\n';
    }
    return std::cout.flush() ? 0 : 4;
}
