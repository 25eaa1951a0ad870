// The JTAG port of the virtual board: a scan chain of one device with a
// 4-bit instruction register and two data registers, BYPASS (1 bit) and
// IDCODE (32 bits). Vectors are strings of '0' and '1', one character per
// clock: the first character goes into TDI first, and output character i is
// what TDO gave at clock i, so a register comes out least significant bit
// first. A scan captures the register (the instruction register captures
// 0001), shifts, and an instruction scan then updates the instruction.
#include <algorithm>
#include <cstring>

#include "Families.h"
#include "JtagWire.h"

namespace vb {
namespace {

using namespace wire::jtag;

constexpr uint32_t kIrBits = 4, kIrCapture = 0x1;
constexpr uint32_t kIdcodeInstruction =
    RYN_VB_JTAG_IDCODE_INSTRUCTION;  // every other code, 0xF among them, selects BYPASS
constexpr uint32_t kIdcode = RYN_VB_JTAG_IDCODE;
// Control: 0 resets the TAP (the instruction becomes IDCODE), 1 enables the
// port, 2 disables it (scans are refused).
constexpr uint32_t kReset = RYN_VB_JTAG_RESET, kEnable = RYN_VB_JTAG_ENABLE, kDisable = RYN_VB_JTAG_DISABLE;
// Scan request: param1 the bit count (0: the whole input), then the input
// block and its size, the output block and its size.

struct Port : ObjectState {
    bool enabled = true;
    uint32_t instruction = kIdcodeInstruction;
};

uint32_t control(Call &call) {
    Port &port = call.object->as<Port>();
    const uint32_t value = call.in.u32(Control::kControl);
    if (value > kDisable) return VB_FAILURE(kOutOfRange);
    if (value == kReset) port.instruction = kIdcodeInstruction;
    if (value != kReset) port.enabled = value == kEnable;
    return 0;
}

template <bool Instruction>
uint32_t scan(Call &call) {
    Port &port = call.object->as<Port>();
    if (!port.enabled) return VB_FAILURE(kFailed);
    const RynDriverBuffer *input = call.in.buffer(Scan::kInput), *output = call.in.buffer(Scan::kOutput);
    if (input == nullptr || output == nullptr || input->address == nullptr || output->address == nullptr)
        return VB_FAILURE(kOutOfRange);
    const uint32_t inSize = std::min(call.in.u32(Scan::kInputSize), input->length);
    const uint32_t outSize = std::min(call.in.u32(Scan::kOutputSize), output->length);
    const char *tdi = static_cast<const char *>(input->address);
    const auto length = static_cast<uint32_t>(strnlen(tdi, inSize));
    if (length == inSize || std::any_of(tdi, tdi + length, [](char c) { return c != '0' && c != '1'; }))
        return VB_FAILURE(kMalformed);
    const uint32_t count = call.in.u32(Scan::kParam1) == 0 ? length : call.in.u32(Scan::kParam1);
    if (count > length || count >= outSize) return VB_FAILURE(kOutOfRange);

    const bool idcode = !Instruction && port.instruction == kIdcodeInstruction;
    const uint32_t bits = Instruction ? kIrBits : idcode ? 32 : 1;
    uint64_t shift = Instruction ? kIrCapture : idcode ? kIdcode : 0;
    char *tdo = static_cast<char *>(output->address);
    for (uint32_t i = 0; i < count; ++i) {
        tdo[i] = (shift & 1) != 0 ? '1' : '0';
        shift = (shift >> 1) | (uint64_t{tdi[i] == '1'} << (bits - 1));
    }
    tdo[count] = '\0';
    if (Instruction) port.instruction = static_cast<uint32_t>(shift & ((1u << kIrBits) - 1));
    return 0;
}

constexpr Row kRows[] = {
    row<Control>(control),
    row<ScanIr>(scan<true>),
    row<ScanDr>(scan<false>),
};

std::vector<uint8_t> instruction(Call &, Object &port, uint32_t) { return wordValue(port.as<Port>().instruction); }
std::vector<uint8_t> enabled(Call &, Object &port, uint32_t) { return wordValue(port.as<Port>().enabled); }

const Attribute kAttributes[] = {
    {RYN_VB_ATTR_JTAG_INSTRUCTION, RYN_VB_VALUE_UINT32, instruction, nullptr},
    {RYN_VB_ATTR_JTAG_ENABLED, RYN_VB_VALUE_BOOLEAN, enabled, nullptr},
};

}  // namespace

const Family kJtagFamily{"JTAG port", kRows, kAttributes, makeState<Port>};

}  // namespace vb
