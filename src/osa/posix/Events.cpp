// Event objects on Linux: an eventfd beside a signalled state in user space.
//
// Event::state holds
// - kSignalled: the event is signalled in user space. A signal while nobody
//   may be asleep on the event only sets it: no system call.
// - kInDescriptor: a signal went to the descriptor (written as the eventfd's
//   counter) because a waiter may be asleep in poll on it; cleared by the
//   waiter that reads the counter back.
// - kTaking: a wait for several events is taking them as one step; a
//   single wait leaves the user-space signal alone meanwhile.
// - the number of waits that may sleep on the descriptor, from kSleeper up.
// A driver in the process may also write to the descriptor itself; a wait
// takes such a signal as it takes one of its own (it reads the counter back
// to 0). A signal written that way while the event is already signalled in
// user space may count once more; signals through the library never do.
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <chrono>
#include <mutex>

#include "osa/Events.h"
#include "osa/System.h"

namespace ryn::osa::sys {
namespace {

// In the low 32 bits of Event::state; the high 32 are the incarnation.
constexpr uint64_t kSignalled = 1u << 0;
constexpr uint64_t kInDescriptor = 1u << 1;
constexpr uint64_t kTaking = 1u << 2;
constexpr uint64_t kSleeper = 1u << 8;
constexpr uint64_t kSleepers = 0xFFFFFF00u;

bool sleepers(uint64_t state) { return (state & kSleepers) != 0; }

using Clock = std::chrono::steady_clock;

int descriptor(const Event &event) { return static_cast<int>(event.handle()); }

// Reads the descriptor's counter back to 0: whether it held a signal.
bool readDescriptor(const Event &event) {
    uint64_t count = 0;
    return read(descriptor(event), &count, sizeof count) == sizeof count;
}

void writeDescriptor(const Event &event) {
    const uint64_t one = 1;
    // A full counter (EAGAIN) is still a signalled descriptor.
    [[maybe_unused]] const ssize_t written = write(descriptor(event), &one, sizeof one);
}

void relax() {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}

// Takes the user-space signal; waits out a wait-all that is taking the event.
bool takeSignal(Event &event) {
    uint64_t state = event.state.load(std::memory_order_acquire);
    for (;;) {
        if ((state & kTaking) != 0) {
            relax();
            state = event.state.load(std::memory_order_acquire);
            continue;
        }
        if ((state & kSignalled) == 0) return false;
        if (event.state.compare_exchange_weak(state, state & ~kSignalled, std::memory_order_acq_rel)) return true;
    }
}

// Takes a signal wherever it is: in user space, or in the descriptor (sent
// to a sleeper, or written there by a driver).
bool take(Event &event) {
    if (takeSignal(event)) return true;
    if ((event.state.load(std::memory_order_acquire) & kInDescriptor) != 0)
        event.state.fetch_and(~kInDescriptor, std::memory_order_acq_rel);
    return readDescriptor(event);
}

// A wait that may sleep on the event's descriptor from here on. A signal
// sees the count before it chooses between user space and the descriptor,
// and the wait looks for a signal again after counting itself, so no signal
// is missed in between.
void addSleeper(Event &event) { event.state.fetch_add(kSleeper, std::memory_order_acq_rel); }

void removeSleeper(Event &event) {
    const uint64_t before = event.state.fetch_sub(kSleeper, std::memory_order_acq_rel);
    // The last sleeper leaving with a signal still in the descriptor (its
    // waiter timed out) moves it back to user space, where the next signal
    // finds the event already signalled.
    if ((before & kSleepers) == kSleeper && (before & kInDescriptor) != 0) {
        event.state.fetch_and(~kInDescriptor, std::memory_order_acq_rel);
        if (readDescriptor(event)) setEvent(event);
    }
}

bool anyClosing(uint32_t count, Event *const *events) {
    for (uint32_t i = 0; i < count; ++i) {
        if (events[i]->closing()) return true;
    }
    return false;
}

// Waits for several events take under this lock, one at a time; a single
// wait does not.
std::mutex severalLock;

bool tryTakeAny(uint32_t count, Event *const *events, uint32_t &index) {
    std::lock_guard lock(severalLock);
    for (uint32_t i = 0; i < count; ++i) {
        if (take(*events[i])) {
            index = i;
            return true;
        }
    }
    return false;
}

// Takes every event or none: each is marked as being taken, signals in the
// descriptors are moved to user space, and only when all are signalled are
// all the signals taken.
bool tryTakeAll(uint32_t count, Event *const *events) {
    std::lock_guard lock(severalLock);
    for (uint32_t i = 0; i < count; ++i) events[i]->state.fetch_or(kTaking, std::memory_order_acq_rel);
    bool all = true;
    for (uint32_t i = 0; i < count && all; ++i) {
        Event &event = *events[i];
        if ((event.state.load(std::memory_order_acquire) & kSignalled) != 0) continue;
        event.state.fetch_and(~kInDescriptor, std::memory_order_acq_rel);
        if (readDescriptor(event)) {
            event.state.fetch_or(kSignalled, std::memory_order_acq_rel);
        } else {
            all = false;
        }
    }
    const uint64_t clear = all ? (kTaking | kSignalled) : kTaking;
    for (uint32_t i = 0; i < count; ++i) events[i]->state.fetch_and(~clear, std::memory_order_acq_rel);
    return all;
}

bool tryTake(uint32_t count, Event *const *events, bool waitAll, uint32_t &index) {
    if (count == 1) {
        index = 0;
        return take(*events[0]);
    }
    if (!waitAll) return tryTakeAny(count, events, index);
    index = 0;
    return tryTakeAll(count, events);
}

// Sleeps until a descriptor that matters may have become readable (any for
// wait-any; for wait-all, one of an event not signalled in user space) or
// the time is up.
void block(uint32_t count, Event *const *events, bool waitAll, int timeoutMs) {
    pollfd entries[kMaximumWaitObjects];
    nfds_t watched = 0;
    for (uint32_t i = 0; i < count; ++i) {
        if (waitAll && (events[i]->state.load(std::memory_order_acquire) & kSignalled) != 0) continue;
        entries[watched++] = pollfd{descriptor(*events[i]), POLLIN, 0};
    }
    if (watched == 0) return;  // all signalled: taken by someone else meanwhile, or about to be ours
    poll(entries, watched, timeoutMs);
}

}  // namespace

NativeHandle newEvent() { return eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK); }

