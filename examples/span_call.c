/*
 * span_call.c - a call across the board's two T1/E1 spans, end to end.
 *
 * Span 0 is the calling side, span 1 the answering side, joined by the
 * virtual board's cable. Each side reaches time slot 5 of its span through
 * a pipe joined to the slot: RynDrvConnectPipe(pipe, 0, span, 5, NULL, 0).
 * A block connected before the pipe sends on the slot; a block connected
 * after it hears what the slot receives.
 *
 *  1. The caller seizes slot 5: it sets the slot's signalling bits (robbed
 *     bits on T1, ABCD bits on E1).
 *  2. The answering side sees "Signalling bits changed" for slot 5 and
 *     connects a DTMF detector to the slot.
 *  3. The caller dials digits into the slot from a DTMF dialler; the
 *     answering side collects them.
 *  4. The answering side answers (its own signalling bits); the caller sees
 *     the change.
 *  5. Each side plays a tone into the slot (a sine-wave generator) and the
 *     other side's single-frequency detector must hear it.
 *
 * The call runs once on T1 with mu-law and once on E1 with A-law. The
 * program checks every result code and exits with 0 only if every step
 * worked.
 */
#include <stdio.h>
#include <string.h>

#include "RynHwDll.h"
#include "RynVirtualBoard.h"

#define SLOT 5u
#define SEIZED 0x0Fu /* the signalling value both sides use for "off hook" */

static int check(const char *step, ResultCode code)
{
    if (code == 0) return 1;
    printf("FAILED  %s: result code 0x%08lX (error number %lu)\n", step, (unsigned long)code,
           (unsigned long)(code & 0xFFu));
    return 0;
}

/* The next record with `code` from `source`, waiting on the queue's event
 * object for at most 2 s; 0 when none came. */
static int next_event(DeviceHandle queue, OsaHandle event, uint32_t code, DeviceHandle source, EventData *record)
{
    for (;;) {
        if (RynDrvGetEventData(queue, record) != 0) {
            if (RynDrvWaitForSingleEvent(event, 2000) != 0) return 0;
            continue;
        }
        if (record->word[3] == code && record->word[4] == source) return 1;
    }
}

/* Sets a slot's signalling bits, robbed bits on T1 and ABCD bits on E1. */
static ResultCode signal_slot(DeviceHandle span, uint32_t mode, uint8_t bits)
{
    return mode == RYN_VB_T1E1_MODE_T1 ? RynT1SetChannelizedRobBitData(span, SLOT, bits)
                                       : RynE1SetChannelizedABCDBit(span, SLOT, bits);
}

/* A pipe joined to time slot 5 of a span. */
static int slot_pipe(DeviceHandle span, DeviceHandle *pipe)
{
    return check("create a pipe", RynDrvCreatePipe(0, pipe)) &&
           check("join the pipe to slot 5", RynDrvConnectPipe(*pipe, 0, span, SLOT, NULL, 0));
}

/* A sine-wave generator sending `hertz` on the slot, and a detector of
 * `hertz` hearing the other side. Once set up and connected, the generator
 * plays on the board's sample clock: the application only waits for the
 * detector's event. */
static int exchange_tone(DeviceHandle dsp, DeviceHandle send_pipe, DeviceHandle hear_pipe, double hertz,
                         DeviceHandle queue, OsaHandle event)
{
    DeviceHandle generator = 0, detector = 0;
    const SineToneParams tone = {hertz, -6.0, 0.0};
    const uint32_t frequency = (uint32_t)hertz;
    EventData record;
    int good = check("create a generator", RynDrvCreateLogicalDevice(dsp, RYN_VB_BLOCK_SINE_WAVE_GENERATOR, 0, 0,
                                                                   &generator)) &&
               check("create a tone detector", RynDrvCreateLogicalDevice(dsp, RYN_VB_BLOCK_SINGLE_FREQUENCY_DETECTOR,
                                                                       0, 0, &detector)) &&
               check("set up the generator", RynToneSineWaveGeneratorInit(generator, 0, &tone, 1, 0)) &&
               check("set up the detector", RynToneSingleDetectorInit(detector, 0, &frequency, 1, 0, 0, 0)) &&
               check("the detector hears the slot", RynDrvConnectLogicalDevice(hear_pipe, 0, detector, 0)) &&
               check("the generator sends on the slot", RynDrvConnectLogicalDevice(generator, 0, send_pipe, 0));
    if (good) {
        good = next_event(queue, event, RYN_VB_EVENT_TONE_DETECTED, detector, &record);
        printf("  %.0f Hz tone %s\n", hertz, good ? "heard across the span" : "NOT heard");
    }
    if (detector != 0) RynDrvClose(detector);
    if (generator != 0) RynDrvClose(generator);
    return good;
}

