#include "support/FakeDriver.h"

#include <stdexcept>

#include "osa/Device.h"

namespace ryn::test {

ScriptedReply resultReply(ResultCode result) {
    ScriptedReply reply;
    reply.words.emplace_back(0xFFFFFFFFu, result);  // offset resolved against the reply length
    return reply;
}

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
    for (const auto &[name, fake] : liveFakes()) {
        if (name == upper(deviceName)) {
            std::lock_guard own(fake->mutex_);
            fake->open_ = true;
            return fake;
        }
    }
    return nullptr;
}

int FakeDriver::control(void *device, const RynDriverRequest *request, uint32_t *returned) {
    return static_cast<FakeDriver *>(device)->answer(*request, returned);
}

void FakeDriver::close(void *device) {
    auto *fake = static_cast<FakeDriver *>(device);
    std::lock_guard own(fake->mutex_);
    fake->open_ = false;
}

int FakeDriver::answer(const RynDriverRequest &request, uint32_t *returned) {
    ScriptedReply reply;
    {
        std::lock_guard lock(mutex_);
        RecordedRequest recorded;
        recorded.code = request.code;
        const auto *in = static_cast<const uint8_t *>(request.input);
        recorded.input.assign(in, in + request.inputLength);
        recorded.outputLength = request.outputLength;
        recorded.buffers.assign(request.buffers, request.buffers + request.bufferCount);
        requests_.push_back(std::move(recorded));
        if (!script_.empty()) {
            reply = std::move(script_.front());
            script_.pop_front();
        } else if (defaultResult_) {
            reply = resultReply(*defaultResult_);
        }
    }
    auto *out = static_cast<uint8_t *>(request.output);
    for (const auto &[offset, value] : reply.words) {
        const uint32_t at = offset == 0xFFFFFFFFu ? request.outputLength - 4 : offset;
        if (at + 4 <= request.outputLength) std::memcpy(out + at, &value, 4);
    }
    for (const auto &[offset, run] : reply.bytes) {
        if (offset + run.size() <= request.outputLength) std::memcpy(out + offset, run.data(), run.size());
    }
    *returned = reply.returned.value_or(request.outputLength);
    std::function<void(const RynDriverRequest &)> hook;
    {
        std::lock_guard lock(mutex_);
        hook = hook_;
    }
    if (hook) hook(request);
    return reply.ok;
}

void FakeDriver::script(ScriptedReply reply) {
    std::lock_guard lock(mutex_);
    script_.push_back(std::move(reply));
}

void FakeDriver::setHook(std::function<void(const RynDriverRequest &)> hook) {
    std::lock_guard lock(mutex_);
    hook_ = std::move(hook);
}

void FakeDriver::setDefaultResult(ResultCode resultAtEnd) {
    std::lock_guard lock(mutex_);
    defaultResult_ = resultAtEnd;
}

std::vector<RecordedRequest> FakeDriver::requests() const {
    std::lock_guard lock(mutex_);
    return requests_;
}

RecordedRequest FakeDriver::lastRequest() const {
    std::lock_guard lock(mutex_);
    return requests_.empty() ? RecordedRequest{} : requests_.back();
}

size_t FakeDriver::requestCount() const {
    std::lock_guard lock(mutex_);
    return requests_.size();
}

void FakeDriver::clear() {
    std::lock_guard lock(mutex_);
    requests_.clear();
}

bool FakeDriver::isOpen() const {
    std::lock_guard lock(mutex_);
    return open_;
}

}  // namespace ryn::test
