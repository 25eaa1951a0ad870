// Tone detectors on DSP blocks: silence, dial tone, DTMF, MF, dual- and
// single-frequency (tuned by the caller's frequencies) and FSK.
#include "ToneWire.h"
#include "blocks/ToneMath.h"
#include "core/ResultCode.h"
#include "core/Transport.h"
#include "device/HandleKinds.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kTone;
using wire::tone::FrequencyDetectorInit;
constexpr int32_t kMaxFrequencies = FrequencyDetectorInit::kCoefficientSlots;

// A status read: the 32-bit or 8-bit status, stored whatever the result.
template <typename Wire, class Status>
ResultCode readStatus(DeviceHandle handle, Status *status) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (status == nullptr) return RYN_FAILURE(kErrNullPointer);
    return sendForStatus<Wire>(handle, *status);
}

// Dual- and single-frequency set-up: a coefficient word for each frequency,
// six words whatever the count, the rest 0. A negative count sends none and
// goes to the driver as it is.
template <typename Wire>
ResultCode frequencyDetector(DeviceHandle handle, uint32_t param1, const uint32_t *frequencies, int32_t frequencyCount,
                             uint32_t param4, uint32_t param5, uint16_t param6) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (frequencyCount > kMaxFrequencies) return RYN_FAILURE(kErrRange);
    if (frequencies == nullptr && frequencyCount > 0) return RYN_FAILURE(kErrNullPointer);
    RequestOf<Wire> request;  // zeroed whole, header included
    request.template put<wire::kHandle>(handle).template put<Wire::kParam1>(param1);
    uint8_t words[2 * kMaxFrequencies] = {};
    for (int32_t i = 0; i < frequencyCount; ++i) store16(words + 2 * i, tone::detectorCoefficient(frequencies[i]));
    request.template putBytes<Wire::kCoefficients, sizeof words>(words, sizeof words);
    request.template put<Wire::kCount>(static_cast<uint32_t>(frequencyCount));
    request.template put<Wire::kParam4>(param4).template put<Wire::kParam5>(param5);
    request.template put16<Wire::kParam6>(param6);
    return request.send();
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynToneSilenceDetectorInit, 16)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                         uint32_t param3) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    using Wire = wire::tone::SilenceDetectorInit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2);
    request.put<Wire::kParam3>(param3);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneSilenceDetectorStatus, 8)(DeviceHandle handle, uint32_t *status) {
    return readStatus<wire::tone::SilenceDetectorStatus>(handle, status);
}

ResultCode RYN_DECORATED(RynToneDtmfDetectorInit, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    using Wire = wire::tone::DtmfDetectorInit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneDtmfDetectorStatus, 8)(DeviceHandle handle, uint8_t *status) {
    return readStatus<wire::tone::DtmfDetectorStatus>(handle, status);
}

ResultCode RYN_DECORATED(RynToneFskDetectorInit, 8)(DeviceHandle handle, uint32_t param1) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    using Wire = wire::tone::FskDetectorInit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneDialtoneDetectorInit, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    using Wire = wire::tone::DialtoneDetectorInit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneDialtoneDetectorStatus, 8)(DeviceHandle handle, uint32_t *status) {
    return readStatus<wire::tone::DialtoneDetectorStatus>(handle, status);
}

ResultCode RYN_DECORATED(RynToneMfDetectorInit, 24)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                    uint32_t param3, uint32_t param4, uint16_t param5) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    using Wire = wire::tone::MfDetectorInit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2);
    request.put<Wire::kParam3>(param3).put<Wire::kParam4>(param4).put16<Wire::kParam5>(param5);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneMfDetectorStatus, 8)(DeviceHandle handle, uint8_t *status) {
    return readStatus<wire::tone::MfDetectorStatus>(handle, status);
}

ResultCode RYN_DECORATED(RynToneDualDetectorInit, 28)(DeviceHandle handle, uint32_t param1, const uint32_t *frequencies,
                                                      int32_t frequencyCount, uint32_t param4, uint32_t param5,
                                                      uint16_t param6) {
    return frequencyDetector<wire::tone::DualDetectorInit>(handle, param1, frequencies, frequencyCount, param4, param5,
                                                           param6);
}

ResultCode RYN_DECORATED(RynToneDualDetectorStatus, 8)(DeviceHandle handle, uint8_t *status) {
    return readStatus<wire::tone::DualDetectorStatus>(handle, status);
}

ResultCode RYN_DECORATED(RynToneSingleDetectorInit, 28)(DeviceHandle handle, uint32_t param1,
                                                        const uint32_t *frequencies, int32_t frequencyCount,
                                                        uint32_t param4, uint32_t param5, uint16_t param6) {
    return frequencyDetector<wire::tone::SingleDetectorInit>(handle, param1, frequencies, frequencyCount, param4,
                                                             param5, param6);
}

ResultCode RYN_DECORATED(RynToneSingleDetectorStatus, 8)(DeviceHandle handle, uint8_t *status) {
    return readStatus<wire::tone::SingleDetectorStatus>(handle, status);
}

}  // extern "C"
