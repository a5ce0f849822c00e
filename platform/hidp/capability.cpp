#include "platform/hidp/capability.h"

namespace platform::hidp {

bool Capability::holds(USAGE usage) const {
    if (usage < usage_min || usage > usage_max) {
        return false;
    }
    return !is_array() || field_bits() == 32 || selector(usage) >> field_bits() == 0;
}

}  // namespace platform::hidp
