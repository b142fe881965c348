/** The vector layer in plain C++: same lanes, same reduction order, any machine. */
#ifndef DSPLIB_SIMD_SIMD_SCALAR_H
#define DSPLIB_SIMD_SIMD_SCALAR_H

#include <array>
#include <cstddef>

namespace simd {

template <std::size_t Lanes>
struct Lanewise {
    std::array<float, Lanes> lane;
};

using F32x2 = Lanewise<2>;
using F32x4 = Lanewise<4>;

template <std::size_t Lanes>
inline Lanewise<Lanes> loadLanes(const float* from) {
    Lanewise<Lanes> v;
    for (std::size_t i = 0; i < Lanes; ++i) v.lane[i] = from[i];
    return v;
}

template <std::size_t Lanes, class Operation>
inline Lanewise<Lanes> lanewise(Lanewise<Lanes> a, Lanewise<Lanes> b, Operation operation) {
    Lanewise<Lanes> v;
    for (std::size_t i = 0; i < Lanes; ++i) v.lane[i] = operation(a.lane[i], b.lane[i]);
    return v;
}

inline F32x4 load4(const float* from) {
    return loadLanes<4>(from);
}

inline void store4(float* to, F32x4 v) {
    for (std::size_t i = 0; i < 4; ++i) to[i] = v.lane[i];
}

inline F32x4 splat4(float value) {
    return {{value, value, value, value}};
}

inline F32x4 add(F32x4 a, F32x4 b) {
    return lanewise(a, b, [](float x, float y) { return x + y; });
}

inline F32x4 mul(F32x4 a, F32x4 b) {
    return lanewise(a, b, [](float x, float y) { return x * y; });
}

/** accumulator + a·b */
inline F32x4 mulAdd(F32x4 accumulator, F32x4 a, F32x4 b) {
    return add(accumulator, mul(a, b));
}

/** (v0 + v1) + (v2 + v3): adjacent lanes first */
inline float sumLanes(F32x4 v) {
    return (v.lane[0] + v.lane[1]) + (v.lane[2] + v.lane[3]);
}

}  // namespace simd

#endif
