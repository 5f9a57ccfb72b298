// Speech: the voices of the installed engine, the voice guide, and sound feedback. The engine
// (espeak-ng's library) is loaded only when somebody asks for it.
#include "platform/speech.h"

#include <dlfcn.h>
#include <espeak-ng/speak_lib.h>

#include <cstring>

#include "applications.h"
#include "serve.h"
#include "tv_impl.h"

struct tts_s {};

namespace vtv {

namespace {

constexpr char kEngine[] = "libespeak-ng.so.1";
constexpr char kFeedback[] = "sound/feedback";
constexpr char kPriority[] = "sound/priority";

// What the engine calls a language, and what the TV calls it. Others become "xx_YY" from "xx-yy".
constexpr struct {
    const char* engine;
    const char* tv;
} kLanguages[] = {
    {"ar", "ar_AE"},    {"bg", "bg_BG"},    {"ca", "ca_ES"}, {"cmn", "zh_CN"},
    {"cs", "cs_CZ"},    {"da", "da_DK"},    {"de", "de_DE"}, {"el", "el_GR"},
    {"en-gb", "en_GB"}, {"en-us", "en_US"}, {"es", "es_ES"}, {"es-419", "es_MX"},
    {"et", "et_EE"},    {"eu", "eu_ES"},    {"fa", "fa_IR"}, {"fi", "fi_FI"},
    {"fr-fr", "fr_FR"}, {"ga", "ga_IE"},    {"hi", "hi_IN"}, {"hr", "hr_HR"},
    {"hu", "hu_HU"},    {"id", "id_ID"},    {"it", "it_IT"}, {"ja", "ja_JP"},
    {"ko", "ko_KR"},    {"lt", "lt_LT"},    {"lv", "lv_LV"}, {"ms", "ms_MY"},
    {"nb", "nb_NO"},    {"nl", "nl_NL"},    {"pl", "pl_PL"}, {"pt", "pt_PT"},
    {"pt-br", "pt_BR"}, {"ro", "ro_RO"},    {"ru", "ru_RU"}, {"sk", "sk_SK"},
    {"sl", "sl_SI"},    {"sq", "sq_AL"},    {"sr", "sr_RS"}, {"sv", "sv_SE"},
    {"th", "th_TH"},    {"tr", "tr_TR"},    {"uk", "uk_UA"}, {"vi", "vi_VN"},
    {"yue", "zh_HK"},
};

std::string LanguageOfTv(const std::string& engine) {
    for (const auto& known : kLanguages) {
        if (engine == known.engine) {
            return known.tv;
        }
    }
    const size_t dash = engine.find('-');
    std::string language = engine.substr(0, dash);
    if (dash != std::string::npos) {
        language += '_';
        for (const char c : engine.substr(dash + 1)) {
            language += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        }
    }
    return language;
}

std::string LanguageOfEngine(const std::string& tv) {
    for (const auto& known : kLanguages) {
        if (tv == known.tv) {
            return known.engine;
        }
    }
    return tv.substr(0, tv.find('_'));
}

class Engine {
  public:
    // Null, with the reason in *problem, when it is not there or does not start.
    static Engine* Get(std::string* problem) {
        static Engine engine;
        *problem = engine.problem_;
        return engine.problem_.empty() ? &engine : nullptr;
    }

    std::vector<Voice> Voices() const {
        std::vector<Voice> voices;
        for (const espeak_VOICE** voice = list_(nullptr); *voice != nullptr; ++voice) {
            // The first byte is a priority.
            voices.push_back({LanguageOfTv((*voice)->languages + 1), (*voice)->gender});
        }
        return voices;
    }

    // 16-bit samples of the spoken text.
    std::string Synthesize(const std::string& text, const std::string& language) {
        espeak_VOICE wanted{};
        const std::string name = LanguageOfEngine(language);
        wanted.languages = name.c_str();
        setVoice_(&wanted);
        samples.clear();
        synth_(text.c_str(), text.size() + 1, 0, POS_CHARACTER, 0, espeakCHARS_UTF8, nullptr,
               nullptr);
        synchronize_();
        return samples;
    }

    int SampleRate() const { return sampleRate_; }

  private:
    Engine() {
        void* library = dlopen(kEngine, RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) {
            problem_ = dlerror();
            return;
        }
        Find(library, "espeak_Initialize", &initialize_);
        Find(library, "espeak_ListVoices", &list_);
        Find(library, "espeak_SetVoiceByProperties", &setVoice_);
        Find(library, "espeak_SetSynthCallback", &setCallback_);
        Find(library, "espeak_Synth", &synth_);
        Find(library, "espeak_Synchronize", &synchronize_);
        if (!problem_.empty()) {
            return;
        }
        // Samples come back to us: no thread, no sound device.
        sampleRate_ = initialize_(AUDIO_OUTPUT_SYNCHRONOUS, 0, nullptr, espeakINITIALIZE_DONT_EXIT);
        if (sampleRate_ < 0) {
            problem_ = "the speech engine does not start: its data files are missing";
            return;
        }
        setCallback_(&TakeSamples);
    }

    template <typename Function>
    void Find(void* library, const char* name, Function* function) {
        *function = reinterpret_cast<Function>(dlsym(library, name));
        if (*function == nullptr) {
            problem_ = std::string(kEngine) + " has no " + name;
        }
    }

