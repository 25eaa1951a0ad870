// The request transport: one device I/O control exchange with the driver,
// and the request/reply builder that every family's calls are written with.
//
//     using Wire = wire::core::Enable;             // named in wire/CoreWire.h
//     RequestOf<Wire> request;                     // function number, lengths
//     request.put<wire::kHandle>(handle).put<Wire::kParam2>(param2);
//     return request.send();                       // ResultCode of the reply
//
// Field offsets are template arguments, so a field that does not fit its
// block, or a wide field at an odd offset, does not compile. Blocks start
// zero-filled so that no stale bytes reach the driver.
#pragma once

#include <cstdint>
#include <cstring>
#include <iterator>
#include <span>

#include "LittleEndian.h"
#include "Wire.h"
#include "RynHwDll.h"
#include "RynUserDriver.h"
#include "core/ResultCode.h"

namespace ryn {

constexpr uint32_t ioControlCode(uint32_t function) { return 0x220000u | (function << 2); }

// The pair of codes the transport stores when the driver cannot be reached.
struct TransportCodes {
    ResultCode callFailed;
    ResultCode noReply;
};
inline constexpr TransportCodes kStandardTransport{kTransportCallFailed, kTransportNoReply};
inline constexpr TransportCodes kDeviceHandleTransport{kTransportHandleCallFailed, kTransportHandleNoReply};

// Operating-system handle of the driver connection (INVALID_HANDLE_VALUE
// while no connection is open).
OsaHandle driverHandle();

// Fields of request and reply blocks are little-endian.
using wire::le::load16;
using wire::le::load32;
using wire::le::store16;
using wire::le::store32;

// Sends `request` and receives `reply`: the returned byte count starts at 0;
// a failed call stores codes.callFailed at `resultOffset` of the reply, then
// a reply of no bytes stores codes.noReply there; the result is read from
// that field. `resultOffset` + 4 must not exceed the reply. When `answered`
// is given it tells whether the driver answered (the call succeeded and
// returned bytes), so that a caller can tell a reply from a transport failure.
ResultCode exchange(uint32_t function, std::span<const uint8_t> request, std::span<uint8_t> reply,
                    uint32_t resultOffset, const TransportCodes &codes = kStandardTransport,
                    std::span<const RynDriverBuffer> buffers = {}, bool *answered = nullptr);

// Caller buffers named by address fields of one request.
class AddressList {
public:
    static constexpr uint32_t kCapacity = 4;

    // The value of an address field naming [address, address + length): the
    // address itself in a 32-bit process, else a 1-based reference into the
    // list. A null address gives 0 and is not listed.
    uint32_t add(const void *address, uint32_t length);
    std::span<const RynDriverBuffer> buffers() const { return {buffers_, count_}; }

private:
    RynDriverBuffer buffers_[kCapacity];  // the first count_ are set
    uint32_t count_ = 0;
};

// A request and its reply, both of fixed length, built on the stack.
template <uint32_t RequestLength, uint32_t ReplyLength>
class Request {
    static_assert(RequestLength >= 16 && RequestLength % 2 == 0, "request blocks are even, header included");
    static_assert(ReplyLength >= 12 && ReplyLength % 2 == 0, "reply blocks are even, header included");

public:
    explicit Request(uint32_t function) : function_(function) {}

    template <uint32_t Offset>
    Request &put(uint32_t value) {
        static_assert(Offset % 2 == 0 && Offset + 4 <= RequestLength, "32-bit field outside the request");
        store32(request_ + Offset, value);
        return *this;
    }
    template <uint32_t Offset>
    Request &put16(uint16_t value) {
        static_assert(Offset % 2 == 0 && Offset + 2 <= RequestLength, "16-bit field outside the request");
        store16(request_ + Offset, value);
        return *this;
    }
    template <uint32_t Offset>
    Request &put8(uint8_t value) {
        static_assert(Offset + 1 <= RequestLength, "byte field outside the request");
        request_[Offset] = value;
        return *this;
    }
    // Copies `length` bytes into the area [Offset, Offset + Capacity);
    // anything beyond the area is not copied.
    template <uint32_t Offset, uint32_t Capacity>
    Request &putBytes(const void *bytes, uint32_t length) {
        static_assert(Offset + Capacity <= RequestLength, "byte area outside the request");
        if (bytes != nullptr) std::memcpy(request_ + Offset, bytes, length < Capacity ? length : Capacity);
        return *this;
    }
    // An address field naming a caller buffer of `length` bytes.
    template <uint32_t Offset>
    Request &putAddress(const void *address, uint32_t length) {
        return put<Offset>(addresses_.add(address, length));
    }

