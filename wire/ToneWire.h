// Requests of the tone generators, diallers and detectors. Their function
// numbers are shared with other block families; the block type tells them
// apart. Settings named kParamN are the call's paramN, passed unchanged.
#pragma once

#include "Wire.h"

namespace wire::tone {

// ---- Shapes shared by several requests

// A dial: the characters in a 128-byte area, their count, two settings.
struct Dial {
    static constexpr uint32_t kRequest = 160, kReply = kPlainReply;
    static constexpr uint32_t kDigits = 20, kDigitBytes = 128, kCount = 148, kParam3 = 152, kParam4 = 156;
};

// A 16-bit value at kReplyValue; the result is the 32-bit word after it.
struct ValueRead {
    static constexpr uint32_t kRequest = 20, kReply = 14;
    static constexpr uint32_t kReplyValue = 8;
};

// The dual- and single-frequency detectors' set-up: a 16-bit coefficient
// for each frequency in six slots, the count, two settings and a 16-bit one.
struct FrequencyDetectorInit {
    static constexpr uint32_t kRequest = 50, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kCoefficients = 24, kCoefficientSlots = 6, kCount = 36;
    static constexpr uint32_t kParam4 = 40, kParam5 = 44, kParam6 = 48;
};

// ---- Generators and diallers

// value: the 16-bit sample value.
struct ConstValGeneratorInit {
    static constexpr uint32_t kFunction = 0x99A, kRequest = 26, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kValue = 24;
};

struct EffectsGeneratorInit {
    static constexpr uint32_t kFunction = 0x99C, kRequest = 32, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24, kParam3 = 28;
};

// Up to five oscillator slots of three 16-bit words: the coefficient, the
// first and the second starting sample. The count is the caller's.
struct SineWaveGeneratorInit {
    static constexpr uint32_t kFunction = 0x99D, kRequest = 62, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kSlots = 24, kSlotCount = 5, kSlotBytes = 6, kCount = 54, kParam4 = 58;
    // Within a slot.
    static constexpr uint32_t kCoefficient = 0, kFirstSample = 2, kSecondSample = 4;
};

// The digit byte follows the third setting.
struct DtmfGeneratorInit {
    static constexpr uint32_t kFunction = 0x99E, kRequest = 30, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam3 = 24, kDigit = 28;
};

struct DtmfDiallerInit {
    static constexpr uint32_t kFunction = 0x99F, kRequest = 36, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24, kParam3 = 28, kParam4 = 32;
};

struct DtmfDial : Dial {
    static constexpr uint32_t kFunction = 0x9A0;
};

struct MfDiallerInit {
    static constexpr uint32_t kFunction = 0x9AF, kRequest = 40, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24, kParam3 = 28, kParam4 = 32, kParam5 = 36;
};

struct MfDial : Dial {
    static constexpr uint32_t kFunction = 0x9B0;
};

struct SequenceGeneratorInit {
    static constexpr uint32_t kFunction = 0x9A1, kRequest = 36, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24, kParam3 = 28, kParam4 = 32;
};

// 32-bit entries in 128 slots, their count, two settings.
struct SequenceSend {
    static constexpr uint32_t kFunction = 0x9A2, kRequest = 544, kReply = kPlainReply;
    static constexpr uint32_t kEntries = 20, kEntrySlots = 128, kCount = 532, kParam3 = 536, kParam4 = 540;
};

// The last value of a generator or value sampler.
struct ReadVal : ValueRead {
    static constexpr uint32_t kFunction = 0x9AA;
};

// ---- Value sampler

// As long as the constant-value generator's request; its last 16-bit field
// is not used.
struct ValSamplerInit {
    static constexpr uint32_t kFunction = 0x9AB, kRequest = 26, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20;
};

struct ValSamplerReadData : ValueRead {
    static constexpr uint32_t kFunction = 0x9AC;
};

// ---- Detectors

struct SilenceDetectorInit {
    static constexpr uint32_t kFunction = 0x9A3, kRequest = 32, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24, kParam3 = 28;
};

struct SilenceDetectorStatus : StatusRead {
    static constexpr uint32_t kFunction = 0x9A4;
};

struct DtmfDetectorInit {
    static constexpr uint32_t kFunction = 0x9A5, kRequest = 28, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24;
};

// 8 bits.
struct DtmfDetectorStatus : StatusRead {
    static constexpr uint32_t kFunction = 0x9A6;
};

struct FskDetectorInit {
    static constexpr uint32_t kFunction = 0x9A7, kRequest = 24, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20;
};

struct DialtoneDetectorInit {
    static constexpr uint32_t kFunction = 0x9A8, kRequest = 28, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24;
};

struct DialtoneDetectorStatus : StatusRead {
    static constexpr uint32_t kFunction = 0x9A9;
};

// param5 is 16 bits.
struct MfDetectorInit {
    static constexpr uint32_t kFunction = 0x9AD, kRequest = 38, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24, kParam3 = 28, kParam4 = 32, kParam5 = 36;
};

// 8 bits.
struct MfDetectorStatus : StatusRead {
    static constexpr uint32_t kFunction = 0x9AE;
};

struct DualDetectorInit : FrequencyDetectorInit {
    static constexpr uint32_t kFunction = 0x9B1;
};

// 8 bits.
struct DualDetectorStatus : StatusRead {
    static constexpr uint32_t kFunction = 0x9B2;
};

struct SingleDetectorInit : FrequencyDetectorInit {
    static constexpr uint32_t kFunction = 0x9B3;
};

// 8 bits.
struct SingleDetectorStatus : StatusRead {
    static constexpr uint32_t kFunction = 0x9B4;
};

static_assert(Dial::kDigits + Dial::kDigitBytes == Dial::kCount);
static_assert(SequenceSend::kEntries + 4 * SequenceSend::kEntrySlots == SequenceSend::kCount);
static_assert(SineWaveGeneratorInit::kSlots + SineWaveGeneratorInit::kSlotCount * SineWaveGeneratorInit::kSlotBytes ==
              SineWaveGeneratorInit::kCount);
static_assert(FrequencyDetectorInit::kCoefficients + 2 * FrequencyDetectorInit::kCoefficientSlots ==
              FrequencyDetectorInit::kCount);

}  // namespace wire::tone
