// rynctl: a command-line view of the library and the driver it reaches.
//
//   rynctl info                  library version, driver device, driver's
//                                answer to the version announcement
//   rynctl coff FILE             what a DSP program file holds
//   rynctl image FILE -o OUT     a program image made from a program file
//   rynctl spm list              the built-in signal-processing modules
//   rynctl spm run DEVICE MODULE runs a built-in module on a DSP
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "RynHwDll.h"
#include "dsp/Coff.h"

namespace {

void printResult(const char *what, ResultCode code) {
    uint32_t error = 0, severity = 0, source = 0, line = 0;
    RynResultCode(code, &error, &severity, &source, &line);
    std::printf("%-22s 0x%08X (%s, source 0x%02X, line %u, error %u)\n", what, code,
                RynFailure(code) ? "failure" : "success", source, line, error & 0xFFu);
}

// Attribute reads go through the decorated entry point, which asks for the
// identifier as given: the undecorated one renumbers identifiers for older
// drivers, which would miss the library's own attributes and the driver's
// version text.
ResultCode readText(DeviceHandle handle, int32_t attribute, char *text, uint32_t size) {
    return RynDrvGetAttributeValueSz_16(handle, attribute, text, size);
}

int info() {
    char version[16] = {};
    readText(RYN_LIBRARY_PSEUDO_HANDLE, 9, version, sizeof version);
    char module[16] = {};
    readText(RYN_LIBRARY_PSEUDO_HANDLE, 11, module, sizeof module);
    std::printf("%-22s %s %s\n", "library", module, version);
    const ResultCode connected = RynDrvConnectLib();
    OsaHandle handle = INVALID_HANDLE_VALUE;
    if (RynDrvGetHandle(&handle) != 0) {
        std::printf("%-22s not opened (no driver answers to \"RYNDRV\")\n", "driver device");
        printResult("connect", connected);
        return 1;
    }
    std::printf("%-22s opened (handle %u)\n", "driver device", handle);
    printResult("version announcement", connected);
    char driverVersion[80] = {};
    const ResultCode read = readText(RYN_DRIVER_PSEUDO_HANDLE, 13, driverVersion, sizeof driverVersion);
    if (RynSuccess(read)) {
        std::printf("%-22s %.79s\n", "driver version", driverVersion);
    } else {
        printResult("driver version", read);
    }
    RynDrvReleaseLib();
    return 0;
}

// ---- Program files and images ----------------------------------------------

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

int imageUsage(FILE *to) {
    std::fprintf(to,
                 "usage: rynctl image FILE -o OUT [--records] [--entry NAME]\n"
                 "Makes a program image from a DSP program file and writes it to OUT as 16-bit little-endian\n"
                 "words: a command-stream image (word targets), or with --records a record image (version 2\n"
                 "files). Prints the image's length in words and its entry address.\n");
    return to == stdout ? 0 : 2;
}

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

// ---- Built-in modules ----------------------------------------------------------

struct SpmRow {
    uint32_t module, dspType;
    const char *form;
    uint32_t length, entry;
    const char *text;
};

constexpr SpmRow kSpmRows[] = {
#define RYN_SPM_MODULE(module, type, form, length, entry, text) {module, type, #form, length, entry, text},
#include "ModuleTable.inc"
#undef RYN_SPM_MODULE
};

int spmUsage(FILE *to) {
    std::fprintf(to,
                 "usage: rynctl spm list\n"
                 "       rynctl spm run DEVICE MODULE\n"
                 "list prints the built-in signal-processing modules: identifier, DSP type, kind of image,\n"
                 "length in words, entry address and the text the image carries. run connects to the driver\n"
                 "and runs module MODULE on the DSP whose driver handle is DEVICE (for example 0x20000011),\n"
                 "choosing the image by the DSP type the driver reports.\n");
    return to == stdout ? 0 : 2;
}

std::string printable(const char *text) {
    std::string out;
    for (; *text != '\0'; ++text) out += *text == '\n' ? std::string("\\n") : std::string(1, *text);
    return out;
}

int spm(int argc, char **argv) {
    if (argc == 1 && std::strcmp(argv[0], "list") == 0) {
        std::printf("module  DSP type  image                 length  entry     text\n");
        for (const SpmRow &row : kSpmRows) {
            const char *kind = std::strcmp(row.form, "CommandStream") == 0 ? "command stream"
                               : std::strcmp(row.form, "Records1") == 0    ? "word records (v1)"
                                                                           : "byte records (v2)";
            std::printf("%6u  %8u  %-20s %7u  0x%05X   %s\n", row.module, row.dspType, kind, row.length, row.entry,
                        printable(row.text).c_str());
        }
        return 0;
    }
    if (argc == 3 && std::strcmp(argv[0], "run") == 0) {
        char *end = nullptr;
        const unsigned long device = std::strtoul(argv[1], &end, 0);
        char *moduleEnd = nullptr;
        const unsigned long module = std::strtoul(argv[2], &moduleEnd, 0);
        if (*end != '\0' || *moduleEnd != '\0' || device > 0xFFFFFFFFul || module > 0xFFFFFFFFul)
            return spmUsage(stderr);
        const ResultCode connected = RynDrvConnectLib();
        if (RynFailure(connected)) {
            printResult("connect", connected);
            return 1;
        }
        const ResultCode result = RynDspRunSpm(static_cast<DeviceHandle>(device), static_cast<uint32_t>(module));
        printResult("run module", result);
        RynDrvReleaseLib();
        return RynFailure(result) ? 1 : 0;
    }
    return spmUsage(argc == 1 && std::strcmp(argv[0], "--help") == 0 ? stdout : stderr);
}

int usage() {
    std::fprintf(stderr,
                 "usage: rynctl info\n"
                 "       rynctl coff FILE [--entry NAME]\n"
                 "       rynctl image FILE -o OUT [--records] [--entry NAME]\n"
                 "       rynctl spm list | run DEVICE MODULE\n");
    return 2;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc == 2 && std::strcmp(argv[1], "info") == 0) return info();
    if (argc >= 2 && std::strcmp(argv[1], "coff") == 0) return coff(argc - 2, argv + 2);
    if (argc >= 2 && std::strcmp(argv[1], "image") == 0) return image(argc - 2, argv + 2);
    if (argc >= 2 && std::strcmp(argv[1], "spm") == 0) return spm(argc - 2, argv + 2);
    return usage();
}
