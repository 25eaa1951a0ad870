// DspPots requests of the virtual board (not written yet: every request is
// refused as not provided).
#include "Families.h"

namespace vb {

Table dspPotsTable() { return {}; }
std::span<const Attribute> dspPotsAttributes() { return {}; }

}  // namespace vb
