#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <thread>
#include <tuple>
#include <vector>

#include "RynHwDll.h"
#include "osa/Events.h"
#include "support/AllocationFailure.h"
#include "support/Platform.h"

namespace {

// New event objects, closed at the end.
struct Events : std::vector<OsaHandle> {
    explicit Events(size_t n) : std::vector<OsaHandle>(n) {
        for (OsaHandle &event : *this) EXPECT_EQ(RynDrvCreateEvent_4(&event), 0u);
    }
    ~Events() {
        for (OsaHandle event : *this) RynDrvCloseEvent_4(event);
    }
};
constexpr auto waitOne = RynDrvWaitForSingleEvent_8;
constexpr auto waitMany = RynDrvWaitForMultipleEvents_20;
constexpr auto signalOne = RynDrvSignalEvent_4;
constexpr auto error = RynResultErrorCode;

TEST(EventObjects, AutoResetSemanticsAndLongTimeOuts) {
    Events e(1);
    const OsaHandle event = e[0];
    // Created clear; a second signal changes nothing; a wait takes the signal.
    EXPECT_EQ((std::tuple{event != 0, waitOne(event, 0), signalOne(event), signalOne(event), waitOne(event, 0),
                          waitOne(event, 10)}),
              (std::tuple{true, 3u, 0u, 0u, 0u, 3u}));
    // A driver in the process signals past the library (writes to the eventfd, SetEvent).
    ASSERT_TRUE(ryn::test::signalEventNatively(event));
    EXPECT_EQ(waitOne(event, 0xFFFFFFFF), 0u);
    // A wait whose time-out does not fit one poll polls in slices and still ends on a signal.
    std::jthread signaller([&] { signalOne(event); });
    EXPECT_EQ(waitOne(event, 0xFFFFFFFEu), 0u);
    using namespace std::chrono_literals;
    constexpr int kLongest = ryn::osa::kLongestPollMs;
    const std::chrono::nanoseconds left[] = {-5ns,        0ns, 1ns, 1500us, kLongest * 1ms, kLongest * 1ms + 1ns,
                                             0xFFFFFFFEms};
    const int slices[] = {0, 0, 1, 2, kLongest, kLongest, kLongest};
    for (int i = 0; i < 7; ++i) EXPECT_EQ(ryn::osa::pollTimeoutMs(left[i]), slices[i]) << left[i].count();
}

TEST(EventObjects, RefusedArgumentsClosedEventsAndNoMemory) {
    EXPECT_EQ(std::tuple(error(RynDrvCreateEvent_4(nullptr)), error(signalOne(0)), error(waitOne(0, 0)),
                         error(RynDrvCancelTask_8(1, 2))),
              std::tuple(13u, 13u, 13u, 6u));
    // An event named twice, a count of 0 and a count above 64 are refused.
    Events e(65);
    const OsaHandle twice[2] = {e[0], e[0]};
    uint32_t index = 99;
    EXPECT_EQ((std::tuple{error(waitMany(2, twice, 0, 1, &index)), error(waitMany(0, e.data(), 0, 0, &index)),
                          error(waitMany(65, e.data(), 0, 0, &index)), waitMany(64, e.data(), 0, 0, &index), index}),
              std::tuple(13u, 13u, 13u, 3u, 99u));
    EXPECT_EQ(RynDrvCloseEvent_4(e[0]) + RynDrvCloseEvent_4(e[0]), 0u);  // 0 whatever the outcome
    EXPECT_EQ(error(signalOne(e[0])), 13u);

    // Without memory, closed events are still made events again; once none
    // is left, creation gives 0 (and a result of 0).
    std::vector<OsaHandle> made;
    made.reserve(100000);  // no allocation inside the loop
    ResultCode result = 0;
    OsaHandle event = 77;
    {
        ryn::test::AllocationFailure noMemory;
        while (made.size() < 100000 && (result = RynDrvCreateEvent_4(&event)) == 0 && event != 0) made.push_back(event);
    }
    EXPECT_EQ(std::tuple(result, event), std::tuple(0u, 0u));
    for (OsaHandle reused : made) RynDrvCloseEvent_4(reused);
}

TEST(EventObjects, WaitAnyTakesTheLowestWaitAllTakesEvery) {
    Events e(3);
    uint32_t index = 99;
    signalOne(e[2]);
    signalOne(e[1]);
    // Wait-any takes the lowest signalled event only; the index may be left out.
    EXPECT_EQ((std::tuple{waitMany(3, e.data(), 0, 0, &index), index}), std::tuple(2u, 1u));
    EXPECT_EQ((std::tuple{waitMany(3, e.data(), 0, 0, nullptr), waitOne(e[2], 0)}), std::tuple(2u, 3u));
    // Wait-all takes them all at once, and nothing when it times out.
    signalOne(e[0]);
    signalOne(e[2]);
    EXPECT_EQ((std::tuple{waitMany(3, e.data(), 20, 1, &index), waitOne(e[0], 0), signalOne(e[0])}),
              std::tuple(3u, 0u, 0u));
    std::jthread late([&] { signalOne(e[1]); });
    EXPECT_EQ(waitMany(3, e.data(), 5000, 1, &index), 2u);
    EXPECT_EQ((std::tuple{index, waitOne(e[0], 0), waitOne(e[1], 0), waitOne(e[2], 0)}), std::tuple(0u, 3u, 3u, 3u));
}

TEST(EventObjects, WaitersReleasedOnePerSignal) {
    Events e(1);
    std::atomic<int> woken{0};
    std::vector<std::jthread> waiters;
    for (int i = 0; i < 3; ++i) waiters.emplace_back([&] { woken += waitOne(e[0], 5000) == 0 ? 1 : 0; });
    for (int signalled = 1; signalled <= 3; ++signalled) {
        signalOne(e[0]);
        for (int spin = 0; spin < 500 && woken.load() < signalled; ++spin) usleep(1000);
        usleep(5000);  // room for a wrongly released second waiter
        EXPECT_EQ(woken.load(), signalled);
    }
}

}  // namespace
