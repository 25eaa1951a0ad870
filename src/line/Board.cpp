// Board controls (clocks, codec law, the time-slot switch's constant byte)
// and the JTAG port: its control call and the two scans.
#include <cstring>
#include <memory>
#include <new>

#include "core/ResultCode.h"
#include "core/Transport.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kJtag;

// A scan carries its vectors as strings, staged in two blocks of n bytes
// (the input's length and its NUL) that travel by address: the input, and
// the output that the driver fills. The output copy is bounded to n bytes,
// and ends with a NUL even when the driver's answer has none.
ResultCode scan(uint32_t function, DeviceHandle handle, uint32_t param1, const char *input, char *output) {
    if (input == nullptr || output == nullptr) return RYN_FAILURE(kErrNullPointer);
    const size_t length = std::strlen(input);
    if (length >= UINT32_MAX) return RYN_FAILURE(kErrNoTransferMemory);
    const auto n = static_cast<uint32_t>(length + 1);
    const std::unique_ptr<char[]> inBlock(new (std::nothrow) char[n]);
    const std::unique_ptr<char[]> outBlock(new (std::nothrow) char[n]);
    if (inBlock == nullptr || outBlock == nullptr) return RYN_FAILURE(kErrNoTransferMemory);
    std::memcpy(inBlock.get(), input, n);
    outBlock[0] = '\0';

    Request<40, 12> request(function);
    request.put<16>(handle).put<20>(param1).putAddress<24>(inBlock.get(), n).put<28>(n);
    request.putAddress<32>(outBlock.get(), n).put<36>(n);
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
    Request<28, 12> request(0x99A);
    request.put<16>(handle).put<20>(param1).put<24>(param2);
    return request.send();
}

ResultCode RYN_DECORATED(RynBrdTssConstByte, 16)(DeviceHandle handle, uint32_t param1, uint32_t param2, uint8_t value) {
    Request<30, 12> request(0x99B);
    request.put<16>(handle).put<20>(param1).put<24>(param2).put8<28>(value);
    return request.send();
}

ResultCode RYN_DECORATED(RynBrdCodecSetLaw, 8)(DeviceHandle handle, uint32_t law) {
    Request<24, 12> request(0x99C);
    request.put<16>(handle).put<20>(law);
    return request.send();
}

ResultCode RYN_DECORATED(RynJtagControl, 8)(DeviceHandle handle, uint32_t control) {
    Request<24, 12> request(0x99A);
    request.put<16>(handle).put<20>(control);
    return request.send();
}

ResultCode RYN_DECORATED(RynJtagScanIr, 16)(DeviceHandle handle, uint32_t param1, const char *input, char *output) {
    return scan(0x99B, handle, param1, input, output);
}

ResultCode RYN_DECORATED(RynJtagScanDr, 16)(DeviceHandle handle, uint32_t param1, const char *input, char *output) {
    return scan(0x99C, handle, param1, input, output);
}

}  // extern "C"
