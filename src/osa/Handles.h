// The table of operating-system handles given out by this layer.
//
// Every handle is a file descriptor owned by the object published under it
// (a device connection, an event object). Lookups take no lock, so that
// concurrent requests on one connection do not contend; publishing and
// retracting are serialised. An object must not be retracted while another
// thread still uses it, as with any handle that is being closed.
#pragma once

#include <atomic>
#include <cstdint>

#include "Osa.h"

namespace ryn::osa {

class HandleObject {
public:
    enum class Kind : uint8_t { Device, Event };

    explicit HandleObject(Kind kind) : kind_(kind) {}
    virtual ~HandleObject() = default;
    HandleObject(const HandleObject &) = delete;
    HandleObject &operator=(const HandleObject &) = delete;

    Kind kind() const { return kind_; }

private:
    Kind kind_;
};

// Takes over `fd`: moves it above the standard streams (so that no handle is
// ever 0) and publishes `object` under it. Returns the handle, or
// INVALID_HANDLE_VALUE (with `fd` closed) when the table has no room.
OsaHandle publishHandle(int fd, HandleObject *object);

namespace detail {
inline constexpr uint32_t kChunkSize = 1024;
inline constexpr uint32_t kChunkCount = 1024;  // descriptors below 1,048,576
using Slot = std::atomic<HandleObject *>;
extern std::atomic<Slot *> handleChunks[kChunkCount];
}  // namespace detail

// The object published under `handle`, or null. Inline: it sits on the path
// of every driver request.
inline HandleObject *lookupHandle(OsaHandle handle) {
    using namespace detail;
    if (handle >= kChunkSize * kChunkCount) return nullptr;
    const Slot *slots = handleChunks[handle / kChunkSize].load(std::memory_order_acquire);
    return slots == nullptr ? nullptr : slots[handle % kChunkSize].load(std::memory_order_acquire);
}

// Like lookupHandle, but only an object of the given kind.
template <class T>
T *lookupHandleOf(OsaHandle handle) {
    HandleObject *object = lookupHandle(handle);
    return object != nullptr && object->kind() == T::kKind ? static_cast<T *>(object) : nullptr;
}

// Removes `handle` from the table and closes its descriptor; returns the
// object so that the caller can finish it, or null for an unknown handle.
HandleObject *retractHandle(OsaHandle handle);

}  // namespace ryn::osa
