// The board's objects, event queues, clock and register memory.
#include <algorithm>
#include <chrono>
#include <stdexcept>

#include "Clock.h"
#include "Families.h"

namespace vb {

namespace {
// 100-ns intervals from 1 January 1601 to 1 January 1970.
constexpr uint64_t kUnixEpoch = 116444736000000000ull;
}  // namespace

Board::Board() {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    start_ = kUnixEpoch +
             static_cast<uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(sinceEpoch).count()) * 10;
    buildDeviceTree(*this);
    clock_ = std::make_unique<SampleClock>(*this, SampleClock::rateAtStart());
}

Board::~Board() = default;

uint64_t Board::now() const { return start_ + offset_; }

Object *Board::find(uint32_t handle) {
    if (handle == 0) return nullptr;
    auto it = std::find_if(objects_.begin(), objects_.end(), [&](const auto &o) { return o->handle == handle; });
    return it == objects_.end() ? nullptr : it->get();
}

Object *Board::findDevice(int32_t type, uint32_t id) {
    auto it = std::find_if(objects_.begin(), objects_.end(), [&](const auto &o) {
        return kindOf(o->handle) == kKindPhysical && o->type == type && o->id == id;
    });
    return it == objects_.end() ? nullptr : it->get();
}

Object &Board::create(uint32_t kind, int32_t type, const Family &family, uint32_t parent, std::string name) {
    auto object = std::make_unique<Object>();
    const uint32_t serial = allocateSerial(nextSerial_, serials_);
    if (serial == 0) throw std::length_error("no free handle serial");  // the request fails
    // Marked before the object is stored: should the store fail, the serial
    // is only skipped, never given twice.
    serials_.insert(serial);
    object->handle = kind | serial;
    object->type = type;
    object->family = &family;
    object->parent = parent;
    object->name = std::move(name);
    if (family.newState != nullptr) object->data = family.newState(*object);
    if (kind == kKindPhysical) {
        object->id = static_cast<uint32_t>(std::count_if(objects_.begin(), objects_.end(), [&](const auto &o) {
            return kindOf(o->handle) == kKindPhysical && o->type == type;
        }));
    }
    objects_.push_back(std::move(object));
    return *objects_.back();
}

void Board::destroy(uint32_t handle) {
    // A DSP's blocks go with it.
    std::vector<uint32_t> children;
    for (const auto &o : objects_)
        if (o->parent == handle) children.push_back(o->handle);
    for (uint32_t child : children) destroy(child);
    std::erase_if(connections, [&](const Connection &c) { return c.handleA == handle || c.handleB == handle; });
    std::erase_if(registers_, [&](const auto &r) { return (r.first >> 32) == handle; });
    if (std::erase_if(objects_, [&](const auto &o) { return o->handle == handle; }) != 0)
        serials_.erase(handle & kSerialMask);
}

bool Board::queueRecord(uint32_t queueHandle, const EventData &record) {
    Object *object = find(queueHandle);
    if (object == nullptr || object->family != &kEventQueueFamily) return false;
    auto &queue = object->as<EventQueue>();
    if (queue.records.size() >= EventQueue::kCapacity) {
        queue.records.pop_front();
        ++queue.dropped;
    }
    queue.records.push_back(record);
    if (queue.event != 0) RynDrvSignalEvent(queue.event);
    return true;
}

void Board::post(const Object &source, uint32_t code, uint32_t value5, uint32_t value6, uint32_t value7) {
    EventData record{};
    const uint64_t time = now();
    record.word[0] = static_cast<uint32_t>(time);
    record.word[1] = static_cast<uint32_t>(time >> 32);
    record.word[2] = static_cast<uint32_t>(source.type);
    record.word[3] = code;
    record.word[4] = source.handle;
    record.word[5] = value5;
    record.word[6] = value6;
    record.word[7] = value7;
    for (const auto &o : objects_) {
        if (o->family != &kEventQueueFamily) continue;
        const uint32_t wanted = o->as<EventQueue>().source;
        if (wanted == 0 || wanted == source.handle || wanted == source.parent) queueRecord(o->handle, record);
    }
}