bool setEvent(Event &event) {
    uint64_t state = event.state.load(std::memory_order_acquire);
    for (;;) {
        if ((state & (kSignalled | kInDescriptor)) != 0) return true;  // signalled already
        if (sleepers(state)) {
            if (event.state.compare_exchange_weak(state, state | kInDescriptor, std::memory_order_acq_rel)) {
                writeDescriptor(event);
                return true;
            }
        } else if (event.state.compare_exchange_weak(state, state | kSignalled, std::memory_order_acq_rel)) {
            return true;
        }
    }
}

void wakeEvent(Event &event) { writeDescriptor(event); }

InPlace signalInPlace(Event &event, uint32_t incarnation) {
    uint64_t state = event.state.load(std::memory_order_acquire);
    for (;;) {
        if (state >> 32 != incarnation) return InPlace::Stale;
        if ((state & (kSignalled | kInDescriptor)) != 0) return InPlace::Done;
        if (sleepers(state)) return InPlace::NeedsCall;  // a sleeper is woken through the descriptor
        if (event.state.compare_exchange_weak(state, state | kSignalled, std::memory_order_acq_rel))
            return InPlace::Done;
    }
}

uint32_t waitForEvents(uint32_t count, Event *const *events, bool waitAll, uint32_t timeoutMs) {
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    if (anyClosing(count, events)) return kWaitFailed;
    uint32_t index = 0;
    if (count == 1 && takeSignal(*events[0])) return kWaitObject0;
    for (uint32_t i = 0; i < count; ++i) addSleeper(*events[i]);
    uint32_t result = kWaitFailed;
    for (;;) {
        if (anyClosing(count, events)) break;
        if (tryTake(count, events, waitAll, index)) {
            // A signal taken as the event was being closed is no signal.
            if (!anyClosing(count, events)) result = kWaitObject0 + index;
            break;
        }
        int slice = -1;
        if (timeoutMs != kWaitInfinite) {
            slice = pollTimeoutMs(deadline - Clock::now());
            if (slice == 0) {
                result = kWaitTimeout;
                break;
            }
        }
        block(count, events, waitAll, slice);
    }
    for (uint32_t i = 0; i < count; ++i) removeSleeper(*events[i]);
    return result;
}

}  // namespace ryn::osa::sys
