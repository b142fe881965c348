/** Conversions from floating point that are defined for every value. */
#ifndef VOXLOC_CONVERSIONS_H
#define VOXLOC_CONVERSIONS_H

#include <limits>

namespace voxloc {

/** Truncates towards zero and saturates at the integer type's limits; a NaN gives 0. */
template <class Integer>
inline Integer toInteger(float value) {
    constexpr auto lowest = static_cast<float>(std::numeric_limits<Integer>::min());
    constexpr auto highest = static_cast<float>(std::numeric_limits<Integer>::max());
    if (value != value) return 0;
    if (value <= lowest) return std::numeric_limits<Integer>::min();
    if (value >= highest) return std::numeric_limits<Integer>::max();
    return static_cast<Integer>(value);
}

}  // namespace voxloc

#endif