    static int TakeSamples(short* wave, int count, espeak_EVENT*) {
        if (wave != nullptr && count > 0) {
            samples.append(reinterpret_cast<const char*>(wave),
                           static_cast<size_t>(count) * sizeof *wave);
        }
        return 0;
    }

    static inline std::string samples;
    std::string problem_;
    int sampleRate_ = 0;
    decltype(&espeak_Initialize) initialize_ = nullptr;
    decltype(&espeak_ListVoices) list_ = nullptr;
    decltype(&espeak_SetVoiceByProperties) setVoice_ = nullptr;
    decltype(&espeak_SetSynthCallback) setCallback_ = nullptr;
    decltype(&espeak_Synth) synth_ = nullptr;
    decltype(&espeak_Synchronize) synchronize_ = nullptr;
};

void AppendNumber(std::string* bytes, uint32_t number, int size) {
    for (int i = 0; i < size; ++i) {
        *bytes += static_cast<char>(number >> (8 * i) & 0xff);
    }
}

std::string Wave(const std::string& samples, int rate) {
    const auto size = static_cast<uint32_t>(samples.size());
    const auto perSecond = static_cast<uint32_t>(rate);
    std::string wave = "RIFF";
    AppendNumber(&wave, 36 + size, 4);
    wave += "WAVEfmt ";
    AppendNumber(&wave, 16, 4);
    AppendNumber(&wave, 1, 2);  // plain samples
    AppendNumber(&wave, 1, 2);  // one channel
    AppendNumber(&wave, perSecond, 4);
    AppendNumber(&wave, perSecond * 2, 4);
    AppendNumber(&wave, 2, 2);
    AppendNumber(&wave, 16, 2);
    wave += "data";
    AppendNumber(&wave, size, 4);
    return wave + samples;
}

bool VoicesOf(Tv::Impl& tv, std::vector<Voice>* voices) {
    if (tv.model.voices) {
        *voices = *tv.model.voices;
        return true;
    }
    std::string problem;
    const Engine* engine = Engine::Get(&problem);
    if (engine == nullptr) {
        tv.LogLine(kError, "no speech: " + problem);
        return false;
    }
    *voices = engine->Voices();
    return true;
}

// With whatever plays sound on this machine.
bool Play(Tv::Impl& tv, const std::string& file) {
    int error = 0;
    Program player;
    player.arguments = {"/bin/sh", "-c", "pw-play \"$1\" || paplay \"$1\" || aplay -q \"$1\"", "sh",
                        file};
    player.tvDir = tv.dir;
    return SpawnDetached(player, &error) > 0;
}

}  // namespace

std::vector<Voice> Tv::Voices() const {
    std::vector<Voice> voices;
    VoicesOf(*impl_, &voices);
    return voices;
}

bool Tv::VoiceGuide() const {
    Value value;
    std::string problem;
    return impl_->settings.Read(kVoiceGuideKey, &value, &problem) == Store::Status::kOk &&
           value == Value(true);
}

bool Tv::Speak(const std::string& text) {
    if (!VoiceGuide() || text.empty()) {
        return false;
    }
    impl_->LogLine(kInfo, "voice guide: " + text);
    if (impl_->model.speechOutput == "none") {
        return true;
    }
    std::string problem;
    Engine* engine = Engine::Get(&problem);
    if (engine == nullptr) {
        impl_->LogLine(kError, "no speech: " + problem);
        return false;
    }
    constexpr const char* kFile = "speech/last.wav";
    const std::string file = impl_->dir + "/" + kFile;
    int error = 0;
    if (!WriteTvFile(impl_->dir, kFile,
                     Wave(engine->Synthesize(text, Language()), engine->SampleRate()), &error)) {
        impl_->LogLine(kError, file + ": cannot be written: " + std::strerror(error));
        return false;
    }
    return impl_->model.speechOutput == "file" || Play(*impl_, file);
}

}  // namespace vtv

extern "C" {

VTV_EXPORT int tts_create(tts_h* tts) {
    return vtv::Serve("tts_create", [&](vtv::Tv::Impl& tv) {
        std::vector<vtv::Voice> voices;
        if (tts == nullptr || !vtv::VoicesOf(tv, &voices)) {
            return false;
        }
        *tts = std::make_unique<tts_s>().release();
        return true;
    });
}

VTV_EXPORT int tts_foreach_supported_voices(tts_h tts, tts_supported_voice_cb callback,
                                            void* userData) {
    return vtv::Serve("tts_foreach_supported_voices", [&](vtv::Tv::Impl& tv) {
        std::vector<vtv::Voice> voices;
        if (tts == nullptr || callback == nullptr || !vtv::VoicesOf(tv, &voices)) {
            return false;
        }
        for (const vtv::Voice& voice : voices) {
            if (!callback(tts, voice.language.c_str(), voice.type, userData)) {
                break;
            }
        }
        return true;
    });
}

VTV_EXPORT int tts_destroy(tts_h tts) {
    // Also when the call is told to fail: what was handed out is given back.
    const std::unique_ptr<tts_s> owned(tts);
    return vtv::Serve("tts_destroy", [&](vtv::Tv::Impl&) { return tts != nullptr; });
}

VTV_EXPORT int avoc_set_sound_feedback(int feedback, int priority) {
    return vtv::Serve("avoc_set_sound_feedback", [&](vtv::Tv::Impl& tv) {
        tv.state.Write(vtv::kFeedback, feedback);
        tv.state.Write(vtv::kPriority, priority);
        return true;
    });
}

}  // extern "C"
