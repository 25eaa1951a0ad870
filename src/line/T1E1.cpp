// T1/E1 framer control: line-interface settings, configuration records,
// alarms, layer-1 status, PRBS and the signalling bits. Every value passes to
// the driver unchanged; the driver checks them all. Every reply form keeps
// its result as the last 32-bit field, which is where the builder reads it.
#include <cstring>

#include "core/ResultCode.h"
#include "core/Transport.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kT1E1;

// A 24-byte request with one 32-bit value after the handle; plain reply.
ResultCode sendValue(uint32_t function, DeviceHandle handle, uint32_t value) {
    Request<24, 12> request(function);
    request.put<16>(handle).put<20>(value);
    return request.send();
}

// A whole record copied into the request after the handle.
template <class Record>
ResultCode sendRecord(uint32_t function, DeviceHandle handle, const Record *record) {
    if (record == nullptr) return RYN_FAILURE(kErrNullPointer);
    Request<20 + sizeof(Record), 12> request(function);
    request.template put<16>(handle).template putBytes<20, sizeof(Record)>(record, sizeof(Record));
    return request.send();
}

// A whole record copied out of a reply of 8 + size + 4 bytes, whatever the result.
template <class Record>
ResultCode readRecord(uint32_t function, DeviceHandle handle, Record *record) {
    if (record == nullptr) return RYN_FAILURE(kErrNullPointer);
    Request<20, 8 + sizeof(Record) + 4> request(function);
    request.template put<16>(handle);
    const ResultCode result = request.send();
    std::memcpy(record, request.template replyBytes<8, sizeof(Record)>(), sizeof(Record));
    return result;
}

// A 32-bit selector or channel and an 8-bit value (26 bytes, 25 unset).
ResultCode sendChannelByte(uint32_t function, DeviceHandle handle, uint32_t channel, uint8_t value) {
    Request<26, 12> request(function);
    request.put<16>(handle).put<20>(channel).put8<24>(value);
    return request.send();
}

// A 32-bit selector or channel; the 8-bit answer at reply offset 8 of a
// reply of ReplyLength bytes (16: result at 12; 14: result at 10).
template <uint32_t ReplyLength>
ResultCode readChannelByte(uint32_t function, DeviceHandle handle, uint32_t channel, uint8_t *value) {
    if (value == nullptr) return RYN_FAILURE(kErrNullPointer);
    Request<24, ReplyLength> request(function);
    request.template put<16>(handle).template put<20>(channel);
    const ResultCode result = request.send();
    *value = request.template get8<8>();
    return result;
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynT1E1SetLiMode, 8)(DeviceHandle handle, uint32_t mode) {
    return sendValue(0x99A, handle, mode);
}

ResultCode RYN_DECORATED(RynT1SetConfiguration, 8)(DeviceHandle handle, const T1Configuration *config) {
    return sendRecord(0x99B, handle, config);
}

ResultCode RYN_DECORATED(RynT1GetConfiguration, 8)(DeviceHandle handle, T1Configuration *config) {
    return readRecord(0x99C, handle, config);
}

ResultCode RYN_DECORATED(RynE1SetConfiguration, 8)(DeviceHandle handle, const E1Configuration *config) {
    return sendRecord(0x99D, handle, config);
}

ResultCode RYN_DECORATED(RynE1GetConfiguration, 8)(DeviceHandle handle, E1Configuration *config) {
    return readRecord(0x99E, handle, config);
}

ResultCode RYN_DECORATED(RynT1E1AlarmOn, 8)(DeviceHandle handle, uint32_t alarm) {
    return sendValue(0x99F, handle, alarm);
}

ResultCode RYN_DECORATED(RynT1E1AlarmOff, 8)(DeviceHandle handle, uint32_t alarm) {
    return sendValue(0x9A0, handle, alarm);
}

ResultCode RYN_DECORATED(RynT1E1SetLineLoop, 8)(DeviceHandle handle, uint32_t loop) {
    return sendValue(0x9A1, handle, loop);
}

ResultCode RYN_DECORATED(RynT1E1ForceResynch, 4)(DeviceHandle handle) { return sendHandleOnly(0x9A2, handle); }

ResultCode RYN_DECORATED(RynT1E1GetLayer1Status, 8)(DeviceHandle handle, uint32_t *status) {
    if (status == nullptr) return RYN_FAILURE(kErrNullPointer);
    Request<20, 16> request(0x9A3);
    request.put<16>(handle);
    const ResultCode result = request.send();
    *status = request.get<8>();
    return result;
}

