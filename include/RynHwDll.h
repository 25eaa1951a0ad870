/**
 * @file RynHwDll.h
 * @brief The C interface of the RynHwDll board library: every exported call
 * outside the Osa layer, its types and its constants.
 *
 * Include this header (it includes Osa.h) from C99 or C++. Every call outside
 * the Osa layer returns a ResultCode (see @ref ryn_results): bit 31 set means
 * the call failed; bits 23..30 name the module that raised the code, bits
 * 8..22 the source line of the check, bits 0..7 the error number. 0 is
 * success; bit 31 clear with a nonzero error number is a status.
 *
 * Entry points. Each function has a decorated entry point `Name_N` that does
 * the work and never translates anything, and most also have an undecorated
 * entry point under the bare name, which forwards to the decorated one and
 * adapts identifiers and result codes to the driver version found when the
 * library was loaded. Functions declared with RYN_ENTRY_DECORATED exist only
 * decorated; their bare name is bound to the decorated symbol. C code calls
 * every function by its bare name.
 */

/**
 * @mainpage RynHwDll API reference
 *
 * RynHwDll is the user-mode C library of the Ryn telecommunication interface
 * boards. Applications call its functions; almost every call checks its
 * handle and a few arguments, packs them into a request block, hands it to
 * the board driver with one synchronous device I/O control request and
 * returns the driver's 32-bit result code.
 *
 * Where to start:
 * - @ref ryn_results — how to read a ResultCode, and the error numbers and
 *   module identifiers of the codes the library raises itself.
 * - @ref ryn_connection, then @ref ryn_devices — connect, find devices, create
 *   the signal-processing blocks (logical devices) on a DSP.
 * - @ref ryn_events and @ref ryn_app_queues — wait for what the board reports.
 * - One group per family of the board: DSP access and program loading, T1/E1,
 *   POTS and SLIC, board controls and JTAG, HDLC/SS7, raw data and burst, tone
 *   generators and detectors, telephony blocks, the DSP-driven POTS line.
 * - @ref osa — the operating-system abstraction layer the library exports.
 * - @ref ryn_driver_module — the interface of a driver module (Linux build).
 *
 * What the library checks, and what the driver decides. The library raises
 * its own codes only for the checks named in each function's description
 * (handle kinds, counts and lengths that do not fit its request blocks, null
 * pointers); everything else, including the meaning of every setting named
 * `paramN` or `settingN`, of device types, states, event codes and status
 * values, is the driver's. For the virtual board (the driver module that
 * stands in for a board, built beside the library), those numbers are
 * documented in docs/virtual-board.md and named in RynVirtualBoard.h; the
 * descriptions here say what the virtual board does with them where a value
 * is not obvious.
 *
 * A refused call sends nothing and writes no out-argument. After an exchange
 * with the driver, most calls write their out-arguments whatever the result;
 * the ResultCode says whether they mean anything. When the driver cannot be
 * reached a call returns RYN_RESULT_CALL_FAILED or RYN_RESULT_NO_REPLY.
 */
#ifndef RYN_HWDLL_H
#define RYN_HWDLL_H

#include <stdint.h>

#include "Osa.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Shared types ------------------------------------------------------- */

/** @cond RYN_INTERNAL */
/* A compile-time check that holds in C99 (a negative array size fails) and
 * in later C and C++. */
#if defined(__cplusplus)
#define RYN_STATIC_ASSERT(condition, name) static_assert(condition, #name)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define RYN_STATIC_ASSERT(condition, name) _Static_assert(condition, #name)
#else
#define RYN_STATIC_ASSERT(condition, name) typedef char ryn_static_assert_##name[(condition) ? 1 : -1]
#endif
/** @endcond */

/**
 * @brief The 32-bit result of every call outside the Osa layer.
 * @ingroup ryn_results
 */
typedef uint32_t ResultCode;

/**
 * @defgroup ryn_handles Handles
 * @brief Device handles, their kinds and the two pseudo-handles.
 *
 * A DeviceHandle is issued by the driver. Its top four bits give its kind,
 * (handle & RYN_HANDLE_KIND_MASK); the library tests only the kind and never
 * looks at the other bits. The calls that take "any driver object" accept the
 * kinds RYN_HANDLE_PHYSICAL to RYN_HANDLE_OTHER_6 and refuse every other
 * value (0 included) with RYN_ERROR_INVALID_HANDLE.
 * @{
 */
/** @brief A handle issued by the driver; its top four bits give its kind. */
typedef uint32_t DeviceHandle;

/* Handle kinds: (handle & RYN_HANDLE_KIND_MASK). */
#define RYN_HANDLE_KIND_MASK 0xF0000000u /**< Mask of the kind bits of a DeviceHandle. */
#define RYN_HANDLE_PHYSICAL 0x10000000u  /**< Kind 0x1: a physical device (board, span, DSP, channel, line). */
#define RYN_HANDLE_LOGICAL 0x20000000u   /**< Kind 0x2: a logical device; every signal-processing block is one. */
#define RYN_HANDLE_OTHER_3 0x30000000u   /**< Kind 0x3: another driver object (virtual board: event queues). */
#define RYN_HANDLE_PIPE 0x40000000u      /**< Kind 0x4: a pipe. */
#define RYN_HANDLE_OTHER_5 0x50000000u   /**< Kind 0x5: another driver object. */
#define RYN_HANDLE_OTHER_6 0x60000000u   /**< Kind 0x6: another driver object, the last of the driver-object kinds. */
#define RYN_DRIVER_PSEUDO_HANDLE 0x00000000u /**< The driver itself: its attributes (13: version text), its clock. */
#define RYN_LIBRARY_PSEUDO_HANDLE 0xFFFFFFFEu /**< The library itself: attributes 9 to 12, answered locally. */

/** @} */

/**
 * @brief An event record: eight 32-bit words, 32 bytes.
 * @ingroup ryn_events
 *
 * Used by driver events and by the application event queues. Words 0 and 1
 * hold a 64-bit value, low half first; word 2 of a record read from the
 * driver is a device type (the undecorated entry points translate it for
 * older drivers); the other words are the producer's. On the virtual board
 * a driver record holds the board time in words 0 and 1, the source's
 * device or block type in word 2, the event code in word 3, the source's
 * handle in word 4 and the event's values in words 5 to 7
 * (docs/virtual-board.md, "Events").
 */
typedef struct EventData {
    uint32_t word[8]; /**< The eight words; word 0 first. */
} EventData;

/* ---- Result codes ------------------------------------------------------- */

/**
 * @defgroup ryn_results Result codes
 * @brief Reading a ResultCode; the error numbers and module identifiers of
 * the codes the library raises itself.
 *
 * Layout of a ResultCode:
 * | Bits | Field |
 * |---|---|
 * | 31 | severity: 1 the call failed (the code is negative as a signed value) |
 * | 23..30 | SourceId of the module that raised the code (RYN_SOURCE_...) |
 * | 8..22 | source line of the check that raised it |
 * | 0..7 | error number (RYN_ERROR_... for the library's own codes) |
 *
 * 0 is success. A code with bit 31 clear and a nonzero error number is a
 * status, not a failure (RYN_ERROR_NOTHING_TO_READ, RYN_ERROR_WARNING), and
 * so are the wait results RYN_WAIT_ONE_SIGNALLED and RYN_WAIT_TIMEOUT.
 * Codes raised by the driver come back unchanged, in the same layout with
 * numbers of the driver's; the undecorated entry points reduce them to their
 * error number for drivers of levels 10120 to 10139. Test a result with
 * RynFailure() or RynSuccess(), not against 0.
 * @{
 */

/**
 * @name Fixed codes of the request transport
 * Returned when the driver could not be reached (SourceId 0x86, error 13);
 * they are constants, not built at run time.
 * @{
 */
#define RYN_RESULT_CALL_FAILED 0xC300AA0Du /**< The device I/O control request failed (line 170). */
#define RYN_RESULT_NO_REPLY 0xC300AD0Du    /**< No reply bytes came back (line 173); wins over CALL_FAILED. */
#define RYN_RESULT_HANDLE_CALL_FAILED 0xC300B90Du /**< As RYN_RESULT_CALL_FAILED, from RynDrvGetDeviceHandle() only. */
#define RYN_RESULT_HANDLE_NO_REPLY 0xC300BC0Du    /**< As RYN_RESULT_NO_REPLY, from RynDrvGetDeviceHandle() only. */
/** @} */

/**
 * @name Bare codes of the SLIC calls
 * The SLIC calls raise their failures as bit 31 and the error number alone
 * (SourceId 0, line 0).
 * @{
 */
#define RYN_RESULT_SLIC_RANGE 0x80000009u /**< A user name above 15 characters, or a number not of exactly 10. */
#define RYN_RESULT_SLIC_NO_LOCAL_TIME 0x80000005u /**< No local time for the clock (RynSlicSendCallerID()). */
#define RYN_RESULT_SLIC_NULL_POINTER 0x8000000Au  /**< A null name or number. */
/** @} */

/**
 * @name Wait results
 * Results of RynDrvWaitForSingleEvent() and RynDrvWaitForMultipleEvents()
 * that are not built from fields; none of them is a failure.
 * @{
 */
#define RYN_WAIT_SIGNALLED 0u     /**< RynDrvWaitForSingleEvent(): the event was signalled. */
#define RYN_WAIT_ONE_SIGNALLED 2u /**< RynDrvWaitForMultipleEvents(): signalled; the index was returned. */
#define RYN_WAIT_TIMEOUT 3u       /**< Either wait: the time-out ran out first. */
/** @} */

/**
 * @name Error numbers of the library's own codes
 * Bits 0..7 of the codes the library raises; failures (bit 31 set) unless
 * said otherwise. Driver codes carry numbers of the driver's.
 * @{
 */
#define RYN_ERROR_NOTHING_TO_READ 1u    /**< Status (bit 31 clear): nothing to read, e.g. an empty queue. */
#define RYN_ERROR_BAD_DATA 5u           /**< Data not in the expected form (program file, oversized reply). */
#define RYN_ERROR_NOT_PROVIDED 6u       /**< The operation is declared but not provided. */
#define RYN_ERROR_NO_TRANSFER_MEMORY 7u /**< Memory for a transfer buffer could not be had (burst, JTAG). */
#define RYN_ERROR_NO_MEMORY 8u          /**< Memory could not be had, or no free slot. */
#define RYN_ERROR_RANGE 9u              /**< An argument out of range: a count, length or value too large. */
#define RYN_ERROR_NULL_POINTER 10u      /**< A null pointer the call would read or write through. */
#define RYN_ERROR_INVALID_HANDLE 11u    /**< A handle of a kind the call does not take, zero, or not open. */
#define RYN_ERROR_LENGTH_MISMATCH 12u   /**< A length that does not match the data (DSP images). */
#define RYN_ERROR_FAILED 13u            /**< The operation failed (also in the fixed transport codes). */
#define RYN_ERROR_UNKNOWN_ATTRIBUTE 16u /**< An attribute the library pseudo-handle does not have. */
#define RYN_ERROR_NOT_AVAILABLE 17u     /**< Not available: no such module image, file format or tone setting. */
#define RYN_ERROR_NOT_CONNECTED 22u     /**< No driver connection is open. */
#define RYN_ERROR_WARNING 26u           /**< Status (bit 31 clear): a warning. */
#define RYN_ERROR_IMAGE_FULL 29u        /**< A DSP program image would not fit its buffer. */
/** @} */

/**
 * @name Module identifiers (SourceId)
 * Bits 23..30 of the codes the library raises: the module that raised it.
 * @{
 */
#define RYN_SOURCE_BOARD 0x66u      /**< Board controls; raises no code of its own. */
#define RYN_SOURCE_BRI 0x67u        /**< BRI. */
#define RYN_SOURCE_BURST 0x68u      /**< Burst transfer. */
#define RYN_SOURCE_DATA_MIXER 0x69u /**< Data converter and mixer. */
/** Device core: connection, devices, attributes, events, registers, application event queues. */
#define RYN_SOURCE_DEVICE 0x6Au
#define RYN_SOURCE_DSP 0x6Bu        /**< DSP access, program loader and built-in modules. */
#define RYN_SOURCE_HDLC 0x6Cu       /**< HDLC and SS7. */
#define RYN_SOURCE_JTAG 0x6Du       /**< JTAG. */
#define RYN_SOURCE_POTS 0x6Eu       /**< POTS line. */
#define RYN_SOURCE_RAW_DATA 0x6Fu   /**< Raw data. */
#define RYN_SOURCE_T1E1 0x70u       /**< T1/E1 framer control. */
#define RYN_SOURCE_TONE 0x71u       /**< Tone generators and detectors. */
#define RYN_SOURCE_TRANSPORT 0x86u  /**< Request transport: only inside the fixed transport codes. */
#define RYN_SOURCE_TELEPHONY 0x8Du  /**< Telephony blocks and the POTS line through a DSP block. */
#define RYN_SOURCE_SLIC 0x98u       /**< SLIC; its calls raise only the bare RYN_RESULT_SLIC_... codes. */
/** @} */

/**
 * @name Accessors
 * Take a code apart; they never fail and never touch the driver. All but
 * RynResultCode() exist only decorated.
 * @{
 */
/** @brief 1 when @p code is not a failure (read as signed 32-bit, >= 0), else 0. @param code the code. */
RYN_ENTRY_DECORATED(int32_t, RynSuccess, 4, (ResultCode code))
/** @brief 1 when @p code is a failure (bit 31 set), else 0. @param code the code. */
RYN_ENTRY_DECORATED(int32_t, RynFailure, 4, (ResultCode code))
/** @brief Bit 31 of @p code as 0 or 1. @param code the code. */
RYN_ENTRY_DECORATED(uint32_t, RynResultSeverity, 4, (ResultCode code))
/** @brief The SourceId, (code >> 23) & 0xFF. @param code the code. */
RYN_ENTRY_DECORATED(uint32_t, RynResultSourceId, 4, (ResultCode code))
/** @brief The source line, (code >> 8) & 0x7FFF. @param code the code. */
RYN_ENTRY_DECORATED(uint32_t, RynResultLineNum, 4, (ResultCode code))
/** @brief The error number, code & 0xFF. @param code the code. */
RYN_ENTRY_DECORATED(uint32_t, RynResultErrorCode, 4, (ResultCode code))
/**
 * @brief Takes a code apart into its four fields.
 *
 * A null pointer is skipped. The undecorated entry point translates nothing.
 * @param code the code.
 * @param errorCode receives the error number; for a failure whose number is
 *   29 or less bit 31 is kept (code & 0x800000FF), so it still reads as
 *   negative; a number above 29 comes alone.
 * @param severity receives bit 31 as 0 or 1.
 * @param sourceId receives the SourceId.
 * @param lineNum receives the source line.
 */
