/** The vector layer's 2-lane and 4-lane types on x86-64: SSE2, and FMA where the layer fuses. */
#ifndef DSPLIB_X86_SIMD_SSE_H
#define DSPLIB_X86_SIMD_SSE_H

#ifndef __SSE2__
#error "simdSse.h needs a compiler that targets SSE2"
#endif

#include <immintrin.h>

#include <cstdint>
#include <cstring>

namespace simd {
inline namespace SP_SIMD_TARGET {

using F32x4 = __m128;

inline F32x4 load4(const float* from) {
    return _mm_loadu_ps(from);
}

inline void store4(float* to, F32x4 v) {
    _mm_storeu_ps(to, v);
}

inline F32x4 splat4(float value) {
    return _mm_set1_ps(value);
}

inline F32x4 add(F32x4 a, F32x4 b) {
    return _mm_add_ps(a, b);
}

inline F32x4 mul(F32x4 a, F32x4 b) {
    return _mm_mul_ps(a, b);
}

/** accumulator + a·b */
inline F32x4 mulAdd(F32x4 accumulator, F32x4 a, F32x4 b) {
#ifdef SP_SIMD_FUSED
    return _mm_fmadd_ps(a, b, accumulator);
#else
    return _mm_add_ps(accumulator, _mm_mul_ps(a, b));
#endif
}

/** Whether a division of vectors is one of each lane, and worth a look at whether it is needed. */
constexpr bool DividesByLane = false;

inline F32x4 div(F32x4 a, F32x4 b) {
    return _mm_div_ps(a, b);
}

inline F32x4 squareRoot(F32x4 v) {
    return _mm_sqrt_ps(v);
}

/** a where a < b, else b; b too where one of them is NaN */
inline F32x4 smaller(F32x4 a, F32x4 b) {
    return _mm_min_ps(a, b);
}

/** a where a > b, else b; b too where one of them is NaN */
inline F32x4 larger(F32x4 a, F32x4 b) {
    return _mm_max_ps(a, b);
}

/** Whether a < b in any lane */
inline bool anyLess(F32x4 a, F32x4 b) {
    return _mm_movemask_ps(_mm_cmplt_ps(a, b)) != 0;
}

/** x where a < b, else y; y too where a or b is NaN */
inline F32x4 selectLess(F32x4 a, F32x4 b, F32x4 x, F32x4 y) {
    const __m128 mask = _mm_cmplt_ps(a, b);
    return _mm_or_ps(_mm_and_ps(mask, x), _mm_andnot_ps(mask, y));
}

/** The first and the second of each of four pairs of floats in memory. */
struct F32x4Pairs {
    F32x4 first, second;
};

inline F32x4Pairs loadPairs4(const float* from) {
    const __m128 a = load4(from), b = load4(from + 4);
    return {_mm_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0)),
            _mm_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1))};
}

inline void storePairs(float* to, F32x4 first, F32x4 second) {
    store4(to, _mm_unpacklo_ps(first, second));
    store4(to + 4, _mm_unpackhi_ps(first, second));
}

/** The largest lane, of lanes that are numbers */
inline float largestLane(F32x4 v) {
    const __m128 pairs = _mm_max_ps(v, _mm_movehl_ps(v, v));
    return _mm_cvtss_f32(_mm_max_ss(pairs, _mm_shuffle_ps(pairs, pairs, 1)));
}

inline F32x4 loadBytes4(const std::uint8_t* from) {
    std::int32_t bytes;
    std::memcpy(&bytes, from, sizeof bytes);
    const __m128i zero = _mm_setzero_si128();
    const __m128i words = _mm_unpacklo_epi8(_mm_cvtsi32_si128(bytes), zero);
    return _mm_cvtepi32_ps(_mm_unpacklo_epi16(words, zero));
}

