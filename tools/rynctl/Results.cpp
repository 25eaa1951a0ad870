// Result codes and what they mean: the one table of the library's source
// modules and error numbers that every command prints codes with, and
// `rynctl result CODE`, which takes a code apart without a driver.
#include <CLI/CLI.hpp>

#include "Rynctl.h"
#include "RynVirtualBoard.h"

namespace rynctl {
namespace {

// A code's fields: bit 31 failure, bits 23..30 the SourceId of the module
// that raised it, bits 8..22 the source line in that module, bits 0..7 the
// error number.
struct Fields {
    bool failure;
    uint32_t source, line, error;
};

Fields fields(ResultCode code) {
    return {(code & 0x80000000u) != 0, (code >> 23) & 0xFFu, (code >> 8) & 0x7FFFu, code & 0xFFu};
}

struct Name {
    uint32_t number;
    const char *text;
};

// The modules of the library by SourceId, and the virtual board, which
// raises its own failures in the same layout (docs/virtual-board.md).
constexpr Name kSources[] = {
    {RYN_SOURCE_BOARD, "board controls"},
    {RYN_SOURCE_BRI, "BRI"},
    {RYN_SOURCE_BURST, "burst"},
    {RYN_SOURCE_DATA_MIXER, "data converter and mixer"},
    {RYN_SOURCE_DEVICE, "device core and application event queues"},
    {RYN_SOURCE_DSP, "DSP and loader"},
    {RYN_SOURCE_HDLC, "HDLC and SS7"},
    {RYN_SOURCE_JTAG, "JTAG"},
    {RYN_SOURCE_POTS, "POTS"},
    {RYN_SOURCE_RAW_DATA, "raw data"},
    {RYN_SOURCE_T1E1, "T1/E1"},
    {RYN_SOURCE_TONE, "tone generators and detectors"},
    {RYN_VB_SOURCE_ID, "the virtual board"},
    {RYN_SOURCE_TRANSPORT, "request transport"},
    {RYN_SOURCE_TELEPHONY, "telephony blocks"},
    {RYN_SOURCE_SLIC, "SLIC"},
};

// The error numbers (bits 0..7) the library and the virtual board use. 1 and
// 26 come as statuses (bit 31 clear), the others as failures.
constexpr Name kErrors[] = {
    {RYN_ERROR_NOTHING_TO_READ, "nothing to read"},
    {RYN_ERROR_BAD_DATA, "data not in the expected form"},
    {RYN_ERROR_NOT_PROVIDED, "operation not provided"},
    {RYN_ERROR_NO_TRANSFER_MEMORY, "memory for a transfer buffer not obtained"},
    {RYN_ERROR_NO_MEMORY, "memory not obtained or no free slot"},
    {RYN_ERROR_RANGE, "argument out of range"},
    {RYN_ERROR_NULL_POINTER, "null pointer argument"},
    {RYN_ERROR_INVALID_HANDLE, "invalid handle"},
    {RYN_ERROR_LENGTH_MISMATCH, "length mismatch"},
    {RYN_ERROR_FAILED, "operation failed"},
    {RYN_ERROR_UNKNOWN_ATTRIBUTE, "unknown attribute"},
    {RYN_ERROR_NOT_AVAILABLE, "not available"},
    {RYN_ERROR_NOT_CONNECTED, "not connected"},
    {RYN_ERROR_WARNING, "warning"},
    {RYN_ERROR_IMAGE_FULL, "image buffer full"},
};

// Whole codes with a meaning of their own: the wait calls' statuses, the
// SLIC calls' bare codes (bit 31 and an error number, no module) and the
// request transport's fixed codes when the driver cannot be reached.
constexpr Name kFixedCodes[] = {
    {0, "success"},
    {RYN_WAIT_ONE_SIGNALLED, "an event was signalled (the wait calls; its index returned)"},
    {RYN_WAIT_TIMEOUT, "the wait timed out (the wait calls)"},
    {RYN_RESULT_SLIC_RANGE, "a SLIC name longer than 15 characters or a number not of 10 digits"},
    {RYN_RESULT_SLIC_NO_LOCAL_TIME, "the driver's clock has no local time (SLIC)"},
    {RYN_RESULT_SLIC_NULL_POINTER, "a null SLIC name or number"},
    {RYN_RESULT_CALL_FAILED, "the driver call failed"},
    {RYN_RESULT_NO_REPLY, "the driver gave no reply bytes"},
    {RYN_RESULT_HANDLE_CALL_FAILED, "the driver call of a handle lookup failed"},
    {RYN_RESULT_HANDLE_NO_REPLY, "the driver gave no reply bytes to a handle lookup"},
};

template <size_t N>
const char *find(const Name (&table)[N], uint32_t number) {
    for (const Name &name : table)
        if (name.number == number) return name.text;
    return nullptr;
}

std::string hex(uint32_t value, int digits) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%0*X", digits, value);
    return text;
}

std::string sourceText(uint32_t source, uint32_t line) {
    if (source == 0 && line == 0) return "none (a bare code)";
    const char *name = find(kSources, source);
    return hex(source, 2) + " " + (name != nullptr ? name : "(no module of the library)");
}

std::string errorText(uint32_t error) {
    const char *meaning = find(kErrors, error);
    return std::to_string(error) + ": " + (meaning != nullptr ? meaning : "(not an error number of the library)");
}

}  // namespace

