#include <gtest/gtest.h>

#include "core/Compat.h"

namespace {

using namespace ryn;

// Sets a driver version level for one test and restores 0 afterwards.
class Level : public ::testing::Test {
protected:
    void TearDown() override { setDriverVersionLevel(0); }
};

TEST_F(Level, ResultCodeReducedOnlyFrom10120To10139) {
    const ResultCode code = 0xB5008D0B;
    setDriverVersionLevel(10130);
    EXPECT_EQ(compatResultCode(code), 0x8000000Bu);
    EXPECT_EQ(compatResultCode(0x3500011Eu), 0x1Eu);  // error 30 loses bit 31 anyway
    EXPECT_EQ(compatResultCode(0x35000101u), 0x01u);  // a status stays positive
    for (uint32_t level : {0u, 10119u, 10140u, 10100u, 99999u}) {
        setDriverVersionLevel(level);
        EXPECT_EQ(compatResultCode(code), code) << level;
    }
    for (uint32_t level : {10120u, 10139u}) {
        setDriverVersionLevel(level);
        EXPECT_EQ(compatResultCode(code), 0x8000000Bu) << level;
    }
}

TEST_F(Level, AttributeIdentifiersAtTheBoundaries) {
    struct Case {
        uint32_t level;
        int32_t in, out;
    } cases[] = {
        {0, 6, 6},     {10119, 6, INT32_MIN}, {10119, 0, INT32_MIN}, {10120, 6, 9},         {10120, 5, 5},
        {10130, 6, 9}, {10138, 6, 9},         {10139, 6, 7},         {10145, 6, 7},         {10146, 100, 101},
        {10147, 6, 6}, {10139, 5, 5},         {10130, -3, -3},       {10100, 1, INT32_MIN},
    };
    for (const Case &c : cases) {
        setDriverVersionLevel(c.level);
        EXPECT_EQ(compatAttributeId(c.in), c.out) << c.level << " " << c.in;
    }
}

TEST_F(Level, DeviceTypesBothDirections) {
    setDriverVersionLevel(10130);
    struct Pair {
        int32_t in, out;
    };
    for (const Pair &p : std::initializer_list<Pair>{{0, 0},
                                                     {-15, -15},
                                                     {-16, -16},
                                                     {-17, -16},
                                                     {-30, -29},
                                                     {-31, -31},
                                                     {-32, -30},
                                                     {-42, -40},
                                                     {-43, -43},
                                                     {5, 5}}) {
        EXPECT_EQ(compatDeviceTypeToDriver(p.in), p.out) << p.in;
    }
    for (const Pair &p : std::initializer_list<Pair>{
             {0, 0}, {-15, -15}, {-16, -17}, {-29, -30}, {-30, -32}, {-40, -42}, {-41, -41}, {7, 7}}) {
        EXPECT_EQ(compatDeviceTypeFromDriver(p.in), p.out) << p.in;
    }
    for (uint32_t level : {0u, 10137u, 10200u}) {
        setDriverVersionLevel(level);
        EXPECT_EQ(compatDeviceTypeToDriver(-17), -17);
        EXPECT_EQ(compatDeviceTypeFromDriver(-16), -16);
    }
    for (uint32_t level : {10120u, 10136u}) {
        setDriverVersionLevel(level);
        EXPECT_EQ(compatDeviceTypeToDriver(-17), -16);
        EXPECT_EQ(compatDeviceTypeFromDriver(-16), -17);
    }
    setDriverVersionLevel(10119);
    EXPECT_EQ(compatDeviceTypeToDriver(0), INT32_MIN);
    EXPECT_EQ(compatDeviceTypeFromDriver(0), INT32_MIN);
}

TEST_F(Level, ModuleIdentifiersByLevelRow) {
    struct Case {
        uint32_t level;
        uint32_t in, out;
    } cases[] = {
        {0, 2, 2},
        {10142, 2, 2},
        {10142, 500, 500},
        {10141, 2, 0xFFFFFFFF},
        {10141, 5, 6},
        {10139, 8, 9},
        {10138, 2, 1},
        {10138, 1, 0xFFFFFFFF},
        {10137, 10, 9},
        {10136, 2, 3},
        {10128, 4, 6},
        {10127, 3, 6},
        {10126, 5, 7},
        {10125, 3, 0xFFFFFFFF},
        {10125, 4, 6},
        {10124, 4, 6},
        {10120, 6, 0xFFFFFFFF},
        {10119, 0, 0xFFFFFFFF},
        {10138, 11, 0xFFFFFFFF},
        {10138, 0xFFFFFFFF, 0xFFFFFFFF},
    };
    for (const Case &c : cases) {
        setDriverVersionLevel(c.level);
        EXPECT_EQ(compatSpmId(c.in), c.out) << c.level << " " << c.in;
    }
}

TEST(VersionParse, ExamplesAndOddForms) {
    EXPECT_EQ(parseDriverVersion("1.01.37.0"), 10137u);
    EXPECT_EQ(parseDriverVersion("1.01.00-P37"), 10137u);
    EXPECT_EQ(parseDriverVersion("1.01.37"), 10100u);
    EXPECT_EQ(parseDriverVersion("1.01-P37"), 10037u);
    EXPECT_EQ(parseDriverVersion("1.01.20-p5"), 10105u);
    EXPECT_EQ(parseDriverVersion("2.0.0.0"), 20000u);
    EXPECT_EQ(parseDriverVersion(""), 0u);
    EXPECT_EQ(parseDriverVersion("1.01.30-7"), 10107u);    // no P: the text after '-'
    EXPECT_EQ(parseDriverVersion("1.01.37.0.9"), 10137u);  // stops after the fourth component
    EXPECT_EQ(parseDriverVersion("x.01.37.0"), 137u);      // a component without digits counts 0
}

}  // namespace
