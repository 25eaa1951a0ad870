/**
 * @file RynVirtualBoard.h
 * @brief The numbering of the virtual board, the driver module that stands in
 * for a board (see docs/virtual-board.md).
 *
 * Device and block types, event codes with their texts, attribute
 * identifiers and the board's own setting and status values, as an
 * application passes them to the library's calls and reads them back. The
 * board's driver module is built from these same names, so this header is
 * the one place the numbers are written. Handles are not listed: they come
 * from the library's calls.
 *
 * The header needs nothing but the preprocessor and compiles as C99 and C++.
 * Types and attribute identifiers are plain int constants (the calls take
 * int32_t); event codes and values are unsigned, as the event record words
 * and attribute values that carry them.
 */
#ifndef RYN_VIRTUAL_BOARD_H
#define RYN_VIRTUAL_BOARD_H

/**
 * @defgroup ryn_vb_devices Device types
 * @brief The board's physical device types, as RynDrvEnumDeviceType(0, ...)
 * lists them and attribute 1 reports them; RynDrvGetDeviceHandle(0, type,
 * number, ...) takes them. Event queues and pipes report their own types.
 * @{
 */
#define RYN_VB_DEVICE_BOARD 1          /**< Board controls (one device). */
#define RYN_VB_DEVICE_T1E1 2           /**< T1/E1 span (two devices, joined by a virtual cable). */
#define RYN_VB_DEVICE_DSP 3            /**< DSP (DSP 0 word-addressed, DSP 1 byte-addressed). */
#define RYN_VB_DEVICE_HDLC 4           /**< HDLC and SS7 channel (two devices). */
#define RYN_VB_DEVICE_RAW_DATA 5       /**< Raw-data channel. */
#define RYN_VB_DEVICE_BURST 6          /**< Burst channel. */
#define RYN_VB_DEVICE_POTS 7           /**< POTS line (the board as a telephone set). */
#define RYN_VB_DEVICE_SLIC 8           /**< SLIC line (the board as the exchange). */
#define RYN_VB_DEVICE_JTAG 9           /**< JTAG port. */
#define RYN_VB_DEVICE_EVENT_QUEUE 200  /**< Driver event queue (attribute 1 and event word 2 only). */
#define RYN_VB_DEVICE_PIPE 201         /**< Pipe (attribute 1 and event word 2 only). */
/** @} */

/**
 * @defgroup ryn_vb_blocks Block types
 * @brief Signal-processing blocks, created on a DSP with
 * RynDrvCreateLogicalDevice(dsp, type, 0, 0, &block) and reported by their
 * attribute 1.
 * @{
 */
#define RYN_VB_BLOCK_CONST_VALUE_GENERATOR 100        /**< Constant-value generator. */
#define RYN_VB_BLOCK_VALUE_SAMPLER 101                /**< Value sampler. */
#define RYN_VB_BLOCK_EFFECTS_GENERATOR 102            /**< Effects generator (noise, square wave, ramp). */
#define RYN_VB_BLOCK_SINE_WAVE_GENERATOR 103          /**< Sine-wave generator. */
#define RYN_VB_BLOCK_DTMF_GENERATOR 104               /**< DTMF generator (one digit). */
#define RYN_VB_BLOCK_DTMF_DIALLER 105                 /**< DTMF dialler (RynToneDtmfDial). */
#define RYN_VB_BLOCK_MF_DIALLER 106                   /**< MF (R1) dialler. */
#define RYN_VB_BLOCK_SEQUENCE_GENERATOR 107           /**< Sequence generator. */
#define RYN_VB_BLOCK_SILENCE_DETECTOR 110             /**< Silence detector. */
#define RYN_VB_BLOCK_DTMF_DETECTOR 111                /**< DTMF detector. */
#define RYN_VB_BLOCK_FSK_DETECTOR 112                 /**< FSK detector (Bell 202 or V.23). */
#define RYN_VB_BLOCK_DIAL_TONE_DETECTOR 113           /**< Dial-tone detector. */
#define RYN_VB_BLOCK_MF_DETECTOR 114                  /**< MF (R1) detector. */
#define RYN_VB_BLOCK_DUAL_FREQUENCY_DETECTOR 115      /**< Dual-frequency detector. */
#define RYN_VB_BLOCK_SINGLE_FREQUENCY_DETECTOR 116    /**< Single-frequency detector. */
#define RYN_VB_BLOCK_CST_DTMF_DIALLER 120             /**< Telephony DTMF dialler (RynCstDtmfDial). */
#define RYN_VB_BLOCK_CST_VOICE_ACTIVITY_DETECTOR 121  /**< Telephony voice activity detector. */
#define RYN_VB_BLOCK_CST_DTMF_DETECTOR 122            /**< Telephony DTMF detector. */
#define RYN_VB_BLOCK_CST_COMFORT_NOISE_GENERATOR 123  /**< Telephony comfort noise generator. */
#define RYN_VB_BLOCK_CST_VOICE_MIXER 124              /**< Telephony voice mixer. */
#define RYN_VB_BLOCK_CST_ECHO_CANCELLER 125           /**< Telephony echo canceller. */
#define RYN_VB_BLOCK_CST_CPT_DETECTOR 126             /**< Telephony call-progress tone detector. */
#define RYN_VB_BLOCK_CST_CPT_GENERATOR 127            /**< Telephony call-progress tone generator. */
#define RYN_VB_BLOCK_CST_CALLER_ID_DETECTOR 128       /**< Telephony caller identification detector. */
#define RYN_VB_BLOCK_DATA_CONVERTER 140               /**< Data converter and mixer. */
#define RYN_VB_BLOCK_DSP_POTS 150                     /**< POTS line through a DSP block. */
/** @} */

