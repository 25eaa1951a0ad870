// Handles on Linux: file descriptors, kept above the standard streams.
#include <fcntl.h>
#include <unistd.h>

#include "osa/System.h"

namespace ryn::osa::sys {

namespace {
constexpr int kLowestHandle = 3;
}  // namespace

OsaHandle adoptHandle(NativeHandle native) {
    int fd = static_cast<int>(native);
    if (fd >= 0 && fd < kLowestHandle) {
        const int moved = fcntl(fd, F_DUPFD_CLOEXEC, kLowestHandle);
        close(fd);
        fd = moved;
    }
    return fd < 0 ? INVALID_HANDLE_VALUE : static_cast<OsaHandle>(fd);
}

void closeHandle(OsaHandle handle) { close(static_cast<int>(handle)); }

}  // namespace ryn::osa::sys
