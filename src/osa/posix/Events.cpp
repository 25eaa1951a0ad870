// Event objects on Linux: eventfds. A successful wait consumes the signal
// (reads the counter back to 0), so it releases exactly one waiter; waiters
// of this library consume under one lock, so that a wait for all of several
// events takes them as one step.
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <mutex>

#include "osa/Events.h"
#include "osa/System.h"

namespace ryn::osa::sys {
namespace {

// Held while a waiter of this library consumes signals.
std::mutex consumeLock;

int descriptor(OsaHandle event) { return static_cast<int>(event); }

bool tryConsume(OsaHandle event) {
    uint64_t count = 0;
    return read(descriptor(event), &count, sizeof count) == sizeof count;
}

bool isSignalled(OsaHandle event) {
    pollfd entry{descriptor(event), POLLIN, 0};
    return poll(&entry, 1, 0) == 1 && (entry.revents & POLLIN) != 0;
}

// Consumes one signalled event (the lowest index), or all of them when
// every one is signalled; backs out if a signal vanished meanwhile.
bool tryTake(uint32_t count, const OsaHandle *events, bool waitAll, uint32_t &index) {
    std::lock_guard lock(consumeLock);
    if (!waitAll) {
        for (uint32_t i = 0; i < count; ++i) {
            if (tryConsume(events[i])) {
                index = i;
                return true;
            }
        }
        return false;
    }
    for (uint32_t i = 0; i < count; ++i) {
        if (!isSignalled(events[i])) return false;
    }
    for (uint32_t i = 0; i < count; ++i) {
        if (!tryConsume(events[i])) {
            for (uint32_t j = 0; j < i; ++j) setEvent(events[j]);
            return false;
        }
    }
    index = 0;
    return true;
}

// Blocks until one of the events that matter may have become signalled (any
// of them for wait-any, one not yet signalled for wait-all) or the time is up.
void block(uint32_t count, const OsaHandle *events, bool waitAll, int timeoutMs) {
    pollfd entries[kMaximumWaitObjects];
    nfds_t watched = 0;
    for (uint32_t i = 0; i < count; ++i) {
        if (waitAll && isSignalled(events[i])) continue;
        entries[watched++] = pollfd{descriptor(events[i]), POLLIN, 0};
    }
    if (watched == 0) return;  // all signalled: taken by someone else meanwhile or about to be ours
    poll(entries, watched, timeoutMs);
}

}  // namespace

NativeHandle newEvent() { return eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK); }

bool setEvent(OsaHandle event) {
    const uint64_t one = 1;
    // A full counter (EAGAIN) is still a signalled event.
    return write(descriptor(event), &one, sizeof one) == sizeof one || errno == EAGAIN;
}

uint32_t waitForEvents(uint32_t count, const OsaHandle *events, bool waitAll, uint32_t timeoutMs) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        uint32_t index = 0;
        if (tryTake(count, events, waitAll, index)) return kWaitObject0 + index;
        int slice = -1;
        if (timeoutMs != kWaitInfinite) {
            slice = pollTimeoutMs(deadline - Clock::now());
            if (slice == 0) return kWaitTimeout;
        }
        block(count, events, waitAll, slice);
    }
}

}  // namespace ryn::osa::sys