RYN_ENTRY(void, RynResultCode, 20,
          (ResultCode code, uint32_t *errorCode, uint32_t *severity, uint32_t *sourceId, uint32_t *lineNum))
/** @} */

/** @} */

/* ---- Driver connection -------------------------------------------------- */

/**
 * @defgroup ryn_connection Driver connection
 * @brief The process's one connection to the board driver.
 *
 * An application connects before it uses any device and releases when done.
 * A request sent while no connection is open returns RYN_RESULT_NO_REPLY.
 * Calls answered inside the library (accessors, the library pseudo-handle's
 * attributes, event objects and waits, iterators) work without a connection.
 * Codes raised here carry RYN_SOURCE_DEVICE.
 * @{
 */

/** @name Connecting */
/** @{ */
/**
 * RynDrvConnectLib() opens the driver device "RYNDRV" (RynNetConnectLib():
 * "RYNNET", a second driver device), prepares the application event queues
 * and announces the library's version (2.12.1.0) to the driver; the result
 * is the driver's answer to that announcement, and the connection stays open
 * whatever it is. Errors: RYN_ERROR_FAILED when a connection is already
 * open (it stays as it is), RYN_ERROR_INVALID_HANDLE when the device cannot
 * be opened. On this platform the device name is looked up among the driver
 * modules (see RynUserDriver.h): the virtual board answers both names.
 */
RYN_ENTRY(ResultCode, RynDrvConnectLib, 0, (void))
RYN_ENTRY(ResultCode, RynNetConnectLib, 0, (void))
/** @} */
/**
 * @brief Closes the connection and every open application event queue.
 *
 * Returns 0, or RYN_ERROR_INVALID_HANDLE when no connection is open. Release
 * only when no other thread still sends requests.
 */
RYN_ENTRY(ResultCode, RynDrvReleaseLib, 0, (void))
/**
 * @brief The operating-system handle of the open connection.
 * @param handle receives the handle (a file descriptor here).
 * @return 0; RYN_ERROR_NOT_CONNECTED when no connection is open, then
 *   RYN_ERROR_NULL_POINTER for a null @p handle.
 */
RYN_ENTRY(ResultCode, RynDrvGetHandle, 4, (OsaHandle * handle))

/** @} */

/* ---- Devices, boards, logical devices and pipes ------------------------- */

/**
 * @defgroup ryn_devices Devices, logical devices and pipes
 * @brief Finding, opening, creating, wiring and managing the driver's
 * objects.
 *
 * The driver owns every object; the library names them by DeviceHandle and
 * forwards the requests. Device types, device identifiers, ports, states and
 * the `paramN` arguments are the driver's numbering and pass unchanged (the
 * undecorated entry points translate device types for older drivers). On the
 * virtual board: the device tree, the block types created on a DSP and the
 * states are in docs/virtual-board.md ("Device tree", "Device core") and
 * RynVirtualBoard.h. Codes raised here carry RYN_SOURCE_DEVICE; a refused
 * call sends nothing and writes nothing.
 * @{
 */

/**
 * @name Enumeration
 * An enumeration runs from RynDrvIteratorBegin() (iterator 0) while
 * RynDrvIsIteratorEnd() gives 1: each enumeration call sends the iterator and
 * stores the driver's next value, -1 when nothing follows. @p parent is 0
 * for the top of the device tree or a device whose children are listed (on
 * the virtual board a DSP lists its block types and blocks). The out-values
 * are written after the exchange whatever the result; a null @p iterator,
 * @p deviceType or @p deviceId gives RYN_ERROR_NULL_POINTER.
 * @{
 */
/** @brief Sets @p iterator to 0. @param iterator the caller's iterator. @return 0, or RYN_ERROR_NULL_POINTER. */
RYN_ENTRY(ResultCode, RynDrvIteratorBegin, 4, (int32_t * iterator))
/**
 * @brief 1 while the enumeration can go on (the iterator is not -1), else 0;
 * 0 for a null @p iterator. Not a ResultCode.
 * @param iterator the caller's iterator.
 */
RYN_ENTRY(int32_t, RynDrvIsIteratorEnd, 4, (const int32_t *iterator))
/**
 * @brief The next device type under @p parent.
 * @param parent 0 for the board, or a device.
 * @param iterator the caller's iterator: sent, then the driver's next value.
 * @param deviceType receives the device type (translated for older drivers
 *   by the undecorated entry point).
 */
RYN_ENTRY(ResultCode, RynDrvEnumDeviceType, 12, (DeviceHandle parent, int32_t *iterator, int32_t *deviceType))
/**
 * @brief The next device of type @p deviceType under @p parent.
 * @param parent 0 for the board, or a device.
 * @param deviceType the device type.
 * @param iterator the caller's iterator: sent, then the driver's next value.
 * @param deviceId receives the device's number among those of its type.
 */
RYN_ENTRY(ResultCode, RynDrvEnumDevice, 16,
          (DeviceHandle parent, int32_t deviceType, int32_t *iterator, uint32_t *deviceId))
/** @} */

/**
 * @name Opening devices
 * @{
 */
/**
 * @brief The handle of device @p deviceId of type @p deviceType under @p parent.
 *
 * The transport codes of this call are RYN_RESULT_HANDLE_CALL_FAILED and
 * RYN_RESULT_HANDLE_NO_REPLY.
 * @param parent 0 for the board's devices, or the parent device.
 * @param deviceType the driver's device type.
 * @param deviceId the device's number among those of its type.
 * @param handle may be null; otherwise it receives -1, then the handle when
 *   the result is not a failure.
 */
RYN_ENTRY(ResultCode, RynDrvGetDeviceHandle, 16,
          (DeviceHandle parent, int32_t deviceType, uint32_t deviceId, DeviceHandle *handle))
/**
 * @brief Opens a physical device.
 *
 * The five values pass to the driver unchanged (the fourth and fifth change
 * places in the request); the virtual board takes (type, deviceId, 0, 0, 0).
 * @param param1 the driver's first value (virtual board: device type).
 * @param param2 the driver's second value (virtual board: device number).
 * @param param3 the driver's third value.
 * @param param4 the driver's fourth value.
 * @param param5 the driver's fifth value.
 * @param physicalDevice receives the handle, or -1 on a failure; null gives
 *   RYN_ERROR_NULL_POINTER.
 */
RYN_ENTRY(ResultCode, RynDrvOpenPhysicalDevice, 24,
          (uint32_t param1, uint32_t param2, uint32_t param3, uint32_t param4, uint32_t param5,
           DeviceHandle *physicalDevice))
/**
 * @brief Opens a physical device by three values of the driver's; nothing
 * comes back but the result.
 * @param param1 the driver's first value.
 * @param param2 the driver's second value.
 * @param param3 the driver's third value.
 */
RYN_ENTRY(ResultCode, RynDrvOpenPhysicalDeviceEx, 12, (uint32_t param1, uint32_t param2, uint32_t param3))
/**
 * @brief Creates a logical device (a signal-processing block) on a physical
 * device (a DSP).
 * @param physicalDevice must be a physical device, else
 *   RYN_ERROR_INVALID_HANDLE.
 * @param deviceType the block type (virtual board: the block types of
 *   docs/virtual-board.md, 100 to 150).
 * @param param3 the driver's value (virtual board: 0).
 * @param param4 the driver's value (virtual board: 0).
 * @param logicalDevice receives the handle, written only on success; null
 *   gives RYN_ERROR_NULL_POINTER.
 */
RYN_ENTRY(ResultCode, RynDrvCreateLogicalDevice, 20,
          (DeviceHandle physicalDevice, int32_t deviceType, uint32_t param3, uint32_t param4,
           DeviceHandle *logicalDevice))
/**
 * @brief Creates a pipe.
 * @param param1 the driver's value.
 * @param pipe receives the reply's handle whatever the result; null gives
 *   RYN_ERROR_NULL_POINTER.
 */
RYN_ENTRY(ResultCode, RynDrvCreatePipe, 8, (uint32_t param1, DeviceHandle *pipe))
/** @} */

/** @name Connecting objects */
/** @{ */
/**
 * RynDrvConnectLogicalDevice() and RynDrvDisconnectLogicalDevice() join and
 * part the output @p portA of @p handleA and the input @p portB of
 * @p handleB (on the virtual board the samples of a block feed the next).
 * The connect call leaves all checks to the driver; the disconnect call
 * takes only logical devices and pipes on both sides (else
 * RYN_ERROR_INVALID_HANDLE). RynDrvConnectBoard() joins two driver objects of
 * any kind (else RYN_ERROR_INVALID_HANDLE).
 */
RYN_ENTRY(ResultCode, RynDrvConnectLogicalDevice, 16,
          (DeviceHandle handleA, uint32_t portA, DeviceHandle handleB, uint32_t portB))
RYN_ENTRY(ResultCode, RynDrvDisconnectLogicalDevice, 16,
          (DeviceHandle handleA, uint32_t portA, DeviceHandle handleB, uint32_t portB))
/**
 * @brief Connects a pipe to a physical device, with up to 512 bytes of
 * connection data.
 * @param pipe must be a pipe, else RYN_ERROR_INVALID_HANDLE.
 * @param portA the pipe's port.
 * @param device must be a physical device, else RYN_ERROR_INVALID_HANDLE.
 * @param portB the device's port.
 * @param data the connection data, or null for none.
 * @param dataLength the byte count; with non-null @p data a negative count or
 *   one above 512 gives RYN_ERROR_RANGE.
 */
RYN_ENTRY(ResultCode, RynDrvConnectPipe, 24,
          (DeviceHandle pipe, uint32_t portA, DeviceHandle device, uint32_t portB, const uint8_t *data,
           int32_t dataLength))
/**
 * @brief Disconnects a pipe's port.
 * @param pipe must be a pipe, else RYN_ERROR_INVALID_HANDLE.
 * @param portA the pipe's port.
 */
RYN_ENTRY(ResultCode, RynDrvDisconnectPipe, 8, (DeviceHandle pipe, uint32_t portA))
RYN_ENTRY(ResultCode, RynDrvConnectBoard, 8, (DeviceHandle handleA, DeviceHandle handleB))
/** @} */

/** @name Enable and disable */
/** @{ */
/**
 * Enable or disable the driver object @p handle (any kind, else
 * RYN_ERROR_INVALID_HANDLE); @p param2 and @p param3 are the driver's. On
 * the virtual board the state becomes 1 (enabled) or 2 (disabled), with the
 * events "Device enabled" / "Device disabled"; a disabled block plays
 * silence and a disabled channel refuses data calls.
 */
RYN_ENTRY(ResultCode, RynDrvEnable, 12, (DeviceHandle handle, uint32_t param2, uint32_t param3))
RYN_ENTRY(ResultCode, RynDrvDisable, 12, (DeviceHandle handle, uint32_t param2, uint32_t param3))
/** @} */
/**
 * @brief The driver's state of an object (virtual board: 0 idle, 1 enabled,
 * 2 disabled).
 * @param handle not 0, else RYN_ERROR_INVALID_HANDLE.
 * @param state receives the state whatever the result; null gives
 *   RYN_ERROR_NULL_POINTER.
 */
RYN_ENTRY(ResultCode, RynDrvGetState, 8, (DeviceHandle handle, uint32_t *state))
/** @brief Resets an object to its starting state. @param handle not 0, else RYN_ERROR_INVALID_HANDLE. */
RYN_ENTRY(ResultCode, RynDrvReset, 4, (DeviceHandle handle))
/**
 * @brief Closes a driver object: a block, pipe or event queue ends; a
 * physical device returns to its starting state (its handle stays valid on
 * the virtual board).
 * @param handle any driver object, else RYN_ERROR_INVALID_HANDLE.
 */
RYN_ENTRY(ResultCode, RynDrvClose, 4, (DeviceHandle handle))

/** @} */

/* ---- Attributes --------------------------------------------------------- */

/**
 * @defgroup ryn_attributes Attributes
 * @brief Typed values of the driver, of every driver object and of the
 * library, addressed by a handle and a signed identifier.
 *
 * RYN_LIBRARY_PSEUDO_HANDLE is answered by the library alone: identifier 9
 * the version text "2.12.1.0" (9 bytes), 10 the version block (8 bytes:
 * 16-bit words 2, 12, 1, 0), 11 the module name (13 bytes), 12 the 32-bit
 * value 0; type codes 0 text, 3 binary, 2 unsigned 32-bit; flags 1. A value
 * is never truncated there: a buffer below 4 bytes or below the value's size
 * gives RYN_ERROR_RANGE, another identifier RYN_ERROR_UNKNOWN_ATTRIBUTE.
 * Every other handle asks the driver, with exactly the caller's buffer
 * length both ways; the driver reports the value's real size. The driver's
 * identifiers are its own (virtual board: attribute 13 of
 * RYN_DRIVER_PSEUDO_HANDLE is the driver version, 1 to 5 every object's type,
 * number, name, state and label, 30 and 31 the audio in and out of blocks,
 * 40 up the families' own; see docs/virtual-board.md, "Attributes").
 *
 * Library errors (RYN_SOURCE_DEVICE): RYN_ERROR_NULL_POINTER for a null
 * out-pointer, text or value (a null buffer or value is accepted with a
 * length of 0), RYN_ERROR_RANGE for a length whose request or reply block
 * would pass 2^32 bytes, RYN_ERROR_NO_MEMORY when that block cannot be
 * allocated. The undecorated entry points translate the identifier for older
 * drivers, whatever the handle.
 * @{
 */

/**
 * @brief The description of an attribute.
 * @param handle the object, 0 for the driver, RYN_LIBRARY_PSEUDO_HANDLE.
 * @param attribute the identifier.
 * @param type receives the type code (0 text, 1 Boolean, 2 unsigned 32-bit,
 *   3 binary); copied whatever the driver's result.
 * @param size receives the size in bytes (texts count their terminator).
 * @param flags receives the flags (virtual board: 1 read-only, 3 settable).
 */
RYN_ENTRY(ResultCode, RynDrvGetAttributeType, 20,
          (DeviceHandle handle, int32_t attribute, uint32_t *type, uint32_t *size, uint32_t *flags))