static int call(uint32_t mode, uint32_t law, const char *digits)
{
    DeviceHandle board = 0, caller = 0, answerer = 0, dsp = 0, queue = 0;
    DeviceHandle calling_pipe = 0, answering_pipe = 0, dialler = 0, detector = 0;
    OsaHandle event = 0;
    EventData record;
    char heard[32] = "";
    size_t count = 0;
    int good;

    printf("%s, %s:\n", mode == RYN_VB_T1E1_MODE_T1 ? "T1" : "E1", law == RYN_VB_LAW_MU ? "mu-law" : "A-law");
    good = check("find the board", RynDrvGetDeviceHandle(0, RYN_VB_DEVICE_BOARD, 0, &board)) &&
           check("find span 0", RynDrvGetDeviceHandle(0, RYN_VB_DEVICE_T1E1, 0, &caller)) &&
           check("find span 1", RynDrvGetDeviceHandle(0, RYN_VB_DEVICE_T1E1, 1, &answerer)) &&
           check("find DSP 0", RynDrvGetDeviceHandle(0, RYN_VB_DEVICE_DSP, 0, &dsp)) &&
           check("choose the codec law", RynBrdCodecSetLaw(board, law)) &&
           check("set span 0's mode", RynT1E1SetLiMode(caller, mode)) &&
           check("set span 1's mode", RynT1E1SetLiMode(answerer, mode)) &&
           check("create an event object", RynDrvCreateEvent(&event)) &&
           check("create an event queue", RynDrvCreateEventQueue(0, event, &queue)) &&
           slot_pipe(caller, &calling_pipe) && slot_pipe(answerer, &answering_pipe) &&
           /* 1. The caller seizes the slot. */
           check("seize slot 5", signal_slot(caller, mode, SEIZED));
    /* 2. The answering side sees it and listens on the slot. */
    good = good && next_event(queue, event, RYN_VB_EVENT_SIGNALLING_CHANGED, answerer, &record) &&
           record.word[5] == SLOT && record.word[6] == SEIZED;
    if (good) printf("  slot %u seized\n", SLOT);
    good = good &&
           check("create a DTMF detector", RynDrvCreateLogicalDevice(dsp, RYN_VB_BLOCK_DTMF_DETECTOR, 0, 0, &detector)) &&
           check("set up the detector", RynToneDtmfDetectorInit(detector, 0, 0)) &&
           check("the detector hears the slot", RynDrvConnectLogicalDevice(answering_pipe, 0, detector, 0)) &&
           /* 3. The caller dials into the slot. */
           check("create a DTMF dialler", RynDrvCreateLogicalDevice(dsp, RYN_VB_BLOCK_DTMF_DIALLER, 0, 0, &dialler)) &&
           check("set up the dialler", RynToneDtmfDiallerInit(dialler, 0, 0, 6, 0)) &&
           check("the dialler sends on the slot", RynDrvConnectLogicalDevice(dialler, 0, calling_pipe, 0)) &&
           check("dial", RynToneDtmfDial(dialler, digits, (int32_t)strlen(digits), 0, 0));
    while (good && count + 1 < sizeof heard && count < strlen(digits) &&
           next_event(queue, event, RYN_VB_EVENT_DTMF_DIGIT, detector, &record))
        heard[count++] = (char)record.word[5];
    if (good) {
        printf("  dialled \"%s\", heard \"%s\"\n", digits, heard);
        good = strcmp(heard, digits) == 0;
    }
    /* 4. The answering side answers. */
    good = good && check("answer", signal_slot(answerer, mode, SEIZED)) &&
           next_event(queue, event, RYN_VB_EVENT_SIGNALLING_CHANGED, caller, &record) && record.word[5] == SLOT &&
           record.word[6] == SEIZED;
    if (good) printf("  answered\n");
    /* 5. A tone each way. */
    good = good && exchange_tone(dsp, answering_pipe, calling_pipe, 1000.0, queue, event) &&
           exchange_tone(dsp, calling_pipe, answering_pipe, 1800.0, queue, event);

    if (dialler != 0) RynDrvClose(dialler);
    if (detector != 0) RynDrvClose(detector);
    if (calling_pipe != 0) RynDrvClose(calling_pipe);
    if (answering_pipe != 0) RynDrvClose(answering_pipe);
    if (queue != 0) RynDrvClose(queue);
    if (event != 0) RynDrvCloseEvent(event);
    /* Both spans return to their start (idle signalling) for the next call. */
    if (caller != 0) RynDrvClose(caller);
    if (answerer != 0) RynDrvClose(answerer);
    return good;
}

int main(void)
{
    int good;
    if (!check("connect", RynDrvConnectLib())) return 1;
    good = call(RYN_VB_T1E1_MODE_T1, RYN_VB_LAW_MU, "5551234") && call(RYN_VB_T1E1_MODE_E1, RYN_VB_LAW_A, "0800#*9");
    RynDrvReleaseLib();
    printf(good ? "both calls went through\n" : "a call FAILED\n");
    return good ? 0 : 1;
}
