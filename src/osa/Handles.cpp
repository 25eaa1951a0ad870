#include "osa/Handles.h"

#include <atomic>
#include <mutex>
#include <new>
#include <thread>

namespace ryn::osa {
namespace {

// The table is indexed by the handle's value shifted right by kHandleShift:
// file descriptors count up from 0, Windows handles are multiples of 4.
#if defined(_WIN32)
constexpr uint32_t kHandleShift = 2;
#else
constexpr uint32_t kHandleShift = 0;
#endif
constexpr uint32_t kChunkSize = 1024;
constexpr uint32_t kChunkCount = 1024;  // slots for 1,048,576 handles
constexpr uint64_t kHandleLimit = uint64_t{kChunkSize} * kChunkCount << kHandleShift;
using Slot = std::atomic<HandleObject *>;
constinit std::atomic<Slot *> handleChunks[kChunkCount]{};

// Lookups in progress, between reading a slot and counting the use in the
// object, in two generations: a retraction moves new lookups to the other
// generation and waits for the old one to empty, so that it never waits on
// lookups that started after it (which can only find the slot empty).
constinit std::atomic<uint32_t> generation{0};
constinit std::atomic<uint32_t> lookupsInProgress[2]{};

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

// With the writer lock held, after a slot was emptied: every lookup that may
// still have read the old object has counted its use by the time this returns.
void waitForLookups() {
    const uint32_t old = generation.fetch_add(1, std::memory_order_seq_cst) & 1;
    while (lookupsInProgress[old].load(std::memory_order_seq_cst) != 0) std::this_thread::yield();
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
    object->handle_ = handle;
    slot->store(object, std::memory_order_release);
    return handle;
}

HandleObject *acquireHandle(OsaHandle handle) {
    if (handle >= kHandleLimit) return nullptr;
    const uint32_t index = handle >> kHandleShift;
    const Slot *slots = handleChunks[index / kChunkSize].load(std::memory_order_acquire);
    if (slots == nullptr) return nullptr;
    std::atomic<uint32_t> &gate = lookupsInProgress[generation.load(std::memory_order_seq_cst) & 1];
    gate.fetch_add(1, std::memory_order_seq_cst);
    HandleObject *object = slots[index % kChunkSize].load(std::memory_order_seq_cst);
    if (object != nullptr) object->enter();
    gate.fetch_sub(1, std::memory_order_release);
    return object;
}

HandleObject *retractHandle(OsaHandle handle) {
    HandleObject *object = nullptr;
    {
        std::lock_guard lock(writer());
        Slot *slot = slotOf(handle, false);
        if (slot != nullptr) object = slot->exchange(nullptr, std::memory_order_seq_cst);
        if (object == nullptr) return nullptr;
        waitForLookups();
    }
    object->closing_.store(true, std::memory_order_seq_cst);
    // Calls in flight finish on their own; waits are woken until they notice.
    for (uint32_t round = 0; object->users_.load(std::memory_order_seq_cst) != 0; ++round) {
        object->wakeUsers();
        if (round < 64) {
            std::this_thread::yield();
        } else {
            sys::sleepMs(1);
        }
    }
    sys::closeHandle(handle);
    return object;
}

}  // namespace ryn::osa
