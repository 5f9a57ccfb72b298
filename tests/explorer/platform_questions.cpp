#include "platform_questions.h"

#include <unistd.h>

#include <chrono>
#include <climits>
#include <cstdlib>
#include <set>
#include <thread>

#include "platform/account.h"
#include "platform/always_on_voice.h"
#include "platform/applications.h"
#include "platform/features.h"
#include "platform/log.h"
#include "platform/network.h"
#include "platform/packages.h"
#include "platform/settings_store.h"
#include "platform/speech.h"
#include "virtual-tv/model/applications.h"
#include "virtual-tv/model/keys.h"

using explorer::Input;

namespace {

constexpr int UNWRITTEN = 77;

const std::vector<std::optional<vtv::Value>> VALUES = {
    std::nullopt,     true, false, 0, 1, -1, INT_MAX, std::string(), std::string("text"),
    std::string("{}")};

// Nothing, and one value of each type.
const std::vector<std::optional<vtv::Value>> STORED = {std::nullopt, true, 3, std::string("text")};

const std::vector<std::optional<vtv::Value>> NOTHING_STORED = {std::nullopt};

std::string Show(const std::optional<vtv::Value>& value) {
    return value ? std::string(vtv::TypeName(*value)) + " " + vtv::ToText(*value) : "none";
}

std::string Taken(char* text) {
    const std::string copy = text != nullptr ? '"' + std::string(text) + '"' : "null";
    std::free(text);
    return copy;
}

class Asking {
  public:
    Asking(TestTv& tv, const explorer::Inputs& inputs, const vtv::Model& model)
        : tv_(tv), inputs_(inputs), model_(model) {}

    std::vector<std::string> Calls() {
        for (const Input& input : inputs_.inputs) {
            if (input.kind == Input::Kind::kSetting) {
                Settings(input.key);
            } else if (input.kind == Input::Kind::kFeature) {
                Features(input.key, input.type);
            } else if (input.kind == Input::Kind::kFile) {
                Files(input.key);
            }
        }
        Policy();
        Account();
        Modes();
        Packages();
        Speech();
        Popup();
        tv_.Store(vtv::kHintKey, std::nullopt);
        tv_.Do([&] {
            OddQuestions(vtv::kHintKey, [&](const auto& call, const auto& asked,
                                            const auto& answer) {
                Line(call, asked, answer);
            }).AskAll();
        });
        return std::move(lines_);
    }

    std::vector<std::string> Applications() {
        std::vector<std::string> currents = {"", "org.example.other"};
        std::vector<std::string> others = {model_.accountUi, "org.example.none"};
        for (const vtv::KnownAssistant& known : vtv::KnownAssistants()) {
            currents.emplace_back(known.appId);
            others.emplace_back(known.appId);
        }
        for (const bool hasExtras : {false, true}) {
            for (const std::string& current : currents) {
                Run(vtv::kSetupWizard, hasExtras, current);
                Run(vtv::kOnboarding, hasExtras, current);
            }
            for (const std::string& appId : others) {
                if (!appId.empty()) {
                    Run(appId, hasExtras, appId);
                }
            }
        }
        return std::move(lines_);
    }

  private:
    void Line(const std::string& call, const std::string& asked, const std::string& answer) {
        lines_.push_back(call + " " + asked + ": " + answer);
    }

    void Gets(const std::string& key, const std::string& stored) {
        int number = UNWRITTEN;
        int result = vconf_get_int(key.c_str(), &number);
        Line("vconf_get_int", key + " " + stored,
             std::to_string(result) + ", " + std::to_string(number));
        number = UNWRITTEN;
        result = vconf_get_bool(key.c_str(), &number);
        Line("vconf_get_bool", key + " " + stored,
             std::to_string(result) + ", " + std::to_string(number));
        Line("vconf_get_str", key + " " + stored, Taken(vconf_get_str(key.c_str())));
    }

