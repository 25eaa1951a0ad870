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

/* A compile-time check that holds in C99 (a negative array size fails) and
 * in later C and C++. */
#if defined(__cplusplus)
#define RYN_STATIC_ASSERT(condition, name) static_assert(condition, #name)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define RYN_STATIC_ASSERT(condition, name) _Static_assert(condition, #name)
#else
#define RYN_STATIC_ASSERT(condition, name) typedef char ryn_static_assert_##name[(condition) ? 1 : -1]
#endif

typedef uint32_t ResultCode;
typedef uint32_t DeviceHandle;

/* Handle kinds: (handle & RYN_HANDLE_KIND_MASK). */
#define RYN_HANDLE_KIND_MASK 0xF0000000u
#define RYN_HANDLE_PHYSICAL 0x10000000u
#define RYN_HANDLE_LOGICAL 0x20000000u
#define RYN_HANDLE_PIPE 0x40000000u
#define RYN_DRIVER_PSEUDO_HANDLE 0x00000000u
#define RYN_LIBRARY_PSEUDO_HANDLE 0xFFFFFFFEu

/* Event record of driver events and application event queues: words 0 and 1
 * hold a 64-bit value (low half first); word 2 of a record read from the
 * driver is a device type. */
typedef struct EventData {
    uint32_t word[8];
} EventData;

/* ---- Result codes ------------------------------------------------------- */

/* Fixed codes of the request transport: the driver could not be reached. */
#define RYN_RESULT_CALL_FAILED 0xC300AA0Du
#define RYN_RESULT_NO_REPLY 0xC300AD0Du
#define RYN_RESULT_HANDLE_CALL_FAILED 0xC300B90Du
#define RYN_RESULT_HANDLE_NO_REPLY 0xC300BC0Du

RYN_ENTRY_DECORATED(int32_t, RynSuccess, 4, (ResultCode code))
RYN_ENTRY_DECORATED(int32_t, RynFailure, 4, (ResultCode code))
RYN_ENTRY_DECORATED(uint32_t, RynResultSeverity, 4, (ResultCode code))
RYN_ENTRY_DECORATED(uint32_t, RynResultSourceId, 4, (ResultCode code))
RYN_ENTRY_DECORATED(uint32_t, RynResultLineNum, 4, (ResultCode code))
RYN_ENTRY_DECORATED(uint32_t, RynResultErrorCode, 4, (ResultCode code))
/* Takes a code apart; all four pointers must be valid. errorCode keeps bit
 * 31 of a failure when the error number is 29 or less. */
RYN_ENTRY(void, RynResultCode, 20,
          (ResultCode code, uint32_t *errorCode, uint32_t *severity, uint32_t *sourceId, uint32_t *lineNum))

/* ---- Driver connection -------------------------------------------------- */

/* Opens the driver device "RYNDRV" (RynNetConnectLib: "RYNNET"), prepares
 * the application event queues and announces the library version. */
RYN_ENTRY(ResultCode, RynDrvConnectLib, 0, (void))
RYN_ENTRY(ResultCode, RynNetConnectLib, 0, (void))
/* Closes the connection and every open application event queue. */
RYN_ENTRY(ResultCode, RynDrvReleaseLib, 0, (void))
/* The operating-system handle of the open connection. */
RYN_ENTRY(ResultCode, RynDrvGetHandle, 4, (OsaHandle * handle))

/* ---- Devices, boards, logical devices and pipes ------------------------- */

/* Enumeration: begin sets the iterator to 0; each enumeration call sends it
 * and stores the driver's next value (-1 when nothing follows). Out-values
 * are written whatever the result; the pointers are not tested for null. */
RYN_ENTRY(ResultCode, RynDrvIteratorBegin, 4, (int32_t * iterator))
/* 1 while the enumeration can go on (iterator not -1), else 0. */
RYN_ENTRY(int32_t, RynDrvIsIteratorEnd, 4, (const int32_t *iterator))
RYN_ENTRY(ResultCode, RynDrvEnumDeviceType, 12, (DeviceHandle parent, int32_t *iterator, int32_t *deviceType))
RYN_ENTRY(ResultCode, RynDrvEnumDevice, 16,
          (DeviceHandle parent, int32_t deviceType, int32_t *iterator, uint32_t *deviceId))
/* handle may be null; otherwise it receives -1, then the handle on success. */
RYN_ENTRY(ResultCode, RynDrvGetDeviceHandle, 16,
          (DeviceHandle parent, int32_t deviceType, uint32_t deviceId, DeviceHandle *handle))
/* physicalDevice receives the handle, or -1 on failure (not tested for null). */
RYN_ENTRY(ResultCode, RynDrvOpenPhysicalDevice, 24,
          (uint32_t param1, uint32_t param2, uint32_t param3, uint32_t param4, uint32_t param5,
           DeviceHandle *physicalDevice))
RYN_ENTRY(ResultCode, RynDrvOpenPhysicalDeviceEx, 12, (uint32_t param1, uint32_t param2, uint32_t param3))
/* physicalDevice must be a physical device; logicalDevice is written only on success. */
RYN_ENTRY(ResultCode, RynDrvCreateLogicalDevice, 20,
          (DeviceHandle physicalDevice, int32_t deviceType, uint32_t param3, uint32_t param4,
           DeviceHandle *logicalDevice))
/* pipe receives the reply's handle whatever the result. */
RYN_ENTRY(ResultCode, RynDrvCreatePipe, 8, (uint32_t param1, DeviceHandle *pipe))
RYN_ENTRY(ResultCode, RynDrvConnectLogicalDevice, 16,
          (DeviceHandle handleA, uint32_t portA, DeviceHandle handleB, uint32_t portB))
/* Both handles must be logical devices or pipes. */
RYN_ENTRY(ResultCode, RynDrvDisconnectLogicalDevice, 16,
          (DeviceHandle handleA, uint32_t portA, DeviceHandle handleB, uint32_t portB))
/* Up to 512 bytes of connection data; null data sends none; a negative or
 * larger length with data is refused with error 9. */