uint32_t Board::registerValue(uint32_t handle, uint32_t offset) const {
    const uint64_t key = (uint64_t{handle} << 32) | offset;
    auto it = std::find_if(registers_.begin(), registers_.end(), [&](const auto &r) { return r.first == key; });
    return it == registers_.end() ? 0 : it->second;
}

void Board::setRegister(uint32_t handle, uint32_t offset, uint32_t value) {
    const uint64_t key = (uint64_t{handle} << 32) | offset;
    auto it = std::find_if(registers_.begin(), registers_.end(), [&](const auto &r) { return r.first == key; });
    if (it != registers_.end()) {
        it->second = value;
    } else {
        registers_.emplace_back(key, value);
    }
}

std::vector<uint8_t> textValue(const std::string &text) {
    std::vector<uint8_t> value(text.begin(), text.end());
    value.push_back(0);
    return value;
}

std::optional<uint32_t> wordOf(std::span<const uint8_t> value) {
    if (value.size() != 4) return std::nullopt;
    return wire::le::load32(value.data());
}

std::vector<uint8_t> setOnly(Call &call, Object &, uint32_t capacity) {
    if (capacity != 0) call.refusal = VB_FAILURE(kNotProvided);
    return {};
}

std::vector<uint8_t> wordValue(uint32_t value) {
    std::vector<uint8_t> bytes(4);
    std::memcpy(bytes.data(), &value, 4);
    return bytes;
}

const char *eventText(uint32_t code) {
    switch (code) {
        case kEventEnabled:
            return RYN_VB_EVENT_DEVICE_ENABLED_TEXT;
        case kEventDisabled:
            return RYN_VB_EVENT_DEVICE_DISABLED_TEXT;
        case kEventReset:
            return RYN_VB_EVENT_DEVICE_RESET_TEXT;
        case kEventUser:
            return RYN_VB_EVENT_APPLICATION_TEXT;
        case kEventLayer1Changed:
            return RYN_VB_EVENT_LAYER1_CHANGED_TEXT;
        case kEventAlarmChanged:
            return RYN_VB_EVENT_ALARM_CHANGED_TEXT;
        case kEventSignallingChanged:
            return RYN_VB_EVENT_SIGNALLING_CHANGED_TEXT;
        case kEventHookChanged:
            return RYN_VB_EVENT_HOOK_CHANGED_TEXT;
        case kEventRingStarted:
            return RYN_VB_EVENT_RINGING_STARTED_TEXT;
        case kEventRingStopped:
            return RYN_VB_EVENT_RINGING_STOPPED_TEXT;
        case kEventFrameReceived:
            return RYN_VB_EVENT_FRAME_RECEIVED_TEXT;
        case kEventFrameSent:
            return RYN_VB_EVENT_FRAME_SENT_TEXT;
        case kEventRawDataReceived:
            return RYN_VB_EVENT_RAW_DATA_RECEIVED_TEXT;
        case kEventBurstDone:
            return RYN_VB_EVENT_BURST_DONE_TEXT;
        case kEventProgramStarted:
            return RYN_VB_EVENT_PROGRAM_STARTED_TEXT;
        case kEventProgramStopped:
            return RYN_VB_EVENT_PROGRAM_STOPPED_TEXT;
        case kEventDtmfDigit:
            return RYN_VB_EVENT_DTMF_DIGIT_TEXT;
        case kEventMfDigit:
            return RYN_VB_EVENT_MF_DIGIT_TEXT;
        case kEventToneDetected:
            return RYN_VB_EVENT_TONE_DETECTED_TEXT;
        case kEventToneEnded:
            return RYN_VB_EVENT_TONE_ENDED_TEXT;
        case kEventCallProgress:
            return RYN_VB_EVENT_CALL_PROGRESS_TEXT;
        case kEventSilence:
            return RYN_VB_EVENT_SILENCE_TEXT;
        case kEventDialDone:
            return RYN_VB_EVENT_DIALLING_FINISHED_TEXT;
        case kEventSequenceDone:
            return RYN_VB_EVENT_SEQUENCE_SENT_TEXT;
        case kEventDataByte:
            return RYN_VB_EVENT_DATA_BYTE_TEXT;
        case kEventCallerId:
            return RYN_VB_EVENT_CALLER_ID_TEXT;
        default:
            return nullptr;
    }
}

}  // namespace vb
