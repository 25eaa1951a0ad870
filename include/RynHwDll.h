/*
 * RynHwDll.h - the C interface of the RynHwDll board library.
 *
 * Every call outside the Osa layer returns a ResultCode:
 *   bit 31      1 = the call failed (the code is negative as a signed value)
 *   bits 23..30 SourceId of the module that raised the code
 *   bits 8..22  source line of the check that raised it
 *   bits 0..7   error number
 * 0 is success; bit 31 clear with a nonzero error number is a status.
 *
 * Entry points. Each function has a decorated entry point Name_N that does
 * the work and never translates anything, and most also have an undecorated
 * entry point under the bare name, which forwards to the decorated one and
 * adapts identifiers and result codes to the driver version found when the
 * library was loaded. Functions declared with RYN_ENTRY_DECORATED exist only
 * decorated; their bare name is bound to the decorated symbol.
 */
#ifndef RYN_HWDLL_H
#define RYN_HWDLL_H

#include <stdint.h>

#include "Osa.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Shared types ------------------------------------------------------- */

typedef uint32_t ResultCode;
typedef uint32_t DeviceHandle;

/* Handle kinds: (handle & RYN_HANDLE_KIND_MASK). */
#define RYN_HANDLE_KIND_MASK      0xF0000000u
#define RYN_HANDLE_PHYSICAL       0x10000000u
#define RYN_HANDLE_LOGICAL        0x20000000u
#define RYN_HANDLE_PIPE           0x40000000u
#define RYN_DRIVER_PSEUDO_HANDLE  0x00000000u
#define RYN_LIBRARY_PSEUDO_HANDLE 0xFFFFFFFEu

/* Event record of driver events and application event queues: words 0 and 1
 * hold a 64-bit value (low half first); word 2 of a record read from the
 * driver is a device type. */
typedef struct EventData {
    uint32_t word[8];
} EventData;

/* ---- Result codes ------------------------------------------------------- */

/* Fixed codes of the request transport: the driver could not be reached. */
#define RYN_RESULT_CALL_FAILED        0xC300AA0Du
#define RYN_RESULT_NO_REPLY           0xC300AD0Du
#define RYN_RESULT_HANDLE_CALL_FAILED 0xC300B90Du
#define RYN_RESULT_HANDLE_NO_REPLY    0xC300BC0Du

RYN_ENTRY_DECORATED(int32_t, RynSuccess, 4, (ResultCode code))
RYN_ENTRY_DECORATED(int32_t, RynFailure, 4, (ResultCode code))
RYN_ENTRY_DECORATED(uint32_t, RynResultSeverity, 4, (ResultCode code))
RYN_ENTRY_DECORATED(uint32_t, RynResultSourceId, 4, (ResultCode code))
RYN_ENTRY_DECORATED(uint32_t, RynResultLineNum, 4, (ResultCode code))
RYN_ENTRY_DECORATED(uint32_t, RynResultErrorCode, 4, (ResultCode code))
/* Takes a code apart; all four pointers must be valid. errorCode keeps bit
 * 31 of a failure when the error number is 29 or less. */
RYN_ENTRY(void, RynResultCode, 20,
          (ResultCode code, uint32_t *errorCode, uint32_t *severity, uint32_t *sourceId,
           uint32_t *lineNum))

/* ---- Driver connection -------------------------------------------------- */

/* Opens the driver device "RYNDRV" (RynNetConnectLib: "RYNNET"), prepares
 * the application event queues and announces the library version. */
RYN_ENTRY(ResultCode, RynDrvConnectLib, 0, (void))
RYN_ENTRY(ResultCode, RynNetConnectLib, 0, (void))
/* Closes the connection and every open application event queue. */
RYN_ENTRY(ResultCode, RynDrvReleaseLib, 0, (void))
/* The operating-system handle of the open connection. */
RYN_ENTRY(ResultCode, RynDrvGetHandle, 4, (OsaHandle *handle))

/* ---- Devices, boards, logical devices and pipes ------------------------- */

/* ---- Attributes --------------------------------------------------------- */

/* ---- Driver events and event queues ------------------------------------- */

/* ---- Registers, time and diagnostics ------------------------------------ */

/* ---- Application event queues ------------------------------------------- */

#ifdef __cplusplus
}
#endif

#endif /* RYN_HWDLL_H */
