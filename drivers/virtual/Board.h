// The virtual board: a driver module that answers the library's requests as a
// board driver would, with state, so that applications run without hardware.
//
// A request arrives as a block from the library: 16 reserved header bytes,
// the handle at offset 16 as a rule, the fields after it. The module finds
// the request's row (function number, request and reply length, handler) in
// the table of the family the handle belongs to (device-core requests have a
// table of their own), checks the lengths, zero-fills the reply, runs the
// handler under the board's lock and stores the handler's result code at the
// reply's result offset.
//
// Each family keeps the state of its objects in a struct derived from
// ObjectState, made with the object by its family (Families.h) and reached
// with Object::as<T>().
#pragma once

#include <cstdint>
#include <cstring>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <unordered_set>
#include <vector>

#include "LittleEndian.h"
#include "RynHwDll.h"
#include "RynUserDriver.h"
#include "RynVirtualBoard.h"
#include "Serials.h"

namespace vb {

// ---- Result codes ---------------------------------------------------------

// The SourceId of the codes this driver raises.
inline constexpr uint32_t kSourceId = RYN_VB_SOURCE_ID;

// Error numbers (the library's meanings).
enum Error : uint32_t {
    kNothingToRead = 1,    // a status, not a failure: an empty queue or receiver
    kMalformed = 5,        // data not in the expected form (a corrupt DSP image)
    kNotProvided = 6,      // a request this object does not answer
    kOutOfRange = 9,       // an argument outside its range
    kInvalidHandle = 11,   // no such object, or an object of the wrong kind
    kLengthMismatch = 12,  // a request or reply block of the wrong length
    kFailed = 13,          // the object is not in a state to do this
    kUnknownAttribute = 16,
    kNotAvailable = 17,  // e.g. a device type that the board does not have
};

constexpr uint32_t failureCode(uint32_t line, uint32_t error) {
    return 0x80000000u | (kSourceId << 23) | ((line & 0x7FFFu) << 8) | (error & 0xFFu);
}
constexpr uint32_t statusCode(uint32_t line, uint32_t error) { return failureCode(line, error) & 0x7FFFFFFFu; }

#define VB_FAILURE(error) ::vb::failureCode(__LINE__, (error))
#define VB_STATUS(error) ::vb::statusCode(__LINE__, (error))

constexpr bool failed(uint32_t code) { return (code & 0x80000000u) != 0; }

// ---- Device tree ----------------------------------------------------------

// Device types of the board's numbering, named in RynVirtualBoard.h
// (positive, so that the library's translations for older drivers leave them
// alone).
enum DeviceType : int32_t {
    kTypeBoard = RYN_VB_DEVICE_BOARD,
    kTypeT1E1 = RYN_VB_DEVICE_T1E1,
    kTypeDsp = RYN_VB_DEVICE_DSP,
    kTypeHdlc = RYN_VB_DEVICE_HDLC,
    kTypeRawData = RYN_VB_DEVICE_RAW_DATA,
    kTypeBurst = RYN_VB_DEVICE_BURST,
    kTypePots = RYN_VB_DEVICE_POTS,
    kTypeSlic = RYN_VB_DEVICE_SLIC,
    kTypeJtag = RYN_VB_DEVICE_JTAG,
    kTypeBri = 10,  // not fitted on this board; its requests are refused
    // Logical devices: the signal-processing blocks created on a DSP.
    kTypeConstValueGenerator = RYN_VB_BLOCK_CONST_VALUE_GENERATOR,
    kTypeValueSampler = RYN_VB_BLOCK_VALUE_SAMPLER,
    kTypeEffectsGenerator = RYN_VB_BLOCK_EFFECTS_GENERATOR,
    kTypeSineWaveGenerator = RYN_VB_BLOCK_SINE_WAVE_GENERATOR,
    kTypeDtmfGenerator = RYN_VB_BLOCK_DTMF_GENERATOR,
    kTypeDtmfDialler = RYN_VB_BLOCK_DTMF_DIALLER,
    kTypeMfDialler = RYN_VB_BLOCK_MF_DIALLER,
    kTypeSequenceGenerator = RYN_VB_BLOCK_SEQUENCE_GENERATOR,
    kTypeSilenceDetector = RYN_VB_BLOCK_SILENCE_DETECTOR,
    kTypeDtmfDetector = RYN_VB_BLOCK_DTMF_DETECTOR,
    kTypeFskDetector = RYN_VB_BLOCK_FSK_DETECTOR,
    kTypeDialtoneDetector = RYN_VB_BLOCK_DIAL_TONE_DETECTOR,
    kTypeMfDetector = RYN_VB_BLOCK_MF_DETECTOR,
    kTypeDualDetector = RYN_VB_BLOCK_DUAL_FREQUENCY_DETECTOR,
    kTypeSingleDetector = RYN_VB_BLOCK_SINGLE_FREQUENCY_DETECTOR,
    kTypeTelephonyFirst = RYN_VB_BLOCK_CST_DTMF_DIALLER,  // 120..128: the telephony blocks
    kTypeTelephonyLast = RYN_VB_BLOCK_CST_CALLER_ID_DETECTOR,
    kTypeDataMixer = RYN_VB_BLOCK_DATA_CONVERTER,
    kTypeDspPots = RYN_VB_BLOCK_DSP_POTS,
    // Other driver objects.
    kTypeEventQueue = RYN_VB_DEVICE_EVENT_QUEUE,
    kTypePipe = RYN_VB_DEVICE_PIPE,
};

struct Family;  // Families.h

inline constexpr uint32_t kKindPhysical = 0x10000000u;
inline constexpr uint32_t kKindLogical = 0x20000000u;
inline constexpr uint32_t kKindQueue = 0x30000000u;
inline constexpr uint32_t kKindPipe = 0x40000000u;
// The kind of a handle: its top four bits, one of the kinds above.
inline constexpr uint32_t kindOf(uint32_t handle) { return handle & 0xF0000000u; }

// Pipes and event queues are refused once the board holds this many objects,
// its devices and blocks counted.
inline constexpr size_t kObjectLimit = 4096;

// Driver state values (RynDrvGetState, attribute 4).
enum State : uint32_t {
    kStateIdle = RYN_VB_STATE_IDLE,
    kStateEnabled = RYN_VB_STATE_ENABLED,
    kStateDisabled = RYN_VB_STATE_DISABLED
};

// Per-family state of one object.
struct ObjectState {
    virtual ~ObjectState() = default;
};

// What a block was given to play in time (a dial, a sequence, a tone of a
// set length), and the events due once it has played. The clock takes it a
// frame at a time while the block is connected; with nothing connected its
// time passes all the same (`aired`), the samples staying for the audio-out
// attribute, and its events come when the time is up.
struct Outgoing {
    struct Mark {
        uint64_t at;  // the event comes once this many samples have gone
        uint32_t code, value5, value6, value7;
    };
    std::deque<int16_t> samples;
    std::deque<Mark> marks;
    uint64_t taken = 0;  // samples taken from the front, ever
    uint64_t aired = 0;  // samples whose time passed with nothing connected (at least `taken`)
    int16_t last = 0;    // the last sample the block gave
    bool idle() const { return samples.empty() && marks.empty(); }
};

struct Object {
    uint32_t handle = 0;
    int32_t type = 0;
    uint32_t id = 0;                 // number of the device among those of its type
    const Family *family = nullptr;  // answers the object's requests
    std::string name;
    uint32_t parent = 0;  // a logical device's DSP, 0 for the rest
    uint32_t state = kStateIdle;
    uint32_t label = 0;  // attribute 5, the application's own value
    std::unique_ptr<ObjectState> data;
    Outgoing outgoing;          // blocks that play in time
    std::vector<int16_t> late;  // samples that reached the block after it ran in a clock frame: heard in the next

