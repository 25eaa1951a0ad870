// The load step on Linux: an ELF constructor, the part a module entry point's
// process attach plays on Windows. It runs once when the shared library is
// loaded, or before main in a program linked against the static library,
// and never fails the load.
#include "core/Compat.h"
#include "osa/LoadHook.h"

namespace ryn::osa {

const char loadHookAnchor = 0;

namespace {

__attribute__((constructor)) void onLibraryLoad() { runLoadStep(); }

}  // namespace
}  // namespace ryn::osa
