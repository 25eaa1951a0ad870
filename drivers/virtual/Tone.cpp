// Tone requests of the virtual board (not written yet: every request is
// refused as not provided).
#include "Families.h"

namespace vb {

Table toneTable() { return {}; }
void toneReceive(Board &, Object &, std::span<const int16_t>) {}
std::span<const Attribute> toneAttributes() { return {}; }

}  // namespace vb
