// The fuzz input read front to back as little-endian fields, shared by the
// board and reply harnesses. A field past the end of the input reads as 0,
// so that every input, however short, makes a whole run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ryn::fuzz {

class Stream {
public:
    Stream(const uint8_t *data, size_t size) : data_(data), size_(size) {}

    bool empty() const { return at_ >= size_; }
    size_t left() const { return size_ - at_; }

    uint8_t u8() { return at_ < size_ ? data_[at_++] : 0; }
    uint16_t u16() { return static_cast<uint16_t>(u8() | u8() << 8); }
    uint32_t u32() { return u16() | uint32_t{u16()} << 16; }
    // An index below `count` (0 when count is 0).
    size_t pick(size_t count) { return count == 0 ? 0 : u8() % count; }
    size_t pick16(size_t count) { return count == 0 ? 0 : u16() % count; }
    bool chance(unsigned inSixteen) { return (u8() & 15u) < inSixteen; }

    // Copies up to `count` bytes into `to`; the rest of `to` is left alone.
    size_t copy(void *to, size_t count) {
        const size_t n = count < left() ? count : left();
        if (n != 0) std::memcpy(to, data_ + at_, n);
        at_ += n;
        return n;
    }

private:
    const uint8_t *data_;
    size_t size_;
    size_t at_ = 0;
};

}  // namespace ryn::fuzz
