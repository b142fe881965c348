/**
 * The vector layer's 8-lane type: what the 4-lane type does, in each group of four lanes.
 *
 * Moves of lanes never cross from one group of four to another, except `reversed`, the pairs and
 * those that have groups in their name.
 */
#ifndef DSPLIB_X86_SIMD_AVX_H
#define DSPLIB_X86_SIMD_AVX_H

#ifndef __AVX__
#error "simdAvx.h needs a compiler that targets AVX"
#endif

#include <immintrin.h>

#include <cstdint>

namespace simd {
inline namespace SP_SIMD_TARGET {

using F32x8 = __m256;

inline F32x8 load8(const float* from) {
    return _mm256_loadu_ps(from);
}

inline void store8(float* to, F32x8 v) {
    _mm256_storeu_ps(to, v);
}

inline F32x8 splat8(float value) {
    return _mm256_set1_ps(value);
}

inline F32x8 add(F32x8 a, F32x8 b) {
    return _mm256_add_ps(a, b);
}

inline F32x8 sub(F32x8 a, F32x8 b) {
    return _mm256_sub_ps(a, b);
}

inline F32x8 mul(F32x8 a, F32x8 b) {
    return _mm256_mul_ps(a, b);
}

/** accumulator + a·b */
inline F32x8 mulAdd(F32x8 accumulator, F32x8 a, F32x8 b) {
#ifdef SP_SIMD_FUSED
    return _mm256_fmadd_ps(a, b, accumulator);
#else
    return _mm256_add_ps(accumulator, _mm256_mul_ps(a, b));
#endif
}

/** accumulator - a·b */
inline F32x8 mulSub(F32x8 accumulator, F32x8 a, F32x8 b) {
#ifdef SP_SIMD_FUSED
    return _mm256_fnmadd_ps(a, b, accumulator);
#else
    return _mm256_sub_ps(accumulator, _mm256_mul_ps(a, b));
#endif
}

inline F32x8 div(F32x8 a, F32x8 b) {
    return _mm256_div_ps(a, b);
}

inline F32x8 squareRoot(F32x8 v) {
    return _mm256_sqrt_ps(v);
}

/** a where a < b, else b; b too where one of them is NaN */
inline F32x8 smaller(F32x8 a, F32x8 b) {
    return _mm256_min_ps(a, b);
}

/** a where a > b, else b; b too where one of them is NaN */
inline F32x8 larger(F32x8 a, F32x8 b) {
    return _mm256_max_ps(a, b);
}

/**
 * x where a < b, else y; y too where a or b is NaN. Not the blend of this machine: for AVX without
 * AVX2, GCC 12 makes eight branches of it.
 */
inline F32x8 selectLess(F32x8 a, F32x8 b, F32x8 x, F32x8 y) {
    const __m256 mask = _mm256_cmp_ps(a, b, _CMP_LT_OQ);
    return _mm256_or_ps(_mm256_and_ps(mask, x), _mm256_andnot_ps(mask, y));
}

/** The lanes of a, then those of b */
inline F32x8 joined(F32x4 a, F32x4 b) {
    return _mm256_insertf128_ps(_mm256_castps128_ps256(a), b, 1);
}

/** The first and the second of each of eight pairs of floats in memory. */
struct F32x8Pairs {
    F32x8 first, second;
};

inline F32x8Pairs loadPairs8(const float* from) {
    const F32x8 low = joined(load4(from), load4(from + 8));
    const F32x8 high = joined(load4(from + 4), load4(from + 12));
    return {_mm256_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)),
            _mm256_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1))};
}

inline void storePairs(float* to, F32x8 first, F32x8 second) {
    const F32x8 low = _mm256_unpacklo_ps(first, second);
    const F32x8 high = _mm256_unpackhi_ps(first, second);
    store8(to, _mm256_permute2f128_ps(low, high, 0x20));
    store8(to + 8, _mm256_permute2f128_ps(low, high, 0x31));
}

/** The largest lane, of lanes that are numbers */
inline float largestLane(F32x8 v) {
    return largestLane(larger(_mm256_castps256_ps128(v), _mm256_extractf128_ps(v, 1)));
}

inline F32x8 loadBytes8(const std::uint8_t* from) {
    return joined(loadBytes4(from), loadBytes4(from + 4));
}

/** Stores lanes that hold whole numbers from 0 to 255. */
inline void storeBytes(std::uint8_t* to, F32x8 v) {
    storeBytes(to, _mm256_castps256_ps128(v));
    storeBytes(to + 4, _mm256_extractf128_ps(v, 1));
}

/** Truncates lanes from 0 up to 32767 to whole numbers. */
inline void storeIntegers(std::int16_t* to, F32x8 v) {
    storeIntegers(to, _mm256_castps256_ps128(v));
    storeIntegers(to + 4, _mm256_extractf128_ps(v, 1));
}

/** table[index[0]] to table[index[7]]; loads one by one are no slower than the gather of AVX2 */
inline F32x8 gather8(const float* table, const std::int16_t* index) {
    return joined(gather4(table, index), gather4(table, index + 4));
}

/** (a0, a2, b0, b2) in each group */
inline F32x8 evenLanes(F32x8 a, F32x8 b) {
    return _mm256_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0));
}