RYN_ENTRY(ResultCode, RynDrvConnectPipe, 24,
          (DeviceHandle pipe, uint32_t portA, DeviceHandle device, uint32_t portB, const uint8_t *data,
           int32_t dataLength))
RYN_ENTRY(ResultCode, RynDrvDisconnectPipe, 8, (DeviceHandle pipe, uint32_t portA))
RYN_ENTRY(ResultCode, RynDrvConnectBoard, 8, (DeviceHandle handleA, DeviceHandle handleB))
RYN_ENTRY(ResultCode, RynDrvEnable, 12, (DeviceHandle handle, uint32_t param2, uint32_t param3))
RYN_ENTRY(ResultCode, RynDrvDisable, 12, (DeviceHandle handle, uint32_t param2, uint32_t param3))
RYN_ENTRY(ResultCode, RynDrvGetState, 8, (DeviceHandle handle, uint32_t *state))
RYN_ENTRY(ResultCode, RynDrvReset, 4, (DeviceHandle handle))
RYN_ENTRY(ResultCode, RynDrvClose, 4, (DeviceHandle handle))

/* ---- Attributes --------------------------------------------------------- */

/* The library pseudo-handle RYN_LIBRARY_PSEUDO_HANDLE answers identifiers 9
 * (version text), 10 (version block), 11 (module name) and 12 (0) itself;
 * every other handle asks the driver. The pointers are not tested for null,
 * except the returned length of RynDrvGetAttributeValue for driver
 * attributes. A driver read transfers exactly bufferLength bytes both ways. */
RYN_ENTRY(ResultCode, RynDrvGetAttributeType, 20,
          (DeviceHandle handle, int32_t attribute, uint32_t *type, uint32_t *size, uint32_t *flags))
RYN_ENTRY(ResultCode, RynDrvGetAttributeValue, 20,
          (DeviceHandle handle, int32_t attribute, void *buffer, uint32_t bufferLength, uint32_t *returnedLength))
RYN_ENTRY(ResultCode, RynDrvGetAttributeValueBool, 12, (DeviceHandle handle, int32_t attribute, uint32_t *value))
RYN_ENTRY(ResultCode, RynDrvGetAttributeValueUint32, 12, (DeviceHandle handle, int32_t attribute, uint32_t *value))
RYN_ENTRY(ResultCode, RynDrvGetAttributeValueSz, 16,
          (DeviceHandle handle, int32_t attribute, char *text, uint32_t bufferLength))
RYN_ENTRY(ResultCode, RynDrvSetAttributeValue, 16,
          (DeviceHandle handle, int32_t attribute, const void *value, uint32_t valueLength))
RYN_ENTRY(ResultCode, RynDrvSetAttributeValueBool, 12, (DeviceHandle handle, int32_t attribute, uint32_t value))
RYN_ENTRY(ResultCode, RynDrvSetAttributeValueUint32, 12, (DeviceHandle handle, int32_t attribute, uint32_t value))
RYN_ENTRY(ResultCode, RynDrvSetAttributeValueSz, 12, (DeviceHandle handle, int32_t attribute, const char *text))

/* ---- Driver events and event queues ------------------------------------- */

/* Event objects are unnamed auto-reset events, initially non-signalled; on
 * this platform their handles are file descriptors, closed by
 * RynDrvCloseEvent (or OsaDeviceClose), and a driver in the same process may
 * signal one by writing to it. A failed creation stores 0 and returns 0. */
RYN_ENTRY(ResultCode, RynDrvCreateEvent, 4, (OsaHandle * event))
RYN_ENTRY(ResultCode, RynDrvSignalEvent, 4, (OsaHandle event))
RYN_ENTRY(ResultCode, RynDrvCloseEvent, 4, (OsaHandle event))
/* 0 when signalled, 3 on time-out (0xFFFFFFFF waits without limit). */
RYN_ENTRY(ResultCode, RynDrvWaitForSingleEvent, 8, (OsaHandle event, uint32_t timeoutMs))
/* 2 with the index of the signalled event (wait-any: the lowest; wait-all:
 * all of them are taken at once), 3 on time-out. A count of 0 or above 64,
 * or a handle that is not an event, is a failed wait (error 13). */
RYN_ENTRY(ResultCode, RynDrvWaitForMultipleEvents, 20,
          (uint32_t count, const OsaHandle *events, uint32_t timeoutMs, int32_t waitAll, uint32_t *index))
