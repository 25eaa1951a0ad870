#include <gtest/gtest.h>

#include <memory>
#include <tuple>

#include "RynHwDll.h"
#include "core/Compat.h"
#include "support/ConnectedTest.h"

namespace {

using ryn::test::ConnectionGuard;
using ryn::test::FakeDriver;
using ryn::test::ScriptedReply;

class Undecorated : public ::testing::Test {
protected:
    void TearDown() override { ryn::setDriverVersionLevel(0); }
};

// The level boundaries of each translation are tested on the translation
// itself; here each kind of entry point shows whether it applies one at all.
TEST_F(Undecorated, ResultTranslationOnlyThroughUndecoratedResultRows) {
    FakeDriver driver;
    for (const auto &[level, expected] : {std::pair{0u, 0xB5008D0Bu}, std::pair{10130u, 0x8000000Bu}}) {
        ConnectionGuard guard;
        ryn::setDriverVersionLevel(level);
        driver.script(ryn::test::resultReply(0xB5008D0B));
        EXPECT_EQ(RynDrvConnectLib(), expected) << level;
        RynDrvReleaseLib_0();
        driver.script(ryn::test::resultReply(0xB5008D0B));
        EXPECT_EQ(RynDrvConnectLib_0(), 0xB5008D0Bu) << "decorated entry points never translate";
    }
    // Still at level 10130: library codes are reduced too, and the Osa rows pass through.
    EXPECT_EQ(RynDrvReleaseLib(), 0x8000000Bu);
    EXPECT_EQ(OsaDeviceOpen("NO-SUCH-DEVICE"), INVALID_HANDLE_VALUE);
}

using UndecoratedRows = ryn::test::ConnectedTest;

// At level 10130 attribute identifiers above 5 move up by 3 and device types
// from -17 down are renumbered; every row that translates must do so.
TEST_F(UndecoratedRows, TranslateArgumentsAndOutValues) {
    ryn::setDriverVersionLevel(10130);
    constexpr DeviceHandle kDevice = 0x10000001;
    const auto u32 = [](int32_t value) { return static_cast<uint32_t>(value); };
    uint32_t value = 0, size = 0, flags = 0;
    int32_t iterator = 0, type = 0;
    DeviceHandle handle = 0;
    char text[8] = "";
    RynDrvGetAttributeType(kDevice, 6, &value, &size, &flags);
    RynDrvGetAttributeValue(kDevice, 6, &value, 4, nullptr);
    RynDrvGetAttributeValueBool(kDevice, 6, &value);
    RynDrvGetAttributeValueUint32(kDevice, 6, &value);
    RynDrvGetAttributeValueSz(kDevice, 6, text, sizeof text);
    RynDrvSetAttributeValue(kDevice, 6, &value, 4);
    RynDrvSetAttributeValueBool(kDevice, 6, 1);
    RynDrvSetAttributeValueUint32(kDevice, 6, 1);
    RynDrvSetAttributeValueSz(kDevice, 6, "on");
    RynDrvCreateLogicalDevice(kDevice, -17, 0, 0, &handle);
    RynDrvEnumDevice(kDevice, -18, &iterator, &value);
    RynDrvGetDeviceHandle(kDevice, -42, 0, nullptr);
    const auto sent = driver.requests();
    ASSERT_EQ(sent.size(), 12u);
    for (size_t i = 0; i < 9; ++i) EXPECT_EQ(sent[i].word(20), 9u) << i;
    EXPECT_EQ(std::tuple(sent[9].word(20), sent[10].word(20), sent[11].word(16)),
              std::tuple(u32(-16), u32(-17), u32(-40)));

    // Device types coming back, and word 2 of the first event record, are renumbered the other way.
    driver.script(ScriptedReply{}.word(8, u32(-30)));
    EXPECT_EQ((std::pair{RynDrvEnumDeviceType(kDevice, &iterator, &type), type}), std::pair(0u, -32));
    EventData records[2] = {};
    driver.script(ScriptedReply{}.word(16, u32(-16)));
    EXPECT_EQ((std::pair{RynDrvGetEventData(kDevice, records), records[0].word[2]}), std::pair(0u, u32(-17)));
    records[0].word[2] = u32(-30);  // as the driver would have written it
    EXPECT_EQ((std::pair{RynDrvGetEventDataEx(kDevice, records, 2, &value), records[0].word[2]}),
              std::pair(0u, u32(-32)));
    // An array said to hold no record is not touched.
    auto none = std::make_unique<uint8_t[]>(1);
    RynDrvGetEventDataEx(kDevice, reinterpret_cast<EventData *>(none.get()), 0, &value);

    // Translated whatever the handle: the library pseudo-handle sees 10 as
    // 13, which it does not know, and the failure comes out reduced.
    EXPECT_EQ(RynDrvGetAttributeValueSz(RYN_LIBRARY_PSEUDO_HANDLE, 10, text, sizeof text), 0x80000010u);
}

}  // namespace
