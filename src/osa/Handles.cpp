#include "osa/Handles.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <new>

namespace ryn::osa {

namespace detail {
constinit std::atomic<Slot *> handleChunks[kChunkCount]{};
}  // namespace detail

namespace {

using namespace detail;

constexpr int kLowestHandle = 3;

// Serialises publishing and retracting.
constinit std::mutex writer;

Slot *slotOf(uint32_t handle, bool create) {
    if (handle >= kChunkSize * kChunkCount) return nullptr;
    std::atomic<Slot *> &chunk = handleChunks[handle / kChunkSize];
    Slot *slots = chunk.load(std::memory_order_acquire);
    if (slots == nullptr && create) {
        // Chunks live as long as the process; they are reached from the table.
        slots = new (std::nothrow) Slot[kChunkSize]();
        if (slots == nullptr) return nullptr;
        chunk.store(slots, std::memory_order_release);
    }
    return slots == nullptr ? nullptr : &slots[handle % kChunkSize];
}

}  // namespace

OsaHandle publishHandle(int fd, HandleObject *object) {
    if (fd >= 0 && fd < kLowestHandle) {
        const int moved = fcntl(fd, F_DUPFD_CLOEXEC, kLowestHandle);
        close(fd);
        fd = moved;
    }
    if (fd < 0) return INVALID_HANDLE_VALUE;
    std::lock_guard lock(writer);
    Slot *slot = slotOf(static_cast<uint32_t>(fd), true);
    if (slot == nullptr) {
        close(fd);
        return INVALID_HANDLE_VALUE;
    }
    slot->store(object, std::memory_order_release);
    return static_cast<OsaHandle>(fd);
}

HandleObject *retractHandle(OsaHandle handle) {
    std::lock_guard lock(writer);
    Slot *slot = slotOf(handle, false);
    HandleObject *object = slot == nullptr ? nullptr : slot->exchange(nullptr, std::memory_order_acq_rel);
    if (object != nullptr) close(static_cast<int>(handle));
    return object;
}

}  // namespace ryn::osa