/** Stores lanes that hold whole numbers from 0 to 255. */
inline void storeBytes(std::uint8_t* to, F32x4 v) {
    const __m128i words = _mm_packs_epi32(_mm_cvttps_epi32(v), _mm_setzero_si128());
    const std::int32_t bytes = _mm_cvtsi128_si32(_mm_packus_epi16(words, words));
    std::memcpy(to, &bytes, sizeof bytes);
}

/** Truncates lanes from 0 up to 32767 to whole numbers. */
inline void storeIntegers(std::int16_t* to, F32x4 v) {
    const __m128i words = _mm_cvttps_epi32(v);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packs_epi32(words, words));
}

/** table[index[0]] to table[index[3]] */
inline F32x4 gather4(const float* table, const std::int16_t* index) {
    return _mm_setr_ps(table[index[0]], table[index[1]], table[index[2]], table[index[3]]);
}

/** (v0 + v1) + (v2 + v3): adjacent lanes first */
inline float sumLanes(F32x4 v) {
    const __m128 swapped = _mm_shuffle_ps(v, v, _MM_SHUFFLE(2, 3, 0, 1));
    const __m128 pairs = _mm_add_ps(v, swapped);
    return _mm_cvtss_f32(_mm_add_ss(pairs, _mm_movehl_ps(pairs, pairs)));
}

inline F32x4 sub(F32x4 a, F32x4 b) {
    return _mm_sub_ps(a, b);
}

/** accumulator - a·b */
inline F32x4 mulSub(F32x4 accumulator, F32x4 a, F32x4 b) {
#ifdef SP_SIMD_FUSED
    return _mm_fnmadd_ps(a, b, accumulator);
#else
    return _mm_sub_ps(accumulator, _mm_mul_ps(a, b));
#endif
}

/** (a0, a2, b0, b2) */
inline F32x4 evenLanes(F32x4 a, F32x4 b) {
    return _mm_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0));
}

/** (a1, a3, b1, b3) */
inline F32x4 oddLanes(F32x4 a, F32x4 b) {
    return _mm_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1));
}

/** (a0, a1, b0, b1) */
inline F32x4 lowHalves(F32x4 a, F32x4 b) {
    return _mm_movelh_ps(a, b);
}

/** (a2, a3, b2, b3) */
inline F32x4 highHalves(F32x4 a, F32x4 b) {
    return _mm_shuffle_ps(a, b, _MM_SHUFFLE(3, 2, 3, 2));
}

/** (a0, b0, a1, b1) */
inline F32x4 zipLow(F32x4 a, F32x4 b) {
    return _mm_unpacklo_ps(a, b);
}

/** (a2, b2, a3, b3) */
inline F32x4 zipHigh(F32x4 a, F32x4 b) {
    return _mm_unpackhi_ps(a, b);
}

/** (v3, v2, v1, v0) */
inline F32x4 reversed(F32x4 v) {
    return _mm_shuffle_ps(v, v, _MM_SHUFFLE(0, 1, 2, 3));
}

/** (v0, v2, v1, v3) */
inline F32x4 zipHalves(F32x4 v) {
    return _mm_shuffle_ps(v, v, _MM_SHUFFLE(3, 1, 2, 0));
}

/** (v2, v3, v0, v1) */
inline F32x4 swapHalves(F32x4 v) {
    return _mm_shuffle_ps(v, v, _MM_SHUFFLE(1, 0, 3, 2));
}

/** (v1, v0, v3, v2) */
inline F32x4 swapPairs(F32x4 v) {
    return _mm_shuffle_ps(v, v, _MM_SHUFFLE(2, 3, 0, 1));
}

/** (v0, v1, -v2, -v3) */
inline F32x4 negateHighHalf(F32x4 v) {
    return _mm_xor_ps(v, _mm_setr_ps(0.0f, 0.0f, -0.0f, -0.0f));
}

/** (v0, -v1, v2, -v3) */
inline F32x4 negateOddLanes(F32x4 v) {
    return _mm_xor_ps(v, _mm_setr_ps(0.0f, -0.0f, 0.0f, -0.0f));
}

