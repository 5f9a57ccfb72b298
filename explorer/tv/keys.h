// Names on a TV that several of the explorer's parts must spell alike.
#pragma once

namespace explorer::keys {

inline constexpr char POLICY[] = "db/menu/voice/mva_list";
inline constexpr char CURRENT[] = "db/multi-assistant/default_assistant_appid";
inline constexpr char FIRST_TIME[] = "db/voice-app/activate_first_time";
inline constexpr char TENCENT[] = "db/tencent-voice-assistant/voice-setting";
inline constexpr char LOGIN[] = "sso_get_login_state";
inline constexpr char OWNER[] = "/home/owner/";
// Every feature key of the page begins with it.
inline constexpr char FEATURES[] = "com.vantelo/featureconf/";

// What a platform call returns that fails, and what a feature returns that the TV does not have.
inline constexpr int FAILED = -1;
inline constexpr int INVALID_PARAMETER = -22;

// The file that an assistant leaves once it is set up; not every kind does.
struct Marker {
    const char* assistant;
    const char* file;
};
inline constexpr Marker MARKERS[] = {{"ALEXA", "/home/owner/share/.voice/alexa_login_success"},
                                     {"GVA", "/home/owner/share/.voice/ga_login_success"},
                                     {"SBER", "/home/owner/share/.voice/salute_login_success"}};

}  // namespace explorer::keys
