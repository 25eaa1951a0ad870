// Event objects on Windows: the system's events (unnamed, auto-reset,
// initially non-signalled) and its waits, which release one waiter per
// signal and take all of several events as one step.
// windows.h first: Osa.h then keeps its definition of INVALID_HANDLE_VALUE.
#include "osa/windows/Native.h"

#include "osa/Events.h"

namespace ryn::osa::sys {

static_assert(kWaitObject0 == WAIT_OBJECT_0 && kWaitAbandoned0 == WAIT_ABANDONED_0 && kWaitTimeout == WAIT_TIMEOUT &&
                  kWaitFailed == WAIT_FAILED && kWaitInfinite == INFINITE &&
                  kMaximumWaitObjects == MAXIMUM_WAIT_OBJECTS,
              "the wait results of Events.h are the system's");

NativeHandle newEvent() { return fromHandle(CreateEventA(nullptr, FALSE, FALSE, nullptr)); }

bool setEvent(OsaHandle event) { return SetEvent(nativeOf(event)) != 0; }

uint32_t waitForEvents(uint32_t count, const OsaHandle *events, bool waitAll, uint32_t timeoutMs) {
    if (count == 1) return WaitForSingleObject(nativeOf(events[0]), timeoutMs);
    HANDLE handles[MAXIMUM_WAIT_OBJECTS] = {};
    for (uint32_t i = 0; i < count; ++i) handles[i] = nativeOf(events[i]);
    const DWORD result = WaitForMultipleObjects(count, handles, waitAll ? TRUE : FALSE, timeoutMs);
    // When all were waited for, any index in range means all: report the first.
    if (waitAll && result < WAIT_OBJECT_0 + count) return kWaitObject0;
    if (waitAll && result >= WAIT_ABANDONED_0 && result < WAIT_ABANDONED_0 + count) return kWaitAbandoned0;
    return result;
}

}  // namespace ryn::osa::sys
