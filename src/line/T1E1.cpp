// T1/E1 framer control: line-interface settings, configuration records,
// alarms, layer-1 status, PRBS and the signalling bits. Every value passes to
// the driver unchanged; the driver checks them all. Every reply form keeps
// its result as the last 32-bit field, which is where the builder reads it.
#include <cstring>

#include "T1E1Wire.h"
#include "core/ResultCode.h"
#include "core/Transport.h"

namespace ryn {
namespace {

namespace t1e1 = wire::t1e1;

constexpr uint8_t kSourceId = source::kT1E1;

// A 24-byte request with one 32-bit value after the handle; plain reply.
template <typename Wire>
ResultCode sendValue(DeviceHandle handle, uint32_t value) {
    RequestOf<Wire> request;
    request.template put<wire::kHandle>(handle).template put<Wire::kValue>(value);
    return request.send();
}

// A whole record copied into the request after the handle.
template <typename Wire, class Record>
ResultCode sendRecord(DeviceHandle handle, const Record *record) {
    static_assert(sizeof(Record) == Wire::kRecordSize, "the record travels whole");
    if (record == nullptr) return RYN_FAILURE(kErrNullPointer);
    RequestOf<Wire> request;
    request.template put<wire::kHandle>(handle);
    request.template putBytes<Wire::kRecord, Wire::kRecordSize>(record, sizeof(Record));
    return request.send();
}

// A whole record copied out of a reply of 8 + size + 4 bytes, whatever the result.
template <typename Wire, class Record>
ResultCode readRecord(DeviceHandle handle, Record *record) {
    static_assert(sizeof(Record) == Wire::kRecordSize, "the record travels whole");
    if (record == nullptr) return RYN_FAILURE(kErrNullPointer);
    RequestOf<Wire> request;
    request.template put<wire::kHandle>(handle);
    const ResultCode result = request.send();
    std::memcpy(record, request.template replyBytes<Wire::kReplyRecord, Wire::kRecordSize>(), sizeof(Record));
    return result;
}

// A 32-bit selector or channel and an 8-bit value (26 bytes, 25 unset).
template <typename Wire>
ResultCode sendChannelByte(DeviceHandle handle, uint32_t channel, uint8_t value) {
    RequestOf<Wire> request;
    request.template put<wire::kHandle>(handle).template put<Wire::kChannel>(channel);
    request.template put8<Wire::kValue>(value);
    return request.send();
}

// A 32-bit selector or channel; the 8-bit answer at reply offset 8 of a
// reply of 16 bytes (result at 12) or 14 (result at 10).
template <typename Wire>
ResultCode readChannelByte(DeviceHandle handle, uint32_t channel, uint8_t *value) {
    if (value == nullptr) return RYN_FAILURE(kErrNullPointer);
    RequestOf<Wire> request;
    request.template put<wire::kHandle>(handle).template put<Wire::kChannel>(channel);
    const ResultCode result = request.send();
    *value = request.template get8<Wire::kReplyValue>();
    return result;
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynT1E1SetLiMode, 8)(DeviceHandle handle, uint32_t mode) {
    return sendValue<t1e1::SetLiMode>(handle, mode);
}

ResultCode RYN_DECORATED(RynT1SetConfiguration, 8)(DeviceHandle handle, const T1Configuration *config) {
    return sendRecord<t1e1::T1SetConfiguration>(handle, config);
}

ResultCode RYN_DECORATED(RynT1GetConfiguration, 8)(DeviceHandle handle, T1Configuration *config) {
    return readRecord<t1e1::T1GetConfiguration>(handle, config);
}

ResultCode RYN_DECORATED(RynE1SetConfiguration, 8)(DeviceHandle handle, const E1Configuration *config) {
    return sendRecord<t1e1::E1SetConfiguration>(handle, config);
}

ResultCode RYN_DECORATED(RynE1GetConfiguration, 8)(DeviceHandle handle, E1Configuration *config) {
    return readRecord<t1e1::E1GetConfiguration>(handle, config);
}

ResultCode RYN_DECORATED(RynT1E1AlarmOn, 8)(DeviceHandle handle, uint32_t alarm) {
    return sendValue<t1e1::AlarmOn>(handle, alarm);
}

ResultCode RYN_DECORATED(RynT1E1AlarmOff, 8)(DeviceHandle handle, uint32_t alarm) {
    return sendValue<t1e1::AlarmOff>(handle, alarm);
}

ResultCode RYN_DECORATED(RynT1E1SetLineLoop, 8)(DeviceHandle handle, uint32_t loop) {
    return sendValue<t1e1::SetLineLoop>(handle, loop);
}

ResultCode RYN_DECORATED(RynT1E1ForceResynch, 4)(DeviceHandle handle) {
    return sendHandleOnly<t1e1::ForceResynch>(handle);
}

ResultCode RYN_DECORATED(RynT1E1GetLayer1Status, 8)(DeviceHandle handle, uint32_t *status) {
    if (status == nullptr) return RYN_FAILURE(kErrNullPointer);
    using Wire = t1e1::GetLayer1Status;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle);
    const ResultCode result = request.send();
    *status = request.get<Wire::kReplyStatus>();
    return result;
}

ResultCode RYN_DECORATED(RynT1E1XmitPinControl, 8)(DeviceHandle handle, uint32_t control) {
    return sendValue<t1e1::XmitPinControl>(handle, control);
}

ResultCode RYN_DECORATED(RynT1E1SetLineTermination, 8)(DeviceHandle handle, uint32_t termination) {
    return sendValue<t1e1::SetLineTermination>(handle, termination);
}

ResultCode RYN_DECORATED(RynT1E1SetMonitorMode, 8)(DeviceHandle handle, uint32_t mode) {
    return sendValue<t1e1::SetMonitorMode>(handle, mode);
}

ResultCode RYN_DECORATED(RynT1E1SetPrbsConfig, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    using Wire = t1e1::SetPrbsConfig;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2);
    return request.send();
}

