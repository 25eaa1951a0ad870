// Requests of the BRI line interfaces: none. The library answers every BRI
// call itself ("not provided") and sends nothing, so neither side of the
// wire has a BRI request to name; this namespace is where they would go.
#pragma once

#include "Wire.h"

namespace wire::bri {}  // namespace wire::bri
