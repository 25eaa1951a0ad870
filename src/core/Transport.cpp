#include "core/Transport.h"

#include "osa/Device.h"

namespace ryn {

ResultCode exchange(uint32_t function, std::span<const uint8_t> request, std::span<uint8_t> reply,
                    uint32_t resultOffset, const TransportCodes &codes, std::span<const RynDriverBuffer> buffers,
                    bool *answered) {
    uint32_t returned = 0;
    const int32_t ok = osa::deviceIoControl(
        driverHandle(), ioControlCode(function), request.data(), static_cast<uint32_t>(request.size()), reply.data(),
        static_cast<uint32_t>(reply.size()), &returned, buffers.data(), static_cast<uint32_t>(buffers.size()));
    uint8_t *result = reply.data() + resultOffset;
    if (ok == 0) store32(result, codes.callFailed);
    if (returned == 0) store32(result, codes.noReply);
    if (answered != nullptr) *answered = ok != 0 && returned != 0;
    return load32(result);
}

uint32_t AddressList::add(const void *address, uint32_t length) {
    if (address == nullptr || count_ == kCapacity) return 0;
    buffers_[count_++] = RynDriverBuffer{const_cast<void *>(address), length};
    if constexpr (sizeof(void *) == 4) {
        return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(address));
    } else {
        return count_;
    }
}

}  // namespace ryn
