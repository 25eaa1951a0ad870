// Result codes raised by the library itself.
#pragma once

#include <cstdint>

#include "RynHwDll.h"

namespace ryn {

// Error numbers (bits 0..7) of the codes the library raises.
enum Error : uint8_t {
    kErrNothingToRead = 1,      // status: an application event queue is empty
    kErrBadData = 5,            // data not in the expected form
    kErrNotProvided = 6,        // operation not provided
    kErrNoTransferMemory = 7,   // memory for a transfer buffer not obtained
    kErrNoMemory = 8,           // memory not obtained, or no free slot
    kErrRange = 9,              // argument out of range
    kErrNullPointer = 10,       // null pointer argument
    kErrInvalidHandle = 11,     // handle of the wrong kind, zero, or not open
    kErrLengthMismatch = 12,    // length mismatch
    kErrFailed = 13,            // operation failed
    kErrUnknownAttribute = 16,  // unknown attribute
    kErrNotAvailable = 17,      // not available
    kErrNotConnected = 22,      // not connected
    kErrWarning = 26,           // status: warning
    kErrImageFull = 29,         // image buffer full
};

// SourceId (bits 23..30) of each module of the library.
namespace source {
inline constexpr uint8_t kBoard = 0x66;
inline constexpr uint8_t kBri = 0x67;
inline constexpr uint8_t kBurst = 0x68;
inline constexpr uint8_t kDataMixer = 0x69;
inline constexpr uint8_t kDeviceCore = 0x6A;
inline constexpr uint8_t kDsp = 0x6B;
inline constexpr uint8_t kHdlc = 0x6C;
inline constexpr uint8_t kJtag = 0x6D;
inline constexpr uint8_t kPots = 0x6E;
inline constexpr uint8_t kRawData = 0x6F;
inline constexpr uint8_t kT1E1 = 0x70;
inline constexpr uint8_t kTone = 0x71;
inline constexpr uint8_t kTransport = 0x86;
inline constexpr uint8_t kTelephony = 0x8D;
inline constexpr uint8_t kSlic = 0x98;
}  // namespace source

constexpr ResultCode statusCode(uint8_t sourceId, uint32_t line, uint8_t error) {
    return (uint32_t{sourceId} << 23) | ((line & 0x7FFFu) << 8) | error;
}

constexpr ResultCode failureCode(uint8_t sourceId, uint32_t line, uint8_t error) {
    return 0x80000000u | statusCode(sourceId, line, error);
}

constexpr bool isFailure(ResultCode code) { return (code & 0x80000000u) != 0; }

// The error number with bit 31 kept for a failure whose number is below 30,
// so that the value still reads as negative.
constexpr uint32_t reduceToErrorNumber(ResultCode code) {
    const uint32_t error = code & 0xFFu;
    return error > 29 ? error : (code & 0x800000FFu);
}

// Fixed codes of the request transport (SourceId 0x86, error 13).
inline constexpr ResultCode kTransportCallFailed = 0xC300AA0D;        // line 170
inline constexpr ResultCode kTransportNoReply = 0xC300AD0D;           // line 173
inline constexpr ResultCode kTransportHandleCallFailed = 0xC300B90D;  // line 185
inline constexpr ResultCode kTransportHandleNoReply = 0xC300BC0D;     // line 188

}  // namespace ryn

// Builds a code of the calling module, which names its own SourceId as
// kSourceId, with the line of the statement that raises it.
#define RYN_FAILURE(error) (::ryn::failureCode(kSourceId, __LINE__, (error)))
#define RYN_STATUS(error) (::ryn::statusCode(kSourceId, __LINE__, (error)))
