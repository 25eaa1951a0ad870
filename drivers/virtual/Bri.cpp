// BRI: not fitted on the virtual board. The library answers the BRI calls
// itself and sends nothing, and the device tree has no BRI object, so no
// request can reach this family; the empty table would refuse one as not
// provided.
#include "Families.h"

namespace vb {

const Family kBriFamily{"BRI", {}, {}};

}  // namespace vb
