// Playing scenarios: each on a TV of its own, step by step.
#include <chrono>

#include "scenario_steps.h"
#include "virtual_tv_events.h"

namespace host {

namespace {

// Asks the provider itself.
class AskingUser : public PageUser {
  public:
    AskingUser(vtv::Tv& tv, const Provider& provider) : provider_(provider), events_(tv) {}

    PressResult Press(const host::Press& press) override {
        return Viewer(provider_, events_).PressItem(press);
    }
    void Hand(const Item& item, int value) override { provider_.SetInt(item.key, value); }
    Page Look() override { return LookAtPage(provider_); }

  private:
    const Provider& provider_;
    VirtualTvEvents events_;
};

class Player {
  public:
    Player(std::string file, vtv::Tv& tv, const Provider& provider, PageUser& user)
        : file_(std::move(file)), tv_(tv), provider_(provider), user_(user) {}

    // What went wrong or is not met: "FILE:LINE: ...".
    std::vector<std::string> Play(const ScenarioStep& step) {
        StepOutcome outcome;
        outcome.provider = &provider_;
        outcome.tv = &tv_;
        outcome.launchMark = tv_.LaunchMark();
        outcome.logBefore = tv_.ReadLog().size();
        outcome.traceBefore = tv_.ReadTrace().size();
        outcome.line = line_ = step.line;
        try {
            Play(step.changes, &outcome);
            Play(step.uses, &outcome);
            line_ = step.line;
            outcome.page = user_.Look();
            Judge judge(file_, outcome);
            for (const Expectation& expectation : step.expectations) {
                expectation(judge);
            }
            return judge.Failures();
        } catch (const vtv::Error& error) {
            // What the machine did not do proves nothing of the page.
            if (error.kind() == vtv::ErrorKind::kPlatform) {
                throw vtv::Error(error.kind(), Told(error));
            }
            return {Told(error)};
        } catch (const MeaninglessPress& error) {
            return {Told(error)};
        }
    }

  private:
    std::string Told(const std::exception& error) const {
        return file_ + ":" + std::to_string(line_) + ": " + error.what();
    }

    void Play(const std::vector<Action>& actions, StepOutcome* outcome) {
        for (const Action& action : actions) {
            line_ = action.line;
            action.play({tv_, provider_, user_, *outcome});
        }
        while (tv_.Dispatch() > 0) {
        }
        outcome->AddFailures(tv_.TakeFailures());
    }

    std::string file_;
    vtv::Tv& tv_;
    const Provider& provider_;
    PageUser& user_;
    int line_ = 0;  // of what is under way
};

// The TV is on, and its provider loaded, for as long as a scenario plays.
class Stage {
  public:
    Stage(const std::string& dir, const std::string& providerFile)
        : tv(dir), power_(tv), provider(providerFile) {}

    vtv::Tv tv;

  private:
    struct Power {
        explicit Power(vtv::Tv& tv) { vtv::PowerOn(tv); }
        ~Power() { vtv::PowerOff(); }
    } power_;

  public:
    Provider provider;
};

void EndApplications(vtv::Tv& tv) {
    for (const vtv::RunningApplication& running : tv.RunningApplications()) {
        try {
            tv.CancelApplication(running.appId);
        } catch (const vtv::Error& error) {
            // It has ended by itself, or with another one of its name, as notifications do.
            if (error.kind() != vtv::ErrorKind::kNoSuch) {
                throw;
            }
        }
    }
}

}  // namespace

ScenarioResult PlayScenario(const Scenario& scenario, const std::string& providerFile,
                            const std::string& tvDir, const std::function<bool()>& goOn,
                            const HirePageUser& hire) {
    ScenarioResult result = Unplayed(scenario);
    vtv::Tv::Create(tvDir, scenario.model);
    Stage stage(tvDir, providerFile);
    const std::unique_ptr<PageUser> user =
        hire ? hire(stage.tv, stage.provider)
             : std::make_unique<AskingUser>(stage.tv, stage.provider);
    Player player(scenario.file, stage.tv, stage.provider, *user);
    for (size_t i = 0; i < result.steps.size() && goOn(); ++i) {
        StepResult& step = result.steps[i];
        const auto start = std::chrono::steady_clock::now();
        step.played = true;
        step.failures = player.Play((*scenario.steps)[i]);
        step.beside = user->TakeBeside();
        step.seconds =
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        if (!step.failures.empty()) {
            break;
        }
    }
    EndApplications(stage.tv);
    return result;
}

}  // namespace host
