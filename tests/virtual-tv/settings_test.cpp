// The settings store as the provider and other processes use it.
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "platform/settings_store.h"
#include "tv_fixture.h"

namespace {

using vtv::ErrorKind;
using vtv::Value;

class SettingsTest : public TvTest {
  protected:
    static std::string GetText(const char* key) {
        char* text = vconf_get_str(key);
        std::string copy = text != nullptr ? text : "(none)";
        free(text);
        return copy;
    }
};

TEST_F(SettingsTest, EachTypeIsWrittenAndReadBack) {
    TurnOn();
    int number = 0;
    EXPECT_EQ(vconf_set_int("db/x/int", -5), 0);
    EXPECT_EQ(vconf_get_int("db/x/int", &number), 0);
    EXPECT_EQ(number, -5);
    EXPECT_EQ(vconf_set_bool("db/x/bool", 7), 0);
    EXPECT_EQ(vconf_get_bool("db/x/bool", &number), 0);
    EXPECT_EQ(number, 1);
    EXPECT_EQ(vconf_set_str("memory/x/str", "text"), 0);
    EXPECT_EQ(GetText("memory/x/str"), "text");
    EXPECT_EQ(tv->Get("db/x/int"), Value(-5));
    EXPECT_EQ(tv->Get("db/x/bool"), Value(true));
    EXPECT_EQ(tv->Get("memory/x/str"), Value("text"));
}

TEST_F(SettingsTest, AReadOfAMissingKeyOrAnotherTypeFailsAndLeavesTheValueAlone) {
    TurnOn();
    int value = 42;
    EXPECT_NE(vconf_get_int("db/none", &value), 0);
    vconf_set_bool("db/key", 1);
    EXPECT_NE(vconf_get_int("db/key", &value), 0);
    EXPECT_EQ(GetText("db/key"), "(none)");
    vconf_set_int("db/key", 1);
    EXPECT_NE(vconf_get_bool("db/key", &value), 0);
    vconf_set_str("db/key", "1");
    EXPECT_NE(vconf_get_int("db/key", &value), 0);
    EXPECT_NE(vconf_get_bool("db/key", &value), 0);
    EXPECT_EQ(value, 42);
}

TEST_F(SettingsTest, NullAndKeysOfNoStoreAreFailures) {
    TurnOn();
    int value = 42;
    EXPECT_NE(vconf_get_int(nullptr, &value), 0);
    EXPECT_NE(vconf_get_int("db/menu_widget/language", nullptr), 0);
    EXPECT_EQ(vconf_get_str(nullptr), nullptr);
    EXPECT_NE(vconf_set_int(nullptr, 1), 0);
    EXPECT_NE(vconf_set_str("db/key", nullptr), 0);
    EXPECT_NE(vconf_set_int("elsewhere/key", 1), 0);
    EXPECT_NE(vconf_get_int("elsewhere/key", &value), 0);
    EXPECT_NE(vconf_notify_key_changed(nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(value, 42);
    ErrorOf(ErrorKind::kUsage, [&] { tv->Set("elsewhere/key", 1); });
    ErrorOf(ErrorKind::kUsage, [&] { tv->Get("key"); });
}

TEST_F(SettingsTest, PersistentKeysSurviveAPowerCycleAndVolatileOnesDoNot) {
    TurnOn();
    tv->Set("db/kept", 1);
    tv->Set("memory/lost", 1);
    tv->PowerCycle();
    EXPECT_EQ(tv->Get("db/kept"), Value(1));
    EXPECT_EQ(tv->Get("memory/lost"), std::nullopt);
    for (const vtv::Setting& setting : tv->Settings()) {
        EXPECT_EQ(setting.key.rfind("memory/", 0), std::string::npos) << setting.key;
    }
}

TEST_F(SettingsTest, VolatileKeysOfAnEarlierBootAreForgottenAndThoseOfThisBootStay) {
    TurnOn();
    const std::string dir = tv->Dir();
    tv->Set("memory/key", 1);
    Open(dir);
    EXPECT_EQ(tv->Get("memory/key"), Value(1));
    WriteText(dir + "/memory/.boot", "another boot\n");
    Open(dir);
    EXPECT_EQ(tv->Get("memory/key"), std::nullopt);
}

TEST_F(SettingsTest, AValueWrittenByOneProcessIsReadByAnotherAtOnce) {
    TurnOn();
    const std::string dir = tv->Dir();
    EXPECT_EQ(InChild([&] {
                  vtv::Tv other(dir);
                  other.Set("db/from/child", "hello");
                  return 0;
              }),
              0);
    EXPECT_EQ(GetText("db/from/child"), "hello");
}

// --- Change callbacks ---

struct Seen {
    int calls = 0;
    int value = -1;
};

void Note(struct keynode* node, void* userData) {
    ASSERT_NE(node, nullptr);
    auto* seen = static_cast<Seen*>(userData);
    ++seen->calls;
    vconf_get_int("db/watched", &seen->value);
}

void RemoveItself(struct keynode*, void* userData) {
    ++static_cast<Seen*>(userData)->calls;
    EXPECT_EQ(vconf_ignore_key_changed("db/watched", RemoveItself), 0);
}

void WriteAgain(struct keynode*, void* userData) {
    auto* seen = static_cast<Seen*>(userData);
    if (++seen->calls < 3) {
        vconf_set_int("db/watched", seen->calls);
    }
}

TEST_F(SettingsTest, AWriteCallsBackOnTheMainLoopAndNotBefore) {
    TurnOn();
    Seen seen;
    ASSERT_EQ(vconf_notify_key_changed("db/watched", Note, &seen), 0);
    vconf_set_int("db/watched", 3);
    EXPECT_EQ(seen.calls, 0);
    pollfd source{tv->EventFd(), POLLIN, 0};
    EXPECT_EQ(poll(&source, 1, 5000), 1);
    EXPECT_EQ(tv->Dispatch(), 1);
    EXPECT_EQ(seen.calls, 1);
    EXPECT_EQ(seen.value, 3);
}

TEST_F(SettingsTest, AWriteInAnotherProcessCallsBackHere) {
    TurnOn();
    const std::string dir = tv->Dir();
    Seen seen;
    vconf_notify_key_changed("db/watched", Note, &seen);
    Child writer([&] {
        vtv::Tv other(dir);
        other.Set("db/watched", 9);
        other.Set("db/watched", 9);
    });
    writer.Wait();
    while (tv->Dispatch() > 0) {
    }
    EXPECT_EQ(seen.calls, 2);
    EXPECT_EQ(seen.value, 9);
}

TEST_F(SettingsTest, AnIgnoredKeyCallsBackNoMore) {
    TurnOn();
    Seen seen;
    vconf_notify_key_changed("db/watched", Note, &seen);
    EXPECT_EQ(vconf_ignore_key_changed("db/watched", Note), 0);
    EXPECT_NE(vconf_ignore_key_changed("db/watched", Note), 0);
    vconf_set_int("db/watched", 1);
    tv->Dispatch();
    EXPECT_EQ(seen.calls, 0);
}

TEST_F(SettingsTest, RegisteringTheSameCallbackAgainReplacesItsUserData) {
    TurnOn();
    Seen first, second;
    vconf_notify_key_changed("db/watched", Note, &first);
    vconf_notify_key_changed("db/watched", Note, &second);
    vconf_set_int("db/watched", 1);
    tv->Dispatch();
    EXPECT_EQ(first.calls, 0);
    EXPECT_EQ(second.calls, 1);
}

TEST_F(SettingsTest, ACallbackMayRemoveItself) {
    TurnOn();
    Seen seen;
    vconf_notify_key_changed("db/watched", RemoveItself, &seen);
    vconf_set_int("db/watched", 1);
    vconf_set_int("db/watched", 2);
    while (tv->Dispatch() > 0) {
    }
    EXPECT_EQ(seen.calls, 1);
}

TEST_F(SettingsTest, ACallbackMayWriteItsOwnKey) {
    TurnOn();
    Seen seen;
    vconf_notify_key_changed("db/watched", WriteAgain, &seen);
    vconf_set_int("db/watched", 0);
    while (tv->Dispatch() > 0) {
    }
    EXPECT_EQ(seen.calls, 3);
}

TEST_F(SettingsTest, SwitchingTheTvOffEndsTheCallbacks) {
    TurnOn();
    Seen seen;
    vconf_notify_key_changed("db/watched", Note, &seen);
    vtv::PowerOff();
    tv->Set("db/watched", 1);
    tv->Dispatch();
    EXPECT_EQ(seen.calls, 0);
}

TEST_F(SettingsTest, WatchingEverythingTellsOfSettingsStateAndFiles) {
    TurnOn();
    std::vector<std::string> seen;
    const auto id = tv->WatchAll([&](const vtv::Change& change) {
        const char* what = change.what == vtv::Change::What::kSetting ? "setting "
                           : change.what == vtv::Change::What::kState ? "state "
                                                                      : "file ";
        seen.push_back(what + change.name);
    });
    tv->Set("db/a", 1);
    tv->Dispatch();
    tv->Set("memory/b", 1);
    tv->Dispatch();
    tv->SetSignedIn(false);
    tv->Dispatch();
    tv->AddOwnerFile("share/.voice/ga_login_success");
    tv->Dispatch();
    EXPECT_EQ(seen, (std::vector<std::string>{"setting db/a", "setting memory/b",
                                              "state account/signed_in",
                                              "file share/.voice/ga_login_success"}));
    tv->Unwatch(id);
    tv->Set("db/a", 2);
    tv->Dispatch();
    EXPECT_EQ(seen.size(), 4u);
}

// --- Trouble ---

// As somebody does who puts a copy of it back.
void MakeAgain(const std::string& dir) {
    namespace fs = std::filesystem;
    fs::remove_all(dir + ".kept");
    fs::copy(dir, dir + ".kept", fs::copy_options::recursive);
    fs::remove_all(dir);
    fs::copy(dir + ".kept", dir, fs::copy_options::recursive);
}

TEST_F(SettingsTest, AFolderThatIsRemovedAndMadeAgainIsReadAndFollowed) {
    TurnOn();
    tv->Set("db/a", 1);
    int told = 0;
    int allTold = 0;
    int logged = 0;
    tv->Watch("db/a", [&] { ++told; });
    tv->WatchAll([&](const vtv::Change&) { ++allTold; });
    tv->WatchLog([&] { ++logged; });
    for (int i = 1; i <= 3; ++i) {
        for (const char* part : {"settings", "state", "log", "owner"}) {
            MakeAgain(tv->Dir() + "/" + part);
        }
        tv->Dispatch();
        EXPECT_EQ(tv->Get("db/a"), vtv::Value(i));
        EXPECT_GT(told, 0) << "it went, and is back";
        told = allTold = logged = 0;
        vtv::Tv(tv->Dir()).Set("db/a", i + 1);
        vtv::Tv(tv->Dir()).SetNetwork(vtv::Network::kDisconnected);
        vtv::Tv(tv->Dir()).AddOwnerFile("share/again/" + std::to_string(i));
        tv->Log(4, "again");
        tv->Dispatch();
        EXPECT_GE(told, 1);
        EXPECT_GE(allTold, 3);
        EXPECT_GE(logged, 1);
        EXPECT_EQ(tv->Get("db/a"), vtv::Value(i + 1));
    }
}

TEST_F(SettingsTest, AStoreWhoseFolderIsBackIsReadAgain) {
    TurnOn();
    const std::string state = tv->Dir() + "/state";
    tv->SetSignedIn(false);
    std::filesystem::rename(state, state + ".away");
    vtv::Tv other(tv->Dir());
    EXPECT_FALSE(other.Problems().empty());
    std::filesystem::rename(state + ".away", state);
    EXPECT_TRUE(other.Problems().empty());
    EXPECT_FALSE(other.SignedIn());
}

TEST_F(SettingsTest, ATvThatHasLostItsEmptyFoldersHasThemAgain) {
    TurnOn();
    vtv::PowerOff();
    const std::string dir = tv->Dir();
    for (const char* part : {"owner", "log", "trace", "apps", "speech"}) {
        std::filesystem::remove_all(dir + "/" + part);
    }
    Open(dir);
    tv->WatchAll([](const vtv::Change&) {});
    tv->WatchLog([] {});
    tv->WatchTrace([] {});
    tv->WatchApplications([] {});
    tv->Log(4, "again");
    EXPECT_TRUE(LogHas("again"));
}

TEST_F(SettingsTest, FilesInFoldersThatAreMadeLaterAreToldToo) {
    TurnOn();
    std::vector<std::string> told;
    tv->WatchAll([&](const vtv::Change& change) {
        if (change.what == vtv::Change::What::kFile) {
            told.push_back(change.name);
        }
    });
    const auto heard = [&](const std::string& name) {
        told.clear();
        tv->Dispatch();
        return std::count(told.begin(), told.end(), name);
    };
    tv->AddOwnerFile("later/deep/first");
    EXPECT_EQ(heard("later/deep/first"), 1);
    tv->AddOwnerFile("later/deep/second");
    EXPECT_EQ(heard("later/deep/second"), 1);
    std::filesystem::remove_all(tv->OwnerDir() + "/later");
    tv->Dispatch();
    tv->AddOwnerFile("later/deep/third");
    tv->Dispatch();
    tv->AddOwnerFile("later/deep/fourth");
    EXPECT_EQ(heard("later/deep/fourth"), 1);
    // A folder that goes elsewhere takes its name with it.
    std::filesystem::rename(tv->OwnerDir() + "/later", tv->OwnerDir() + "/moved");
    tv->Dispatch();
    tv->AddOwnerFile("moved/deep/fifth");
    EXPECT_EQ(heard("moved/deep/fifth"), 1);
}

TEST_F(SettingsTest, ATvThatIsRemovedOrMovedWhileItIsWatchedIsToldAsGone) {
    for (const bool moved : {false, true}) {
        TurnOn();
        tv->WatchAll([](const vtv::Change&) {});
        EXPECT_NO_THROW(tv->Dispatch());
        if (moved) {
            std::filesystem::rename(tv->Dir(), folder / "elsewhere");
        } else {
            std::filesystem::remove_all(tv->Dir());
        }
        pollfd source{tv->EventFd(), POLLIN, 0};
        EXPECT_EQ(poll(&source, 1, 10000), 1);
        const std::string text = ErrorOf(vtv::ErrorKind::kPlatform, [&] { tv->Dispatch(); });
        EXPECT_NE(text.find("this TV is gone"), std::string::npos) << text;
    }
}

TEST_F(SettingsTest, ADamagedValueReadsAsMissingAndIsLoggedOnce) {
    TurnOn();
    WriteText(tv->Dir() + "/settings/db%2Fcomss%2Fcisblock", "int 3\n1");
    int value = 42;
    EXPECT_NE(vconf_get_int("db/comss/cisblock", &value), 0);
    EXPECT_NE(vconf_get_int("db/comss/cisblock", &value), 0);
    EXPECT_EQ(value, 42);
    int records = 0;
    for (const vtv::LogRecord& record : tv->ReadLog()) {
        records += record.message.find("db/comss/cisblock") != std::string::npos ? 1 : 0;
    }
    EXPECT_EQ(records, 1);
    EXPECT_NE(ErrorOf(ErrorKind::kPlatform, [&] { tv->Get("db/comss/cisblock"); })
                  .find("db/comss/cisblock"),
              std::string::npos);
    ASSERT_EQ(tv->Problems().size(), 1u);
}

TEST_F(SettingsTest, ATvWithAStoreThatHasLostItsVersionOpensAndReadsNothing) {
    TurnOn();
    const std::string dir = tv->Dir();
    std::filesystem::remove(dir + "/settings/.store");
    Open(dir);
    ASSERT_EQ(tv->Problems().size(), 1u);
    EXPECT_NE(tv->Problems()[0].find("cannot be read"), std::string::npos);
    EXPECT_EQ(vconf_get_str("db/menu_widget/language"), nullptr);
    EXPECT_NE(vconf_set_int("db/x", 1), 0);
    EXPECT_TRUE(LogHas("Put the file back"));
}

TEST_F(SettingsTest, ATvOfANewerVersionIsNeitherOpenedNorChanged) {
    TurnOn();
    const std::string dir = tv->Dir();
    std::filesystem::create_directories(dir + "/.changes/decided/removed/settings");
    WriteText(dir + "/settings/.store", "99\n");
    const std::string why = ErrorOf(ErrorKind::kPlatform, [&] { Open(dir); });
    EXPECT_NE(why.find("version 99"), std::string::npos) << why;
    EXPECT_TRUE(std::filesystem::exists(dir + "/.changes/decided"));
}

// As root, a folder without write permission is writable; the tests then run as nobody.
int AsNobody(const std::function<int()>& body) {
    return InChild([&] {
        if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) {
            return 99;
        }
        return body();
    });
}

TEST_F(SettingsTest, ATvThatCannotBeWrittenStillOpensAndSaysWhyAWriteFails) {
    TurnOn();
    const std::string dir = tv->Dir();
    vtv::PowerOff();
    for (const auto& entry : std::filesystem::recursive_directory_iterator(dir)) {
        chmod(entry.path().c_str(), entry.is_directory() ? 0555 : 0444);
    }
    chmod(dir.c_str(), 0555);
    chmod(folder.Path().c_str(), 0755);
    EXPECT_EQ(
        AsNobody([&] {
            vtv::Tv other(dir);
            vtv::PowerOn(other);
            if (GetText("db/menu_widget/language") != "en_GB" || vconf_set_int("db/x", 1) == 0) {
                return 1;
            }
            try {
                other.Set("db/x", 1);
            } catch (const vtv::Error& error) {
                const bool clear = std::string(error.what()).find("db/x") != std::string::npos;
                return error.kind() == ErrorKind::kPlatform && clear ? 0 : 2;
            }
            return 3;
        }),
        0);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(dir)) {
        chmod(entry.path().c_str(), 0777);
    }
    chmod(dir.c_str(), 0777);
}

TEST_F(SettingsTest, APlatformCallWithoutATvStopsTheProgramWithItsName) {
    EXPECT_EXIT(vconf_set_int("db/x", 1), testing::ExitedWithCode(4), "vconf_set_int");
    EXPECT_EXIT(
        {
            int value;
            vconf_get_int("db/x", &value);
        },
        testing::ExitedWithCode(4), "vconf_get_int");
}

}  // namespace
