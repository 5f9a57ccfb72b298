#include "general_voice_dataprovider.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "AssistantType.h"
#include "Dispatch.h"
#include "Guard.h"
#include "Keys.h"
#include "Log.h"
#include "MVAList.h"
#include "PlatformString.h"
#include "SIMenuUtil.h"
#include "Texts.h"
#include "platform/account.h"
#include "platform/always_on_voice.h"
#include "platform/applications.h"
#include "trace/Trace.h"

namespace {

constexpr char ORVIK_NAME[] = "DREAM_ORV_TMBODY_ORVIK";

// ---------------------------------------------------------------------------------------------
// What crosses to the host: C allocations and optional out-pointers
// ---------------------------------------------------------------------------------------------

// A null out-pointer is not written.
template <typename Value>
void Store(Value* out, Value value) {
    if (out != nullptr) {
        *out = value;
    }
}

// A heap copy for the host, which frees it. False, with a null text, without memory.
bool StoreCopy(char** out, const char* text) {
    if (out == nullptr) {
        return true;
    }
    *out = strdup(text);
    return *out != nullptr;
}

// Into a buffer of the host's, which must hold the longest translation.
void CopyToBuffer(char* buffer, const char* text) {
    if (buffer != nullptr) {
        std::memcpy(buffer, text, std::strlen(text) + 1);
    }
}

int free_list_items(ListItem** items, int count) {
    if (items == nullptr) {
        return 0;
    }
    for (int i = 0; i < count; ++i) {
        if (items[i] != nullptr) {
            std::free(items[i]->text);
            std::free(items[i]);
        }
    }
    std::free(items);
    return 0;
}

struct Choice {
    int value;
    std::string text;
};

// Null without memory.
ListItem* NewListItem(const Choice& choice) {
    auto* item = static_cast<ListItem*>(std::calloc(1, sizeof(ListItem)));
    if (item == nullptr) {
        return nullptr;
    }
    item->value = choice.value;
    item->text = strdup(choice.text.c_str());
    if (item->text == nullptr) {
        std::free(item);
        return nullptr;
    }
    return item;
}

// The list that free_list_items() frees; null, with a count of 0, without memory.
ListItem** ToHostList(const std::vector<Choice>& choices, int* count) {
    Store(count, 0);
    auto** items = static_cast<ListItem**>(std::calloc(choices.size(), sizeof(ListItem*)));
    if (items == nullptr) {
        return nullptr;
    }
    int size = 0;
    for (const Choice& choice : choices) {
        items[size] = NewListItem(choice);
        if (items[size] == nullptr) {
            free_list_items(items, size);
            return nullptr;
        }
        ++size;
    }
    Store(count, size);
    return items;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Hands-free wake-up
// ---------------------------------------------------------------------------------------------

namespace {

constexpr int ALWAYS_ON = 1;

bool IsWakeUpOn() {
    return CSIMenuUtil::getValueOfJsonVconf(setting::FARFIELD, CSIMenuUtil::GetCurrentVAAppID()) ==
           "on";
}

Choice WakeUpWithButtonChoice() {
    const char* text = Translate("TV_SID_VOICE_MIX_CCJUL_WAKE_UP_WITH_BUTTON");
    return {0, CSIMenuUtil::Replace(text, Translate("COM_ICON_VOICE"))};
}

}  // namespace

int checknode_int_voice_wake_up() {
    const int value = IsWakeUpOn() ? 1 : 0;
    LOG_ERROR("[general voice] Hands-free Wake-up value = %d", value);
    TRACE_EVENT_AT(658, "[general voice] Hands-free Wake-up value = %d", value);
    return value;
}

void setnode_int_voice_wake_up(int value) {
    const char* state = value == 1 ? "on" : "off";
    const std::string appId = CSIMenuUtil::GetCurrentVAAppID();
    CSIMenuUtil::setVAsValueOfJsonVconf(setting::FARFIELD, appId, state);
    if (MVAList::IsCurrentVAOrvik() && value != 1) {
        LOG_ERROR("set AOV off.");
        AOVSystemDataSetAOVMode(appId.c_str(), 0);
    }
    LOG_ERROR("Set Hands-free Wake-up value [%d] && Wakeup[%s]", value, state);
    TRACE_EVENT_AT(676, "Set Hands-free Wake-up value [%d] && Wakeup[%s]", value, state);
}

int checknode_int_voice_always_wake_up() {
    const int value = IsWakeUpOn() && AOVSystemDataGetAOVMode() == ALWAYS_ON ? 1 : 0;
    LOG_ERROR("[general voice] voice always wakeup value = %d", value);
    TRACE_EVENT_AT(689, "[general voice] voice always wakeup value = %d", value);
    return value;
}

void setnode_int_voice_always_wake_up(int value) {
    const bool mode = value == 1;
    AOVSystemDataSetAOVMode(CSIMenuUtil::GetCurrentVAAppID().c_str(), mode ? 1 : 0);
    LOG_ERROR("Set voice always wakeup value AOV[%d]", mode);
    TRACE_EVENT_AT(700, "Set voice always wakeup value AOV[%d]", mode);
}

int checknode_int_voice_screen_on_wake_up() {
    const int value = IsWakeUpOn() && AOVSystemDataGetAOVMode() != ALWAYS_ON ? 1 : 0;
    LOG_ERROR("[general voice] voice screen on value = %d", value);
    TRACE_EVENT_AT(713, "[general voice] voice screen on value = %d", value);
    return value;
}

// Exactly 1 chooses "only while the screen is on"; every other value chooses "always".
void setnode_int_voice_screen_on_wake_up(int value) {
    const bool mode = value != 1;
    AOVSystemDataSetAOVMode(CSIMenuUtil::GetCurrentVAAppID().c_str(), mode ? 1 : 0);
    LOG_ERROR("Set voice screen on value AOV[%d]", mode);
    TRACE_EVENT_AT(724, "Set voice screen on value AOV[%d]", mode);
}

ListItem** get_list_items_voice_wake_up(const char*, int* count) {
    const int announced = MVAList::IsCurrentVAOrvik() ? 3 : 2;
    LOG_ERROR("items count:%d", announced);
    Store(count, announced);

    std::vector<Choice> choices;
    if (MVAList::IsCurrentVAOrvik()) {
        choices.push_back({2, Translate("TV_SID_ORVIK_CCSEP_HANS_FREE_WAKE_UP_AYNTIME")});
    }
    choices.push_back({1, Translate("TV_SID_ORVIK_CCSEP_HANDS_FREE_WAKE_UIP_SCREEN_ON")});
    choices.push_back(WakeUpWithButtonChoice());
    return ToHostList(choices, count);
}

// ---------------------------------------------------------------------------------------------
// Situational hint
// ---------------------------------------------------------------------------------------------

namespace {

constexpr int HINT_NOT_SUPPORTED = -1;

struct HintState {
    const char* entry;
    int value;
};

constexpr HintState HINT_STATES[] = {
    {"on_user", 1},
    {"on_default", 1},
    {"off_user", 0},
    {"off_default", 0},
    {"null", HINT_NOT_SUPPORTED},
};

// An unknown entry, also an empty one, is off.
int HintValue(const std::string& entry) {
    for (const HintState& state : HINT_STATES) {
        if (entry == state.entry) {
            return state.value;
        }
    }
    return 0;
}

}  // namespace

int checknode_int_voice_situational_hint() {
    const std::string entry =
        CSIMenuUtil::getValueOfJsonVconf(setting::HINT, CSIMenuUtil::GetCurrentVAAppID());
    const int value = HintValue(entry);
    LOG_ERROR("[general voice] %s value = %d because of %s", setting::HINT, value, entry.c_str());
    TRACE_EVENT_AT(749, "[general voice] %s value = %d because of %s", setting::HINT, value,
                   entry.c_str());
    return value;
}

// Writes also the value that is in force already: a default then becomes the viewer's choice.
void setnode_int_voice_situational_hint(int value) {
    const int originalValue = checknode_int_voice_situational_hint();
    const std::string appId = CSIMenuUtil::GetCurrentVAAppID();
    if (originalValue == HINT_NOT_SUPPORTED) {
        LOG_ERROR("[general voice] Failed to set %s. Vconf Value is NULL(fuction not supported)",
                  setting::HINT);
        TRACE_EVENT_AT(
            765, "[general voice] Failed to set %s. Vconf Value is NULL(fuction not supported)",
            setting::HINT);
        return;
    }
    const char* entry = value == 1 ? "on_user" : "off_user";
    CSIMenuUtil::setVAsValueOfJsonVconf(setting::HINT, appId, entry);
    LOG_ERROR("nOriginValue = %d, changed value = %s", originalValue, entry);
    TRACE_EVENT_AT(780, "nOriginValue = %d, changed value = %s", originalValue, entry);
}

// ---------------------------------------------------------------------------------------------
// Onboarding
// ---------------------------------------------------------------------------------------------

namespace {

// An application with the one extra that makes it open its setup.
struct LaunchTarget {
    const char* appId;
    const char* key;
    const char* value;
};

constexpr LaunchTarget SETUP_WIZARD = {"org.nemra.wizard", "type", "PIVORA_SETUP"};
constexpr LaunchTarget GENERIC_ONBOARDING = {"org.nemra.voice-onboarding", "type",
                                             "ONBOARDING_SETUP"};
constexpr LaunchTarget ORVIK_APP = {"com.vantelo.tv.voice-instant-app", "show_onboarding",
                                    "ONBOARDING"};

// An assistant whose own application does its setup. Its records keep a function of their own.
struct OwnOnboarding {
    const char* function;
    const char* name;
    bool (*isSetUp)();
    LaunchTarget app;
};

constexpr OwnOnboarding GOOGLE = {"_LaunchGoogleOnboarding",
                                  "Google",
                                  CSIMenuUtil::checkSetUpComplete_Google,
                                  {"com.vantelo.tv.google-assistant", "Login", "1"}};
constexpr OwnOnboarding SALUTE = {"_LaunchSaluteOnboarding",
                                  "Salute",
                                  CSIMenuUtil::checkSetUpComplete_Salute,
                                  {"com.vantelo.tv.salute-assistant", "PAGETYPE", "ONBOARDING"}};
constexpr OwnOnboarding TENCENT = {
    "_LaunchTencentOnboarding",
    "Tencent",
    CSIMenuUtil::checkSetUpComplete_Tencent,
    {"com.vantelo.tv.tencent-voice-chrome", "show_onboarding", "ONBOARDING"}};

void Launch(const LaunchTarget& target) {
    CSIMenuUtil::LaunchApp(target.appId, target.key, target.value);
}

// An assistant's own application can do its setup only online and with the terms agreed.
bool CanUseOwnApp() {
    return CSIMenuUtil::IsNetworkConnected() && CSIMenuUtil::IsTncPPAgreed();
}

void _LaunchOrvikOnboarding() {
    if (!CSIMenuUtil::VconfGetBool(setting::FIRST_TIME)) {
        LOG_ERROR("[FATAL][Orvik]Already setup complete");
        return;
    }
    const bool useOwnApp = CanUseOwnApp() && (CSIMenuUtil::isChina() || CSIMenuUtil::IsSignedIn());
    Launch(useOwnApp ? ORVIK_APP : GENERIC_ONBOARDING);
}

void LaunchOwnOnboarding(const OwnOnboarding& assistant) {
    if (assistant.isSetUp()) {
        LOG_ERROR_FOR(assistant.function, "[FATAL][%s]Already setup complete", assistant.name);
        return;
    }
    Launch(CanUseOwnApp() ? assistant.app : GENERIC_ONBOARDING);
}

}  // namespace

void LaunchOnboarding(const char* reason) {
    LOG_ERROR("reason:%s", Printable(reason));
    switch (MVAList::GetCurrentVAType()) {
        case ASSISTANT_ALEXA:  // has no application of its own on the TV
            if (CSIMenuUtil::checkSetUpComplete_Alexa()) {
                LOG_ERROR("[FATAL][Alexa]Already setup complete");
                return;
            }
            return Launch(GENERIC_ONBOARDING);
        case ASSISTANT_ORVIK:
            return _LaunchOrvikOnboarding();
        case ASSISTANT_GVA:
            return LaunchOwnOnboarding(GOOGLE);
        case ASSISTANT_SBER:
            return LaunchOwnOnboarding(SALUTE);
        case ASSISTANT_TENCENT:
            return LaunchOwnOnboarding(TENCENT);
        case ASSISTANT_NONE:
        case ASSISTANT_SVA:  // has no onboarding
            break;
    }
    LOG_ERROR("[FATAL]Wrong VA type");
}

// ---------------------------------------------------------------------------------------------
// Assistant selection
// ---------------------------------------------------------------------------------------------

int checknode_int_voice_assistant() {
    for (const VAInfo& assistant : MVAList::GetVAList()) {
        if (CSIMenuUtil::GetCurrentVAAppID() == assistant.appId) {
            return assistant.order;
        }
    }
    return 0;
}

ListItem** get_list_items_voice_assistant(const char*, int* count) {
    const std::size_t size = MVAList::GetVAListSize();
    Store(count, static_cast<int>(size));
    if (size < 2) {
        LOG_ERROR("[FATAL]count:%zu", size);
        return nullptr;
    }

    // A policy that does not number its assistants 1..n still gives a list without gaps: of equal
    // numbers the first counts, because that is the assistant which the number chooses.
    std::map<int, std::string> labels;
    for (const VAInfo& assistant : MVAList::GetVAList()) {
        if (MVAList::GetVATypeByAppID(assistant.appId) == ASSISTANT_ORVIK) {
            LOG_ERROR("[Orvik]");
            labels.emplace(assistant.order, Translate(ORVIK_NAME));
        } else {
            LOG_ERROR("Other VA");
            labels.emplace(assistant.order, assistant.name);
        }
    }
    std::vector<Choice> choices;
    for (const auto& [order, label] : labels) {
        choices.push_back({order, label});
    }
    return ToHostList(choices, count);
}

void setnode_int_voice_assistant(int value) {
    const std::string previous = CSIMenuUtil::GetCurrentVAAppID();
    LOG_ERROR("strPreviousVAAppID:%s", previous.c_str());

    const std::vector<VAInfo> list = MVAList::GetVAList();
    const auto chosen = std::find_if(list.begin(), list.end(), [value](const VAInfo& assistant) {
        return assistant.order == value;
    });
    if (chosen == list.end()) {
        LOG_ERROR("[FATAL]No matched VA for order:%d", value);
        return;
    }
    CSIMenuUtil::SetVoiceAssistant(chosen->appId.c_str());

    const ASSISTANT_TYPE newType = MVAList::GetVATypeByAppID(chosen->appId);
    if (newType == ASSISTANT_NONE) {
        LOG_ERROR("[FATAL]No matched VA for order:%d", value);
        return;
    }
    if (MVAList::GetVATypeByAppID(previous) != ASSISTANT_ORVIK) {
        LOG_ERROR("Previous VA is NOT Orvik");
        app_context_h context = nullptr;
        const int found = app_manager_get_app_context(previous.c_str(), &context);
        if (found == 0) {
            const int terminated = app_manager_terminate_app(context);
            LOG_ERROR("[%d]terminate:%s", terminated, previous.c_str());
        } else {
            LOG_ERROR("[%d][FAIL]app_manager_get_app_context:%s", found, previous.c_str());
        }
    }
    if (!CSIMenuUtil::IsVASetupComplete(newType)) {
        LaunchOnboarding("setnode_int_voice_assistant");
        return;
    }
    if (newType != ASSISTANT_GVA) {
        showVAChangingNoticePopup();
    }
}

void showVAChangingNoticePopup() {
    if (checknode_int_voice_wake_up() == 0) {
        LOG_ERROR("wakeup state is not STATUS_ON");
        return;
    }
    std::string text = Translate("TV_SID_BJDEC_ASSISTANT_UR_VOICE_ASSI_CHANGED");
    text += " ";
    text += Translate("TV_SID_BJDEC_ASSISTANT_AFTER_CHANG_IT_TAKE_TIME_USE_VOICE");
    CSIMenuUtil::ShowPopup(text);
}

// ---------------------------------------------------------------------------------------------
// Registry: what each menu item has
// ---------------------------------------------------------------------------------------------

namespace {

constexpr char WAKE_UP_HELP[] = "TV_SID_SETTINGS_CDJAN_ENABLE_DISABLE_HANDS_FREE_WAKE_UP_FEATURE";
constexpr char TENCENT_TEXT[] = "TV_SID_CHI_VOICE_CBOCT_TENCENT_CLOUD_XIAOWEI_VOICE_SETTINGS";

// String ids. One that is absent is computed, see DisplayName and HelpText, or there is no text.
struct NodeTexts {
    const char* displayNameId = nullptr;
    const char* helpId = nullptr;
};

struct NodeValue {
    int (*read)() = nullptr;
    void (*write)(int value) = nullptr;
    ListItem** (*buildList)(const char* key, int* count) = nullptr;
};

struct MenuNode {
    std::string_view key;
    NodeTexts texts = {};
    NodeValue value = {};
};

// clang-format off
constexpr MenuNode MENU_NODES[] = {
    // key                    title                                      help text                                           reader, writer, choices
    {menu::VOICE,             {"TV_SID_SETTINGS_VOICE",                  "TV_SID_SETTINGS_SELELCT_VOICE_ASSISTANT"}},
    {menu::VOICE_ASSISTANT,   {"TV_SID_SETTINGS_VOICE_ASSITANT"},                                                            {checknode_int_voice_assistant,         setnode_int_voice_assistant,         get_list_items_voice_assistant}},
    {menu::WAKE_UP,           {"TV_SID_ORVIK_CDJAN_HANS_FREE_WAKE_UP",   WAKE_UP_HELP},                                      {checknode_int_voice_wake_up,           setnode_int_voice_wake_up}},
    {menu::ALWAYS_WAKE_UP,    {"COM_SID_ALWAYS_KR_ORVIK",                WAKE_UP_HELP},                                      {checknode_int_voice_always_wake_up,    setnode_int_voice_always_wake_up}},
    {menu::SCREEN_ON_WAKE_UP, {"TV_SID_ORVIK_CDJAN_ONLY_WHEN_SCREEN_ON", WAKE_UP_HELP},                                      {checknode_int_voice_screen_on_wake_up, setnode_int_voice_screen_on_wake_up}},
    {menu::SITUATIONAL_HINT,  {"TV_SID_SETTINGS_VOICE_HINT",             "TV_SID_SETTINGS_CONFIGURE_VOICE_HINTS_BASEDON"},   {checknode_int_voice_situational_hint,  setnode_int_voice_situational_hint}},
    {menu::SETTINGS_ORVIK},
    {menu::SETTINGS_ORVIK_CN, {"TV_SID_SETTINGS_ORVIK_VOICE_SETTINGS",   "TV_SID_SETTINGS_CONFIGURE_ORVIK_VOICE_SETTINGS"}},
    {menu::SETTINGS_TENCENT,  {TENCENT_TEXT,                             TENCENT_TEXT}},
    {menu::SETTINGS_ALEXA},
    {menu::SETTINGS_GOOGLE},
    {menu::SETTINGS_SALUTE},
    {menu::ONBOARDING,        {"TV_SID_SETTINGS_VOICE",                  "TV_SID_SETTINGS_SELELCT_VOICE_ASSISTANT"}},
};
// clang-format on

// ---------------------------------------------------------------------------------------------
// Values
// ---------------------------------------------------------------------------------------------

// A row without a reader is answered as if there were no such row.
int get_int(const char* key, int* value) try {
    const MenuNode* node = FindRow(MENU_NODES, key);
    if (node == nullptr || node->value.read == nullptr) {
        return 0;
    }
    const int current = node->value.read();
    Store(value, current);
    LOG_ERROR("key:%s, value:%d", key, current);
    return 0;
}
NEUTRAL_ON_EXCEPTION(0)

void StartSetupWizard() {
    Launch(SETUP_WIZARD);
}

// The name of the slot is what the onboarding's record has always given as its reason.
void StartOnboarding() {
    LaunchOnboarding("set_int");
}

void StartAccountSignIn() {
    char* id = nullptr;
    if (sso_get_account_ui_application_package_id(&id) != 0 || id == nullptr) {
        throw std::runtime_error("FAIL sso_get_account_ui_application_package_id");
    }
    const std::string appId = PlatformString(id).get();
    CSIMenuUtil::LaunchApp(appId.c_str());
}

struct PopupAction {
    const char* record;  // null: the action has its own
    void (*start)();
};

// The viewer pressed the action button of a disable popup. The host does not say of which item, so
// what starts depends on the current assistant, while get_disablepopup_info goes by the item. China
// is not asked here: where the popup offered Orvik's setup there, this may start the sign-in.
PopupAction CurrentPopupAction() {
    if (!CSIMenuUtil::IsTncPPAgreed()) {
        return {"PIVORA_SETUP Launching.", StartSetupWizard};
    }
    if (!MVAList::IsCurrentVAOrvik() || CSIMenuUtil::IsSignedIn() ||
        CSIMenuUtil::VconfGetBool(setting::FIRST_TIME)) {
        return {nullptr, StartOnboarding};
    }
    return {"Orvik SSO Launching", StartAccountSignIn};
}

int set_int(const char* key, int value) try {
    if (value == SI_ACTION_VALUE) {
        const PopupAction action = CurrentPopupAction();
        if (action.record != nullptr) {
            LOG_ERROR("%s", action.record);
        }
        action.start();
        return 0;
    }
    LOG_ERROR("key:%s, value:%d", Printable(key), value);
    const MenuNode* node = FindRow(MENU_NODES, key);
    if (node != nullptr && node->value.write != nullptr) {
        node->value.write(value);
    }
    return 0;
}
NEUTRAL_ON_EXCEPTION(0)

ListItem** get_list_items(const char* key, int* count) try {
    const MenuNode* node = FindRow(MENU_NODES, key);
    if (node == nullptr || node->value.buildList == nullptr) {
        LOG_ERROR("[FATAL]key:%s has no callback", Printable(key));
        return nullptr;
    }
    LOG_ERROR("[MATCHED]key:%s", key);
    return node->value.buildList(key, count);
}
NEUTRAL_ON_EXCEPTION(nullptr)

int list_item_text(const ListItem* item, char** text) {
    if (item != nullptr) {
        Store(text, item->text);
    }
    return 0;
}

int list_item_value(const ListItem* item, int* value) {
    if (item != nullptr) {
        Store(value, item->value);
    }
    return 0;
}

int list_item_kind(const ListItem*, int* kind) {
    Store(kind, SI_LIST_ITEM_INTEGER);
    return 0;
}

// ---------------------------------------------------------------------------------------------
// Titles and help texts
// ---------------------------------------------------------------------------------------------

// Items whose texts name an assistant of the policy.
struct AssistantItem {
    std::string_view key;
    ASSISTANT_TYPE type;
};

constexpr AssistantItem ASSISTANT_ITEMS[] = {
    {menu::SETTINGS_ALEXA, ASSISTANT_ALEXA},
    {menu::SETTINGS_GOOGLE, ASSISTANT_GVA},
    {menu::SETTINGS_SALUTE, ASSISTANT_SBER},
};

std::string TranslateWithName(const char* id, const std::string& name) {
    return CSIMenuUtil::Replace(Translate(id), name);
}

// An item has a title and a help text, or none.
using OptionalText = std::optional<std::string>;

OptionalText DisplayName(const char* key) {
    if (SameKey(key, menu::SETTINGS_ORVIK)) {
        return TranslateWithName("TV_SID_MIX_SETTINGS", Translate(ORVIK_NAME));
    }
    if (const AssistantItem* item = FindRow(ASSISTANT_ITEMS, key)) {
        return TranslateWithName("TV_SID_MIX_SETTINGS", MVAList::GetVANameByType(item->type));
    }
    const MenuNode* node = FindRow(MENU_NODES, key);
    if (node == nullptr || node->texts.displayNameId == nullptr) {
        return std::nullopt;
    }
    return Translate(node->texts.displayNameId);
}

std::string AssistantHelpText() {
    const bool isChina = CSIMenuUtil::isChina();
    std::string text = Translate("TV_SID_SETTINGS_SELELCT_VOICE_ASSISTANT");
    if (isChina) {
        text += "\n";
        text += Translate("TV_SID_CHIVOICE_CCAPR_USE_VOICE_ASSISTANT_SEARCH_MSG");
    }
    return text;
}

OptionalText HelpText(const char* key) {
    if (SameKey(key, menu::SETTINGS_ORVIK)) {
        return Translate("TV_SID_SETTINGS_CDJAN_CONFIGURE_ORVIK_SETTINGS");
    }
    if (const AssistantItem* item = FindRow(ASSISTANT_ITEMS, key)) {
        return TranslateWithName("TV_SID_SETTINGS_MIX_CONFIGURE_SETTINGS",
                                 MVAList::GetVANameByType(item->type));
    }
    if (SameKey(key, menu::VOICE_ASSISTANT)) {
        return AssistantHelpText();
    }
    const MenuNode* node = FindRow(MENU_NODES, key);
    if (node == nullptr || node->texts.helpId == nullptr) {
        return std::nullopt;
    }
    return Translate(node->texts.helpId);
}

// A slot that answers with a text of an item, and how its records name the two.
struct TextSlot {
    const char* function;
    const char* textName;
    OptionalText (*find)(const char* key);
};

int AnswerText(const TextSlot& slot, const char* key, char** text) {
    const OptionalText found = slot.find(key);
    if (!found || !StoreCopy(text, found->c_str())) {
        Store<char*>(text, nullptr);
        LOG_ERROR_FOR(slot.function, "[FATAL][%s]%s is NULL", Printable(key), slot.textName);
        return 0;
    }
    LOG_ERROR_FOR(slot.function, "key:%s, value:%s", key, found->c_str());
    return 0;
}

int get_display_name(const char* key, char** text) {
    return AnswerText({__func__, "display name", DisplayName}, key, text);
}

int get_help_text(const char* key, char** text) {
    return AnswerText({__func__, "help text", HelpText}, key, text);
}

// ---------------------------------------------------------------------------------------------
// Confirmation box before the assistant changes
// ---------------------------------------------------------------------------------------------

int get_messagebox_info(const char* key, char* pDisplayText, char* pFirstButtonText,
                        char* pSecondButtonText, int* nButtonCount) {
    if (SameKey(key, menu::VOICE_ASSISTANT)) {
        CopyToBuffer(pDisplayText, Translate("TV_SID_SETTINGS_WANT_TO_CHAGE_VOICE_ASSITANT"));
        CopyToBuffer(pFirstButtonText, Translate("COM_SID_OK"));
        CopyToBuffer(pSecondButtonText, Translate("COM_SID_CANCEL"));
        Store(nButtonCount, 2);
    }
    LOG_ERROR(
        "key:%s, pDisplayText:%s, pFirstButtonText:%s, pSecondButtonText:%s, *nButtonCount:%d",
        Printable(key), Printable(pDisplayText), Printable(pFirstButtonText),
        Printable(pSecondButtonText), nButtonCount != nullptr ? *nButtonCount : 0);
    return 0;
}

int get_messagebox_title(const char* key, char* title) {
    if (SameKey(key, menu::VOICE_ASSISTANT)) {
        CopyToBuffer(title, Translate("TV_SID_SETTINGS_CHANGE_VOICE_ASSIATANT"));
    }
    LOG_ERROR("key:%s, title:%s", Printable(key), Printable(title));
    return 0;
}

// ---------------------------------------------------------------------------------------------
// Dimmed items: why, and what can be done
// ---------------------------------------------------------------------------------------------

// Why hands-free wake-up is dimmed: what is logged, and what the viewer reads.
struct Reason {
    const char* record;
    const char* messageId;
    const char* adviceId = nullptr;  // a second sentence, which names Orvik
};

constexpr char MIC_OFF_MESSAGE[] = "TV_SID_SB_CBJUL_MIC_OFF_NOW_MIC_TRY";

constexpr Reason NOT_CONNECTED = {"PTT model, passthru is not connected.",
                                  "TV_SID_SBAR_PASS_CBNOV_UNABLE_CHANGE_SETTINGS_CHECK_POWER"};
constexpr Reason NOT_ENABLED = {"PTT model, passthru is not enabled.",
                                "TV_SID_SBAR_CBDEC_UNABLE_CAHNGE_SETTINGS_NOW",
                                "TV_SID_SBAR_MIX_CBDEC_CHECK_SETTING_TRY_AGAIN"};
constexpr Reason MIC_OFF = {"PTT model, passthru microphone off.", MIC_OFF_MESSAGE};
constexpr Reason FAR_FIELD_MIC_OFF = {
    "FF supported model, passthru connected and enabled, but microphone off.", MIC_OFF_MESSAGE};

// Orvik on a TV without far-field microphones: it hears only through a pass-through device.
const Reason* PushToTalkReason() {
    if (!CSIMenuUtil::VconfGetBool(setting::PASSTHRU_CONNECTED)) {
        return &NOT_CONNECTED;
    }
    if (!CSIMenuUtil::VconfGetBool(setting::PASSTHRU)) {
        return &NOT_ENABLED;
    }
    return CSIMenuUtil::VconfGetBool(setting::PASSTHRU_MIC) ? nullptr : &MIC_OFF;
}

const Reason* FarFieldReason() {
    const bool isMicOff = CSIMenuUtil::VconfGetBool(setting::PASSTHRU) &&
                          CSIMenuUtil::VconfGetBool(setting::PASSTHRU_CONNECTED) &&
                          !CSIMenuUtil::VconfGetBool(setting::PASSTHRU_MIC);
    return isMicOff ? &FAR_FIELD_MIC_OFF : nullptr;
}

// Null when nothing that is known dims it.
const Reason* WakeUpReason() {
    if (!MVAList::IsCurrentVAOrvik()) {
        return nullptr;
    }
    return CSIMenuUtil::IsFarFieldFMSSupported() ? FarFieldReason() : PushToTalkReason();
}

std::string TextOf(const Reason& reason) {
    std::string text = Translate(reason.messageId);
    if (reason.adviceId != nullptr) {
        text += " ";
        text += TranslateWithName(reason.adviceId, Translate(ORVIK_NAME));
    }
    return text;
}

int get_disable_text(const char* key, char** text, bool* flag) {
    LOG_ERROR("key : %s", Printable(key));
    const bool isEntry = SameKey(key, menu::VOICE) || SameKey(key, menu::ONBOARDING);
    if (isEntry && CSIMenuUtil::isBuiltInMicSupported() && !CSIMenuUtil::isBuiltInMicActivated()) {
        StoreCopy(text, Translate("TV_SID_RNS_CAOCT_MIC_OFF_TURN_ON_TRY_AGAIN"));
        Store(flag, true);
    }
    if (!MVAList::IsCurrentVASetupComplete()) {
        return 0;
    }
    if (!SameKey(key, menu::WAKE_UP)) {
        return 0;
    }
    if (const Reason* reason = WakeUpReason()) {
        LOG_ERROR("%s", reason->record);
        StoreCopy(text, TextOf(*reason).c_str());
    }
    Store(flag, true);
    return 0;
}

// The item's terms share the popup of the item itself.
bool HasOrvikPopup(const char* key) {
    return SameKey(key, menu::SETTINGS_ORVIK) ||
           SameKey(key, "menu/system/general-voice-voice-settings-orvik-terms");
}

// Any key that begins with the Tencent item's belongs to Tencent; all others are compared whole.
bool HasAssistantPopup(const char* key) {
    return SameKey(key, menu::SETTINGS_ALEXA) || SameKey(key, menu::SETTINGS_GOOGLE) ||
           StartsWith(key, menu::SETTINGS_TENCENT) || SameKey(key, menu::SETTINGS_ORVIK_CN) ||
           SameKey(key, menu::SETTINGS_SALUTE);
}

int get_disablepopup_info(const char* key, char* message, char* title, char* firstButton,
                          char* secondButton, int* buttonCount, char* actionValue) {
    LOG_ERROR("key : %s", Printable(key));
    const bool isOrvik = HasOrvikPopup(key);
    if (!isOrvik && !HasAssistantPopup(key)) {
        return 0;
    }
    if (!CSIMenuUtil::IsTncPPAgreed()) {
        CopyToBuffer(message,
                     Translate("TV_SID_ACCOUNT_CDMAR_USE_SMART_FEATURES_CHOOSING_SETTINGS"));
        CopyToBuffer(title, Translate("COM_SID_OOBE_CDMAR_SETUP_SMART_FEATURES"));
        CopyToBuffer(firstButton, Translate("COM_SID_OOBE_CDMAR_START_SETUP"));
        Store(buttonCount, 1);
    } else if (isOrvik && !CSIMenuUtil::IsSignedIn() && !CSIMenuUtil::isChina() &&
               !CSIMenuUtil::VconfGetBool(setting::FIRST_TIME)) {
        CopyToBuffer(message, Translate("COM_SID_SIGN_IN_VANTELO_ACCOUNT_SIGN_IN"));
        CopyToBuffer(title, Translate("COM_TV_SID_SIGN_IN"));
        CopyToBuffer(firstButton, Translate("COM_TV_SID_SIGN_IN"));
        CopyToBuffer(secondButton, Translate("COM_SID_CANCEL"));
        Store(buttonCount, 2);
    } else {
        CopyToBuffer(message, Translate("TV_SID_SETTINGS_USE_FFEATURE_NEED_SETUP_NOW"));
        CopyToBuffer(title, Translate("TV_SID_SETTINGS_SETUP_VOICE_ASSISTANT"));
        CopyToBuffer(firstButton, Translate("COM_SID_OK"));
        CopyToBuffer(secondButton, Translate("COM_SID_CANCEL"));
        Store(buttonCount, 2);
    }
    CopyToBuffer(actionValue, SI_ACTION_TEXT);
    return 0;
}

// ---------------------------------------------------------------------------------------------
// The provider describes itself
// ---------------------------------------------------------------------------------------------

struct Property {
    std::string_view key;
    const char* answer;
};

constexpr Property PROPERTIES[] = {
    {"provider/owner", "voice"},
    {"provider/main-component", "TP_VoiceInteraction"},
    {"provider/sub-component", "TP_VoiceSettings"},
};

int provider_property(const char* key, char** text) {
    const Property* property = FindRow(PROPERTIES, key);
    if (property == nullptr || text == nullptr) {
        return 0;
    }
    *text = static_cast<char*>(std::calloc(SI_PROPERTY_SIZE, 1));
    if (*text != nullptr) {
        CopyToBuffer(*text, property->answer);
    }
    return 0;
}

// ---------------------------------------------------------------------------------------------
// Provider table
// ---------------------------------------------------------------------------------------------

static_assert(SI_SLOT_COUNT == 52, "the host is built against 52 slots");

// All other slots are null: the host sees that the provider does not answer them.
// The allocation is not tested: create_provider() cannot say no, and a host uses the table at once.
// Without memory for it the process ends here, where the cause can be seen.
SIProviderTable* NewProviderTable() {
    auto* table = static_cast<SIProviderTable*>(std::calloc(1, sizeof(SIProviderTable)));
    table->set_int = set_int;
    table->get_int = get_int;
    table->get_display_name = get_display_name;
    table->get_help_text = get_help_text;
    table->get_list_items = get_list_items;
    table->list_item_text = list_item_text;
    table->list_item_value = list_item_value;
    table->list_item_kind = list_item_kind;
    table->free_list_items = free_list_items;
    table->get_messagebox_info = get_messagebox_info;
    table->get_disable_text = get_disable_text;
    table->provider_property = provider_property;
    table->get_messagebox_title = get_messagebox_title;
    table->get_disablepopup_info = get_disablepopup_info;
    return table;
}

}  // namespace

SI_EXPORT int create_provider(void*** table) try {
    if (table != nullptr) {
        *table = reinterpret_cast<void**>(NewProviderTable());
    }
    MVAList::Initialize();
    return 0;
}
NEUTRAL_ON_EXCEPTION(0)

SI_EXPORT int delete_provider(void*** table) {
    MVAList::Finalize();
    if (table == nullptr) {
        return 1;
    }
    std::free(*table);
    return 0;
}
