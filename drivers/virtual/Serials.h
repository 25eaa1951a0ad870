// Handle serials. A handle is the object's kind in its top four bits and a
// serial in the 28 below them; no two objects alive share a serial, whatever
// their kinds, so a handle names one object even after the count wraps.
#pragma once

#include <cstdint>
#include <unordered_set>

namespace vb {

inline constexpr uint32_t kSerialMask = 0x0FFFFFFFu;

// The serial of a new object: `next`, or the first after it that `used` does
// not hold, counting up to kSerialMask and on from 1 (0 is never given, so a
// handle is never its kind alone); `next` moves past the serial given. Of
// used.size() + 1 serials tried one is free, so the search stops there; 0
// only when every serial is in use.
inline uint32_t allocateSerial(uint32_t &next, const std::unordered_set<uint32_t> &used) {
    if (used.size() >= kSerialMask) return 0;
    for (size_t tried = 0; tried <= used.size(); ++tried) {
        const uint32_t serial = next == 0 || next > kSerialMask ? 1 : next;
        next = serial == kSerialMask ? 1 : serial + 1;
        if (!used.contains(serial)) return serial;
    }
    return 0;
}

}  // namespace vb
