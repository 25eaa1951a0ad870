// rynctl demo: the library at work on the board, one step after the other,
// each checked against what was sent.
#include <CLI/CLI.hpp>

#include <cstring>
#include <string>

#include "Rynctl.h"

namespace rynctl {
namespace {

constexpr const char *kDigits = "1234#";
constexpr uint32_t kModule = 0;  // the built-in module run on DSP 0
constexpr int32_t kDtmfDialler = RYN_VB_BLOCK_DTMF_DIALLER, kDtmfDetector = RYN_VB_BLOCK_DTMF_DETECTOR;
constexpr int32_t kModuleAttribute = RYN_VB_ATTR_DSP_MODULE, kEntryAttribute = RYN_VB_ATTR_DSP_ENTRY,
                  kProgramStateAttribute = RYN_VB_ATTR_DSP_PROGRAM_STATE;
constexpr uint32_t kDigitEvent = RYN_VB_EVENT_DTMF_DIGIT, kDialDoneEvent = RYN_VB_EVENT_DIALLING_FINISHED;
constexpr uint32_t kRunning = 2;
constexpr int32_t kCallerIdDetector = RYN_VB_BLOCK_CST_CALLER_ID_DETECTOR;
constexpr int32_t kCallerNumberAttribute = RYN_VB_ATTR_CID_NUMBER, kCallerNameAttribute = RYN_VB_ATTR_CID_NAME;
constexpr uint32_t kCallerIdEvent = RYN_VB_EVENT_CALLER_ID;

bool ok(const char *what, ResultCode result) {
    if (RynFailure(result)) printResult(what, result);
    return RynSuccess(result);
}

bool showBoard() {
    std::printf("== 1. board\n");
    char version[80] = {};
    if (!ok("driver version", readText(RYN_DRIVER_PSEUDO_HANDLE, RYN_VB_ATTR_DRIVER_VERSION, version, sizeof version)))
        return false;
    std::printf("driver %s\n", version);
    uint32_t devices = 0;
    int32_t types = 0;
    for (RynDrvIteratorBegin(&types); RynDrvIsIteratorEnd(&types);) {
        int32_t type = 0;
        if (!ok("device types", RynDrvEnumDeviceType_12(0, &types, &type))) return false;
        uint32_t count = 0;
        int32_t ids = 0;
        for (RynDrvIteratorBegin(&ids); RynDrvIsIteratorEnd(&ids); ++count) {
            uint32_t id = 0;
            if (!ok("devices", RynDrvEnumDevice_16(0, type, &ids, &id))) return false;
        }
        const char *name = typeName(type);
        std::printf("  %u x %s\n", count, name != nullptr ? name : std::to_string(type).c_str());
        devices += count;
    }
    std::printf("%u devices\n", devices);
    return devices != 0;
}

bool runModule(DeviceHandle dsp) {
    std::printf("== 2. dsp\n");
    if (!ok("run module", RynDspRunSpm(dsp, kModule))) return false;
    uint32_t module = 0, entry = 0, state = 0;
    if (!ok("running module", RynDrvGetAttributeValueUint32_12(dsp, kModuleAttribute, &module)) ||
        !ok("entry address", RynDrvGetAttributeValueUint32_12(dsp, kEntryAttribute, &entry)) ||
        !ok("program state", RynDrvGetAttributeValueUint32_12(dsp, kProgramStateAttribute, &state)))
        return false;
    std::printf("DSP 0 runs built-in module %u from entry address 0x%X\n", module, entry);
    return module == kModule && state == kRunning;
}

// A pipe joined to time slot kSlot of a span: blocks connected before it send
// on the slot, blocks connected after it hear what the slot receives.
constexpr uint32_t kSlot = 5;

bool slotPipe(const char *span, DeviceHandle &pipe) {
    const auto device = findDevice(span);
    return device && ok("pipe", RynDrvCreatePipe(0, &pipe)) &&
           ok("join the pipe to the slot", RynDrvConnectPipe(pipe, 0, *device, kSlot, nullptr, 0));
}

// Dials kDigits from a dialler into a detector: connected directly, or
// across the spans (the dialler on span 0's time slot kSlot, the detector
// on span 1's).
bool dialAndDetect(DeviceHandle dsp, bool acrossSpans, std::string &detected) {
    std::printf(acrossSpans ? "== 5. span\n" : "== 3. dtmf\n");
    DeviceHandle dialler = 0, detector = 0, queue = 0, sending = 0, receiving = 0;
    OsaHandle event = 0;
    bool good = ok("dialler", RynDrvCreateLogicalDevice(dsp, kDtmfDialler, 0, 0, &dialler)) &&
                ok("detector", RynDrvCreateLogicalDevice(dsp, kDtmfDetector, 0, 0, &detector)) &&
                ok("dialler set-up", RynToneDtmfDiallerInit(dialler, 0, 0, 6, 0)) &&
                ok("detector set-up", RynToneDtmfDetectorInit(detector, 0, 0));
    if (good && acrossSpans) {
        good = slotPipe("t1e1:0", sending) && slotPipe("t1e1:1", receiving) &&
               ok("connect the dialler", RynDrvConnectLogicalDevice(dialler, 0, sending, 0)) &&
               ok("connect the detector", RynDrvConnectLogicalDevice(receiving, 0, detector, 0));
    } else if (good) {
        good = ok("connect", RynDrvConnectLogicalDevice(dialler, 0, detector, 0));
    }
    good = good && ok("event object", RynDrvCreateEvent(&event)) &&
           ok("event queue", RynDrvCreateEventQueue(dsp, event, &queue));  // events of DSP 0's blocks
    if (good) {
        if (acrossSpans)
            std::printf("dialler 0x%08X -> span 0 slot %u ~ span 1 slot %u -> detector 0x%08X, dialling \"%s\"\n",
                        dialler, kSlot, kSlot, detector, kDigits);
        else
            std::printf("dialler 0x%08X -> detector 0x%08X, dialling \"%s\"\n", dialler, detector, kDigits);
        good = ok("dial", RynToneDtmfDial(dialler, kDigits, static_cast<int32_t>(std::strlen(kDigits)), 0, 0));
    }
    // Records as they come, until the dialler says it has finished.
    for (EventData record{}; good;) {
        if (RynDrvGetEventData(queue, &record) != 0) {
            if (RynDrvWaitForSingleEvent(event, 2000) != 0) break;
            continue;
        }
        if (record.word[3] == kDigitEvent && record.word[4] == detector) {
            detected += static_cast<char>(record.word[5]);
            std::printf("  digit '%c' detected  ", static_cast<char>(record.word[5]));
            printEvent(record);
        } else if (record.word[3] == kDialDoneEvent) {
            std::printf("  dialling finished    ");
            printEvent(record);
            break;
        }
    }
    if (queue != 0) RynDrvClose(queue);
    if (event != 0) RynDrvCloseEvent(event);
    for (DeviceHandle object : {detector, dialler, sending, receiving})
        if (object != 0) RynDrvClose(object);
    std::printf("dialled \"%s\", detected \"%s\"\n", kDigits, detected.c_str());
    return good && detected == kDigits;
}

// The SLIC line rings with a caller identification. A pipe joined to the
// line feeds what the telephone set hears to a caller identification
// detector; the line plays on the board's sample clock, in real time, while
// the demo only waits for the detector's event (the message comes in the
// pause after the first ring, some 3 s on).
constexpr const char *kCallerNumber = "5550123456", *kCallerName = "RYN DEMO";

bool ringWithCallerId(DeviceHandle dsp, std::string &heard) {
    std::printf("== 6. callerid\n");
    const auto slic = findDevice("slic:0");
    DeviceHandle pipe = 0, detector = 0, queue = 0;
    OsaHandle event = 0;
    uint32_t state = 0;
    bool good = slic && ok("pipe", RynDrvCreatePipe(0, &pipe)) &&
                ok("join the pipe to the line", RynDrvConnectPipe(pipe, 0, *slic, 0, nullptr, 0)) &&
                ok("detector", RynDrvCreateLogicalDevice(dsp, kCallerIdDetector, 0, 0, &detector)) &&
                ok("detector set-up", RynCstCidDetectorInit(detector, RYN_VB_FSK_BELL202, 0)) &&
                ok("connect the detector", RynDrvConnectLogicalDevice(pipe, 0, detector, 0)) &&
                ok("event object", RynDrvCreateEvent(&event)) &&
                ok("event queue", RynDrvCreateEventQueue(detector, event, &queue)) &&
                ok("caller's name", RynSlicSetUserName(*slic, kCallerName, &state)) &&
                ok("caller's number", RynSlicSetPhoneNumber(*slic, kCallerNumber, &state)) &&
                ok("caller identification", RynSlicSendCallerID(*slic, &state));
    if (good) {
        std::printf("SLIC line 0 -> pipe 0x%08X -> caller identification detector 0x%08X, ringing\n", pipe, detector);
        good = ok("ring", RynSlicStartRingState(*slic, &state));
    }
    for (EventData record{}; good;) {
        if (RynDrvGetEventData(queue, &record) != 0) {
            if (RynDrvWaitForSingleEvent(event, 5000) != 0) break;
            continue;
        }
        if (record.word[3] != kCallerIdEvent) continue;
        std::printf("  message received     ");
        printEvent(record);
        char number[32] = {}, name[32] = {};
        good = ok("number", readText(detector, kCallerNumberAttribute, number, sizeof number)) &&
               ok("name", readText(detector, kCallerNameAttribute, name, sizeof name));
        heard = std::string(number) + " " + name;
        break;
    }
    if (slic) RynSlicStopRingState(*slic, &state);
    if (queue != 0) RynDrvClose(queue);
    if (event != 0) RynDrvCloseEvent(event);
    for (DeviceHandle object : {detector, pipe})
        if (object != 0) RynDrvClose(object);
    const std::string sent = std::string(kCallerNumber) + " " + kCallerName;
    std::printf("sent \"%s\", decoded \"%s\"\n", sent.c_str(), heard.c_str());
    return good && heard == sent;
}

bool loopFrames(uint32_t &returned) {
    std::printf("== 4. hdlc\n");
    const auto channel = findDevice("hdlc:0");
    if (!channel || !ok("sender set-up", RynHdlcSenderInit(*channel, 0, 0, 0, 0, 0, 0)) ||
        !ok("receiver set-up", RynHdlcReceiverInit(*channel, 0, 0, 0, 0, 0, 0, 0)))
        return false;
    const char *const frames[] = {"first frame", "a second, longer frame through the loopback", "#3"};
    for (const char *frame : frames)
        if (!ok("send frame", RynHdlcSendData(*channel, frame, static_cast<uint32_t>(std::strlen(frame)), 0, 0)))
            return false;
    for (const char *frame : frames) {
        char buffer[256] = {};
        uint32_t length = 0;
        if (!ok("read frame", RynHdlcReadData(*channel, buffer, sizeof buffer, &length, nullptr, nullptr, nullptr)))
            return false;
        const bool same = length == std::strlen(frame) && std::memcmp(buffer, frame, length) == 0;
        std::printf("  sent %2zu bytes, read %2u bytes: \"%.*s\"%s\n", std::strlen(frame), length,
                    static_cast<int>(length < sizeof buffer ? length : sizeof buffer), buffer, same ? "" : "  DIFFERS");
        returned += same;
    }
    return returned == 3;
}

int demo() {
    Session session;
    if (!session.ok()) return kExitRefused;
    const bool board = showBoard();
    const auto dsp = findDevice("dsp:0");
    const bool module = dsp && runModule(*dsp);
    std::string detected;
    const bool dtmf = dsp && dialAndDetect(*dsp, false, detected);
    uint32_t frames = 0;
    const bool hdlc = loopFrames(frames);
    std::string crossed;
    const bool span = dsp && dialAndDetect(*dsp, true, crossed);
    std::string caller;
    const bool callerId = dsp && ringWithCallerId(*dsp, caller);
    std::printf("== summary\n");
    std::printf("  board   %s\n", board ? "enumerated" : "FAILED");
    std::printf("  dsp     %s\n", module ? "built-in module running" : "FAILED");
    std::printf("  dtmf    %zu of %zu digits detected%s\n",
                detected.size() <= std::strlen(kDigits) ? detected.size() : 0, std::strlen(kDigits),
                dtmf ? "" : "  FAILED");
    std::printf("  hdlc    %u of 3 frames came back%s\n", frames, hdlc ? "" : "  FAILED");
    std::printf("  span    %zu of %zu digits crossed%s\n", crossed.size() <= std::strlen(kDigits) ? crossed.size() : 0,
                std::strlen(kDigits), span ? "" : "  FAILED");
    std::printf("  callerid %s\n", callerId ? "number and name decoded from the ringing line" : "FAILED");
    const bool good = board && module && dtmf && hdlc && span && callerId;
    std::printf("%s\n", good ? "everything came back as sent" : "something did not come back as sent");
    return good ? kExitDone : kExitRefused;
}

}  // namespace

Command demoCommand(CLI::App &rynctl) {
    CLI::App *app = rynctl.add_subcommand("demo", "the library at work on the board, every step checked");
    char steps[2048];
    std::snprintf(steps, sizeof steps,
                  "Shows the library at work on the board (the virtual board when no other is installed):\n"
                  "  1. board  connects to the driver, prints its version and enumerates its device tree.\n"
                  "  2. dsp    runs built-in signal-processing module %u on DSP 0 (RynDspRunSpm: the library\n"
                  "            picks the image for the DSP's type and ships it) and reads back which module\n"
                  "            the DSP reports running.\n"
                  "  3. dtmf   creates a DTMF dialler and a DTMF detector on DSP 0, connects the dialler's\n"
                  "            output to the detector, waits on a driver event queue for the detector's\n"
                  "            events, dials \"%s\" and prints each digit detected with its event.\n"
                  "  4. hdlc   sets up HDLC channel 0, sends three frames through its loopback and reads\n"
                  "            them back.\n"
                  "  5. span   dials \"%s\" again, now across the T1/E1 spans: the dialler sends on time slot\n"
                  "            %u of span 0 and the detector hears slot %u of span 1, each through a pipe\n"
                  "            joined to its slot.\n"
                  "  6. callerid  rings SLIC line 0 with a caller identification; a pipe joined to the line\n"
                  "            feeds what the telephone set hears to a caller identification detector, and\n"
                  "            the number and name are decoded from the Bell 202 FSK in the pause after the\n"
                  "            first ring (about 3 s: the board runs on its own clock, in real time).\n"
                  "Then a summary. Exits 0 only when every step came back as sent.",
                  kModule, kDigits, kDigits, kSlot, kSlot);
    app->footer(steps);
    return {app, demo};
}

}  // namespace rynctl
