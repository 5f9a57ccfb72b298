// A timer of the toolkit's loop that is set again and again.
#pragma once

#include <Ecore.h>

#include <functional>
#include <utility>

namespace window {

class Timer {
  public:
    explicit Timer(std::function<void()> ends) : ends_(std::move(ends)) {}
    ~Timer() { Stop(); }
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    void Start(double seconds) {
        Stop();
        timer_ = ecore_timer_add(seconds, &End, this);
    }
    void Stop() {
        if (timer_ != nullptr) {
            ecore_timer_del(timer_);
            timer_ = nullptr;
        }
    }

  private:
    static Eina_Bool End(void* timer) {
        auto* self = static_cast<Timer*>(timer);
        self->timer_ = nullptr;
        self->ends_();
        return ECORE_CALLBACK_CANCEL;
    }

    std::function<void()> ends_;
    Ecore_Timer* timer_ = nullptr;
};

}  // namespace window