RYN_ENTRY(ResultCode, RynDrvCancelTask, 8, (uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynDrvCreateEventQueue, 12, (uint32_t param1, uint32_t param2, DeviceHandle *queue))
RYN_ENTRY(ResultCode, RynDrvPollEvents, 4, (DeviceHandle handle))
RYN_ENTRY(ResultCode, RynDrvGetEventData, 8, (DeviceHandle handle, EventData *record))
/* The driver writes up to param3 records into the array; count receives
 * the driver's count. */
RYN_ENTRY(ResultCode, RynDrvGetEventDataEx, 16,
          (DeviceHandle handle, EventData *records, uint32_t param3, uint32_t *count))
RYN_ENTRY(ResultCode, RynDrvSetEventData, 28,
          (DeviceHandle handle, uint32_t w2, uint32_t w3, uint32_t w4, uint32_t w5, uint32_t w6, uint32_t w7))
RYN_ENTRY(ResultCode, RynDrvSetEventDataEx, 36,
          (DeviceHandle handle, uint32_t w2, uint32_t w3, uint32_t w4, uint32_t w5, uint32_t w6, uint32_t w7,
           uint32_t w0, uint32_t w1))
/* text: at least 256 bytes; always terminated. */
RYN_ENTRY(ResultCode, RynDrvEventCode2String, 16,
          (DeviceHandle handle, uint32_t eventCode, uint32_t param3, char *text))

/* ---- Registers, time and diagnostics ------------------------------------ */

/* Every width moves a 32-bit word; reads store it whatever the result. */
RYN_ENTRY(ResultCode, RynDrvReadReg8, 12, (DeviceHandle handle, uint32_t registerOffset, uint32_t *value))
RYN_ENTRY(ResultCode, RynDrvReadReg16, 12, (DeviceHandle handle, uint32_t registerOffset, uint32_t *value))
RYN_ENTRY(ResultCode, RynDrvReadReg32, 12, (DeviceHandle handle, uint32_t registerOffset, uint32_t *value))
RYN_ENTRY(ResultCode, RynDrvWriteReg8, 12, (DeviceHandle handle, uint32_t registerOffset, uint32_t value))
RYN_ENTRY(ResultCode, RynDrvWriteReg16, 12, (DeviceHandle handle, uint32_t registerOffset, uint32_t value))
RYN_ENTRY(ResultCode, RynDrvWriteReg32, 12, (DeviceHandle handle, uint32_t registerOffset, uint32_t value))
/* 100-ns intervals since 1601-01-01 (subtract 116444736000000000 and divide
 * by 10000000 for seconds since 1970). */
RYN_ENTRY(ResultCode, RynDrvGetCurrentTime, 4, (uint64_t * time))
RYN_ENTRY(ResultCode, RynStartWatchdogTimer, 4, (uint32_t unused))
RYN_ENTRY(ResultCode, RynDrvDbgDump, 8, (uint32_t param1, uint32_t param2))
/* The driver writes the text into text (textLength bytes). */
RYN_ENTRY(ResultCode, RynDrvResultCode2String, 16,
          (DeviceHandle handle, ResultCode resultCode, char *text, uint32_t textLength))

/* ---- DSP access ---------------------------------------------------------- */

/* Every call takes a handle of any driver object (error 11 otherwise). */

/* A message to the DSP program: the command and up to 1984 input bytes
 * (more: error 9). Up to outputSize answer bytes are copied to output;
 * outputLength (may be null) receives the answer's full length, which can
 * exceed what was copied, and 0 when the driver was not reached. */
RYN_ENTRY(ResultCode, RynDspIoControl, 36,
          (DeviceHandle handle, uint16_t command, const void *input, uint32_t inputLength, void *output,
           uint32_t outputSize, uint32_t *outputLength, uint32_t paramA, uint32_t paramB))
/* out1 and out2 receive the driver's two values whatever the result. */
RYN_ENTRY(ResultCode, RynDspReadData, 24,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3, uint32_t *out1, uint32_t *out2))
RYN_ENTRY(ResultCode, RynDspReadHpi, 16, (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3))
RYN_ENTRY(ResultCode, RynDspWriteHpi, 16, (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3))
RYN_ENTRY(ResultCode, RynDspRestartProgram, 4, (DeviceHandle handle))

/* ---- DSP program loader -------------------------------------------------- */

/* Program files are TI COFF object files, version 1 or 2 (word target
 * 0x0098 or byte target 0x009C), little-endian. The entry address is the
 * first section's address when that section is ".text" (else 0), unless
 * entryName names it: a hexadecimal number ("0x7E16", "7E16h") or a symbol
 * of the file (error 13 when none matches). A null entryName is an empty
 * one. A file that cannot be opened gives error 13, one that ends early or
 * points outside itself error 5, an unsupported version or target error 17.
 *
 * A load holds the DSP, waits 50 ms, transfers the program and starts it; a
 * failed transfer disables the DSP and cancels the load, a failed start
 * disables it. A program file whose base name is "rynspm1" (any case) is
 * started as a built-in module. */
RYN_ENTRY(ResultCode, RynDspRunProgram, 12, (DeviceHandle handle, const char *fileName, const char *entryName))
/* A command-stream image (word targets only: a byte-target file gives
 * error 6) of at most capacity words; used receives the words written (also
 * after a failure; error 29 when the image is full), entry the entry address
 * on success. */
RYN_ENTRY(ResultCode, RynDspCreateProgramImage, 24,
          (const char *fileName, const char *entryName, uint16_t capacity, uint16_t *buffer, uint16_t *used,
           uint32_t *entry))
/* A record image (version 2 files only: a version 1 file gives error 17);
 * a capacity below 5 words gives error 9. */
RYN_ENTRY(ResultCode, RynDspCreateProgramImageEx, 24,
          (const char *fileName, const char *entryName, uint32_t capacity, uint16_t *buffer, uint32_t *used,
           uint32_t *entry))
/* Ships an image of length words and starts it at entry. A record image
 * whose records do not end exactly at the length, or a record of more than
 * 256 bytes, gives error 12. */
RYN_ENTRY(ResultCode, RynDspRunImage, 16, (DeviceHandle handle, const uint16_t *image, uint16_t length, uint32_t entry))

/* ---- Built-in signal-processing modules --------------------------------- */

/* Runs the built-in module image that fits the DSP type the driver reports
 * for handle (any driver object, else error 11): module identifiers 0 to 6
 * and 10 to 13 (others: error 9); a module without an image for that DSP
 * type gives error 17. The image is shipped and started as RynDspRunImage
 * does. The undecorated entry point renumbers the module identifier for
 * older drivers. */
RYN_ENTRY(ResultCode, RynDspRunSpm, 8, (DeviceHandle handle, uint32_t module))

/* ---- T1/E1 framer control ----------------------------------------------- */

/* Every value passes to the driver unchanged and the driver checks it; the
 * handle's kind is not tested. Getters write their out-values whatever the
 * result. Null record or out pointers are refused with error 10. The
 * records travel whole; their fields are the driver's and the framer's. */
typedef struct T1Configuration {
    uint8_t bytes[60];
} T1Configuration;
typedef struct E1Configuration {
    uint8_t bytes[56];
} E1Configuration;
typedef struct Layer1StatusEx {
    uint8_t bytes[20];
} Layer1StatusEx;
typedef struct RobBitData {
    uint8_t bytes[16];
} RobBitData;
typedef struct ABCDBitData {
    uint8_t bytes[16];
} ABCDBitData;
RYN_STATIC_ASSERT(sizeof(T1Configuration) == 60, T1Configuration_is_60_bytes);
RYN_STATIC_ASSERT(sizeof(E1Configuration) == 56, E1Configuration_is_56_bytes);
RYN_STATIC_ASSERT(sizeof(Layer1StatusEx) == 20, Layer1StatusEx_is_20_bytes);
RYN_STATIC_ASSERT(sizeof(RobBitData) == 16, RobBitData_is_16_bytes);
RYN_STATIC_ASSERT(sizeof(ABCDBitData) == 16, ABCDBitData_is_16_bytes);

