/*
 * Osa.h - the operating-system abstraction layer of RynHwDll.
 *
 * Plain C (C99) interface. Every function has a decorated entry point
 * Name_N (N: the byte count of its arguments in the 32-bit calling
 * convention); most also have an undecorated entry point under the bare name,
 * which forwards to the decorated one unchanged. For the functions declared
 * with RYN_ENTRY_DECORATED the bare name is only a second name of the
 * decorated entry point, so C code calls every function by its bare name.
 *
 * Linux port notes:
 * - Handles (OsaHandle) are file descriptors of this process: a device
 *   connection and an event object each own one. INVALID_HANDLE_VALUE
 *   (0xFFFFFFFF) is never a valid handle.
 * - OsaDeviceOpen(name) resolves "\\.\" + name (at most 51 characters of
 *   name): first among devices registered inside the process, then as the
 *   driver module ryn-drivers/<name in lower case>.so next to the loaded
 *   library file (see RynUserDriver.h). Module names may hold only letters,
 *   digits, '_' and '-'. A device is opened exclusively: a second open of
 *   the same name fails while the first is open.
 */
#ifndef RYN_OSA_H
#define RYN_OSA_H

#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <time.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Export conventions shared by RynHwDll.h ---------------------------- */

#if defined(__GNUC__)
#define RYN_API __attribute__((visibility("default")))
#else
#define RYN_API
#endif

/* Symbol of a decorated entry point: _Name@N on Windows, Name_N here. */
#define RYN_DECORATED(name, n) name##_##n

/* A function with both entry points: Name_N does the work, Name forwards to
 * it (and applies the driver-version translations of RynHwDll.h). */
#define RYN_ENTRY(ret, name, n, params) \
    RYN_API ret RYN_DECORATED(name, n) params; \
    RYN_API ret name params;

/* A function exported only under its decorated name; the bare name is bound
 * to the same symbol. */
#define RYN_ENTRY_DECORATED(ret, name, n, params) \
    RYN_API ret RYN_DECORATED(name, n) params; \
    RYN_API ret name params __asm__(#name "_" #n);

/* ---- Types -------------------------------------------------------------- */

typedef uint32_t OsaHandle;
#ifndef INVALID_HANDLE_VALUE
#define INVALID_HANDLE_VALUE ((OsaHandle)0xFFFFFFFFu)
#endif

/* ---- Device I/O --------------------------------------------------------- */

/* Opens "\\.\" + name; INVALID_HANDLE_VALUE when the name is longer than 51
 * characters, unknown, refused by its driver or already open. */
RYN_ENTRY(OsaHandle, OsaDeviceOpen, 4, (const char *name))
/* Closes a device connection or an event object: nonzero on success, 0 for a
 * handle this layer did not give out. */
RYN_ENTRY(int32_t, OsaDeviceClose, 4, (OsaHandle handle))
/* One synchronous device I/O control request: nonzero on success.
 * *returned receives the byte count the driver reports (never more than
 * outputLength). */
RYN_ENTRY(int32_t, OsaDeviceIoControl, 28,
          (OsaHandle handle, uint32_t code, const void *input, uint32_t inputLength,
           void *output, uint32_t outputLength, uint32_t *returned))

#ifdef __cplusplus
}
#endif

#endif /* RYN_OSA_H */
