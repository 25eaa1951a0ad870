// A scripted driver registered inside the test process. It records every
// request and answers with scripted replies; without a script it answers
// with an all-zero reply (result 0) and reports the whole reply returned.
#pragma once

#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "RynHwDll.h"
#include "RynUserDriver.h"

namespace ryn::test {

struct RecordedRequest {
    uint32_t code = 0;
    std::vector<uint8_t> input;
    uint32_t outputLength = 0;
    std::vector<RynDriverBuffer> buffers;

    uint32_t function() const { return (code >> 2) & 0xFFF; }
    uint32_t word(size_t offset) const {
        uint32_t value = 0;
        if (offset + 4 <= input.size()) std::memcpy(&value, input.data() + offset, 4);
        return value;
    }
};

struct ScriptedReply {
    int ok = 1;                                                    // 0: the call fails
    std::optional<uint32_t> returned;                              // default: the whole reply
    std::vector<std::pair<uint32_t, uint32_t>> words;              // 32-bit values at reply offsets
    std::vector<std::pair<uint32_t, std::vector<uint8_t>>> bytes;  // byte runs at reply offsets

    ScriptedReply &word(uint32_t offset, uint32_t value) {
        words.emplace_back(offset, value);
        return *this;
    }
    ScriptedReply &put(uint32_t offset, std::vector<uint8_t> run) {
        bytes.emplace_back(offset, std::move(run));
        return *this;
    }
};

// A reply with `result` as the last 32-bit field of the reply (offset 0xFFFFFFFF).
inline ScriptedReply resultReply(ResultCode result) { return ScriptedReply{}.word(0xFFFFFFFFu, result); }

// A failed I/O control call that reports `returned` bytes.
inline ScriptedReply failedCall(uint32_t returned) { return ScriptedReply{0, returned, {}, {}}; }

class FakeDriver {
public:
    explicit FakeDriver(const char *deviceName = "RYNDRV");
    ~FakeDriver();
    FakeDriver(const FakeDriver &) = delete;
    FakeDriver &operator=(const FakeDriver &) = delete;

    // Each call below holds the lock through its one statement: `hold(), ...`.
    // Queues replies, taken in order by the next requests.
    void script(ScriptedReply reply) { hold(), script_.push_back(std::move(reply)); }
    // The reply given when the script is empty: `resultAtEnd` as the last
    // 32-bit field of every reply.
    void setDefaultResult(ResultCode resultAtEnd) { hold(), defaultResult_ = resultAtEnd; }
    // Runs during every request, after the scripted reply is written: a
    // driver's look at the caller buffers that the request names.
    void setHook(std::function<void(const RynDriverRequest &)> hook) { hold(), hook_ = std::move(hook); }

    std::vector<RecordedRequest> requests() const { return hold(), requests_; }
    RecordedRequest lastRequest() const { return hold(), requests_.empty() ? RecordedRequest{} : requests_.back(); }
    size_t requestCount() const { return hold(), requests_.size(); }
    void clear() { hold(), requests_.clear(); }
    bool isOpen() const { return hold(), open_; }

private:
    std::unique_lock<std::mutex> hold() const { return std::unique_lock(mutex_); }
    static void *open(const char *deviceName);
    static int control(void *device, const RynDriverRequest *request, uint32_t *returned);
    static void close(void *device);
    int answer(const RynDriverRequest &request, uint32_t *returned);

    std::string name_;
    RynUserDriver driver_;
    mutable std::mutex mutex_;
    std::deque<ScriptedReply> script_;
    std::vector<RecordedRequest> requests_;
    std::optional<ResultCode> defaultResult_;
    std::function<void(const RynDriverRequest &)> hook_;
    bool open_ = false;
};

// Releases the library's connection when a test ends, so that every test
// starts unconnected.
struct ConnectionGuard {
    ~ConnectionGuard() { RynDrvReleaseLib_0(); }
};

}  // namespace ryn::test
