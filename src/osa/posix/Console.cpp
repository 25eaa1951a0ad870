// The console on Linux: raw terminal reads for single keys, the terminal
// bell for beeps.
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "osa/System.h"

namespace ryn::osa::sys {

int32_t readKey() {
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

// There is no portable speaker: the terminal bell, which has no pitch, when
// standard output is a terminal, and a wait for the duration.
void beep(uint32_t, uint32_t milliseconds) {
    if (isatty(STDOUT_FILENO) != 0) {
        std::fputc('\a', stdout);
        std::fflush(stdout);
    }
    sleepMs(milliseconds);
}

}  // namespace ryn::osa::sys
