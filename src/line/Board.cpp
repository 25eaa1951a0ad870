// Board controls (clocks, codec law, the time-slot switch's constant byte)
// and the JTAG port: its control call and the two scans.
#include <cstring>
#include <memory>
#include <new>

#include "BoardWire.h"
#include "JtagWire.h"
#include "core/ResultCode.h"
#include "core/Transport.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kJtag;

// A scan carries its vectors as strings, staged in two blocks of n bytes
// (the input's length and its NUL) that travel by address: the input, and
// the output that the driver fills. The output copy is bounded to n bytes,
// and ends with a NUL even when the driver's answer has none.
template <typename Wire>
ResultCode scan(DeviceHandle handle, uint32_t param1, const char *input, char *output) {
    if (input == nullptr || output == nullptr) return RYN_FAILURE(kErrNullPointer);
    const size_t length = std::strlen(input);
    if (length >= UINT32_MAX) return RYN_FAILURE(kErrNoTransferMemory);
    const auto n = static_cast<uint32_t>(length + 1);
    const std::unique_ptr<char[]> inBlock(new (std::nothrow) char[n]);
    const std::unique_ptr<char[]> outBlock(new (std::nothrow) char[n]);
    if (inBlock == nullptr || outBlock == nullptr) return RYN_FAILURE(kErrNoTransferMemory);
    std::memcpy(inBlock.get(), input, n);
    outBlock[0] = '\0';

    RequestOf<Wire> request;
    request.template put<wire::kHandle>(handle).template put<Wire::kParam1>(param1);
    request.template putAddress<Wire::kInput>(inBlock.get(), n).template put<Wire::kInputSize>(n);
    request.template putAddress<Wire::kOutput>(outBlock.get(), n).template put<Wire::kOutputSize>(n);
    const ResultCode result = request.send();
    const size_t answer = strnlen(outBlock.get(), n - 1);
    std::memcpy(output, outBlock.get(), answer);
    output[answer] = '\0';
    return result;
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynBrdSetClocks, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    using Wire = wire::board::SetClocks;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2);
    return request.send();
}

ResultCode RYN_DECORATED(RynBrdTssConstByte, 16)(DeviceHandle handle, uint32_t param1, uint32_t param2, uint8_t value) {
    using Wire = wire::board::TssConstByte;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2);
    request.put8<Wire::kValue>(value);
    return request.send();
}

ResultCode RYN_DECORATED(RynBrdCodecSetLaw, 8)(DeviceHandle handle, uint32_t law) {
    using Wire = wire::board::CodecSetLaw;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kLaw>(law);
    return request.send();
}

ResultCode RYN_DECORATED(RynJtagControl, 8)(DeviceHandle handle, uint32_t control) {
    using Wire = wire::jtag::Control;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kControl>(control);
    return request.send();
}

ResultCode RYN_DECORATED(RynJtagScanIr, 16)(DeviceHandle handle, uint32_t param1, const char *input, char *output) {
    return scan<wire::jtag::ScanIr>(handle, param1, input, output);
}

ResultCode RYN_DECORATED(RynJtagScanDr, 16)(DeviceHandle handle, uint32_t param1, const char *input, char *output) {
    return scan<wire::jtag::ScanDr>(handle, param1, input, output);
}

}  // extern "C"
