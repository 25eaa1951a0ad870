// Requests of the DSPs: program loading (hold, block writes, images, start,
// cancel) and what the host reaches of the running program (messages, data
// reads, the host port, restart, the DSP type). Each is sent to the DSP's
// device, its handle at kHandle.
#pragma once

#include "Wire.h"

namespace wire::dsp {

// A new load begins: the program that ran is dropped.
struct Hold : HandleOnly {
    static constexpr uint32_t kFunction = 0x99A;
};
struct CancelLoad : HandleOnly {
    static constexpr uint32_t kFunction = 0x99D;
};
struct RestartProgram : HandleOnly {
    static constexpr uint32_t kFunction = 0x9A1;
};

// The loaded program starts at kEntry; kModuleFlag is 1 for a program file
// named rynspm1, else 0.
struct StartProgram {
    static constexpr uint32_t kFunction = 0x99B, kRequest = 28, kReply = kPlainReply;
    static constexpr uint32_t kEntry = 20, kModuleFlag = 24;
};

// kCount units (words, or bytes on a byte-addressed DSP) at kAddress of page
// kPage, their data from kData. Word blocks of a program file go through
// staging kFileStaging on their section's page; word records of an image
// through kImageStaging on kImagePage; byte blocks leave both fields 0.
struct BlockWrite {
    static constexpr uint32_t kFunction = 0x99C, kRequest = 292, kReply = kPlainReply;
    static constexpr uint32_t kStaging = 20, kCount = 24, kAddress = 28, kPage = 32, kData = 36;
    static constexpr uint32_t kDataBytes = 256;
    static constexpr uint32_t kFileStaging = 0x1004, kImageStaging = 0, kImagePage = 10;
};

// A message to the running program: kLength counts the command word and the
// input bytes, kOutputSize is the caller's room for the answer, kParamA and
// kParamB pass two values on. The reply carries its result first, then the
// answer's length and the answer.
struct Message {
    static constexpr uint32_t kFunction = 0x99E, kRequest = 2022, kReply = 1998, kResult = 8;
    static constexpr uint32_t kLength = 20, kOutputSize = 24, kParamA = 28, kParamB = 32, kCommand = 36, kInput = 38;
    static constexpr uint32_t kReplyAnswerLength = 12, kReplyAnswer = 14;
    static constexpr uint32_t kMessageBytes = 1984;  // input of a message, answer of a reply
};

// kCount (1 or 2) units at kAddress of page kPage; they come back at
// kReplyFirst and kReplySecond.
struct ReadData {
    static constexpr uint32_t kFunction = 0x99F, kRequest = 32, kReply = 20;
    static constexpr uint32_t kPage = 20, kCount = 24, kAddress = 28;
    static constexpr uint32_t kReplyFirst = 8, kReplySecond = 12;
};

// A command-stream image (a record image on a byte-addressed DSP) by
// address, its length in words in 16 bits.
struct LoadImage {
    static constexpr uint32_t kFunction = 0x9A0, kRequest = 26, kReply = kPlainReply;
    static constexpr uint32_t kImage = 20, kLength = 24;
};

// Host-port reads and writes pass three values in order: page, address and
// a third that is a count (read: units to the host-port window) or a value.
struct HostPort {
    static constexpr uint32_t kRequest = 32, kReply = kPlainReply;
    static constexpr uint32_t kPage = 20, kAddress = 24, kParam3 = 28;
};
struct ReadHostPort : HostPort {
    static constexpr uint32_t kFunction = 0x9A2;
    static constexpr uint32_t kCount = kParam3;
};
struct WriteHostPort : HostPort {
    static constexpr uint32_t kFunction = 0x9A3;
    static constexpr uint32_t kValue = kParam3;
};

struct QueryDspType {
    static constexpr uint32_t kFunction = 0x9A4, kRequest = 20, kReply = 16;
    static constexpr uint32_t kReplyType = 8;
};

}  // namespace wire::dsp
