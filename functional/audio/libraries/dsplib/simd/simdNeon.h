/** The vector layer on ARM Advanced SIMD, 32- and 64-bit. */
#ifndef DSPLIB_SIMD_SIMD_NEON_H
#define DSPLIB_SIMD_SIMD_NEON_H

#ifndef __ARM_NEON
#error "simdNeon.h needs a compiler that targets ARM Advanced SIMD (-mfpu=neon)"
#endif

#include <arm_neon.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace simd {
inline namespace SP_SIMD_TARGET {

using F32x2 = float32x2_t;
using F32x4 = float32x4_t;

inline F32x4 load4(const float* from) {
    return vld1q_f32(from);
}

inline void store4(float* to, F32x4 v) {
    vst1q_f32(to, v);
}

inline F32x4 splat4(float value) {
    return vdupq_n_f32(value);
}

inline F32x4 add(F32x4 a, F32x4 b) {
    return vaddq_f32(a, b);
}

inline F32x4 mul(F32x4 a, F32x4 b) {
    return vmulq_f32(a, b);
}

/** accumulator + a·b, rounded twice: the multiply-accumulate of this unit does not fuse */
inline F32x4 mulAdd(F32x4 accumulator, F32x4 a, F32x4 b) {
    return vmlaq_f32(accumulator, a, b);
}

/** Whether a division of vectors is one of each lane, and worth a look at whether it is needed. */
#ifdef __aarch64__

constexpr bool DividesByLane = false;

inline F32x4 div(F32x4 a, F32x4 b) {
    return vdivq_f32(a, b);
}

inline F32x4 squareRoot(F32x4 v) {
    return vsqrtq_f32(v);
}

#else

constexpr bool DividesByLane = true;

/** Lane by lane: the 32-bit unit has only estimates of a reciprocal, and results are exact here. */
inline F32x4 div(F32x4 a, F32x4 b) {
    F32x4 v = vdupq_n_f32(vgetq_lane_f32(a, 0) / vgetq_lane_f32(b, 0));
    v = vsetq_lane_f32(vgetq_lane_f32(a, 1) / vgetq_lane_f32(b, 1), v, 1);
    v = vsetq_lane_f32(vgetq_lane_f32(a, 2) / vgetq_lane_f32(b, 2), v, 2);
    return vsetq_lane_f32(vgetq_lane_f32(a, 3) / vgetq_lane_f32(b, 3), v, 3);
}

/** Lane by lane, as the division. */
inline F32x4 squareRoot(F32x4 a) {
    F32x4 v = vdupq_n_f32(std::sqrt(vgetq_lane_f32(a, 0)));
    v = vsetq_lane_f32(std::sqrt(vgetq_lane_f32(a, 1)), v, 1);
    v = vsetq_lane_f32(std::sqrt(vgetq_lane_f32(a, 2)), v, 2);
    return vsetq_lane_f32(std::sqrt(vgetq_lane_f32(a, 3)), v, 3);
}

#endif

/** All bits of a lane where a < b, none elsewhere and where either is a NaN */
inline uint32x4_t isLess(F32x4 a, F32x4 b) {
#if defined(__aarch64__) || defined(__clang__)
    return vcltq_f32(a, b);
#else
    // GCC makes four scalar comparisons of the intrinsic, because the vector comparison of 32-bit
    // ARM takes denormal operands for zeros; so does all other vector arithmetic there.
    uint32x4_t less;
    asm("vcgt.f32 %q0, %q1, %q2" : "=w"(less) : "w"(b), "w"(a));
    return less;
#endif
}

/** As for four lanes */
inline uint32x2_t isLess(F32x2 a, F32x2 b) {
#if defined(__aarch64__) || defined(__clang__)
    return vclt_f32(a, b);
#else
    uint32x2_t less;
    asm("vcgt.f32 %P0, %P1, %P2" : "=w"(less) : "w"(b), "w"(a));
    return less;
#endif
}

/** Whether a < b in any lane */
inline bool anyLess(F32x4 a, F32x4 b) {
    const uint32x4_t less = isLess(a, b);
    const uint32x2_t half = vorr_u32(vget_low_u32(less), vget_high_u32(less));
    return vget_lane_u64(vreinterpret_u64_u32(half), 0) != 0;
}

/** x where a < b, else y; y too where a or b is NaN */
inline F32x4 selectLess(F32x4 a, F32x4 b, F32x4 x, F32x4 y) {
    return vbslq_f32(isLess(a, b), x, y);
}

/** a where a < b, else b; b too where one of them is NaN */
inline F32x4 smaller(F32x4 a, F32x4 b) {
    return selectLess(a, b, a, b);
}

/** a where a > b, else b; b too where one of them is NaN */
inline F32x4 larger(F32x4 a, F32x4 b) {
    return selectLess(b, a, a, b);
}

/** The first and the second of each of four pairs of floats in memory. */
struct F32x4Pairs {
    F32x4 first, second;
};

inline F32x4Pairs loadPairs4(const float* from) {
    const float32x4x2_t v = vld2q_f32(from);
    return {v.val[0], v.val[1]};
}

inline void storePairs(float* to, F32x4 first, F32x4 second) {
    const float32x4x2_t pairs = {{first, second}};
    vst2q_f32(to, pairs);
}

/** The largest lane, of lanes that are numbers */
inline float largestLane(F32x4 v) {
    const float32x2_t pairs = vpmax_f32(vget_low_f32(v), vget_high_f32(v));
    return vget_lane_f32(vpmax_f32(pairs, pairs), 0);
}

inline F32x4 loadBytes4(const std::uint8_t* from) {
    std::uint32_t bytes;
    std::memcpy(&bytes, from, sizeof bytes);
    const uint16x8_t words = vmovl_u8(vcreate_u8(bytes));
    return vcvtq_f32_u32(vmovl_u16(vget_low_u16(words)));
}

/** Stores lanes that hold whole numbers from 0 to 255. */
inline void storeBytes(std::uint8_t* to, F32x4 v) {
    const uint16x4_t words = vmovn_u32(vcvtq_u32_f32(v));
    const uint8x8_t bytes = vmovn_u16(vcombine_u16(words, words));
    const std::uint32_t word = vget_lane_u32(vreinterpret_u32_u8(bytes), 0);
    std::memcpy(to, &word, sizeof word);
}

/** Truncates lanes from 0 up to 32767 to whole numbers. */
inline void storeIntegers(std::int16_t* to, F32x4 v) {
    vst1_s16(to, vmovn_s32(vcvtq_s32_f32(v)));
}

/** table[index[0]] to table[index[3]] */
inline F32x4 gather4(const float* table, const std::int16_t* index) {
    F32x4 v = vld1q_dup_f32(table + index[0]);
    v = vld1q_lane_f32(table + index[1], v, 1);
    v = vld1q_lane_f32(table + index[2], v, 2);
    return vld1q_lane_f32(table + index[3], v, 3);
}

/** (v0 + v1) + (v2 + v3): adjacent lanes first */
inline float sumLanes(F32x4 v) {
    const float32x2_t pairs = vpadd_f32(vget_low_f32(v), vget_high_f32(v));
    return vget_lane_f32(vpadd_f32(pairs, pairs), 0);
}

inline F32x4 sub(F32x4 a, F32x4 b) {
    return vsubq_f32(a, b);
}

/** accumulator - a·b, rounded twice */
inline F32x4 mulSub(F32x4 accumulator, F32x4 a, F32x4 b) {
    return vmlsq_f32(accumulator, a, b);
}

/** (a0, a2, b0, b2) */
inline F32x4 evenLanes(F32x4 a, F32x4 b) {
    return vuzpq_f32(a, b).val[0];
}

/** (a1, a3, b1, b3) */
inline F32x4 oddLanes(F32x4 a, F32x4 b) {
    return vuzpq_f32(a, b).val[1];
}

/** (a0, a1, b0, b1) */
inline F32x4 lowHalves(F32x4 a, F32x4 b) {
    return vcombine_f32(vget_low_f32(a), vget_low_f32(b));
}

/** (a2, a3, b2, b3) */
inline F32x4 highHalves(F32x4 a, F32x4 b) {
    return vcombine_f32(vget_high_f32(a), vget_high_f32(b));
}

/** (a0, b0, a1, b1) */
inline F32x4 zipLow(F32x4 a, F32x4 b) {
    return vzipq_f32(a, b).val[0];
}

/** (a2, b2, a3, b3) */
inline F32x4 zipHigh(F32x4 a, F32x4 b) {
    return vzipq_f32(a, b).val[1];
}

/** (v3, v2, v1, v0) */
inline F32x4 reversed(F32x4 v) {
    const float32x4_t pairs = vrev64q_f32(v);
    return vcombine_f32(vget_high_f32(pairs), vget_low_f32(pairs));
}

/** (v0, v2, v1, v3) */
inline F32x4 zipHalves(F32x4 v) {
    const float32x2x2_t zipped = vzip_f32(vget_low_f32(v), vget_high_f32(v));
    return vcombine_f32(zipped.val[0], zipped.val[1]);
}

/** (v2, v3, v0, v1) */
inline F32x4 swapHalves(F32x4 v) {
    return vextq_f32(v, v, 2);
}

/** (v1, v0, v3, v2) */
inline F32x4 swapPairs(F32x4 v) {
    return vrev64q_f32(v);
}

inline F32x4 flipSigns(F32x4 v, uint32x4_t signs) {
    return vreinterpretq_f32_u32(veorq_u32(vreinterpretq_u32_f32(v), signs));
}

/** (v0, v1, -v2, -v3) */
inline F32x4 negateHighHalf(F32x4 v) {
    return flipSigns(v, vcombine_u32(vdup_n_u32(0), vdup_n_u32(0x80000000u)));
}

/** (v0, -v1, v2, -v3) */
inline F32x4 negateOddLanes(F32x4 v) {
    return flipSigns(v, vreinterpretq_u32_u64(vdupq_n_u64(0x8000000000000000u)));
}

// Two lanes serve the complex FFT, whose elements are 8-byte aligned. Loads and stores tell the
// unit so, which makes them shorter on the smaller cores; they fault at any other address.
constexpr std::size_t Alignment2 = 8;

inline F32x2 load2(const float* from) {
    return vld1_f32(static_cast<const float*>(__builtin_assume_aligned(from, Alignment2)));
}

inline void store2(float* to, F32x2 v) {
    vst1_f32(static_cast<float*>(__builtin_assume_aligned(to, Alignment2)), v);
}

inline F32x2 splat2(float value) {
    return vdup_n_f32(value);
}

inline F32x2 add(F32x2 a, F32x2 b) {
    return vadd_f32(a, b);
}

inline F32x2 sub(F32x2 a, F32x2 b) {
    return vsub_f32(a, b);
}

inline F32x2 mul(F32x2 a, F32x2 b) {
    return vmul_f32(a, b);
}

/** accumulator + a·b, rounded twice */
inline F32x2 mulAdd(F32x2 accumulator, F32x2 a, F32x2 b) {
    return vmla_f32(accumulator, a, b);
}

/** accumulator - a·b, rounded twice */
inline F32x2 mulSub(F32x2 accumulator, F32x2 a, F32x2 b) {
    return vmls_f32(accumulator, a, b);
}

/** x + y where a < b, x - y elsewhere and where a or b is NaN */
inline F32x2 addIfLess(F32x2 a, F32x2 b, F32x2 x, F32x2 y) {
    return vbsl_f32(isLess(a, b), vadd_f32(x, y), vsub_f32(x, y));
}

inline float firstLane(F32x2 v) {
    return vget_lane_f32(v, 0);
}

/** Two vectors that take turns in memory, lane by lane. */
struct F32x2Zipped {
    F32x2 a, b;
};

/** (a0, b0) */
inline F32x2 zipLow(F32x2 a, F32x2 b) {
    return vtrn_f32(a, b).val[0];
}

/** (a1, b1) */
inline F32x2 zipHigh(F32x2 a, F32x2 b) {
    return vtrn_f32(a, b).val[1];
}

/** a0, b0, a1, b1 in memory */
inline void storeZipped(float* to, F32x2 a, F32x2 b) {
    const float32x2x2_t pairs = {{a, b}};
    vst2_f32(static_cast<float*>(__builtin_assume_aligned(to, Alignment2)), pairs);
}

/** What storeZipped stored */
inline F32x2Zipped loadZipped(const float* from) {
    const float32x2x2_t v =
        vld2_f32(static_cast<const float*>(__builtin_assume_aligned(from, Alignment2)));
    return {v.val[0], v.val[1]};
}

/** The half of c that holds its lane Lane: 32-bit instructions multiply by a lane of two only. */
template <int Lane>
inline F32x2 halfWithLane(F32x4 c) {
    return Lane < 2 ? vget_low_f32(c) : vget_high_f32(c);
}

/** v·c[Lane], each lane of v by the same lane of c */
template <int Lane>
inline F32x4 mulLane(F32x4 v, F32x4 c) {
    return vmulq_lane_f32(v, halfWithLane<Lane>(c), Lane % 2);
}

/** accumulator + v·c[Lane] */
template <int Lane>
inline F32x4 mulAddLane(F32x4 accumulator, F32x4 v, F32x4 c) {
    return vmlaq_lane_f32(accumulator, v, halfWithLane<Lane>(c), Lane % 2);
}

/** (a0 + a1, a2 + a3, b0 + b1, b2 + b3) */
inline F32x4 addPairs(F32x4 a, F32x4 b) {
    return vcombine_f32(vpadd_f32(vget_low_f32(a), vget_high_f32(a)),
                        vpadd_f32(vget_low_f32(b), vget_high_f32(b)));
}

/** Four reductions at once: lane i is sumLanes of the i-th argument. */
inline F32x4 sumLanesOfFour(F32x4 a, F32x4 b, F32x4 c, F32x4 d) {
    return addPairs(addPairs(a, b), addPairs(c, d));
}

/**
 * The width at which a kernel that works at any width runs best: 32-bit ARM has 32 registers of two
 * lanes but only 16 of four, 64-bit ARM has 32 of four.
 */
#ifdef __aarch64__
constexpr int BestLanes = 4;
#else
constexpr int BestLanes = 2;
#endif

}  // namespace SP_SIMD_TARGET
}  // namespace simd

#endif