RYN_ENTRY(ResultCode, RynT1E1SetLiMode, 8, (DeviceHandle handle, uint32_t mode))
RYN_ENTRY(ResultCode, RynT1SetConfiguration, 8, (DeviceHandle handle, const T1Configuration *config))
RYN_ENTRY(ResultCode, RynT1GetConfiguration, 8, (DeviceHandle handle, T1Configuration *config))
RYN_ENTRY(ResultCode, RynE1SetConfiguration, 8, (DeviceHandle handle, const E1Configuration *config))
RYN_ENTRY(ResultCode, RynE1GetConfiguration, 8, (DeviceHandle handle, E1Configuration *config))
RYN_ENTRY(ResultCode, RynT1E1AlarmOn, 8, (DeviceHandle handle, uint32_t alarm))
RYN_ENTRY(ResultCode, RynT1E1AlarmOff, 8, (DeviceHandle handle, uint32_t alarm))
RYN_ENTRY(ResultCode, RynT1E1SetLineLoop, 8, (DeviceHandle handle, uint32_t loop))
RYN_ENTRY(ResultCode, RynT1E1ForceResynch, 4, (DeviceHandle handle))
RYN_ENTRY(ResultCode, RynT1E1GetLayer1Status, 8, (DeviceHandle handle, uint32_t *status))
RYN_ENTRY(ResultCode, RynT1E1XmitPinControl, 8, (DeviceHandle handle, uint32_t control))
RYN_ENTRY(ResultCode, RynT1E1SetLineTermination, 8, (DeviceHandle handle, uint32_t termination))
RYN_ENTRY(ResultCode, RynT1E1SetMonitorMode, 8, (DeviceHandle handle, uint32_t mode))
RYN_ENTRY(ResultCode, RynT1E1SetPrbsConfig, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynT1SetRobBitData, 8, (DeviceHandle handle, const RobBitData *bits))
RYN_ENTRY(ResultCode, RynT1GetRobBitData, 8, (DeviceHandle handle, RobBitData *bits))
RYN_ENTRY(ResultCode, RynE1SetABCDBit, 8, (DeviceHandle handle, const ABCDBitData *bits))
RYN_ENTRY(ResultCode, RynE1GetABCDBit, 8, (DeviceHandle handle, ABCDBitData *bits))
RYN_ENTRY(ResultCode, RynE1GetSaBit, 12, (DeviceHandle handle, uint32_t selector, uint8_t *value))
RYN_ENTRY(ResultCode, RynE1SetSaBit, 12, (DeviceHandle handle, uint32_t selector, uint8_t value))
RYN_ENTRY(ResultCode, RynE1GetSiBit, 12, (DeviceHandle handle, uint8_t *value1, uint8_t *value2))
RYN_ENTRY(ResultCode, RynE1SetSiBit, 12, (DeviceHandle handle, uint8_t value1, uint8_t value2))
RYN_ENTRY(ResultCode, RynT1SetChannelizedRobBitData, 12, (DeviceHandle handle, uint32_t channel, uint8_t bits))
RYN_ENTRY(ResultCode, RynT1GetChannelizedRobBitData, 12, (DeviceHandle handle, uint32_t channel, uint8_t *bits))
RYN_ENTRY(ResultCode, RynE1SetChannelizedABCDBit, 12, (DeviceHandle handle, uint32_t channel, uint8_t bits))
RYN_ENTRY(ResultCode, RynE1GetChannelizedABCDBit, 12, (DeviceHandle handle, uint32_t channel, uint8_t *bits))
RYN_ENTRY(ResultCode, RynT1SetDlBitData, 8, (DeviceHandle handle, uint32_t dlBits))
RYN_ENTRY(ResultCode, RynT1E1InsertSingleBitDefect, 8, (DeviceHandle handle, uint32_t defect))
RYN_ENTRY(ResultCode, RynT1E1GetLayer1StatusEx, 8, (DeviceHandle handle, Layer1StatusEx *statusEx))

/* ---- BRI ------------------------------------------------------------------ */

/* Declared but not carried out: every call returns the failure "not
 * provided" (error 6), reads none of its arguments and sends nothing. */
RYN_ENTRY(ResultCode, RynBriSetLiMode, 8, (DeviceHandle handle, uint32_t mode))
RYN_ENTRY(ResultCode, RynBriConfigureMonitor, 8, (DeviceHandle handle, uint32_t param1))
RYN_ENTRY(ResultCode, RynBriGetLineStatus, 8, (DeviceHandle handle, uint32_t *status))
RYN_ENTRY(ResultCode, RynBriActivateLink, 8, (DeviceHandle handle, uint32_t param1))
RYN_ENTRY(ResultCode, RynBriDeactivateLink, 8, (DeviceHandle handle, uint32_t param1))
RYN_ENTRY(ResultCode, RynBriTermLi, 8, (DeviceHandle handle, uint32_t param1))

/* ---- POTS and SLIC ------------------------------------------------------- */

/* The handle's kind is not tested. Out-values are written from the reply
 * whatever the result; a null out pointer is skipped. POTS failures carry
 * the POTS module; SLIC failures are bare codes (bit 31 and the error
 * number alone): 0x80000009 for a name of more than 15 characters or a
 * number of other than 10, 0x80000005 when the driver's clock has no local
 * time, 0x8000000A for a null name or number. */
RYN_ENTRY(ResultCode, RynPotsOffHook, 4, (DeviceHandle handle))
RYN_ENTRY(ResultCode, RynPotsOnHook, 4, (DeviceHandle handle))
RYN_ENTRY(ResultCode, RynPotsHookFlash, 16, (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3))
/* Up to 127 digits (128 or more: error 9, nothing sent); the characters
 * are the driver's to judge. */
