/** The order in which the complex FFT combines: nodes from stored leaves, and the top level. */
#ifndef DSPLIB_CFFT_DRIVERS_H
#define DSPLIB_CFFT_DRIVERS_H

#include "cfft_combines.h"
#include "cfft_leaves.h"
#if SP_SIMD_WIDEST > 4
#include "dsplib/x86/cfft_wide32.h"
#endif
#if SP_SIMD_WIDEST >= 16
#include "dsplib/x86/cfft_wide128.h"
#endif

namespace cfft {
inline namespace SP_SIMD_TARGET {

template <int L>
using Arranged = typename CombineArrangement<L>::Type;

/** The front of a node of M > 32 elements as one node from its leaves; returns that one's size. */
template <Direction D, Orientation O, int L>
inline int firstNode([[maybe_unused]] int M, float* data) {
#if SP_SIMD_WIDEST >= 16
    // From 128 elements on in nodes of 2^odd, so that all levels above come in twos.
    if constexpr (L >= 16) {
        constexpr unsigned OddPowers = 0xAAAAAAAA;  // of two
        if ((static_cast<unsigned>(M) & OddPowers) != 0) {
            combineLeaves128<D, O, Layout::Blocks>(data);
            return 128;
        }
    }
#endif
    combineLeaves64<D, O, Layout::Blocks, Arranged<L>>(data);
    return 64;
}

/**
 * A node of M = 32 to 4096 elements from its stored leaves, in blocks. O is the orientation of the
 * node's first unit: negative where the node's own offset is, that is for a Z' node and for those
 * that begin one.
 */
template <Direction D, Orientation O, int L>
void noLeaves(int M, float* data) {
    constexpr Orientation Positive = Orientation::Positive, Negative = Orientation::Negative;
    if (M == 32) return combineLeaves32<D, O, Layout::Blocks, Arranged<L>>(data);

    // In floats a node of size s that begins at data has its third quarter at s and its last at
    // 3s/2. Up to 1024 it grows by two levels a pass, above by one.
    int s = 2 * firstNode<D, O, L>(M, data);
    while (M > s && s <= 2047) {
        noLeaves<D, Positive, L>(s / 4, data + s);
        noLeaves<D, Negative, L>(s / 4, data + 3 * s / 2);
        noLeaves<D, Positive, L>(s / 2, data + 2 * s);
        noLeaves<D, Negative, L>(s / 2, data + 3 * s);
        combine8<D, Layout::Blocks, Arranged<L>>(2 * s, data);
        s *= 4;
    }
    while (M >= s) {
        noLeaves<D, Positive, L>(s / 4, data + s);
        noLeaves<D, Negative, L>(s / 4, data + 3 * s / 2);
        combine4<D, Layout::Blocks, Arranged<L>>(s, data);
        s *= 2;
    }
}

/**
 * N = 128, 4096, 8192: children, then a 4-way pass that leaves the interleaved layout. For the
 * public interface alone; a frame of the tracker takes finishBy8 forward and the ends inverse.
 */
template <Direction D, int L>
inline void finishBy4(int N, float* y) {
    noLeaves<D, Orientation::Positive, L>(N / 2, y);
    noLeaves<D, Orientation::Positive, L>(N / 4, y + N);
    noLeaves<D, Orientation::Negative, L>(N / 4, y + 3 * N / 2);
    combine4<D, Layout::Interleaved, Arranged<L>>(N, y);
}

/** N = 256 to 2048: grandchildren in front, children behind, then an 8-way pass. */
template <Direction D, int L>
inline void finishBy8(int N, float* y) {
    noLeaves<D, Orientation::Positive, L>(N / 4, y);
    noLeaves<D, Orientation::Positive, L>(N / 8, y + N / 2);
    noLeaves<D, Orientation::Negative, L>(N / 8, y + 3 * N / 4);
    noLeaves<D, Orientation::Positive, L>(N / 4, y + N);
    noLeaves<D, Orientation::Negative, L>(N / 4, y + 3 * N / 2);
    combine8<D, Layout::Interleaved, Arranged<L>>(N, y);
}

/** The transform of N = 32 to FFT_MAX elements on vectors of up to L lanes. */
template <Direction D, int L>
void transform(int N, int log2N, const float* x, float* y) {
#if SP_SIMD_WIDEST > 4
    if constexpr (L > 4) {
        if (N == 32) return transform32<D, L>(x, y);
    }
#endif
    leafPass<D, L>(N, log2N, x, y);
    if (N == 32) {
        combineLeaves32<D, Orientation::Positive, Layout::Interleaved, Arranged<L>>(y);
    } else if (N == 64) {
        combineLeaves64<D, Orientation::Positive, Layout::Interleaved, Arranged<L>>(y);
#if SP_SIMD_WIDEST >= 16
    } else if (L >= 16 && N == 128) {
        combineLeaves128<D, Orientation::Positive, Layout::Interleaved>(y);
#endif
    } else if (N == 128 || N >= 4096) {
        finishBy4<D, L>(N, y);
    } else {
        finishBy8<D, L>(N, y);
    }
}

// The passes and drivers by the names that they are known by, at the width at which this machine's
// transforms run. The transforms do not go through them: they are for looking at one pass alone.

inline void fft_butterfly4_combine(int M, float* data) {
    combine4<Direction::Forward, Layout::Blocks, Arranged<simd::BestLanes>>(M, data);
}

inline void ifft_butterfly4_combine(int M, float* data) {
    combine4<Direction::Inverse, Layout::Blocks, Arranged<simd::BestLanes>>(M, data);
}

inline void fft_butterfly8_combine(int M, float* data) {
    combine8<Direction::Forward, Layout::Blocks, Arranged<simd::BestLanes>>(M, data);
}

inline void ifft_butterfly8_combine(int M, float* data) {
    combine8<Direction::Inverse, Layout::Blocks, Arranged<simd::BestLanes>>(M, data);
}

inline void fft_noleaves(int M, float* data) {
    noLeaves<Direction::Forward, Orientation::Positive, simd::BestLanes>(M, data);
}

inline void fft_noleaves_odd(int M, float* data) {
    noLeaves<Direction::Forward, Orientation::Negative, simd::BestLanes>(M, data);
}

inline void ifft_noleaves(int M, float* data) {
    noLeaves<Direction::Inverse, Orientation::Positive, simd::BestLanes>(M, data);
}

inline void ifft_noleaves_odd(int M, float* data) {
    noLeaves<Direction::Inverse, Orientation::Negative, simd::BestLanes>(M, data);
}

}  // namespace SP_SIMD_TARGET
}  // namespace cfft

#endif
