// The dull model of the page is asked what the provider is asked, on every path that the explorer
// visits: an answer that only one of them gives is a fault of one of them.
//
// What a path did not read must not matter, so that the model is asked twice: once with the usual
// value of everything else, once with others.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>

#include "explorer/asking/exploration.h"
#include "explorer/engine/bytes.h"
#include "explorer/engine/workers.h"
#include "explorer/tv/lazy_tv.h"
#include "explorer/tv/state.h"
#include "model/page_behaviour.h"
#include "model_states.h"

using explorer::Question;
using explorer::tv;
using model::Item;
using model::State;
using Lines = std::vector<std::string>;

namespace {

// ---------------------------------------------------------------------------------------------
// The model asked, in the words of the explorer's records
// ---------------------------------------------------------------------------------------------

std::string Text(const std::string& what, const std::string& text) {
    return what + ": \"" + text + '"';
}

// Items are numbered alike on both sides.
Item ItemOf(const Question& question) {
    return question.item == nullptr ? Item::COUNT
                                    : static_cast<Item>(question.item - vtv::PageItems().data());
}

Lines YesNo(bool answer, const char* yes, const char* no) {
    return {answer ? yes : no};
}

Lines OptionalText(const char* what, const Question& question, const std::string& text) {
    return {question.item == nullptr ? std::string(what) + ": none" : Text(what, text)};
}

Lines Value(const State& state, const Question& question) {
    const std::optional<int> value = model::ValueOf(state, ItemOf(question));
    return {value ? "value: " + std::to_string(*value) : "no value"};
}

Lines Choices(const model::Choices& choices) {
    Lines lines;
    for (const auto& [value, text] : choices) {
        lines.push_back(Text("choice " + std::to_string(value), text));
    }
    return lines.empty() ? Lines{"no choices"} : lines;
}

Lines Confirmation(const Question& question) {
    const std::optional<model::Box> box = model::ConfirmationOf(ItemOf(question));
    if (!box) {
        return {"buttons: 0"};
    }
    return {"buttons: 2", Text("title", box->title), Text("text", box->message),
            Text("first", box->first), Text("second", box->second)};
}

Lines Reason(const State& state, const Question& question) {
    const model::Reason reason = model::ReasonOf(state, ItemOf(question));
    return {reason.shown ? "shown: yes" : "shown: no",
            reason.text ? Text("reason", *reason.text) : "reason: none"};
}

Lines Popup(const State& state, const Question& question) {
    Item item = ItemOf(question);
    if (question.key.find("orvik-terms") != std::string::npos) {
        item = Item::ORVIK;
    } else if (question.key.find("tencent-more") != std::string::npos) {
        item = Item::TENCENT;
    }
    const std::optional<model::Box> box = model::PopupOf(state, item);
    if (!box) {
        return {"buttons: 0"};
    }
    Lines lines = {box->second.empty() ? "buttons: 1" : "buttons: 2", Text("title", box->title),
                   Text("message", box->message), Text("first", box->first)};
    if (!box->second.empty()) {
        lines.push_back(Text("second", box->second));
    }
    lines.push_back(Text("action", "9999"));
    return lines;
}

Lines Write(const State& state, const Question& question) {
    State after = state;
    return model::Write(after, ItemOf(question), question.value);
}

Lines Press(const State& state) {
    bool fails = false;
    Lines lines = model::PressPopup(state, fails);
    if (fails) {
        lines.emplace_back("an exception is caught and logged");
    }
    return lines;
}

Lines PassThrough(const State& state, bool on) {
    Lines lines = model::SwitchPassThrough(on);
    lines.emplace_back(state.takesPassThrough ? "true" : "false");
    return lines;
}

Lines OtherTypes() {
    return {"check_visibility_bool: 1", "check_visibility_double: 1", "check_visibility_string: 1",
            "check_enable_bool: 1",     "check_enable_double: 1",     "check_enable_string: 1"};
}

Lines Properties() {
    return {Text("provider/owner", "voice"), Text("provider/main-component", "TP_VoiceInteraction"),
            Text("provider/sub-component", "TP_VoiceSettings"), "provider/none: none"};
}

Lines Bool(bool answer) {
    return YesNo(answer, "true", "false");
}

struct Asker {
    const char* question;  // the beginning of its name
    Lines (*ask)(const State& state, const Question& question);
};

#define ASK(expression)                              \
    [](const State& s, const Question& q) -> Lines { \
        static_cast<void>(s);                        \
        static_cast<void>(q);                        \
        return expression;                           \
    }

constexpr Asker ASKERS[] = {
    {"visible:", ASK(YesNo(model::IsShown(s, ItemOf(q)), "visible", "hidden"))},
    {"enabled:", ASK(YesNo(model::CanBeSelected(s, ItemOf(q)), "enabled", "dimmed"))},
    {"title:", ASK(OptionalText("title", q, model::TitleOf(s, ItemOf(q))))},
    {"help:", ASK(OptionalText("help", q, model::HelpOf(s, ItemOf(q))))},
    {"value:", ASK(Value(s, q))},
    {"choices:", ASK(Choices(model::ChoicesOf(s, ItemOf(q))))},
    {"confirmation:", ASK(Confirmation(q))},
    {"reason:", ASK(Reason(s, q))},
    {"popup:", ASK(Popup(s, q))},
    {"set:", ASK(Write(s, q))},
    {"press:", ASK(Press(s))},
    {"other-types:", ASK(OtherTypes())},
    {"properties:", ASK(Properties())},
    {"function:LaunchOnboarding", ASK(model::LaunchOnboarding(s))},
    {"function:showVAChangingNoticePopup", ASK(model::NoticeOfChange(s))},
    {"function:get_list_items_voice_wake_up", ASK(Choices(model::WakeUpChoices(s)))},
    {"function:MVAList::IsVoiceDisabledByVAPolicy", ASK(Bool(model::DisabledByPolicy(s)))},
    {"function:MVAList::IsCurrentVASetupComplete", ASK(Bool(model::CurrentIsSetUp(s)))},
    {"function:MVAList::IsCurrentVASupportFF", ASK(Bool(model::CurrentHasFarField(s)))},
    {"function:MVAList::IsCurrentVAOrvik", ASK(Bool(model::CurrentIsOrvik(s)))},
    {"function:CSIMenuUtil::FlagLFDProductModel", ASK(Bool(model::SignageTv(s)))},
    {"function:CSIMenuUtil::IsPassthruDimmed", ASK(Bool(model::PassThroughDimmed(s)))},
    {"function:CSIMenuUtil::IsTncPPAgreed", ASK(Bool(model::TermsAgreed(s)))},
    {"function:CSIMenuUtil::IsMenuLanguageSupportTTS", ASK(Bool(model::MenuLanguageIsSpoken(s)))},
    {"function:CSIMenuUtil::GetPassthruDimmedToastPopUpString",
     ASK({Text("text", model::PassThroughText(s))})},
    {"function:CSIMenuUtil::GetDeviceSID", ASK({Text("text", model::DeviceKind(s))})},
    {"function:CSIMenuUtil::GetTextTVScreenOrPJT",
     ASK({Text("text", model::TextForDevice(s, "TEXT_TV", "TEXT_SCREEN", "TEXT_OTHER"))})},
    {"function:CSIMenuUtil::GetCountryCode", ASK({Text("text", s.country.value_or(""))})},
    {"function:CSIMenuUtil::setPassthruEnabled", ASK(PassThrough(s, q.value == 1))},
    {"function:CSIMenuUtil::SetVoiceGuideOnOff", ASK(model::SwitchVoiceGuide(q.value == 1))},
    {"function:CSIMenuUtil::RefreshMenu", ASK({"writes db/menu/refresh_menu = int 1"})},
    {"function:CSIMenuUtil::ShowPopup", ASK(model::ShowPopup(s, "Hello"))},
};

const Asker* AskerOf(const Question& question) {
    for (const Asker& asker : ASKERS) {
        if (question.name.rfind(asker.question, 0) == 0) {
            return &asker;
        }
    }
    return nullptr;
}

// ---------------------------------------------------------------------------------------------
// Both asked
// ---------------------------------------------------------------------------------------------

struct Agreement {
    std::uint64_t paths = 0;
    std::uint64_t differing = 0;
    Lines differences;  // some of them, for people

