/** The flag words' two accessors: no state. They are described in voxloc.h. */
#include "assertion/assertion.h"
#include "voxloc.h"

namespace {

constexpr char SourcePath[] = "functional/audio/voxloc/cmod/track/voxloc";

}  // namespace

void voxloc_setFlag(uint32_t bit, int32_t value, uint32_t* word) {
    PLATFORM_ASSERT(bit < 32);
    *word = (*word & ~(uint32_t{1} << bit)) | (static_cast<uint32_t>(value) << bit);
}

int voxloc_getFlag(uint32_t bit, uint32_t word) {
    PLATFORM_ASSERT(bit < 32);
    return static_cast<int>((word >> bit) & 1u);
}
