// Program files and images: what a DSP program file holds, and program
// images made from one through the library's create calls.
#include <cstring>

#include "Rynctl.h"
#include "dsp/Coff.h"

namespace rynctl {

std::optional<std::vector<uint8_t>> readFile(const char *path) {
    FILE *file = std::fopen(path, "rb");
    if (file == nullptr) return std::nullopt;
    std::vector<uint8_t> bytes;
    uint8_t block[65536];
    size_t got = 0;
    while ((got = std::fread(block, 1, sizeof block, file)) > 0) bytes.insert(bytes.end(), block, block + got);
    const bool failed = std::ferror(file) != 0;
    std::fclose(file);
    if (failed) return std::nullopt;
    return bytes;
}

namespace {

// Why a program file or an entry name was refused, by error number.
std::string refusal(uint32_t error, const char *path, const char *entry, bool records) {
    const std::string file = std::string("\"") + path + "\"";
    switch (error) {
        case 5:
            return file + " is not a complete program file: it ends early or points outside itself";
        case 6:
            return file + " is for a byte target: command-stream images hold word targets only (try --records)";
        case 13:
            if (std::FILE *f = std::fopen(path, "rb")) {
                std::fclose(f);
                return std::string("entry \"") + entry + "\" is neither a hexadecimal address nor a symbol of " + file;
            }
            return "cannot open " + file;
        case 17:
            return records ? file + " is not a version 2 program file (record images need one; leave out --records)"
                           : file + " is not a TI COFF program file of version 1 or 2 with a supported target";
        case 29:
            return "the image is larger than a command-stream image can be (65535 words)";
        default:
            return file + ": error " + std::to_string(error);
    }
}

int coffUsage(FILE *to) {
    std::fprintf(to,
                 "usage: rynctl coff FILE [--entry NAME]\n"
                 "Prints a DSP program file's version, target, sections (name, DSP address, size in load units,\n"
                 "whether the loader sends it) and the entry address the loader would start it at.\n");
    return to == stdout ? 0 : 2;
}

}  // namespace

int coff(int argc, char **argv) {
    const char *path = nullptr;
    const char *entry = "";
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0) return coffUsage(stdout);
        if (std::strcmp(argv[i], "--entry") == 0 && i + 1 < argc) {
            entry = argv[++i];
        } else if (path == nullptr && argv[i][0] != '-') {
            path = argv[i];
        } else {
            return coffUsage(stderr);
        }
    }
    if (path == nullptr) return coffUsage(stderr);
    const auto bytes = readFile(path);
    if (!bytes) {
        std::fprintf(stderr, "rynctl: cannot read \"%s\"\n", path);
        return 1;
    }
    ryn::coff::ProgramFile file;
    uint8_t error = file.open(*bytes);
    if (error == 0) error = file.validate();
    if (error != 0) {
        std::fprintf(stderr, "rynctl: %s\n", refusal(error, path, entry, false).c_str());
        return 1;
    }
    std::printf("version   %d\ntarget    %s\nsections  %u\n", file.version(),
                file.byteTarget() ? "0x009C (bytes)" : (file.version() == 1 ? "words" : "0x0098 (words)"),
                file.sectionCount());
    uint32_t address = file.defaultEntry();
    for (uint32_t i = 0; i < file.sectionCount(); ++i) {
        const ryn::coff::Section s = *file.section(i);
        std::printf("  %-8s address 0x%08X  size %10u  page %u  %s\n", s.name, s.physicalAddress, s.size, s.page,
                    file.loads(s) ? "loaded" : "not loaded");
    }
    if (*entry != '\0') error = file.resolveEntry(entry, address);
    if (error != 0) {
        std::fprintf(stderr, "rynctl: %s\n", refusal(error, path, entry, false).c_str());
        return 1;
    }
    std::printf("entry     0x%08X\n", address);
    return 0;
}

namespace {

int imageUsage(FILE *to) {
    std::fprintf(to,
                 "usage: rynctl image FILE -o OUT [--records] [--entry NAME]\n"
                 "Makes a program image from a DSP program file and writes it to OUT as 16-bit little-endian\n"
                 "words: a command-stream image (word targets), or with --records a record image (version 2\n"
                 "files). Prints the image's length in words and its entry address.\n");
    return to == stdout ? 0 : 2;
}

}  // namespace

int image(int argc, char **argv) {
    const char *path = nullptr, *out = nullptr, *entry = "";
    bool records = false;
    for (int i = 0; i < argc; ++i) {
        if (std::strcmp(argv[i], "--help") == 0) return imageUsage(stdout);
        if (std::strcmp(argv[i], "-o") == 0 && i + 1 < argc) {
            out = argv[++i];
        } else if (std::strcmp(argv[i], "--entry") == 0 && i + 1 < argc) {
            entry = argv[++i];
        } else if (std::strcmp(argv[i], "--records") == 0) {
            records = true;
        } else if (path == nullptr && argv[i][0] != '-') {
            path = argv[i];
        } else {
            return imageUsage(stderr);
        }
    }
    if (path == nullptr || out == nullptr) return imageUsage(stderr);

    std::vector<uint16_t> words;
    uint32_t used = 0, address = 0;
    ResultCode result = 0;
    if (records) {
        // Each record reserves at most five words per byte of the file.
        const auto bytes = readFile(path);
        words.resize(5 + 5 * (bytes ? bytes->size() : 0));
        result =
            RynDspCreateProgramImageEx(path, entry, static_cast<uint32_t>(words.size()), words.data(), &used, &address);
    } else {
        words.resize(0xFFFF);
        uint16_t count = 0;
        result = RynDspCreateProgramImage(path, entry, 0xFFFF, words.data(), &count, &address);
        used = count;
    }
    if (RynFailure(result)) {
        std::fprintf(stderr, "rynctl: %s\n", refusal(result & 0xFF, path, entry, records).c_str());
        return 1;
    }
    FILE *file = std::fopen(out, "wb");
    bool written = file != nullptr;
    for (uint32_t i = 0; written && i < used; ++i) {
        const uint8_t pair[2] = {static_cast<uint8_t>(words[i]), static_cast<uint8_t>(words[i] >> 8)};
        written = std::fwrite(pair, 1, 2, file) == 2;
    }
    if (file != nullptr && std::fclose(file) != 0) written = false;
    if (!written) {
        std::fprintf(stderr, "rynctl: cannot write \"%s\"\n", out);
        return 1;
    }
    std::printf("%s image of %u words, entry 0x%08X, written to %s\n", records ? "record" : "command-stream", used,
                address, out);
    return 0;
}

}  // namespace rynctl