/**
 * @defgroup ryn_vb_events Event codes
 * @brief Word 3 of an event record, each with the text
 * RynDrvEventCode2String gives for it (the _TEXT macro beside it).
 * @{
 */
#define RYN_VB_EVENT_DEVICE_ENABLED 0x0001u                                /**< RynDrvEnable ran. */
#define RYN_VB_EVENT_DEVICE_ENABLED_TEXT "Device enabled"                  /**< Text of RYN_VB_EVENT_DEVICE_ENABLED. */
#define RYN_VB_EVENT_DEVICE_DISABLED 0x0002u                               /**< RynDrvDisable ran. */
#define RYN_VB_EVENT_DEVICE_DISABLED_TEXT "Device disabled"                /**< Text of RYN_VB_EVENT_DEVICE_DISABLED. */
#define RYN_VB_EVENT_DEVICE_RESET 0x0003u                                  /**< RynDrvReset ran. */
#define RYN_VB_EVENT_DEVICE_RESET_TEXT "Device reset"                      /**< Text of RYN_VB_EVENT_DEVICE_RESET. */
#define RYN_VB_EVENT_APPLICATION 0x0004u                                   /**< A record of the application's own. */
#define RYN_VB_EVENT_APPLICATION_TEXT "Application event"                  /**< Text of RYN_VB_EVENT_APPLICATION. */
#define RYN_VB_EVENT_LAYER1_CHANGED 0x0100u                                /**< T1/E1 layer-1 status word changed. */
#define RYN_VB_EVENT_LAYER1_CHANGED_TEXT "Layer 1 status changed"          /**< Text of RYN_VB_EVENT_LAYER1_CHANGED. */
#define RYN_VB_EVENT_ALARM_CHANGED 0x0101u                                 /**< T1/E1 AIS or RAI received changed. */
#define RYN_VB_EVENT_ALARM_CHANGED_TEXT "Alarm state changed"              /**< Text of RYN_VB_EVENT_ALARM_CHANGED. */
#define RYN_VB_EVENT_SIGNALLING_CHANGED 0x0102u                            /**< T1/E1 received signalling of a slot changed. */
#define RYN_VB_EVENT_SIGNALLING_CHANGED_TEXT "Signalling bits changed"     /**< Text of RYN_VB_EVENT_SIGNALLING_CHANGED. */
#define RYN_VB_EVENT_HOOK_CHANGED 0x0200u                                  /**< A line's hook state changed. */
#define RYN_VB_EVENT_HOOK_CHANGED_TEXT "Hook state changed"                /**< Text of RYN_VB_EVENT_HOOK_CHANGED. */
#define RYN_VB_EVENT_RINGING_STARTED 0x0201u                               /**< A line started ringing. */
#define RYN_VB_EVENT_RINGING_STARTED_TEXT "Ringing started"                /**< Text of RYN_VB_EVENT_RINGING_STARTED. */
#define RYN_VB_EVENT_RINGING_STOPPED 0x0202u                               /**< A line stopped ringing (word 5: RYN_VB_RING_STOP_...). */
#define RYN_VB_EVENT_RINGING_STOPPED_TEXT "Ringing stopped"                /**< Text of RYN_VB_EVENT_RINGING_STOPPED. */
#define RYN_VB_EVENT_FRAME_RECEIVED 0x0300u                                /**< HDLC frame received. */
#define RYN_VB_EVENT_FRAME_RECEIVED_TEXT "Frame received"                  /**< Text of RYN_VB_EVENT_FRAME_RECEIVED. */
#define RYN_VB_EVENT_FRAME_SENT 0x0301u                                    /**< HDLC frame sent. */
#define RYN_VB_EVENT_FRAME_SENT_TEXT "Frame sent"                          /**< Text of RYN_VB_EVENT_FRAME_SENT. */
#define RYN_VB_EVENT_RAW_DATA_RECEIVED 0x0302u                             /**< Raw data received. */
#define RYN_VB_EVENT_RAW_DATA_RECEIVED_TEXT "Raw data received"            /**< Text of RYN_VB_EVENT_RAW_DATA_RECEIVED. */
#define RYN_VB_EVENT_BURST_DONE 0x0303u                                    /**< Burst transfer done. */
#define RYN_VB_EVENT_BURST_DONE_TEXT "Burst transfer done"                 /**< Text of RYN_VB_EVENT_BURST_DONE. */
#define RYN_VB_EVENT_PROGRAM_STARTED 0x0400u                               /**< DSP program started. */
#define RYN_VB_EVENT_PROGRAM_STARTED_TEXT "DSP program started"            /**< Text of RYN_VB_EVENT_PROGRAM_STARTED. */
#define RYN_VB_EVENT_PROGRAM_STOPPED 0x0401u                               /**< DSP program stopped. */
#define RYN_VB_EVENT_PROGRAM_STOPPED_TEXT "DSP program stopped"            /**< Text of RYN_VB_EVENT_PROGRAM_STOPPED. */
#define RYN_VB_EVENT_DTMF_DIGIT 0x0500u                                    /**< DTMF digit detected (word 5 the character). */
#define RYN_VB_EVENT_DTMF_DIGIT_TEXT "DTMF digit detected"                 /**< Text of RYN_VB_EVENT_DTMF_DIGIT. */
#define RYN_VB_EVENT_MF_DIGIT 0x0501u                                      /**< MF digit detected (word 5 the character). */
#define RYN_VB_EVENT_MF_DIGIT_TEXT "MF digit detected"                     /**< Text of RYN_VB_EVENT_MF_DIGIT. */
#define RYN_VB_EVENT_TONE_DETECTED 0x0502u                                 /**< A detector's tone started. */
#define RYN_VB_EVENT_TONE_DETECTED_TEXT "Tone detected"                    /**< Text of RYN_VB_EVENT_TONE_DETECTED. */
#define RYN_VB_EVENT_TONE_ENDED 0x0503u                                    /**< A detector's tone stopped. */
#define RYN_VB_EVENT_TONE_ENDED_TEXT "Tone ended"                          /**< Text of RYN_VB_EVENT_TONE_ENDED. */
#define RYN_VB_EVENT_CALL_PROGRESS 0x0504u                                 /**< Call-progress tone detected (word 5 RYN_VB_CPT_...). */
#define RYN_VB_EVENT_CALL_PROGRESS_TEXT "Call progress tone detected"      /**< Text of RYN_VB_EVENT_CALL_PROGRESS. */
#define RYN_VB_EVENT_SILENCE 0x0505u                                       /**< Silence began or ended. */
#define RYN_VB_EVENT_SILENCE_TEXT "Silence detected"                       /**< Text of RYN_VB_EVENT_SILENCE. */
#define RYN_VB_EVENT_DIALLING_FINISHED 0x0506u                             /**< A dialler played its whole string. */
#define RYN_VB_EVENT_DIALLING_FINISHED_TEXT "Dialling finished"            /**< Text of RYN_VB_EVENT_DIALLING_FINISHED. */
#define RYN_VB_EVENT_SEQUENCE_SENT 0x0507u                                 /**< A sequence or call-progress tone was played. */
#define RYN_VB_EVENT_SEQUENCE_SENT_TEXT "Sequence sent"                    /**< Text of RYN_VB_EVENT_SEQUENCE_SENT. */
#define RYN_VB_EVENT_DATA_BYTE 0x0508u                                     /**< FSK byte received (word 5 the byte). */
#define RYN_VB_EVENT_DATA_BYTE_TEXT "Data byte received"                   /**< Text of RYN_VB_EVENT_DATA_BYTE. */
#define RYN_VB_EVENT_CALLER_ID 0x0509u                                     /**< Caller identification message received. */
#define RYN_VB_EVENT_CALLER_ID_TEXT "Caller identification received"       /**< Text of RYN_VB_EVENT_CALLER_ID. */
/** @} */

