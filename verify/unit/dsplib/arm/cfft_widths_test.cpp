// One source, many widths: every vector width of this build gives the same bits, and so does plain
// C++ on scalar lanes unless the build fuses multiply-add.

#include <gtest/gtest.h>

#include "cfft_scalar_twin.h"
#include "cfft_testing.h"
#include "dsplib/arm/cfft_drivers.h"

namespace {

using namespace cffttest;
using cfft::Direction;

using Engine = void (*)(int, int, const float*, float*);

void expectSameBits(const Transform& transform, Engine other, const char* what) {
    for (int n = 32; n <= FFT_MAX; n *= 2) {
        const GuardedFloats x = noise(n, 71);
        GuardedFloats y(floatsOf(n));
        other(n, log2Of(n), x.data(), y.data());
        EXPECT_TRUE(y.sameBitsAs(transformed(transform, n, x)))
            << what << ", " << transform.name << ", size " << n;
        EXPECT_TRUE(y.intact()) << what << ", size " << n;
    }
}

template <int L>
void expectSameBitsAtWidth() {
    expectSameBits(Forward, cfft::transform<Direction::Forward, L>, "other width");
    expectSameBits(Inverse, cfft::transform<Direction::Inverse, L>, "other width");
}

TEST(Widths, TwoLanesGiveTheBitsOfTheLibrary) {
    expectSameBitsAtWidth<2>();
}

TEST(Widths, FourLanesGiveTheBitsOfTheLibrary) {
    expectSameBitsAtWidth<4>();
}

#if SP_SIMD_WIDEST >= 8
TEST(Widths, EightLanesGiveTheBitsOfTheLibrary) {
    expectSameBitsAtWidth<8>();
}
#endif

#if SP_SIMD_WIDEST >= 16
TEST(Widths, SixteenLanesGiveTheBitsOfTheLibrary) {
    expectSameBitsAtWidth<16>();
}
#endif

#if !defined(__FMA__) || defined(SP_SIMD_SCALAR)
TEST(ScalarTwin, GivesTheBitsOfTheLibrary) {
    expectSameBits(Forward, scalarForward4, "four scalar lanes");
    expectSameBits(Inverse, scalarInverse4, "four scalar lanes");
    expectSameBits(Forward, scalarForward2, "two scalar lanes");
    expectSameBits(Inverse, scalarInverse2, "two scalar lanes");
}
#else
TEST(ScalarTwin, DiffersFromTheFusedLibraryByRoundingOnly) {
    const Engine twins[] = {scalarForward4, scalarInverse4};
    for (int n = 32; n <= FFT_MAX; n *= 2) {
        for (std::size_t i = 0; i < 2; ++i) {
            const GuardedFloats x = noise(n, 71);
            GuardedFloats y(floatsOf(n));
            twins[i](n, log2Of(n), x.data(), y.data());
            const Spectrum fused = widened(transformed(*Both[i], n, x));
            EXPECT_LE(reference::relativeRmsError(widened(y), fused), RmsLimit) << n;
        }
    }
}
#endif

}  // namespace
