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
#define RYN_ENTRY(ret, name, n, params)        \
    RYN_API ret RYN_DECORATED(name, n) params; \
    RYN_API ret name params;

/* A function exported only under its decorated name; the bare name is bound
 * to the same symbol. */
#define RYN_ENTRY_DECORATED(ret, name, n, params) \
    RYN_API ret RYN_DECORATED(name, n) params;    \
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
/* One synchronous device I/O control request: the driver's result, nonzero on success.
 * *returned receives the byte count the driver reports (never more than
 * outputLength). */
RYN_ENTRY(int32_t, OsaDeviceIoControl, 28,
          (OsaHandle handle, uint32_t code, const void *input, uint32_t inputLength, void *output,
           uint32_t outputLength, uint32_t *returned))

/* ---- Strings (8-bit, NUL-terminated; characters compare as signed 8-bit
 *      values; ASCII-only case rules, no locale) ------------------------- */

RYN_ENTRY(uint32_t, OsaStrLen, 4, (const char *s))
RYN_ENTRY(void, OsaStrCpy, 8, (char *d, const char *s))
/* Copies at most n characters; writes one terminator only when fewer than n
 * characters were copied (nothing beyond it is zero-filled); n <= 0 writes
 * nothing. */
RYN_ENTRY(void, OsaStrNCpy, 12, (char *d, const char *s, int32_t n))
RYN_ENTRY(int32_t, OsaStrCmp, 8, (const char *s1, const char *s2))
RYN_ENTRY(int32_t, OsaStrCmpI, 8, (const char *s1, const char *s2))
RYN_ENTRY_DECORATED(int32_t, OsaStrICmp, 8, (const char *s1, const char *s2))
RYN_ENTRY(int32_t, OsaToUpper, 4, (int32_t c))
RYN_ENTRY(int32_t, OsaStdToUpr, 4, (int32_t c))
RYN_ENTRY(int32_t, OsaToLower, 4, (int32_t c))
RYN_ENTRY_DECORATED(char *, OsaStrUpr, 4, (char *s))
RYN_ENTRY(char *, OsaStdStrUpr, 4, (char *s))
/* Decimal value of the digits at the very start of s: no blanks, no sign,
 * wraps modulo 2^32. */
RYN_ENTRY(int32_t, OsaStrToI, 4, (const char *s))
/* Overwrites the first n characters of s with c, stopping early at the
 * terminator, which stays. Returns s. */
RYN_ENTRY(char *, OsaStrnSet, 12, (char *s, char c, uint32_t n))
/* Last position of c in s; for c == '\0' the position of the terminator;
 * NULL when c does not occur. */
RYN_ENTRY_DECORATED(char *, OsaStrRChr, 8, (const char *s, char c))

/* ---- Files (the C runtime's buffered streams) --------------------------- */

/* fopen with the runtime's mode letters ("rb", ...); NULL when the file
 * cannot be opened. Other openers of the file are not locked out. */
RYN_ENTRY_DECORATED(FILE *, OsaFileOpen, 8, (const char *name, const char *mode))
/* 0, or -1 on failure (also for a NULL file). */
RYN_ENTRY_DECORATED(int32_t, OsaFileClose, 4, (FILE *file))
/* Number of whole items read: fewer at the end of the file or on an error. */
RYN_ENTRY_DECORATED(uint32_t, OsaFileRead, 16, (void *buffer, uint32_t size, uint32_t count, FILE *file))
/* origin: 0 start, 1 current position, 2 end; any other origin returns -1
 * and leaves the file alone. 0 on success, nonzero on failure. */
RYN_ENTRY_DECORATED(int32_t, OsaFileSeek, 12, (FILE *file, int32_t offset, int32_t origin))

/* ---- Console ------------------------------------------------------------ */

