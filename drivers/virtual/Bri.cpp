// Bri requests of the virtual board (not written yet: every request is
// refused as not provided).
#include "Families.h"

namespace vb {

Table briTable() { return {}; }
std::span<const Attribute> briAttributes() { return {}; }

}  // namespace vb
