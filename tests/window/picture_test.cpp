// Pictures of the page: those that are kept, made anew and compared.
//
// SI_NEW_GOLDEN=FOLDER keeps what this machine draws in that folder, to be looked at and copied.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "png_image.h"
#include "tests/host/vtv_process.h"

namespace fs = std::filesystem;
using testing::HasSubstr;

namespace {

class PictureTest : public VtvTest {
  protected:
    Image Picture(std::vector<std::string> words) {
        words.insert(words.begin(), "picture");
        words.insert(words.end(), {"-o", Path("picture.png")});
        if (std::find(words.begin(), words.end(), "--size") == words.end()) {
            words.insert(words.end(), {"--size", "640x360"});
        }
        EXPECT_EQ(Ok(words), "");
        return ReadPng(Path("picture.png"));
    }
    // The window of the TV "tv" after these keys.
    Image Window(const std::string& keys) {
        Write("keys.txt", keys + "picture " + Path("picture.png") + "\n");
        Ok({"window", "--tv", "tv", "--keys", Path("keys.txt"), "--display", "none"});
        return ReadPng(Path("picture.png"));
    }
    int FailWith(std::vector<std::string> words, const std::string& complaint) {
        words.insert(words.begin(), "picture");
        words.insert(words.end(), {"-o", Path("none.png")});
        const Output output = Vtv(words);
        EXPECT_THAT(output.err, HasSubstr(complaint));
        EXPECT_FALSE(fs::exists(Path("none.png")));
        return output.code;
    }
};

struct Golden {
    std::string name;
    const char* model;
    std::vector<std::string> words;
    std::string folder = GOLDEN;
    std::string keys =
        {};  // what the window shows after these, in place of a picture with the words
};

void PrintTo(const Golden& golden, std::ostream* out) {
    *out << golden.name;
}

const Golden kGolden[] = {
    {"page", "farfield-eu", {}},
    {"list", "farfield-eu", {"--press", "voice-assistant", "--language", "de_DE"}},
    {"box", "farfield-eu", {"--press", "voice-assistant=2", "--language", "ko_KR"}},
    {"reason", "monitor-es", {"--press", "voice-wake-up"}},
    {"popup", "modular-us", {"--press", "voice-settings-orvik"}},
    {"application", "out-of-the-box-us", {"--press", "onboarding"}},
    {"large", "farfield-cn", {"--text", "large", "--contrast", "high"}},
    {"mirrored", "farfield-eu", {"--language", "ar_AE", "--po", ARABIC}},
    {"no-page", "no-voice", {}},
    {"panel", "farfield-eu", {}, DOCS, "panel\ndown\nok\nwait 1.5\n"},
    // Those of the documentation.
    {"page", "farfield-eu", {"--size", "1280x720"}, DOCS},
    {"list",
     "farfield-eu",
     {"--press", "voice-assistant", "--language", "de_DE", "--size", "960x540"},
     DOCS},
    {"box",
     "farfield-eu",
     {"--press", "voice-assistant=2", "--language", "ko_KR", "--size", "960x540"},
     DOCS},
    {"reason", "monitor-es", {"--press", "voice-wake-up", "--size", "960x540"}, DOCS},
    {"popup", "modular-us", {"--press", "voice-settings-orvik", "--size", "960x540"}, DOCS},
    {"china", "farfield-cn", {"--size", "960x540"}, DOCS},
    {"setup", "out-of-the-box-us", {"--size", "960x540"}, DOCS},
};

class GoldenTest : public PictureTest, public testing::WithParamInterface<Golden> {};

Image ShiftedByAPixel(const Image& image) {
    Image shifted = image;
    for (size_t i = 3; i < image.rgb.size(); ++i) {
        shifted.rgb[i] = image.rgb[i - 3];
    }
    return shifted;
}

}  // namespace

TEST_P(GoldenTest, IsDrawnAsItWas) {
    const Golden& golden = GetParam();
    Ok({"new", "tv", "--model", golden.model});
    std::vector<std::string> words = {"--tv", "tv"};
    words.insert(words.end(), golden.words.begin(), golden.words.end());
    const Image now = golden.keys.empty() ? Picture(words) : Window(golden.keys);
    if (const char* keep = std::getenv("SI_NEW_GOLDEN")) {
        const fs::path folder = fs::path(keep) / fs::path(golden.folder).filename();
        fs::create_directories(folder);
        WritePng(folder / (golden.name + ".png"), now);
    }
    const Image then = ReadPng(golden.folder + "/" + golden.name + ".png");
    EXPECT_EQ(DifferentPixels(then, now), 0);
    // The tolerance hides no shift.
    EXPECT_GT(DifferentPixels(then, ShiftedByAPixel(now)), 0);
}

INSTANTIATE_TEST_SUITE_P(Pictures, GoldenTest, testing::ValuesIn(kGolden), [](const auto& golden) {
    std::string name = golden.param.folder == DOCS ? "OfThePages" : "";
    bool upper = true;
    for (const char c : golden.param.name) {
        if (c != '-') {
            name += static_cast<char>(upper ? std::toupper(c) : c);
        }
        upper = c == '-';
    }
    return name;
});

TEST(Pictures, EveryOneThatIsKeptIsDrawnByATest) {
    for (const char* folder : {GOLDEN, DOCS}) {
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
            EXPECT_TRUE(std::any_of(std::begin(kGolden), std::end(kGolden),
                                    [&](const Golden& golden) {
                                        return golden.folder == folder &&
                                               golden.name == entry.path().stem();
                                    }))
                << entry.path();
        }
    }
}

