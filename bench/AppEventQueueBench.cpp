// Application event queues: records per second from one producer to one
// consumer through the wake-up path, and the latency from a signal to the
// wake of one waiter.
#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "RynHwDll.h"
#include "NullDriver.h"

namespace {

void BM_AppQueueProducerConsumer(benchmark::State &state) {
    ryn::bench::connectToNullDriver();  // the queues live from connect to release
    OsaHandle event = 0;
    RynDrvCreateEvent_4(&event);
    int32_t queue = -1;
    RynCreateAppEventQueue(1024, event, &queue);
    constexpr uint32_t kBatch = 10000;
    uint64_t records = 0;
    for (auto _ : state) {
        std::thread producer([&] {
            for (uint32_t n = 1; n <= kBatch; ++n) RynSetAppEventDataEx(queue, n, 0, 0, 0, 0, 0, 0, 0);
        });
        EventData buffer[64];
        uint32_t lastSeen = 0;
        while (lastSeen != kBatch) {
            RynDrvWaitForSingleEvent_8(event, 50);
            uint32_t count = 0;
            while (RynGetAppEventDataEx(queue, buffer, 64, &count) == 0) {
                records += count;
                lastSeen = buffer[count - 1].word[2];
            }
        }
        producer.join();
    }
    state.counters["records/s"] = benchmark::Counter(static_cast<double>(records), benchmark::Counter::kIsRate);
    RynCloseAppEventQueue(queue);
    RynDrvCloseEvent_4(event);
}

void BM_SignalToWakeLatency(benchmark::State &state) {
    OsaHandle ping = 0, pong = 0;
    RynDrvCreateEvent_4(&ping);
    RynDrvCreateEvent_4(&pong);
    std::atomic<bool> stop{false};
    std::thread waiter([&] {
        while (!stop.load()) {
            if (RynDrvWaitForSingleEvent_8(ping, 100) == 0) RynDrvSignalEvent_4(pong);
        }
    });
    for (auto _ : state) {
        RynDrvSignalEvent_4(ping);
        RynDrvWaitForSingleEvent_8(pong, 0xFFFFFFFF);
    }
    stop = true;
    waiter.join();
    // Each iteration is a round trip: two signal-to-wake latencies.
    state.counters["wake_latency"] = benchmark::Counter(static_cast<double>(state.iterations()) * 2,
                                                        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
    RynDrvCloseEvent_4(ping);
    RynDrvCloseEvent_4(pong);
}

}  // namespace

BENCHMARK(BM_AppQueueProducerConsumer)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_SignalToWakeLatency)->UseRealTime();
