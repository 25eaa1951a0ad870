// Requests of the SLIC phone interfaces, sent to the line's device, its
// handle at kHandle. The requests with a 16-byte reply carry a value at
// kReplyStatus (kReplyState for the hook state).
#pragma once

#include "Wire.h"

namespace wire::slic {

struct SetResetPin {
    static constexpr uint32_t kFunction = 0x99A, kRequest = 24, kReply = kPlainReply;
    static constexpr uint32_t kState = 20;
};

struct EnableDialTone : HandleOnly {
    static constexpr uint32_t kFunction = 0x99B;
};
struct EnableBusyTone : HandleOnly {
    static constexpr uint32_t kFunction = 0x99C;
};
struct EnableReorderTone : HandleOnly {
    static constexpr uint32_t kFunction = 0x99D;
};
struct EnableCongestionTone : HandleOnly {
    static constexpr uint32_t kFunction = 0x99E;
};
struct EnableRingBackTone : HandleOnly {
    static constexpr uint32_t kFunction = 0x9A0;
};

// A reply with a status value.
struct StatusReply {
    static constexpr uint32_t kReply = 16;
    static constexpr uint32_t kReplyStatus = 8;
};

// The line's handle alone; the hook state back.
struct GetHookState : StatusReply {
    static constexpr uint32_t kFunction = 0x9A1, kRequest = 20;
    static constexpr uint32_t kReplyState = kReplyStatus;
};

// The line's handle alone, a status back.
struct StartRingState : StatusReply {
    static constexpr uint32_t kFunction = 0x9A2, kRequest = 20;
};
struct StopRingState : StatusReply {
    static constexpr uint32_t kFunction = 0x9A3, kRequest = 20;
};
struct EnableAudio : StatusReply {
    static constexpr uint32_t kFunction = 0x9A4, kRequest = 20;
};

// param1: the disconnect signal.
struct SignalDisconnectState : StatusReply {
    static constexpr uint32_t kFunction = 0x9A5, kRequest = 24;
    static constexpr uint32_t kParam1 = 20;
};

// Text fields: up to k...Length characters from the field's offset, and a
// byte at k...End that ends the field with a NUL.
struct SetUserName : StatusReply {
    static constexpr uint32_t kFunction = 0x9A6, kRequest = 36;
    static constexpr uint32_t kName = 20, kNameLength = 15, kNameEnd = 35;
};

// Exactly kNumberLength digits.
struct SetPhoneNumber : StatusReply {
    static constexpr uint32_t kFunction = 0x9A7, kRequest = 32;
    static constexpr uint32_t kNumber = 20, kNumberLength = 10, kNumberEnd = 30;
};

// The date and time of the call, MMDDhhmm.
struct SendCallerId : StatusReply {
    static constexpr uint32_t kFunction = 0x9A8, kRequest = 30;
    static constexpr uint32_t kStamp = 20, kStampLength = 8, kStampEnd = 28;
};

}  // namespace wire::slic
