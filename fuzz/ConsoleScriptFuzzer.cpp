// The console's script mode: the input up to its first NUL is the script;
// the first byte picks, bit by bit, whether each read is a key or a line.
// Reads go on until the script is used up (never reaching standard input),
// and each must return what the script holds at that point: keys one by
// one, '^' included, lines up to the next '^', which is stepped over. Every
// line buffer is exactly as long as its line and the terminator.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "Osa.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size == 0) return 0;
    const uint8_t pattern = data[0];
    const std::string script(reinterpret_cast<const char *>(data + 1), size - 1);  // NUL-terminated by c_str()
    const size_t length = std::strlen(script.c_str());
    OsaConsoleInput_4(script.c_str());
    for (size_t at = 0, read = 0; at < length; ++read) {
        if ((pattern >> (read % 8) & 1) != 0) {
            if (OsaConsoleGetCh_0() != static_cast<signed char>(script[at])) std::abort();
            ++at;
            continue;
        }
        const size_t end = std::min(script.find('^', at), length);
        const auto line = std::make_unique<char[]>(end - at + 1);
        if (OsaConsoleGetStr_4(line.get()) != line.get() || script.compare(at, end - at, line.get()) != 0 ||
            line[end - at] != '\0')
            std::abort();
        at = end < length ? end + 1 : end;
    }
    OsaConsoleInput_4(nullptr);
    return 0;
}
