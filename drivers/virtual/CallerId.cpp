// The telephony caller identification detector (type 128) and the messages
// it reads.
#include "Cst.h"
#include "Fsk.h"

namespace vb {
namespace {

using namespace cst;

// ---- Caller identification detector ---------------------------------------
//
// The detector demodulates its input (Signal.h's FSK receiver) and reads
// the messages in it. A message begins with the first byte after at least
// 10 bits of steady mark (what comes before, the channel seizure, is passed
// over): its type, the length of its body, the body, and a checksum that
// brings the sum of all its bytes to 0 modulo 256. Once the checksum byte
// is in, the detector keeps the message's fields and posts "Caller
// identification received": word 5 the type, word 6 1 when the checksum
// was right (0 when not: the fields are kept all the same), word 7 the
// body's length.
//
// Type 0x04 (single data message): 8 digits of date and time, MMDDhhmm,
// then the number. Type 0x80 (multiple data message): parameters of a type,
// a length and the value; 0x01 date and time, 0x02 the number (0x04 why
// there is none, 'O' or 'P'), 0x07 the name (0x08 why there is none); other
// parameters are passed over, and the parameters end at one that runs past
// the body. Other message types leave the fields empty.

constexpr uint32_t kBell202 = RYN_VB_FSK_BELL202, kV23 = RYN_VB_FSK_V23;
constexpr size_t kDateDigits = 8;
constexpr uint8_t kSingleMessage = RYN_VB_CID_SINGLE_MESSAGE, kMultipleMessage = RYN_VB_CID_MULTIPLE_MESSAGE;
enum Parameter : uint8_t { kDate = 0x01, kNumber = 0x02, kNoNumber = 0x04, kName = 0x07, kNoName = 0x08 };

struct CallerId {
    std::string date, number, name;
    bool checksumGood = false;
};

struct CallerIdDetector : Block {
    uint32_t format = kBell202;
    uint32_t setting2 = 0;
    std::optional<signal::FskReceiver> receiver;
    std::vector<uint8_t> message;  // the message being received, from its type
    bool receiving = false;
    CallerId last;
};

// param1: the signal's format, 0 Bell 202 or 1 V.23; param2 kept. The
// carrier floor is the telephony detectors' default, 40 dB below full scale.
uint32_t callerIdInit(Call &call) {
    const uint32_t format = call.in.u32(CidDetectorInit::kParam1);
    if (format != kBell202 && format != kV23) return VB_FAILURE(kOutOfRange);
    auto &detector = call.object->as<CallerIdDetector>();
    detector = CallerIdDetector{};
    detector.format = format;
    detector.setting2 = call.in.u32(CidDetectorInit::kParam2);
    detector.receiver.emplace(static_cast<signal::FskMode>(format), signal::fullScalePeakOf(kDefaultFloorDb));
    detector.setUp = kBasicSetUp;
    return 0;
}

// Printable ASCII as it is, any other byte as '?'.
std::string textOf(std::span<const uint8_t> bytes) {
    std::string text;
    for (uint8_t b : bytes) text += b >= 0x20 && b < 0x7F ? static_cast<char>(b) : '?';
    return text;
}

void readSingle(std::span<const uint8_t> body, CallerId &id) {
    const size_t date = std::min(body.size(), kDateDigits);
    id.date = textOf(body.first(date));
    id.number = textOf(body.subspan(date));
}

// The field a parameter fills, none for a parameter passed over.
std::string *fieldOf(CallerId &id, uint8_t parameter) {
    if (parameter == kDate) return &id.date;
    if (parameter == kNumber || parameter == kNoNumber) return &id.number;
    if (parameter == kName || parameter == kNoName) return &id.name;
    return nullptr;
}

void readMultiple(std::span<const uint8_t> body, CallerId &id) {
    for (size_t at = 0; body.size() - at >= 2 && body.size() - at - 2 >= body[at + 1]; at += 2 + body[at + 1])
        if (std::string *field = fieldOf(id, body[at])) *field = textOf(body.subspan(at + 2, body[at + 1]));
}

void messageReceived(Board &board, Object &block, CallerIdDetector &detector) {
    const std::span<const uint8_t> message = detector.message;
    const std::span<const uint8_t> body = message.subspan(2, message[1]);
    CallerId id;
    uint8_t sum = 0;
    for (uint8_t b : message) sum = static_cast<uint8_t>(sum + b);
    id.checksumGood = sum == 0;
    if (message[0] == kSingleMessage) readSingle(body, id);
    if (message[0] == kMultipleMessage) readMultiple(body, id);
    detector.last = std::move(id);
    board.post(block, kEventCallerId, message[0], detector.last.checksumGood ? 1 : 0, message[1]);
}

// Type, length, body and checksum: the message is complete at 3 + length bytes.
void callerIdByte(Board &board, Object &block, CallerIdDetector &detector, const signal::FskByte &byte) {
    if (byte.afterMark) {
        detector.message.clear();
        detector.receiving = true;
    }
    if (!detector.receiving) return;
    detector.message.push_back(byte.value);
    if (detector.message.size() < 2 || detector.message.size() < detector.message[1] + 3u) return;
    detector.receiving = false;
    messageReceived(board, block, detector);
}

void callerIdReceive(Board &board, Object &block, Samples samples) {
    auto &detector = block.as<CallerIdDetector>();
    if (!detector.receiver) return;  // not set up
    std::vector<signal::FskByte> bytes;
    detector.receiver->run(samples, bytes);
    for (const signal::FskByte &byte : bytes) callerIdByte(board, block, detector, byte);
}

constexpr Row kRows[] = {
    row<CidDetectorInit>(only<kCallerIdDetector, callerIdInit>),
};

// Attributes 41 to 44 (read-only): the last message's date and time, number
// and name (texts, empty when the message had none) and whether its checksum
// was right (Boolean).
template <std::string CallerId::*Field>
std::vector<uint8_t> callerIdText(Call &, Object &object, uint32_t) {
    return textValue(object.as<CallerIdDetector>().last.*Field);
}

std::vector<uint8_t> checksumGood(Call &, Object &object, uint32_t) {
    return wordValue(object.as<CallerIdDetector>().last.checksumGood ? 1 : 0);
}

const Attribute kAttributes[] = {
    kSetUpAttribute,
    {RYN_VB_ATTR_CID_DATE, RYN_VB_VALUE_TEXT, callerIdText<&CallerId::date>, nullptr},
    {RYN_VB_ATTR_CID_NUMBER, RYN_VB_VALUE_TEXT, callerIdText<&CallerId::number>, nullptr},
    {RYN_VB_ATTR_CID_NAME, RYN_VB_VALUE_TEXT, callerIdText<&CallerId::name>, nullptr},
    {RYN_VB_ATTR_CID_CHECKSUM_OK, RYN_VB_VALUE_BOOLEAN, checksumGood, nullptr},
};

constexpr const Audio &kAudio = kListening<kCallerIdDetector, callerIdReceive>;

}  // namespace

const Family kCallerIdFamily = blockPair<kCallerIdDetector, CallerIdDetector, kCallerIdDetector, CallerIdDetector>(
    "Telephony caller identification", kRows, kAudio, kAttributes);

}  // namespace vb
