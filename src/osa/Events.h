// Event objects: unnamed auto-reset events, initially non-signalled.
//
// An event is an object of the system published in the handle table, so
// OsaDeviceClose closes it. A successful wait consumes the signal and so
// releases exactly one waiter; a wait for all of several events takes them
// as one step. A wait on an event that is closed meanwhile fails.
// - Linux: an eventfd beside a signalled state in user space. Its handle is
//   the file descriptor, and a driver in the same process may signal it by
//   writing to the descriptor. A signal with nobody asleep on the event only
//   sets the user-space state; one for a sleeping waiter goes through the
//   descriptor and wakes it.
// - Windows: an event object of the system (CreateEvent: unnamed, auto-reset,
//   non-signalled). Its handle is the HANDLE's value, a driver in the same
//   process signals it with SetEvent, and the system's waits do the rest.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

#include "Osa.h"
#include "osa/Handles.h"

namespace ryn::osa {

inline constexpr uint32_t kWaitObject0 = 0;
inline constexpr uint32_t kWaitAbandoned0 = 0x80;  // for mutexes of the system; not with events
inline constexpr uint32_t kWaitTimeout = 0x102;
inline constexpr uint32_t kWaitFailed = 0xFFFFFFFF;
inline constexpr uint32_t kWaitInfinite = 0xFFFFFFFF;
inline constexpr uint32_t kMaximumWaitObjects = 64;

// Event objects are kept for reuse once closed, never freed: a pointer to
// one always reaches an Event, and its incarnation tells whether it is still
// the event it was (see EventLink).
class Event final : public HandleObject {
public:
    static constexpr Kind kKind = Kind::Event;
    Event() : HandleObject(kKind) {}

    // The high 32 bits count the times the object was made an event anew
    // (its incarnation); the low 32 are what the platform keeps beside the
    // system's object (Linux: the user-space signal and the count of
    // sleeping waiters; see posix/Events.cpp). One word, so that a change
    // made for one incarnation never lands on the next.
    std::atomic<uint64_t> state{0};
    uint32_t incarnation() const { return static_cast<uint32_t>(state.load(std::memory_order_acquire) >> 32); }

    void wakeUsers() override;
    // Makes a closed event ready to be published again.
    void renew();
};

// A new event, or 0 when none can be made.
OsaHandle createEvent();
bool signalEvent(OsaHandle event);

// What a caller that signals one handle again and again (an application
// event queue) remembers of the event it found there, so that the next
// signal need not look it up: while that event is open it is still the one
// under the handle, and a signal of an event already signalled then costs no
// more than a few reads. Empty at first; signalEvent fills it.
struct EventLink {
    Event *event = nullptr;
    uint32_t incarnation = 0;
};
bool signalEvent(OsaHandle event, EventLink &link);

// Takes a closed event (retracted from the table) into the pool of events
// for reuse.
void recycleEvent(Event *event);

// One poll of a timed wait on Linux lasts at most this long; a wait with
// more time left polls again until its deadline.
inline constexpr int kLongestPollMs = 1 << 30;
// The poll time-out for a wait with `left` until its deadline: whole
// milliseconds rounded up, 0 once the deadline has passed, never more than
// kLongestPollMs (a negative time-out would wait without limit).
int pollTimeoutMs(std::chrono::nanoseconds left);

// The index of the signalled event (wait-any: the lowest; wait-all: 0),
// kWaitTimeout, or kWaitFailed for a count of 0 or above 64, a handle that
// is not an event, an event named twice, or an event closed during the wait.
uint32_t waitForEvents(uint32_t count, const OsaHandle *events, bool waitAll, uint32_t timeoutMs);

}  // namespace ryn::osa
