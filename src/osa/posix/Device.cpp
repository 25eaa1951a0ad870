// Device connections on Linux: there is no device namespace of the system
// for these boards, so every driver is one inside the process, registered
// or loaded from a driver module (a shared object, dlopen).
#include <dlfcn.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <new>

#include "osa/System.h"

namespace ryn::osa::sys {
namespace {

// The folder that holds the loaded library file (or the program the library
// is linked into; the system may name a program only as it was started, so
// its path is taken from the process itself).
std::string libraryFolder() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void *>(&libraryFolder), &info) == 0 || info.dli_fname == nullptr) return {};
    std::string path = info.dli_fname;
    if (path.find('/') == std::string::npos) {
        char self[4096];
        const ssize_t length = readlink("/proc/self/exe", self, sizeof self - 1);
        if (length > 0) path.assign(self, static_cast<size_t>(length));
    }
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string(".") : path.substr(0, slash);
}

}  // namespace

// An eventfd that nobody signals: a descriptor of the connection's own.
NativeHandle newConnectionHandle() { return eventfd(0, EFD_CLOEXEC); }

bool openSystemDevice(const char *, NativeHandle &) { return false; }

int systemDeviceControl(void *, const RynDriverRequest *, uint32_t *returned) {
    *returned = 0;
    return 0;
}

std::string driverModulePath(std::string_view lowerName) {
    std::string folder = libraryFolder();
    if (folder.empty()) return {};
    return folder.append("/ryn-drivers/").append(lowerName).append(".so");
}

void *loadModule(const std::string &path) { return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL); }

void *moduleSymbol(void *module, const char *name) { return dlsym(module, name); }

void unloadModule(void *module) { dlclose(module); }

}  // namespace ryn::osa::sys
