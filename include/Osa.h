/**
 * @file Osa.h
 * @brief The operating-system abstraction layer of RynHwDll, and the export
 * conventions shared by RynHwDll.h.
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
 * - OsaDeviceOpen(name) resolves `"\\.\"` + name (at most 51 characters of
 *   name): first among devices registered inside the process, then as the
 *   driver module `ryn-drivers/<name in lower case>.so` next to the loaded
 *   library file (see RynUserDriver.h). Module names may hold only letters,
 *   digits, '_' and '-'. A device is opened exclusively: a second open of
 *   the same name fails while the first is open.
 */

/**
 * @defgroup osa OS abstraction layer
 * @brief Strings, files, console, threads, mutexes, local time and device
 * I/O over the operating system, used by the library and exported for
 * applications.
 *
 * None of these functions returns a ResultCode; each returns what its
 * description says. Their undecorated entry points translate nothing.
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

/**
 * @defgroup ryn_exports Export conventions
 * @brief How the headers declare the exported functions.
 *
 * Every function is declared with RYN_ENTRY or RYN_ENTRY_DECORATED; the
 * reference shows the resulting prototype under the bare name, the name C
 * code calls.
 * @{
 */

/*
 * The platform's part, in this one place: how a declaration is exported and
 * which calling convention the decorated entry points use.
 * - Windows: programs import from the DLL with __declspec(dllimport), or,
 *   linked against the static library, define RYN_STATIC_LIBRARY and import
 *   nothing. The 64-bit DLL exports with __declspec(dllexport); the 32-bit
 *   one exports exactly the names of its module-definition file, made from
 *   the export table. Decorated entry points are __stdcall, undecorated ones
 *   the C default (cdecl). At 32 bits a decorated entry point is the symbol
 *   of its export `_Name@N` (with the compiler's own leading underscore), in
 *   the library and in the programs that import it, and the bare name of a
 *   decorated-only function is bound to that symbol too.
 * - Elsewhere: default visibility marks an exported declaration; there is
 *   one calling convention.
 */
#if defined(_WIN32)
#define RYN_CALL __stdcall
#if defined(RYN_STATIC_LIBRARY) || (defined(RYN_BUILDING_LIBRARY) && !defined(_WIN64))
#define RYN_API
#elif defined(RYN_BUILDING_LIBRARY)
#define RYN_API __declspec(dllexport)
#else
#define RYN_API __declspec(dllimport)
#endif
#if defined(_WIN64)
#define RYN_DECORATED_SYMBOL(name, n) #name "_" #n
#define RYN_DECORATED_LABEL(name, n)
#else
#define RYN_DECORATED_SYMBOL(name, n) "__" #name "@" #n
#define RYN_DECORATED_LABEL(name, n) __asm__(RYN_DECORATED_SYMBOL(name, n))
#endif
#else
/** @brief Marks a declaration as exported from the shared library. */
#if defined(__GNUC__)
#define RYN_API __attribute__((visibility("default")))
#else
#define RYN_API
#endif
/** @brief The calling convention of the decorated entry points: `__stdcall` on Windows, the only one here. */
#define RYN_CALL
/** @brief The linker's symbol of a decorated entry point, as a string. */
#define RYN_DECORATED_SYMBOL(name, n) #name "_" #n
/** @brief The symbol given to a decorated entry point where it differs from its C name (32-bit Windows). */
#define RYN_DECORATED_LABEL(name, n)
#endif

/** @brief Symbol of a decorated entry point: `_Name@N` on Windows, `Name_N` here (N: the bytes of the arguments). */
#define RYN_DECORATED(name, n) name##_##n

/**
 * @brief Declares a function with both entry points: `Name_N` does the work,
 * `Name` forwards to it (and applies the driver-version translations of
 * RynHwDll.h).
 */
#define RYN_ENTRY(ret, name, n, params)                                           \
    RYN_API ret RYN_CALL RYN_DECORATED(name, n) params RYN_DECORATED_LABEL(name, n); \
    RYN_API ret name params;

/**
 * @brief Declares a function exported only under its decorated name; the
 * bare name is bound to the same symbol.
 */
#define RYN_ENTRY_DECORATED(ret, name, n, params)                                 \
    RYN_API ret RYN_CALL RYN_DECORATED(name, n) params RYN_DECORATED_LABEL(name, n); \
    RYN_API ret RYN_CALL name params __asm__(RYN_DECORATED_SYMBOL(name, n));

