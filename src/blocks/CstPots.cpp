// POTS line control through a DSP block: the block's set-up with its DAA
// programming, single DAA register writes, hook control, pulse dialling and
// line sensing. Only the set-up looks at the handle's kind; the other calls
// leave the handle to the driver.
#include <span>

#include "CstPotsWire.h"
#include "core/ResultCode.h"
#include "core/Transport.h"
#include "device/HandleKinds.h"

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kTelephony;

// Every DAA write of the set-up passes these two settings to the block.
constexpr uint32_t kDaaParam1 = 2;
constexpr uint32_t kDaaParam2 = 500;
// The DAA settles this long between the two writes of modes 1 to 3.
constexpr uint32_t kDaaSettleMs = 300;

struct DaaWrite {
    uint8_t daaRegister;
    uint8_t value;
};

constexpr DaaWrite kLineSetup[] = {{0x10, 0x0C}, {0x11, 0x10}};  // modes 1, 2 and 3
constexpr DaaWrite kMode4[] = {{0x10, 0x64}};
constexpr DaaWrite kMode5[] = {{0x10, 0x04}};

// The writes of a mode; none for mode 0 and unknown modes.
std::span<const DaaWrite> daaSequence(int32_t daaMode) {
    if (daaMode >= 1 && daaMode <= 3) return kLineSetup;
    if (daaMode == 4) return kMode4;
    if (daaMode == 5) return kMode5;
    return {};
}

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynCstPotsWriteDaa, 24)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                 uint8_t daaRegister, uint8_t daaValue, uint32_t *status) {
    if (status == nullptr) return RYN_FAILURE(kErrNullPointer);
    using Wire = wire::cst_pots::WriteDaa;
    RequestOf<Wire> request;
    request.put<wire::kHandle>(handle).put<Wire::kParam1>(param1).put<Wire::kParam2>(param2);
    request.put8<Wire::kDaaRegister>(daaRegister).put8<Wire::kDaaValue>(daaValue);
    const ResultCode result = request.send();
    *status = request.get<Wire::kReplyStatus>();
    return result;
}

ResultCode RYN_DECORATED(RynCstPotsInit, 12)(DeviceHandle handle, uint32_t param1, int32_t daaMode) {
    if (!isLogicalDevice(handle)) return RYN_FAILURE(kErrInvalidHandle);
    ResultCode result = sendSettings<wire::cst_pots::Init>(handle, param1, static_cast<uint32_t>(daaMode));
    if (daaMode == 0 || isFailure(result)) return result;
    const std::span<const DaaWrite> writes = daaSequence(daaMode);
    for (size_t i = 0; i < writes.size(); ++i) {
        if (i > 0) RYN_DECORATED(OsaThreadSleep, 4)(kDaaSettleMs);
        uint32_t status = 0;
        result = RYN_DECORATED(RynCstPotsWriteDaa, 24)(handle, kDaaParam1, kDaaParam2, writes[i].daaRegister,
                                                       writes[i].value, &status);
        if (isFailure(result)) return result;
        // The DAA did not take the value: a warning, and the sequence stops.
        if (status > 1) return RYN_STATUS(kErrWarning);
    }
    return result;
}

ResultCode RYN_DECORATED(RynCstPotsOffHook, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    return sendSettings<wire::cst_pots::OffHook>(handle, param1, param2);
}

ResultCode RYN_DECORATED(RynCstPotsOnHook, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    return sendSettings<wire::cst_pots::OnHook>(handle, param1, param2);
}

ResultCode RYN_DECORATED(RynCstPotsHookFlash, 16)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                  uint32_t param3) {
    return sendSettings<wire::cst_pots::HookFlash>(handle, param1, param2, param3);
}

ResultCode RYN_DECORATED(RynCstPotsPulseDial, 16)(DeviceHandle handle, uint32_t param1, uint32_t param2,
                                                  uint32_t param3) {
    return sendSettings<wire::cst_pots::PulseDial>(handle, param1, param2, param3);
}

ResultCode RYN_DECORATED(RynCstPotsOnHookLineMon, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    return sendSettings<wire::cst_pots::OnHookLineMon>(handle, param1, param2);
}

ResultCode RYN_DECORATED(RynCstPotsSenseLine, 12)(DeviceHandle handle, uint32_t param1, uint32_t param2) {
    return sendSettings<wire::cst_pots::SenseLine>(handle, param1, param2);
}

}  // extern "C"
