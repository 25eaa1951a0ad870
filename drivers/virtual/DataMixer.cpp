// The data converter and mixer block (block type 140). Its one request is
// the converter's set-up; the mixer's set-up is refused by the library
// itself and never reaches the board.
//
// param1: the conversion between the DSP's linear samples and the line's
// bytes, none (16-bit linear), mu-law or A-law (RYN_VB_CONVERT_...); param2: the samples per
// transfer block (0: 160; 1..1024). The board's sample flow does not pass
// through this block, so it keeps its settings for the application to read:
// attributes set up (0 or 1), conversion and block length.
#include "DataMixerWire.h"
#include "Families.h"

namespace vb {
namespace {

using wire::data_mixer::ConverterInit;
enum Conversion : uint32_t {
    kLinear = RYN_VB_CONVERT_LINEAR,
    kMuLaw = RYN_VB_CONVERT_MU_LAW,
    kALaw = RYN_VB_CONVERT_A_LAW
};
constexpr uint32_t kDefaultBlock = 160, kLargestBlock = 1024;

struct Converter : ObjectState {
    uint32_t setUp = 0;
    uint32_t conversion = kLinear;
    uint32_t blockSamples = kDefaultBlock;
};

uint32_t converterInit(Call &call) {
    const uint32_t conversion = call.in.u32(ConverterInit::kParam1);
    const uint32_t block =
        call.in.u32(ConverterInit::kParam2) == 0 ? kDefaultBlock : call.in.u32(ConverterInit::kParam2);
    if (conversion > kALaw || block > kLargestBlock) return VB_FAILURE(kOutOfRange);
    auto &converter = call.object->as<Converter>();
    converter.setUp = 1;
    converter.conversion = conversion;
    converter.blockSamples = block;
    return 0;
}

constexpr Row kRows[] = {
    row<ConverterInit>(converterInit),
};

const Attribute kAttributes[] = {
    {RYN_VB_ATTR_CONVERTER_SET_UP, RYN_VB_VALUE_UINT32, fieldValue<Converter, &Converter::setUp>, nullptr},
    {RYN_VB_ATTR_CONVERTER_CONVERSION, RYN_VB_VALUE_UINT32, fieldValue<Converter, &Converter::conversion>, nullptr},
    {RYN_VB_ATTR_CONVERTER_BLOCK, RYN_VB_VALUE_UINT32, fieldValue<Converter, &Converter::blockSamples>, nullptr},
};

}  // namespace

bool makesDataMixer(int32_t type) { return type == kTypeDataMixer; }

const Family kDataMixerFamily{"Data converter", kRows, kAttributes, makeState<Converter>, nullptr, makesDataMixer};

}  // namespace vb
