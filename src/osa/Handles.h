// The table of operating-system handles given out by this layer.
//
// Every handle is a handle of the system (a file descriptor on Linux, a
// HANDLE on Windows) owned by the object published under it (a device
// connection, an event object). Lookups take no lock, so that concurrent
// requests on one connection do not contend; publishing and retracting are
// serialised.
//
// Lifetime. A call that uses an object holds a HandleRef for as long as it
// does, counted in the object. Closing a handle takes it out of the table
// at once (later lookups find nothing), then marks the object closing, wakes
// what waits on it and waits until the calls in flight on it have let go;
// only then is the system's handle closed and the object finished. So a
// handle being closed stays alive until the calls on it return, and its
// number is not given out again while any of them could still reach it.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

#include "Osa.h"
#include "osa/System.h"

namespace ryn::osa {

class HandleObject {
public:
    enum class Kind : uint8_t { Device, Event };

    explicit HandleObject(Kind kind) : kind_(kind) {}
    virtual ~HandleObject() = default;
    HandleObject(const HandleObject &) = delete;
    HandleObject &operator=(const HandleObject &) = delete;

    Kind kind() const { return kind_; }
    // The handle the object is published under (0 before it is).
    OsaHandle handle() const { return handle_; }
    // Set once the handle has been retracted: the object is on its way out.
    bool closing() const { return closing_.load(std::memory_order_seq_cst); }

    // Counts one more call in flight on the object; see HandleRef. A call
    // that enters an object it did not look up (a cached pointer) checks
    // closing() after entering: the close marks the object closing before it
    // counts the calls in flight, so one of the two sees the other.
    void enter() { users_.fetch_add(1, std::memory_order_seq_cst); }
    void leave() { users_.fetch_sub(1, std::memory_order_release); }

    // Makes the calls in flight that may sleep on the object (waits on an
    // event) notice that it is closing. Called until they have all let go.
    virtual void wakeUsers() {}

protected:
    // An object finished and published anew (a recycled event): open again.
    void reopen() { closing_.store(false, std::memory_order_relaxed); }

private:
    friend OsaHandle publishHandle(sys::NativeHandle native, HandleObject *object);
    friend HandleObject *retractHandle(OsaHandle handle);
    Kind kind_;
    OsaHandle handle_ = 0;
    std::atomic<bool> closing_{false};
    std::atomic<uint32_t> users_{0};
};

// A counted use of a handle's object: the object is not finished while a
// HandleRef to it exists. Empty when the handle named no object of the kind.
template <class T>
class HandleRef {
public:
    HandleRef() = default;
    explicit HandleRef(T *object) : object_(object) {}
    HandleRef(HandleRef &&other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    HandleRef &operator=(HandleRef &&other) noexcept {
        if (this != &other) {
            reset();
            object_ = std::exchange(other.object_, nullptr);
        }
        return *this;
    }
    ~HandleRef() { reset(); }

    void reset() {
        if (object_ != nullptr) std::exchange(object_, nullptr)->leave();
    }
    T *get() const { return object_; }
    T *operator->() const { return object_; }
    T &operator*() const { return *object_; }
    explicit operator bool() const { return object_ != nullptr; }

private:
    T *object_ = nullptr;
};

// Takes over `native` as a handle of this layer (sys::adoptHandle: never 0,
// never a standard stream) and publishes `object` under it. Returns the
// handle, or INVALID_HANDLE_VALUE (with `native` closed) when the system gave
// none (kNoNativeHandle) or the table has no room.
OsaHandle publishHandle(sys::NativeHandle native, HandleObject *object);

// The object published under `handle`, counted as in use (HandleRef), or
// null. The caller lets it go with HandleObject::leave.
HandleObject *acquireHandle(OsaHandle handle);

// Like acquireHandle, but only an object of the given kind.
template <class T>
HandleRef<T> acquireHandleOf(OsaHandle handle) {
    HandleObject *object = acquireHandle(handle);
    if (object == nullptr) return {};
    if (object->kind() != T::kKind) {
        object->leave();
        return {};
    }
    return HandleRef<T>(static_cast<T *>(object));
}

// Removes `handle` from the table, waits until no call uses its object any
// more (waking those that wait on it), then closes the system's handle.
// Returns the object for the caller to finish, or null for an unknown handle.
HandleObject *retractHandle(OsaHandle handle);

}  // namespace ryn::osa
