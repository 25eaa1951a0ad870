// Handles closed while other threads use them: the connection under
// requests in flight, events under signals and waits, connect against
// release.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <tuple>
#include <vector>
#if !defined(_WIN32)
#include <fcntl.h>
#include <unistd.h>
#endif

#include "RynHwDll.h"
#include "support/FakeDriver.h"

namespace {

using namespace std::chrono_literals;
using ryn::test::FakeDriver;
constexpr auto error = RynResultErrorCode;

TEST(HandleLifetime, ReleaseWaitsForTheRequestsInFlight) {
    FakeDriver driver;
    ryn::test::ConnectionGuard guard;
    ASSERT_EQ(RynDrvConnectLib_0(), 0u);
    // Every request stays a while inside the driver and checks that its
    // connection is still open when it leaves.
    std::atomic<int> inside{0}, closedUnderneath{0};
    driver.setHook([&](const RynDriverRequest &) {
        ++inside;
        std::this_thread::sleep_for(200us);
        if (!driver.isOpen()) ++closedUnderneath;
        --inside;
    });
    std::atomic<bool> stop{false};
    std::atomic<int> answered{0}, refusedAfter{0};
    std::vector<std::jthread> callers;
    for (int i = 0; i < 4; ++i) {
        callers.emplace_back([&] {
            while (!stop) {
                uint32_t state = 0;
                const ResultCode result = RynDrvGetState_8(0x11000001, &state);
                (result == 0 ? answered : refusedAfter) += 1;
            }
        });
    }
    while (answered < 20) std::this_thread::yield();
    EXPECT_EQ(RynDrvReleaseLib_0(), 0u);
    EXPECT_EQ(inside.load(), 0);  // nobody was left inside the closed driver
    std::this_thread::sleep_for(2ms);
    stop = true;
    callers.clear();
    EXPECT_EQ(closedUnderneath.load(), 0);
    EXPECT_GT(refusedAfter.load(), 0);    // calls after the release fail, as without a connection
    EXPECT_EQ(RynDrvConnectLib_0(), 0u);  // and the name is free for the next connection
}

#if !defined(_WIN32)
TEST(HandleLifetime, SignalsNeverReachAClosedEventsDescriptor) {
    // A thread signals one handle without pause while the event behind it is
    // closed and its number handed to a pipe: nothing may arrive in the pipe.
    for (int round = 0; round < 200; ++round) {
        OsaHandle event = 0;
        ASSERT_EQ(RynDrvCreateEvent_4(&event), 0u);
        std::atomic<bool> stop{false};
        std::jthread signaller([&] {
            while (!stop) RynDrvSignalEvent_4(event);
        });
        std::this_thread::sleep_for(20us);
        RynDrvCloseEvent_4(event);
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        std::this_thread::sleep_for(50us);
        stop = true;
        signaller.join();
        uint64_t stray = 0;
        ASSERT_EQ(fcntl(ends[0], F_SETFL, O_NONBLOCK), 0);
        EXPECT_EQ(read(ends[0], &stray, sizeof stray), -1) << "round " << round;
        close(ends[0]);
        close(ends[1]);
        EXPECT_EQ(error(RynDrvSignalEvent_4(event)), 13u);
    }
}
#endif

TEST(HandleLifetime, WaitsOnAnEventClosedMeanwhileFail) {
    // One waiter on the event alone, one waiting for any and one for all of
    // it and another event; closing the first wakes every one with a failure.
    OsaHandle events[2] = {};
    for (OsaHandle &event : events) ASSERT_EQ(RynDrvCreateEvent_4(&event), 0u);
    std::atomic<int> failed{0};
    std::vector<std::jthread> waiters;
    waiters.emplace_back([&] { failed += error(RynDrvWaitForSingleEvent_8(events[0], 0xFFFFFFFF)) == 13; });
    for (int all = 0; all < 2; ++all) {
        waiters.emplace_back([&, all] {
            uint32_t index = 99;
            failed += error(RynDrvWaitForMultipleEvents_20(2, events, 0xFFFFFFFF, all, &index)) == 13;
        });
    }
    std::this_thread::sleep_for(30ms);  // all three asleep
    RynDrvCloseEvent_4(events[0]);
    waiters.clear();
    EXPECT_EQ(failed.load(), 3);
    // The other event is untouched and a new event does not inherit the wake.
    OsaHandle fresh = 0;
    ASSERT_EQ(RynDrvCreateEvent_4(&fresh), 0u);
    EXPECT_EQ(std::tuple(RynDrvWaitForSingleEvent_8(events[1], 0), RynDrvWaitForSingleEvent_8(fresh, 0)),
              std::tuple(3u, 3u));
    RynDrvCloseEvent_4(events[1]);
    RynDrvCloseEvent_4(fresh);
}

TEST(HandleLifetime, ConnectAndReleaseOnTwoThreads) {
    FakeDriver driver;
    ryn::test::ConnectionGuard guard;
    std::vector<std::jthread> threads;
    for (int t = 0; t < 2; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < 300; ++i) {
                RynDrvConnectLib_0();
                RynDrvReleaseLib_0();
            }
        });
    }
    threads.clear();
    // Whatever the interleaving, the next connection has a working queue table.
    ASSERT_EQ(RynDrvConnectLib_0(), 0u);
    OsaHandle event = 0;
    RynDrvCreateEvent_4(&event);
    int32_t queue = -1;
    EXPECT_EQ(RynCreateAppEventQueue(4, event, &queue), 0u);
    EXPECT_EQ(RynSetAppEventDataEx(queue, 1, 2, 3, 4, 5, 6, 7, 8), 0u);
    EXPECT_EQ(RynDrvWaitForSingleEvent_8(event, 0), 0u);
    RynDrvCloseEvent_4(event);
}

}  // namespace
