// Application event queues: records per second from one producer to one
// consumer through the wake-up path, and the latency from a signal to the
// wake of one waiter.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

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

double medianOf(std::vector<double> &values) {
    if (values.empty()) return 0;
    std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
    return values[values.size() / 2];
}

// Two threads signal each other in turn; each round trip is two
// signal-to-wake latencies. wake_latency is the median of the rounds, in
// seconds, halved.
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
    std::vector<double> rounds;
    rounds.reserve(1 << 20);
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        RynDrvSignalEvent_4(ping);
        RynDrvWaitForSingleEvent_8(pong, 0xFFFFFFFF);
        if (rounds.size() < rounds.capacity())
            rounds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    stop = true;
    waiter.join();
    state.counters["wake_latency"] = medianOf(rounds) / 2;
    RynDrvCloseEvent_4(ping);
    RynDrvCloseEvent_4(pong);
}

// The wake of a waiter that has gone to sleep: the signal comes a millisecond
// after the wait began. wake_latency is the median from the signal to the
// waiter's return, in seconds.
void BM_SleepingWaiterWakeLatency(benchmark::State &state) {
    OsaHandle event = 0;
    RynDrvCreateEvent_4(&event);
    using Clock = std::chrono::steady_clock;
    std::vector<double> wakes;
    for (auto _ : state) {
        std::atomic<int64_t> signalledAt{0};
        Clock::time_point woke;
        std::thread waiter([&] {
            RynDrvWaitForSingleEvent_8(event, 0xFFFFFFFF);
            woke = Clock::now();
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        signalledAt = Clock::now().time_since_epoch().count();
        RynDrvSignalEvent_4(event);
        waiter.join();
        wakes.push_back(
            std::chrono::duration<double>(woke.time_since_epoch() - Clock::duration(signalledAt.load())).count());
    }
    state.counters["wake_latency"] = medianOf(wakes);
    RynDrvCloseEvent_4(event);
}

}  // namespace

BENCHMARK(BM_AppQueueProducerConsumer)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_SignalToWakeLatency)->UseRealTime();
BENCHMARK(BM_SleepingWaiterWakeLatency)->UseRealTime()->Iterations(400);
