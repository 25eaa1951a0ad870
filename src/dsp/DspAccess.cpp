// DSP access: messages to the DSP program, data reads, host-port reads and
// writes, restart.
#include <algorithm>
#include <cstring>

#include "DspWire.h"
#include "core/ResultCode.h"
#include "core/Transport.h"
#include "device/HandleKinds.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kDsp;

// Host-port reads and writes pass three values in order.
ResultCode sendHostPort(uint32_t function, DeviceHandle handle, uint32_t p1, uint32_t p2, uint32_t p3) {
    using Wire = wire::dsp::HostPort;
    if (!isDriverObject(handle)) return RYN_FAILURE(kErrInvalidHandle);
    Request<Wire::kRequest, Wire::kReply> request(function);
    request.put<wire::kHandle>(handle).put<Wire::kPage>(p1).put<Wire::kAddress>(p2).put<Wire::kParam3>(p3);
    return request.send();
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynDspIoControl, 36)(DeviceHandle handle, uint16_t command, const void *input,
                                              uint32_t inputLength, void *output, uint32_t outputSize,
                                              uint32_t *outputLength, uint32_t paramA, uint32_t paramB) {
    using Wire = wire::dsp::Message;
    constexpr uint32_t kMessageBytes = Wire::kMessageBytes;
    if (!isDriverObject(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (inputLength > kMessageBytes) return RYN_FAILURE(kErrRange);
    if ((input == nullptr && inputLength != 0) || (output == nullptr && outputSize != 0))
        return RYN_FAILURE(kErrNullPointer);
    // The message length counts the command word and the input bytes; the
    // block always goes out whole.
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kLength>(inputLength + 2).put<Wire::kOutputSize>(outputSize);
    request.put<Wire::kParamA>(paramA).put<Wire::kParamB>(paramB);
    request.put16<Wire::kCommand>(command).putBytes<Wire::kInput, kMessageBytes>(input, inputLength);
    const ResultCode result = request.sendWithResultAt<Wire::kResult>(kStandardTransport);
    // A reply holds at most 1984 answer bytes; without a reply there is no answer.
    const uint32_t answer =
        request.answered() ? std::min<uint32_t>(request.get16<Wire::kReplyAnswerLength>(), kMessageBytes) : 0;
    if (answer != 0)
        std::memcpy(output, request.replyBytes<Wire::kReplyAnswer, kMessageBytes>(), std::min(outputSize, answer));
    if (outputLength != nullptr) *outputLength = answer;
    return result;
}

ResultCode RYN_DECORATED(RynDspReadData, 24)(DeviceHandle handle, uint32_t p1, uint32_t p2, uint32_t p3, uint32_t *out1,
                                             uint32_t *out2) {
    if (!isDriverObject(handle)) return RYN_FAILURE(kErrInvalidHandle);
    using Wire = wire::dsp::ReadData;
    RequestOf<Wire> request;
    // The second and third values change places in the request.
    request.put<wire::kHandle>(handle).put<Wire::kPage>(p1).put<Wire::kCount>(p3).put<Wire::kAddress>(p2);
    const ResultCode result = request.send();
    if (out1 != nullptr) *out1 = request.get<Wire::kReplyFirst>();
    if (out2 != nullptr) *out2 = request.get<Wire::kReplySecond>();
    return result;
}

ResultCode RYN_DECORATED(RynDspRestartProgram, 4)(DeviceHandle handle) {
    if (!isDriverObject(handle)) return RYN_FAILURE(kErrInvalidHandle);
    return sendHandleOnly<wire::dsp::RestartProgram>(handle);
}

ResultCode RYN_DECORATED(RynDspReadHpi, 16)(DeviceHandle handle, uint32_t p1, uint32_t p2, uint32_t p3) {
    return sendHostPort(wire::dsp::ReadHostPort::kFunction, handle, p1, p2, p3);
}

ResultCode RYN_DECORATED(RynDspWriteHpi, 16)(DeviceHandle handle, uint32_t p1, uint32_t p2, uint32_t p3) {
    return sendHostPort(wire::dsp::WriteHostPort::kFunction, handle, p1, p2, p3);
}

}  // extern "C"
