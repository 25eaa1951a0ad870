// Application event queues: event records queued in the library's memory
// and signalled through event objects, 128 queues under one lock.
#include <atomic>
#include <cstring>
#include <mutex>
#include <thread>
#include <new>

#include "core/ResultCode.h"
#include "device/AppEventQueueTable.h"
#include "osa/Events.h"

namespace ryn::appqueue {
namespace {

constexpr uint8_t kSourceId = source::kDeviceCore;
constexpr int32_t kQueueCount = 128;

struct Queue {
    OsaHandle event;  // nonzero: in use
    uint32_t capacity;
    uint32_t count;
    uint32_t readIndex;
    uint32_t writeIndex;
    EventData *storage;   // capacity entries, 0xFF while unused
    EventData **entries;  // per ring position, the entry written there
    osa::EventLink link;  // the event last signalled under `event`
};

// The table's lock. Its holders copy a few records and leave, so a thread
// that finds it taken waits by spinning (giving up its turn now and then)
// rather than going to sleep in the system: a producer and a consumer on
// two processors pass it back and forth without a system call.
class SpinLock {
public:
    void lock() {
        for (uint32_t tries = 0; locked_.exchange(true, std::memory_order_acquire);) {
            while (locked_.load(std::memory_order_relaxed)) {
                if (++tries % 64 == 0) {
                    std::this_thread::yield();
                } else {
                    relax();
                }
            }
        }
    }
    void unlock() { locked_.store(false, std::memory_order_release); }

private:
    static void relax() {
#if defined(__x86_64__) || defined(__i386__)
        __builtin_ia32_pause();
#endif
    }
    std::atomic<bool> locked_{false};
};

struct Table {
    SpinLock lock;
    Queue queues[kQueueCount];
};

constinit Table table{};
// Whether the table is open: from connect until release (both under the
// connection's own lock, never at the same time).
constinit std::atomic<bool> tableReady{false};

void releaseStorage(Queue &queue) {
    delete[] queue.entries;
    delete[] queue.storage;
    queue = Queue{};
}

uint32_t advance(const Queue &queue, uint32_t index) { return index + 1 == queue.capacity ? 0 : index + 1; }

// Takes the oldest entry out into `record`.
void takeOldest(Queue &queue, EventData &record) {
    EventData *entry =
        queue.entries[queue.readIndex] != nullptr ? queue.entries[queue.readIndex] : &queue.storage[queue.readIndex];
    record = *entry;
    std::memset(entry, 0xFF, sizeof *entry);
    queue.readIndex = advance(queue, queue.readIndex);
    --queue.count;
}

bool inRange(int32_t id) { return id >= 0 && id < kQueueCount; }

// Runs `body` on queue `id` under the table's lock, after the checks every
// queue call shares: the identifier's range, the table's existence, and
// (unless `freeSlotAllowed`) the slot being in use.
template <class Body>
ResultCode withQueue(int32_t id, Body body) {
    if (!inRange(id)) return RYN_FAILURE(kErrInvalidHandle);
    if (!tableReady.load(std::memory_order_acquire)) return RYN_FAILURE(kErrFailed);
    std::lock_guard lock(table.lock);
    return body(table.queues[id]);
}

// Checks of the calls that read or fill entries.
ResultCode usableQueue(const Queue &queue) {
    if (queue.event == 0) return RYN_FAILURE(kErrInvalidHandle);
    if (queue.storage == nullptr) return RYN_FAILURE(kErrFailed);
    return 0;
}

// Puts a record at the end of the queue; a full queue loses its oldest.
ResultCode append(Queue &slot, const EventData &record) {
    if (const ResultCode refused = usableQueue(slot)) return refused;
    EventData *entry = nullptr;
    if (slot.count >= slot.capacity) {
        entry = slot.entries[slot.readIndex] != nullptr ? slot.entries[slot.readIndex] : &slot.storage[slot.readIndex];
        slot.readIndex = advance(slot, slot.readIndex);
    } else {
        ++slot.count;
        entry = &slot.storage[slot.writeIndex];
    }
    *entry = record;
    slot.entries[slot.writeIndex] = entry;
    slot.writeIndex = advance(slot, slot.writeIndex);
    return 0;
}

// The queue's event and what is known of it (osa::EventLink), read under the
// lock; the signal is given outside it.
struct Signal {
    OsaHandle event = 0;
    osa::EventLink link;
};

Signal signalOf(const Queue &slot) { return {slot.event, slot.link}; }

// An event that is signalled already costs a few reads; one that must be
// woken, or was closed meanwhile, is looked up and held for the signal, which
// then fails rather than stray. What was learnt goes back to the queue.
ResultCode give(int32_t id, Signal signal) {
    const osa::EventLink before = signal.link;
    const bool signalled = osa::signalEvent(signal.event, signal.link);
    if (signal.link.event != before.event || signal.link.incarnation != before.incarnation) {
        withQueue(id, [&](Queue &slot) -> ResultCode {
            if (slot.event == signal.event) slot.link = signal.link;
            return 0;
        });
    }
    return signalled ? 0 : RYN_FAILURE(kErrFailed);
}

}  // namespace

void initialiseTable() {
    {
        std::lock_guard lock(table.lock);
        for (Queue &queue : table.queues) releaseStorage(queue);
    }
    tableReady.store(true, std::memory_order_release);
}

void releaseTable() {
    if (!tableReady.load(std::memory_order_acquire)) return;
    std::lock_guard lock(table.lock);
    for (Queue &queue : table.queues) releaseStorage(queue);
    tableReady.store(false, std::memory_order_release);
}

}  // namespace ryn::appqueue

