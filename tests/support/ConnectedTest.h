// A test connected to a fresh fake driver, with the driver version level
// restored to 0 and the connection released afterwards.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <tuple>
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
        SCOPED_TRACE(::testing::Message() << "function 0x" << std::hex << row.function);
        driver.clear();
        const ResultCode result = row.call();
        const RecordedRequest request = driver.lastRequest();
        EXPECT_EQ(
            std::tuple(result, driver.requestCount(), request.function(), request.input.size(), request.outputLength),
            std::tuple(0u, size_t{1}, row.function, size_t{row.inputLength}, row.outputLength));
        expectFields(request, row.fields);
    }
}

// Checks, call after call, that each call succeeded and sent one more
// request: its function, request and reply lengths, and the 32-bit fields
// from `start` on.
class SentRequests {
public:
    explicit SentRequests(FakeDriver &driver) : driver_(driver), count_(driver.requestCount()) {}
    void operator()(ResultCode result, uint32_t function, size_t inputLength, uint32_t outputLength,
                    const std::vector<uint32_t> &fields, size_t start = 16) {
        const RecordedRequest request = driver_.lastRequest();
        std::vector<uint32_t> got;
        for (size_t i = 0; i < fields.size(); ++i) got.push_back(request.word(start + 4 * i));
        EXPECT_EQ(std::tuple(result, driver_.requestCount(), request.function(), request.input.size(),
                             request.outputLength, got),
                  std::tuple(0u, ++count_, function, inputLength, outputLength, fields));
    }

private:
    FakeDriver &driver_;
    size_t count_;
};

}  // namespace ryn::test
