// Application event queues (the table is filled in with the queue calls).
#include "device/AppEventQueueTable.h"

namespace ryn::appqueue {

void initialiseTable() {}
void releaseTable() {}

}  // namespace ryn::appqueue