    void Settings(const std::string& key) {
        for (const auto& value : VALUES) {
            tv_.Store(key, value);
            tv_.Do([&] { Gets(key, Show(value)); });
        }
        // A write takes the TV a moment: what was stored before matters once for each call.
        std::set<std::string> calls;
        const auto set = [&](const char* call, const std::string& what, const auto& write) {
            for (const auto& before : calls.insert(call).second ? STORED : NOTHING_STORED) {
                tv_.Store(key, before);
                tv_.Do([&] {
                    Line(call, key + " " + Show(before) + " to " + what, std::to_string(write()));
                    Gets(key, "just written");
                });
                Line(call, key + " to " + what + " leaves", tv_.Stored(key));
            }
        };
        for (const int value : {0, 1, 2, -1}) {
            const std::string what = std::to_string(value);
            set("vconf_set_int", what, [&] { return vconf_set_int(key.c_str(), value); });
            set("vconf_set_bool", what, [&] { return vconf_set_bool(key.c_str(), value); });
        }
        for (const char* value : {"", "text", "{\"a\":1}"}) {
            set("vconf_set_str", value, [&] { return vconf_set_str(key.c_str(), value); });
        }
        tv_.Store(key, std::nullopt);
    }

    // A TV refuses a known feature of another type; what is left is the call for another type.
    void Features(const std::string& key, const std::string& type) {
        for (const auto& value : VALUES) {
            if (value && vtv::TypeName(*value) != type) {
                continue;
            }
            tv_.SetFeature(key, value);
            tv_.Do([&] {
                bool flag = true;
                int result = system_info_get_custom_bool(key.c_str(), &flag);
                Line("system_info_get_custom_bool", key + " " + Show(value),
                     std::to_string(result) + (flag ? ", true" : ", false"));
                int number = UNWRITTEN;
                result = system_info_get_custom_int(key.c_str(), &number);
                Line("system_info_get_custom_int", key + " " + Show(value),
                     std::to_string(result) + ", " + std::to_string(number));
                char* text = nullptr;
                result = system_info_get_custom_string(key.c_str(), &text);
                Line("system_info_get_custom_string", key + " " + Show(value),
                     std::to_string(result) + ", " + Taken(text));
            });
        }
    }

    void Files(const std::string& path) {
        const std::string relative = path.substr(sizeof vtv::kOwnerFolder - 1);
        for (const bool isThere : {false, true}) {
            tv_.SetOwnerFile(relative, isThere);
            tv_.Do([&] {
                Line("access", path + (isThere ? " (there)" : " (gone)"),
                     std::to_string(access(path.c_str(), F_OK)));
            });
        }
        tv_.Do([&] { Line("access", "/proc", std::to_string(access("/proc", F_OK))); });
        tv_.Do([&] { Line("access", "/none", std::to_string(access("/none", F_OK))); });
    }

    static void Ignore(keynode*, void*) {}

    void Policy() {
        tv_.Do([&] {
            Line("vconf_get_str", vtv::kPolicyKey, Taken(vconf_get_str(vtv::kPolicyKey)));
            for (const char* time : {"once", "twice"}) {
                Line("vconf_notify_key_changed", time,
                     std::to_string(vconf_notify_key_changed(vtv::kPolicyKey, Ignore, nullptr)));
            }
            for (const char* time : {"once", "twice"}) {
                Line("vconf_ignore_key_changed", time,
                     std::to_string(vconf_ignore_key_changed(vtv::kPolicyKey, Ignore)));
            }
        });
    }

