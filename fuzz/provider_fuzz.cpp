// Whatever a TV is like, however its platform answers or fails, wherever a watch or the end of
// memory interrupts, and in whatever order it is asked: the provider does not crash, throws nothing
// but what its header says, gives back all that it was handed, and its lists have no gaps. The
// input is what happens, step by step, on the recording platform.
//
//     cmake --preset fuzz && cmake --build --preset fuzz
//     scripts/fuzz provider --seconds 60

#include <exception>

#include "allocation_faults.h"
#include "host_calls.h"
#include "promises.h"
#include "recording_platform.h"
#include "si-ready/src/MVAList.h"
#include "si-ready/src/SIMenuUtil.h"
#include "tv_inputs.h"
#include "virtual-tv/model/keys.h"

namespace {

constexpr int MOST_STEPS = 200;

class Run {
  public:
    explicit Run(FuzzedDataProvider& bytes) : bytes_(bytes) {
        recording::Reset();
        recording::SetRecording(bytes_.ConsumeBool());
        recording::SetTracing(bytes_.ConsumeBool());
        recording::tv().settings[vtv::kPolicyKey] = fuzz::PolicyText(bytes_);
        fuzz::MakeReady(bytes_.PickValueInArray(
            {fuzz::NOT_READY, fuzz::FAR_FIELD, fuzz::NEW_IN_CHINA, fuzz::PASS_THROUGH}));
        for (int left = bytes_.ConsumeIntegralInRange(0, 40); left > 0; --left) {
            fuzz::ChangeTv(bytes_);
        }
        fuzz::Require(create_provider(&slots_) == 0 && slots_ != nullptr, "there is a table");
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    void Step() {
        switch (bytes_.ConsumeIntegralInRange(0, 15)) {
            case 0:
                return recording::Publish(vtv::kPolicyKey, fuzz::PolicyText(bytes_));
            case 1:
                return Disturb();
            case 2:
                return recording::ClearFaults();
            case 3:
                return StartAgain();
            case 4:
            case 5:
            case 6:
                return fuzz::ChangeTv(bytes_);
            case 7:
            case 8:
                return fuzz::AskAsProgram(bytes_);
            case 9:
            case 10:
                return fuzz::ShowItem(bytes_, Page());
            default:
                return Ask();
        }
    }

    ~Run() {
        recording::DisarmAllocationFaults();
        recording::ClearFaults();
        fuzz::Require(delete_provider(&slots_) == 0, "a table can be given back");
        for (const std::string& debt : recording::Debts()) {
            fuzz::Require(false, debt.c_str());
        }
        CSIMenuUtil::m_listTTSLanguage.clear();
        recording::Reset();
    }

  private:
    const SIProviderTable& Page() const { return *reinterpret_cast<SIProviderTable*>(slots_); }

    void Ask() {
        fuzz::AskAsHost(bytes_, Page());
        recording::DisarmAllocationFaults();
    }

    // A call of the platform fails, or is interrupted; or memory runs out in the next question.
    void Disturb() {
        const int nth = bytes_.ConsumeIntegralInRange(1, 30);
        const int count = bytes_.ConsumeBool() ? 1 : recording::FOREVER;
        switch (bytes_.ConsumeIntegralInRange(0, 2)) {
            case 0:
                return recording::FailAny(nth, count, bytes_.ConsumeBool() ? -1 : -22);
            case 1:
                return recording::InterruptCall(nth, [policy = fuzz::PolicyText(bytes_)] {
                    recording::Publish(vtv::kPolicyKey, policy);
                });
            default:
                recording::ArmAllocationFaults(nth, count == 1 ? 1 : recording::EVERY_FOLLOWING);
                return Ask();
        }
    }

    void StartAgain() {
        void** second = nullptr;
        create_provider(bytes_.ConsumeBool() ? &second : nullptr);
        fuzz::Require(delete_provider(nullptr) == 1, "no table is none to give back");
        if (bytes_.ConsumeBool()) {
            try {
                MVAList::Initialize();
            } catch (const std::exception&) {  // for a policy of another shape
            }
            MVAList::Finalize();
        }
        if (second != nullptr) {
            delete_provider(&second);
        }
    }

    FuzzedDataProvider& bytes_;
    void** slots_ = nullptr;
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    fuzz::Require(recording::AllocationFaultsWork(), "memory runs out when it is told to");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider bytes(data, size);
    Run run(bytes);
    for (int step = 0; step < MOST_STEPS && bytes.remaining_bytes() > 0; ++step) {
        run.Step();
    }
    return 0;
}