/**
 * @brief Reads an attribute's value.
 *
 * For a driver attribute the buffer goes to the driver and comes back
 * whatever the result, so bytes the driver does not write keep their value.
 * @param handle the object, 0 for the driver, RYN_LIBRARY_PSEUDO_HANDLE.
 * @param attribute the identifier.
 * @param buffer the caller's buffer, @p bufferLength bytes.
 * @param bufferLength its length in bytes.
 * @param returnedLength receives the value's size (may be null).
 */
RYN_ENTRY(ResultCode, RynDrvGetAttributeValue, 20,
          (DeviceHandle handle, int32_t attribute, void *buffer, uint32_t bufferLength, uint32_t *returnedLength))
/** @name Typed reads */
/** @{ */
/**
 * RynDrvGetAttributeValue() with @p value as a 4-byte buffer, or with
 * @p text and @p bufferLength; the returned length is dropped.
 */
RYN_ENTRY(ResultCode, RynDrvGetAttributeValueBool, 12, (DeviceHandle handle, int32_t attribute, uint32_t *value))
RYN_ENTRY(ResultCode, RynDrvGetAttributeValueUint32, 12, (DeviceHandle handle, int32_t attribute, uint32_t *value))
RYN_ENTRY(ResultCode, RynDrvGetAttributeValueSz, 16,
          (DeviceHandle handle, int32_t attribute, char *text, uint32_t bufferLength))
/** @} */
/**
 * @brief Sets an attribute; every set goes to the driver, the library
 * pseudo-handle's included.
 * @param handle the object.
 * @param attribute the identifier.
 * @param value the value's bytes.
 * @param valueLength their count.
 */
RYN_ENTRY(ResultCode, RynDrvSetAttributeValue, 16,
          (DeviceHandle handle, int32_t attribute, const void *value, uint32_t valueLength))
/** @name Typed sets */
/** @{ */
/**
 * RynDrvSetAttributeValue() with the 4 bytes of @p value, or with @p text
 * and its terminator.
 */
RYN_ENTRY(ResultCode, RynDrvSetAttributeValueBool, 12, (DeviceHandle handle, int32_t attribute, uint32_t value))
RYN_ENTRY(ResultCode, RynDrvSetAttributeValueUint32, 12, (DeviceHandle handle, int32_t attribute, uint32_t value))
RYN_ENTRY(ResultCode, RynDrvSetAttributeValueSz, 12, (DeviceHandle handle, int32_t attribute, const char *text))
/** @} */

/** @} */

/* ---- Driver events and event queues ------------------------------------- */

/**
 * @defgroup ryn_events Driver events and event queues
 * @brief Event objects, waits, the driver's event queues and records.
 *
 * The usual flow: create an event object with RynDrvCreateEvent(); create a
 * driver event queue for it with RynDrvCreateEventQueue(); wait on the event
 * (alone or with others, application event queues' events included); on a
 * wake-up read records with RynDrvGetEventData() until the driver has none;
 * close the queue with RynDrvClose() and the event with RynDrvCloseEvent().
 * The events are auto-reset, so one wake-up may stand for several records.
 * Event codes, and the meaning of the records' words, are the driver's: for
 * the virtual board, docs/virtual-board.md ("Events") and RynVirtualBoard.h.
 * Codes raised here carry RYN_SOURCE_DEVICE.
 * @{
 */

/**
 * @name Event objects
 * Unnamed auto-reset events, initially non-signalled; on this platform their
 * handles are file descriptors, closed by RynDrvCloseEvent() (or
 * OsaDeviceClose()), and a driver in the same process may signal one by
 * writing to it. They need no driver connection.
 * @{
 */
/**
 * @brief Creates an event object.
 * @param event receives the handle; a failed creation stores 0 and still
 *   returns 0. A null @p event gives RYN_ERROR_FAILED.
 */
RYN_ENTRY(ResultCode, RynDrvCreateEvent, 4, (OsaHandle * event))
/** @brief Signals @p event; RYN_ERROR_FAILED when that fails. @param event the event. */
RYN_ENTRY(ResultCode, RynDrvSignalEvent, 4, (OsaHandle event))
/** @brief Closes @p event; returns 0 whatever happens. @param event the event. */
RYN_ENTRY(ResultCode, RynDrvCloseEvent, 4, (OsaHandle event))
/**
 * @brief Waits for one event; a successful wait takes the signal.
 * @param event the event.
 * @param timeoutMs the time-out in milliseconds; 0xFFFFFFFF waits without
 *   limit.
 * @return RYN_WAIT_SIGNALLED, RYN_WAIT_TIMEOUT, or RYN_ERROR_INVALID_HANDLE
 *   (abandoned) and RYN_ERROR_FAILED (failed wait, e.g. not an event).
 */
RYN_ENTRY(ResultCode, RynDrvWaitForSingleEvent, 8, (OsaHandle event, uint32_t timeoutMs))
/**
 * @brief Waits for one of several events, or for all of them.
 *
 * Note the order: the time-out comes before the wait-all flag.
 * @param count the number of events, 1 to 64 (0 or more than 64: a failed
 *   wait).
 * @param events the events; null with a nonzero @p count gives
 *   RYN_ERROR_NULL_POINTER.
 * @param timeoutMs the time-out in milliseconds; 0xFFFFFFFF waits without
 *   limit.
 * @param waitAll 0: any one (the lowest signalled index is taken); nonzero:
 *   all of them, taken in one step.
 * @param index may be null; receives the index of the signalled event.
 * @return RYN_WAIT_ONE_SIGNALLED with the index; RYN_WAIT_TIMEOUT (index
 *   untouched); RYN_ERROR_FAILED for a failed wait (a count of 0 or above
 *   64, a handle that is not an event).
 */
RYN_ENTRY(ResultCode, RynDrvWaitForMultipleEvents, 20,
          (uint32_t count, const OsaHandle *events, uint32_t timeoutMs, int32_t waitAll, uint32_t *index))
/** @} */
/**
 * @brief Not provided: returns RYN_ERROR_NOT_PROVIDED whatever its
 * arguments, and sends nothing.
 * @param param1 not read.
 * @param param2 not read.
 */
RYN_ENTRY(ResultCode, RynDrvCancelTask, 8, (uint32_t param1, uint32_t param2))
/**
 * @brief Creates a driver event queue that signals an event object.
 *
 * Both values pass to the driver unchanged (with the connection's handle).
 * On the virtual board @p param1 is the source and @p param2 the event
 * object: the queue receives the events of that object (0: of every object;
 * a DSP's queue also those of its blocks) and the board signals the event
 * object whenever it queues a record; a queue holds 256 records and drops
 * its oldest when full.
 * @param param1 virtual board: the source, a handle or 0.
 * @param param2 virtual board: the event object from RynDrvCreateEvent().
 * @param queue receives the queue's handle whatever the result (virtual
 *   board: kind 0x3); null gives RYN_ERROR_NULL_POINTER.
 */
RYN_ENTRY(ResultCode, RynDrvCreateEventQueue, 12, (uint32_t param1, uint32_t param2, DeviceHandle *queue))
/**
 * @brief Asks the driver to look at an object's events (virtual board: a
 * queue holding records signals its event object again).
 * @param handle any driver object, else RYN_ERROR_INVALID_HANDLE.
 */
RYN_ENTRY(ResultCode, RynDrvPollEvents, 4, (DeviceHandle handle))
/**
 * @brief Takes the oldest record of a driver event queue.
 *
 * On the virtual board an empty queue answers a status (bit 31 clear) with
 * error number 1. The undecorated entry point translates word 2.
 * @param handle the queue.
 * @param record receives the record whatever the result; null gives
 *   RYN_ERROR_NULL_POINTER.
 */
RYN_ENTRY(ResultCode, RynDrvGetEventData, 8, (DeviceHandle handle, EventData *record))
/**
 * @brief Takes several records at once: the driver writes up to @p param3
 * records into @p records.
 * @param handle the queue.
 * @param records the caller's array of @p param3 records.
 * @param param3 the array's size in records (virtual board: the most to take).
 * @param count receives the driver's count whatever the result; null gives
 *   RYN_ERROR_NULL_POINTER.
 */
RYN_ENTRY(ResultCode, RynDrvGetEventDataEx, 16,
          (DeviceHandle handle, EventData *records, uint32_t param3, uint32_t *count))
/** @name Writing records */
/** @{ */
/**
 * Words 2 to 7 of a record (@p w2 .. @p w7), and with the Ex call words 0 and
 * 1 (@p w0, @p w1), which come last in the argument list. On the virtual
 * board a queue handle queues the record there; any other object's handle
 * posts it to every queue that listens to the object, with the board time in
 * words 0 and 1 unless the Ex call gives them.
 */
RYN_ENTRY(ResultCode, RynDrvSetEventData, 28,
          (DeviceHandle handle, uint32_t w2, uint32_t w3, uint32_t w4, uint32_t w5, uint32_t w6, uint32_t w7))
RYN_ENTRY(ResultCode, RynDrvSetEventDataEx, 36,
          (DeviceHandle handle, uint32_t w2, uint32_t w3, uint32_t w4, uint32_t w5, uint32_t w6, uint32_t w7,
           uint32_t w0, uint32_t w1))
/** @} */
/**
 * @brief The driver's text for an event code.
 *
 * The text is copied from the reply, at most 255 characters, always
 * terminated.
 * @param handle passed to the driver; the virtual board ignores it.
 * @param eventCode the event code (word 3 of a virtual-board record); the
 *   virtual board refuses an unknown code with its error 9.
 * @param param3 the driver's value; the virtual board ignores it.
 * @param text at least 256 bytes; null gives RYN_ERROR_NULL_POINTER.
 */
RYN_ENTRY(ResultCode, RynDrvEventCode2String, 16,
          (DeviceHandle handle, uint32_t eventCode, uint32_t param3, char *text))

/** @} */

/* ---- Registers, time and diagnostics ------------------------------------ */

/**
 * @defgroup ryn_registers Registers, time and diagnostics
 * @brief Register access, the driver's clock, the watchdog, dumps and
 * result-code texts.
 *
 * The library checks only out-pointers here (RYN_ERROR_NULL_POINTER,
 * RYN_SOURCE_DEVICE); every other failure is the driver's or the
 * transport's.
 * @{
 */

/** @name Register access */
/** @{ */
/**
 * Every width moves a 32-bit word between the library and the driver; the
 * widths differ only in their requests. A read stores the driver's word
 * through @p value whatever the result. Offsets and the width rules are the
 * driver's (virtual board: cells of 32 bits for every object and handle 0;
 * an 8- or 16-bit write of a wider value is refused with its error 9, and a
 * read is masked to its width).
 */
RYN_ENTRY(ResultCode, RynDrvReadReg8, 12, (DeviceHandle handle, uint32_t registerOffset, uint32_t *value))
RYN_ENTRY(ResultCode, RynDrvReadReg16, 12, (DeviceHandle handle, uint32_t registerOffset, uint32_t *value))
RYN_ENTRY(ResultCode, RynDrvReadReg32, 12, (DeviceHandle handle, uint32_t registerOffset, uint32_t *value))
RYN_ENTRY(ResultCode, RynDrvWriteReg8, 12, (DeviceHandle handle, uint32_t registerOffset, uint32_t value))
RYN_ENTRY(ResultCode, RynDrvWriteReg16, 12, (DeviceHandle handle, uint32_t registerOffset, uint32_t value))
RYN_ENTRY(ResultCode, RynDrvWriteReg32, 12, (DeviceHandle handle, uint32_t registerOffset, uint32_t value))
/** @} */
/**
 * @brief The driver's clock.
 * @param time receives 100-ns intervals since 1601-01-01 whatever the result
 *   (subtract 116444736000000000 and divide by 10000000 for seconds since
 *   1970); null gives RYN_ERROR_NULL_POINTER. The virtual board's clock
 *   advances with the samples its blocks process.
 */
RYN_ENTRY(ResultCode, RynDrvGetCurrentTime, 4, (uint64_t * time))
/** @brief Starts the board's watchdog. @param unused not sent. */
RYN_ENTRY(ResultCode, RynStartWatchdogTimer, 4, (uint32_t unused))
/**
 * @brief Asks the driver to dump its state; what and where is the driver's.
 * @param param1 the driver's value.
 * @param param2 the driver's value.
 */
RYN_ENTRY(ResultCode, RynDrvDbgDump, 8, (uint32_t param1, uint32_t param2))
/**
 * @brief The driver writes a one-line text for a result code into the
 * caller's buffer (the library copies nothing back).
 * @param handle passed to the driver.
 * @param resultCode the code to describe.
 * @param text the caller's buffer, reached by the driver by address.
 * @param textLength its length in bytes.
 */
RYN_ENTRY(ResultCode, RynDrvResultCode2String, 16,
          (DeviceHandle handle, ResultCode resultCode, char *text, uint32_t textLength))

/** @} */

/* ---- DSP access ---------------------------------------------------------- */

/**
 * @defgroup ryn_dsp DSP access
 * @brief Messages to the program on a DSP, data and host-port reads and
 * writes, program restart.
 *
 * Every call takes a handle of any driver object (else
 * RYN_ERROR_INVALID_HANDLE, RYN_SOURCE_DSP, nothing sent). Commands,
 * parameters and values are the driver's and the DSP program's; for the
 * virtual board's DSPs see docs/virtual-board.md, "DSPs".
 * @{
 */

/**
 * @brief A message to the DSP program and its answer.
 * @param handle the DSP.
 * @param command the command (virtual board: 0 echoes the input, 1 answers
 *   the module and entry address; needs a running program).
 * @param input the input bytes; null with a nonzero length gives
 *   RYN_ERROR_NULL_POINTER.
 * @param inputLength up to 1984 bytes, else RYN_ERROR_RANGE.
 * @param output the caller's buffer; null with a nonzero size gives
 *   RYN_ERROR_NULL_POINTER.
 * @param outputSize its size; up to that many answer bytes are copied.
 * @param outputLength may be null; receives the answer's full length, which
 *   can exceed what was copied (at most 1984), and 0 when the driver was not
 *   reached.
 * @param paramA passed to the driver.
 * @param paramB passed to the driver.
 */
RYN_ENTRY(ResultCode, RynDspIoControl, 36,
          (DeviceHandle handle, uint16_t command, const void *input, uint32_t inputLength, void *output,
           uint32_t outputSize, uint32_t *outputLength, uint32_t paramA, uint32_t paramB))
/**
 * @brief Reads data of the DSP (virtual board: @p param1 the memory page,
 * @p param2 the address, @p param3 the count, 1 or 2 units).
 * @param handle the DSP.
 * @param param1 the driver's first value.
 * @param param2 the driver's second value (sent after @p param3).
 * @param param3 the driver's third value.
 * @param out1 may be null; receives the driver's first value whatever the
 *   result (virtual board: the unit at the address).
 * @param out2 may be null; receives the second (the unit after it, 0 past the
 *   count).
 */
