// Event objects: what every platform shares (the handle table's kind of
// object, the checks of a wait list, holding the events while a call uses
// them); signalling and waiting are the system's (osa/System.h).
#include "osa/Events.h"

#include <chrono>
#include <mutex>
#include <new>
#include <vector>

#include "osa/System.h"

namespace ryn::osa {

namespace {

// Closed events, kept for the next createEvent. Reached from here, they are
// not lost; there are never more of them than events were open at once.
struct Pool {
    std::mutex lock;
    std::vector<Event *> free;
};

// Made once and never destroyed, so that the events stay reachable to the end.
Pool &pool() {
    static Pool *const instance = new Pool;
    return *instance;
}

Event *takeFromPool() {
    Pool &events = pool();
    std::lock_guard lock(events.lock);
    if (events.free.empty()) return nullptr;
    Event *event = events.free.back();
    events.free.pop_back();
    return event;
}

}  // namespace

void Event::wakeUsers() { sys::wakeEvent(*this); }

void Event::renew() {
    state.store(uint64_t{incarnation() + 1u} << 32, std::memory_order_release);
    reopen();
}

void recycleEvent(Event *event) {
    Pool &events = pool();
    std::lock_guard lock(events.lock);
    try {
        events.free.push_back(event);
    } catch (const std::bad_alloc &) {
        // No room to keep it: it stays allocated, unreachable, rather than
        // freed under a link that may still read it.
    }
}

OsaHandle createEvent() {
    Event *event = takeFromPool();
    if (event != nullptr) {
        event->renew();
    } else {
        event = new (std::nothrow) Event();
        if (event == nullptr) return 0;
    }
    const OsaHandle handle = publishHandle(sys::newEvent(), event);
    if (handle == INVALID_HANDLE_VALUE) {
        recycleEvent(event);
        return 0;
    }
    return handle;
}

bool signalEvent(OsaHandle event) {
    const HandleRef<Event> held = acquireHandleOf<Event>(event);
    return held && sys::setEvent(*held);
}

bool signalEvent(OsaHandle handle, EventLink &link) {
    if (Event *event = link.event; event != nullptr && !event->closing()) {
        // The event found last time, if it is still that incarnation.
        switch (sys::signalInPlace(*event, link.incarnation)) {
            case sys::InPlace::Done:
                return true;
            case sys::InPlace::Stale:
                break;
            case sys::InPlace::NeedsCall:
                event->enter();
                if (!event->closing() && event->incarnation() == link.incarnation) {
                    const bool signalled = sys::setEvent(*event);
                    event->leave();
                    return signalled;
                }
                event->leave();
                break;
        }
    }
    const HandleRef<Event> held = acquireHandleOf<Event>(handle);
    if (!held) {
        link = {};
        return false;
    }
    link = {held.get(), held->incarnation()};
    return sys::setEvent(*held);
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
