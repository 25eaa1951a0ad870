// Audio files of the board's audio, through libsndfile: the board plays and
// records 8 kHz mono 16-bit samples; files of other rates, channel counts and
// encodings are converted on the way in, and recordings go out as 16-bit PCM
// WAV or as G.711 (WAV or raw). A rynctl built without libsndfile
// (RYN_AUDIO_FILES) reads and writes only files already in the board's
// format, 8 kHz mono WAV of 16-bit PCM, mu-law or A-law and raw .ul / .al:
// read() refuses others, saying so.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace rynctl::audio {

inline constexpr uint32_t kSampleRate = 8000;  // the board's rate

enum class Encoding { Pcm16, Ulaw, Alaw };
enum class Container { Wav, Raw };
struct OutputFormat {
    Container container;
    Encoding encoding;
};

// The format `rynctl record` writes: `encoding` is "pcm16", "ulaw", "alaw" or empty; when empty it follows
// the file's extension: .ul / .al -> raw G.711 mu-law / A-law, .wav -> 16-bit PCM WAV (anything else: 16-bit WAV).
// A given encoding with a .wav name gives a G.711 WAV file (format tag 7 / 6); "pcm16" with .ul/.al is an error.
// Returns nullopt and says why in `error` for an unknown encoding or a contradiction.
std::optional<OutputFormat> outputFormat(const std::string &path, const std::string &encoding, std::string &error);

// Writes 8 kHz mono samples in that format; false with the reason in `error`.
bool write(const std::string &path, const std::vector<int16_t> &samples, OutputFormat format, std::string &error);

// Reads any file libsndfile reads (WAV, AIFF, AU, FLAC, ...; 8- or 16-bit, float, mu-law, A-law; any rate and channel
// count) and raw .ul / .al files (taken as 8 kHz mono G.711), and converts to 8 kHz mono 16-bit: channels averaged,
// rate converted with libsamplerate (SRC_SINC_MEDIUM_QUALITY), float clipped to 16 bits.
// `conversion` is empty when the file already was 8 kHz mono 16-bit PCM, else one line saying what was done,
// e.g. "converted 44100 Hz stereo FLAC 24-bit to 8000 Hz mono 16-bit". false with the reason in `error`
// (libsndfile's own message for an unreadable file, naming the path).
bool read(const std::string &path, std::vector<int16_t> &samples, std::string &error, std::string &conversion);

}  // namespace rynctl::audio
