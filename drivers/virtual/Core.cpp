// Device-core requests: enumeration, handles, logical devices, pipes and
// connections, object management and attributes (event queues, records,
// registers and the clock are in CoreEvents.cpp).
#include <algorithm>
#include <array>

#include "CoreWire.h"
#include "Families.h"

namespace vb {
namespace {

using namespace wire::core;
using wire::kHandle;
static_assert(sizeof(EventData) == kRecordSize, "an event record travels whole");

constexpr const char *kDriverVersion = RYN_VB_DRIVER_VERSION_TEXT;
constexpr const char *kBoardName = RYN_VB_BOARD_NAME_TEXT;
constexpr uint32_t kBlocksPerDsp = RYN_VB_BLOCKS_PER_DSP;
constexpr uint32_t kPipeDataLimit = 512;

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
    if (object == nullptr || object->family != &kDspFamily) return types;
    for (int32_t type = kTypeConstValueGenerator; type <= kTypeDspPots; ++type)
        if (blockFamily(type) != nullptr) types.push_back(type);
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
        call.out.u32(Enumeration::kReplyIterator, 0xFFFFFFFFu);
        return VB_FAILURE(kOutOfRange);
    }
    call.out.u32(Enumeration::kReplyElement, static_cast<uint32_t>(value(list[iterator])));
    call.out.u32(Enumeration::kReplyIterator, iterator + 1 < list.size() ? iterator + 1 : 0xFFFFFFFFu);
    return 0;
}

uint32_t enumDeviceType(Call &call) {
    const uint32_t parent = call.in.u32(EnumDeviceType::kParent);
    if (parent != 0 && call.board.find(parent) == nullptr) return VB_FAILURE(kInvalidHandle);
    return enumerate(call, childTypes(call.board, parent), call.in.u32(EnumDeviceType::kIterator),
                     [](int32_t type) { return type; });
}

uint32_t enumDevice(Call &call) {
    const uint32_t parent = call.in.u32(EnumDevice::kParent);
    if (parent != 0 && call.board.find(parent) == nullptr) return VB_FAILURE(kInvalidHandle);
    return enumerate(call, children(call.board, parent, call.in.i32(EnumDevice::kDeviceType)),
                     call.in.u32(EnumDevice::kIterator), [](const Object *o) { return o->id; });
}

uint32_t getDeviceHandle(Call &call) {
    const uint32_t parent = call.in.u32(GetDeviceHandle::kParent);
    const auto found = children(call.board, parent, call.in.i32(GetDeviceHandle::kDeviceType));
    const uint32_t id = call.in.u32(GetDeviceHandle::kDeviceId);
    auto it = std::find_if(found.begin(), found.end(), [&](const Object *o) { return o->id == id; });
    if (it == found.end()) return VB_FAILURE(kNotAvailable);
    call.out.u32(GetDeviceHandle::kReplyHandle, (*it)->handle);
    return 0;
}

// The board's devices open by device type (param1) and number (param2).
uint32_t openPhysicalDevice(Call &call) {
    using W = OpenPhysicalDevice;
    Object *device = call.board.findDevice(call.in.i32(W::kParam1), call.in.u32(W::kParam2));
    if (device == nullptr) return VB_FAILURE(kNotAvailable);
    call.out.u32(W::kReplyHandle, device->handle);
    return 0;
}

uint32_t openPhysicalDeviceEx(Call &call) {
    using W = OpenPhysicalDeviceEx;
    return call.board.findDevice(call.in.i32(W::kParam1), call.in.u32(W::kParam2)) != nullptr
               ? 0
               : VB_FAILURE(kNotAvailable);
}

uint32_t createLogicalDevice(Call &call) {
    Object *dsp = call.board.find(call.in.u32(kHandle));
    if (dsp == nullptr || dsp->family != &kDspFamily) return VB_FAILURE(kInvalidHandle);
    const int32_t type = call.in.i32(CreateLogicalDevice::kDeviceType);
    const Family *family = blockFamily(type);
    if (family == nullptr) return VB_FAILURE(kNotAvailable);
    if (children(call.board, dsp->handle, type).size() >= kBlocksPerDsp) return VB_FAILURE(kFailed);
    uint32_t used = 0;
    for (const auto &o : call.board.objects()) used += o->parent == dsp->handle;
    if (used >= kBlocksPerDsp) return VB_FAILURE(kFailed);
    const auto siblings = children(call.board, dsp->handle, type);
    uint32_t id = 0;
    while (std::any_of(siblings.begin(), siblings.end(), [&](const Object *o) { return o->id == id; })) ++id;
    Object &block = call.board.create(kKindLogical, type, *family, dsp->handle, dsp->name + " block");
    block.id = id;
    call.out.u32(CreateLogicalDevice::kReplyHandle, block.handle);
    return 0;
}

