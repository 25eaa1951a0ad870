#include <gtest/gtest.h>

#include "RynHwDll.h"
#include "core/Compat.h"
#include "support/FakeDriver.h"

namespace {

using ryn::test::ConnectionGuard;
using ryn::test::FakeDriver;

class Undecorated : public ::testing::Test {
protected:
    void TearDown() override { ryn::setDriverVersionLevel(0); }
};

TEST_F(Undecorated, ResultTranslationFollowsTheLevel) {
    FakeDriver driver;
    for (const auto &[level, expected] : {std::pair{0u, 0xB5008D0Bu}, std::pair{10130u, 0x8000000Bu},
                                          std::pair{10140u, 0xB5008D0Bu}, std::pair{10100u, 0xB5008D0Bu}}) {
        ConnectionGuard guard;
        ryn::setDriverVersionLevel(level);
        driver.script(ryn::test::resultReply(0xB5008D0B));
        EXPECT_EQ(RynDrvConnectLib(), expected) << level;
        RynDrvReleaseLib_0();
        driver.script(ryn::test::resultReply(0xB5008D0B));
        EXPECT_EQ(RynDrvConnectLib_0(), 0xB5008D0Bu) << "decorated entry points never translate";
    }
}

TEST_F(Undecorated, OsaAndResultCodeFormsPassThrough) {
    ryn::setDriverVersionLevel(10130);
    uint32_t error = 0, severity = 0, source = 0, line = 0;
    RynResultCode(0xB5008D3Bu, &error, &severity, &source, &line);
    EXPECT_EQ(error, 0x3Bu);
    EXPECT_EQ(line, 0x8Du);
    EXPECT_EQ(OsaDeviceOpen("NO-SUCH-DEVICE"), INVALID_HANDLE_VALUE);
    // Library codes are reduced too when they come out of an undecorated entry point.
    EXPECT_EQ(RynDrvReleaseLib(), 0x8000000Bu);
}

}  // namespace
