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

#include "ToneWire.h"
#include "blocks/ToneMath.h"
#include "core/ResultCode.h"
#include "core/Transport.h"
#include "device/HandleKinds.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kTone;
using Sine = wire::tone::SineWaveGeneratorInit;
constexpr int32_t kMaxDigits = 127;   // of the 128-byte digit area
constexpr int32_t kMaxEntries = 127;  // of the 128-entry sequence area

// Dial calls: up to 127 characters in the 128-byte area, count and settings.
template <typename Wire>
ResultCode sendDial(DeviceHandle handle, const char *digits, int32_t digitCount, uint32_t param3, uint32_t param4) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (digitCount < 0 || digitCount > kMaxDigits) return RYN_FAILURE(kErrRange);
    if (digits == nullptr && digitCount > 0) return RYN_FAILURE(kErrNullPointer);
    RequestOf<Wire> request;
    request.template put<wire::kHandle>(handle).template putBytes<Wire::kDigits, Wire::kDigitBytes>(
        digits, static_cast<uint32_t>(digitCount));
    request.template put<Wire::kCount>(static_cast<uint32_t>(digitCount));
    request.template put<Wire::kParam3>(param3).template put<Wire::kParam4>(param4);
    return request.send();
}

// Value reads: the 16-bit value, stored whatever the result; the result is
// the reply's last 32-bit word, just after it.
template <typename Wire>
ResultCode readValue(DeviceHandle handle, uint16_t *value) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (value == nullptr) return RYN_FAILURE(kErrNullPointer);
    RequestOf<Wire> request;
    request.template put<wire::kHandle>(handle);
    const ResultCode result = request.send();
    *value = request.template get16<Wire::kReplyValue>();
    return result;
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynToneConstValGeneratorInit, 12)(DeviceHandle handle, uint32_t param1, uint16_t value) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    using Wire = wire::tone::ConstValGeneratorInit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put16<Wire::kValue>(value);
    return request.send();
}

// The request is as long as the constant-value generator's; its last
// 16-bit field is not used.
ResultCode RYN_DECORATED(RynToneValSamplerInit, 8)(DeviceHandle handle, uint32_t param1) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    using Wire = wire::tone::ValSamplerInit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneValSamplerReadData, 8)(DeviceHandle handle, uint16_t *value) {
    return readValue<wire::tone::ValSamplerReadData>(handle, value);
}

ResultCode RYN_DECORATED(RynToneEffectsGeneratorInit, 16)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                          uint32_t param3) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    using Wire = wire::tone::EffectsGeneratorInit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2);
    request.put<Wire::kParam3>(param3);
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
    const uint32_t slots = toneCount <= 0 ? 0 : std::min(static_cast<uint32_t>(toneCount), Sine::kSlotCount);
    if (tones == nullptr && slots > 0) return RYN_FAILURE(kErrNullPointer);
    uint8_t slotBytes[Sine::kSlotCount * Sine::kSlotBytes] = {};
    for (uint32_t i = 0; i < slots; ++i) {
        const double frequency = tones[i].frequency, level = tones[i].level, phase = tones[i].phase;
        if (phase != 0.0) return RYN_FAILURE(kErrNotAvailable);
        if (!tone::isAcceptedLevel(level)) return RYN_FAILURE(kErrRange);
        if (!tone::isAcceptedFrequency(frequency)) return RYN_FAILURE(kErrRange);
        const tone::SineOscillator oscillator = tone::sineOscillator(frequency, level);
        uint8_t *slot = slotBytes + Sine::kSlotBytes * i;
        store16(slot + Sine::kCoefficient, oscillator.coefficient);
        store16(slot + Sine::kFirstSample, oscillator.firstSample);
        store16(slot + Sine::kSecondSample, oscillator.secondSample);
    }
    RequestOf<Sine> request;
    request.put<wire::kHandle>(handle).put<Sine::kParam1>(param1);
    request.putBytes<Sine::kSlots, sizeof slotBytes>(slotBytes, Sine::kSlotBytes * slots);
    request.put<Sine::kCount>(static_cast<uint32_t>(toneCount)).put<Sine::kParam4>(param4);
    return request.send();
}

// The digit byte follows the third setting.
ResultCode RYN_DECORATED(RynToneDtmfGeneratorInit, 16)(DeviceHandle handle, uint32_t param1, uint8_t digit,
                                                       uint32_t param3) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    using Wire = wire::tone::DtmfGeneratorInit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam3>(param3).put8<Wire::kDigit>(digit);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneDtmfDiallerInit, 20)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                     uint32_t param3, uint32_t param4) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    using Wire = wire::tone::DtmfDiallerInit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2);
    request.put<Wire::kParam3>(param3).put<Wire::kParam4>(param4);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneDtmfDial, 20)(DeviceHandle handle, const char *digits, int32_t digitCount,
                                              uint32_t param3, uint32_t param4) {
    return sendDial<wire::tone::DtmfDial>(handle, digits, digitCount, param3, param4);
}

ResultCode RYN_DECORATED(RynToneMfDiallerInit, 24)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                   uint32_t param3, uint32_t param4, uint32_t param5) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    using Wire = wire::tone::MfDiallerInit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2);
    request.put<Wire::kParam3>(param3).put<Wire::kParam4>(param4).put<Wire::kParam5>(param5);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneMfDial, 20)(DeviceHandle handle, const char *digits, int32_t digitCount,
                                            uint32_t param3, uint32_t param4) {
    return sendDial<wire::tone::MfDial>(handle, digits, digitCount, param3, param4);
}

ResultCode RYN_DECORATED(RynToneSequenceGeneratorInit, 20)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                           uint32_t param3, uint32_t param4) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    using Wire = wire::tone::SequenceGeneratorInit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2);
    request.put<Wire::kParam3>(param3).put<Wire::kParam4>(param4);
    return request.send();
}

// At most 127 entries, although the area has room for 128.
ResultCode RYN_DECORATED(RynToneSequenceSend, 20)(DeviceHandle handle, const uint32_t *entries, int32_t entryCount,
                                                  uint32_t param3, uint32_t param4) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (entryCount < 0 || entryCount > kMaxEntries) return RYN_FAILURE(kErrRange);
    if (entries == nullptr && entryCount > 0) return RYN_FAILURE(kErrNullPointer);
    using Wire = wire::tone::SequenceSend;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).putBytes<Wire::kEntries, 4 * Wire::kEntrySlots>(
        entries, 4 * static_cast<uint32_t>(entryCount));
    request.put<Wire::kCount>(static_cast<uint32_t>(entryCount)).put<Wire::kParam3>(param3);
    request.put<Wire::kParam4>(param4);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneReadVal, 8)(DeviceHandle handle, uint16_t *value) {
    return readValue<wire::tone::ReadVal>(handle, value);
}

}  // extern "C"
