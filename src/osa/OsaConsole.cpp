// Files and the console of the Osa layer, with the console's script mode.
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "Osa.h"

namespace {

// The script cursor: console input comes from here while it does not stand
// on the terminator. Process-wide and unguarded: one user at a time.
const char *scriptCursor = "";

bool scriptOn() { return *scriptCursor != '\0'; }

// One key from a terminal without echo and without waiting for a newline;
// one character from anything else. -1 at the end of the input.
int32_t readKey() {
    std::fflush(stdout);
    termios saved{};
    if (isatty(STDIN_FILENO) == 0 || tcgetattr(STDIN_FILENO, &saved) != 0) {
        const int c = std::getchar();
        return c == EOF ? -1 : static_cast<int32_t>(static_cast<signed char>(c));
    }
    termios raw = saved;
    raw.c_lflag &= static_cast<tcflag_t>(~(ICANON | ECHO));
    raw.c_cc[VMIN] = 1;
    raw.c_cc[VTIME] = 0;
    tcsetattr(STDIN_FILENO, TCSANOW, &raw);
    unsigned char key = 0;
    ssize_t got;
    do {
        got = read(STDIN_FILENO, &key, 1);
    } while (got < 0 && errno == EINTR);
    tcsetattr(STDIN_FILENO, TCSANOW, &saved);
    return got == 1 ? static_cast<int32_t>(static_cast<signed char>(key)) : -1;
}

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
    return readKey();
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
    (void)frequency;  // a terminal bell has no pitch
    if (isatty(STDOUT_FILENO) != 0) {
        std::fputc('\a', stdout);
        std::fflush(stdout);
    }
    RYN_DECORATED(OsaThreadSleep, 4)(milliseconds);
    return 1;
}

}  // extern "C"
