#include "assistants.h"

#include "keys.h"

namespace vtv {

const std::vector<KnownAssistant>& KnownAssistants() {
    static const std::vector<KnownAssistant> assistants = {
        {"ORVIK2", kOrvikApp, "Orvik", nullptr, "Welcome to Orvik.", "show_onboarding",
         "ONBOARDING"},
        {"GVA", "com.vantelo.tv.google-assistant", "Google Assistant", kGoogleMarker,
         "Sign in to Google.", "Login", "1"},
        {"ALEXA", "com.vantelo.tv.alexa", "Alexa", "share/.voice/alexa_login_success", nullptr},
        {"SBER", "com.vantelo.tv.salute-assistant", "Salute", "share/.voice/salute_login_success",
         "Sign in to Salute.", "PAGETYPE", "ONBOARDING"},
        {"TENCENT", "com.vantelo.tv.tencent-voice-chrome", "Xiaowei", nullptr,
         "Set up Tencent Cloud Xiaowei.", "show_onboarding", "ONBOARDING"},
        {"SVA", "com.vantelo.tv.sva-app", "SVA", nullptr, nullptr},
    };
    return assistants;
}

const KnownAssistant* FindKnownAssistant(std::string_view id) {
    for (const KnownAssistant& assistant : KnownAssistants()) {
        if (id == assistant.id) {
            return &assistant;
        }
    }
    return nullptr;
}

}  // namespace vtv
