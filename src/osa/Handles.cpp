#include "osa/Handles.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <mutex>

namespace ryn::osa {
namespace {

constexpr uint32_t kChunkSize = 1024;
constexpr uint32_t kChunkCount = 1024;  // descriptors below 1,048,576
constexpr int kLowestHandle = 3;

using Slot = std::atomic<HandleObject *>;

struct HandleTable {
    std::atomic<Slot *> chunks[kChunkCount];
    std::mutex writer;
};

constinit HandleTable table{};

Slot *slotOf(uint32_t handle, bool create) {
    if (handle >= kChunkSize * kChunkCount) return nullptr;
    std::atomic<Slot *> &chunk = table.chunks[handle / kChunkSize];
    Slot *slots = chunk.load(std::memory_order_acquire);
    if (slots == nullptr && create) {
        // Chunks live as long as the process; they are reached from the table.
        slots = new Slot[kChunkSize]();
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
    std::lock_guard lock(table.writer);
    Slot *slot = slotOf(static_cast<uint32_t>(fd), true);
    if (slot == nullptr) {
        close(fd);
        return INVALID_HANDLE_VALUE;
    }
    slot->store(object, std::memory_order_release);
    return static_cast<OsaHandle>(fd);
}

HandleObject *lookupHandle(OsaHandle handle) {
    Slot *slot = slotOf(handle, false);
    return slot == nullptr ? nullptr : slot->load(std::memory_order_acquire);
}

HandleObject *retractHandle(OsaHandle handle) {
    std::lock_guard lock(table.writer);
    Slot *slot = slotOf(handle, false);
    HandleObject *object = slot == nullptr ? nullptr : slot->exchange(nullptr, std::memory_order_acq_rel);
    if (object != nullptr) close(static_cast<int>(handle));
    return object;
}

}  // namespace ryn::osa
