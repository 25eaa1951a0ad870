// Bounds-checked reading of outside data (program files, images): every
// record is taken whole, after its offset and length were checked against
// the size of the data, and its fields are read at compile-time offsets
// inside the record. Multi-byte fields are little-endian.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace ryn {

template <uint32_t Size>
class Record {
public:
    explicit Record(const uint8_t *bytes) : bytes_(bytes) {}

    template <uint32_t At>
    uint8_t u8() const {
        static_assert(At + 1 <= Size, "field outside the record");
        return bytes_[At];
    }
    template <uint32_t At>
    uint16_t u16() const {
        static_assert(At + 2 <= Size, "field outside the record");
        return static_cast<uint16_t>(bytes_[At] | bytes_[At + 1] << 8);
    }
    template <uint32_t At>
    uint32_t u32() const {
        static_assert(At + 4 <= Size, "field outside the record");
        return uint32_t{u16<At>()} | uint32_t{u16<At + 2>()} << 16;
    }
    template <uint32_t At, uint32_t Length>
    std::span<const uint8_t, Length> bytes() const {
        static_assert(At + Length <= Size, "field outside the record");
        return std::span<const uint8_t, Length>(bytes_ + At, Length);
    }

private:
    const uint8_t *bytes_;
};

class ByteReader {
public:
    explicit ByteReader(std::span<const uint8_t> data) : data_(data) {}

    uint64_t size() const { return data_.size(); }

    bool holds(uint64_t offset, uint64_t length) const { return offset <= size() && length <= size() - offset; }

    // The record of Size bytes at `offset`, or nothing when it does not lie
    // wholly inside the data.
    template <uint32_t Size>
    std::optional<Record<Size>> record(uint64_t offset) const {
        if (!holds(offset, Size)) return std::nullopt;
        return Record<Size>(data_.data() + offset);
    }

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
    std::span<const uint8_t> data_;
};

}  // namespace ryn