RYN_ENTRY(ResultCode, RynPotsPulseDial, 32,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3, const uint8_t *digits,
           uint32_t digitCount, uint32_t param6, uint32_t param7))
RYN_ENTRY(ResultCode, RynPotsSetLiMode, 8, (DeviceHandle handle, uint32_t mode))
RYN_ENTRY(ResultCode, RynPotsGetLiMode, 8, (DeviceHandle handle, uint32_t *mode))
RYN_ENTRY(ResultCode, RynSlicSetResetPin, 8, (DeviceHandle handle, uint32_t state))
RYN_ENTRY(ResultCode, RynSlicEnableDialTone, 4, (DeviceHandle handle))
RYN_ENTRY(ResultCode, RynSlicEnableBusyTone, 4, (DeviceHandle handle))
RYN_ENTRY(ResultCode, RynSlicEnableReorderTone, 4, (DeviceHandle handle))
RYN_ENTRY(ResultCode, RynSlicEnableCongestionTone, 4, (DeviceHandle handle))
RYN_ENTRY(ResultCode, RynSlicEnableRingBackTone, 4, (DeviceHandle handle))
RYN_ENTRY(ResultCode, RynSlicGetHookState, 8, (DeviceHandle handle, uint32_t *state))
/* Waits 200 ms before it asks the driver to ring. */
RYN_ENTRY(ResultCode, RynSlicStartRingState, 8, (DeviceHandle handle, uint32_t *status))
RYN_ENTRY(ResultCode, RynSlicStopRingState, 8, (DeviceHandle handle, uint32_t *status))
RYN_ENTRY(ResultCode, RynSlicEnableAudio, 8, (DeviceHandle handle, uint32_t *status))
RYN_ENTRY(ResultCode, RynSlicSignalDisconnectState, 12, (DeviceHandle handle, uint32_t param1, uint32_t *status))
/* At most 15 characters. */
RYN_ENTRY(ResultCode, RynSlicSetUserName, 12, (DeviceHandle handle, const char *name, uint32_t *status))
/* Exactly 10 characters. */
RYN_ENTRY(ResultCode, RynSlicSetPhoneNumber, 12, (DeviceHandle handle, const char *number, uint32_t *status))
/* Sends the date and time of the call, MMDDhhmm in local time, from the
 * driver's clock; when the clock cannot be read, its failure is returned,
 * 0 is stored through status and nothing more is sent. */
RYN_ENTRY(ResultCode, RynSlicSendCallerID, 8, (DeviceHandle handle, uint32_t *status))

/* ---- Board controls and JTAG ------------------------------------------------ */

RYN_ENTRY(ResultCode, RynBrdSetClocks, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynBrdTssConstByte, 16, (DeviceHandle handle, uint32_t param1, uint32_t param2, uint8_t value))
RYN_ENTRY(ResultCode, RynBrdCodecSetLaw, 8, (DeviceHandle handle, uint32_t law))
RYN_ENTRY(ResultCode, RynJtagControl, 8, (DeviceHandle handle, uint32_t control))
/* A scan of the vector in input (a string in the driver's notation); output
 * receives the driver's answer and must have room for strlen(input) + 1
 * bytes; it is always terminated within them. Error 7 when the staging
 * blocks cannot be had, error 10 for a null string. */
RYN_ENTRY(ResultCode, RynJtagScanIr, 16, (DeviceHandle handle, uint32_t param1, const char *input, char *output))
RYN_ENTRY(ResultCode, RynJtagScanDr, 16, (DeviceHandle handle, uint32_t param1, const char *input, char *output))

/* ---- HDLC and SS7 -------------------------------------------------------- */

/* The handle is the channel's; its kind is not tested. Settings (paramN,
 * filter) pass to the driver unchanged. Frame data travel by address: the
 * driver reads data, or writes into buffer, while the call runs; the library
 * neither copies nor checks them. A frame of 8192 bytes or more (a repeated
 * block of 10 or more) is refused with error 9 and nothing is sent. Out
 * values are written whatever the result; a null out pointer is skipped. */
RYN_ENTRY(ResultCode, RynHdlcSenderInit, 28,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3, uint32_t param4, uint32_t param5,
           uint32_t param6))
RYN_ENTRY(ResultCode, RynHdlcReceiverInit, 32,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3, uint32_t param4, uint32_t param5,
           uint32_t param6, uint32_t param7))
RYN_ENTRY(ResultCode, RynHdlcSendData, 20,
          (DeviceHandle handle, const void *data, uint32_t length, uint32_t param3, uint32_t param4))
/* length receives the driver's received length as given, not compared with
 * bufferSize; param6 the driver's 8-byte value as it stands. */
RYN_ENTRY(ResultCode, RynHdlcReadData, 28,
          (DeviceHandle handle, void *buffer, uint32_t bufferSize, uint32_t *length, uint32_t *param4,
           uint32_t *param5, uint64_t *param6))
/* ss7Header receives exactly 3 bytes. */
RYN_ENTRY(ResultCode, RynHdlcSS7GetReceiveStatus, 20,
          (DeviceHandle handle, uint32_t *param1, uint32_t *param2, uint32_t *param3, uint8_t *ss7Header))
RYN_ENTRY(ResultCode, RynHdlcSS7SetFilter, 8, (DeviceHandle handle, uint32_t filter))
RYN_ENTRY(ResultCode, RynHdlcSS7GetFilter, 8, (DeviceHandle handle, uint32_t *filter))
/* The 3 bytes at ss7Header are copied into the request (null: error 10,
 * after the length check). */
RYN_ENTRY(ResultCode, RynHdlcSS7SendData, 24,
          (DeviceHandle handle, const void *data, uint32_t length, const uint8_t *ss7Header, uint32_t param4,
           uint32_t param5))