/**
 * @defgroup ryn_vb_attributes Attribute identifiers
 * @brief The attribute argument of RynDrvGetAttributeValue... and
 * RynDrvSetAttributeValue...: the driver's (handle 0), every object's, and
 * each family's own. Families reuse identifiers from 40 and from 100, so
 * each name carries its family.
 * @{
 */
#define RYN_VB_ATTR_DRIVER_VERSION 13        /**< Handle 0: driver version (text). */
#define RYN_VB_ATTR_BOARD_NAME 14            /**< Handle 0: the board's name (text). */
#define RYN_VB_ATTR_DEVICE_TYPE 1            /**< Every object: device or block type. */
#define RYN_VB_ATTR_DEVICE_NUMBER 2          /**< Every object: number among the devices of its type. */
#define RYN_VB_ATTR_NAME 3                   /**< Every object: name (text). */
#define RYN_VB_ATTR_STATE 4                  /**< Every object: state (RYN_VB_STATE_...). */
#define RYN_VB_ATTR_LABEL 5                  /**< Every object: the application's own value (settable). */
#define RYN_VB_ATTR_AUDIO_OUT 30             /**< Generators, diallers, comfort noise and the lines: their next samples (binary). */
#define RYN_VB_ATTR_AUDIO_IN 31              /**< Detectors, sampler, telephony sinks: samples to run (binary, settable). */
#define RYN_VB_ATTR_DSP_TYPE 32              /**< DSP: DSP type (RYN_VB_DSP_TYPE_...). */
#define RYN_VB_ATTR_DSP_MODULE 33            /**< DSP: module of the started program, or RYN_VB_DSP_NO_MODULE. */
#define RYN_VB_ATTR_DSP_ENTRY 34             /**< DSP: entry address of the started program. */
#define RYN_VB_ATTR_DSP_PROGRAM_STATE 35     /**< DSP: program state (RYN_VB_DSP_PROGRAM_...). */
#define RYN_VB_ATTR_DSP_UNITS_LOADED 36      /**< DSP: units the current load wrote. */
#define RYN_VB_ATTR_DSP_MODULE_FLAG 37       /**< DSP: module flag of the start. */
#define RYN_VB_ATTR_T1E1_STATUS 40           /**< T1/E1: layer-1 status word (RYN_VB_T1E1_STATUS_...). */
#define RYN_VB_ATTR_T1E1_MODE 41             /**< T1/E1: "T1" or "E1" (text). */
#define RYN_VB_ATTR_T1E1_DATA_LINK 42        /**< T1/E1: data-link bits received. */
#define RYN_VB_ATTR_POTS_RINGING 40          /**< POTS: the exchange rings the line (Boolean, settable). */
#define RYN_VB_ATTR_POTS_OFF_HOOK 41         /**< POTS: the line is off hook (Boolean). */
#define RYN_VB_ATTR_POTS_DIALLED 42          /**< POTS: digits dialled (text). */
#define RYN_VB_ATTR_POTS_FLASHES 43          /**< POTS: hook flashes since going off hook. */
#define RYN_VB_ATTR_SLIC_HANDSET 40          /**< SLIC: handset off hook (Boolean, settable). */
#define RYN_VB_ATTR_SLIC_TONE 41             /**< SLIC: tone played (RYN_VB_SLIC_TONE_...). */
#define RYN_VB_ATTR_SLIC_CALLER_ID 42        /**< SLIC: the last caller identification (text). */
#define RYN_VB_ATTR_SLIC_STATE 43            /**< SLIC: state word (RYN_VB_SLIC_STATE_...). */
#define RYN_VB_ATTR_SLIC_CALLER_ID_FORMAT 44 /**< SLIC: caller identification message type sent (RYN_VB_CID_..._MESSAGE, settable). */
#define RYN_VB_ATTR_SLIC_SET_DIGITS 45       /**< SLIC: the off-hook set dials these DTMF digits (text, set only). */
#define RYN_VB_ATTR_CLOCK_SOURCE 40          /**< Board controls: clock source (RYN_VB_CLOCK_SOURCE_...). */
#define RYN_VB_ATTR_CLOCK_MODE 41            /**< Board controls: clock mode (RYN_VB_CLOCK_MODE_...). */
#define RYN_VB_ATTR_CODEC_LAW 42             /**< Board controls: codec law (RYN_VB_LAW_...). */
#define RYN_VB_ATTR_CONSTANT_SLOTS 43        /**< Board controls: constant time slots (binary). */
#define RYN_VB_ATTR_SAMPLE_CLOCK_RATE 44     /**< Board controls: sample clock rate (RYN_VB_SAMPLE_CLOCK_..., or N times real time; settable). */
#define RYN_VB_ATTR_SAMPLE_CLOCK_STEP 45     /**< Board controls: runs N frames of the sample clock at once (set only). */
#define RYN_VB_ATTR_SAMPLE_CLOCK_FRAMES 46   /**< Board controls: frames the sample clock has run. */
#define RYN_VB_ATTR_JTAG_INSTRUCTION 40      /**< JTAG: the instruction in force. */
#define RYN_VB_ATTR_JTAG_ENABLED 41          /**< JTAG: the port is enabled (Boolean). */
#define RYN_VB_ATTR_HDLC_QUEUED 100          /**< HDLC: frames queued. */
#define RYN_VB_ATTR_HDLC_DROPPED 101         /**< HDLC: frames dropped. */
#define RYN_VB_ATTR_HDLC_SENT 102            /**< HDLC: frames sent. */
#define RYN_VB_ATTR_HDLC_RECEIVED 103        /**< HDLC: frames received. */
#define RYN_VB_ATTR_HDLC_CROSS_CONNECT 104   /**< HDLC: frames go to the other channel (Boolean, settable). */
#define RYN_VB_ATTR_HDLC_QUEUE_CAPACITY 105  /**< HDLC: receive queue capacity. */
#define RYN_VB_ATTR_HDLC_FILTERED 106        /**< HDLC: SS7 signal units filtered. */
#define RYN_VB_ATTR_RAW_WAITING 100          /**< Raw data: bytes waiting. */
#define RYN_VB_ATTR_RAW_DROPPED 101          /**< Raw data: bytes dropped. */
#define RYN_VB_ATTR_RAW_SENT 102             /**< Raw data: bytes sent. */
#define RYN_VB_ATTR_RAW_RECEIVED 103         /**< Raw data: bytes received. */
#define RYN_VB_ATTR_RAW_CAPACITY 104         /**< Raw data: receive buffer capacity. */
#define RYN_VB_ATTR_BURST_WAITING 100        /**< Burst: bytes of the unread block. */
#define RYN_VB_ATTR_BURST_SENT 101           /**< Burst: blocks sent. */
#define RYN_VB_ATTR_BURST_OVERWRITTEN 102    /**< Burst: blocks overwritten unread. */
#define RYN_VB_ATTR_BURST_LIMIT 103          /**< Burst: block limit in bytes. */
#define RYN_VB_ATTR_BURST_PRELOADED 104      /**< Burst: bytes preloaded. */
#define RYN_VB_ATTR_FSK_COUNT 40             /**< FSK detector: bytes received since the set-up. */
#define RYN_VB_ATTR_FSK_BYTES 41             /**< FSK detector: the last bytes received (binary). */
#define RYN_VB_ATTR_CST_SET_UP 40            /**< Telephony blocks: how the block was set up (RYN_VB_CST_...). */
#define RYN_VB_ATTR_CID_DATE 41              /**< Caller identification detector: date and time (text). */
#define RYN_VB_ATTR_CID_NUMBER 42            /**< Caller identification detector: number (text). */
#define RYN_VB_ATTR_CID_NAME 43              /**< Caller identification detector: name (text). */
#define RYN_VB_ATTR_CID_CHECKSUM_OK 44       /**< Caller identification detector: checksum right (Boolean). */
#define RYN_VB_ATTR_CONVERTER_SET_UP 40      /**< Data converter: set up (0 or 1). */
#define RYN_VB_ATTR_CONVERTER_CONVERSION 41  /**< Data converter: conversion (RYN_VB_CONVERT_...). */
#define RYN_VB_ATTR_CONVERTER_BLOCK 42       /**< Data converter: samples per transfer block. */
#define RYN_VB_ATTR_DSP_POTS_HOOK 40         /**< DSP POTS: hook state (RYN_VB_HOOK_...). */
#define RYN_VB_ATTR_DSP_POTS_MONITOR 41      /**< DSP POTS: line monitor on (Boolean). */
#define RYN_VB_ATTR_DSP_POTS_DAA 42          /**< DSP POTS: the DAA registers (binary). */
/** @} */