RYN_ENTRY(ResultCode, RynDspReadData, 24,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3, uint32_t *out1, uint32_t *out2))
/** @name Host-port access */
/** @{ */
/**
 * Three values of the driver's, sent in order; nothing comes back but the
 * result. Virtual board: RynDspWriteHpi(dsp, page, address, value) stores one
 * unit; RynDspReadHpi(dsp, page, address, count) copies 1 to 64 units into
 * the DSP's registers 0x1000 + 2·i, read with RynDrvReadReg16().
 */
RYN_ENTRY(ResultCode, RynDspReadHpi, 16, (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3))
RYN_ENTRY(ResultCode, RynDspWriteHpi, 16, (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3))
/** @} */
/** @brief Restarts the program loaded on the DSP. @param handle the DSP. */
RYN_ENTRY(ResultCode, RynDspRestartProgram, 4, (DeviceHandle handle))

/** @} */

/* ---- DSP program loader -------------------------------------------------- */

/**
 * @defgroup ryn_dsp_loader DSP program loader
 * @brief Loading TI COFF program files into a DSP, making program images,
 * running images.
 *
 * Program files are TI COFF object files, version 1 or 2 (word target 0x0098
 * or byte target 0x009C), little-endian. The entry address is the first
 * section's address when that section is ".text" (else 0), unless
 * `entryName` names it: a hexadecimal number ("0x7E16", "7E16h") or a symbol
 * of the file. A null `entryName` is an empty one.
 *
 * A load holds the DSP, waits 50 ms, transfers the program and starts it; a
 * failed transfer disables the DSP and cancels the load, a failed start
 * disables it. Errors (RYN_SOURCE_DSP): RYN_ERROR_FAILED for a file that
 * cannot be opened or an entry name that matches nothing; RYN_ERROR_BAD_DATA
 * for a file that ends early or points outside itself (found before anything
 * is sent); RYN_ERROR_NOT_AVAILABLE for an unsupported version or target;
 * RYN_ERROR_INVALID_HANDLE for a handle of no driver-object kind.
 * @{
 */

/**
 * @brief Loads a program file into a DSP and starts it.
 *
 * A file whose base name is "rynspm1" (any case) is started as a built-in
 * module (module flag 1).
 * @param handle the DSP (any driver object).
 * @param fileName the program file.
 * @param entryName the entry: empty, a hexadecimal address or a symbol.
 */
RYN_ENTRY(ResultCode, RynDspRunProgram, 12, (DeviceHandle handle, const char *fileName, const char *entryName))
/**
 * @brief Makes a command-stream image of a program file (word targets only).
 * @param fileName the program file; a byte-target file gives
 *   RYN_ERROR_NOT_PROVIDED.
 * @param entryName the entry: empty, a hexadecimal address or a symbol.
 * @param capacity the buffer's size in words.
 * @param buffer the image; null with a nonzero capacity gives
 *   RYN_ERROR_NULL_POINTER.
 * @param used receives the words written, also after a failure
 *   (RYN_ERROR_IMAGE_FULL when the image does not fit); null gives
 *   RYN_ERROR_NULL_POINTER.
 * @param entry receives the entry address on success; null gives
 *   RYN_ERROR_NULL_POINTER.
 */
RYN_ENTRY(ResultCode, RynDspCreateProgramImage, 24,
          (const char *fileName, const char *entryName, uint16_t capacity, uint16_t *buffer, uint16_t *used,
           uint32_t *entry))
/**
 * @brief Makes a record image of a program file (version 2 files only: a
 * version 1 file gives RYN_ERROR_NOT_AVAILABLE).
 * @param fileName the program file.
 * @param entryName the entry: empty, a hexadecimal address or a symbol.
 * @param capacity the buffer's size in words; below 5 gives RYN_ERROR_RANGE.
 * @param buffer the image; null with a nonzero capacity gives
 *   RYN_ERROR_NULL_POINTER.
 * @param used receives the words written, also after a failure
 *   (RYN_ERROR_IMAGE_FULL when a record does not fit); null gives
 *   RYN_ERROR_NULL_POINTER.
 * @param entry receives the entry address on success; null gives
 *   RYN_ERROR_NULL_POINTER.
 */
RYN_ENTRY(ResultCode, RynDspCreateProgramImageEx, 24,
          (const char *fileName, const char *entryName, uint32_t capacity, uint16_t *buffer, uint32_t *used,
           uint32_t *entry))
/**
 * @brief Ships a program image to a DSP and starts it.
 *
 * A record image whose records do not end exactly at @p length, or a record
 * of more than 256 bytes, gives RYN_ERROR_LENGTH_MISMATCH before that record
 * is sent; any failure while shipping disables the DSP and cancels the load.
 * @param handle the DSP (any driver object).
 * @param image the image; null with a nonzero length gives
 *   RYN_ERROR_NULL_POINTER.
 * @param length its length in words.
 * @param entry the entry address.
 */
RYN_ENTRY(ResultCode, RynDspRunImage, 16, (DeviceHandle handle, const uint16_t *image, uint16_t length, uint32_t entry))

/** @} */

/* ---- Built-in signal-processing modules --------------------------------- */

/**
 * @defgroup ryn_spm Built-in signal-processing modules
 * @brief Ready-made DSP programs carried by the library.
 * @{
 */

/**
 * @brief Runs the built-in module image that fits the DSP type the driver
 * reports for @p handle, as RynDspRunImage() does.
 *
 * Modules 4, 5, 12 and 13 are the HDLC modules. The undecorated entry point
 * renumbers the module for older drivers. Errors (RYN_SOURCE_DSP), in this
 * order: RYN_ERROR_INVALID_HANDLE; the DSP type query's failure;
 * RYN_ERROR_RANGE for a module other than 0 to 6 and 10 to 13;
 * RYN_ERROR_NOT_AVAILABLE when the module has no image for the DSP type
 * (virtual board: DSP 0 is type 1, DSP 1 type 5).
 * @param handle the DSP (any driver object).
 * @param module the module identifier.
 */
RYN_ENTRY(ResultCode, RynDspRunSpm, 8, (DeviceHandle handle, uint32_t module))

/** @} */

/* ---- T1/E1 framer control ----------------------------------------------- */

/**
 * @defgroup ryn_t1e1 T1/E1 framer control
 * @brief Line-interface mode, framer configuration, alarms, loops, status,
 * PRBS and the signalling bits of a T1 or E1 span.
 *
 * Every value passes to the driver unchanged and the driver checks it; the
 * handle's kind is not tested. Getters write their out-values whatever the
 * result. A null record or out pointer gives RYN_ERROR_NULL_POINTER
 * (RYN_SOURCE_T1E1), nothing sent; otherwise every failure is the driver's.
 *
 * On the virtual board (docs/virtual-board.md, "T1/E1 spans") the two spans
 * are joined by a virtual cable: setters act on a span's own settings and
 * transmitter, the signalling getters read what it receives from the far
 * span. Layer-1 status word: bit 0 frame sync, 1 loss of signal, 2 AIS
 * received, 3 RAI received, 4 a loop is set, 5 PRBS sync. Changes post
 * "Layer 1 status changed", "Alarm state changed" and "Signalling bits
 * changed".
 * @{
 */

/** @brief The framer configuration of a T1 span: 60 bytes of the driver's, sent whole. */
typedef struct T1Configuration {
    uint8_t bytes[60]; /**< The record's bytes (virtual board: stored as they come). */
} T1Configuration;
/** @brief The framer configuration of an E1 span: 56 bytes of the driver's, sent whole. */
typedef struct E1Configuration {
    uint8_t bytes[56]; /**< The record's bytes (virtual board: stored as they come). */
} E1Configuration;
/**
 * @brief The extended layer-1 status: 20 bytes of the driver's.
 *
 * Virtual board: offset 0 the status word, 4 the alarms transmitted, 8 bit
 * errors and 10 code violations received (16 bits each), 12 the
 * resynchronisations, 16 to 19 mode, loop, termination and monitor mode.
 */
typedef struct Layer1StatusEx {
    uint8_t bytes[20]; /**< The record's bytes. */
} Layer1StatusEx;
/** @brief Robbed-bit signalling of all channels (virtual board: slot n in byte n/2, low nibble first). */
typedef struct RobBitData {
    uint8_t bytes[16]; /**< The record's bytes. */
} RobBitData;
/** @brief ABCD signalling of all channels (virtual board: slot n in byte n/2, low nibble first). */
typedef struct ABCDBitData {
    uint8_t bytes[16]; /**< The record's bytes. */
} ABCDBitData;
RYN_STATIC_ASSERT(sizeof(T1Configuration) == 60, T1Configuration_is_60_bytes);
RYN_STATIC_ASSERT(sizeof(E1Configuration) == 56, E1Configuration_is_56_bytes);
RYN_STATIC_ASSERT(sizeof(Layer1StatusEx) == 20, Layer1StatusEx_is_20_bytes);
RYN_STATIC_ASSERT(sizeof(RobBitData) == 16, RobBitData_is_16_bytes);
RYN_STATIC_ASSERT(sizeof(ABCDBitData) == 16, ABCDBitData_is_16_bytes);

/**
 * @brief Sets the line-interface mode (virtual board: 0 T1, the default, 1
 * E1; spans in different modes get no frame sync).
 * @param handle the span.
 * @param mode the mode.
 */
RYN_ENTRY(ResultCode, RynT1E1SetLiMode, 8, (DeviceHandle handle, uint32_t mode))
/** @name Configuration records */
/** @{ */
/**
 * The whole record @p config, copied byte for byte into the request or out
 * of the reply (virtual board: stored whole, all zero at the start).
 */
RYN_ENTRY(ResultCode, RynT1SetConfiguration, 8, (DeviceHandle handle, const T1Configuration *config))
RYN_ENTRY(ResultCode, RynT1GetConfiguration, 8, (DeviceHandle handle, T1Configuration *config))
RYN_ENTRY(ResultCode, RynE1SetConfiguration, 8, (DeviceHandle handle, const E1Configuration *config))
RYN_ENTRY(ResultCode, RynE1GetConfiguration, 8, (DeviceHandle handle, E1Configuration *config))
/** @} */
/** @name Alarms, loops and resynchronisation */
/** @{ */
/**
 * RynT1E1AlarmOn() / RynT1E1AlarmOff() start and stop sending the alarms of
 * @p alarm; RynT1E1SetLineLoop() sets @p loop; RynT1E1ForceResynch() makes
 * the framer resynchronise. Virtual board: @p alarm a mask, bit 0 AIS, bit 1
 * RAI (0 or other bits refused); AIS takes the far span out of frame sync
 * (its status word reads AIS received without sync, it receives all zeros
 * in place of the signalling and sends RAI back by itself); @p loop 0 none,
 * 1 local (the span's own signal back to itself), 2 remote (what the span
 * receives goes back to the far span); resynchronisations are counted.
 */
RYN_ENTRY(ResultCode, RynT1E1AlarmOn, 8, (DeviceHandle handle, uint32_t alarm))
RYN_ENTRY(ResultCode, RynT1E1AlarmOff, 8, (DeviceHandle handle, uint32_t alarm))
RYN_ENTRY(ResultCode, RynT1E1SetLineLoop, 8, (DeviceHandle handle, uint32_t loop))
RYN_ENTRY(ResultCode, RynT1E1ForceResynch, 4, (DeviceHandle handle))
/** @} */
/**
 * @brief The layer-1 status word.
 * @param handle the span.
 * @param status receives the word whatever the result (virtual board: bits
 *   as above, both spans starting at 0x01); null gives
 *   RYN_ERROR_NULL_POINTER.
 */
RYN_ENTRY(ResultCode, RynT1E1GetLayer1Status, 8, (DeviceHandle handle, uint32_t *status))
/** @name Transmitter, termination, monitor and PRBS */
/** @{ */
/**
 * One or two values of the driver's each. Virtual board:
 * RynT1E1XmitPinControl() @p control 0 transmitter off (the far span loses
 * its signal), 1 on (the default); RynT1E1SetLineTermination() @p termination
 * 0 100 Ω, 1 120 Ω, 2 75 Ω; RynT1E1SetMonitorMode() @p mode 0 or 1;
 * RynT1E1SetPrbsConfig() @p param1 the pattern (0 off, 1 2^15−1, 2 2^20−1,
 * 3 2^23−1), @p param2 0 normal or 1 inverted.
 */
