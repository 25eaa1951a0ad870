// Tone detectors on DSP blocks: silence, dial tone, DTMF, MF, dual- and
// single-frequency (tuned by the caller's frequencies) and FSK.
#include "blocks/ToneMath.h"
#include "core/ResultCode.h"
#include "core/Transport.h"
#include "device/HandleKinds.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kTone;
constexpr int32_t kMaxFrequencies = 6;

// A status read: the 32-bit or 8-bit status at reply offset 8, stored
// whatever the result.
template <class Status>
ResultCode readStatus(uint32_t function, DeviceHandle handle, Status *status) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (status == nullptr) return RYN_FAILURE(kErrNullPointer);
    Request<20, 16> request(function);
    request.put<16>(handle);
    const ResultCode result = request.send();
    if constexpr (sizeof(Status) == 1) {
        *status = request.get8<8>();
    } else {
        *status = request.get<8>();
    }
    return result;
}

// Dual- and single-frequency set-up: a coefficient word for each frequency,
// six words whatever the count, the rest 0. A negative count sends none and
// goes to the driver as it is.
ResultCode frequencyDetector(uint32_t function, DeviceHandle handle, uint32_t param1, const uint32_t *frequencies,
                             int32_t frequencyCount, uint32_t param4, uint32_t param5, uint16_t param6) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (frequencyCount > kMaxFrequencies) return RYN_FAILURE(kErrRange);
    if (frequencies == nullptr && frequencyCount > 0) return RYN_FAILURE(kErrNullPointer);
    Request<50, 12> request(function);  // zeroed whole, header included
    request.put<16>(handle).put<20>(param1);
    uint16_t words[kMaxFrequencies] = {};
    for (int32_t i = 0; i < frequencyCount; ++i) words[i] = tone::detectorCoefficient(frequencies[i]);
    request.put16<24>(words[0]).put16<26>(words[1]).put16<28>(words[2]);
    request.put16<30>(words[3]).put16<32>(words[4]).put16<34>(words[5]);
    request.put<36>(static_cast<uint32_t>(frequencyCount)).put<40>(param4).put<44>(param5).put16<48>(param6);
    return request.send();
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynToneSilenceDetectorInit, 16)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                         uint32_t param3) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    Request<32, 12> request(0x9A3);
    request.put<16>(handle).put<20>(param1).put<24>(param2).put<28>(param3);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneSilenceDetectorStatus, 8)(DeviceHandle handle, uint32_t *status) {
    return readStatus(0x9A4, handle, status);
}

ResultCode RYN_DECORATED(RynToneDtmfDetectorInit, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    Request<28, 12> request(0x9A5);
    request.put<16>(handle).put<20>(param1).put<24>(param2);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneDtmfDetectorStatus, 8)(DeviceHandle handle, uint8_t *status) {
    return readStatus(0x9A6, handle, status);
}

ResultCode RYN_DECORATED(RynToneFskDetectorInit, 8)(DeviceHandle handle, uint32_t param1) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    Request<24, 12> request(0x9A7);
    request.put<16>(handle).put<20>(param1);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneDialtoneDetectorInit, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    Request<28, 12> request(0x9A8);
    request.put<16>(handle).put<20>(param1).put<24>(param2);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneDialtoneDetectorStatus, 8)(DeviceHandle handle, uint32_t *status) {
    return readStatus(0x9A9, handle, status);
}

ResultCode RYN_DECORATED(RynToneMfDetectorInit, 24)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                    uint32_t param3, uint32_t param4, uint16_t param5) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    Request<38, 12> request(0x9AD);
    request.put<16>(handle).put<20>(param1).put<24>(param2).put<28>(param3).put<32>(param4).put16<36>(param5);
    return request.send();
}

ResultCode RYN_DECORATED(RynToneMfDetectorStatus, 8)(DeviceHandle handle, uint8_t *status) {
    return readStatus(0x9AE, handle, status);
}

ResultCode RYN_DECORATED(RynToneDualDetectorInit, 28)(DeviceHandle handle, uint32_t param1, const uint32_t *frequencies,
                                                      int32_t frequencyCount, uint32_t param4, uint32_t param5,
                                                      uint16_t param6) {
    return frequencyDetector(0x9B1, handle, param1, frequencies, frequencyCount, param4, param5, param6);
}

ResultCode RYN_DECORATED(RynToneDualDetectorStatus, 8)(DeviceHandle handle, uint8_t *status) {
    return readStatus(0x9B2, handle, status);
}

ResultCode RYN_DECORATED(RynToneSingleDetectorInit, 28)(DeviceHandle handle, uint32_t param1,
                                                        const uint32_t *frequencies, int32_t frequencyCount,
                                                        uint32_t param4, uint32_t param5, uint16_t param6) {
    return frequencyDetector(0x9B3, handle, param1, frequencies, frequencyCount, param4, param5, param6);
}

ResultCode RYN_DECORATED(RynToneSingleDetectorStatus, 8)(DeviceHandle handle, uint8_t *status) {
    return readStatus(0x9B4, handle, status);
}

}  // extern "C"
