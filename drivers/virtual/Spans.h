// Voice on the T1/E1 spans: what the audio path asks of the span and board
// families. A pipe joined to a span's time slot (RynDrvConnectPipe(pipe, 0,
// span, slot, ...)) is that slot, both ways: what blocks play into the pipe
// the span sends on the slot, one G.711 byte a sample in the board's codec
// law; what the slot receives goes to the blocks connected after the pipe.
// The far span receives a slot as it receives the signalling bits (the
// cable, loops, transmitters and frame sync), each slot its own channel.
#pragma once

#include <optional>
#include <vector>

#include "Board.h"

namespace vb {

// The board's codec law (RynBrdCodecSetLaw): RYN_VB_LAW_MU or RYN_VB_LAW_A.
uint32_t codecLaw(Board &board);

// The constant byte a time slot of a span sends (TssConstByte: stream n is
// span n), if one was set.
std::optional<uint8_t> constantByte(Board &board, uint32_t span, uint32_t slot);

// Whether a time slot carries voice in the span's mode: T1 1..24, E1 1..15
// and 17..31.
bool voiceSlot(Board &board, Object &span, uint32_t slot);

// The spans that receive what `span` sends: the far span over the cable,
// the span itself when a loop turns its signal back; those with frame sync.
std::vector<Object *> spansReceiving(Board &board, Object &span);

}  // namespace vb
