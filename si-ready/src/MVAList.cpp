#include "MVAList.h"

#include <json/json.h>

#include <map>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "Guard.h"
#include "Keys.h"
#include "Log.h"
#include "PlatformString.h"
#include "SIMenuUtil.h"
#include "platform/settings_store.h"

namespace {

constexpr char ORVIK_ID[] = "ORVIK2";

struct KnownAssistant {
    std::string_view id;
    ASSISTANT_TYPE type;
};

// "SBER" and "SVA" are two different kinds.
constexpr KnownAssistant m_mapVAIdType[] = {
    {"ALEXA", ASSISTANT_ALEXA}, {ORVIK_ID, ASSISTANT_ORVIK}, {"GVA", ASSISTANT_GVA},
    {"SBER", ASSISTANT_SBER},   {"SVA", ASSISTANT_SVA},      {"TENCENT", ASSISTANT_TENCENT},
};

const std::vector<VAInfo> NO_ASSISTANTS;

// Shared with whoever walks it: the watch may be delivered inside a read of the walk, and replaces
// the list. The empty one needs no owner.
using SharedList = std::shared_ptr<const std::vector<VAInfo>>;
SharedList m_listVA(SharedList(), &NO_ASSISTANTS);
// Kept when the policy becomes empty: an application that was known still has its kind then.
std::map<std::string, ASSISTANT_TYPE> m_mapAppIdType;

// ---------------------------------------------------------------------------------------------
// The policy document: a JSON array with one object per assistant
// ---------------------------------------------------------------------------------------------

bool _String2Json(const std::string& text, Json::Value& root) {
    std::string errors;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    if (!reader->parse(text.data(), text.data() + text.size(), &root, &errors)) {
        LOG_ERROR("json parse fail");
        return false;
    }
    if (!errors.empty()) {
        LOG_ERROR("parse json error[%s]", errors.c_str());
        return false;
    }
    return true;
}

// A missing member reads as 0, "" or false.
VAInfo ReadAssistant(const Json::Value& element) {
    if (!element.isObject()) {
        throw std::invalid_argument("an assistant of the policy is not a JSON object");
    }
    return {element["VAOrder"].asInt(), element["VAId"].asString(), element["VAAppId"].asString(),
            element["VAName"].asString(), element["VAFFSupport"].asBool()};
}

// One reading of the policy. The watch may be delivered inside a platform call of the reading
// itself; it then reads a newer policy, which the interrupted reading must not replace by its own.
class Reading {
  public:
    Reading() : interrupted_(innermost) { innermost = this; }
    ~Reading() {
        innermost = interrupted_;
        if (hasTaken_ && interrupted_ != nullptr) {
            interrupted_->hasTaken_ = true;
        }
    }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

    // Whether the policy that was read is to become the list.
    bool Takes() { return !std::exchange(hasTaken_, true); }

