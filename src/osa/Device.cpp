// OsaDeviceOpen, OsaDeviceClose and OsaDeviceIoControl over in-process
// drivers and driver modules.
#include "osa/Device.h"

#include <dlfcn.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "osa/Handles.h"

namespace ryn::osa {
namespace {

constexpr char kPathPrefix[] = "\\\\.\\";  // the four characters \\.\ before a device name
constexpr size_t kPathBufferSize = 56;

std::string upperCase(std::string_view text) {
    std::string out(text);
    for (char &c : out) {
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
    }
    return out;
}

std::string lowerCase(std::string_view text) {
    std::string out(text);
    for (char &c : out) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
    }
    return out;
}

class Device final : public HandleObject {
public:
    static constexpr Kind kKind = Kind::Device;

    Device(std::string key, const RynUserDriver *driver, void *instance, void *module)
        : HandleObject(kKind),
          control_(driver->control),
          instance_(instance),
          key_(std::move(key)),
          driver_(driver),
          module_(module) {}

    ~Device() override {
        driver_->close(instance_);
        if (module_ != nullptr) dlclose(module_);
    }

    const std::string &key() const { return key_; }

    int control(const RynDriverRequest &request, uint32_t *returned) const {
        return control_(instance_, &request, returned);
    }

private:
    // The request path's fields first, copied out of the driver's table.
    int (*control_)(void *, const RynDriverRequest *, uint32_t *);
    void *instance_;
    std::string key_;
    const RynUserDriver *driver_;
    void *module_;
};

struct Registry {
    std::mutex mutex;
    std::vector<std::pair<std::string, const RynUserDriver *>> inProcess;
    std::vector<std::string> open;  // keys of the open devices
};

Registry &registry() {
    static Registry instance;
    return instance;
}

bool usable(const RynUserDriver *driver) {
    return driver != nullptr && driver->abi == RYN_USER_DRIVER_ABI && driver->open != nullptr &&
           driver->control != nullptr && driver->close != nullptr;
}

// The folder that holds the loaded library file (or the program the library
// is linked into).
std::string libraryFolder() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void *>(&libraryFolder), &info) == 0 || info.dli_fname == nullptr) return {};
    std::string path = info.dli_fname;
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string(".") : path.substr(0, slash);
}

bool validModuleName(std::string_view name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
    });
}

// Loads ryn-drivers/<name>.so; on success `module` holds the dlopen handle.
const RynUserDriver *loadModule(std::string_view name, void *&module) {
    module = nullptr;
    if (!validModuleName(name)) return nullptr;
    const std::string path = libraryFolder() + "/ryn-drivers/" + lowerCase(name) + ".so";
    void *handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) return nullptr;
    auto entry = reinterpret_cast<const RynUserDriver *(*)()>(dlsym(handle, "RynUserDriverEntry"));
    const RynUserDriver *driver = entry != nullptr ? entry() : nullptr;
    if (!usable(driver)) {
        dlclose(handle);
        return nullptr;
    }
    module = handle;
    return driver;
}

OsaHandle openDevice(const char *path) {
    if (std::strncmp(path, kPathPrefix, 4) != 0 || path[4] == '\0') return INVALID_HANDLE_VALUE;
    const std::string_view name(path + 4);
    std::string key = upperCase(name);

    Registry &reg = registry();
    std::lock_guard lock(reg.mutex);
    if (std::find(reg.open.begin(), reg.open.end(), key) != reg.open.end()) return INVALID_HANDLE_VALUE;

    const RynUserDriver *driver = nullptr;
    void *module = nullptr;
    for (const auto &[registered, candidate] : reg.inProcess) {
        if (registered == key) driver = candidate;
    }
    if (driver == nullptr) driver = loadModule(name, module);
    if (driver == nullptr) return INVALID_HANDLE_VALUE;

    void *instance = driver->open(std::string(name).c_str());
    if (instance == nullptr) {
        if (module != nullptr) dlclose(module);
        return INVALID_HANDLE_VALUE;
    }
    auto *device = new Device(key, driver, instance, module);
    const OsaHandle handle = publishHandle(eventfd(0, EFD_CLOEXEC), device);
    if (handle == INVALID_HANDLE_VALUE) {
        delete device;
        return INVALID_HANDLE_VALUE;
    }
    reg.open.push_back(std::move(key));
    return handle;
}

}  // namespace

bool registerDevice(std::string_view name, const RynUserDriver *driver) {
    if (!usable(driver) || name.empty()) return false;
    Registry &reg = registry();
    std::lock_guard lock(reg.mutex);
    std::string key = upperCase(name);
    for (const auto &entry : reg.inProcess) {
        if (entry.first == key) return false;
    }
    reg.inProcess.emplace_back(std::move(key), driver);
    return true;
}

void unregisterDevice(std::string_view name) {
    Registry &reg = registry();
    std::lock_guard lock(reg.mutex);
    const std::string key = upperCase(name);
    std::erase_if(reg.inProcess, [&](const auto &entry) { return entry.first == key; });
}

int32_t deviceIoControl(OsaHandle handle, uint32_t code, const void *input, uint32_t inputLength, void *output,
                        uint32_t outputLength, uint32_t *returned, const RynDriverBuffer *buffers,
                        uint32_t bufferCount) {
    const Device *device = lookupHandleOf<Device>(handle);
    if (device == nullptr) return 0;
    const RynDriverRequest request{code, input, inputLength, output, outputLength, buffers, bufferCount};
    uint32_t count = 0;
    const int ok = device->control(request, &count);
    if (returned != nullptr) *returned = std::min(count, outputLength);
    return ok;
}

}  // namespace ryn::osa

extern "C" {

OsaHandle RYN_DECORATED(OsaDeviceOpen, 4)(const char *name) {
    using namespace ryn::osa;
    if (name == nullptr) return INVALID_HANDLE_VALUE;
    const size_t length = strnlen(name, kPathBufferSize);
    if (length > kPathBufferSize - sizeof kPathPrefix) return INVALID_HANDLE_VALUE;  // 51 characters at most
    char path[kPathBufferSize];
    std::memcpy(path, kPathPrefix, 4);
    std::memcpy(path + 4, name, length + 1);
    return openDevice(path);
}

int32_t RYN_DECORATED(OsaDeviceClose, 4)(OsaHandle handle) {
    using namespace ryn::osa;
    if (lookupHandle(handle) == nullptr) return 0;
    Registry &reg = registry();
    // The registry lock keeps a concurrent open of the same name from
    // seeing the device half closed.
    std::lock_guard lock(reg.mutex);
    HandleObject *object = retractHandle(handle);
    if (object == nullptr) return 0;
    if (object->kind() == Device::kKind) {
        std::erase(reg.open, static_cast<Device *>(object)->key());
    }
    delete object;
    return 1;
}

int32_t RYN_DECORATED(OsaDeviceIoControl, 28)(OsaHandle handle, uint32_t code, const void *input, uint32_t inputLength,
                                              void *output, uint32_t outputLength, uint32_t *returned) {
    return ryn::osa::deviceIoControl(handle, code, input, inputLength, output, outputLength, returned, nullptr, 0);
}

}  // extern "C"
