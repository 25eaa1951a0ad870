// Tone generators and diallers: constant-value generator, value sampler,
// effects generator, sine-wave generator of up to five tones, DTMF
// generator, DTMF and MF diallers with their dial calls, sequence generator
// with its send call, and the single-value read.
//
// Every block is a logical device (handle kind 2); any other handle is
// refused with error 11 before anything else. Settings named paramN belong
// to the block on the DSP and pass through unchanged. The sine-wave
// generator is the one call with arithmetic of its own (ToneMath).
//
// Pointer arguments are checked where the original read through them
// unchecked: a null dial, entry or tone array with a positive count, or a
// null value pointer, is refused with error 10 and nothing is sent.
#include <algorithm>

#include "blocks/ToneMath.h"
#include "core/ResultCode.h"
#include "core/Transport.h"
#include "device/HandleKinds.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kTone;
constexpr int32_t kMaxDigits = 127;   // of the 128-byte digit area
constexpr int32_t kMaxEntries = 127;  // of the 128-entry sequence area
constexpr uint32_t kMaxTones = 5;     // oscillator slots of the sine-wave request
constexpr uint32_t kSlotBytes = 6;

// Dial calls: up to 127 characters in the 128-byte area, count and settings.
ResultCode sendDial(uint32_t function, DeviceHandle handle, const char *digits, int32_t digitCount, uint32_t param3,
                    uint32_t param4) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (digitCount < 0 || digitCount > kMaxDigits) return RYN_FAILURE(kErrRange);
    if (digits == nullptr && digitCount > 0) return RYN_FAILURE(kErrNullPointer);
    Request<160, 12> request(function);
    request.put<16>(handle).putBytes<20, 128>(digits, static_cast<uint32_t>(digitCount));
    request.put<148>(static_cast<uint32_t>(digitCount)).put<152>(param3).put<156>(param4);
    return request.send();
}

// Value reads: the 16-bit value at reply offset 8, stored whatever the result.
ResultCode readValue(uint32_t function, DeviceHandle handle, uint16_t *value) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (value == nullptr) return RYN_FAILURE(kErrNullPointer);
    Request<20, 14> request(function);
    request.put<16>(handle);
    const ResultCode result = request.sendWithResultAt<10>(kStandardTransport);
    *value = request.get16<8>();
    return result;
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynToneConstValGeneratorInit, 12)(DeviceHandle handle, uint32_t param1, uint16_t value) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    Request<26, 12> request(0x99A);
    request.put<16>(handle).put<20>(param1).put16<24>(value);
    return request.send();
}

// The request is as long as the constant-value generator's; its last
// 16-bit field is not used.
ResultCode RYN_DECORATED(RynToneValSamplerInit, 8)(DeviceHandle handle, uint32_t param1) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    Request<26, 12> request(0x9AB);
    request.put<16>(handle).put<20>(param1);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneValSamplerReadData, 8)(DeviceHandle handle, uint16_t *value) {
    return readValue(0x9AC, handle, value);
}

ResultCode RYN_DECORATED(RynToneEffectsGeneratorInit, 16)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                          uint32_t param3) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    Request<32, 12> request(0x99C);
    request.put<16>(handle).put<20>(param1).put<24>(param2).put<28>(param3);
    return request.send();
}

// Each tone (at most five) becomes an oscillator slot: coefficient, first
// and second starting sample. The tones are checked one after the other,
// phase, then level, then frequency; a refused tone sends nothing. The count
// travels as given, also when it is above five or not positive.
ResultCode RYN_DECORATED(RynToneSineWaveGeneratorInit, 20)(DeviceHandle handle, uint32_t param1,
                                                           const SineToneParams *tones, int32_t toneCount,
                                                           uint32_t param4) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    const uint32_t slots = toneCount <= 0 ? 0 : std::min(static_cast<uint32_t>(toneCount), kMaxTones);
    if (tones == nullptr && slots > 0) return RYN_FAILURE(kErrNullPointer);
    uint8_t slotBytes[kMaxTones * kSlotBytes] = {};
    for (uint32_t i = 0; i < slots; ++i) {
        const double frequency = tones[i].frequency, level = tones[i].level, phase = tones[i].phase;
        if (phase != 0.0) return RYN_FAILURE(kErrNotAvailable);
        if (!tone::isAcceptedLevel(level)) return RYN_FAILURE(kErrRange);
        if (!tone::isAcceptedFrequency(frequency)) return RYN_FAILURE(kErrRange);
        const tone::SineOscillator oscillator = tone::sineOscillator(frequency, level);
        uint8_t *slot = slotBytes + kSlotBytes * i;
        store16(slot, oscillator.coefficient);
        store16(slot + 2, oscillator.firstSample);
        store16(slot + 4, oscillator.secondSample);
    }
    Request<62, 12> request(0x99D);
    request.put<16>(handle).put<20>(param1).putBytes<24, sizeof slotBytes>(slotBytes, kSlotBytes * slots);
    request.put<54>(static_cast<uint32_t>(toneCount)).put<58>(param4);
    return request.send();
}

// The digit byte follows the third setting.
ResultCode RYN_DECORATED(RynToneDtmfGeneratorInit, 16)(DeviceHandle handle, uint32_t param1, uint8_t digit,
                                                       uint32_t param3) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    Request<30, 12> request(0x99E);
    request.put<16>(handle).put<20>(param1).put<24>(param3).put8<28>(digit);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneDtmfDiallerInit, 20)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                     uint32_t param3, uint32_t param4) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    Request<36, 12> request(0x99F);
    request.put<16>(handle).put<20>(param1).put<24>(param2).put<28>(param3).put<32>(param4);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneDtmfDial, 20)(DeviceHandle handle, const char *digits, int32_t digitCount,
                                              uint32_t param3, uint32_t param4) {
    return sendDial(0x9A0, handle, digits, digitCount, param3, param4);
}

ResultCode RYN_DECORATED(RynToneMfDiallerInit, 24)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                   uint32_t param3, uint32_t param4, uint32_t param5) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    Request<40, 12> request(0x9AF);
    request.put<16>(handle).put<20>(param1).put<24>(param2).put<28>(param3).put<32>(param4).put<36>(param5);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneMfDial, 20)(DeviceHandle handle, const char *digits, int32_t digitCount,
                                            uint32_t param3, uint32_t param4) {
    return sendDial(0x9B0, handle, digits, digitCount, param3, param4);
}

ResultCode RYN_DECORATED(RynToneSequenceGeneratorInit, 20)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                           uint32_t param3, uint32_t param4) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    Request<36, 12> request(0x9A1);
    request.put<16>(handle).put<20>(param1).put<24>(param2).put<28>(param3).put<32>(param4);
    return request.send();
}

// At most 127 entries, although the area has room for 128.
ResultCode RYN_DECORATED(RynToneSequenceSend, 20)(DeviceHandle handle, const uint32_t *entries, int32_t entryCount,
                                                  uint32_t param3, uint32_t param4) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (entryCount < 0 || entryCount > kMaxEntries) return RYN_FAILURE(kErrRange);
    if (entries == nullptr && entryCount > 0) return RYN_FAILURE(kErrNullPointer);
    Request<544, 12> request(0x9A2);
    request.put<16>(handle).putBytes<20, 512>(entries, 4 * static_cast<uint32_t>(entryCount));
    request.put<532>(static_cast<uint32_t>(entryCount)).put<536>(param3).put<540>(param4);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneReadVal, 8)(DeviceHandle handle, uint16_t *value) {
    return readValue(0x9AA, handle, value);
}

}  // extern "C"
