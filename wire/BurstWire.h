// Requests of the burst channel. Its blocks travel inside the request (send,
// preload) and the reply (read): kRequest and kReply are the fixed parts,
// and the data follow them.
#pragma once

#include "Wire.h"

namespace wire::burst {

// A block to send or preload: a setting, the block's length, then its data,
// kLength bytes from kData on. Reply: the bytes sent or stored.
struct BlockSend {
    static constexpr uint32_t kRequest = 28, kReply = 16;
    static constexpr uint32_t kParam1 = 20, kLength = 24, kData = 28;
    static constexpr uint32_t kReplyCount = 8;
};

struct SendData : BlockSend {
    static constexpr uint32_t kFunction = 0x99A;
};

struct InitSendBuffer : BlockSend {
    static constexpr uint32_t kFunction = 0x99C;
};

// A setting and the capacity for the data. Reply: the bytes received, two
// 8-byte values, the result (the fixed part's last word), then the data from
// kReplyData on, as many bytes as the count says.
struct ReadData {
    static constexpr uint32_t kFunction = 0x99B, kRequest = 28, kReply = 32;
    static constexpr uint32_t kParam1 = 20, kCapacity = 24;
    static constexpr uint32_t kReplyCount = 8, kReplyValue1 = 12, kReplyValue2 = 20, kReplyData = 32;
    static constexpr uint32_t kValueBytes = 8;
};

static_assert(BlockSend::kData == BlockSend::kRequest);
static_assert(ReadData::kReplyData == ReadData::kReply);
static_assert(ReadData::kReplyValue2 + ReadData::kValueBytes == ReadData::kReply - 4);

}  // namespace wire::burst
