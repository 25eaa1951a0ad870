// Requests of the T1/E1 framers, sent to the span's device, its handle at
// kHandle. Every reply keeps its result as its last 32-bit word.
#pragma once

#include "Wire.h"

namespace wire::t1e1 {

// The records that travel whole, and their sizes.
inline constexpr uint32_t kT1ConfigurationSize = 60;  // T1Configuration
inline constexpr uint32_t kE1ConfigurationSize = 56;  // E1Configuration
inline constexpr uint32_t kBitRecordSize = 16;        // RobBitData, ABCDBitData
inline constexpr uint32_t kLayer1StatusExSize = 20;   // Layer1StatusEx

// ---- Shapes shared by several requests ------------------------------------

// One 32-bit value after the handle; plain reply.
struct ValueShape {
    static constexpr uint32_t kRequest = 24, kReply = kPlainReply;
    static constexpr uint32_t kValue = 20;
};

// A whole record after the handle; plain reply.
template <uint32_t Size>
struct SetRecordShape {
    static constexpr uint32_t kRequest = 20 + Size, kReply = kPlainReply;
    static constexpr uint32_t kRecord = 20, kRecordSize = Size;
};

// The handle alone; the whole record back at kReplyRecord.
template <uint32_t Size>
struct GetRecordShape {
    static constexpr uint32_t kRequest = 20, kReply = 8 + Size + 4;
    static constexpr uint32_t kReplyRecord = 8, kRecordSize = Size;
};

// A 32-bit selector or channel and an 8-bit value (kRequest 26, byte 25 unset).
struct SetChannelByteShape {
    static constexpr uint32_t kRequest = 26, kReply = kPlainReply;
    static constexpr uint32_t kChannel = 20, kValue = 24;
};

// A 32-bit selector or channel; the 8-bit answer at kReplyValue of a reply
// of ReplyLength bytes.
template <uint32_t ReplyLength>
struct GetChannelByteShape {
    static constexpr uint32_t kRequest = 24, kReply = ReplyLength;
    static constexpr uint32_t kChannel = 20;
    static constexpr uint32_t kReplyValue = 8;
};

// ---- Line interface, alarms, loops ----------------------------------------

struct SetLiMode : ValueShape {  // the value: the mode
    static constexpr uint32_t kFunction = 0x99A;
};
struct AlarmOn : ValueShape {  // the value: the alarms
    static constexpr uint32_t kFunction = 0x99F;
};
struct AlarmOff : ValueShape {  // the value: the alarms
    static constexpr uint32_t kFunction = 0x9A0;
};
struct SetLineLoop : ValueShape {  // the value: the loop
    static constexpr uint32_t kFunction = 0x9A1;
};
struct ForceResynch : HandleOnly {
    static constexpr uint32_t kFunction = 0x9A2;
};
struct GetLayer1Status {
    static constexpr uint32_t kFunction = 0x9A3, kRequest = 20, kReply = 16;
    static constexpr uint32_t kReplyStatus = 8;
};
struct XmitPinControl : ValueShape {  // the value: the control
    static constexpr uint32_t kFunction = 0x9A4;
};
struct SetLineTermination : ValueShape {  // the value: the termination
    static constexpr uint32_t kFunction = 0x9A5;
};
struct SetMonitorMode : ValueShape {  // the value: the mode
    static constexpr uint32_t kFunction = 0x9A6;
};
struct SetPrbsConfig {
    static constexpr uint32_t kFunction = 0x9A7, kRequest = 28, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24;
};
struct T1SetDlBitData : ValueShape {  // the value: the data-link bits
    static constexpr uint32_t kFunction = 0x9C3;
};
struct InsertSingleBitDefect : ValueShape {  // the value: the defect
    static constexpr uint32_t kFunction = 0x9C4;
};
struct GetLayer1StatusEx : GetRecordShape<kLayer1StatusExSize> {
    static constexpr uint32_t kFunction = 0x9C5;
};

// ---- Configuration records ------------------------------------------------

struct T1SetConfiguration : SetRecordShape<kT1ConfigurationSize> {
    static constexpr uint32_t kFunction = 0x99B;
};
struct T1GetConfiguration : GetRecordShape<kT1ConfigurationSize> {
    static constexpr uint32_t kFunction = 0x99C;
};
struct E1SetConfiguration : SetRecordShape<kE1ConfigurationSize> {
    static constexpr uint32_t kFunction = 0x99D;
};
struct E1GetConfiguration : GetRecordShape<kE1ConfigurationSize> {
    static constexpr uint32_t kFunction = 0x99E;
};

// ---- Signalling -----------------------------------------------------------

struct T1SetRobBitData : SetRecordShape<kBitRecordSize> {
    static constexpr uint32_t kFunction = 0x9A8;
};
struct T1GetRobBitData : GetRecordShape<kBitRecordSize> {
    static constexpr uint32_t kFunction = 0x9A9;
};
struct E1SetABCDBit : SetRecordShape<kBitRecordSize> {
    static constexpr uint32_t kFunction = 0x9AA;
};
struct E1GetABCDBit : GetRecordShape<kBitRecordSize> {
    static constexpr uint32_t kFunction = 0x9AB;
};

// Sa bits: the channel field carries the selector (Sa4..Sa8).
struct E1GetSaBit : GetChannelByteShape<16> {
    static constexpr uint32_t kFunction = 0x9AC;
    static constexpr uint32_t kSelector = kChannel;
};
struct E1SetSaBit : SetChannelByteShape {
    static constexpr uint32_t kFunction = 0x9AD;
    static constexpr uint32_t kSelector = kChannel;
};

// Si bits: two bytes.
struct E1GetSiBit {
    static constexpr uint32_t kFunction = 0x9AE, kRequest = 20, kReply = 14;
    static constexpr uint32_t kReplyValue1 = 8, kReplyValue2 = 9;
};
struct E1SetSiBit {
    static constexpr uint32_t kFunction = 0x9AF, kRequest = 22, kReply = kPlainReply;
    static constexpr uint32_t kValue1 = 20, kValue2 = 21;
};

// The signalling bits of one channel.
struct T1SetChannelizedRobBitData : SetChannelByteShape {
    static constexpr uint32_t kFunction = 0x9BF;
};
struct T1GetChannelizedRobBitData : GetChannelByteShape<14> {
    static constexpr uint32_t kFunction = 0x9C0;
};
struct E1SetChannelizedABCDBit : SetChannelByteShape {
    static constexpr uint32_t kFunction = 0x9C1;
};
struct E1GetChannelizedABCDBit : GetChannelByteShape<14> {
    static constexpr uint32_t kFunction = 0x9C2;
};

}  // namespace wire::t1e1
