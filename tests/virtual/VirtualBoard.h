// Integration tests against the virtual board: the application's view,
// through the shared library's exported calls only. The test program runs
// in the folder of the library, so the library finds the board's module in
// ryn-drivers/ as it would for any application.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "RynHwDll.h"
#include "RynVirtualBoard.h"

namespace vt {

inline bool failed(ResultCode code) { return (code & 0x80000000u) != 0; }
inline uint32_t errorOf(ResultCode code) { return code & 0xFFu; }
// The virtual board's own failures carry RYN_VB_SOURCE_ID.
inline uint32_t sourceOf(ResultCode code) { return (code >> 23) & 0xFFu; }
// The "nothing there" status: success with error number 1.
inline bool isEmpty(ResultCode code) { return !failed(code) && errorOf(code) == 1; }

// What `get` writes through its last argument, the call expected to succeed.
template <class T = uint32_t, class Get, class... Args>
T got(Get get, Args... args) {
    T value;
    std::memset(&value, 0xA5, sizeof value);
    EXPECT_EQ(get(args..., &value), 0u);
    return value;
}
// The values of a 32-bit and of a text attribute.
inline uint32_t attribute(DeviceHandle handle, int32_t id) { return got(RynDrvGetAttributeValueUint32, handle, id); }
inline std::string text(DeviceHandle handle, int32_t id) {
    char value[256] = {};
    EXPECT_EQ(RynDrvGetAttributeValueSz(handle, id, value, sizeof value), 0u);
    return value;
}

// The board's sample clock: stopped, or running at `rate` times real time.
inline void setClock(uint32_t rate) {
    DeviceHandle board = 0;
    ASSERT_EQ(RynDrvGetDeviceHandle(0, RYN_VB_DEVICE_BOARD, 0, &board), 0u);
    ASSERT_EQ(RynDrvSetAttributeValueUint32(board, RYN_VB_ATTR_SAMPLE_CLOCK_RATE, rate), 0u);
}
// Runs the clock for `ms` of board time (whole frames) before returning.
inline void run(uint32_t ms) {
    DeviceHandle board = 0;
    ASSERT_EQ(RynDrvGetDeviceHandle(0, RYN_VB_DEVICE_BOARD, 0, &board), 0u);
    const uint32_t frames = (ms + RYN_VB_SAMPLE_CLOCK_FRAME_MS - 1) / RYN_VB_SAMPLE_CLOCK_FRAME_MS;
    ASSERT_EQ(RynDrvSetAttributeValueUint32(board, RYN_VB_ATTR_SAMPLE_CLOCK_STEP, frames), 0u);
}

// Each test starts with a fresh board whose clock stands still: time moves
// when the test runs it.
class VirtualBoardTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(RynDrvConnectLib(), 0u);
        setClock(RYN_VB_SAMPLE_CLOCK_STOPPED);
    }
    void TearDown() override { RynDrvReleaseLib(); }

    // The handle of the board's device `id` of `type`.
    static DeviceHandle device(int32_t type, uint32_t id = 0) {
        DeviceHandle handle = 0;
        EXPECT_EQ(RynDrvGetDeviceHandle(0, type, id, &handle), 0u) << "type " << type << " id " << id;
        return handle;
    }
    // A block of `type` created on DSP `dsp`.
    static DeviceHandle block(int32_t type, uint32_t dsp = 0) {
        DeviceHandle handle = 0;
        EXPECT_EQ(RynDrvCreateLogicalDevice(device(RYN_VB_DEVICE_DSP, dsp), type, 0, 0, &handle), 0u)
            << "block type " << type;
        return handle;
    }
};

// An event object with a driver event queue on it, closed at the end.
class EventListener {
public:
    explicit EventListener(DeviceHandle source = 0) {
        RynDrvCreateEvent(&event_);
        EXPECT_EQ(RynDrvCreateEventQueue(source, event_, &queue_), 0u);
    }
    ~EventListener() {
        RynDrvClose(queue_);
        RynDrvCloseEvent(event_);
    }
    OsaHandle event() const { return event_; }
    DeviceHandle queue() const { return queue_; }
    // The next record, waiting up to `ms` for its signal; false when none came.
    bool next(EventData &record, uint32_t ms = 1000) {
        if (RynDrvGetEventData(queue_, &record) == 0) return true;
        if (RynDrvWaitForSingleEvent(event_, ms) != 0) return false;
        return RynDrvGetEventData(queue_, &record) == 0;
    }
    // The next record with event code `code` (word 3), skipping others; all words 0xFFFFFFFF when none comes.
    EventData nextWith(uint32_t code, uint32_t ms = 1000) {
        EventData record{};
        while (next(record, ms))
            if (record.word[3] == code) return record;
        std::memset(&record, 0xFF, sizeof record);
        return record;
    }
    // Words 5 and 6 of the records with `code` that come, each within `ms` of the last.
    std::vector<std::pair<uint32_t, uint32_t>> drain(uint32_t code, uint32_t ms = 50) {
        std::vector<std::pair<uint32_t, uint32_t>> values;
        for (EventData r = nextWith(code, ms); r.word[3] == code; r = nextWith(code, ms))
            values.emplace_back(r.word[5], r.word[6]);
        return values;
    }
    // Word 5 of those records, as characters.
    std::string reported(uint32_t code, uint32_t ms = 50) {
        std::string found;
        for (const auto &value : drain(code, ms)) found += static_cast<char>(value.first);
        return found;
    }

private:
    OsaHandle event_ = 0;
    DeviceHandle queue_ = 0;
};

}  // namespace vt
