// Slic requests of the virtual board (not written yet: every request is
// refused as not provided).
#include "Families.h"

namespace vb {

Table slicTable() { return {}; }
std::span<const Attribute> slicAttributes() { return {}; }

}  // namespace vb
