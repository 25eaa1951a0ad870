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

#include "TelephonyWire.h"
#include "core/ResultCode.h"
#include "core/Transport.h"
#include "device/HandleKinds.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kTelephony;
constexpr int32_t kMaxDigits = 127;  // of the 128-byte digit area

using Cpt = wire::telephony::CptDetectorInitEx;
using Mixer = wire::telephony::VoiceMixerInitEx;
using Vad = wire::telephony::VoiceActivityDetectorInitEx;
constexpr int32_t kMaxMixEntries = Mixer::kSlots;
constexpr int16_t kVadWords = Vad::kParamWords;  // word 0 of the parameter block must say so
constexpr int16_t kMaxValues = Cpt::kValueSlots;
constexpr int16_t kMaxSegments = Cpt::kSegmentSlots;

// The zeroed block of the extended call-progress request, written at offsets
// of the request that are known only while the caller's table is read.
struct CptBlock {
    uint8_t bytes[Cpt::kBlockBytes]{};

    // Offsets of the request, inside the block: the difference is taken
    // before it is added to the block's address.
    void put16(uint32_t offset, uint16_t value) { store16(bytes + (offset - Cpt::kBlock), value); }
    void putBytes(uint32_t offset, const void *from, uint32_t length) {
        std::memcpy(bytes + (offset - Cpt::kBlock), from, length);
    }
};

// Settings after the handle, 32 bits each, in order; plain reply.
template <typename Wire, class... Settings>
ResultCode sendToBlock(DeviceHandle handle, Settings... settings) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    return sendSettings<Wire>(handle, settings...);
}

// A block's status (32 or 8 bits), written whatever the result.
template <typename Wire, class Status>
ResultCode readStatus(DeviceHandle handle, Status *status) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (status == nullptr) return RYN_FAILURE(kErrNullPointer);
    return sendForStatus<Wire>(handle, *status);
}

// Gathers the one tone table into the block: its settings, the value list,
// the extra block (or the flag that it is missing), then each segment's
// record and steps, packed one after the other into the step area. Returns
// 0, or the code of the first refused count or pointer.
ResultCode gatherToneTable(const CptToneTable &table, CptBlock &block) {
    block.put16(Cpt::kTableSetting, table.tableSetting);
    block.putBytes(Cpt::kTableWords, table.tableWords, 2 * Cpt::kTableWordCount);
    const auto valueCount = static_cast<int16_t>(table.tableWords[Cpt::kValueCountWord]);
    if (valueCount < 1 || valueCount > kMaxValues) return RYN_FAILURE(kErrRange);
    if (table.values == nullptr) return RYN_FAILURE(kErrNullPointer);
    block.putBytes(Cpt::kValues, table.values, 2 * static_cast<uint32_t>(valueCount));
    if (table.extraBlock != nullptr) {
        block.putBytes(Cpt::kExtraBlock, table.extraBlock, Cpt::kExtraBlockBytes);
    } else {
        block.put16(Cpt::kNoExtraBlock, 1);
    }

    const auto segmentCount = static_cast<int16_t>(table.tableWords[Cpt::kSegmentCountWord]);
    if (segmentCount > kMaxSegments) return RYN_FAILURE(kErrRange);
    if (segmentCount > 0 && table.segments == nullptr) return RYN_FAILURE(kErrNullPointer);
    const uint32_t stepWords = Cpt::stepWords(static_cast<uint32_t>(valueCount));
    uint32_t start = 0;  // in words from the step area's start
    for (int16_t j = 0; j < segmentCount; ++j) {
        const CptSegment &segment = table.segments[j];
        const uint32_t steps = segment.stepCount & Cpt::kMaxStepCount;
        const uint32_t length = steps * stepWords;
        if (start + length > Cpt::kStepAreaWords) return RYN_FAILURE(kErrRange);
        const uint32_t record = Cpt::kSegments + Cpt::kSegmentBytes * static_cast<uint32_t>(j);
        block.put16(record + Cpt::kSegmentId, segment.segmentId);
        block.put16(record + Cpt::kSegmentStepCount, static_cast<uint16_t>(steps));
        block.put16(record + Cpt::kSegmentStart, static_cast<uint16_t>(start));
        block.put16(record + Cpt::kSegmentWords, static_cast<uint16_t>(length));
        if (length == 0) continue;
        if (segment.steps == nullptr) return RYN_FAILURE(kErrNullPointer);
        block.putBytes(Cpt::kSteps + 2 * start, segment.steps, 2 * length);
        start += length;
    }
    return 0;
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynCstDtmfDialerInit, 8)(DeviceHandle handle, uint32_t param1) {
    return sendToBlock<wire::telephony::DtmfDialerInit>(handle, param1);
}

// At most 127 characters, although the area holds 128; the rest of the area
// stays zero.
ResultCode RYN_DECORATED(RynCstDtmfDial, 20)(DeviceHandle handle, const char *digits, int32_t digitCount,
                                             uint32_t param3, uint32_t param4) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (digitCount < 0 || digitCount > kMaxDigits) return RYN_FAILURE(kErrRange);
    if (digits == nullptr && digitCount > 0) return RYN_FAILURE(kErrNullPointer);
    using Wire = wire::telephony::DtmfDial;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).putBytes<Wire::kDigits, Wire::kDigitBytes>(digits,
                                                                                  static_cast<uint32_t>(digitCount));
    request.put<Wire::kCount>(static_cast<uint32_t>(digitCount)).put<Wire::kParam3>(param3);
    request.put<Wire::kParam4>(param4);
    return request.send();
}

