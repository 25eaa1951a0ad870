#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "RynHwDll.h"
#include "support/ConnectedTest.h"

namespace {

using ryn::test::ScriptedReply;

constexpr DeviceHandle kLibrary = RYN_LIBRARY_PSEUDO_HANDLE;

TEST(LibraryAttributes, ValuesAndBufferLengthRules) {
    char text[16];
    EXPECT_EQ(RynDrvGetAttributeValueSz_16(kLibrary, 9, text, 9), 0u);
    EXPECT_STREQ(text, "2.12.1.0");
    uint32_t returned = 77;
    EXPECT_EQ(RynDrvGetAttributeValue_20(kLibrary, 9, text, 16, &returned), 0u);
    EXPECT_EQ(returned, 9u);
    std::memset(text, 'X', sizeof text);
    EXPECT_EQ(RynResultErrorCode(RynDrvGetAttributeValue_20(kLibrary, 9, text, 8, &returned)), 9u);
    EXPECT_EQ(returned, 0u);
    EXPECT_EQ(text[0], 'X');

    uint8_t version[8] = {};
    EXPECT_EQ(RynDrvGetAttributeValue_20(kLibrary, 10, version, 8, &returned), 0u);
    EXPECT_EQ(std::memcmp(version, "\x02\x00\x0C\x00\x01\x00\x00\x00", 8), 0);
    EXPECT_EQ(RynDrvGetAttributeValue_20(kLibrary, 11, text, 13, &returned), 0u);
    EXPECT_STREQ(text, "RynHwDll.dll");
    EXPECT_EQ(returned, 13u);

    uint32_t value = 0xFFFF;
    EXPECT_EQ(RynResultErrorCode(RynDrvGetAttributeValue_20(kLibrary, 12, &value, 3, &returned)), 9u);
    EXPECT_EQ(RynDrvGetAttributeValueUint32_12(kLibrary, 12, &value), 0u);
    EXPECT_EQ(value, 0u);
    // Below 4 bytes comes first, even for an unknown identifier.
    EXPECT_EQ(RynResultErrorCode(RynDrvGetAttributeValue_20(kLibrary, 13, &value, 2, &returned)), 9u);
    EXPECT_EQ(RynResultErrorCode(RynDrvGetAttributeValue_20(kLibrary, 13, &value, 4, &returned)), 16u);
}

TEST(LibraryAttributes, TypeQueries) {
    uint32_t type = 9, size = 9, flags = 9;
    EXPECT_EQ(RynDrvGetAttributeType_20(kLibrary, 11, &type, &size, &flags), 0u);
    EXPECT_EQ(type, 0u);
    EXPECT_EQ(size, 13u);
    EXPECT_EQ(flags, 1u);
    EXPECT_EQ(RynDrvGetAttributeType_20(kLibrary, 12, &type, &size, &flags), 0u);
    EXPECT_EQ(type, 2u);
    EXPECT_EQ(size, 4u);
    const ResultCode unknown = RynDrvGetAttributeType_20(kLibrary, 13, &type, &size, &flags);
    EXPECT_EQ(RynResultErrorCode(unknown), 16u);
    EXPECT_EQ(RynFailure(unknown), 1);
    EXPECT_EQ(type, 3u);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(flags, 1u);
}

using DriverAttributes = ryn::test::ConnectedTest;

TEST_F(DriverAttributes, ReadBlocksAndCallerBufferRoundTrip) {
    uint8_t buffer[100];
    std::memset(buffer, 0x33, sizeof buffer);
    ScriptedReply reply;
    reply.word(8, 0).word(12, 2);
    reply.bytes.emplace_back(16, std::vector<uint8_t>{0xAB, 0xCD});
    driver.script(reply);
    uint32_t returned = 0;
    EXPECT_EQ(RynDrvGetAttributeValue_20(0x10000001, 7, buffer, 100, &returned), 0u);
    EXPECT_EQ(returned, 2u);
    EXPECT_EQ(buffer[0], 0xAB);
    EXPECT_EQ(buffer[2], 0x33);  // what the driver did not write comes back unchanged
    EXPECT_EQ(buffer[99], 0x33);
    const auto sent = driver.lastRequest();
    EXPECT_EQ(sent.code, 0x222060u);
    EXPECT_EQ(sent.input.size(), 28u);
    EXPECT_EQ(sent.outputLength, 117u);
    EXPECT_EQ(sent.word(20), 7u);
    EXPECT_EQ(sent.word(24), 100u);

    // The transport stores its code at offset 8; the buffer keeps its content.
    driver.script(ryn::test::failedCall(0));
    returned = 5;
    EXPECT_EQ(RynDrvGetAttributeValue_20(0x10000001, 7, buffer, 100, &returned), 0xC300AD0Du);
    EXPECT_EQ(buffer[0], 0xAB);
    EXPECT_EQ(buffer[50], 0x33);
    EXPECT_EQ(RynDrvGetAttributeValue_20(0x10000001, 7, buffer, 100, nullptr), 0u);
}

TEST_F(DriverAttributes, SetBlocksAndOverflowingLengths) {
    EXPECT_EQ(RynDrvSetAttributeValueSz_12(0, 13, ""), 0u);
    auto sent = driver.lastRequest();
    EXPECT_EQ(sent.code, 0x222064u);
    EXPECT_EQ(sent.input.size(), 30u);
    EXPECT_EQ(sent.word(24), 1u);
    EXPECT_EQ(sent.outputLength, 12u);

    EXPECT_EQ(RynDrvSetAttributeValueUint32_12(0x20000001, 21, 0xCAFEBABE), 0u);
    sent = driver.lastRequest();
    EXPECT_EQ(sent.input.size(), 33u);
    EXPECT_EQ(sent.word(16), 0x20000001u);
    EXPECT_EQ(sent.word(24), 4u);
    EXPECT_EQ(sent.word(28), 0xCAFEBABEu);

    driver.clear();
    uint8_t byte = 0;
    EXPECT_EQ(RynResultErrorCode(RynDrvGetAttributeValue_20(1, 7, &byte, 0xFFFFFFF0u, nullptr)), 9u);
    EXPECT_EQ(RynResultErrorCode(RynDrvSetAttributeValue_16(1, 7, &byte, 0xFFFFFFE5u)), 9u);
    EXPECT_EQ(driver.requestCount(), 0u);
}

TEST_F(DriverAttributes, UndecoratedFormsTranslateIdentifiers) {
    ryn::setDriverVersionLevel(10130);
    uint32_t value = 0;
    EXPECT_EQ(RynDrvGetAttributeValueUint32(0x10000001, 6, &value), 0u);
    EXPECT_EQ(driver.lastRequest().word(20), 9u);
    EXPECT_EQ(RynDrvSetAttributeValueBool(0x10000001, 5, 1), 0u);
    EXPECT_EQ(driver.lastRequest().word(20), 5u);
    ryn::setDriverVersionLevel(10145);
    EXPECT_EQ(RynDrvGetAttributeValueBool(0x10000001, 6, &value), 0u);
    EXPECT_EQ(driver.lastRequest().word(20), 7u);
    ryn::setDriverVersionLevel(10100);
    uint32_t type = 0, size = 0, flags = 0;
    EXPECT_EQ(RynDrvGetAttributeType(0x10000001, 1, &type, &size, &flags), 0u);
    EXPECT_EQ(driver.lastRequest().word(20), 0x80000000u);
    // Translated whatever the handle: the library pseudo-handle sees 10 as 13.
    ryn::setDriverVersionLevel(10130);
    char text[16];
    EXPECT_EQ(RynDrvGetAttributeValueSz(kLibrary, 10, text, sizeof text), 0x80000010u);
}

}  // namespace
