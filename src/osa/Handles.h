// The table of operating-system handles given out by this layer.
//
// Every handle is a handle of the system (a file descriptor on Linux, a
// HANDLE on Windows) owned by the object published under it (a device
// connection, an event object). Lookups take no lock, so that
// concurrent requests on one connection do not contend; publishing and
// retracting are serialised. An object must not be retracted while another
// thread still uses it, as with any handle that is being closed.
#pragma once

#include <atomic>
#include <cstdint>

#include "Osa.h"
#include "osa/System.h"

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

// Takes over `native` as a handle of this layer (sys::adoptHandle: never 0,
// never a standard stream) and publishes `object` under it. Returns the
// handle, or INVALID_HANDLE_VALUE (with `native` closed) when the system gave
// none (kNoNativeHandle) or the table has no room.
OsaHandle publishHandle(sys::NativeHandle native, HandleObject *object);

namespace detail {
// The table is indexed by the handle's value shifted right by kHandleShift:
// file descriptors count up from 0, Windows handles are multiples of 4.
#if defined(_WIN32)
inline constexpr uint32_t kHandleShift = 2;
#else
inline constexpr uint32_t kHandleShift = 0;
#endif
inline constexpr uint32_t kChunkSize = 1024;
inline constexpr uint32_t kChunkCount = 1024;  // slots for 1,048,576 handles
inline constexpr uint64_t kHandleLimit = uint64_t{kChunkSize} * kChunkCount << kHandleShift;
using Slot = std::atomic<HandleObject *>;
extern std::atomic<Slot *> handleChunks[kChunkCount];
}  // namespace detail

// The object published under `handle`, or null. Inline: it sits on the path
// of every driver request.
inline HandleObject *lookupHandle(OsaHandle handle) {
    using namespace detail;
    if (handle >= kHandleLimit) return nullptr;
    const uint32_t index = handle >> kHandleShift;
    const Slot *slots = handleChunks[index / kChunkSize].load(std::memory_order_acquire);
    return slots == nullptr ? nullptr : slots[index % kChunkSize].load(std::memory_order_acquire);
}

// Like lookupHandle, but only an object of the given kind.
template <class T>
T *lookupHandleOf(OsaHandle handle) {
    HandleObject *object = lookupHandle(handle);
    return object != nullptr && object->kind() == T::kKind ? static_cast<T *>(object) : nullptr;
}

// Removes `handle` from the table and closes it (sys::closeHandle); returns the
// object so that the caller can finish it, or null for an unknown handle.
HandleObject *retractHandle(OsaHandle handle);

}  // namespace ryn::osa
