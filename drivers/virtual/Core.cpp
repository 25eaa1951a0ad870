// Device-core requests: enumeration, handles, logical devices, pipes and
// connections, object management, attributes, event queues and records,
// registers and the clock.
#include <algorithm>
#include <array>

#include "Families.h"

namespace vb {
namespace {

constexpr const char *kDriverVersion = RYN_VB_DRIVER_VERSION_TEXT;
constexpr const char *kBoardName = RYN_VB_BOARD_NAME_TEXT;
constexpr uint32_t kBlocksPerDsp = RYN_VB_BLOCKS_PER_DSP;
constexpr size_t kObjectLimit = 4096;  // pipes and event queues beside the devices and blocks
constexpr uint32_t kPipeDataLimit = 512;
constexpr uint32_t kEventTextBytes = 256;

uint32_t kindOf(uint32_t handle) { return handle & 0xF0000000u; }

// The family of a signal-processing block type; false when the type is not one.
bool blockFamily(int32_t type, Family &family) {
    if (type >= kTypeConstValueGenerator && type <= kTypeSingleDetector) {
        family = Family::Tone;
    } else if (type >= kTypeTelephonyFirst && type <= kTypeTelephonyLast) {
        family = Family::Telephony;
    } else if (type == kTypeDataMixer) {
        family = Family::DataMixer;
    } else if (type == kTypeDspPots) {
        family = Family::DspPots;
    } else {
        return false;
    }
    // the gap in the tone numbering, between the generators and the detectors
    return type <= kTypeSequenceGenerator || type >= kTypeSilenceDetector;
}

// ---- Enumeration and handles ----------------------------------------------

// The device types below a parent: the board's physical types (parent 0) or
// the block types a DSP can hold.
std::vector<int32_t> childTypes(Board &board, uint32_t parent) {
    std::vector<int32_t> types;
    if (parent == 0) {
        for (const auto &o : board.objects())
            if (kindOf(o->handle) == kKindPhysical && std::find(types.begin(), types.end(), o->type) == types.end())
                types.push_back(o->type);
        return types;
    }
    Object *object = board.find(parent);
    if (object == nullptr || object->family != Family::Dsp) return types;
    Family family;
    for (int32_t type = kTypeConstValueGenerator; type <= kTypeDspPots; ++type)
        if (blockFamily(type, family)) types.push_back(type);
    return types;
}

// The devices of a type below a parent: physical devices (parent 0) or the
// blocks created on a DSP.
std::vector<Object *> children(Board &board, uint32_t parent, int32_t type) {
    std::vector<Object *> found;
    for (const auto &o : board.objects())
        if (o->type == type && o->parent == parent && (parent != 0 || kindOf(o->handle) == kKindPhysical))
            found.push_back(o.get());
    return found;
}

// Enumeration answers element `iterator` and the next iterator, -1 after the last.
template <typename List, typename Value>
uint32_t enumerate(Call &call, const List &list, uint32_t iterator, Value value) {
    if (iterator >= list.size()) {
        call.out.u32(12, 0xFFFFFFFFu);
        return VB_FAILURE(kOutOfRange);
    }
    call.out.u32(8, static_cast<uint32_t>(value(list[iterator])));
    call.out.u32(12, iterator + 1 < list.size() ? iterator + 1 : 0xFFFFFFFFu);
    return 0;
}

uint32_t enumDeviceType(Call &call) {
    const uint32_t parent = call.in.u32(16);
    if (parent != 0 && call.board.find(parent) == nullptr) return VB_FAILURE(kInvalidHandle);
    return enumerate(call, childTypes(call.board, parent), call.in.u32(20), [](int32_t type) { return type; });
}

uint32_t enumDevice(Call &call) {
    const uint32_t parent = call.in.u32(16);
    if (parent != 0 && call.board.find(parent) == nullptr) return VB_FAILURE(kInvalidHandle);
    return enumerate(call, children(call.board, parent, call.in.i32(20)), call.in.u32(24),
                     [](const Object *o) { return o->id; });
}

uint32_t getDeviceHandle(Call &call) {
    const uint32_t parent = call.in.u32(12);
    const auto found = children(call.board, parent, call.in.i32(16));
    const uint32_t id = call.in.u32(20);
    auto it = std::find_if(found.begin(), found.end(), [&](const Object *o) { return o->id == id; });
    if (it == found.end()) return VB_FAILURE(kNotAvailable);
    call.out.u32(8, (*it)->handle);
    return 0;
}

uint32_t openPhysicalDevice(Call &call) {
    Object *device = call.board.findDevice(call.in.i32(16), call.in.u32(20));
    if (device == nullptr) return VB_FAILURE(kNotAvailable);
    call.out.u32(8, device->handle);
    return 0;
}

uint32_t openPhysicalDeviceEx(Call &call) {
    return call.board.findDevice(call.in.i32(16), call.in.u32(20)) != nullptr ? 0 : VB_FAILURE(kNotAvailable);
}

uint32_t createLogicalDevice(Call &call) {
    Object *dsp = call.board.find(call.in.u32(16));
    if (dsp == nullptr || dsp->family != Family::Dsp) return VB_FAILURE(kInvalidHandle);
    const int32_t type = call.in.i32(20);
    Family family;
    if (!blockFamily(type, family)) return VB_FAILURE(kNotAvailable);
    if (children(call.board, dsp->handle, type).size() >= kBlocksPerDsp) return VB_FAILURE(kFailed);
    uint32_t used = 0;
    for (const auto &o : call.board.objects()) used += o->parent == dsp->handle;
    if (used >= kBlocksPerDsp) return VB_FAILURE(kFailed);
    const auto siblings = children(call.board, dsp->handle, type);
    uint32_t id = 0;
    while (std::any_of(siblings.begin(), siblings.end(), [&](const Object *o) { return o->id == id; })) ++id;
    Object &block = call.board.create(kKindLogical, type, family, dsp->handle, dsp->name + " block");
    block.id = id;
    call.out.u32(8, block.handle);
    return 0;
}

uint32_t createPipe(Call &call) {
    if (call.board.objects().size() >= kObjectLimit) return VB_FAILURE(kFailed);
    Object &pipe = call.board.create(kKindPipe, kTypePipe, Family::Pipe, 0, "Pipe");
    call.out.u32(8, pipe.handle);
    return 0;
}

// ---- Connections ----------------------------------------------------------

bool connectable(Object *object) {
    return object != nullptr && object->family != Family::EventQueue;
}

uint32_t connect(Board &board, uint32_t handleA, uint32_t portA, uint32_t handleB, uint32_t portB) {
    if (handleA == handleB) return VB_FAILURE(kOutOfRange);
    auto &list = board.connections;
    const bool known = std::any_of(list.begin(), list.end(), [&](const Board::Connection &c) {
        return c.handleA == handleA && c.portA == portA && c.handleB == handleB && c.portB == portB;
    });
    if (!known) list.push_back({handleA, portA, handleB, portB});
    return 0;
}

uint32_t connectLogicalDevice(Call &call) {
    const uint32_t a = call.in.u32(16), b = call.in.u32(24);
    if (!connectable(call.board.find(a)) || !connectable(call.board.find(b))) return VB_FAILURE(kInvalidHandle);
    return connect(call.board, a, call.in.u32(20), b, call.in.u32(28));
}

uint32_t disconnectLogicalDevice(Call &call) {
    const uint32_t a = call.in.u32(16), pa = call.in.u32(20), b = call.in.u32(24), pb = call.in.u32(28);
    const size_t removed = std::erase_if(call.board.connections, [&](const Board::Connection &c) {
        return c.handleA == a && c.portA == pa && c.handleB == b && c.portB == pb;
    });
    return removed != 0 ? 0 : VB_FAILURE(kFailed);
}

uint32_t connectPipe(Call &call) {
    Object *pipe = call.board.find(call.in.u32(16));
    Object *device = call.board.find(call.in.u32(24));
    if (pipe == nullptr || pipe->family != Family::Pipe) return VB_FAILURE(kInvalidHandle);
    if (device == nullptr || kindOf(device->handle) != kKindPhysical) return VB_FAILURE(kInvalidHandle);
    if (call.in.u32(544) > kPipeDataLimit) return VB_FAILURE(kOutOfRange);
    return connect(call.board, pipe->handle, call.in.u32(20), device->handle, call.in.u32(28));
}

uint32_t disconnectPipe(Call &call) {
    const uint32_t pipe = call.in.u32(16), port = call.in.u32(20);
    Object *object = call.board.find(pipe);
    if (object == nullptr || object->family != Family::Pipe) return VB_FAILURE(kInvalidHandle);
    const size_t removed = std::erase_if(call.board.connections, [&](const Board::Connection &c) {
        return c.handleA == pipe && c.portA == port;
    });
    return removed != 0 ? 0 : VB_FAILURE(kFailed);
}

uint32_t connectBoard(Call &call) {
    return call.board.find(call.in.u32(16)) != nullptr && call.board.find(call.in.u32(20)) != nullptr
               ? 0
               : VB_FAILURE(kInvalidHandle);
}

// ---- Management -----------------------------------------------------------

template <uint32_t State, uint32_t Event>
uint32_t setState(Call &call) {
    Object *object = call.board.find(call.in.u32(16));
    if (object == nullptr) return VB_FAILURE(kInvalidHandle);
    object->state = State;
    call.board.post(*object, Event);
    return 0;
}

uint32_t getState(Call &call) {
    Object *object = call.board.find(call.in.u32(16));
    if (object == nullptr) return VB_FAILURE(kInvalidHandle);
    call.out.u32(8, object->state);
    return 0;
}

// A reset returns the object's family state to its start.
uint32_t reset(Call &call) {
    Object *object = call.board.find(call.in.u32(16));
    if (object == nullptr) return VB_FAILURE(kInvalidHandle);
    resetState(call.board, *object);
    object->state = kStateIdle;
    call.board.post(*object, kEventReset);
    return 0;
}

// Blocks, pipes and queues end with their close; the board's devices stay
// and return to their start.
uint32_t close(Call &call) {
    Object *object = call.board.find(call.in.u32(16));
    if (object == nullptr) return VB_FAILURE(kInvalidHandle);
    if (kindOf(object->handle) == kKindPhysical) {
        resetState(call.board, *object);
        object->state = kStateIdle;
    } else {
        call.board.destroy(object->handle);
    }
    return 0;
}

uint32_t accept(Call &) { return 0; }

// ---- Attributes -----------------------------------------------------------

struct Value {
    uint32_t result;
    uint32_t type = 0;
    std::vector<uint8_t> bytes;
};

Value driverAttribute(int32_t id) {
    switch (id) {
        case RYN_VB_ATTR_DRIVER_VERSION: return {0, RYN_VB_VALUE_TEXT, textValue(kDriverVersion)};
        case RYN_VB_ATTR_BOARD_NAME: return {0, RYN_VB_VALUE_TEXT, textValue(kBoardName)};
        default: return {VB_FAILURE(kUnknownAttribute), 0, {}};
    }
}

const Attribute *familyAttribute(const Object &object, int32_t id) {
    for (const Attribute &a : familyAttributes(object.family))
        if (a.id == id) return &a;
    return nullptr;
}

Value objectAttribute(Call &call, Object &object, int32_t id, uint32_t capacity) {
    switch (id) {
        case RYN_VB_ATTR_DEVICE_TYPE: return {0, RYN_VB_VALUE_UINT32, wordValue(static_cast<uint32_t>(object.type))};
        case RYN_VB_ATTR_DEVICE_NUMBER: return {0, RYN_VB_VALUE_UINT32, wordValue(object.id)};
        case RYN_VB_ATTR_NAME: return {0, RYN_VB_VALUE_TEXT, textValue(object.name)};
        case RYN_VB_ATTR_STATE: return {0, RYN_VB_VALUE_UINT32, wordValue(object.state)};
        case RYN_VB_ATTR_LABEL: return {0, RYN_VB_VALUE_UINT32, wordValue(object.label)};
        default: break;
    }
    if (const Attribute *a = familyAttribute(object, id)) {
        Value value{0, a->type, a->get(call, object, capacity)};
        if (call.refusal != 0) value = {call.refusal, 0, {}};
        return value;
    }
    return {VB_FAILURE(kUnknownAttribute), 0, {}};
}

Value attribute(Call &call, uint32_t handle, int32_t id, uint32_t capacity) {
    if (handle == 0) return driverAttribute(id);
    Object *object = call.board.find(handle);
    if (object == nullptr) return {VB_FAILURE(kInvalidHandle), 0, {}};
    return objectAttribute(call, *object, id, capacity);
}

uint32_t getAttributeType(Call &call) {
    // The size of a value the caller sizes itself is reported as 0.
    const Value value = attribute(call, call.in.u32(16), call.in.i32(20), 0);
    if (failed(value.result)) return value.result;
    const bool settable = [&] {
        if (call.in.u32(16) == 0) return false;
        Object *object = call.board.find(call.in.u32(16));
        if (call.in.i32(20) == RYN_VB_ATTR_LABEL) return true;
        const Attribute *a = familyAttribute(*object, call.in.i32(20));
        return a != nullptr && a->set != nullptr;
    }();
    call.out.u32(8, value.type).u32(12, static_cast<uint32_t>(value.bytes.size())).u32(16, settable ? RYN_VB_ACCESS_SETTABLE : RYN_VB_ACCESS_READ_ONLY);
    return 0;
}

// Reply: code at 8, the value's size at 12, the value from 16 in a block of
// the caller's buffer length + 17 bytes. A value larger than the buffer is
// refused with error 9 and its size reported, and nothing of it is copied.
// The reply's length is what was written: the header, and the value when it
// was copied.
constexpr uint32_t kValueOffset = 16;
constexpr uint32_t kValueOverhead = 17;

uint32_t getAttributeValue(Call &call) {
    const uint32_t capacity = call.in.u32(24);
    // Summed in 64 bits: the block may be shorter than the overhead (the row
    // asks for 16 bytes), and a capacity near 2^32 must not wrap.
    if (uint64_t{capacity} + kValueOverhead > call.out.length()) return VB_FAILURE(kLengthMismatch);
    const Value value = attribute(call, call.in.u32(16), call.in.i32(20), capacity);
    if (failed(value.result)) return value.result;
    const uint32_t size = static_cast<uint32_t>(value.bytes.size());
    call.out.u32(12, size);
    if (size > capacity) return VB_FAILURE(kOutOfRange);
    call.out.write(kValueOffset, value.bytes.data(), size);
    call.replyLength = kValueOffset + size;
    return 0;
}

uint32_t setAttributeValue(Call &call) {
    const uint32_t handle = call.in.u32(16);
    const int32_t id = call.in.i32(20);
    const uint32_t length = call.in.u32(24);
    if (length > call.in.length() - 29 || call.in.length() - 29 != length) return VB_FAILURE(kLengthMismatch);
    const auto value = call.in.bytes(28, length);
    if (handle == 0) return driverAttribute(id).result == 0 ? VB_FAILURE(kFailed) : VB_FAILURE(kUnknownAttribute);
    Object *object = call.board.find(handle);
    if (object == nullptr) return VB_FAILURE(kInvalidHandle);
    if (id >= RYN_VB_ATTR_DEVICE_TYPE && id <= RYN_VB_ATTR_STATE) return VB_FAILURE(kFailed);  // read-only
    if (id == RYN_VB_ATTR_LABEL) {
        if (length != 4) return VB_FAILURE(kOutOfRange);
        std::memcpy(&object->label, value.data(), 4);
        return 0;
    }
    const Attribute *a = familyAttribute(*object, id);
    if (a == nullptr) return VB_FAILURE(kUnknownAttribute);
    if (a->set == nullptr) return VB_FAILURE(kFailed);
    return a->set(call, *object, value);
}

// ---- Events ---------------------------------------------------------------

uint32_t createEventQueue(Call &call) {
    const uint32_t source = call.in.u32(16);
    if (source != 0 && call.board.find(source) == nullptr) return VB_FAILURE(kInvalidHandle);
    if (call.board.objects().size() >= kObjectLimit) return VB_FAILURE(kFailed);
    Object &queue = call.board.create(kKindQueue, kTypeEventQueue, Family::EventQueue, 0, "Event queue");
    auto &state = queue.as<EventQueue>();
    state.source = source;
    state.event = call.in.u32(20);
    call.out.u32(8, queue.handle);
    return 0;
}

EventQueue *queueOf(Board &board, uint32_t handle) {
    Object *object = board.find(handle);
    return object != nullptr && object->family == Family::EventQueue ? &object->as<EventQueue>() : nullptr;
}

uint32_t pollEvents(Call &call) {
    Object *object = call.board.find(call.in.u32(16));
    if (object == nullptr) return VB_FAILURE(kInvalidHandle);
    if (EventQueue *queue = queueOf(call.board, object->handle); queue && !queue->records.empty() && queue->event != 0)
        RynDrvSignalEvent(queue->event);
    return 0;
}

uint32_t getEventData(Call &call) {
    EventQueue *queue = queueOf(call.board, call.in.u32(16));
    if (queue == nullptr) return VB_FAILURE(kInvalidHandle);
    if (queue->records.empty()) return VB_STATUS(kNothingToRead);
    call.out.write(8, &queue->records.front(), sizeof(EventData));
    queue->records.erase(queue->records.begin());
    return 0;
}

// Up to param3 records into the caller's array; the count comes back at 8.
uint32_t getEventDataEx(Call &call) {
    EventQueue *queue = queueOf(call.board, call.in.u32(16));
    if (queue == nullptr) return VB_FAILURE(kInvalidHandle);
    const RynDriverBuffer *array = call.in.buffer(20);
    if (array == nullptr || array->address == nullptr) return VB_FAILURE(kOutOfRange);
    const size_t room = std::min<size_t>(call.in.u32(24), array->length / sizeof(EventData));
    const size_t count = std::min(room, queue->records.size());
    // A queue that never held a record has no storage: data() is null then.
    if (count != 0) std::memcpy(array->address, queue->records.data(), count * sizeof(EventData));
    queue->records.erase(queue->records.begin(), queue->records.begin() + static_cast<std::ptrdiff_t>(count));
    call.out.u32(8, static_cast<uint32_t>(count));
    return count != 0 ? 0 : VB_STATUS(kNothingToRead);
}

// An application's record: into the queue when the handle is one, else
// posted from the object to every queue that listens to it.
template <bool WithTime>
uint32_t setEventData(Call &call) {
    const uint32_t handle = call.in.u32(16);
    Object *object = call.board.find(handle);
    if (object == nullptr) return VB_FAILURE(kInvalidHandle);
    EventData record{};
    for (uint32_t word = 0; word < 8; ++word) record.word[word] = call.in.u32(20 + 4 * word);
    if (!WithTime) {
        const uint64_t time = call.board.now();
        record.word[0] = static_cast<uint32_t>(time);
        record.word[1] = static_cast<uint32_t>(time >> 32);
    }
    if (object->family == Family::EventQueue) {
        call.board.queueRecord(handle, record);
        return 0;
    }
    for (const auto &o : call.board.objects()) {
        if (o->family != Family::EventQueue) continue;
        const uint32_t source = o->as<EventQueue>().source;
        if (source == 0 || source == handle) call.board.queueRecord(o->handle, record);
    }
    return 0;
}

uint32_t eventCode2String(Call &call) {
    const char *text = eventText(call.in.u32(24));
    if (text == nullptr) return VB_FAILURE(kOutOfRange);
    call.out.write(8, text, static_cast<uint32_t>(std::min<size_t>(std::strlen(text), kEventTextBytes - 1)));
    return 0;
}

// ---- Registers, time, diagnostics -----------------------------------------

template <uint32_t Mask>
uint32_t readRegister(Call &call) {
    const uint32_t handle = call.in.u32(16);
    if (handle != 0 && call.board.find(handle) == nullptr) return VB_FAILURE(kInvalidHandle);
    call.out.u32(8, call.board.registerValue(handle, call.in.u32(20)) & Mask);
    return 0;
}

template <uint32_t Mask>
uint32_t writeRegister(Call &call) {
    const uint32_t handle = call.in.u32(16);
    if (handle != 0 && call.board.find(handle) == nullptr) return VB_FAILURE(kInvalidHandle);
    if ((call.in.u32(24) & ~Mask) != 0) return VB_FAILURE(kOutOfRange);
    call.board.setRegister(handle, call.in.u32(20), call.in.u32(24));
    return 0;
}

uint32_t currentTime(Call &call) {
    const uint64_t time = call.board.now();
    call.out.write(8, &time, 8);
    return 0;
}

// The text of a result code, written into the caller's buffer (address at
// 28, length at 24).
uint32_t resultCode2String(Call &call) {
    const RynDriverBuffer *buffer = call.in.buffer(28);
    const uint32_t length = std::min(call.in.u32(24), buffer != nullptr ? buffer->length : 0u);
    if (buffer == nullptr || buffer->address == nullptr || length == 0) return VB_FAILURE(kOutOfRange);
    const uint32_t code = call.in.u32(20);
    char text[96];
    std::snprintf(text, sizeof text, "%s: source 0x%02X, line %u, error %u", (code & 0x80000000u) ? "failure" : "status",
                  (code >> 23) & 0xFFu, (code >> 8) & 0x7FFFu, code & 0xFFu);
    if (code == 0) std::snprintf(text, sizeof text, "success");
    const size_t count = std::min<size_t>(std::strlen(text), length - 1);
    std::memcpy(buffer->address, text, count);
    static_cast<char *>(buffer->address)[count] = '\0';
    return 0;
}

constexpr Row kCore[] = {
    {0x80A, 24, 20, enumDeviceType},
    {0x80B, 28, 20, enumDevice},
    {0x80C, 28, 12, setState<kStateEnabled, kEventEnabled>},
    {0x80D, 28, 12, setState<kStateDisabled, kEventDisabled>},
    {0x80E, 20, 12, reset},
    {0x80F, 548, 12, connectPipe},
    {0x810, 24, 12, disconnectPipe},
    {0x811, 20, 12, close},
    {0x812, 28, 268, eventCode2String},
    {0x813, 32, 12, connectLogicalDevice},
    {0x814, 32, 12, disconnectLogicalDevice},
    {0x815, 20, 12, accept},
    {0x816, 20, 16, getState},
    {0x817, 24, 24, getAttributeType},
    {0x818, 28, 16, getAttributeValue, 8},  // the value area is left as the caller sent it
    {0x819, 29, 12, setAttributeValue, kResultLast, true},
    {0x81A, 24, 12, accept},
    {0x81B, 32, 12, resultCode2String},
    {0x81C, 24, 16, readRegister<0xFFu>},
    {0x81D, 24, 16, readRegister<0xFFFFu>},
    {0x81E, 28, 12, writeRegister<0xFFu>},
    {0x81F, 28, 12, writeRegister<0xFFFFu>},
    {0x820, 24, 12, connectBoard},
    {0x821, 28, 12, writeRegister<0xFFFFFFFFu>},
    {0x822, 24, 16, readRegister<0xFFFFFFFFu>},
    {0x86E, 24, 12, accept},
    {0x870, 24, 12, getDeviceHandle, 4},
    {0x871, 36, 16, openPhysicalDevice},
    {0x872, 36, 16, createLogicalDevice},
    {0x873, 28, 16, createEventQueue},
    {0x874, 24, 16, createPipe},
    {0x875, 20, 12, pollEvents},
    {0x877, 20, 20, currentTime},
    {0x878, 28, 12, openPhysicalDeviceEx},
    {0x8D2, 52, 12, setEventData<false>},
    {0x8D3, 20, 44, getEventData},
    {0x8D4, 28, 16, getEventDataEx},
    {0x8D5, 52, 12, setEventData<true>},
};

}  // namespace

Table coreTable() { return kCore; }

}  // namespace vb
