// Files and the console of the Osa layer, with the console's script mode.
// Reading one key and beeping are the system's (osa/System.h).
#include <cstdio>
#include <cstring>

#include "Osa.h"
#include "osa/System.h"

namespace {

// The script cursor: console input comes from here while it does not stand
// on the terminator. Process-wide and unguarded: one user at a time.
const char *scriptCursor = "";

bool scriptOn() { return *scriptCursor != '\0'; }

}  // namespace

extern "C" {

FILE *RYN_DECORATED(OsaFileOpen, 8)(const char *name, const char *mode) {
    return name == nullptr || mode == nullptr ? nullptr : std::fopen(name, mode);
}

int32_t RYN_DECORATED(OsaFileClose, 4)(FILE *file) { return file != nullptr && std::fclose(file) == 0 ? 0 : -1; }

uint32_t RYN_DECORATED(OsaFileRead, 16)(void *buffer, uint32_t size, uint32_t count, FILE *file) {
    return file == nullptr || buffer == nullptr ? 0 : static_cast<uint32_t>(std::fread(buffer, size, count, file));
}

int32_t RYN_DECORATED(OsaFileSeek, 12)(FILE *file, int32_t offset, int32_t origin) {
    static constexpr int kOrigins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (origin < 0 || origin > 2) return -1;
    if (file == nullptr) return -1;
    return std::fseek(file, offset, kOrigins[origin]);
}

void RYN_DECORATED(OsaConsoleInit, 0)(void) {}

void RYN_DECORATED(OsaConsoleExit, 0)(void) {}

void RYN_DECORATED(OsaConsoleInput, 4)(const char *script) { scriptCursor = script != nullptr ? script : ""; }

char *RYN_DECORATED(OsaConsoleGetStr, 4)(char *buffer) {
    if (buffer == nullptr) return nullptr;
    if (!scriptOn()) {
        // The line read of the runtime: up to the newline, which is dropped;
        // null at the end of the input before any character or on a read error.
        std::fflush(stdout);
        size_t length = 0;
        int c;
        while ((c = std::getchar()) != EOF && c != '\n') buffer[length++] = static_cast<char>(c);
        if (c == EOF && (length == 0 || std::ferror(stdin) != 0)) return nullptr;
        buffer[length] = '\0';
        return buffer;
    }
    size_t length = 0;
    while (*scriptCursor != '\0' && *scriptCursor != '^') buffer[length++] = *scriptCursor++;
    buffer[length] = '\0';
    if (*scriptCursor == '^') ++scriptCursor;
    return buffer;
}

int32_t RYN_DECORATED(OsaConsoleGetCh, 0)(void) {
    if (scriptOn()) return static_cast<int32_t>(static_cast<signed char>(*scriptCursor++));
    std::fflush(stdout);
    return ryn::osa::sys::readKey();
}

int32_t RYN_DECORATED(OsaConsolePutStr, 4)(const char *s) {
    if (s == nullptr) return -1;
    return std::fputs(s, stdout) >= 0 && std::fputc('\n', stdout) != EOF ? 0 : -1;
}

int32_t RYN_DECORATED(OsaConsolePrintF, 8)(const char *format, va_list arguments) {
    if (format == nullptr) return -1;
    return std::vprintf(format, arguments);
}

int32_t RYN_DECORATED(OsaBeep, 8)(uint32_t frequency, uint32_t milliseconds) {
    ryn::osa::sys::beep(frequency, milliseconds);
    return 1;
}

}  // extern "C"