/**
 * @defgroup ryn_vb_attribute_forms Attribute forms
 * @brief What RynDrvGetAttributeType answers: the value type, and flags
 * telling whether the attribute can be set.
 * @{
 */
#define RYN_VB_VALUE_TEXT 0u        /**< Text; its size counts the terminator. */
#define RYN_VB_VALUE_BOOLEAN 1u     /**< Boolean, 32 bits. */
#define RYN_VB_VALUE_UINT32 2u      /**< Unsigned 32-bit value. */
#define RYN_VB_VALUE_BINARY 3u      /**< Binary block. */
#define RYN_VB_ACCESS_READ_ONLY 1u  /**< Flags of a read-only attribute. */
#define RYN_VB_ACCESS_SETTABLE 3u   /**< Flags of a settable attribute. */
/** @} */

/**
 * @defgroup ryn_vb_board Board, objects and limits
 * @brief The driver's texts, object states, the SourceId of the board's own
 * result codes and the sizes an application plans its buffers by.
 * @{
 */
#define RYN_VB_DRIVER_VERSION_TEXT "1.01.47.0"  /**< Value of RYN_VB_ATTR_DRIVER_VERSION. */
#define RYN_VB_BOARD_NAME_TEXT "Virtual board"  /**< Value of RYN_VB_ATTR_BOARD_NAME. */
#define RYN_VB_SOURCE_ID 0x72u                  /**< SourceId (bits 23..30) of the board's result codes. */
#define RYN_VB_STATE_IDLE 0u                    /**< Object state: idle (the start, and after a reset). */
#define RYN_VB_STATE_ENABLED 1u                 /**< Object state: enabled. */
#define RYN_VB_STATE_DISABLED 2u                /**< Object state: disabled. */
#define RYN_VB_SAMPLE_RATE 8000u                /**< Samples per second of every block. */
#define RYN_VB_AUDIO_MAX_BYTES 65536u           /**< Largest value of RYN_VB_ATTR_AUDIO_OUT / _IN per call. */
#define RYN_VB_BLOCKS_PER_DSP 64u               /**< Blocks one DSP holds. */
#define RYN_VB_EVENT_QUEUE_CAPACITY 256u        /**< Records a driver event queue holds. */
#define RYN_VB_HDLC_FRAME_MAX 8191u             /**< Longest HDLC frame in bytes. */
#define RYN_VB_HDLC_QUEUE_CAPACITY 64u          /**< Frames an HDLC receive queue holds. */
#define RYN_VB_RAW_SEND_MAX 8191u               /**< Most bytes of one raw-data send. */
#define RYN_VB_RAW_BUFFER_CAPACITY 16384u       /**< Bytes a raw-data receive buffer holds. */
#define RYN_VB_BURST_BLOCK_MAX 4096u            /**< Largest burst block in bytes. */
/** @} */

