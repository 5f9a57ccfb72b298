#include "fixed_lines.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>

namespace explorer {

namespace {

struct FixedLine {
    std::string_view file;
    std::string_view function;
    int line;
};
constexpr FixedLine FIXED_LINES[] = {
    {"SIMenuUtil.cpp", "GetVconfStirng", 68},
    {"SIMenuUtil.cpp", "SetBool", 526},
    {"SIMenuUtil.cpp", "SetString", 520},
    {"SIMenuUtil.cpp", "GetFMSString", 393},
    {"SIMenuUtil.cpp", "GetFMSInt", 376},
    {"SIMenuUtil.cpp", "GetFMSBool", 361},
    {"SIMenuUtil.cpp", "getValueOfJsonVconf", 316},
    {"SIMenuUtil.cpp", "getValueOfJsonVconf", 325},
    {"SIMenuUtil.cpp", "setVAsValueOfJsonVconf", 338},
    {"SIMenuUtil.cpp", "setVAsValueOfJsonVconf", 345},
    {"SIMenuUtil.cpp", "isBuiltInMicActivated", 461},
    {"SIMenuUtil.cpp", "isBuiltInMicActivated", 467},
    {"SIMenuUtil.cpp", "isBuiltInMicActivated", 472},
    {"SIMenuUtil.cpp", "setPassthruEnabled", 412},
    {"SIMenuUtil.cpp", "setPassthruEnabled", 415},
    {"SIMenuUtil.cpp", "IsPassthruDimmed", 431},
    {"SIMenuUtil.cpp", "IsPassthruDimmed", 436},
    {"SIMenuUtil.cpp", "IsPassthruDimmed", 441},
    {"SIMenuUtil.cpp", "GetPassthruDimmedToastPopUpString", 450},
    {"SIMenuUtil.cpp", "checkSetUpComplete_Tencent", 296},
    {"SIMenuUtil.cpp", "checkSetUpComplete_Tencent", 305},
    {"SIMenuUtil.cpp", "IsVASetupComplete", 651},
    {"SIMenuUtil.cpp", "IsVASetupComplete", 673},
    {"SIMenuUtil.cpp", "IsSignedIn", 204},
    {"SIMenuUtil.cpp", "IsMenuLanguageSupportTTS", 83},
    {"SIMenuUtil.cpp", "IsMenuLanguageSupportTTS", 97},
    {"SIMenuUtil.cpp", "IsMenuLanguageSupportTTS", 107},
    {"SIMenuUtil.cpp", "IsMenuLanguageSupportTTS", 141},
    {"SIMenuUtil.cpp", "m_GetTTSSupportLanguage", 151},
    {"SIMenuUtil.cpp", "m_GetTTSSupportLanguage", 162},
    {"SIMenuUtil.cpp", "m_TTSSupportVoiceCb", 170},
    {"SIMenuUtil.cpp", "GetMetaData", 625},
    {"SIMenuUtil.cpp", "GetMetaData", 633},
    {"SIMenuUtil.cpp", "SetVoiceGuideOnOff", 596},
    {"SIMenuUtil.cpp", "ShowPopup", 251},
    {"SIMenuUtil.cpp", "ShowPopup", 262},
    {"SIMenuUtil.cpp", "ShowPopup", 266},
    {"SIMenuUtil.cpp", "RefreshMenu", 179},
    {"SIMenuUtil.cpp", "SetVoiceAssistant", 615},
    {"general_voice_dataprovider.cpp", "checknode_int_voice_wake_up", 658},
    {"general_voice_dataprovider.cpp", "setnode_int_voice_wake_up", 676},
    {"general_voice_dataprovider.cpp", "checknode_int_voice_always_wake_up", 689},
    {"general_voice_dataprovider.cpp", "setnode_int_voice_always_wake_up", 700},
    {"general_voice_dataprovider.cpp", "checknode_int_voice_screen_on_wake_up", 713},
    {"general_voice_dataprovider.cpp", "setnode_int_voice_screen_on_wake_up", 724},
    {"general_voice_dataprovider.cpp", "checknode_int_voice_situational_hint", 749},
    {"general_voice_dataprovider.cpp", "setnode_int_voice_situational_hint", 765},
    {"general_voice_dataprovider.cpp", "setnode_int_voice_situational_hint", 780},
    {"general_voice_visiblechecker.cpp", "check_general_voice_voice_always_wake_up", 175},
    {"general_voice_visiblechecker.cpp", "check_general_voice_voice_screen_on_wake_up", 187},
    {"general_voice_visiblechecker.cpp", "check_general_voice_situational_hint", 205},
    {"general_voice_visiblechecker.cpp", "check_general_voice_situational_hint", 211},
};

// "void Name()" is of the function "Name", "void NameOf()" is not.
bool IsNamed(std::string_view signature, std::string_view function) {
    return signature == function || signature.find(std::string(function) + '(') != signature.npos;
}

// Asked for each record: nearly all lines are told by a look.
constexpr std::size_t BEHIND_LINES = 1024;
constexpr std::array<bool, BEHIND_LINES> IS_SOMEWHERE_FIXED = [] {
    std::array<bool, BEHIND_LINES> lines{};
    for (const FixedLine& fixed : FIXED_LINES) {
        lines.at(static_cast<std::size_t>(fixed.line)) = true;
    }
    return lines;
}();

}  // namespace

int FixedLines() {
    return static_cast<int>(std::size(FIXED_LINES));
}

bool IsFixedLine(std::string_view file, std::string_view function, int line) {
    const auto place = static_cast<std::size_t>(line);
    return place < BEHIND_LINES && IS_SOMEWHERE_FIXED[place] &&
           std::any_of(
               std::begin(FIXED_LINES), std::end(FIXED_LINES),
               [&](const FixedLine& fixed) {
                   return fixed.line == line && fixed.file == file &&
                          IsNamed(function, fixed.function);
               });
}

}  // namespace explorer
