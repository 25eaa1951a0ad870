// The exported accessors that take a result code apart.
#include "core/ResultCode.h"

extern "C" {

int32_t RYN_DECORATED(RynSuccess, 4)(ResultCode code) { return static_cast<int32_t>(code) >= 0 ? 1 : 0; }

int32_t RYN_DECORATED(RynFailure, 4)(ResultCode code) { return static_cast<int32_t>(code) < 0 ? 1 : 0; }

uint32_t RYN_DECORATED(RynResultSeverity, 4)(ResultCode code) { return code >> 31; }

uint32_t RYN_DECORATED(RynResultSourceId, 4)(ResultCode code) { return (code >> 23) & 0xFFu; }

uint32_t RYN_DECORATED(RynResultLineNum, 4)(ResultCode code) { return (code >> 8) & 0x7FFFu; }

uint32_t RYN_DECORATED(RynResultErrorCode, 4)(ResultCode code) { return code & 0xFFu; }

void RYN_DECORATED(RynResultCode, 20)(ResultCode code, uint32_t *errorCode, uint32_t *severity, uint32_t *sourceId,
                                      uint32_t *lineNum) {
    // Each part is written only where the caller asked for it.
    if (errorCode != nullptr) *errorCode = ryn::reduceToErrorNumber(code);
    if (severity != nullptr) *severity = code >> 31;
    if (sourceId != nullptr) *sourceId = (code >> 23) & 0xFFu;
    if (lineNum != nullptr) *lineNum = (code >> 8) & 0x7FFFu;
}

}  // extern "C"
