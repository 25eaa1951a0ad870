// Device-core requests (function numbers 0x80A..0x8D5): enumeration and
// handles, logical devices, pipes and connections, object management,
// attributes, event queues and records, registers, the clock, diagnostics
// and the library's connection. The driver answers them whatever object
// they name, so not every one carries a handle at kHandle.
//
// Fields named kParam<n> pass the library's argument of that name unchanged;
// a field named kConnection carries the library's own connection to the
// driver (its operating-system handle).
#pragma once

#include "Wire.h"

namespace wire::core {

// The range of the device-core function numbers.
inline constexpr uint32_t kFirstFunction = 0x80A, kLastFunction = 0x8D5;

// ---- Enumeration and handles ----------------------------------------------

// The element `iterator` of a list below a parent (0: the board itself) and
// the iterator of the next, -1 after the last.
struct Enumeration {
    static constexpr uint32_t kReply = 20;
    static constexpr uint32_t kParent = 16;
    static constexpr uint32_t kReplyElement = 8, kReplyIterator = 12;
};

// The device types below a parent.
struct EnumDeviceType : Enumeration {
    static constexpr uint32_t kFunction = 0x80A, kRequest = 24;
    static constexpr uint32_t kIterator = 20;
    static constexpr uint32_t kReplyDeviceType = kReplyElement;
};

// The devices of one type below a parent.
struct EnumDevice : Enumeration {
    static constexpr uint32_t kFunction = 0x80B, kRequest = 28;
    static constexpr uint32_t kDeviceType = 20, kIterator = 24;
    static constexpr uint32_t kReplyDeviceId = kReplyElement;
};

// This request has a 12-byte header: its fields start at offset 12, and its
// result comes back at 4, the handle at 8.
struct GetDeviceHandle {
    static constexpr uint32_t kFunction = 0x870, kRequest = 24, kReply = kPlainReply, kResult = 4;
    static constexpr uint32_t kParent = 12, kDeviceType = 16, kDeviceId = 20;
    static constexpr uint32_t kReplyHandle = 8;
};

// The fourth and fifth arguments change places in the request.
struct OpenPhysicalDevice {
    static constexpr uint32_t kFunction = 0x871, kRequest = 36, kReply = 16;
    static constexpr uint32_t kParam1 = 16, kParam2 = 20, kParam3 = 24, kParam5 = 28, kParam4 = 32;
    static constexpr uint32_t kReplyHandle = 8;
};

struct OpenPhysicalDeviceEx {
    static constexpr uint32_t kFunction = 0x878, kRequest = 28, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 16, kParam2 = 20, kParam3 = 24;
};

// The physical device (a DSP) at kHandle.
struct CreateLogicalDevice {
    static constexpr uint32_t kFunction = 0x872, kRequest = 36, kReply = 16;
    static constexpr uint32_t kDeviceType = 20, kParam3 = 24, kConnection = 28, kParam4 = 32;
    static constexpr uint32_t kReplyHandle = 8;
};

struct CreatePipe {
    static constexpr uint32_t kFunction = 0x874, kRequest = 24, kReply = 16;
    static constexpr uint32_t kParam1 = 16, kConnection = 20;
    static constexpr uint32_t kReplyHandle = 8;
};

// ---- Connections ----------------------------------------------------------

// Logical-device connect and disconnect: two (handle, port) pairs.
struct LogicalConnection {
    static constexpr uint32_t kRequest = 32, kReply = kPlainReply;
    static constexpr uint32_t kHandleA = 16, kPortA = 20, kHandleB = 24, kPortB = 28;
};
struct ConnectLogicalDevice : LogicalConnection {
    static constexpr uint32_t kFunction = 0x813;
};
struct DisconnectLogicalDevice : LogicalConnection {
    static constexpr uint32_t kFunction = 0x814;
};

// A pipe's port to a physical device's port, with up to kDataSize bytes of
// connection data in the area at kData and their count at kDataLength.
struct ConnectPipe {
    static constexpr uint32_t kFunction = 0x80F, kRequest = 548, kReply = kPlainReply;
    static constexpr uint32_t kPipe = 16, kPortA = 20, kDevice = 24, kPortB = 28, kData = 32, kDataLength = 544;
    static constexpr uint32_t kDataSize = 512;
};

struct DisconnectPipe {
    static constexpr uint32_t kFunction = 0x810, kRequest = 24, kReply = kPlainReply;
    static constexpr uint32_t kPipe = 16, kPort = 20;
};

struct ConnectBoard {
    static constexpr uint32_t kFunction = 0x820, kRequest = 24, kReply = kPlainReply;
    static constexpr uint32_t kHandleA = 16, kHandleB = 20;
};

// ---- Management -----------------------------------------------------------

// Enable and disable: the object at kHandle and two values.
struct EnableShape {
    static constexpr uint32_t kRequest = 28, kReply = kPlainReply;
    static constexpr uint32_t kParam2 = 20, kParam3 = 24;
};
struct Enable : EnableShape {
    static constexpr uint32_t kFunction = 0x80C;
};
struct Disable : EnableShape {
    static constexpr uint32_t kFunction = 0x80D;
};

struct Reset : HandleOnly {
    static constexpr uint32_t kFunction = 0x80E;
};
struct Close : HandleOnly {
    static constexpr uint32_t kFunction = 0x811;
};

struct GetState {
    static constexpr uint32_t kFunction = 0x816, kRequest = 20, kReply = 16;
    static constexpr uint32_t kReplyState = 8;
};

// ---- Attributes -----------------------------------------------------------

struct GetAttributeType {
    static constexpr uint32_t kFunction = 0x817, kRequest = 24, kReply = 24;
    static constexpr uint32_t kAttribute = 20;
    static constexpr uint32_t kReplyType = 8, kReplySize = 12, kReplyFlags = 16;
};

// The reply is as long as the caller's buffer plus kReplyOverhead: the
// result at 8, the value's size at 12, the value from 16 and one spare byte.
// kReply is the shortest reply the driver takes.
struct GetAttributeValue {
    static constexpr uint32_t kFunction = 0x818, kRequest = 28, kReply = 16, kResult = 8;
    static constexpr uint32_t kAttribute = 20, kBufferLength = 24;
    static constexpr uint32_t kReplySize = 12, kReplyValue = 16, kReplyOverhead = 17;
};

// The request is as long as the value plus kRequestOverhead: the value from
// kValue and one spare byte. kRequest is the shortest request (no value).
struct SetAttributeValue {
    static constexpr uint32_t kFunction = 0x819, kRequestOverhead = 29, kRequest = kRequestOverhead;
    static constexpr uint32_t kReply = kPlainReply;
    static constexpr uint32_t kAttribute = 20, kValueLength = 24, kValue = 28;
};

// ---- Events ---------------------------------------------------------------

struct CreateEventQueue {
    static constexpr uint32_t kFunction = 0x873, kRequest = 28, kReply = 16;
    static constexpr uint32_t kParam1 = 16, kParam2 = 20, kConnection = 24;
    static constexpr uint32_t kReplyHandle = 8;
};

struct PollEvents : HandleOnly {
    static constexpr uint32_t kFunction = 0x875;
};

// One event record of kRecordSize bytes.
inline constexpr uint32_t kRecordSize = 32;

struct GetEventData {
    static constexpr uint32_t kFunction = 0x8D3, kRequest = 20, kReply = 8 + kRecordSize + 4;
    static constexpr uint32_t kReplyRecord = 8;
};

// Up to kCount records into the caller's array, named by the address field
// kRecords; their number comes back.
struct GetEventDataEx {
    static constexpr uint32_t kFunction = 0x8D4, kRequest = 28, kReply = 16;
    static constexpr uint32_t kRecords = 20, kCount = 24;
    static constexpr uint32_t kReplyCount = 8;
};

// A whole record, its words 0 to 7 from kRecord.
struct EventRecordShape {
    static constexpr uint32_t kRequest = 20 + kRecordSize, kReply = kPlainReply;
    static constexpr uint32_t kRecord = 20;
};
// Words 0 and 1 (the time) go as zeros: the driver stamps the record.
struct SetEventData : EventRecordShape {
    static constexpr uint32_t kFunction = 0x8D2;
};
struct SetEventDataEx : EventRecordShape {
    static constexpr uint32_t kFunction = 0x8D5;
};

// The second and third arguments change places in the request. The text
// comes back in the kTextSize bytes from kReplyText.
struct EventCode2String {
    static constexpr uint32_t kTextSize = 256;
    static constexpr uint32_t kFunction = 0x812, kRequest = 28, kReply = 8 + kTextSize + 4;
    static constexpr uint32_t kParam3 = 20, kEventCode = 24;
    static constexpr uint32_t kReplyText = 8;
};

// ---- Registers, time, diagnostics -----------------------------------------

// Every register width moves a 32-bit word.
struct RegisterRead {
    static constexpr uint32_t kRequest = 24, kReply = 16;
    static constexpr uint32_t kRegister = 20;
    static constexpr uint32_t kReplyValue = 8;
};
struct ReadReg8 : RegisterRead {
    static constexpr uint32_t kFunction = 0x81C;
};
struct ReadReg16 : RegisterRead {
    static constexpr uint32_t kFunction = 0x81D;
};
struct ReadReg32 : RegisterRead {
    static constexpr uint32_t kFunction = 0x822;
};

struct RegisterWrite {
    static constexpr uint32_t kRequest = 28, kReply = kPlainReply;
    static constexpr uint32_t kRegister = 20, kValue = 24;
};
struct WriteReg8 : RegisterWrite {
    static constexpr uint32_t kFunction = 0x81E;
};
struct WriteReg16 : RegisterWrite {
    static constexpr uint32_t kFunction = 0x81F;
};
struct WriteReg32 : RegisterWrite {
    static constexpr uint32_t kFunction = 0x821;
};

// The driver's clock, 8 bytes of 100-ns intervals since 1601. The library
// sends the driver's pseudo-handle at kHandle.
struct GetCurrentTime {
    static constexpr uint32_t kFunction = 0x877, kRequest = 20, kReply = 20;
    static constexpr uint32_t kReplyTime = 8, kTimeSize = 8;
};

// No field: the library does not send the watchdog's argument.
struct StartWatchdogTimer {
    static constexpr uint32_t kFunction = 0x815, kRequest = 20, kReply = kPlainReply;
};

struct DbgDump {
    static constexpr uint32_t kFunction = 0x81A, kRequest = 24, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 16, kParam2 = 20;
};

// The driver writes the text into the caller's buffer, named by the address
// field kText, of kTextLength bytes.
struct ResultCode2String {
    static constexpr uint32_t kFunction = 0x81B, kRequest = 32, kReply = kPlainReply;
    static constexpr uint32_t kResultCode = 20, kTextLength = 24, kText = 28;
};

// ---- The library's connection ---------------------------------------------

// The library's version, kVersionSize bytes from kVersion.
struct ConnectLib {
    static constexpr uint32_t kFunction = 0x86E, kRequest = 24, kReply = kPlainReply;
    static constexpr uint32_t kVersion = 16, kVersionSize = 8;
};

}  // namespace wire::core
