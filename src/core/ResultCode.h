// Result codes raised by the library itself.
#pragma once

#include <cstdint>

#include "RynHwDll.h"

namespace ryn {

// Error numbers (bits 0..7) of the codes the library raises; the numbers
// are the public RYN_ERROR_* constants of RynHwDll.h.
enum Error : uint8_t {
    kErrNothingToRead = RYN_ERROR_NOTHING_TO_READ,        // status: an application event queue is empty
    kErrBadData = RYN_ERROR_BAD_DATA,                     // data not in the expected form
    kErrNotProvided = RYN_ERROR_NOT_PROVIDED,             // operation not provided
    kErrNoTransferMemory = RYN_ERROR_NO_TRANSFER_MEMORY,  // memory for a transfer buffer not obtained
    kErrNoMemory = RYN_ERROR_NO_MEMORY,                   // memory not obtained, or no free slot
    kErrRange = RYN_ERROR_RANGE,                          // argument out of range
    kErrNullPointer = RYN_ERROR_NULL_POINTER,             // null pointer argument
    kErrInvalidHandle = RYN_ERROR_INVALID_HANDLE,         // handle of the wrong kind, zero, or not open
    kErrLengthMismatch = RYN_ERROR_LENGTH_MISMATCH,       // length mismatch
    kErrFailed = RYN_ERROR_FAILED,                        // operation failed
    kErrUnknownAttribute = RYN_ERROR_UNKNOWN_ATTRIBUTE,   // unknown attribute
    kErrNotAvailable = RYN_ERROR_NOT_AVAILABLE,           // not available
    kErrNotConnected = RYN_ERROR_NOT_CONNECTED,           // not connected
    kErrWarning = RYN_ERROR_WARNING,                      // status: warning
    kErrImageFull = RYN_ERROR_IMAGE_FULL,                 // image buffer full
};

// SourceId (bits 23..30) of each module of the library (RYN_SOURCE_*).
namespace source {
inline constexpr uint8_t kBoard = RYN_SOURCE_BOARD;
inline constexpr uint8_t kBri = RYN_SOURCE_BRI;
inline constexpr uint8_t kBurst = RYN_SOURCE_BURST;
inline constexpr uint8_t kDataMixer = RYN_SOURCE_DATA_MIXER;
inline constexpr uint8_t kDeviceCore = RYN_SOURCE_DEVICE;
inline constexpr uint8_t kDsp = RYN_SOURCE_DSP;
inline constexpr uint8_t kHdlc = RYN_SOURCE_HDLC;
inline constexpr uint8_t kJtag = RYN_SOURCE_JTAG;
inline constexpr uint8_t kPots = RYN_SOURCE_POTS;
inline constexpr uint8_t kRawData = RYN_SOURCE_RAW_DATA;
inline constexpr uint8_t kT1E1 = RYN_SOURCE_T1E1;
inline constexpr uint8_t kTone = RYN_SOURCE_TONE;
inline constexpr uint8_t kTransport = RYN_SOURCE_TRANSPORT;
inline constexpr uint8_t kTelephony = RYN_SOURCE_TELEPHONY;
inline constexpr uint8_t kSlic = RYN_SOURCE_SLIC;
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
inline constexpr ResultCode kTransportCallFailed = RYN_RESULT_CALL_FAILED;               // line 170
inline constexpr ResultCode kTransportNoReply = RYN_RESULT_NO_REPLY;                     // line 173
inline constexpr ResultCode kTransportHandleCallFailed = RYN_RESULT_HANDLE_CALL_FAILED;  // line 185
inline constexpr ResultCode kTransportHandleNoReply = RYN_RESULT_HANDLE_NO_REPLY;        // line 188

}  // namespace ryn

// Builds a code of the calling module, which names its own SourceId as
// kSourceId, with the line of the statement that raises it.
#define RYN_FAILURE(error) (::ryn::failureCode(kSourceId, __LINE__, (error)))
#define RYN_STATUS(error) (::ryn::statusCode(kSourceId, __LINE__, (error)))
