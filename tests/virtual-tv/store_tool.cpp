// Reads and writes a store from the command line; built at 32 and at 64 bits for the tests.
//     store-tool DIR get KEY | set KEY TYPE VALUE | count KEY NUMBER
#include <poll.h>
#include <sys/inotify.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "virtual-tv/store.h"
#include "virtual-tv/watcher.h"

namespace {

// Waits until the key has been written so many times.
int Count(const std::string& dir, const std::string& key, int number) {
    vtv::Watcher watcher;
    int count = 0;
    watcher.Watch(dir, IN_MOVED_TO, vtv::Store::EncodeKey(key),
                  [&](const std::string&) { ++count; });
    std::printf("ready\n");
    std::fflush(stdout);
    while (count < number) {
        pollfd source{watcher.Fd(), POLLIN, 0};
        if (poll(&source, 1, 10000) != 1) {
            break;
        }
        watcher.Dispatch();
    }
    std::printf("%d\n", count);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 4) {
        return 2;
    }
    try {
        vtv::Store store(argv[1], vtv::Store::Durability::kDurable);
        if (std::strcmp(argv[2], "set") == 0 && argc == 6) {
            store.Write(argv[3], vtv::ParseValue(argv[4], argv[5]));
            return 0;
        }
        if (std::strcmp(argv[2], "count") == 0 && argc == 5) {
            return Count(argv[1], argv[3], std::atoi(argv[4]));
        }
        vtv::Value value;
        std::string problem;
        if (store.Read(argv[3], &value, &problem) != vtv::Store::Status::kOk) {
            return 1;
        }
        std::printf("%s %s\n", vtv::TypeName(value), vtv::ToText(value).c_str());
    } catch (const vtv::Error& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 4;
    }
    return 0;
}
