// Asks the recording platform everything that tv_likeness_test.cpp asks of calls:
//
//     recording-answers MODEL
//
// prints a line for each answer.
#include <iostream>

#include "platform_questions.h"
#include "recording_platform.h"
#include "virtual-tv/model/applications.h"
#include "virtual-tv/model/keys.h"
#include "virtual-tv/model/tv_model.h"

namespace {

using recording::tv;

recording::SettingValue Setting(const vtv::Value& value) {
    if (const bool* flag = std::get_if<bool>(&value)) {
        return recording::StoredBool{*flag ? 1 : 0};
    }
    if (const int* number = std::get_if<int>(&value)) {
        return *number;
    }
    return std::get<std::string>(value);
}

recording::FeatureValue Feature(const vtv::Value& value) {
    return std::visit([](const auto& held) { return recording::FeatureValue(held); }, value);
}

class RecordingTestTv final : public TestTv {
  public:
    // The model must outlive it.
    explicit RecordingTestTv(const vtv::Model& model) {
        recording::Reset();
        recording::SetRecording(false);
        for (const auto& [key, value] : model.settings) {
            Store(key, value);
        }
        for (const auto& [key, value] : model.features) {
            SetFeature(key, value);
        }
        for (const auto& [item, agreed] : model.consents) {
            SetConsent(item, agreed);
        }
        for (const std::string& file : model.ownerFiles) {
            SetOwnerFile(file, true);
        }
        SetSignedIn(model.signedIn);
        tv().online = model.network != vtv::Network::kDisconnected;
        tv().accountApp = model.accountUi;
        if (model.accountUi.empty()) {
            recording::Fail("sso_get_account_ui_application_package_id");
        }
        for (const std::string& application : vtv::InstalledApplications(model)) {
            const vtv::Package* package = vtv::FindPackage(model, application);
            auto& items = tv().packages[application];
            if (package != nullptr) {
                items.insert(package->metadata.begin(), package->metadata.end());
            }
        }
        for (const vtv::Voice& voice : model.voices.value_or(std::vector<vtv::Voice>())) {
            languages_.push_back(voice.language);
        }
        for (const std::string& language : languages_) {
            tv().voices.push_back(language.c_str());
        }
    }

    void Store(const std::string& key, const std::optional<vtv::Value>& value) override {
        tv().settings.erase(key);
        if (value) {
            tv().settings.emplace(key, Setting(*value));
        }
    }
    void SetFeature(const std::string& key, const std::optional<vtv::Value>& value) override {
        tv().features.erase(key);
        if (value) {
            tv().features.emplace(key, Feature(*value));
        }
    }
    void SetConsent(const std::string& item, bool agreed) override {
        tv().consents[item] = agreed ? 1 : 0;
    }
    void SetSignedIn(bool signedIn) override { tv().loginState = signedIn ? 1 : 0; }
    void SetOwnerFile(const std::string& path, bool isThere) override {
        if (isThere) {
            tv().files.insert(vtv::kOwnerFolder + path);
        } else {
            tv().files.erase(vtv::kOwnerFolder + path);
        }
    }
    void Do(const std::function<void()>& calls) override { calls(); }
    std::string Stored(const std::string& key) override {
        const auto found = tv().settings.find(key);
        if (found == tv().settings.end()) {
            return "none";
        }
        if (const auto* flag = std::get_if<recording::StoredBool>(&found->second)) {
            return flag->number != 0 ? "bool true" : "bool false";
        }
        const int* number = std::get_if<int>(&found->second);
        return number != nullptr ? "int " + std::to_string(*number)
                                 : "string " + std::get<std::string>(found->second);
    }

  private:
    std::vector<std::string> languages_;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        return 2;
    }
    const vtv::Model model = vtv::LoadModel(argv[1]);
    RecordingTestTv tv(model);
    const explorer::Inputs inputs = explorer::LoadInputs(explorer::InputsFile());
    for (const std::string& line : AskEveryCall(tv, inputs, model)) {
        std::cout << line << '\n';
    }
    recording::Reset();  // what was handed out is kept until then, to find what is given back twice
    return std::cout.flush() ? 0 : 4;
}
