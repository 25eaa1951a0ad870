// The device core on the virtual board: the device tree, handles, attributes,
// event queues across threads, connections, and requests that lie.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <random>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "virtual/VirtualBoard.h"

namespace vt {
namespace {

TEST_F(VirtualBoardTest, EnumerationWalksTheDeviceTree) {
    std::vector<int32_t> types;
    std::vector<uint32_t> ids;
    int32_t iterator = 0;
    for (RynDrvIteratorBegin(&iterator); RynDrvIsIteratorEnd(&iterator) && types.size() < 20;)
        types.push_back(got<int32_t>(RynDrvEnumDeviceType, 0, &iterator));
    for (RynDrvIteratorBegin(&iterator); RynDrvIsIteratorEnd(&iterator) && ids.size() < 20;)
        ids.push_back(got(RynDrvEnumDevice, 0, RYN_VB_DEVICE_T1E1, &iterator));
    EXPECT_EQ(types, (std::vector<int32_t>{RYN_VB_DEVICE_BOARD, RYN_VB_DEVICE_T1E1, RYN_VB_DEVICE_DSP, RYN_VB_DEVICE_HDLC,
                                           RYN_VB_DEVICE_RAW_DATA, RYN_VB_DEVICE_BURST, RYN_VB_DEVICE_POTS,
                                           RYN_VB_DEVICE_SLIC, RYN_VB_DEVICE_JTAG}));
    EXPECT_EQ(ids, (std::vector<uint32_t>{0, 1}));

    // Handles: physical kind, stable, the same from the open call; no third span.
    DeviceHandle opened = 0;
    EXPECT_EQ(RynDrvOpenPhysicalDevice(RYN_VB_DEVICE_T1E1, 1, 0, 0, 0, &opened), 0u);
    EXPECT_EQ(opened, device(RYN_VB_DEVICE_T1E1, 1));
    EXPECT_EQ(opened & RYN_HANDLE_KIND_MASK, RYN_HANDLE_PHYSICAL);
    DeviceHandle none = 0;
    EXPECT_TRUE(failed(RynDrvGetDeviceHandle(0, RYN_VB_DEVICE_T1E1, 2, &none)));
    EXPECT_EQ(none, 0xFFFFFFFFu);
}

TEST_F(VirtualBoardTest, AttributesOfTheDriverAndOfObjects) {
    const DeviceHandle dsp = device(RYN_VB_DEVICE_DSP, 1);
    EXPECT_EQ(text(0, RYN_VB_ATTR_DRIVER_VERSION) + "|" + text(dsp, RYN_VB_ATTR_NAME), RYN_VB_DRIVER_VERSION_TEXT "|DSP 1");

    // The label is the application's; the device type is read-only.
    EXPECT_EQ(RynDrvSetAttributeValueUint32(dsp, RYN_VB_ATTR_LABEL, 0xC0FFEE), 0u);
    EXPECT_EQ(attribute(dsp, RYN_VB_ATTR_LABEL), 0xC0FFEEu);
    EXPECT_TRUE(failed(RynDrvSetAttributeValueUint32(dsp, RYN_VB_ATTR_DEVICE_TYPE, 7)));
    uint32_t type = 0, size = 0, flags = 0;
    EXPECT_EQ((std::tuple{RynDrvGetAttributeType(dsp, RYN_VB_ATTR_DEVICE_TYPE, &type, &size, &flags), type, size}),
              std::tuple(0u, RYN_VB_VALUE_UINT32, 4u));

    // A buffer too small for the value: error 9, the size reported, the buffer kept.
    char small[4] = {'x', 'x', 'x', 'x'};
    uint32_t length = 0, value = 0;
    const ResultCode code = RynDrvGetAttributeValue(0, RYN_VB_ATTR_DRIVER_VERSION, small, sizeof small, &length);
    EXPECT_EQ(errorOf(code), 9u);
    EXPECT_EQ(length, 10u);
    EXPECT_EQ(std::memcmp(small, "xxxx", 4), 0);
    EXPECT_EQ(errorOf(RynDrvGetAttributeValueUint32(dsp, 999, &value)), 16u);
}

TEST_F(VirtualBoardTest, EventQueuesDeliverAcrossThreads) {
    const DeviceHandle span = device(RYN_VB_DEVICE_T1E1);
    EventListener listener(span);
    EventData record{};
    std::thread poster([&] { RynDrvSetEventData(span, 0, 77, 1, 2, 3, 4); });
    ASSERT_TRUE(listener.next(record));
    poster.join();
    EXPECT_EQ(std::pair(record.word[3], record.word[7]), std::pair(77u, 4u));
    EXPECT_NE(record.word[0] | record.word[1], 0u);  // board time

    // Other objects' events do not reach this queue; an empty queue says so.
    RynDrvEnable(device(RYN_VB_DEVICE_DSP), 0, 0);
    EXPECT_TRUE(isEmpty(RynDrvGetEventData(listener.queue(), &record)));
    char text[256];
    EXPECT_EQ(RynDrvEventCode2String(0, RYN_VB_EVENT_DTMF_DIGIT, 0, text), 0u);
    EXPECT_STREQ(text, RYN_VB_EVENT_DTMF_DIGIT_TEXT);
}

// Records in bulk: none from a queue that never held one, then what came.
TEST_F(VirtualBoardTest, EventRecordsInBulk) {
    const DeviceHandle span = device(RYN_VB_DEVICE_T1E1);
    EventListener listener(span);
    EventData records[4];
    uint32_t count = 99;
    EXPECT_TRUE(isEmpty(RynDrvGetEventDataEx(listener.queue(), records, 4, &count)));
    EXPECT_EQ(count, 0u);
    RynDrvSetEventData(span, 0, 77, 1, 2, 3, 4);
    EXPECT_EQ(RynDrvGetEventDataEx(listener.queue(), records, 4, &count), 0u);
    EXPECT_EQ(std::pair(count, records[0].word[3]), std::pair(1u, 77u));
}

TEST_F(VirtualBoardTest, ThreadsCallAtOnce) {
    const DeviceHandle dsp = device(RYN_VB_DEVICE_DSP);
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (uint32_t t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            for (uint32_t i = 0; i < 300; ++i) {
                DeviceHandle pipe = 0;
                uint32_t value = 0;
                if (RynDrvWriteReg32(dsp, t, i) != 0 || RynDrvCreatePipe(0, &pipe) != 0 ||
                    RynDrvReadReg32(dsp, t, &value) != 0 || value != i || RynDrvClose(pipe) != 0)
                    ++wrong;
            }
        });
    for (auto &thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

// The board signals a queue's event from inside other threads' requests
// while the application closes that event: the signals stop or fail, and
// nothing else is touched (the sanitizer builds watch the memory).
TEST_F(VirtualBoardTest, EventsClosedUnderTheBoardsSignals) {
    const DeviceHandle span = device(RYN_VB_DEVICE_T1E1);
    for (int round = 0; round < 20; ++round) {
        OsaHandle event = 0;
        DeviceHandle queue = 0;
        RynDrvCreateEvent(&event);
        ASSERT_EQ(RynDrvCreateEventQueue(span, event, &queue), 0u);
        std::atomic<bool> stop{false};
        std::vector<std::thread> posters;
        for (int t = 0; t < 2; ++t)
            posters.emplace_back([&] {
                while (!stop) RynDrvSetEventData(span, 0, 77, 1, 2, 3, 4);
            });
        std::this_thread::sleep_for(std::chrono::microseconds(200));
        RynDrvCloseEvent(event);
        OsaHandle next = 0;
        RynDrvCreateEvent(&next);  // may take the closed event's number, as any new handle may
        std::this_thread::sleep_for(std::chrono::microseconds(200));
        stop = true;
        for (auto &poster : posters) poster.join();
        EXPECT_EQ(RynDrvClose(queue), 0u);
        RynDrvCloseEvent(next);
    }
}

TEST_F(VirtualBoardTest, BlocksPipesAndConnectionsLiveUntilClosed) {
    DeviceHandle pipe = 0, generator = block(RYN_VB_BLOCK_SINE_WAVE_GENERATOR), closed = 0;
    ASSERT_EQ(RynDrvCreatePipe(0, &pipe), 0u);
    EXPECT_EQ(generator & RYN_HANDLE_KIND_MASK, RYN_HANDLE_LOGICAL);
    EXPECT_EQ(RynDrvConnectLogicalDevice(generator, 0, pipe, 0), 0u);
    EXPECT_EQ(RynDrvConnectPipe(pipe, 1, device(RYN_VB_DEVICE_T1E1), 3, nullptr, 0), 0u);
    EXPECT_EQ(RynDrvDisconnectLogicalDevice(generator, 0, pipe, 0), 0u);
    EXPECT_TRUE(failed(RynDrvDisconnectLogicalDevice(generator, 0, pipe, 0)));
    // No blocks on a line device; no block of an unknown type.
    EXPECT_EQ(errorOf(RynDrvCreateLogicalDevice(device(RYN_VB_DEVICE_T1E1), RYN_VB_BLOCK_SINE_WAVE_GENERATOR, 0, 0, &closed)), 11u);
    EXPECT_EQ(errorOf(RynDrvCreateLogicalDevice(device(RYN_VB_DEVICE_DSP), 99, 0, 0, &closed)), 17u);
    EXPECT_EQ(RynDrvClose(generator), 0u);
    uint32_t state = 0;
    EXPECT_EQ(sourceOf(RynDrvGetState(generator, &state)), RYN_VB_SOURCE_ID);
    // The board holds a bounded number of objects: pipes beyond it are refused, and closing makes room.
    std::vector<DeviceHandle> pipes;
    ResultCode last = 0;
    for (DeviceHandle next = 0; pipes.size() < 5000 && (last = RynDrvCreatePipe(0, &next)) == 0;) pipes.push_back(next);
    EXPECT_EQ(errorOf(last), 13u);
    EXPECT_EQ(RynDrvClose(pipes.back()), 0u);
    EXPECT_EQ(RynDrvCreatePipe(0, &pipe), 0u);
}

TEST_F(VirtualBoardTest, LyingRequestsAreAnsweredWithFailures) {
    OsaHandle connection = 0;
    ASSERT_EQ(RynDrvGetHandle(&connection), 0u);
    uint8_t request[64] = {};
    uint8_t reply[64];
    uint32_t returned = 0;
    const auto send = [&](uint32_t function, uint32_t requestLength, uint32_t replyLength) {
        std::memset(reply, 0xAA, sizeof reply);
        returned = 0;
        const int ok = OsaDeviceIoControl(connection, 0x220000u | (function << 2), request, requestLength, reply,
                                          replyLength, &returned);
        uint32_t code = 0;
        std::memcpy(&code, reply + 8, 4);
        return ok != 0 ? code : 0u;
    };
    const DeviceHandle hdlc = device(RYN_VB_DEVICE_HDLC), dsp = device(RYN_VB_DEVICE_DSP);
    std::memcpy(request + 16, &dsp, 4);
    EXPECT_EQ(errorOf(send(0x816, 19, 16)), 12u);  // short request
    EXPECT_EQ(errorOf(send(0x816, 20, 12)), 12u);  // short reply
    EXPECT_EQ(reply[20], 0xAA);                    // nothing past the reply
    EXPECT_EQ(send(0x816, 20, 8), 0u);             // no room for a code: the call fails
    EXPECT_EQ(returned, 0u);
    std::memcpy(request + 16, &hdlc, 4);
    EXPECT_EQ(errorOf(send(0x99E, 20, 16)), 6u);  // a number the HDLC family does not use
    const uint32_t bogus = 0x70000001;
    std::memcpy(request + 16, &bogus, 4);
    EXPECT_EQ(errorOf(send(0x99A, 20, 12)), 11u);
    send(0x870, 20, 12);  // the handle lookup's code stands at offset 4 of its reply
    uint32_t atFour = 0;
    std::memcpy(&atFour, reply + 4, 4);
    EXPECT_EQ(errorOf(atFour), 12u);
}

// Requests of every function number, of random bytes and lengths, to objects
// of every family: answered or refused, never written past the reply block.
TEST_F(VirtualBoardTest, RandomRequestsStayInsideTheirBlocks) {
    OsaHandle connection = 0;
    ASSERT_EQ(RynDrvGetHandle(&connection), 0u);
    std::vector<DeviceHandle> handles{0};  // none, every device, blocks of five families, an unknown handle
    for (int32_t type = RYN_VB_DEVICE_BOARD; type <= RYN_VB_DEVICE_JTAG; ++type) handles.push_back(device(type));
    handles.insert(handles.begin() + 4, device(RYN_VB_DEVICE_DSP, 1));
    for (int32_t type : {RYN_VB_BLOCK_SINE_WAVE_GENERATOR, RYN_VB_BLOCK_DTMF_DETECTOR, RYN_VB_BLOCK_CST_CPT_DETECTOR,
                          RYN_VB_BLOCK_DATA_CONVERTER, RYN_VB_BLOCK_DSP_POTS})
        handles.push_back(block(type));
    handles.push_back(0x70000001);
    // Mostly lengths that the library's requests and replies have, so that the handlers run.
    const uint32_t requestLengths[] = {20, 24, 26, 28, 29,  30,  32,  34,  36,  38,  40,  44,
                                       48, 50, 52, 62, 160, 292, 544, 548, 702, 798, 2022};
    const uint32_t replyLengths[] = {12, 14, 16, 20, 24, 28, 32, 44, 268, 1998, 2048};
    std::mt19937 random(2026);
    const auto pick = [&](const auto &lengths, uint32_t other) {
        return random() % 4 != 0 ? lengths[random() % std::size(lengths)] : random() % other;
    };
    std::vector<uint8_t> request(2100), reply(2100 + 16);
    for (int i = 0; i < 50000; ++i) {
        const uint32_t function = random() % 2 ? 0x80A + random() % 0xCC : 0x99A + random() % 0x20;
        const uint32_t inLength = pick(requestLengths, 2100), outLength = pick(replyLengths, 2100);
        std::generate(request.begin(), request.end(), [&] { return static_cast<uint8_t>(random()); });
        std::memcpy(&request[16], &handles[random() % std::size(handles)], 4);
        std::fill(reply.begin(), reply.end(), 0xA5);
        uint32_t returned = 0;
        OsaDeviceIoControl(connection, 0x220000u | (function << 2), request.data(), inLength, reply.data(), outLength,
                           &returned);
        ASSERT_LE(returned, outLength) << std::hex << function;
        ASSERT_TRUE(std::all_of(reply.begin() + outLength, reply.end(), [](uint8_t b) { return b == 0xA5; }))
            << std::hex << function;
    }
}

}  // namespace
}  // namespace vt
