// Pots requests of the virtual board (not written yet: every request is
// refused as not provided).
#include "Families.h"

namespace vb {

Table potsTable() { return {}; }
std::span<const Attribute> potsAttributes() { return {}; }

}  // namespace vb