RYN_ENTRY(ResultCode, RynT1E1XmitPinControl, 8, (DeviceHandle handle, uint32_t control))
RYN_ENTRY(ResultCode, RynT1E1SetLineTermination, 8, (DeviceHandle handle, uint32_t termination))
RYN_ENTRY(ResultCode, RynT1E1SetMonitorMode, 8, (DeviceHandle handle, uint32_t mode))
RYN_ENTRY(ResultCode, RynT1E1SetPrbsConfig, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
/** @} */
/** @name Signalling bits */
/** @{ */
/**
 * Robbed bits (T1) and ABCD bits (E1) of all channels as a 16-byte record
 * @p bits, or of one @p channel as the byte @p bits; the Sa bits chosen by
 * @p selector as @p value, and the two Si bytes @p value1, @p value2 (E1).
 * Setters set what the span transmits; getters read what it receives and
 * write their out-values whatever the result. Virtual board: T1 slots 1 to
 * 24, E1 slots 1 to 15 and 17 to 31, values 0 to 0x0F; Sa selectors 4 to 8;
 * robbed bits need T1 mode and ABCD, Sa and Si E1 mode (else its error 13);
 * without frame sync a span receives zeros; transmitted values start as
 * signalling 0, Sa and Si 0xFF.
 */
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
/** @} */
/** @name Data link and defects */
/** @{ */
/**
 * RynT1SetDlBitData() sets the data-link bits @p dlBits the span transmits
 * (T1; virtual board: the far span reads them as its attribute 42).
 * RynT1E1InsertSingleBitDefect() puts one @p defect into the transmitted
 * signal (virtual board: 0 a bit error, 1 a code violation, counted by the
 * span that receives it).
 */
RYN_ENTRY(ResultCode, RynT1SetDlBitData, 8, (DeviceHandle handle, uint32_t dlBits))
RYN_ENTRY(ResultCode, RynT1E1InsertSingleBitDefect, 8, (DeviceHandle handle, uint32_t defect))
/** @} */
/**
 * @brief The extended layer-1 status record.
 * @param handle the span.
 * @param statusEx receives the record whatever the result; null gives
 *   RYN_ERROR_NULL_POINTER.
 */
RYN_ENTRY(ResultCode, RynT1E1GetLayer1StatusEx, 8, (DeviceHandle handle, Layer1StatusEx *statusEx))

/** @} */

/* ---- BRI ------------------------------------------------------------------ */

/**
 * @defgroup ryn_bri BRI
 * @brief ISDN BRI interface calls: declared but not provided.
 *
 * Every call returns RYN_ERROR_NOT_PROVIDED (RYN_SOURCE_BRI), reads none of
 * its arguments and sends nothing, even without a connection.
 * @{
 */
/** @name Not provided */
/** @{ */
/**
 * Returns RYN_ERROR_NOT_PROVIDED (RYN_SOURCE_BRI) whatever its arguments;
 * nothing is read, written or sent.
 */
RYN_ENTRY(ResultCode, RynBriSetLiMode, 8, (DeviceHandle handle, uint32_t mode))
RYN_ENTRY(ResultCode, RynBriConfigureMonitor, 8, (DeviceHandle handle, uint32_t param1))
RYN_ENTRY(ResultCode, RynBriGetLineStatus, 8, (DeviceHandle handle, uint32_t *status))
RYN_ENTRY(ResultCode, RynBriActivateLink, 8, (DeviceHandle handle, uint32_t param1))
RYN_ENTRY(ResultCode, RynBriDeactivateLink, 8, (DeviceHandle handle, uint32_t param1))
RYN_ENTRY(ResultCode, RynBriTermLi, 8, (DeviceHandle handle, uint32_t param1))
/** @} */
/** @} */

/* ---- POTS and SLIC ------------------------------------------------------- */

/**
 * @defgroup ryn_pots_slic POTS and SLIC
 * @brief The two analogue telephone interfaces: the POTS line (the board as a
 * telephone set on an exchange line) and the SLIC line (the board as the
 * exchange for a telephone set).
 *
 * The handle's kind is not tested. Out-values are written from the reply
 * whatever the result; a null out pointer is skipped. POTS failures carry
 * RYN_SOURCE_POTS; the SLIC calls raise only the bare codes
 * RYN_RESULT_SLIC_RANGE, RYN_RESULT_SLIC_NO_LOCAL_TIME and
 * RYN_RESULT_SLIC_NULL_POINTER. Settings and states are the driver's; for the
 * virtual board see docs/virtual-board.md, "POTS line" and "SLIC line".
 * @{
 */

/** @name POTS hook */
/** @{ */
/**
 * Take the line off hook and put it on hook. Virtual board: a change posts
 * "Hook state changed" (word 5: 1 off hook, 0 on hook) and clears the digits
 * dialled and the flash count; going off hook while the exchange rings the
 * line answers it ("Ringing stopped", word 5 = 1).
 */
RYN_ENTRY(ResultCode, RynPotsOffHook, 4, (DeviceHandle handle))
RYN_ENTRY(ResultCode, RynPotsOnHook, 4, (DeviceHandle handle))
/** @} */
/**
 * @brief Flashes the hook.
 *
 * Virtual board: the line must be off hook (else its error 13); the flash is
 * counted (attribute 43) and the digits dialled so far are dropped.
 * @param handle the line.
 * @param param1 the flash time (virtual board: any value but 0, else its
 *   error 9).
 * @param param2 the driver's setting (virtual board: accepted, not used).
 * @param param3 the driver's setting (virtual board: accepted, not used).
 */
RYN_ENTRY(ResultCode, RynPotsHookFlash, 16, (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3))
/**
 * @brief Dials digits by loop-disconnect pulses.
 *
 * The characters are not examined by the library. Virtual board: the line
 * must be off hook (else its error 13), the digits '0' to '9' (else its
 * error 5); they are appended to attribute 42. The five settings are the
 * dialling timing of the driver's; the virtual board accepts any values and
 * does not use them.
 * @param handle the line.
 * @param param1 the driver's setting.
 * @param param2 the driver's setting.
 * @param param3 the driver's setting.
 * @param digits the digits, not terminated; null with a nonzero count gives
 *   RYN_ERROR_NULL_POINTER.
 * @param digitCount up to 127 (128 or more: RYN_ERROR_RANGE, nothing sent).
 * @param param6 the driver's setting.
 * @param param7 the driver's setting.
 */
RYN_ENTRY(ResultCode, RynPotsPulseDial, 32,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3, const uint8_t *digits,
           uint32_t digitCount, uint32_t param6, uint32_t param7))
/** @name POTS line-interface mode */
/** @{ */
/**
 * Sets or reads @p mode (virtual board: 0 600 Ω, 1 900 Ω, 2 complex
 * impedance).
 */
RYN_ENTRY(ResultCode, RynPotsSetLiMode, 8, (DeviceHandle handle, uint32_t mode))
RYN_ENTRY(ResultCode, RynPotsGetLiMode, 8, (DeviceHandle handle, uint32_t *mode))
/** @} */
/**
 * @brief Holds the SLIC in reset or releases it.
 * @param handle the line.
 * @param state virtual board: 1 holds it in reset (ringing stops with
 *   "Ringing stopped", word 5 = 2; tone and audio end; tone, ring, audio,
 *   disconnect and caller-identification calls fail with its error 13), 0
 *   releases it.
 */
RYN_ENTRY(ResultCode, RynSlicSetResetPin, 8, (DeviceHandle handle, uint32_t state))
/** @name SLIC tones */
/** @{ */
/**
 * Play the dial, busy, reorder, congestion or ring-back tone to the set;
 * there is no call that only stops a tone. Virtual board: a tone lasts until
 * another tone, ringing, audio on, a disconnect, hanging up or a reset
 * (attribute 41: 1 dial to 5 ring-back).
 */
RYN_ENTRY(ResultCode, RynSlicEnableDialTone, 4, (DeviceHandle handle))
RYN_ENTRY(ResultCode, RynSlicEnableBusyTone, 4, (DeviceHandle handle))
RYN_ENTRY(ResultCode, RynSlicEnableReorderTone, 4, (DeviceHandle handle))
RYN_ENTRY(ResultCode, RynSlicEnableCongestionTone, 4, (DeviceHandle handle))
RYN_ENTRY(ResultCode, RynSlicEnableRingBackTone, 4, (DeviceHandle handle))
/** @} */
/**
 * @brief The set's hook state.
 * @param handle the line.
 * @param state receives the state (virtual board: 1 off hook, 0 on hook).
 */
RYN_ENTRY(ResultCode, RynSlicGetHookState, 8, (DeviceHandle handle, uint32_t *state))
/** @name SLIC ringing, audio and disconnect */
/** @{ */
/**
 * Each @p status receives the driver's status (virtual board: the line's
 * state word, bit 0 handset off hook, 1 ringing, 2 audio on, 3 held in
 * reset). RynSlicStartRingState() waits 200 ms before it asks the driver to
 * ring; virtual board: refused with its error 13 when the handset is off
 * hook, posts "Ringing started". RynSlicStopRingState() posts "Ringing
 * stopped" (word 5 = 0). RynSlicEnableAudio() switches the audio path on and
 * ends the tone. RynSlicSignalDisconnectState() signals a disconnect,
 * @p param1 1 open loop or 2 polarity reversal on the virtual board.
 *
 * When the handset answers (on the virtual board: attribute 40 set to 1,
 * which simulates the phone) the line posts "Hook state changed" with word 5
 * = 1, then, if it was ringing, "Ringing stopped" with word 5 = 1
 * (answered); hanging up (0) posts "Hook state changed" with word 5 = 0 and
 * ends audio and tone.
 */
RYN_ENTRY(ResultCode, RynSlicStartRingState, 8, (DeviceHandle handle, uint32_t *status))
RYN_ENTRY(ResultCode, RynSlicStopRingState, 8, (DeviceHandle handle, uint32_t *status))
RYN_ENTRY(ResultCode, RynSlicEnableAudio, 8, (DeviceHandle handle, uint32_t *status))
RYN_ENTRY(ResultCode, RynSlicSignalDisconnectState, 12, (DeviceHandle handle, uint32_t param1, uint32_t *status))
/** @} */
/** @name SLIC caller identification */
/** @{ */
/**
 * RynSlicSetUserName() sends a @p name of at most 15 characters,
 * RynSlicSetPhoneNumber() a @p number of exactly 10 (longer or shorter:
 * RYN_RESULT_SLIC_RANGE; null: RYN_RESULT_SLIC_NULL_POINTER; nothing sent,
 * @p status untouched; the virtual board takes digits only, else its error
 * 5). RynSlicSendCallerID() sends the date and time of the call, MMDDhhmm
 * in local time from the driver's clock: when the clock cannot be read its
 * failure is returned, and when it gives no local time
 * RYN_RESULT_SLIC_NO_LOCAL_TIME; in both cases 0 is stored through
 * @p status and nothing more is sent. The virtual board keeps the message
 * "MMDDhhmm number name" as attribute 42. @p status receives the driver's
 * status as above.
 */
RYN_ENTRY(ResultCode, RynSlicSetUserName, 12, (DeviceHandle handle, const char *name, uint32_t *status))
RYN_ENTRY(ResultCode, RynSlicSetPhoneNumber, 12, (DeviceHandle handle, const char *number, uint32_t *status))
RYN_ENTRY(ResultCode, RynSlicSendCallerID, 8, (DeviceHandle handle, uint32_t *status))
/** @} */

/** @} */

/* ---- Board controls and JTAG ------------------------------------------------ */

/**
 * @defgroup ryn_board_jtag Board controls and JTAG
 * @brief The board's clocks, codec law and time-slot switch; the JTAG test
 * access port.
 *
 * The handle's kind is not tested; the settings are the driver's (virtual
 * board: docs/virtual-board.md, "Board controls" and "JTAG port").
 * @{
 */

/** @name Board controls */
/** @{ */
/**
 * RynBrdSetClocks() sets the clocks (virtual board: @p param1 the source, 0
 * the board's oscillator, 1 span 0's receive clock, 2 span 1's, 3 external;
 * @p param2 0 the board drives the bus clock, 1 it follows it).
 * RynBrdTssConstByte() makes a time slot of the switch send a constant
 * @p value (virtual board: @p param1 the stream 0 to 7, @p param2 the slot 0
 * to 31). RynBrdCodecSetLaw() chooses the codecs' companding @p law (virtual
 * board: 0 µ-law, the default, 1 A-law). The library raises no code of its
 * own here.
 */
RYN_ENTRY(ResultCode, RynBrdSetClocks, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynBrdTssConstByte, 16, (DeviceHandle handle, uint32_t param1, uint32_t param2, uint8_t value))
RYN_ENTRY(ResultCode, RynBrdCodecSetLaw, 8, (DeviceHandle handle, uint32_t law))
/** @} */
/**
 * @brief Controls the JTAG port (virtual board: 0 resets it, 1 enables it,
 * the default, 2 disables it).
 * @param handle the port.
 * @param control the control value.
 */
RYN_ENTRY(ResultCode, RynJtagControl, 8, (DeviceHandle handle, uint32_t control))
/** @name JTAG scans */
/** @{ */
/**
 * An instruction-register (Ir) or data-register (Dr) scan of the vector in
 * @p input, a string in the driver's notation; @p output receives the
 * driver's answer and must have room for strlen(input) + 1 bytes; it is
 * always terminated within them, also after a failure. Errors (RYN_SOURCE_JTAG):
 * RYN_ERROR_NULL_POINTER for a null string, RYN_ERROR_NO_TRANSFER_MEMORY when
 * the staging blocks cannot be had. Virtual board: one character '0' or '1'
 * per clock, the first into TDI first, output character i is TDO at clock i;
 * @p param1 the number of bits to shift (0: the whole input).
 */
RYN_ENTRY(ResultCode, RynJtagScanIr, 16, (DeviceHandle handle, uint32_t param1, const char *input, char *output))
RYN_ENTRY(ResultCode, RynJtagScanDr, 16, (DeviceHandle handle, uint32_t param1, const char *input, char *output))
/** @} */

/** @} */

/* ---- HDLC and SS7 -------------------------------------------------------- */

/**
 * @defgroup ryn_hdlc HDLC and SS7
 * @brief Senders and receivers of HDLC frames, with the additions of SS7
 * signalling links.
 *
 * The handle is the channel's; its kind is not tested. Settings (`paramN`,
 * `filter`) pass to the driver unchanged. Frame data travel by address: the
 * driver reads `data`, or writes into `buffer`, while the call runs; the
 * library neither copies nor checks them. A frame of 8192 bytes or more (a
 * repeated block of 10 or more) is refused with RYN_ERROR_RANGE
 * (RYN_SOURCE_HDLC) and nothing is sent. Out-values are written whatever the
 * result; a null out pointer is skipped.
 *
 * There is no back-pressure: a send never waits for the receiver. On the
 * virtual board a frame goes at once to the channel's own receiver (to the
 * other channel's with attribute 104 set); the receive queue holds 64
 * frames, and a frame arriving at a full queue pushes out the oldest, which
 * is counted as dropped (attribute 101). Read often enough, or watch the
 * "Frame received" events (word 6: frames queued). See
 * docs/virtual-board.md, "HDLC and SS7".
 * @{
 */

/**
 * @brief Sets up the sender; the six settings are the driver's.
 *
 * The virtual board stores the six values as they come and acts on none of
 * them: any values make the sender ready (sending before this gives its
 * error 13).
 * @param handle the channel.
 * @param param1 the driver's setting.
 * @param param2 the driver's setting.
 * @param param3 the driver's setting.
 * @param param4 the driver's setting.
 * @param param5 the driver's setting.
 * @param param6 the driver's setting.
 */
RYN_ENTRY(ResultCode, RynHdlcSenderInit, 28,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3, uint32_t param4, uint32_t param5,
           uint32_t param6))
/**
 * @brief Sets up the receiver; the seven settings are the driver's.
 *
 * The virtual board stores them, makes the receiver ready and empties its
 * queue (reading before this gives its error 13).
 * @param handle the channel.
 * @param param1 the driver's setting.
 * @param param2 the driver's setting.
 * @param param3 the driver's setting.
 * @param param4 the driver's setting.
 * @param param5 the driver's setting.
 * @param param6 the driver's setting.
 * @param param7 the driver's setting.
 */
RYN_ENTRY(ResultCode, RynHdlcReceiverInit, 32,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3, uint32_t param4, uint32_t param5,
           uint32_t param6, uint32_t param7))
