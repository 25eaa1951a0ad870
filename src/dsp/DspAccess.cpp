// DSP access: messages to the DSP program, data reads, host-port reads and
// writes, restart.
#include <algorithm>
#include <cstring>

#include "core/ResultCode.h"
#include "core/Transport.h"
#include "device/HandleKinds.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kDsp;
constexpr uint32_t kMessageBytes = 1984;  // input of a message, answer of a reply

// Host-port reads and writes pass three values in order.
ResultCode sendHostPort(uint32_t function, DeviceHandle handle, uint32_t p1, uint32_t p2, uint32_t p3) {
    if (!isDriverObject(handle)) return RYN_FAILURE(kErrInvalidHandle);
    Request<32, 12> request(function);
    request.put<16>(handle).put<20>(p1).put<24>(p2).put<28>(p3);
    return request.send();
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynDspIoControl, 36)(DeviceHandle handle, uint16_t command, const void *input,
                                              uint32_t inputLength, void *output, uint32_t outputSize,
                                              uint32_t *outputLength, uint32_t paramA, uint32_t paramB) {
    if (!isDriverObject(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (inputLength > kMessageBytes) return RYN_FAILURE(kErrRange);
    if ((input == nullptr && inputLength != 0) || (output == nullptr && outputSize != 0))
        return RYN_FAILURE(kErrNullPointer);
    // The message length counts the command word and the input bytes; the
    // block always goes out whole.
    Request<2022, 1998> request(0x99E);
    request.put<16>(handle).put<20>(inputLength + 2).put<24>(outputSize).put<28>(paramA).put<32>(paramB);
    request.put16<36>(command).putBytes<38, kMessageBytes>(input, inputLength);
    const ResultCode result = request.sendWithResultAt<8>(kStandardTransport);
    // A reply holds at most 1984 answer bytes; without a reply there is no answer.
    const uint32_t answer = request.answered() ? std::min<uint32_t>(request.get16<12>(), kMessageBytes) : 0;
    if (answer != 0) std::memcpy(output, request.replyBytes<14, kMessageBytes>(), std::min(outputSize, answer));
    if (outputLength != nullptr) *outputLength = answer;
    return result;
}

ResultCode RYN_DECORATED(RynDspReadData, 24)(DeviceHandle handle, uint32_t p1, uint32_t p2, uint32_t p3, uint32_t *out1,
                                             uint32_t *out2) {
    if (!isDriverObject(handle)) return RYN_FAILURE(kErrInvalidHandle);
    Request<32, 20> request(0x99F);
    // The second and third values change places in the request.
    request.put<16>(handle).put<20>(p1).put<24>(p3).put<28>(p2);
    const ResultCode result = request.send();
    if (out1 != nullptr) *out1 = request.get<8>();
    if (out2 != nullptr) *out2 = request.get<12>();
    return result;
}

ResultCode RYN_DECORATED(RynDspRestartProgram, 4)(DeviceHandle handle) {
    if (!isDriverObject(handle)) return RYN_FAILURE(kErrInvalidHandle);
    return sendHandleOnly(0x9A1, handle);
}

ResultCode RYN_DECORATED(RynDspReadHpi, 16)(DeviceHandle handle, uint32_t p1, uint32_t p2, uint32_t p3) {
    return sendHostPort(0x9A2, handle, p1, p2, p3);
}

ResultCode RYN_DECORATED(RynDspWriteHpi, 16)(DeviceHandle handle, uint32_t p1, uint32_t p2, uint32_t p3) {
    return sendHostPort(0x9A3, handle, p1, p2, p3);
}

}  // extern "C"
