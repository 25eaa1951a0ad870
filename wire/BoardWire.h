// Requests of the board controls: the clocks, the codecs' companding law and
// the constant bytes of the time-slot switch. Each is sent to the board's
// device, its handle at kHandle; every reply is the plain one.
#pragma once

#include "Wire.h"

namespace wire::board {

// param1: the clock source, param2: the clock mode.
struct SetClocks {
    static constexpr uint32_t kFunction = 0x99A, kRequest = 28, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24;
};

// param1: the stream, param2: the time slot, then the byte it sends.
struct TssConstByte {
    static constexpr uint32_t kFunction = 0x99B, kRequest = 30, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24, kValue = 28;  // kValue: one byte
};

struct CodecSetLaw {
    static constexpr uint32_t kFunction = 0x99C, kRequest = 24, kReply = kPlainReply;
    static constexpr uint32_t kLaw = 20;
};

}  // namespace wire::board
