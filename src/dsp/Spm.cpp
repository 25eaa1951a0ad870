// RynDspRunSpm: runs the built-in module image that fits the DSP behind a
// handle.
#include "dsp/Spm.h"

#include "DspWire.h"
#include "core/ResultCode.h"
#include "core/Transport.h"
#include "device/HandleKinds.h"

namespace ryn::spm {

// The images, made at build time from the module table.
#define RYN_SPM_MODULE(module, type, form, length, entry, text) extern const uint16_t kImage_##module##_##type[length];
#include "ModuleTable.inc"
#undef RYN_SPM_MODULE

namespace {

constexpr Module kModules[] = {
#define RYN_SPM_MODULE(module, type, form, length, entry, text) \
    {module, type, Form::form, kImage_##module##_##type, entry, text},
#include "ModuleTable.inc"
#undef RYN_SPM_MODULE
};

}  // namespace

std::span<const Module> modules() { return kModules; }

const Module *find(uint32_t module, uint32_t dspType) {
    for (const Module &entry : kModules) {
        if (entry.module == module && entry.dspType == dspType) return &entry;
    }
    return nullptr;
}

}  // namespace ryn::spm

namespace ryn {
namespace {

constexpr uint8_t kSourceId = source::kDsp;

// Module identifiers 7, 8 and 9 have no images; none exist from 14 up.
bool knownModule(uint32_t module) { return module < 14 && (module < 7 || module > 9); }

}  // namespace
}  // namespace ryn

using namespace ryn;

extern "C" {

ResultCode RYN_DECORATED(RynDspRunSpm, 8)(DeviceHandle handle, uint32_t module) {
    if (!isDriverObject(handle)) return RYN_FAILURE(kErrInvalidHandle);
    using Wire = wire::dsp::QueryDspType;
    RequestOf<Wire> query;
    query.put<wire::kHandle>(handle);
    const ResultCode queried = query.send();
    if (isFailure(queried)) return queried;
    if (!knownModule(module)) return RYN_FAILURE(kErrRange);
    const spm::Module *found = spm::find(module, query.get<Wire::kReplyType>());
    if (found == nullptr) return RYN_FAILURE(kErrNotAvailable);
    return RYN_DECORATED(RynDspRunImage, 16)(handle, found->image.data(), static_cast<uint16_t>(found->image.size()),
                                             found->entry);
}

}  // extern "C"
