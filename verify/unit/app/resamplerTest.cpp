#include "readers/resampler.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "common/failure.h"

namespace {

/** A sine on two channels, the second upside down; torn at its end if asked for. */
class Sine : public SampleSource {
  public:
    Sine(int rate, double frequency, std::size_t length, bool isTorn = false)
        : step_(6.283185307179586 * frequency / rate), length_(length), isTorn_(isTorn) {
        format_.channels = 2;
        format_.rate = rate;
        format_.length = length;
    }
    const SampleFormat& format() const override { return format_; }
    std::size_t read(float* samples, std::size_t count) override {
        if (isTorn_ && done_ == length_) throw BadData("torn");
        std::size_t n = 0;
        for (; n < count && done_ < length_; ++n, ++done_) {
            samples[2 * n] = static_cast<float>(1e6 * std::sin(step_ * static_cast<double>(done_)));
            samples[2 * n + 1] = -samples[2 * n];
        }
        return n;
    }

  private:
    SampleFormat format_;
    double step_;
    std::size_t length_, done_ = 0;
    bool isTorn_;
};

std::vector<float> all(SampleSource& source, std::string* damage = nullptr) {
    std::vector<float> samples, block(2 * 1000);
    try {
        while (const std::size_t more = source.read(block.data(), 1000)) {
            samples.insert(samples.end(), block.begin(),
                           block.begin() + static_cast<std::ptrdiff_t>(2 * more));
        }
    } catch (const BadData& torn) {
        if (damage != nullptr) *damage = torn.what();
    }
    return samples;
}

TEST(Resampler, LeavesFortyEightKilohertzAlone) {
    const auto source = resampled(std::make_unique<Sine>(48000, 1000.0, 5000));
    EXPECT_NE(dynamic_cast<Sine*>(source.get()), nullptr);
}

TEST(Resampler, KeepsASineWhereItIsInTimeAndInBothChannels) {
    for (const int rate : {16000, 44100, 96000}) {
        SCOPED_TRACE(rate);
        const auto length = static_cast<std::size_t>(rate);  // a second
        const auto source = resampled(std::make_unique<Sine>(rate, 997.0, length));
        EXPECT_EQ(source->format().rate, 48000);
        const std::vector<float> samples = all(*source);
        EXPECT_NEAR(static_cast<double>(samples.size()) / 2.0, 48000.0, 2.0);
        // A hundredth of a degree of phase is 2e-4 of the amplitude; the ends ring.
        for (std::size_t n = 2000; n < 46000; ++n) {
            const double expected =
                1e6 * std::sin(6.283185307179586 * 997.0 / 48000.0 * static_cast<double>(n));
            ASSERT_NEAR(static_cast<double>(samples[2 * n]), expected, 200.0) << n;
            ASSERT_EQ(samples[2 * n + 1], -samples[2 * n]) << n;
        }
    }
}

TEST(Resampler, TellsDamageAfterTheSamplesBeforeIt) {
    const auto source = resampled(std::make_unique<Sine>(24000, 997.0, 24000, true));
    std::string damage;
    EXPECT_GT(all(*source, &damage).size(), 2U * 47000U);
    EXPECT_EQ(damage, "torn");
}

}  // namespace
