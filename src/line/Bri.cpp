// BRI line interfaces: declared and exported, not carried out. Each call
// answers "not provided" at once, reads none of its arguments and sends
// nothing, so it reports its absence even without a driver connection.
#include "core/ResultCode.h"

namespace ryn {
namespace {
constexpr uint8_t kSourceId = source::kBri;
}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynBriSetLiMode, 8)(DeviceHandle, uint32_t) { return RYN_FAILURE(kErrNotProvided); }

ResultCode RYN_DECORATED(RynBriConfigureMonitor, 8)(DeviceHandle, uint32_t) { return RYN_FAILURE(kErrNotProvided); }

ResultCode RYN_DECORATED(RynBriGetLineStatus, 8)(DeviceHandle, uint32_t *) { return RYN_FAILURE(kErrNotProvided); }

ResultCode RYN_DECORATED(RynBriActivateLink, 8)(DeviceHandle, uint32_t) { return RYN_FAILURE(kErrNotProvided); }

ResultCode RYN_DECORATED(RynBriDeactivateLink, 8)(DeviceHandle, uint32_t) { return RYN_FAILURE(kErrNotProvided); }

ResultCode RYN_DECORATED(RynBriTermLi, 8)(DeviceHandle, uint32_t) { return RYN_FAILURE(kErrNotProvided); }

}  // extern "C"
