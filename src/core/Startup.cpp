// The load-time step: find the driver's version once, when the library is
// loaded into a process.
//
// The driver version level lives in this file together with the step that
// computes it. The platform's trigger (osa/LoadHook.h: an ELF constructor on
// Linux, DllMain on Windows) calls runLoadStep. Every reader of the level
// (the undecorated entry points' translations) references this object, and
// this object references the trigger, so a program linked against the
// static library pulls in the trigger as well, and the step runs however the
// library is linked.
#include <algorithm>
#include <atomic>
#include <cstring>

#include "RynHwDll.h"
#include "core/Compat.h"
#include "osa/LoadHook.h"

namespace ryn {
namespace {

constexpr size_t kVersionBufferSize = 80;
constexpr uint32_t kDriverVersionAttribute = 13;

// Written once by the load-time step, before any API call; read afterwards.
constinit std::atomic<uint32_t> versionLevel{0};

// Keeps the platform's trigger of the load step in every link of this object.
[[gnu::used]] constinit const char *const keepLoadHook = &osa::loadHookAnchor;

}  // namespace

uint32_t driverVersionLevel() { return versionLevel.load(std::memory_order_relaxed); }

void setDriverVersionLevel(uint32_t level) { versionLevel.store(level, std::memory_order_relaxed); }

uint32_t parseDriverVersion(std::string_view version) {
    // Copied so that every component the scan reads is terminated.
    char text[kVersionBufferSize + 1] = {};
    const size_t length = std::min(version.size(), kVersionBufferSize);
    std::memcpy(text, version.data(), length);

    uint32_t level = 0;
    uint32_t weight = 10000;
    const char *component = text;
    for (size_t i = 0; i < length; ++i) {
        if (text[i] == '.') {
            level += weight * static_cast<uint32_t>(RYN_DECORATED(OsaStrToI, 4)(component));
            if (weight == 1) break;
            weight /= 100;
            component = text + i + 1;
        } else if (text[i] == '-') {
            const char *patch = text + i + 1;
            if (*patch == 'P' || *patch == 'p') ++patch;
            level += static_cast<uint32_t>(RYN_DECORATED(OsaStrToI, 4)(patch));
            break;
        }
    }
    return level;
}

void runLoadStep() {
    RYN_DECORATED(RynDrvConnectLib, 0)();
    char version[kVersionBufferSize] = {};
    RYN_DECORATED(RynDrvGetAttributeValueSz, 16)
    (RYN_DRIVER_PSEUDO_HANDLE, kDriverVersionAttribute, version, sizeof version);
    setDriverVersionLevel(parseDriverVersion(std::string_view(version, strnlen(version, sizeof version))));
    RYN_DECORATED(RynDrvReleaseLib, 0)();
}

}  // namespace ryn