RYN_ENTRY(void, OsaConsoleInit, 0, (void))
RYN_ENTRY(void, OsaConsoleExit, 0, (void))
/* Sets the script: '^'-separated lines that answer the next console reads
 * instead of standard input ("a^^b": a, an empty line, b; a trailing '^'
 * goes with the last line). Once the script is used up, reads come from
 * standard input again. The string is not copied: keep it alive and
 * unchanged while it is in use. An empty string (or NULL) turns the script
 * off. One process-wide script, not guarded: one user at a time. */
RYN_ENTRY(void, OsaConsoleInput, 4, (const char *script))
/* Reads one line without its newline into buffer: the next script segment
 * up to '^' (which is stepped over) while a script is set, else a line of
 * standard input. NULL when standard input ends before any character or
 * fails.
 * Hazard: the interface has no buffer size and nothing bounds the copy. The
 * buffer must hold the longest line (or script segment) that can come, plus
 * the terminator; longer input writes past it. */
RYN_ENTRY(char *, OsaConsoleGetStr, 4, (char *buffer))
/* One character as a signed 8-bit value widened to 32 bits. While a script
 * is set, its next character ('^' included); otherwise from standard input:
 * on a terminal one key without echo and without waiting for a newline (the
 * terminal's settings are restored before the call returns), else one
 * character. -1 at the end of the input. */
RYN_ENTRY(int32_t, OsaConsoleGetCh, 0, (void))
/* Writes s and a newline to standard output: 0, or -1 on a write error. */
RYN_ENTRY_DECORATED(int32_t, OsaConsolePutStr, 4, (const char *s))
/* vprintf to standard output: characters written, negative on an error.
 * Both entry points take a va_list the caller has prepared (va_start), not
 * the arguments themselves. */
RYN_ENTRY(int32_t, OsaConsolePrintF, 8, (const char *format, va_list arguments))
/* There is no portable speaker: rings the terminal bell when standard output
 * is a terminal, waits for the duration and returns nonzero. */
RYN_ENTRY(int32_t, OsaBeep, 8, (uint32_t frequency, uint32_t milliseconds))

/* ---- Threads, mutexes, time --------------------------------------------- */

typedef uint32_t (*OsaThreadRoutine)(void *context);

/* Starts a detached thread with the default stack size running routine
 * (OsaThreadStart: with a null context). The thread asks for the highest
 * normal priority (a nice value two below the process's); a process without
 * the privilege to raise it still gets its thread at normal priority. The
 * result is nonzero when the thread was created, 0 otherwise. */
RYN_ENTRY(int32_t, OsaThreadStart, 4, (OsaThreadRoutine routine))
RYN_ENTRY(int32_t, OsaThreadStartEx, 8, (OsaThreadRoutine routine, void *context))
/* Suspends the calling thread for the given milliseconds. */
RYN_ENTRY(void, OsaThreadSleep, 4, (uint32_t milliseconds))

/* Storage of a re-entrant mutex (a recursive pthread mutex), provided by the
 * caller; the layer never allocates. Initialise it with OsaMutexInit before
 * the first lock and destroy it with OsaMutexDestroy once unused. The owning
 * thread may lock it again; each lock needs its unlock. */
typedef struct OsaMutex {
    union {
        uint64_t align;
        unsigned char bytes[64];
    } storage;
} OsaMutex;

RYN_ENTRY(void, OsaMutexInit, 4, (OsaMutex *mutex))
RYN_ENTRY(void, OsaMutexLock, 4, (OsaMutex *mutex))
RYN_ENTRY(void, OsaMutexUnlock, 4, (OsaMutex *mutex))
RYN_ENTRY(void, OsaMutexDestroy, 4, (OsaMutex *mutex))
/* Local time (the process's time zone) of a calendar time in seconds since
 * 1970-01-01 00:00 UTC; NULL for a negative time or a NULL pointer. The
 * result lives in a per-thread buffer that the next call on the same thread
 * overwrites. */
RYN_ENTRY(struct tm *, OsaStdLocalTime, 4, (const int32_t *time))

#ifdef __cplusplus
}
#endif

#endif /* RYN_OSA_H */
