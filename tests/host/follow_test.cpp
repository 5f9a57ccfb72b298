// What watch, log and trace tell, and how they are asked for less.
#include <sys/xattr.h>

#include <fstream>
#include <sstream>

#include "vtv_process.h"

using testing::AllOf;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

namespace {

std::vector<Json::Value> Documents(const std::string& text) {
    std::vector<Json::Value> documents;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_TRUE(Json::Reader().parse(line, documents.emplace_back())) << line;
    }
    return documents;
}

}  // namespace

TEST_F(VtvTest, AWatchTellsWhenWhatItWasAndWhoWrote) {
    Ok({"set", "db/a", "int", "1"});
    RunningVtv watching(environment, {"watch", "db/a", "--json", "--count", "3"});
    ASSERT_TRUE(watching.WaitForError("Watching"));
    RunningVtv writing(environment, {"set", "db/a=2"});
    const int writer = writing.Pid();
    EXPECT_EQ(writing.End().code, 0);
    ASSERT_TRUE(watching.WaitFor("\n"));
    Ok({"unset", "db/a"});
    ASSERT_TRUE(watching.WaitFor("\"removed\":true"));
    Ok({"set", "db/a", "string", "x"});
    const std::vector<Json::Value> told = Documents(watching.End().out);
    ASSERT_EQ(told.size(), 3U);
    EXPECT_EQ(told[0]["before"], 1);
    EXPECT_EQ(told[0]["value"], 2);
    EXPECT_EQ(told[0]["writer"]["program"], "vtv");
    EXPECT_EQ(told[0]["writer"]["pid"], writer);
    EXPECT_THAT(told[0]["time"].asString(), ContainsRegex("^20[0-9-]+T[0-9:.]+Z$"));
    EXPECT_EQ(told[1]["before"], 2);
    EXPECT_TRUE(told[1]["writer"].isNull());
    EXPECT_TRUE(told[2]["before"].isNull());
}

TEST_F(VtvTest, AWatchTellsADamagedValueAndGoesOn) {
    Ok({"set", "db/a", "int", "1"});
    const auto put = [this](const std::string& name, const std::string& text) {
        Write("put", text);
        ASSERT_EQ(rename(Path("put").c_str(), Path("tvs/default/settings/" + name).c_str()), 0);
    };
    RunningVtv watching(environment, {"watch", "--count", "2"});
    RunningVtv documents(environment, {"watch", "--count", "2", "--json"});
    ASSERT_TRUE(watching.WaitForError("Watching") && documents.WaitForError("Watching"));
    put("%64b%2Fa", "int 1\n7\n");  // another spelling of a key's file is no key of the TV
    put("foo", "int 1\n7\n");       // nor is what begins as none does
    put("db%2Fa", "junk");
    ASSERT_TRUE(watching.WaitFor("db/a = (damaged)  was 1"));
    ASSERT_TRUE(documents.WaitFor("problem"));
    Ok({"set", "db/a", "int", "2"});
    const Output text = watching.End();
    EXPECT_EQ(text.code, 0) << text.err;
    EXPECT_THAT(text.out, HasSubstr("it is no file of this store. Write the key again"));
    EXPECT_THAT(text.out, HasSubstr("db/a = 2  was (damaged)"));
    const std::vector<Json::Value> told = Documents(documents.End().out);
    ASSERT_EQ(told.size(), 2U);
    EXPECT_THAT(told[0]["problem"].asString(), HasSubstr("it is no file of this store"));
    EXPECT_FALSE(told[0]["removed"].asBool() || told[0].isMember("value"));
    EXPECT_EQ(told[1]["value"], 2);
    EXPECT_TRUE(told[1]["before"].isNull());
}

TEST_F(VtvTest, AWatchTellsThatAnApplicationWrote) {
    Ok({"new", "box", "--model", "out-of-the-box-us"});
    Ok({"app", "mode", "auto", "--tv", "box"});
    RunningVtv watching(environment, {"watch", "--json", "--tv", "box"});
    ASSERT_TRUE(watching.WaitForError("Watching"));
    Ok({"press", "onboarding", "--tv", "box"});
    EXPECT_TRUE(watching.WaitFor("\"program\":\"vtv-app\"")) << watching.Text();
    watching.Interrupt();
}

TEST_F(VtvTest, AWriterThatLeftNoNoteIsNotGuessed) {
    Ok({"set", "db/a", "int", "1"});
    RunningVtv watching(environment, {"watch", "db/a", "--count", "1"});
    ASSERT_TRUE(watching.WaitForError("Watching"));
    Write("db%2Fa", "int 1\n7\n");
    ASSERT_EQ(rename(Path("db%2Fa").c_str(), Path("tvs/default/settings/db%2Fa").c_str()), 0);
    const Output output = watching.End();
    EXPECT_THAT(output.out, AllOf(HasSubstr("db/a = 7  was 1"), Not(HasSubstr(" by "))));
}