ResultCode RYN_DECORATED(RynCstVoiceActivityDetectorInit, 8)(DeviceHandle handle, uint32_t param1) {
    return sendToBlock<wire::telephony::VoiceActivityDetectorInit>(handle, param1);
}

ResultCode RYN_DECORATED(RynCstVoiceActivityDetectorStatus, 8)(DeviceHandle handle, uint32_t *status) {
    return readStatus<wire::telephony::VoiceActivityDetectorStatus>(handle, status);
}

ResultCode RYN_DECORATED(RynCstDtmfDetectorInit, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    return sendToBlock<wire::telephony::DtmfDetectorInit>(handle, param1, param2);
}

ResultCode RYN_DECORATED(RynCstDtmfDetectorStatus, 8)(DeviceHandle handle, uint8_t *status) {
    return readStatus<wire::telephony::DtmfDetectorStatus>(handle, status);
}

ResultCode RYN_DECORATED(RynCstComfortNoiseGeneratorInit, 8)(DeviceHandle handle, uint32_t param1) {
    return sendToBlock<wire::telephony::ComfortNoiseGeneratorInit>(handle, param1);
}

ResultCode RYN_DECORATED(RynCstVoiceMixerInit, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    return sendToBlock<wire::telephony::VoiceMixerInit>(handle, param1, param2);
}

ResultCode RYN_DECORATED(RynCstEchoCancelInit, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    return sendToBlock<wire::telephony::EchoCancelInit>(handle, param1, param2);
}

ResultCode RYN_DECORATED(RynCstCptDetectorInit, 16)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                    uint32_t param3) {
    return sendToBlock<wire::telephony::CptDetectorInit>(handle, param1, param2, param3);
}

ResultCode RYN_DECORATED(RynCstCptDetectorStatus, 8)(DeviceHandle handle, uint32_t *status) {
    return readStatus<wire::telephony::CptDetectorStatus>(handle, status);
}

ResultCode RYN_DECORATED(RynCstCptGeneratorInit, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    return sendToBlock<wire::telephony::CptGeneratorInit>(handle, param1, param2);
}

ResultCode RYN_DECORATED(RynCstCptGenerateTone, 8)(DeviceHandle handle, uint32_t param1) {
    return sendToBlock<wire::telephony::CptGenerateTone>(handle, param1);
}

ResultCode RYN_DECORATED(RynCstCidDetectorInit, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    return sendToBlock<wire::telephony::CidDetectorInit>(handle, param1, param2);
}

// Up to 128 entries of each list; a negative count copies none and travels
// as given.
ResultCode RYN_DECORATED(RynCstVoiceMixerInitEx, 24)(DeviceHandle handle, const uint32_t *mixItems, uint32_t param2,
                                                     const uint16_t *mixValues, uint16_t param4, int32_t mixCount) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (mixCount > kMaxMixEntries) return RYN_FAILURE(kErrRange);
    const uint32_t entries = mixCount < 0 ? 0 : static_cast<uint32_t>(mixCount);
    if (entries > 0 && (mixItems == nullptr || mixValues == nullptr)) return RYN_FAILURE(kErrNullPointer);
    RequestOf<Mixer> request;
    request.put<wire::kHandle>(handle).putBytes<Mixer::kItems, 4 * Mixer::kSlots>(mixItems, 4 * entries);
    request.put<Mixer::kParam2>(param2).putBytes<Mixer::kValues, 2 * Mixer::kSlots>(mixValues, 2 * entries);
    request.put16<Mixer::kParam4>(param4).put<Mixer::kCount>(static_cast<uint32_t>(mixCount));
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
    RequestOf<Cpt> request;
    request.put<wire::kHandle>(handle).put<Cpt::kParam1>(param1).put<Cpt::kParam2>(param2);
    request.putBytes<Cpt::kBlock, Cpt::kBlockBytes>(block.bytes, Cpt::kBlockBytes);
    request.put16<Cpt::kBlockLength>(Cpt::kBlockWords);
    request.put16<Cpt::kSetting1>(config->setting1).put16<Cpt::kSetting2>(config->setting2);
    request.put16<Cpt::kTableCount>(static_cast<uint16_t>(config->tableCount));
    request.put16<Cpt::kSetting3>(config->setting3).put<Cpt::kParam4>(param4);
    return request.send();
}

// The parameter block names its own length in word 0, which must be 13.
ResultCode RYN_DECORATED(RynCstVoiceActivityDetectorInitEx, 12)(DeviceHandle handle, const int16_t *params,
                                                                uint32_t param2) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    if (params == nullptr) return RYN_FAILURE(kErrNullPointer);
    if (params[0] != kVadWords) return RYN_FAILURE(kErrRange);
    RequestOf<Vad> request;
    request.put<wire::kHandle>(handle).putBytes<Vad::kParams, 2 * Vad::kParamWords>(params, 2 * Vad::kParamWords);
    request.put<Vad::kParam2>(param2);
    return request.send();
}

}  // extern "C"
