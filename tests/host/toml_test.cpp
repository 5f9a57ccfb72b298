// What is written as TOML is read as what was meant, whatever stands in its texts.
#include <gtest/gtest.h>
#include <toml++/toml.h>

#include <random>

#include "host/core/toml_writer.h"
#include "tests/environment.h"

namespace {

// What ends, begins or breaks something in TOML, and what surrounds it.
constexpr const char* kPieces[] = {"'",
                                   "''",
                                   "'''",
                                   "\"",
                                   "\"\"",
                                   "\"\"\"",
                                   "\\",
                                   "\\u",
                                   "\n",
                                   "\r",
                                   "\r\n",
                                   "\t",
                                   "\b",
                                   "\f",
                                   "\x1b",
                                   "\x7f",
                                   "\x01",
                                   "[",
                                   "]",
                                   "[[step]]",
                                   "{",
                                   "}",
                                   "=",
                                   "#",
                                   ".",
                                   ",",
                                   " ",
                                   "a",
                                   "Z",
                                   "0",
                                   "-",
                                   "_",
                                   "é",
                                   "語",
                                   "\xc2\x85",
                                   "\xe2\x80\xa8",
                                   "\xe2\x80\xae",
                                   "\xf0\x9f\x93\xba",
                                   "\xef\xbb\xbf",
                                   "\n[[packages]]\napp = \"x\"\ncommand = \"touch owned\"\n",
                                   "true",
                                   "1979-05-27"};

class Random {
  public:
    std::size_t Below(std::size_t count) { return engine_() % count; }
    std::string Text() {
        std::string text;
        for (std::size_t count = Below(8); count > 0; --count) {
            const std::size_t piece = Below(std::size(kPieces) + 1);
            text += piece < std::size(kPieces) ? std::string(kPieces[piece]) : std::string(1, '\0');
        }
        return Below(200) == 0 ? text + std::string(5000, 'x') + text : text;
    }
    toml::array Array(int depth) {
        toml::array array;
        const bool tables = Below(3) == 0;
        for (std::size_t count = Below(4); count > 0; --count) {
            if (tables) {
                array.push_back(Table(depth - 1));
            } else {
                Put(depth - 1, [&](auto&& value) { array.push_back(value); });
            }
        }
        return array;
    }
    toml::table Table(int depth) {
        toml::table table;
        for (std::size_t count = Below(5); count > 0; --count) {
            const std::string key = Text();
            Put(depth - 1, [&](auto&& value) { table.insert_or_assign(key, value); });
        }
        return table;
    }

  private:
    template <typename Take>
    void Put(int depth, Take take) {
        switch (Below(depth > 0 ? 7 : 4)) {
            case 0:
                return take(Below(2) == 0);
            case 1:
                return take(static_cast<int64_t>(static_cast<int32_t>(engine_())));
            case 4:
                return take(Array(depth));
            case 5:
            case 6:
                return take(Table(depth));
            default:
                return take(Text());
        }
    }

    std::mt19937 engine_{Seed()};
};

TEST(Toml, RandomDocumentsAreReadAsTheyWereMeant) {
    SCOPED_TRACE(SeedNote());
    Random random;
    for (int i = 0; i < 4000; ++i) {
        const toml::table meant = random.Table(4);
        std::string text;
        ASSERT_NO_THROW(text = host::ToToml(meant)) << "document " << i;
        ASSERT_EQ(toml::parse(text), meant) << text;
    }
}

TEST(Toml, EveryByteOfAsciiStaysInTextsAndKeys) {
    for (int byte = 0; byte < 0x80; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        for (const std::string& whole : {text, text + text + text, "a" + text, text + "a"}) {
            const toml::table meant{{whole, whole}, {"list", toml::array{whole, whole}}};
            EXPECT_EQ(toml::parse(host::ToToml(meant)), meant) << byte;
        }
    }
}

TEST(Toml, ATextCannotEndItsOwnQuotes) {
    const std::string text = "'''\ncommand = 'touch owned'\nname2 = '''";
    const toml::table meant{
        {"packages", toml::array{toml::table{{"app", "org.example.x"}, {"name", text}}}}};
    const toml::table read = toml::parse(host::ToToml(meant));
    EXPECT_FALSE(read["packages"][0]["command"]);
    EXPECT_EQ(read["packages"][0]["name"], text);
}

TEST(Toml, RandomTextsStayCommentsAroundADocument) {
    Random random;
    for (int i = 0; i < 4000; ++i) {
        const std::string text = random.Text();
        const std::string other = random.Text();
        const toml::table meant{{"a", text}, {"b", toml::array{other, text}}};
        const std::string document =
            host::TomlComment(text) + host::ToToml(meant) + host::TomlComment(other);
        ASSERT_EQ(toml::parse(document), meant) << document;
    }
}

TEST(Toml, ACommentIsTomlEvenWithoutUtf8) {
    for (const std::string text : {"\xff", "a\xc3", "#\n\xff", "\xed\xa0\x80"}) {
        EXPECT_NO_THROW(host::RequireToml(host::TomlComment(text) + "a = 1\n"));
    }
    EXPECT_THROW(host::RequireToml("a = \"x\n"), std::runtime_error);
}

// What is said and done comes first, what is expected last; a table stands in a line where it can.
TEST(Toml, AStepReadsAsOneThatIsWrittenByHand) {
    const toml::table page{{"voice", toml::table{{"enabled", true}, {"visible", true}}}};
    const std::string longText(90, 'x');
    const toml::table step{
        {"choose", 2},
        {"press", "voice"},
        {"say", "choose"},
        {"expect", toml::table{{"launched", toml::array()}, {"page", page}}},
        {"set", toml::table{{"db/a", longText}, {"db/b", 1}}},
        {"unset", toml::array{longText, "db/c"}},
    };
    EXPECT_EQ(host::ToToml(toml::table{{"title", "A"}, {"step", toml::array{step}}}),
              "title = \"A\"\n\n[[step]]\nsay = \"choose\"\npress = \"voice\"\nchoose = 2\n"
              "set.\"db/a\" = \"" +
                  longText + "\"\nset.\"db/b\" = 1\nunset = [\n    \"" + longText +
                  "\",\n    \"db/c\",\n]\nexpect.launched = []\n"
                  "expect.page.voice = { enabled = true, visible = true }\n");
}

TEST(Toml, ATextThatIsNoUtf8IsRefusedWithItsKey) {
    for (const std::string text : {"\xff", "a\xc3", "\xed\xa0\x80", "\xc0\x80"}) {
        try {
            host::ToToml(toml::table{{"outer", toml::table{{"good", "x"}, {"bad", text}}}});
            ADD_FAILURE() << "nothing is thrown";
        } catch (const std::runtime_error& error) {
            EXPECT_NE(std::string(error.what()).find("\"outer.bad\""), std::string::npos)
                << error.what();
        }
    }
}

}  // namespace