    // The exchange with the ResultCode as the last 32-bit field of the reply.
    ResultCode send() { return sendWithResultAt<ReplyLength - 4>(kStandardTransport); }

    template <uint32_t ResultOffset>
    ResultCode sendWithResultAt(const TransportCodes &codes) {
        static_assert(ResultOffset % 2 == 0 && ResultOffset + 4 <= ReplyLength, "result outside the reply");
        return exchange(function_, request_, reply_, ResultOffset, codes, addresses_.buffers(), &answered_);
    }
    // Whether the last exchange reached the driver and brought a reply.
    bool answered() const { return answered_; }

    template <uint32_t Offset>
    uint32_t get() const {
        static_assert(Offset % 2 == 0 && Offset + 4 <= ReplyLength, "32-bit field outside the reply");
        return load32(reply_ + Offset);
    }
    template <uint32_t Offset>
    uint16_t get16() const {
        static_assert(Offset % 2 == 0 && Offset + 2 <= ReplyLength, "16-bit field outside the reply");
        return load16(reply_ + Offset);
    }
    template <uint32_t Offset>
    uint8_t get8() const {
        static_assert(Offset + 1 <= ReplyLength, "byte field outside the reply");
        return reply_[Offset];
    }
    // The reply bytes [Offset, Offset + Length).
    template <uint32_t Offset, uint32_t Length>
    const uint8_t *replyBytes() const {
        static_assert(Offset + Length <= ReplyLength, "byte area outside the reply");
        return reply_ + Offset;
    }

private:
    uint32_t function_;
    uint8_t request_[RequestLength]{};
    uint8_t reply_[ReplyLength]{};
    AddressList addresses_;
    bool answered_ = false;
};

// A request named in the protocol headers (wire/): its function number and
// block lengths come from the name, e.g. RequestOf<wire::t1e1::SetMode>.
template <typename Wire>
class RequestOf : public Request<Wire::kRequest, Wire::kReply> {
public:
    RequestOf() : Request<Wire::kRequest, Wire::kReply>(Wire::kFunction) {}
};

// The handle and 32-bit settings after it, in order (the shapes
// wire::OneSetting to wire::ThreeSettings), with the common reply.
template <typename Wire, class... Settings>
ResultCode sendSettings(DeviceHandle handle, Settings... settings) {
    const uint32_t values[] = {static_cast<uint32_t>(settings)...};
    static_assert(Wire::kParam1 + sizeof values == Wire::kRequest, "one setting for each field");
    uint8_t bytes[sizeof values];
    for (size_t i = 0; i < std::size(values); ++i) store32(bytes + 4 * i, values[i]);
    RequestOf<Wire> request;
    request.template put<wire::kHandle>(handle).template putBytes<Wire::kParam1, sizeof bytes>(bytes, sizeof bytes);
    return request.send();
}

// A status read (wire::StatusRead): the handle alone, and the 8- or 32-bit
// status of the reply, stored whatever the result.
template <typename Wire, class Status>
ResultCode sendForStatus(DeviceHandle handle, Status &status) {
    static_assert(sizeof(Status) == 1 || sizeof(Status) == 4, "an 8- or 32-bit status");
    RequestOf<Wire> request;
    request.template put<wire::kHandle>(handle);
    const ResultCode result = request.send();
    if constexpr (sizeof(Status) == 1) {
        status = request.template get8<Wire::kReplyStatus>();
    } else {
        status = request.template get<Wire::kReplyStatus>();
    }
    return result;
}

// The request of many calls in every family: the handle alone, with the
// common reply (wire::HandleOnly).
template <typename Wire>
ResultCode sendHandleOnly(DeviceHandle handle) {
    RequestOf<Wire> request;
    request.template put<wire::kHandle>(handle);
    return request.send();
}

}  // namespace ryn