/* Starts the repeated sending of a block of at most 9 bytes. */
RYN_ENTRY(ResultCode, RynHdlcStartRepeatData, 20,
          (DeviceHandle handle, const void *data, uint32_t length, uint32_t param3, uint32_t param4))
RYN_ENTRY(ResultCode, RynHdlcStopRepeatData, 4, (DeviceHandle handle))
/* The four values go to the driver in order; length receives its answer. */
RYN_ENTRY(ResultCode, RynHdlcReadDataEx, 24,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3, uint32_t param4, uint32_t *length))
RYN_ENTRY(ResultCode, RynHdlcSenderFlush, 4, (DeviceHandle handle))

/* ---- Raw data and burst transfer ----------------------------------------- */

/* Raw data travel by address: the driver reads from, or writes into, the
 * caller's buffer while the call runs. A send block is shorter than 8192
 * bytes (else error 9). The idle-pattern calls are not provided (error 6,
 * nothing sent). */
RYN_ENTRY(ResultCode, RynRawDataSenderInit, 16, (DeviceHandle handle, uint32_t param1, uint8_t param2, uint32_t param3))
RYN_ENTRY(ResultCode, RynRawDataReceiverInit, 20,
          (DeviceHandle handle, uint32_t param1, uint8_t param2, uint32_t param3, uint32_t param4))
RYN_ENTRY(ResultCode, RynRawDataSendData, 20,
          (DeviceHandle handle, const void *data, uint32_t length, uint32_t param3, uint32_t param4))
/* length receives the driver's received length (not compared with
 * bufferSize) and param4 its second value, whatever the result. */
RYN_ENTRY(ResultCode, RynRawDataReadData, 20,
          (DeviceHandle handle, void *buffer, uint32_t bufferSize, uint32_t *length, uint32_t *param4))
RYN_ENTRY(ResultCode, RynRawDataSenderFlush, 4, (DeviceHandle handle))
RYN_ENTRY_DECORATED(ResultCode, RynRawDataSenderInitEx, 20,
                    (DeviceHandle handle, uint32_t param1, uint32_t param2, uint8_t param3, uint32_t param4))
RYN_ENTRY(ResultCode, RynRawDataStartIdlePattern, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynRawDataStopIdlePattern, 4, (DeviceHandle handle))

/* Burst data travel by value, copied once per call. Send and preload: length
 * holds the byte count to send, then the driver's count. Read: length holds
 * the capacity of buffer, then the byte count received; param5 and param6
 * (may be null) receive the driver's two values. A null data, buffer or
 * length gives error 10, a length within 28 (send) or 32 (read) of 2^32
 * error 9, a block that cannot be allocated error 7, a reply claiming more
 * than the capacity error 5 (nothing is copied then). */
RYN_ENTRY(ResultCode, RynBurstSendData, 16, (DeviceHandle handle, uint32_t param1, const void *data, uint32_t *length))
RYN_ENTRY(ResultCode, RynBurstInitSendBuffer, 16,
          (DeviceHandle handle, uint32_t param1, const void *data, uint32_t *length))
RYN_ENTRY(ResultCode, RynBurstReadDataEx, 24,
          (DeviceHandle handle, uint32_t param1, void *buffer, uint32_t *length, uint64_t *param5, uint64_t *param6))
RYN_ENTRY(ResultCode, RynBurstReadData, 16, (DeviceHandle handle, uint32_t param1, void *buffer, uint32_t *length))
RYN_ENTRY_DECORATED(ResultCode, RynBurstReceiveData, 16,
                    (DeviceHandle handle, uint32_t param1, void *buffer, uint32_t *length))

/* ---- Tone generators and diallers ---------------------------------------- */

/* Every call takes the block's logical-device handle (kind 2, else error 11,
 * nothing sent). Settings (paramN, value, digit, dial characters, sequence
 * entries) pass to the block unchanged. A null dial, entry or tone array
 * with a positive count, or a null value pointer, gives error 10. */

/* One tone of the sine-wave generator, read field by field. */
typedef struct SineToneParams {
    double frequency; /* Hz, 0.0 or more */
    double level;     /* dB relative to a peak amplitude of 4096, 0.0 or less */
    double phase;     /* starting phase: only 0.0 is accepted */
} SineToneParams;
RYN_STATIC_ASSERT(sizeof(SineToneParams) == 24, SineToneParams_is_24_bytes);

RYN_ENTRY(ResultCode, RynToneConstValGeneratorInit, 12, (DeviceHandle handle, uint32_t param1, uint16_t value))
RYN_ENTRY(ResultCode, RynToneValSamplerInit, 8, (DeviceHandle handle, uint32_t param1))
/* value receives the block's 16-bit value after the exchange, whatever the
 * result. */
RYN_ENTRY(ResultCode, RynToneValSamplerReadData, 8, (DeviceHandle handle, uint16_t *value))
RYN_ENTRY(ResultCode, RynToneEffectsGeneratorInit, 16,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3))
/* Up to five tones of the array become the block's oscillators (8000 Hz
 * sampling); toneCount is passed on as given, also above 5 or below 1. The
 * tones are checked in order: a phase other than 0.0 gives error 17, a level
 * above 0.0 or a negative frequency error 9, and so does a level or
 * frequency that is not a number or a frequency whose angle 2 pi f is not
 * finite; nothing is sent then. */
RYN_ENTRY(ResultCode, RynToneSineWaveGeneratorInit, 20,
          (DeviceHandle handle, uint32_t param1, const SineToneParams *tones, int32_t toneCount, uint32_t param4))
RYN_ENTRY(ResultCode, RynToneDtmfGeneratorInit, 16,
          (DeviceHandle handle, uint32_t param1, uint8_t digit, uint32_t param3))
RYN_ENTRY(ResultCode, RynToneDtmfDiallerInit, 20,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3, uint32_t param4))
/* Dials digitCount characters (0 to 127, else error 9), not terminated and
 * not examined by the library. */
RYN_ENTRY(ResultCode, RynToneDtmfDial, 20,
          (DeviceHandle handle, const char *digits, int32_t digitCount, uint32_t param3, uint32_t param4))