TEST_F(PictureTest, AMissingCharacterIsNoticed) {
    Ok({"show"});
    const Image whole = Picture({"--po", ENGLISH});
    std::ostringstream english;
    english << std::ifstream(ENGLISH).rdbuf();
    // The thinnest letter, the last one of a word, and a full stop, which is the least of all.
    const std::pair<const char*, const char*> kMissing[] = {
        {"Screen Is On", "Screen s On"},
        {"Hands-free Wake-up", "Hands-free Wake-u"},
        {"set how it listens.", "set how it listens"},
    };
    for (const auto& [text, without] : kMissing) {
        std::string catalogue = english.str();
        const size_t at = catalogue.find(text);
        ASSERT_NE(at, std::string::npos) << text;
        catalogue.replace(at, std::string(text).size(), without);
        Write("missing.po", catalogue);
        EXPECT_GT(DifferentPixels(whole, Picture({"--po", Path("missing.po")})), 0) << without;
    }
    EXPECT_EQ(DifferentPixels(whole, Picture({})), 0);
}

TEST_F(PictureTest, TheSameTvGivesTheSameBytesWhoeverDrawsIt) {
    Ok({"new", "tv", "--model", "farfield-eu"});
    Picture({"--tv", "tv"});
    const std::string first = Read("picture.png");
    environment["HOME"] = Path("another-home");
    environment["LC_ALL"] = "C";
    environment["DISPLAY"] = ":4711";
    environment["ELM_SCALE"] = "2";
    environment["ELM_PROFILE"] = "mobile";
    environment["EVAS_FONT_DPI"] = "300";
    environment["FONTCONFIG_FILE"] = "/none";
    Picture({"--tv", "tv"});
    EXPECT_EQ(Read("picture.png"), first);
    Picture({"--tv", "tv", "--language", "de_DE"});
    EXPECT_NE(Read("picture.png"), first);
}

TEST_F(PictureTest, APictureOfWhatAPressOpensChangesNoTv) {
    Ok({"new", "tv", "--model", "farfield-eu"});
    const Image page = Picture({"--tv", "tv"});
    const auto before = Contents("tvs/tv");
    const Image turned = Picture({"--tv", "tv", "--press", "voice-wake-up"});
    EXPECT_GT(DifferentPixels(page, turned), 0);
    Picture({"--tv", "tv", "--press", "voice-assistant=Alexa", "--language", "fr_FR"});
    EXPECT_EQ(Contents("tvs/tv"), before);
}

TEST_F(PictureTest, WhatIsTriedIsDrawnAndTheTvStaysAsItIs) {
    Ok({"new", "tv", "--model", "farfield-eu"});
    const std::string other = "db/multi-assistant/default_assistant_appid=com.vantelo.tv.alexa";
    Ok({"new", "other", "--model", "farfield-eu"});
    Ok({"set", other, "--tv", "other"});
    const auto before = Contents("tvs/tv");
    const Image tried = Picture({"--tv", "tv", "--with", other, "--with", "language=de_DE"});
    EXPECT_EQ(DifferentPixels(tried, Picture({"--tv", "other", "--language", "de_DE"})), 0);
    EXPECT_GT(DifferentPixels(tried, Picture({"--tv", "tv", "--language", "de_DE"})), 0);
    EXPECT_EQ(Contents("tvs/tv"), before);
    EXPECT_EQ(FailWith({"--tv", "tv", "--with", "nothing=1"}, "nothing"), 3);
    EXPECT_EQ(FailWith({"--tv", "tv", "--with", "network"}, "NAME=VALUE"), 2);
}

TEST_F(PictureTest, TheSizeIsTheOneThatWasAskedFor) {
    Ok({"show"});
    const Image wide = Picture({"--size", "1000x400"});
    EXPECT_EQ(wide.width, 1000);
    EXPECT_EQ(wide.height, 400);
}

TEST_F(PictureTest, WhatCannotBeDrawnIsRefusedAndNothingIsWritten) {
    Ok({"new", "tv", "--model", "farfield-eu"});
    EXPECT_EQ(FailWith({"--tv", "tv", "--press", "voice-wakeup"}, "Did you mean"), 3);
    EXPECT_EQ(FailWith({"--tv", "tv", "--press", "onboarding"}, "is not on the page now"), 1);
    EXPECT_EQ(FailWith({"--tv", "tv", "--press", "voice-assistant=9"}, "is no choice"), 2);
    EXPECT_EQ(FailWith({"--tv", "tv", "--press", "voice-wake-up=1"}, "opens no list"), 2);
    EXPECT_EQ(FailWith({"--tv", "tv", "--press", "voice-assistant=2", "--press", "voice-wake-up"},
                       "is covered"),
              1);
    EXPECT_EQ(FailWith({"--tv", "tv", "--size", "10x10"}, "WIDTHxHEIGHT"), 2);
    EXPECT_EQ(FailWith({"--tv", "tv", "--size", "1280"}, "WIDTHxHEIGHT"), 2);
    EXPECT_EQ(FailWith({"--tv", "tv", "--text", "huge"}, "huge"), 2);
    EXPECT_EQ(FailWith({"--tv", "none"}, "there is no TV here"), 3);
    EXPECT_EQ(FailWith({"--tv", "tv", "--po", Path("none.po")}, "none.po"), 3);
    EXPECT_EQ(Vtv({"picture", "--tv", "tv", "-o", Path("no/folder/x.png")}).code, 4);
}
