#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "RynHwDll.h"
#include "core/Compat.h"
#include "support/FakeDriver.h"

namespace {

using ryn::test::FakeDriver;
using ryn::test::ScriptedReply;

// A reply to the driver-version attribute read: result 0, the text at 16.
ScriptedReply versionReply(const std::string &text) {
    return ScriptedReply{}.word(8, 0).word(12, uint32_t(text.size()) + 1).put(16, {text.begin(), text.end()});
}

class LoadStep : public ::testing::Test {
protected:
    void TearDown() override { ryn::setDriverVersionLevel(0); }
};

TEST_F(LoadStep, ReadsTheDriverVersionAndReleases) {
    FakeDriver driver;
    driver.script(ScriptedReply{});  // the version announcement
    driver.script(versionReply("1.01.00-P37"));
    ryn::runLoadStep();
    EXPECT_EQ(std::pair(ryn::driverVersionLevel(), driver.isOpen()), std::pair(10137u, false));

    // The announcement, then a read of attribute 13 (the driver version) of the driver pseudo-handle 0.
    const auto requests = driver.requests();
    ASSERT_EQ(requests.size(), 2u);
    EXPECT_EQ(std::tuple(requests[0].function(), requests[1].function(), requests[1].word(16), requests[1].word(20),
                         requests[1].word(24), requests[1].outputLength),
              std::tuple(0x86Eu, 0x818u, 0u, 13u, 80u, 97u));
}

TEST_F(LoadStep, NoDriverOrNoAnswerGivesLevelZero) {
    ryn::setDriverVersionLevel(10130);
    ryn::runLoadStep();
    EXPECT_EQ(ryn::driverVersionLevel(), 0u);

    FakeDriver driver;
    driver.script(ScriptedReply{});
    driver.script(ryn::test::failedCall(0));
    ryn::runLoadStep();
    EXPECT_EQ(std::pair(ryn::driverVersionLevel(), driver.isOpen()), std::pair(0u, false));
}

}  // namespace
