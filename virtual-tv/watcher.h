// Tells what is written in some folders, on the main loop of the process that asks: a file
// descriptor to wait for and a Dispatch() that calls back. One inotify descriptor whatever is
// watched.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vtv {

class Watcher {
  public:
    using Id = int;
    using Callback = std::function<void(const std::string& fileName)>;

    Watcher();
    ~Watcher();
    Watcher(const Watcher&) = delete;
    Watcher& operator=(const Watcher&) = delete;

    // mask: inotify's. fileName empty: every file of the folder. A callback hears of what happens
    // after it was registered, and of nothing before. What it throws leaves Dispatch() once the
    // others have heard of the same. The folder's end ends the watch, until Follow().
    Id Watch(const std::string& dir, uint32_t mask, const std::string& fileName, Callback callback);
    void Unwatch(Id id);
    // Another folder may have come to lie where one is watched: from now on that one is, and all is
    // told that differs from what was told last. What a callback throws leaves it once all follow.
    void Follow(const std::string& dir);

    int Fd() const { return epoll_; }
    int Dispatch();

  private:
    // What a file was when it was last told of: a rename brings a new inode, so that this differs
    // after every write, also of the same value.
    struct Stamp {
        ino_t inode = 0;
        int64_t changed = 0;
        bool operator==(const Stamp& other) const {
            return inode == other.inode && changed == other.changed;
        }
        bool operator!=(const Stamp& other) const { return !(*this == other); }
    };
    struct Subscription {
        Id id;
        std::string dir;
        int wd;  // -1: the folder is gone
        uint32_t mask;
        std::string fileName;
        Callback callback;
        uint64_t since;  // number of the first event that it hears of
        std::map<std::string, Stamp> told;
        uint64_t rescanned = 0;  // what the kernel told before that may be told already
        bool alive = true;
    };
    struct Event {
        uint64_t number;
        int wd;  // -1: the kernel's queue overflowed
        uint32_t mask;
        std::string name;
    };

    void Drain();
    void Wake(bool pending);
    int Deliver(const Event& event);
    bool Concerns(const Event& event, const Subscription& subscription) const;
    void Release(int wd);
    void FollowOne(const std::shared_ptr<Subscription>& subscription);
    int Rescan(const std::shared_ptr<Subscription>& subscription);
    int Call(Subscription& subscription, const std::string& name);
    std::map<std::string, Stamp> Stamps(const Subscription& subscription) const;
    static Stamp StampOf(const std::string& path);

    int inotify_ = -1;
    int wake_ = -1;  // readable while events are drained but not delivered
    int epoll_ = -1;
    std::vector<std::shared_ptr<Subscription>> subscriptions_;
    std::deque<Event> pending_;
    uint64_t nextEvent_ = 0;
    Id nextId_ = 1;
    bool dispatching_ = false;
};

}  // namespace vtv
