// Event objects: what every platform shares (the handle table's kind of
// object, the checks of a wait list, holding the events while a call uses
// them); signalling and waiting are the system's (osa/System.h).
#include "osa/Events.h"

#include <chrono>
#include <new>

#include "osa/System.h"

namespace ryn::osa {

void Event::wakeUsers() { sys::wakeEvent(*this); }

OsaHandle createEvent() {
    auto *event = new (std::nothrow) Event();
    if (event == nullptr) return 0;
    const OsaHandle handle = publishHandle(sys::newEvent(), event);
    if (handle == INVALID_HANDLE_VALUE) {
        delete event;
        return 0;
    }
    return handle;
}

bool signalEvent(OsaHandle event) {
    const HandleRef<Event> held = acquireHandleOf<Event>(event);
    return held && sys::setEvent(*held);
}

int pollTimeoutMs(std::chrono::nanoseconds left) {
    if (left <= std::chrono::nanoseconds::zero()) return 0;
    const auto ms = std::chrono::ceil<std::chrono::milliseconds>(left).count();
    return ms > kLongestPollMs ? kLongestPollMs : static_cast<int>(ms);
}

uint32_t waitForEvents(uint32_t count, const OsaHandle *events, bool waitAll, uint32_t timeoutMs) {
    if (count == 0 || count > kMaximumWaitObjects || events == nullptr) return kWaitFailed;
    // Every event stays held for the whole wait, so that closing one wakes
    // the wait instead of pulling the object from under it.
    HandleRef<Event> held[kMaximumWaitObjects];
    Event *list[kMaximumWaitObjects];
    for (uint32_t i = 0; i < count; ++i) {
        held[i] = acquireHandleOf<Event>(events[i]);
        if (!held[i]) return kWaitFailed;
        for (uint32_t j = 0; j < i; ++j) {
            if (list[j] == held[i].get()) return kWaitFailed;
        }
        list[i] = held[i].get();
    }
    return sys::waitForEvents(count, list, waitAll, timeoutMs);
}

}  // namespace ryn::osa
