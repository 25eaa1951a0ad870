// The connection's hooks into the application event queue table.
#pragma once

namespace ryn::appqueue {

// Creates the table's lock and marks every slot free (connect).
void initialiseTable();
// Closes every open queue in slot order, then deletes the lock (release).
void releaseTable();

}  // namespace ryn::appqueue
