// Platform calls that fail on demand; and no platform call that could not.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <regex>

#include "platform/account.h"
#include "platform/applications.h"
#include "platform/call_table.h"
#include "platform/features.h"
#include "platform/settings_store.h"
#include "tv_fixture.h"
#include "virtual-tv/model/keys.h"

namespace {

using vtv::Fault;

class FaultsTest : public TvTest {
  protected:
    static int ReadLanguage() {
        char* text = vconf_get_str("db/menu_widget/language");
        const int good = text != nullptr ? 1 : 0;
        free(text);
        return good;
    }
    static int Fail(const std::string& function, Fault::Kind kind, int result = -1) {
        vtv::Current()->SetFault({function, kind, result, 0});
        return 0;
    }
};

TEST_F(FaultsTest, ACallFailsOnceAndThenWorks) {
    TurnOn();
    Fail("vconf_get_str", Fault::Kind::kOnce);
    EXPECT_EQ(ReadLanguage(), 0);
    EXPECT_EQ(ReadLanguage(), 1);
    EXPECT_TRUE(tv->Faults().empty());
    EXPECT_TRUE(LogHas("fault: vconf_get_str fails"));
}

TEST_F(FaultsTest, ACallFailsFromNowOnUntilItIsCleared) {
    TurnOn();
    Fail("sso_get_login_state", Fault::Kind::kAlways, -77);
    int state = 5;
    EXPECT_EQ(sso_get_login_state(&state), -77);
    EXPECT_EQ(sso_get_login_state(&state), -77);
    EXPECT_EQ(state, 5);
    ASSERT_EQ(tv->Faults().size(), 1u);
    EXPECT_EQ(tv->Faults()[0].result, -77);
    EXPECT_TRUE(tv->ClearFault("sso_get_login_state"));
    EXPECT_FALSE(tv->ClearFault("sso_get_login_state"));
    EXPECT_EQ(sso_get_login_state(&state), 0);
}

TEST_F(FaultsTest, AFailingReadLeavesWhatItWouldFillWhateverItReturns) {
    TurnOn();
    tv->Set("db/key", true);
    for (const int result : {-7, 0}) {
        Fail("vconf_get_bool", Fault::Kind::kAlways, result);
        Fail("system_info_get_custom_string", Fault::Kind::kAlways, result);
        int flag = 42;
        EXPECT_EQ(vconf_get_bool("db/key", &flag), result);
        EXPECT_EQ(flag, 42);
        char untouched[] = "untouched";
        char* text = untouched;
        EXPECT_EQ(system_info_get_custom_string(vtv::kProductTypeFeature, &text), result);
        EXPECT_EQ(text, untouched);
    }
}

TEST_F(FaultsTest, ASlowCallTakesItsTimeAndWorks) {
    TurnOn();
    tv->SetFault({"vconf_get_str", Fault::Kind::kSlow, -1, 60});
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(ReadLanguage(), 1);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(60));
}

TEST_F(FaultsTest, AFaultOfAnotherProcessIsFollowedAtTheNextCall) {
    TurnOn();
    const std::string dir = tv->Dir();
    EXPECT_EQ(ReadLanguage(), 1);
    InChild([&] {
        vtv::Tv(dir).SetFault({"vconf_get_str", Fault::Kind::kAlways, -1, 0});
        return 0;
    });
    EXPECT_EQ(ReadLanguage(), 0);
    InChild([&] { return vtv::Tv(dir).ClearFault("vconf_get_str") ? 0 : 1; });
    EXPECT_EQ(ReadLanguage(), 1);
}

TEST_F(FaultsTest, OfAllProcessesOneCallFailsOnce) {
    TurnOn();
    const std::string dir = tv->Dir();
    Fail("vconf_get_str", Fault::Kind::kOnce);
    int failures = 0;
    for (int i = 0; i < 4; ++i) {
        failures += InChild([&] {
            vtv::Tv other(dir);
            vtv::PowerOn(other);
            return ReadLanguage() == 1 ? 0 : 1;
        });
    }
    EXPECT_EQ(failures + (ReadLanguage() == 1 ? 0 : 1), 1);
}

