// The request protocol between the library and a board driver, written once
// for both sides of the wire: the library's family files build their
// requests from these names, the virtual board's family files answer them.
//
// A request is named by a struct of constants:
//   kFunction  its function number (bits 2..15 of the control code),
//   kRequest   the length of the request block, header included,
//   kReply     the length of the reply block,
//   kResult    (only where it is not the reply's last 32-bit word) the
//              offset of the result code in the reply,
// and the offsets of its fields, named as the family names them. Every
// request block starts with a 16-byte header; most carry the handle of the
// object they address at kHandle.
//
// The library's tests of byte layouts do not read these headers: they are
// the check that the names here put every field where it belongs.
#pragma once

#include <cstdint>

namespace wire {

inline constexpr uint32_t kHeader = 16;
inline constexpr uint32_t kHandle = 16;

// The common reply: its result code at offset 8 (the last word of 12).
inline constexpr uint32_t kPlainReply = 12;

// Shapes many requests share: the handle alone, or with one to three 32-bit
// settings, and the common reply; a status (8 or 32 bits) read back.
struct HandleOnly {
    static constexpr uint32_t kRequest = 20, kReply = kPlainReply;
};
struct OneSetting {
    static constexpr uint32_t kRequest = 24, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20;
};
struct TwoSettings {
    static constexpr uint32_t kRequest = 28, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24;
};
struct ThreeSettings {
    static constexpr uint32_t kRequest = 32, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24, kParam3 = 28;
};
struct StatusRead {
    static constexpr uint32_t kRequest = 20, kReply = 16;
    static constexpr uint32_t kReplyStatus = 8;
};

}  // namespace wire
