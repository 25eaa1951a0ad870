// BoardControls requests of the virtual board (not written yet: every request is
// refused as not provided).
#include "Families.h"

namespace vb {

Table boardControlsTable() { return {}; }
std::span<const Attribute> boardControlsAttributes() { return {}; }

}  // namespace vb
