// One source, many widths: every vector width of this build and of this machine gives the same
// bits, and so does plain C++ on scalar lanes unless the build fuses multiply-add.

#include "cfftTesting.h"
#include "cfftWidths.h"
#include "dsplib/arm/cfft_kernels.h"

namespace {

using namespace cffttest;

struct Engine {
    const char* name;
    Kernels kernels;
    bool runsHere = true;
    bool fuses = true;  // as the library does, if it does
};

const Engine Engines[] = {
    {"TwoLanes", KernelsOfWidth<2>},
    {"FourLanes", KernelsOfWidth<4>},
#if SP_SIMD_WIDEST >= 8
    {"EightLanes", KernelsOfWidth<8>},
#endif
#if SP_SIMD_WIDEST >= 16
    {"SixteenLanes", KernelsOfWidth<16>},
#endif
#ifdef SP_SIMD_SEVERAL_WIDTHS
    {"Avx",
     {cfft::at8::forwardTransform, cfft::at8::inverseTransform, cfft::at8::inverseTransformEnds},
     __builtin_cpu_supports("avx") != 0},
    {"Avx512",
     {cfft::at16::forwardTransform, cfft::at16::inverseTransform, cfft::at16::inverseTransformEnds},
     sp_simd_lanes() == 16},
#endif
    {"FourScalarLanes", ScalarKernels4, true, false},
    {"TwoScalarLanes", ScalarKernels2, true, false},
};

#ifdef SP_SIMD_FUSED
constexpr bool LibraryFuses = true;
#else
constexpr bool LibraryFuses = false;
#endif

class Widths : public testing::TestWithParam<Engine> {
  protected:
    const Engine& engine = GetParam();

    void SetUp() override {
        if (!engine.runsHere) GTEST_SKIP() << "this machine has no such vectors";
    }

    void expectThoseOf(const Transform& transform, int n, const GuardedFloats& y) const {
        const GuardedFloats expected = transformed(transform, n, noise(n, 71));
        if (LibraryFuses && !engine.fuses) {
            EXPECT_LE(relativeRmsError(widened(y), widened(expected)), RmsLimit) << n;
        } else {
            EXPECT_TRUE(y.sameBitsAs(expected)) << transform.name << ", size " << n;
        }
        EXPECT_TRUE(y.intact()) << n;
    }
};

INSTANTIATE_TEST_SUITE_P(, Widths, testing::ValuesIn(Engines),
                         [](const auto& its) { return its.param.name; });

TEST_P(Widths, GiveTheBitsOfTheLibrary) {
    for (int n = 32; n <= FFT_MAX; n *= 2) {
        const GuardedFloats x = noise(n, 71);
        GuardedFloats forward(floatsOf(n)), inverse(floatsOf(n));
        engine.kernels.forward(n, log2Of(n), x.data(), forward.data());
        engine.kernels.inverse(n, log2Of(n), x.data(), inverse.data());
        expectThoseOf(Forward, n, forward);
        expectThoseOf(Inverse, n, inverse);
    }
}

TEST_P(Widths, GiveTheEndsThatTheirWholeTransformHas) {
    GuardedFloats x = noise(FFT_MAX, 72), whole(floatsOf(FFT_MAX)), ends(floatsOf(FFT_MAX));
    std::fill(x.data() + floatsOf(SP_IFFT_ENDS_USED),
              x.data() + floatsOf(FFT_MAX - SP_IFFT_ENDS_USED), 0.0f);
    engine.kernels.inverse(FFT_MAX, 13, x.data(), whole.data());
    for (const int wanted : {32, SP_IFFT_ENDS_MOST_WANTED}) {
        engine.kernels.inverseEnds(x.data(), ends.data(), wanted);
        for (std::size_t i = 0; i < floatsOf(wanted); ++i) {
            const std::size_t last = floatsOf(FFT_MAX) - 1 - i;
            ASSERT_TRUE(ends[i] == whole[i] && ends[last] == whole[last]) << wanted << " " << i;
        }
    }
}

}  // namespace