    template <typename Bytes>
    void Members(Bytes& bytes) {
        bytes(paths, differing, differences);
    }
};

std::string Joined(const Lines& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += "\n    " + line;
    }
    return text;
}

class PolicyAgreement {
  public:
    PolicyAgreement(const explorer::Inputs& inputs, const std::string& provider, int policy,
                    explorer::Shared& shared)
        : inputs_(inputs),
          policy_(policy),
          shared_(shared),
          subject_(provider, Published()),
          values_(inputs.inputs.size()),
          texts_(inputs.inputs.size()) {}

    Agreement Compare(const std::vector<const Question*>& questions) {
        for (std::size_t i = 0; i < questions.size(); ++i) {
            const Question& question = *questions[i];
            const Asker* asker = AskerOf(question);
            if (asker == nullptr) {
                Note("the model is not asked for " + question.name);
                continue;
            }
            // Another filling for each question and policy, so that every value has its turn.
            const int filling = 1 + (static_cast<int>(i) + policy_) % 12;
            StateFiller usual(inputs_, Published(), 0);
            StateFiller other(inputs_, Published(), filling);
            explorer::ForEachPath(
                shared_.choices, shared_.runs, [&] { explorer::Ask(subject_, question); },
                [&] {
                    TakePath();
                    ++agreement_.paths;
                    Compare(question, asker->ask(usual.At(values_, texts_), question), "usual");
                    Compare(question, asker->ask(other.At(values_, texts_), question), "other");
                });
        }
        return agreement_;
    }

