// String functions of the Osa layer: 8-bit characters compared as signed
// values, ASCII-only case rules, no locale. A null string reads as the empty
// one, and a null destination is left alone.
#include <cstring>

#include "Osa.h"

namespace {

const char *text(const char *s) { return s != nullptr ? s : ""; }

int32_t widen(char c) { return static_cast<int32_t>(static_cast<signed char>(c)); }

int32_t upper(int32_t c) { return c >= 97 && c <= 122 ? c - 32 : c; }

template <class Fold>
int32_t compare(const char *s1, const char *s2, Fold fold) {
    for (;; ++s1, ++s2) {
        const int32_t a = fold(widen(*s1));
        const int32_t b = fold(widen(*s2));
        if (a != b) return a - b;
        if (*s1 == '\0') return 0;
    }
}

char *upperInPlace(char *s) {
    if (s == nullptr) return nullptr;
    for (char *p = s; *p != '\0'; ++p) *p = static_cast<char>(upper(widen(*p)));
    return s;
}

}  // namespace

extern "C" {

uint32_t RYN_DECORATED(OsaStrLen, 4)(const char *s) { return static_cast<uint32_t>(std::strlen(text(s))); }

void RYN_DECORATED(OsaStrCpy, 8)(char *d, const char *s) {
    if (d != nullptr) std::strcpy(d, text(s));
}

void RYN_DECORATED(OsaStrNCpy, 12)(char *d, const char *s, int32_t n) {
    if (d == nullptr) return;
    s = text(s);
    if (*s != '\0') {
        while (n >= 1) {
            *d = *s;
            if (*s == '\0') break;
            ++d;
            ++s;
            --n;
        }
    }
    if (n >= 1) *d = '\0';
}

int32_t RYN_DECORATED(OsaStrCmp, 8)(const char *s1, const char *s2) {
    return compare(text(s1), text(s2), [](int32_t c) { return c; });
}

int32_t RYN_DECORATED(OsaStrCmpI, 8)(const char *s1, const char *s2) { return compare(text(s1), text(s2), upper); }

int32_t RYN_DECORATED(OsaStrICmp, 8)(const char *s1, const char *s2) { return compare(text(s1), text(s2), upper); }

int32_t RYN_DECORATED(OsaToUpper, 4)(int32_t c) { return upper(c); }

int32_t RYN_DECORATED(OsaStdToUpr, 4)(int32_t c) { return upper(c); }

int32_t RYN_DECORATED(OsaToLower, 4)(int32_t c) { return c >= 65 && c <= 90 ? c + 32 : c; }

char *RYN_DECORATED(OsaStrUpr, 4)(char *s) { return upperInPlace(s); }

char *RYN_DECORATED(OsaStdStrUpr, 4)(char *s) { return upperInPlace(s); }

int32_t RYN_DECORATED(OsaStrToI, 4)(const char *s) {
    uint32_t value = 0;  // wraps modulo 2^32, as the conversion always has
    s = text(s);
    for (; *s >= '0' && *s <= '9'; ++s) value = value * 10u + static_cast<uint32_t>(*s - '0');
    return static_cast<int32_t>(value);
}

char *RYN_DECORATED(OsaStrnSet, 12)(char *s, char c, uint32_t n) {
    // Up to n characters, never the terminator or past it.
    if (s != nullptr) std::memset(s, c, strnlen(s, n));
    return s;
}

char *RYN_DECORATED(OsaStrRChr, 8)(const char *s, char c) {
    const char *last = nullptr;
    if (s == nullptr) return nullptr;
    for (const char *p = s;; ++p) {
        if (*p == c) last = p;
        if (*p == '\0') break;
    }
    return const_cast<char *>(last);
}

}  // extern "C"
