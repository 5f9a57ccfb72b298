#include "silent_platform.h"

#include <libintl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <variant>

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
#include "virtual-tv/model/keys.h"

namespace bench {

namespace {

using Answer = std::variant<int, std::string>;

const Step* next = nullptr;  // null while a tape is recorded
Tape* recorded = nullptr;
std::map<std::string, Answer> answers;
vconf_callback_fn policyWatch = nullptr;
char traceBuffer[65536];

const std::map<std::string, Answer> kTv = {
    {vtv::kCountryKey, "GB"},
    {vtv::kLanguageKey, "en_GB"},
    {vtv::kWizardModeKey, ""},
    {vtv::kBlockKey, 0},
    {vtv::kMicrophoneKey, 1},
    {vtv::kFirstTimeKey, 0},
    {vtv::kLegacyVoiceKey, 0},
    {vtv::kPassThroughKey, 1},
    {vtv::kPassThroughConnectedKey, 0},
    {vtv::kPassThroughMicrophoneKey, 0},
    {vtv::kPassThroughStateKey, R"({"state":"active","text":"Pass-through"})"},
    {vtv::kWakeUpKey, R"({"app.assistant-1":"on","app.assistant-2":"off","app.assistant-3":"on"})"},
    {vtv::kHintKey, R"({"app.assistant-1":"on","app.assistant-2":"null"})"},
    {vtv::kTencentKey, R"({"onboarding_completed":true})"},
    {vtv::kVoiceFeature, 1},
    {vtv::kOrvikFeature, 1},
    {vtv::kMicrophoneFeature, 1},
    {vtv::kFarFieldFeature, 1},
    {vtv::kPassThroughFeature, 1},
    {vtv::kChinaFeature, 0},
    {vtv::kProductTypeFeature, 0},
    {vtv::kModularFeature, 0},
    {vtv::kProjectorFeature, 0},
    {vtv::kMonitorFeature, 0},
    {vtv::kNeuralSpeechFeature, 0},
};

int AnsweredNumber(const std::string& key, int otherwise) {
    const auto found = answers.find(key);
    const int* number = found != answers.end() ? std::get_if<int>(&found->second) : nullptr;
    return number != nullptr ? *number : otherwise;
}

// A new step of the tape that is recorded.
const Step& Take(const std::function<Step()>& made) {
    recorded->push_back(made());
    return recorded->back();
}

[[noreturn]] void FailAsOther(Call call) {
    std::fprintf(stderr, "The provider made another call (%d) than when the tape was recorded.\n",
                 static_cast<int>(call));
    std::_Exit(1);
}

}  // namespace

// Inline, so that a call that is answered from the tape costs a comparison.
#define TAKE(wanted, ...)                                                                \
    (next != nullptr ? (next->call == (wanted) ? *next++ : (FailAsOther(wanted), *next)) \
                     : Take([&]() -> Step { return __VA_ARGS__; }))

namespace {

Step NumberStep(Call call, const char* key, int otherwise) {
    return {call, AnsweredNumber(key, otherwise), true, "", key};
}

Step TextStep(Call call, const char* key) {
    const auto found = answers.find(key);
    const auto* text = found != answers.end() ? std::get_if<std::string>(&found->second) : nullptr;
    return {call, 0, text != nullptr, text != nullptr ? *text : "", key};
}

char* CopyOf(const Step& step) {
    if (!step.hasText) {
        return nullptr;
    }
    auto* copy = static_cast<char*>(std::malloc(step.text.size() + 1));
    std::memcpy(copy, step.text.c_str(), step.text.size() + 1);
    return copy;
}

}  // namespace

Tape Record(const SilentTv& tv, const std::function<void()>& ask) {
    answers = kTv;
    answers[vtv::kPolicyKey] = tv.policy;
    answers[vtv::kCurrentAssistantKey] = tv.currentAssistant;
    TIStorageManagerState::enabled = tv.tracing;
    Tape tape;
    recorded = &tape;
    next = nullptr;
    ask();
    recorded = nullptr;
    return tape;
}

void Rewind(const Tape& tape) {
    next = tape.data();
}

void SetTracing(bool on) {
    TIStorageManagerState::enabled = on;
}

void TellOfPolicy() {
    policyWatch(nullptr, nullptr);
}

}  // namespace bench

