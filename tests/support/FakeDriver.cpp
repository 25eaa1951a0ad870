#include "support/FakeDriver.h"

#include <stdexcept>

#include "osa/Device.h"

namespace ryn::test {

namespace {
// Live fakes by device name (upper case), so that `open` finds its object.
std::mutex fakesMutex;
std::vector<std::pair<std::string, FakeDriver *>> &liveFakes() {
    static std::vector<std::pair<std::string, FakeDriver *>> fakes;
    return fakes;
}
std::string upper(std::string name) {
    for (char &c : name) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
    return name;
}
}  // namespace

FakeDriver::FakeDriver(const char *deviceName)
    : name_(upper(deviceName)),
      driver_{RYN_USER_DRIVER_ABI, &FakeDriver::open, &FakeDriver::control, &FakeDriver::close} {
    if (!osa::registerDevice(name_, &driver_)) throw std::runtime_error("device name already registered");
    std::lock_guard lock(fakesMutex);
    liveFakes().emplace_back(name_, this);
}

FakeDriver::~FakeDriver() {
    osa::unregisterDevice(name_);
    std::lock_guard lock(fakesMutex);
    std::erase_if(liveFakes(), [this](const auto &entry) { return entry.second == this; });
}

void *FakeDriver::open(const char *deviceName) {
    std::lock_guard lock(fakesMutex);
    for (const auto &[name, fake] : liveFakes())
        if (name == upper(deviceName)) return fake->hold(), fake->open_ = true, fake;
    return nullptr;
}

int FakeDriver::control(void *device, const RynDriverRequest *request, uint32_t *returned) {
    return static_cast<FakeDriver *>(device)->answer(*request, returned);
}

void FakeDriver::close(void *device) {
    auto *fake = static_cast<FakeDriver *>(device);
    fake->hold(), fake->open_ = false;
}

int FakeDriver::answer(const RynDriverRequest &request, uint32_t *returned) {
    ScriptedReply reply;
    {
        std::lock_guard lock(mutex_);
        const auto *in = static_cast<const uint8_t *>(request.input);
        requests_.push_back({request.code,
                             {in, in + request.inputLength},
                             request.outputLength,
                             {request.buffers, request.buffers + request.bufferCount}});
        if (!script_.empty()) {
            reply = std::move(script_.front());
            script_.pop_front();
        } else if (defaultResult_) {
            reply = resultReply(*defaultResult_);
        }
    }
    auto *out = static_cast<uint8_t *>(request.output);
    for (const auto &[offset, value] : reply.words) {  // 0xFFFFFFFF: the last field of the reply
        const uint32_t at = offset == 0xFFFFFFFFu ? request.outputLength - 4 : offset;
        if (at + 4 <= request.outputLength) std::memcpy(out + at, &value, 4);
    }
    for (const auto &[offset, run] : reply.bytes) {
        if (offset + run.size() <= request.outputLength) std::memcpy(out + offset, run.data(), run.size());
    }
    *returned = reply.returned.value_or(request.outputLength);
    if (const auto hook = (hold(), hook_)) hook(request);
    return reply.ok;
}

}  // namespace ryn::test
