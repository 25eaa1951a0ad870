#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <span>
#include <thread>
#include <tuple>
#include <vector>

#include "RynHwDll.h"
#include "support/FakeDriver.h"

namespace {

using ryn::test::FakeDriver;

bool isEmptyStatus(ResultCode code) { return RynFailure(code) == 0 && RynResultErrorCode(code) == 1; }

class AppQueues : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(RynDrvConnectLib(), 0u);
        ASSERT_EQ(RynDrvCreateEvent_4(&event), 0u);
    }
    void TearDown() override {
        RynDrvReleaseLib_0();
        RynDrvCloseEvent_4(event);
    }
    int32_t create(uint32_t capacity) {
        int32_t id = -7;
        EXPECT_EQ(RynCreateAppEventQueue(capacity, event, &id), 0u);
        return id;
    }
    // Record n: words 2..7 are n..n+5, words 0 and 1 (the last arguments) 10n and 10n+1.
    static void put(int32_t id, uint32_t n) {
        ASSERT_EQ(RynQueueAppEventDataEx(id, n, n + 1, n + 2, n + 3, n + 4, n + 5, n * 10, n * 10 + 1), 0u);
    }
    FakeDriver driver;
    OsaHandle event = 0;
};

TEST_F(AppQueues, OverflowDropsTheOldestAndReadsInOrder) {
    const int32_t single = create(1);
    put(single, 1);
    put(single, 2);
    EventData record{};
    EXPECT_EQ(RynGetAppEventData(single, &record), 0u);
    EXPECT_EQ(std::tuple(record.word[0], record.word[1], record.word[2], record.word[7]), std::tuple(20u, 21u, 2u, 7u));
    record.word[0] = 0xABCD;
    EXPECT_TRUE(isEmptyStatus(RynGetAppEventData(single, &record)));
    EXPECT_EQ(record.word[0], 0xABCDu);  // untouched

    const int32_t id = create(4);
    for (uint32_t n = 1; n <= 6; ++n) put(id, n);
    EventData records[16] = {};
    uint32_t count = 0;
    EXPECT_EQ(RynGetAppEventDataEx(id, records, 16, &count), 0u);
    ASSERT_EQ(count, 4u);
    for (uint32_t i = 0; i < 4; ++i) EXPECT_EQ(records[i].word[2], i + 3);

    put(id, 7);
    count = 99;
    EXPECT_EQ(RynGetAppEventDataEx(id, records, 0, &count), 0u);  // maximum 0 takes nothing
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(RynGetAppEventDataEx(id, records, 1, &count), 0u);
    EXPECT_EQ(records[0].word[2], 7u);
    EXPECT_TRUE(isEmptyStatus(RynGetAppEventDataEx(id, records, 0, &count)));
    // The ring wraps cleanly after reads of both kinds.
    for (uint32_t n = 10; n < 13; ++n) put(id, n);
    EXPECT_EQ(RynGetAppEventData(id, &record), 0u);
    EXPECT_EQ(record.word[2], 10u);
    EXPECT_EQ(RynGetAppEventDataEx(id, records, 8, &count), 0u);
    EXPECT_EQ(count, 2u);
    EXPECT_EQ(records[1].word[2], 12u);
}

TEST_F(AppQueues, IdentifierChecksAndArgumentErrors) {
    EventData record{};
    uint32_t count = 5;
    for (int32_t bad : {-1, 128}) {
        EXPECT_EQ(RynResultErrorCode(RynCloseAppEventQueue(bad)), 11u);
        EXPECT_EQ(RynResultErrorCode(RynGetAppEventData(bad, nullptr)), 11u);  // range before null
        EXPECT_EQ(RynResultErrorCode(RynGetAppEventDataEx(bad, nullptr, 1, nullptr)), 11u);
        EXPECT_EQ(RynResultErrorCode(RynSignalAppEvent(bad)), 11u);
        EXPECT_EQ(RynResultErrorCode(RynQueueAppEventDataEx(bad, 0, 0, 0, 0, 0, 0, 0, 0)), 11u);
    }
    EXPECT_EQ(RynCloseAppEventQueue(5), 0u);  // closing a free slot
    EXPECT_EQ(RynResultErrorCode(RynGetAppEventData(5, &record)), 11u);
    EXPECT_EQ(RynResultErrorCode(RynGetAppEventDataEx(5, &record, 1, nullptr)), 9u);
    EXPECT_EQ(RynResultErrorCode(RynGetAppEventDataEx(5, &record, 1, &count)), 11u);
    EXPECT_EQ(count, 0u);  // set to 0 once the arguments pass
    EXPECT_EQ(RynResultErrorCode(RynGetAppEventData(0, nullptr)), 9u);
    EXPECT_EQ(RynResultErrorCode(RynSignalAppEvent(5)), 13u);  // the signal of handle 0 fails

    int32_t id = 3;
    EXPECT_EQ(RynResultErrorCode(RynCreateAppEventQueue(4, 0, &id)), 11u);
    EXPECT_EQ(id, -1);
    EXPECT_EQ(RynResultErrorCode(RynCreateAppEventQueue(4, event, nullptr)), 9u);

    // A queue of capacity 0 exists but has no entries.
    const int32_t empty = create(0);
    EXPECT_EQ(RynResultErrorCode(RynQueueAppEventDataEx(empty, 0, 0, 0, 0, 0, 0, 0, 0)), 13u);
    EXPECT_EQ(RynResultErrorCode(RynGetAppEventData(empty, &record)), 13u);
}

