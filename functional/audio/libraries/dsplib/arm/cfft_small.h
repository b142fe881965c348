/**
 * The complex FFT of 1 to 16 elements: written out, no tables. For the public interface alone: a
 * frame of the tracker transforms 2048 and 8192.
 */
#ifndef DSPLIB_CFFT_SMALL_H
#define DSPLIB_CFFT_SMALL_H

#include "cfft_leaves.h"

namespace cfft {
inline namespace SP_SIMD_TARGET {

/** cos π/8 and sin π/8 rounded to single precision: 0x3f6c835e, 0x3ec3ef15 */
constexpr float CosPi8 = 0.92387953f;
constexpr float SinPi8 = 0.38268343f;

using Element = Split<1>;

inline Element load(const float* x, int n) {
    return {x[2 * n], x[2 * n + 1]};
}

inline void store(float* y, int k, Element z) {
    y[2 * k] = z.re;
    y[2 * k + 1] = z.im;
}

template <Direction D>
inline void transform2(const float* x, float* y) {
    constexpr float Scale = scaleOf<D>(2);
    const Element x0 = load(x, 0), x1 = load(x, 1);
    store(y, 0, scaledSum<D>(x0 + x1, Scale));
    store(y, 1, scaledSum<D>(x0 - x1, Scale));
}

template <Direction D>
inline void transform4(const float* x, float* y) {
    constexpr int Sign = KernelSign<D>;
    constexpr float Scale = scaleOf<D>(4);
    const Element x0 = load(x, 0), x1 = load(x, 1), x2 = load(x, 2), x3 = load(x, 3);
    const Element a0 = x0 + x2, a1 = x0 - x2, b0 = x1 + x3, b1 = x1 - x3;
    store(y, 0, scaledSum<D>(a0 + b0, Scale));
    store(y, 1, scaledSum<D>(addTimesI<Sign>(a1, b1), Scale));
    store(y, 2, scaledSum<D>(a0 - b0, Scale));
    store(y, 3, scaledSum<D>(addTimesI<-Sign>(a1, b1), Scale));
}

/** The 8-point transform of every `stride`-th element from `first` on. */
template <Direction D>
inline Leaf<Element> transformEvery(const float* x, int first, int stride, float scale) {
    return transformLeaf<D, Element>(
        {load(x, first), load(x, first + stride), load(x, first + 2 * stride),
         load(x, first + 3 * stride), load(x, first + 4 * stride), load(x, first + 5 * stride),
         load(x, first + 6 * stride), load(x, first + 7 * stride)},
        scale);
}

template <Direction D>
inline void transform8(const float* x, float* y) {
    const Leaf<Element> z = transformEvery<D>(x, 0, 1, scaleOf<D>(8));
    store(y, 0, z.x0);
    store(y, 1, z.x1);
    store(y, 2, z.x2);
    store(y, 3, z.x3);
    store(y, 4, z.x4);
    store(y, 5, z.x5);
    store(y, 6, z.x6);
    store(y, 7, z.x7);
}

/** Outputs k and k+8 of 16 points from an even and an odd one; `turned` has its twiddle. */
inline void store16(float* y, int k, Element even, Element turned) {
    store(y, k, even + turned);
    store(y, k + 8, even - turned);
}

/** z turned with the kernel by the angle whose cosine and sine are given */
template <Direction D>
inline Element turned(Element z, float cosine, float sine) {
    return timesTwiddle<KernelSign<D>>(z, z, Twiddle<Element>{cosine, sine});
}

template <Direction D>
inline void transform16(const float* x, float* y) {
    const Leaf<Element> even = transformEvery<D>(x, 0, 2, scaleOf<D>(16));
    const Leaf<Element> odd = transformEvery<D>(x, 1, 2, scaleOf<D>(16));
    const Element zero{0.0f, 0.0f};
    store16(y, 0, even.x0, odd.x0);
    store16(y, 1, even.x1, turned<D>(odd.x1, CosPi8, SinPi8));
    store16(y, 2, even.x2, turned<D>(odd.x2, SqrtHalf, SqrtHalf));
    store16(y, 3, even.x3, turned<D>(odd.x3, SinPi8, CosPi8));
    store16(y, 4, even.x4, addTimesI<KernelSign<D>>(zero, odd.x4));
    store16(y, 5, even.x5, turned<D>(odd.x5, -SinPi8, CosPi8));
    store16(y, 6, even.x6, turned<D>(odd.x6, -SqrtHalf, SqrtHalf));
    store16(y, 7, even.x7, turned<D>(odd.x7, -CosPi8, SinPi8));
}

/** N = 1, 2, 4, 8 or 16. */
template <Direction D>
inline void transformSmall(int N, const float* x, float* y) {
    switch (N) {
        case 1:
            return store(y, 0, load(x, 0));
        case 2:
            return transform2<D>(x, y);
        case 4:
            return transform4<D>(x, y);
        case 8:
            return transform8<D>(x, y);
        default:
            return transform16<D>(x, y);
    }
}

}  // namespace SP_SIMD_TARGET
}  // namespace cfft

#endif
