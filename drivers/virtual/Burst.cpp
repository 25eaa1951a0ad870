// Burst requests of the virtual board (not written yet: every request is
// refused as not provided).
#include "Families.h"

namespace vb {

Table burstTable() { return {}; }
std::span<const Attribute> burstAttributes() { return {}; }

}  // namespace vb
