// Requests of the DSP's POTS block: its set-up, DAA register writes, hook
// control, pulse dialling and line sensing. Their function numbers are
// shared with other block families; the block type tells them apart.
#pragma once

#include "Wire.h"

namespace wire::cst_pots {

// param2 is the DAA mode.
struct Init : TwoSettings {
    static constexpr uint32_t kFunction = 0x9A9;
    static constexpr uint32_t kDaaMode = kParam2;
};

struct OffHook : TwoSettings {
    static constexpr uint32_t kFunction = 0x9AA;
};

struct OnHook : TwoSettings {
    static constexpr uint32_t kFunction = 0x9AB;
};

struct HookFlash : ThreeSettings {
    static constexpr uint32_t kFunction = 0x9AC;
};

struct PulseDial : ThreeSettings {
    static constexpr uint32_t kFunction = 0x9AD;
};

struct OnHookLineMon : TwoSettings {
    static constexpr uint32_t kFunction = 0x9AE;
};

struct SenseLine : TwoSettings {
    static constexpr uint32_t kFunction = 0x9AF;
};

// Two settings, the register and the value (a byte each). Reply: the
// write's status.
struct WriteDaa {
    static constexpr uint32_t kFunction = 0x9B4, kRequest = 30, kReply = 16;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24, kDaaRegister = 28, kDaaValue = 29;
    static constexpr uint32_t kReplyStatus = 8;
};

}  // namespace wire::cst_pots
