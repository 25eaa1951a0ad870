// Program images: a DSP program as 16-bit words in the caller's memory, in
// one of two forms. The library writes them from program files and ships
// them, the module-image generator writes the built-in ones, and the board's
// DSPs load them; all of them through the reader and writer here.
//
// Command stream (word-addressed DSPs, shipped whole): blocks of (tag, value)
// pairs, each
//   (kOpenTag, kOpenValue),
//   four set-up pairs (kDataTag, v): page 0 (program memory) 0, address,
//     count - 1, kStaging; page 1 (data memory) 1, kStaging, count - 1, address,
//   one (kDataTag, word) per data word, at most kMaxBlockWords,
//   (kEndTag, kEndValue), (kCloseTag, kCloseValue).
//
// Record image (shipped record by record in block writes): kRecordMagic, the
// record version (kWordRecords or kByteRecords), then records of address and
// unit count (each high half first) and the data: a word a unit, or two
// bytes a word, the earlier in the low half. The last record ends exactly
// at the image's length.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "DspWire.h"

namespace wire::dsp_image {

inline constexpr uint16_t kOpenTag = 0x0004, kOpenValue = 0x0FFF;
inline constexpr uint16_t kDataTag = 0x0002;
inline constexpr uint16_t kEndTag = 0x0000, kEndValue = 0x0808;
inline constexpr uint16_t kCloseTag = 0xFFFF, kCloseValue = 0xFFFF;
// The set-up pair the boot loader takes a block's data through: the staging
// of a program file's word blocks.
inline constexpr uint16_t kStaging = dsp::BlockWrite::kFileStaging;
inline constexpr uint32_t kBlockFrameWords = 14;  // a block but its data pairs
inline constexpr uint32_t kMaxBlockWords = dsp::BlockWrite::kDataBytes / 2;
// A block ends inside the 16-bit address space.
inline constexpr uint32_t kStreamAddressSpace = 0x10000;

inline constexpr uint16_t kRecordMagic[] = {0x54AB, 0x6D2E, 0x1010, 0x1C1C};
inline constexpr uint16_t kWordRecords = 1, kByteRecords = 2;
inline constexpr uint32_t kRecordHeaderWords = 5;
inline constexpr uint32_t kRecordFieldWords = 4;
// A record holds at most what one block write carries.
inline constexpr uint32_t kMaxRecordWords = dsp::BlockWrite::kDataBytes / 2;
inline constexpr uint32_t kMaxRecordBytes = dsp::BlockWrite::kDataBytes;

// Words of data of `count` units.
constexpr uint64_t recordWords(bool bytes, uint64_t count) { return bytes ? (count + 1) / 2 : count; }

// ---- Reading -------------------------------------------------------------------

// One well-formed command-stream block.
struct Block {
    uint16_t page;  // 0 program memory, 1 data memory
    uint16_t address;
    uint32_t count;                   // data words, 1..kMaxBlockWords
    std::span<const uint16_t> pairs;  // its (kDataTag, word) pairs

    uint16_t word(uint32_t i) const { return pairs[2 * i + 1]; }
};

// The blocks of a command stream, in order.
class StreamReader {
public:
    explicit StreamReader(std::span<const uint16_t> image) : image_(image) {}

    bool done() const { return at_ == image_.size(); }
    size_t position() const { return at_; }

    // The next block, or nothing when it is cut off or malformed: a wrong
    // tag, page or staging, more than kMaxBlockWords words or words past
    // the address space. Only after !done().
    std::optional<Block> next() {
        const std::span<const uint16_t> rest = image_.subspan(at_);
        if (rest.size() < kBlockFrameWords || rest[0] != kOpenTag || rest[1] != kOpenValue) return std::nullopt;
        for (size_t pair = 2; pair < 10; pair += 2)
            if (rest[pair] != kDataTag) return std::nullopt;
        const uint16_t page = rest[3];
        const uint16_t staging = page == 0 ? rest[9] : rest[5];
        const uint16_t address = page == 0 ? rest[5] : rest[9];
        const uint32_t count = uint32_t{rest[7]} + 1;
        if (page > 1 || staging != kStaging || count > kMaxBlockWords || address + count > kStreamAddressSpace)
            return std::nullopt;
        if (rest.size() < kBlockFrameWords + 2 * count) return std::nullopt;
        const std::span<const uint16_t> pairs = rest.subspan(10, 2 * count);
        const size_t close = 10 + 2 * count;
        if (rest[close] != kEndTag || rest[close + 1] != kEndValue || rest[close + 2] != kCloseTag ||
            rest[close + 3] != kCloseValue)
            return std::nullopt;
        for (uint32_t i = 0; i < count; ++i)
            if (pairs[2 * i] != kDataTag) return std::nullopt;
        at_ += close + 4;
        return Block{page, address, count, pairs};
    }

private:
    std::span<const uint16_t> image_;
    size_t at_ = 0;
};

// One record, its data inside the image.
struct Record {
    uint32_t address;
    uint32_t count;  // units: words, or bytes of byte records
    bool bytes;
    std::span<const uint16_t> data;