    void Account() {
        for (const bool yes : {false, true}) {
            tv_.SetSignedIn(yes);
            tv_.Do([&] {
                int state = UNWRITTEN;
                const int result = sso_get_login_state(&state);
                Line("sso_get_login_state", "",
                     std::to_string(result) + ", " + std::to_string(state));
            });
            for (const char* item : vtv::kConsents) {
                tv_.SetConsent(item, yes);
                tv_.Do([&] {
                    Line("GetDisclaimerItemAgreement", item,
                         std::to_string(GetDisclaimerItemAgreement(item)));
                });
            }
        }
        tv_.Do([&] {
            char* id = nullptr;
            const int result = sso_get_account_ui_application_package_id(&id);
            Line("sso_get_account_ui_application_package_id", "",
                 std::to_string(result) + ", " + Taken(id));
            bool connected = true;
            const int network = connection_profile_check_default_gateway(&connected);
            Line("connection_profile_check_default_gateway", "",
                 std::to_string(network) + (connected ? ", true" : ", false"));
            const bool isLogged = __dlog_print(0, 4, "SI-MENU", "%s", "hello") >= 0;
            Line("__dlog_print", "", isLogged ? "taken" : "refused");
            Line("avoc_set_sound_feedback", "3 1", std::to_string(avoc_set_sound_feedback(3, 1)));
        });
    }

    void Modes() {
        for (const int mode : {1, 2, 0}) {
            for (const char* application : {"a.one", "a.two"}) {
                tv_.Do([&] {
                    Line("AOVSystemDataSetAOVMode", application,
                         std::to_string(AOVSystemDataSetAOVMode(application, mode)));
                });
                for (const char* current : {"a.one", "a.two", "a.three"}) {
                    tv_.Store(vtv::kCurrentAssistantKey, std::string(current));
                    tv_.Do([&] {
                        Line("AOVSystemDataGetAOVMode", current,
                             std::to_string(AOVSystemDataGetAOVMode()));
                    });
                }
            }
        }
    }

    void Packages() {
        tv_.Do([&] {
            pkgmgrinfo_appinfo_h info = nullptr;
            const int found = pkgmgrinfo_appinfo_get_appinfo(vtv::kNeuralEngine, &info);
            Line("pkgmgrinfo_appinfo_get_appinfo", "", std::to_string(found));
            if (found != 0) {
                return;
            }
            char* languages = nullptr;
            const int result =
                pkgmgrinfo_appinfo_get_metadata_value(info, vtv::kEngineLanguages, &languages);
            Line("pkgmgrinfo_appinfo_get_metadata_value", "",
                 std::to_string(result) + ", " + (languages != nullptr ? languages : "null"));
            Line("pkgmgrinfo_appinfo_destroy_appinfo", "",
                 std::to_string(pkgmgrinfo_appinfo_destroy_appinfo(info)));
        });
    }

    static bool Collect(tts_h, const char* language, int, void* list) {
        *static_cast<std::string*>(list) += std::string(language) + " ";
        return true;
    }

    void Speech() {
        tv_.Do([&] {
            tts_h tts = nullptr;
            Line("tts_create", "", std::to_string(tts_create(&tts)));
            std::string list;
            const int result = tts_foreach_supported_voices(tts, Collect, &list);
            if (model_.voices) {  // otherwise those of the engine on this machine
                Line("tts_foreach_supported_voices", "", std::to_string(result) + ", " + list);
            }
            Line("tts_destroy", "", std::to_string(tts_destroy(tts)));
        });
    }

    void Popup() {
        tv_.Do([&] {
            app_control_h control = nullptr;
            Line("app_control_create", "", std::to_string(app_control_create(&control)));
            Line("app_control_set_operation", "",
                 std::to_string(app_control_set_operation(control, "show")));
            Line("app_control_set_app_id", "",
                 std::to_string(app_control_set_app_id(control, vtv::kNotification)));
            Line("app_control_add_extra_data", "",
                 std::to_string(app_control_add_extra_data(control, "timeout", "1")));
            Line("app_control_send_launch_request", "",
                 std::to_string(app_control_send_launch_request(control, nullptr, nullptr)));
            Line("app_control_destroy", "", std::to_string(app_control_destroy(control)));
        });
    }