TEST_F(VtvTest, AWritersNoteCannotSteerATerminal) {
    Ok({"set", "db/a", "int", "1"});
    RunningVtv watching(environment, {"watch", "db/a", "--count", "1"});
    ASSERT_TRUE(watching.WaitForError("Watching"));
    Write("db%2Fa", "int 1\n7\n");
    const std::string note = "1 \x1b[31mred";
    ASSERT_EQ(setxattr(Path("db%2Fa").c_str(), "user.vtv.writer", note.data(), note.size(), 0), 0);
    ASSERT_EQ(rename(Path("db%2Fa").c_str(), Path("tvs/default/settings/db%2Fa").c_str()), 0);
    EXPECT_THAT(watching.End().out, HasSubstr("by \\u001b[31mred 1"));
}

TEST_F(VtvTest, TheLogIsAskedForByLetterTimeAndText) {
    Ok({"show"});
    Write("tvs/default/log/tv.log",
          "2026-03-29T07:15:02.123456Z 1 D VTV an old debug record\n"
          "2026-03-29T08:00:00.000000Z 1 W VTV an old Warning\n");
    Ok({"choose", "voice-wake-up", "off"});
    EXPECT_THAT(Ok({"log", "--priority", "W"}),
                AllOf(HasSubstr("an old Warning"), Not(HasSubstr("debug record"))));
    EXPECT_EQ(Ok({"log", "--priority", "w"}), Ok({"log", "--priority", "warning"}));
    EXPECT_THAT(Ok({"log", "--since", "10m"}),
                AllOf(HasSubstr("Wakeup[off]"), Not(HasSubstr("an old"))));
    for (const char* since : {"2026-03-29 07:30", "2026-03-29T07:15:03Z", "2026-03-29 07:15:03"}) {
        EXPECT_THAT(Ok({"log", "--since", since}),
                    AllOf(HasSubstr("an old Warning"), Not(HasSubstr("debug record"))))
            << since;
    }
    EXPECT_THAT(Ok({"log", "--since", "2026-03-29"}), HasSubstr("debug record"));
    EXPECT_THAT(Ok({"log", "--grep", "old (warning|x)"}),
                AllOf(HasSubstr("an old Warning"), Not(HasSubstr("debug record"))));
    EXPECT_EQ(Ok({"log", "--grep", "Debug"}), "");
    EXPECT_THAT(Ok({"log", "-g", "an old", "-n", "1"}),
                AllOf(HasSubstr("an old Warning"), Not(HasSubstr("debug record"))));
}

TEST_F(VtvTest, WhatIsNoTimePriorityOrExpressionIsRefused) {
    Ok({"show"});
    for (const char* since : {"yesterday", "10", "10y", "25:00", "2026-13-01", "-", "07:15x"}) {
        EXPECT_EQ(Vtv({"log", "--since", since}).code, 2) << since;
    }
    EXPECT_EQ(Vtv({"log", "--priority", "X"}).code, 2);
    EXPECT_EQ(Vtv({"log", "--priority", "DI"}).code, 2);
    EXPECT_EQ(Vtv({"log", "--grep", "a(b"}).code, 2);
    EXPECT_EQ(Vtv({"trace", "--grep", "a(b"}).code, 2);
    EXPECT_EQ(Vtv({"trace", "on", "--follow"}).code, 2);
    EXPECT_EQ(Vtv({"trace", "--clear", "--grep", "x"}).code, 2);
}

TEST_F(VtvTest, AFollowedTraceGrowsWithWhatIsWanted) {
    Ok({"trace", "on"});
    RunningVtv following(environment, {"trace", "--follow", "--grep", "wakeup\\[o"});
    RunningVtv others(environment,
                      {"trace", "--follow", "--json", "--function", "setnode_int_voice_wake_up"});
    Ok({"choose", "voice-wake-up", "off"});
    EXPECT_TRUE(following.WaitFor("Wakeup[off]")) << following.Text();
    EXPECT_TRUE(others.WaitFor("setnode_int_voice_wake_up")) << others.Text();
    Ok({"trace", "--clear"});
    Ok({"choose", "voice-wake-up", "on"});
    EXPECT_TRUE(following.WaitFor("Wakeup[on]")) << following.Text();
    const Output output = following.Interrupt();
    EXPECT_EQ(output.code, 0);
    std::istringstream lines(output.out);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_THAT(line, HasSubstr("akeup[o"));
    }
    for (const Json::Value& event : Documents(others.Interrupt().out)) {
        EXPECT_EQ(event["function"], "void setnode_int_voice_wake_up(int)");
    }
    EXPECT_THAT(Ok({"trace", "--function", "nothing"}), HasSubstr("No such event"));
    EXPECT_THAT(Ok({"trace", "--function", "int_voice_wake_up"}), HasSubstr("No such event"));
}
