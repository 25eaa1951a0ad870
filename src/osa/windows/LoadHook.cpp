// The load step on Windows: the library DLL's entry point runs it when the
// DLL is attached to a process, after the C runtime has constructed the
// library's static objects. A program linked against the static library has
// no entry point of the library; there a constructor runs the step before
// main. Neither fails the load.
// windows.h first: Osa.h then keeps its definition of INVALID_HANDLE_VALUE.
#include "osa/windows/Native.h"

#include "core/Compat.h"
#include "osa/LoadHook.h"

namespace ryn::osa {

const char loadHookAnchor = 0;

namespace {

// Whether this code is part of the program itself rather than of a DLL.
bool linkedIntoProgram() {
    HMODULE self = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       &loadHookAnchor, &self);
    return self != nullptr && self == GetModuleHandleA(nullptr);
}

__attribute__((constructor)) void onProgramStart() {
    if (linkedIntoProgram()) runLoadStep();
}

}  // namespace
}  // namespace ryn::osa

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) ryn::runLoadStep();
    return TRUE;
}