    std::string State() {
        std::string state;
        for (const Input& input : inputs_.inputs) {
            const bool isShown = input.kind == Input::Kind::kSetting &&
                                 (input.key == vtv::kCurrentAssistantKey ||
                                  input.key == vtv::kFirstTimeKey || input.key == vtv::kTencentKey);
            state += isShown ? input.key + "=" + tv_.Stored(input.key) + " " : "";
            if (input.kind == Input::Kind::kFile) {
                tv_.Do([&] { state += access(input.key.c_str(), F_OK) == 0 ? "file " : "- "; });
            }
        }
        tv_.Do([&] {
            int login = UNWRITTEN;
            sso_get_login_state(&login);
            state += "login " + std::to_string(login);
            for (const char* item : vtv::kConsents) {
                state += std::string(" ") + item + std::to_string(GetDisclaimerItemAgreement(item));
            }
        });
        return state;
    }

    // Nothing is agreed to, nobody is signed in, nothing is set up.
    void BeginAgain(const std::string& current) {
        for (const char* item : vtv::kConsents) {
            tv_.SetConsent(item, false);
        }
        tv_.SetSignedIn(false);
        for (const vtv::KnownAssistant& known : vtv::KnownAssistants()) {
            if (known.marker != nullptr) {
                tv_.SetOwnerFile(known.marker, false);
            }
        }
        tv_.Store(vtv::kFirstTimeKey, true);
        tv_.Store(vtv::kTencentKey, std::string("{\"volume\":3}"));
        tv_.Store(vtv::kCurrentAssistantKey, current);
    }

    void Run(const std::string& appId, bool hasExtras, const std::string& current) {
        const std::string what =
            appId + (hasExtras ? " with extras" : "") + ", current \"" + current + "\"";
        BeginAgain(current);
        tv_.Do([&] {
            bundle* request = bundle_create();
            if (hasExtras) {
                Line("bundle_add_str", "", std::to_string(bundle_add_str(request, "type", "X")));
            }
            const int result = aul_launch_app(appId.c_str(), request);
            // That it is not installed is not among what the explorer asks about.
            if (vtv::IsInstalled(model_, appId)) {
                Line("aul_launch_app", what, std::to_string(result));
            }
            Line("bundle_create", "", request != nullptr ? "one" : "none");
            Line("bundle_free", "", std::to_string(bundle_free(request)));
        });
        if (model_.applications == vtv::ApplicationMode::kAuto) {
            WaitForEnd(appId);
        }
        const bool runs = tv_.IsRunning(appId);
        Line("aul_launch_app", what, runs ? "it runs" : "it does not run");
        if (appId == current && runs) {
            End(appId);
            tv_.Do([&] { aul_launch_app(appId.c_str(), nullptr); });
        }
        if (tv_.IsRunning(appId)) {
            Line("aul_launch_app", what, tv_.Finish(appId) ? "it is done" : "it cannot");
        }
        Line("aul_launch_app", what, State());
    }

    void End(const std::string& appId) {
        for (const char* time : {"once", "twice"}) {
            tv_.Do([&] {
                app_context_h context = nullptr;
                const int found = app_manager_get_app_context(appId.c_str(), &context);
                Line("app_manager_get_app_context", appId + " " + time, std::to_string(found));
                if (found == 0) {
                    Line("app_manager_terminate_app", appId,
                         std::to_string(app_manager_terminate_app(context)));
                }
            });
            WaitForEnd(appId);
        }
    }

    // A process takes a moment to end.
    void WaitForEnd(const std::string& appId) {
        for (int i = 0; i < 1000 && tv_.IsRunning(appId); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }

    TestTv& tv_;
    const explorer::Inputs& inputs_;
    const vtv::Model& model_;
    std::vector<std::string> lines_;
};

}  // namespace

std::vector<std::string> AskEveryCall(TestTv& tv, const explorer::Inputs& inputs,
                                      const vtv::Model& model) {
    return Asking(tv, inputs, model).Calls();
}

std::vector<std::string> RunEveryApplication(TestTv& tv, const explorer::Inputs& inputs,
                                             const vtv::Model& model) {
    return Asking(tv, inputs, model).Applications();
}
