// Hdlc requests of the virtual board (not written yet: every request is
// refused as not provided).
#include "Families.h"

namespace vb {

Table hdlcTable() { return {}; }
std::span<const Attribute> hdlcAttributes() { return {}; }

}  // namespace vb