using namespace ryn;
using namespace ryn::appqueue;

extern "C" {

ResultCode RYN_DECORATED(RynCreateAppEventQueue, 12)(uint32_t capacity, OsaHandle event, int32_t *queue) {
    if (queue == nullptr) return RYN_FAILURE(kErrRange);
    *queue = -1;
    if (event == 0) return RYN_FAILURE(kErrInvalidHandle);
    if (!tableReady.load(std::memory_order_acquire)) return RYN_FAILURE(kErrFailed);
    std::lock_guard lock(table.lock);
    int32_t id = 0;
    while (id < kQueueCount && table.queues[id].event != 0) ++id;
    ResultCode result = 0;
    if (id == kQueueCount) {
        result = RYN_FAILURE(kErrNoMemory);
    } else {
        Queue fresh{event, capacity, 0, 0, 0, nullptr, nullptr, {}};
        if (capacity != 0) {
            fresh.storage = new (std::nothrow) EventData[capacity];
            fresh.entries = new (std::nothrow) EventData *[capacity]();
        }
        if (capacity != 0 && (fresh.storage == nullptr || fresh.entries == nullptr)) {
            releaseStorage(fresh);
            result = RYN_FAILURE(kErrNoMemory);
        } else {
            if (capacity != 0) std::memset(fresh.storage, 0xFF, sizeof(EventData) * capacity);
            table.queues[id] = fresh;
            *queue = id;
        }
    }
    return result;
}

ResultCode RYN_DECORATED(RynCloseAppEventQueue, 4)(int32_t queue) {
    return withQueue(queue, [](Queue &slot) -> ResultCode {
        releaseStorage(slot);  // a free slot is closed again without complaint
        return 0;
    });
}

ResultCode RYN_DECORATED(RynGetAppEventData, 8)(int32_t queue, EventData *record) {
    if (inRange(queue) && record == nullptr) return RYN_FAILURE(kErrRange);
    return withQueue(queue, [record](Queue &slot) -> ResultCode {
        if (const ResultCode refused = usableQueue(slot)) return refused;
        if (slot.count == 0) return RYN_STATUS(kErrNothingToRead);
        takeOldest(slot, *record);
        return 0;
    });
}

ResultCode RYN_DECORATED(RynGetAppEventDataEx, 16)(int32_t queue, EventData *records, int32_t maximum,
                                                   uint32_t *count) {
    if (inRange(queue) && (records == nullptr || count == nullptr)) return RYN_FAILURE(kErrRange);
    return withQueue(queue, [=](Queue &slot) -> ResultCode {
        *count = 0;
        if (const ResultCode refused = usableQueue(slot)) return refused;
        if (slot.count == 0) return RYN_STATUS(kErrNothingToRead);
        uint32_t copied = 0;
        while (static_cast<int64_t>(copied) < maximum && slot.count > 0) {
            const uint32_t position = slot.readIndex;
            takeOldest(slot, records[copied++]);
            slot.entries[position] = nullptr;
        }
        *count = copied;
        return 0;
    });
}

ResultCode RYN_DECORATED(RynQueueAppEventDataEx, 36)(int32_t queue, uint32_t w2, uint32_t w3, uint32_t w4, uint32_t w5,
                                                     uint32_t w6, uint32_t w7, uint32_t w0, uint32_t w1) {
    const EventData record{{w0, w1, w2, w3, w4, w5, w6, w7}};
    return withQueue(queue, [&record](Queue &slot) { return append(slot, record); });
}

ResultCode RYN_DECORATED(RynSignalAppEvent, 4)(int32_t queue) {
    Signal signal;
    const ResultCode checked = withQueue(queue, [&signal](Queue &slot) -> ResultCode {
        signal = signalOf(slot);
        return 0;
    });
    if (checked != 0) return checked;
    return give(queue, signal);
}

ResultCode RYN_DECORATED(RynSetAppEventDataEx, 36)(int32_t queue, uint32_t w2, uint32_t w3, uint32_t w4, uint32_t w5,
                                                   uint32_t w6, uint32_t w7, uint32_t w0, uint32_t w1) {
    // Queued, and the event read, in one turn of the lock.
    const EventData record{{w0, w1, w2, w3, w4, w5, w6, w7}};
    Signal signal;
    const ResultCode queued = withQueue(queue, [&](Queue &slot) {
        signal = signalOf(slot);
        return append(slot, record);
    });
    if (isFailure(queued)) return queued;
    return give(queue, signal);
}

}  // extern "C"
