// Requests of the HDLC and SS7 channels. Frame data travel by address: a
// data field names the caller's buffer, which the driver reads or writes
// while the call runs.
#pragma once

#include "Wire.h"

namespace wire::hdlc {

// The SS7 field sent beside a frame and kept with it: 3 bytes.
inline constexpr uint32_t kSs7Bytes = 3;

// Six settings, 4 bytes apart from kParam1.
struct SenderInit {
    static constexpr uint32_t kFunction = 0x99A, kRequest = 44, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24, kParam3 = 28, kParam4 = 32, kParam5 = 36, kParam6 = 40;
    static constexpr uint32_t kSettings = 6;
};

// Seven settings, 4 bytes apart from kParam1.
struct ReceiverInit {
    static constexpr uint32_t kFunction = 0x99B, kRequest = 48, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24, kParam3 = 28, kParam4 = 32, kParam5 = 36, kParam6 = 40;
    static constexpr uint32_t kParam7 = 44;
    static constexpr uint32_t kSettings = 7;
};

// A frame to send: its length, two settings, the address of its data.
struct FrameSend {
    static constexpr uint32_t kRequest = 36, kReply = kPlainReply;
    static constexpr uint32_t kLength = 20, kParam3 = 24, kParam4 = 28, kData = 32;
};

struct SendData : FrameSend {
    static constexpr uint32_t kFunction = 0x99C;
};

// The block sent over and over.
struct StartRepeatData : FrameSend {
    static constexpr uint32_t kFunction = 0x9A4;
};

// The receive buffer's size and address. Reply: the frame's length, the
// frames still queued, the frames dropped, 8 bytes of arrival time.
struct ReadData {
    static constexpr uint32_t kFunction = 0x99D, kRequest = 28, kReply = 32;
    static constexpr uint32_t kBufferSize = 20, kBuffer = 24;
    static constexpr uint32_t kReplyLength = 8, kReplyQueued = 12, kReplyDropped = 16, kReplyTime = 20;
    static constexpr uint32_t kTimeBytes = 8;
};

// Reply: frames queued, received and dropped, the SS7 field of the frame
// last read, a pad byte.
struct Ss7GetReceiveStatus {
    static constexpr uint32_t kFunction = 0x9A0, kRequest = 20, kReply = 28;
    static constexpr uint32_t kReplyQueued = 8, kReplyReceived = 12, kReplyDropped = 16, kReplySs7 = 20;
};

struct Ss7SetFilter {
    static constexpr uint32_t kFunction = 0x9A1, kRequest = 24, kReply = kPlainReply;
    static constexpr uint32_t kFilter = 20;
};

struct Ss7GetFilter {
    static constexpr uint32_t kFunction = 0x9A2, kRequest = 20, kReply = 16;
    static constexpr uint32_t kReplyFilter = 8;
};

// As a frame send, with the SS7 field (and a pad byte) after the length.
struct Ss7SendData {
    static constexpr uint32_t kFunction = 0x9A3, kRequest = 40, kReply = kPlainReply;
    static constexpr uint32_t kLength = 20, kSs7 = 24, kParam4 = 28, kParam5 = 32, kData = 36;
};

struct StopRepeatData {
    static constexpr uint32_t kFunction = 0x9A5, kRequest = 20, kReply = kPlainReply;
};

// param1 picks a queued frame; reply: its length.
struct ReadDataEx {
    static constexpr uint32_t kFunction = 0x9A6, kRequest = 36, kReply = 16;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24, kParam3 = 28, kParam4 = 32;
    static constexpr uint32_t kReplyLength = 8;
};

struct SenderFlush {
    static constexpr uint32_t kFunction = 0x9A7, kRequest = 20, kReply = kPlainReply;
};

static_assert(SenderInit::kParam1 + 4 * SenderInit::kSettings == SenderInit::kRequest);
static_assert(ReceiverInit::kParam1 + 4 * ReceiverInit::kSettings == ReceiverInit::kRequest);
static_assert(Ss7SendData::kSs7 + kSs7Bytes < Ss7SendData::kParam4);
static_assert(Ss7GetReceiveStatus::kReplySs7 + kSs7Bytes < Ss7GetReceiveStatus::kReply - 4);

}  // namespace wire::hdlc
