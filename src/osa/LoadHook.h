// What runs the load step (ryn::runLoadStep, core/Startup.cpp) when the
// library is loaded into a process: an ELF constructor on Linux
// (osa/posix/LoadHook.cpp), DllMain on Windows (osa/windows/LoadHook.cpp).
#pragma once

namespace ryn::osa {

// Defined beside the platform's trigger. core/Startup.cpp holds its
// address, so that a program linked against the static library, which
// pulls in Startup.cpp through the driver version level, pulls in the
// trigger too.
extern const char loadHookAnchor;

}  // namespace ryn::osa
