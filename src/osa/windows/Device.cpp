// Device connections on Windows: the board's kernel driver answers at
// \\.\<name> (CreateFile, DeviceIoControl); without one, a driver module
// ryn-drivers\<name>.dll beside the library DLL (LoadLibrary) answers in the
// process, as on Linux.
#include <string>

#include "osa/windows/Native.h"

namespace ryn::osa::sys {
namespace {

// The file of the module (DLL or program) that holds this code.
std::string moduleFile() {
    HMODULE self = nullptr;
    if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                           reinterpret_cast<LPCSTR>(&moduleFile), &self) == 0) {
        return {};
    }
    // Paths may be longer than MAX_PATH; the buffer grows until the name fits.
    std::string path(MAX_PATH, '\0');
    for (;;) {
        const DWORD length = GetModuleFileNameA(self, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) return {};
        if (length < path.size()) {
            path.resize(length);
            return path;
        }
        if (path.size() >= 32768) return {};
        path.resize(path.size() * 2);
    }
}

}  // namespace

// An event that nobody signals: a kernel handle of the connection's own.
NativeHandle newConnectionHandle() { return fromHandle(CreateEventA(nullptr, FALSE, FALSE, nullptr)); }

// The driver's device is shared with other processes; whether it admits
// more than one connection is the driver's to decide.
bool openSystemDevice(const char *path, NativeHandle &device) {
    const HANDLE handle = CreateFileA(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    device = fromHandle(handle);
    return device != kNoNativeHandle;
}

// A kernel driver receives the request blocks only: the address fields of a
// 32-bit process hold addresses it can reach itself.
int systemDeviceControl(void *instance, const RynDriverRequest *request, uint32_t *returned) {
    DWORD count = 0;
    const BOOL ok = DeviceIoControl(static_cast<HANDLE>(instance), request->code, const_cast<void *>(request->input),
                                    request->inputLength, request->output, request->outputLength, &count, nullptr);
    *returned = count;
    return ok != 0 ? 1 : 0;
}

std::string driverModulePath(std::string_view lowerName) {
    std::string path = moduleFile();
    const size_t separator = path.find_last_of("\\/");
    if (separator == std::string::npos) return {};
    path.resize(separator);
    return path.append("\\ryn-drivers\\").append(lowerName).append(".dll");
}

// The module's own folder is searched first for the DLLs it needs, and a
// missing one fails the load instead of asking the user.
void *loadModule(const std::string &path) {
    DWORD previous = 0;
    SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &previous);
    const HMODULE module = LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    SetThreadErrorMode(previous, nullptr);
    return reinterpret_cast<void *>(module);
}

void *moduleSymbol(void *module, const char *name) {
    return reinterpret_cast<void *>(GetProcAddress(static_cast<HMODULE>(module), name));
}

void unloadModule(void *module) { FreeLibrary(static_cast<HMODULE>(module)); }

}  // namespace ryn::osa::sys
