#include "watcher.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <fstream>

#include "folder_names.h"
#include "store.h"
#include "virtual-tv/model/error.h"

namespace vtv {

namespace {

// What several did, each whether or not one before it threw.
class EachOf {
  public:
    template <typename Act>
    void Try(Act act) {
        try {
            act();
        } catch (...) {
            first_ = first_ ? first_ : std::current_exception();
        }
    }
    // Throws what the first threw.
    void Rethrow() const {
        if (first_) {
            std::rethrow_exception(first_);
        }
    }

  private:
    std::exception_ptr first_;
};

std::string SettingOf(const std::string& name) {
    std::string value;
    std::getline(std::ifstream("/proc/sys/fs/inotify/" + name), value);
    return "fs.inotify." + name + (value.empty() ? "" : " (" + value + " now)");
}

[[noreturn]] void FailToWatch(const std::string& what, int error) {
    std::string text = what + ": changes cannot be watched: " + std::strerror(error) + ".";
    if (error == EMFILE || error == ENOSPC) {
        const char* const name = error == EMFILE ? "max_user_instances" : "max_user_watches";
        text += " Other programs of yours watch as much as " + SettingOf(name) +
                " allows: end some, or raise it: sysctl -w fs.inotify." + name + "=N";
    }
    throw MachineFailed(ErrorKind::kPlatform, text);
}

void AddToEpoll(int epoll, int fd) {
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = fd;
    if (epoll_ctl(epoll, EPOLL_CTL_ADD, fd, &event) != 0) {
        FailToWatch("epoll", errno);
    }
}

int AddTo(int inotify, const std::string& dir, uint32_t mask) {
    // The kernel merges an event with the one before it when they are alike, so that two writes of
    // a key in a row would be told as one. A rename is also the leaving of a temporary name, which
    // is another each time: asked for as well, it keeps them apart.
    const uint32_t apart = (mask & IN_MOVED_TO) != 0 ? IN_MOVED_FROM : 0;
    // Several watches of one folder share a descriptor; its mask is the union of theirs.
    return inotify_add_watch(inotify, dir.c_str(),
                             mask | apart | IN_ONLYDIR | IN_DONT_FOLLOW | IN_MASK_ADD);
}

}  // namespace

Watcher::Watcher() {
    inotify_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    if (inotify_ < 0) {
        FailToWatch("inotify", errno);
    }
    wake_ = eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
    epoll_ = epoll_create1(EPOLL_CLOEXEC);
    if (wake_ < 0 || epoll_ < 0) {
        FailToWatch("epoll", errno);
    }
    AddToEpoll(epoll_, inotify_);
    AddToEpoll(epoll_, wake_);
}

Watcher::~Watcher() {
    for (const int fd : {inotify_, wake_, epoll_}) {
        if (fd >= 0) {
            close(fd);
        }
    }
}

Watcher::Id Watcher::Watch(const std::string& dir, uint32_t mask, const std::string& fileName,
                           Callback callback) {
    const int wd = AddTo(inotify_, dir, mask);
    if (wd < 0) {
        FailToWatch(dir, errno);
    }
    // What has happened so far gets its numbers before this subscription gets its own.
    Drain();
    auto subscription = std::make_shared<Subscription>();
    subscription->id = nextId_++;
    subscription->dir = dir;
    subscription->wd = wd;
    subscription->mask = mask;
    subscription->fileName = fileName;
    subscription->callback = std::move(callback);
    subscription->since = nextEvent_;
    subscription->told = Stamps(*subscription);
    subscriptions_.push_back(subscription);
    Wake(!pending_.empty());
    return subscription->id;
}

void Watcher::Unwatch(Id id) {
    const auto found = std::find_if(subscriptions_.begin(), subscriptions_.end(),
                                    [id](const auto& s) { return s->id == id; });
    if (found == subscriptions_.end()) {
        return;
    }
    const int wd = (*found)->wd;
    (*found)->alive = false;  // a delivery that is under way still holds it
    subscriptions_.erase(found);
    Release(wd);
}

void Watcher::Release(int wd) {
    const bool needed = std::any_of(subscriptions_.begin(), subscriptions_.end(),
                                    [wd](const auto& s) { return s->wd == wd; });
    if (!needed && wd >= 0) {
        inotify_rm_watch(inotify_, wd);
    }
}

void Watcher::Follow(const std::string& dir) {
    EachOf followed;
    const auto subscriptions = subscriptions_;  // a callback may add and remove some
    for (const auto& subscription : subscriptions) {
        if (subscription->alive && subscription->dir == dir) {
            followed.Try([&] { FollowOne(subscription); });
        }
    }
    Wake(!pending_.empty());
    followed.Rethrow();
}

void Watcher::FollowOne(const std::shared_ptr<Subscription>& subscription) {
    // Whoever copies a folder writes its files where they lie.
    const uint32_t mask = subscription->mask | IN_CLOSE_WRITE;
    const int wd = AddTo(inotify_, subscription->dir, mask);
    if (wd < 0 && errno != ENOENT && errno != ENOTDIR) {
        FailToWatch(subscription->dir, errno);
    }
    if (wd < 0 || wd == subscription->wd) {
        return;  // gone again, or the one that is watched
    }
    const int before = subscription->wd;
    subscription->wd = wd;
    subscription->mask = mask;
    Release(before);
    Rescan(subscription);
}

void Watcher::Drain() {
    alignas(inotify_event) char buffer[64 * 1024];
    for (;;) {
        const ssize_t size = read(inotify_, buffer, sizeof buffer);
        if (size < 0 && errno == EINTR) {
            continue;
        }
        if (size <= 0) {
            return;
        }
        for (ssize_t at = 0; at < size;) {
            inotify_event event;
            std::memcpy(&event, buffer + at, sizeof event);
            const char* name = event.len > 0 ? buffer + at + sizeof event : "";
            if ((event.mask & IN_Q_OVERFLOW) != 0) {
                pending_.push_back({nextEvent_++, -1, 0, ""});
            } else {
                pending_.push_back({nextEvent_++, event.wd, event.mask, name});
            }
            at += static_cast<ssize_t>(sizeof event + event.len);
        }
    }
}

void Watcher::Wake(bool pending) {
    uint64_t count = 1;
    // Both fail only in the state that they are to bring about.
    const ssize_t size =
        pending ? write(wake_, &count, sizeof count) : read(wake_, &count, sizeof count);
    static_cast<void>(size);
}

int Watcher::Dispatch() {
    if (dispatching_) {
        return 0;  // called from a callback: the outer call goes on with what is left
    }
    dispatching_ = true;
    Drain();
    // Only what has happened so far: a callback that writes what it watches must not keep us here.
    const uint64_t end = nextEvent_;
    int calls = 0;
    while (!pending_.empty() && pending_.front().number < end) {
        const Event event = std::move(pending_.front());
        pending_.pop_front();
        try {
            calls += Deliver(event);
        } catch (...) {
            dispatching_ = false;
            Wake(!pending_.empty());
            throw;
        }
    }
    dispatching_ = false;
    Wake(!pending_.empty());
    return calls;
}

int Watcher::Deliver(const Event& event) {
    if ((event.mask & IN_IGNORED) != 0) {  // the folder is gone
        for (const auto& subscription : subscriptions_) {
            subscription->wd = subscription->wd == event.wd ? -1 : subscription->wd;
        }
        return 0;
    }
    int calls = 0;
    EachOf told;
    const auto subscriptions = subscriptions_;  // a callback may add and remove some
    for (const auto& subscription : subscriptions) {
        if (!subscription->alive || event.number < subscription->since) {
            continue;
        }
        told.Try([&] {
            calls += event.wd == -1                   ? Rescan(subscription)
                     : Concerns(event, *subscription) ? Call(*subscription, event.name)
                                                      : 0;
        });
    }
    told.Rethrow();
    return calls;
}

bool Watcher::Concerns(const Event& event, const Subscription& subscription) const {
    if (event.wd != subscription.wd || (event.mask & subscription.mask) == 0 ||
        (!subscription.fileName.empty() && subscription.fileName != event.name)) {
        return false;
    }
    if (event.number >= subscription.rescanned) {
        return true;
    }
    // It stood behind the overflow in the queue, and what it tells may be told already.
    const auto told = subscription.told.find(event.name);
    return told == subscription.told.end() ||
           told->second != StampOf(subscription.dir + "/" + event.name);
}

int Watcher::Call(Subscription& subscription, const std::string& name) {
    // Before the callback reads: what is written from now on has yet to be told.
    subscription.told[name] = StampOf(subscription.dir + "/" + name);
    subscription.callback(name);
    return 1;
}

// The kernel has dropped events: tells of every file that is another than when it was last told of.
int Watcher::Rescan(const std::shared_ptr<Subscription>& subscription) {
    int calls = 0;
    std::map<std::string, Stamp> now = Stamps(*subscription);
    Drain();
    subscription->rescanned = nextEvent_;
    EachOf called;
    for (const auto& [name, stamp] : subscription->told) {
        now.try_emplace(name, Stamp());  // gone since
    }
    for (const auto& [name, stamp] : now) {
        const auto told = subscription->told.find(name);
        if (!subscription->alive || (told != subscription->told.end() && told->second == stamp)) {
            continue;
        }
        called.Try([&] { calls += Call(*subscription, name); });
    }
    called.Rethrow();
    return calls;
}

std::map<std::string, Watcher::Stamp> Watcher::Stamps(const Subscription& subscription) const {
    std::map<std::string, Stamp> stamps;
    const std::string& folder = subscription.dir;
    if (!subscription.fileName.empty()) {
        stamps[subscription.fileName] = StampOf(folder + "/" + subscription.fileName);
        return stamps;
    }
    for (const std::string& name : NamesIn(folder)) {
        stamps[name] = StampOf(folder + "/" + name);
    }
    return stamps;
}

Watcher::Stamp Watcher::StampOf(const std::string& path) {
    struct stat info;
    if (lstat(path.c_str(), &info) != 0) {
        return Stamp();
    }
    return {info.st_ino, int64_t{info.st_ctim.tv_sec} * 1000000000 + info.st_ctim.tv_nsec};
}

}  // namespace vtv
