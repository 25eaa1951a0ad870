// Event objects and waits, driver event queues, event records and texts.
#include <cstring>

#include "CoreWire.h"
#include "core/ResultCode.h"
#include "core/Transport.h"
#include "device/HandleKinds.h"
#include "osa/Events.h"

namespace ryn {
namespace {

namespace core = wire::core;

constexpr uint8_t kSourceId = source::kDeviceCore;
static_assert(sizeof(EventData) == core::kRecordSize, "an event record travels whole");

// Set-data requests: the record at kRecord, words 0 and 1 first.
template <typename Wire>
ResultCode sendEventRecord(DeviceHandle handle, const uint32_t (&words)[8]) {
    constexpr uint32_t at = Wire::kRecord;
    RequestOf<Wire> request;
    request.template put<wire::kHandle>(handle);
    request.template put<at>(words[0]).template put<at + 4>(words[1]).template put<at + 8>(words[2]);
    request.template put<at + 12>(words[3]).template put<at + 16>(words[4]).template put<at + 20>(words[5]);
    request.template put<at + 24>(words[6]).template put<at + 28>(words[7]);
    return request.send();
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynDrvCreateEvent, 4)(OsaHandle *event) {
    if (event == nullptr) return RYN_FAILURE(kErrFailed);
    *event = osa::createEvent();  // 0 when the system could not make one
    return 0;
}

ResultCode RYN_DECORATED(RynDrvSignalEvent, 4)(OsaHandle event) {
    return osa::signalEvent(event) ? 0 : RYN_FAILURE(kErrFailed);
}

ResultCode RYN_DECORATED(RynDrvCloseEvent, 4)(OsaHandle event) {
    RYN_DECORATED(OsaDeviceClose, 4)(event);
    return 0;
}

ResultCode RYN_DECORATED(RynDrvWaitForSingleEvent, 8)(OsaHandle event, uint32_t timeoutMs) {
    const uint32_t wait = osa::waitForEvents(1, &event, false, timeoutMs);
    if (wait == osa::kWaitObject0) return 0;
    if (wait == osa::kWaitAbandoned0) return RYN_FAILURE(kErrInvalidHandle);
    if (wait == osa::kWaitTimeout) return 3;
    return RYN_FAILURE(kErrFailed);
}

ResultCode RYN_DECORATED(RynDrvWaitForMultipleEvents, 20)(uint32_t count, const OsaHandle *events, uint32_t timeoutMs,
                                                          int32_t waitAll, uint32_t *index) {
    if (events == nullptr && count != 0) return RYN_FAILURE(kErrNullPointer);
    const uint32_t wait = osa::waitForEvents(count, events, waitAll != 0, timeoutMs);
    if (wait >= osa::kWaitAbandoned0 && wait < osa::kWaitAbandoned0 + count) {
        if (index != nullptr) *index = wait - osa::kWaitAbandoned0;
        return RYN_FAILURE(kErrInvalidHandle);
    }
    if (wait < count) {
        if (index != nullptr) *index = wait;
        return 2;
    }
    if (wait == osa::kWaitTimeout) return 3;
    return RYN_FAILURE(kErrFailed);
}

ResultCode RYN_DECORATED(RynDrvCancelTask, 8)(uint32_t, uint32_t) { return RYN_FAILURE(kErrNotProvided); }

ResultCode RYN_DECORATED(RynDrvCreateEventQueue, 12)(uint32_t param1, uint32_t param2, DeviceHandle *queue) {
    if (queue == nullptr) return RYN_FAILURE(kErrNullPointer);
    using Wire = core::CreateEventQueue;
    RequestOf<Wire> request;
    request.put<Wire::kParam1>(param1).put<Wire::kParam2>(param2).put<Wire::kConnection>(driverHandle());
    const ResultCode result = request.send();
    *queue = request.get<Wire::kReplyHandle>();
    return result;
}

ResultCode RYN_DECORATED(RynDrvPollEvents, 4)(DeviceHandle handle) {
    if (!isDriverObject(handle)) return RYN_FAILURE(kErrInvalidHandle);
    RequestOf<core::PollEvents> request;
    request.put<wire::kHandle>(handle);
    return request.send();
}

ResultCode RYN_DECORATED(RynDrvGetEventData, 8)(DeviceHandle handle, EventData *record) {
    if (record == nullptr) return RYN_FAILURE(kErrNullPointer);
    using Wire = core::GetEventData;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle);
    const ResultCode result = request.send();
    std::memcpy(record, request.replyBytes<Wire::kReplyRecord, sizeof(EventData)>(), sizeof(EventData));
    return result;
}

ResultCode RYN_DECORATED(RynDrvGetEventDataEx, 16)(DeviceHandle handle, EventData *records, uint32_t param3,
                                                   uint32_t *count) {
    // The driver writes the records into the caller's array, which holds
    // param3 records; it is the driver that refuses a null array.
    if (count == nullptr) return RYN_FAILURE(kErrNullPointer);
    const uint64_t bytes = uint64_t{param3} * sizeof(EventData);
    using Wire = core::GetEventDataEx;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle);
    request.putAddress<Wire::kRecords>(records, bytes > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(bytes));
    request.put<Wire::kCount>(param3);
    const ResultCode result = request.send();
    *count = request.get<Wire::kReplyCount>();
    return result;
}

ResultCode RYN_DECORATED(RynDrvSetEventData, 28)(DeviceHandle handle, uint32_t w2, uint32_t w3, uint32_t w4,
                                                 uint32_t w5, uint32_t w6, uint32_t w7) {
    return sendEventRecord<core::SetEventData>(handle, {0, 0, w2, w3, w4, w5, w6, w7});
}

ResultCode RYN_DECORATED(RynDrvSetEventDataEx, 36)(DeviceHandle handle, uint32_t w2, uint32_t w3, uint32_t w4,
                                                   uint32_t w5, uint32_t w6, uint32_t w7, uint32_t w0, uint32_t w1) {
    return sendEventRecord<core::SetEventDataEx>(handle, {w0, w1, w2, w3, w4, w5, w6, w7});
}

ResultCode RYN_DECORATED(RynDrvEventCode2String, 16)(DeviceHandle handle, uint32_t eventCode, uint32_t param3,
                                                     char *text) {
    if (text == nullptr) return RYN_FAILURE(kErrNullPointer);
    using Wire = core::EventCode2String;
    RequestOf<Wire> request;
    // The second and third arguments change places in the request.
    request.put<wire::kHandle>(handle).put<Wire::kParam3>(param3).put<Wire::kEventCode>(eventCode);
    const ResultCode result = request.send();
    const uint8_t *reply = request.replyBytes<Wire::kReplyText, Wire::kTextSize>();
    const size_t length = strnlen(reinterpret_cast<const char *>(reply), Wire::kTextSize - 1);
    std::memcpy(text, reply, length);
    text[length] = '\0';
    return result;
}

}  // extern "C"