/** (a1, a3, b1, b3) in each group */
inline F32x8 oddLanes(F32x8 a, F32x8 b) {
    return _mm256_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1));
}

/** (a0, a1, b0, b1) in each group */
inline F32x8 lowHalves(F32x8 a, F32x8 b) {
    return _mm256_shuffle_ps(a, b, _MM_SHUFFLE(1, 0, 1, 0));
}

/** (a2, a3, b2, b3) in each group */
inline F32x8 highHalves(F32x8 a, F32x8 b) {
    return _mm256_shuffle_ps(a, b, _MM_SHUFFLE(3, 2, 3, 2));
}

/** (a0, b0, a1, b1) in each group */
inline F32x8 zipLow(F32x8 a, F32x8 b) {
    return _mm256_unpacklo_ps(a, b);
}

/** (a2, b2, a3, b3) in each group */
inline F32x8 zipHigh(F32x8 a, F32x8 b) {
    return _mm256_unpackhi_ps(a, b);
}

/** All eight lanes in reverse order */
inline F32x8 reversed(F32x8 v) {
    const F32x8 inGroups = _mm256_permute_ps(v, _MM_SHUFFLE(0, 1, 2, 3));
    return _mm256_permute2f128_ps(inGroups, inGroups, 0x01);
}

/** (v0, v2, v1, v3) in each group */
inline F32x8 zipHalves(F32x8 v) {
    return _mm256_permute_ps(v, _MM_SHUFFLE(3, 1, 2, 0));
}

/** (v2, v3, v0, v1) in each group */
inline F32x8 swapHalves(F32x8 v) {
    return _mm256_permute_ps(v, _MM_SHUFFLE(1, 0, 3, 2));
}

/** (v1, v0, v3, v2) in each group */
inline F32x8 swapPairs(F32x8 v) {
    return _mm256_permute_ps(v, _MM_SHUFFLE(2, 3, 0, 1));
}

/** (v0, v1, -v2, -v3) in each group */
inline F32x8 negateHighHalf(F32x8 v) {
    const F32x8 signs = _mm256_setr_ps(0.0f, 0.0f, -0.0f, -0.0f, 0.0f, 0.0f, -0.0f, -0.0f);
    return _mm256_xor_ps(v, signs);
}

/** (v0, -v1, v2, -v3) in each group */
inline F32x8 negateOddLanes(F32x8 v) {
    const F32x8 signs = _mm256_setr_ps(0.0f, -0.0f, 0.0f, -0.0f, 0.0f, -0.0f, 0.0f, -0.0f);
    return _mm256_xor_ps(v, signs);
}

/** (first group of a, first group of b) */
inline F32x8 lowGroups(F32x8 a, F32x8 b) {
    return _mm256_permute2f128_ps(a, b, 0x20);
}

/** (second group of a, second group of b) */
inline F32x8 highGroups(F32x8 a, F32x8 b) {
    return _mm256_permute2f128_ps(a, b, 0x31);
}

/** v·c[Lane] in each group */
template <int Lane>
inline F32x8 mulLane(F32x8 v, F32x8 c) {
    return mul(v, _mm256_permute_ps(c, _MM_SHUFFLE(Lane, Lane, Lane, Lane)));
}

/** accumulator + v·c[Lane] in each group */
template <int Lane>
inline F32x8 mulAddLane(F32x8 accumulator, F32x8 v, F32x8 c) {
    return mulAdd(accumulator, v, _mm256_permute_ps(c, _MM_SHUFFLE(Lane, Lane, Lane, Lane)));
}

/** The lanes by columns: lane 0 of every group, then lane 1 of every group, ... */
inline F32x8 columnsOfGroups(F32x8 v) {
    const F32x4 low = _mm256_castps256_ps128(v), high = _mm256_extractf128_ps(v, 1);
    return joined(zipLow(low, high), zipHigh(low, high));
}

/** Four values, the same in both groups */
inline F32x8 load4Twice(const float* from) {
    return joined(load4(from), load4(from));
}

/**
 * v, kept in a register by an empty statement. Left alone, a compiler folds the load of a value
 * into each instruction that uses it, and an unaligned load of 32 bytes, of which seven in sixteen
 * cross a cache line, then happens at every use.
 */
inline F32x8 inRegister(F32x8 v) {
#ifdef __AVX512VL__
    __asm__("" : "+v"(v));  // one of 32
#else
    __asm__("" : "+x"(v));
#endif
    return v;
}

template <int L>
struct Lanes;

template <>
struct Lanes<8> {
    using Type = F32x8;
    static Type load(const float* from) { return load8(from); }
    static void store(float* to, Type v) { store8(to, v); }
    static Type splat(float value) { return splat8(value); }
    using Pairs = F32x8Pairs;
    static Pairs loadPairs(const float* from) { return loadPairs8(from); }
    static Type loadBytes(const std::uint8_t* from) { return loadBytes8(from); }
    static constexpr int GatherWindow = 1;
    static Type gather(const float* table, const std::int16_t* index) {
        return gather8(table, index);
    }
};

}  // namespace SP_SIMD_TARGET
}  // namespace simd

#endif