/**
 * @defgroup ryn_vb_lines Line interface values
 * @brief Settings and status values of the T1/E1 spans, the POTS and SLIC
 * lines, the board controls and the JTAG port.
 * @{
 */
#define RYN_VB_T1E1_MODE_T1 0u                /**< SetLiMode: T1 (the start). */
#define RYN_VB_T1E1_MODE_E1 1u                /**< SetLiMode: E1. */
#define RYN_VB_T1E1_LOOP_NONE 0u              /**< SetLineLoop: no loop. */
#define RYN_VB_T1E1_LOOP_LOCAL 1u             /**< SetLineLoop: local loop. */
#define RYN_VB_T1E1_LOOP_REMOTE 2u            /**< SetLineLoop: remote loop. */
#define RYN_VB_T1E1_ALARM_AIS 0x1u            /**< AlarmOn / AlarmOff mask: AIS. */
#define RYN_VB_T1E1_ALARM_RAI 0x2u            /**< AlarmOn / AlarmOff mask: RAI. */
#define RYN_VB_T1E1_TRANSMITTER_OFF 0u        /**< XmitPinControl: transmitter off. */
#define RYN_VB_T1E1_TRANSMITTER_ON 1u         /**< XmitPinControl: transmitter on (the start). */
#define RYN_VB_T1E1_TERMINATION_100_OHM 0u    /**< SetLineTermination: 100 ohm. */
#define RYN_VB_T1E1_TERMINATION_120_OHM 1u    /**< SetLineTermination: 120 ohm. */
#define RYN_VB_T1E1_TERMINATION_75_OHM 2u     /**< SetLineTermination: 75 ohm. */
#define RYN_VB_T1E1_PRBS_OFF 0u               /**< SetPrbsConfig pattern: off. */
#define RYN_VB_T1E1_PRBS_15 1u                /**< SetPrbsConfig pattern: 2^15-1. */
#define RYN_VB_T1E1_PRBS_20 2u                /**< SetPrbsConfig pattern: 2^20-1. */
#define RYN_VB_T1E1_PRBS_23 3u                /**< SetPrbsConfig pattern: 2^23-1. */
#define RYN_VB_T1E1_DEFECT_BIT_ERROR 0u       /**< InsertSingleBitDefect: a bit error. */
#define RYN_VB_T1E1_DEFECT_CODE_VIOLATION 1u  /**< InsertSingleBitDefect: a code violation. */
#define RYN_VB_T1E1_STATUS_FRAME_SYNC 0x01u   /**< Layer-1 status: frame sync. */
#define RYN_VB_T1E1_STATUS_LOS 0x02u          /**< Layer-1 status: loss of signal. */
#define RYN_VB_T1E1_STATUS_AIS 0x04u          /**< Layer-1 status: AIS received. */
#define RYN_VB_T1E1_STATUS_RAI 0x08u          /**< Layer-1 status: RAI received. */
#define RYN_VB_T1E1_STATUS_LOOP 0x10u         /**< Layer-1 status: a loop is set. */
#define RYN_VB_T1E1_STATUS_PRBS_SYNC 0x20u    /**< Layer-1 status: PRBS sync. */
#define RYN_VB_HOOK_ON 0u                     /**< Hook state event word 5 and DSP POTS hook: on hook. */
#define RYN_VB_HOOK_OFF 1u                    /**< Hook state event word 5 and DSP POTS hook: off hook. */
#define RYN_VB_RING_STOP_REQUESTED 0u         /**< Ringing stopped, word 5: the exchange or application ended it. */
#define RYN_VB_RING_STOP_ANSWERED 1u          /**< Ringing stopped, word 5: the line was answered. */
#define RYN_VB_RING_STOP_RESET 2u             /**< Ringing stopped, word 5: the SLIC was held in reset. */
#define RYN_VB_POTS_IMPEDANCE_600_OHM 0u      /**< POTS SetLiMode: 600 ohm. */
#define RYN_VB_POTS_IMPEDANCE_900_OHM 1u      /**< POTS SetLiMode: 900 ohm. */
#define RYN_VB_POTS_IMPEDANCE_COMPLEX 2u      /**< POTS SetLiMode: complex impedance. */
#define RYN_VB_SLIC_STATE_OFF_HOOK 0x1u       /**< SLIC state word: handset off hook. */
#define RYN_VB_SLIC_STATE_RINGING 0x2u        /**< SLIC state word: ringing. */
#define RYN_VB_SLIC_STATE_AUDIO 0x4u          /**< SLIC state word: audio on. */
#define RYN_VB_SLIC_STATE_RESET 0x8u          /**< SLIC state word: held in reset. */
#define RYN_VB_SLIC_TONE_NONE 0u              /**< SLIC tone: none. */
#define RYN_VB_SLIC_TONE_DIAL 1u              /**< SLIC tone: dial tone. */
#define RYN_VB_SLIC_TONE_BUSY 2u              /**< SLIC tone: busy. */
#define RYN_VB_SLIC_TONE_REORDER 3u           /**< SLIC tone: reorder. */
#define RYN_VB_SLIC_TONE_CONGESTION 4u        /**< SLIC tone: congestion. */
#define RYN_VB_SLIC_TONE_RING_BACK 5u         /**< SLIC tone: ring-back. */
#define RYN_VB_SLIC_DISCONNECT_OPEN_LOOP 1u   /**< SLIC SignalDisconnect: open loop. */
#define RYN_VB_SLIC_DISCONNECT_REVERSAL 2u    /**< SLIC SignalDisconnect: polarity reversal. */
#define RYN_VB_CLOCK_SOURCE_OSCILLATOR 0u     /**< SetClocks source: the board's oscillator. */
#define RYN_VB_CLOCK_SOURCE_SPAN0 1u          /**< SetClocks source: span 0's receive clock. */
#define RYN_VB_CLOCK_SOURCE_SPAN1 2u          /**< SetClocks source: span 1's receive clock. */
#define RYN_VB_CLOCK_SOURCE_EXTERNAL 3u       /**< SetClocks source: external. */
#define RYN_VB_CLOCK_MODE_DRIVE 0u            /**< SetClocks mode: the board drives the bus clock. */
#define RYN_VB_CLOCK_MODE_FOLLOW 1u           /**< SetClocks mode: the board follows the bus clock. */
#define RYN_VB_LAW_MU 0u                      /**< CodecSetLaw: mu-law (the start). */
#define RYN_VB_LAW_A 1u                       /**< CodecSetLaw: A-law. */
#define RYN_VB_SAMPLE_CLOCK_STOPPED 0u        /**< Sample clock rate: stopped; time moves only by steps. */
#define RYN_VB_SAMPLE_CLOCK_REAL_TIME 1u      /**< Sample clock rate: real time (the start). */
#define RYN_VB_SAMPLE_CLOCK_RATE_MAX 1000u    /**< Sample clock rate: the fastest, in times real time. */
#define RYN_VB_SAMPLE_CLOCK_FRAME_MS 10u      /**< Sample clock: the length of one frame (tick), in ms. */
#define RYN_VB_SAMPLE_CLOCK_STEP_MAX 360000u  /**< Sample clock: the most frames one step runs (an hour). */
#define RYN_VB_SAMPLE_CLOCK_ENV "RYN_VB_SAMPLE_CLOCK" /**< Environment variable: the sample clock's rate at start. */
#define RYN_VB_JTAG_RESET 0u                  /**< JTAG Control: reset the port. */
#define RYN_VB_JTAG_ENABLE 1u                 /**< JTAG Control: enable the port (the start). */
#define RYN_VB_JTAG_DISABLE 2u                /**< JTAG Control: disable the port. */
#define RYN_VB_JTAG_IDCODE_INSTRUCTION 0x2u   /**< JTAG instruction selecting IDCODE (others select BYPASS). */
#define RYN_VB_JTAG_IDCODE 0x1D00A0F1u        /**< JTAG IDCODE of the chain's device. */
/** @} */