RYN_ENTRY(ResultCode, RynToneMfDiallerInit, 24,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3, uint32_t param4, uint32_t param5))
RYN_ENTRY(ResultCode, RynToneMfDial, 20,
          (DeviceHandle handle, const char *digits, int32_t digitCount, uint32_t param3, uint32_t param4))
RYN_ENTRY(ResultCode, RynToneSequenceGeneratorInit, 20,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3, uint32_t param4))
/* Sends entryCount 32-bit entries (0 to 127, else error 9). */
RYN_ENTRY(ResultCode, RynToneSequenceSend, 20,
          (DeviceHandle handle, const uint32_t *entries, int32_t entryCount, uint32_t param3, uint32_t param4))
/* value receives the block's 16-bit value after the exchange, whatever the
 * result. */
RYN_ENTRY(ResultCode, RynToneReadVal, 8, (DeviceHandle handle, uint16_t *value))

/* ---- Tone detectors ------------------------------------------------------ */

/* Every call takes a logical-device handle (else error 11, nothing sent).
 * Status calls write the detector's status (32-bit or 8-bit, as declared)
 * whatever the result; a null status pointer is refused with error 10. */
RYN_ENTRY(ResultCode, RynToneSilenceDetectorInit, 16,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3))
RYN_ENTRY(ResultCode, RynToneSilenceDetectorStatus, 8, (DeviceHandle handle, uint32_t *status))
RYN_ENTRY(ResultCode, RynToneDtmfDetectorInit, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynToneDtmfDetectorStatus, 8, (DeviceHandle handle, uint8_t *status))
RYN_ENTRY(ResultCode, RynToneFskDetectorInit, 8, (DeviceHandle handle, uint32_t param1))
RYN_ENTRY(ResultCode, RynToneDialtoneDetectorInit, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynToneDialtoneDetectorStatus, 8, (DeviceHandle handle, uint32_t *status))
RYN_ENTRY(ResultCode, RynToneMfDetectorInit, 24,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3, uint32_t param4, uint16_t param5))
RYN_ENTRY(ResultCode, RynToneMfDetectorStatus, 8, (DeviceHandle handle, uint8_t *status))
/* Tunes the detector to up to 6 frequencies in Hz (more: error 9; a null
 * list with a positive count: error 10); the library turns each into the
 * detector's coefficient, cos(2 pi f / 8000) in Q15. A count of 0 or below
 * sends no coefficient and goes to the driver as it is. */
RYN_ENTRY(ResultCode, RynToneDualDetectorInit, 28,
          (DeviceHandle handle, uint32_t param1, const uint32_t *frequencies, int32_t frequencyCount, uint32_t param4,
           uint32_t param5, uint16_t param6))
RYN_ENTRY(ResultCode, RynToneDualDetectorStatus, 8, (DeviceHandle handle, uint8_t *status))
RYN_ENTRY(ResultCode, RynToneSingleDetectorInit, 28,
          (DeviceHandle handle, uint32_t param1, const uint32_t *frequencies, int32_t frequencyCount, uint32_t param4,
           uint32_t param5, uint16_t param6))
RYN_ENTRY(ResultCode, RynToneSingleDetectorStatus, 8, (DeviceHandle handle, uint8_t *status))

/* ---- Telephony blocks ---------------------------------------------------- */

/* Every call takes the block's logical-device handle (kind 2, else error 11,
 * nothing sent). Settings (paramN, settingN, table words, lists, steps) pass
 * to the block unchanged. A null list with a positive count, or a null
 * status, parameter block, configuration, value list, segment array or
 * segment steps that would be read, gives error 10 and nothing is sent. */

/* The caller's structures of the extended call-progress tone detector
 * set-up, read field by field (in 32-bit builds CptSegment is 8 bytes,
 * CptToneTable 44 and CptDetectorConfig 16). */
typedef struct CptSegment {
    uint16_t segmentId;
    uint16_t stepCount;    /* low 8 bits: number of steps (0..255) */
    const uint16_t *steps; /* (stepCount & 0xFF) steps of 3 + (valueCount + 3) / 4 words each */
} CptSegment;
RYN_STATIC_ASSERT(sizeof(CptSegment) == 2 * sizeof(void *), CptSegment_is_naturally_aligned);

typedef struct CptToneTable {
    const uint16_t *values; /* valueCount words, valueCount 1..32 */
    uint16_t tableSetting;
    uint16_t unused;            /* not read by the library */
    uint16_t tableWords[13];    /* [11]: valueCount (signed), [12]: segmentCount (signed, at most 16) */
    const CptSegment *segments; /* segmentCount entries */
    const uint8_t *extraBlock;  /* 16 bytes, or null */
} CptToneTable;
RYN_STATIC_ASSERT(sizeof(CptToneTable) == 32 + 3 * sizeof(void *), CptToneTable_is_naturally_aligned);

typedef struct CptDetectorConfig {
    uint32_t unused; /* not read by the library */
    uint16_t setting1;
    uint16_t setting2;
    const CptToneTable *toneTable; /* null: error 9 */
    int16_t tableCount;            /* 1, or negative for no table (0 or above 1: error 9) */
    uint16_t setting3;
} CptDetectorConfig;
RYN_STATIC_ASSERT(sizeof(CptDetectorConfig) == 8 + 2 * sizeof(void *), CptDetectorConfig_is_naturally_aligned);

RYN_ENTRY(ResultCode, RynCstDtmfDialerInit, 8, (DeviceHandle handle, uint32_t param1))
/* Dials digitCount characters (0 to 127, else error 9), not terminated and
 * not examined by the library. */
RYN_ENTRY(ResultCode, RynCstDtmfDial, 20,
          (DeviceHandle handle, const char *digits, int32_t digitCount, uint32_t param3, uint32_t param4))
RYN_ENTRY(ResultCode, RynCstVoiceActivityDetectorInit, 8, (DeviceHandle handle, uint32_t param1))
/* The status calls write the block's status after the exchange, whatever
 * the result; it means something only on success. */
