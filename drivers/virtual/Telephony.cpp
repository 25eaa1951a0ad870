// Telephony requests of the virtual board (not written yet: every request is
// refused as not provided).
#include "Families.h"

namespace vb {

Table telephonyTable() { return {}; }
std::span<const Attribute> telephonyAttributes() { return {}; }

}  // namespace vb
