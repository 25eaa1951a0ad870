// Event objects: what every platform shares (the handle table's kind of
// object, the checks of a wait list); creating, signalling and waiting are
// the system's (osa/System.h).
#include "osa/Events.h"

#include <chrono>
#include <new>

#include "osa/Handles.h"
#include "osa/System.h"

namespace ryn::osa {
namespace {

class Event final : public HandleObject {
public:
    static constexpr Kind kKind = Kind::Event;
    Event() : HandleObject(kKind) {}
};

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
    const OsaHandle handle = publishHandle(sys::newEvent(), event);
    if (handle == INVALID_HANDLE_VALUE) {
        delete event;
        return 0;
    }
    return handle;
}

bool signalEvent(OsaHandle event) { return lookupHandleOf<Event>(event) != nullptr && sys::setEvent(event); }

int pollTimeoutMs(std::chrono::nanoseconds left) {
    if (left <= std::chrono::nanoseconds::zero()) return 0;
    const auto ms = std::chrono::ceil<std::chrono::milliseconds>(left).count();
    return ms > kLongestPollMs ? kLongestPollMs : static_cast<int>(ms);
}

uint32_t waitForEvents(uint32_t count, const OsaHandle *events, bool waitAll, uint32_t timeoutMs) {
    if (!validWaitList(count, events)) return kWaitFailed;
    return sys::waitForEvents(count, events, waitAll, timeoutMs);
}

}  // namespace ryn::osa
