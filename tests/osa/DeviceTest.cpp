#include <gtest/gtest.h>

#include <string>

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
    EXPECT_TRUE(lower.isOpen());
    EXPECT_NE(LayeredDriver::event, 0u);
    EXPECT_NE(OsaDeviceClose(upper), 0);
    EXPECT_FALSE(lower.isOpen());
    EXPECT_EQ(RynResultErrorCode(RynDrvSignalEvent_4(LayeredDriver::event)), 13u);  // closed by the driver
    ryn::osa::unregisterDevice("RYNUPPER");
}

TEST(OsaDevice, OpenWithoutMemoryFailsCleanly) {
    FakeDriver driver("RYNTEST");
    OsaHandle handle = 0;
    {
        ryn::test::AllocationFailure noMemory;
        handle = OsaDeviceOpen("RYNTEST");
    }
    EXPECT_EQ(handle, INVALID_HANDLE_VALUE);
    EXPECT_FALSE(driver.isOpen());
    handle = OsaDeviceOpen("RYNTEST");  // the name was not left claimed
    ASSERT_NE(handle, INVALID_HANDLE_VALUE);
    EXPECT_NE(OsaDeviceClose(handle), 0);
}

TEST(OsaDevice, NamesUpToFiftyOneCharacters) {
    const std::string longest(51, 'N');
    const std::string tooLong(52, 'N');
    FakeDriver fits(longest.c_str());
    FakeDriver refused(tooLong.c_str());

    const OsaHandle handle = OsaDeviceOpen(longest.c_str());
    ASSERT_NE(handle, INVALID_HANDLE_VALUE);
    EXPECT_NE(OsaDeviceClose(handle), 0);
    EXPECT_EQ(OsaDeviceOpen(tooLong.c_str()), INVALID_HANDLE_VALUE);
    EXPECT_FALSE(refused.isOpen());
    EXPECT_EQ(OsaDeviceOpen(""), INVALID_HANDLE_VALUE);
    EXPECT_EQ(OsaDeviceOpen(nullptr), INVALID_HANDLE_VALUE);
}

TEST(OsaDevice, ExclusiveOpenAndCloseOfUnknownHandles) {
    FakeDriver driver("RYNTEST");
    const OsaHandle first = OsaDeviceOpen("RynTest");  // names are not case-sensitive
    ASSERT_NE(first, INVALID_HANDLE_VALUE);
    EXPECT_GE(first, 3u);
    EXPECT_EQ(OsaDeviceOpen("RYNTEST"), INVALID_HANDLE_VALUE);
    EXPECT_NE(OsaDeviceClose(first), 0);
    EXPECT_EQ(OsaDeviceClose(first), 0);  // already closed
    EXPECT_EQ(OsaDeviceClose(INVALID_HANDLE_VALUE), 0);
    EXPECT_EQ(OsaDeviceClose(0), 0);  // never a handle of this layer, never closed

    const OsaHandle again = OsaDeviceOpen("RYNTEST");
    ASSERT_NE(again, INVALID_HANDLE_VALUE);
    EXPECT_NE(OsaDeviceClose(again), 0);
}

TEST(OsaDevice, IoControlReportsReturnedBytes) {
    FakeDriver driver("RYNTEST");
    const OsaHandle handle = OsaDeviceOpen("RYNTEST");
    ASSERT_NE(handle, INVALID_HANDLE_VALUE);

    uint8_t in[20] = {1, 2, 3};
    uint8_t out[12] = {};
    uint32_t returned = 99;
    driver.script(ryn::test::ScriptedReply{}.word(8, 0xABCD));
    EXPECT_NE(OsaDeviceIoControl(handle, 0x222044, in, sizeof in, out, sizeof out, &returned), 0);
    EXPECT_EQ(returned, 12u);
    EXPECT_EQ(out[8], 0xCD);
    EXPECT_EQ(driver.lastRequest().code, 0x222044u);
    EXPECT_EQ(driver.lastRequest().input[2], 3);

    ryn::test::ScriptedReply tooMuch;
    tooMuch.returned = 1000;  // never more than the reply holds
    driver.script(tooMuch);
    EXPECT_NE(OsaDeviceIoControl(handle, 0x222044, in, sizeof in, out, sizeof out, &returned), 0);
    EXPECT_EQ(returned, 12u);

    driver.script(ryn::test::failedCall(0));
    EXPECT_EQ(OsaDeviceIoControl(handle, 0x222044, in, sizeof in, out, sizeof out, &returned), 0);
    EXPECT_EQ(returned, 0u);

    EXPECT_NE(OsaDeviceClose(handle), 0);
    EXPECT_EQ(OsaDeviceIoControl(handle, 0x222044, in, sizeof in, out, sizeof out, &returned), 0);
}

TEST(OsaDevice, DriverModuleFromTheLibraryFolder) {
    const OsaHandle handle = OsaDeviceOpen("RynModTest");
    ASSERT_NE(handle, INVALID_HANDLE_VALUE) << "bin/ryn-drivers/rynmodtest.so not found";
    uint8_t in[20] = {};
    uint8_t out[16] = {};
    uint32_t returned = 0;
    EXPECT_NE(OsaDeviceIoControl(handle, 0x2221B8, in, sizeof in, out, sizeof out, &returned), 0);
    EXPECT_EQ(returned, 16u);
    uint32_t code = 0, nameLength = 0;
    std::memcpy(&code, out + 8, 4);
    std::memcpy(&nameLength, out + 12, 4);
    EXPECT_EQ(code, 0x2221B8u);
    EXPECT_EQ(nameLength, 10u);                                    // the module saw the name as it was given
    EXPECT_EQ(OsaDeviceOpen("RYNMODTEST"), INVALID_HANDLE_VALUE);  // exclusive across modules too
    EXPECT_NE(OsaDeviceClose(handle), 0);

    // Module names cannot leave the ryn-drivers folder.
    EXPECT_EQ(OsaDeviceOpen("../ryn-drivers/rynmodtest"), INVALID_HANDLE_VALUE);
    EXPECT_EQ(OsaDeviceOpen("NoSuchModule"), INVALID_HANDLE_VALUE);
}

}  // namespace
