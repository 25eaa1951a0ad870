// RawData requests of the virtual board (not written yet: every request is
// refused as not provided).
#include "Families.h"

namespace vb {

Table rawDataTable() { return {}; }
std::span<const Attribute> rawDataAttributes() { return {}; }

}  // namespace vb