    // The family's state of the object. Asking for a state of another kind
    // is a fault of the board's own code: the request fails, and the state
    // is left as it is.
    template <typename T>
    T &as() const {
        if (auto *state = dynamic_cast<T *>(data.get())) return *state;
        throw std::logic_error("object state of another kind");
    }
};

// ---- Event codes ----------------------------------------------------------

// Word 3 of an event record, named in RynVirtualBoard.h with its text
// (eventText, Board.cpp).
enum EventCode : uint32_t {
    kEventEnabled = RYN_VB_EVENT_DEVICE_ENABLED,
    kEventDisabled = RYN_VB_EVENT_DEVICE_DISABLED,
    kEventReset = RYN_VB_EVENT_DEVICE_RESET,
    kEventUser = RYN_VB_EVENT_APPLICATION,  // a record queued by RynDrvSetEventData
    kEventLayer1Changed = RYN_VB_EVENT_LAYER1_CHANGED,
    kEventAlarmChanged = RYN_VB_EVENT_ALARM_CHANGED,
    kEventSignallingChanged = RYN_VB_EVENT_SIGNALLING_CHANGED,
    kEventHookChanged = RYN_VB_EVENT_HOOK_CHANGED,
    kEventRingStarted = RYN_VB_EVENT_RINGING_STARTED,
    kEventRingStopped = RYN_VB_EVENT_RINGING_STOPPED,
    kEventFrameReceived = RYN_VB_EVENT_FRAME_RECEIVED,
    kEventFrameSent = RYN_VB_EVENT_FRAME_SENT,
    kEventRawDataReceived = RYN_VB_EVENT_RAW_DATA_RECEIVED,
    kEventBurstDone = RYN_VB_EVENT_BURST_DONE,
    kEventProgramStarted = RYN_VB_EVENT_PROGRAM_STARTED,
    kEventProgramStopped = RYN_VB_EVENT_PROGRAM_STOPPED,
    kEventDtmfDigit = RYN_VB_EVENT_DTMF_DIGIT,
    kEventMfDigit = RYN_VB_EVENT_MF_DIGIT,
    kEventToneDetected = RYN_VB_EVENT_TONE_DETECTED,
    kEventToneEnded = RYN_VB_EVENT_TONE_ENDED,
    kEventCallProgress = RYN_VB_EVENT_CALL_PROGRESS,
    kEventSilence = RYN_VB_EVENT_SILENCE,
    kEventDialDone = RYN_VB_EVENT_DIALLING_FINISHED,
    kEventSequenceDone = RYN_VB_EVENT_SEQUENCE_SENT,
    kEventDataByte = RYN_VB_EVENT_DATA_BYTE,
    kEventCallerId = RYN_VB_EVENT_CALLER_ID,
};

const char *eventText(uint32_t code);  // nullptr for an unknown code

// ---- Request and reply views ----------------------------------------------

// The request block as the library sent it. Every read is bounds-checked: a
// field outside the block reads as zero.
class Input {
public:
    Input(const uint8_t *data, uint32_t length, const RynDriverBuffer *buffers, uint32_t bufferCount)
        : reader_({data, length}), buffers_(buffers), bufferCount_(bufferCount) {}

