// Requests of the data converter block.
#pragma once

#include "Wire.h"

namespace wire::data_mixer {

// param1: the conversion, param2: samples per transfer block.
struct ConverterInit {
    static constexpr uint32_t kFunction = 0x99A, kRequest = 28, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kParam2 = 24;
};

}  // namespace wire::data_mixer
