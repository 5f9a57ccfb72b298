// The same asked of dconf: reading, writing, and when another process sees a change.
#include <benchmark/benchmark.h>
#include <gio/gio.h>

#include <cstdlib>
#include <string>

#include "other_process.h"

namespace {

GSettings* OpenSettings() {
    setenv("GSETTINGS_SCHEMA_DIR", BENCH_SCHEMA_DIR, 1);
    setenv("GSETTINGS_BACKEND", "dconf", 1);
    return g_settings_new("org.si-ready.bench");
}

bool HasBus(benchmark::State& state) {
    const bool has = std::getenv("DBUS_SESSION_BUS_ADDRESS") != nullptr;
    if (!has) {
        state.SkipWithError("needs a session bus: run it with dbus-run-session");
    }
    return has;
}

bench::OtherProcess& Reader() {
    // Forked once, and before GLib has a thread of its own in this process, whatever is measured
    // first.
    static bench::OtherProcess reader([](const std::function<void()>& tell) {
        GSettings* settings = OpenSettings();
        g_signal_connect(settings, "changed::value",
                         G_CALLBACK(+[](GSettings*, const char*, gpointer data) {
                             (*static_cast<const std::function<void()>*>(data))();
                         }),
                         const_cast<std::function<void()>*>(&tell));
        g_settings_get_int(settings, "value");
        // The subscription at the bus is made in the background and nothing tells when it is.
        GMainContext* context = g_main_context_default();
        for (const int64_t begin = bench::Nanoseconds();
             bench::Nanoseconds() - begin < 500000000;) {
            g_main_context_iteration(context, FALSE);
            g_usleep(1000);
        }
        tell();
        for (;;) {
            g_main_context_iteration(context, TRUE);
        }
    });
    return reader;
}

void DconfChangeSeen(benchmark::State& state) {
    if (!HasBus(state)) {
        return;
    }
    bench::OtherProcess& reader = Reader();
    static GSettings* const settings = OpenSettings();
    int number = g_settings_get_int(settings, "value");
    for (auto _ : state) {
        const int64_t begin = bench::Nanoseconds();
        g_settings_set_int(settings, "value", ++number);
        g_settings_sync();
        state.SetIterationTime(static_cast<double>(reader.Wait() - begin) * 1e-9);
    }
}
BENCHMARK(DconfChangeSeen)->UseManualTime();

void DconfRead(benchmark::State& state) {
    if (!HasBus(state)) {
        return;
    }
    Reader();
    static GSettings* const settings = OpenSettings();
    for (auto _ : state) {
        benchmark::DoNotOptimize(g_settings_get_int(settings, "value"));
    }
}
BENCHMARK(DconfRead);

void DconfWrite(benchmark::State& state) {
    if (!HasBus(state)) {
        return;
    }
    bench::OtherProcess& reader = Reader();
    static GSettings* const settings = OpenSettings();
    int number = g_settings_get_int(settings, "value");
    for (auto _ : state) {
        const int64_t begin = bench::Nanoseconds();
        g_settings_set_int(settings, "value", ++number);
        g_settings_sync();
        state.SetIterationTime(static_cast<double>(bench::Nanoseconds() - begin) * 1e-9);
        reader.Wait();  // or its report would be taken for that of a later change
    }
}
BENCHMARK(DconfWrite)->UseManualTime();

}  // namespace
