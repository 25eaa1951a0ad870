// Telephony blocks: DTMF dialler, voice activity detector, DTMF detector,
// comfort noise generator, voice mixer, echo canceller, call-progress tone
// detector and generator, caller identification detector.
//
// Every block is a logical device (handle kind 2); any other handle is
// refused with error 11 before anything else. Settings pass to the block
// unchanged. Three set-up calls check more than the handle: the extended
// voice activity detector (its parameter block), the extended voice mixer
// (two parallel lists of up to 128 entries) and the extended call-progress
// tone detector, which gathers the caller's tone table, value list and
// segments into fixed slots of one request, each count checked against its
// slot.
//
// Pointers are checked where the calls would read or write through them: a
// null list with a positive count, a null status, parameter block or
// configuration is refused with error 10 and nothing is sent. Only a null
// tone table has a code of its own (error 9).
#include <cstring>

#include "core/ResultCode.h"
#include "core/Transport.h"
#include "device/HandleKinds.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kTelephony;
constexpr int32_t kMaxDigits = 127;      // of the 128-byte digit area
constexpr int32_t kMaxMixEntries = 128;  // slots of each mixer list
constexpr int16_t kVadWords = 13;        // words of the voice activity parameter block

// The extended call-progress request: offsets 28..697 are one zeroed block
// of 335 words, with the value list, the table, the segment records, the
// extra block and the step data area in fixed slots.
constexpr uint32_t kCptBlockStart = 28;
constexpr uint32_t kCptBlockBytes = 670;
constexpr int16_t kMaxValues = 32;        // slots of the value list at 36
constexpr int16_t kMaxSegments = 16;      // segment records at 128
constexpr uint32_t kStepAreaWords = 210;  // step data area at 272
constexpr uint32_t kTableWords = 13;      // table words at 102; 11: value count, 12: segment count

// The zeroed block of the extended call-progress request, written at offsets
// of the request that are known only while the caller's table is read.
struct CptBlock {
    uint8_t bytes[kCptBlockBytes]{};

    // Offsets of the request, inside the block: the difference is taken
    // before it is added to the block's address.
    void put16(uint32_t offset, uint16_t value) { store16(bytes + (offset - kCptBlockStart), value); }
    void putBytes(uint32_t offset, const void *from, uint32_t length) {
        std::memcpy(bytes + (offset - kCptBlockStart), from, length);
    }
};

// Settings after the handle, 32 bits each, in order; plain reply.
template <class... Settings>
ResultCode sendSettings(uint32_t function, DeviceHandle handle, Settings... settings) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    const uint32_t values[] = {settings...};
    Request<20 + sizeof values, 12> request(function);
    request.template put<16>(handle).template putBytes<20, sizeof values>(values, sizeof values);
    return request.send();
}

// A block's status at reply offset 8 (32 or 8 bits), result at 12; the
// status is written whatever the result.
template <class Status>
ResultCode readStatus(uint32_t function, DeviceHandle handle, Status *status) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (status == nullptr) return RYN_FAILURE(kErrNullPointer);
    Request<20, 16> request(function);
    request.template put<16>(handle);
    const ResultCode result = request.send();
    std::memcpy(status, request.template replyBytes<8, sizeof(Status)>(), sizeof(Status));
    return result;
}

// Gathers the one tone table into the block: its settings, the value list,
// the extra block (or the flag at 692 that it is missing), then each
// segment's record and steps, packed one after the other into the step data
// area. Returns 0, or the code of the first refused count or pointer.
ResultCode gatherToneTable(const CptToneTable &table, CptBlock &block) {
    block.put16(100, table.tableSetting);
    block.putBytes(102, table.tableWords, 2 * kTableWords);
    const auto valueCount = static_cast<int16_t>(table.tableWords[11]);
    if (valueCount < 1 || valueCount > kMaxValues) return RYN_FAILURE(kErrRange);
    if (table.values == nullptr) return RYN_FAILURE(kErrNullPointer);
    block.putBytes(36, table.values, 2 * static_cast<uint32_t>(valueCount));
    if (table.extraBlock != nullptr) {
        block.putBytes(256, table.extraBlock, 16);
    } else {
        block.put16(692, 1);
    }

    const auto segmentCount = static_cast<int16_t>(table.tableWords[12]);
    if (segmentCount > kMaxSegments) return RYN_FAILURE(kErrRange);
    if (segmentCount > 0 && table.segments == nullptr) return RYN_FAILURE(kErrNullPointer);
    const uint32_t stepWords = 3 + (static_cast<uint32_t>(valueCount) + 3) / 4;
    uint32_t start = 0;  // in words from offset 272
    for (int16_t j = 0; j < segmentCount; ++j) {
        const CptSegment &segment = table.segments[j];
        const uint32_t steps = segment.stepCount & 0xFFu;
        const uint32_t length = steps * stepWords;
        if (start + length > kStepAreaWords) return RYN_FAILURE(kErrRange);
        const uint32_t record = 128 + 8 * static_cast<uint32_t>(j);
        block.put16(record, segment.segmentId);
        block.put16(record + 2, static_cast<uint16_t>(steps));
        block.put16(record + 4, static_cast<uint16_t>(start));
        block.put16(record + 6, static_cast<uint16_t>(length));
        if (length == 0) continue;
        if (segment.steps == nullptr) return RYN_FAILURE(kErrNullPointer);
        block.putBytes(272 + 2 * start, segment.steps, 2 * length);
        start += length;
    }
    return 0;
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynCstDtmfDialerInit, 8)(DeviceHandle handle, uint32_t param1) {
    return sendSettings(0x99B, handle, param1);
}

