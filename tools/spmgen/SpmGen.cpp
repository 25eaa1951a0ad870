// Writes the built-in module images as C++ arrays, one for each row of
// data/spm/ModuleTable.inc.
//
//   ryn_spmgen OUT.cpp [FIRMWARE_DIR]
//
// With a firmware folder, each image is read from FIRMWARE_DIR/spm_<module>_<type>.bin
// (16-bit little-endian words) and must have the table's length. Without
// one, the images are stand-ins made here: deterministic, of exactly the
// outward form a board's loader relies on (whole command-stream blocks or
// records of at most 128 units at plausible, non-overlapping addresses, the
// entry address inside a loaded block, the table's texts as 16-bit DSP
// characters), and with pseudo-random contents that are no DSP program.
// Every image, read or made, is checked against its row before it is written.
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace {

enum class Form { CommandStream, Records1, Records2 };

struct Row {
    uint32_t module, dspType;
    Form form;
    uint32_t length, entry;
    const char *text;
};

const Row kRows[] = {
#define RYN_SPM_MODULE(module, type, form, length, entry, text) {module, type, Form::form, length, entry, text},
#include "ModuleTable.inc"
#undef RYN_SPM_MODULE
};

using Words = std::vector<uint16_t>;

constexpr uint32_t kMaxUnits = 128;
constexpr uint16_t kRecordHeader[4] = {0x54AB, 0x6D2E, 0x1010, 0x1C1C};

// Contents: a linear congruential sequence seeded by the row, so that every
// build makes the same images.
class Contents {
public:
    explicit Contents(const Row &row) : state_(row.module * 16 + row.dspType) {}
    uint16_t next() {
        state_ = state_ * 1103515245u + 12345u;
        return static_cast<uint16_t>(state_ >> 16);
    }

private:
    uint32_t state_;
};

// Splits `total` units into `parts` nearly equal parts.
std::vector<uint32_t> split(uint32_t total, uint32_t parts) {
    std::vector<uint32_t> out(parts, total / parts);
    for (uint32_t i = 0; i < total % parts; ++i) ++out[i];
    return out;
}

// The first address of `units` contiguous units placed around the entry
// address, no lower than `lowest`.
uint32_t base(uint32_t entry, uint32_t units, uint32_t lowest) {
    return entry > lowest + units / 2 ? entry - units / 2 : lowest;
}

// Data words of a block or record; the text, if any, at the start of the last one.
Words data(Contents &contents, uint32_t words, bool last, const char *text) {
    Words out(words);
    for (uint16_t &w : out) w = contents.next();
    for (size_t i = 0; last && text[i] != '\0' && i < out.size(); ++i) out[i] = static_cast<uint8_t>(text[i]);
    return out;
}

// Blocks of 14 + 2n words: the code in program memory (page 0) around the
// entry address, the last block in data memory (page 1).
Words commandStream(const Row &row) {
    const uint32_t blocks = (row.length + 269) / 270;
    const uint32_t dataWords = (row.length - 14 * blocks) / 2;
    const std::vector<uint32_t> sizes = split(dataWords, blocks);
    Contents contents(row);
    uint32_t address = base(row.entry, dataWords - sizes.back(), 0x100);
    Words out;
    for (uint32_t b = 0; b < blocks; ++b) {
        const bool last = b + 1 == blocks;
        const uint16_t at = static_cast<uint16_t>(last ? 0x0080 : address);
        const uint16_t count = static_cast<uint16_t>(sizes[b] - 1);
        const Words setup = last ? Words{2, 1, 2, 0x1004, 2, count, 2, at} : Words{2, 0, 2, at, 2, count, 2, 0x1004};
        out.insert(out.end(), {0x0004, 0x0FFF});
        out.insert(out.end(), setup.begin(), setup.end());
        for (uint16_t w : data(contents, sizes[b], last, row.text)) out.insert(out.end(), {0x0002, w});
        out.insert(out.end(), {0x0000, 0x0808, 0xFFFF, 0xFFFF});
        address += sizes[b];
    }
    return out;
}

// The record header, then records of at most 128 units at rising addresses
// around the entry address: word records, or byte records of an even count.
Words records(const Row &row) {
    const bool bytes = row.form == Form::Records2;
    const uint32_t recordWords = 4 + (bytes ? kMaxUnits / 2 : kMaxUnits);
    const uint32_t count = (row.length - 5 + recordWords - 1) / recordWords;
    const uint32_t dataWords = row.length - 5 - 4 * count;
    const std::vector<uint32_t> sizes = split(dataWords, count);
    const uint32_t unitsPerWord = bytes ? 2 : 1;
    Contents contents(row);
    uint32_t address = base(row.entry, dataWords * unitsPerWord, 0x100);
    Words out(kRecordHeader, kRecordHeader + 4);
    out.push_back(bytes ? 2 : 1);
    for (uint32_t r = 0; r < count; ++r) {
        const uint32_t units = sizes[r] * unitsPerWord;
        out.insert(out.end(), {static_cast<uint16_t>(address >> 16), static_cast<uint16_t>(address),
                               static_cast<uint16_t>(units >> 16), static_cast<uint16_t>(units)});
        const Words words = data(contents, sizes[r], r + 1 == count, row.text);
        out.insert(out.end(), words.begin(), words.end());
        address += units;
    }
    return out;
}

bool containsText(const Words &image, const char *text) {
    const std::string wanted(text);
    if (wanted.empty()) return true;
    for (size_t i = 0; i + wanted.size() <= image.size(); ++i) {
        size_t j = 0;
        while (j < wanted.size() && image[i + j] == static_cast<uint8_t>(wanted[j])) ++j;
        if (j == wanted.size()) return true;
    }
    return false;
}

// Walks an image as a loader ships it; an empty text when it is well formed.
std::string check(const Row &row, const Words &image) {
    if (image.size() != row.length) return "length " + std::to_string(image.size());
    if (!containsText(image, row.text)) return "text missing";
    bool entryLoaded = false;
    size_t at = 0;
    if (row.form == Form::CommandStream) {
        while (at < image.size()) {
            if (image.size() - at < 14 || image[at] != 4 || image[at + 1] != 0x0FFF) return "block opening";
            const bool page0 = image[at + 3] == 0;
            const uint32_t address = page0 ? image[at + 5] : image[at + 9];
            const uint32_t units = uint32_t{image[at + 7]} + 1;  // the count pair stands third in both orders
            if (units > kMaxUnits || image.size() - at < 14 + 2 * units) return "block size";
            const size_t close = at + 10 + 2 * units;
            if (image[close] != 0 || image[close + 1] != 0x0808 || image[close + 2] != 0xFFFF ||
                image[close + 3] != 0xFFFF)
                return "block closing";
            if (page0 && row.entry >= address && row.entry < address + units) entryLoaded = true;
            at = close + 4;
        }
    } else {
        const bool bytes = row.form == Form::Records2;
        if (image.size() < 5 || image[4] != (bytes ? 2 : 1)) return "record header";
        at = 5;
        while (at < image.size()) {
            if (image.size() - at < 4) return "record fields";
            const uint32_t address = uint32_t{image[at]} << 16 | image[at + 1];
            const uint32_t units = uint32_t{image[at + 2]} << 16 | image[at + 3];
            const uint32_t words = bytes ? (units + 1) / 2 : units;
            if (units == 0 || units > kMaxUnits || image.size() - at - 4 < words) return "record size";
            if (row.entry >= address && row.entry < address + units) entryLoaded = true;
            at += 4 + words;
        }
    }
    return entryLoaded ? std::string() : "entry address outside the loaded blocks";
}

bool readFirmware(const std::string &folder, const Row &row, Words &image) {
    const std::string path = folder + "/spm_" + std::to_string(row.module) + "_" + std::to_string(row.dspType) + ".bin";
    FILE *file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        std::fprintf(stderr, "ryn_spmgen: cannot open %s\n", path.c_str());
        return false;
    }
    uint8_t pair[2];
    while (std::fread(pair, 1, 2, file) == 2) image.push_back(static_cast<uint16_t>(pair[0] | pair[1] << 8));
    std::fclose(file);
    return true;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: ryn_spmgen OUT.cpp [FIRMWARE_DIR]\n");
        return 2;
    }
    std::string source = "// Made by ryn_spmgen from data/spm/ModuleTable.inc; do not edit.\n#include <cstdint>\n\n"
                         "namespace ryn::spm {\n";
    for (const Row &row : kRows) {
        Words image;
        if (argc == 3) {
            if (!readFirmware(argv[2], row, image)) return 1;
        } else {
            image = row.form == Form::CommandStream ? commandStream(row) : records(row);
        }
        if (const std::string fault = check(row, image); !fault.empty()) {
            std::fprintf(stderr, "ryn_spmgen: module %u, DSP type %u: %s\n", row.module, row.dspType, fault.c_str());
            return 1;
        }
        char name[64];
        std::snprintf(name, sizeof name, "kImage_%u_%u", row.module, row.dspType);
        source += "extern const uint16_t " + std::string(name) + "[" + std::to_string(row.length) + "];\n";
        source += "const uint16_t " + std::string(name) + "[" + std::to_string(row.length) + "] = {";
        for (size_t i = 0; i < image.size(); ++i) {
            char word[8];
            std::snprintf(word, sizeof word, "%s%u,", i % 16 == 0 ? "\n" : "", image[i]);
            source += word;
        }
        source += "\n};\n";
    }
    source += "}  // namespace ryn::spm\n";
    FILE *out = std::fopen(argv[1], "wb");
    if (out == nullptr || std::fwrite(source.data(), 1, source.size(), out) != source.size() || std::fclose(out) != 0) {
        std::fprintf(stderr, "ryn_spmgen: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}