// ---------------------------------------------------------------------------------------------
// The calls
// ---------------------------------------------------------------------------------------------

using namespace bench;

std::atomic<bool> TIStorageManagerState::enabled = false;

extern "C" {

int vconf_get_int(const char* key, int* value) {
    *value = TAKE(Call::kGetInt, NumberStep(Call::kGetInt, key, 0)).number;
    return 0;
}
int vconf_get_bool(const char* key, int* value) {
    *value = TAKE(Call::kGetBool, NumberStep(Call::kGetBool, key, 0)).number;
    return 0;
}
char* vconf_get_str(const char* key) {
    return CopyOf(TAKE(Call::kGetString, TextStep(Call::kGetString, key)));
}
int vconf_set_int(const char* key, int value) {
    return TAKE(Call::kSetInt, {Call::kSetInt, value, false, "", key}).hasText;
}
int vconf_set_bool(const char* key, int value) {
    return TAKE(Call::kSetBool, {Call::kSetBool, value, false, "", key}).hasText;
}
int vconf_set_str(const char* key, const char* value) {
    return TAKE(Call::kSetString, {Call::kSetString, 0, false, value, key}).number;
}
int vconf_notify_key_changed(const char*, vconf_callback_fn callback, void*) {
    policyWatch = callback;
    return 0;
}
int vconf_ignore_key_changed(const char*, vconf_callback_fn) {
    return 0;
}
int system_info_get_custom_bool(const char* key, bool* value) {
    const int answer = TAKE(Call::kFeatureBool, NumberStep(Call::kFeatureBool, key, 0)).number;
    *value = answer != 0;
    return 0;
}
int system_info_get_custom_int(const char* key, int* value) {
    *value = TAKE(Call::kFeatureInt, NumberStep(Call::kFeatureInt, key, 0)).number;
    return 0;
}
int system_info_get_custom_string(const char* key, char** value) {
    *value = CopyOf(TAKE(Call::kFeatureString, TextStep(Call::kFeatureString, key)));
    return *value != nullptr ? 0 : -1;
}
int __dlog_print(int, int priority, const char*, const char* format, ...) {
    return TAKE(Call::kLog, {Call::kLog, priority, false, "", format}).hasText;
}
// The catalogue is no part of the provider, and finding a text in it none of what is measured.
char* dgettext(const char*, const char* id) noexcept {
    TAKE(Call::kText, {Call::kText, 0, false, "", id});
    return const_cast<char*>(id);
}
int access(const char* path, int) noexcept {
    return TAKE(Call::kFile, {Call::kFile, 0, false, "", path}).number;
}
int connection_profile_check_default_gateway(bool* connected) {
    const int answer = TAKE(Call::kOnline, {Call::kOnline, 1}).number;
    *connected = answer != 0;
    return 0;
}
int sso_get_login_state(int* state) {
    *state = TAKE(Call::kSignIn, {Call::kSignIn, 1}).number;
    return 0;
}
int sso_get_account_ui_application_package_id(char** id) {
    *id = CopyOf(TAKE(Call::kAccountApp, {Call::kAccountApp, 0, true, "app.account"}));
    return 0;
}
int GetDisclaimerItemAgreement(const char* item) {
    return TAKE(Call::kAgreed, {Call::kAgreed, 1, false, "", item}).number;
}
int AOVSystemDataGetAOVMode(void) {
    return TAKE(Call::kGetMode, {Call::kGetMode, 1}).number;
}
int AOVSystemDataSetAOVMode(const char* appId, int mode) {
    return TAKE(Call::kSetMode, {Call::kSetMode, mode, false, "", appId}).hasText;
}
int app_control_create(app_control_h* control) {
    *control = reinterpret_cast<app_control_h>(&next);
    return TAKE(Call::kMakeRequest, {Call::kMakeRequest}).number;
}
int app_control_set_operation(app_control_h, const char* operation) {
    return TAKE(Call::kFillRequest, {Call::kFillRequest, 0, false, "", operation}).number;
}
int app_control_set_app_id(app_control_h, const char* appId) {
    return TAKE(Call::kFillRequest, {Call::kFillRequest, 0, false, "", appId}).number;
}
int app_control_add_extra_data(app_control_h, const char* key, const char* value) {
    return TAKE(Call::kFillRequest, {Call::kFillRequest, 0, false, value, key}).number;
}
int app_control_send_launch_request(app_control_h, app_control_reply_cb, void*) {
    return TAKE(Call::kSendRequest, {Call::kSendRequest}).number;
}
int app_control_destroy(app_control_h) {
    return TAKE(Call::kEndRequest, {Call::kEndRequest}).number;
}
bundle* bundle_create(void) {
    TAKE(Call::kMakeBundle, {Call::kMakeBundle});
    return reinterpret_cast<bundle*>(&next);
}
int bundle_add_str(bundle*, const char* key, const char* value) {
    return TAKE(Call::kFillBundle, {Call::kFillBundle, 0, false, value, key}).number;
}
int bundle_free(bundle*) {
    return TAKE(Call::kEndBundle, {Call::kEndBundle}).number;
}
int aul_launch_app(const char* appId, bundle*) {
    return TAKE(Call::kLaunch, {Call::kLaunch, 0, false, "", appId}).number;
}
int app_manager_get_app_context(const char* appId, app_context_h* context) {
    *context = reinterpret_cast<app_context_h>(&next);
    return TAKE(Call::kFindApp, {Call::kFindApp, 0, false, "", appId}).number;
}
int app_manager_terminate_app(app_context_h) {
    return TAKE(Call::kEndApp, {Call::kEndApp}).number;
}
int pkgmgrinfo_appinfo_get_appinfo(const char* appId, pkgmgrinfo_appinfo_h* handle) {
    *handle = &next;
    return TAKE(Call::kOpenPackage, {Call::kOpenPackage, 0, false, "", appId}).number;
}
int pkgmgrinfo_appinfo_get_metadata_value(pkgmgrinfo_appinfo_h, const char* key, char** value) {
    static char languages[] = "de_DE,en_GB,en_US";
    *value = languages;
    return TAKE(Call::kReadPackage, {Call::kReadPackage, 0, false, "", key}).number;
}
int pkgmgrinfo_appinfo_destroy_appinfo(pkgmgrinfo_appinfo_h) {
    return TAKE(Call::kClosePackage, {Call::kClosePackage}).number;
}
int tts_create(tts_h* tts) {
    *tts = reinterpret_cast<tts_h>(&next);
    return TAKE(Call::kMakeSpeech, {Call::kMakeSpeech}).number;
}
int tts_foreach_supported_voices(tts_h tts, tts_supported_voice_cb callback, void* data) {
    TAKE(Call::kListVoices, {Call::kListVoices});
    if (callback != nullptr) {
        callback(tts, "en_GB", 0, data);
    }
    return 0;
}
int tts_destroy(tts_h) {
    return TAKE(Call::kEndSpeech, {Call::kEndSpeech}).number;
}
int avoc_set_sound_feedback(int, int) {
    return TAKE(Call::kSound, {Call::kSound}).number;
}
int elm_init(int, char**) {
    return TAKE(Call::kToolkit, {Call::kToolkit, 1}).number;
}
void elm_config_access_set(unsigned char) {
    TAKE(Call::kToolkit, {Call::kToolkit, 1});
}
unsigned char elm_config_save(void) {
    return static_cast<unsigned char>(TAKE(Call::kToolkit, {Call::kToolkit, 1}).number);
}
void elm_config_item_flush(const char*) {
    TAKE(Call::kToolkit, {Call::kToolkit, 1});
}

}  // extern "C"

std::string ht::TSDemangler::Demangle(const char* typeName) {
    return typeName;
}
void ht::TCStorage::SaveLocation(TCStorage*, const TCCallLocation&) {}
ht::TCThread* ht::TCStorage::ThreadHandle(TCStorage*) {
    return nullptr;
}
void* ht::TCStorage::PrepareCallBuffer(TCStorage*, TCThread*, std::size_t size, int, int) {
    TAKE(Call::kTrace, {Call::kTrace, 0, false, "", "", size});
    return traceBuffer;
}
void ht::TCStorage::Commit(TCStorage*, TCThread*) {}
TIStorageManager& TIStorageManager::Instance() {
    static TIStorageManager manager;
    return manager;
}
int TIStorageManager::NewLocationId() {
    static int id = 0;
    return ++id;
}
ht::TCStorage* TIStorageManager::CurrentStorage() {
    return nullptr;
}
