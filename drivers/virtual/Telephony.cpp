// Telephony requests of the virtual board (not written yet: every request is
// refused as not provided).
#include "Families.h"

namespace vb {

Table telephonyTable() { return {}; }
void telephonyReceive(Board &, Object &, std::span<const int16_t>) {}
std::span<const Attribute> telephonyAttributes() { return {}; }

}  // namespace vb