/**
 * @defgroup ryn_vb_dsp DSP and data-channel values
 * @brief DSP types, program states and messages; the SS7 filter bits.
 * @{
 */
#define RYN_VB_DSP_TYPE_WORD 1u              /**< DSP type of DSP 0 (word-addressed, command-stream images). */
#define RYN_VB_DSP_TYPE_BYTE 5u              /**< DSP type of DSP 1 (byte-addressed, record images). */
#define RYN_VB_DSP_PROGRAM_NONE 0u           /**< DSP program state: none. */
#define RYN_VB_DSP_PROGRAM_LOADING 1u        /**< DSP program state: loading. */
#define RYN_VB_DSP_PROGRAM_RUNNING 2u        /**< DSP program state: running. */
#define RYN_VB_DSP_PROGRAM_HALTED 3u         /**< DSP program state: halted. */
#define RYN_VB_DSP_NO_MODULE 0xFFFFFFFFu     /**< Module of a program that is no built-in module, or of none. */
#define RYN_VB_DSP_MESSAGE_ECHO 0u           /**< RynDspIoControl command: echo the input. */
#define RYN_VB_DSP_MESSAGE_PROGRAM 1u        /**< RynDspIoControl command: the module and entry address. */
#define RYN_VB_SS7_FILTER_FILL_IN 0x1u       /**< SS7SetFilter: drop fill-in units. */
#define RYN_VB_SS7_FILTER_LINK_STATUS 0x2u   /**< SS7SetFilter: drop link-status units. */
#define RYN_VB_SS7_FILTER_REPEATED 0x4u      /**< SS7SetFilter: drop a unit equal to the one before. */
/** @} */

