// The settings store beside the bare system calls that it cannot do without.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "other_process.h"
#include "store.h"
#include "watcher.h"

namespace {

using vtv::Store;
using vtv::Value;

constexpr char kKey[] = "db/menu/voice/mva_list";
const std::string kText(300, 'x');  // about as long as a policy

class Folder {
  public:
    Folder() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "store-bench-XXXXXX").string();
        path = mkdtemp(pattern.data());
        Store::Create(path);
    }
    ~Folder() { std::filesystem::remove_all(path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    std::string path;
};

// As a store must: in its folder, following no link, and into a text.
void BareRead(benchmark::State& state) {
    Folder folder;
    const int dir = open(folder.path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::string name = Store::EncodeKey(kKey);
    std::ofstream(folder.path + "/" + name) << kText;
    for (auto _ : state) {
        char buffer[4096];
        const int fd = openat(dir, name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
        benchmark::DoNotOptimize(read(fd, buffer, sizeof buffer));
        close(fd);
    }
    close(dir);
}
BENCHMARK(BareRead);

// Among so many keys.
void StoreRead(benchmark::State& state) {
    Folder folder;
    Store store(folder.path, Store::Durability::kVolatile);
    for (int64_t i = 1; i < state.range(0); ++i) {
        store.Write("db/other/" + std::to_string(i), 1);
    }
    store.Write(kKey, kText);
    std::string problem;
    for (auto _ : state) {
        Value value;
        benchmark::DoNotOptimize(store.Read(kKey, &value, &problem));
    }
}
BENCHMARK(StoreRead)->RangeMultiplier(10)->Range(1, 10000);

// Write, sync, rename; and, for the rename to survive a power failure as well, sync the folder.
void BareWrite(benchmark::State& state, bool syncFolder) {
    Folder folder;
    const int dir = open(folder.path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (auto _ : state) {
        const int fd = openat(dir, "new", O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        benchmark::DoNotOptimize(write(fd, kText.data(), kText.size()));
        fsync(fd);
        close(fd);
        renameat(dir, "new", dir, "file");
        if (syncFolder) {
            fsync(dir);
        }
    }
    close(dir);
}
BENCHMARK_CAPTURE(BareWrite, file, false)->UseRealTime();
BENCHMARK_CAPTURE(BareWrite, file_and_folder, true)->UseRealTime();

void StoreWrite(benchmark::State& state, Store::Durability durability) {
    Folder folder;
    Store store(folder.path, durability);
    for (auto _ : state) {
        store.Write(kKey, kText);
    }
}
BENCHMARK_CAPTURE(StoreWrite, durable, Store::Durability::kDurable)->UseRealTime();
BENCHMARK_CAPTURE(StoreWrite, volatile, Store::Durability::kVolatile)->UseRealTime();

// From the moment before the write to the callback in another process, the last of so many.
void ChangeSeen(benchmark::State& state, Store::Durability durability) {
    Folder folder;
    Store store(folder.path, durability);
    const auto watch = [&](const std::function<void()>& tell) {
        vtv::Watcher watcher;
        watcher.Watch(folder.path, IN_MOVED_TO, Store::EncodeKey(kKey),
                      [&](const std::string&) { tell(); });
        tell();
        for (;;) {
            pollfd source{watcher.Fd(), POLLIN, 0};
            poll(&source, 1, -1);
            watcher.Dispatch();
        }
    };
    std::vector<std::unique_ptr<bench::OtherProcess>> readers;
    for (int64_t i = 0; i < state.range(0); ++i) {
        readers.push_back(std::make_unique<bench::OtherProcess>(watch));
    }
    int number = 0;
    for (auto _ : state) {
        const int64_t begin = bench::Nanoseconds();
        store.Write(kKey, ++number);
        int64_t last = begin;
        for (const auto& reader : readers) {
            last = std::max(last, reader->Wait());
        }
        state.SetIterationTime(static_cast<double>(last - begin) * 1e-9);
    }
}
BENCHMARK_CAPTURE(ChangeSeen, durable, Store::Durability::kDurable)->Arg(1)->UseManualTime();
BENCHMARK_CAPTURE(ChangeSeen, volatile, Store::Durability::kVolatile)
    ->RangeMultiplier(10)
    ->Range(1, 100)
    ->UseManualTime();

}  // namespace

BENCHMARK_MAIN();
