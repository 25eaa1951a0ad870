// rynctl's audio-file reader on the input written as a .wav file (whatever
// libsndfile recognises in it) and as a raw mu-law .ul file. A failure
// says why and returns no samples; a raw file of any bytes is read, one
// sample a byte. Inputs stop at 16 KiB: a rate conversion makes up to 256
// samples of each one read (a file of 32 Hz), and a run should stay short.
#include <cstdlib>

#include "AudioFile.h"
#include "FuzzTemp.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    if (size > 16384) return 0;
    for (const char *name : {"input.wav", "input.ul"}) {
        const std::string path = ryn::fuzz::writeTempFile(name, data, size);
        std::vector<int16_t> samples;
        std::string error, conversion;
        const bool read = rynctl::audio::read(path, samples, error, conversion);
        if (!read && (!samples.empty() || error.empty())) std::abort();
        if (name[6] == 'u' && size != 0 && (!read || samples.size() != size)) std::abort();
    }
    return 0;
}
