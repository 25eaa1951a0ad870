// OsaDeviceOpen, OsaDeviceClose and OsaDeviceIoControl over in-process
// drivers, devices of the system and driver modules. The system's part (its
// device namespace, loading modules) is behind osa/System.h.
#include "osa/Device.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <vector>

#include "osa/Events.h"
#include "osa/Handles.h"
#include "osa/System.h"

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

    Device(std::string key, const RynUserDriver *driver) : HandleObject(kKind), key_(std::move(key)), driver_(driver) {}

    // Closes the driver's connection and unloads its module, if they were
    // opened and loaded. A device of the system has no driver table here: its
    // handle is the connection, and the handle table closes it.
    ~Device() override {
        if (instance_ != nullptr && driver_ != nullptr) driver_->close(instance_);
        if (module_ != nullptr) sys::unloadModule(module_);
    }

    const std::string &key() const { return key_; }
    std::string takeKey() { return std::move(key_); }
    const RynUserDriver *driver() const { return driver_; }

    // The driver that answers, and the loaded module it lives in (or null).
    void useDriver(void *module, const RynUserDriver *driver) {
        module_ = module;
        driver_ = driver;
    }
    // Asks the driver for a connection; false when it refuses.
    bool openInstance(const char *name) {
        instance_ = driver_->open(name);
        if (instance_ == nullptr) return false;
        control_ = driver_->control;
        return true;
    }

    // Talks to a device of the system through its handle `device`.
    void useSystemDevice(sys::NativeHandle device) {
        driver_ = nullptr;
        instance_ = reinterpret_cast<void *>(device);
        control_ = sys::systemDeviceControl;
    }

    int control(const RynDriverRequest &request, uint32_t *returned) const {
        return control_(instance_, &request, returned);
    }

private:
    // The request path's fields first, copied out of the driver's table.
    int (*control_)(void *, const RynDriverRequest *, uint32_t *) = nullptr;
    void *instance_ = nullptr;
    std::string key_;
    const RynUserDriver *driver_;
    void *module_ = nullptr;
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

bool validModuleName(std::string_view name) {
    return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
    });
}

// Loads the module at `path`; on success `module` holds the loaded module.
const RynUserDriver *loadModule(const std::string &path, void *&module) {
    module = nullptr;
    void *loaded = sys::loadModule(path);
    if (loaded == nullptr) return nullptr;
    auto entry = reinterpret_cast<const RynUserDriver *(*)()>(sys::moduleSymbol(loaded, "RynUserDriverEntry"));
    const RynUserDriver *driver = entry != nullptr ? entry() : nullptr;
    if (!usable(driver)) {
        sys::unloadModule(loaded);
        return nullptr;
    }
    module = loaded;
    return driver;
}

// Claims `key` for one opening connection; false when it is open already.
bool reserve(Registry &reg, const std::string &key, const RynUserDriver *&inProcess) {
    std::lock_guard lock(reg.mutex);
    if (std::find(reg.open.begin(), reg.open.end(), key) != reg.open.end()) return false;
    inProcess = nullptr;
    for (const auto &[registered, candidate] : reg.inProcess) {
        if (registered == key) inProcess = candidate;
    }
    reg.open.push_back(key);
    return true;
}

void release(Registry &reg, const std::string &key) {
    std::lock_guard lock(reg.mutex);
    const auto at = std::find(reg.open.begin(), reg.open.end(), key);
    if (at != reg.open.end()) reg.open.erase(at);
}

// Opens a device connection to `path`, the four characters \\.\ and `name`:
// a driver registered inside the process, else the system's own device of
// that path (Windows), else the driver module of that name. Everything that
// allocates happens first, and no lock of this layer is held while module
// code runs (loading it, the module's open and close), so that a module may
// call back into the library, open another device underneath or close an
// event of its own.
OsaHandle openDevice(const char *path, std::string_view name) {
    std::unique_ptr<Device> device;
    std::string key;
    std::string modulePath;
    std::string openName;
    Registry &reg = registry();
    try {
        key = upperCase(name);
        device = std::make_unique<Device>(key, nullptr);
        if (validModuleName(name)) modulePath = sys::driverModulePath(lowerCase(name));
        openName = std::string(name);
        const RynUserDriver *inProcess = nullptr;
        if (!reserve(reg, key, inProcess)) return INVALID_HANDLE_VALUE;
        device->useDriver(nullptr, inProcess);
    } catch (const std::bad_alloc &) {
        return INVALID_HANDLE_VALUE;
    }

    // The name is reserved from here on; nothing below allocates with new.
    OsaHandle handle = INVALID_HANDLE_VALUE;
    sys::NativeHandle systemDevice = sys::kNoNativeHandle;
    if (device->driver() == nullptr && sys::openSystemDevice(path, systemDevice)) {
        device->useSystemDevice(systemDevice);
        handle = publishHandle(systemDevice, device.get());
    } else {
        if (device->driver() == nullptr && !modulePath.empty()) {
            void *module = nullptr;
            const RynUserDriver *driver = loadModule(modulePath, module);
            device->useDriver(module, driver);
        }
        if (device->driver() != nullptr && device->openInstance(openName.c_str())) {
            handle = publishHandle(sys::newConnectionHandle(), device.get());
        }
    }
    if (handle != INVALID_HANDLE_VALUE) {
        device.release();  // owned by the handle table now
        return handle;
    }
    device.reset();  // the driver's close and the module's unloading, without the lock
    release(reg, key);
    return INVALID_HANDLE_VALUE;
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
    // Held for the call: closing the connection waits until it has returned.
    const HandleRef<Device> device = acquireHandleOf<Device>(handle);
    if (!device) return 0;
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
    if (length == 0) return INVALID_HANDLE_VALUE;
    // The system's path of the device, "\\.\" + name; the driver is found by the name.
    char path[kPathBufferSize];
    std::memcpy(path, kPathPrefix, 4);
    std::memcpy(path + 4, name, length + 1);
    return openDevice(path, std::string_view(path + 4, length));
}

int32_t RYN_DECORATED(OsaDeviceClose, 4)(OsaHandle handle) {
    using namespace ryn::osa;
    HandleObject *object = retractHandle(handle);
    if (object == nullptr) return 0;
    if (object->kind() == Event::kKind) {
        recycleEvent(static_cast<Event *>(object));
        return 1;
    }
    // The calls in flight on the connection have returned (retractHandle
    // waits for them), so the driver's close and the module's unloading
    // never pull code from under a request. The name stays claimed until the
    // driver's close has run, so that a concurrent open of the same name
    // never meets the device half closed; the close itself runs without any
    // lock of this layer.
    auto *device = static_cast<Device *>(object);
    std::string key = device->takeKey();
    delete device;
    release(registry(), key);
    return 1;
}

int32_t RYN_DECORATED(OsaDeviceIoControl, 28)(OsaHandle handle, uint32_t code, const void *input, uint32_t inputLength,
                                              void *output, uint32_t outputLength, uint32_t *returned) {
    // A block that has a length needs an address: the call fails, as the
    // system's own call does for a buffer it cannot reach.
    if ((input == nullptr && inputLength != 0) || (output == nullptr && outputLength != 0)) {
        if (returned != nullptr) *returned = 0;
        return 0;
    }
    return ryn::osa::deviceIoControl(handle, code, input, inputLength, output, outputLength, returned, nullptr, 0);
}

}  // extern "C"
