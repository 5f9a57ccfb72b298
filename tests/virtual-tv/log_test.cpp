#include "platform/log.h"

#include <algorithm>

#include "tv_fixture.h"

namespace {

class LogTest : public TvTest {
  protected:
    std::string LogFile() const { return tv->Dir() + "/log/tv.log"; }
};

TEST_F(LogTest, ARecordKeepsEverythingThatWasLogged) {
    TurnOn();
    EXPECT_GT(__dlog_print(0, 6, "SI-MENU", "%s: %s(%d) > %s", "SIMenuUtil.cpp", "GetVconfStirng",
                           68, "[FATAL]can not get string from db/x"),
              0);
    const auto records = tv->ReadLog();
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0].tag, "SI-MENU");
    EXPECT_EQ(records[0].priority, 6);
    EXPECT_EQ(records[0].file, "SIMenuUtil.cpp");
    EXPECT_EQ(records[0].function, "GetVconfStirng");
    EXPECT_EQ(records[0].line, 68);
    EXPECT_EQ(records[0].message, "[FATAL]can not get string from db/x");
    EXPECT_EQ(records[0].pid, getpid());
}

TEST_F(LogTest, MessagesOfAnyTextComeBackAndStayOneLineInTheFile) {
    TurnOn();
    const std::vector<std::string> messages = {
        "",         "two\nlines\r\n",        "back\\slash \\n",
        "語 %s %d", std::string(20000, 'x'), "a: b(c) > d",
        "x > y",    "f: g(12) > ",           "1: (2) > 3"};
    for (const std::string& message : messages) {
        __dlog_print(0, 4, "tag with space", "f.cpp: f(1) > %s", message.c_str());
    }
    const auto records = tv->ReadLog();
    ASSERT_EQ(records.size(), messages.size());
    const std::string text = ReadText(LogFile());
    EXPECT_EQ(static_cast<size_t>(std::count(text.begin(), text.end(), '\n')), messages.size());
    for (size_t i = 0; i < messages.size(); ++i) {
        EXPECT_EQ(records[i].message, messages[i]);
    }
}

TEST_F(LogTest, AMessageWithoutThePrefixIsKeptWhole) {
    TurnOn();
    __dlog_print(0, 6, "x", "just a text (3) > more");
    EXPECT_EQ(tv->ReadLog().at(0).message, "just a text (3) > more");
    EXPECT_EQ(tv->ReadLog().at(0).line, 0);
}

TEST_F(LogTest, TheFilterTakesFunctionTagAndPriority) {
    TurnOn();
    __dlog_print(0, 6, "SI-MENU", "a.cpp: first(1) > x");
    __dlog_print(0, 4, "SI-MENU", "a.cpp: second(2) > y");
    __dlog_print(0, 6, "other", "a.cpp: first(3) > z");
    EXPECT_EQ(tv->ReadLog({"first", "", 0}).size(), 2u);
    EXPECT_EQ(tv->ReadLog({"first", "SI-MENU", 0}).size(), 1u);
    EXPECT_EQ(tv->ReadLog({"", "", 6}).size(), 2u);
    EXPECT_EQ(tv->ReadLog({"fir", "", 0}).size(), 0u);
}

TEST_F(LogTest, AFullLogIsRotatedAndTheOldestGoes) {
    TurnOn();
    const std::string text(4000, 'x');
    for (int i = 0; i < 1500; ++i) {
        __dlog_print(0, 4, "t", "f.cpp: f(%d) > %s", i, text.c_str());
    }
    const auto records = tv->ReadLog();
    ASSERT_GT(records.size(), 700u);
    ASSERT_LT(records.size(), 1500u);
    for (size_t i = 1; i < records.size(); ++i) {
        ASSERT_EQ(records[i].line, records[i - 1].line + 1);
    }
    EXPECT_EQ(records.back().line, 1499);
    EXPECT_FALSE(std::filesystem::exists(LogFile() + ".4"));
    EXPECT_LT(std::filesystem::file_size(LogFile() + ".1"), 1100000u);
}

TEST_F(LogTest, RecordsOfManyProcessesAreAllThereAcrossARotation) {
    TurnOn();
    const std::string dir = tv->Dir();
    {
        std::vector<std::unique_ptr<Child>> children;
        for (int child = 0; child < 4; ++child) {
            children.push_back(std::make_unique<Child>([&, child] {
                vtv::Tv other(dir);
                for (int i = 0; i < 200; ++i) {
                    other.Log(4, std::to_string(child) + ":" + std::to_string(i) + ":" +
                                     std::string(2000, 'x'));
                }
            }));
        }
    }
    EXPECT_TRUE(std::filesystem::exists(LogFile() + ".1"));
    EXPECT_EQ(tv->ReadLog().size(), 800u);
}

TEST_F(LogTest, AReaderFollowsAcrossARotation) {
    TurnOn();
    tv->Log(4, "before");
    vtv::LogReader all(*tv, {}, false);
    vtv::LogReader fresh(*tv, {}, true);
    EXPECT_EQ(all.ReadNew().size(), 1u);
    EXPECT_EQ(fresh.ReadNew().size(), 0u);
    size_t read = 0;
    const std::string text(4000, 'x');
    for (int i = 0; i < 400; ++i) {
        tv->Log(4, text);
        if (i % 50 == 0) {
            read += fresh.ReadNew().size();
        }
    }
    read += fresh.ReadNew().size();
    EXPECT_EQ(read, 400u);
    EXPECT_TRUE(std::filesystem::exists(LogFile() + ".1"));
}

TEST_F(LogTest, AReaderThatWasAwayForTwoRotationsMissesNothing) {
    TurnOn();
    tv->Log(4, "before");
    vtv::LogReader fresh(*tv, {}, true);
    const std::string text(4000, 'x');
    for (int i = 0; i < 700; ++i) {
        tv->Log(4, text);
    }
    ASSERT_TRUE(std::filesystem::exists(LogFile() + ".2"));
    EXPECT_EQ(fresh.ReadNew().size(), 700u);
    EXPECT_EQ(vtv::LogReader(*tv, {}, false).ReadNew().size(), 701u);
    EXPECT_EQ(fresh.ReadNew().size(), 0u);
}

TEST_F(LogTest, AWatcherOfTheLogIsToldWhenItGrows) {
    TurnOn();
    tv->Log(4, "made");
    int calls = 0;
    tv->WatchLog([&] { ++calls; });
    tv->Dispatch();
    EXPECT_EQ(calls, 0);
    tv->Log(4, "grown");
    tv->Dispatch();
    EXPECT_EQ(calls, 1);
}

TEST_F(LogTest, ForeignLinesAreSkipped) {
    TurnOn();
    tv->Log(4, "good");
    std::string text = "garbage\n\n2026-01-01T00:00:00.000000Z x E t m\n";
    for (const char* part : {"1", "-00001", "9223372036854775807"}) {
        text += std::string("2026-01-01T00:00:00.") + part + "Z 1 E t m\n";
    }
    WriteText(LogFile(), text + ReadText(LogFile()) + "cut of");
    ASSERT_EQ(tv->ReadLog().size(), 1u);
    EXPECT_EQ(tv->ReadLog()[0].message, "good");
}

}  // namespace
