#include "osa/Handles.h"

#include <atomic>
#include <mutex>
#include <new>

namespace ryn::osa {

namespace detail {
constinit std::atomic<Slot *> handleChunks[kChunkCount]{};
}  // namespace detail

namespace {

using namespace detail;

// Serialises publishing and retracting. Made on first use: handles are
// published while the library loads, before or after this file's static
// objects are made (a std::mutex is not made at compile time everywhere).
std::mutex &writer() {
    static std::mutex instance;
    return instance;
}

Slot *slotOf(uint32_t handle, bool create) {
    if (handle >= kHandleLimit) return nullptr;
    const uint32_t index = handle >> kHandleShift;
    std::atomic<Slot *> &chunk = handleChunks[index / kChunkSize];
    Slot *slots = chunk.load(std::memory_order_acquire);
    if (slots == nullptr && create) {
        // Chunks live as long as the process; they are reached from the table.
        slots = new (std::nothrow) Slot[kChunkSize]();
        if (slots == nullptr) return nullptr;
        chunk.store(slots, std::memory_order_release);
    }
    return slots == nullptr ? nullptr : &slots[index % kChunkSize];
}

}  // namespace

OsaHandle publishHandle(sys::NativeHandle native, HandleObject *object) {
    if (native == sys::kNoNativeHandle) return INVALID_HANDLE_VALUE;
    const OsaHandle handle = sys::adoptHandle(native);
    if (handle == INVALID_HANDLE_VALUE) return INVALID_HANDLE_VALUE;
    std::lock_guard lock(writer());
    Slot *slot = slotOf(handle, true);
    if (slot == nullptr) {
        sys::closeHandle(handle);
        return INVALID_HANDLE_VALUE;
    }
    slot->store(object, std::memory_order_release);
    return handle;
}

HandleObject *retractHandle(OsaHandle handle) {
    std::lock_guard lock(writer());
    Slot *slot = slotOf(handle, false);
    HandleObject *object = slot == nullptr ? nullptr : slot->exchange(nullptr, std::memory_order_acq_rel);
    if (object != nullptr) sys::closeHandle(handle);
    return object;
}

}  // namespace ryn::osa
