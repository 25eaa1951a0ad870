// windows.h first: Osa.h then keeps its definition of INVALID_HANDLE_VALUE.
#include <windows.h>

#include <cstdio>

#include "support/Platform.h"

namespace ryn::test {

bool signalEventNatively(OsaHandle event) {
    return SetEvent(reinterpret_cast<HANDLE>(static_cast<intptr_t>(static_cast<int32_t>(event)))) != 0;
}

// A job object whose processes may commit no more than `bytes` each; the
// process joins it (and stays in it until it ends). The limit is in force
// when a commit of `bytes` then fails: wine takes the limit but does not
// hold a process to it.
bool limitProcessMemory(uint64_t bytes) {
    const HANDLE job = CreateJobObjectA(nullptr, nullptr);
    if (job == nullptr) return false;
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_PROCESS_MEMORY;
    limits.ProcessMemoryLimit = static_cast<SIZE_T>(bytes);
    if (SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits) == 0 ||
        AssignProcessToJobObject(job, GetCurrentProcess()) == 0) {
        return false;
    }
    void *probe = VirtualAlloc(nullptr, static_cast<SIZE_T>(bytes), MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    if (probe == nullptr) return true;
    VirtualFree(probe, 0, MEM_RELEASE);
    return false;
}

// The runtime's _popen runs the command through cmd.exe; _pclose gives the
// exit code itself.
CommandResult runCommand(const std::string &command) {
    FILE *pipe = _popen(command.c_str(), "r");
    CommandResult result{"", -1};
    char buffer[256];
    while (pipe != nullptr && std::fgets(buffer, sizeof buffer, pipe) != nullptr) result.out += buffer;
    result.status = pipe != nullptr ? _pclose(pipe) : -1;
    return result;
}

}  // namespace ryn::test
