#include <json/json.h>

#include <cstring>
#include <filesystem>

#include "platform/settings_store.h"
#include "platform/trace_storage.h"
#include "tv_fixture.h"

namespace {

class TraceTest : public TvTest {
  protected:
    // As a call site does it.
    static int Register(const char* function, int line, const char* format,
                        std::vector<std::string> types) {
        TIStorageManager& manager = TIStorageManager::Instance();
        const int id = manager.NewLocationId();
        ht::TCStorage::SaveLocation(manager.CurrentStorage(),
                                    {"src/page.cpp", line, id, function, format, types});
        return id;
    }
    static bool Record(int id, const std::string& payload) {
        ht::TCStorage* storage = TIStorageManager::Instance().CurrentStorage();
        ht::TCThread* thread = ht::TCStorage::ThreadHandle(storage);
        void* buffer = ht::TCStorage::PrepareCallBuffer(storage, thread, payload.size(), 1, id);
        if (buffer == nullptr) {
            return false;
        }
        std::memcpy(buffer, payload.data(), payload.size());
        ht::TCStorage::Commit(storage, thread);
        return true;
    }
    static std::string Bytes(int number) {
        return std::string(reinterpret_cast<const char*>(&number), sizeof number);
    }
};

TEST_F(TraceTest, ItIsOffUntilItIsSwitchedOn) {
    TurnOn();
    EXPECT_FALSE(TIStorageManagerState::enabled);
    tv->SetTraceEnabled(true);
    EXPECT_TRUE(TIStorageManagerState::enabled);
    tv->SetTraceEnabled(false);
    EXPECT_FALSE(TIStorageManagerState::enabled);
}

TEST_F(TraceTest, ItIsSwitchedFromAnotherProcessWhileThisOneRuns) {
    TurnOn();
    const std::string dir = tv->Dir();
    InChild([&] {
        vtv::Tv(dir).SetTraceEnabled(true);
        return 0;
    });
    int value;
    vconf_get_int("db/any", &value);  // the next platform call knows
    EXPECT_TRUE(TIStorageManagerState::enabled);
    InChild([&] {
        vtv::Tv(dir).SetTraceEnabled(false);
        return 0;
    });
    tv->Dispatch();  // and so does the main loop
    EXPECT_FALSE(TIStorageManagerState::enabled);
}

TEST_F(TraceTest, ItStaysOnForProcessesThatComeLater) {
    TurnOn();
    const std::string dir = tv->Dir();
    tv->SetTraceEnabled(true);
    vtv::PowerOff();
    EXPECT_FALSE(TIStorageManagerState::enabled);
    Open(dir);
    EXPECT_TRUE(TIStorageManagerState::enabled);
}

TEST_F(TraceTest, EventsComeBackWithTheirSiteTimeAndArguments) {
    TurnOn();
    tv->SetTraceEnabled(true);
    const auto before = std::chrono::system_clock::now() - std::chrono::milliseconds(1);
    const int plain = Register("bool check()", 175, "plain message", {});
    const int full = Register("void set(int)", 676, "value [%d] && Wakeup[%s] 100%% %d",
                              {"int", "char const*", "bool"});
    EXPECT_NE(plain, full);
    EXPECT_TRUE(Record(full, Bytes(-7) + "\x02on" + std::string(1, '\1')));
    EXPECT_TRUE(Record(plain, ""));
    const auto events = tv->ReadTrace();
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0].file, "src/page.cpp");
    EXPECT_EQ(events[0].line, 676);
    EXPECT_EQ(events[0].function, "void set(int)");
    EXPECT_EQ(events[0].message, "value [-7] && Wakeup[on] 100% 1");
    ASSERT_EQ(events[0].arguments.size(), 3u);
    EXPECT_EQ(events[0].arguments[2].value, "true");
    EXPECT_EQ(events[0].pid, getpid());
    EXPECT_GE(events[0].time, before);
    EXPECT_LE(events[0].time, events[1].time);
    EXPECT_EQ(events[1].message, "plain message");
    EXPECT_TRUE(events[1].arguments.empty());
}

TEST_F(TraceTest, StringsOfEveryLengthAndNullAreDecoded) {
    TurnOn();
    tv->SetTraceEnabled(true);
    const int site = Register("f", 1, "%s|%d", {"char const*", "int"});
    Record(site, std::string("\0", 1) + Bytes(1));
    Record(site, "\x7f" + std::string(127, 'a') + Bytes(2));
    Record(site, "\x80\x01" + std::string(128, 'b') + Bytes(3));
    Record(site, "\xff\x7f" + std::string(16383, 'c') + Bytes(4));
    Record(site, "\xff\x7f" + Bytes(5));  // null
    const auto events = tv->ReadTrace();
    ASSERT_EQ(events.size(), 5u);
    EXPECT_EQ(events[0].message, "|1");
    EXPECT_EQ(events[1].message, std::string(127, 'a') + "|2");
    EXPECT_EQ(events[2].message, std::string(128, 'b') + "|3");
    EXPECT_EQ(events[3].message, std::string(16383, 'c') + "|4");
    EXPECT_EQ(events[4].message, "(null)|5");
}

