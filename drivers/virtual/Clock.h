// The board's sample clock: a thread that runs the board one frame (10 ms of
// 8 kHz samples) at a time, at real time or a multiple of it, from the first
// connection to the last release. Each frame runs under the board's lock,
// as a request does, so the board's state never sees two at once.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

namespace vb {

class Board;

class SampleClock {
public:
    // A clock of `rate` times real time (0: stopped); its thread waits for
    // start().
    SampleClock(Board &board, uint32_t rate);
    ~SampleClock();  // stops the thread; the board's lock must not be held
    SampleClock(const SampleClock &) = delete;
    SampleClock &operator=(const SampleClock &) = delete;

    uint32_t rate() const;
    void setRate(uint32_t rate);
    // Starts the thread, once.
    void start();

    // The rate of the environment variable RYN_VB_SAMPLE_CLOCK, else real time.
    static uint32_t rateAtStart();

private:
    void run();
    // Whether the clock still runs at `rate` and is not stopping.
    bool stillRunsAt(uint32_t rate) const;

    Board &board_;
    mutable std::mutex mutex_;  // never held while the board's lock is taken
    std::condition_variable wake_;
    uint32_t rate_;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace vb
