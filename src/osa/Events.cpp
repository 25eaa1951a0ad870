#include "osa/Events.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <mutex>
#include <new>

#include "osa/Handles.h"

namespace ryn::osa {
namespace {

class Event final : public HandleObject {
public:
    static constexpr Kind kKind = Kind::Event;
    Event() : HandleObject(kKind) {}
};

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
            for (uint32_t j = 0; j < i; ++j) signalEvent(events[j]);
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

bool validWaitList(uint32_t count, const OsaHandle *events) {
    if (count == 0 || count > kMaximumWaitObjects || events == nullptr) return false;
    for (uint32_t i = 0; i < count; ++i) {
        if (lookupHandleOf<Event>(events[i]) == nullptr) return false;
        for (uint32_t j = 0; j < i; ++j) {
            if (events[j] == events[i]) return false;
        }
    }
    return true;
}

}  // namespace

OsaHandle createEvent() {
    auto *event = new (std::nothrow) Event();
    if (event == nullptr) return 0;
    const OsaHandle handle = publishHandle(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), event);
    if (handle == INVALID_HANDLE_VALUE) {
        delete event;
        return 0;
    }
    return handle;
}

bool signalEvent(OsaHandle event) {
    if (lookupHandleOf<Event>(event) == nullptr) return false;
    const uint64_t one = 1;
    // A full counter (EAGAIN) is still a signalled event.
    return write(descriptor(event), &one, sizeof one) == sizeof one || errno == EAGAIN;
}

int pollTimeoutMs(std::chrono::nanoseconds left) {
    if (left <= std::chrono::nanoseconds::zero()) return 0;
    const auto ms = std::chrono::ceil<std::chrono::milliseconds>(left).count();
    return ms > kLongestPollMs ? kLongestPollMs : static_cast<int>(ms);
}

uint32_t waitForEvents(uint32_t count, const OsaHandle *events, bool waitAll, uint32_t timeoutMs) {
    if (!validWaitList(count, events)) return kWaitFailed;
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

}  // namespace ryn::osa
