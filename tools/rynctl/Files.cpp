// Program files and images: what a DSP program file holds, and program
// images made from one through the library's create calls.
#include <CLI/CLI.hpp>

#include <cstring>

#include "Coff.h"
#include "Rynctl.h"

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

// Why a program file or an entry name was refused, by the code's error number.
std::string refusal(ResultCode code, const char *path, const char *entry, bool records) {
    const std::string file = std::string("\"") + path + "\"";
    switch (code & 0xFFu) {
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
            return file + ": " + describeResult(code);
    }
}

int coff(const char *path, const char *entry) {
    const auto bytes = readFile(path);
    if (!bytes) {
        std::fprintf(stderr, "rynctl: cannot read \"%s\"\n", path);
        return kExitRefused;
    }
    ryn::coff::ProgramFile file;
    uint8_t error = file.open(*bytes);
    if (error == 0) error = file.validate();
    if (error != 0) {
        std::fprintf(stderr, "rynctl: %s\n", refusal(0x80000000u | error, path, entry, false).c_str());
        return kExitRefused;
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
        std::fprintf(stderr, "rynctl: %s\n", refusal(0x80000000u | error, path, entry, false).c_str());
        return kExitRefused;
    }
    std::printf("entry     0x%08X\n", address);
    return kExitDone;
}

int image(const char *path, const char *out, const char *entry, bool records) {
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
        std::fprintf(stderr, "rynctl: %s\n", refusal(result, path, entry, records).c_str());
        return kExitRefused;
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
        return kExitRefused;
    }
    std::printf("%s image of %u words, entry 0x%08X, written to %s\n", records ? "record" : "command-stream", used,
                address, out);
    return kExitDone;
}

}  // namespace

Command coffCommand(CLI::App &rynctl) {
    struct Options {
        std::string path, entry;
    };
    auto o = std::make_shared<Options>();
    CLI::App *app = rynctl.add_subcommand("coff", "what a DSP program file holds");
    app->footer(
        "Prints a DSP program file's version, target, sections (name, DSP address, size in load units,\n"
        "whether the loader sends it) and the entry address the loader would start it at: the file's\n"
        "own, or that of symbol or hexadecimal address NAME. Needs no driver.");
    app->add_option("FILE", o->path, "the program file (TI COFF, version 1 or 2)")->required();
    app->add_option("--entry", o->entry, "the entry symbol or hexadecimal address")->type_name("NAME");
    return {app, [o] { return coff(o->path.c_str(), o->entry.c_str()); }};
}

Command imageCommand(CLI::App &rynctl) {
    struct Options {
        std::string path, out, entry;
        bool records = false;
    };
    auto o = std::make_shared<Options>();
    CLI::App *app = rynctl.add_subcommand("image", "a program image made from a program file");
    app->footer(
        "Makes a program image from a DSP program file through the library's create calls and writes\n"
        "it to OUT as 16-bit little-endian words: a command-stream image (word targets), or with\n"
        "--records a record image (version 2 files). Prints the image's length in words and its entry\n"
        "address. Needs no driver.");
    app->add_option("FILE", o->path, "the program file (TI COFF, version 1 or 2)")->required();
    app->add_option("-o,--output", o->out, "the image file to write")->required()->type_name("OUT");
    app->add_flag("--records", o->records, "make a record image instead of a command-stream image");
    app->add_option("--entry", o->entry, "the entry symbol or hexadecimal address")->type_name("NAME");
    return {app, [o] { return image(o->path.c_str(), o->out.c_str(), o->entry.c_str(), o->records); }};
}

}  // namespace rynctl
