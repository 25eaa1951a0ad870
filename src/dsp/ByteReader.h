// Bounds-checked reading of outside data (program files, images): every
// record is taken whole, after its offset and length were checked against
// the size of the data, and its fields are read at compile-time offsets
// inside the record. Multi-byte fields are little-endian.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "LittleEndian.h"

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
        return wire::le::load16(bytes_ + At);
    }
    template <uint32_t At>
    uint32_t u32() const {
        static_assert(At + 4 <= Size, "field outside the record");
        return wire::le::load32(bytes_ + At);
    }
    template <uint32_t At, uint32_t Length>
    std::span<const uint8_t, Length> bytes() const {
        static_assert(At + Length <= Size, "field outside the record");
        return std::span<const uint8_t, Length>(bytes_ + At, Length);
    }

private:
    const uint8_t *bytes_;
};

// The data's reader, and its records of fixed size.
class ByteReader : public wire::le::Reader {
public:
    using Reader::Reader;

    // The record of Size bytes at `offset`, or nothing when it does not lie
    // wholly inside the data.
    template <uint32_t Size>
    std::optional<Record<Size>> record(uint64_t offset) const {
        const std::optional<std::span<const uint8_t>> span = bytes(offset, Size);
        if (!span) return std::nullopt;
        return Record<Size>(span->data());
    }
};

}  // namespace ryn