/** @} */

/* ---- Types -------------------------------------------------------------- */

/**
 * @defgroup osa_device Handles and device I/O
 * @ingroup osa
 * @brief Operating-system handles and the three device calls the request
 * transport uses.
 * @{
 */

/** @brief An operating-system handle: a driver connection or an event object (a file descriptor here). */
typedef uint32_t OsaHandle;
#ifndef INVALID_HANDLE_VALUE
/** @brief The value of no handle; never a valid handle. */
#define INVALID_HANDLE_VALUE ((OsaHandle)0xFFFFFFFFu)
#endif

/* ---- Device I/O --------------------------------------------------------- */

/**
 * @brief Opens the device `\\.\` + @p name.
 * @param name the device name, at most 51 characters (e.g. "RYNDRV").
 * @return the connection's handle; INVALID_HANDLE_VALUE when the name is too
 *   long, unknown, refused by its driver or already open.
 */
RYN_ENTRY(OsaHandle, OsaDeviceOpen, 4, (const char *name))
/**
 * @brief Closes a device connection or an event object.
 * @param handle the handle.
 * @return nonzero on success, 0 for a handle this layer did not give out.
 */
RYN_ENTRY(int32_t, OsaDeviceClose, 4, (OsaHandle handle))
/**
 * @brief One synchronous device I/O control request.
 * @param handle the connection.
 * @param code the control code.
 * @param input the request block; null with a nonzero length fails.
 * @param inputLength its length.
 * @param output the reply block; null with a nonzero length fails.
 * @param outputLength its length.
 * @param returned receives the byte count the driver reports (never more
 *   than @p outputLength); may be null.
 * @return the driver's result: nonzero on success.
 */
RYN_ENTRY(int32_t, OsaDeviceIoControl, 28,
          (OsaHandle handle, uint32_t code, const void *input, uint32_t inputLength, void *output,
           uint32_t outputLength, uint32_t *returned))

/** @} */

/* ---- Strings ----------------------------------------------------------- */

/**
 * @defgroup osa_strings Strings
 * @ingroup osa
 * @brief 8-bit NUL-terminated strings: characters compare as signed 8-bit
 * values; ASCII-only case rules, no locale.
 *
 * A null source string reads as the empty one; a null destination is left
 * alone (and a function that returns its string returns null).
 * @{
 */

/** @name Length, copy and compare */
/** @{ */
/**
 * OsaStrLen(): the characters before the terminator of @p s. OsaStrCpy():
 * copies @p s with its terminator into @p d. OsaStrCmp(): at the first pair
 * of characters of @p s1 and @p s2 that differ, the first minus the second
 * (signed 8-bit values), 0 when both end together; OsaStrCmpI() and
 * OsaStrICmp() compare the characters passed through OsaToUpper().
 */
RYN_ENTRY(uint32_t, OsaStrLen, 4, (const char *s))
RYN_ENTRY(void, OsaStrCpy, 8, (char *d, const char *s))
/**
 * @brief Copies at most @p n characters of @p s into @p d.
 *
 * Writes one terminator only when fewer than @p n characters were copied
 * (nothing beyond it is zero-filled); @p n <= 0 writes nothing.
 * @param d the destination.
 * @param s the source.
 * @param n the most characters to copy.
 */
RYN_ENTRY(void, OsaStrNCpy, 12, (char *d, const char *s, int32_t n))
RYN_ENTRY(int32_t, OsaStrCmp, 8, (const char *s1, const char *s2))
RYN_ENTRY(int32_t, OsaStrCmpI, 8, (const char *s1, const char *s2))
RYN_ENTRY_DECORATED(int32_t, OsaStrICmp, 8, (const char *s1, const char *s2))
/** @} */
/** @name Case */
/** @{ */
/**
 * OsaToUpper() and OsaStdToUpr(): @p c minus 32 for 'a' to 'z', else @p c;
 * OsaToLower(): @p c plus 32 for 'A' to 'Z'. OsaStrUpr() and OsaStdStrUpr()
 * turn the lower-case letters of @p s to upper case in place and return
 * @p s.
 */RYN_ENTRY(int32_t, OsaToUpper, 4, (int32_t c))