    uint32_t length() const { return static_cast<uint32_t>(reader_.size()); }
    uint32_t u32(uint32_t offset) const { return reader_.u32(offset); }
    int32_t i32(uint32_t offset) const { return static_cast<int32_t>(reader_.u32(offset)); }
    uint16_t u16(uint32_t offset) const { return reader_.u16(offset); }
    uint8_t u8(uint32_t offset) const { return reader_.u8(offset); }
    // `count` bytes from `offset`; empty when they do not lie inside the block.
    std::span<const uint8_t> bytes(uint32_t offset, uint32_t count) const {
        return reader_.bytes(offset, count).value_or(std::span<const uint8_t>{});
    }
    // The caller buffer named by the address field at `offset` (a 1-based
    // reference into the request's buffer list, or the address itself in a
    // 32-bit process), or nullptr when the field names none.
    const RynDriverBuffer *buffer(uint32_t offset) const;

private:
    wire::le::Reader reader_;
    const RynDriverBuffer *buffers_;
    uint32_t bufferCount_;
};

// The reply block: writes outside it are dropped.
class Output {
public:
    Output(uint8_t *data, uint32_t length) : writer_({data, length}) {}
    uint32_t length() const { return static_cast<uint32_t>(writer_.size()); }
    Output &u32(uint32_t offset, uint32_t value) { return writer_.u32(offset, value), *this; }
    Output &u16(uint32_t offset, uint16_t value) { return writer_.u16(offset, value), *this; }
    Output &u8(uint32_t offset, uint8_t value) { return writer_.u8(offset, value), *this; }
    Output &write(uint32_t offset, const void *bytes, uint32_t count) {
        return writer_.write(offset, bytes, count), *this;
    }

private:
    wire::le::Writer writer_;
};

class Board;

// One request being answered.
struct Call {
    Board &board;
    Object *object;  // the object of the handle at offset 16 (family requests), else nullptr
    const Input &in;
    Output &out;
    uint32_t replyLength = 0;  // set by handlers whose reply length follows the request
    uint32_t refusal = 0;      // set by an attribute getter that refuses to give its value
};

using Handler = uint32_t (*)(Call &);

inline constexpr uint32_t kResultLast = 0xFFFFFFFFu;

// One request a family answers.
struct Row {
    uint32_t function;
    uint32_t requestLength;  // exact, unless `minimumLength`
    uint32_t replyLength;
    Handler handler;
    uint32_t resultOffset = kResultLast;  // the last 32-bit word unless given
    bool minimumLength = false;           // requests whose length follows their data
};

using Table = std::span<const Row>;

// The row of a request named in the protocol headers (wire/): function
// number, lengths and result offset as the library sends and reads them.
template <typename Wire>
constexpr Row row(Handler handler, bool minimumLength = false) {
    uint32_t resultOffset = kResultLast;
    if constexpr (requires { Wire::kResult; }) resultOffset = Wire::kResult;
    return Row{Wire::kFunction, Wire::kRequest, Wire::kReply, handler, resultOffset, minimumLength};
}

// A handler for the blocks of one type: the families whose block types share
// one function-number space answer each request only for its own type.
template <int32_t Type, Handler Answer>
uint32_t only(Call &call) {
    return call.object->type == Type ? Answer(call) : VB_FAILURE(kNotProvided);
}

// A setting for which 0 asks for the default.
inline uint32_t orDefault(uint32_t value, uint32_t fallback) { return value != 0 ? value : fallback; }

// Whether an object runs: every state but disabled.
inline bool running(const Object &object) { return object.state != kStateDisabled; }

// A setting for which 0 asks for the default; nothing when it lies outside
// low..high.
inline std::optional<uint32_t> setting(uint32_t value, uint32_t fallback, uint32_t low, uint32_t high) {
    const uint32_t chosen = value == 0 ? fallback : value;
    if (chosen < low || chosen > high) return std::nullopt;
    return chosen;
}

// The tables of the device-core requests (Core.cpp, CoreEvents.cpp); the
// families' tables are in Families.h.
Table coreTable();
Table coreEventTable();

// Attributes an object has beside the common ones (1 device type, 2 device
// number, 3 name, 4 state, 5 label). A getter gets the caller's buffer
// length, for values whose size the caller chooses (0 for a type query), and
// refuses by setting call.refusal to a result code; a setter returns a
// result code. Type codes: 0 text with its terminator, 1 Boolean (4 bytes),
// 2 unsigned 32-bit, 3 binary block.
struct Attribute {
    int32_t id;
    uint32_t type;
    std::vector<uint8_t> (*get)(Call &call, Object &object, uint32_t capacity);
    uint32_t (*set)(Call &call, Object &object, std::span<const uint8_t> value);  // nullptr: read-only
};

// Helpers for attribute values: a text, a 32-bit word; the word an
// application set (nothing when the value is not 4 bytes).
std::vector<uint8_t> textValue(const std::string &text);
std::vector<uint8_t> wordValue(uint32_t value);
std::optional<uint32_t> wordOf(std::span<const uint8_t> value);

// The getter of an attribute that is set only: it has no value to give.
std::vector<uint8_t> setOnly(Call &call, Object &object, uint32_t capacity);

// The getter of an attribute that is one 32-bit field of a family's state.
template <typename State, uint32_t State::*Field>
std::vector<uint8_t> fieldValue(Call &, Object &object, uint32_t) {
    return wordValue(object.as<State>().*Field);
}

// ---- The board ------------------------------------------------------------

struct EventQueue;

class Board {
public:
    Board();
    ~Board();

