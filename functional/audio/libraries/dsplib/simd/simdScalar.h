/** The vector layer in plain C++: same lanes, same reduction order, any machine. */
#ifndef DSPLIB_SIMD_SIMD_SCALAR_H
#define DSPLIB_SIMD_SIMD_SCALAR_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

namespace simd {
inline namespace SP_SIMD_TARGET {

template <std::size_t Lanes>
struct Lanewise {
    std::array<float, Lanes> lane;
};

using F32x2 = Lanewise<2>;
using F32x4 = Lanewise<4>;

/** Written out lane by lane, so that compilers keep the lanes in registers. */
template <class Operation>
inline F32x2 lanewise(const F32x2& a, const F32x2& b, Operation operation) {
    return {{operation(a.lane[0], b.lane[0]), operation(a.lane[1], b.lane[1])}};
}

template <class Operation>
inline F32x4 lanewise(const F32x4& a, const F32x4& b, Operation operation) {
    return {{operation(a.lane[0], b.lane[0]), operation(a.lane[1], b.lane[1]),
             operation(a.lane[2], b.lane[2]), operation(a.lane[3], b.lane[3])}};
}

inline F32x4 load4(const float* from) {
    return {{from[0], from[1], from[2], from[3]}};
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

/** Whether a division of vectors is one of each lane, and worth a look at whether it is needed. */
constexpr bool DividesByLane = true;

inline F32x4 div(F32x4 a, F32x4 b) {
    return lanewise(a, b, [](float x, float y) { return x / y; });
}

inline F32x4 squareRoot(F32x4 v) {
    return lanewise(v, v, [](float x, float) { return std::sqrt(x); });
}

/** a where a < b, else b; b too where one of them is NaN */
inline F32x4 smaller(F32x4 a, F32x4 b) {
    return lanewise(a, b, [](float x, float y) { return x < y ? x : y; });
}

/** a where a > b, else b; b too where one of them is NaN */
inline F32x4 larger(F32x4 a, F32x4 b) {
    return lanewise(a, b, [](float x, float y) { return x > y ? x : y; });
}

/** Whether a < b in any lane */
inline bool anyLess(F32x4 a, F32x4 b) {
    for (std::size_t i = 0; i < 4; ++i) {
        if (a.lane[i] < b.lane[i]) return true;
    }
    return false;
}

/** x where a < b, else y; y too where a or b is NaN */
inline F32x4 selectLess(F32x4 a, F32x4 b, F32x4 x, F32x4 y) {
    F32x4 v;
    for (std::size_t i = 0; i < 4; ++i) v.lane[i] = a.lane[i] < b.lane[i] ? x.lane[i] : y.lane[i];
    return v;
}

/** The first and the second of each of four pairs of floats in memory. */
struct F32x4Pairs {
    F32x4 first, second;
};

inline F32x4Pairs loadPairs4(const float* from) {
    return {{{from[0], from[2], from[4], from[6]}}, {{from[1], from[3], from[5], from[7]}}};
}

inline void storePairs(float* to, F32x4 first, F32x4 second) {
    for (std::size_t i = 0; i < 4; ++i) {
        to[2 * i] = first.lane[i];
        to[2 * i + 1] = second.lane[i];
    }
}

/** The largest lane, of lanes that are numbers */
inline float largestLane(F32x4 v) {
    return std::max(std::max(v.lane[0], v.lane[1]), std::max(v.lane[2], v.lane[3]));
}

inline F32x4 loadBytes4(const std::uint8_t* from) {
    return {{static_cast<float>(from[0]), static_cast<float>(from[1]), static_cast<float>(from[2]),
             static_cast<float>(from[3])}};
}

/** Stores lanes that hold whole numbers from 0 to 255. */
inline void storeBytes(std::uint8_t* to, F32x4 v) {
    for (std::size_t i = 0; i < 4; ++i) to[i] = static_cast<std::uint8_t>(v.lane[i]);
}

/** Truncates lanes from 0 up to 32767 to whole numbers. */
inline void storeIntegers(std::int16_t* to, F32x4 v) {
    for (std::size_t i = 0; i < 4; ++i) to[i] = static_cast<std::int16_t>(v.lane[i]);
}

/** table[index[0]] to table[index[3]] */
inline F32x4 gather4(const float* table, const std::int16_t* index) {
    return {{table[index[0]], table[index[1]], table[index[2]], table[index[3]]}};
}

/** (v0 + v1) + (v2 + v3): adjacent lanes first */
inline float sumLanes(F32x4 v) {
    return (v.lane[0] + v.lane[1]) + (v.lane[2] + v.lane[3]);
}

inline F32x4 sub(F32x4 a, F32x4 b) {
    return lanewise(a, b, [](float x, float y) { return x - y; });
}

/** accumulator - a·b */
inline F32x4 mulSub(F32x4 accumulator, F32x4 a, F32x4 b) {
    return sub(accumulator, mul(a, b));
}

/** (a0, a2, b0, b2) */
inline F32x4 evenLanes(F32x4 a, F32x4 b) {
    return {{a.lane[0], a.lane[2], b.lane[0], b.lane[2]}};
}

/** (a1, a3, b1, b3) */
inline F32x4 oddLanes(F32x4 a, F32x4 b) {
    return {{a.lane[1], a.lane[3], b.lane[1], b.lane[3]}};
}

/** (a0, a1, b0, b1) */
inline F32x4 lowHalves(F32x4 a, F32x4 b) {
    return {{a.lane[0], a.lane[1], b.lane[0], b.lane[1]}};
}

/** (a2, a3, b2, b3) */
inline F32x4 highHalves(F32x4 a, F32x4 b) {
    return {{a.lane[2], a.lane[3], b.lane[2], b.lane[3]}};
}

/** (a0, b0, a1, b1) */
inline F32x4 zipLow(F32x4 a, F32x4 b) {
    return {{a.lane[0], b.lane[0], a.lane[1], b.lane[1]}};
}

/** (a2, b2, a3, b3) */
inline F32x4 zipHigh(F32x4 a, F32x4 b) {
    return {{a.lane[2], b.lane[2], a.lane[3], b.lane[3]}};
}

/** (v3, v2, v1, v0) */
inline F32x4 reversed(F32x4 v) {
    return {{v.lane[3], v.lane[2], v.lane[1], v.lane[0]}};
}

/** (v0, v2, v1, v3) */
inline F32x4 zipHalves(F32x4 v) {
    return {{v.lane[0], v.lane[2], v.lane[1], v.lane[3]}};
}

/** (v2, v3, v0, v1) */
inline F32x4 swapHalves(F32x4 v) {
    return {{v.lane[2], v.lane[3], v.lane[0], v.lane[1]}};
}

/** (v1, v0, v3, v2) */
inline F32x4 swapPairs(F32x4 v) {
    return {{v.lane[1], v.lane[0], v.lane[3], v.lane[2]}};
}

/** (v0, v1, -v2, -v3) */
inline F32x4 negateHighHalf(F32x4 v) {
    return {{v.lane[0], v.lane[1], -v.lane[2], -v.lane[3]}};
}

/** (v0, -v1, v2, -v3) */
inline F32x4 negateOddLanes(F32x4 v) {
    return {{v.lane[0], -v.lane[1], v.lane[2], -v.lane[3]}};
}

inline F32x2 load2(const float* from) {
    return {{from[0], from[1]}};
}

inline void store2(float* to, F32x2 v) {
    for (std::size_t i = 0; i < 2; ++i) to[i] = v.lane[i];
}

inline F32x2 splat2(float value) {
    return {{value, value}};
}

inline F32x2 add(F32x2 a, F32x2 b) {
    return lanewise(a, b, [](float x, float y) { return x + y; });
}

inline F32x2 sub(F32x2 a, F32x2 b) {
    return lanewise(a, b, [](float x, float y) { return x - y; });
}

inline F32x2 mul(F32x2 a, F32x2 b) {
    return lanewise(a, b, [](float x, float y) { return x * y; });
}

/** accumulator + a·b */
inline F32x2 mulAdd(F32x2 accumulator, F32x2 a, F32x2 b) {
    return add(accumulator, mul(a, b));
}

/** accumulator - a·b */
inline F32x2 mulSub(F32x2 accumulator, F32x2 a, F32x2 b) {
    return sub(accumulator, mul(a, b));
}

/** x + y where a < b, x - y elsewhere and where a or b is NaN */
inline F32x2 addIfLess(F32x2 a, F32x2 b, F32x2 x, F32x2 y) {
    F32x2 v;
    for (std::size_t i = 0; i < 2; ++i) {
        v.lane[i] = a.lane[i] < b.lane[i] ? x.lane[i] + y.lane[i] : x.lane[i] - y.lane[i];
    }
    return v;
}

inline float firstLane(F32x2 v) {
    return v.lane[0];
}

/** Two vectors that take turns in memory, lane by lane. */
struct F32x2Zipped {
    F32x2 a, b;
};

/** (a0, b0) */
inline F32x2 zipLow(F32x2 a, F32x2 b) {
    return {{a.lane[0], b.lane[0]}};
}

/** (a1, b1) */
inline F32x2 zipHigh(F32x2 a, F32x2 b) {
    return {{a.lane[1], b.lane[1]}};
}

/** a0, b0, a1, b1 in memory */
inline void storeZipped(float* to, F32x2 a, F32x2 b) {
    store2(to, zipLow(a, b));
    store2(to + 2, zipHigh(a, b));
}

/** What storeZipped stored */
inline F32x2Zipped loadZipped(const float* from) {
    const F32x2 first = load2(from), second = load2(from + 2);
    return {zipLow(first, second), zipHigh(first, second)};
}

/** v·c[Lane], each lane of v by the same lane of c */
template <int Lane>
inline F32x4 mulLane(F32x4 v, F32x4 c) {
    return mul(v, splat4(c.lane[Lane]));
}

/** accumulator + v·c[Lane] */
template <int Lane>
inline F32x4 mulAddLane(F32x4 accumulator, F32x4 v, F32x4 c) {
    return mulAdd(accumulator, v, splat4(c.lane[Lane]));
}

/** (a0 + a1, a2 + a3, b0 + b1, b2 + b3) */
inline F32x4 addPairs(F32x4 a, F32x4 b) {
    return add(evenLanes(a, b), oddLanes(a, b));
}

/** Four reductions at once: lane i is sumLanes of the i-th argument. */
inline F32x4 sumLanesOfFour(F32x4 a, F32x4 b, F32x4 c, F32x4 d) {
    return addPairs(addPairs(a, b), addPairs(c, d));
}

/** The width at which a kernel that works at any width runs: that of the host's baseline. */
constexpr int BestLanes = 4;

}  // namespace SP_SIMD_TARGET
}  // namespace simd

#endif
