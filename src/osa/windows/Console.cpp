// The console on Windows: _getch for single keys, Beep for beeps.
#include <conio.h>
#include <io.h>

#include <cstdio>

#include "osa/windows/Native.h"

namespace ryn::osa::sys {

// _getch reads the console itself, so it serves only while standard input
// is the console.
int32_t readKey() {
    if (_isatty(_fileno(stdin)) == 0) {
        const int c = std::getchar();
        return c == EOF ? -1 : static_cast<int32_t>(static_cast<signed char>(c));
    }
    return static_cast<int32_t>(static_cast<signed char>(_getch()));
}

// Beep plays the tone and returns when it ends; where it cannot (a frequency
// outside 37 to 32767 Hz, no sound device) or returns early, the rest of the
// duration is waited for.
void beep(uint32_t frequency, uint32_t milliseconds) {
    const ULONGLONG start = GetTickCount64();
    Beep(frequency, milliseconds);
    const ULONGLONG spent = GetTickCount64() - start;
    if (spent < milliseconds) Sleep(static_cast<DWORD>(milliseconds - spent));
}

}  // namespace ryn::osa::sys
