// The filters by example, the parts behind them, and broken preconditions.

#include <array>
#include <climits>
#include <string>

#include "dsplib/arm/sp_fir_neon_internal.h"
#include "kit/lastWords.h"
#include "spFirTesting.h"

namespace {

using namespace firtest;

constexpr std::array<float, 10> Ramp = {0.0f, 1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f, 8.0f, 9.0f};
constexpr float One = 1.0f, Kept = -1.0f;

TEST(BlockFilter, OneTapScales) {
    const float h = 0.5f;
    std::array<float, 3> y = {};
    sp_fir_gen(Ramp.data() + 3, &h, y.data(), 1, 3);
    EXPECT_EQ(y, (std::array<float, 3>{1.5f, 2.0f, 2.5f}));
}

TEST(BlockFilter, TheFirstCoefficientMeetsTheOldestSample) {
    const std::array<float, 3> x = {1.0f, 10.0f, 100.0f};
    const std::array<float, 2> h = {2.0f, 3.0f};
    std::array<float, 2> y = {};
    sp_fir_gen(x.data(), h.data(), y.data(), 2, 2);
    EXPECT_EQ(y, (std::array<float, 2>{32.0f, 320.0f}));
}

TEST(DecimatingBlock, TenSamplesByThreeAreFourOutputs) {
    std::array<float, 5> y = {Kept, Kept, Kept, Kept, Kept};
    sp_fir_gen_downsample(Ramp.data(), &One, y.data(), 1, 10, 3);
    EXPECT_EQ(y, (std::array<float, 5>{0.0f, 3.0f, 6.0f, 9.0f, Kept}));
}

TEST(DecimatingStream, TheNextPhaseContinuesTheGrid) {
    float line = 0.0f;
    int begin = 0;
    std::array<float, 5> y = {Kept, Kept, Kept, Kept, Kept};
    sp_fir_filter_downsample(Ramp.data(), &One, &line, 0, y.data(), 1, 10, &begin, 3);
    EXPECT_EQ(y, (std::array<float, 5>{0.0f, 3.0f, 6.0f, 9.0f, Kept}));
    EXPECT_EQ(begin, 2);
}

TEST(DecimatingStream, ABlockWithoutDueOutputsStillAdvancesTheLine) {
    const std::array<float, 4> h = {1.0f, 1.0f, 1.0f, 1.0f};
    std::array<float, 4> line = {1.0f, 2.0f, 3.0f, 0.0f};
    int begin = 2;
    float y = Kept;
    EXPECT_EQ(
        sp_fir_filter_downsample(Ramp.data() + 7, h.data(), line.data(), 0, &y, 4, 2, &begin, 3),
        0);
    EXPECT_EQ(y, Kept);
    EXPECT_EQ(begin, 0);
    EXPECT_EQ(line, (std::array<float, 4>{3.0f, 7.0f, 8.0f, 2.0f}));
}

TEST(DecimatingStream, WithoutAPhaseItStartsAtTheFirstSample) {
    float line = 0.0f;
    std::array<float, 4> y = {};
    sp_fir_filter_downsample(Ramp.data(), &One, &line, 0, y.data(), 1, 10, nullptr, 3);
    EXPECT_EQ(y, (std::array<float, 4>{0.0f, 3.0f, 6.0f, 9.0f}));
}

/** Where an update of a line of nh at pos by n samples moves the position. */
struct Update {
    int nh, pos, n, after;
};

TEST(DelayLine, IsShiftedOrWrittenInCirclesByRule) {
    for (const Update& u : {
             Update{16, 0, 16, 0},  {16, 5, 17, 0},  // a block of all taps or more
             {16, 0, 8, 0},         {16, 0, 7, 7},   // in order: half the taps or more
             {23, 0, 8, 0},         {23, 0, 7, 7},   // half of 16, not of 23
             {24, 0, 12, 0},        {24, 0, 11, 11},       {15, 0, 4, 0},
             {15, 0, 3, 3},         {8, 0, 4, 0},          {8, 0, 3, 3},
             {7, 0, 1, 0},          {2, 0, 1, 0},  // half of nothing
             {2048, 0, 1024, 0},    {2048, 0, 1023, 1023}, {2048, 0, 2047, 0},
             {2049, 0, 1024, 1024}, {2049, 0, 2048, 2048},  // more taps are never shifted
             {2047, 0, 1020, 0},    {2047, 0, 1019, 1019}, {16, 1, 15, 0},
             {16, 1, 14, 15},       {16, 9, 8, 1},         {16, 15, 1, 0},
             {7, 3, 6, 2},          {2, 1, 1, 0},  // out of order: in circles
         }) {
        std::vector<float> line(sizeOf(u.nh));
        const std::vector<float> x(sizeOf(u.n));
        EXPECT_EQ(sp_fir::update_delay_line(x.data(), line.data(), u.pos, u.nh, u.n), u.after)
            << u.nh << " taps at " << u.pos << ", n " << u.n;
    }
}

TEST(Overlap, StagesSamplesAcrossTheRunsOfTheWindow) {
    // 7 taps at position 4: history dl[4..6], dl[0..2], then three new samples.
    const std::array<float, 7> dl = {4.0f, 5.0f, 6.0f, -1.0f, 1.0f, 2.0f, 3.0f};
    const sp_fir::Window window = sp_fir::windowOf(Ramp.data() + 7, dl.data(), 4, 7, 3);
    for (const int len : {8, 12}) {
        for (int first = 0; first < 9; ++first) {
            GuardedFloats overlap(sizeOf(len));
            sp_fir::init_overlap(overlap.data(), len, window, first);
            for (int i = 0; i < len; ++i) {
                const float expected = first + i < 9 ? static_cast<float>(first + i + 1) : 0.0f;
                EXPECT_EQ(overlap[sizeOf(i)], expected) << len << " from " << first << ": " << i;
            }
            EXPECT_TRUE(overlap.intact());
        }
    }
}

// --- Broken preconditions -----------------------------------------------------------------------

std::string report(const std::string& function, const std::string& expression) {
    return assertionReport("functional/audio/libraries/dsplib/arm/sp_fir_neon", function,
                           expression);
}

TEST(OverlapDeathTest, AcceptsNoLengthButEightAndTwelve) {
    std::array<float, 64> overlap = {};
    const sp_fir::Window window = sp_fir::windowOf(overlap.data(), overlap.data(), 0, 32, 32);
    for (const int len : {-8, 0, 4, 7, 9, 11, 13, 16}) {
        EXPECT_DEATH(sp_fir::init_overlap(overlap.data(), len, window, 0),
                     report("init_overlap", "len == 8 \\|\\| len == 12"));
    }
}

TEST(DecimatingBlockDeathTest, AStepBelowOneAborts) {
    float y = 0.0f;
    const std::string message = report("sp_fir_gen_downsample", "step > 0");
    EXPECT_DEATH(sp_fir_gen_downsample(&One, &One, &y, 1, 1, 0), message);
    EXPECT_DEATH(sp_fir_gen_downsample(&One, &One, &y, 1, 1, -1), message);
    EXPECT_DEATH(sp_fir_gen_downsample(&One, &One, &y, 0, 1, 0), message);  // before the taps
}

TEST(DecimatingStreamDeathTest, AStepBelowOneAbortsBeforeThePhaseIsJudged) {
    float y = 0.0f, line = 0.0f;
    int begin = -1;
    const std::string message = report("sp_fir_filter_downsample", "step > 0");
    for (const int step : {0, -3}) {
        EXPECT_DEATH(sp_fir_filter_downsample(&One, &One, &line, 0, &y, 1, 1, &begin, step),
                     message);
    }
    EXPECT_DEATH(sp_fir_filter_downsample(&One, &One, &line, 0, &y, 1, 1, nullptr, 0), message);
}

TEST(DecimatingStreamDeathTest, APhaseOutsideTheStepAborts) {
    float y = 0.0f, line = 0.0f;
    const std::string message = report("sp_fir_filter_downsample", "begin >= 0 && begin < step");
    // Steps of one are judged too, and so are filters without taps.
    for (const Call& c : {Call{Filter::DecimatingStream, 1, 1, 3, -1},
                          {{}, 1, 1, 3, 3},
                          {{}, 1, 1, 3, 4},
                          {{}, 1, 1, 3, Huge},
                          {{}, 1, 1, 1, 1},
                          {{}, 0, 1, 2, 2}}) {
        int begin = c.begin;
        EXPECT_DEATH(sp_fir_filter_downsample(&One, &One, &line, 0, &y, c.nh, c.n, &begin, c.step),
                     message)
            << "begin " << c.begin << ", step " << c.step;
    }
}

// Nothing of the buffers is touched before.
TEST(StreamDeathTest, MoreSamplesThanCanBeCountedAbort) {
    float y = 0.0f, line = 0.0f;
    const std::string expression = "n <= INT_MAX - \\(nh - 1\\)";
    constexpr int half = INT_MAX / 2 + 2;  // and as much: n + nh - 1 is INT_MAX + 2
    constexpr struct {
        int nh, n;
    } tooMany[] = {{2, INT_MAX}, {INT_MAX, 2}, {half, half}, {INT_MAX, INT_MAX}};
    for (const auto& c : tooMany) {
        EXPECT_DEATH(sp_fir_filter(&One, &One, &line, 0, &y, c.nh, c.n),
                     report("sp_fir_filter", expression));
        EXPECT_DEATH(sp_fir_filter_downsample(&One, &One, &line, 0, &y, c.nh, c.n, nullptr, 2),
                     report("sp_fir_filter_downsample", expression));
    }
}

}  // namespace
