// Event objects on Windows: the system's events (unnamed, auto-reset,
// initially non-signalled) and its waits, which release one waiter per
// signal and take all of several events as one step. Closing an event
// signals it until its waits have returned; they then see it closing and
// fail. A wait for all of several events, which one signal does not wake,
// looks for a closing event every kClosingCheckMs.
// windows.h first: Osa.h then keeps its definition of INVALID_HANDLE_VALUE.
#include "osa/windows/Native.h"

#include "osa/Events.h"

namespace ryn::osa::sys {
namespace {

constexpr DWORD kClosingCheckMs = 20;

static_assert(kWaitObject0 == WAIT_OBJECT_0 && kWaitAbandoned0 == WAIT_ABANDONED_0 && kWaitTimeout == WAIT_TIMEOUT &&
                  kWaitFailed == WAIT_FAILED && kWaitInfinite == INFINITE &&
                  kMaximumWaitObjects == MAXIMUM_WAIT_OBJECTS,
              "the wait results of Events.h are the system's");

bool anyClosing(uint32_t count, Event *const *events) {
    for (uint32_t i = 0; i < count; ++i) {
        if (events[i]->closing()) return true;
    }
    return false;
}

DWORD waitAllOnce(uint32_t count, const HANDLE *handles, DWORD timeoutMs) {
    const DWORD result = WaitForMultipleObjects(count, handles, TRUE, timeoutMs);
    // When all were waited for, any index in range means all: report the first.
    if (result < WAIT_OBJECT_0 + count) return kWaitObject0;
    if (result >= WAIT_ABANDONED_0 && result < WAIT_ABANDONED_0 + count) return kWaitAbandoned0;
    return result;
}

}  // namespace

NativeHandle newEvent() { return fromHandle(CreateEventA(nullptr, FALSE, FALSE, nullptr)); }

bool setEvent(Event &event) { return SetEvent(nativeOf(event.handle())) != 0; }

void wakeEvent(Event &event) { SetEvent(nativeOf(event.handle())); }

InPlace signalInPlace(Event &event, uint32_t incarnation) {
    return event.incarnation() == incarnation ? InPlace::NeedsCall : InPlace::Stale;
}

uint32_t waitForEvents(uint32_t count, Event *const *events, bool waitAll, uint32_t timeoutMs) {
    HANDLE handles[MAXIMUM_WAIT_OBJECTS] = {};
    for (uint32_t i = 0; i < count; ++i) handles[i] = nativeOf(events[i]->handle());
    DWORD result = WAIT_TIMEOUT;
    if (!waitAll || count == 1) {
        result = WaitForMultipleObjects(count, handles, FALSE, timeoutMs);
    } else {
        const ULONGLONG start = GetTickCount64();
        for (;;) {
            DWORD slice = kClosingCheckMs;
            bool last = false;
            if (timeoutMs != INFINITE) {
                const ULONGLONG spent = GetTickCount64() - start;
                const ULONGLONG left = spent >= timeoutMs ? 0 : timeoutMs - spent;
                if (left <= slice) {
                    slice = static_cast<DWORD>(left);
                    last = true;
                }
            }
            result = waitAllOnce(count, handles, slice);
            if (result != WAIT_TIMEOUT || last || anyClosing(count, events)) break;
        }
    }
    if (anyClosing(count, events)) return kWaitFailed;
    return result;
}

}  // namespace ryn::osa::sys
