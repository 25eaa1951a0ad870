// WAV reading and writing: a RIFF file with a "fmt " chunk and a "data"
// chunk; other chunks are skipped when reading.
#include "Wav.h"

#include <cstdio>
#include <cstring>
#include <optional>

#include "Rynctl.h"

namespace rynctl::wav {
namespace {

void put32(std::vector<uint8_t> &out, uint32_t value) {
    for (int i = 0; i < 4; ++i) out.push_back(static_cast<uint8_t>(value >> (8 * i)));
}
void put16(std::vector<uint8_t> &out, uint16_t value) {
    out.push_back(static_cast<uint8_t>(value));
    out.push_back(static_cast<uint8_t>(value >> 8));
}
uint32_t get32(const uint8_t *at) { return at[0] | at[1] << 8 | at[2] << 16 | static_cast<uint32_t>(at[3]) << 24; }
uint16_t get16(const uint8_t *at) { return static_cast<uint16_t>(at[0] | at[1] << 8); }

}  // namespace

bool write(const char *path, const std::vector<int16_t> &samples) {
    const uint32_t dataBytes = static_cast<uint32_t>(samples.size() * 2);
    std::vector<uint8_t> file;
    file.insert(file.end(), {'R', 'I', 'F', 'F'});
    put32(file, 36 + dataBytes);
    file.insert(file.end(), {'W', 'A', 'V', 'E', 'f', 'm', 't', ' '});
    put32(file, 16);
    put16(file, 1);  // PCM
    put16(file, 1);  // mono
    put32(file, kSampleRate);
    put32(file, kSampleRate * 2);  // bytes per second
    put16(file, 2);                // bytes per frame
    put16(file, 16);               // bits per sample
    file.insert(file.end(), {'d', 'a', 't', 'a'});
    put32(file, dataBytes);
    for (int16_t sample : samples) put16(file, static_cast<uint16_t>(sample));
    FILE *out = std::fopen(path, "wb");
    if (out == nullptr) return false;
    const bool written = std::fwrite(file.data(), 1, file.size(), out) == file.size();
    return std::fclose(out) == 0 && written;
}

bool read(const char *path, std::vector<int16_t> &samples, std::string &error) {
    const auto bytes = readFile(path);
    if (!bytes) {
        error = std::string("cannot read \"") + path + "\"";
        return false;
    }
    const std::vector<uint8_t> &file = *bytes;
    if (file.size() < 12 || std::memcmp(file.data(), "RIFF", 4) != 0 || std::memcmp(file.data() + 8, "WAVE", 4) != 0) {
        error = std::string("\"") + path + "\" is not a WAV file";
        return false;
    }
    bool haveFormat = false;
    for (size_t at = 12; at + 8 <= file.size();) {
        const uint32_t size = get32(&file[at + 4]);
        const size_t body = at + 8;
        const size_t available = file.size() - body;
        if (std::memcmp(&file[at], "fmt ", 4) == 0) {
            if (size < 16 || available < 16) break;
            const uint16_t format = get16(&file[body]), channels = get16(&file[body + 2]);
            const uint32_t rate = get32(&file[body + 4]);
            const uint16_t bits = get16(&file[body + 14]);
            if (format != 1 || channels != 1 || rate != kSampleRate || bits != 16) {
                error = std::string("\"") + path + "\" holds " + std::to_string(channels) + " channel(s) of " +
                        std::to_string(bits) + "-bit " + (format == 1 ? "PCM" : "non-PCM") + " at " +
                        std::to_string(rate) + " Hz; the board takes 8000 Hz mono 16-bit PCM";
                return false;
            }
            haveFormat = true;
        } else if (std::memcmp(&file[at], "data", 4) == 0) {
            if (!haveFormat) break;
            // A data chunk cut short by the end of the file gives what is there.
            const size_t count = std::min<size_t>(size, available) / 2;
            samples.resize(count);
            for (size_t i = 0; i < count; ++i) samples[i] = static_cast<int16_t>(get16(&file[body + 2 * i]));
            return true;
        }
        if (size > available) break;
        at = body + size + (size & 1);
    }
    error = std::string("\"") + path + "\" is not a WAV file of the form the board takes (no format or data chunk)";
    return false;
}

}  // namespace rynctl::wav
