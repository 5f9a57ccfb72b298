// Galleries: what is drawn, what is marked, what differs from one that was made before.
#include <filesystem>
#include <set>
#include <sstream>

#include "tests/host/vtv_process.h"

namespace fs = std::filesystem;
using testing::AllOf;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace {

class GalleryTest : public VtvTest {
  protected:
    Output Gallery(const std::string& name, std::vector<std::string> more) {
        more.insert(more.begin(), {"gallery", Path(name)});
        return Vtv(more);
    }
    JsonDocument Shots(const std::string& name) {
        Json::Value shots;
        std::istringstream(Read(name + "/gallery.json")) >> shots;
        return shots;
    }
    // "KIND TEXT" of every mark in a language.
    std::set<std::string> Marks(const std::string& name, const std::string& language) {
        std::set<std::string> marks;
        const JsonDocument shots = Shots(name);
        for (const Json::Value& shot : shots) {
            for (const Json::Value& mark : shot["marks"]) {
                if (shot["language"] == language) {
                    marks.insert(mark["kind"].asString() + " " + mark["text"].asString());
                }
            }
        }
        return marks;
    }
    std::set<std::string> Files(const std::string& name) {
        std::set<std::string> files;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(Path(name))) {
            if (entry.is_regular_file()) {
                files.insert(entry.path().lexically_relative(Path(name)));
            }
        }
        return files;
    }
};

}  // namespace

TEST_F(GalleryTest, ShowsEachItemTheListTheQuestionReasonsAndPopups) {
    ASSERT_EQ(Gallery("g", {"--models", "modular-us,monitor-es", "--languages", "en"}).code, 0);
    const std::set<std::string> files = Files("g");
    for (const char* file :
         {"index.html", "gallery.json", "modular-us/en/voice-assistant.png",
          "modular-us/en/voice-assistant-list.png", "modular-us/en/voice-assistant-box.png",
          "modular-us/en/voice-settings-orvik-popup.png",
          "monitor-es/en/voice-wake-up-reason.png"}) {
        EXPECT_THAT(files, Contains(file));
    }
    EXPECT_THAT(files, Not(Contains("modular-us/en/onboarding.png")));
    EXPECT_THAT(Read("g/index.html"),
                AllOf(HasSubstr("modular-us/en/voice-settings-orvik-popup.png"),
                      HasSubstr("id=\"language\"")));
}

TEST_F(GalleryTest, ShowsTheNotificationsOfAChangeInEachLanguage) {
    ASSERT_EQ(Gallery("g", {"--models", "farfield-eu,no-voice", "--languages", "en,de"}).code, 0);
    const std::set<std::string> files = Files("g");
    // Google Assistant's change is told by nothing.
    EXPECT_THAT(files, AllOf(Contains("farfield-eu/en/voice-assistant-toast-1.png"),
                             Contains("farfield-eu/de/voice-assistant-toast-2.png"),
                             Not(Contains("farfield-eu/en/voice-assistant-toast-3.png")),
                             Not(Contains(HasSubstr("no-voice/en/voice-assistant")))));
    EXPECT_NE(Read("g/farfield-eu/en/voice-assistant-toast-2.png"),
              Read("g/farfield-eu/de/voice-assistant-toast-2.png"));
    EXPECT_NE(Read("g/farfield-eu/en/voice-assistant-toast-1.png"),
              Read("g/farfield-eu/en/voice-assistant-toast-2.png"));
    // What no catalogue has, and what fits no TV, is marked in them, too.
    Write("toast.po",
          "msgid \"\"\nmsgstr \"Content-Type: text/plain; charset=UTF-8\\n\"\n\n"
          "msgid \"TV_SID_BJDEC_ASSISTANT_AFTER_CHANG_IT_TAKE_TIME_USE_VOICE\"\n"
          "msgstr \"" +
              std::string(3000, 'w') + "\"\n");
    ASSERT_EQ(
        Gallery("p", {"--models", "farfield-eu", "--languages", "en", "--po", Path("toast.po")})
            .code,
        0);
    EXPECT_THAT(Marks("p", "po"),
                AllOf(Contains(HasSubstr("missing TV_SID_BJDEC_ASSISTANT_UR_VOICE_ASSI_CHANGED")),
                      Contains(HasSubstr("cut TV_SID_BJDEC_ASSISTANT_UR_VOICE_ASSI_CHANGED"))));
    EXPECT_THAT(Marks("g", "de"), IsEmpty());
}

