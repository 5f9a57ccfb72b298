// The voice assistants that the TV's policy offers, and the one that the viewer has chosen.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "AssistantType.h"
#include "Export.h"

// One assistant of the policy.
struct VAInfo {
    int order;          // 1-based place in the selection list, and the value of that menu item
    std::string id;     // "ORVIK2", "GVA", ...; an unknown id is kept but has no kind
    std::string appId;  // the assistant's application
    std::string name;   // shown to the viewer as it stands, except for Orvik
    bool ffSupport;     // can be woken by far-field speech
};

class SI_EXPORT MVAList {
  public:
    static const char* const MVA_LIST_VCONF;  // the settings key of the policy
    static const char* const ID_ORVIK;

    // Watches the policy and reads it once. A policy with an element that is no object, or with a
    // member that cannot be converted, throws a std::exception and changes nothing.
    static void Initialize();
    // Removes the watch; the list stays as it is.
    static void Finalize();

    // The list, in the order of the policy.
    static std::vector<VAInfo> GetVAList();
    static size_t GetVAListSize();
    // ASSISTANT_NONE for an application that the policy does not list under a known id. Of an
    // application that is listed twice the later kind counts.
    static ASSISTANT_TYPE GetVATypeByAppID(std::string appId);
    // The name of the first assistant of that kind; "" when there is none.
    static std::string GetVANameByType(ASSISTANT_TYPE type);

    // About the current assistant. Each reads the settings store afresh.
    static ASSISTANT_TYPE GetCurrentVAType();
    static bool IsCurrentVAOrvik();
    static bool IsCurrentVASupportFF();
    static bool IsCurrentVASetupComplete();
    // The terms are agreed, yet the policy offers no assistant at all.
    static bool IsVoiceDisabledByVAPolicy();
};
