// The power fails between any two system calls of some writes. What was not synced may be on the
// disk or not, in any combination; every state that the disk could be left in is made and read.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <map>
#include <set>

#include "temporary_folder.h"
#include "virtual-tv/store.h"
#include "virtual-tv/store_files.h"

namespace vtv {
namespace {

// What the disk surely holds, and what the system shows.
struct Disk {
    struct File {
        std::string synced;
        std::string current;
    };
    std::map<int, File> files;
    std::map<std::string, int> syncedNames;
    std::map<std::string, int> names;
};

Disk disk;
std::vector<Disk> moments;  // before each call, and at the end
std::map<int, int> openFiles;
int nextFile = 0;
bool loseSyncs = false;
StoreFileCalls real;

void Moment() {
    moments.push_back(disk);
}

const StoreFileCalls recording = {
    [](int dir, const char* name, int flags, mode_t mode) {
        Moment();
        const int fd = real.openat(dir, name, flags, mode);
        openFiles[fd] = disk.names[name] = ++nextFile;
        disk.files[nextFile];  // empty
        return fd;
    },
    [](int fd, const void* data, size_t size) {
        Moment();
        disk.files[openFiles[fd]].current.append(static_cast<const char*>(data), size);
        return real.write(fd, data, size);
    },
    [](int fd) {
        Moment();
        if (loseSyncs) {
            return 0;
        }
        const auto file = openFiles.find(fd);
        if (file != openFiles.end()) {
            disk.files[file->second].synced = disk.files[file->second].current;
        } else {
            disk.syncedNames = disk.names;
        }
        return 0;
    },
    [](int fd) {
        openFiles.erase(fd);
        return real.close(fd);
    },
    [](int from, const char* old, int to, const char* name) {
        Moment();
        disk.names[name] = disk.names[old];
        disk.names.erase(old);
        return real.renameat(from, old, to, name);
    },
    [](int dir, const char* name, int flags) {
        Moment();
        disk.names.erase(name);
        return real.unlinkat(dir, name, flags);
    },
};

// Every combination of names that could be on the disk.
std::vector<std::map<std::string, int>> PossibleNames(const Disk& at) {
    std::vector<std::map<std::string, int>> all = {{}};
    std::set<std::string> names;
    for (const auto& [name, file] : at.names) {
        names.insert(name);
    }
    for (const auto& [name, file] : at.syncedNames) {
        names.insert(name);
    }
    for (const std::string& name : names) {
        std::set<int> choices;  // 0: not there
        for (const auto* table : {&at.names, &at.syncedNames}) {
            const auto found = table->find(name);
            choices.insert(found != table->end() ? found->second : 0);
        }
        std::vector<std::map<std::string, int>> next;
        for (const auto& base : all) {
            for (const int choice : choices) {
                next.push_back(base);
                if (choice != 0) {
                    next.back()[name] = choice;
                }
            }
        }
        all = std::move(next);
    }
    return all;
}

struct Expectation {
    std::map<std::string, std::string> acknowledged;
    std::string key;  // being written
    std::string value;
};

// Returns how many of the states have lost or damaged something.
int CountLosses(const Disk& at, const Expectation& expected) {
    int losses = 0;
    for (const auto& names : PossibleNames(at)) {
        for (int part = 0; part < 3; ++part) {  // of what was not synced: nothing, half, all
            TemporaryFolder folder;
            Store::Create(folder.Path());
            for (const auto& [name, number] : names) {
                const Disk::File& file = at.files.at(number);
                const std::string& rest = file.current;
                const size_t size = part == 0   ? file.synced.size()
                                    : part == 1 ? (file.synced.size() + rest.size()) / 2
                                                : rest.size();
                WriteText(folder / name, rest.substr(0, size));
            }
            const Store store(folder.Path(), Store::Durability::kDurable);
            bool lost = false;
            for (const auto& [key, value] : expected.acknowledged) {
                Value found;
                std::string problem;
                lost = lost || store.Read(key, &found, &problem) != Store::Status::kOk ||
                       (found != Value(value) &&
                        !(key == expected.key && found == Value(expected.value)));
            }
            for (const Setting& setting : store.List()) {
                lost = lost || !setting.value;
            }
            losses += lost ? 1 : 0;
        }
    }
    return losses;
}

int LossesOfSomeWrites() {
    TemporaryFolder folder;
    Store::Create(folder.Path());
    real = store_file_calls;
    disk = Disk();
    int losses = 0;
    Expectation expected;
    {
        Store store(folder.Path(), Store::Durability::kDurable);
        int number = 0;
        for (const char* key : {"db/a", "db/b", "db/a", "db/a", "db/b"}) {
            expected.key = key;
            expected.value = "value " + std::to_string(++number);
            moments.clear();
            store_file_calls = recording;
            store.Write(key, expected.value);
            store_file_calls = real;
            for (const Disk& moment : moments) {
                losses += CountLosses(moment, expected);
            }
            expected.acknowledged[key] = expected.value;
            losses += CountLosses(disk, expected);
        }
    }
    return losses;
}

TEST(StorePowerLossTest, APowerFailureAtAnyMomentLosesNothingThatWasAcknowledged) {
    loseSyncs = false;
    EXPECT_EQ(LossesOfSomeWrites(), 0);
}

TEST(StorePowerLossTest, TheSameCheckFindsTheLossWhenTheDiskDoesNotSync) {
    loseSyncs = true;
    EXPECT_GT(LossesOfSomeWrites(), 0);
    loseSyncs = false;
}

}  // namespace
}  // namespace vtv
