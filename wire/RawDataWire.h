// Requests of the raw-data channel. Data travel by address: a data field
// names the caller's buffer, which the driver reads or writes while the call
// runs. The set-ups carry one 8-bit setting among the 32-bit ones, so the
// fields after it sit at offsets that are not multiples of 4.
#pragma once

#include "Wire.h"

namespace wire::raw_data {

// param2 is 8 bits.
struct SenderInit {
    static constexpr uint32_t kFunction = 0x99A, kRequest = 30, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24, kParam3 = 26;
};

// param2 is 8 bits.
struct ReceiverInit {
    static constexpr uint32_t kFunction = 0x99B, kRequest = 34, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24, kParam3 = 26, kParam4 = 30;
};

// The bytes to send: their length, two settings, their address.
struct SendData {
    static constexpr uint32_t kFunction = 0x99C, kRequest = 36, kReply = kPlainReply;
    static constexpr uint32_t kLength = 20, kParam3 = 24, kParam4 = 28, kData = 32;
};

// The receive buffer's size and address. Reply: the bytes written, the
// bytes still waiting.
struct ReadData {
    static constexpr uint32_t kFunction = 0x99D, kRequest = 28, kReply = 20;
    static constexpr uint32_t kBufferSize = 20, kBuffer = 24;
    static constexpr uint32_t kReplyLength = 8, kReplyWaiting = 12;
};

struct SenderFlush {
    static constexpr uint32_t kFunction = 0x9A0, kRequest = 20, kReply = kPlainReply;
};

// As the plain sender set-up with a second setting before the 8-bit one
// (param3).
struct SenderInitEx {
    static constexpr uint32_t kFunction = 0x9A1, kRequest = 34, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24, kParam3 = 28, kParam4 = 30;
};

}  // namespace wire::raw_data