    std::mutex lock;  // held while a request is answered

    // Objects.
    Object *find(uint32_t handle);
    Object *findDevice(int32_t type, uint32_t id);  // a physical device
    const std::vector<std::unique_ptr<Object>> &objects() const { return objects_; }
    Object &create(uint32_t kind, int32_t type, const Family &family, uint32_t parent, std::string name);
    void destroy(uint32_t handle);

    // Queues a record for every queue that listens to `source` and signals
    // their events: word 2 the source's device type, word 3 `code`, word 4
    // the source's handle, words 5 to 7 `values`.
    void post(const Object &source, uint32_t code, uint32_t value5 = 0, uint32_t value6 = 0, uint32_t value7 = 0);
    // Queues a whole record into one queue.
    bool queueRecord(uint32_t queueHandle, const EventData &record);

    // Board time: 100-ns intervals since 1601, the host's clock at start
    // advanced by every frame of samples the board runs: the sample clock's,
    // and those the audio attributes run at once.
    uint64_t now() const;
    void advance(uint64_t intervals) { offset_ += intervals; }

    // The sample clock (Clock.cpp): one frame of the board's time, run by
    // the clock's thread (under the lock) or by a step; the frames run so
    // far; the rate in times real time (0: stopped).
    void tick();
    uint64_t frames() const { return frames_; }
    uint32_t clockRate() const;
    void setClockRate(uint32_t rate);
    // Starts the clock's thread (once); ends it for good (the board's lock
    // not held).
    void startClock();
    void stopClock();

