/**
 * @file RynUserDriver.h
 * @brief The interface between the library and a driver module.
 *
 * On this platform the board driver is reached through a driver module: a
 * shared object that the library loads when an application opens a device
 * name it does not already know. The module is looked for as
 * `<folder of the loaded library file>/ryn-drivers/<device name in lower case>.so`
 * and must export RynUserDriverEntry. The library calls `open` once per
 * connection with the device name as the application gave it (for example
 * "RYNDRV"), `control` once per device I/O control request and `close` when
 * the connection is closed. `control` runs on the caller's thread; several
 * threads may be inside it at once.
 *
 * What the library relies on. `control` writes no more than
 * `outputLength` bytes into `output` and reports in *returned how many it
 * wrote; a `control` that fails (returns 0) leaves the output block
 * untouched. The library's reply blocks start zero-filled, so a reply the
 * driver does not write reads as zero, and every count the library copies
 * by is bounded to what its own blocks hold.
 *
 * Calling back into the library. The library holds none of its locks while
 * module code runs (loading the module, `open`, `control`, `close`), so a
 * module may call any exported function from them: open another device
 * underneath with OsaDeviceOpen (a layered "RYNNET" over "RYNDRV"), create,
 * signal and close event objects, start threads. Two things it must not do:
 * close the connection it is being called for from its own `open` or
 * `control` (the library closes it, and calls `close` once), and open the
 * device name it is itself opening (a device is opened exclusively, so that
 * open fails). A module's `open` may also run while the library itself is
 * loading, when the library reads the driver's version.
 *
 * Address fields. Some requests carry the address of a caller buffer in a
 * 32-bit field (data sent by address, JTAG scans, event records, DSP images).
 * In a 32-bit process the field holds the address itself; in a 64-bit process
 * it holds a 1-based reference into `buffers` (1 names buffers[0]), since an
 * address does not fit. In both cases every such buffer is listed in
 * `buffers` with its length, so a driver may always use the list. A field
 * that names no buffer holds 0.
 */
#ifndef RYN_USER_DRIVER_H
#define RYN_USER_DRIVER_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup ryn_driver_module Driver module interface
 * @brief What a driver module exports and what the library hands it.
 *
 * A driver module is a shared object `ryn-drivers/<device name in lower
 * case>.so` beside the library that exports RynUserDriverEntry(). The
 * virtual board (docs/virtual-board.md) is one.
 * @{
 */

/** @brief The version of this interface; RynUserDriver::abi must hold it. */
#define RYN_USER_DRIVER_ABI 1u

/** @brief A caller buffer named by an address field of a request. */
typedef struct RynDriverBuffer {
    void *address;   /**< The buffer. */
    uint32_t length; /**< Its length in bytes, as the library lists it. */
} RynDriverBuffer;

/** @brief One device I/O control request, as `control` receives it. */
typedef struct RynDriverRequest {
    uint32_t code; /**< Device I/O control code: 0x220000 | (function << 2). */
    const void *input;    /**< The request block. */
    uint32_t inputLength; /**< Its length in bytes. */
    void *output;          /**< The reply block, zero-filled by the library. */
    uint32_t outputLength; /**< Its length: write no more than this. */
    /** Caller buffers named by address fields of the input (1-based references in 64-bit processes). */
    const RynDriverBuffer *buffers;
    uint32_t bufferCount;           /**< The number of entries of @c buffers. */
} RynDriverRequest;

/** @brief The functions of a driver module. */
typedef struct RynUserDriver {
    uint32_t abi; /**< RYN_USER_DRIVER_ABI. */
    /** Called once per connection with the device name as the application gave it (e.g. "RYNDRV");
     *  returns the module's connection, NULL refuses. */
    void *(*open)(const char *deviceName);
    /** Called once per request, on the caller's thread (several at once); stores the bytes written in
     *  *returned; 0 = the call failed, the output untouched. */
    int (*control)(void *device, const RynDriverRequest *request, uint32_t *returned);
    /** Called once when the connection is closed. */
    void (*close)(void *device);
} RynUserDriver;

/**
 * @brief Exported by a driver module: its functions.
 * @return the module's table, which must live as long as the module.
 */
const RynUserDriver *RynUserDriverEntry(void);

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* RYN_USER_DRIVER_H */
