// A provider on a TV that fails, is told nonsense, or is another model.
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>

#include "contract_subject.h"
#include "supervised.h"
#include "virtual-tv/model/json_text.h"
#include "virtual-tv/model/known_settings.h"
#include "virtual-tv/model/policy.h"
#include "virtual-tv/virtual_tv.h"

namespace host {

namespace {

namespace fs = std::filesystem;

void Fail(vtv::Tv& tv, const std::string& function) {
    vtv::Fault fault;
    fault.function = function;
    fault.kind = vtv::Fault::Kind::kAlways;
    tv.SetFault(fault);
}

void FailAll(vtv::Tv& tv) {
    for (const std::string& function : vtv::PlatformFunctions()) {
        // Without a log there is nothing to see; a provider writes there all the time.
        if (function != "__dlog_print") {
            Fail(tv, function);
        }
    }
}

void Heal(vtv::Tv& tv) {
    for (const vtv::Fault& fault : tv.Faults()) {
        tv.ClearFault(fault.function);
    }
}

void SurvivesPlatformFailure(const std::string& file) {
    FailAll(*vtv::Current());
    const Provider provider(file);
    UsePage(provider);
}

void SurvivesEachFailingCall(const std::string& file) {
    vtv::Tv& tv = *vtv::Current();
    for (const std::string& function : vtv::PlatformFunctions()) {
        Doing("while " + function + "() fails");
        Fail(tv, function);
        {
            const Provider provider(file);
            UsePage(provider);
        }
        Heal(tv);
    }
}

void RecoversFromFailure(const std::string& file) {
    vtv::Tv& tv = *vtv::Current();
    const Provider provider(file);
    const Page before = LookAtPage(provider);
    FailAll(tv);
    LookAtPage(provider);
    Heal(tv);
    const Page after = LookAtPage(provider);
    for (const Item& item : PageItems()) {
        Require(before[item.name] == after[item.name],
                std::string(item.name) +
                    " stays otherwise when the platform's calls have failed and work again");
    }
}

void Guarded(const std::string& slot, const std::function<void()>& call) {
    try {
        call();
    } catch (const std::exception& error) {
        FailTask("an exception leaves " + slot + ": " + error.what());
    } catch (...) {
        FailTask("an exception leaves " + slot);
    }
}

void GuardEverySlot(const Subject& subject, const char* key) {
    Guarded("check_visibility_int()", [&] { subject.loaded.Entry().visibleInt(key, 0); });
    Guarded("check_enable_int()", [&] { subject.loaded.Entry().enabledInt(key, 0); });
    int number = 0;
    const Item* item = FindItem(key);
    if (item == nullptr || HasValue(*item)) {
        Guarded("get_int()", [&] { subject.table->get_int(key, &number); });
        Guarded("set_int()", [&] { subject.table->set_int(key, 1); });
    }
    Guarded("set_int() with 9999", [&] { subject.table->set_int(key, SI_ACTION_VALUE); });
    Guarded("get_list_items()", [&] { subject.table->get_list_items(key, &number); });
    char* text = nullptr;
    bool flag = false;
    Guarded("get_display_name()", [&] { subject.table->get_display_name(key, &text); });
    Guarded("get_help_text()", [&] { subject.table->get_help_text(key, &text); });
    Guarded("provider_property()", [&] { subject.table->provider_property(key, &text); });
    Guarded("get_disable_text()", [&] { subject.table->get_disable_text(key, &text, &flag); });
    BoxBuffers buffers;
    Guarded("a box slot", [&] { buffers.AskBox(subject, key); });
    Guarded("get_disablepopup_info()", [&] { buffers.AskPopup(subject, key); });
}

// Signed out with all else done: a popup's action then asks the platform for the sign-in screen.
void WaitForSignIn(vtv::Tv& tv) {
    tv.SetSignedIn(false);
    tv.Set(vtv::kFirstTimeKey, false);
}

void ExceptionsStayInside(const std::string& file) {
    vtv::Tv& tv = *vtv::Current();
    WaitForSignIn(tv);
    const Subject subject(file);
    std::vector<std::string> keys = StrangeKeys();
    for (const std::string& key : PageKeys()) {
        keys.push_back(key);
    }
    for (const std::string& function : {std::string(), std::string("vconf_get_str"),
                                        std::string("sso_get_account_ui_application_package_id")}) {
        if (!function.empty()) {
            Fail(tv, function);
        }
        for (const std::string& key : keys) {
            GuardEverySlot(subject, key.c_str());
        }
        Heal(tv);
    }
}

// By hand: some of these documents are none that could be written as values.
std::string Member(const std::string& name) {
    return '"' + name + "\":";
}

std::vector<std::string> StrangePolicies() {
    const std::string one = vtv::CompactJson(vtv::ToJson({1, "GVA", "a", "A", false}));
    const std::string order = Member(vtv::policy::kOrder);
    const std::string id = Member(vtv::policy::kId);
    const std::string name = Member(vtv::policy::kName);
    Json::Value strange;
    strange[vtv::policy::kOrder] = "one";
    strange[vtv::policy::kId] = 1;
    strange[vtv::policy::kAppId] = Json::Value(Json::arrayValue);
    strange[vtv::policy::kName] = Json::Value(Json::objectValue);
    return {"",
            "{",
            "null",
            "17",
            "\"text\"",
            "{}",
            "[]",
            "[[]]",
            "[null]",
            "[1,2,3]",
            R"({"VAList":[]})",
            "[{}]",
            "[{},{}]",
            "[" + one + "," + one + "]",
            "[" + vtv::CompactJson(strange) + ",{}]",
            "[{" + order + "0},{" + order + "-1}]",
            "[{" + order + "2147483647},{" + order + "-2147483648}]",
            "[{" + order + "99999999999999999999},{" + order + "1e300}]",
            "[{" + order + "5," + id + "\"GVA\"},{" + order + "900," + id + "\"SVA\"}]",
            "[" + one + ",{" + order + "2," + name + "\"" + std::string(100000, 'n') + "\"}]",
            "[" + one + ",{" + order + "2," + name + "\"\xff\xfe\"}]",
            std::string(5000, '[')};
}

void SurvivesStrangePolicies(const std::string& file) {
    vtv::Tv& tv = *vtv::Current();
    const Provider provider(file);
    for (const std::string& policy : StrangePolicies()) {
        Doing("with the policy " + QuotedKey(policy));
        tv.Set(vtv::kPolicyKey, policy);
        tv.Dispatch();
        UsePage(provider);
        const Provider another(file);
        UsePage(another);
    }
}

void SurvivesStrangeSettings(const std::string& file) {
    vtv::Tv& tv = *vtv::Current();
    const Provider provider(file);
    const std::vector<vtv::Value> strange = {false,
                                             -1,
                                             2147483647,
                                             std::string(),
                                             std::string("{"),
                                             std::string("[]"),
                                             std::string(R"({"state":[],"text":{}})"),
                                             std::string("%s%n\xff"),
                                             std::string(100000, 's')};
    for (const vtv::KnownSetting& setting : vtv::KnownSettings()) {
        const std::optional<vtv::Value> before = tv.Get(setting.key);
        for (const vtv::Value& value : strange) {
            Doing(std::string("with ") + setting.key + " = " + QuotedKey(vtv::ToText(value)));
            tv.Set(setting.key, value);
            tv.Dispatch();
            UsePage(provider);
        }
        if (before) {
            tv.Set(setting.key, *before);
        } else {
            tv.Unset(setting.key);
        }
        tv.Dispatch();
    }
}

// Another TV in place of the check's own, until it ends.
class OtherTv {
  public:
    OtherTv(const std::string& model, const std::string& folder) : before_(vtv::Current()) {
        vtv::Tv::Create(folder, model);
        tv_ = std::make_unique<vtv::Tv>(folder);
        tv_->SetApplications(vtv::ApplicationMode::kRecord);
        vtv::PowerOff();
        vtv::PowerOn(*tv_);
    }
    ~OtherTv() {
        vtv::PowerOff();
        vtv::PowerOn(*before_);
    }
    OtherTv(const OtherTv&) = delete;
    OtherTv& operator=(const OtherTv&) = delete;