ResultCode RYN_DECORATED(RynT1SetRobBitData, 8)(DeviceHandle handle, const RobBitData *bits) {
    return sendRecord<t1e1::T1SetRobBitData>(handle, bits);
}

ResultCode RYN_DECORATED(RynT1GetRobBitData, 8)(DeviceHandle handle, RobBitData *bits) {
    return readRecord<t1e1::T1GetRobBitData>(handle, bits);
}

ResultCode RYN_DECORATED(RynE1SetABCDBit, 8)(DeviceHandle handle, const ABCDBitData *bits) {
    return sendRecord<t1e1::E1SetABCDBit>(handle, bits);
}

ResultCode RYN_DECORATED(RynE1GetABCDBit, 8)(DeviceHandle handle, ABCDBitData *bits) {
    return readRecord<t1e1::E1GetABCDBit>(handle, bits);
}

ResultCode RYN_DECORATED(RynE1GetSaBit, 12)(DeviceHandle handle, uint32_t selector, uint8_t *value) {
    return readChannelByte<t1e1::E1GetSaBit>(handle, selector, value);
}

ResultCode RYN_DECORATED(RynE1SetSaBit, 12)(DeviceHandle handle, uint32_t selector, uint8_t value) {
    return sendChannelByte<t1e1::E1SetSaBit>(handle, selector, value);
}

ResultCode RYN_DECORATED(RynE1GetSiBit, 12)(DeviceHandle handle, uint8_t *value1, uint8_t *value2) {
    if (value1 == nullptr || value2 == nullptr) return RYN_FAILURE(kErrNullPointer);
    using Wire = t1e1::E1GetSiBit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle);
    const ResultCode result = request.send();
    *value1 = request.get8<Wire::kReplyValue1>();
    *value2 = request.get8<Wire::kReplyValue2>();
    return result;
}

ResultCode RYN_DECORATED(RynE1SetSiBit, 12)(DeviceHandle handle, uint8_t value1, uint8_t value2) {
    using Wire = t1e1::E1SetSiBit;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put8<Wire::kValue1>(value1).put8<Wire::kValue2>(value2);
    return request.send();
}

ResultCode RYN_DECORATED(RynT1SetChannelizedRobBitData, 12)(DeviceHandle handle, uint32_t channel, uint8_t bits) {
    return sendChannelByte<t1e1::T1SetChannelizedRobBitData>(handle, channel, bits);
}

ResultCode RYN_DECORATED(RynT1GetChannelizedRobBitData, 12)(DeviceHandle handle, uint32_t channel, uint8_t *bits) {
    return readChannelByte<t1e1::T1GetChannelizedRobBitData>(handle, channel, bits);
}

ResultCode RYN_DECORATED(RynE1SetChannelizedABCDBit, 12)(DeviceHandle handle, uint32_t channel, uint8_t bits) {
    return sendChannelByte<t1e1::E1SetChannelizedABCDBit>(handle, channel, bits);
}

ResultCode RYN_DECORATED(RynE1GetChannelizedABCDBit, 12)(DeviceHandle handle, uint32_t channel, uint8_t *bits) {
    return readChannelByte<t1e1::E1GetChannelizedABCDBit>(handle, channel, bits);
}

ResultCode RYN_DECORATED(RynT1SetDlBitData, 8)(DeviceHandle handle, uint32_t dlBits) {
    return sendValue<t1e1::T1SetDlBitData>(handle, dlBits);
}

ResultCode RYN_DECORATED(RynT1E1InsertSingleBitDefect, 8)(DeviceHandle handle, uint32_t defect) {
    return sendValue<t1e1::InsertSingleBitDefect>(handle, defect);
}

ResultCode RYN_DECORATED(RynT1E1GetLayer1StatusEx, 8)(DeviceHandle handle, Layer1StatusEx *statusEx) {
    return readRecord<t1e1::GetLayer1StatusEx>(handle, statusEx);
}

}  // extern "C"