/** Two lanes in the lower half of a register; what the upper half holds means nothing. */
struct F32x2 {
    __m128 lanes;
};

inline F32x2 load2(const float* from) {
    return {_mm_loadl_pi(_mm_setzero_ps(), reinterpret_cast<const __m64*>(from))};
}

inline void store2(float* to, F32x2 v) {
    _mm_storel_pi(reinterpret_cast<__m64*>(to), v.lanes);
}

inline F32x2 splat2(float value) {
    return {_mm_set1_ps(value)};
}

inline F32x2 add(F32x2 a, F32x2 b) {
    return {add(a.lanes, b.lanes)};
}

inline F32x2 sub(F32x2 a, F32x2 b) {
    return {sub(a.lanes, b.lanes)};
}

inline F32x2 mul(F32x2 a, F32x2 b) {
    return {mul(a.lanes, b.lanes)};
}

/** accumulator + a·b */
inline F32x2 mulAdd(F32x2 accumulator, F32x2 a, F32x2 b) {
    return {mulAdd(accumulator.lanes, a.lanes, b.lanes)};
}

/** accumulator - a·b */
inline F32x2 mulSub(F32x2 accumulator, F32x2 a, F32x2 b) {
    return {mulSub(accumulator.lanes, a.lanes, b.lanes)};
}

/** x + y where a < b, x - y elsewhere and where a or b is NaN */
inline F32x2 addIfLess(F32x2 a, F32x2 b, F32x2 x, F32x2 y) {
    const __m128 signs = _mm_andnot_ps(_mm_cmplt_ps(a.lanes, b.lanes), _mm_set1_ps(-0.0f));
    return {add(x.lanes, _mm_xor_ps(y.lanes, signs))};
}

inline float firstLane(F32x2 v) {
    return _mm_cvtss_f32(v.lanes);
}

/** Two vectors that take turns in memory, lane by lane. */
struct F32x2Zipped {
    F32x2 a, b;
};

/** (a0, b0) */
inline F32x2 zipLow(F32x2 a, F32x2 b) {
    return {_mm_unpacklo_ps(a.lanes, b.lanes)};
}

/** (a1, b1) */
inline F32x2 zipHigh(F32x2 a, F32x2 b) {
    const __m128 zipped = _mm_unpacklo_ps(a.lanes, b.lanes);
    return {_mm_movehl_ps(zipped, zipped)};
}

/** a0, b0, a1, b1 in memory */
inline void storeZipped(float* to, F32x2 a, F32x2 b) {
    store4(to, zipLow(a.lanes, b.lanes));
}

/** What storeZipped stored */
inline F32x2Zipped loadZipped(const float* from) {
    const F32x2 first = load2(from), second = load2(from + 2);
    return {zipLow(first, second), zipHigh(first, second)};
}

/** v·c[Lane], each lane of v by the same lane of c */
template <int Lane>
inline F32x4 mulLane(F32x4 v, F32x4 c) {
    return mul(v, _mm_shuffle_ps(c, c, _MM_SHUFFLE(Lane, Lane, Lane, Lane)));
}

/** accumulator + v·c[Lane] */
template <int Lane>
inline F32x4 mulAddLane(F32x4 accumulator, F32x4 v, F32x4 c) {
    return mulAdd(accumulator, v, _mm_shuffle_ps(c, c, _MM_SHUFFLE(Lane, Lane, Lane, Lane)));
}

/** (a0 + a1, a2 + a3, b0 + b1, b2 + b3) */
inline F32x4 addPairs(F32x4 a, F32x4 b) {
    return add(evenLanes(a, b), oddLanes(a, b));
}

/** Four reductions at once: lane i is sumLanes of the i-th argument. */
inline F32x4 sumLanesOfFour(F32x4 a, F32x4 b, F32x4 c, F32x4 d) {
    return addPairs(addPairs(a, b), addPairs(c, d));
}

}  // namespace SP_SIMD_TARGET
}  // namespace simd

#endif
