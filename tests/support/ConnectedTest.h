// A test connected to a fresh fake driver, with the driver version level
// restored to 0 and the connection released afterwards.
#pragma once

#include <gtest/gtest.h>

#include "core/Compat.h"
#include "support/FakeDriver.h"

namespace ryn::test {

class ConnectedTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(RynDrvConnectLib_0(), 0u);
        RynDrvGetHandle_4(&connection);
        driver.clear();
    }
    void TearDown() override { setDriverVersionLevel(0); }

    FakeDriver driver;
    ConnectionGuard guard;
    OsaHandle connection = 0;
};

}  // namespace ryn::test