RYN_ENTRY(int32_t, OsaStdToUpr, 4, (int32_t c))
RYN_ENTRY(int32_t, OsaToLower, 4, (int32_t c))
RYN_ENTRY_DECORATED(char *, OsaStrUpr, 4, (char *s))
RYN_ENTRY(char *, OsaStdStrUpr, 4, (char *s))
/** @} */
/**
 * @brief The decimal value of the digits at the very start of @p s: no
 * blanks, no sign, wraps modulo 2^32; 0 when there is no digit.
 * @param s the string.
 */
RYN_ENTRY(int32_t, OsaStrToI, 4, (const char *s))
/**
 * @brief Overwrites the first @p n characters of @p s with @p c, stopping
 * early at the terminator, which stays.
 * @param s the string.
 * @param c the character.
 * @param n the count.
 * @return @p s.
 */
RYN_ENTRY(char *, OsaStrnSet, 12, (char *s, char c, uint32_t n))
/**
 * @brief The last position of @p c in @p s.
 * @param s the string.
 * @param c the character; for the NUL character the position of the
 *   terminator.
 * @return the position, or NULL when @p c does not occur.
 */
RYN_ENTRY_DECORATED(char *, OsaStrRChr, 8, (const char *s, char c))

/** @} */

/* ---- Files (the C runtime's buffered streams) --------------------------- */

/**
 * @defgroup osa_files Files
 * @ingroup osa
 * @brief The C runtime's buffered streams; these four exist only decorated.
 * @{
 */

/**
 * @brief Opens a file; other openers of the file are not locked out.
 * @param name the file name.
 * @param mode the runtime's mode letters ("rb", ...).
 * @return the stream, or NULL when the file cannot be opened.
 */
RYN_ENTRY_DECORATED(FILE *, OsaFileOpen, 8, (const char *name, const char *mode))
/** @brief Closes a file: 0, or -1 on failure (also for a NULL file). @param file the stream. */
RYN_ENTRY_DECORATED(int32_t, OsaFileClose, 4, (FILE *file))
/**
 * @brief Reads items.
 * @param buffer receives the items.
 * @param size the size of an item.
 * @param count the number of items.
 * @param file the stream.
 * @return the number of whole items read: fewer at the end of the file or on
 *   an error, 0 for a NULL file or buffer.
 */
RYN_ENTRY_DECORATED(uint32_t, OsaFileRead, 16, (void *buffer, uint32_t size, uint32_t count, FILE *file))
/**
 * @brief Moves the file position.
 * @param file the stream.
 * @param offset the offset in bytes.
 * @param origin 0 the start, 1 the current position, 2 the end; any other
 *   origin returns -1 and leaves the file alone.
 * @return 0 on success, nonzero on failure.
 */
RYN_ENTRY_DECORATED(int32_t, OsaFileSeek, 12, (FILE *file, int32_t offset, int32_t origin))

/** @} */

/* ---- Console ------------------------------------------------------------ */

/**
 * @defgroup osa_console Console
 * @ingroup osa
 * @brief Standard input and output, with a scripted input mode.
 * @{
 */

/** @name Start and end */
/** @{ */
/** Do nothing; kept for programs that call them around their console use. */
RYN_ENTRY(void, OsaConsoleInit, 0, (void))
RYN_ENTRY(void, OsaConsoleExit, 0, (void))
/** @} */
/**
 * @brief Sets the input script.
 *
 * The script is '^'-separated lines that answer the next console reads
 * instead of standard input ("a^^b": a, an empty line, b; a trailing '^'
 * goes with the last line). Once the script is used up, reads come from
 * standard input again. One process-wide script, not guarded: one user at a
 * time.
 * @param script the script; not copied, so keep it alive and unchanged while
 *   it is in use. An empty string (or NULL) turns the script off.
 */
RYN_ENTRY(void, OsaConsoleInput, 4, (const char *script))
/**
 * @brief Reads one line without its newline.
 *
 * While a script is set the line is the next script segment up to '^'
 * (which is stepped over), else a line of standard input.
 * Hazard: the interface has no buffer size and nothing bounds the copy. The
 * buffer must hold the longest line (or script segment) that can come, plus
 * the terminator; longer input writes past it.
 * @param buffer receives the line.
 * @return @p buffer; NULL when standard input ends before any character or
 *   fails, or for a NULL buffer.
 */
