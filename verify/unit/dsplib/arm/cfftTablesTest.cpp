// Each table of the FFT, rebuilt here by its rule in long double, bit for bit.

#include "dsplib/arm/cfft_tables.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <set>

namespace {

constexpr long double TwoPi = 6.283185307179586476925286766559005768L;

/**
 * cos and sin of 2πk/M, 0 <= k < M/2, rounded once. Multiples of a quarter turn are exact by rule,
 * where long double would leave a trace of the rounding of π.
 */
float exactCosine(int k, int M) {
    if (4 * k == M) return 0.0f;
    return static_cast<float>(std::cos(TwoPi * k / M));
}

float exactSine(int k, int M) {
    return static_cast<float>(std::sin(TwoPi * k / M));
}

std::uint32_t bits(float value) {
    std::uint32_t out;
    std::memcpy(&out, &value, sizeof(out));
    return out;
}

void expectTwiddle(float cosine, float sine, int k, int M) {
    EXPECT_EQ(bits(cosine), bits(exactCosine(k, M))) << M << " " << k;
    EXPECT_EQ(bits(sine), bits(exactSine(k, M))) << M << " " << k;
}

TEST(Twiddles, AreInterleavedUpTo16AndInBlocksOfTwoFrom32On) {
    EXPECT_TRUE(bits(cfft::w_[0]) == 0u && bits(cfft::w_[1]) == 0u);
    for (int M = 4; M <= FFT_MAX; M *= 2) {
        for (int k = 0; k < M / 4; ++k) {
            const int at = M / 2 + (M < 32 ? 2 * k : 4 * (k / 2) + k % 2);
            const float* const cosine = cfft::w_.data() + at;
            expectTwiddle(cosine[0], cosine[M < 32 ? 1 : 2], k, M);
        }
    }
}

TEST(LeafTwiddles, AreTheSixteenthRootsInBlocksOfTwo) {
    for (int k = 0; k < 8; ++k) {
        const float* const cosine = cfft::w_nl.data() + 4 * (k / 2) + k % 2;
        expectTwiddle(cosine[0], cosine[2], k, 16);
    }
}

TEST(LeafPositions, BeginAsKnown) {
    const std::uint16_t first[] = {0, 4096, 2048, 7168, 1024, 5120, 3584, 6656};
    for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(cfft::index_lut_[i], first[i]) << i;
}

TEST(LeafPositions, AreDistinctMultiplesOf16) {
    std::set<int> seen;
    for (const std::uint16_t position : cfft::index_lut_) {
        EXPECT_EQ(position % 16, 0);
        EXPECT_LT(position, FFT_MAX);
        seen.insert(position);
    }
    EXPECT_EQ(seen.size(), cfft::index_lut_.size());
}

/** Descends the conjugate-pair tree for one residue, where the table is made by a walk of it all.
 */
int positionOf(int residue) {
    int size = FFT_MAX, offset = 0, stride = 1, position = 0;
    while (size > 16) {
        if ((residue - offset) % (2 * stride) == 0) {
            size /= 2;
            stride *= 2;
        } else if (size == 32) {
            return position + 16;  // its two 8-point children share the unit behind the front half
        } else if ((residue - offset - stride) % (4 * stride) == 0) {
            position += size / 2;
            size /= 4;
            offset += stride;
            stride *= 4;
        } else {
            position += 3 * size / 4;
            size /= 4;
            offset -= stride;
            stride *= 4;
        }
    }
    return position;
}

TEST(LeafPositions, FollowTheDescentForEachResidue) {
    for (int residue = 0; residue < 512; ++residue) {
        EXPECT_EQ(cfft::index_lut_[static_cast<std::size_t>(residue)], positionOf(residue))
            << residue;
    }
}

}  // namespace
