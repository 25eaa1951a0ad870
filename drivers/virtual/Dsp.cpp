// Dsp requests of the virtual board (not written yet: every request is
// refused as not provided).
#include "Families.h"

namespace vb {

Table dspTable() { return {}; }
std::span<const Attribute> dspAttributes() { return {}; }

}  // namespace vb