std::string describeResult(ResultCode code) {
    const Fields f = fields(code);
    const char *fixed = find(kFixedCodes, code);
    if (code == 0) return fixed;
    if (code == RYN_WAIT_ONE_SIGNALLED || code == RYN_WAIT_TIMEOUT) return std::string("status: ") + fixed;
    std::string text = f.failure ? "failure" : "status";
    if (f.source != 0 || f.line != 0)
        text += ", source " + sourceText(f.source, f.line) + ", line " + std::to_string(f.line);
    text += ", error " + errorText(f.error);
    if (fixed != nullptr) text += std::string(" (") + fixed + ")";
    return text;
}

void printResult(const char *what, ResultCode code) {
    std::printf("%-22s 0x%08X (%s)\n", what, code, describeResult(code).c_str());
}

Command resultCommand(CLI::App &rynctl) {
    CLI::App *app = rynctl.add_subcommand("result", "explain a result code (no driver needed)");
    app->footer(
        "Takes a result code of the library or the board apart: failure or status (bit 31), the module\n"
        "that raised it (bits 23..30), the source line (bits 8..22) and the error number (bits 0..7) with\n"
        "its meaning. CODE is decimal, 0x hexadecimal, or a negative decimal as a program that keeps codes\n"
        "in an int prints them (-2147483639 is 0x80000009). Does not connect to the driver.");
    auto code = std::make_shared<std::string>();
    app->add_option("CODE", *code, "the result code")->required()->check(CLI::Validator(
        [](std::string &text) -> std::string {
            return parseWord(text.c_str()) ? "" : "expected a 32-bit code: decimal, 0x hexadecimal or negative "
                                                  "decimal, not \"" + text + "\"";
        },
        ""));
    return {app, [code] {
                const ResultCode value = *parseWord(code->c_str());
                const Fields f = fields(value);
                const char *fixed = find(kFixedCodes, value);
                std::printf("%-8s 0x%08X (%u, %d)\n", "code", value, value, static_cast<int32_t>(value));
                std::printf("%-8s %s\n", "kind", f.failure ? "failure (bit 31 set)" : "status (bit 31 clear)");
                std::printf("%-8s %s\n", "source", sourceText(f.source, f.line).c_str());
                std::printf("%-8s %u\n", "line", f.line);
                // Success and the wait calls' statuses carry no error number.
                if (value == 0 || value == RYN_WAIT_ONE_SIGNALLED || value == RYN_WAIT_TIMEOUT) {
                    std::printf("%-8s %u\n", "error", f.error);
                } else {
                    std::printf("%-8s %s\n", "error", errorText(f.error).c_str());
                }
                if (fixed != nullptr) std::printf("%-8s %s\n", "meaning", fixed);
                return kExitDone;
            }};
}

}  // namespace rynctl
