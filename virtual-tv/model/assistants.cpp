#include "assistants.h"

namespace vtv {

const std::vector<KnownAssistant>& KnownAssistants() {
    static const std::vector<KnownAssistant> assistants = {
        {"ORVIK2", "com.vantelo.tv.voice-instant-app", "Orvik", nullptr, "Welcome to Orvik."},
        {"GVA", "com.vantelo.tv.google-assistant", "Google Assistant",
         "share/.voice/ga_login_success", "Sign in to Google."},
        {"ALEXA", "com.vantelo.tv.alexa", "Alexa", "share/.voice/alexa_login_success", nullptr},
        {"SBER", "com.vantelo.tv.salute-assistant", "Salute", "share/.voice/salute_login_success",
         "Sign in to Salute."},
        {"TENCENT", "com.vantelo.tv.tencent-voice-chrome", "Xiaowei", nullptr,
         "Set up Tencent Cloud Xiaowei."},
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