  private:
    vtv::Tv* before_;
    std::unique_ptr<vtv::Tv> tv_;
};

void AnswersOnEveryModel(const std::string& file) {
    for (const std::string& model : vtv::ModelFiles()) {
        const std::string name = fs::path(model).stem().string();
        Doing("on the model " + name);
        const OtherTv tv(model, (fs::temp_directory_path() / name).string());
        const Provider provider(file);
        UsePage(provider);
    }
}

void QuestionsWriteNothing(const std::string& file) {
    vtv::Tv& tv = *vtv::Current();
    const Provider provider(file);
    tv.Dispatch();
    std::string written;
    tv.WatchAll([&written](const vtv::Change& change) { written = change.name; });
    for (const Item& item : PageItems()) {
        LookAt(provider, item);
        provider.Confirmation(item.key);
        provider.DisableText(item.key);
        provider.DisablePopup(item.key);
        tv.Dispatch();
        Require(written.empty(), std::string("asking about ") + item.name + " writes " + written);
        Require(tv.Launches().empty(),
                std::string("asking about ") + item.name + " starts an application");
    }
}

void PageIsSteady(const std::string& file) {
    const Provider provider(file);
    const Page first = LookAtPage(provider);
    for (int i = 0; i < 3; ++i) {
        const Page again = LookAtPage(provider);
        for (const Item& item : PageItems()) {
            Require(first[item.name] == again[item.name],
                    std::string(item.name) + " looks otherwise while nothing has changed");
        }
    }
}

void RulesAreNotLeaked(const std::string& file) {
    const Subject subject(file);
    for (const Item& item : PageItems()) {
        RequireNoGrowth(std::string(item.name) + ": the visibility and enable checks", [&] {
            subject.loaded.Entry().visibleInt(item.key, 0);
            subject.loaded.Entry().enabledInt(item.key, 0);
        });
    }
}

}  // namespace

std::vector<ContractCheck> PlatformChecks() {
    return {
        {"questions-write-nothing", "Asking changes no setting and starts no application.",
         QuestionsWriteNothing},
        {"page-is-steady", "The page stays the same while nothing changes.", PageIsSteady},
        {"rules-are-not-leaked", "Visibility and enable checks leave nothing behind on the heap.",
         RulesAreNotLeaked},
        {"survives-a-failing-platform",
         "With every platform call failing the page can be asked and pressed.",
         SurvivesPlatformFailure},
        {"survives-each-failing-call",
         "With any one platform call failing the page can be asked and pressed.",
         SurvivesEachFailingCall},
        {"recovers-from-a-failing-platform",
         "What failed is not remembered once the platform works again.", RecoversFromFailure},
        {"exceptions-stay-inside", "No exception leaves a slot or a check function.",
         ExceptionsStayInside},
        {"survives-strange-policies", "Any text can be published as the assistant policy.",
         SurvivesStrangePolicies},
        {"survives-strange-settings", "Any setting of the page can have any type and text.",
         SurvivesStrangeSettings},
        {"answers-on-every-model", "The page can be asked and pressed on every model of a TV.",
         AnswersOnEveryModel},
    };
}

}  // namespace host