/**
 * @defgroup ryn_vb_signal Signal-processing values
 * @brief Settings and status values of the tone blocks, the telephony
 * blocks, the data converter and the POTS line through a DSP block.
 * @{
 */
#define RYN_VB_EFFECT_SILENCE 0u            /**< Effects generator param1: silence. */
#define RYN_VB_EFFECT_NOISE 1u              /**< Effects generator param1: white noise. */
#define RYN_VB_EFFECT_SQUARE 2u             /**< Effects generator param1: square wave. */
#define RYN_VB_EFFECT_RAMP 3u               /**< Effects generator param1: rising ramp. */
#define RYN_VB_SAMPLER_LATEST 0u            /**< Value sampler param1: the latest sample. */
#define RYN_VB_SAMPLER_PEAK 1u              /**< Value sampler param1: the largest magnitude since the last read. */
#define RYN_VB_FSK_BELL202 0u               /**< FSK and caller identification format: Bell 202. */
#define RYN_VB_FSK_V23 1u                   /**< FSK and caller identification format: V.23. */
#define RYN_VB_DIAL_TONE_NONE 0u            /**< Dial-tone detector status: no tone. */
#define RYN_VB_DIAL_TONE_350_440 1u         /**< Dial-tone detector status: 350 + 440 Hz. */
#define RYN_VB_DIAL_TONE_425 2u             /**< Dial-tone detector status: 425 Hz. */
#define RYN_VB_CST_NOT_SET_UP 0u            /**< Telephony block set-up: none yet. */
#define RYN_VB_CST_BASIC 1u                 /**< Telephony block set-up: basic. */
#define RYN_VB_CST_EXTENDED 2u              /**< Telephony block set-up: extended. */
#define RYN_VB_CPT_SILENCE 0u               /**< Call-progress tone: silence (generator), none (detector). */
#define RYN_VB_CPT_DIAL 1u                  /**< Call-progress tone: dial tone. */
#define RYN_VB_CPT_BUSY 2u                  /**< Call-progress tone: busy. */
#define RYN_VB_CPT_RINGBACK 3u              /**< Call-progress tone: ringback. */
#define RYN_VB_CPT_REORDER 4u               /**< Call-progress tone: reorder. */
#define RYN_VB_CID_SINGLE_MESSAGE 0x04u     /**< Caller identification message type: single data message. */
#define RYN_VB_CID_MULTIPLE_MESSAGE 0x80u   /**< Caller identification message type: multiple data message. */
#define RYN_VB_CONVERT_LINEAR 0u            /**< Data converter param1: linear. */
#define RYN_VB_CONVERT_MU_LAW 1u            /**< Data converter param1: mu-law. */
#define RYN_VB_CONVERT_A_LAW 2u             /**< Data converter param1: A-law. */
#define RYN_VB_HOOK_CAUSE_REQUEST 0u        /**< DSP POTS hook event word 6: a request. */
#define RYN_VB_HOOK_CAUSE_FLASH 1u          /**< DSP POTS hook event word 6: a hook flash. */
#define RYN_VB_HOOK_CAUSE_LINE_MONITOR 2u   /**< DSP POTS hook event word 6: on hook with the line monitor. */
#define RYN_VB_HOOK_CAUSE_SENSE 3u          /**< DSP POTS hook event word 6: SenseLine. */
#define RYN_VB_DAA_WRITTEN 0u               /**< DSP POTS WriteDaa status: written. */
#define RYN_VB_DAA_UNCHANGED 1u             /**< DSP POTS WriteDaa status: the register held the value already. */
#define RYN_VB_DAA_NO_REGISTER 2u           /**< DSP POTS WriteDaa status: no such register. */
/** @} */

#endif /* RYN_VIRTUAL_BOARD_H */
