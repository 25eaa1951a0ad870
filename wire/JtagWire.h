// Requests of the JTAG port, sent to the port's device, its handle at
// kHandle; every reply is the plain one.
#pragma once

#include "Wire.h"

namespace wire::jtag {

struct Control {
    static constexpr uint32_t kFunction = 0x99A, kRequest = 24, kReply = kPlainReply;
    static constexpr uint32_t kControl = 20;
};

// A scan: param1 (the bit count), then two strings of the caller's that
// travel by address, each named by an address field with its size in bytes
// after it: the input vector, and the output the driver fills.
struct Scan {
    static constexpr uint32_t kRequest = 40, kReply = kPlainReply;
    static constexpr uint32_t kParam1 = 20, kInput = 24, kInputSize = 28, kOutput = 32, kOutputSize = 36;
};
struct ScanIr : Scan {
    static constexpr uint32_t kFunction = 0x99B;
};
struct ScanDr : Scan {
    static constexpr uint32_t kFunction = 0x99C;
};

}  // namespace wire::jtag
