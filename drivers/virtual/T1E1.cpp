// T1E1 requests of the virtual board (not written yet: every request is
// refused as not provided).
#include "Families.h"

namespace vb {

Table t1e1Table() { return {}; }
std::span<const Attribute> t1e1Attributes() { return {}; }

}  // namespace vb
