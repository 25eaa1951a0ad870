#include "dsp/CoffWriter.h"

#include <algorithm>
#include <cstring>

namespace ryn::test {
namespace {

void put16(std::vector<uint8_t> &out, size_t at, uint32_t value) {
    out[at] = static_cast<uint8_t>(value);
    out[at + 1] = static_cast<uint8_t>(value >> 8);
}
void put32(std::vector<uint8_t> &out, size_t at, uint32_t value) {
    put16(out, at, value & 0xFFFF);
    put16(out, at + 2, value >> 16);
}

}  // namespace

std::vector<uint8_t> CoffFile::bytes() const {
    const size_t headerSize = version == 0xC1 ? 40 : 48;
    const size_t sectionTable = 22 + optionalHeaderSize;
    size_t at = sectionTable + headerSize * sections.size();
    std::vector<uint8_t> out(at);
    put16(out, 0, version);
    put16(out, 2, static_cast<uint32_t>(sections.size()));
    put16(out, 16, optionalHeaderSize);
    put16(out, 20, target);
    const uint32_t unit = byteTarget() ? 1 : 2;
    for (size_t i = 0; i < sections.size(); ++i) {
        const CoffSection &s = sections[i];
        const size_t h = sectionTable + i * headerSize;
        std::memcpy(out.data() + h, s.name.data(), std::min<size_t>(s.name.size(), 8));
        put32(out, h + 8, s.address);
        put32(out, h + 16, s.units != 0 ? s.units : static_cast<uint32_t>(s.data.size() / unit));
        if (!s.data.empty()) put32(out, h + 20, static_cast<uint32_t>(out.size()));
        if (headerSize == 40) {
            out[h + 39] = static_cast<uint8_t>(s.page);
        } else {
            put16(out, h + 46, s.page);
        }
        out.insert(out.end(), s.data.begin(), s.data.end());
    }
    if (!symbols.empty()) put32(out, 8, static_cast<uint32_t>(out.size()));
    std::vector<uint8_t> strings;
    uint32_t entries = 0;
    for (const CoffSymbol &symbol : symbols) {
        std::vector<uint8_t> entry(symbol.auxiliary ? 36 : 18);
        if (symbol.name.size() > 8) {
            put32(entry, 4, static_cast<uint32_t>(strings.size()));
            strings.insert(strings.end(), symbol.name.begin(), symbol.name.end());
            strings.push_back(0);
        } else {
            std::memcpy(entry.data(), symbol.name.data(), symbol.name.size());
        }
        put32(entry, 8, symbol.value);
        entry[17] = symbol.auxiliary ? 1 : 0;
        out.insert(out.end(), entry.begin(), entry.end());
        entries += symbol.auxiliary ? 2 : 1;
    }
    put32(out, 12, entries);
    out.insert(out.end(), strings.begin(), strings.end());
    return out;
}

std::vector<uint8_t> words(uint32_t count, uint16_t first) {
    std::vector<uint8_t> out(count * 2);
    for (uint32_t i = 0; i < count; ++i) put16(out, 2 * i, static_cast<uint16_t>(first + i));
    return out;
}

}  // namespace ryn::test