/**
 * @brief Sends one frame.
 * @param handle the channel.
 * @param data the frame's bytes, read by the driver.
 * @param length 0 to 8191 bytes (virtual board: 1 to 8191).
 * @param param3 the driver's setting (virtual board: not used).
 * @param param4 the driver's setting (virtual board: not used).
 */
RYN_ENTRY(ResultCode, RynHdlcSendData, 20,
          (DeviceHandle handle, const void *data, uint32_t length, uint32_t param3, uint32_t param4))
/**
 * @brief Reads the oldest received frame into @p buffer.
 *
 * Virtual board: an empty queue answers a status with error number 1 and
 * length 0; a frame larger than the buffer is refused with its error 9,
 * stays queued, and @p length gives its size.
 * @param handle the channel.
 * @param buffer the caller's buffer, written by the driver.
 * @param bufferSize its size in bytes.
 * @param length receives the frame's length as the driver gives it, not
 *   compared with @p bufferSize.
 * @param param4 receives the driver's first value (virtual board: the
 *   frames still queued).
 * @param param5 receives the driver's second value (virtual board: the
 *   frames dropped so far).
 * @param param6 receives the driver's 8-byte value as it stands (virtual
 *   board: the board time of the frame's arrival, 100-ns intervals since
 *   1601).
 */
RYN_ENTRY(ResultCode, RynHdlcReadData, 28,
          (DeviceHandle handle, void *buffer, uint32_t bufferSize, uint32_t *length, uint32_t *param4,
           uint32_t *param5, uint64_t *param6))
/**
 * @brief The SS7 receive status.
 * @param handle the channel.
 * @param param1 receives the driver's first value (virtual board: frames
 *   queued).
 * @param param2 receives the second (virtual board: frames received in all).
 * @param param3 receives the third (virtual board: frames dropped).
 * @param ss7Header receives exactly 3 bytes (virtual board: the SS7 field of
 *   the frame last read).
 */
RYN_ENTRY(ResultCode, RynHdlcSS7GetReceiveStatus, 20,
          (DeviceHandle handle, uint32_t *param1, uint32_t *param2, uint32_t *param3, uint8_t *ss7Header))
/** @name SS7 filter */
/** @{ */
/**
 * Sets or reads the receive @p filter. Virtual board: it drops signal units
 * by the length indicator in the low 6 bits of the SS7 field's third byte:
 * bit 0 fill-in units, bit 1 link-status units, bit 2 a unit equal to the
 * one before it; other bits give its error 9.
 */
RYN_ENTRY(ResultCode, RynHdlcSS7SetFilter, 8, (DeviceHandle handle, uint32_t filter))
RYN_ENTRY(ResultCode, RynHdlcSS7GetFilter, 8, (DeviceHandle handle, uint32_t *filter))
/** @} */
/**
 * @brief Sends one frame with its 3-byte SS7 field.
 * @param handle the channel.
 * @param data the frame's bytes, read by the driver.
 * @param length 0 to 8191 bytes.
 * @param ss7Header the 3 bytes copied into the request; null gives
 *   RYN_ERROR_NULL_POINTER (after the length check).
 * @param param4 the driver's setting.
 * @param param5 the driver's setting.
 */
RYN_ENTRY(ResultCode, RynHdlcSS7SendData, 24,
          (DeviceHandle handle, const void *data, uint32_t length, const uint8_t *ss7Header, uint32_t param4,
           uint32_t param5))
/**
 * @brief Starts the repeated sending of a block.
 * @param handle the channel.
 * @param data the block, read by the driver.
 * @param length at most 9 bytes.
 * @param param3 the driver's setting.
 * @param param4 the driver's setting.
 */
RYN_ENTRY(ResultCode, RynHdlcStartRepeatData, 20,
          (DeviceHandle handle, const void *data, uint32_t length, uint32_t param3, uint32_t param4))
/** @brief Ends what RynHdlcStartRepeatData() started. @param handle the channel. */
RYN_ENTRY(ResultCode, RynHdlcStopRepeatData, 4, (DeviceHandle handle))
/**
 * @brief Four values to the driver in order; @p length receives its answer.
 *
 * Virtual board: a peek, @p param1 picks a queued frame (0 the next to read)
 * whose length comes back; the others are not used.
 * @param handle the channel.
 * @param param1 the driver's value.
 * @param param2 the driver's value.
 * @param param3 the driver's value.
 * @param param4 the driver's value.
 * @param length receives the driver's answer.
 */
RYN_ENTRY(ResultCode, RynHdlcReadDataEx, 24,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3, uint32_t param4, uint32_t *length))
/** @brief Flushes the sender (virtual board: also ends repeated sending). @param handle the channel. */
RYN_ENTRY(ResultCode, RynHdlcSenderFlush, 4, (DeviceHandle handle))

/** @} */

/* ---- Raw data and burst transfer ----------------------------------------- */

/**
 * @defgroup ryn_raw_burst Raw data and burst transfer
 * @brief The raw-data channel (an unframed byte stream, data by address) and
 * the burst channel (blocks by value).
 *
 * The handle's kind is not tested; settings pass to the driver unchanged
 * (virtual board: stored and not acted on; docs/virtual-board.md, "Raw
 * data" and "Burst"). Raw-data failures carry RYN_SOURCE_RAW_DATA, burst
 * failures RYN_SOURCE_BURST.
 * @{
 */

/** @name Raw-data set-up */
/** @{ */
/**
 * Ready the sender or the receiver (virtual board: the receiver's buffer is
 * emptied; sending or reading before the set-up gives its error 13).
 * RynRawDataSenderInitEx() has a second 32-bit setting before the 8-bit one
 * and exists only decorated.
 */
RYN_ENTRY(ResultCode, RynRawDataSenderInit, 16, (DeviceHandle handle, uint32_t param1, uint8_t param2, uint32_t param3))
RYN_ENTRY(ResultCode, RynRawDataReceiverInit, 20,
          (DeviceHandle handle, uint32_t param1, uint8_t param2, uint32_t param3, uint32_t param4))
/** @} */
/**
 * @brief Sends a block of bytes, read by the driver from @p data while the
 * call runs.
 * @param handle the channel.
 * @param data the bytes.
 * @param length below 8192, else RYN_ERROR_RANGE.
 * @param param3 the driver's setting.
 * @param param4 the driver's setting.
 */
RYN_ENTRY(ResultCode, RynRawDataSendData, 20,
          (DeviceHandle handle, const void *data, uint32_t length, uint32_t param3, uint32_t param4))
/**
 * @brief Reads received bytes into @p buffer, written by the driver.
 * @param handle the channel.
 * @param buffer the caller's buffer.
 * @param bufferSize its size.
 * @param length receives the byte count as the driver gives it, not compared
 *   with @p bufferSize.
 * @param param4 receives the driver's second value (virtual board: the bytes
 *   still waiting).
 */
RYN_ENTRY(ResultCode, RynRawDataReadData, 20,
          (DeviceHandle handle, void *buffer, uint32_t bufferSize, uint32_t *length, uint32_t *param4))
/** @brief Flushes the sender. @param handle the channel. */
RYN_ENTRY(ResultCode, RynRawDataSenderFlush, 4, (DeviceHandle handle))
/**
 * @brief Sets up the sender with two 32-bit settings and an 8-bit one.
 * @param handle the channel.
 * @param param1 the driver's setting.
 * @param param2 the driver's setting.
 * @param param3 the driver's 8-bit setting.
 * @param param4 the driver's setting.
 */
RYN_ENTRY_DECORATED(ResultCode, RynRawDataSenderInitEx, 20,
                    (DeviceHandle handle, uint32_t param1, uint32_t param2, uint8_t param3, uint32_t param4))
/** @name Idle pattern */
/** @{ */
/**
 * Not provided: RYN_ERROR_NOT_PROVIDED, nothing read or sent.
 */
RYN_ENTRY(ResultCode, RynRawDataStartIdlePattern, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynRawDataStopIdlePattern, 4, (DeviceHandle handle))
/** @} */

/** @name Burst send and preload */
/** @{ */
/**
 * The @p length bytes at @p data travel in the request, copied once;
 * @p length holds the byte count to send, then the driver's count.
 * RynBurstInitSendBuffer() preloads the block without sending it. Errors:
 * RYN_ERROR_NULL_POINTER for a null @p data or @p length, RYN_ERROR_RANGE
 * for a length within 28 of 2^32, RYN_ERROR_NO_TRANSFER_MEMORY when the
 * block cannot be allocated. Virtual board: blocks up to 4096 bytes;
 * @p param1 travels with the block (the second 8-byte value of the read); a
 * send of 0 bytes sends the preloaded block.
 */
RYN_ENTRY(ResultCode, RynBurstSendData, 16, (DeviceHandle handle, uint32_t param1, const void *data, uint32_t *length))
RYN_ENTRY(ResultCode, RynBurstInitSendBuffer, 16,
          (DeviceHandle handle, uint32_t param1, const void *data, uint32_t *length))
/** @} */
/**
 * @brief Reads a received block.
 *
 * Errors: RYN_ERROR_NULL_POINTER for a null @p buffer or @p length,
 * RYN_ERROR_RANGE for a capacity within 32 of 2^32,
 * RYN_ERROR_NO_TRANSFER_MEMORY when the reply block cannot be allocated,
 * RYN_ERROR_BAD_DATA when the reply claims more than the capacity (nothing is
 * copied then). Without a reply nothing is copied and the count is 0.
 * @param handle the channel.
 * @param param1 the driver's setting (virtual board: not used).
 * @param buffer receives the block.
 * @param length holds the capacity of @p buffer, then the byte count.
 * @param param5 may be null; receives the driver's first 8-byte value
 *   (virtual board: the block's arrival time).
 * @param param6 may be null; receives the second (virtual board: the
 *   @p param1 it was sent with).
 */
RYN_ENTRY(ResultCode, RynBurstReadDataEx, 24,
          (DeviceHandle handle, uint32_t param1, void *buffer, uint32_t *length, uint64_t *param5, uint64_t *param6))
/** @name Burst read */
/** @{ */
/**
 * RynBurstReadDataEx() without the two 8-byte values;
 * RynBurstReceiveData() is the same call and exists only decorated.
 */
RYN_ENTRY(ResultCode, RynBurstReadData, 16, (DeviceHandle handle, uint32_t param1, void *buffer, uint32_t *length))
RYN_ENTRY_DECORATED(ResultCode, RynBurstReceiveData, 16,
                    (DeviceHandle handle, uint32_t param1, void *buffer, uint32_t *length))
/** @} */

/** @} */

/* ---- Tone generators and diallers ---------------------------------------- */

/**
 * @defgroup ryn_tone_generators Tone generators and diallers
 * @brief Set-up and use of the generator blocks on a DSP.
 *
 * Every call takes the block's logical-device handle (kind
 * RYN_HANDLE_LOGICAL, else RYN_ERROR_INVALID_HANDLE, RYN_SOURCE_TONE,
 * nothing sent). Settings (`paramN`, `value`, `digit`, dial characters,
 * sequence entries) pass to the block unchanged; a null digit, entry or tone
 * array with a positive count, or a null value pointer, gives
 * RYN_ERROR_NULL_POINTER. The settings of the virtual board's blocks (types
 * 100 to 107) are in docs/virtual-board.md, "Generators and diallers";
 * levels there are in dB below a sine of peak 4096.
 * @{
 */

/** @brief One tone of the sine-wave generator, read field by field. */
typedef struct SineToneParams {
    double frequency; /**< Hz, 0.0 or more. */
    double level;     /**< dB relative to a peak amplitude of 4096, 0.0 or less. */
    double phase;     /**< Starting phase: only 0.0 is accepted. */
} SineToneParams;
RYN_STATIC_ASSERT(sizeof(SineToneParams) == 24, SineToneParams_is_24_bytes);

/**
 * @brief Sets up the constant-value generator.
 * @param handle the block.
 * @param param1 the block's setting (virtual board: not used).
 * @param value the sample value played.
 */
RYN_ENTRY(ResultCode, RynToneConstValGeneratorInit, 12, (DeviceHandle handle, uint32_t param1, uint16_t value))
/**
 * @brief Sets up the value sampler.
 * @param handle the block.
 * @param param1 virtual board: 0 reports the latest sample, 1 the largest
 *   magnitude since the last read.
 */
RYN_ENTRY(ResultCode, RynToneValSamplerInit, 8, (DeviceHandle handle, uint32_t param1))
/** @name Value reads */
/** @{ */
/**
 * @p value receives the block's 16-bit value after the exchange, whatever the
 * result. Virtual board: RynToneValSamplerReadData() the sampler's value,
 * RynToneReadVal() the last sample a generator produced or the sampler
 * received.
 */
RYN_ENTRY(ResultCode, RynToneValSamplerReadData, 8, (DeviceHandle handle, uint16_t *value))
/** @} */
/**
 * @brief Sets up the effects generator.
 * @param handle the block.
 * @param param1 virtual board: the effect, 0 silence, 1 white noise, 2 square
 *   wave, 3 rising ramp.
 * @param param2 virtual board: the peak, 0 to 32767.
 * @param param3 virtual board: the frequency, 0 to 3999 Hz.
 */
RYN_ENTRY(ResultCode, RynToneEffectsGeneratorInit, 16,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3))
/**
 * @brief Sets up the sine-wave generator with up to five tones.
 *
 * Up to five tones of the array become the block's oscillators (8000 Hz
 * sampling): the library sends each one's coefficient cos(2 pi f / 8000) in
 * Q15 and its two starting samples. The tones are checked in order: a phase
 * other than 0.0 gives RYN_ERROR_NOT_AVAILABLE; a level above 0.0, a
 * negative frequency, a level or frequency that is not a number, or a
 * frequency whose angle is not finite gives RYN_ERROR_RANGE; nothing is sent
 * then.
 * @param handle the block.
 * @param param1 the block's setting (virtual board: the on time, up to 60000
 *   ms, 0 without end).
 * @param tones the tones.
 * @param toneCount passed on as given, also above 5 or below 1 (virtual
 *   board: 0 to 5, 0 plays silence).
 * @param param4 the block's setting (virtual board: the off time, up to
 *   60000 ms).
 */
RYN_ENTRY(ResultCode, RynToneSineWaveGeneratorInit, 20,
          (DeviceHandle handle, uint32_t param1, const SineToneParams *tones, int32_t toneCount, uint32_t param4))