ResultCode RYN_DECORATED(RynT1E1XmitPinControl, 8)(DeviceHandle handle, uint32_t control) {
    return sendValue(0x9A4, handle, control);
}

ResultCode RYN_DECORATED(RynT1E1SetLineTermination, 8)(DeviceHandle handle, uint32_t termination) {
    return sendValue(0x9A5, handle, termination);
}

ResultCode RYN_DECORATED(RynT1E1SetMonitorMode, 8)(DeviceHandle handle, uint32_t mode) {
    return sendValue(0x9A6, handle, mode);
}

ResultCode RYN_DECORATED(RynT1E1SetPrbsConfig, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    Request<28, 12> request(0x9A7);
    request.put<16>(handle).put<20>(param1).put<24>(param2);
    return request.send();
}

ResultCode RYN_DECORATED(RynT1SetRobBitData, 8)(DeviceHandle handle, const RobBitData *bits) {
    return sendRecord(0x9A8, handle, bits);
}

ResultCode RYN_DECORATED(RynT1GetRobBitData, 8)(DeviceHandle handle, RobBitData *bits) {
    return readRecord(0x9A9, handle, bits);
}

ResultCode RYN_DECORATED(RynE1SetABCDBit, 8)(DeviceHandle handle, const ABCDBitData *bits) {
    return sendRecord(0x9AA, handle, bits);
}

ResultCode RYN_DECORATED(RynE1GetABCDBit, 8)(DeviceHandle handle, ABCDBitData *bits) {
    return readRecord(0x9AB, handle, bits);
}

ResultCode RYN_DECORATED(RynE1GetSaBit, 12)(DeviceHandle handle, uint32_t selector, uint8_t *value) {
    return readChannelByte<16>(0x9AC, handle, selector, value);
}

ResultCode RYN_DECORATED(RynE1SetSaBit, 12)(DeviceHandle handle, uint32_t selector, uint8_t value) {
    return sendChannelByte(0x9AD, handle, selector, value);
}

ResultCode RYN_DECORATED(RynE1GetSiBit, 12)(DeviceHandle handle, uint8_t *value1, uint8_t *value2) {
    if (value1 == nullptr || value2 == nullptr) return RYN_FAILURE(kErrNullPointer);
    Request<20, 14> request(0x9AE);
    request.put<16>(handle);
    const ResultCode result = request.send();
    *value1 = request.get8<8>();
    *value2 = request.get8<9>();
    return result;
}

ResultCode RYN_DECORATED(RynE1SetSiBit, 12)(DeviceHandle handle, uint8_t value1, uint8_t value2) {
    Request<22, 12> request(0x9AF);
    request.put<16>(handle).put8<20>(value1).put8<21>(value2);
    return request.send();
}

ResultCode RYN_DECORATED(RynT1SetChannelizedRobBitData, 12)(DeviceHandle handle, uint32_t channel, uint8_t bits) {
    return sendChannelByte(0x9BF, handle, channel, bits);
}

ResultCode RYN_DECORATED(RynT1GetChannelizedRobBitData, 12)(DeviceHandle handle, uint32_t channel, uint8_t *bits) {
    return readChannelByte<14>(0x9C0, handle, channel, bits);
}

ResultCode RYN_DECORATED(RynE1SetChannelizedABCDBit, 12)(DeviceHandle handle, uint32_t channel, uint8_t bits) {
    return sendChannelByte(0x9C1, handle, channel, bits);
}

ResultCode RYN_DECORATED(RynE1GetChannelizedABCDBit, 12)(DeviceHandle handle, uint32_t channel, uint8_t *bits) {
    return readChannelByte<14>(0x9C2, handle, channel, bits);
}

ResultCode RYN_DECORATED(RynT1SetDlBitData, 8)(DeviceHandle handle, uint32_t dlBits) {
    return sendValue(0x9C3, handle, dlBits);
}

ResultCode RYN_DECORATED(RynT1E1InsertSingleBitDefect, 8)(DeviceHandle handle, uint32_t defect) {
    return sendValue(0x9C4, handle, defect);
}

ResultCode RYN_DECORATED(RynT1E1GetLayer1StatusEx, 8)(DeviceHandle handle, Layer1StatusEx *statusEx) {
    return readRecord(0x9C5, handle, statusEx);
}

}  // extern "C"
