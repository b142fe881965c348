#include "track/loudspeakerZone.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(LoudspeakerZone, FollowsFromTheTwoDistances) {
    struct {
        float first, second;
        int lag, halfWidth;
        float gain;
    } const cases[] = {
        {0.3f, 0.3f, 0, 2, 0.4f * 0.3f},  // narrow for equal distances: 0.003 m, 1.655 lags
        {2.0f, 2.0f, 0, 2, 0.4f * 2.0f},
        {0.24f, 0.24f, 0, 2, 0.1f},  // a tenth at least
        {0.26f, 0.26f, 0, 2, 0.4f * 0.26f},
        {0.4f, 0.44f, 16362, 8, 0.4f * 0.4f},   // 0.0137 m: 7.56 lags; lag -22.07
        {0.44f, 0.4f, 22, 8, 0.4f * 0.4f},      // of the nearer microphone
        {0.4f, 0.56f, 16296, 25, 0.4f * 0.4f},  // 0.0458 m: 25.27 lags; lag -88.28
        {0.4f, 0.58f, 16285, 28, 0.4f * 0.4f},  // 0.05 m at most: 27.59 lags; lag -99.31
        {0.9f, 0.3f, 331, 28, 0.4f * 0.3f},
        {0.1f, 0.9f, 15943, 28, 0.1f},
        {0.5f, 0.4f, 55, 16, 0.4f * 0.4f},  // 0.02975 m: 16.41 lags
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.first << " and " << c.second);
        const voxloc::LoudspeakerZone zone = voxloc::loudspeakerZone(c.first, c.second);
        EXPECT_EQ(zone.lag, c.lag);
        EXPECT_EQ(zone.halfWidth, c.halfWidth);
        EXPECT_EQ(zone.gain, c.gain);
    }
}

// Which floats of a correlation's buffer have been multiplied by the gain, once each.
std::vector<int> damped(std::int16_t lag, std::uint16_t halfWidth) {
    constexpr int guard = 64;
    voxloc::MicrophonePair pair{};
    pair.loudspeakerLag = lag;
    pair.loudspeakerHalfWidth = halfWidth;
    pair.loudspeakerGain = 0.5f;
    std::vector<float> all(guard + 16392 + guard, 3.0f);
    voxloc::attenuateLoudspeaker(pair, all.data() + guard);
    std::vector<int> found;
    for (int i = 0; i < static_cast<int>(all.size()); ++i) {
        const float value = all[static_cast<std::size_t>(i)];
        if (value == 3.0f) continue;
        EXPECT_EQ(value, 1.5f) << i - guard;
        found.push_back(i - guard);
    }
    return found;
}

std::vector<int> span(int first, int last, std::vector<int> more = {}) {
    std::vector<int> lags;
    for (int lag = first; lag <= last; ++lag) lags.push_back(lag);
    lags.insert(lags.end(), more.begin(), more.end());
    return lags;
}

TEST(AttenuateLoudspeaker, DampsTheZoneWithBothItsEnds) {
    EXPECT_EQ(damped(88, 28), span(60, 116));
    EXPECT_EQ(damped(16297, 28), span(16269, 16325));
    EXPECT_EQ(damped(28, 28), span(0, 56));
}

TEST(AttenuateLoudspeaker, WrapsLagsBelowZeroToTheEnd) {
    EXPECT_EQ(damped(2, 2), span(0, 4));
    EXPECT_EQ(damped(1, 3), span(0, 4, {16382, 16383}));
}

TEST(AttenuateLoudspeaker, DoesNotWrapLagsPastTheEndWhereTheBufferEndsTheZone) {
    EXPECT_EQ(damped(16383, 2), span(16381, 16385));
    EXPECT_EQ(damped(16384, 7), span(16377, 16391));
    EXPECT_EQ(damped(16384, 8), span(16376, 16391));
    EXPECT_EQ(damped(16384, 28), span(16356, 16391));
}

}  // namespace