/**
 * @brief Sets up the DTMF generator for one digit.
 * @param handle the block.
 * @param param1 virtual board: each tone's level, 0 to 60 dB.
 * @param digit virtual board: one of 0-9 * # A-D.
 * @param param3 virtual board: the duration, up to 60000 ms (0: without
 *   end).
 */
RYN_ENTRY(ResultCode, RynToneDtmfGeneratorInit, 16,
          (DeviceHandle handle, uint32_t param1, uint8_t digit, uint32_t param3))
/**
 * @brief Sets up the DTMF dialler: the timing and levels of every later dial.
 * @param handle the block.
 * @param param1 virtual board: the tone time, up to 1000 ms (0: 80).
 * @param param2 virtual board: the pause, up to 1000 ms (0: 80).
 * @param param3 virtual board: the low tone's level, 0 to 60 dB.
 * @param param4 virtual board: the high tone's level above the low one in dB
 *   (signed).
 */
RYN_ENTRY(ResultCode, RynToneDtmfDiallerInit, 20,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3, uint32_t param4))
/**
 * @brief Dials a string on the DTMF dialler.
 *
 * Virtual board: the whole string is synthesised at once with the timing and
 * levels of RynToneDtmfDiallerInit() and played to the blocks connected
 * after the dialler; then "Dialling finished" (word 5 the number of digits).
 * One character outside 0-9 * # A-D refuses the string with its error 9
 * before anything plays.
 * @param handle the block.
 * @param digits the characters, not terminated and not examined by the
 *   library.
 * @param digitCount 0 to 127, else RYN_ERROR_RANGE.
 * @param param3 the block's setting; the virtual board does not use it (the
 *   timing comes from the set-up).
 * @param param4 the block's setting; the virtual board does not use it.
 */
RYN_ENTRY(ResultCode, RynToneDtmfDial, 20,
          (DeviceHandle handle, const char *digits, int32_t digitCount, uint32_t param3, uint32_t param4))
/**
 * @brief Sets up the MF (R1) dialler.
 * @param handle the block.
 * @param param1 virtual board: the tone time (0: 68 ms).
 * @param param2 virtual board: the pause (0: 68 ms).
 * @param param3 virtual board: the KP tone time (0: 100 ms); times up to
 *   1000 ms.
 * @param param4 virtual board: each tone's level, 0 to 60 dB.
 * @param param5 the block's setting (virtual board: not used).
 */
RYN_ENTRY(ResultCode, RynToneMfDiallerInit, 24,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3, uint32_t param4, uint32_t param5))
/**
 * @brief Dials a string on the MF dialler.
 *
 * Virtual board: R1 characters 0-9, KP as '*' or 'K', ST as '#' or 'S', ST'
 * ST'' ST''' as 'A' 'B' 'C'; played as RynToneDtmfDial() plays.
 * @param handle the block.
 * @param digits the characters, not terminated and not examined by the
 *   library.
 * @param digitCount 0 to 127, else RYN_ERROR_RANGE.
 * @param param3 the block's setting (virtual board: not used).
 * @param param4 the block's setting (virtual board: not used).
 */
RYN_ENTRY(ResultCode, RynToneMfDial, 20,
          (DeviceHandle handle, const char *digits, int32_t digitCount, uint32_t param3, uint32_t param4))
/**
 * @brief Sets up the sequence generator.
 * @param handle the block.
 * @param param1 virtual board: the hold in samples of an entry whose high 16
 *   bits are 0 (0: 1).
 * @param param2 the block's setting (virtual board: not used).
 * @param param3 the block's setting (virtual board: not used).
 * @param param4 the block's setting (virtual board: not used).
 */
RYN_ENTRY(ResultCode, RynToneSequenceGeneratorInit, 20,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3, uint32_t param4))
/**
 * @brief Sends a sequence of 32-bit entries to the sequence generator.
 *
 * Virtual board: each entry is a sample value in its low 16 bits and its
 * hold in samples in its high 16 bits; at most 10 s in all; then "Sequence
 * sent" (word 5 the number of entries).
 * @param handle the block.
 * @param entries the entries.
 * @param entryCount 0 to 127, else RYN_ERROR_RANGE.
 * @param param3 virtual board: the repeats (0: once, at most 1000).
 * @param param4 the block's setting (virtual board: not used).
 */
RYN_ENTRY(ResultCode, RynToneSequenceSend, 20,
          (DeviceHandle handle, const uint32_t *entries, int32_t entryCount, uint32_t param3, uint32_t param4))
/** @name Value reads (any generator) */
/** @{ */
/**
 * See "Value reads" above.
 */
RYN_ENTRY(ResultCode, RynToneReadVal, 8, (DeviceHandle handle, uint16_t *value))
/** @} */

/** @} */

/* ---- Tone detectors ------------------------------------------------------ */

/**
 * @defgroup ryn_tone_detectors Tone detectors
 * @brief Silence, DTMF, FSK, dial-tone, MF, dual- and single-frequency
 * detectors on a DSP.
 *
 * Every call takes a logical-device handle (else RYN_ERROR_INVALID_HANDLE,
 * RYN_SOURCE_TONE, nothing sent). Status calls write the detector's status
 * (32-bit or 8-bit, as declared) whatever the result; a null status pointer
 * gives RYN_ERROR_NULL_POINTER. Settings and statuses are the block's; for
 * the virtual board (types 110 to 116) see docs/virtual-board.md,
 * "Detectors", with the events each detector posts.
 * @{
 */

/** @name Silence detector */
/** @{ */
/**
 * Virtual board: @p param1 the threshold, up to 90 dB below the reference
 * (0: 40), @p param2 how long the signal stays below it (0: 200 ms),
 * @p param3 not used; "Silence detected" with word 5 = 1 when silence
 * begins, 0 when it ends; the status is 1 while silent.
 */
RYN_ENTRY(ResultCode, RynToneSilenceDetectorInit, 16,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3))
RYN_ENTRY(ResultCode, RynToneSilenceDetectorStatus, 8, (DeviceHandle handle, uint32_t *status))
/** @} */
/** @name DTMF detector */
/** @{ */
/**
 * Virtual board: @p param1 the shortest digit, @p param2 the shortest pause
 * (0: 40 ms each); each digit posts "DTMF digit detected" once (word 5 the
 * character); the status is the last digit's character, 0 before any.
 */
RYN_ENTRY(ResultCode, RynToneDtmfDetectorInit, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynToneDtmfDetectorStatus, 8, (DeviceHandle handle, uint8_t *status))
/** @} */
/**
 * @brief Sets up the FSK detector.
 *
 * Virtual board: the detector starts afresh; each character posts "Data
 * byte received" (word 5 the byte).
 * @param handle the block.
 * @param param1 virtual board: 0 Bell 202, 1 V.23.
 */
RYN_ENTRY(ResultCode, RynToneFskDetectorInit, 8, (DeviceHandle handle, uint32_t param1))
/** @name Dial-tone detector */
/** @{ */
/**
 * Virtual board: @p param1 how long the tone lasts before it is reported (0:
 * 100 ms), @p param2 the level floor (0: 30 dB); status 0 none, 1 350 + 440
 * Hz, 2 425 Hz.
 */
RYN_ENTRY(ResultCode, RynToneDialtoneDetectorInit, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynToneDialtoneDetectorStatus, 8, (DeviceHandle handle, uint32_t *status))
/** @} */
/** @name MF detector */
/** @{ */
/**
 * Virtual board: R1 tones in pairs; @p param1 the shortest digit and
 * @p param2 the shortest pause (0: 40 ms each), @p param3 to @p param5 not
 * used; each digit posts "MF digit detected"; the status is the last digit.
 */
RYN_ENTRY(ResultCode, RynToneMfDetectorInit, 24,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3, uint32_t param4, uint16_t param5))
RYN_ENTRY(ResultCode, RynToneMfDetectorStatus, 8, (DeviceHandle handle, uint8_t *status))
/** @} */
/** @name Dual- and single-frequency detectors */
/** @{ */
/**
 * The set-up tunes the detector to up to 6 @p frequencies in Hz (more:
 * RYN_ERROR_RANGE; a null list with a positive count:
 * RYN_ERROR_NULL_POINTER); the library turns each into the detector's
 * coefficient, cos(2 pi f / 8000) in Q15. A @p frequencyCount of 0 or below
 * sends no coefficient and goes to the driver as it is. Virtual board: the
 * single-frequency detector takes 1 to 6 tones, the dual-frequency one pairs
 * them (2, 4 or 6); @p param1 the shortest tone (0: 40 ms), @p param4 the
 * level floor up to 90 dB (0: 30), @p param5 the shortest pause (0: 40 ms),
 * @p param6 the window, 102 to 1024 samples (0: chosen); "Tone detected" and
 * "Tone ended"; the status is 1 + the index of the tone present, 0 for none.
 */
RYN_ENTRY(ResultCode, RynToneDualDetectorInit, 28,
          (DeviceHandle handle, uint32_t param1, const uint32_t *frequencies, int32_t frequencyCount, uint32_t param4,
           uint32_t param5, uint16_t param6))
RYN_ENTRY(ResultCode, RynToneDualDetectorStatus, 8, (DeviceHandle handle, uint8_t *status))
RYN_ENTRY(ResultCode, RynToneSingleDetectorInit, 28,
          (DeviceHandle handle, uint32_t param1, const uint32_t *frequencies, int32_t frequencyCount, uint32_t param4,
           uint32_t param5, uint16_t param6))
RYN_ENTRY(ResultCode, RynToneSingleDetectorStatus, 8, (DeviceHandle handle, uint8_t *status))
/** @} */

/** @} */

/* ---- Telephony blocks ---------------------------------------------------- */

/**
 * @defgroup ryn_telephony Telephony blocks
 * @brief DTMF dialler and detector, voice activity detector, comfort noise,
 * voice mixer, echo canceller, call-progress tone detector and generator,
 * caller identification detector.
 *
 * Every call takes the block's logical-device handle (else
 * RYN_ERROR_INVALID_HANDLE, RYN_SOURCE_TELEPHONY, nothing sent). Settings
 * (`paramN`, `settingN`, table words, lists, steps) pass to the block
 * unchanged. A null list with a positive count, or a null status, parameter
 * block, configuration, value list, segment array or segment steps that
 * would be read, gives RYN_ERROR_NULL_POINTER and nothing is sent. Status
 * calls write the block's status whatever the result; it means something
 * only on success. For the virtual board's blocks (types 120 to 128) see
 * docs/virtual-board.md, "Telephony blocks".
 * @{
 */

/**
 * @brief One segment of a call-progress tone: its steps.
 *
 * In 32-bit builds the structure is 8 bytes.
 */
typedef struct CptSegment {
    uint16_t segmentId;    /**< The segment's identifier (virtual board: the tone number reported). */
    uint16_t stepCount;    /**< Low 8 bits: number of steps (0..255). */
    const uint16_t *steps; /**< (stepCount & 0xFF) steps of 3 + (valueCount + 3) / 4 words each. */
} CptSegment;
RYN_STATIC_ASSERT(sizeof(CptSegment) == 2 * sizeof(void *), CptSegment_is_naturally_aligned);

/**
 * @brief The tone table of the extended call-progress tone detector set-up.
 *
 * In 32-bit builds the structure is 44 bytes.
 */
typedef struct CptToneTable {
    const uint16_t *values;     /**< valueCount words, valueCount 1..32 (virtual board: frequencies 1..3999 Hz). */
    uint16_t tableSetting;      /**< Passed to the block. */
    uint16_t unused;            /**< Not read by the library. */
    /** Words 0..10 block settings, word 11 valueCount (signed), word 12 segmentCount (signed, at most 16). */
    uint16_t tableWords[13];
    const CptSegment *segments; /**< segmentCount entries. */
    const uint8_t *extraBlock;  /**< 16 bytes, or null. */
} CptToneTable;
RYN_STATIC_ASSERT(sizeof(CptToneTable) == 32 + 3 * sizeof(void *), CptToneTable_is_naturally_aligned);

/**
 * @brief The configuration of the extended call-progress tone detector
 * set-up.
 *
 * In 32-bit builds the structure is 16 bytes.
 */
typedef struct CptDetectorConfig {
    uint32_t unused; /**< Not read by the library. */
    uint16_t setting1; /**< Passed to the block. */
    uint16_t setting2; /**< Passed to the block. */
    const CptToneTable *toneTable; /**< Null: RYN_ERROR_RANGE. */
    int16_t tableCount;            /**< 1, or negative for no table (0 or above 1: RYN_ERROR_RANGE). */
    uint16_t setting3;             /**< Passed to the block. */
} CptDetectorConfig;
RYN_STATIC_ASSERT(sizeof(CptDetectorConfig) == 8 + 2 * sizeof(void *), CptDetectorConfig_is_naturally_aligned);

/**
 * @brief Sets up the DTMF dialler.
 * @param handle the block.
 * @param param1 virtual board: the level of each tone, 6 to 60 dB (0: 10).
 */
RYN_ENTRY(ResultCode, RynCstDtmfDialerInit, 8, (DeviceHandle handle, uint32_t param1))
/**
 * @brief Dials a string.
 *
 * Virtual board: 0-9 * # A-D (another character gives its error 9 before
 * anything plays); then "Dialling finished".
 * @param handle the block.
 * @param digits the characters, not terminated and not examined by the
 *   library; null with a positive count gives RYN_ERROR_NULL_POINTER.
 * @param digitCount 0 to 127, else RYN_ERROR_RANGE.
 * @param param3 virtual board: the digit time, 20 to 2000 ms (0: 80).
 * @param param4 virtual board: the pause after each digit, up to 2000 ms (0:
 *   the digit time).
 */
RYN_ENTRY(ResultCode, RynCstDtmfDial, 20,
          (DeviceHandle handle, const char *digits, int32_t digitCount, uint32_t param3, uint32_t param4))
/** @name Voice activity detector */
/** @{ */
/**
 * Virtual board: @p param1 the floor (0: 40 dB); the status is 1 while voice
 * is present; "Silence detected" when the hangover runs out.
 */
RYN_ENTRY(ResultCode, RynCstVoiceActivityDetectorInit, 8, (DeviceHandle handle, uint32_t param1))
RYN_ENTRY(ResultCode, RynCstVoiceActivityDetectorStatus, 8, (DeviceHandle handle, uint32_t *status))
/** @} */
/** @name DTMF detector */
/** @{ */
/**
 * Virtual board: @p param1 the shortest digit, 10 to 1000 ms (0: 40),
 * @p param2 the floor, 1 to 90 dB (0: 40); each digit posts "DTMF digit
 * detected" once; the status is the last digit, 0 before any.
 */
