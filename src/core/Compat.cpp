// The translations of identifiers and result codes for older drivers.
#include "core/Compat.h"

#include "core/ResultCode.h"

namespace ryn {
namespace {

constexpr int32_t kNoCounterpart = static_cast<int32_t>(0x80000000u);

bool within(uint32_t level, uint32_t low, uint32_t high) { return level >= low && level <= high; }

}  // namespace

ResultCode compatResultCode(ResultCode code) {
    return within(driverVersionLevel(), 10120, 10139) ? reduceToErrorNumber(code) : code;
}

int32_t compatAttributeId(int32_t id) {
    const uint32_t level = driverVersionLevel();
    if (level == 0 || level >= 10147) return id;
    // Shifted as 32-bit values, so that the highest identifiers wrap around
    // as they do in the driver's own arithmetic.
    const auto shifted = [id](uint32_t by) { return static_cast<int32_t>(static_cast<uint32_t>(id) + by); };
    if (level >= 10139) return id > 5 ? shifted(1) : id;
    if (level >= 10120) return id > 5 ? shifted(3) : id;
    return kNoCounterpart;
}

int32_t compatDeviceTypeToDriver(int32_t type) {
    const uint32_t level = driverVersionLevel();
    if (level == 0 || level >= 10137) return type;
    if (level < 10120) return kNoCounterpart;
    if (type >= -30 && type <= -17) return type + 1;
    if (type >= -42 && type <= -32) return type + 2;
    return type;  // 0 to -16, -31, and everything outside the renumbered ranges
}

int32_t compatDeviceTypeFromDriver(int32_t type) {
    const uint32_t level = driverVersionLevel();
    if (level == 0 || level >= 10137) return type;
    if (level < 10120) return kNoCounterpart;
    if (type >= -29 && type <= -16) return type - 1;
    if (type >= -40 && type <= -30) return type - 2;
    return type;
}

uint32_t compatSpmId(uint32_t id) {
    constexpr int8_t N = -1;  // no module of that driver corresponds
    struct Row {
        uint32_t lowestLevel;
        int8_t module[11];
    };
    // Rows from the newest level down; the first row whose lowest level the
    // driver reaches applies.
    static constexpr Row kRows[] = {
        {10139, {0, 1, N, 3, 4, 6, 7, 8, 9, N, N}}, {10137, {0, N, 1, N, 3, 4, 6, N, 7, 8, 9}},
        {10128, {0, 1, 3, 4, 6, N, 7, 8, 9, N, N}}, {10126, {0, 1, 4, 6, N, 7, 8, 9, N, N, N}},
        {10125, {0, 1, 4, N, 6, N, 7, 8, 9, N, N}}, {10120, {0, 1, 4, N, 6, N, N, N, N, N, N}},
    };
    const uint32_t level = driverVersionLevel();
    if (level == 0 || level >= 10142) return id;
    for (const Row &row : kRows) {
        if (level >= row.lowestLevel) {
            return id < 11 ? static_cast<uint32_t>(static_cast<int32_t>(row.module[id])) : 0xFFFFFFFFu;
        }
    }
    return 0xFFFFFFFFu;
}

}  // namespace ryn
