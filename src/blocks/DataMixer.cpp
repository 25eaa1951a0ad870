// Data converter and data mixer blocks. The converter is set up through the
// driver like the other blocks; the mixer's set-up is not provided.
#include "DataMixerWire.h"
#include "core/ResultCode.h"
#include "core/Transport.h"
#include "device/HandleKinds.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kDataMixer;

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynDataConverterInit, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    using Wire = wire::data_mixer::ConverterInit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2);
    return request.send();
}

// Refused for every handle, which is not looked at; nothing is sent.
ResultCode RYN_DECORATED(RynDataMixerInit, 4)(DeviceHandle) { return RYN_FAILURE(kErrNotProvided); }

}  // extern "C"