TEST_F(GalleryTest, OneProcessDrawsTheSameAsThree) {
    ASSERT_EQ(Gallery("one", {"--models", "farfield-eu", "--languages", "en,de,fr", "-j1"}).code,
              0);
    const Output three = Gallery("three", {"--models", "farfield-eu", "--languages", "en,de,fr",
                                           "-j3", "--compare", Path("one")});
    EXPECT_EQ(three.code, 0) << three.err;
    EXPECT_THAT(three.out, HasSubstr("Nothing differs from"));
}

TEST_F(GalleryTest, TextsThatAreCutMissingOrEnglishAreMarked) {
    // Too long for its row; not translated; as in English.
    Write("bad.po", R"(msgid ""
msgstr "Content-Type: text/plain; charset=UTF-8\n"

msgid "TV_SID_SETTINGS_VOICE"
msgstr "Voix"

msgid "TV_SID_SETTINGS_VOICE_HINT"
msgstr "Des conseils pour tout ce que vous pourriez vouloir dire à votre téléviseur maintenant"
)");
    const Output made =
        Gallery("g", {"--models", "farfield-eu", "--languages", "fr", "--po", Path("bad.po")});
    ASSERT_EQ(made.code, 0) << made.err;
    EXPECT_THAT(Marks("g", "fr"), IsEmpty());
    const std::set<std::string> marks = Marks("g", "po");
    EXPECT_THAT(marks, Contains("missing TV_SID_SETTINGS_VOICE_ASSITANT"));
    EXPECT_THAT(marks, Contains(HasSubstr("cut Des conseils pour tout")));
    EXPECT_THAT(marks, Not(Contains("cut Voix")));
}

TEST_F(GalleryTest, AChangedTextIsFoundAndShownBesideTheOneBefore) {
    const std::vector<std::string> words = {"--models", "farfield-eu", "--languages", "en"};
    ASSERT_EQ(Gallery("old", words).code, 0);
    std::string image = Read("old/farfield-eu/en/voice-assistant-box.png");
    Write("old/farfield-eu/en/voice-assistant-box.png",
          Read("old/farfield-eu/en/voice-assistant.png"));
    std::vector<std::string> compared = words;
    compared.insert(compared.end(), {"--compare", Path("old")});
    const Output different = Gallery("new", compared);
    EXPECT_EQ(different.code, 1) << different.err;
    EXPECT_THAT(different.out, HasSubstr(": 1 pictures"));
    EXPECT_THAT(Read("new/compare.html"), HasSubstr("farfield-eu/en/voice-assistant-box.png"));
    EXPECT_THAT(Files("new"),
                AllOf(Contains("compare/farfield-eu/en/voice-assistant-box.png"),
                      Contains("compare/farfield-eu/en/voice-assistant-box.png.difference.png")));
    // And one that is there no more.
    Write("old/farfield-eu/en/voice-assistant-box.png", image);
    fs::remove(Path("old/farfield-eu/en/voice-wake-up.png"));
    EXPECT_EQ(Gallery("new", compared).code, 1);
}

TEST_F(GalleryTest, LongerAndMirroredEnglishComeWhenTheyAreAskedFor) {
    ASSERT_EQ(
        Gallery("g", {"--models", "no-voice,farfield-eu", "--languages", "en", "--pseudo"}).code,
        0);
    const std::string plain = Read("g/farfield-eu/en/voice-wake-up.png");
    EXPECT_NE(Read("g/farfield-eu/en-long/voice-wake-up.png"), plain);
    EXPECT_NE(Read("g/farfield-eu/en-mirrored/voice-wake-up.png"), plain);
    EXPECT_THAT(Files("g"), Contains("no-voice/en-long/page.png"));
}

TEST_F(GalleryTest, AFolderThatIsNoGalleryIsLeftAlone) {
    fs::create_directory(Path("mine"));
    Write("mine/letter", "dear");
    const std::vector<std::string> words = {"--models", "no-voice", "--languages", "en"};
    EXPECT_EQ(Gallery("mine", words).code, 2);
    EXPECT_EQ(Read("mine/letter"), "dear");
    ASSERT_EQ(Gallery("g", words).code, 0);
    EXPECT_EQ(Gallery("g", words).code, 0);  // made anew
    EXPECT_EQ(Gallery("g", {"--models", "none"}).code, 3);
    EXPECT_EQ(Gallery("g", {"--languages", "xx"}).code, 3);
    EXPECT_EQ(Gallery("g", {"--po", Path("none.po")}).code, 3);
    EXPECT_EQ(Gallery("g", {"--compare", Path("g")}).code, 2);
    EXPECT_EQ(Gallery("g", {"--compare", Path("mine")}).code, 3);
    EXPECT_THAT(Files("g"), Contains("no-voice/en/page.png"));
}