RYN_ENTRY(ResultCode, RynCstVoiceActivityDetectorStatus, 8, (DeviceHandle handle, uint32_t *status))
RYN_ENTRY(ResultCode, RynCstDtmfDetectorInit, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynCstDtmfDetectorStatus, 8, (DeviceHandle handle, uint8_t *status))
RYN_ENTRY(ResultCode, RynCstComfortNoiseGeneratorInit, 8, (DeviceHandle handle, uint32_t param1))
RYN_ENTRY(ResultCode, RynCstVoiceMixerInit, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynCstEchoCancelInit, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynCstCptDetectorInit, 16,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3))
RYN_ENTRY(ResultCode, RynCstCptDetectorStatus, 8, (DeviceHandle handle, uint32_t *status))
RYN_ENTRY(ResultCode, RynCstCptGeneratorInit, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynCstCptGenerateTone, 8, (DeviceHandle handle, uint32_t param1))
RYN_ENTRY(ResultCode, RynCstCidDetectorInit, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
/* Sends the first mixCount entries of both lists (at most 128, else error 9;
 * a negative count sends none and travels as given). The undecorated entry
 * point is RynCstVoiceMixerInitEX, with a capital X. */
RYN_ENTRY_DECORATED(ResultCode, RynCstVoiceMixerInitEx, 24,
                    (DeviceHandle handle, const uint32_t *mixItems, uint32_t param2, const uint16_t *mixValues,
                     uint16_t param4, int32_t mixCount))
RYN_API ResultCode RynCstVoiceMixerInitEX(DeviceHandle handle, const uint32_t *mixItems, uint32_t param2,
                                          const uint16_t *mixValues, uint16_t param4, int32_t mixCount);
/* Gathers the one tone table of config into the request: error 9 for a
 * tableCount of 0 or above 1, a valueCount outside 1..32, a segmentCount
 * above 16 or segment steps beyond 210 words in all. A negative tableCount
 * sends the settings with an empty table. */
RYN_ENTRY(ResultCode, RynCstCptDetectorInitEx, 20,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, const CptDetectorConfig *config, uint32_t param4))
/* params holds 13 words, word 0 the count 13 (else error 9). */
RYN_ENTRY_DECORATED(ResultCode, RynCstVoiceActivityDetectorInitEx, 12,
                    (DeviceHandle handle, const int16_t *params, uint32_t param2))

/* ---- Data converter and mixer -------------------------------------------- */

/* The converter takes the block's logical-device handle (kind 2, else error
 * 11, nothing sent); param1 and param2 pass to the block unchanged. The
 * mixer's set-up is not provided: error 6 for any handle, nothing sent. */
RYN_ENTRY(ResultCode, RynDataConverterInit, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynDataMixerInit, 4, (DeviceHandle handle))

/* ---- POTS line control through a DSP block ------------------------------- */

/* Only the set-up checks the handle (kind 2, else error 11, nothing sent);
 * the other calls pass any handle to the driver. Settings (paramN) pass to
 * the block unchanged.
 *
 * RynCstPotsInit sets the block up, then programs the DAA by daaMode with writes of
 * RynCstPotsWriteDaa (param1 2, param2 500): 1 to 3 register 0x10 <- 0x0C,
 * a 300 ms pause, register 0x11 <- 0x10; 4 register 0x10 <- 0x64; 5 register
 * 0x10 <- 0x04; other modes none. A failure of the set-up or of a write is
 * returned at once; a write status above 1 stops the sequence with a warning
 * (bit 31 clear, error 26). Else the result of the last exchange. */
RYN_ENTRY(ResultCode, RynCstPotsInit, 12, (DeviceHandle handle, uint32_t param1, int32_t daaMode))
RYN_ENTRY(ResultCode, RynCstPotsOffHook, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynCstPotsOnHook, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynCstPotsHookFlash, 16, (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3))
RYN_ENTRY(ResultCode, RynCstPotsPulseDial, 16, (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3))
RYN_ENTRY(ResultCode, RynCstPotsOnHookLineMon, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynCstPotsSenseLine, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
/* Writes one DAA register. status receives the write's status after every
 * exchange, whatever the result (meaningful on success); null: error 10,
 * nothing sent. */
RYN_ENTRY(ResultCode, RynCstPotsWriteDaa, 24,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint8_t daaRegister, uint8_t daaValue,
           uint32_t *status))

/* ---- Application event queues ------------------------------------------- */

/* Queues of EventData records kept by the library, 128 at most, usable from
 * the first connect until the release (before and after: error 13). A full
 * queue drops its oldest record. Reading an empty queue gives a status with
 * error number 1 and bit 31 clear. */
RYN_ENTRY_DECORATED(ResultCode, RynCreateAppEventQueue, 12, (uint32_t capacity, OsaHandle event, int32_t *queue))
RYN_ENTRY_DECORATED(ResultCode, RynCloseAppEventQueue, 4, (int32_t queue))
RYN_ENTRY_DECORATED(ResultCode, RynGetAppEventData, 8, (int32_t queue, EventData *record))
RYN_ENTRY_DECORATED(ResultCode, RynGetAppEventDataEx, 16,
                    (int32_t queue, EventData *records, int32_t maximum, uint32_t *count))
RYN_ENTRY_DECORATED(ResultCode, RynSignalAppEvent, 4, (int32_t queue))
RYN_ENTRY_DECORATED(ResultCode, RynQueueAppEventDataEx, 36,
                    (int32_t queue, uint32_t w2, uint32_t w3, uint32_t w4, uint32_t w5, uint32_t w6, uint32_t w7,
                     uint32_t w0, uint32_t w1))
RYN_ENTRY_DECORATED(ResultCode, RynSetAppEventDataEx, 36,
                    (int32_t queue, uint32_t w2, uint32_t w3, uint32_t w4, uint32_t w5, uint32_t w6, uint32_t w7,
                     uint32_t w0, uint32_t w1))

#ifdef __cplusplus
}
#endif

#endif /* RYN_HWDLL_H */
