// Helpers shared by the data-channel families (HDLC and SS7, raw data,
// burst): caller buffers named by address fields, and the checks every data
// request of a channel makes.
#pragma once

#include <algorithm>
#include <span>

#include "Families.h"

namespace vb::channel {

// The caller's buffer named by the address field at `offset`, cut to
// `count` bytes: the smaller of the request's count field and the length
// the library listed for the buffer. Empty when the field names no buffer.
inline std::span<uint8_t> callerBytes(const Call &call, uint32_t offset, uint32_t count) {
    const RynDriverBuffer *buffer = call.in.buffer(offset);
    if (buffer == nullptr || buffer->address == nullptr) return {};
    return {static_cast<uint8_t *>(buffer->address), std::min(count, buffer->length)};
}

// A channel disabled with RynDrvDisable moves no data until it is enabled
// again (an idle channel, never enabled or disabled, works).
inline bool disabled(const Object &object) { return object.state == kStateDisabled; }

// The board time as an 8-byte reply value.
inline void putTime(Output &out, uint32_t offset, uint64_t time) { out.write(offset, &time, 8); }

// Attribute value helpers.
inline std::vector<uint8_t> booleanValue(bool value) { return wordValue(value ? 1u : 0u); }

}  // namespace vb::channel
