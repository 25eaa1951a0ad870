// WAV files of the board's audio: 8 kHz, mono, 16-bit PCM.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace rynctl::wav {

inline constexpr uint32_t kSampleRate = 8000;

// Writes `samples` as a 44-byte-header PCM WAV file; false when it cannot.
bool write(const char *path, const std::vector<int16_t> &samples);

// Reads an 8 kHz mono 16-bit PCM WAV file. On failure returns false and says
// why in `error` (not a WAV file, another format, cannot be read).
bool read(const char *path, std::vector<int16_t> &samples, std::string &error);

}  // namespace rynctl::wav
