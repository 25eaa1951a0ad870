#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <thread>
#include <vector>

#include "RynHwDll.h"
#include "osa/Events.h"
#include "support/AllocationFailure.h"

namespace {

// Event objects through the exported calls.
struct Events {
    explicit Events(size_t n) : handles(n) {
        for (OsaHandle &h : handles) EXPECT_EQ(RynDrvCreateEvent_4(&h), 0u);
    }
    ~Events() {
        for (OsaHandle h : handles) RynDrvCloseEvent_4(h);
    }
    std::vector<OsaHandle> handles;
};

TEST(EventObjects, AutoResetSemantics) {
    Events e(1);
    const OsaHandle event = e.handles[0];
    EXPECT_NE(event, 0u);
    EXPECT_EQ(RynDrvWaitForSingleEvent_8(event, 0), 3u);
    EXPECT_EQ(RynDrvSignalEvent_4(event), 0u);
    EXPECT_EQ(RynDrvSignalEvent_4(event), 0u);  // signalling a signalled event changes nothing
    EXPECT_EQ(RynDrvWaitForSingleEvent_8(event, 0), 0u);
    EXPECT_EQ(RynDrvWaitForSingleEvent_8(event, 10), 3u);

    // A driver in the process signals by writing to the descriptor.
    const uint64_t one = 1;
    ASSERT_EQ(write(static_cast<int>(event), &one, sizeof one), 8);
    EXPECT_EQ(RynDrvWaitForSingleEvent_8(event, 0xFFFFFFFF), 0u);
}

TEST(EventObjects, RefusedArgumentsAndClosedEvents) {
    EXPECT_EQ(RynResultErrorCode(RynDrvCreateEvent_4(nullptr)), 13u);
    EXPECT_EQ(RynResultErrorCode(RynDrvSignalEvent_4(0)), 13u);
    EXPECT_EQ(RynResultErrorCode(RynDrvWaitForSingleEvent_8(0, 0)), 13u);
    EXPECT_EQ(RynResultErrorCode(RynDrvCancelTask_8(1, 2)), 6u);

    OsaHandle event = 0;
    ASSERT_EQ(RynDrvCreateEvent_4(&event), 0u);
    uint32_t index = 99;
    const OsaHandle twice[2] = {event, event};
    EXPECT_EQ(RynResultErrorCode(RynDrvWaitForMultipleEvents_20(2, twice, 0, 1, &index)), 13u);
    EXPECT_EQ(RynResultErrorCode(RynDrvWaitForMultipleEvents_20(0, twice, 0, 0, &index)), 13u);
    std::vector<OsaHandle> many(65, event);
    EXPECT_EQ(RynResultErrorCode(RynDrvWaitForMultipleEvents_20(65, many.data(), 0, 0, &index)), 13u);
    EXPECT_EQ(index, 99u);
    EXPECT_EQ(RynDrvCloseEvent_4(event), 0u);
    EXPECT_EQ(RynDrvCloseEvent_4(event), 0u);  // returns 0 whatever the outcome
    EXPECT_EQ(RynResultErrorCode(RynDrvSignalEvent_4(event)), 13u);
}

TEST(EventObjects, CreationWithoutMemoryStoresZero) {
    OsaHandle event = 77;
    ResultCode result = 1;
    {
        ryn::test::AllocationFailure noMemory;
        result = RynDrvCreateEvent_4(&event);
    }
    EXPECT_EQ(result, 0u);
    EXPECT_EQ(event, 0u);
}

TEST(EventObjects, LongTimeOutsPollInSlicesUntilTheDeadline) {
    using namespace std::chrono;
    using ryn::osa::pollTimeoutMs;
    EXPECT_EQ(pollTimeoutMs(nanoseconds(-5)), 0);
    EXPECT_EQ(pollTimeoutMs(nanoseconds(0)), 0);
    EXPECT_EQ(pollTimeoutMs(microseconds(1500)), 2);
    EXPECT_EQ(pollTimeoutMs(milliseconds(0x7FFFFFFF)), ryn::osa::kLongestPollMs);
    EXPECT_EQ(pollTimeoutMs(milliseconds(0xFFFFFFFEu)), ryn::osa::kLongestPollMs);

    // A signal still ends a wait whose time-out does not fit a poll.
    Events e(1);
    std::thread signaller([&] { RynDrvSignalEvent_4(e.handles[0]); });
    EXPECT_EQ(RynDrvWaitForSingleEvent_8(e.handles[0], 0xFFFFFFFEu), 0u);
    signaller.join();
}

TEST(EventObjects, WaitAnyTakesTheLowestSignalled) {
    Events e(3);
    uint32_t index = 99;
    EXPECT_EQ(RynDrvWaitForMultipleEvents_20(3, e.handles.data(), 0, 0, &index), 3u);
    EXPECT_EQ(index, 99u);
    RynDrvSignalEvent_4(e.handles[2]);
    EXPECT_EQ(RynDrvWaitForMultipleEvents_20(3, e.handles.data(), 0, 0, &index), 2u);
    EXPECT_EQ(index, 2u);
    RynDrvSignalEvent_4(e.handles[2]);
    RynDrvSignalEvent_4(e.handles[1]);
    EXPECT_EQ(RynDrvWaitForMultipleEvents_20(3, e.handles.data(), 0, 0, nullptr), 2u);
    EXPECT_EQ(RynDrvWaitForSingleEvent_8(e.handles[1], 0), 3u);  // only index 1 was taken
    EXPECT_EQ(RynDrvWaitForSingleEvent_8(e.handles[2], 0), 0u);
}

TEST(EventObjects, WaitAllTakesEveryEventAtOnce) {
    Events e(3);
    RynDrvSignalEvent_4(e.handles[0]);
    RynDrvSignalEvent_4(e.handles[2]);
    uint32_t index = 99;
    EXPECT_EQ(RynDrvWaitForMultipleEvents_20(3, e.handles.data(), 20, 1, &index), 3u);
    EXPECT_EQ(RynDrvWaitForSingleEvent_8(e.handles[0], 0), 0u) << "a timed-out wait-all consumes nothing";
    RynDrvSignalEvent_4(e.handles[0]);

    std::thread late([&] { RynDrvSignalEvent_4(e.handles[1]); });
    EXPECT_EQ(RynDrvWaitForMultipleEvents_20(3, e.handles.data(), 5000, 1, &index), 2u);
    late.join();
    EXPECT_EQ(index, 0u);
    for (OsaHandle h : e.handles) EXPECT_EQ(RynDrvWaitForSingleEvent_8(h, 0), 3u);
}

TEST(EventObjects, WaitersReleasedOnePerSignal) {
    Events e(1);
    constexpr int kWaiters = 3;
    std::atomic<int> woken{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < kWaiters; ++i) {
        waiters.emplace_back([&] {
            if (RynDrvWaitForSingleEvent_8(e.handles[0], 5000) == 0) ++woken;
        });
    }
    for (int signalled = 1; signalled <= kWaiters; ++signalled) {
        RynDrvSignalEvent_4(e.handles[0]);
        for (int spin = 0; spin < 500 && woken.load() < signalled; ++spin) usleep(1000);
        usleep(5000);  // room for a wrongly released second waiter
        EXPECT_EQ(woken.load(), signalled);
    }
    for (auto &t : waiters) t.join();
}

}  // namespace
