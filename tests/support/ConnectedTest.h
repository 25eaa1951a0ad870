// A test connected to a fresh fake driver, with the driver version level
// restored to 0 and the connection released afterwards.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <vector>

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

// 32-bit request fields: (offset, value).
using Fields = std::vector<std::pair<size_t, uint32_t>>;

inline void expectFields(const RecordedRequest &request, const Fields &fields) {
    for (const auto &[offset, value] : fields) EXPECT_EQ(request.word(offset), value) << "offset " << offset;
}

// One row of a layout table: a call, the function number it must send, the
// request and reply lengths, and request fields.
struct LayoutRow {
    std::function<ResultCode()> call;
    uint32_t function, inputLength, outputLength;
    Fields fields;
};

// Runs each row's call, which must succeed and send one request, and checks
// that request against the row.
inline void expectLayouts(FakeDriver &driver, const std::vector<LayoutRow> &rows) {
    for (const LayoutRow &row : rows) {
        driver.clear();
        EXPECT_EQ(row.call(), 0u) << "function 0x" << std::hex << row.function;
        ASSERT_EQ(driver.requestCount(), 1u) << "function 0x" << std::hex << row.function;
        const RecordedRequest request = driver.lastRequest();
        SCOPED_TRACE(::testing::Message() << "function 0x" << std::hex << row.function);
        EXPECT_EQ(request.function(), row.function);
        EXPECT_EQ(request.input.size(), row.inputLength);
        EXPECT_EQ(request.outputLength, row.outputLength);
        expectFields(request, row.fields);
    }
}

}  // namespace ryn::test
