/**
 * The vector layer's 16-lane type: what the 4-lane type does, in each group of four lanes.
 *
 * Moves of lanes never cross from one group of four to another, except `reversed`, the pairs and
 * those that have groups in their name.
 */
#ifndef DSPLIB_X86_SIMD_AVX512_H
#define DSPLIB_X86_SIMD_AVX512_H

#ifndef __AVX512F__
#error "simdAvx512.h needs a compiler that targets AVX-512"
#endif

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace simd {
inline namespace SP_SIMD_TARGET {

using F32x16 = __m512;

/**
 * The unmasked shuffles of g++ 12 start from an undefined register, of which it warns wherever they
 * are inlined; masked ones that keep every lane are the same instructions.
 */
constexpr __mmask16 AllLanes = 0xffff;

inline F32x16 load16(const float* from) {
    return _mm512_loadu_ps(from);
}

inline void store16(float* to, F32x16 v) {
    _mm512_storeu_ps(to, v);
}

inline F32x16 splat16(float value) {
    return _mm512_set1_ps(value);
}

/** As of eight lanes: of sixteen unaligned ones, fifteen in sixteen loads cross a cache line. */
inline F32x16 inRegister(F32x16 v) {
    __asm__("" : "+v"(v));
    return v;
}

inline F32x16 add(F32x16 a, F32x16 b) {
    return _mm512_add_ps(a, b);
}

inline F32x16 sub(F32x16 a, F32x16 b) {
    return _mm512_sub_ps(a, b);
}

inline F32x16 mul(F32x16 a, F32x16 b) {
    return _mm512_mul_ps(a, b);
}

/** accumulator + a·b */
inline F32x16 mulAdd(F32x16 accumulator, F32x16 a, F32x16 b) {
#ifdef SP_SIMD_FUSED
    return _mm512_fmadd_ps(a, b, accumulator);
#else
    return _mm512_add_ps(accumulator, _mm512_mul_ps(a, b));
#endif
}

/** accumulator - a·b */
inline F32x16 mulSub(F32x16 accumulator, F32x16 a, F32x16 b) {
#ifdef SP_SIMD_FUSED
    return _mm512_fnmadd_ps(a, b, accumulator);
#else
    return _mm512_sub_ps(accumulator, _mm512_mul_ps(a, b));
#endif
}

inline F32x16 div(F32x16 a, F32x16 b) {
    return _mm512_div_ps(a, b);
}

inline F32x16 squareRoot(F32x16 v) {
    return _mm512_maskz_sqrt_ps(AllLanes, v);
}

/** a where a < b, else b; b too where one of them is NaN */
inline F32x16 smaller(F32x16 a, F32x16 b) {
    return _mm512_maskz_min_ps(AllLanes, a, b);
}

/** a where a > b, else b; b too where one of them is NaN */
inline F32x16 larger(F32x16 a, F32x16 b) {
    return _mm512_maskz_max_ps(AllLanes, a, b);
}

/** x where a < b, else y; y too where a or b is NaN */
inline F32x16 selectLess(F32x16 a, F32x16 b, F32x16 x, F32x16 y) {
    return _mm512_mask_blend_ps(_mm512_cmp_ps_mask(a, b, _CMP_LT_OQ), y, x);
}

/** The first and the second of each of sixteen pairs of floats in memory. */
struct F32x16Pairs {
    F32x16 first, second;
};

inline F32x16Pairs loadPairs16(const float* from) {
    const __m512i evens =
        _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
    const __m512i odds =
        _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
    const F32x16 a = load16(from), b = load16(from + 16);
    return {_mm512_permutex2var_ps(a, evens, b), _mm512_permutex2var_ps(a, odds, b)};
}

inline void storePairs(float* to, F32x16 first, F32x16 second) {
    const __m512i low = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    const __m512i high =
        _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    store16(to, _mm512_permutex2var_ps(first, low, second));
    store16(to + 16, _mm512_permutex2var_ps(first, high, second));
}

/** The lanes of a, then those of b */
inline F32x16 joined(F32x8 a, F32x8 b) {
    const __m512d low = _mm512_castpd256_pd512(_mm256_castps_pd(a));
    return _mm512_castpd_ps(_mm512_maskz_insertf64x4(0xff, low, _mm256_castps_pd(b), 1));
}

inline F32x8 lowLanes(F32x16 v) {
    return _mm256_castpd_ps(_mm512_maskz_extractf64x4_pd(0xff, _mm512_castps_pd(v), 0));
}

inline F32x8 highLanes(F32x16 v) {
    return _mm256_castpd_ps(_mm512_maskz_extractf64x4_pd(0xff, _mm512_castps_pd(v), 1));
}

/** The largest lane, of lanes that are numbers */
inline float largestLane(F32x16 v) {
    return largestLane(larger(lowLanes(v), highLanes(v)));
}

inline F32x16 loadBytes16(const std::uint8_t* from) {
    return joined(loadBytes8(from), loadBytes8(from + 8));
}

/** Stores lanes that hold whole numbers from 0 to 255. */
inline void storeBytes(std::uint8_t* to, F32x16 v) {
    storeBytes(to, lowLanes(v));
    storeBytes(to + 8, highLanes(v));
}

/** Truncates lanes from 0 up to 32767 to whole numbers. */
inline void storeIntegers(std::int16_t* to, F32x16 v) {
    storeIntegers(to, lowLanes(v));
    storeIntegers(to + 8, highLanes(v));
}

/** Floats that gather16 may read from an index on, whatever lies there. */
constexpr int WindowOfGather16 = 64;

/**
 * table[index[0]] to table[index[15]]. Indices that lie within the window of the smaller end, as
 * those of neighbouring points of a smooth table do, are picked out of whole vectors; others are
 * loaded one by one.
 */
inline F32x16 gather16(const float* table, const std::int16_t* index) {
#if defined(__AVX512BW__) && defined(__AVX512VL__)
    const std::int16_t base = index[0] < index[15] ? index[0] : index[15];
    const __m256i words = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(index));
    const __m256i offsets = _mm256_sub_epi16(words, _mm256_set1_epi16(base));
    const float* const from = table + base;
    if (_mm256_cmpge_epu16_mask(offsets, _mm256_set1_epi16(32)) == 0) {
        return _mm512_permutex2var_ps(load16(from), _mm512_maskz_cvtepu16_epi32(AllLanes, offsets),
                                      load16(from + 16));
    }
    if (_mm256_cmpge_epu16_mask(offsets, _mm256_set1_epi16(WindowOfGather16)) == 0) {
        const __m512i lanes = _mm512_maskz_cvtepu16_epi32(AllLanes, offsets);
        const F32x16 low = _mm512_permutex2var_ps(load16(from), lanes, load16(from + 16));
        const F32x16 high = _mm512_permutex2var_ps(load16(from + 32), lanes, load16(from + 48));
        return _mm512_mask_blend_ps(_mm512_cmpge_epi32_mask(lanes, _mm512_set1_epi32(32)), low,
                                    high);
    }
#endif
    return joined(gather8(table, index), gather8(table, index + 8));
}

/** (a0, a2, b0, b2) in each group */
inline F32x16 evenLanes(F32x16 a, F32x16 b) {
    return _mm512_maskz_shuffle_ps(AllLanes, a, b, _MM_SHUFFLE(2, 0, 2, 0));
}

/** (a1, a3, b1, b3) in each group */
inline F32x16 oddLanes(F32x16 a, F32x16 b) {
    return _mm512_maskz_shuffle_ps(AllLanes, a, b, _MM_SHUFFLE(3, 1, 3, 1));
}

/** (a0, a1, b0, b1) in each group */
inline F32x16 lowHalves(F32x16 a, F32x16 b) {
    return _mm512_maskz_shuffle_ps(AllLanes, a, b, _MM_SHUFFLE(1, 0, 1, 0));
}

/** (a2, a3, b2, b3) in each group */
inline F32x16 highHalves(F32x16 a, F32x16 b) {
    return _mm512_maskz_shuffle_ps(AllLanes, a, b, _MM_SHUFFLE(3, 2, 3, 2));
}

/** (a0, b0, a1, b1) in each group */
inline F32x16 zipLow(F32x16 a, F32x16 b) {
    return _mm512_maskz_unpacklo_ps(AllLanes, a, b);
}

/** (a2, b2, a3, b3) in each group */
inline F32x16 zipHigh(F32x16 a, F32x16 b) {
    return _mm512_maskz_unpackhi_ps(AllLanes, a, b);
}

/** All sixteen lanes in reverse order */
inline F32x16 reversed(F32x16 v) {
    const F32x16 inGroups = _mm512_maskz_permute_ps(AllLanes, v, _MM_SHUFFLE(0, 1, 2, 3));
    return _mm512_maskz_shuffle_f32x4(AllLanes, inGroups, inGroups, _MM_SHUFFLE(0, 1, 2, 3));
}

/** (v0, v2, v1, v3) in each group */
inline F32x16 zipHalves(F32x16 v) {
    return _mm512_maskz_permute_ps(AllLanes, v, _MM_SHUFFLE(3, 1, 2, 0));
}

/** (v2, v3, v0, v1) in each group */
inline F32x16 swapHalves(F32x16 v) {
    return _mm512_maskz_permute_ps(AllLanes, v, _MM_SHUFFLE(1, 0, 3, 2));
}

/** (v1, v0, v3, v2) in each group */
inline F32x16 swapPairs(F32x16 v) {
    return _mm512_maskz_permute_ps(AllLanes, v, _MM_SHUFFLE(2, 3, 0, 1));
}

/** The float form of this exclusive or needs more than AVX-512F. */
inline F32x16 flipSigns(F32x16 v, F32x16 signs) {
    return _mm512_castsi512_ps(
        _mm512_xor_si512(_mm512_castps_si512(v), _mm512_castps_si512(signs)));
}

/** (v0, v1, -v2, -v3) in each group */
inline F32x16 negateHighHalf(F32x16 v) {
    return flipSigns(v, _mm512_setr4_ps(0.0f, 0.0f, -0.0f, -0.0f));
}

/** (v0, -v1, v2, -v3) in each group */
inline F32x16 negateOddLanes(F32x16 v) {
    return flipSigns(v, _mm512_setr4_ps(0.0f, -0.0f, 0.0f, -0.0f));
}

/** (groups 0 and 1 of a, groups 0 and 1 of b) */
inline F32x16 lowGroups(F32x16 a, F32x16 b) {
    return _mm512_maskz_shuffle_f32x4(AllLanes, a, b, _MM_SHUFFLE(1, 0, 1, 0));
}

/** (groups 2 and 3 of a, groups 2 and 3 of b) */
inline F32x16 highGroups(F32x16 a, F32x16 b) {
    return _mm512_maskz_shuffle_f32x4(AllLanes, a, b, _MM_SHUFFLE(3, 2, 3, 2));
}

/** (groups 0 and 2 of a, groups 0 and 2 of b) */
inline F32x16 evenGroups(F32x16 a, F32x16 b) {
    return _mm512_maskz_shuffle_f32x4(AllLanes, a, b, _MM_SHUFFLE(2, 0, 2, 0));
}

/** (groups 1 and 3 of a, groups 1 and 3 of b) */
inline F32x16 oddGroups(F32x16 a, F32x16 b) {
    return _mm512_maskz_shuffle_f32x4(AllLanes, a, b, _MM_SHUFFLE(3, 1, 3, 1));
}

/** The lanes by columns: lane 0 of every group, then lane 1 of every group, ... */
inline F32x16 columnsOfGroups(F32x16 v) {
    const __m512i lanes = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
    return _mm512_maskz_permutexvar_ps(AllLanes, lanes, v);
}

/** Four values, the same in all groups */
inline F32x16 load4FourTimes(const float* from) {
    return _mm512_maskz_broadcast_f32x4(AllLanes, load4(from));
}

struct F32x16Four {
    F32x16 a, b, c, d;
};

/** Lane i of the k-th argument to lane k of the i-th result, in each group */
inline F32x16Four transposedGroups(const F32x16Four& v) {
    const F32x16 low0 = zipLow(v.a, v.c), high0 = zipHigh(v.a, v.c);
    const F32x16 low1 = zipLow(v.b, v.d), high1 = zipHigh(v.b, v.d);
    return {zipLow(low0, low1), zipHigh(low0, low1), zipLow(high0, high1), zipHigh(high0, high1)};
}

/** Four floats from each of four places, `stride` floats apart */
inline F32x16 loadGroups(const float* from, std::ptrdiff_t stride) {
    const F32x16 first = _mm512_castps128_ps512(load4(from));
    const F32x16 second = _mm512_maskz_insertf32x4(AllLanes, first, load4(from + stride), 1);
    const F32x16 third = _mm512_maskz_insertf32x4(AllLanes, second, load4(from + 2 * stride), 2);
    return _mm512_maskz_insertf32x4(AllLanes, third, load4(from + 3 * stride), 3);
}

/** Columns 0 to 3 of sixteen rows, `row` floats apart */
inline F32x16Four loadColumns(const float* from, std::ptrdiff_t row) {
    return transposedGroups({loadGroups(from, 4 * row), loadGroups(from + row, 4 * row),
                             loadGroups(from + 2 * row, 4 * row),
                             loadGroups(from + 3 * row, 4 * row)});
}

/** What loadColumns loads from rows of four */
inline void storeColumns(float* to, const F32x16Four& columns) {
    const F32x16Four rows = transposedGroups(columns);  // group g of the k-th: row 4g + k
    const F32x16 low0 = lowGroups(rows.a, rows.b), low1 = lowGroups(rows.c, rows.d);
    const F32x16 high0 = highGroups(rows.a, rows.b), high1 = highGroups(rows.c, rows.d);
    store16(to, evenGroups(low0, low1));
    store16(to + 16, oddGroups(low0, low1));
    store16(to + 32, evenGroups(high0, high1));
    store16(to + 48, oddGroups(high0, high1));
}

template <int L>
struct Lanes;

template <>
struct Lanes<16> {
    using Type = F32x16;
    static Type load(const float* from) { return load16(from); }
    static void store(float* to, Type v) { store16(to, v); }
    static Type splat(float value) { return splat16(value); }
    using Pairs = F32x16Pairs;
    static Pairs loadPairs(const float* from) { return loadPairs16(from); }
    static Type loadBytes(const std::uint8_t* from) { return loadBytes16(from); }
    static constexpr int GatherWindow = WindowOfGather16;
    static Type gather(const float* table, const std::int16_t* index) {
        return gather16(table, index);
    }
};

}  // namespace SP_SIMD_TARGET
}  // namespace simd

#endif
