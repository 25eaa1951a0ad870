// Attributes: the library pseudo-handle's own, and the driver's through
// variable-length request and reply blocks.
#include <cstdlib>
#include <cstring>
#include <memory>

#include "CoreWire.h"
#include "core/ResultCode.h"
#include "core/Transport.h"
#include "core/Version.h"

namespace ryn {
namespace {

namespace core = wire::core;

constexpr uint8_t kSourceId = source::kDeviceCore;

// Heap blocks whose length follows the caller's data.
struct FreeBlock {
    void operator()(uint8_t *block) const { std::free(block); }
};
using Block = std::unique_ptr<uint8_t[], FreeBlock>;

// A zero-filled block, or null when the memory cannot be had.
Block allocate(uint32_t length) { return Block(static_cast<uint8_t *>(std::calloc(1, length))); }

// Attributes of the library pseudo-handle.
struct LibraryAttribute {
    int32_t id;
    uint32_t type;
    uint32_t size;
    const void *value;
};
constexpr uint32_t kTypeText = 0, kTypeUint32 = 2, kTypeBinary = 3;
constexpr uint32_t kZero = 0;
constexpr LibraryAttribute kLibraryAttributes[] = {
    {9, kTypeText, sizeof kLibraryVersionText, kLibraryVersionText},
    {10, kTypeBinary, sizeof kLibraryVersion, kLibraryVersion},
    {11, kTypeText, sizeof kLibraryModuleName, kLibraryModuleName},
    {12, kTypeUint32, sizeof kZero, &kZero},
};

const LibraryAttribute *findLibraryAttribute(int32_t id) {
    for (const LibraryAttribute &attribute : kLibraryAttributes) {
        if (attribute.id == id) return &attribute;
    }
    return nullptr;
}

ResultCode libraryAttributeType(int32_t id, uint32_t *type, uint32_t *size, uint32_t *flags) {
    *type = kTypeBinary;
    *size = 0;
    *flags = 1;
    const LibraryAttribute *attribute = findLibraryAttribute(id);
    if (attribute == nullptr) return RYN_FAILURE(kErrUnknownAttribute);
    *type = attribute->type;
    *size = attribute->size;
    return 0;
}

ResultCode libraryAttributeValue(int32_t id, void *buffer, uint32_t bufferLength, uint32_t *returnedLength) {
    uint32_t ignored = 0;
    if (returnedLength == nullptr) returnedLength = &ignored;
    *returnedLength = 0;
    if (bufferLength < 4) return RYN_FAILURE(kErrRange);
    const LibraryAttribute *attribute = findLibraryAttribute(id);
    if (attribute == nullptr) return RYN_FAILURE(kErrUnknownAttribute);
    if (bufferLength < attribute->size) return RYN_FAILURE(kErrRange);
    std::memcpy(buffer, attribute->value, attribute->size);
    *returnedLength = attribute->size;
    return 0;
}

// Reply: 8 header bytes, ResultCode at 8, value byte count at 12, the value
// at 16, one spare byte.
ResultCode driverAttributeValue(DeviceHandle handle, int32_t id, void *buffer, uint32_t bufferLength,
                                uint32_t *returnedLength) {
    using Wire = core::GetAttributeValue;
    if (bufferLength > UINT32_MAX - Wire::kReplyOverhead) return RYN_FAILURE(kErrRange);
    const uint32_t replyLength = bufferLength + Wire::kReplyOverhead;
    Block reply = allocate(replyLength);
    if (reply == nullptr) return RYN_FAILURE(kErrNoMemory);
    if (bufferLength != 0) std::memcpy(reply.get() + Wire::kReplyValue, buffer, bufferLength);

    uint8_t request[Wire::kRequest] = {};
    store32(request + wire::kHandle, handle);
    store32(request + Wire::kAttribute, static_cast<uint32_t>(id));
    store32(request + Wire::kBufferLength, bufferLength);
    const ResultCode result = exchange(Wire::kFunction, request, {reply.get(), replyLength}, Wire::kResult);

    if (bufferLength != 0) std::memcpy(buffer, reply.get() + Wire::kReplyValue, bufferLength);
    if (returnedLength != nullptr) *returnedLength = load32(reply.get() + Wire::kReplySize);
    return result;
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynDrvGetAttributeType, 20)(DeviceHandle handle, int32_t attribute, uint32_t *type,
                                                     uint32_t *size, uint32_t *flags) {
    if (type == nullptr || size == nullptr || flags == nullptr) return RYN_FAILURE(kErrNullPointer);
    if (handle == RYN_LIBRARY_PSEUDO_HANDLE) return libraryAttributeType(attribute, type, size, flags);
    using Wire = core::GetAttributeType;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kAttribute>(static_cast<uint32_t>(attribute));
    const ResultCode result = request.send();
    *type = request.get<Wire::kReplyType>();
    *size = request.get<Wire::kReplySize>();
    *flags = request.get<Wire::kReplyFlags>();
    return result;
}

ResultCode RYN_DECORATED(RynDrvGetAttributeValue, 20)(DeviceHandle handle, int32_t attribute, void *buffer,
                                                      uint32_t bufferLength, uint32_t *returnedLength) {
    // The length read may be skipped; a buffer is needed when it has a length.
    if (buffer == nullptr && bufferLength != 0) return RYN_FAILURE(kErrNullPointer);
    if (handle == RYN_LIBRARY_PSEUDO_HANDLE) {
        return libraryAttributeValue(attribute, buffer, bufferLength, returnedLength);
    }
    return driverAttributeValue(handle, attribute, buffer, bufferLength, returnedLength);
}

ResultCode RYN_DECORATED(RynDrvGetAttributeValueBool, 12)(DeviceHandle handle, int32_t attribute, uint32_t *value) {
    if (value == nullptr) return RYN_FAILURE(kErrNullPointer);
    uint32_t returned = 0;
    return RYN_DECORATED(RynDrvGetAttributeValue, 20)(handle, attribute, value, 4, &returned);
}

ResultCode RYN_DECORATED(RynDrvGetAttributeValueUint32, 12)(DeviceHandle handle, int32_t attribute, uint32_t *value) {
    if (value == nullptr) return RYN_FAILURE(kErrNullPointer);
    uint32_t returned = 0;
    return RYN_DECORATED(RynDrvGetAttributeValue, 20)(handle, attribute, value, 4, &returned);
}

ResultCode RYN_DECORATED(RynDrvGetAttributeValueSz, 16)(DeviceHandle handle, int32_t attribute, char *text,
                                                        uint32_t bufferLength) {
    uint32_t returned = 0;
    return RYN_DECORATED(RynDrvGetAttributeValue, 20)(handle, attribute, text, bufferLength, &returned);
}

ResultCode RYN_DECORATED(RynDrvSetAttributeValue, 16)(DeviceHandle handle, int32_t attribute, const void *value,
                                                      uint32_t valueLength) {
    if (value == nullptr && valueLength != 0) return RYN_FAILURE(kErrNullPointer);
    // Request: handle at 16, identifier at 20, value length at 24, the value
    // at 28 and one spare byte.
    using Wire = core::SetAttributeValue;
    if (valueLength > UINT32_MAX - Wire::kRequestOverhead) return RYN_FAILURE(kErrRange);
    const uint32_t requestLength = valueLength + Wire::kRequestOverhead;
    Block request = allocate(requestLength);
    if (request == nullptr) return RYN_FAILURE(kErrNoMemory);
    store32(request.get() + wire::kHandle, handle);
    store32(request.get() + Wire::kAttribute, static_cast<uint32_t>(attribute));
    store32(request.get() + Wire::kValueLength, valueLength);
    if (valueLength != 0) std::memcpy(request.get() + Wire::kValue, value, valueLength);
    uint8_t reply[Wire::kReply] = {};
    return exchange(Wire::kFunction, {request.get(), requestLength}, reply, Wire::kReply - 4);
}

ResultCode RYN_DECORATED(RynDrvSetAttributeValueBool, 12)(DeviceHandle handle, int32_t attribute, uint32_t value) {
    return RYN_DECORATED(RynDrvSetAttributeValue, 16)(handle, attribute, &value, 4);
}

ResultCode RYN_DECORATED(RynDrvSetAttributeValueUint32, 12)(DeviceHandle handle, int32_t attribute, uint32_t value) {
    return RYN_DECORATED(RynDrvSetAttributeValue, 16)(handle, attribute, &value, 4);
}

ResultCode RYN_DECORATED(RynDrvSetAttributeValueSz, 12)(DeviceHandle handle, int32_t attribute, const char *text) {
    if (text == nullptr) return RYN_FAILURE(kErrNullPointer);
    return RYN_DECORATED(RynDrvSetAttributeValue, 16)(handle, attribute, text,
                                                      static_cast<uint32_t>(std::strlen(text)) + 1);
}

}  // extern "C"
