// Integration tests against the virtual board: the application's view,
// through the shared library's exported calls only. The test program runs
// in the folder of the library, so the library finds the board's module in
// ryn-drivers/ as it would for any application.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>

#include "RynHwDll.h"

namespace vt {

// Device types and numbers of the virtual board's device tree.
enum : int32_t {
    kBoard = 1, kT1E1 = 2, kDsp = 3, kHdlc = 4, kRawData = 5, kBurst = 6, kPots = 7, kSlic = 8, kJtag = 9,
};

inline bool failed(ResultCode code) { return (code & 0x80000000u) != 0; }
inline uint32_t errorOf(ResultCode code) { return code & 0xFFu; }
// The virtual board's own failures carry this SourceId.
inline uint32_t sourceOf(ResultCode code) { return (code >> 23) & 0xFFu; }
inline constexpr uint32_t kBoardSource = 0x72;

class VirtualBoardTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(RynDrvConnectLib(), 0u); }
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
        EXPECT_EQ(RynDrvCreateLogicalDevice(device(kDsp, dsp), type, 0, 0, &handle), 0u) << "block type " << type;
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
    // Skips records until one with event code `code` (word 3) comes.
    bool nextWithCode(uint32_t code, EventData &record, uint32_t ms = 1000) {
        while (next(record, ms))
            if (record.word[3] == code) return true;
        return false;
    }

private:
    OsaHandle event_ = 0;
    DeviceHandle queue_ = 0;
};

}  // namespace vt
