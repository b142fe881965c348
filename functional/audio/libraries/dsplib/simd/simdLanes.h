/**
 * The vector layer by number of lanes, for kernels written once for every width.
 *
 * F32<L> is the type of L lanes; F32<1> is a plain float. Templates take the number of lanes rather
 * than the type: compilers drop the attributes of a built-in vector type that is a template
 * argument, and warn of it.
 */
#ifndef DSPLIB_SIMD_SIMD_LANES_H
#define DSPLIB_SIMD_SIMD_LANES_H

#include <cmath>
#include <cstdint>
#include <type_traits>

#include "simd.h"

namespace simd {
inline namespace SP_SIMD_TARGET {

template <int L>
struct Lanes;

template <>
struct Lanes<1> {
    using Type = float;
    static Type load(const float* from) { return *from; }
    static void store(float* to, Type v) { *to = v; }
    static Type splat(float value) { return value; }
    struct Pairs {
        float first, second;
    };
    static Pairs loadPairs(const float* from) { return {from[0], from[1]}; }
    static Type loadBytes(const std::uint8_t* from) { return static_cast<float>(*from); }
    static constexpr int GatherWindow = 1;  // floats that may be read from an index on
    static Type gather(const float* table, const std::int16_t* index) { return table[*index]; }
};

template <>
struct Lanes<2> {
    using Type = F32x2;
    static Type load(const float* from) { return load2(from); }
    static void store(float* to, Type v) { store2(to, v); }
    static Type splat(float value) { return splat2(value); }
};

template <>
struct Lanes<4> {
    using Type = F32x4;
    static Type load(const float* from) { return load4(from); }
    static void store(float* to, Type v) { store4(to, v); }
    static Type splat(float value) { return splat4(value); }
    using Pairs = F32x4Pairs;
    static Pairs loadPairs(const float* from) { return loadPairs4(from); }
    static Type loadBytes(const std::uint8_t* from) { return loadBytes4(from); }
    static constexpr int GatherWindow = 1;
    static Type gather(const float* table, const std::int16_t* index) {
        return gather4(table, index);
    }
};

template <int L>
using F32 = typename Lanes<L>::Type;

inline float add(float a, float b) {
    return a + b;
}

inline float sub(float a, float b) {
    return a - b;
}

inline float mul(float a, float b) {
    return a * b;
}

/** accumulator + a·b */
inline float mulAdd(float accumulator, float a, float b) {
    return accumulator + a * b;
}

/** accumulator - a·b */
inline float mulSub(float accumulator, float a, float b) {
    return accumulator - a * b;
}

inline float div(float a, float b) {
    return a / b;
}

inline float squareRoot(float v) {
    return std::sqrt(v);
}

/** a if a < b, else b; b too where one of them is NaN */
inline float smaller(float a, float b) {
    return a < b ? a : b;
}

/** a if a > b, else b; b too where one of them is NaN */
inline float larger(float a, float b) {
    return a > b ? a : b;
}

/** x if a < b, else y; y too where a or b is NaN */
inline float selectLess(float a, float b, float x, float y) {
    return a < b ? x : y;
}

inline void storePairs(float* to, float first, float second) {
    to[0] = first;
    to[1] = second;
}

inline float reversed(float v) {
    return v;
}

inline float largestLane(float v) {
    return v;
}

/** Stores a whole number from 0 to 255. */
inline void storeBytes(std::uint8_t* to, float v) {
    *to = static_cast<std::uint8_t>(v);
}

/** Truncates a number from 0 up to 32767 to a whole one. */
inline void storeIntegers(std::int16_t* to, float v) {
    *to = static_cast<std::int16_t>(v);
}

/** Lanes of kernels that walk through arrays; four even where transforms run on two. */
constexpr int StreamLanes = BestLanes < 4 ? 4 : BestLanes;

/**
 * Calls step(first, width) for the elements from `begin` up to `end`: StreamLanes at a time
 * while that many are left, then one by one. `width` is an integral constant, the number of lanes;
 * steps must not depend on each other, so that every width gives the same values.
 */
template <class Step>
inline void forLanes(int begin, int end, Step step) {
    const int whole = begin + (end - begin) / StreamLanes * StreamLanes;
    for (int i = begin; i < whole; i += StreamLanes) {
        step(i, std::integral_constant<int, StreamLanes>());
    }
    for (int i = whole; i < end; ++i) step(i, std::integral_constant<int, 1>());
}

}  // namespace SP_SIMD_TARGET
}  // namespace simd

#endif
