#include "support/Platform.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

namespace ryn::test {

bool signalEventNatively(OsaHandle event) {
    const uint64_t one = 1;
    return write(static_cast<int>(event), &one, sizeof one) == sizeof one;
}

bool limitProcessMemory(uint64_t bytes) {
    const rlimit space{static_cast<rlim_t>(bytes), static_cast<rlim_t>(bytes)};
    return setrlimit(RLIMIT_AS, &space) == 0;
}

CommandResult runCommand(const std::string &command) {
    FILE *pipe = popen(command.c_str(), "r");
    CommandResult result{"", -1};
    char buffer[256];
    while (pipe != nullptr && std::fgets(buffer, sizeof buffer, pipe) != nullptr) result.out += buffer;
    const int status = pipe != nullptr ? pclose(pipe) : -1;
    result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

}  // namespace ryn::test