TEST_F(TraceTest, EventsOfSeveralProcessesKeepTheirOwnSites) {
    TurnOn();
    const std::string dir = tv->Dir();
    tv->SetTraceEnabled(true);
    const int here = Register("here", 1, "here", {});
    InChild([&] {
        vtv::Tv other(dir);
        vtv::PowerOn(other);
        const int there = Register("there", 2, "there", {});
        Record(there, "");
        return 0;
    });
    Record(here, "");
    const auto events = tv->ReadTrace();
    ASSERT_EQ(events.size(), 2u);
    EXPECT_EQ(events[0].message, "there");
    EXPECT_EQ(events[1].message, "here");
}

TEST_F(TraceTest, AClearedTraceIsEmptyAndItsSitesAreStillKnown) {
    TurnOn();
    tv->SetTraceEnabled(true);
    const int site = Register("f", 1, "again", {});
    Record(site, "");
    tv->ClearTrace();
    EXPECT_TRUE(tv->ReadTrace().empty());
    Record(site, "");
    ASSERT_EQ(tv->ReadTrace().size(), 1u);
    EXPECT_EQ(tv->ReadTrace()[0].message, "again");
}

TEST_F(TraceTest, ATraceThatIsCutOffAnywhereGivesItsWholeEvents) {
    TurnOn();
    tv->SetTraceEnabled(true);
    const int site = Register("f", 1, "%d", {"int"});
    Record(site, Bytes(1));
    const std::string first = ReadText(tv->TraceFile());
    Record(site, Bytes(2));
    const std::string whole = ReadText(tv->TraceFile());
    for (size_t size = 0; size <= whole.size(); ++size) {
        WriteText(tv->TraceFile(), whole.substr(0, size));
        const size_t expected = size == whole.size() ? 2 : size >= first.size() ? 1 : 0;
        ASSERT_EQ(tv->ReadTrace().size(), expected) << size;
    }
}

TEST_F(TraceTest, AFullTraceIsSetAsideAndTheOldestEventsGo) {
    TurnOn();
    tv->SetTraceEnabled(true);
    const int id = Register("void f()", 7, "hello", {});
    for (int i = 0; i < 250; ++i) {
        ASSERT_TRUE(Record(id, std::string(100000, 'x')));
    }
    const std::vector<vtv::TraceEvent> events = tv->ReadTrace();
    EXPECT_GT(events.size(), 120U);
    EXPECT_LT(events.size(), 250U);
    for (const vtv::TraceEvent& event : events) {
        ASSERT_EQ(event.function, "void f()") << "each file has the sites of its events";
    }
    std::uintmax_t bytes = 0;
    for (const auto& file : std::filesystem::directory_iterator(tv->Dir() + "/trace")) {
        bytes += file.file_size();
    }
    EXPECT_LT(bytes, 17U << 20U);
    tv->ClearTrace();
    EXPECT_TRUE(tv->ReadTrace().empty());
}

TEST_F(TraceTest, ATraceThatIsNoneOrTooLargeIsClearedAndTheTvStaysOpen) {
    const std::string file = TurnOn().TraceFile();
    const std::string dir = tv->Dir();
    WriteText(file, "what is this?");
    EXPECT_NE(ErrorOf(vtv::ErrorKind::kPlatform, [&] { tv->ReadTrace(); }).find("--clear"),
              std::string::npos);
    tv->ClearTrace();
    EXPECT_TRUE(tv->ReadTrace().empty());
    WriteText(file, "");
    std::filesystem::resize_file(file, std::uintmax_t{300} << 20U);
    Open(dir);
    ErrorOf(vtv::ErrorKind::kPlatform, [&] { tv->ReadTrace(); });
    tv->ClearTrace();
    EXPECT_TRUE(tv->ReadTrace().empty());
}

TEST_F(TraceTest, TheExportIsWhatTraceViewersOpen) {
    TurnOn();
    tv->SetTraceEnabled(true);
    Record(Register("void set(int)", 676, "value %d \"語\"", {"int"}), Bytes(5));
    Json::Value root;
    std::istringstream(tv->ExportTrace()) >> root;
    ASSERT_EQ(root["traceEvents"].size(), 1u);
    const Json::Value& event = root["traceEvents"][0];
    EXPECT_EQ(event["name"], "value 5 \"語\"");
    EXPECT_EQ(event["ph"], "i");
    EXPECT_EQ(event["pid"], getpid());
    EXPECT_TRUE(event["ts"].isInt64());
    EXPECT_EQ(event["args"]["site"], "src/page.cpp:676");
    EXPECT_EQ(event["args"]["argument 1 (int)"], "5");
}

TEST_F(TraceTest, TypeNamesBecomeReadable) {
    EXPECT_EQ(ht::TSDemangler::Demangle(typeid(int).name()), "int");
    EXPECT_EQ(ht::TSDemangler::Demangle(typeid(const char*).name()), "char const*");
    EXPECT_EQ(ht::TSDemangler::Demangle("no mangled name"), "no mangled name");
}

}  // namespace
