// Device connections: the stand-in for the system's device files.
#pragma once

#include <cstdint>
#include <string_view>

#include "Osa.h"
#include "RynUserDriver.h"

namespace ryn::osa {

// Makes a driver answer to a device name inside this process (looked up
// before driver modules, names compared without regard to case). Returns
// false when the name is already registered. The driver must outlive its
// registration and every connection opened through it.
bool registerDevice(std::string_view name, const RynUserDriver *driver);
void unregisterDevice(std::string_view name);

// One device I/O control request, with the caller buffers that address
// fields of the input name. Nonzero on success, as OsaDeviceIoControl.
int32_t deviceIoControl(OsaHandle handle, uint32_t code, const void *input, uint32_t inputLength, void *output,
                        uint32_t outputLength, uint32_t *returned, const RynDriverBuffer *buffers,
                        uint32_t bufferCount);

}  // namespace ryn::osa
