// Little-endian values in byte blocks: request and reply blocks, program
// files, images, sound files. The plain loads and stores take a pointer to
// bytes the caller has checked; Reader and Writer check every access against
// the block they view: a read outside it gives 0 (or nothing, for the forms
// that say so), a write outside it is dropped.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>

namespace wire::le {

inline uint16_t load16(const uint8_t *at) { return static_cast<uint16_t>(at[0] | at[1] << 8); }
inline uint32_t load32(const uint8_t *at) { return uint32_t{load16(at)} | uint32_t{load16(at + 2)} << 16; }

inline void store16(uint8_t *at, uint16_t value) {
    at[0] = static_cast<uint8_t>(value);
    at[1] = static_cast<uint8_t>(value >> 8);
}
inline void store32(uint8_t *at, uint32_t value) {
    store16(at, static_cast<uint16_t>(value));
    store16(at + 2, static_cast<uint16_t>(value >> 16));
}

// Whether `length` bytes at `offset` lie inside a block of `size` bytes.
constexpr bool inside(uint64_t size, uint64_t offset, uint64_t length) {
    return offset <= size && length <= size - offset;
}

// A bounds-checked view of bytes to read. Offsets are 64-bit so that sums
// of 32-bit fields read from the data cannot wrap.
class Reader {
public:
    explicit Reader(std::span<const uint8_t> data) : data_(data) {}

    uint64_t size() const { return data_.size(); }
    bool holds(uint64_t offset, uint64_t length) const { return inside(size(), offset, length); }

    // Values at `offset`; 0 where they do not lie wholly inside the data.
    uint8_t u8(uint64_t offset) const { return holds(offset, 1) ? data_[static_cast<size_t>(offset)] : 0; }
    uint16_t u16(uint64_t offset) const { return holds(offset, 2) ? load16(at(offset)) : 0; }
    uint32_t u32(uint64_t offset) const { return holds(offset, 4) ? load32(at(offset)) : 0; }

    // `length` bytes at `offset`, or nothing when they do not lie wholly
    // inside the data.
    std::optional<std::span<const uint8_t>> bytes(uint64_t offset, uint64_t length) const {
        if (!holds(offset, length)) return std::nullopt;
        return data_.subspan(static_cast<size_t>(offset), static_cast<size_t>(length));
    }
    // Up to `length` bytes at `offset`, fewer where the data ends first.
    std::span<const uint8_t> upTo(uint64_t offset, uint64_t length) const {
        if (offset >= size()) return {};
        return data_.subspan(static_cast<size_t>(offset), static_cast<size_t>(std::min(length, size() - offset)));
    }

private:
    const uint8_t *at(uint64_t offset) const { return data_.data() + offset; }
    std::span<const uint8_t> data_;
};

// A bounds-checked view of bytes to write: a value or a run of bytes that
// does not lie wholly inside the block is not written, and the call says so.
class Writer {
public:
    explicit Writer(std::span<uint8_t> data) : data_(data) {}

    uint64_t size() const { return data_.size(); }
    bool holds(uint64_t offset, uint64_t length) const { return inside(size(), offset, length); }

    bool u8(uint64_t offset, uint8_t value) { return write(offset, &value, 1); }
    bool u16(uint64_t offset, uint16_t value) {
        if (!holds(offset, 2)) return false;
        store16(at(offset), value);
        return true;
    }
    bool u32(uint64_t offset, uint32_t value) {
        if (!holds(offset, 4)) return false;
        store32(at(offset), value);
        return true;
    }
    bool write(uint64_t offset, const void *bytes, uint64_t count) {
        if (!holds(offset, count)) return false;
        if (count != 0) std::memcpy(at(offset), bytes, static_cast<size_t>(count));
        return true;
    }

private:
    uint8_t *at(uint64_t offset) { return data_.data() + offset; }
    std::span<uint8_t> data_;
};

}  // namespace wire::le