RYN_ENTRY(ResultCode, RynCstDtmfDetectorInit, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynCstDtmfDetectorStatus, 8, (DeviceHandle handle, uint8_t *status))
/** @} */
/**
 * @brief Sets up the comfort noise generator.
 * @param handle the block.
 * @param param1 virtual board: the level, 1 to 90 dB (0: 60).
 */
RYN_ENTRY(ResultCode, RynCstComfortNoiseGeneratorInit, 8, (DeviceHandle handle, uint32_t param1))
/**
 * @brief Sets up the voice mixer.
 * @param handle the block.
 * @param param1 virtual board: the output gain in 1/256 steps, up to 4096
 *   (0: 256).
 * @param param2 the block's setting.
 */
RYN_ENTRY(ResultCode, RynCstVoiceMixerInit, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
/**
 * @brief Sets up the echo canceller.
 * @param handle the block.
 * @param param1 virtual board: the tail, 1 to 128 ms (0: 64).
 * @param param2 virtual board: flags, stored.
 */
RYN_ENTRY(ResultCode, RynCstEchoCancelInit, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
/** @name Call-progress tone detector */
/** @{ */
/**
 * Virtual board: @p param1 the floor (0: 40 dB), @p param2 the cadence
 * tolerance, 1 to 50 % (0: 20); the basic set-up knows the generator's
 * tones; "Call progress tone detected" (word 5 the tone) when the tone
 * differs from the last one reported; the status is that tone.
 */
RYN_ENTRY(ResultCode, RynCstCptDetectorInit, 16,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3))
RYN_ENTRY(ResultCode, RynCstCptDetectorStatus, 8, (DeviceHandle handle, uint32_t *status))
/** @} */
/** @name Call-progress tone generator */
/** @{ */
/**
 * Virtual board: RynCstCptGeneratorInit() @p param1 the level as for the
 * dialler, @p param2 the length of every tone, up to 60000 ms (0: two
 * cadence cycles); RynCstCptGenerateTone() @p param1 1 dial tone, 2 busy, 3
 * ringback, 4 reorder, 0 silence, then "Sequence sent".
 */
RYN_ENTRY(ResultCode, RynCstCptGeneratorInit, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynCstCptGenerateTone, 8, (DeviceHandle handle, uint32_t param1))
/** @} */
/**
 * @brief Sets up the caller identification detector.
 *
 * Virtual board: each message posts "Caller identification received" (word
 * 5 the message type, 6 the checksum right, 7 the body length).
 * @param handle the block.
 * @param param1 virtual board: the format, 0 Bell 202, 1 V.23.
 * @param param2 virtual board: stored.
 */
RYN_ENTRY(ResultCode, RynCstCidDetectorInit, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
/** @name Extended voice mixer set-up */
/** @{ */
/**
 * Sends the first @p mixCount entries of both lists @p mixItems and
 * @p mixValues (at most 128, else RYN_ERROR_RANGE; a negative count sends
 * none and travels as given), with @p param2 and @p param4. The undecorated
 * entry point is RynCstVoiceMixerInitEX, with a capital X. Virtual board:
 * @p mixItems the handles of the inputs, @p mixValues a gain per input in
 * 1/256 steps, @p param2 the output gain.
 */
RYN_ENTRY_DECORATED(ResultCode, RynCstVoiceMixerInitEx, 24,
                    (DeviceHandle handle, const uint32_t *mixItems, uint32_t param2, const uint16_t *mixValues,
                     uint16_t param4, int32_t mixCount))
RYN_API ResultCode RynCstVoiceMixerInitEX(DeviceHandle handle, const uint32_t *mixItems, uint32_t param2,
                                          const uint16_t *mixValues, uint16_t param4, int32_t mixCount);
/** @} */
/**
 * @brief Extended call-progress tone detector set-up: gathers the one tone
 * table of @p config into the request.
 *
 * RYN_ERROR_RANGE for a null tone table, a tableCount of 0 or above 1, a
 * valueCount outside 1..32, a segmentCount above 16 or segment steps beyond
 * 210 words in all; RYN_ERROR_NULL_POINTER for a null @p config, value list,
 * segment array or steps that would be read. A negative tableCount sends the
 * settings with an empty table (virtual board: its built-in table). The
 * virtual board's reading of the table (steps of shortest time, longest
 * time, an unused word, then 4 bits per value) is in docs/virtual-board.md.
 * @param handle the block.
 * @param param1 virtual board: the floor.
 * @param param2 virtual board: the cadence tolerance.
 * @param config the configuration.
 * @param param4 the block's setting.
 */
RYN_ENTRY(ResultCode, RynCstCptDetectorInitEx, 20,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, const CptDetectorConfig *config, uint32_t param4))
/**
 * @brief Extended voice activity detector set-up.
 * @param handle the block.
 * @param params 13 words, word 0 the count 13 (else RYN_ERROR_RANGE; null:
 *   RYN_ERROR_NULL_POINTER). Virtual board: word 1 the floor, word 2 the
 *   hangover up to 5000 ms (0: 200), word 3 the shortest speech up to 1000
 *   ms (0: 20).
 * @param param2 the block's setting.
 */
RYN_ENTRY_DECORATED(ResultCode, RynCstVoiceActivityDetectorInitEx, 12,
                    (DeviceHandle handle, const int16_t *params, uint32_t param2))

/** @} */

/* ---- Data converter and mixer -------------------------------------------- */

/**
 * @defgroup ryn_data_mixer Data converter and mixer
 * @brief The data converter block, and the mixer set-up that is not provided.
 * @{
 */
/**
 * @brief Sets up the data converter.
 * @param handle the block's logical-device handle, else
 *   RYN_ERROR_INVALID_HANDLE (RYN_SOURCE_DATA_MIXER), nothing sent.
 * @param param1 virtual board: the conversion, 0 linear, 1 µ-law, 2 A-law.
 * @param param2 virtual board: samples per transfer block, 1 to 1024 (0:
 *   160).
 */
RYN_ENTRY(ResultCode, RynDataConverterInit, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
/**
 * @brief Not provided: RYN_ERROR_NOT_PROVIDED (RYN_SOURCE_DATA_MIXER) for any
 * handle, nothing sent.
 * @param handle not read.
 */
RYN_ENTRY(ResultCode, RynDataMixerInit, 4, (DeviceHandle handle))
/** @} */

/* ---- POTS line control through a DSP block ------------------------------- */

/**
 * @defgroup ryn_dsp_pots POTS line through a DSP block
 * @brief Set-up with DAA programming, hook control, flash, pulse dialling,
 * line monitoring and sensing of a POTS line driven by a DSP block.
 *
 * Only the set-up checks the handle (a logical device, else
 * RYN_ERROR_INVALID_HANDLE, RYN_SOURCE_TELEPHONY, nothing sent); the other
 * calls pass any handle to the driver. Settings pass to the block unchanged.
 * For the virtual board (block type 150; every call but the set-up gives its
 * error 13 until the block is set up) see docs/virtual-board.md, "POTS
 * through a DSP block": hook changes post "Hook state changed" with word 5
 * the hook (0 on, 1 off), word 6 the cause (0 request, 1 flash, 2 line
 * monitor, 3 sense) and word 7 the line voltage.
 * @{
 */
/**
 * @brief Sets the block up, then programs the DAA by @p daaMode.
 *
 * The DAA writes are RynCstPotsWriteDaa() calls with @p param1 2 and
 * @p param2 500: modes 1 to 3 register 0x10 ← 0x0C, a 300 ms pause,
 * register 0x11 ← 0x10; mode 4 register 0x10 ← 0x64; mode 5 register 0x10 ←
 * 0x04; other modes none. A failure of the set-up or of a write is returned
 * at once; a write status above 1 stops the sequence with a warning (bit 31
 * clear, RYN_ERROR_WARNING). Else the result of the last exchange.
 * @param handle the block.
 * @param param1 the block's setting (virtual board: kept).
 * @param daaMode the DAA mode.
 */
RYN_ENTRY(ResultCode, RynCstPotsInit, 12, (DeviceHandle handle, uint32_t param1, int32_t daaMode))
/** @name Hook control */
/** @{ */
/**
 * RynCstPotsOffHook() and RynCstPotsOnHook() change the hook;
 * RynCstPotsOnHookLineMon() goes on hook with the line monitor on;
 * RynCstPotsSenseLine() reports the line state as an event. Virtual board:
 * @p param1 and @p param2 are not used.
 */
RYN_ENTRY(ResultCode, RynCstPotsOffHook, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynCstPotsOnHook, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
/** @} */
/**
 * @brief Flashes the hook (virtual board: the line must be off hook, else
 * its error 13).
 * @param handle the block.
 * @param param1 virtual board: the time on hook, 50 to 2000 ms (0: 600); the
 *   board clock advances by it.
 * @param param2 the block's setting.
 * @param param3 the block's setting.
 */
RYN_ENTRY(ResultCode, RynCstPotsHookFlash, 16, (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3))
/**
 * @brief Pulse-dials one digit (virtual board: the line must be off hook).
 *
 * Virtual board: then "Dialling finished" (word 5 the digit, word 6 the
 * pulses).
 * @param handle the block.
 * @param param1 virtual board: the digit, 0 to 9 (0 dials 10 pulses).
 * @param param2 virtual board: the break time of each pulse, up to 1000 ms
 *   (0: 60).
 * @param param3 virtual board: the make time, up to 1000 ms (0: 40).
 */
RYN_ENTRY(ResultCode, RynCstPotsPulseDial, 16, (DeviceHandle handle, uint32_t param1, uint32_t param2, uint32_t param3))
/** @name Hook control (line monitor and sense) */
/** @{ */
/**
 * See "Hook control" above.
 */
RYN_ENTRY(ResultCode, RynCstPotsOnHookLineMon, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
RYN_ENTRY(ResultCode, RynCstPotsSenseLine, 12, (DeviceHandle handle, uint32_t param1, uint32_t param2))
/** @} */
/**
 * @brief Writes one DAA register.
 * @param handle the block.
 * @param param1 virtual board: write attempts, not needed.
 * @param param2 virtual board: time-out, not needed.
 * @param daaRegister the register (virtual board: 0x00 to 0x3F).
 * @param daaValue the value.
 * @param status receives the write's status after every exchange, whatever
 *   the result (virtual board: 0 written, 1 the register held the value
 *   already, 2 no such register); null gives RYN_ERROR_NULL_POINTER, nothing
 *   sent.
 */
RYN_ENTRY(ResultCode, RynCstPotsWriteDaa, 24,
          (DeviceHandle handle, uint32_t param1, uint32_t param2, uint8_t daaRegister, uint8_t daaValue,
           uint32_t *status))
/** @} */

/* ---- Application event queues ------------------------------------------- */

/**
 * @defgroup ryn_app_queues Application event queues
 * @brief Queues of EventData records kept by the library, signalled through
 * the same event objects as driver events.
 *
 * A producer queues records and signals the queue's event; a consumer waits
 * on it with RynDrvWaitForSingleEvent() or RynDrvWaitForMultipleEvents() and
 * reads until it gets the empty-queue status. At most 128 queues, usable from
 * the first connect until the release (before and after: RYN_ERROR_FAILED).
 * A full queue drops its oldest record. Reading an empty queue gives a
 * status with RYN_ERROR_NOTHING_TO_READ and bit 31 clear. A queue identifier
 * outside 0..127, or a free one, gives RYN_ERROR_INVALID_HANDLE. Codes carry
 * RYN_SOURCE_DEVICE. All these functions exist only decorated.
 * @{
 */
/**
 * @brief Creates a queue that signals @p event.
 * @param capacity the number of records it holds (0 creates a queue without
 *   entries: queueing into it and reading give RYN_ERROR_FAILED).
 * @param event an event object from RynDrvCreateEvent(); 0 gives
 *   RYN_ERROR_INVALID_HANDLE. It stays the caller's to close.
 * @param queue receives the identifier, -1 on a failure; null gives
 *   RYN_ERROR_RANGE. RYN_ERROR_NO_MEMORY when all 128 are in use or the
 *   storage cannot be had.
 */
RYN_ENTRY_DECORATED(ResultCode, RynCreateAppEventQueue, 12, (uint32_t capacity, OsaHandle event, int32_t *queue))
/** @brief Closes a queue (a free one too, without complaint). @param queue the identifier. */
RYN_ENTRY_DECORATED(ResultCode, RynCloseAppEventQueue, 4, (int32_t queue))
/**
 * @brief Takes the oldest record.
 * @param queue the identifier.
 * @param record receives the record; null gives RYN_ERROR_RANGE.
 */
RYN_ENTRY_DECORATED(ResultCode, RynGetAppEventData, 8, (int32_t queue, EventData *record))
/**
 * @brief Takes up to @p maximum records, oldest first.
 * @param queue the identifier.
 * @param records the caller's array; null gives RYN_ERROR_RANGE.
 * @param maximum the array's size in records.
 * @param count receives the number taken (0 on a failure after the argument
 *   checks); null gives RYN_ERROR_RANGE.
 */
RYN_ENTRY_DECORATED(ResultCode, RynGetAppEventDataEx, 16,
                    (int32_t queue, EventData *records, int32_t maximum, uint32_t *count))
/** @brief Signals the queue's event (a free queue: the signal's failure). @param queue the identifier. */
RYN_ENTRY_DECORATED(ResultCode, RynSignalAppEvent, 4, (int32_t queue))
/** @name Queueing records */
/** @{ */
/**
 * Store one record whose words 2 to 7 are @p w2 .. @p w7 and whose words 0
 * and 1 are @p w0, @p w1 (the same order as RynDrvSetEventDataEx()).
 * RynQueueAppEventDataEx() only queues; RynSetAppEventDataEx() queues and
 * then signals the queue's event, returning the signal's result.
 */
RYN_ENTRY_DECORATED(ResultCode, RynQueueAppEventDataEx, 36,
                    (int32_t queue, uint32_t w2, uint32_t w3, uint32_t w4, uint32_t w5, uint32_t w6, uint32_t w7,
                     uint32_t w0, uint32_t w1))
RYN_ENTRY_DECORATED(ResultCode, RynSetAppEventDataEx, 36,
                    (int32_t queue, uint32_t w2, uint32_t w3, uint32_t w4, uint32_t w5, uint32_t w6, uint32_t w7,
                     uint32_t w0, uint32_t w1))
/** @} */
/** @} */

#ifdef __cplusplus
}
#endif

#endif /* RYN_HWDLL_H */
