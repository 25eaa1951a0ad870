// The table of families, and what the board does with it.
#include <algorithm>
#include <array>

#include "Families.h"

namespace vb {
namespace {

#define VB_FAMILY_ENTRY(name) &k##name##Family,
const Family *const kFamilies[] = {VB_FAMILIES(VB_FAMILY_ENTRY)};
#undef VB_FAMILY_ENTRY

// The attributes of each family that has audio: its own, then the audio
// attributes, built once.
struct Combined {
    const Family *family;
    std::vector<Attribute> attributes;
};

const std::vector<Combined> &combinedAttributes() {
    static const std::vector<Combined> combined = [] {
        std::vector<Combined> list;
        for (const Family *family : kFamilies) {
            if (family->audio == nullptr) continue;
            Combined entry{family, {family->attributes.begin(), family->attributes.end()}};
            for (const Attribute &a : audioAttributes()) entry.attributes.push_back(a);
            list.push_back(std::move(entry));
        }
        return list;
    }();
    return combined;
}

// An event queue keeps its records and its listener through a reset.
void keepQueue(Board &, Object &) {}

}  // namespace

// Event queues and pipes answer no family requests: the device-core
// requests serve them.
const Family kEventQueueFamily{"Event queue", {}, {}, makeState<EventQueue>, keepQueue};
const Family kPipeFamily{"Pipe", {}, {}};

const Family *blockFamily(int32_t type) {
    for (const Family *family : kFamilies)
        if (family->makesBlock != nullptr && family->makesBlock(type)) return family;
    return nullptr;
}

std::span<const Attribute> attributesOf(const Object &object) {
    if (object.family->audio == nullptr) return object.family->attributes;
    for (const Combined &entry : combinedAttributes())
        if (entry.family == object.family) return entry.attributes;
    return {};
}

void resetState(Board &board, Object &object) {
    const Family &family = *object.family;
    object.outgoing = {};
    if (family.reset != nullptr) return family.reset(board, object);
    object.data = family.newState != nullptr ? family.newState(object) : nullptr;
}

}  // namespace vb
