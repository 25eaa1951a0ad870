// Jtag requests of the virtual board (not written yet: every request is
// refused as not provided).
#include "Families.h"

namespace vb {

Table jtagTable() { return {}; }
std::span<const Attribute> jtagAttributes() { return {}; }

}  // namespace vb
