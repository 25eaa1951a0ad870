// Device-core requests of event queues and records, registers, the clock
// and diagnostics.
#include <algorithm>
#include <cstdio>

#include "CoreWire.h"
#include "Families.h"

namespace vb {
namespace {

using namespace wire::core;
using wire::kHandle;

// ---- Events ---------------------------------------------------------------

// param1: the source (a handle, 0 for every object), param2: the event object.
uint32_t createEventQueue(Call &call) {
    const uint32_t source = call.in.u32(CreateEventQueue::kParam1);
    if (source != 0 && call.board.find(source) == nullptr) return VB_FAILURE(kInvalidHandle);
    if (call.board.objects().size() >= kObjectLimit) return VB_FAILURE(kFailed);
    Object &queue = call.board.create(kKindQueue, kTypeEventQueue, kEventQueueFamily, 0, "Event queue");
    auto &state = queue.as<EventQueue>();
    state.source = source;
    state.event = call.in.u32(CreateEventQueue::kParam2);
    call.out.u32(CreateEventQueue::kReplyHandle, queue.handle);
    return 0;
}

EventQueue *queueOf(Board &board, uint32_t handle) {
    Object *object = board.find(handle);
    return object != nullptr && object->family == &kEventQueueFamily ? &object->as<EventQueue>() : nullptr;
}

uint32_t pollEvents(Call &call) {
    Object *object = call.board.find(call.in.u32(kHandle));
    if (object == nullptr) return VB_FAILURE(kInvalidHandle);
    if (EventQueue *queue = queueOf(call.board, object->handle); queue && !queue->records.empty() && queue->event != 0)
        RynDrvSignalEvent(queue->event);
    return 0;
}

uint32_t getEventData(Call &call) {
    EventQueue *queue = queueOf(call.board, call.in.u32(kHandle));
    if (queue == nullptr) return VB_FAILURE(kInvalidHandle);
    if (queue->records.empty()) return VB_STATUS(kNothingToRead);
    call.out.write(GetEventData::kReplyRecord, &queue->records.front(), kRecordSize);
    queue->records.pop_front();
    return 0;
}

// Up to param3 records into the caller's array; the count comes back.
uint32_t getEventDataEx(Call &call) {
    EventQueue *queue = queueOf(call.board, call.in.u32(kHandle));
    if (queue == nullptr) return VB_FAILURE(kInvalidHandle);
    const RynDriverBuffer *array = call.in.buffer(GetEventDataEx::kRecords);
    if (array == nullptr || array->address == nullptr) return VB_FAILURE(kOutOfRange);
    const size_t room = std::min<size_t>(call.in.u32(GetEventDataEx::kCount), array->length / sizeof(EventData));
    const size_t count = std::min(room, queue->records.size());
    auto *records = static_cast<uint8_t *>(array->address);
    for (size_t i = 0; i < count; ++i)
        std::memcpy(records + i * sizeof(EventData), &queue->records[i], sizeof(EventData));
    queue->records.erase(queue->records.begin(), queue->records.begin() + static_cast<std::ptrdiff_t>(count));
    call.out.u32(GetEventDataEx::kReplyCount, static_cast<uint32_t>(count));
    return count != 0 ? 0 : VB_STATUS(kNothingToRead);
}

// An application's record: into the queue when the handle is one, else
// posted from the object to every queue that listens to it.
template <bool WithTime>
uint32_t setEventData(Call &call) {
    const uint32_t handle = call.in.u32(kHandle);
    Object *object = call.board.find(handle);
    if (object == nullptr) return VB_FAILURE(kInvalidHandle);
    EventData record{};
    for (uint32_t word = 0; word < 8; ++word) record.word[word] = call.in.u32(EventRecordShape::kRecord + 4 * word);
    if (!WithTime) {
        const uint64_t time = call.board.now();
        record.word[0] = static_cast<uint32_t>(time);
        record.word[1] = static_cast<uint32_t>(time >> 32);
    }
    if (object->family == &kEventQueueFamily) {
        call.board.queueRecord(handle, record);
        return 0;
    }
    for (const auto &o : call.board.objects()) {
        if (o->family != &kEventQueueFamily) continue;
        const uint32_t source = o->as<EventQueue>().source;
        if (source == 0 || source == handle) call.board.queueRecord(o->handle, record);
    }
    return 0;
}

uint32_t eventCode2String(Call &call) {
    using W = EventCode2String;
    const char *text = eventText(call.in.u32(W::kEventCode));
    if (text == nullptr) return VB_FAILURE(kOutOfRange);
    call.out.write(W::kReplyText, text, static_cast<uint32_t>(std::min<size_t>(std::strlen(text), W::kTextSize - 1)));
    return 0;
}

// ---- Registers, time, diagnostics -----------------------------------------

template <uint32_t Mask>
uint32_t readRegister(Call &call) {
    const uint32_t handle = call.in.u32(kHandle);
    if (handle != 0 && call.board.find(handle) == nullptr) return VB_FAILURE(kInvalidHandle);
    call.out.u32(RegisterRead::kReplyValue,
                 call.board.registerValue(handle, call.in.u32(RegisterRead::kRegister)) & Mask);
    return 0;
}

template <uint32_t Mask>
uint32_t writeRegister(Call &call) {
    const uint32_t handle = call.in.u32(kHandle);
    if (handle != 0 && call.board.find(handle) == nullptr) return VB_FAILURE(kInvalidHandle);
    if ((call.in.u32(RegisterWrite::kValue) & ~Mask) != 0) return VB_FAILURE(kOutOfRange);
    call.board.setRegister(handle, call.in.u32(RegisterWrite::kRegister), call.in.u32(RegisterWrite::kValue));
    return 0;
}

uint32_t currentTime(Call &call) {
    const uint64_t time = call.board.now();
    static_assert(sizeof time == GetCurrentTime::kTimeSize);
    call.out.write(GetCurrentTime::kReplyTime, &time, GetCurrentTime::kTimeSize);
    return 0;
}

// The text of a result code, written into the caller's buffer (its address
// and length in the request).
uint32_t resultCode2String(Call &call) {
    using W = ResultCode2String;
    const RynDriverBuffer *buffer = call.in.buffer(W::kText);
    const uint32_t length = std::min(call.in.u32(W::kTextLength), buffer != nullptr ? buffer->length : 0u);
    if (buffer == nullptr || buffer->address == nullptr || length == 0) return VB_FAILURE(kOutOfRange);
    const uint32_t code = call.in.u32(W::kResultCode);
    char text[96];
    std::snprintf(text, sizeof text, "%s: source 0x%02X, line %u, error %u",
                  (code & 0x80000000u) ? "failure" : "status", (code >> 23) & 0xFFu, (code >> 8) & 0x7FFFu,
                  code & 0xFFu);
    if (code == 0) std::snprintf(text, sizeof text, "success");
    const size_t count = std::min<size_t>(std::strlen(text), length - 1);
    std::memcpy(buffer->address, text, count);
    static_cast<char *>(buffer->address)[count] = '\0';
    return 0;
}

constexpr Row kRows[] = {
    row<EventCode2String>(eventCode2String),
    row<ResultCode2String>(resultCode2String),
    row<ReadReg8>(readRegister<0xFFu>),
    row<ReadReg16>(readRegister<0xFFFFu>),
    row<WriteReg8>(writeRegister<0xFFu>),
    row<WriteReg16>(writeRegister<0xFFFFu>),
    row<WriteReg32>(writeRegister<0xFFFFFFFFu>),
    row<ReadReg32>(readRegister<0xFFFFFFFFu>),
    row<CreateEventQueue>(createEventQueue),
    row<PollEvents>(pollEvents),
    row<GetCurrentTime>(currentTime),
    row<SetEventData>(setEventData<false>),
    row<GetEventData>(getEventData),
    row<GetEventDataEx>(getEventDataEx),
    row<SetEventDataEx>(setEventData<true>),
};

}  // namespace

Table coreEventTable() { return kRows; }

}  // namespace vb
