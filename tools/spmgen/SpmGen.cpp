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
#include <optional>
#include <string>
#include <vector>

#include "DspImage.h"
#include "LittleEndian.h"

namespace {

namespace image = wire::dsp_image;

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

constexpr uint32_t kMaxUnits = 128;  // of a block, and of a record of either kind

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

// An image of the row's length, written by `write`; empty when what it
// writes does not fit, so that the check refuses it.
template <typename Write>
Words written(const Row &row, Write write) {
    Words out(row.length);
    image::ImageWriter writer(out);
    write(writer);
    if (writer.refused()) return {};
    out.resize(writer.used());
    return out;
}

// Blocks of 14 + 2n words: the code in program memory (page 0) around the
// entry address, the last block in data memory (page 1).
Words commandStream(const Row &row) {
    const uint32_t blocks = (row.length + 269) / 270;
    const uint32_t dataWords = (row.length - image::kBlockFrameWords * blocks) / 2;
    const std::vector<uint32_t> sizes = split(dataWords, blocks);
    return written(row, [&](image::ImageWriter &out) {
        Contents contents(row);
        uint32_t address = base(row.entry, dataWords - sizes.back(), 0x100);
        for (uint32_t b = 0; b < blocks; ++b) {
            const bool last = b + 1 == blocks;
            out.openBlock(last ? 1 : 0, static_cast<uint16_t>(last ? 0x0080 : address), sizes[b]);
            for (uint16_t w : data(contents, sizes[b], last, row.text)) out.blockWord(w);
            out.closeBlock();
            address += sizes[b];
        }
    });
}

// The record header, then records of at most 128 units at rising addresses
// around the entry address: word records, or byte records of an even count.
Words records(const Row &row) {
    const bool bytes = row.form == Form::Records2;
    const uint32_t recordWords = image::kRecordFieldWords + (bytes ? kMaxUnits / 2 : kMaxUnits);
    const uint32_t count = (row.length - image::kRecordHeaderWords + recordWords - 1) / recordWords;
    const uint32_t dataWords = row.length - image::kRecordHeaderWords - image::kRecordFieldWords * count;
    const std::vector<uint32_t> sizes = split(dataWords, count);
    const uint32_t unitsPerWord = bytes ? 2 : 1;
    return written(row, [&](image::ImageWriter &out) {
        Contents contents(row);
        uint32_t address = base(row.entry, dataWords * unitsPerWord, 0x100);
        out.recordHeader(bytes ? image::kByteRecords : image::kWordRecords);
        for (uint32_t r = 0; r < count; ++r) {
            const uint32_t units = sizes[r] * unitsPerWord;
            out.recordFields(address, units);
            for (uint16_t w : data(contents, sizes[r], r + 1 == count, row.text)) out.put(w);
            address += units;
        }
    });
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

bool holdsEntry(const Row &row, uint32_t address, uint32_t units) {
    return row.entry >= address && row.entry < address + units;
}

// Walks an image as a board loads it; an empty text when it is well formed.
std::string check(const Row &row, const Words &words) {
    if (words.size() != row.length) return "length " + std::to_string(words.size());
    if (!containsText(words, row.text)) return "text missing";
    bool entryLoaded = false;
    if (row.form == Form::CommandStream) {
        for (image::StreamReader stream(words); !stream.done();) {
            const size_t at = stream.position();
            const std::optional<image::Block> block = stream.next();
            if (!block) return "malformed block at word " + std::to_string(at);
            if (block->page == 0 && holdsEntry(row, block->address, block->count)) entryLoaded = true;
        }
    } else {
        const auto records = image::RecordReader::open(words);
        if (!records || records->bytes() != (row.form == Form::Records2)) return "record header";
        for (image::RecordReader reader = *records; !reader.done();) {
            const size_t at = reader.position();
            const std::optional<image::Record> record = reader.next();
            if (!record || record->count == 0 || record->count > kMaxUnits)
                return "record size at word " + std::to_string(at);
            if (holdsEntry(row, record->address, record->count)) entryLoaded = true;
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
    while (std::fread(pair, 1, 2, file) == 2) image.push_back(wire::le::load16(pair));
    std::fclose(file);
    return true;
}

}  // namespace

int main(int argc, char **argv) {
    if (argc < 2 || argc > 3) {
        std::fprintf(stderr, "usage: ryn_spmgen OUT.cpp [FIRMWARE_DIR]\n");
        return 2;
    }
    std::string source =
        "// Made by ryn_spmgen from data/spm/ModuleTable.inc; do not edit.\n#include <cstdint>\n\n"
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