uint32_t createPipe(Call &call) {
    if (call.board.objects().size() >= kObjectLimit) return VB_FAILURE(kFailed);
    Object &pipe = call.board.create(kKindPipe, kTypePipe, kPipeFamily, 0, "Pipe");
    call.out.u32(CreatePipe::kReplyHandle, pipe.handle);
    return 0;
}

// ---- Connections ----------------------------------------------------------

bool connectable(Object *object) { return object != nullptr && object->family != &kEventQueueFamily; }

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
    using W = ConnectLogicalDevice;
    const uint32_t a = call.in.u32(W::kHandleA), b = call.in.u32(W::kHandleB);
    if (!connectable(call.board.find(a)) || !connectable(call.board.find(b))) return VB_FAILURE(kInvalidHandle);
    return connect(call.board, a, call.in.u32(W::kPortA), b, call.in.u32(W::kPortB));
}

uint32_t disconnectLogicalDevice(Call &call) {
    using W = DisconnectLogicalDevice;
    const uint32_t a = call.in.u32(W::kHandleA), pa = call.in.u32(W::kPortA), b = call.in.u32(W::kHandleB),
                   pb = call.in.u32(W::kPortB);
    const size_t removed = std::erase_if(call.board.connections, [&](const Board::Connection &c) {
        return c.handleA == a && c.portA == pa && c.handleB == b && c.portB == pb;
    });
    return removed != 0 ? 0 : VB_FAILURE(kFailed);
}

uint32_t connectPipe(Call &call) {
    Object *pipe = call.board.find(call.in.u32(ConnectPipe::kPipe));
    Object *device = call.board.find(call.in.u32(ConnectPipe::kDevice));
    if (pipe == nullptr || pipe->family != &kPipeFamily) return VB_FAILURE(kInvalidHandle);
    if (device == nullptr || kindOf(device->handle) != kKindPhysical) return VB_FAILURE(kInvalidHandle);
    if (call.in.u32(ConnectPipe::kDataLength) > kPipeDataLimit) return VB_FAILURE(kOutOfRange);
    return connect(call.board, pipe->handle, call.in.u32(ConnectPipe::kPortA), device->handle,
                   call.in.u32(ConnectPipe::kPortB));
}

uint32_t disconnectPipe(Call &call) {
    const uint32_t pipe = call.in.u32(DisconnectPipe::kPipe), port = call.in.u32(DisconnectPipe::kPort);
    Object *object = call.board.find(pipe);
    if (object == nullptr || object->family != &kPipeFamily) return VB_FAILURE(kInvalidHandle);
    // The port's joins to devices; the pipe's connections to blocks stay.
    const size_t removed = std::erase_if(call.board.connections, [&](const Board::Connection &c) {
        return c.handleA == pipe && c.portA == port && kindOf(c.handleB) == kKindPhysical;
    });
    return removed != 0 ? 0 : VB_FAILURE(kFailed);
}

uint32_t connectBoard(Call &call) {
    return call.board.find(call.in.u32(ConnectBoard::kHandleA)) != nullptr &&
                   call.board.find(call.in.u32(ConnectBoard::kHandleB)) != nullptr
               ? 0
               : VB_FAILURE(kInvalidHandle);
}

// ---- Management -----------------------------------------------------------

// A request on the object at kHandle; refused with error 11 when there is none.
template <uint32_t (*Answer)(Call &, Object &)>
uint32_t onObject(Call &call) {
    Object *object = call.board.find(call.in.u32(kHandle));
    return object != nullptr ? Answer(call, *object) : VB_FAILURE(kInvalidHandle);
}

template <uint32_t State, uint32_t Event>
uint32_t setState(Call &call, Object &object) {
    object.state = State;
    call.board.post(object, Event);
    return 0;
}

uint32_t getState(Call &call, Object &object) {
    call.out.u32(GetState::kReplyState, object.state);
    return 0;
}

// A reset returns the object's family state to its start.
uint32_t reset(Call &call, Object &object) {
    resetState(call.board, object);
    object.state = kStateIdle;
    call.board.post(object, kEventReset);
    return 0;
}

// Blocks, pipes and queues end with their close; the board's devices stay
// and return to their start.
uint32_t close(Call &call, Object &object) {
    if (kindOf(object.handle) == kKindPhysical) {
        resetState(call.board, object);
        object.state = kStateIdle;
    } else {
        call.board.destroy(object.handle);
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
        case RYN_VB_ATTR_DRIVER_VERSION:
            return {0, RYN_VB_VALUE_TEXT, textValue(kDriverVersion)};
        case RYN_VB_ATTR_BOARD_NAME:
            return {0, RYN_VB_VALUE_TEXT, textValue(kBoardName)};
        default:
            return {VB_FAILURE(kUnknownAttribute), 0, {}};
    }
}

const Attribute *familyAttribute(const Object &object, int32_t id) {
    for (const Attribute &a : attributesOf(object))
        if (a.id == id) return &a;
    return nullptr;
}

