// The passes of the FFT by themselves: each combine against its formula in double precision, each
// driver against a direct transform from leaves that the test stores.

#include "cfftTesting.h"
#include "dsplib/arm/cfft_drivers.h"

namespace {

using namespace cffttest;
using Point = std::complex<double>;

/** Element k of the block layout. */
Point inBlocks(const GuardedFloats& data, std::size_t k) {
    const std::size_t at = 4 * (k / 2) + k % 2;
    return {static_cast<double>(data[at]), static_cast<double>(data[at + 2])};
}

void putInBlocks(GuardedFloats& data, std::size_t k, Point value) {
    const std::size_t at = 4 * (k / 2) + k % 2;
    data[at] = static_cast<float>(value.real());
    data[at + 2] = static_cast<float>(value.imag());
}

Spectrum unblocked(const GuardedFloats& data) {
    Spectrum out(data.size() / 2);
    for (std::size_t k = 0; k < out.size(); ++k) out[k] = inBlocks(data, k);
    return out;
}

/** The 4-way combine at the front `size` elements of `x`; sign is that of the transform. */
void combineInDouble(Spectrum& x, std::size_t size, int sign) {
    const Spectrum& w = reference::rootsOfUnity(size, 1);
    const Point turn(0.0, sign);
    for (std::size_t k = 0; k < size / 4; ++k) {
        const Point withKernel = sign < 0 ? std::conj(w[k]) : w[k];
        const Point z = x[k + size / 2] * withKernel;
        const Point zc = x[k + 3 * size / 4] * std::conj(withKernel);
        const Point u0 = x[k], u1 = x[k + size / 4], sum = z + zc, difference = z - zc;
        x[k] = u0 + sum;
        x[k + size / 2] = u0 - sum;
        x[k + size / 4] = u1 + turn * difference;
        x[k + 3 * size / 4] = u1 - turn * difference;
    }
}

struct Passes {
    int sign;
    void (*butterfly4)(int, float*);
    void (*butterfly8)(int, float*);
    void (*noleaves)(int, float*);
    void (*noleavesOdd)(int, float*);
};

constexpr Passes BothPasses[] = {
    {-1, cfft::fft_butterfly4_combine, cfft::fft_butterfly8_combine, cfft::fft_noleaves,
     cfft::fft_noleaves_odd},
    {+1, cfft::ifft_butterfly4_combine, cfft::ifft_butterfly8_combine, cfft::ifft_noleaves,
     cfft::ifft_noleaves_odd},
};

// One or two levels have roundings of a few units on values of the size of the data.
constexpr double PassLimit = 1.0e-7;

TEST(Combine4, IsItsFormulaAtEverySize) {
    for (const Passes& passes : BothPasses) {
        for (int M = 32; M <= FFT_MAX; M *= 2) {
            GuardedFloats data = noise(M, 61);
            Spectrum node = unblocked(data);
            combineInDouble(node, node.size(), passes.sign);
            passes.butterfly4(M, data.data());
            EXPECT_LE(relativeRmsError(unblocked(data), node), PassLimit) << M;
            EXPECT_TRUE(data.intact()) << M;
        }
    }
}

TEST(Combine8, IsTwoLevelsOfCombine4AtEverySize) {
    for (const Passes& passes : BothPasses) {
        for (int M = 64; M <= FFT_MAX; M *= 2) {
            GuardedFloats data = noise(M, 62);
            Spectrum node = unblocked(data);
            combineInDouble(node, node.size() / 2, passes.sign);
            combineInDouble(node, node.size(), passes.sign);
            passes.butterfly8(M, data.data());
            EXPECT_LE(relativeRmsError(unblocked(data), node), PassLimit) << M;
            EXPECT_TRUE(data.intact()) << M;
        }
    }
}

/** Stores the leaves of a node of the conjugate-pair tree over x, each an 8-point transform. */
class Leaves {
  public:
    Leaves(const Spectrum& x, int sign, GuardedFloats& data) : x_(x), sign_(sign), data_(data) {}

    void store(int size, int offset, int stride, int position, bool negative) {
        if (size == 8) return storeLeaf(offset, stride, position);
        if (size == 16) {
            // the leaf at the unit's own offset stands first if that is positive, second otherwise
            storeLeaf(negative ? offset + stride : offset, 2 * stride, position);
            storeLeaf(negative ? offset : offset - stride, 2 * stride, position + 8);
            return;
        }
        store(size / 2, offset, 2 * stride, position, negative);
        store(size / 4, offset + stride, 4 * stride, position + size / 2, false);
        store(size / 4, offset - stride, 4 * stride, position + 3 * size / 4, true);
    }

  private:
    void storeLeaf(int offset, int stride, int position) {
        const int n = static_cast<int>(x_.size());
        Spectrum in(8);
        for (int m = 0; m < 8; ++m) {
            in[static_cast<std::size_t>(m)] =
                x_[static_cast<std::size_t>((offset + m * stride + n) % n)];
        }
        const Spectrum leaf = reference::directDft(in, sign_);
        for (std::size_t k = 0; k < 8; ++k) {
            putInBlocks(data_, static_cast<std::size_t>(position) + k, leaf[k]);
        }
    }

    const Spectrum& x_;
    int sign_;
    GuardedFloats& data_;
};

TEST(NoLeaves, MakesTheNodeOfEverySizeFromItsLeavesInEitherOrientation) {
    for (const Passes& passes : BothPasses) {
        for (int M = 32; M <= 4096; M *= 2) {
            for (const bool negative : {false, true}) {
                const Spectrum x = widened(noise(M, 63));
                GuardedFloats data(floatsOf(M));
                Leaves(x, passes.sign, data).store(M, 0, 1, 0, negative);
                (negative ? passes.noleavesOdd : passes.noleaves)(M, data.data());
                EXPECT_LE(relativeRmsError(unblocked(data), reference::fastDft(x, passes.sign)),
                          RmsLimit)
                    << M << " sign " << passes.sign << " negative " << negative;
                EXPECT_TRUE(data.intact()) << M;
            }
        }
    }
}

TEST(LeafPass, StoresEachLeafOfTheTreeWhereItsNodeLies) {
    for (int n = 32; n <= FFT_MAX; n *= 2) {
        const GuardedFloats x = noise(n, 64);
        GuardedFloats stored(floatsOf(n)), expectedLeaves(floatsOf(n));
        cfft::leafPass<cfft::Direction::Forward, simd::BestLanes>(n, log2Of(n), x.data(),
                                                                  stored.data());
        Leaves(widened(x), -1, expectedLeaves).store(n, 0, 1, 0, false);
        EXPECT_LE(relativeRmsError(unblocked(stored), unblocked(expectedLeaves)), PassLimit) << n;
        EXPECT_TRUE(stored.intact()) << n;
    }
}

}  // namespace
