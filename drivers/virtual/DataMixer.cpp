// DataMixer requests of the virtual board (not written yet: every request is
// refused as not provided).
#include "Families.h"

namespace vb {

Table dataMixerTable() { return {}; }
std::span<const Attribute> dataMixerAttributes() { return {}; }

}  // namespace vb
