// Requests of the telephony blocks: DTMF dialler, voice activity detector,
// DTMF detector, comfort noise generator, voice mixer, echo canceller,
// call-progress tone detector and generator, caller identification
// detector. Their function numbers are shared with other block families; the
// block type tells them apart. Settings named kParamN are the call's paramN.
#pragma once

#include "Wire.h"

namespace wire::telephony {

// ---- DTMF dialler and detector

struct DtmfDialerInit : OneSetting {
    static constexpr uint32_t kFunction = 0x99B;
};

// The characters in a 128-byte area, their count, two settings.
struct DtmfDial {
    static constexpr uint32_t kFunction = 0x99C, kRequest = 160, kReply = kPlainReply;
    static constexpr uint32_t kDigits = 20, kDigitBytes = 128, kCount = 148, kParam3 = 152, kParam4 = 156;
};

struct DtmfDetectorInit : TwoSettings {
    static constexpr uint32_t kFunction = 0x99F;
};

// 8 bits.
struct DtmfDetectorStatus : StatusRead {
    static constexpr uint32_t kFunction = 0x9A0;
};

// ---- Voice activity detector

struct VoiceActivityDetectorInit : OneSetting {
    static constexpr uint32_t kFunction = 0x99D;
};

// 32 bits.
struct VoiceActivityDetectorStatus : StatusRead {
    static constexpr uint32_t kFunction = 0x99E;
};

// The caller's parameter block of 13 16-bit words, then param2. Word 0 is
// the block's length in words (13).
struct VoiceActivityDetectorInitEx {
    static constexpr uint32_t kFunction = 0x9B3, kRequest = 50, kReply = kPlainReply;
    static constexpr uint32_t kParams = 20, kParamWords = 13, kParam2 = 46;
    static constexpr uint32_t kWord0 = 20, kWord1 = 22, kWord2 = 24, kWord3 = 26;
};

// ---- Comfort noise generator, voice mixer, echo canceller

struct ComfortNoiseGeneratorInit : OneSetting {
    static constexpr uint32_t kFunction = 0x9A2;
};

struct VoiceMixerInit : TwoSettings {
    static constexpr uint32_t kFunction = 0x9A3;
};

// Two parallel lists of 128 slots, 32-bit items and 16-bit values, then the
// 16-bit param4 and the count of entries.
struct VoiceMixerInitEx {
    static constexpr uint32_t kFunction = 0x9B1, kRequest = 798, kReply = kPlainReply;
    static constexpr uint32_t kItems = 20, kParam2 = 532, kValues = 536, kParam4 = 792, kCount = 794;
    static constexpr uint32_t kSlots = 128;
};

struct EchoCancelInit : TwoSettings {
    static constexpr uint32_t kFunction = 0x9A4;
};

// ---- Call-progress tone detector and generator

struct CptDetectorInit : ThreeSettings {
    static constexpr uint32_t kFunction = 0x9A5;
};

// 32 bits.
struct CptDetectorStatus : StatusRead {
    static constexpr uint32_t kFunction = 0x9A6;
};

struct CptGeneratorInit : TwoSettings {
    static constexpr uint32_t kFunction = 0x9A7;
};

struct CptGenerateTone : OneSetting {
    static constexpr uint32_t kFunction = 0x9A8;
};

// The extended set-up. Offsets kBlock up to kParam4 are one block of
// kBlockWords 16-bit words, zeroed, with the caller's one tone table in
// fixed slots; every offset here is of the request. 16-bit fields unless
// said.
struct CptDetectorInitEx {
    static constexpr uint32_t kFunction = 0x9B2, kRequest = 702, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24;  // 32 bits each
    static constexpr uint32_t kBlock = 28, kBlockWords = 335, kBlockBytes = 2 * kBlockWords;
    static constexpr uint32_t kBlockLength = 28;  // kBlockWords
    static constexpr uint32_t kSetting1 = 32, kSetting2 = 34;
    // The value list: up to 32 words.
    static constexpr uint32_t kValues = 36, kValueSlots = 32;
    // The table's setting and its 13 words, among them the value count and
    // the segment count (both signed).
    static constexpr uint32_t kTableSetting = 100, kTableWords = 102, kTableWordCount = 13;
    static constexpr uint32_t kValueCountWord = 11, kSegmentCountWord = 12;
    static constexpr uint32_t kValueCount = kTableWords + 2 * kValueCountWord;
    static constexpr uint32_t kSegmentCount = kTableWords + 2 * kSegmentCountWord;
    // The segment records, one a tone: kSegmentSlots of kSegmentBytes.
    static constexpr uint32_t kSegments = 128, kSegmentSlots = 16, kSegmentBytes = 8;
    // Within a record: the segment's identifier, its step count, where its
    // steps start (in words from kSteps) and how many words they take.
    static constexpr uint32_t kSegmentId = 0, kSegmentStepCount = 2, kSegmentStart = 4, kSegmentWords = 6;
    // The table's extra block of 16 bytes; when the caller has none, the
    // flag at kNoExtraBlock is 1.
    static constexpr uint32_t kExtraBlock = 256, kExtraBlockBytes = 16, kNoExtraBlock = 692;
    // The step area: every segment's steps, one segment after the other.
    static constexpr uint32_t kSteps = 272, kStepAreaWords = 210;
    static constexpr uint32_t kTableCount = 694, kSetting3 = 696;
    static constexpr uint32_t kParam4 = 698;  // 32 bits

    // A step: its shortest time, its longest time (0: none), a word not read,
    // then 4 bits for each value of the list, value i in bits 4 (i mod 4) and
    // up of word 3 + i / 4, nonzero when the value is present in the step.
    // Offsets within a step; a segment has at most kMaxStepCount steps (the
    // low 8 bits of its count).
    static constexpr uint32_t kStepMinMs = 0, kStepMaxMs = 2, kStepHeaderWords = 3;
    static constexpr uint32_t kValueBits = 4, kValuesPerWord = 4, kMaxStepCount = 255;
    static constexpr uint32_t stepWords(uint32_t valueCount) {
        return kStepHeaderWords + (valueCount + kValuesPerWord - 1) / kValuesPerWord;
    }

    // The slots follow one another inside the block.
    static_assert(kBlock + kBlockBytes == kParam4 && kParam4 + 4 == kRequest);
    static_assert(kValues + 2 * kValueSlots == kTableSetting && kTableSetting + 2 == kTableWords);
    static_assert(kTableWords + 2 * kTableWordCount == kSegments);
    static_assert(kSegments + kSegmentSlots * kSegmentBytes == kExtraBlock);
    static_assert(kExtraBlock + kExtraBlockBytes == kSteps);
    static_assert(kSteps + 2 * kStepAreaWords == kNoExtraBlock);
};

// ---- Caller identification detector

struct CidDetectorInit : TwoSettings {
    static constexpr uint32_t kFunction = 0x9B0;
};

static_assert(DtmfDial::kDigits + DtmfDial::kDigitBytes == DtmfDial::kCount);
static_assert(VoiceActivityDetectorInitEx::kParams + 2 * VoiceActivityDetectorInitEx::kParamWords ==
              VoiceActivityDetectorInitEx::kParam2);
static_assert(VoiceMixerInitEx::kItems + 4 * VoiceMixerInitEx::kSlots == VoiceMixerInitEx::kParam2);
static_assert(VoiceMixerInitEx::kValues + 2 * VoiceMixerInitEx::kSlots == VoiceMixerInitEx::kParam4);

}  // namespace wire::telephony
