// The calls of a tape made bare, without a provider.
#include <json/json.h>
#include <libintl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <memory>

#include "platform/account.h"
#include "platform/always_on_voice.h"
#include "platform/applications.h"
#include "platform/features.h"
#include "platform/log.h"
#include "platform/network.h"
#include "platform/packages.h"
#include "platform/settings_store.h"
#include "platform/speech.h"
#include "platform/toolkit.h"
#include "platform/trace_storage.h"
#include "silent_platform.h"

namespace bench {

namespace {

// As the provider reads and writes them: the classes are a part of what its settings hold.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

void Parse(const std::string& text, Json::Value& root) {
    if (text.front() == '[') {
        const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
        std::string errors;
        reader->parse(text.data(), text.data() + text.size(), &root, &errors);
    } else {
        Json::Reader().parse(text, root, true);
    }
}

std::string Written(const Json::Value& root) {
    return Json::StyledWriter().write(root);
}

#pragma GCC diagnostic pop

bool IsJson(const std::string& text) {
    return !text.empty() && (text.front() == '{' || text.front() == '[');
}

void MakeSettingsCall(const Step& step, Json::Value& lastRead) {
    int number = 0;
    switch (step.call) {
        case Call::kGetInt:
            vconf_get_int(step.key.c_str(), &number);
            break;
        case Call::kGetBool:
            vconf_get_bool(step.key.c_str(), &number);
            break;
        case Call::kGetString: {
            char* const text = vconf_get_str(step.key.c_str());
            if (IsJson(step.text)) {
                Json::Value root;
                Parse(text, root);
                lastRead.swap(root);
            }
            std::free(text);
            break;
        }
        case Call::kSetInt:
            vconf_set_int(step.key.c_str(), step.number);
            break;
        case Call::kSetBool:
            vconf_set_bool(step.key.c_str(), step.number);
            break;
        default:
            if (IsJson(step.text)) {
                vconf_set_str(step.key.c_str(), Written(lastRead).c_str());
            } else {
                vconf_set_str(step.key.c_str(), step.text.c_str());
            }
    }
}

void MakeFeatureCall(const Step& step) {
    bool isSo = false;
    int number = 0;
    char* text = nullptr;
    switch (step.call) {
        case Call::kFeatureBool:
            system_info_get_custom_bool(step.key.c_str(), &isSo);
            break;
        case Call::kFeatureInt:
            system_info_get_custom_int(step.key.c_str(), &number);
            break;
        default:
            system_info_get_custom_string(step.key.c_str(), &text);
            std::free(text);
    }
}

void MakeStateCall(const Step& step) {
    bool isSo = false;
    int number = 0;
    char* text = nullptr;
    app_context_h context = nullptr;
    switch (step.call) {
        case Call::kOnline:
            connection_profile_check_default_gateway(&isSo);
            break;
        case Call::kSignIn:
            sso_get_login_state(&number);
            break;
        case Call::kAccountApp:
            sso_get_account_ui_application_package_id(&text);
            std::free(text);
            break;
        case Call::kAgreed:
            GetDisclaimerItemAgreement(step.key.c_str());
            break;
        case Call::kGetMode:
            AOVSystemDataGetAOVMode();
            break;
        case Call::kSetMode:
            AOVSystemDataSetAOVMode(step.key.c_str(), step.number);
            break;
        case Call::kFindApp:
            app_manager_get_app_context(step.key.c_str(), &context);
            break;
        default:
            app_manager_terminate_app(context);
    }
}

void MakeRequestCall(const Step& step) {
    app_control_h control = nullptr;
    switch (step.call) {
        case Call::kMakeRequest:
            app_control_create(&control);
            break;
        case Call::kFillRequest:
            app_control_add_extra_data(control, step.key.c_str(), step.text.c_str());
            break;
        case Call::kSendRequest:
            app_control_send_launch_request(control, nullptr, nullptr);
            break;
        case Call::kEndRequest:
            app_control_destroy(control);
            break;
        case Call::kMakeBundle:
            bundle_create();
            break;
        case Call::kFillBundle:
            bundle_add_str(nullptr, step.key.c_str(), step.text.c_str());
            break;
        case Call::kLaunch:
            aul_launch_app(step.key.c_str(), nullptr);
            break;
        default:
            bundle_free(nullptr);
    }
}

void MakeSpeechCall(const Step& step) {
    pkgmgrinfo_appinfo_h package = nullptr;
    tts_h tts = nullptr;
    char* text = nullptr;
    switch (step.call) {
        case Call::kOpenPackage:
            pkgmgrinfo_appinfo_get_appinfo(step.key.c_str(), &package);
            break;
        case Call::kReadPackage:
            pkgmgrinfo_appinfo_get_metadata_value(package, step.key.c_str(), &text);
            break;
        case Call::kClosePackage:
            pkgmgrinfo_appinfo_destroy_appinfo(package);
            break;
        case Call::kMakeSpeech:
            tts_create(&tts);
            break;
        case Call::kListVoices:
            tts_foreach_supported_voices(tts, nullptr, nullptr);
            break;
        case Call::kEndSpeech:
            tts_destroy(tts);
            break;
        case Call::kSound:
            avoc_set_sound_feedback(1, 1);
            break;
        default:
            elm_init(1, nullptr);
    }
}

void SendEvent(const Step& step) {
    ht::TCStorage* storage = TIStorageManager::Instance().CurrentStorage();
    ht::TCThread* thread = ht::TCStorage::ThreadHandle(storage);
    std::memset(ht::TCStorage::PrepareCallBuffer(storage, thread, step.size, 1, 1), 0, step.size);
    ht::TCStorage::Commit(storage, thread);
}

}  // namespace

void MakeBareCalls(const Tape& tape) {
    int (*const log)(int, int, const char*, const char*, ...) = __dlog_print;
    Json::Value lastRead;
    for (const Step& step : tape) {
        if (step.call <= Call::kSetString) {
            MakeSettingsCall(step, lastRead);
        } else if (step.call <= Call::kFeatureString) {
            MakeFeatureCall(step);
        } else if (step.call == Call::kLog) {
            log(0, step.number, "SI-MENU", step.key.c_str(), "file", "function", 1, "", "");
        } else if (step.call == Call::kText) {
            dgettext("si-ready", step.key.c_str());
        } else if (step.call == Call::kFile) {
            const volatile int found = access(step.key.c_str(), F_OK);
            static_cast<void>(found);
        } else if (step.call <= Call::kSetMode || step.call == Call::kFindApp ||
                   step.call == Call::kEndApp) {
            MakeStateCall(step);
        } else if (step.call <= Call::kEndBundle) {
            MakeRequestCall(step);
        } else if (step.call <= Call::kToolkit) {
            MakeSpeechCall(step);
        } else {
            SendEvent(step);
        }
    }
}

}  // namespace bench