  private:
    const explorer::Policy& Published() const {
        return inputs_.policies[static_cast<std::size_t>(policy_)];
    }

    void TakePath() {
        std::fill(values_.begin(), values_.end(), -1);
        for (std::size_t i = 0; i < shared_.choices.Depth(); ++i) {
            const explorer::Decision& decision = shared_.choices.Path()[i];
            values_[decision.input] = decision.value;
            texts_[decision.input] = tv().FirstText(decision.input);
        }
        if (tv().Record() == record_) {
            return;
        }
        record_ = tv().Record();
        lines_.clear();
        for (const explorer::RecordEntry& entry : explorer::ReadRecord(record_)) {
            lines_.push_back(explorer::ToText(entry));
        }
    }

    void Compare(const Question& question, const Lines& expected, const char* filling) {
        if (expected == lines_) {
            return;
        }
        ++agreement_.differing;
        if (agreement_.differences.size() < 3) {
            const explorer::State state = explorer::CurrentState(policy_, shared_.choices);
            Note(question.name + ", everything else " + filling +
                 ":\n  the state:" + Joined(explorer::Describe(inputs_, state)) +
                 "\n  the provider:" + Joined(lines_) + "\n  the model:" + Joined(expected));
        }
    }

    void Note(const std::string& text) { agreement_.differences.push_back(text); }

    const explorer::Inputs& inputs_;
    const int policy_;
    explorer::Shared& shared_;
    const explorer::Subject subject_;
    Agreement agreement_;
    std::vector<int> values_;
    Lines texts_;
    std::string record_;
    Lines lines_;
};

// Over all policies, in processes of their own.
Agreement CompareWithModel(const std::string& provider,
                           const std::vector<const Question*>& questions) {
    const explorer::Inputs inputs = explorer::LoadInputs(explorer::InputsFile());
    Agreement whole;
    explorer::WorkOptions options;
    options.progress = false;
    explorer::Work(
        static_cast<int>(inputs.policies.size()), options,
        [&](int policy, explorer::Shared& shared) {
            tv().Use(inputs);
            return explorer::ToBytes(
                PolicyAgreement(inputs, provider, policy, shared).Compare(questions));
        },
        [&](const explorer::WorkerResult& result) {
            if (!result.trouble.empty()) {
                whole.differences.push_back(result.trouble);
                return false;
            }
            const auto part = explorer::BytesReader(result.bytes).Next<Agreement>();
            whole.paths += part.paths;
            whole.differing += part.differing;
            whole.differences.insert(whole.differences.end(), part.differences.begin(),
                                     part.differences.end());
            return false;
        });
    return whole;
}

std::vector<const Question*> AllQuestions() {
    std::vector<const Question*> questions;
    for (const Question& question : explorer::Questions()) {
        questions.push_back(&question);
    }
    return questions;
}

}  // namespace

TEST(ModelAgreement, TheModelKnowsEveryInput) {
    const explorer::Inputs inputs = explorer::LoadInputs(explorer::InputsFile());
    EXPECT_EQ(StateFiller(inputs, inputs.policies.front(), 0).Unknown(), Lines());
}

TEST(ModelAgreement, TheProviderAnswersAsTheModelOnEveryPath) {
    const Agreement agreement = CompareWithModel(PROVIDER_FILE, AllQuestions());
    EXPECT_EQ(agreement.differing, 0U);
    for (const std::string& difference : agreement.differences) {
        ADD_FAILURE() << difference;
    }
    EXPECT_GT(agreement.paths, 400000U);
    RecordProperty("paths", std::to_string(agreement.paths));
    std::printf("%llu paths agree with the model\n",
                static_cast<unsigned long long>(agreement.paths));
}

TEST(ModelAgreement, AProviderWithAFaultDisagrees) {
    const Agreement agreement =
        CompareWithModel(BROKEN_BOTH_ENTRIES, explorer::SelectQuestions("visible"));
    EXPECT_GT(agreement.differing, 0U);
    ASSERT_FALSE(agreement.differences.empty());
    EXPECT_NE(agreement.differences.front().find("visible:onboarding"), std::string::npos)
        << agreement.differences.front();
}
