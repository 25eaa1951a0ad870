// The module's entry point and the answering of one request: finding its
// row, checking the block lengths, running the handler under the board's
// lock and storing its result code.
#include <algorithm>

#include "CoreWire.h"
#include "Families.h"

namespace vb {

const RynDriverBuffer *Input::buffer(uint32_t offset) const {
    const uint32_t field = u32(offset);
    if (field == 0 || buffers_ == nullptr) return nullptr;
    if constexpr (sizeof(void *) > 4) {
        return field <= bufferCount_ ? &buffers_[field - 1] : nullptr;
    } else {
        for (uint32_t i = 0; i < bufferCount_; ++i)
            if (reinterpret_cast<uintptr_t>(buffers_[i].address) == field) return &buffers_[i];
        return nullptr;
    }
}

namespace {

constexpr uint32_t kSmallestReply = 12;

// A failure answered without running the request: the code goes where the
// library looks in the common reply (offset 8), where it looks in every reply
// whose code comes last, and, when the request is known, at its own result
// offset. Nothing else is written, so the caller's blocks keep their content.
int refuse(const RynDriverRequest &request, uint32_t code, uint32_t *returned, const Row *row = nullptr) {
    Output out(static_cast<uint8_t *>(request.output), request.outputLength);
    out.u32(8, code).u32((request.outputLength - 4) & ~1u, code);
    if (row != nullptr && row->resultOffset != kResultLast) out.u32(row->resultOffset, code);
    *returned = request.outputLength;
    return 1;
}

const Row *findRow(Table table, uint32_t function) {
    auto row = std::find_if(table.begin(), table.end(), [&](const Row &r) { return r.function == function; });
    return row == table.end() ? nullptr : &*row;
}

// The requests of the library's start-up step: it connects and reads the
// driver's own attributes (handle 0) while the system's loader may be busy
// loading the library, when a thread must not be started. The clock starts
// with the first other request.
bool beforeTheClock(uint32_t function, const Input &in) {
    namespace core = wire::core;
    if (function == core::ConnectLib::kFunction) return true;
    const bool attribute =
        function == core::GetAttributeValue::kFunction || function == core::GetAttributeType::kFunction;
    return attribute && in.u32(wire::kHandle) == 0;
}

}  // namespace

int answer(Board &board, const RynDriverRequest &request, uint32_t *returned) {
    if (request.output == nullptr || request.outputLength < kSmallestReply) return 0;
    if (request.input == nullptr && request.inputLength != 0)
        return refuse(request, VB_FAILURE(kLengthMismatch), returned);
    const Input in(static_cast<const uint8_t *>(request.input), request.inputLength, request.buffers,
                   request.bufferCount);
    if ((request.code & 0xFFFF0003u) != 0x220000u) return refuse(request, VB_FAILURE(kNotProvided), returned);
    const uint32_t function = (request.code >> 2) & 0x3FFFu;

    std::lock_guard<std::mutex> guard(board.lock);
    Object *object = nullptr;
    const Row *row = nullptr;
    if (!beforeTheClock(function, in)) board.startClock();
    if (function >= wire::core::kFirstFunction && function <= wire::core::kLastFunction) {
        row = findRow(coreTable(), function);
        if (row == nullptr) row = findRow(coreEventTable(), function);
    } else {
        if (in.length() < wire::HandleOnly::kRequest) return refuse(request, VB_FAILURE(kLengthMismatch), returned);
        object = board.find(in.u32(wire::kHandle));
        if (object == nullptr) return refuse(request, VB_FAILURE(kInvalidHandle), returned);
        row = findRow(object->family->rows, function);
    }
    if (row == nullptr) return refuse(request, VB_FAILURE(kNotProvided), returned);
    const bool lengthFits = row->minimumLength ? in.length() >= row->requestLength : in.length() == row->requestLength;
    if (!lengthFits || request.outputLength < row->replyLength)
        return refuse(request, VB_FAILURE(kLengthMismatch), returned, row);

    const uint32_t replyLength = row->replyLength;
    std::memset(request.output, 0, replyLength);
    Output out(static_cast<uint8_t *>(request.output), request.outputLength);
    Call call{board, object, in, out};
    const uint32_t result = row->handler(call);
    // A handler that sizes its reply itself (attribute values, burst reads)
    // sets call.replyLength to the bytes it wrote; the others use the row.
    // Neither is ever more than the block holds.
    const uint32_t resultOffset = row->resultOffset == kResultLast ? replyLength - 4 : row->resultOffset;
    out.u32(resultOffset, result);
    *returned = std::min(call.replyLength != 0 ? call.replyLength : replyLength, request.outputLength);
    return 1;
}

namespace {

std::mutex openLock;
Board *board = nullptr;
unsigned connections = 0;

struct Connection {
    Board *board;
};

void *openDevice(const char *name) {
    (void)name;  // "RYNDRV" and "RYNNET" reach the same board
    std::lock_guard<std::mutex> guard(openLock);
    try {
        if (connections == 0) board = new Board();
        auto *connection = new Connection{board};
        ++connections;
        return connection;
    } catch (...) {
        if (connections == 0) {
            delete board;
            board = nullptr;
        }
        return nullptr;
    }
}

int controlDevice(void *device, const RynDriverRequest *request, uint32_t *returned) {
    if (device == nullptr || request == nullptr || returned == nullptr) return 0;
    try {
        return answer(*static_cast<Connection *>(device)->board, *request, returned);
    } catch (...) {
        return 0;  // memory ran out while answering: the call fails
    }
}

void closeDevice(void *device) {
    std::lock_guard<std::mutex> guard(openLock);
    delete static_cast<Connection *>(device);
    if (--connections == 0) {
        delete board;
        board = nullptr;
    }
}

// A process that ends with its connection still open leaves its board
// alive: the clock's thread stops before the module and the library go, so
// that it never runs into them while they are taken down. (A Windows
// process has ended its threads by then.)
#ifndef _WIN32
struct ClockStopAtExit {
    ~ClockStopAtExit() {
        std::lock_guard<std::mutex> guard(openLock);
        if (board != nullptr) board->stopClock();
    }
} clockStopAtExit;
#endif

constexpr RynUserDriver kDriver{RYN_USER_DRIVER_ABI, openDevice, controlDevice, closeDevice};

}  // namespace
}  // namespace vb

extern "C" __attribute__((visibility("default"))) const RynUserDriver *RynUserDriverEntry(void) { return &vb::kDriver; }