// At most 127 characters, although the area holds 128; the rest of the area
// stays zero.
ResultCode RYN_DECORATED(RynCstDtmfDial, 20)(DeviceHandle handle, const char *digits, int32_t digitCount,
                                             uint32_t param3, uint32_t param4) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (digitCount < 0 || digitCount > kMaxDigits) return RYN_FAILURE(kErrRange);
    if (digits == nullptr && digitCount > 0) return RYN_FAILURE(kErrNullPointer);
    Request<160, 12> request(0x99C);
    request.put<16>(handle).putBytes<20, 128>(digits, static_cast<uint32_t>(digitCount));
    request.put<148>(static_cast<uint32_t>(digitCount)).put<152>(param3).put<156>(param4);
    return request.send();
}

ResultCode RYN_DECORATED(RynCstVoiceActivityDetectorInit, 8)(DeviceHandle handle, uint32_t param1) {
    return sendSettings(0x99D, handle, param1);
}

ResultCode RYN_DECORATED(RynCstVoiceActivityDetectorStatus, 8)(DeviceHandle handle, uint32_t *status) {
    return readStatus(0x99E, handle, status);
}

ResultCode RYN_DECORATED(RynCstDtmfDetectorInit, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    return sendSettings(0x99F, handle, param1, param2);
}

ResultCode RYN_DECORATED(RynCstDtmfDetectorStatus, 8)(DeviceHandle handle, uint8_t *status) {
    return readStatus(0x9A0, handle, status);
}

ResultCode RYN_DECORATED(RynCstComfortNoiseGeneratorInit, 8)(DeviceHandle handle, uint32_t param1) {
    return sendSettings(0x9A2, handle, param1);
}

ResultCode RYN_DECORATED(RynCstVoiceMixerInit, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    return sendSettings(0x9A3, handle, param1, param2);
}

ResultCode RYN_DECORATED(RynCstEchoCancelInit, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    return sendSettings(0x9A4, handle, param1, param2);
}

ResultCode RYN_DECORATED(RynCstCptDetectorInit, 16)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                    uint32_t param3) {
    return sendSettings(0x9A5, handle, param1, param2, param3);
}

ResultCode RYN_DECORATED(RynCstCptDetectorStatus, 8)(DeviceHandle handle, uint32_t *status) {
    return readStatus(0x9A6, handle, status);
}

ResultCode RYN_DECORATED(RynCstCptGeneratorInit, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    return sendSettings(0x9A7, handle, param1, param2);
}

ResultCode RYN_DECORATED(RynCstCptGenerateTone, 8)(DeviceHandle handle, uint32_t param1) {
    return sendSettings(0x9A8, handle, param1);
}

ResultCode RYN_DECORATED(RynCstCidDetectorInit, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    return sendSettings(0x9B0, handle, param1, param2);
}

// Up to 128 entries of each list; a negative count copies none and travels
// as given.
ResultCode RYN_DECORATED(RynCstVoiceMixerInitEx, 24)(DeviceHandle handle, const uint32_t *mixItems, uint32_t param2,
                                                     const uint16_t *mixValues, uint16_t param4, int32_t mixCount) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (mixCount > kMaxMixEntries) return RYN_FAILURE(kErrRange);
    const uint32_t entries = mixCount < 0 ? 0 : static_cast<uint32_t>(mixCount);
    if (entries > 0 && (mixItems == nullptr || mixValues == nullptr)) return RYN_FAILURE(kErrNullPointer);
    Request<798, 12> request(0x9B1);
    request.put<16>(handle).putBytes<20, 512>(mixItems, 4 * entries).put<532>(param2);
    request.putBytes<536, 256>(mixValues, 2 * entries).put16<792>(param4).put<794>(static_cast<uint32_t>(mixCount));
    return request.send();
}

// Steps in the order of their checks: configuration, tone table, table
// count (one table fits; a negative count sends the table area zeroed),
// then the table itself.
ResultCode RYN_DECORATED(RynCstCptDetectorInitEx, 20)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                      const CptDetectorConfig *config, uint32_t param4) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (config == nullptr) return RYN_FAILURE(kErrNullPointer);
    if (config->toneTable == nullptr) return RYN_FAILURE(kErrRange);
    if (config->tableCount > 1 || config->tableCount == 0) return RYN_FAILURE(kErrRange);
    CptBlock block;
    if (config->tableCount == 1) {
        if (const ResultCode refused = gatherToneTable(*config->toneTable, block); refused != 0) return refused;
    }
    Request<702, 12> request(0x9B2);
    request.put<16>(handle).put<20>(param1).put<24>(param2);
    request.putBytes<kCptBlockStart, kCptBlockBytes>(block.bytes, kCptBlockBytes);
    request.put16<28>(kCptBlockBytes / 2).put16<32>(config->setting1).put16<34>(config->setting2);
    request.put16<694>(static_cast<uint16_t>(config->tableCount)).put16<696>(config->setting3).put<698>(param4);
    return request.send();
}

// The parameter block names its own length in word 0, which must be 13.
ResultCode RYN_DECORATED(RynCstVoiceActivityDetectorInitEx, 12)(DeviceHandle handle, const int16_t *params,
                                                                uint32_t param2) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (params == nullptr) return RYN_FAILURE(kErrNullPointer);
    if (params[0] != kVadWords) return RYN_FAILURE(kErrRange);
    Request<50, 12> request(0x9B3);
    request.put<16>(handle).putBytes<20, 2 * kVadWords>(params, 2 * kVadWords).put<46>(param2);
    return request.send();
}

}  // extern "C"
