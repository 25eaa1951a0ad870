// G.711 companding (ITU-T G.711, segment by segment as in the
// recommendation's tables): 16-bit linear samples to 8-bit mu-law or A-law
// codes and back. Audio files and the board's time slots use it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace wire::g711 {

// What a channel with nothing to say sends: the codes of a zero sample.
inline constexpr uint8_t kUlawIdle = 0xFF, kAlawIdle = 0xD5;

inline uint8_t ulawFromLinear(int16_t sample) {
    constexpr int kBias = 0x84, kClip = 32635;
    const int sign = sample < 0 ? 0x80 : 0;
    int x = std::min(sample < 0 ? -static_cast<int>(sample) : static_cast<int>(sample), kClip) + kBias;
    int exponent = 7;
    for (int mask = 0x4000; (x & mask) == 0 && exponent > 0; mask >>= 1) --exponent;
    const int mantissa = (x >> (exponent + 3)) & 0x0F;
    return static_cast<uint8_t>(~(sign | (exponent << 4) | mantissa));
}

inline int16_t linearFromUlaw(uint8_t code) {
    const int u = ~code & 0xFF;
    const int magnitude = ((((u & 0x0F) << 3) + 0x84) << ((u & 0x70) >> 4)) - 0x84;
    return static_cast<int16_t>((u & 0x80) != 0 ? -magnitude : magnitude);
}

inline uint8_t alawFromLinear(int16_t sample) {
    const int mask = sample < 0 ? 0x55 : 0xD5;
    const int x = std::abs(static_cast<int>(sample)) >> 3;  // 12 bits of magnitude
    int segment = 0;
    while (segment < 8 && x >= (0x20 << segment)) ++segment;
    if (segment == 8) return static_cast<uint8_t>(0x7F ^ mask);
    const int mantissa = segment < 2 ? (x >> 1) & 0x0F : (x >> segment) & 0x0F;
    return static_cast<uint8_t>(((segment << 4) | mantissa) ^ mask);
}

inline int16_t linearFromAlaw(uint8_t code) {
    const int a = code ^ 0x55;
    const int segment = (a & 0x70) >> 4;
    int magnitude = ((a & 0x0F) << 4) + (segment == 0 ? 8 : 0x108);
    if (segment > 1) magnitude <<= segment - 1;
    return static_cast<int16_t>((a & 0x80) != 0 ? magnitude : -magnitude);
}

}  // namespace wire::g711
