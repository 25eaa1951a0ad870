#include <gtest/gtest.h>

#include <cstring>
#include <tuple>
#include <vector>

#include "RynHwDll.h"
#include "support/ConnectedTest.h"

namespace {

using ryn::test::ScriptedReply;

constexpr DeviceHandle kLibrary = RYN_LIBRARY_PSEUDO_HANDLE, kDevice = 0x10000001;

TEST(LibraryAttributes, ValuesTypesAndBufferLengthRules) {
    char text[16];
    uint32_t returned = 0, value = 0xFFFF;
    EXPECT_EQ((std::tuple{RynDrvGetAttributeValueSz_16(kLibrary, 9, text, 9), std::string(text)}),
              std::tuple(0u, "2.12.1.0"));
    EXPECT_EQ((std::tuple{RynDrvGetAttributeValue_20(kLibrary, 11, text, 13, &returned), std::string(text), returned}),
              std::tuple(0u, "RynHwDll.dll", 13u));
    uint8_t version[8] = {};
    EXPECT_EQ(RynDrvGetAttributeValue_20(kLibrary, 10, version, 8, &returned), 0u);
    EXPECT_EQ(std::memcmp(version, "\x02\x00\x0C\x00\x01\x00\x00\x00", 8), 0);
    EXPECT_EQ((std::pair{RynDrvGetAttributeValueUint32_12(kLibrary, 12, &value), value}), std::pair(0u, 0u));

    // Below 4 bytes is refused first, even for an unknown identifier; a
    // refused read reports 0 bytes and leaves the buffer alone. Failures
    // are compared as the failure bit and the error number.
    std::memset(text, 'X', sizeof text);
    const std::tuple<int32_t, uint32_t, uint32_t> refused[] = {{9, 8, 9}, {12, 3, 9}, {13, 2, 9}, {13, 4, 16}};
    for (const auto &[id, length, error] : refused) {
        returned = 77;
        const ResultCode code = RynDrvGetAttributeValue_20(kLibrary, id, text, length, &returned);
        EXPECT_EQ(std::tuple(code & 0x800000FF, returned), std::tuple(0x80000000 | error, 0u)) << id << "/" << length;
    }
    EXPECT_EQ(text[0], 'X');

    // Type, size and flags; an unknown identifier still reports binary, size 0.
    const std::tuple<int32_t, uint32_t, std::vector<uint32_t>> types[] = {
        {11, 0, {0, 13, 1}}, {12, 0, {2, 4, 1}}, {13, 0x80000010, {3, 0, 1}}};
    for (const auto &[id, result, expected] : types) {
        std::vector<uint32_t> got(3, 9);
        const ResultCode code = RynDrvGetAttributeType_20(kLibrary, id, &got[0], &got[1], &got[2]);
        EXPECT_EQ(std::tuple(code & 0x800000FF, got), std::tuple(result, expected)) << id;
    }
}

using DriverAttributes = ryn::test::ConnectedTest;

TEST_F(DriverAttributes, RequestLayouts) {
    ryn::test::SentRequests sent(driver);
    uint32_t type = 0, size = 0, flags = 0;
    sent(RynDrvGetAttributeType_20(kDevice, 7, &type, &size, &flags), 0x817, 24, 24, {kDevice, 7});
    // The value reply holds the value after a 16-byte head and the set request
    // holds it at 28, each plus one spare byte; a text takes its terminator.
    uint8_t buffer[100] = {};
    sent(RynDrvGetAttributeValue_20(kDevice, 7, buffer, 100, nullptr), 0x818, 28, 117, {kDevice, 7, 100});
    sent(RynDrvSetAttributeValueSz_12(0, 13, ""), 0x819, 30, 12, {0, 13, 1});
    sent(RynDrvSetAttributeValueUint32_12(0x20000001, 21, 0xCAFEBABE), 0x819, 33, 12, {0x20000001, 21, 4, 0xCAFEBABE});

    // Lengths whose block would not fit 32 bits are refused before any request.
    driver.clear();
    EXPECT_EQ(RynResultErrorCode(RynDrvGetAttributeValue_20(kDevice, 7, buffer, 0xFFFFFFEFu, nullptr)), 9u);
    EXPECT_EQ(RynResultErrorCode(RynDrvSetAttributeValue_16(kDevice, 7, buffer, 0xFFFFFFE3u)), 9u);
    EXPECT_EQ(driver.requestCount(), 0u);
}

TEST_F(DriverAttributes, RepliesCopiedOutWhateverTheResult) {
    driver.script(ScriptedReply{}.word(8, 2).word(12, 4).word(16, 1).word(20, 0xB5000101));
    uint32_t type = 0, size = 0, flags = 0;
    EXPECT_EQ(RynDrvGetAttributeType_20(kDevice, 7, &type, &size, &flags), 0xB5000101u);
    EXPECT_EQ(std::tuple(type, size, flags), std::tuple(2u, 4u, 1u));

    // The caller's buffer goes out in the reply, so what the driver does not
    // write comes back unchanged.
    uint8_t buffer[100];
    std::memset(buffer, 0x33, sizeof buffer);
    driver.script(ScriptedReply{}.word(8, 0).word(12, 2).put(16, {0xAB, 0xCD}));
    uint32_t returned = 0;
    EXPECT_EQ(RynDrvGetAttributeValue_20(kDevice, 7, buffer, 100, &returned), 0u);
    EXPECT_EQ(std::tuple(returned, buffer[1], buffer[2], buffer[99]), std::tuple(2u, 0xCD, 0x33, 0x33));

    // The transport stores its code at offset 8; the buffer keeps its content.
    driver.script(ryn::test::failedCall(0));
    EXPECT_EQ(RynDrvGetAttributeValue_20(kDevice, 7, buffer, 100, &returned), 0xC300AD0Du);
    EXPECT_EQ(std::tuple(returned, buffer[0], buffer[50]), std::tuple(0u, 0xAB, 0x33));
}

}  // namespace
