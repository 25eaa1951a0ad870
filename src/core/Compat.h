// Driver-version compatibility: the driver's version level found at load
// time and the translations the undecorated entry points apply for older
// drivers. Every translation returns its input unchanged at level 0.
#pragma once

#include <cstdint>
#include <string_view>

#include "RynHwDll.h"

namespace ryn {

uint32_t driverVersionLevel();
void setDriverVersionLevel(uint32_t level);

// "1.01.37.0" -> 10137, "1.01.00-P37" -> 10137; 0 when nothing parses.
uint32_t parseDriverVersion(std::string_view version);

// The load-time step: connect, read the driver version string (attribute 13
// of the driver pseudo-handle), set the level, release. Never fails.
void runLoadStep();

ResultCode compatResultCode(ResultCode code);
int32_t compatAttributeId(int32_t id);
int32_t compatDeviceTypeToDriver(int32_t type);
int32_t compatDeviceTypeFromDriver(int32_t type);
uint32_t compatSpmId(uint32_t id);

}  // namespace ryn