RYN_ENTRY(char *, OsaConsoleGetStr, 4, (char *buffer))
/**
 * @brief Reads one character, as a signed 8-bit value widened to 32 bits.
 *
 * While a script is set, its next character ('^' included); otherwise from
 * standard input: on a terminal one key without echo and without waiting for
 * a newline (the terminal's settings are restored before the call returns),
 * else one character.
 * @return the character, -1 at the end of the input.
 */
RYN_ENTRY(int32_t, OsaConsoleGetCh, 0, (void))
/**
 * @brief Writes @p s and a newline to standard output.
 * @param s the text.
 * @return 0, or -1 on a write error or for a NULL text.
 */
RYN_ENTRY_DECORATED(int32_t, OsaConsolePutStr, 4, (const char *s))
/**
 * @brief Formatted output to standard output (vprintf).
 *
 * Both entry points take a va_list the caller has prepared (va_start), not
 * the arguments themselves.
 * @param format the format.
 * @param arguments the prepared argument list.
 * @return the characters written, negative on an error (-1 for a NULL
 *   format).
 */
RYN_ENTRY(int32_t, OsaConsolePrintF, 8, (const char *format, va_list arguments))
/**
 * @brief Sounds a beep.
 *
 * There is no portable speaker: rings the terminal bell when standard output
 * is a terminal and waits for the duration.
 * @param frequency the frequency in Hz (not used).
 * @param milliseconds the duration.
 * @return nonzero.
 */
RYN_ENTRY(int32_t, OsaBeep, 8, (uint32_t frequency, uint32_t milliseconds))

/** @} */

/* ---- Threads, mutexes, time --------------------------------------------- */

/**
 * @defgroup osa_threads Threads, mutexes and time
 * @ingroup osa
 * @brief Detached threads, re-entrant mutexes in caller storage, sleeping
 * and local time.
 * @{
 */

/** @brief A thread routine: takes the context pointer, returns an exit code. */
typedef uint32_t (*OsaThreadRoutine)(void *context);

/** @name Threads */
/** @{ */
/**
 * Start a detached thread with the default stack size running @p routine,
 * with @p context (OsaThreadStart(): with a null context). The thread asks
 * for the highest normal priority (a nice value two below the process's); a
 * process without the privilege to raise it still gets its thread at normal
 * priority. The result is nonzero when the thread was created, 0 otherwise.
 */
RYN_ENTRY(int32_t, OsaThreadStart, 4, (OsaThreadRoutine routine))
RYN_ENTRY(int32_t, OsaThreadStartEx, 8, (OsaThreadRoutine routine, void *context))
/** @} */
/** @brief Suspends the calling thread. @param milliseconds the time to sleep. */
RYN_ENTRY(void, OsaThreadSleep, 4, (uint32_t milliseconds))

/**
 * @brief Storage of a re-entrant mutex (a recursive pthread mutex), provided
 * by the caller; the layer never allocates.
 *
 * Initialise it with OsaMutexInit() before the first lock and destroy it with
 * OsaMutexDestroy() once unused. The owning thread may lock it again; each
 * lock needs its unlock.
 */
typedef struct OsaMutex {
    /** Room for the platform's mutex, suitably aligned; not for the caller to read. */
    union {
        uint64_t align;
        unsigned char bytes[64];
    } storage;
} OsaMutex;

/** @name Mutexes */
/** @{ */
/**
 * Initialise, lock (blocking; the owner may lock again), unlock and destroy
 * the mutex in the caller's storage @p mutex; a NULL mutex is left alone.
 */
RYN_ENTRY(void, OsaMutexInit, 4, (OsaMutex *mutex))
RYN_ENTRY(void, OsaMutexLock, 4, (OsaMutex *mutex))
RYN_ENTRY(void, OsaMutexUnlock, 4, (OsaMutex *mutex))
RYN_ENTRY(void, OsaMutexDestroy, 4, (OsaMutex *mutex))
/** @} */
/**
 * @brief The local time (the process's time zone) of a calendar time.
 * @param time seconds since 1970-01-01 00:00 UTC.
 * @return the broken-down time in a per-thread buffer that the next call on
 *   the same thread overwrites; NULL for a negative time or a NULL pointer.
 */
RYN_ENTRY(struct tm *, OsaStdLocalTime, 4, (const int32_t *time))

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* RYN_OSA_H */
