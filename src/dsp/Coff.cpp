#include "Coff.h"

#include <algorithm>
#include <cstring>

namespace ryn::coff {
namespace {

constexpr uint32_t kOptionalHeaderSize = 28;
constexpr uint32_t kSectionHeaderSize1 = 40;
constexpr uint32_t kSectionHeaderSize2 = 48;
constexpr uint32_t kSymbolSize = 18;
constexpr size_t kLongNameBytes = 30;  // a long name and its terminator
constexpr size_t kEntryNameLength = 127;

FileHeader readFileHeader(const Record<FileHeader::kSize> &r) {
    return {r.u16<0>(), r.u16<2>(), r.u32<8>(), r.u32<12>(), r.u16<16>(), r.u16<20>()};
}

// Name, physical address, size and raw-data offset sit alike in both
// versions; the memory page is the last byte (version 1) or 16-bit field
// (version 2) of the header.
template <uint32_t Size>
Section readSection(const Record<Size> &r) {
    Section s{};
    std::memcpy(s.name, r.template bytes<0, 8>().data(), 8);
    s.physicalAddress = r.template u32<8>();
    s.size = r.template u32<16>();
    s.rawDataOffset = r.template u32<20>();
    if constexpr (Size == kSectionHeaderSize1) {
        s.page = r.template u8<39>();
    } else {
        s.page = r.template u16<46>();
    }
    if (s.rawDataOffset == 0) s.size = 0;
    return s;
}

// A terminated name within `bytes`, or nothing when no terminator is there.
std::optional<std::string_view> terminated(std::span<const uint8_t> bytes) {
    const auto end = std::find(bytes.begin(), bytes.end(), uint8_t{0});
    if (end == bytes.end()) return std::nullopt;
    return std::string_view(reinterpret_cast<const char *>(bytes.data()), static_cast<size_t>(end - bytes.begin()));
}

bool isHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F'); }

// Reads hexadecimal digits (upper case) up to the first other character.
uint32_t parseHex(std::string_view text) {
    uint32_t value = 0;
    for (char c : text) {
        if (!isHexDigit(c)) break;
        value = value << 4 | static_cast<uint32_t>(c <= '9' ? c - '0' : c - 'A' + 10);
    }
    return value;
}

}  // namespace

uint8_t ProgramFile::open(std::span<const uint8_t> bytes) {
    file_ = ByteReader(bytes);
    const auto header = file_.record<FileHeader::kSize>(0);
    if (!header) return kMalformed;
    header_ = readFileHeader(*header);
    if (header_.optionalHeaderSize == 0) return kMalformed;
    // The optional header is skipped: the entry address comes from the sections.
    if (!file_.holds(FileHeader::kSize, std::max(uint32_t{header_.optionalHeaderSize}, kOptionalHeaderSize)))
        return kMalformed;
    if (header_.versionId == kVersion1) {
        byteTarget_ = false;
        sectionHeaderSize_ = kSectionHeaderSize1;
    } else if (header_.versionId == kVersion2 && (header_.targetId == kTargetWord || header_.targetId == kTargetByte)) {
        byteTarget_ = header_.targetId == kTargetByte;
        sectionHeaderSize_ = kSectionHeaderSize2;
    } else {
        return kUnsupported;
    }
    return 0;
}

std::optional<Section> ProgramFile::section(uint32_t index) const {
    const uint64_t offset =
        uint64_t{FileHeader::kSize} + header_.optionalHeaderSize + uint64_t{index} * sectionHeaderSize_;
    if (sectionHeaderSize_ == kSectionHeaderSize1) {
        const auto r = file_.record<kSectionHeaderSize1>(offset);
        return r ? std::optional(readSection(*r)) : std::nullopt;
    }
    const auto r = file_.record<kSectionHeaderSize2>(offset);
    return r ? std::optional(readSection(*r)) : std::nullopt;
}

bool ProgramFile::loads(const Section &section) const {
    if (static_cast<int32_t>(section.size) <= 0 || section.named(".xref")) return false;
    return !(byteTarget_ && section.physicalAddress < kLowestByteTargetAddress);
}

std::optional<std::span<const uint8_t>> ProgramFile::data(const Section &section) const {
    return file_.bytes(section.rawDataOffset, uint64_t{section.size} * unitBytes());
}

uint32_t ProgramFile::defaultEntry() const {
    const std::optional<Section> first = sectionCount() != 0 ? section(0) : std::nullopt;
    return first && static_cast<int32_t>(first->size) > 0 && first->named(".text") ? first->physicalAddress : 0;
}

uint8_t ProgramFile::validate() const {
    for (uint32_t i = 0; i < sectionCount(); ++i) {
        const auto s = section(i);
        if (!s) return kMalformed;
        if (loads(*s) && !data(*s)) return kMalformed;
    }
    return 0;
}

uint8_t ProgramFile::resolveEntry(std::string_view name, uint32_t &address) const {
    char copy[kEntryNameLength + 1] = {};
    const size_t length = std::min(name.size(), kEntryNameLength);
    std::memcpy(copy, name.data(), length);
    const std::string_view text(copy, strnlen(copy, length));

    address = kNoAddress;
    uint8_t error = 0;
    if (!text.empty() && text[0] >= '0' && text[0] <= '9') {
        for (char &c : copy) c = (c >= 'a' && c <= 'z') ? static_cast<char>(c - 32) : c;
        if (text.size() >= 2 && text[1] == 'X') {
            address = parseHex(text.substr(2));
        } else if (text.back() == 'H') {
            address = parseHex(text.substr(0, text.size() - 1));
        } else {
            address = findSymbol(text, error).value_or(kNoAddress);
        }
    } else {
        address = findSymbol(text, error).value_or(kNoAddress);
    }
    if (error != 0) return error;
    return address == kNoAddress ? kUnresolved : 0;
}

// Walks the symbol table in order; an entry with auxiliary entries is
// followed by one of them, which is stepped over. A long name is read from
// the string table after the symbols, at most 30 bytes with its terminator
// (a longer name matches nothing). A table or a long name cut off by the end
// of the file makes the file malformed.
std::optional<uint32_t> ProgramFile::findSymbol(std::string_view name, uint8_t &error) const {
    const uint64_t table = header_.symbolTableOffset;
    const uint64_t tableEnd = table + uint64_t{header_.symbolCount} * kSymbolSize;
    if (header_.symbolCount != 0 && !file_.holds(table, tableEnd - table)) {
        error = kMalformed;
        return std::nullopt;
    }
    std::optional<uint32_t> found;
    for (uint64_t at = table; at + kSymbolSize <= tableEnd; at += kSymbolSize) {
        const Record<kSymbolSize> entry = *file_.record<kSymbolSize>(at);
        std::optional<std::string_view> symbol;
        if (entry.u8<0>() != 0) {
            symbol = terminated(entry.bytes<0, 8>());
            if (!symbol) symbol = std::string_view(reinterpret_cast<const char *>(entry.bytes<0, 8>().data()), 8);
        } else {
            // A name without its terminator where the file ends is cut off.
            const std::span<const uint8_t> text = file_.upTo(tableEnd + entry.u32<4>(), kLongNameBytes);
            symbol = terminated(text);
            if (!symbol && text.size() < kLongNameBytes) {
                error = kMalformed;
                return std::nullopt;
            }
        }
        if (!found && symbol == name) found = entry.u32<8>();
        if (entry.u8<17>() != 0) at += kSymbolSize;
    }
    return found;
}

}  // namespace ryn::coff