Value objectAttribute(Call &call, Object &object, int32_t id, uint32_t capacity) {
    switch (id) {
        case RYN_VB_ATTR_DEVICE_TYPE:
            return {0, RYN_VB_VALUE_UINT32, wordValue(static_cast<uint32_t>(object.type))};
        case RYN_VB_ATTR_DEVICE_NUMBER:
            return {0, RYN_VB_VALUE_UINT32, wordValue(object.id)};
        case RYN_VB_ATTR_NAME:
            return {0, RYN_VB_VALUE_TEXT, textValue(object.name)};
        case RYN_VB_ATTR_STATE:
            return {0, RYN_VB_VALUE_UINT32, wordValue(object.state)};
        case RYN_VB_ATTR_LABEL:
            return {0, RYN_VB_VALUE_UINT32, wordValue(object.label)};
        default:
            break;
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
    using W = GetAttributeType;
    // The size of a value the caller sizes itself is reported as 0.
    const Value value = attribute(call, call.in.u32(kHandle), call.in.i32(W::kAttribute), 0);
    if (failed(value.result)) return value.result;
    const bool settable = [&] {
        if (call.in.u32(kHandle) == 0) return false;
        Object *object = call.board.find(call.in.u32(kHandle));
        if (call.in.i32(W::kAttribute) == RYN_VB_ATTR_LABEL) return true;
        const Attribute *a = familyAttribute(*object, call.in.i32(W::kAttribute));
        return a != nullptr && a->set != nullptr;
    }();
    call.out.u32(W::kReplyType, value.type).u32(W::kReplySize, static_cast<uint32_t>(value.bytes.size()));
    call.out.u32(W::kReplyFlags, settable ? RYN_VB_ACCESS_SETTABLE : RYN_VB_ACCESS_READ_ONLY);
    return 0;
}

// Reply: code at 8, the value's size at 12, the value from 16 in a block of
// the caller's buffer length + 17 bytes. A value larger than the buffer is
// refused with error 9 and its size reported, and nothing of it is copied.
// The reply's length is what was written: the header, and the value when it
// was copied.
uint32_t getAttributeValue(Call &call) {
    using W = GetAttributeValue;
    const uint32_t capacity = call.in.u32(W::kBufferLength);
    // Summed in 64 bits: the block may be shorter than the overhead (the row
    // asks for 16 bytes), and a capacity near 2^32 must not wrap.
    if (uint64_t{capacity} + W::kReplyOverhead > call.out.length()) return VB_FAILURE(kLengthMismatch);
    const Value value = attribute(call, call.in.u32(kHandle), call.in.i32(W::kAttribute), capacity);
    if (failed(value.result)) return value.result;
    const uint32_t size = static_cast<uint32_t>(value.bytes.size());
    call.out.u32(W::kReplySize, size);
    if (size > capacity) return VB_FAILURE(kOutOfRange);
    call.out.write(W::kReplyValue, value.bytes.data(), size);
    call.replyLength = W::kReplyValue + size;
    return 0;
}

uint32_t setAttributeValue(Call &call) {
    using W = SetAttributeValue;
    const uint32_t handle = call.in.u32(kHandle);
    const int32_t id = call.in.i32(W::kAttribute);
    const uint32_t length = call.in.u32(W::kValueLength);
    if (length > call.in.length() - W::kRequestOverhead || call.in.length() - W::kRequestOverhead != length)
        return VB_FAILURE(kLengthMismatch);
    const auto value = call.in.bytes(W::kValue, length);
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

constexpr Row kCore[] = {
    row<EnumDeviceType>(enumDeviceType),
    row<EnumDevice>(enumDevice),
    row<Enable>(onObject<setState<kStateEnabled, kEventEnabled>>),
    row<Disable>(onObject<setState<kStateDisabled, kEventDisabled>>),
    row<Reset>(onObject<reset>),
    row<ConnectPipe>(connectPipe),
    row<DisconnectPipe>(disconnectPipe),
    row<Close>(onObject<close>),
    row<ConnectLogicalDevice>(connectLogicalDevice),
    row<DisconnectLogicalDevice>(disconnectLogicalDevice),
    row<StartWatchdogTimer>(accept),
    row<GetState>(onObject<getState>),
    row<GetAttributeType>(getAttributeType),
    row<GetAttributeValue>(getAttributeValue),  // the value area is left as the caller sent it
    row<SetAttributeValue>(setAttributeValue, true),
    row<DbgDump>(accept),
    row<ConnectBoard>(connectBoard),
    row<ConnectLib>(accept),
    row<GetDeviceHandle>(getDeviceHandle),
    row<OpenPhysicalDevice>(openPhysicalDevice),
    row<CreateLogicalDevice>(createLogicalDevice),
    row<CreatePipe>(createPipe),
    row<OpenPhysicalDeviceEx>(openPhysicalDeviceEx),
};

}  // namespace

Table coreTable() { return kCore; }

}  // namespace vb
