// The running median of the envelope against the plain loop, bit by bit, where its steps change
// from a share of the median to the smallest one and back.
#include "track/timeDomainKernels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "kit/floatBits.h"
#include "kit/noise.h"

namespace {

using namespace kit;
using reference::noise;

constexpr std::size_t Frame = 2048;

struct Medians {
    std::vector<float> values;
    float step;
};

Medians plainly(const std::vector<float>& envelope, float median, float step) {
    Medians found = {std::vector<float>(Frame), step};
    found.values[0] = median;
    for (std::size_t i = 1; i < Frame; ++i) {
        median = envelope[i] > median ? median + found.step : median - found.step;
        const float share = 0.005f * median;
        found.step = share >= 1e-12f ? share : 1e-12f;
        found.values[i] = median;
    }
    return found;
}

void expectThePlainMedians(const std::vector<float>& envelope, float median, float step) {
    const Medians expected = plainly(envelope, median, step);
    std::vector<float> medians(Frame, -1.0f);
    medians[Frame - 1] = median;
    voxloc::trackMedian(envelope.data(), &step, medians.data());
    for (std::size_t i = 0; i < Frame; ++i) {
        ASSERT_TRUE(bitsOf(medians[i]) == bitsOf(expected.values[i]) ||
                    (std::isnan(medians[i]) && std::isnan(expected.values[i])))
            << "sample " << i << ": " << medians[i] << ", not " << expected.values[i];
    }
    ASSERT_EQ(bitsOf(step), bitsOf(expected.step));
}

std::vector<float> envelopeAround(float level, unsigned seed) {
    std::vector<float> envelope = noise(Frame, seed);
    for (float& v : envelope) v = level * (1.0f + 0.9f * v);
    return envelope;
}

TEST(TrackMedian, IsThePlainLoopAtEveryLevel) {
    unsigned seed = 31;
    for (float level = 1e-14f; level < 1e4f; level *= 3.7f) {
        SCOPED_TRACE(testing::Message() << "level " << level << ", seed " << seed);
        expectThePlainMedians(envelopeAround(level, seed), level, 0.005f * level);
        ++seed;
    }
}

TEST(TrackMedian, IsThePlainLoopWhileItFallsIntoSilenceAndOutOfIt) {
    const std::vector<float> silence(Frame, 0.0f), loud(Frame, 1.0f);
    for (float median = 1e-12f; median < 1e-3f; median *= 1.9f) {
        SCOPED_TRACE(testing::Message() << "median " << median);
        expectThePlainMedians(silence, median, 0.005f * median);
        expectThePlainMedians(loud, median, 0.005f * median);
    }
}

TEST(TrackMedian, TakesAnyFirstStep) {
    for (const float step : {1e-12f, 3.0f, 0.0f}) {
        expectThePlainMedians(envelopeAround(0.2f, 7), 0.1f, step);
    }
}

TEST(TrackMedian, IsThePlainLoopForWhatIsNoNumber) {
    constexpr float Infinity = std::numeric_limits<float>::infinity();
    std::vector<float> envelope = envelopeAround(1.0f, 9);
    for (std::size_t i = 0; i < Frame; i += 97) envelope[i] = i % 2 == 0 ? NAN : Infinity;
    for (const float median : {1.0f, 1e-10f, Infinity, -Infinity, NAN, -1.0f}) {
        SCOPED_TRACE(testing::Message() << "median " << median);
        expectThePlainMedians(envelope, median, 1e-12f);
    }
}

}  // namespace