    // Logical-device and pipe connections (RynDrvConnectLogicalDevice,
    // RynDrvConnectPipe), as pairs of (handle, port).
    struct Connection {
        uint32_t handleA, portA, handleB, portB;
    };
    std::vector<Connection> connections;

    uint32_t registerValue(uint32_t handle, uint32_t offset) const;
    void setRegister(uint32_t handle, uint32_t offset, uint32_t value);

private:
    std::vector<std::unique_ptr<Object>> objects_;
    std::vector<std::pair<uint64_t, uint32_t>> registers_;  // (handle << 32 | offset, value)
    std::unordered_set<uint32_t> serials_;                  // those of the objects alive (Serials.h)
    uint32_t nextSerial_ = 1;
    uint64_t start_;
    uint64_t offset_ = 0;
    uint64_t frames_ = 0;
    std::unique_ptr<class SampleClock> clock_;  // last: made after the objects, stopped first
};

// The event queue of a queue object (kind 3).
struct EventQueue : ObjectState {
    static constexpr size_t kCapacity = RYN_VB_EVENT_QUEUE_CAPACITY;
    uint32_t source = 0;  // 0: every object
    OsaHandle event = 0;  // the application's event object, 0 for none
    std::deque<EventData> records;
    uint32_t dropped = 0;  // records lost to a full queue
};

void buildDeviceTree(Board &board);

// One 8 kHz sample period in board-time units (100 ns).
inline constexpr uint64_t kSampleInterval = 1250;

// Answers one request; returns 0 when the output cannot hold even a
// failure reply (the call then fails and nothing is written).
int answer(Board &board, const RynDriverRequest &request, uint32_t *returned);

}  // namespace vb