TEST_F(FaultsTest, APowerCycleForgetsThem) {
    TurnOn();
    Fail("vconf_get_str", Fault::Kind::kAlways);
    tv->PowerCycle();
    EXPECT_EQ(ReadLanguage(), 1);
}

TEST_F(FaultsTest, AFaultOfAReleaseStillReleases) {
    TurnOn();
    Fail("bundle_free", Fault::Kind::kAlways);
    Fail("app_control_destroy", Fault::Kind::kAlways);
    bundle* extras = bundle_create();
    EXPECT_NE(bundle_free(extras), 0);
    app_control_h control = nullptr;
    ASSERT_EQ(app_control_create(&control), 0);
    EXPECT_NE(app_control_destroy(control), 0);  // a leak checker would tell
}

TEST_F(FaultsTest, AFailingAccessHasAnErrorNumber) {
    TurnOn();
    tv->AddOwnerFile("share/.voice/ga_login_success");
    Fail("access", Fault::Kind::kOnce);
    errno = 0;
    EXPECT_EQ(access("/home/owner/share/.voice/ga_login_success", F_OK), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(access("/home/owner/share/.voice/ga_login_success", F_OK), 0);
}

TEST_F(FaultsTest, AnUnknownCallIsRefused) {
    TurnOn();
    ErrorOf(vtv::ErrorKind::kNoSuch,
            [&] { tv->SetFault({"vconf_get", Fault::Kind::kOnce, -1, 0}); });
    ErrorOf(vtv::ErrorKind::kUsage, [&] { tv->SetFault({"access", Fault::Kind::kSlow, -1, -5}); });
}

// The platform's headers are the list of what a provider may call.
std::vector<std::string> DeclaredFunctions() {
    std::vector<std::string> names;
    const std::regex declaration(R"((\w+)\([^;{}]*\)\s*(?:__attribute__\(\(.*\)\)\s*)?;)");
    for (const auto& entry : std::filesystem::directory_iterator(SOURCE_DIR "/platform")) {
        std::string text = ReadText(entry.path().string());
        text =
            std::regex_replace(text, std::regex(R"(/\*[\s\S]*?\*/|//[^\n]*|\btypedef[^;]*;)"), "");
        const std::string name = entry.path().filename();
        if (name == "trace_storage.h" || name == "call_table.h") {
            continue;  // C++: the exports of the one are mangled, the other has none
        }
        for (std::sregex_iterator match(text.begin(), text.end(), declaration), end; match != end;
             ++match) {
            names.push_back((*match)[1]);
        }
    }
    return names;
}

TEST_F(FaultsTest, EveryPlatformCallIsServedAndCanBeMadeToFail) {
    const auto declared = DeclaredFunctions();
    ASSERT_GT(declared.size(), 35u);
    const auto& known = vtv::PlatformFunctions();
    EXPECT_TRUE(std::is_sorted(known.begin(), known.end()));
    void* library = dlopen("libvirtual-tv.so", RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(library, nullptr) << dlerror();
    for (const std::string& name : declared) {
        EXPECT_NE(dlsym(library, name.c_str()), nullptr) << name << " is not served";
        EXPECT_TRUE(std::binary_search(known.begin(), known.end(), name))
            << name << " cannot be made to fail";
    }
    EXPECT_EQ(known.size(), declared.size() + 2)
        << "besides the platform's there are access and PrepareCallBuffer";
}

TEST(CallTable, EachHandleComesBackByOneCallAndNothingElseByAny) {
    using platform::Object;
    for (const Object object : {Object::NOTHING, Object::TEXT, Object::REQUEST, Object::BUNDLE,
                                Object::PACKAGE, Object::SPEECH, Object::CONTEXT}) {
        const bool isHandle = object == Object::REQUEST || object == Object::BUNDLE ||
                              object == Object::PACKAGE || object == Object::SPEECH;
        const auto ends = std::count_if(
            std::begin(platform::CALLS), std::end(platform::CALLS), [&](const auto& call) {
                return call.object == object && call.does == platform::Does::ENDS;
            });
        EXPECT_EQ(ends, isHandle ? 1 : 0) << platform::InWords(object);
    }
}

}  // namespace
