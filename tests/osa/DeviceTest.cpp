#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "Osa.h"
#include "osa/Device.h"
#include "support/AllocationFailure.h"
#include "support/FakeDriver.h"

namespace {

using ryn::test::FakeDriver;

// A driver stack as real ones are built: its open opens the device beneath
// it and creates an event of its own, its close closes both again, all
// through the library's exported calls.
struct LayeredDriver {
    static inline OsaHandle lower = INVALID_HANDLE_VALUE;
    static inline OsaHandle event = 0;
    static void *open(const char *) {
        lower = OsaDeviceOpen("RYNLOWER");
        RynDrvCreateEvent_4(&event);
        return lower == INVALID_HANDLE_VALUE ? nullptr : &lower;
    }
    static int control(void *, const RynDriverRequest *, uint32_t *returned) {
        *returned = 0;
        return 1;
    }
    static void close(void *) {
        RynDrvCloseEvent_4(event);
        OsaDeviceClose(lower);
    }
    static constexpr RynUserDriver kTable{RYN_USER_DRIVER_ABI, open, control, close};
};

TEST(OsaDevice, DriversMayCallBackIntoTheLibrary) {
    FakeDriver lower("RYNLOWER");
    ASSERT_TRUE(ryn::osa::registerDevice("RYNUPPER", &LayeredDriver::kTable));
    const OsaHandle upper = OsaDeviceOpen("RynUpper");
    ASSERT_NE(upper, INVALID_HANDLE_VALUE);
    EXPECT_EQ(std::tuple(lower.isOpen(), LayeredDriver::event != 0), std::tuple(true, true));
    // The event was closed by the driver.
    EXPECT_EQ((std::tuple{OsaDeviceClose(upper) != 0, lower.isOpen(),
                          RynResultErrorCode(RynDrvSignalEvent_4(LayeredDriver::event))}),
              std::tuple(true, false, 13u));
    ryn::osa::unregisterDevice("RYNUPPER");
}

TEST(OsaDevice, OpenWithoutMemoryFailsCleanly) {
    FakeDriver driver("RYNTEST");
    OsaHandle handle = 0;
    {
        ryn::test::AllocationFailure noMemory;
        handle = OsaDeviceOpen("RYNTEST");
    }
    EXPECT_EQ(std::tuple(handle, driver.isOpen()), std::tuple(INVALID_HANDLE_VALUE, false));
    EXPECT_NE(OsaDeviceClose(OsaDeviceOpen("RYNTEST")), 0);  // the name was not left claimed
}

TEST(OsaDevice, NamesExclusiveOpenAndClose) {
    const std::string longest(51, 'N'), tooLong(52, 'N');
    FakeDriver driver("RYNTEST"), fits(longest.c_str()), refused(tooLong.c_str());
    // Names of 1 to 51 characters, compared without regard to case; one connection per device.
    const OsaHandle first = OsaDeviceOpen("RynTest"), wide = OsaDeviceOpen(longest.c_str());
    ASSERT_TRUE(first != INVALID_HANDLE_VALUE && wide != INVALID_HANDLE_VALUE);
    EXPECT_GE(first, 3u);  // never a standard stream
    // Refused too: module names that leave the ryn-drivers folder, names nothing answers to.
    const char *const refusedNames[] = {"RYNTEST", tooLong.c_str(), "", nullptr, "../ryn-drivers/rynmodtest", "NoSuch"};
    for (const char *name : refusedNames) EXPECT_EQ(OsaDeviceOpen(name), INVALID_HANDLE_VALUE) << (name ? name : "-");
    EXPECT_FALSE(refused.isOpen());
    // Nonzero for an open connection; 0 for a closed one and for handles never given out.
    EXPECT_EQ((std::tuple{OsaDeviceClose(first) != 0, OsaDeviceClose(wide) != 0, OsaDeviceClose(first),
                          OsaDeviceClose(INVALID_HANDLE_VALUE), OsaDeviceClose(0)}),
              std::tuple(true, true, 0, 0, 0));
    EXPECT_NE(OsaDeviceClose(OsaDeviceOpen("RYNTEST")), 0);  // the name is free again
}

TEST(OsaDevice, IoControlReportsReturnedBytes) {
    FakeDriver driver("RYNTEST");
    const OsaHandle handle = OsaDeviceOpen("RYNTEST");
    uint8_t in[20] = {1, 2, 3}, out[12] = {};
    uint32_t returned = 99;
    // Whether the call succeeded, and the bytes it reports.
    const auto control = [&] {
        return std::pair(OsaDeviceIoControl(handle, 0x222044, in, 20, out, 12, &returned) != 0, returned);
    };
    driver.script(ryn::test::ScriptedReply{}.word(8, 0xABCD));
    driver.script({1, 1000, {}, {}});  // 1000 bytes returned: never more than the reply holds
    driver.script(ryn::test::failedCall(0));
    EXPECT_EQ((std::tuple{control(), out[8]}), std::tuple(std::pair(true, 12u), 0xCD));
    EXPECT_EQ(std::tuple(driver.lastRequest().code, driver.lastRequest().input[2]), std::tuple(0x222044u, 3));
    EXPECT_EQ((std::tuple{control(), control()}), std::tuple(std::pair(true, 12u), std::pair(false, 0u)));
    EXPECT_NE(OsaDeviceClose(handle), 0);
    EXPECT_FALSE(control().first);  // closed
}

TEST(OsaDevice, DriverModuleFromTheLibraryFolder) {
    const OsaHandle handle = OsaDeviceOpen("RynModTest");
    ASSERT_NE(handle, INVALID_HANDLE_VALUE) << "unit/ryn-drivers/rynmodtest.so not found";
    uint8_t in[20] = {};
    uint32_t out[4] = {}, returned = 0;
    EXPECT_NE(OsaDeviceIoControl(handle, 0x2221B8, in, sizeof in, out, sizeof out, &returned), 0);
    // The module answers with the code and the length of the name as it was given.
    EXPECT_EQ(std::tuple(returned, out[2], out[3]), std::tuple(16u, 0x2221B8u, 10u));
    EXPECT_NE(OsaDeviceClose(handle), 0);
}

}  // namespace
