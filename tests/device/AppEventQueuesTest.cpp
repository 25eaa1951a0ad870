#include <gtest/gtest.h>

#include <chrono>
#include <span>
#include <thread>
#include <tuple>
#include <vector>

#include "RynHwDll.h"
#include "support/ConnectedTest.h"

namespace {

using Read = std::pair<ResultCode, std::vector<uint32_t>>;
constexpr auto error = RynResultErrorCode;
constexpr auto get = RynGetAppEventData;
constexpr auto getEx = RynGetAppEventDataEx;
constexpr auto closeQueue = RynCloseAppEventQueue;
constexpr auto signalQueue = RynSignalAppEvent;

bool isEmptyStatus(ResultCode code) { return RynFailure(code) == 0 && error(code) == 1; }

// Record n: words 2..7 are n..n+5, words 0 and 1 (the last arguments) 10n and 10n+1.
std::vector<uint32_t> record(uint32_t n) { return {n * 10, n * 10 + 1, n, n + 1, n + 2, n + 3, n + 4, n + 5}; }
ResultCode put(int32_t id, uint32_t n, decltype(&RynQueueAppEventDataEx) call = RynQueueAppEventDataEx) {
    return call(id, n, n + 1, n + 2, n + 3, n + 4, n + 5, n * 10, n * 10 + 1);
}

// Reads up to `maximum` records at once: the result and word 2 of each record read.
Read read(int32_t id, int32_t maximum) {
    EventData records[8] = {};
    uint32_t count = 99;
    const ResultCode result = getEx(id, records, maximum, &count);
    std::vector<uint32_t> words;
    for (uint32_t i = 0; i < count && i < 8; ++i) words.push_back(records[i].word[2]);
    return {result, words};
}

class AppQueues : public ryn::test::ConnectedTest {
protected:
    AppQueues() { RynDrvCreateEvent_4(&event); }
    ~AppQueues() override { RynDrvCloseEvent_4(event); }
    int32_t create(uint32_t capacity) {
        int32_t id = -7;
        EXPECT_EQ(RynCreateAppEventQueue(capacity, event, &id), 0u);
        return id;
    }
    OsaHandle event = 0;
};

TEST_F(AppQueues, OverflowDropsTheOldestAndReadsInOrder) {
    const int32_t single = create(1);
    EXPECT_EQ(put(single, 1) + put(single, 2), 0u);
    EventData r{};
    EXPECT_EQ((std::tuple{get(single, &r), std::vector(r.word, r.word + 8)}), std::tuple(0u, record(2)));
    EXPECT_EQ((std::tuple{isEmptyStatus(get(single, &r)), r.word[0]}), std::tuple(true, 20u));

    const int32_t id = create(4);
    for (uint32_t n = 1; n <= 6; ++n) put(id, n);
    EXPECT_EQ(read(id, 8), Read(0, {3, 4, 5, 6}));
    put(id, 7);
    EXPECT_EQ(read(id, 0), Read(0, {}));  // maximum 0 takes nothing
    EXPECT_EQ(read(id, 1), Read(0, {7}));
    EXPECT_TRUE(isEmptyStatus(read(id, 0).first));
    // The ring wraps cleanly after reads of both kinds.
    for (uint32_t n = 10; n < 13; ++n) put(id, n);
    EXPECT_EQ((std::tuple{get(id, &r), r.word[2]}), std::tuple(0u, 10u));
    EXPECT_EQ(read(id, 8), Read(0, {11, 12}));
}

TEST_F(AppQueues, IdentifierChecksAndArgumentErrors) {
    for (int32_t bad : {-1, 128}) {  // the range is checked before null pointers
        EXPECT_EQ(std::tuple(error(closeQueue(bad)), error(get(bad, nullptr)), error(getEx(bad, nullptr, 1, nullptr)),
                             error(signalQueue(bad)), error(put(bad, 0))),
                  std::tuple(11u, 11u, 11u, 11u, 11u))
            << bad;
    }
    // Slot 5 is free: closing it again is no error; the count is set to 0 once the arguments pass.
    EventData r{};
    uint32_t count = 5;
    EXPECT_EQ((std::tuple{closeQueue(5), error(get(5, &r)), error(getEx(5, &r, 1, nullptr)),
                          error(getEx(5, &r, 1, &count)), count, error(get(0, nullptr)), error(signalQueue(5))}),
              std::tuple(0u, 11u, 9u, 11u, 0u, 9u, 13u));
    int32_t id = 3;
    EXPECT_EQ(
        (std::tuple{error(RynCreateAppEventQueue(4, 0, &id)), id, error(RynCreateAppEventQueue(4, event, nullptr))}),
        std::tuple(11u, -1, 9u));
    // A queue of capacity 0 exists but has no entries.
    const int32_t empty = create(0);
    EXPECT_EQ(std::tuple(error(put(empty, 0)), error(get(empty, &r))), std::tuple(13u, 13u));
}

TEST_F(AppQueues, SlotsSignalsAndRelease) {
    for (int32_t i = 0; i < 128; ++i) ASSERT_EQ(create(2), i);
    int32_t id = 0;
    EXPECT_EQ((std::tuple{RynCreateAppEventQueue(2, event, &id) & 0x800000FF, id}), std::tuple(0x80000008u, -1));
    // The lowest free slot is taken first.
    EXPECT_EQ(closeQueue(77) + closeQueue(40), 0u);
    EXPECT_EQ((std::tuple{create(2), create(2)}), std::tuple(40, 77));
    // Queueing alone does not signal; setting does.
    const auto signalled = [this] { return RynDrvWaitForSingleEvent_8(event, 0) == 0; };
    EXPECT_EQ(
        (std::tuple{put(5, 1, RynSetAppEventDataEx), signalled(), put(5, 1), signalled(), signalQueue(5), signalled()}),
        std::tuple(0u, true, 0u, false, 0u, true));

    // No queue call may touch the table once release has deleted it.
    ASSERT_EQ(RynDrvReleaseLib_0(), 0u);
    EventData r{};
    EXPECT_EQ(std::tuple(error(get(0, &r)), error(RynCreateAppEventQueue(1, event, &id))), std::tuple(13u, 13u));
    ASSERT_EQ(RynDrvConnectLib(), 0u);
    // A new connection starts with every slot free.
    EXPECT_EQ((std::tuple{error(get(5, &r)), error(get(127, &r)), create(1)}), std::tuple(11u, 11u, 0));
}

// A queue large enough for every record: under concurrent producers each
// record arrives once, whole, and in its producer's order.
TEST_F(AppQueues, ProducersAndConsumerLoseNothing) {
    constexpr uint32_t kProducers = 3, kEach = 10000;
    const int32_t id = create(kProducers * kEach);
    std::vector<std::jthread> producers;
    for (uint32_t p = 0; p < kProducers; ++p) {
        producers.emplace_back([&, p] {
            for (uint32_t n = p * kEach; n < (p + 1) * kEach; ++n) put(id, n, RynSetAppEventDataEx);
        });
    }
    std::vector<uint32_t> next(kProducers, 0);
    EventData records[32];
    uint32_t count = 0, received = 0;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (received < kProducers * kEach && std::chrono::steady_clock::now() < deadline) {
        RynDrvWaitForSingleEvent_8(event, 1);
        for (; getEx(id, records, 32, &count) == 0; received += count) {
            for (const EventData &r : std::span(records, count)) {
                const uint32_t n = r.word[2], p = n / kEach % kProducers;
                ASSERT_EQ(std::vector(r.word, r.word + 8), record(n));  // whole: every word derives from n
                ASSERT_EQ(n, p * kEach + next[p]++) << "producer " << p;
            }
        }
    }
    EXPECT_EQ(next, std::vector<uint32_t>(kProducers, kEach));
}

}  // namespace
