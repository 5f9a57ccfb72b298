// What the menu rules and handlers ask of the TV, and what they tell it.
#pragma once

#include <list>
#include <string>

#include "AssistantType.h"
#include "Export.h"
#include "platform/speech.h"

// No function throws on a failed platform call; each has a neutral answer: -1, false or "". Without
// memory they throw std::bad_alloc.
// Nothing is cached but m_listTTSLanguage.
class SI_EXPORT CSIMenuUtil {
  public:
    // Settings store.
    static int VconfGetInt(const char* key);             // -1 on failure
    static bool VconfGetBool(const char* key);           // false on failure
    static std::string VconfGetStr(const char* key);     // "" on failure
    static std::string GetVconfStirng(const char* key);  // "" on failure, with a log record
    static void SetBool(const char* key, bool value);
    static void SetString(const char* key, const char* value);
    static std::string GetCurrentVAAppID();
    static std::string GetCountryCode();
    static std::string GetOsdLanguage();

    // Feature configuration of the model.
    static std::string GetFMSString(const char* key);  // "" on failure
    static int GetFMSInt(const char* key);             // -1 on failure
    static bool GetFMSBool(const char* key);           // false on failure
    static bool isBuiltInMicSupported();
    static bool IsFarFieldFMSSupported();
    static bool FlagLFDProductModel();  // signage
    static bool IsPassthruSupportModel();
    static bool isChina();

    // Settings whose value is a JSON object, one member at a time.
    // "" for a missing member, for one that is itself an array or object, and for a value that is
    // not a JSON object.
    static std::string getValueOfJsonVconf(std::string key, std::string member);
    // False when the stored value is not a JSON object: nothing is written then, and the key is
    // never created.
    static bool setVAsValueOfJsonVconf(std::string key, std::string member, std::string value);

    // Texts. Replaces every "<<A>>" by a and, in the longer form, then every "<<B>>" by b; also one
    // that a replacement completes. Each stops after 1000 replacements, and before one that would
    // make the text longer than 65536 bytes: the rest of the text then stays as it is.
    static std::string Replace(std::string text, const std::string& a);
    static std::string Replace(std::string text, const std::string& a, const std::string& b);
    static std::string GetDeviceSID();  // the string id that names this kind of device
    // The translation of the id that fits the device; "<<A>>" in otherSid's names the device.
    static std::string GetTextTVScreenOrPJT(const char* tvSid, const char* screenSid,
                                            const char* otherSid);

    // Microphone and pass-through.
    static bool isBuiltInMicActivated();
    static bool setPassthruEnabled(bool enable);  // true when the store took the value
    static bool IsPassthruDimmed();
    static std::string GetPassthruDimmedToastPopUpString();

    // Setup of the assistants, sign-in, consent, network.
    static bool isExistFile(std::string path);
    static bool checkSetUpComplete_Alexa();
    static bool checkSetUpComplete_Google();
    static bool checkSetUpComplete_Salute();
    static bool checkSetUpComplete_Tencent();
    static bool IsVASetupComplete(ASSISTANT_TYPE type);
    static bool IsSignedIn();
    static bool IsTncPPAgreed();
    static bool IsNetworkConnected();

    // Voice guide and speech engine.
    static bool IsMenuLanguageSupportTTS();
    static void SetVoiceGuideOnOff(bool on);
    // 0 on success, else -1. An item without a value succeeds and leaves value as it was.
    static int GetMetaData(const char* appId, const char* metadataKey, std::string& value);
    static void m_GetTTSSupportLanguage();
    static bool m_TTSSupportVoiceCb(tts_h tts, const char* language, int voiceType, void* userData);
    // One entry per voice of the speech engine; filled when first needed, never cleared.
    static std::list<std::string> m_listTTSLanguage;

    // Other applications. None tells whether it worked.
    static void LaunchApp(const char* appId);
    static void LaunchApp(const char* appId, const char* key, const char* value);
    static void ShowPopup(std::string text);
    static void RefreshMenu();
    static void SetVoiceAssistant(const char* appId);
};
