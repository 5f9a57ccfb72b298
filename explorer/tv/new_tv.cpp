#include "new_tv.h"

#include <filesystem>

#include "virtual-tv/model/applications.h"
#include "virtual-tv/model/keys.h"

namespace explorer {

namespace {

class Unpacking {
  public:
    Unpacking(const Inputs& inputs, const std::string& file) : inputs_(inputs) {
        tv_.model = vtv::LoadModel(file);
        const bool isOurs = std::filesystem::path(file).parent_path() == vtv::DataDir() + "/tvs";
        tv_.call = isOurs ? tv_.model.name : std::filesystem::absolute(file).string();
    }

    NewTv Unpack() {
        for (const Input& input : inputs_.inputs) {
            tv_.values[inputs_.IndexOf(input)] = ValueOfNothing(input);
        }
        for (const auto& [key, value] : tv_.model.features) {
            SetStored(Input::Kind::kFeature, key, StoredValue(value));
        }
        for (const auto& [key, value] : tv_.model.settings) {
            if (key == vtv::kPolicyKey) {
                tv_.policy = vtv::ToText(value);
            } else {
                SetStored(Input::Kind::kSetting, key, StoredValue(value));
            }
        }
        for (const auto& [item, agreed] : tv_.model.consents) {
            Set(Input::Kind::kConsent, item, NumberValue(agreed ? 1 : 0, "int"));
        }
        for (const std::string& file : tv_.model.ownerFiles) {
            Set(Input::Kind::kFile, vtv::kOwnerFolder + file, NumberValue(1, "bool"));
        }
        SetCalls();
        return std::move(tv_);
    }

  private:
    // Nothing is stored, nobody has agreed, no file is there; platform calls succeed.
    static Value ValueOfNothing(const Input& input) {
        switch (input.kind) {
            case Input::Kind::kSetting:
                return MissingValue();
            case Input::Kind::kFeature:
                return MissingValue(platform::NO_SUCH_FEATURE);
            case Input::Kind::kFile:
            case Input::Kind::kConsent:
                return NumberValue(0, "int");
            default:
                return input.values.front();
        }
    }

    // What the page does not look at is no input, and left alone.
    void Set(Input::Kind kind, const std::string& key, const Value& value) {
        if (const Input* input = inputs_.Find(kind, key)) {
            tv_.values[inputs_.IndexOf(*input)] = value;
        }
    }

    // Reading what is of another type fails.
    void SetStored(Input::Kind kind, const std::string& key, const Value& value) {
        const Input* input = inputs_.Find(kind, key);
        if (input == nullptr || value.storedType == input->type) {
            Set(kind, key, value);
            return;
        }
        Value other = kind == Input::Kind::kFeature ? MissingValue(platform::NO_SUCH_FEATURE)
                                                    : MissingValue();
        other.storedType = value.storedType;
        other.words = "of type " + value.storedType;
        Set(kind, key, other);
    }

    void SetCall(const char* function, const Value& value) {
        Set(Input::Kind::kCall, function, value);
    }

    void SetCalls() {
        SetCall(keys::LOGIN, NumberValue(tv_.model.signedIn ? 1 : 0, "int"));
        SetCall("sso_get_account_ui_application_package_id",
                tv_.model.accountUi.empty() ? MissingValue() : TextValue(tv_.model.accountUi));
        SetCall("connection_profile_check_default_gateway",
                NumberValue(tv_.IsOnline() ? 1 : 0, "bool"));
        // The voices of the engine that is installed on a machine are not known here: where the
        // model names none, the first value of the inputs stands for them.
        if (tv_.model.voices) {
            std::string list;
            for (const vtv::Voice& voice : *tv_.model.voices) {
                list += (list.empty() ? "" : ",") + voice.language;
            }
            SetCall("tts_foreach_supported_voices", TextValue(list));
        }
        const vtv::Package* engine = vtv::FindPackage(tv_.model, vtv::kNeuralEngine);
        SetCall("pkgmgrinfo_appinfo_get_appinfo",
                engine != nullptr ? NumberValue(0, "int") : MissingValue());
        SetCall("pkgmgrinfo_appinfo_get_metadata_value",
                engine != nullptr ? LanguagesOf(*engine) : MissingValue());
    }

    static Value LanguagesOf(const vtv::Package& engine) {
        const auto item = engine.metadata.find(vtv::kEngineLanguages);
        if (item == engine.metadata.end()) {
            return MissingValue();
        }
        if (item->second) {
            return TextValue(*item->second);
        }
        Value none;
        none.kind = Value::Kind::kNull;
        none.words = "null";
        return none;
    }

    const Inputs& inputs_;
    NewTv tv_;
};

}  // namespace

std::vector<NewTv> LoadNewTvs(const Inputs& inputs, const std::vector<std::string>& namesOrFiles) {
    std::vector<std::string> files;
    for (const std::string& name : namesOrFiles) {
        files.push_back(vtv::FindModel(name));
    }
    if (namesOrFiles.empty()) {
        files = vtv::ModelFiles();
    }
    if (files.empty()) {
        throw vtv::Error(vtv::ErrorKind::kPlatform, "no TV models in " + vtv::DataDir() + "/tvs");
    }
    std::vector<NewTv> tvs;
    for (const std::string& file : files) {
        tvs.push_back(Unpacking(inputs, file).Unpack());
    }
    return tvs;
}

}  // namespace explorer
