// Event objects: unnamed auto-reset events, initially non-signalled.
//
// An event is an eventfd published in the handle table, so its handle is a
// file descriptor, OsaDeviceClose closes it, and a driver in the same
// process signals it by writing to the descriptor. A successful wait
// consumes the signal (reads the counter back to 0) and so releases exactly
// one waiter. Waiters of this library consume under one lock, so a wait for
// all of several events takes them as one step.
#pragma once

#include <chrono>
#include <cstdint>

#include "Osa.h"

namespace ryn::osa {

inline constexpr uint32_t kWaitObject0 = 0;
inline constexpr uint32_t kWaitAbandoned0 = 0x80;  // cannot happen with events here
inline constexpr uint32_t kWaitTimeout = 0x102;
inline constexpr uint32_t kWaitFailed = 0xFFFFFFFF;
inline constexpr uint32_t kWaitInfinite = 0xFFFFFFFF;
inline constexpr uint32_t kMaximumWaitObjects = 64;

// A new event, or 0 when none can be made.
OsaHandle createEvent();
bool signalEvent(OsaHandle event);
// The index of the signalled event (wait-any: the lowest; wait-all: 0),
// kWaitTimeout, or kWaitFailed for a count of 0 or above 64, a handle that
// is not an event, or an event named twice.
// One poll of a timed wait lasts at most this long; a wait with more time
// left polls again until its deadline.
inline constexpr int kLongestPollMs = 1 << 30;
// The poll time-out for a wait with `left` until its deadline: whole
// milliseconds rounded up, 0 once the deadline has passed, never more than
// kLongestPollMs (a negative time-out would wait without limit).
int pollTimeoutMs(std::chrono::nanoseconds left);

uint32_t waitForEvents(uint32_t count, const OsaHandle *events, bool waitAll, uint32_t timeoutMs);

}  // namespace ryn::osa
