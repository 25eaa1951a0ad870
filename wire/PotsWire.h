// Requests of the POTS line interfaces, sent to the line's device, its
// handle at kHandle.
#pragma once

#include "Wire.h"

namespace wire::pots {

struct OffHook : HandleOnly {
    static constexpr uint32_t kFunction = 0x99A;
};
struct OnHook : HandleOnly {
    static constexpr uint32_t kFunction = 0x99B;
};

// param1: the flash time; param2 and param3: the driver's settings.
struct HookFlash {
    static constexpr uint32_t kFunction = 0x99C, kRequest = 32, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24, kParam3 = 28;
};

// The digits (not terminated) in the area of kDigitsSize bytes at kDigits,
// their count at kDigitCount; the other values are the driver's settings.
struct PulseDial {
    static constexpr uint32_t kFunction = 0x99D, kRequest = 172, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24, kParam3 = 28;
    static constexpr uint32_t kDigits = 32, kDigitCount = 160, kParam6 = 164, kParam7 = 168;
    static constexpr uint32_t kDigitsSize = 128;
};

struct SetLiMode {
    static constexpr uint32_t kFunction = 0x99E, kRequest = 24, kReply = kPlainReply;
    static constexpr uint32_t kMode = 20;
};

struct GetLiMode {
    static constexpr uint32_t kFunction = 0x99F, kRequest = 20, kReply = 16;
    static constexpr uint32_t kReplyMode = 8;
};

}  // namespace wire::pots