    uint16_t unit(uint32_t i) const {
        if (!bytes) return data[i];
        return static_cast<uint8_t>(i % 2 != 0 ? data[i / 2] >> 8 : data[i / 2]);
    }
};

// The records of a record image, in order.
class RecordReader {
public:
    // A reader of `image`, or nothing when it does not start with the record
    // header of version 1 or 2.
    static std::optional<RecordReader> open(std::span<const uint16_t> image) {
        if (image.size() < kRecordHeaderWords) return std::nullopt;
        for (size_t i = 0; i < std::size(kRecordMagic); ++i)
            if (image[i] != kRecordMagic[i]) return std::nullopt;
        const uint16_t version = image[std::size(kRecordMagic)];
        if (version != kWordRecords && version != kByteRecords) return std::nullopt;
        return RecordReader(image, version);
    }

    uint16_t version() const { return version_; }
    bool bytes() const { return version_ == kByteRecords; }
    bool done() const { return at_ == image_.size(); }
    size_t position() const { return at_; }

    // The next record, or nothing when its fields or data reach past the
    // image or it holds more than one block write carries. Only after !done().
    std::optional<Record> next() {
        const std::span<const uint16_t> rest = image_.subspan(at_);
        if (rest.size() < kRecordFieldWords) return std::nullopt;
        const uint32_t address = uint32_t{rest[0]} << 16 | rest[1];
        const uint32_t count = uint32_t{rest[2]} << 16 | rest[3];
        const uint64_t words = recordWords(bytes(), count);
        if (words > rest.size() - kRecordFieldWords) return std::nullopt;
        if (count > (bytes() ? kMaxRecordBytes : kMaxRecordWords)) return std::nullopt;
        at_ += kRecordFieldWords + static_cast<size_t>(words);
        return Record{address, count, bytes(), rest.subspan(kRecordFieldWords, static_cast<size_t>(words))};
    }

private:
    RecordReader(std::span<const uint16_t> image, uint16_t version)
        : image_(image), version_(version), at_(kRecordHeaderWords) {}

    std::span<const uint16_t> image_;
    uint16_t version_;
    size_t at_;
};

// ---- Writing -------------------------------------------------------------------

// An image in a buffer of fixed capacity, written a word at a time: a word
// that does not fit is not written, the call says so and refused() tells
// it afterwards.
class ImageWriter {
public:
    explicit ImageWriter(std::span<uint16_t> buffer) : buffer_(buffer) {}

    uint32_t used() const { return static_cast<uint32_t>(used_); }
    bool refused() const { return refused_; }
    bool fits(uint64_t words) const { return used_ + words <= buffer_.size(); }

    bool put(uint16_t word) {
        if (used_ >= buffer_.size()) {
            refused_ = true;
            return false;
        }
        buffer_[used_++] = word;
        return true;
    }
    bool pair(uint16_t tag, uint16_t value) { return put(tag) && put(value); }
    // The next `words` words, which the caller fills; only after fits(words).
    std::span<uint16_t> take(uint32_t words) {
        const std::span<uint16_t> taken = buffer_.subspan(used_, words);
        used_ += words;
        return taken;
    }

    // A command-stream block of `count` words at `address`: its opening and
    // set-up pairs, for page 0 or for pages 1 and 2 (both data memory; a
    // block of any other page has no set-up pairs, and no DSP takes it),
    // then blockWord() for each word and closeBlock().
    bool openBlock(uint16_t page, uint16_t address, uint32_t count) {
        const auto last = static_cast<uint16_t>(count - 1);
        if (!pair(kOpenTag, kOpenValue)) return false;
        if (page == 0) return setUp(0, address, last, kStaging);
        if (page == 1 || page == 2) return setUp(1, kStaging, last, address);
        return true;
    }
    bool blockWord(uint16_t word) { return pair(kDataTag, word); }
    bool closeBlock() { return pair(kEndTag, kEndValue) && pair(kCloseTag, kCloseValue); }

    // The record header, then for each record its fields and its data words.
    bool recordHeader(uint16_t version) {
        for (uint16_t word : kRecordMagic)
            if (!put(word)) return false;
        return put(version);
    }
    bool recordFields(uint32_t address, uint32_t count) {
        return pair(static_cast<uint16_t>(address >> 16), static_cast<uint16_t>(address)) &&
               pair(static_cast<uint16_t>(count >> 16), static_cast<uint16_t>(count));
    }

private:
    bool setUp(uint16_t a, uint16_t b, uint16_t c, uint16_t d) {
        return pair(kDataTag, a) && pair(kDataTag, b) && pair(kDataTag, c) && pair(kDataTag, d);
    }

    std::span<uint16_t> buffer_;
    size_t used_ = 0;
    bool refused_ = false;
};

}  // namespace wire::dsp_image
