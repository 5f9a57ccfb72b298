#include "script_player.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <iostream>

#include "virtual-tv/model/error.h"

namespace window {

namespace {

constexpr double kLongestAwaited = 20;
constexpr double kLookAgain = 0.02;

}  // namespace

ScriptPlayer::ScriptPlayer(const std::string& file, Stage stage) : stage_(std::move(stage)) {
    next_.Start(0);
    if (file != "-") {
        for (KeyStep& step : ReadSteps(file)) {
            steps_.push_back(std::move(step));
        }
        return;
    }
    fcntl(STDIN_FILENO, F_SETFL, fcntl(STDIN_FILENO, F_GETFL) | O_NONBLOCK);
    input_ = ecore_main_fd_handler_add(
        STDIN_FILENO, ECORE_FD_READ,
        [](void* player, Ecore_Fd_Handler*) -> Eina_Bool {
            auto* self = static_cast<ScriptPlayer*>(player);
            bool more = false;
            self->Guarded([&] { more = self->ReadMore(); });
            if (!more) {
                self->input_ = nullptr;
            }
            self->next_.Start(0);
            return more ? ECORE_CALLBACK_RENEW : ECORE_CALLBACK_CANCEL;
        },
        this, nullptr, nullptr);
}

ScriptPlayer::~ScriptPlayer() {
    if (input_ != nullptr) {
        ecore_main_fd_handler_del(input_);
    }
}

// False at the end of the standard input.
bool ScriptPlayer::ReadMore() {
    char bytes[4096];
    const ssize_t count = read(STDIN_FILENO, bytes, sizeof bytes);
    if (count < 0) {
        return errno == EAGAIN || errno == EINTR;
    }
    unread_.append(bytes, static_cast<size_t>(count));
    if (count == 0) {
        unread_ += '\n';
    }
    for (size_t end = unread_.find('\n'); end != std::string::npos; end = unread_.find('\n')) {
        const std::string where = "standard input:" + std::to_string(++line_);
        for (KeyStep& step : ReadStep(unread_.substr(0, end), where)) {
            steps_.push_back(std::move(step));
        }
        unread_.erase(0, end + 1);
    }
    return count > 0;
}

void ScriptPlayer::Play() {
    while (!steps_.empty()) {
        const KeyStep step = steps_.front();
        if (!Take(step)) {
            return;
        }
    }
    if (input_ == nullptr) {
        stage_.ended();
    }
}

// False when the next one has to wait.
bool ScriptPlayer::Take(const KeyStep& step) {
    if (step.what == KeyStep::What::kUntil || step.what == KeyStep::What::kGone) {
        return Awaits(step);
    }
    steps_.pop_front();
    switch (step.what) {
        case KeyStep::What::kKey:
            stage_.press(step.text);
            break;
        case KeyStep::What::kShow:
            std::cout << stage_.seen() << std::endl;
            break;
        case KeyStep::What::kPicture:
            stage_.picture(step);
            break;
        case KeyStep::What::kWait:
            next_.Start(step.seconds);
            return false;
        case KeyStep::What::kUntil:
        case KeyStep::What::kGone:
            break;
    }
    return true;
}

// Looks again and again, for what is waited for may also come by time alone.
bool ScriptPlayer::Awaits(const KeyStep& step) {
    const std::string seen = stage_.seen();
    const bool isThere = seen.find(step.text) != std::string::npos;
    if (isThere == (step.what == KeyStep::What::kUntil)) {
        awaited_ = 0;
        steps_.pop_front();
        return true;
    }
    awaited_ += kLookAgain;
    if (awaited_ > kLongestAwaited) {
        throw vtv::Error(vtv::ErrorKind::kNo, step.where + ": \"" + step.text + "\" was " +
                                                  (isThere ? "still" : "never") +
                                                  " seen; what was seen last:\n" + seen);
    }
    next_.Start(kLookAgain);
    return false;
}

}  // namespace window