  private:
    static Reading* innermost;
    Reading* const interrupted_;
    bool hasTaken_ = false;  // a list, or one that interrupted it has
};

Reading* Reading::innermost = nullptr;

// The new list is built aside, so that a policy which throws changes nothing.
void _ParsingMVAPolicyResult_Legacy(const char* reason) {
    LOG_ERROR("reason:%s", reason);
    Reading reading;
    Json::Value root;
    if (!_String2Json(CSIMenuUtil::GetVconfStirng(MVAList::MVA_LIST_VCONF), root)) {
        LOG_ERROR("json parse error");
        return;
    }
    if (!root.isArray() || root.empty()) {
        if (reading.Takes()) {
            m_listVA = SharedList(SharedList(), &NO_ASSISTANTS);
        }
        LOG_ERROR("empty result");
        return;
    }

    std::vector<VAInfo> list;
    list.reserve(root.size());
    std::map<std::string, ASSISTANT_TYPE> types;
    for (const Json::Value& element : root) {
        VAInfo assistant = ReadAssistant(element);
        LOG_ERROR("VAOrder:%d, VAId:%s, VAAppId:%s, VAName:%s, VAFFSupport:%s", assistant.order,
                  assistant.id.c_str(), assistant.appId.c_str(), assistant.name.c_str(),
                  assistant.ffSupport ? "true" : "false");
        for (const KnownAssistant& known : m_mapVAIdType) {
            if (assistant.id == known.id) {
                types[assistant.appId] = known.type;
            }
        }
        list.push_back(std::move(assistant));
    }
    auto shared = std::make_shared<const std::vector<VAInfo>>(std::move(list));
    if (reading.Takes()) {
        m_listVA = std::move(shared);
        m_mapAppIdType.swap(types);
    }
}

// The settings store is C code: no exception may pass through it.
void _VconfChangeCallback(keynode*, void*) try {
    _ParsingMVAPolicyResult_Legacy("_VconfChangeCallback");
}
NEUTRAL_ON_EXCEPTION()

// As CSIMenuUtil::GetCurrentVAAppID() reads it, without a copy.
bool IsCurrent(std::string_view appId) {
    const PlatformString current(vconf_get_str(setting::CURRENT_ASSISTANT));
    return appId == (current ? current.get() : "");
}

// Reads the current application afresh for each assistant that it looks at. Null: none is it.
std::shared_ptr<const VAInfo> FindCurrentVA() {
    const SharedList list = m_listVA;
    for (const VAInfo& assistant : *list) {
        if (IsCurrent(assistant.appId)) {
            return {list, &assistant};
        }
    }
    return nullptr;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// The list
// ---------------------------------------------------------------------------------------------

const char* const MVAList::MVA_LIST_VCONF = "db/menu/voice/mva_list";
const char* const MVAList::ID_ORVIK = ORVIK_ID;

void MVAList::Initialize() {
    LOG_ERROR("Notify MVA_LIST_VCONF");
    vconf_notify_key_changed(MVA_LIST_VCONF, _VconfChangeCallback, nullptr);
    _ParsingMVAPolicyResult_Legacy("Initialize");
}

void MVAList::Finalize() {
    LOG_ERROR("Ignore MVA_LIST_VCONF");
    vconf_ignore_key_changed(MVA_LIST_VCONF, _VconfChangeCallback);
}

std::vector<VAInfo> MVAList::GetVAList() {
    return *m_listVA;
}

size_t MVAList::GetVAListSize() {
    return m_listVA->size();
}

ASSISTANT_TYPE MVAList::GetVATypeByAppID(std::string appId) {
    const auto found = m_mapAppIdType.find(appId);
    return found != m_mapAppIdType.end() ? found->second : ASSISTANT_NONE;
}

std::string MVAList::GetVANameByType(ASSISTANT_TYPE type) {
    for (const VAInfo& assistant : *m_listVA) {
        if (GetVATypeByAppID(assistant.appId) == type) {
            return assistant.name;
        }
    }
    LOG_ERROR("[FATAL]Not matched!");
    return "";
}

// ---------------------------------------------------------------------------------------------
// The current assistant
// ---------------------------------------------------------------------------------------------

ASSISTANT_TYPE MVAList::GetCurrentVAType() {
    return GetVATypeByAppID(CSIMenuUtil::GetCurrentVAAppID());
}

bool MVAList::IsCurrentVAOrvik() {
    const std::shared_ptr<const VAInfo> current = FindCurrentVA();
    if (!current) {
        LOG_ERROR("[FATAL]Not matched!");
        return false;
    }
    return current->id == ID_ORVIK;
}

bool MVAList::IsCurrentVASupportFF() {
    const std::shared_ptr<const VAInfo> current = FindCurrentVA();
    if (!current) {
        LOG_ERROR("[FATAL]Not matched!");
        return false;
    }
    return current->ffSupport;
}

bool MVAList::IsCurrentVASetupComplete() {
    return CSIMenuUtil::IsVASetupComplete(GetCurrentVAType());
}

bool MVAList::IsVoiceDisabledByVAPolicy() {
    if (!CSIMenuUtil::IsTncPPAgreed()) {
        return false;
    }
    return m_listVA->empty();
}