TEST_F(AppQueues, SlotsSignalsAndRelease) {
    for (int32_t i = 0; i < 128; ++i) ASSERT_EQ(create(2), i);
    int32_t id = 0;
    EXPECT_EQ(RynCreateAppEventQueue(2, event, &id) & 0x800000FF, 0x80000008u);  // failure, error 8
    EXPECT_EQ(id, -1);
    // The lowest free slot is taken first.
    EXPECT_EQ(RynCloseAppEventQueue(77), 0u);
    EXPECT_EQ(RynCloseAppEventQueue(40), 0u);
    EXPECT_EQ(create(2), 40);
    EXPECT_EQ(create(2), 77);

    EXPECT_EQ(RynSetAppEventDataEx(5, 1, 2, 3, 4, 5, 6, 7, 8), 0u);
    EXPECT_EQ(RynDrvWaitForSingleEvent_8(event, 0), 0u);
    EXPECT_EQ(RynQueueAppEventDataEx(5, 1, 2, 3, 4, 5, 6, 7, 8), 0u);
    EXPECT_EQ(RynDrvWaitForSingleEvent_8(event, 0), 3u);  // queueing alone does not signal
    EXPECT_EQ(RynSignalAppEvent(5), 0u);
    EXPECT_EQ(RynDrvWaitForSingleEvent_8(event, 0), 0u);

    // Release closes every open queue, past free slots too; no queue call may touch the table once it is gone.
    for (int32_t i = 1; i < 5; ++i) RynCloseAppEventQueue(i);
    ASSERT_EQ(RynDrvReleaseLib_0(), 0u);
    EventData record{};
    EXPECT_EQ(RynResultErrorCode(RynGetAppEventData(0, &record)), 13u);
    EXPECT_EQ(RynResultErrorCode(RynCreateAppEventQueue(1, event, &id)), 13u);
    ASSERT_EQ(RynDrvConnectLib(), 0u);
    // A new connection starts with every slot free.
    EXPECT_EQ(RynResultErrorCode(RynGetAppEventData(5, &record)), 11u);
    EXPECT_EQ(RynResultErrorCode(RynGetAppEventData(127, &record)), 11u);
    EXPECT_EQ(create(1), 0);
}

// A queue large enough for every record: under concurrent producers each
// record arrives once, whole, and in its producer's order.
TEST_F(AppQueues, ProducersAndConsumerLoseNothing) {
    constexpr uint32_t kProducers = 3, kEach = 10000;
    const int32_t id = create(kProducers * kEach);
    // Every word derives from (producer, n), so a torn record shows.
    const auto record = [](uint32_t p, uint32_t n) {
        const uint32_t tag = (p << 24) | n;
        return EventData{{tag, p, tag, ~tag, tag ^ 0x5A5A5A5A, tag + 1, tag + 2, tag + 3}};
    };
    std::atomic<uint32_t> running{kProducers};
    std::vector<std::thread> producers;
    for (uint32_t p = 0; p < kProducers; ++p) {
        producers.emplace_back([&, p] {
            for (uint32_t n = 0; n < kEach; ++n) {
                const EventData r = record(p, n);
                RynSetAppEventDataEx(id, r.word[2], r.word[3], r.word[4], r.word[5], r.word[6], r.word[7], r.word[0],
                                     r.word[1]);
            }
            --running;
        });
    }
    std::vector<uint32_t> next(kProducers, 0);
    EventData records[32];
    for (bool done = false; !done;) {
        done = running.load() == 0;
        RynDrvWaitForSingleEvent_8(event, 1);
        uint32_t count = 0;
        while (RynGetAppEventDataEx(id, records, 32, &count) == 0) {
            for (const EventData &r : std::span(records, count)) {
                const uint32_t p = r.word[1];
                ASSERT_LT(p, kProducers);
                const EventData expected = record(p, next[p]++);
                ASSERT_EQ(std::memcmp(&r, &expected, sizeof r), 0) << "producer " << p << ", record " << next[p] - 1;
            }
        }
    }
    for (auto &t : producers) t.join();
    EXPECT_EQ(next, std::vector<uint32_t>(kProducers, kEach));
}

}  // namespace
