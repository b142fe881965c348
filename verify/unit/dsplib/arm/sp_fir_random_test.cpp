/**
 * A million small random cases of all four filters against direct sums in double, between guards.
 */
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

#include "dsplib/sp_fir_neon.h"
#include "sp_fir_test_support.h"

namespace {

constexpr unsigned Seed = 271828;
constexpr int Cases = SlowMachine ? 200'000 : 1'000'000;
constexpr int MostTaps = 36;
constexpr int MostSamples = 70;
constexpr int MostStep = 6;

/** What a call may read and write, each part between guards in one array. */
struct Arena {
    static constexpr int Guard = 20;
    std::array<float, MostTaps + MostSamples + 4 + 2 * Guard> x;
    std::array<float, MostTaps + 4 + 2 * Guard> h;
    std::array<float, MostTaps + 4 + 2 * Guard> line;
    std::array<float, MostSamples + 4 + 2 * Guard> y;
};

struct Case {
    int kind;  // 0 block, 1 stream, 2 decimating block, 3 decimating stream
    int nh;
    int n;
    int step;
    int begin;
    int pos;
    int offset;
};

class RandomCases {
  public:
    Case draw() {
        Case c;
        c.kind = below(4);
        c.nh = below(8) == 0 ? below(3) - 1 : 1 + below(MostTaps);
        c.n = below(16) == 0 ? below(3) - 1 : 1 + below(MostSamples);
        c.step = c.kind < 2 ? 1 : 1 + below(MostStep);
        c.begin = c.kind == 3 ? below(c.step) : 0;
        c.pos = c.nh > 0 ? below(3 * c.nh) - c.nh : below(5);
        c.offset = below(4);
        return c;
    }

    template <class Samples>
    float* place(Samples& samples, int count, int offset) {
        samples.fill(NaN);
        float* const start = samples.data() + Arena::Guard + offset;
        for (int i = 0; i < count; ++i) start[i] = level();
        return start;
    }

  private:
    int below(int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); }
    float level() { return static_cast<float>(random() >> 8) * 0x1p-23f - 1.0f; }
    std::mt19937 random{Seed};
};

bool untouched(const float* from, const float* to) {
    return std::all_of(from, to, [](float sample) { return std::isnan(sample); });
}

/** The samples that a stream's windows run over: history in order, then the new ones. */
void layOut(const Case& c, const float* line, const float* x,
            std::array<float, MostTaps + MostSamples>& stream) {
    const int pos = (c.pos % c.nh + c.nh) % c.nh;
    for (int k = 0; k < c.nh - 1; ++k) stream[sizeOf(k)] = line[(pos + k) % c.nh];
    std::copy_n(x, sizeOf(c.n), stream.begin() + (c.nh - 1));
}

/** Whether the line at its new position ends with the last nh samples of history and x. */
bool advanced(const Case& c, const float* line, int pos,
              const std::array<float, MostTaps + MostSamples>& stream) {
    if (pos < 0 || pos >= c.nh) return false;
    for (int k = 0; k < c.nh; ++k) {
        const float expected = stream[sizeOf(c.n - 1 + k)];
        if (!(line[(pos - 1 + k + c.nh) % c.nh] == expected)) return false;
    }
    return true;
}

/** Runs a case; false when anything that it wrote is not what it should have written. */
bool holds(const Case& c, RandomCases& random, Arena& arena) {
    const bool stream = c.kind % 2 == 1;
    const int taps = std::max(c.nh, 0);
    const int samples = std::max(c.n, 0) + (stream || taps == 0 || c.n <= 0 ? 0 : taps - 1);
    const float* const x = random.place(arena.x, samples, c.offset);
    const float* const h = random.place(arena.h, taps, (c.offset + taps) % 4);
    float* const line = random.place(arena.line, stream ? taps : 0, 0);
    float* const y = random.place(arena.y, 0, (c.offset + samples) % 4);

    std::array<float, MostTaps + MostSamples> history = {};
    if (stream && taps > 0 && c.n > 0) layOut(c, line, x, history);
    int begin = c.begin;
    int pos = c.pos;
    switch (c.kind) {
        case 0:
            sp_fir_gen(x, h, y, c.nh, c.n);
            break;
        case 1:
            pos = sp_fir_filter(x, h, line, c.pos, y, c.nh, c.n);
            break;
        case 2:
            sp_fir_gen_downsample(x, h, y, c.nh, c.n, c.step);
            break;
        default:
            pos = sp_fir_filter_downsample(x, h, line, c.pos, y, c.nh, c.n, &begin, c.step);
    }

    const int due = c.begin < c.n ? (c.n - 1 - c.begin) / c.step + 1 : 0;
    const float* const windows = stream ? history.data() + c.begin : x;
    if (firstNotDirectSum(y, windows, h, taps, due, c.step) != -1) return false;
    if (!untouched(arena.y.data(), y) || !untouched(y + due, arena.y.data() + arena.y.size())) {
        return false;
    }
    if (!stream) return true;
    if (!untouched(arena.line.data(), line) ||
        !untouched(line + taps, arena.line.data() + arena.line.size())) {
        return false;
    }
    const int phase = c.kind == 1 || c.step == 1 || c.n <= 0
                          ? c.begin
                          : ((c.begin - c.n) % c.step + c.step) % c.step;
    if (begin != phase) return false;
    if (c.nh <= 0 || c.n <= 0) return pos == c.pos;
    return advanced(c, line, pos, history);
}

TEST(RandomFilters, EqualTheDirectSum) {
    RandomCases random;
    Arena arena;
    for (int i = 0; i < Cases; ++i) {
        const Case c = random.draw();
        ASSERT_TRUE(holds(c, random, arena))
            << "seed " << Seed << ", case " << i << ": kind " << c.kind << ", taps " << c.nh
            << ", n " << c.n << ", step " << c.step << ", begin " << c.begin << ", pos " << c.pos
            << ", offset " << c.offset;
    }
}

}  // namespace
